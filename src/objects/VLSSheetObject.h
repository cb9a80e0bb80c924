// VLSSheetObject: a field of a sheet (text, token or property list) standing in the text as a unit.
#pragma once

#include "model/VLConstants.h"
#include "ns/AttributedString.h"
#include "ns/Dictionary.h"
#include "ns/Geometry.h"
#include "ns/Object.h"
#include "ns/Pasteboard.h"
#include "ns/Range.h"
#include "ns/Value.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vl::ns {
class TextStorage;
class TextView;
} // namespace vl::ns

namespace vl {

class VLSSheetObject;
using VLSSheetObjectPtr = std::shared_ptr<VLSSheetObject>;

// The three kinds of field. The concrete forms belong to the host; these texts are all the
// library fixes.
inline constexpr std::u16string_view VLSSheetObjectTypeTextField = u"VLSSheetObjectTypeTextField";
inline constexpr std::u16string_view VLSSheetObjectTypeTokenField = u"VLSSheetObjectTypeTokenField";
inline constexpr std::u16string_view VLSSheetObjectTypePropertyList =
    u"VLSSheetObjectTypePropertyList";

/// A sheet field in the text: a run of characters under VLSSheetObjectAttributeName. It knows
/// its type and its bound object; by itself it shows its type text. Sheet objects compare by
/// identity.
///
/// On a pasteboard it is the property list dictionary {"type": the type text, "isBlock": a
/// boolean}, under VLSSheetObjectPasteboardType alone (stored as XML property list bytes by
/// ns::Pasteboard). Reading takes the type and nothing else: an object read back is never a
/// block, whatever it was when written, and any text is accepted as its type.
///
/// Key-value coding reaches "isBlock", "needsUpdate", "objectValue" and "type".
class VLSSheetObject : public ns::Object, public ns::PasteboardWriting {
public:
  VL_OBJECT(VLSSheetObject)

  /// No type, not a block, nothing bound.
  VLSSheetObject() = default;
  /// initWithDictionary:. Takes the text under "type" (nil when absent or not text); isBlock
  /// is false whatever the dictionary says. A nil dictionary gives an object without a type.
  static VLSSheetObjectPtr createWithDictionary(const ns::Dictionary *dictionary);
  /// initWithPasteboardPropertyList:ofType:. Any content goes to createWithDictionary, whatever
  /// `type` says: content that is not a dictionary reads as an empty one. Never null.
  static VLSSheetObjectPtr createWithPasteboardPropertyList(const ns::Value &propertyList,
                                                            std::u16string_view type);

  // Pasteboard reading and writing.

  /// The one type, VLSSheetObjectPasteboardType.
  static std::vector<std::u16string> readableTypesForPasteboard(const ns::Pasteboard *pasteboard);
  std::vector<std::u16string>
  writableTypesForPasteboard(const ns::Pasteboard *pasteboard) const override;
  /// ns::PasteboardReadingAsPropertyList (2), for any type.
  static uint64_t readingOptionsForType(std::u16string_view type, const ns::Pasteboard *pasteboard);
  /// A new dictionary of "type" (left out when there is none) and "isBlock".
  ns::DictionaryPtr dictionaryValue() const;
  /// dictionaryValue, whatever `type` says.
  ns::Value pasteboardPropertyListForType(std::u16string_view type) const override;

  /// The type text in the user font of size 12 with the default paragraph style; empty text
  /// when there is no type.
  ns::AttributedStringPtr attributedString() const;

  // The editor's calls. Virtual, so that a host's concrete field can do more.

  /// Does nothing: the field draws itself.
  virtual void updateRange(ns::Range range, ns::TextView *textView);
  /// textStorage:didChangeTextInRange:objectRange:. Does nothing.
  virtual void textStorage(ns::TextStorage *textStorage, ns::Range didChangeTextInRange,
                           ns::Range objectRange);
  /// textView:shouldChangeTextInRange:replacementString:objectRange:. True only when the
  /// change lies wholly inside the object: it begins at or after the object's start and before
  /// its end, and ends at or before its end. So nothing may be inserted at the object's very
  /// end. The replacement is not looked at.
  virtual bool textView(ns::TextView *textView, ns::Range shouldChangeTextInRange,
                        std::u16string_view replacementString, ns::Range objectRange);
  /// False: Return is left to the view.
  virtual bool insertNewlineInRange(ns::Range range, ns::TextView *textView);
  /// The frame to draw around a selection of `range`: the bounds of its glyphs (a zero
  /// rectangle when the view lays nothing out, or there is no view), grown by 2 on each side
  /// and moved by the view's text container origin.
  virtual ns::Rect selectionFrameForRange(ns::Range range, const ns::TextView *textView) const;

  // Fields.

  /// The object occupies whole paragraphs.
  bool isBlock() const { return _isBlock; }
  void setIsBlock(bool isBlock) { _isBlock = isBlock; }
  bool needsUpdate() const { return _needsUpdate; }
  /// Stores the flag and logs "%p needsUpdate:%d" at the debug level.
  void setNeedsUpdate(bool needsUpdate);
  /// Nesting count of the object's own writes, as observed spans keep it.
  int64_t internalUpdate() const { return _internalUpdate; }
  void setInternalUpdate(int64_t internalUpdate) { _internalUpdate = internalUpdate; }
  /// The bound object.
  const ns::Value &objectValue() const { return _objectValue; }
  void setObjectValue(ns::Value objectValue) { _objectValue = std::move(objectValue); }
  /// One of the three type texts, or any text read from a pasteboard; nil when unset.
  const std::optional<std::u16string> &type() const { return _type; }
  void setType(std::optional<std::u16string> type) { _type = std::move(type); }

protected:
  bool kvcValueForKey(std::u16string_view key, ns::Value &value) override;
  bool kvcSetValueForKey(std::u16string_view key, const ns::Value &value) override;

private:
  bool _isBlock = false;
  bool _needsUpdate = false;
  int64_t _internalUpdate = 0;
  ns::Value _objectValue;
  std::optional<std::u16string> _type;
};

} // namespace vl
