// Sheet objects: the pasteboard form, the editor's calls and key-value coding.
#include "objects/VLSSheetObject.h"

#include "model/VLOptionalString.h"
#include "ns/AttributeNames.h"
#include "ns/AttributedString.h"
#include "ns/Font.h"
#include "ns/Log.h"
#include "ns/ParagraphStyle.h"
#include "ns/String.h"
#include "ns/TextView.h"

namespace vl {

VLSSheetObjectPtr VLSSheetObject::createWithDictionary(const ns::Dictionary *dictionary) {
  auto object = std::make_shared<VLSSheetObject>();
  if (dictionary)
    object->_type = optionalStringOfValue(dictionary->objectForKey(u"type"));
  // A pasted field starts as an inline field; the host makes it a block where it lands.
  object->_isBlock = false;
  return object;
}

VLSSheetObjectPtr VLSSheetObject::createWithPasteboardPropertyList(const ns::Value &propertyList,
                                                                   std::u16string_view) {
  return createWithDictionary(propertyList.dictionary().get());
}

std::vector<std::u16string> VLSSheetObject::readableTypesForPasteboard(const ns::Pasteboard *) {
  return {std::u16string(VLSSheetObjectPasteboardType)};
}

std::vector<std::u16string>
VLSSheetObject::writableTypesForPasteboard(const ns::Pasteboard *) const {
  return {std::u16string(VLSSheetObjectPasteboardType)};
}

uint64_t VLSSheetObject::readingOptionsForType(std::u16string_view, const ns::Pasteboard *) {
  return ns::PasteboardReadingAsPropertyList;
}

ns::DictionaryPtr VLSSheetObject::dictionaryValue() const {
  auto dictionary = ns::Dictionary::create();
  if (_type)
    dictionary->setObject(ns::Value(*_type), u"type");
  dictionary->setObject(ns::Value(_isBlock), u"isBlock");
  return dictionary;
}

ns::Value VLSSheetObject::pasteboardPropertyListForType(std::u16string_view) const {
  return ns::Value(dictionaryValue());
}

ns::AttributedStringPtr VLSSheetObject::attributedString() const {
  auto attributes = ns::Dictionary::create();
  // setObject leaves the font out when the catalogue has none at all.
  attributes->setObject(ns::Value(ns::Font::userFontOfSize(12.0)), ns::FontAttributeName);
  attributes->setObject(ns::Value(ns::ParagraphStyle::defaultParagraphStyle()),
                        ns::ParagraphStyleAttributeName);
  return ns::AttributedString::create(_type.value_or(std::u16string()), attributes);
}

void VLSSheetObject::updateRange(ns::Range, ns::TextView *) {}

void VLSSheetObject::textStorage(ns::TextStorage *, ns::Range, ns::Range) {}

bool VLSSheetObject::textView(ns::TextView *, ns::Range change, std::u16string_view,
                              ns::Range objectRange) {
  return change.location >= objectRange.location && change.location < objectRange.max() &&
         change.max() <= objectRange.max();
}

bool VLSSheetObject::insertNewlineInRange(ns::Range, ns::TextView *) {
  return false;
}

ns::Rect VLSSheetObject::selectionFrameForRange(ns::Range range,
                                                const ns::TextView *textView) const {
  ns::Rect frame;
  if (textView && textView->hasLayoutManager())
    frame = textView->boundingRectForGlyphRange(textView->glyphRangeForCharacterRange(range));
  frame.origin.x -= 2.0;
  frame.origin.y -= 2.0;
  frame.size.width += 4.0;
  frame.size.height += 4.0;
  if (textView) {
    ns::Point origin = textView->textContainerOrigin();
    frame.origin.x += origin.x;
    frame.origin.y += origin.y;
  }
  return frame;
}

void VLSSheetObject::setNeedsUpdate(bool needsUpdate) {
  _needsUpdate = needsUpdate;
  if (ns::isLogging()) {
    auto address = reinterpret_cast<uintptr_t>(static_cast<const Object *>(this));
    ns::log(ns::LogLevel::Debug,
            ns::toUTF8(ns::format(u"%p needsUpdate:%d", address, int{needsUpdate})));
  }
}

bool VLSSheetObject::kvcValueForKey(std::u16string_view key, ns::Value &value) {
  if (key == u"isBlock")
    value = _isBlock;
  else if (key == u"needsUpdate")
    value = _needsUpdate;
  else if (key == u"objectValue")
    value = _objectValue;
  else if (key == u"type")
    value = valueOfOptionalString(_type);
  else
    return Object::kvcValueForKey(key, value);
  return true;
}

bool VLSSheetObject::kvcSetValueForKey(std::u16string_view key, const ns::Value &value) {
  if (key == u"isBlock")
    _isBlock = value.boolValue();
  else if (key == u"needsUpdate")
    setNeedsUpdate(value.boolValue());
  else if (key == u"objectValue")
    _objectValue = value;
  else if (key == u"type")
    _type = optionalStringOfValue(value);
  else
    return Object::kvcSetValueForKey(key, value);
  return true;
}

} // namespace vl
