// The host's bundle: strings tables, resources and information dictionary.
#include "ns/Bundle.h"

#include "ns/PropertyListSerialization.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>
#include <vector>

namespace vl::ns {

namespace {

constexpr std::u16string_view DefaultTable = u"Localizable";

BundlePtr &sharedMainBundle() {
  static BundlePtr bundle = std::make_shared<Bundle>();
  return bundle;
}

bool isRegularFile(const std::filesystem::path &path) {
  std::error_code ignored;
  return std::filesystem::is_regular_file(path, ignored);
}

} // namespace

Bundle::Bundle() : tables_(Dictionary::create()), info_(Dictionary::create()) {}

const BundlePtr &Bundle::mainBundle() {
  return sharedMainBundle();
}

void Bundle::resetMainBundle() {
  sharedMainBundle() = std::make_shared<Bundle>();
}

BundlePtr Bundle::bundleWithPath(const std::string &path) {
  std::error_code ignored;
  if (!std::filesystem::is_directory(path, ignored))
    return nullptr;
  auto bundle = std::make_shared<Bundle>();
  bundle->bundlePath_ = path;
  std::filesystem::path contents = std::filesystem::path(path) / "Contents";
  if (std::filesystem::is_directory(contents / "Resources", ignored))
    bundle->resourcePath_ = (contents / "Resources").string();
  std::ifstream in(contents / "Info.plist", std::ios::binary);
  if (in) {
    std::vector<uint8_t> bytes((std::istreambuf_iterator<char>(in)),
                               std::istreambuf_iterator<char>());
    if (auto info =
            PropertyListSerialization::propertyListWithData(Data(std::move(bytes))).dictionary())
      bundle->info_ = info;
  }
  return bundle;
}

std::u16string Bundle::localizedStringForKey(std::u16string_view key, std::u16string_view value,
                                             std::u16string_view table) const {
  if (auto strings = tables_->objectForKey(table.empty() ? DefaultTable : table).dictionary()) {
    const Value &found = strings->objectForKey(key);
    if (found.isString())
      return found.string();
  }
  return std::u16string(value.empty() ? key : value);
}

void Bundle::setStringsTable(std::u16string_view name, DictionaryPtr strings) {
  tables_->setObject(strings ? Value(strings) : Value(), name.empty() ? DefaultTable : name);
}

std::optional<std::string> Bundle::pathForResource(std::string_view name,
                                                   std::string_view type) const {
  if (resourcePath_.empty() || name.empty())
    return std::nullopt;
  std::string file(name);
  if (!type.empty()) {
    file += '.';
    file += type;
  }
  std::filesystem::path base(resourcePath_);
  for (const char *subdirectory : {"", "Base.lproj", "en.lproj"}) {
    std::filesystem::path candidate = base / subdirectory / file;
    if (isRegularFile(candidate))
      return candidate.lexically_normal().string();
  }
  return std::nullopt;
}

void Bundle::setInfoDictionary(DictionaryPtr info) {
  info_ = info ? std::move(info) : Dictionary::create();
}

Value Bundle::objectForInfoDictionaryKey(std::u16string_view key) const {
  return info_->objectForKey(key);
}

std::u16string Bundle::bundleIdentifier() const {
  return info_->objectForKey(u"CFBundleIdentifier").string();
}

} // namespace vl::ns
