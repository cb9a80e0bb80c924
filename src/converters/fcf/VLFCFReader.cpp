// VLFCFReader: reads an FCF file into text styled from the default screenplay stylesheet.
#include "converters/fcf/VLFCFReader.h"

#include "model/VLConstants.h"
#include "model/VLDocumentSettings.h"
#include "model/VLLocalization.h"
#include "model/VLMasterPage.h"
#include "ns/Array.h"
#include "ns/Assert.h"
#include "ns/AttributedString.h"
#include "ns/PrintInfo.h"
#include "ns/String.h"

#include <string>
#include <utility>
#include <vector>

namespace vl {

namespace {

/// The run attributes of each style met during one read: VLStyle::attributes resolves the
/// whole cascade and converts fonts, too dear to repeat for every record.
class AttributesCache {
public:
  ns::ConstDictionaryPtr attributesForStyle(const VLStylePtr &style) {
    if (!style)
      return nullptr;
    for (const auto &[cached, attributes] : entries_)
      if (cached == style.get())
        return attributes;
    ns::ConstDictionaryPtr attributes = style->attributes();
    entries_.emplace_back(style.get(), attributes);
    return attributes;
  }

private:
  std::vector<std::pair<const VLStyle *, ns::ConstDictionaryPtr>> entries_;
};

} // namespace

VLFCFReader::AttributedStringClass VLFCFReader::attributedStringClass() const {
  if (_attributedStringClass)
    return _attributedStringClass;
  return attributedStringClassOf<ns::MutableAttributedString>();
}

void VLFCFReader::setupStyles() {
  VLStylesheetPtr stylesheet = VLStylesheet::defaultScreenplayStylesheet();
  _sceneHeadingStyle = stylesheet->styleForName(u"Scene_20_Heading");
  _actionStyle = stylesheet->styleForName(u"Action");
  _characterStyle = stylesheet->styleForName(u"Character");
  _parentheticalStyle = stylesheet->styleForName(u"Parenthetical");
  // The default sheet names its dialogue style after "Dialogue"; without the second lookup
  // dialogue would come in unstyled and be written back as a general paragraph.
  _dialogStyle = stylesheet->styleForName(u"Dialog");
  if (!_dialogStyle)
    _dialogStyle = stylesheet->styleForName(u"Dialogue");
  _transitionStyle = stylesheet->styleForName(u"Transition");
  _stylesheet = std::move(stylesheet);
}

const VLStylePtr &VLFCFReader::styleForType(int32_t type, const VLStylePtr &defaultStyle) const {
  switch (type) {
  case 1:
    return _sceneHeadingStyle;
  case 2:
    return _actionStyle;
  case 3:
    return _characterStyle;
  case 4:
    return _parentheticalStyle;
  case 5:
    return _dialogStyle;
  case 6:
    return _transitionStyle;
  default:
    return defaultStyle;
  }
}

ns::MutableAttributedStringPtr
VLFCFReader::attributedStringWithData(const ns::Data &data, const ns::DictionaryPtr & /*options*/,
                                      ns::DictionaryPtr *documentAttributes,
                                      ns::ErrorPtr * /*error*/) {
  setupStyles();
  ns::MutableAttributedStringPtr result = attributedStringClass()();
  setData(data);
  const uint64_t end = endOffset();

  if (readInt() != VLFCFMagic)
    return nullptr;
  for (int i = 0; i < 4; ++i)
    (void)readInt();

  const VLStylePtr defaultStyle = _stylesheet->defaultParagraphStyle();
  AttributesCache cache;
  // One batch, so that a text storage fixes its attributes once and not after every record.
  result->beginEditing();
  while (_dataOffset < end) {
    if (readInt() != VLFCFTextTag)
      break;
    const uint32_t length = static_cast<uint32_t>(readInt());
    const int32_t type = readInt();
    const VLStylePtr &style = styleForType(type, defaultStyle);
    // A length below 4 wraps to about 4 GB here, which the bounds check then refuses.
    const uint64_t textLength = static_cast<uint32_t>(length - 4u);
    std::optional<std::u16string> text = readASCIIStringOfLength(textLength);
    if (!text) {
      result->endEditing();
      return nullptr;
    }
    if (!text->empty())
      result->appendAttributedString(ns::AttributedString(*text, cache.attributesForStyle(style)));
  }

  // CRs become line feeds once, over the whole text: records may hold several, and a CR LF
  // pair becomes two paragraph ends. Replacing a unit by one unit moves no position, so the
  // positions can be gathered from one look at the text.
  const int32_t length = static_cast<int32_t>(result->length());
  if (length > 0) {
    std::vector<uint64_t> returns;
    std::u16string_view text = result->string().substr(0, static_cast<uint64_t>(length));
    for (uint64_t i = 0; i < text.size(); ++i)
      if (text[i] == u'\r')
        returns.push_back(i);
    for (uint64_t index : returns)
      result->replaceCharactersInRange(ns::Range{index, 1}, u"\n");
  }
  result->endEditing();

  if (documentAttributes) {
    auto attributes = ns::Dictionary::create();
    attributes->setObject(_stylesheet, VLStylesheetDocumentAttribute);
    attributes->setObject(defaultSettings(), VLSettingsDocumentAttribute);
    attributes->setObject(defaultMasterPages(), VLMasterPagesKey);
    *documentAttributes = std::move(attributes);
  }
  return result;
}

int32_t VLFCFReader::readInt() {
  const uint64_t length = _data.length();
  if (_dataOffset > length || length - _dataOffset < 4) [[unlikely]]
    ns::detail::assertionFailed("readInt: range " +
                                    ns::toUTF8(ns::StringFromRange(ns::Range{_dataOffset, 4})) +
                                    " out of bounds; data length " + std::to_string(length),
                                __FILE__, __LINE__);
  const uint8_t *p = _data.bytes() + _dataOffset;
  _dataOffset += 4;
  const uint32_t word =
      (uint32_t(p[0]) << 24) | (uint32_t(p[1]) << 16) | (uint32_t(p[2]) << 8) | uint32_t(p[3]);
  return static_cast<int32_t>(word);
}

std::optional<std::u16string> VLFCFReader::readASCIIStringOfLength(uint64_t length) {
  const uint64_t dataLength = _data.length();
  VL_ASSERT(_dataOffset <= dataLength && length <= dataLength - _dataOffset,
            "Invalid parameter not satisfying: dataOffset + length <= [data length]");
  const uint8_t *p = _data.bytes() + _dataOffset;
  _dataOffset += length;
  std::u16string text(length, u'\0');
  uint8_t high = 0;
  for (uint64_t i = 0; i < length; ++i) {
    high |= p[i];
    text[i] = p[i];
  }
  if (high & 0x80)
    return std::nullopt;
  return text;
}

ns::DictionaryPtr VLFCFReader::defaultSettings() const {
  auto level = ns::Dictionary::create();
  level->setObject(u"Scene_20_Heading", VLOutlineLevelDefaultStyleKey);
  level->setObject(u"Scene", VLOutlineLevelDisplayNameKey);

  auto completions = ns::Dictionary::create();
  completions->setObject(settingsDictionaryArrayWithStrings({u"INT", u"EXT", u"I/E"}),
                         VLSceneIntrosCompletionsKey);
  completions->setObject(settingsDictionaryArrayWithStrings(
                             {u"DAY", u"NIGHT", u"AFTERNOON", u"MORNING", u"EVENING", u"LATER",
                              u"MOMENTS LATER", u"CONTINUOUS", u"THE NEXT DAY"}),
                         VLTimesCompletionsKey);
  completions->setObject(settingsDictionaryArrayWithStrings(
                             {u"(O.S.)", u"(CONT'D)", u"(V.O.)", u"(O.C.)", u"(SUBTITLE)"}),
                         VLExtensionsCompletionsKey);
  completions->setObject(settingsDictionaryArrayWithStrings(
                             {u"CUT TO:", u"FADE IN:", u"FADE OUT.", u"FADE TO:", u"DISSOLVE TO:",
                              u"BACK TO:", u"MATCH CUT TO:", u"JUMP CUT TO:", u"FADE TO BLACK."}),
                         VLTransitionsCompletionsKey);

  auto documentSettings = ns::Dictionary::create();
  documentSettings->setObject(u"Action", VLDefaultContentStyleKey);
  documentSettings->setObject(completions, VLCompletionsKey);

  auto settings = ns::Dictionary::create();
  settings->setObject(outlineSettingsWithLevelSettings(ns::Array::create({level})),
                      VLOutlineSettingsKey);
  settings->setObject(documentSettings, VLDocumentSettingsKey);
  return settings;
}

ns::DictionaryPtr VLFCFReader::defaultMasterPages() const {
  // The shared print information is changed in place on purpose: what prints next uses the
  // screenplay margins too.
  const ns::PrintInfoPtr &printInfo = ns::PrintInfo::sharedPrintInfo();
  printInfo->setHorizontallyCentered(false);
  printInfo->setVerticallyCentered(false);
  printInfo->setLeftMargin(108.0);
  printInfo->setRightMargin(72.0);
  printInfo->setTopMargin(72.0);
  printInfo->setBottomMargin(72.0);

  VLMasterPagePtr page = VLMasterPage::masterPageWithPrintInfo(*printInfo);
  page->setName(localizedString(u"Standard"));
  auto pages = ns::Dictionary::create();
  pages->setObject(page, VLStandardMasterPageKey);
  return pages;
}

} // namespace vl
