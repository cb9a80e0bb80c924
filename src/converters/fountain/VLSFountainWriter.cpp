// Writing styled text as Fountain: paragraphs to elements, runs to emphasis marks.
#include "converters/fountain/VLSFountainWriter.h"

#include "converters/fountain/FNScript.h"
#include "converters/fountain/FountainWriter.h"
#include "model/VLConstants.h"
#include "model/VLLocalization.h"
#include "model/VLOutline.h"
#include "model/VLStyle.h"
#include "ns/AttributeNames.h"
#include "ns/Font.h"
#include "ns/FontManager.h"
#include "ns/ParagraphStyle.h"
#include "ns/String.h"
#include "ns/URL.h"

#include <algorithm>
#include <array>

namespace vl {

namespace {

// Element types by pagination style or display name; the first row that fits decides.
struct TypeRow {
  int64_t paginationStyle;
  std::u16string_view displayName;
  std::u16string_view type;
};
constexpr std::array<TypeRow, 7> TypeTable{{
    {VLSceneHeadingPagination, u"Scene Heading", FNElementTypeSceneHeading},
    {VLActionPagination, u"Action", FNElementTypeAction},
    {VLCharacterPagination, u"Character", FNElementTypeCharacter},
    {VLParentheticalPagination, u"Parenthetical", FNElementTypeParenthetical},
    {VLDialoguePagination, u"Dialogue", FNElementTypeDialogue},
    {VLShotPagination, u"Shot", FNElementTypeSceneHeading},
    {VLTransitionPagination, u"Transition", FNElementTypeTransition},
}};

constexpr std::u16string_view SceneHeadingStyleName = u"Scene_20_Heading";
constexpr int64_t MaxSectionDepth = 1024;
constexpr std::u16string_view UntitledSectionTitle = u"Untitled Section";

// The outline entry whose range starts at `location`, or nil.
VLOutlinePtr outlineEntryStartingAt(const ns::AttributedString &string, uint64_t location) {
  if (location >= string.length())
    return nullptr;
  auto entry = string.attribute(VLOutlineElementAttributeName, location, nullptr).as<VLOutline>();
  if (!entry || entry->range().location != location || !entry->identifier())
    return nullptr;
  return entry;
}

bool isWhitespaceOrNewline(char16_t c) {
  static const ns::CharacterSet &set = ns::CharacterSet::whitespaceAndNewlineCharacterSet();
  return set.characterIsMember(c);
}

} // namespace

VLSFountainWriter::VLSFountainWriter(ns::AttributedStringPtr attributedString)
    : VLSAttributedStringWriter(std::move(attributedString)) {}

void VLSFountainWriter::startEncoding() {
  const ns::ConstDictionaryPtr &attributes = documentAttributes();
  model_ = attributes ? attributes->objectForKey(VLRDFMetadataDocumentAttribute).as<RDFModel>()
                      : nullptr;
}

std::optional<ns::Data> VLSFountainWriter::data() {
  FNScript script;
  script.setElements(elements_);
  // Scene numbers belong to a shooting script; this writer never has any to give.
  script.setSuppressSceneNumbers(true);

  auto titlePage = ns::Array::create();
  auto addEntry = [&](std::u16string_view key, std::u16string value) {
    titlePage->addObject(
        ns::Dictionary::create({{std::u16string(key), ns::Array::create({value})}}));
  };
  const ns::ConstDictionaryPtr &attributes = documentAttributes();
  for (std::u16string_view key : {ns::TitleDocumentAttribute, ns::AuthorDocumentAttribute}) {
    if (!attributes)
      break;
    std::optional<std::u16string> value = textOfPropertyValue(attributes->objectForKey(key));
    if (value && !value->empty())
      addEntry(key, std::move(*value));
  }
  // What makes the reader take the file for a novel again.
  if (!isScreenplay_)
    addEntry(u"Type", u"Novel");
  if (baseFontFamily_)
    addEntry(u"Font", *baseFontFamily_);
  if (titlePage->count() > 0)
    script.setTitlePage(titlePage);

  return ns::Data::fromString(ns::toUTF8(FountainWriter::documentFromScript(script)));
}

uint64_t VLSFountainWriter::encodeParagraphInRange(ns::Range range) {
  const uint64_t location = range.location;
  paragraphString_.clear();
  const uint64_t answer = VLSAttributedStringWriter::encodeParagraphInRange(range);
  closeMarkupIfNecessaryForEmphasis(0, false);

  std::u16string_view type = FNElementTypeAction;
  std::u16string text = std::move(paragraphString_);
  paragraphString_.clear();
  uint64_t depth = 0;

  const ns::AttributedString &string = *currentString();
  const bool inText = location < string.length();
  VLStylePtr style =
      inText ? string.attribute(VLParagraphStyleAttributeName, location, nullptr).as<VLStyle>()
             : nullptr;
  if (style) {
    if (style->textTransform() == VLTextTransformUppercase)
      text = ns::uppercaseString(text);
    std::replace(text.begin(), text.end(), u'\u2028', u'\n');
    // A negative level is no level, and a corrupt style's huge level must not become an
    // endless line of marks.
    if (int64_t level = style->headerLevel(); level > 0) {
      type = FNElementTypeSectionHeading;
      depth = static_cast<uint64_t>(std::min<int64_t>(level, MaxSectionDepth));
    } else {
      const int64_t pagination = style->paginationStyle();
      const std::optional<std::u16string> &displayName = style->displayName();
      auto row = std::find_if(TypeTable.begin(), TypeTable.end(), [&](const TypeRow &r) {
        return r.paginationStyle == pagination || (displayName && *displayName == r.displayName);
      });
      if (row != TypeTable.end()) {
        type = row->type;
      } else if (!baseFontFamily_) {
        // The first plain prose style names the font of the title page.
        const ns::FontPtr &font = style->font();
        if (font && !font->familyName().empty() &&
            ns::caseInsensitiveCompare(font->familyName(), u"Courier") != ns::OrderedSame)
          baseFontFamily_ = font->familyName();
      }
    }
  }

  if (!isScreenplay_ && type == FNElementTypeAction) {
    // In a novel the scene's title lives only in the model: put it back as a heading.
    VLOutlinePtr entry = outlineEntryStartingAt(string, location);
    if (entry && entry->level() == 0)
      encodeSceneForIdentifier(*entry->identifier(), location);
  }

  auto element = FNElement::elementOfType(type, text);
  element->setSectionDepth(depth);
  if (type == FNElementTypeAction && inText) {
    auto paragraph = string.attribute(ns::ParagraphStyleAttributeName, location, nullptr)
                         .as<ns::ParagraphStyle>();
    element->setIsCentered(paragraph && paragraph->alignment() == ns::TextAlignmentCenter);
  }
  elements_.push_back(std::move(element));

  if (style && (style->headerLevel() >= 1 || style->paginationStyle() == VLSceneHeadingPagination ||
                style->styleName() == SceneHeadingStyleName)) {
    // The synopsis follows its heading.
    if (VLOutlinePtr entry = outlineEntryStartingAt(string, location))
      encodeSummaryForIdentifier(*entry->identifier(), location);
  }
  return answer;
}

uint64_t VLSFountainWriter::encodeSpanInRange(ns::Range range) {
  const ns::AttributedString &string = *currentString();
  ns::Range effective;
  ns::ConstDictionaryPtr attributes = string.attributesAtIndex(range.location, &effective);
  const uint64_t end = std::min(effective.max(), range.max());
  const ns::Range run{range.location, end - range.location};

  uint64_t traits = 0;
  if (auto font = attributes->objectForKey(ns::FontAttributeName).as<ns::Font>())
    traits = ns::FontManager::sharedFontManager()->traitsOfFont(font) & 3;
  const bool underlined =
      attributes->objectForKey(ns::UnderlineStyleAttributeName).integerValue() != 0;
  closeMarkupIfNecessaryForEmphasis(traits, underlined);

  std::u16string text = string.substringWithRange(run);
  size_t first = 0;
  while (first < text.size() && isWhitespaceOrNewline(text[first]))
    ++first;
  size_t last = text.size();
  while (last > first && isWhitespaceOrNewline(text[last - 1]))
    --last;

  // Marks hug the words: white space on either side stays outside them.
  emitString(std::u16string_view(text).substr(0, first));
  openMarkupIfNecessaryForEmphasis(traits, underlined);
  emitString(std::u16string_view(text).substr(first, last - first));
  bufferedWhitespace_.assign(text, last);
  return end;
}

void VLSFountainWriter::encodeCommentStart(const VLSTextMarkerPtr &marker) {
  std::optional<std::u16string> note = textOfPropertyValue(marker->representedObject());
  if (!note)
    return;
  emitString(u"[[");
  emitString(cleanString(*note));
  emitString(u"]]");
}

void VLSFountainWriter::encodeCommentEnd(const VLSTextMarkerPtr &) {}

std::u16string VLSFountainWriter::cleanString(std::u16string_view string) {
  std::u16string result;
  result.reserve(string.size());
  size_t position = 0;
  while (position < string.size()) {
    size_t end = position;
    while (end < string.size() && !ns::isParagraphSeparator(string[end]))
      ++end;
    result.append(string.substr(position, end - position));
    if (end == string.size())
      break;
    // One terminator, CR LF counting as one.
    size_t next = end + 1;
    if (string[end] == u'\r' && next < string.size() && string[next] == u'\n')
      ++next;
    if (next < string.size())
      result.push_back(u' ');
    position = next;
  }
  return result;
}

void VLSFountainWriter::emitString(std::u16string_view string) {
  paragraphString_.append(string);
}

std::u16string_view VLSFountainWriter::markupForFontTraits(uint64_t traits) {
  switch (traits & 3) {
  case 1:
    return u"*";
  case 2:
    return u"**";
  case 3:
    return u"***";
  default:
    return u"";
  }
}

void VLSFountainWriter::closeMarkupIfNecessaryForEmphasis(uint64_t traits, bool isUnderlined) {
  if (traits == 0 && openEmphasis_ != 0) {
    emitString(markupForFontTraits(openEmphasis_));
    openEmphasis_ = 0;
  }
  if (!isUnderlined && openUnderlinig_) {
    emitString(u"_");
    openUnderlinig_ = false;
  }
  if (!bufferedWhitespace_.empty()) {
    emitString(bufferedWhitespace_);
    bufferedWhitespace_.clear();
  }
}

void VLSFountainWriter::openMarkupIfNecessaryForEmphasis(uint64_t traits, bool isUnderlined) {
  if (isUnderlined && !openUnderlinig_) {
    emitString(u"_");
    openUnderlinig_ = true;
  }
  if (traits != 0 && openEmphasis_ == 0) {
    emitString(markupForFontTraits(traits));
    openEmphasis_ = traits;
  }
}

RDFResourcePtr VLSFountainWriter::resourceForIdentifier(std::u16string_view identifier) const {
  if (!model_)
    return nullptr;
  std::u16string reference =
      u"#" + ns::stringByAddingPercentEncoding(identifier, ns::URLFragmentAllowedCharacterSet());
  ns::URLPtr url = ns::URL::URLWithString(reference, baseURL());
  return url ? model_->findResource(url->absoluteString()) : nullptr;
}

void VLSFountainWriter::addElement(std::u16string_view type, std::u16string text) {
  elements_.push_back(FNElement::elementOfType(type, text));
}

void VLSFountainWriter::encodeSceneForIdentifier(std::u16string_view identifier, uint64_t) {
  RDFResourcePtr resource = resourceForIdentifier(identifier);
  if (!resource)
    return;
  std::optional<std::u16string> title = textOfPropertyValue(resource->title());
  std::optional<std::u16string> summary = textOfPropertyValue(resource->summary());
  if (title) {
    // The reader's placeholder for text before the first heading says nothing on its own.
    bool placeholder = ns::caseInsensitiveCompare(*title, localizedString(UntitledSectionTitle)) ==
                       ns::OrderedSame;
    if (summary || !placeholder)
      addElement(FNElementTypeSceneHeading, cleanString(*title));
  }
  if (summary && !summary->empty())
    addElement(FNElementTypeSynopsis, cleanString(*summary));
}

void VLSFountainWriter::encodeSummaryForIdentifier(std::u16string_view identifier, uint64_t) {
  RDFResourcePtr resource = resourceForIdentifier(identifier);
  if (!resource)
    return;
  if (std::optional<std::u16string> summary = textOfPropertyValue(resource->summary()))
    addElement(FNElementTypeSynopsis, cleanString(*summary));
}

} // namespace vl
