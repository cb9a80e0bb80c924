// Style operations on editable text, the text transform, and spans near a range.
#include "model/VLTextStorageAdditions.h"

#include "model/VLAttributedStringAdditions.h"
#include "model/VLConstants.h"
#include "model/VLOutline.h"
#include "model/VLRangeHolder.h"
#include "ns/Assert.h"
#include "ns/AttributeNames.h"
#include "ns/Font.h"
#include "ns/FontManager.h"
#include "ns/ParagraphStyle.h"
#include "ns/String.h"

#include <algorithm>
#include <string>

namespace vl {

namespace {

// The batches below must not be left open by a range the first edit would reject.
void checkRange(const ns::AttributedString &string, ns::Range range, const char *operation) {
  uint64_t n = string.length();
  VL_ASSERT(range.location <= n && range.length <= n - range.location,
            std::string(operation) + ": range " + ns::toUTF8(ns::StringFromRange(range)) +
                " out of bounds; string length " + std::to_string(n));
}

// Restores the local traits `mask` names from the attributes a run had before the style
// `style` was laid over them into `attributes`.
void restoreTraits(const ns::Dictionary &before, ns::Dictionary &attributes, const VLStyle &style,
                   uint64_t mask) {
  VLStylePtr oldStyle = before.objectForKey(VLParagraphStyleAttributeName).as<VLStyle>();
  ns::FontManager &fonts = *ns::FontManager::sharedFontManager();
  uint32_t oldTraits =
      fonts.traitsOfFont(before.objectForKey(ns::FontAttributeName).as<ns::Font>());
  auto addTrait = [&](uint32_t trait) {
    ns::FontPtr font = attributes.objectForKey(ns::FontAttributeName).as<ns::Font>();
    if (ns::FontPtr converted = fonts.convertFontToHaveTrait(font, trait))
      attributes.setObject(ns::Value(std::move(converted)), ns::FontAttributeName);
  };
  if ((mask & VLPreserveBoldTrait) && !style.hasBoldFontWeight() &&
      !(oldStyle && oldStyle->hasBoldFontWeight()) && (oldTraits & ns::BoldFontMask))
    addTrait(ns::BoldFontMask);
  if ((mask & VLPreserveItalicTrait) && !style.hasItalicFontStyle() &&
      !(oldStyle && oldStyle->hasItalicFontStyle()) && (oldTraits & ns::ItalicFontMask))
    addTrait(ns::ItalicFontMask);
  if ((mask & VLPreserveUnderlineTrait) && style.underlineStyle() == 0 &&
      !(oldStyle && oldStyle->underlineStyle() != 0)) {
    if (const ns::Value *underline = before.find(ns::UnderlineStyleAttributeName))
      attributes.setObject(*underline, ns::UnderlineStyleAttributeName);
    else
      attributes.removeObjectForKey(ns::UnderlineStyleAttributeName);
  }
}

// The attributes a style is laid over when a run has none: a style needs a font to start from.
ns::DictionaryPtr startingAttributes(const ns::Dictionary &attributes) {
  if (!attributes.empty())
    return std::make_shared<ns::Dictionary>(attributes);
  return ns::Dictionary::create(
      {{std::u16string(ns::FontAttributeName), ns::Font::userFontOfSize(12.0)},
       {std::u16string(ns::ParagraphStyleAttributeName),
        ns::ParagraphStyle::defaultParagraphStyle()}});
}

} // namespace

void applyStyle(ns::MutableAttributedString &string, const VLStyle &style, ns::Range range) {
  applyStyle(string, style, 0, range);
}

void applyStyle(ns::MutableAttributedString &string, const VLStyle &style,
                uint64_t preservingTraits, ns::Range range) {
  checkRange(string, range, "applyStyle:range:");
  string.beginEditing();
  for (uint64_t position = range.location; position < range.max();) {
    ns::Range effective;
    ns::ConstDictionaryPtr before = string.attributesAtIndex(position, &effective);
    uint64_t end =
        effective.contains(position) ? std::min(effective.max(), range.max()) : position + 1;
    ns::DictionaryPtr attributes = startingAttributes(*before);
    style.applyToAttributes(*attributes);
    if (preservingTraits)
      restoreTraits(*before, *attributes, style, preservingTraits);
    string.setAttributes(std::move(attributes), ns::Range{position, end - position});
    position = end;
  }
  string.endEditing();
}

void convertTextWithStyle(ns::MutableAttributedString &string, const VLStylePtr &style,
                          const VLStylePtr &newStyle, ns::Range range) {
  checkRange(string, range, "convertTextWithStyle:toHaveStyle:inRange:");
  if (!style || !newStyle)
    return;
  const ns::Range whole{0, string.length()};
  string.beginEditing();
  for (uint64_t position = range.location; position < range.max();) {
    ns::Range run;
    ns::Value value = string.attribute(VLParagraphStyleAttributeName, position, &run, whole);
    if (value.object().get() == style.get()) {
      ns::ConstDictionaryPtr attributes = string.attributesAtIndex(run.location, nullptr);
      VLStylePtr differences = style->diffWithAttributes(*attributes);
      auto converted = std::make_shared<ns::Dictionary>(*attributes);
      newStyle->applyToAttributes(*converted);
      differences->applyToAttributes(*converted);
      // The differences have just named themselves the paragraph style.
      converted->setObject(ns::Value(newStyle), VLParagraphStyleAttributeName);
      string.setAttributes(std::move(converted), run);
    }
    position = std::max(run.max(), position + 1);
  }
  string.endEditing();
}

void convertTextWithStyle(ns::MutableAttributedString &string, const VLStylePtr &style,
                          const VLStylePtr &newStyle) {
  convertTextWithStyle(string, style, newStyle, ns::Range{0, string.length()});
}

bool attributesDifferFromStyleDefinitionAtLocation(const ns::AttributedString &string,
                                                   uint64_t location) {
  if (location == string.length())
    return true;
  ns::ConstDictionaryPtr attributes = string.attributesAtIndex(location, nullptr);
  VLStylePtr style = attributes->objectForKey(VLParagraphStyleAttributeName).as<VLStyle>();
  if (!style)
    return false;
  return !style->derivedParagraphStyleWithAttributes(*attributes)->isEmpty();
}

bool usesStyle(const ns::AttributedString &string, const VLStylePtr &style) {
  bool found = false;
  if (!style)
    return found;
  string.enumerateAttribute(VLParagraphStyleAttributeName, ns::Range{0, string.length()},
                            ns::AttributedStringEnumerationLongestEffectiveRangeNotRequired,
                            [&](const ns::Value &value, ns::Range, bool &stop) {
                              stop = found = value.object().get() == style.get();
                            });
  return found;
}

std::vector<ns::Range> rangesOfStyle(const ns::AttributedString &string, const VLStylePtr &style) {
  std::vector<ns::Range> ranges;
  if (!style)
    return ranges;
  string.enumerateAttribute(VLParagraphStyleAttributeName, ns::Range{0, string.length()},
                            ns::AttributedStringEnumerationLongestEffectiveRangeNotRequired,
                            [&](const ns::Value &value, ns::Range run, bool &) {
                              if (value.object().get() != style.get())
                                return;
                              if (!ranges.empty() && ranges.back().max() == run.location)
                                ranges.back().length += run.length;
                              else
                                ranges.push_back(run);
                            });
  return ranges;
}

std::vector<VLStylePtr> stylesInUse(const ns::AttributedString &string) {
  return stylesInRange(string, ns::Range{0, string.length()});
}

ns::Range rangeOfIdentifier(const ns::AttributedString &string, std::u16string_view identifier) {
  ns::Range found{ns::NotFound, 0};
  string.enumerateAttribute(VLOutlineElementAttributeName, ns::Range{0, string.length()}, 0,
                            [&](const ns::Value &value, ns::Range run, bool &stop) {
                              auto entry = value.as<VLOutline>();
                              if (entry && entry->identifier() == identifier) {
                                found = run;
                                stop = true;
                              }
                            });
  return found;
}

void applyStyleTransformToText(ns::MutableAttributedString &string) {
  string.beginEditing();
  for (uint64_t position = 0; position < string.length();) {
    ns::Range effective;
    ns::ConstDictionaryPtr attributes = string.attributesAtIndex(position, &effective);
    uint64_t end = effective.contains(position) ? effective.max() : position + 1;
    VLStylePtr style = attributes->objectForKey(VLParagraphStyleAttributeName).as<VLStyle>();
    int64_t transform = style ? style->textTransform() : VLTextTransformNone;
    if (transform >= VLTextTransformLowercase && transform <= VLTextTransformCapitalize) {
      ns::Range run{position, end - position};
      std::u16string text = string.substringWithRange(run);
      std::u16string transformed = transform == VLTextTransformLowercase ? ns::lowercaseString(text)
                                   : transform == VLTextTransformUppercase
                                       ? ns::uppercaseString(text)
                                       : ns::capitalizedString(text);
      if (transformed != text) {
        string.replaceCharactersInRange(run, ns::AttributedString(transformed, attributes));
        end = position + transformed.size();
      }
    }
    position = end;
  }
  string.endEditing();
}

std::vector<ns::ObjectPtr> textSpansForAttribute(const ns::AttributedString &string,
                                                 std::u16string_view name, ns::Range range) {
  std::vector<ns::ObjectPtr> spans;
  const uint64_t n = string.length();
  const ns::Range whole{0, n};
  // Only a run that holds an object is grown to its longest extent: the gaps between spans
  // may be as long as the text.
  auto longestRun = [&](uint64_t index) {
    ns::Range run;
    string.attribute(name, index, &run, whole);
    return run;
  };
  auto collect = [&](const ns::Value &value, ns::Range run) {
    const ns::ObjectPtr &object = value.object();
    if (auto *holder = dynamic_cast<VLRangeHolder *>(object.get()))
      holder->setRange(run);
    spans.push_back(object);
  };

  if (range.location > 0 && range.location - 1 < n) {
    ns::Value before = string.attribute(name, range.location - 1, nullptr);
    if (before.isObject()) {
      ns::Range run = longestRun(range.location - 1);
      if (run.max() == range.location)
        collect(before, run);
    }
  }
  uint64_t position = range.location;
  do {
    if (position >= n)
      break;
    ns::Range run;
    ns::Value value = string.attribute(name, position, &run);
    if (value.isObject()) {
      run = longestRun(position);
      collect(value, run);
    }
    position = std::max(run.max(), position + 1);
  } while (position < range.max());
  return spans;
}

std::vector<ns::ObjectPtr> textSpansInOrAdjacentToRange(const ns::AttributedString &string,
                                                        ns::Range range) {
  return textSpansForAttribute(string, VLTextSpanAttributeName, range);
}

} // namespace vl
