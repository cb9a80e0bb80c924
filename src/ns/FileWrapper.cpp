// File wrappers: unique child keys, reading and writing trees with POSIX calls, and the flat
// serialized form.
#include "ns/FileWrapper.h"

#include "ns/String.h"

#include <algorithm>
#include <atomic>
#include <bit>
#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vl::ns {

VL_REGISTER_CLASS(FileWrapper);

namespace {

constexpr size_t maxDepth = 64;

// Keys --------------------------------------------------------------------------------------

std::u16string sanitizedName(std::u16string_view name) {
  std::u16string out(name);
  for (char16_t &c : out)
    if (c == u'/' || c == 0)
      c = u'_';
  if (out.empty() || out == u"." || out == u"..")
    return u"Untitled";
  return out;
}

// "name.ext" with " n" before the extension; a leading dot starts no extension.
std::u16string numberedName(const std::u16string &name, int n) {
  size_t dot = name.rfind(u'.');
  std::u16string number = u" " + u16(std::to_string(n));
  if (dot == std::u16string::npos || dot == 0)
    return name + number;
  return name.substr(0, dot) + number + name.substr(dot);
}

// Errors ------------------------------------------------------------------------------------

ErrorPtr posixError(int code, const std::string &path) {
  auto info = Dictionary::create();
  info->setObject(Value(fromUTF8(path)), FilePathErrorKey);
  info->setObject(Value(fromUTF8(std::strerror(code)) + u": " + fromUTF8(path)),
                  LocalizedDescriptionKey);
  return Error::errorWithDomain(POSIXErrorDomain, code, info);
}

bool fail(ErrorPtr *error, int code, const std::string &path) {
  setError(error, posixError(code, path));
  return false;
}

// Disk --------------------------------------------------------------------------------------

std::optional<Date> dateOf(const struct stat &st) {
  return Date::dateWithTimeIntervalSince1970(static_cast<double>(st.st_mtim.tv_sec) +
                                             st.st_mtim.tv_nsec / 1e9);
}

bool readFile(const std::string &path, Data &out, ErrorPtr *error) {
  int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
  if (fd < 0)
    return fail(error, errno, path);
  std::vector<uint8_t> bytes;
  struct stat st;
  if (::fstat(fd, &st) == 0 && st.st_size > 0)
    bytes.reserve(static_cast<size_t>(st.st_size));
  uint8_t buffer[65536];
  for (;;) {
    ssize_t n = ::read(fd, buffer, sizeof buffer);
    if (n < 0 && errno == EINTR)
      continue;
    if (n < 0) {
      int code = errno;
      ::close(fd);
      return fail(error, code, path);
    }
    if (n == 0)
      break;
    bytes.insert(bytes.end(), buffer, buffer + n);
  }
  ::close(fd);
  out = Data(std::move(bytes));
  return true;
}

bool readLink(const std::string &path, std::u16string &out, ErrorPtr *error) {
  std::string target(256, '\0');
  for (;;) {
    ssize_t n = ::readlink(path.c_str(), target.data(), target.size());
    if (n < 0)
      return fail(error, errno, path);
    if (static_cast<size_t>(n) < target.size()) {
      target.resize(static_cast<size_t>(n));
      out = fromUTF8(target);
      return true;
    }
    target.resize(target.size() * 2);
  }
}

std::string lastComponent(const std::string &path) {
  std::string trimmed = path;
  while (trimmed.size() > 1 && trimmed.back() == '/')
    trimmed.pop_back();
  size_t slash = trimmed.rfind('/');
  return slash == std::string::npos ? trimmed : trimmed.substr(slash + 1);
}

std::string parentOf(const std::string &path) {
  std::string trimmed = path;
  while (trimmed.size() > 1 && trimmed.back() == '/')
    trimmed.pop_back();
  size_t slash = trimmed.rfind('/');
  if (slash == std::string::npos)
    return ".";
  return slash == 0 ? "/" : trimmed.substr(0, slash);
}

// Removes a file, link or whole directory tree; errors are ignored (used for clean-up).
void removeTree(const std::string &path) {
  struct stat st;
  if (::lstat(path.c_str(), &st) != 0)
    return;
  if (S_ISDIR(st.st_mode)) {
    if (DIR *dir = ::opendir(path.c_str())) {
      std::vector<std::string> names;
      while (dirent *entry = ::readdir(dir)) {
        std::string name = entry->d_name;
        if (name != "." && name != "..")
          names.push_back(name);
      }
      ::closedir(dir);
      for (const std::string &name : names)
        removeTree(path + "/" + name);
    }
    ::rmdir(path.c_str());
  } else {
    ::unlink(path.c_str());
  }
}

bool writeAll(int fd, const Data &data) {
  const uint8_t *p = data.bytes();
  size_t left = data.length();
  while (left > 0) {
    ssize_t n = ::write(fd, p, left);
    if (n < 0 && errno == EINTR)
      continue;
    if (n <= 0)
      return false;
    p += n;
    left -= static_cast<size_t>(n);
  }
  return true;
}

// A name beside `path` that nothing uses yet (checked again by the exclusive create).
std::string siblingName(const std::string &path, const char *purpose) {
  static std::atomic<unsigned> counter{0};
  std::string parent = parentOf(path);
  std::string base = lastComponent(path);
  for (;;) {
    std::string candidate = (parent == "/" ? "" : parent) + "/." + base + "." + purpose + "-" +
                            std::to_string(::getpid()) + "-" + std::to_string(counter++);
    // Any failure to look (the parent missing or unreadable too) ends the search: the write
    // that follows reports it.
    struct stat st;
    if (::lstat(candidate.c_str(), &st) != 0)
      return candidate;
  }
}

} // namespace

// Construction ------------------------------------------------------------------------------

FileWrapperPtr FileWrapper::createRegularFile(Data contents) {
  auto wrapper = std::make_shared<FileWrapper>();
  wrapper->contents_ = std::move(contents);
  return wrapper;
}

FileWrapperPtr FileWrapper::createDirectory(
    const std::vector<std::pair<std::u16string, FileWrapperPtr>> &children) {
  auto wrapper = std::make_shared<FileWrapper>();
  wrapper->kind_ = Kind::Directory;
  for (const auto &[key, child] : children)
    if (child)
      wrapper->insertChild(key.empty() ? child->preferredFilename_ : key, child);
  return wrapper;
}

FileWrapperPtr FileWrapper::createSymbolicLink(std::u16string destination) {
  auto wrapper = std::make_shared<FileWrapper>();
  wrapper->kind_ = Kind::SymbolicLink;
  wrapper->destination_ = std::move(destination);
  return wrapper;
}

FileWrapperPtr FileWrapper::createWithPath(std::u16string_view path, ErrorPtr *error) {
  auto wrapper = std::make_shared<FileWrapper>();
  if (!wrapper->readFromPath(path, error))
    return nullptr;
  return wrapper;
}

// Children ----------------------------------------------------------------------------------

DictionaryPtr FileWrapper::fileWrappers() const {
  if (!isDirectory())
    return nullptr;
  auto out = Dictionary::create();
  for (const auto &[key, child] : children_)
    out->setObject(Value(child), key);
  return out;
}

FileWrapperPtr FileWrapper::fileWrapperForKey(std::u16string_view key) const {
  auto it =
      std::lower_bound(children_.begin(), children_.end(), key,
                       [](const auto &entry, std::u16string_view k) { return entry.first < k; });
  return it != children_.end() && it->first == key ? it->second : nullptr;
}

std::u16string FileWrapper::keyForFileWrapper(const FileWrapper &child) const {
  for (const auto &[key, wrapper] : children_)
    if (wrapper.get() == &child)
      return key;
  return {};
}

std::u16string FileWrapper::addFileWrapper(FileWrapperPtr child) {
  if (!child)
    return {};
  std::u16string name =
      !child->preferredFilename_.empty() ? child->preferredFilename_ : child->filename_;
  return insertChild(name, std::move(child));
}

std::u16string FileWrapper::insertChild(std::u16string_view name, FileWrapperPtr child) {
  if (!child || !isDirectory() || child.get() == this)
    return {};
  std::u16string base = sanitizedName(name);
  std::u16string key = base;
  for (int n = 2; fileWrapperForKey(key); ++n)
    key = numberedName(base, n);
  child->filename_ = key;
  if (child->preferredFilename_.empty())
    child->preferredFilename_ = key;
  auto at =
      std::lower_bound(children_.begin(), children_.end(), key,
                       [](const auto &entry, const std::u16string &k) { return entry.first < k; });
  children_.insert(at, {key, std::move(child)});
  return key;
}

std::u16string FileWrapper::addRegularFileWithContents(Data contents,
                                                       std::u16string_view preferredFilename) {
  if (!isDirectory())
    return {};
  auto child = createRegularFile(std::move(contents));
  child->preferredFilename_ = preferredFilename;
  return addFileWrapper(std::move(child));
}

void FileWrapper::removeFileWrapper(const FileWrapperPtr &child) {
  auto it = std::find_if(children_.begin(), children_.end(),
                         [&](const auto &entry) { return entry.second == child; });
  if (child && it != children_.end())
    children_.erase(it);
}

// Disk --------------------------------------------------------------------------------------

namespace {

FileWrapperPtr readNode(const std::string &path, size_t depth, bool top, ErrorPtr *error,
                        bool &skip);

bool readDirectory(FileWrapper &node, const std::string &path, size_t depth, ErrorPtr *error) {
  DIR *dir = ::opendir(path.c_str());
  if (!dir)
    return fail(error, errno, path);
  std::vector<std::string> names;
  while (dirent *entry = ::readdir(dir)) {
    std::string name = entry->d_name;
    if (name != "." && name != "..")
      names.push_back(name);
  }
  ::closedir(dir);
  std::sort(names.begin(), names.end());
  for (const std::string &name : names) {
    bool skip = false;
    FileWrapperPtr child = readNode(path + "/" + name, depth + 1, false, error, skip);
    if (!child && !skip)
      return false;
    if (child)
      node.addFileWrapper(child);
  }
  return true;
}

// The wrapper for what is at `path`; null with `skip` set for a special file inside a
// directory, null with `error` filled on failure.
FileWrapperPtr readNode(const std::string &path, size_t depth, bool top, ErrorPtr *error,
                        bool &skip) {
  if (depth > maxDepth) {
    fail(error, ELOOP, path);
    return nullptr;
  }
  struct stat st;
  if (::lstat(path.c_str(), &st) != 0) {
    fail(error, errno, path);
    return nullptr;
  }
  FileWrapperPtr made;
  if (S_ISLNK(st.st_mode)) {
    std::u16string destination;
    if (!readLink(path, destination, error))
      return nullptr;
    made = FileWrapper::createSymbolicLink(std::move(destination));
  } else if (S_ISREG(st.st_mode)) {
    Data contents;
    if (!readFile(path, contents, error))
      return nullptr;
    made = FileWrapper::createRegularFile(std::move(contents));
  } else if (S_ISDIR(st.st_mode)) {
    made = FileWrapper::createDirectory();
    if (!readDirectory(*made, path, depth, error))
      return nullptr;
  } else {
    if (top)
      fail(error, ENOTSUP, path);
    skip = !top;
    return nullptr;
  }
  std::u16string name = fromUTF8(lastComponent(path));
  made->setFilename(name);
  made->setPreferredFilename(name);
  made->setModificationDate(dateOf(st));
  return made;
}

// Writes `node` at `path`. In place: a regular file or link replaces what is there unless it
// is a directory; a directory is merged into an existing one.
bool writeNode(const FileWrapper &node, const std::string &path, ErrorPtr *error) {
  struct stat st;
  bool exists = ::lstat(path.c_str(), &st) == 0;
  switch (node.kind()) {
  case FileWrapper::Kind::RegularFile: {
    if (exists && S_ISLNK(st.st_mode))
      ::unlink(path.c_str());
    int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, 0644);
    if (fd < 0)
      return fail(error, errno, path);
    bool ok = writeAll(fd, node.regularFileContents());
    int code = errno;
    if (::close(fd) != 0 && ok) {
      ok = false;
      code = errno;
    }
    return ok || fail(error, code ? code : EIO, path);
  }
  case FileWrapper::Kind::SymbolicLink:
    if (exists && !S_ISDIR(st.st_mode))
      ::unlink(path.c_str());
    if (::symlink(toUTF8(node.symbolicLinkDestination()).c_str(), path.c_str()) != 0)
      return fail(error, errno, path);
    return true;
  case FileWrapper::Kind::Directory:
    if (!(exists && S_ISDIR(st.st_mode)) && ::mkdir(path.c_str(), 0755) != 0)
      return fail(error, errno, path);
    for (const auto &[key, child] : node.children())
      if (!writeNode(*child, path + "/" + toUTF8(key), error))
        return false;
    return true;
  }
  return fail(error, EINVAL, path);
}

} // namespace

bool FileWrapper::readFromPath(std::u16string_view path, ErrorPtr *error) {
  bool skip = false;
  FileWrapperPtr read = readNode(toUTF8(path), 0, true, error, skip);
  if (!read)
    return false;
  takeContentsOf(*read);
  return true;
}

void FileWrapper::takeContentsOf(FileWrapper &other) {
  kind_ = other.kind_;
  filename_ = std::move(other.filename_);
  preferredFilename_ = std::move(other.preferredFilename_);
  modificationDate_ = other.modificationDate_;
  contents_ = std::move(other.contents_);
  destination_ = std::move(other.destination_);
  children_ = std::move(other.children_);
}

bool FileWrapper::writeToPath(std::u16string_view path16, bool atomically, ErrorPtr *error) const {
  std::string path = toUTF8(path16);
  if (path.empty())
    return fail(error, ENOENT, path);
  if (!atomically)
    return writeNode(*this, path, error);

  std::string temporary = siblingName(path, "vlwp-new");
  ErrorPtr writeError;
  if (!writeNode(*this, temporary, &writeError)) {
    removeTree(temporary);
    // Name the path the caller asked for, not the temporary one.
    return fail(error, writeError ? static_cast<int>(writeError->code()) : EIO, path);
  }
  // rename() puts a file or link over a file or link atomically, but it does not put
  // anything over a directory that holds something, nor a directory over a file. Then the
  // old item is moved aside first and removed once the new one is in.
  struct stat st;
  bool moveAside =
      ::lstat(path.c_str(), &st) == 0 && (S_ISDIR(st.st_mode) || kind_ == Kind::Directory);
  std::string aside;
  if (moveAside) {
    aside = siblingName(path, "vlwp-old");
    if (::rename(path.c_str(), aside.c_str()) != 0) {
      int code = errno;
      removeTree(temporary);
      return fail(error, code, path);
    }
  }
  if (::rename(temporary.c_str(), path.c_str()) != 0) {
    int code = errno;
    if (moveAside)
      ::rename(aside.c_str(), path.c_str());
    removeTree(temporary);
    return fail(error, code, path);
  }
  if (moveAside)
    removeTree(aside);
  return true;
}

// Flat form ---------------------------------------------------------------------------------

namespace {

constexpr char magic[4] = {'V', 'L', 'F', 'W'};
constexpr uint8_t version = 1;
constexpr uint8_t hasDateFlag = 1;

struct Writer {
  std::vector<uint8_t> out;
  // Integers are little-endian, in their own width.
  template <class T> void integer(T v) {
    for (size_t i = 0; i < sizeof(T); ++i)
      out.push_back(static_cast<uint8_t>(static_cast<uint64_t>(v) >> (8 * i)));
  }
  void u8(uint8_t v) { integer(v); }
  void u32(uint32_t v) { integer(v); }
  void u64(uint64_t v) { integer(v); }
  void string(std::u16string_view text) {
    std::string utf8 = toUTF8(text);
    u32(static_cast<uint32_t>(utf8.size()));
    out.insert(out.end(), utf8.begin(), utf8.end());
  }
  void node(const FileWrapper &w) {
    u8(static_cast<uint8_t>(w.kind()));
    auto date = w.modificationDate();
    u8(date ? hasDateFlag : 0);
    if (date)
      u64(std::bit_cast<uint64_t>(date->timeIntervalSinceReferenceDate()));
    string(w.preferredFilename());
    string(w.filename());
    switch (w.kind()) {
    case FileWrapper::Kind::RegularFile:
      u64(w.regularFileContents().length());
      out.insert(out.end(), w.regularFileContents().begin(), w.regularFileContents().end());
      break;
    case FileWrapper::Kind::SymbolicLink:
      string(w.symbolicLinkDestination());
      break;
    case FileWrapper::Kind::Directory:
      u32(static_cast<uint32_t>(w.children().size()));
      for (const auto &[key, child] : w.children()) {
        string(key);
        node(*child);
      }
      break;
    }
  }
};

} // namespace

// Reads the flat form; a friend of FileWrapper, to place children under their stored keys.
struct FileWrapperReader {
  const uint8_t *p;
  size_t left;

  bool take(size_t n, const uint8_t *&at) {
    if (n > left)
      return false;
    at = p;
    p += n;
    left -= n;
    return true;
  }
  template <class T> bool integer(T &v) {
    const uint8_t *at;
    if (!take(sizeof(T), at))
      return false;
    uint64_t value = 0;
    for (size_t i = 0; i < sizeof(T); ++i)
      value |= uint64_t{at[i]} << (8 * i);
    v = static_cast<T>(value);
    return true;
  }
  bool u8(uint8_t &v) { return integer(v); }
  bool u32(uint32_t &v) { return integer(v); }
  bool u64(uint64_t &v) { return integer(v); }
  bool string(std::u16string &text) {
    uint32_t length;
    const uint8_t *at;
    return u32(length) && take(length, at) &&
           fromUTF8Strict(std::string_view(reinterpret_cast<const char *>(at), length), text);
  }
  FileWrapperPtr node(size_t depth) {
    uint8_t kind, flags;
    if (depth > maxDepth || !u8(kind) || !u8(flags) || (flags & ~hasDateFlag))
      return nullptr;
    std::optional<Date> date;
    if (flags & hasDateFlag) {
      uint64_t bits;
      if (!u64(bits))
        return nullptr;
      date = Date(std::bit_cast<double>(bits));
    }
    std::u16string preferred, filename;
    if (!string(preferred) || !string(filename))
      return nullptr;
    FileWrapperPtr made;
    switch (static_cast<FileWrapper::Kind>(kind)) {
    case FileWrapper::Kind::RegularFile: {
      uint64_t length;
      const uint8_t *at;
      if (!u64(length) || length > left || !take(static_cast<size_t>(length), at))
        return nullptr;
      made = FileWrapper::createRegularFile(Data(at, static_cast<size_t>(length)));
      break;
    }
    case FileWrapper::Kind::SymbolicLink: {
      std::u16string destination;
      if (!string(destination))
        return nullptr;
      made = FileWrapper::createSymbolicLink(std::move(destination));
      break;
    }
    case FileWrapper::Kind::Directory: {
      uint32_t count;
      if (!u32(count))
        return nullptr;
      made = FileWrapper::createDirectory();
      for (uint32_t i = 0; i < count; ++i) {
        // Keys come in ascending order, as they were written: one flat form a tree.
        std::u16string key;
        if (!string(key) || sanitizedName(key) != key ||
            (!made->children_.empty() && !(made->children_.back().first < key)))
          return nullptr;
        FileWrapperPtr child = node(depth + 1);
        if (!child)
          return nullptr;
        // The key places the child; the names stored inside it stay as they were written.
        std::u16string childName = child->filename();
        std::u16string childPreferred = child->preferredFilename();
        if (made->insertChild(key, child) != key)
          return nullptr;
        child->setFilename(std::move(childName));
        child->setPreferredFilename(std::move(childPreferred));
      }
      break;
    }
    default:
      return nullptr;
    }
    made->setPreferredFilename(std::move(preferred));
    made->setFilename(std::move(filename));
    made->setModificationDate(date);
    return made;
  }
};

Data FileWrapper::serializedRepresentation() const {
  Writer writer;
  for (size_t i = 0; i < 4; ++i)
    writer.u8(static_cast<uint8_t>(magic[i]));
  writer.u8(version);
  writer.node(*this);
  return Data(std::move(writer.out));
}

FileWrapperPtr FileWrapper::createWithSerializedRepresentation(const Data &data) {
  if (data.length() < 5 || std::memcmp(data.bytes(), magic, 4) != 0 || data.bytes()[4] != version)
    return nullptr;
  FileWrapperReader reader{data.bytes() + 5, data.length() - 5};
  FileWrapperPtr wrapper = reader.node(0);
  if (!wrapper || reader.left != 0)
    return nullptr;
  return wrapper;
}

// Object ------------------------------------------------------------------------------------

std::u16string FileWrapper::description() const {
  std::u16string kind = isDirectory() ? u"directory"
                        : isSymbolicLink()
                            ? u"link to " + destination_
                            : u"file of " + u16(std::to_string(contents_.length())) + u" bytes";
  std::u16string name = !filename_.empty() ? filename_ : preferredFilename_;
  return Object::description() + u" " + (name.empty() ? u"(unnamed)" : name) + u", " + kind;
}

void FileWrapper::encodeWithCoder(KeyedArchiver &coder) const {
  coder.encodeObject(Value(serializedRepresentation()), u"serializedRepresentation");
}

void FileWrapper::initWithCoder(KeyedUnarchiver &coder) {
  auto decoded = createWithSerializedRepresentation(
      coder.decodeObjectForKey(u"serializedRepresentation").data());
  if (decoded)
    takeContentsOf(*decoded);
}

} // namespace vl::ns
