// VLXMLStorage: forwarding to the contents, and the word count kept by each edit.
#include "model/VLXMLStorage.h"

#include "model/VLAttributedStringAdditions.h"
#include "ns/Log.h"
#include "ns/String.h"

#include <string>

namespace vl {

namespace {

std::string rangeText(ns::Range range) {
  return "<" + std::to_string(range.location) + ", " + std::to_string(range.length) + ">";
}

} // namespace

VLXMLStorage::VLXMLStorage() : _contents(ns::MutableAttributedString::create()) {}

VLXMLStorage::VLXMLStorage(std::optional<std::u16string_view> string,
                           ns::ConstDictionaryPtr attributes)
    : _contents(string && attributes
                    ? ns::MutableAttributedString::create(*string, std::move(attributes))
                    : ns::MutableAttributedString::create()) {}

VLXMLStorage::VLXMLStorage(const ns::AttributedString *other)
    : _contents(other ? ns::MutableAttributedString::create(*other)
                      : ns::MutableAttributedString::create()) {}

VLXMLStorage::~VLXMLStorage() = default;

void VLXMLStorage::setContents(ns::MutableAttributedStringPtr contents) {
  _contents = contents ? std::move(contents) : ns::MutableAttributedString::create();
}

uint64_t VLXMLStorage::length() const {
  return _contents->length();
}

std::u16string_view VLXMLStorage::string() const {
  return _contents->string();
}

ns::ConstDictionaryPtr VLXMLStorage::attributesAtIndex(uint64_t index,
                                                       ns::Range *effectiveRange) const {
  return _contents->attributesAtIndex(index, effectiveRange);
}

char16_t VLXMLStorage::characterAtIndex(uint64_t index) const {
  return _contents->characterAtIndex(index);
}

std::u16string VLXMLStorage::substringWithRange(ns::Range range) const {
  return _contents->substringWithRange(range);
}

ns::Range VLXMLStorage::paragraphRangeForRange(ns::Range range) const {
  return _contents->paragraphRangeForRange(range);
}

void VLXMLStorage::replaceCharactersInRange(ns::Range range, std::u16string_view string) {
  // Before the count is touched, so that a rejected edit leaves it as it was.
  checkRange(range, length(), "replaceCharactersInRange:withString:");
  if (_log && ns::isLogging())
    ns::log(ns::LogLevel::Debug, "replaceCharactersInRange:" + rangeText(range) + " withString:\"" +
                                     ns::toUTF8(string) + "\"");
  if (ns::TextStorageDelegate *delegate = this->delegate();
      delegate && delegate->respondsTo(ns::TextStorageDelegateMethod::WillReplaceCharacters))
    delegate->textStorage(*this, range, string);

  // Only the words the edit can touch change: from the start of the word before the edit
  // to the end of the word after it. Counted before and after, on that stretch alone.
  ns::Range words = wordRangeForCharRange(*_contents, range);
  _wordCount -= wordsInRange(*_contents, words);
  _contents->replaceCharactersInRange(range, string);
  int64_t change = static_cast<int64_t>(string.size()) - static_cast<int64_t>(range.length);
  words.length += static_cast<uint64_t>(change);
  _wordCount += wordsInRange(*_contents, words);
  edited(ns::TextStorageEditedCharacters, range, change);
}

void VLXMLStorage::setAttributes(ns::ConstDictionaryPtr attributes, ns::Range range) {
  if (_log && ns::isLogging())
    ns::log(ns::LogLevel::Debug,
            "setAttributes:" +
                ns::toUTF8(attributes ? attributes->description() : std::u16string(u"(null)")) +
                " range:" + rangeText(range));
  _contents->setAttributes(std::move(attributes), range);
  edited(ns::TextStorageEditedAttributes, range, 0);
}

void VLXMLStorage::addAttribute(std::u16string_view name, ns::Value value, ns::Range range) {
  _contents->addAttribute(name, std::move(value), range);
  edited(ns::TextStorageEditedAttributes, range, 0);
}

void VLXMLStorage::edited(uint64_t editedMask, ns::Range range, int64_t changeInLength) {
  if (ns::TextStorageDelegate *delegate = this->delegate();
      delegate && delegate->respondsTo(ns::TextStorageDelegateMethod::Edited))
    delegate->edited(editedMask, range, changeInLength);
  ns::TextStorage::edited(editedMask, range, changeInLength);
}

void VLXMLStorage::initWithCoder(ns::KeyedUnarchiver &coder) {
  _contents->initWithCoder(coder);
}

} // namespace vl
