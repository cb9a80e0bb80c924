// Pasteboard: items of bytes by type (the platform's NSPasteboard), which a host mirrors to
// and from its system's clipboard.
#pragma once

#include "ns/Data.h"
#include "ns/Object.h"
#include "ns/Value.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vl::ns {

class Pasteboard;
using PasteboardPtr = std::shared_ptr<Pasteboard>;

/// How a type's bytes are handed to a reading class, as the platform numbers the options.
enum PasteboardReadingOptions : uint64_t {
  PasteboardReadingAsData = 0,
  PasteboardReadingAsString = 1,
  PasteboardReadingAsPropertyList = 2,
  PasteboardReadingAsKeyedArchive = 4,
};

/// Implemented by objects that can put themselves on a pasteboard.
class PasteboardWriting {
public:
  virtual ~PasteboardWriting() = default;
  /// The types the object offers, best first.
  virtual std::vector<std::u16string>
  writableTypesForPasteboard(const Pasteboard *pasteboard) const = 0;
  /// What goes under `type`: Data as it is, a string as UTF-8, anything else as a property
  /// list (XML). Nil, or a value no property list can hold, leaves the type out.
  virtual Value pasteboardPropertyListForType(std::u16string_view type) const = 0;
};

/// An in-memory pasteboard: a list of items, each holding bytes under type names. The library
/// writes and reads its objects through it; the host copies the items to the system's
/// clipboard and back (types() and dataForType() give it everything). Bytes are what crosses,
/// so a round trip through the pasteboard is a round trip through the encoded form.
///
/// A class T is readable by readObjects<T> when it has the static members
/// `readableTypesForPasteboard(const Pasteboard *)` (types, best first),
/// `readingOptionsForType(std::u16string_view, const Pasteboard *)` (PasteboardReadingOptions)
/// and `createWithPasteboardPropertyList(const Value &, std::u16string_view type)` answering a
/// std::shared_ptr<T>, null when it refuses the content.
class Pasteboard : public Object {
public:
  VL_OBJECT(NSPasteboard)

  using Item = std::vector<std::pair<std::u16string, Data>>;

  static PasteboardPtr create() { return std::make_shared<Pasteboard>(); }

  /// Removes every item; answers the new change count.
  int64_t clearContents();
  /// Goes up by one with each clearContents.
  int64_t changeCount() const { return changeCount_; }

  /// Appends one item per object, with each of its writable types it gives a value for.
  /// False (with the items written so far kept) when an object gives no type at all.
  bool writeObjects(const std::vector<const PasteboardWriting *> &objects);
  /// One object of T per item that holds a readable type of T (the first such type, in T's
  /// order) and whose content T accepts; content that does not decode as the reading options
  /// ask is skipped. Costs one decode per item.
  template <class T> std::vector<std::shared_ptr<T>> readObjects() const;

  /// The items, in order.
  const std::vector<Item> &items() const { return items_; }
  /// The types of the first item; empty when there is none.
  std::vector<std::u16string> types() const;
  /// The bytes under `type` in the first item, or nothing.
  std::optional<Data> dataForType(std::u16string_view type) const;
  /// Stores `data` under `type` in the first item (made when there is none), replacing what
  /// was there.
  void setData(Data data, std::u16string_view type);
  /// Stores `plist` as an XML property list; false (nothing stored) when it cannot be one.
  bool setPropertyList(const Value &plist, std::u16string_view type);
  /// The property list under `type` in the first item, or nil when absent or malformed.
  Value propertyListForType(std::u16string_view type) const;
  void setString(std::u16string_view string, std::u16string_view type);
  /// The UTF-8 text under `type` in the first item, or nothing.
  std::optional<std::u16string> stringForType(std::u16string_view type) const;

  /// `bytes` as a reading class asks for them by `options`: Data, UTF-8 text, a property list
  /// or an unarchived object; nil when they do not decode so.
  static Value decode(const Data &bytes, uint64_t options);

private:
  static const Data *find(const Item &item, std::u16string_view type);
  std::vector<Item> items_;
  int64_t changeCount_ = 0;
};

template <class T> std::vector<std::shared_ptr<T>> Pasteboard::readObjects() const {
  std::vector<std::shared_ptr<T>> objects;
  std::vector<std::u16string> readable = T::readableTypesForPasteboard(this);
  for (const Item &item : items_) {
    for (const std::u16string &type : readable) {
      const Data *bytes = find(item, type);
      if (!bytes)
        continue;
      Value content = decode(*bytes, T::readingOptionsForType(type, this));
      if (!content.isNil())
        if (auto object = T::createWithPasteboardPropertyList(content, type))
          objects.push_back(std::move(object));
      break;
    }
  }
  return objects;
}

} // namespace vl::ns
