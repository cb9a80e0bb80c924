// UserDefaults: the process's settings in two layers, set values over registered fallbacks,
// optionally kept in a property list file the host names (the platform's NSUserDefaults).
#pragma once

#include "ns/Array.h"
#include "ns/Dictionary.h"
#include "ns/Error.h"
#include "ns/Object.h"
#include "ns/Value.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace vl::ns {

class UserDefaults;
using UserDefaultsPtr = std::shared_ptr<UserDefaults>;

/// Values must be property lists (see PropertyListSerialization). Containers are copied
/// deeply on the way in and on the way out, so neither the caller's later changes nor changes
/// to an answered container reach the stored value: store it again to change it. Lookups are
/// a binary search in each layer. Not thread-safe, like the rest of the library.
///
/// Key-value coding reaches the defaults: valueForKey is objectForKey and setValueForKey is
/// setObject, announced to observers, so a path like "VLPreferredImporters" works through
/// setValueForKeyPath.
class UserDefaults : public Object {
public:
  UserDefaults();
  ~UserDefaults() override;

  /// The shared defaults, made on first use (with no file until setPersistentStorePath).
  static const UserDefaultsPtr &standardUserDefaults();
  /// Replaces the shared defaults with fresh empty ones. For tests.
  static void resetStandardUserDefaults();

  const char *className() const override { return "NSUserDefaults"; }

  /// The set value, else the registered one, else nil.
  Value objectForKey(std::u16string_view key) const;
  /// A string, or a number's decimal form; nullopt for anything else.
  std::optional<std::u16string> stringForKey(std::u16string_view key) const;
  /// A number's value, or a string read leniently ("42", "3.5", "YES"); 0 / false otherwise.
  int64_t integerForKey(std::u16string_view key) const;
  double doubleForKey(std::u16string_view key) const;
  bool boolForKey(std::u16string_view key) const;
  /// A copy of the dictionary or array stored, or null when the value is of another kind.
  DictionaryPtr dictionaryForKey(std::u16string_view key) const;
  ArrayPtr arrayForKey(std::u16string_view key) const;

  /// Stores a deep copy of `value`; nil removes the set value (the registered one shows
  /// again). A value that is not a property list fails an internal check, as on the
  /// platform.
  void setObject(const Value &value, std::u16string_view key);
  void removeObjectForKey(std::u16string_view key);
  /// Adds the entries of `defaults` to the registered layer, replacing equal keys. The
  /// registered layer is never written to the file.
  void registerDefaults(const Dictionary &defaults);
  /// The two layers merged, set values over registered ones.
  DictionaryPtr dictionaryRepresentation() const;

  /// Keeps the set values in the property list file at `path` (UTF-8). When the file exists
  /// its dictionary replaces the set values; when it does not, the set values stay and are
  /// written by the next synchronize. A file that cannot be read or is not a dictionary
  /// answers false with `error` and changes nothing (the path is not taken, so a damaged file
  /// is never overwritten). An empty path stops persistence.
  bool setPersistentStorePath(const std::string &path, ErrorPtr *error = nullptr);
  const std::string &persistentStorePath() const { return path_; }
  /// Writes the set values to the file, when there is one and something changed since the
  /// last write, as a binary property list: first to a temporary file beside it, then
  /// renamed over it, so a failed write leaves the old file whole. False with `error`
  /// (POSIXErrorDomain) when the file cannot be written.
  bool synchronize(ErrorPtr *error = nullptr);

  Value valueForKey(std::u16string_view key) override;

protected:
  /// setObject (nil removes); Object::setValueForKey announces the change.
  bool kvcSetValueForKey(std::u16string_view key, const Value &value) override;

private:
  DictionaryPtr values_;
  DictionaryPtr registered_;
  std::string path_;
  bool dirty_ = false;
};

} // namespace vl::ns
