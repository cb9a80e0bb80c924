// The in-memory pasteboard: items of typed bytes, and the conversions of the reading options.
#include "ns/Pasteboard.h"

#include "ns/KeyedArchiver.h"
#include "ns/PropertyListSerialization.h"
#include "ns/String.h"

namespace vl::ns {

namespace {

std::optional<Data> propertyListBytes(const Value &plist) {
  if (!PropertyListSerialization::propertyListIsValidForFormat(plist, PropertyListXMLFormat_v1_0))
    return std::nullopt;
  return PropertyListSerialization::dataWithPropertyList(plist, PropertyListXMLFormat_v1_0);
}

// What a writing object's value becomes on the pasteboard; nothing when it cannot go there.
std::optional<Data> encode(const Value &value) {
  if (value.isData())
    return value.data();
  if (value.isString())
    return Data::fromString(toUTF8(value.string()));
  return propertyListBytes(value);
}

} // namespace

int64_t Pasteboard::clearContents() {
  items_.clear();
  return ++changeCount_;
}

bool Pasteboard::writeObjects(const std::vector<const PasteboardWriting *> &objects) {
  for (const PasteboardWriting *object : objects) {
    if (!object)
      return false;
    Item item;
    for (const std::u16string &type : object->writableTypesForPasteboard(this)) {
      if (find(item, type))
        continue;
      if (auto bytes = encode(object->pasteboardPropertyListForType(type)))
        item.emplace_back(type, std::move(*bytes));
    }
    if (item.empty())
      return false;
    items_.push_back(std::move(item));
  }
  return true;
}

const Data *Pasteboard::find(const Item &item, std::u16string_view type) {
  for (const auto &[name, bytes] : item)
    if (name == type)
      return &bytes;
  return nullptr;
}

std::vector<std::u16string> Pasteboard::types() const {
  std::vector<std::u16string> names;
  if (!items_.empty())
    for (const auto &entry : items_.front())
      names.push_back(entry.first);
  return names;
}

std::optional<Data> Pasteboard::dataForType(std::u16string_view type) const {
  if (items_.empty())
    return std::nullopt;
  if (const Data *bytes = find(items_.front(), type))
    return *bytes;
  return std::nullopt;
}

void Pasteboard::setData(Data data, std::u16string_view type) {
  if (items_.empty())
    items_.emplace_back();
  Item &item = items_.front();
  for (auto &entry : item)
    if (entry.first == type) {
      entry.second = std::move(data);
      return;
    }
  item.emplace_back(std::u16string(type), std::move(data));
}

bool Pasteboard::setPropertyList(const Value &plist, std::u16string_view type) {
  auto bytes = propertyListBytes(plist);
  if (!bytes)
    return false;
  setData(std::move(*bytes), type);
  return true;
}

Value Pasteboard::propertyListForType(std::u16string_view type) const {
  auto bytes = dataForType(type);
  return bytes ? decode(*bytes, PasteboardReadingAsPropertyList) : Value();
}

void Pasteboard::setString(std::u16string_view string, std::u16string_view type) {
  setData(Data::fromString(toUTF8(string)), type);
}

std::optional<std::u16string> Pasteboard::stringForType(std::u16string_view type) const {
  auto bytes = dataForType(type);
  if (!bytes)
    return std::nullopt;
  return fromUTF8(bytes->view());
}

Value Pasteboard::decode(const Data &bytes, uint64_t options) {
  if (options & PasteboardReadingAsKeyedArchive)
    return KeyedUnarchiver::unarchiveObjectWithData(bytes);
  if (options & PasteboardReadingAsPropertyList)
    return PropertyListSerialization::propertyListWithData(bytes);
  if (options & PasteboardReadingAsString)
    return Value(fromUTF8(bytes.view()));
  return Value(bytes);
}

} // namespace vl::ns
