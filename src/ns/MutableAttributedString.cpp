// Attributed string edits: the primitives over the engine, and every other edit on top of the
// primitives so that subclasses see each change.
#include "ns/MutableAttributedString.h"

#include "ns/Assert.h"
#include "ns/AttributeNames.h"
#include "ns/String.h"

#include <algorithm>

namespace vl::ns {

namespace {

// Walks the runs of `string` over `range` (inside the text), giving each piece's attributes
// and range to `edit`, which may change attributes but not the text.
template <class Edit>
void forEachRun(MutableAttributedString &string, Range range, const Edit &edit) {
  for (uint64_t position = range.location; position < range.max();) {
    Range effective;
    ConstDictionaryPtr attributes = string.attributesAtIndex(position, &effective);
    uint64_t end =
        effective.contains(position) ? std::min(effective.max(), range.max()) : position + 1;
    edit(attributes, Range{position, end - position});
    position = end;
  }
}

} // namespace

void MutableAttributedString::replaceCharactersInRange(Range range, std::u16string_view string) {
  checkRange(range, storage_.length(), "replaceCharactersInRange:withString:");
  storage_.replaceCharacters(range, string);
}

void MutableAttributedString::setAttributes(ConstDictionaryPtr attributes, Range range) {
  checkRange(range, storage_.length(), "setAttributes:range:");
  storage_.setAttributes(attributes, range);
}

void MutableAttributedString::replaceCharactersInRange(Range range,
                                                       const AttributedString &attributedString) {
  checkRange(range, length(), "replaceCharactersInRange:withAttributedString:");
  if (&attributedString == this) {
    AttributedString copy(attributedString);
    replaceCharactersInRange(range, copy);
    return;
  }
  const uint64_t n = attributedString.length();
  beginEditing();
  replaceCharactersInRange(range, attributedString.string());
  for (uint64_t position = 0; position < n;) {
    Range effective;
    ConstDictionaryPtr attributes = attributedString.attributesAtIndex(position, &effective);
    uint64_t end = effective.contains(position) ? std::min(effective.max(), n) : position + 1;
    setAttributes(std::move(attributes), Range{range.location + position, end - position});
    position = end;
  }
  endEditing();
}

void MutableAttributedString::addAttribute(std::u16string_view name, Value value, Range range) {
  checkRange(range, length(), "addAttribute:value:range:");
  VL_ASSERT(!value.isNil(), "addAttribute:value:range: nil value for " + toUTF8(name));
  beginEditing();
  forEachRun(*this, range, [&](const ConstDictionaryPtr &attributes, Range piece) {
    const Value *old = attributes->find(name);
    if (old && old->isIdenticalTo(value)) {
      setAttributes(attributes, piece);
      return;
    }
    auto changed = std::make_shared<Dictionary>(*attributes);
    changed->setObject(value, name);
    setAttributes(std::move(changed), piece);
  });
  endEditing();
}

void MutableAttributedString::addAttributes(const Dictionary &attributes, Range range) {
  checkRange(range, length(), "addAttributes:range:");
  beginEditing();
  forEachRun(*this, range, [&](const ConstDictionaryPtr &old, Range piece) {
    auto changed = std::make_shared<Dictionary>(*old);
    changed->addEntriesFromDictionary(attributes);
    setAttributes(std::move(changed), piece);
  });
  endEditing();
}

void MutableAttributedString::removeAttribute(std::u16string_view name, Range range) {
  checkRange(range, length(), "removeAttribute:range:");
  beginEditing();
  forEachRun(*this, range, [&](const ConstDictionaryPtr &attributes, Range piece) {
    if (!attributes->containsKey(name)) {
      setAttributes(attributes, piece);
      return;
    }
    auto changed = std::make_shared<Dictionary>(*attributes);
    changed->removeObjectForKey(name);
    setAttributes(std::move(changed), piece);
  });
  endEditing();
}

void MutableAttributedString::appendAttributedString(const AttributedString &attributedString) {
  replaceCharactersInRange(Range{length(), 0}, attributedString);
}

void MutableAttributedString::insertAttributedString(const AttributedString &attributedString,
                                                     uint64_t location) {
  checkRange(Range{location, 0}, length(), "insertAttributedString:atIndex:");
  replaceCharactersInRange(Range{location, 0}, attributedString);
}

void MutableAttributedString::deleteCharactersInRange(Range range) {
  replaceCharactersInRange(range, std::u16string_view());
}

void MutableAttributedString::setAttributedString(const AttributedString &attributedString) {
  replaceCharactersInRange(Range{0, length()}, attributedString);
}

// Attribute fixing.

void MutableAttributedString::fixAttributesInRange(Range range) {
  checkRange(range, length(), "fixAttributesInRange:");
  beginEditing();
  fixFontAttributeInRange(range);
  fixParagraphStyleAttributeInRange(range);
  fixAttachmentAttributeInRange(range);
  endEditing();
}

void MutableAttributedString::fixFontAttributeInRange(Range range) {
  checkRange(range, length(), "fixFontAttributeInRange:");
}

void MutableAttributedString::fixParagraphStyleAttributeInRange(Range range) {
  checkRange(range, length(), "fixParagraphStyleAttributeInRange:");
  beginEditing();
  for (uint64_t position = range.location; position < range.max();) {
    Range paragraph = paragraphRangeForRange(Range{position, 0});
    Range run;
    Value style = attribute(ParagraphStyleAttributeName, paragraph.location, &run, paragraph);
    if (run.max() < paragraph.max()) {
      if (!style.isNil()) {
        addAttribute(ParagraphStyleAttributeName, style,
                     Range{run.max(), paragraph.max() - run.max()});
      } else {
        // The longest run without a style ends where the paragraph's first style begins.
        style = attribute(ParagraphStyleAttributeName, run.max(), nullptr);
        addAttribute(ParagraphStyleAttributeName, style, paragraph);
      }
    }
    position = std::max(paragraph.max(), position + 1);
  }
  endEditing();
}

void MutableAttributedString::fixAttachmentAttributeInRange(Range range) {
  checkRange(range, length(), "fixAttachmentAttributeInRange:");
  beginEditing();
  enumerateAttribute(AttachmentAttributeName, range,
                     AttributedStringEnumerationLongestEffectiveRangeNotRequired,
                     [&](const Value &attachment, Range run, bool &) {
                       if (attachment.isNil())
                         return;
                       for (uint64_t i = run.location; i < run.max();) {
                         uint64_t j = i;
                         while (j < run.max() && characterAtIndex(j) != AttachmentCharacter)
                           ++j;
                         if (j > i)
                           removeAttribute(AttachmentAttributeName, Range{i, j - i});
                         i = j + 1;
                       }
                     });
  endEditing();
}

} // namespace vl::ns
