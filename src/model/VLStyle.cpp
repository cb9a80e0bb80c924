// Styles: the defines word and the cascade of getters, application to run attributes,
// comparison and differences, resets, names, copies, coding and key-value coding.
#include "model/VLStyle.h"

#include "model/VLColorAdditions.h"
#include "model/VLConstants.h"
#include "model/VLLocalization.h"
#include "ns/Array.h"
#include "ns/Assert.h"
#include "ns/AttributeNames.h"
#include "ns/FontManager.h"
#include "ns/String.h"

#include <array>
#include <unordered_map>

namespace vl {

VL_REGISTER_CLASS(VLStyle);

namespace {

const ns::FontPtr noFont;
const ns::ColorPtr noColor;

constexpr std::array<std::u16string_view, VLStyleDefinesBitCount> definesNames = {
    u"alignment",
    u"lineSpacing",
    u"paragraphSpacingBefore",
    u"paragraphSpacing",
    u"headIndent",
    u"tailIndent",
    u"firstLineHeadIndent",
    u"minimumLineHeight",
    u"maximumLineHeight",
    u"defaultTabInterval",
    u"lineHeightMultiple",
    u"hyphenationFactor",
    u"headerLevel",
    u"tighteningFactor",
    u"pageBreakBefore",
    u"pageBreakAfter",
    u"keepWithNext",
    u"avoidsWidowsAndOrphans",
    u"tabStops",
    u"baseWritingDirection",
    u"paginationStyle",
    u"font",
    u"fontSize",
    u"hasBoldFontWeight",
    u"hasItalicFontStyle",
    u"underlineStyle",
    u"underlinePattern",
    u"underlineMask",
    u"underlineColor",
    u"foregroundColor",
    u"textTransform",
};

// Bits that the paragraph half writes into attributes.
constexpr uint32_t appliedParagraphBits =
    VLStyleDefinesParagraphSpacingBefore | VLStyleDefinesParagraphSpacing |
    VLStyleDefinesHeadIndent | VLStyleDefinesTailIndent | VLStyleDefinesFirstLineHeadIndent |
    VLStyleDefinesAlignment | VLStyleDefinesMinimumLineHeight | VLStyleDefinesMaximumLineHeight |
    VLStyleDefinesLineSpacing | VLStyleDefinesLineHeightMultiple | VLStyleDefinesHeaderLevel |
    VLStyleDefinesTabStops | VLStyleDefinesDefaultTabInterval | VLStyleDefinesBaseWritingDirection;

// Text bits compared as a block by matchesTextAttributeDefinitionsInStyle; the underline
// colour stays out of the block.
constexpr uint32_t textDefinitionBits =
    VLStyleDefinesFont | VLStyleDefinesFontSize | VLStyleDefinesHasBoldFontWeight |
    VLStyleDefinesHasItalicFontStyle | VLStyleDefinesUnderlineStyle |
    VLStyleDefinesUnderlinePattern | VLStyleDefinesUnderlineMask | VLStyleDefinesForegroundColor |
    VLStyleDefinesTextTransform;

// Bits 22 to 29, which resetCharacterStyle clears.
constexpr uint32_t characterResetMask = 0xc03fffffu;
// Bits 0 to 15 and 18: every paragraph value and the page break flags.
constexpr uint32_t defaultDefinedBits = 0x4ffffu;

const ns::ParagraphStyle &paragraphStyleOf(const ns::Dictionary &attributes,
                                           ns::ParagraphStylePtr &holder) {
  holder = attributes.objectForKey(ns::ParagraphStyleAttributeName).as<ns::ParagraphStyle>();
  return holder ? *holder : *ns::ParagraphStyle::defaultParagraphStyle();
}

bool sameTabStops(const std::vector<ns::TextTabPtr> &a, const std::vector<ns::TextTabPtr> &b) {
  if (a.size() != b.size())
    return false;
  for (size_t i = 0; i < a.size(); ++i)
    if (a[i] != b[i] && !(a[i] && b[i] && a[i]->isEqual(*b[i])))
      return false;
  return true;
}

bool sameColor(const ns::ColorPtr &a, const ns::ColorPtr &b) {
  if (a == b)
    return true;
  return a && b && a->isEqual(*b);
}

bool sameFamily(const ns::FontPtr &a, const ns::FontPtr &b) {
  if (a == b)
    return true;
  return a && b && a->familyName() == b->familyName();
}

ns::Value optionalString(const std::optional<std::u16string> &string) {
  return string ? ns::Value(*string) : ns::Value();
}

std::optional<std::u16string> stringOrNil(const ns::Value &value) {
  if (!value.isString())
    return std::nullopt;
  return value.string();
}

ns::ArrayPtr tabStopArray(const std::vector<ns::TextTabPtr> &tabs) {
  std::vector<ns::Value> values(tabs.begin(), tabs.end());
  return ns::Array::create(std::move(values));
}

std::vector<ns::TextTabPtr> tabStopVector(const ns::Value &value) {
  std::vector<ns::TextTabPtr> tabs;
  if (ns::ArrayPtr array = value.array())
    for (const ns::Value &tab : *array)
      if (auto textTab = tab.as<ns::TextTab>())
        tabs.push_back(std::move(textTab));
  return tabs;
}

const std::array<std::u16string, VLStyleDefinesBitCount> &definesKeys() {
  static const auto keys = [] {
    std::array<std::u16string, VLStyleDefinesBitCount> out;
    for (unsigned bit = 0; bit < VLStyleDefinesBitCount; ++bit)
      out[bit] = u"defines." + std::u16string(definesNames[bit]);
    return out;
  }();
  return keys;
}

void appendHex(std::u16string &out, uint32_t value) {
  static constexpr char16_t digits[] = u"0123456789abcdef";
  char16_t buffer[8];
  size_t count = 0;
  do {
    buffer[count++] = digits[value & 0xf];
    value >>= 4;
  } while (value);
  while (count)
    out.push_back(buffer[--count]);
}

} // namespace

VLStyle::VLStyle() : _properties(ns::Dictionary::create()) {
  resetParagraphStyle();
}

bool VLStyle::isDescendantOfStyle(const VLStylePtr &style) const {
  if (!style)
    return false;
  size_t depth = 1;
  for (const VLStyle *parent = _parentStyle.get(); parent && depth < VLStyleMaxCascadeDepth;
       parent = parent->_parentStyle.get(), ++depth)
    if (parent == style.get())
      return true;
  return false;
}

bool VLStyle::canTakeParent(const VLStyle &parent) const {
  size_t depth = 1;
  for (const VLStyle *style = &parent; style; style = style->_parentStyle.get())
    if (style == this || ++depth > VLStyleMaxCascadeDepth)
      return false;
  return true;
}

void VLStyle::setObject(ns::Value value, std::u16string_view key) {
  _properties->setObject(std::move(value), key);
}

ns::Value VLStyle::objectForKey(std::u16string_view key) const {
  return _properties->objectForKey(key);
}

void VLStyle::removeObjectForKey(std::u16string_view key) {
  _properties->removeObjectForKey(key);
}

std::u16string_view VLStyle::nameOfDefinesBit(unsigned bit) {
  return bit < VLStyleDefinesBitCount ? definesNames[bit] : std::u16string_view();
}

const VLStyle &VLStyle::definingStyle(uint32_t bit) const {
  const VLStyle *style = this;
  for (size_t depth = 1;
       !(style->_defines & bit) && style->_parentStyle && depth < VLStyleMaxCascadeDepth; ++depth)
    style = style->_parentStyle.get();
  return *style;
}

// Paragraph values.

#define VL_PARAGRAPH_VALUE(Type, getter, setter, bit, Stored)                                      \
  Type VLStyle::getter() const {                                                                   \
    return definingStyle(bit)._paragraphStyle->getter();                                           \
  }                                                                                                \
  void VLStyle::setter(Type value) {                                                               \
    _paragraphStyle->setter(static_cast<Stored>(value));                                           \
    _defines |= bit;                                                                               \
  }

VL_PARAGRAPH_VALUE(ns::TextAlignment, alignment, setAlignment, VLStyleDefinesAlignment,
                   ns::TextAlignment)
VL_PARAGRAPH_VALUE(double, lineSpacing, setLineSpacing, VLStyleDefinesLineSpacing, double)
VL_PARAGRAPH_VALUE(double, paragraphSpacingBefore, setParagraphSpacingBefore,
                   VLStyleDefinesParagraphSpacingBefore, double)
VL_PARAGRAPH_VALUE(double, paragraphSpacing, setParagraphSpacing, VLStyleDefinesParagraphSpacing,
                   double)
VL_PARAGRAPH_VALUE(double, headIndent, setHeadIndent, VLStyleDefinesHeadIndent, double)
VL_PARAGRAPH_VALUE(double, tailIndent, setTailIndent, VLStyleDefinesTailIndent, double)
VL_PARAGRAPH_VALUE(double, firstLineHeadIndent, setFirstLineHeadIndent,
                   VLStyleDefinesFirstLineHeadIndent, double)
VL_PARAGRAPH_VALUE(double, minimumLineHeight, setMinimumLineHeight, VLStyleDefinesMinimumLineHeight,
                   double)
VL_PARAGRAPH_VALUE(double, maximumLineHeight, setMaximumLineHeight, VLStyleDefinesMaximumLineHeight,
                   double)
VL_PARAGRAPH_VALUE(double, defaultTabInterval, setDefaultTabInterval,
                   VLStyleDefinesDefaultTabInterval, double)
VL_PARAGRAPH_VALUE(double, lineHeightMultiple, setLineHeightMultiple,
                   VLStyleDefinesLineHeightMultiple, double)
VL_PARAGRAPH_VALUE(double, hyphenationFactor, setHyphenationFactor, VLStyleDefinesHyphenationFactor,
                   float)
VL_PARAGRAPH_VALUE(int64_t, headerLevel, setHeaderLevel, VLStyleDefinesHeaderLevel, int64_t)
VL_PARAGRAPH_VALUE(ns::WritingDirection, baseWritingDirection, setBaseWritingDirection,
                   VLStyleDefinesBaseWritingDirection, ns::WritingDirection)

#undef VL_PARAGRAPH_VALUE

double VLStyle::tighteningFactor() const {
  return definingStyle(VLStyleDefinesTighteningFactor)
      ._paragraphStyle->tighteningFactorForTruncation();
}

void VLStyle::setTighteningFactor(double value) {
  _paragraphStyle->setTighteningFactorForTruncation(static_cast<float>(value));
  _defines |= VLStyleDefinesTighteningFactor;
}

const std::vector<ns::TextTabPtr> &VLStyle::tabStops() const {
  return definingStyle(VLStyleDefinesTabStops)._paragraphStyle->tabStops();
}

void VLStyle::setTabStops(std::vector<ns::TextTabPtr> tabStops) {
  _paragraphStyle->setTabStops(std::move(tabStops));
  _defines |= VLStyleDefinesTabStops;
}

void VLStyle::addTabStop(ns::TextTabPtr tab) {
  willChangeValueForKey(u"tabStops");
  _paragraphStyle->addTabStop(std::move(tab));
  _defines |= VLStyleDefinesTabStops;
  didChangeValueForKey(u"tabStops");
}

void VLStyle::removeTabStop(const ns::TextTab &tab) {
  willChangeValueForKey(u"tabStops");
  _paragraphStyle->removeTabStop(tab);
  _defines |= VLStyleDefinesTabStops;
  didChangeValueForKey(u"tabStops");
}

// Own values.

int64_t VLStyle::textTransform() const {
  return definingStyle(VLStyleDefinesTextTransform)._textTransform;
}

void VLStyle::setTextTransform(int64_t value) {
  _textTransform = value;
  _defines |= VLStyleDefinesTextTransform;
}

#define VL_OWN_VALUE(Type, getter, setter, bit, field, none)                                       \
  Type VLStyle::getter() const {                                                                   \
    const VLStyle &style = definingStyle(bit);                                                     \
    return (style._defines & bit) ? style.field : none;                                            \
  }                                                                                                \
  void VLStyle::setter(Type value) {                                                               \
    field = value;                                                                                 \
    _defines |= bit;                                                                               \
  }

VL_OWN_VALUE(int64_t, paginationStyle, setPaginationStyle, VLStyleDefinesPaginationStyle,
             _paginationStyle, 0)
VL_OWN_VALUE(bool, pageBreakBefore, setPageBreakBefore, VLStyleDefinesPageBreakBefore,
             _pageBreakBefore, false)
VL_OWN_VALUE(bool, pageBreakAfter, setPageBreakAfter, VLStyleDefinesPageBreakAfter, _pageBreakAfter,
             false)
VL_OWN_VALUE(bool, keepWithNext, setKeepWithNext, VLStyleDefinesKeepWithNext, _keepWithNext, false)
VL_OWN_VALUE(bool, avoidsWidowsAndOrphans, setAvoidsWidowsAndOrphans,
             VLStyleDefinesAvoidsWidowsAndOrphans, _avoidsWidowsAndOrphans, false)

#undef VL_OWN_VALUE

#define VL_OWN_OBJECT(Ptr, getter, setter, bit, field, none)                                       \
  const Ptr &VLStyle::getter() const {                                                             \
    const VLStyle &style = definingStyle(bit);                                                     \
    return (style._defines & bit) ? style.field : none;                                            \
  }                                                                                                \
  void VLStyle::setter(Ptr value) {                                                                \
    field = std::move(value);                                                                      \
    _defines |= bit;                                                                               \
  }

VL_OWN_OBJECT(ns::FontPtr, font, setFont, VLStyleDefinesFont, _font, noFont)
VL_OWN_OBJECT(ns::ColorPtr, foregroundColor, setForegroundColor, VLStyleDefinesForegroundColor,
              _foregroundColor, noColor)
VL_OWN_OBJECT(ns::ColorPtr, underlineColor, setUnderlineColor, VLStyleDefinesUnderlineColor,
              _underlineColor, noColor)

#undef VL_OWN_OBJECT

#define VL_UNDERLINE_FIELD(getter, setter, bit, mask)                                              \
  int64_t VLStyle::getter() const {                                                                \
    const VLStyle &style = definingStyle(bit);                                                     \
    return (style._defines & bit) ? (style._underlineStyleAttribute & (mask)) : 0;                 \
  }                                                                                                \
  void VLStyle::setter(int64_t value) {                                                            \
    _underlineStyleAttribute = (_underlineStyleAttribute & ~(mask)) | value;                       \
    _defines |= bit;                                                                               \
  }

VL_UNDERLINE_FIELD(underlineStyle, setUnderlineStyle, VLStyleDefinesUnderlineStyle,
                   VLUnderlineStyleMask)
VL_UNDERLINE_FIELD(underlinePattern, setUnderlinePattern, VLStyleDefinesUnderlinePattern,
                   VLUnderlinePatternMask)
VL_UNDERLINE_FIELD(underlineMask, setUnderlineMask, VLStyleDefinesUnderlineMask,
                   ns::UnderlineByWordMask)

#undef VL_UNDERLINE_FIELD

// Font-derived values: the own font stands between the own value and the parent.

const VLStyle *VLStyle::fontDerivedSource(uint32_t bit) const {
  size_t depth = 0;
  for (const VLStyle *style = this; style && depth < VLStyleMaxCascadeDepth;
       style = style->_parentStyle.get(), ++depth)
    if ((style->_defines & bit) || style->_font)
      return style;
  return nullptr;
}

double VLStyle::fontSize() const {
  const VLStyle *style = fontDerivedSource(VLStyleDefinesFontSize);
  if (!style)
    return 12.0;
  return (style->_defines & VLStyleDefinesFontSize) ? style->_fontSize : style->_font->pointSize();
}

void VLStyle::setFontSize(double value) {
  _fontSize = value;
  _defines |= VLStyleDefinesFontSize;
}

bool VLStyle::hasBoldFontWeight() const {
  const VLStyle *style = fontDerivedSource(VLStyleDefinesHasBoldFontWeight);
  if (!style)
    return false;
  return (style->_defines & VLStyleDefinesHasBoldFontWeight)
             ? style->_hasBoldFontWeight
             : (style->_font->traits() & ns::BoldFontMask) != 0;
}

void VLStyle::setHasBoldFontWeight(bool flag) {
  _hasBoldFontWeight = flag;
  _defines |= VLStyleDefinesHasBoldFontWeight;
}

bool VLStyle::hasItalicFontStyle() const {
  const VLStyle *style = fontDerivedSource(VLStyleDefinesHasItalicFontStyle);
  if (!style)
    return false;
  return (style->_defines & VLStyleDefinesHasItalicFontStyle)
             ? style->_hasItalicFontStyle
             : (style->_font->traits() & ns::ItalicFontMask) != 0;
}

void VLStyle::setHasItalicFontStyle(bool flag) {
  _hasItalicFontStyle = flag;
  _defines |= VLStyleDefinesHasItalicFontStyle;
}

// Outline level.

int64_t VLStyle::outlineLevel() const {
  int64_t level = _paragraphStyle->headerLevel();
  return level == 0 ? 10 : level;
}

void VLStyle::setOutlineLevel(int64_t level) {
  setHeaderLevel(level == 10 ? 0 : level);
}

ns::ComparisonResult VLStyle::compareOutlineLevel(const VLStyle &other) const {
  int64_t mine = outlineLevel();
  int64_t theirs = other.outlineLevel();
  if (mine < theirs)
    return ns::OrderedAscending;
  return mine > theirs ? ns::OrderedDescending : ns::OrderedSame;
}

// Pagination.

int64_t VLStyle::proposedScreenplayPaginationStyle() const {
  const std::optional<std::u16string> &name = displayName();
  if (!name)
    return VLGeneralPagination;
  static constexpr std::pair<std::u16string_view, VLPaginationStyle> proposals[] = {
      {u"Scene Heading", VLSceneHeadingPagination},
      {u"Action", VLActionPagination},
      {u"Character", VLCharacterPagination},
      {u"Character Name", VLCharacterPagination},
      {u"Parenthetical", VLParentheticalPagination},
      {u"Dialogue", VLDialoguePagination},
      {u"Dialog", VLDialoguePagination},
      {u"Transition", VLTransitionPagination},
      {u"Shot", VLShotPagination},
  };
  for (const auto &[candidate, pagination] : proposals)
    if (ns::caseInsensitiveCompare(*name, candidate) == ns::OrderedSame)
      return pagination;
  return VLGeneralPagination;
}

bool VLStyle::avoidsWidowsAndOrphansGivenPagiationStyle() const {
  return paginationStyle() != VLGeneralPagination || avoidsWidowsAndOrphans();
}

bool VLStyle::keepWithNextGivenPagiationStyle() const {
  switch (paginationStyle()) {
  case VLGeneralPagination:
    return keepWithNext();
  case VLSceneHeadingPagination:
  case VLCharacterPagination:
  case VLParentheticalPagination:
    return true;
  default:
    return false;
  }
}

// Line spacing modes.

int64_t VLStyle::lineSpacingModeWithInfo(ns::Value *info) const {
  return lineSpacingModeForLineHeights(
      {lineHeightMultiple(), minimumLineHeight(), maximumLineHeight()}, info);
}

void VLStyle::setLineSpacingMode(int64_t mode, const ns::Value &info) {
  VLLineHeights heights = lineHeightsForLineSpacingMode(mode, info);
  setLineHeightMultiple(heights.lineHeightMultiple);
  setMinimumLineHeight(heights.minimumLineHeight);
  setMaximumLineHeight(heights.maximumLineHeight);
}

// Resolved views and application.

ns::FontPtr VLStyle::defaultFont() {
  return ns::Font::userFontOfSize(12.0);
}

ns::DictionaryPtr VLStyle::attributes() const {
  auto attributes = ns::Dictionary::create({{std::u16string(ns::FontAttributeName), defaultFont()},
                                            {std::u16string(ns::ParagraphStyleAttributeName),
                                             ns::ParagraphStyle::defaultParagraphStyle()},
                                            {std::u16string(VLParagraphStyleAttributeName),
                                             std::const_pointer_cast<VLStyle>(self<VLStyle>())}});
  applyToAttributes(*attributes);
  return attributes;
}

void VLStyle::applyToAttributes(ns::Dictionary &attributes) const {
  applyChain(attributes, 1);
  // Every style of the chain that is not a text style applies the paragraph half of the
  // whole chain above it, root first. The same values land in the same order each time, so
  // the last of those passes, from the root to the nearest such style, decides the result;
  // one pass gives it with one copy of the paragraph style.
  const VLStyle *style = this;
  size_t depth = 1;
  while (style && style->_styleType == VLTextStyleType && depth < VLStyleMaxCascadeDepth) {
    style = style->_parentStyle.get();
    ++depth;
  }
  if (style && style->_styleType != VLTextStyleType) {
    ns::ParagraphStylePtr holder;
    ns::MutableParagraphStylePtr paragraph =
        paragraphStyleOf(attributes, holder).mutableParagraphStyle();
    style->writeParagraphProperties(*paragraph, depth);
    attributes.setObject(std::move(paragraph), ns::ParagraphStyleAttributeName);
  }
}

void VLStyle::applyChain(ns::Dictionary &attributes, size_t depth) const {
  if (_parentStyle && depth < VLStyleMaxCascadeDepth)
    _parentStyle->applyChain(attributes, depth + 1);
  applyTextPropertiesToAttributes(attributes);
  applyStyleAttribute(attributes);
}

void VLStyle::applyStyleAttribute(ns::Dictionary &attributes) const {
  std::u16string_view key;
  if (_styleType == VLParagraphStyleType)
    key = VLParagraphStyleAttributeName;
  else if (_styleType == VLTextStyleType)
    key = VLTextStyleAttributeName;
  else
    return;
  if (!_isAutomaticStyle) {
    attributes.setObject(std::const_pointer_cast<VLStyle>(self<VLStyle>()), key);
    return;
  }
  // An automatic style stands for its parent plus overrides.
  if (!_parentStyle)
    return;
  VL_ASSERT(!_parentStyle->_isAutomaticStyle, "Parent style is automatic style");
  attributes.setObject(_parentStyle, key);
}

void VLStyle::applyParagraphPropertiesToAttributes(ns::Dictionary &attributes) const {
  ns::ParagraphStylePtr holder;
  ns::MutableParagraphStylePtr style = paragraphStyleOf(attributes, holder).mutableParagraphStyle();
  writeParagraphProperties(*style, 1);
  attributes.setObject(std::move(style), ns::ParagraphStyleAttributeName);
}

void VLStyle::writeParagraphProperties(ns::MutableParagraphStyle &style, size_t depth) const {
  if (_parentStyle && depth < VLStyleMaxCascadeDepth)
    _parentStyle->writeParagraphProperties(style, depth + 1);
  uint32_t defines = _defines;
  if (!(defines & appliedParagraphBits))
    return;
  // With the bit set, each getter answers the own value. Hyphenation and tightening are
  // left out on purpose.
  const ns::ParagraphStyle &own = *_paragraphStyle;
  if (defines & VLStyleDefinesParagraphSpacingBefore)
    style.setParagraphSpacingBefore(own.paragraphSpacingBefore());
  if (defines & VLStyleDefinesParagraphSpacing)
    style.setParagraphSpacing(own.paragraphSpacing());
  if (defines & VLStyleDefinesHeadIndent)
    style.setHeadIndent(own.headIndent());
  if (defines & VLStyleDefinesTailIndent)
    style.setTailIndent(own.tailIndent());
  if (defines & VLStyleDefinesFirstLineHeadIndent)
    style.setFirstLineHeadIndent(own.firstLineHeadIndent());
  if (defines & VLStyleDefinesAlignment)
    style.setAlignment(own.alignment());
  if (defines & VLStyleDefinesMinimumLineHeight)
    style.setMinimumLineHeight(own.minimumLineHeight());
  if (defines & VLStyleDefinesMaximumLineHeight)
    style.setMaximumLineHeight(own.maximumLineHeight());
  if (defines & VLStyleDefinesLineSpacing)
    style.setLineSpacing(own.lineSpacing());
  if (defines & VLStyleDefinesLineHeightMultiple)
    style.setLineHeightMultiple(own.lineHeightMultiple());
  if (defines & VLStyleDefinesHeaderLevel)
    style.setHeaderLevel(own.headerLevel());
  if (defines & VLStyleDefinesTabStops)
    style.setTabStops(own.tabStops());
  if (defines & VLStyleDefinesDefaultTabInterval)
    style.setDefaultTabInterval(own.defaultTabInterval());
  if (defines & VLStyleDefinesBaseWritingDirection)
    style.setBaseWritingDirection(own.baseWritingDirection());
}

void VLStyle::applyTextPropertiesToAttributes(ns::Dictionary &attributes) const {
  uint32_t defines = _defines;
  // The own font counts whether or not its bit is set.
  ns::FontPtr font = _font;
  if (!font)
    font = attributes.objectForKey(ns::FontAttributeName).as<ns::Font>();
  VL_ASSERT(font, "Font not specified");
  if (defines & (VLStyleDefinesFontSize | VLStyleDefinesHasBoldFontWeight |
                 VLStyleDefinesHasItalicFontStyle)) {
    ns::FontManager &manager = *ns::FontManager::sharedFontManager();
    if (defines & VLStyleDefinesFontSize)
      font = manager.convertFont(font, _fontSize);
    if (defines & VLStyleDefinesHasBoldFontWeight)
      font = manager.convertFontToHaveTrait(font, _hasBoldFontWeight ? ns::BoldFontMask
                                                                     : ns::UnboldFontMask);
    if (defines & VLStyleDefinesHasItalicFontStyle)
      font = manager.convertFontToHaveTrait(font, _hasItalicFontStyle ? ns::ItalicFontMask
                                                                      : ns::UnitalicFontMask);
  }
  attributes.setObject(std::move(font), ns::FontAttributeName);

  if (defines & VLStyleDefinesForegroundColor)
    attributes.setObject(_foregroundColor, ns::ForegroundColorAttributeName);

  constexpr uint32_t underlineBits =
      VLStyleDefinesUnderlineStyle | VLStyleDefinesUnderlinePattern | VLStyleDefinesUnderlineMask;
  if ((defines & VLStyleDefinesUnderlineStyle) && underlineStyle() == 0) {
    // No underline: the pattern and by-word bits of this style have nothing to qualify.
    attributes.removeObjectForKey(ns::UnderlineStyleAttributeName);
  } else if (defines & underlineBits) {
    int64_t word = attributes.objectForKey(ns::UnderlineStyleAttributeName).integerValue();
    if (defines & VLStyleDefinesUnderlineStyle)
      word = (word & ~VLUnderlineStyleMask) | underlineStyle();
    if (defines & VLStyleDefinesUnderlinePattern)
      word = (word & ~VLUnderlinePatternMask) | underlinePattern();
    if (defines & VLStyleDefinesUnderlineMask)
      word = (word & ~ns::UnderlineByWordMask) | underlineMask();
    attributes.setObject(word, ns::UnderlineStyleAttributeName);
  }

  if (defines & VLStyleDefinesUnderlineColor)
    attributes.setObject(_underlineColor, ns::UnderlineColorAttributeName);
}

// Comparison.

bool VLStyle::matchesParagraphStyle(const ns::Dictionary &attributes) const {
  ns::ParagraphStylePtr holder;
  const ns::ParagraphStyle &style = paragraphStyleOf(attributes, holder);
  return style.alignment() == alignment() && style.firstLineHeadIndent() == firstLineHeadIndent() &&
         style.headerLevel() == headerLevel() && style.headIndent() == headIndent() &&
         style.tailIndent() == tailIndent() &&
         static_cast<double>(style.hyphenationFactor()) == hyphenationFactor() &&
         style.lineHeightMultiple() == lineHeightMultiple() &&
         style.lineSpacing() == lineSpacing() && style.maximumLineHeight() == maximumLineHeight() &&
         style.minimumLineHeight() == minimumLineHeight() &&
         style.paragraphSpacing() == paragraphSpacing() &&
         style.paragraphSpacingBefore() == paragraphSpacingBefore() &&
         style.baseWritingDirection() == baseWritingDirection() &&
         style.defaultTabInterval() == defaultTabInterval() &&
         sameTabStops(style.tabStops(), tabStops());
}

bool VLStyle::matchesTextAttributes(const ns::Dictionary &attributes) const {
  auto attributeFont = attributes.objectForKey(ns::FontAttributeName).as<ns::Font>();
  // Fonts of one family count as the same font; size and traits are compared apart.
  const ns::FontPtr &own = font();
  if (own && !(attributeFont && attributeFont->familyName() == own->familyName()))
    return false;
  double size = attributeFont ? attributeFont->pointSize() : 0.0;
  uint32_t traits = attributeFont ? attributeFont->traits() : 0;
  if (size != fontSize() || ((traits & ns::BoldFontMask) != 0) != hasBoldFontWeight() ||
      ((traits & ns::ItalicFontMask) != 0) != hasItalicFontStyle())
    return false;
  if (!sameColor(attributes.objectForKey(ns::ForegroundColorAttributeName).as<ns::Color>(),
                 foregroundColor()))
    return false;
  int64_t word = attributes.objectForKey(ns::UnderlineStyleAttributeName).integerValue();
  if ((word & VLUnderlineStyleMask) != underlineStyle() ||
      (word & VLUnderlinePatternMask) != underlinePattern() ||
      (word & ns::UnderlineByWordMask) != underlineMask())
    return false;
  return sameColor(attributes.objectForKey(ns::UnderlineColorAttributeName).as<ns::Color>(),
                   underlineColor());
}

bool VLStyle::matchesAttributes(const ns::Dictionary &attributes) const {
  return matchesParagraphStyle(attributes) && matchesTextAttributes(attributes);
}

bool VLStyle::matchesTextAttributeDefinitionsInStyle(const VLStyle &style) const {
  if ((_defines & textDefinitionBits) != (style._defines & textDefinitionBits))
    return false;
  uint32_t defines = _defines;
  if ((defines & VLStyleDefinesFont) && !sameFamily(font(), style.font()))
    return false;
  if ((defines & VLStyleDefinesFontSize) && fontSize() != style.fontSize())
    return false;
  if ((defines & VLStyleDefinesHasBoldFontWeight) &&
      hasBoldFontWeight() != style.hasBoldFontWeight())
    return false;
  if ((defines & VLStyleDefinesHasItalicFontStyle) &&
      hasItalicFontStyle() != style.hasItalicFontStyle())
    return false;
  if ((defines & VLStyleDefinesForegroundColor) &&
      !sameColor(foregroundColor(), style.foregroundColor()))
    return false;
  if ((defines & VLStyleDefinesUnderlineStyle) && underlineStyle() != style.underlineStyle())
    return false;
  if ((defines & VLStyleDefinesUnderlinePattern) && underlinePattern() != style.underlinePattern())
    return false;
  if ((defines & VLStyleDefinesUnderlineMask) && underlineMask() != style.underlineMask())
    return false;
  if ((defines & VLStyleDefinesUnderlineColor) &&
      !sameColor(underlineColor(), style.underlineColor()))
    return false;
  return true;
}

// Differences.

void VLStyle::_recordParagraphPropertyDiffsWithAttributes(const ns::Dictionary &attributes,
                                                          VLStyle &style) const {
  ns::ParagraphStylePtr holder;
  const ns::ParagraphStyle &theirs = paragraphStyleOf(attributes, holder);
  if (theirs.alignment() != alignment())
    style.setAlignment(theirs.alignment());
  if (theirs.lineSpacing() != lineSpacing())
    style.setLineSpacing(theirs.lineSpacing());
  if (theirs.paragraphSpacingBefore() != paragraphSpacingBefore())
    style.setParagraphSpacingBefore(theirs.paragraphSpacingBefore());
  if (theirs.paragraphSpacing() != paragraphSpacing())
    style.setParagraphSpacing(theirs.paragraphSpacing());
  if (theirs.headIndent() != headIndent())
    style.setHeadIndent(theirs.headIndent());
  if (theirs.tailIndent() != tailIndent())
    style.setTailIndent(theirs.tailIndent());
  if (theirs.firstLineHeadIndent() != firstLineHeadIndent())
    style.setFirstLineHeadIndent(theirs.firstLineHeadIndent());
  if (theirs.minimumLineHeight() != minimumLineHeight())
    style.setMinimumLineHeight(theirs.minimumLineHeight());
  if (theirs.maximumLineHeight() != maximumLineHeight())
    style.setMaximumLineHeight(theirs.maximumLineHeight());
  if (theirs.defaultTabInterval() != defaultTabInterval())
    style.setDefaultTabInterval(theirs.defaultTabInterval());
  if (!sameTabStops(theirs.tabStops(), tabStops()))
    style.setTabStops(theirs.tabStops());
  if (theirs.lineHeightMultiple() != lineHeightMultiple())
    style.setLineHeightMultiple(theirs.lineHeightMultiple());
  if (static_cast<double>(theirs.hyphenationFactor()) != hyphenationFactor())
    style.setHyphenationFactor(theirs.hyphenationFactor());
  if (static_cast<double>(theirs.tighteningFactorForTruncation()) != tighteningFactor())
    style.setTighteningFactor(theirs.tighteningFactorForTruncation());
  if (theirs.headerLevel() != headerLevel())
    style.setHeaderLevel(theirs.headerLevel());
  if (theirs.baseWritingDirection() != baseWritingDirection())
    style.setBaseWritingDirection(theirs.baseWritingDirection());
}

void VLStyle::_recordTextPropertyDiffsWithAttributes(const ns::Dictionary &attributes,
                                                     VLStyle &style) const {
  auto attributeFont = attributes.objectForKey(ns::FontAttributeName).as<ns::Font>();
  const ns::FontPtr &own = font();
  if (attributeFont != own) {
    if (!attributeFont || !own || attributeFont->familyName() != own->familyName())
      style.setFont(attributeFont);
    // Only a trait that is there, or an explicit unbold or unitalic, records a change: a
    // font that merely lacks bold says nothing about boldness.
    uint32_t traits = ns::FontManager::sharedFontManager()->traitsOfFont(attributeFont);
    bool bold = hasBoldFontWeight();
    if ((traits & ns::BoldFontMask) && !bold)
      style.setHasBoldFontWeight(true);
    else if ((traits & ns::UnboldFontMask) && bold)
      style.setHasBoldFontWeight(false);
    bool italic = hasItalicFontStyle();
    if ((traits & ns::ItalicFontMask) && !italic)
      style.setHasItalicFontStyle(true);
    else if ((traits & ns::UnitalicFontMask) && italic)
      style.setHasItalicFontStyle(false);
  }
  double size = attributeFont ? attributeFont->pointSize() : 0.0;
  if (size != fontSize())
    style.setFontSize(size);

  auto color = attributes.objectForKey(ns::ForegroundColorAttributeName).as<ns::Color>();
  if (!sameColor(color, foregroundColor()))
    style.setForegroundColor(std::move(color));

  int64_t word = attributes.objectForKey(ns::UnderlineStyleAttributeName).integerValue();
  if ((word & VLUnderlineStyleMask) != underlineStyle())
    style.setUnderlineStyle(word & VLUnderlineStyleMask);
  if ((word & VLUnderlinePatternMask) != underlinePattern())
    style.setUnderlinePattern(word & VLUnderlinePatternMask);
  if ((word & ns::UnderlineByWordMask) != underlineMask())
    style.setUnderlineMask(word & ns::UnderlineByWordMask);

  auto underline = attributes.objectForKey(ns::UnderlineColorAttributeName).as<ns::Color>();
  if (!sameColor(underline, underlineColor()))
    style.setUnderlineColor(std::move(underline));
}

VLStylePtr VLStyle::derivedStyle(const ns::Dictionary &attributes, bool paragraph, bool text,
                                 int64_t type, bool withParent) const {
  VLStylePtr style = makeStyle();
  if (paragraph)
    _recordParagraphPropertyDiffsWithAttributes(attributes, *style);
  if (text)
    _recordTextPropertyDiffsWithAttributes(attributes, *style);
  style->setStyleType(type);
  if (withParent)
    style->setParentStyle(std::const_pointer_cast<VLStyle>(self<VLStyle>()));
  return style;
}

VLStylePtr VLStyle::diffWithAttributes(const ns::Dictionary &attributes) const {
  return derivedStyle(attributes, true, true, VLParagraphStyleType, false);
}

VLStylePtr VLStyle::diffWithTextAttributes(const ns::Dictionary &attributes) const {
  return derivedStyle(attributes, false, true, VLTextStyleType, false);
}

VLStylePtr
VLStyle::derivedParagraphOnlyStyleWithAttributes(const ns::Dictionary &attributes) const {
  return derivedStyle(attributes, true, false, VLParagraphStyleType, true);
}

VLStylePtr VLStyle::derivedParagraphStyleWithAttributes(const ns::Dictionary &attributes) const {
  return derivedStyle(attributes, true, true, VLParagraphStyleType, true);
}

VLStylePtr VLStyle::derivedTextStyleWithAttributes(const ns::Dictionary &attributes) const {
  return derivedStyle(attributes, false, true, VLTextStyleType, true);
}

// Resets.

void VLStyle::resetParagraphStyle() {
  _paragraphStyle = ns::ParagraphStyle::defaultParagraphStyle()->mutableParagraphStyle();
  _paragraphStyle->setTabStops({});
  _paragraphStyle->setDefaultTabInterval(36.0);
}

void VLStyle::resetCharacterStyle() {
  _hasBoldFontWeight = false;
  _hasItalicFontStyle = false;
  _defines &= characterResetMask;
}

void VLStyle::resetToDefaultProperties() {
  setFont(defaultFont());
  setFontSize(12.0);
  setHasBoldFontWeight(false);
  setHasItalicFontStyle(false);
  setForegroundColor(nullptr);
  setUnderlineStyle(0);
  setUnderlineColor(nullptr);
  _defines |= defaultDefinedBits;
  setKeepWithNext(false);
  setAvoidsWidowsAndOrphans(false);
  setPageBreakBefore(false);
  setPageBreakAfter(false);
  setPaginationStyle(0);
  setTextTransform(0);
}

void VLStyle::ensureDefaultProperties() {
  if (!definesFont())
    setFont(defaultFont());
  if (!definesFontSize())
    setFontSize(12.0);
  if (!definesHasBoldFontWeight())
    setHasBoldFontWeight(false);
  if (!definesHasItalicFontStyle())
    setHasItalicFontStyle(false);
  if (!definesForegroundColor())
    setForegroundColor(nullptr);
  if (!definesUnderlineStyle())
    setUnderlineStyle(0);
  if (!definesUnderlineColor())
    setUnderlineColor(nullptr);
  if (!definesTextTransform())
    setTextTransform(0);
  if (!definesKeepWithNext())
    setKeepWithNext(false);
  if (!definesAvoidsWidowsAndOrphans())
    setAvoidsWidowsAndOrphans(false);
  if (!definesPaginationStyle())
    setPaginationStyle(0);
  _defines |= defaultDefinedBits;
}

VLStylePtr VLStyle::defaultParagraphStyle() {
  auto style = std::make_shared<VLStyle>();
  style->resetToDefaultProperties();
  style->setDisplayName(localizedString(u"Default Style"));
  style->setStyleName(styleNameForDisplayName(style->displayName()));
  style->setIsDefaultStyle(true);
  return style;
}

// Identity of values.

bool VLStyle::isEmpty() const {
  return _defines == 0 && !_isDefaultStyle && !_isAutomaticStyle;
}

bool VLStyle::isEqualToStyle(const VLStylePtr &other) const {
  return other && isEqualToStyle(*other, 1);
}

bool VLStyle::isEqualToStyle(const VLStyle &other, size_t depth) const {
  if (_defines != other._defines || _isDefaultStyle != other._isDefaultStyle ||
      _isAutomaticStyle != other._isAutomaticStyle)
    return false;
  if (_styleName != other._styleName || displayName() != other.displayName())
    return false;
  if (!_parentStyle != !other._parentStyle)
    return false;
  if (_parentStyle && depth < VLStyleMaxCascadeDepth &&
      !_parentStyle->isEqualToStyle(*other._parentStyle, depth + 1))
    return false;
  if (_styleType != other._styleType)
    return false;
  if (isParagraphStyle() && !matchesAttributes(*other.attributes()))
    return false;
  return pageBreakBefore() == other.pageBreakBefore() && keepWithNext() == other.keepWithNext() &&
         avoidsWidowsAndOrphans() == other.avoidsWidowsAndOrphans() &&
         textTransform() == other.textTransform() && paginationStyle() == other.paginationStyle();
}

std::optional<std::u16string>
VLStyle::styleNameForDisplayName(std::optional<std::u16string_view> displayName) {
  if (!displayName || displayName->empty())
    return std::nullopt;
  static const ns::CharacterSet firstCharacters = [] {
    ns::CharacterSet set = ns::CharacterSet::letterCharacterSet();
    set.addCharactersInString(u"_");
    return set;
  }();
  static const ns::CharacterSet otherCharacters = [] {
    ns::CharacterSet set = ns::CharacterSet::alphanumericCharacterSet();
    set.addCharactersInString(u".-_");
    return set;
  }();
  std::u16string name;
  name.reserve(displayName->size() + 8);
  for (size_t i = 0; i < displayName->size(); ++i) {
    char16_t unit = (*displayName)[i];
    const ns::CharacterSet &allowed = i == 0 ? firstCharacters : otherCharacters;
    if (allowed.characterIsMember(unit)) {
      name.push_back(unit);
    } else {
      name.push_back(u'_');
      appendHex(name, unit);
      name.push_back(u'_');
    }
  }
  return name;
}

// The user's summary.

std::u16string VLStyle::textDefinition() const {
  std::u16string text;
  // The separator goes in before it is known whether the item has words: a default style's
  // "not bold" has none and leaves a doubled separator, which users have always seen.
  auto item = [&text]() -> std::u16string & {
    if (!text.empty())
      text += u", ";
    return text;
  };
  auto word = [](std::u16string_view key) { return localizedString(key); };
  auto length = [&](std::u16string_view label, double value) {
    return ns::format(u"%@: %2.1f pt", word(label), value);
  };
  // A default style is the baseline: what it does not have goes unsaid.
  auto trait = [&](bool defined, bool value, std::u16string_view yes, std::u16string_view no) {
    if (!defined)
      return;
    item();
    if (value)
      text += word(yes);
    else if (!_isDefaultStyle)
      text += word(no);
  };
  auto either = [&](bool defined, bool value, std::u16string_view yes, std::u16string_view no) {
    if (defined)
      item() += word(value ? yes : no);
  };
  auto listed = [&](int64_t value, std::initializer_list<std::u16string_view> words) {
    if (value >= 0 && static_cast<size_t>(value) < words.size())
      text += word(words.begin()[value]);
  };

  if (definesFont()) {
    const ns::FontPtr &own = font();
    item() +=
        ns::format(u"%@: %@", word(u"Font"), own ? ns::Value(own->familyName()) : ns::Value());
  }
  if (definesFontSize())
    item() += ns::format(u"%2.1f pt", fontSize());
  trait(definesHasBoldFontWeight(), hasBoldFontWeight(), u"Bold", u"Not Bold");
  trait(definesHasItalicFontStyle(), hasItalicFontStyle(), u"Italic", u"Not Italic");
  trait(definesUnderlineStyle(), underlineStyle() != 0, u"Underlined", u"Not Underlined");
  if (definesForegroundColor()) {
    const ns::ColorPtr &color = foregroundColor();
    item() += word(u"Color") + u":" + (color ? stringValue(*color) : word(u"Black"));
  }
  if (definesTextTransform()) {
    item() += word(u"Text Transform") + u":";
    listed(textTransform(), {u"None", u"Lower Case", u"Upper Case", u"Capitalized"});
  }
  if (definesHeaderLevel()) {
    item() += word(u"Level") + u": ";
    int64_t level = headerLevel();
    text += level == 0 && !_isDefaultStyle ? word(u"Body Text") : ns::format(u" %ld", level);
  }
  if (definesAlignment()) {
    item();
    listed(alignment(), {u"Left", u"Right", u"Centered", u"Justified", u"Natural"});
  }
  if (definesParagraphSpacingBefore() || definesParagraphSpacing()) {
    item() += word(u"Spacing");
    if (definesParagraphSpacingBefore())
      text += u" " + length(u"Before", paragraphSpacingBefore());
    if (definesParagraphSpacing())
      text += u" " + length(u"After", paragraphSpacing());
  }
  if (definesFirstLineHeadIndent())
    item() += length(u"First Line", firstLineHeadIndent());
  if (definesHeadIndent())
    item() += length(u"Left", headIndent());
  if (definesTailIndent())
    item() += length(u"Right", tailIndent());
  if (definesDefaultTabInterval())
    item() += length(u"Default Tab Interval", defaultTabInterval());

  int64_t pagination = paginationStyle();
  if (definesPaginationStyle() && pagination != VLGeneralPagination) {
    static constexpr std::u16string_view classes[] = {u"Normal",    u"Scene Heading", u"Action",
                                                      u"Character", u"Parenthetical", u"Dialog",
                                                      u"Shot",      u"Transition"};
    bool known = pagination > 0 && pagination < static_cast<int64_t>(std::size(classes));
    item() += ns::format(u"%@ %@", word(u"Paginate as"), word(classes[known ? pagination : 0]));
  } else {
    either(definesPageBreakBefore(), pageBreakBefore(), u"Page Break Before",
           u"No Page Break Before");
    either(definesPageBreakAfter(), pageBreakAfter(), u"Page Break After", u"No Page Break After");
    either(definesKeepWithNext(), keepWithNext(), u"Keep with next", u"No keep with next");
    either(definesAvoidsWidowsAndOrphans(), avoidsWidowsAndOrphans(), u"Widow/Orphan control",
           u"No Widow/Orphan control");
  }

  if (_parentStyle) {
    std::u16string parent = _parentStyle->displayName().value_or(u"");
    text = text.empty() ? parent : parent + u" + " + text;
  }
  return text;
}

std::u16string VLStyle::description() const {
  std::u16string out = Object::description() + u" ";
  if (!_isDefaultStyle)
    return out + (_styleName ? *_styleName : u"(null)");
  if (_styleType == VLParagraphStyleType)
    return out + u"default-paragraph-style";
  if (_styleType == VLTextStyleType)
    return out + u"default-text-style";
  return out + u"unknown";
}

ns::ObjectPtr VLStyle::copy() const {
  VLStylePtr copy = makeStyle();
  copy->_styleName = _styleName;
  copy->_displayName = _displayName;
  copy->_properties = std::static_pointer_cast<ns::Dictionary>(_properties->mutableCopy());
  copy->_styleType = _styleType;
  copy->_parentStyle = _parentStyle;
  copy->_nextStyle = _nextStyle;
  copy->_tabStyle = _tabStyle;
  copy->_paragraphStyle = _paragraphStyle->mutableParagraphStyle();
  copy->_paginationStyle = _paginationStyle;
  copy->_font = _font;
  copy->_fontSize = _fontSize;
  copy->_foregroundColor = _foregroundColor;
  copy->_underlineColor = _underlineColor;
  copy->_underlineStyleAttribute = _underlineStyleAttribute;
  copy->_textTransform = _textTransform;
  copy->_hasBoldFontWeight = _hasBoldFontWeight;
  copy->_hasItalicFontStyle = _hasItalicFontStyle;
  copy->_pageBreakBefore = _pageBreakBefore;
  copy->_pageBreakAfter = _pageBreakAfter;
  copy->_keepWithNext = _keepWithNext;
  copy->_avoidsWidowsAndOrphans = _avoidsWidowsAndOrphans;
  copy->_defines = _defines;
  copy->_isDefaultStyle = _isDefaultStyle;
  copy->_isAutomaticStyle = _isAutomaticStyle;
  VL_ASSERT(copy->_paragraphStyle != _paragraphStyle && copy->_properties != _properties, "Bad");
  return copy;
}

// Coding.

void VLStyle::encodeWithCoder(ns::KeyedArchiver &coder) const {
  coder.encodeObject(optionalString(_styleName), u"styleName");
  coder.encodeObject(optionalString(_displayName), u"displayName");
  coder.encodeObject(_properties, u"properties");
  coder.encodeInteger(_styleType, u"styleType");
  coder.encodeObject(_parentStyle, u"parentStyle");
  coder.encodeObject(_nextStyle, u"nextStyle");
  coder.encodeObject(_tabStyle, u"tabStyle");
  coder.encodeObject(_paragraphStyle, u"paragraphStyle");
  coder.encodeInteger(_paginationStyle, u"paginationStyle");
  coder.encodeObject(_font, u"font");
  coder.encodeDouble(_fontSize, u"fontSize");
  coder.encodeObject(_foregroundColor, u"foregroundColor");
  coder.encodeObject(_underlineColor, u"underlineColor");
  coder.encodeInteger(_underlineStyleAttribute, u"underlineStyleAttribute");
  coder.encodeInteger(_textTransform, u"textTransform");
  coder.encodeBool(_isDefaultStyle, u"isDefaultStyle");
  coder.encodeBool(_isAutomaticStyle, u"isAutomaticStyle");
  coder.encodeBool(_hasBoldFontWeight, u"hasBoldFontWeight");
  coder.encodeBool(_hasItalicFontStyle, u"hasItalicFontStyle");
  coder.encodeBool(_pageBreakBefore, u"pageBreakBefore");
  coder.encodeBool(_pageBreakAfter, u"pageBreakAfter");
  coder.encodeBool(_keepWithNext, u"keepWithNext");
  coder.encodeBool(_avoidsWidowsAndOrphans, u"avoidsWidowsAndOrphans");
  // Bit by bit under names, so that the word's layout may change between versions.
  const auto &keys = definesKeys();
  for (unsigned bit = 0; bit < VLStyleDefinesBitCount; ++bit)
    coder.encodeBool(_defines & (1u << bit), keys[bit]);
}

void VLStyle::initWithCoder(ns::KeyedUnarchiver &coder) {
  _styleName = stringOrNil(coder.decodeObjectForKey(u"styleName"));
  _displayName = stringOrNil(coder.decodeObjectForKey(u"displayName"));
  if (ns::DictionaryPtr properties = coder.decodeObjectForKey(u"properties").dictionary())
    _properties = std::move(properties);
  _styleType = coder.decodeIntegerForKey(u"styleType");
  _parentStyle = coder.decodeObjectForKey(u"parentStyle").as<VLStyle>();
  // Decoding is the one way a loop can come in unasked; every archive we write is free of
  // them, so such a parent is damage and goes.
  if (_parentStyle && !canTakeParent(*_parentStyle))
    _parentStyle = nullptr;
  _nextStyle = coder.decodeObjectForKey(u"nextStyle").as<VLStyle>();
  _tabStyle = coder.decodeObjectForKey(u"tabStyle").as<VLStyle>();
  ns::Value paragraphStyle = coder.decodeObjectForKey(u"paragraphStyle");
  if (auto mutableStyle = paragraphStyle.as<ns::MutableParagraphStyle>())
    _paragraphStyle = std::move(mutableStyle);
  else if (auto style = paragraphStyle.as<ns::ParagraphStyle>())
    _paragraphStyle = style->mutableParagraphStyle();
  _paginationStyle = coder.decodeIntegerForKey(u"paginationStyle");
  _font = coder.decodeObjectForKey(u"font").as<ns::Font>();
  _fontSize = coder.decodeDoubleForKey(u"fontSize");
  _foregroundColor = coder.decodeObjectForKey(u"foregroundColor").as<ns::Color>();
  _underlineColor = coder.decodeObjectForKey(u"underlineColor").as<ns::Color>();
  _underlineStyleAttribute = coder.decodeIntegerForKey(u"underlineStyleAttribute");
  _textTransform = coder.decodeIntegerForKey(u"textTransform");
  _isDefaultStyle = coder.decodeBoolForKey(u"isDefaultStyle");
  _isAutomaticStyle = coder.decodeBoolForKey(u"isAutomaticStyle");
  _hasBoldFontWeight = coder.decodeBoolForKey(u"hasBoldFontWeight");
  _hasItalicFontStyle = coder.decodeBoolForKey(u"hasItalicFontStyle");
  _pageBreakBefore = coder.decodeBoolForKey(u"pageBreakBefore");
  // "pageBreakAfter" is written but not read: archives have always come back without the
  // flag, and documents rely on that.
  _keepWithNext = coder.decodeBoolForKey(u"keepWithNext");
  _avoidsWidowsAndOrphans = coder.decodeBoolForKey(u"avoidsWidowsAndOrphans");
  const auto &keys = definesKeys();
  _defines = 0;
  for (unsigned bit = 0; bit < VLStyleDefinesBitCount; ++bit)
    if (coder.decodeBoolForKey(keys[bit]))
      _defines |= 1u << bit;
}

void VLStyle::decodingDidFail() {
  _parentStyle = nullptr;
  _nextStyle = nullptr;
  _tabStyle = nullptr;
  _properties->removeAllObjects();
}

// Key-value coding.

struct VLStyle::KeyAccess {
  std::u16string_view key;
  ns::Value (*get)(VLStyle &style);
  void (*set)(VLStyle &style, const ns::Value &value); // null: read only
};

const VLStyle::KeyAccess *VLStyle::keyAccess(std::u16string_view key) {
#define VL_KEY(name, getter, setter)                                                               \
  KeyAccess {                                                                                      \
    u"" #name, [](VLStyle &s) -> ns::Value { return getter; },                                     \
        [](VLStyle &s, const ns::Value &v) { setter; }                                             \
  }
#define VL_READ_ONLY_KEY(name, getter)                                                             \
  KeyAccess {                                                                                      \
    u"" #name, [](VLStyle &s) -> ns::Value { return getter; }, nullptr                             \
  }
  static const KeyAccess keys[] = {
    VL_KEY(styleName, optionalString(s._styleName), s.setStyleName(stringOrNil(v))),
    VL_KEY(displayName, optionalString(s.displayName()), s.setDisplayName(stringOrNil(v))),
    VL_KEY(styleType, s._styleType, s.setStyleType(v.integerValue())),
    VL_KEY(parentStyle, s._parentStyle, s.setParentStyle(v.as<VLStyle>())),
    VL_KEY(nextStyle, s._nextStyle, s.setNextStyle(v.as<VLStyle>())),
    VL_KEY(tabStyle, s._tabStyle, s.setTabStyle(v.as<VLStyle>())),
    VL_KEY(isDefaultStyle, s._isDefaultStyle, s.setIsDefaultStyle(v.boolValue())),
    VL_KEY(isAutomaticStyle, s._isAutomaticStyle, s.setIsAutomaticStyle(v.boolValue())),
    VL_READ_ONLY_KEY(isParagraphStyle, s.isParagraphStyle()),
    VL_READ_ONLY_KEY(isTextStyle, s.isTextStyle()),
    VL_READ_ONLY_KEY(attributes, s.attributes()),
    VL_KEY(properties, s._properties,
           s._properties = v.dictionary() ? v.dictionary() : ns::Dictionary::create()),
    // The own paragraph style is never shared and never nil.
    VL_KEY(paragraphStyle, s._paragraphStyle,
           if (auto style = v.as<ns::ParagraphStyle>()) s._paragraphStyle =
               style->mutableParagraphStyle()),
    VL_KEY(alignment, int64_t(s.alignment()), s.setAlignment(ns::TextAlignment(v.integerValue()))),
    VL_KEY(lineSpacing, s.lineSpacing(), s.setLineSpacing(v.doubleValue())),
    VL_KEY(paragraphSpacingBefore, s.paragraphSpacingBefore(),
           s.setParagraphSpacingBefore(v.doubleValue())),
    VL_KEY(paragraphSpacing, s.paragraphSpacing(), s.setParagraphSpacing(v.doubleValue())),
    VL_KEY(headIndent, s.headIndent(), s.setHeadIndent(v.doubleValue())),
    VL_KEY(tailIndent, s.tailIndent(), s.setTailIndent(v.doubleValue())),
    VL_KEY(firstLineHeadIndent, s.firstLineHeadIndent(), s.setFirstLineHeadIndent(v.doubleValue())),
    VL_KEY(minimumLineHeight, s.minimumLineHeight(), s.setMinimumLineHeight(v.doubleValue())),
    VL_KEY(maximumLineHeight, s.maximumLineHeight(), s.setMaximumLineHeight(v.doubleValue())),
    VL_KEY(defaultTabInterval, s.defaultTabInterval(), s.setDefaultTabInterval(v.doubleValue())),
    VL_KEY(lineHeightMultiple, s.lineHeightMultiple(), s.setLineHeightMultiple(v.doubleValue())),
    VL_KEY(hyphenationFactor, s.hyphenationFactor(), s.setHyphenationFactor(v.doubleValue())),
    VL_KEY(headerLevel, s.headerLevel(), s.setHeaderLevel(v.integerValue())),
    VL_KEY(outlineLevel, s.outlineLevel(), s.setOutlineLevel(v.integerValue())),
    VL_KEY(tighteningFactor, s.tighteningFactor(), s.setTighteningFactor(v.doubleValue())),
    VL_KEY(pageBreakBefore, s.pageBreakBefore(), s.setPageBreakBefore(v.boolValue())),
    VL_KEY(pageBreakAfter, s.pageBreakAfter(), s.setPageBreakAfter(v.boolValue())),
    VL_KEY(keepWithNext, s.keepWithNext(), s.setKeepWithNext(v.boolValue())),
    VL_KEY(avoidsWidowsAndOrphans, s.avoidsWidowsAndOrphans(),
           s.setAvoidsWidowsAndOrphans(v.boolValue())),
    VL_KEY(tabStops, tabStopArray(s.tabStops()), s.setTabStops(tabStopVector(v))),
    VL_KEY(baseWritingDirection, int64_t(s.baseWritingDirection()),
           s.setBaseWritingDirection(ns::WritingDirection(v.integerValue()))),
    VL_KEY(paginationStyle, s.paginationStyle(), s.setPaginationStyle(v.integerValue())),
    VL_KEY(font, s.font(), s.setFont(v.as<ns::Font>())),
    VL_KEY(fontSize, s.fontSize(), s.setFontSize(v.doubleValue())),
    VL_KEY(hasBoldFontWeight, s.hasBoldFontWeight(), s.setHasBoldFontWeight(v.boolValue())),
    VL_KEY(hasItalicFontStyle, s.hasItalicFontStyle(), s.setHasItalicFontStyle(v.boolValue())),
    VL_KEY(underlineStyle, s.underlineStyle(), s.setUnderlineStyle(v.integerValue())),
    VL_KEY(underlinePattern, s.underlinePattern(), s.setUnderlinePattern(v.integerValue())),
    VL_KEY(underlineMask, s.underlineMask(), s.setUnderlineMask(v.integerValue())),
    VL_KEY(underlineColor, s.underlineColor(), s.setUnderlineColor(v.as<ns::Color>())),
    VL_KEY(foregroundColor, s.foregroundColor(), s.setForegroundColor(v.as<ns::Color>())),
    VL_KEY(textTransform, s.textTransform(), s.setTextTransform(v.integerValue())),
  };
#undef VL_KEY
#undef VL_READ_ONLY_KEY
  static const auto index = [] {
    std::unordered_map<std::u16string_view, const KeyAccess *> out;
    for (const KeyAccess &access : keys)
      out.emplace(access.key, &access);
    return out;
  }();
  auto found = index.find(key);
  return found == index.end() ? nullptr : found->second;
}

bool VLStyle::kvcValueForKey(std::u16string_view key, ns::Value &value) {
  const KeyAccess *access = keyAccess(key);
  if (!access)
    return Object::kvcValueForKey(key, value);
  value = access->get(*this);
  return true;
}

bool VLStyle::kvcSetValueForKey(std::u16string_view key, const ns::Value &value) {
  const KeyAccess *access = keyAccess(key);
  if (!access || !access->set)
    return Object::kvcSetValueForKey(key, value);
  access->set(*this, value);
  return true;
}

} // namespace vl
