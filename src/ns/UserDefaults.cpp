// User defaults: two layers of settings and their property list file.
#include "ns/UserDefaults.h"

#include "ns/Assert.h"
#include "ns/PropertyListSerialization.h"
#include "ns/String.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace vl::ns {

namespace {

// Values are property lists, so their nesting is bounded and recursion is safe.
Value deepCopy(const Value &value) {
  if (auto array = value.array()) {
    auto copy = Array::create();
    copy->values().reserve(array->count());
    for (const Value &element : *array)
      copy->addObject(deepCopy(element));
    return Value(copy);
  }
  if (auto dictionary = value.dictionary()) {
    auto copy = Dictionary::create();
    for (const auto &[key, element] : *dictionary)
      copy->setObject(deepCopy(element), key);
    return Value(copy);
  }
  return value;
}

ErrorPtr posixError(int code, const std::string &path, std::u16string_view what) {
  auto info = Dictionary::create({{std::u16string(LocalizedDescriptionKey),
                                   Value(std::u16string(what) + u" \u201C" + fromUTF8(path) +
                                         u"\u201D: " + fromUTF8(std::strerror(code)))},
                                  {std::u16string(FilePathErrorKey), Value(fromUTF8(path))}});
  return Error::errorWithDomain(POSIXErrorDomain, code, info);
}

// Reads the regular file at `path`; answers 0 or an errno value.
int readFile(const std::string &path, std::vector<uint8_t> &bytes) {
  int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0)
    return errno;
  struct stat info;
  int code = 0;
  if (::fstat(fd, &info) != 0)
    code = errno;
  else if (!S_ISREG(info.st_mode))
    code = EISDIR;
  uint8_t buffer[65536];
  while (!code) {
    ssize_t n = ::read(fd, buffer, sizeof buffer);
    if (n < 0 && errno == EINTR)
      continue;
    if (n < 0)
      code = errno;
    if (n <= 0)
      break;
    bytes.insert(bytes.end(), buffer, buffer + n);
  }
  ::close(fd);
  return code;
}

void requirePropertyList(const Value &value) {
  VL_ASSERT(
      PropertyListSerialization::propertyListIsValidForFormat(value, PropertyListBinaryFormat_v1_0),
      "Attempt to insert non-property list object " + toUTF8(value.description()));
}

UserDefaultsPtr &sharedDefaults() {
  static UserDefaultsPtr defaults = std::make_shared<UserDefaults>();
  return defaults;
}

} // namespace

UserDefaults::UserDefaults() : values_(Dictionary::create()), registered_(Dictionary::create()) {}
UserDefaults::~UserDefaults() = default;

const UserDefaultsPtr &UserDefaults::standardUserDefaults() {
  return sharedDefaults();
}

void UserDefaults::resetStandardUserDefaults() {
  sharedDefaults() = std::make_shared<UserDefaults>();
}

Value UserDefaults::objectForKey(std::u16string_view key) const {
  if (const Value *value = values_->find(key))
    return deepCopy(*value);
  if (const Value *value = registered_->find(key))
    return deepCopy(*value);
  return Value();
}

std::optional<std::u16string> UserDefaults::stringForKey(std::u16string_view key) const {
  Value value = objectForKey(key);
  if (value.isString() || value.isNumber())
    return value.stringValue();
  return std::nullopt;
}

int64_t UserDefaults::integerForKey(std::u16string_view key) const {
  Value value = objectForKey(key);
  return value.isString() || value.isNumber() ? value.integerValue() : 0;
}

double UserDefaults::doubleForKey(std::u16string_view key) const {
  Value value = objectForKey(key);
  return value.isString() || value.isNumber() ? value.doubleValue() : 0.0;
}

bool UserDefaults::boolForKey(std::u16string_view key) const {
  Value value = objectForKey(key);
  return (value.isString() || value.isNumber()) && value.boolValue();
}

DictionaryPtr UserDefaults::dictionaryForKey(std::u16string_view key) const {
  return objectForKey(key).dictionary();
}

ArrayPtr UserDefaults::arrayForKey(std::u16string_view key) const {
  return objectForKey(key).array();
}

void UserDefaults::setObject(const Value &value, std::u16string_view key) {
  if (value.isNil()) {
    removeObjectForKey(key);
    return;
  }
  requirePropertyList(value);
  values_->setObject(deepCopy(value), key);
  dirty_ = true;
}

void UserDefaults::removeObjectForKey(std::u16string_view key) {
  if (!values_->containsKey(key))
    return;
  values_->removeObjectForKey(key);
  dirty_ = true;
}

void UserDefaults::registerDefaults(const Dictionary &defaults) {
  for (const auto &[key, value] : defaults) {
    requirePropertyList(value);
    registered_->setObject(deepCopy(value), key);
  }
}

DictionaryPtr UserDefaults::dictionaryRepresentation() const {
  auto merged = deepCopy(Value(registered_)).dictionary();
  for (const auto &[key, value] : *values_)
    merged->setObject(deepCopy(value), key);
  return merged;
}

bool UserDefaults::setPersistentStorePath(const std::string &path, ErrorPtr *error) {
  if (path.empty()) {
    path_.clear();
    return true;
  }
  std::vector<uint8_t> bytes;
  int code = readFile(path, bytes);
  if (code == ENOENT) {
    path_ = path;
    dirty_ = true;
    return true;
  }
  if (code) {
    setError(error, posixError(code, path, u"Cannot read the defaults file"));
    return false;
  }
  ErrorPtr readError;
  Value plist =
      PropertyListSerialization::propertyListWithData(Data(std::move(bytes)), nullptr, &readError);
  auto dictionary = plist.dictionary();
  if (!dictionary) {
    setError(error, readError ? readError
                              : Error::errorWithDescription(
                                    CocoaErrorDomain, PropertyListReadCorruptError,
                                    u"The defaults file does not hold a dictionary."));
    return false;
  }
  values_ = dictionary;
  path_ = path;
  dirty_ = false;
  return true;
}

bool UserDefaults::synchronize(ErrorPtr *error) {
  if (path_.empty() || !dirty_)
    return true;
  ErrorPtr writeError;
  Data data = PropertyListSerialization::dataWithPropertyList(
      Value(values_), PropertyListBinaryFormat_v1_0, &writeError);
  if (data.empty()) {
    setError(error, writeError);
    return false;
  }
  std::string temporary = path_ + ".XXXXXX";
  int fd = mkstemp(temporary.data());
  if (fd < 0) {
    setError(error, posixError(errno, path_, u"Cannot write the defaults file"));
    return false;
  }
  size_t written = 0;
  int code = 0;
  while (!code && written < data.length()) {
    ssize_t n = ::write(fd, data.bytes() + written, data.length() - written);
    if (n < 0 && errno == EINTR)
      continue;
    if (n <= 0)
      code = n < 0 ? errno : EIO;
    else
      written += static_cast<size_t>(n);
  }
  if (!code && ::fsync(fd) != 0)
    code = errno;
  // mkstemp makes the file private; a file being replaced keeps its own permissions.
  struct stat existing;
  if (!code && ::stat(path_.c_str(), &existing) == 0 && ::fchmod(fd, existing.st_mode & 07777))
    code = errno;
  if (::close(fd) != 0 && !code)
    code = errno;
  if (!code && std::rename(temporary.c_str(), path_.c_str()) != 0)
    code = errno;
  if (code) {
    ::unlink(temporary.c_str());
    setError(error, posixError(code, path_, u"Cannot write the defaults file"));
    return false;
  }
  dirty_ = false;
  return true;
}

Value UserDefaults::valueForKey(std::u16string_view key) {
  return objectForKey(key);
}

bool UserDefaults::kvcSetValueForKey(std::u16string_view key, const Value &value) {
  setObject(value, key);
  return true;
}

} // namespace vl::ns
