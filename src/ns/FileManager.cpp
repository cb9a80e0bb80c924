// File system access: POSIX calls behind UTF-16 paths, with errors as Error objects.
#include "ns/FileManager.h"

#include "ns/Assert.h"
#include "ns/Log.h"
#include "ns/Path.h"
#include "ns/String.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <random>
#include <sys/stat.h>
#include <unistd.h>

namespace vl::ns {

namespace {

// Where and why a system call failed, before it becomes an Error.
struct Failure {
  int code = 0;
  std::string path;
};

bool fail(Failure *failure, int code, const std::string &path) {
  if (failure) {
    failure->code = code;
    failure->path = path;
  }
  return false;
}

int64_t cocoaCode(int code, bool writing) {
  switch (code) {
  case ENOENT:
  case ENOTDIR:
    return writing ? FileNoSuchFileError : FileReadNoSuchFileError;
  case EACCES:
  case EPERM:
    return writing ? FileWriteNoPermissionError : FileReadNoPermissionError;
  case EEXIST:
  case ENOTEMPTY:
    return FileWriteFileExistsError;
  case ENOSPC:
  case EDQUOT:
    return FileWriteOutOfSpaceError;
  case EROFS:
    return FileWriteVolumeReadOnlyError;
  case ENAMETOOLONG:
    return writing ? FileWriteInvalidFileNameError : FileReadInvalidFileNameError;
  default:
    return writing ? FileWriteUnknownError : FileReadUnknownError;
  }
}

// "Couldn’t <action> “<path>”: <system message>." with the errno underneath.
ErrorPtr makeError(const Failure &failure, std::u16string_view action, bool writing,
                   std::u16string_view reason = {}) {
  std::u16string path = fromUTF8(failure.path);
  std::u16string message = fromUTF8(std::strerror(failure.code));
  auto info = Dictionary::create();
  info->setObject(Value(u"Couldn\u2019t " + std::u16string(action) + u" \u201C" + path +
                        u"\u201D: " + message + u"."),
                  LocalizedDescriptionKey);
  if (!reason.empty())
    info->setObject(Value(reason), LocalizedFailureReasonErrorKey);
  info->setObject(Value(path), FilePathErrorKey);
  info->setObject(Value(Error::errorWithDescription(POSIXErrorDomain, failure.code, message)),
                  UnderlyingErrorKey);
  return Error::errorWithDomain(CocoaErrorDomain, cocoaCode(failure.code, writing), info);
}

void report(ErrorPtr *error, const Failure &failure, std::u16string_view action, bool writing) {
  if (error)
    *error = makeError(failure, action, writing);
}

// The path as the system takes it: UTF-8, without trailing slashes, which would make the
// system follow a final symbolic link that lstat and removal must see as a link.
std::string systemPath(std::u16string_view path) {
  std::string out = toUTF8(path);
  while (out.size() > 1 && out.back() == '/')
    out.pop_back();
  return out;
}

std::string parentOf(std::u16string_view path) {
  std::u16string parent = stringByDeletingLastPathComponent(path);
  return parent.empty() ? std::string(".") : toUTF8(parent);
}

// A hidden name beside `path` that is unlikely to be taken: ".<name>.<tag>-XXXXXX". The
// caller creates it exclusively and retries when it was taken after all.
std::string siblingName(const std::string &path, std::string_view tag) {
  static constexpr char Letters[] = "abcdefghijklmnopqrstuvwxyz0123456789";
  static std::mt19937_64 engine{std::random_device{}()};
  std::u16string path16 = fromUTF8(path);
  std::string name = parentOf(path16) + "/." + toUTF8(lastPathComponent(path16)) + ".";
  name += tag;
  name += '-';
  for (int i = 0; i < 6; ++i)
    name += Letters[engine() % (sizeof Letters - 1)];
  return name;
}

constexpr int SiblingAttempts = 100;

// The names in an open directory, without "." and ".."; answers errno, or 0.
int readNames(DIR *dir, std::vector<std::string> &names) {
  names.clear();
  errno = 0;
  while (dirent *entry = readdir(dir)) {
    std::string_view name = entry->d_name;
    if (name != "." && name != "..")
      names.emplace_back(name);
    errno = 0;
  }
  return errno;
}

bool listDirectory(const std::string &path, std::vector<std::string> &names, Failure *failure) {
  DIR *dir = opendir(path.c_str());
  if (!dir)
    return fail(failure, errno, path);
  int code = readNames(dir, names);
  closedir(dir);
  if (code)
    return fail(failure, code, path);
  return true;
}

// Removes everything inside the open directory `fd` (which it closes), not following links.
bool removeContents(int fd, const std::string &path, Failure *failure) {
  DIR *dir = fdopendir(fd);
  if (!dir) {
    int code = errno;
    close(fd);
    return fail(failure, code, path);
  }
  // Names first: removing while reading may make readdir skip entries.
  std::vector<std::string> names;
  int code = readNames(dir, names);
  bool ok = code == 0 || fail(failure, code, path);
  for (size_t i = 0; ok && i < names.size(); ++i) {
    const std::string &name = names[i];
    std::string child = path + "/" + name;
    struct stat info;
    if (fstatat(fd, name.c_str(), &info, AT_SYMLINK_NOFOLLOW) != 0) {
      ok = errno == ENOENT || fail(failure, errno, child);
    } else if (S_ISDIR(info.st_mode)) {
      int childFd = openat(fd, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
      ok = childFd >= 0 ? removeContents(childFd, child, failure) : fail(failure, errno, child);
      if (ok && unlinkat(fd, name.c_str(), AT_REMOVEDIR) != 0)
        ok = fail(failure, errno, child);
    } else if (unlinkat(fd, name.c_str(), 0) != 0) {
      ok = errno == ENOENT || fail(failure, errno, child);
    }
  }
  closedir(dir);
  return ok;
}

bool removeTree(const std::string &path, Failure *failure) {
  struct stat info;
  if (lstat(path.c_str(), &info) != 0)
    return fail(failure, errno, path);
  if (!S_ISDIR(info.st_mode))
    return unlink(path.c_str()) == 0 || fail(failure, errno, path);
  int fd = open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
  if (fd < 0)
    return fail(failure, errno, path);
  if (!removeContents(fd, path, failure))
    return false;
  return rmdir(path.c_str()) == 0 || fail(failure, errno, path);
}

bool writeAll(int fd, const uint8_t *bytes, size_t length) {
  while (length > 0) {
    ssize_t written = write(fd, bytes, length);
    if (written < 0) {
      if (errno == EINTR)
        continue;
      return false;
    }
    bytes += written;
    length -= static_cast<size_t>(written);
  }
  return true;
}

bool copyFile(const std::string &from, const std::string &to, mode_t mode, Failure *failure) {
  int in = open(from.c_str(), O_RDONLY | O_CLOEXEC);
  if (in < 0)
    return fail(failure, errno, from);
  int out = open(to.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
  if (out < 0) {
    int code = errno;
    close(in);
    return fail(failure, code, to);
  }
  std::vector<uint8_t> buffer(1 << 16);
  bool ok = true;
  while (ok) {
    ssize_t got = read(in, buffer.data(), buffer.size());
    if (got < 0 && errno == EINTR)
      continue;
    if (got < 0)
      ok = fail(failure, errno, from);
    else if (got == 0)
      break;
    else if (!writeAll(out, buffer.data(), static_cast<size_t>(got)))
      ok = fail(failure, errno, to);
  }
  if (ok && fchmod(out, mode & 07777) != 0)
    ok = fail(failure, errno, to);
  close(in);
  if (close(out) != 0 && ok)
    ok = fail(failure, errno, to);
  return ok;
}

bool copyTree(const std::string &from, const std::string &to, Failure *failure) {
  struct stat info;
  if (lstat(from.c_str(), &info) != 0)
    return fail(failure, errno, from);
  if (S_ISLNK(info.st_mode)) {
    std::string target(static_cast<size_t>(info.st_size) + 1, '\0');
    ssize_t length = readlink(from.c_str(), target.data(), target.size());
    if (length < 0)
      return fail(failure, errno, from);
    target.resize(static_cast<size_t>(length));
    return symlink(target.c_str(), to.c_str()) == 0 || fail(failure, errno, to);
  }
  if (S_ISREG(info.st_mode))
    return copyFile(from, to, info.st_mode, failure);
  if (!S_ISDIR(info.st_mode))
    return fail(failure, ENOTSUP, from);
  if (mkdir(to.c_str(), 0700) != 0)
    return fail(failure, errno, to);
  std::vector<std::string> names;
  if (!listDirectory(from, names, failure))
    return false;
  for (const std::string &name : names)
    if (!copyTree(from + "/" + name, to + "/" + name, failure))
      return false;
  return chmod(to.c_str(), info.st_mode & 07777) == 0 || fail(failure, errno, to);
}

// Flushes a directory's entries so that a rename inside it survives a crash. Best effort:
// some file systems refuse to sync directories.
void syncDirectory(const std::string &path) {
  int fd = open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (fd >= 0) {
    fsync(fd);
    close(fd);
  }
}

bool walk(const std::string &directory, const std::u16string &prefix,
          std::vector<std::u16string> &out, Failure *failure) {
  std::vector<std::string> names;
  if (!listDirectory(directory, names, failure))
    return false;
  std::vector<std::pair<std::u16string, std::string>> entries;
  entries.reserve(names.size());
  for (std::string &name : names)
    entries.emplace_back(fromUTF8(name), std::move(name));
  std::sort(entries.begin(), entries.end());
  for (const auto &[name, raw] : entries) {
    std::u16string relative = prefix.empty() ? name : prefix + u"/" + name;
    out.push_back(relative);
    std::string child = directory + "/" + raw;
    struct stat info;
    if (lstat(child.c_str(), &info) != 0)
      return fail(failure, errno, child);
    if (S_ISDIR(info.st_mode) && !walk(child, relative, out, failure))
      return false;
  }
  return true;
}

std::u16string_view typeOf(mode_t mode) {
  if (S_ISREG(mode))
    return FileTypeRegular;
  if (S_ISDIR(mode))
    return FileTypeDirectory;
  if (S_ISLNK(mode))
    return FileTypeSymbolicLink;
  if (S_ISCHR(mode))
    return FileTypeCharacterSpecial;
  if (S_ISBLK(mode))
    return FileTypeBlockSpecial;
  if (S_ISSOCK(mode))
    return FileTypeSocket;
  return FileTypeUnknown;
}

} // namespace

std::u16string TemporaryDirectory() {
  const char *tmp = std::getenv("TMPDIR");
  std::u16string directory = tmp && *tmp ? fromUTF8(tmp) : u"/tmp";
  if (directory.back() != u'/')
    directory += u'/';
  return directory;
}

const FileManagerPtr &FileManager::defaultManager() {
  static const FileManagerPtr manager = std::make_shared<FileManager>();
  return manager;
}

bool FileManager::fileExistsAtPath(std::u16string_view path, bool *isDirectory) const {
  struct stat info;
  if (stat(systemPath(path).c_str(), &info) != 0)
    return false;
  if (isDirectory)
    *isDirectory = S_ISDIR(info.st_mode);
  return true;
}

bool FileManager::createDirectoryAtPath(std::u16string_view path, bool withIntermediateDirectories,
                                        ErrorPtr *error) const {
  std::string target = systemPath(path);
  struct stat info;
  if (withIntermediateDirectories && stat(target.c_str(), &info) == 0) {
    if (S_ISDIR(info.st_mode))
      return true;
    report(error, {EEXIST, target}, u"create the directory", true);
    return false;
  }
  if (withIntermediateDirectories) {
    std::u16string parent = stringByDeletingLastPathComponent(path);
    if (!parent.empty() && parent != path && !createDirectoryAtPath(parent, true, error))
      return false;
  }
  if (mkdir(target.c_str(), 0777) == 0)
    return true;
  int code = errno;
  if (code == EEXIST && withIntermediateDirectories && stat(target.c_str(), &info) == 0 &&
      S_ISDIR(info.st_mode))
    return true; // made by someone else meanwhile
  report(error, {code, target}, u"create the directory", true);
  return false;
}

std::optional<std::vector<std::u16string>>
FileManager::contentsOfDirectoryAtPath(std::u16string_view path, ErrorPtr *error) const {
  std::vector<std::string> names;
  Failure failure;
  if (!listDirectory(systemPath(path), names, &failure)) {
    report(error, failure, u"list the directory", false);
    return std::nullopt;
  }
  std::vector<std::u16string> out;
  out.reserve(names.size());
  for (const std::string &name : names)
    out.push_back(fromUTF8(name));
  std::sort(out.begin(), out.end());
  return out;
}

std::optional<std::vector<std::u16string>>
FileManager::subpathsOfDirectoryAtPath(std::u16string_view path, ErrorPtr *error) const {
  std::vector<std::u16string> out;
  Failure failure;
  if (!walk(systemPath(path), u"", out, &failure)) {
    report(error, failure, u"list the directory", false);
    return std::nullopt;
  }
  return out;
}

bool FileManager::copyItemAtPath(std::u16string_view path, std::u16string_view toPath,
                                 ErrorPtr *error) const {
  std::string from = systemPath(path), to = systemPath(toPath);
  struct stat info;
  if (lstat(to.c_str(), &info) == 0) {
    report(error, {EEXIST, to}, u"copy to", true);
    return false;
  }
  if (to.starts_with(from + "/")) {
    report(error, {EINVAL, to}, u"copy into itself", true);
    return false;
  }
  Failure failure;
  if (copyTree(from, to, &failure))
    return true;
  report(error, failure, u"copy", failure.path.starts_with(to));
  if (lstat(to.c_str(), &info) == 0)
    removeTree(to, nullptr);
  return false;
}

bool FileManager::moveItemAtPath(std::u16string_view path, std::u16string_view toPath,
                                 ErrorPtr *error) const {
  std::string from = systemPath(path), to = systemPath(toPath);
  struct stat info;
  if (lstat(from.c_str(), &info) != 0) {
    report(error, {errno, from}, u"move", true);
    return false;
  }
  if (lstat(to.c_str(), &info) == 0) {
    report(error, {EEXIST, to}, u"move to", true);
    return false;
  }
  if (rename(from.c_str(), to.c_str()) == 0)
    return true;
  if (errno != EXDEV) {
    report(error, {errno, from}, u"move", true);
    return false;
  }
  Failure failure;
  if (!copyTree(from, to, &failure)) {
    report(error, failure, u"move", true);
    removeTree(to, nullptr);
    return false;
  }
  if (!removeTree(from, &failure)) {
    report(error, failure, u"remove the moved item", true);
    return false;
  }
  return true;
}

bool FileManager::removeItemAtPath(std::u16string_view path, ErrorPtr *error) const {
  Failure failure;
  if (removeTree(systemPath(path), &failure))
    return true;
  report(error, failure, u"remove", true);
  return false;
}

std::optional<Data> FileManager::contentsAtPath(std::u16string_view path, ErrorPtr *error) const {
  std::string file = systemPath(path);
  int fd = open(file.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) {
    report(error, {errno, file}, u"read", false);
    return std::nullopt;
  }
  std::vector<uint8_t> bytes;
  struct stat info;
  if (fstat(fd, &info) == 0 && S_ISREG(info.st_mode))
    bytes.reserve(static_cast<size_t>(info.st_size));
  uint8_t buffer[1 << 16];
  while (true) {
    ssize_t got = read(fd, buffer, sizeof buffer);
    if (got < 0 && errno == EINTR)
      continue;
    if (got < 0) {
      report(error, {errno, file}, u"read", false);
      close(fd);
      return std::nullopt;
    }
    if (got == 0)
      break;
    bytes.insert(bytes.end(), buffer, buffer + got);
  }
  close(fd);
  return Data(std::move(bytes));
}

bool FileManager::writeData(const Data &data, std::u16string_view path, uint32_t options,
                            ErrorPtr *error) const {
  std::string file = systemPath(path);
  struct stat info;
  if ((options & DataWritingWithoutOverwriting) && lstat(file.c_str(), &info) == 0) {
    report(error, {EEXIST, file}, u"write", true);
    return false;
  }
  if (options & DataWritingAtomic)
    return atomicWrite(data, file, options, error);
  int flags = O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC;
  if (options & DataWritingWithoutOverwriting)
    flags |= O_EXCL;
  int fd = open(file.c_str(), flags, 0666);
  if (fd < 0) {
    report(error, {errno, file}, u"write", true);
    return false;
  }
  bool ok = writeAll(fd, data.bytes(), data.length());
  int code = errno;
  if (close(fd) != 0 && ok) {
    ok = false;
    code = errno;
  }
  if (!ok)
    report(error, {code, file}, u"write", true);
  return ok;
}

bool FileManager::atomicWrite(const Data &data, const std::string &file, uint32_t,
                              ErrorPtr *error) const {
  std::string temporary;
  int fd = -1;
  for (int attempt = 0; attempt < SiblingAttempts && fd < 0; ++attempt) {
    temporary = siblingName(file, "tmp");
    // Created with 0666 so that the umask gives a new file its usual permissions.
    fd = open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (fd < 0 && errno != EEXIST)
      break;
  }
  if (fd < 0) {
    report(error, {errno, file}, u"write", true);
    return false;
  }
  auto failWith = [&](int code) {
    if (fd >= 0)
      close(fd);
    unlink(temporary.c_str());
    report(error, {code, file}, u"write", true);
    return false;
  };
  if (int code = injected("write"))
    return failWith(code);
  if (!writeAll(fd, data.bytes(), data.length()))
    return failWith(errno);
  struct stat old;
  if (stat(file.c_str(), &old) == 0 && S_ISREG(old.st_mode))
    fchmod(fd, old.st_mode & 07777);
  if (int code = injected("sync"))
    return failWith(code);
  if (fsync(fd) != 0)
    return failWith(errno);
  int closed = close(fd);
  fd = -1;
  if (closed != 0)
    return failWith(errno);
  if (int code = injected("rename"))
    return failWith(code);
  if (rename(temporary.c_str(), file.c_str()) != 0)
    return failWith(errno);
  syncDirectory(parentOf(fromUTF8(file)));
  return true;
}

DictionaryPtr FileManager::attributesOfItemAtPath(std::u16string_view path, ErrorPtr *error) const {
  std::string file = systemPath(path);
  struct stat info;
  if (lstat(file.c_str(), &info) != 0) {
    report(error, {errno, file}, u"read the attributes of", false);
    return nullptr;
  }
  auto attributes = Dictionary::create();
  attributes->setObject(Value(typeOf(info.st_mode)), FileType);
  attributes->setObject(Value(static_cast<uint64_t>(info.st_size)), FileSize);
  double seconds =
      static_cast<double>(info.st_mtim.tv_sec) + static_cast<double>(info.st_mtim.tv_nsec) / 1e9;
  attributes->setObject(Value(Date::dateWithTimeIntervalSince1970(seconds)), FileModificationDate);
  attributes->setObject(Value(static_cast<uint64_t>(info.st_mode & 07777)), FilePosixPermissions);
  return attributes;
}

std::u16string FileManager::currentDirectoryPath() const {
  std::string buffer(4096, '\0');
  while (!getcwd(buffer.data(), buffer.size())) {
    if (errno != ERANGE)
      return {};
    buffer.resize(buffer.size() * 2);
  }
  return fromUTF8(buffer.c_str());
}

URLPtr FileManager::URLForDirectory(SearchPathDirectory directory, const URLPtr &appropriateForURL,
                                    bool, ErrorPtr *error) const {
  VL_ASSERT_PARAM(directory == ItemReplacementDirectory);
  if (!appropriateForURL || !appropriateForURL->isFileURL() || appropriateForURL->path().empty()) {
    report(error, {EINVAL, appropriateForURL ? toUTF8(appropriateForURL->absoluteString()) : ""},
           u"make a replacement directory for", true);
    return nullptr;
  }
  std::string target = toUTF8(appropriateForURL->path());
  for (int attempt = 0; attempt < SiblingAttempts; ++attempt) {
    std::string candidate = siblingName(target, "replacement");
    if (mkdir(candidate.c_str(), 0700) == 0)
      return URL::fileURLWithPath(fromUTF8(candidate), true);
    if (errno != EEXIST)
      break;
  }
  report(error, {errno, target}, u"make a replacement directory for", true);
  return nullptr;
}

std::optional<std::u16string> FileManager::createTemporaryDirectory(std::u16string_view prefix,
                                                                    ErrorPtr *error) const {
  std::string pattern = toUTF8(TemporaryDirectory() + std::u16string(prefix)) + ".XXXXXX";
  if (!mkdtemp(pattern.data())) {
    report(error, {errno, pattern}, u"create the temporary directory", true);
    return std::nullopt;
  }
  return fromUTF8(pattern);
}

std::optional<std::u16string>
FileManager::uniqueFileNameForFilename(std::u16string_view filename,
                                       std::u16string_view directory) const {
  bool isDirectory = false;
  if (!fileExistsAtPath(directory, &isDirectory))
    isDirectory = createDirectoryAtPath(directory, false);
  VL_ASSERT(isDirectory, "Could not create directory");
  auto isFree = [](const std::u16string &path) {
    struct stat info;
    return lstat(toUTF8(path).c_str(), &info) != 0 && errno == ENOENT;
  };
  std::u16string path = stringByAppendingPathComponent(directory, filename);
  if (isFree(path))
    return path;
  std::u16string stem = stringByDeletingPathExtension(filename);
  std::u16string extension = pathExtension(filename);
  for (int n = 1; n < 10000; ++n) {
    std::u16string name = stem + u"-" + u16(std::to_string(n));
    if (!extension.empty())
      name += u"." + extension;
    std::u16string candidate = stringByAppendingPathComponent(directory, name);
    if (isFree(candidate))
      return candidate;
  }
  return std::nullopt;
}

bool FileManager::replaceItemAtPath(std::u16string_view originalPath,
                                    std::u16string_view newItemPath, ErrorPtr *error) const {
  std::string original = systemPath(originalPath), item = systemPath(newItemPath);
  std::string parent = parentOf(originalPath);
  struct stat info;
  if (lstat(item.c_str(), &info) != 0) {
    report(error, {errno, item}, u"replace with", true);
    return false;
  }
  if (lstat(original.c_str(), &info) != 0) {
    int code = errno;
    if (code == ENOENT && !(code = injected("moveIntoPlace")) &&
        rename(item.c_str(), original.c_str()) == 0) {
      syncDirectory(parent);
      return true;
    }
    report(error, {code ? code : errno, original}, u"replace", true);
    return false;
  }

  std::string aside;
  for (int attempt = 0; attempt < SiblingAttempts; ++attempt) {
    aside = siblingName(original, "old");
    if (lstat(aside.c_str(), &info) != 0 && errno == ENOENT)
      break;
  }
  int code = injected("moveAside");
  if (code || rename(original.c_str(), aside.c_str()) != 0) {
    report(error, {code ? code : errno, original}, u"replace", true);
    return false;
  }
  code = injected("moveIntoPlace");
  if (code || rename(item.c_str(), original.c_str()) != 0) {
    Failure failure{code ? code : errno, original};
    if (rename(aside.c_str(), original.c_str()) == 0) {
      report(error, failure, u"replace", true);
    } else if (error) {
      *error = makeError(failure, u"replace", true,
                         u"The original is kept at \u201C" + fromUTF8(aside) + u"\u201D.");
    }
    return false;
  }
  // The new item is in place; an old copy left behind is only clutter.
  Failure failure;
  if ((code = injected("removeAside")) || !removeTree(aside, &failure))
    ns::log(LogLevel::Warning, "could not remove the replaced item " + aside);
  syncDirectory(parent);
  return true;
}

bool FileManager::writeDirectoryAtomically(std::u16string_view path, const DirectoryWriter &write,
                                           ErrorPtr *error) const {
  std::string target = systemPath(path);
  std::string temporary;
  int code = 0;
  for (int attempt = 0; attempt < SiblingAttempts; ++attempt) {
    temporary = siblingName(target, "new");
    code = injected("create");
    if (!code && mkdir(temporary.c_str(), 0777) != 0)
      code = errno;
    if (code != EEXIST)
      break;
  }
  if (code) {
    report(error, {code, target}, u"write", true);
    return false;
  }
  ErrorPtr writeError;
  if (!write(fromUTF8(temporary), &writeError)) {
    removeTree(temporary, nullptr);
    if (!writeError)
      writeError = makeError({EIO, target}, u"write", true);
    setError(error, std::move(writeError));
    return false;
  }
  if (!replaceItemAtPath(path, fromUTF8(temporary), error)) {
    removeTree(temporary, nullptr);
    return false;
  }
  return true;
}

} // namespace vl::ns
