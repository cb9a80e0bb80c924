// Bundle: the host's localized strings, resources and information dictionary (the platform's
// NSBundle). The library has no bundle of its own: the host installs what it has.
#pragma once

#include "ns/Dictionary.h"
#include "ns/Object.h"
#include "ns/Value.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace vl::ns {

class Bundle;
using BundlePtr = std::shared_ptr<Bundle>;

/// Holds strings tables by name, a resource directory and an information dictionary, all
/// set by the host. Without them every localized string is its key (or the given default),
/// and no resource is found. Lookups are binary searches in small dictionaries.
class Bundle : public Object {
public:
  Bundle();

  /// The bundle of the application, made empty on first use.
  static const BundlePtr &mainBundle();
  /// Replaces the main bundle with a fresh empty one. For tests.
  static void resetMainBundle();
  /// A bundle for the directory at `path` (UTF-8): its information dictionary is read from
  /// "Contents/Info.plist" and its resources live in "Contents/Resources", when they exist.
  /// Null when `path` is not a directory; an unreadable Info.plist leaves the dictionary empty.
  static BundlePtr bundleWithPath(const std::string &path);

  const char *className() const override { return "NSBundle"; }

  /// The string for `key` in `table` ("Localizable" when empty). When the table or the key
  /// is missing: `value` if it is not empty, else `key` (the platform's rule).
  std::u16string localizedStringForKey(std::u16string_view key, std::u16string_view value = {},
                                       std::u16string_view table = {}) const;
  /// Installs the strings of table `name` ("Localizable" when empty); null removes it.
  void setStringsTable(std::u16string_view name, DictionaryPtr strings);

  /// The directory resources are looked up in (UTF-8); empty means none.
  const std::string &resourcePath() const { return resourcePath_; }
  void setResourceDirectory(std::string path) { resourcePath_ = std::move(path); }
  /// The path of the regular file "<name>.<type>" (or "<name>" when type is empty) in the
  /// resource directory, else in its "Base.lproj" or "en.lproj"; nullopt when it is absent.
  std::optional<std::string> pathForResource(std::string_view name, std::string_view type) const;

  /// The bundle's own directory (UTF-8), set by the host or by bundleWithPath.
  const std::string &bundlePath() const { return bundlePath_; }
  void setBundlePath(std::string path) { bundlePath_ = std::move(path); }

  /// Never null; empty until the host sets one.
  const DictionaryPtr &infoDictionary() const { return info_; }
  /// Null is taken as an empty dictionary.
  void setInfoDictionary(DictionaryPtr info);
  Value objectForInfoDictionaryKey(std::u16string_view key) const;
  /// "CFBundleIdentifier" of the information dictionary, or "".
  std::u16string bundleIdentifier() const;

private:
  DictionaryPtr tables_;
  DictionaryPtr info_;
  std::string resourcePath_;
  std::string bundlePath_;
};

} // namespace vl::ns
