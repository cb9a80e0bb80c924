// VLStyle: a named set of paragraph and character properties that a style defines itself or
// inherits from its parent, laid onto run attributes and compared with them.
#pragma once

#include "model/VLParagraphStyleAdditions.h"
#include "ns/Color.h"
#include "ns/Dictionary.h"
#include "ns/Font.h"
#include "ns/KeyedArchiver.h"
#include "ns/ParagraphStyle.h"
#include "ns/TextTab.h"
#include "ns/Value.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vl {

class VLStyle;
using VLStylePtr = std::shared_ptr<VLStyle>;

/// Bits of the defines word: which properties a style defines itself. The positions are
/// part of the design (reset operations work with masks over them).
enum VLStyleDefines : uint32_t {
  VLStyleDefinesAlignment = 1u << 0,
  VLStyleDefinesLineSpacing = 1u << 1,
  VLStyleDefinesParagraphSpacingBefore = 1u << 2,
  VLStyleDefinesParagraphSpacing = 1u << 3,
  VLStyleDefinesHeadIndent = 1u << 4,
  VLStyleDefinesTailIndent = 1u << 5,
  VLStyleDefinesFirstLineHeadIndent = 1u << 6,
  VLStyleDefinesMinimumLineHeight = 1u << 7,
  VLStyleDefinesMaximumLineHeight = 1u << 8,
  VLStyleDefinesDefaultTabInterval = 1u << 9,
  VLStyleDefinesLineHeightMultiple = 1u << 10,
  VLStyleDefinesHyphenationFactor = 1u << 11,
  VLStyleDefinesHeaderLevel = 1u << 12,
  VLStyleDefinesTighteningFactor = 1u << 13,
  VLStyleDefinesPageBreakBefore = 1u << 14,
  VLStyleDefinesPageBreakAfter = 1u << 15,
  VLStyleDefinesKeepWithNext = 1u << 16,
  VLStyleDefinesAvoidsWidowsAndOrphans = 1u << 17,
  VLStyleDefinesTabStops = 1u << 18,
  VLStyleDefinesBaseWritingDirection = 1u << 19,
  VLStyleDefinesPaginationStyle = 1u << 20,
  VLStyleDefinesFont = 1u << 21,
  VLStyleDefinesFontSize = 1u << 22,
  VLStyleDefinesHasBoldFontWeight = 1u << 23,
  VLStyleDefinesHasItalicFontStyle = 1u << 24,
  VLStyleDefinesUnderlineStyle = 1u << 25,
  VLStyleDefinesUnderlinePattern = 1u << 26,
  VLStyleDefinesUnderlineMask = 1u << 27,
  VLStyleDefinesUnderlineColor = 1u << 28,
  VLStyleDefinesForegroundColor = 1u << 29,
  VLStyleDefinesTextTransform = 1u << 30,
};

/// Number of bits in the defines word.
inline constexpr unsigned VLStyleDefinesBitCount = 31;

/// The most styles a walk up a parent chain visits, the style itself included. A chain
/// that loops (setParentStyle does not look for loops) or runs deeper is cut there: the
/// last style visited answers as if it were the root. So no walk of the cascade can hang,
/// and one costs at most this many steps. Decoding keeps chains within this bound.
inline constexpr size_t VLStyleMaxCascadeDepth = 256;

/// Values of styleType. 1 is never used; 3 is set only by the RTF stylesheet.
enum VLStyleType : int64_t {
  VLParagraphStyleType = 0,
  VLTextStyleType = 2,
  VLOtherStyleType = 3,
};

/// Values of paginationStyle: a screenplay element's class for page breaking.
enum VLPaginationStyle : int64_t {
  VLGeneralPagination = 0,
  VLSceneHeadingPagination = 1,
  VLActionPagination = 2,
  VLCharacterPagination = 3,
  VLParentheticalPagination = 4,
  VLDialoguePagination = 5,
  VLShotPagination = 6,
  VLTransitionPagination = 7,
};

/// Values of textTransform, applied to characters at export, never to attributes.
enum VLTextTransform : int64_t {
  VLTextTransformNone = 0,
  VLTextTransformLowercase = 1,
  VLTextTransformUppercase = 2,
  VLTextTransformCapitalize = 3,
};

/// A paragraph or text style. Each property has a bit in the defines word: a setter stores
/// the value and sets the bit (and does nothing else: no change notice, no comparison), and
/// a getter answers the style's own value when the bit is set, else asks the parent. What a
/// getter answers with the bit clear and no parent depends on its family (see the getters).
///
/// Styles refer to each other (parent, next, tab) by shared pointers, rings included; the
/// stylesheet that owns them breaks the rings when it goes. A parent chain should not loop;
/// one that does (or that is deeper than VLStyleMaxCascadeDepth) is cut by every walk. The
/// cascade is walked at every read; nothing is cached.
///
/// Keyed coding keys: "styleName", "displayName", "properties", "styleType", "parentStyle",
/// "nextStyle", "tabStyle", "paragraphStyle", "paginationStyle", "font", "fontSize",
/// "foregroundColor", "underlineColor", "underlineStyleAttribute", "textTransform",
/// "isDefaultStyle", "isAutomaticStyle", "hasBoldFontWeight", "hasItalicFontStyle",
/// "pageBreakBefore", "pageBreakAfter", "keepWithNext", "avoidsWidowsAndOrphans", then
/// "defines.<name>" booleans for the 31 bits in bit order. "pageBreakAfter" is written and
/// never read: a decoded style defines the property as false. A decoded parent that would
/// close a loop, or make the chain deeper than VLStyleMaxCascadeDepth, is dropped: the style
/// keeps everything else and has no parent (archives are input, and a damaged one must not
/// make later reads hang).
///
/// Key-value coding reaches every property by its getter's name (tabStops as an array of
/// tab stops), plus "outlineLevel", "isParagraphStyle", "isTextStyle" and "attributes"
/// (read only).
class VLStyle : public ns::Object, public ns::Coding {
public:
  /// An unnamed paragraph style that defines nothing: resetParagraphStyle has run.
  VLStyle();
  VLStyle(const VLStyle &) = delete;
  VLStyle &operator=(const VLStyle &) = delete;
  static VLStylePtr create() { return std::make_shared<VLStyle>(); }

  VL_OBJECT(VLStyle)

  // Identity and inheritance. Plain accessors; none touches the defines word.

  /// The internal name, the key of VLStylesheet::styleForName; nil until named.
  const std::optional<std::u16string> &styleName() const { return _styleName; }
  void setStyleName(std::optional<std::u16string> name) { _styleName = std::move(name); }
  /// The name shown; the style name while no display name is set.
  const std::optional<std::u16string> &displayName() const {
    return _displayName ? _displayName : _styleName;
  }
  void setDisplayName(std::optional<std::u16string> name) { _displayName = std::move(name); }
  const VLStylePtr &parentStyle() const { return _parentStyle; }
  void setParentStyle(VLStylePtr style) { _parentStyle = std::move(style); }
  /// The style that follows on Return, or nil.
  const VLStylePtr &nextStyle() const { return _nextStyle; }
  void setNextStyle(VLStylePtr style) { _nextStyle = std::move(style); }
  /// The style the Tab key moves to, or nil.
  const VLStylePtr &tabStyle() const { return _tabStyle; }
  void setTabStyle(VLStylePtr style) { _tabStyle = std::move(style); }
  int64_t styleType() const { return _styleType; }
  void setStyleType(int64_t type) { _styleType = type; }
  bool isParagraphStyle() const { return _styleType == VLParagraphStyleType; }
  bool isTextStyle() const { return _styleType == VLTextStyleType; }
  bool isDefaultStyle() const { return _isDefaultStyle; }
  void setIsDefaultStyle(bool flag) { _isDefaultStyle = flag; }
  /// An automatic style stands for its parent plus overrides (see applyToAttributes).
  bool isAutomaticStyle() const { return _isAutomaticStyle; }
  void setIsAutomaticStyle(bool flag) { _isAutomaticStyle = flag; }
  /// True when `style` is reached by walking the parents upward from the parent; a style
  /// is not its own descendant. False for nil.
  bool isDescendantOfStyle(const VLStylePtr &style) const;

  /// Free-form values for other parts of the system; never null.
  const ns::DictionaryPtr &properties() const { return _properties; }
  void setObject(ns::Value value, std::u16string_view key);
  ns::Value objectForKey(std::u16string_view key) const;
  void removeObjectForKey(std::u16string_view key);

  // The defines word. There is no way to clear one bit: setters set them, resets clear.

  uint32_t defines() const { return _defines; }
  bool definesAlignment() const { return _defines & VLStyleDefinesAlignment; }
  bool definesLineSpacing() const { return _defines & VLStyleDefinesLineSpacing; }
  bool definesParagraphSpacingBefore() const {
    return _defines & VLStyleDefinesParagraphSpacingBefore;
  }
  bool definesParagraphSpacing() const { return _defines & VLStyleDefinesParagraphSpacing; }
  bool definesHeadIndent() const { return _defines & VLStyleDefinesHeadIndent; }
  bool definesTailIndent() const { return _defines & VLStyleDefinesTailIndent; }
  bool definesFirstLineHeadIndent() const { return _defines & VLStyleDefinesFirstLineHeadIndent; }
  bool definesMinimumLineHeight() const { return _defines & VLStyleDefinesMinimumLineHeight; }
  bool definesMaximumLineHeight() const { return _defines & VLStyleDefinesMaximumLineHeight; }
  bool definesDefaultTabInterval() const { return _defines & VLStyleDefinesDefaultTabInterval; }
  bool definesLineHeightMultiple() const { return _defines & VLStyleDefinesLineHeightMultiple; }
  bool definesHyphenationFactor() const { return _defines & VLStyleDefinesHyphenationFactor; }
  bool definesHeaderLevel() const { return _defines & VLStyleDefinesHeaderLevel; }
  /// The same bit as definesHeaderLevel.
  bool definesOutlineLevel() const { return _defines & VLStyleDefinesHeaderLevel; }
  bool definesTighteningFactor() const { return _defines & VLStyleDefinesTighteningFactor; }
  bool definesPageBreakBefore() const { return _defines & VLStyleDefinesPageBreakBefore; }
  bool definesPageBreakAfter() const { return _defines & VLStyleDefinesPageBreakAfter; }
  bool definesKeepWithNext() const { return _defines & VLStyleDefinesKeepWithNext; }
  bool definesAvoidsWidowsAndOrphans() const {
    return _defines & VLStyleDefinesAvoidsWidowsAndOrphans;
  }
  bool definesTabStops() const { return _defines & VLStyleDefinesTabStops; }
  bool definesBaseWritingDirection() const { return _defines & VLStyleDefinesBaseWritingDirection; }
  bool definesPaginationStyle() const { return _defines & VLStyleDefinesPaginationStyle; }
  bool definesFont() const { return _defines & VLStyleDefinesFont; }
  bool definesFontSize() const { return _defines & VLStyleDefinesFontSize; }
  bool definesHasBoldFontWeight() const { return _defines & VLStyleDefinesHasBoldFontWeight; }
  bool definesHasItalicFontStyle() const { return _defines & VLStyleDefinesHasItalicFontStyle; }
  bool definesUnderlineStyle() const { return _defines & VLStyleDefinesUnderlineStyle; }
  bool definesUnderlinePattern() const { return _defines & VLStyleDefinesUnderlinePattern; }
  bool definesUnderlineMask() const { return _defines & VLStyleDefinesUnderlineMask; }
  bool definesUnderlineColor() const { return _defines & VLStyleDefinesUnderlineColor; }
  bool definesForegroundColor() const { return _defines & VLStyleDefinesForegroundColor; }
  bool definesTextTransform() const { return _defines & VLStyleDefinesTextTransform; }
  /// The property name of bit `bit` ("alignment" for 0, "textTransform" for 30), as the
  /// archive's "defines." keys use it; empty for a bit outside the word.
  static std::u16string_view nameOfDefinesBit(unsigned bit);

  // Paragraph values: own paragraph style when defined, else the parent's getter, else the
  // own paragraph style (the platform default or the last reset).

  ns::TextAlignment alignment() const;
  void setAlignment(ns::TextAlignment value);
  double lineSpacing() const;
  void setLineSpacing(double value);
  double paragraphSpacingBefore() const;
  void setParagraphSpacingBefore(double value);
  double paragraphSpacing() const;
  void setParagraphSpacing(double value);
  double headIndent() const;
  void setHeadIndent(double value);
  double tailIndent() const;
  void setTailIndent(double value);
  double firstLineHeadIndent() const;
  void setFirstLineHeadIndent(double value);
  double minimumLineHeight() const;
  void setMinimumLineHeight(double value);
  double maximumLineHeight() const;
  void setMaximumLineHeight(double value);
  double defaultTabInterval() const;
  void setDefaultTabInterval(double value);
  double lineHeightMultiple() const;
  void setLineHeightMultiple(double value);
  /// Kept in the paragraph style as a 32-bit float; answered widened.
  double hyphenationFactor() const;
  void setHyphenationFactor(double value);
  /// The paragraph style's tighteningFactorForTruncation, a 32-bit float, widened.
  double tighteningFactor() const;
  void setTighteningFactor(double value);
  /// 0 means no level.
  int64_t headerLevel() const;
  void setHeaderLevel(int64_t value);
  ns::WritingDirection baseWritingDirection() const;
  void setBaseWritingDirection(ns::WritingDirection value);
  const std::vector<ns::TextTabPtr> &tabStops() const;
  /// Not announced to observers.
  void setTabStops(std::vector<ns::TextTabPtr> tabStops);
  /// Adds to the own paragraph style and sets the bit, announced to observers of
  /// "tabStops".
  void addTabStop(ns::TextTabPtr tab);
  /// Removes the first equal stop and sets the bit, announced to observers of "tabStops".
  void removeTabStop(const ns::TextTab &tab);

  // Own values with a default: own field when defined, else the parent's, else own field.

  int64_t textTransform() const;
  void setTextTransform(int64_t value);

  // Own values without a default: own field when defined, else the parent's, else 0, false
  // or nil.

  int64_t paginationStyle() const;
  void setPaginationStyle(int64_t value);
  bool pageBreakBefore() const;
  void setPageBreakBefore(bool flag);
  bool pageBreakAfter() const;
  void setPageBreakAfter(bool flag);
  bool keepWithNext() const;
  void setKeepWithNext(bool flag);
  bool avoidsWidowsAndOrphans() const;
  void setAvoidsWidowsAndOrphans(bool flag);
  const ns::FontPtr &font() const;
  /// Does not set a size.
  void setFont(ns::FontPtr font);
  const ns::ColorPtr &foregroundColor() const;
  void setForegroundColor(ns::ColorPtr color);
  const ns::ColorPtr &underlineColor() const;
  void setUnderlineColor(ns::ColorPtr color);
  /// The line style field of the underline word (VLUnderlineStyleMask).
  int64_t underlineStyle() const;
  /// Clears the field in the own word and ORs `value` in as given, unmasked.
  void setUnderlineStyle(int64_t value);
  /// The dash pattern field (VLUnderlinePatternMask).
  int64_t underlinePattern() const;
  void setUnderlinePattern(int64_t value);
  /// The by-word bit (ns::UnderlineByWordMask).
  int64_t underlineMask() const;
  void setUnderlineMask(int64_t value);
  /// The own underline word, all three fields together.
  int64_t underlineStyleAttribute() const { return _underlineStyleAttribute; }

  // Font-derived values: own field when defined; else, with an own font, the font's size or
  // trait; else the parent's; else 12.0 or false.

  double fontSize() const;
  void setFontSize(double value);
  bool hasBoldFontWeight() const;
  void setHasBoldFontWeight(bool flag);
  bool hasItalicFontStyle() const;
  void setHasItalicFontStyle(bool flag);

  // Outline level: a second view of the own header level in which "no level" is 10.

  /// The own paragraph style's header level, without the cascade, 0 read as 10.
  int64_t outlineLevel() const;
  /// setHeaderLevel with 10 read as 0; sets the header level bit even for 10.
  void setOutlineLevel(int64_t level);
  /// Orders by outlineLevel, ascending.
  ns::ComparisonResult compareOutlineLevel(const VLStyle &other) const;

  // Pagination. The misspelled names are part of the interface.

  /// The pagination class its display name proposes, compared case-insensitively; 0 for
  /// any other name or none.
  int64_t proposedScreenplayPaginationStyle() const;
  /// True for any pagination class but 0; else avoidsWidowsAndOrphans.
  bool avoidsWidowsAndOrphansGivenPagiationStyle() const;
  /// True for scene headings, characters and parentheticals, false for the other classes;
  /// for class 0, keepWithNext.
  bool keepWithNextGivenPagiationStyle() const;

  // Line spacing modes, read and written through the cascaded getters and the setters.

  /// The mode of the line heights; `info`, when given, receives the number the mode shows
  /// (the multiple or the height) or nil.
  int64_t lineSpacingModeWithInfo(ns::Value *info = nullptr) const;
  /// Sets line height multiple, minimum and maximum line height for `mode`; modes 3 to 5
  /// take their number from `info` (nil counts as 0). Modes above 5 are single.
  void setLineSpacingMode(int64_t mode, const ns::Value &info);

  // Resolved views.

  /// The own paragraph style object (not a resolved one); never null.
  const ns::MutableParagraphStylePtr &paragraphStyle() const { return _paragraphStyle; }
  /// The resolved run attributes: a new dictionary with the default font, the platform's
  /// default paragraph style and VLParagraphStyleAttributeName set to this style, then
  /// applyToAttributes. How converters obtain the attributes of a paragraph.
  ns::DictionaryPtr attributes() const;
  /// userFontOfSize 12.
  static ns::FontPtr defaultFont();

  /// Lays the chain onto `attributes`, root first: for every style, its text properties,
  /// then (unless it is a text style) the paragraph properties, then the style attribute.
  /// A property whose bit is clear is not written, so what an ancestor wrote stays. A
  /// paragraph style sets VLParagraphStyleAttributeName to itself, or, when automatic, to its
  /// parent (a parent that is automatic too fails "Parent style is automatic style"); a text
  /// style does the same with VLTextStyleAttributeName. Attributes without a paragraph style
  /// are taken to hold the platform's default. Costs one copy of the paragraph style and
  /// one font conversion per defined size or trait along the chain.
  void applyToAttributes(ns::Dictionary &attributes) const;
  /// The paragraph half for the whole chain, root first, into one copy of the attributes'
  /// paragraph style. Hyphenation and tightening are never applied; page break, keep,
  /// pagination and text transform never reach attributes.
  void applyParagraphPropertiesToAttributes(ns::Dictionary &attributes) const;
  /// The text half of this style alone: font (own font or the attributes'; neither fails
  /// "Font not specified"), size, bold, italic, colour, underline word, underline colour.
  void applyTextPropertiesToAttributes(ns::Dictionary &attributes) const;

  // Comparing with attributes, through the cascaded getters.

  /// Every paragraph value equal, exactly, to the attributes' paragraph style (the
  /// platform's default when they have none).
  bool matchesParagraphStyle(const ns::Dictionary &attributes) const;
  /// Font family (when this style has a font), size, bold and italic traits, colour,
  /// the three underline fields and the underline colour equal to the attributes'.
  bool matchesTextAttributes(const ns::Dictionary &attributes) const;
  bool matchesAttributes(const ns::Dictionary &attributes) const;
  /// The same text definitions: bits 21 to 27, 29 and 30 identical, then the values of
  /// every text bit set here (underline colour included) equal through the getters.
  bool matchesTextAttributeDefinitionsInStyle(const VLStyle &style) const;

  // Differences, written into `style` through its setters, so that its defines word lists
  // exactly what differs from this style's cascaded values.

  void _recordParagraphPropertyDiffsWithAttributes(const ns::Dictionary &attributes,
                                                   VLStyle &style) const;
  /// Bold and italic are recorded one way only: a plain font over a bold style records
  /// nothing unless its traits hold unbold.
  void _recordTextPropertyDiffsWithAttributes(const ns::Dictionary &attributes,
                                              VLStyle &style) const;

  // Derived styles: a new unnamed style of this class holding the differences. Each is
  // isEmpty exactly when the attributes showed none.

  /// Paragraph and text differences; a paragraph style with no parent.
  VLStylePtr diffWithAttributes(const ns::Dictionary &attributes) const;
  /// Text differences; a text style with no parent.
  VLStylePtr diffWithTextAttributes(const ns::Dictionary &attributes) const;
  /// Paragraph differences; a paragraph style whose parent is this style.
  VLStylePtr derivedParagraphOnlyStyleWithAttributes(const ns::Dictionary &attributes) const;
  /// Paragraph and text differences; a paragraph style whose parent is this style.
  VLStylePtr derivedParagraphStyleWithAttributes(const ns::Dictionary &attributes) const;
  /// Text differences; a text style whose parent is this style.
  VLStylePtr derivedTextStyleWithAttributes(const ns::Dictionary &attributes) const;

  // Resets.

  /// The own paragraph style becomes a copy of the platform default with no tab stops and a
  /// default tab interval of 36. The defines word is left alone.
  void resetParagraphStyle();
  /// Clears bold, italic and bits 22 to 29; font and text transform stay.
  void resetCharacterStyle();
  /// Defines every property but writing direction, pattern and by-word with the defaults:
  /// user font 12, no bold, italic, colours or underline, every paragraph value as the own
  /// paragraph style holds it, no page breaks, keeps, pagination or transform.
  void resetToDefaultProperties();
  /// The same defaults, each only where its bit is clear; page breaks are left alone.
  void ensureDefaultProperties();

  /// A new default style: resetToDefaultProperties, display name the localized "Default
  /// Style", its style name, isDefaultStyle. A new object at every call.
  static VLStylePtr defaultParagraphStyle();

  /// True when no bit is set and the style is neither default nor automatic: a derived
  /// style that holds no difference.
  bool isEmpty() const;
  /// False at the first difference: nil; defines word and the two flags; names; parents
  /// (recursively); style type; for paragraph styles the other's attributes; page break
  /// before, keep with next, widows, text transform, pagination. Page break after, next and
  /// tab styles are not compared.
  bool isEqualToStyle(const VLStylePtr &style) const;

  /// A name made of XML name characters: units that may stand where they are are kept,
  /// others become "_<hex>_" ("Scene Heading" gives "Scene_20_Heading"). Nil for nil or
  /// empty input. Also reachable through an instance.
  static std::optional<std::u16string>
  styleNameForDisplayName(std::optional<std::u16string_view> displayName);

  /// One line for users of what this style defines itself, items joined by ", ", words
  /// localized through the main bundle, with the parent's display name and " + " in front:
  /// "Default Style + Font: Courier, 12.0 pt". Line spacing, line heights, tab stops,
  /// hyphenation, tightening, writing direction and the underline's pattern, by-word bit
  /// and colour are not shown. An item with no words still brings its separator, so a
  /// default style that is not bold shows ", , ".
  std::u16string textDefinition() const;
  /// The base description and the style name; "default-paragraph-style",
  /// "default-text-style" or "unknown" in place of the name for a default style.
  std::u16string description() const override;
  /// A new style of the same class with its own paragraph style and properties (failing
  /// "Bad" if either would be shared); parent, next and tab style are the same objects.
  ns::ObjectPtr copy() const override;

  void encodeWithCoder(ns::KeyedArchiver &coder) const override;
  void initWithCoder(ns::KeyedUnarchiver &coder) override;
  /// Drops the links and properties, which may ring back to this style.
  void decodingDidFail() override;

protected:
  /// A new empty style of the receiver's class, for copies and derived styles.
  virtual VLStylePtr makeStyle() const { return std::make_shared<VLStyle>(); }

  bool kvcValueForKey(std::u16string_view key, ns::Value &value) override;
  bool kvcSetValueForKey(std::u16string_view key, const ns::Value &value) override;

private:
  struct KeyAccess;
  /// The getter and setter of a key-value coding key, or null.
  static const KeyAccess *keyAccess(std::u16string_view key);
  /// The style of the chain whose value a getter of `bit` answers: the first that defines
  /// it, else the root.
  const VLStyle &definingStyle(uint32_t bit) const;
  /// False when `parent` would close a loop or make the chain too deep to walk.
  bool canTakeParent(const VLStyle &parent) const;
  /// isEqualToStyle with `depth` styles of the chain visited so far.
  bool isEqualToStyle(const VLStyle &other, size_t depth) const;
  /// The style of the chain that answers a font-derived getter of `bit`: the first that
  /// defines it or has a font of its own; null when none does.
  const VLStyle *fontDerivedSource(uint32_t bit) const;
  /// Writes the paragraph values of the chain, root first, into `style`; `depth` counts
  /// the styles visited so far.
  void writeParagraphProperties(ns::MutableParagraphStyle &style, size_t depth) const;
  /// Step four of applyToAttributes for this style alone.
  void applyStyleAttribute(ns::Dictionary &attributes) const;
  void applyChain(ns::Dictionary &attributes, size_t depth) const;
  VLStylePtr derivedStyle(const ns::Dictionary &attributes, bool paragraph, bool text, int64_t type,
                          bool withParent) const;

  std::optional<std::u16string> _styleName;
  std::optional<std::u16string> _displayName;
  ns::DictionaryPtr _properties;
  int64_t _styleType = VLParagraphStyleType;
  VLStylePtr _parentStyle;
  VLStylePtr _nextStyle;
  VLStylePtr _tabStyle;
  ns::MutableParagraphStylePtr _paragraphStyle;
  int64_t _paginationStyle = 0;
  ns::FontPtr _font;
  double _fontSize = 0;
  ns::ColorPtr _foregroundColor;
  ns::ColorPtr _underlineColor;
  int64_t _underlineStyleAttribute = 0;
  int64_t _textTransform = 0;
  bool _hasBoldFontWeight : 1 = false;
  bool _hasItalicFontStyle : 1 = false;
  bool _pageBreakBefore : 1 = false;
  bool _pageBreakAfter : 1 = false;
  bool _keepWithNext : 1 = false;
  bool _avoidsWidowsAndOrphans : 1 = false;
  uint32_t _defines = 0;
  bool _isDefaultStyle = false;
  bool _isAutomaticStyle = false;
};

} // namespace vl
