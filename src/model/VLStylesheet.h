// VLStylesheet: the styles a document owns, with their list styles, graphic styles, page
// layouts and font table, the lookups over them, and the default stylesheets.
#pragma once

#include "model/VLFontTable.h"
#include "model/VLGraphicStyle.h"
#include "model/VLListStyle.h"
#include "model/VLPageLayout.h"
#include "model/VLStyle.h"
#include "ns/Dictionary.h"
#include "ns/Font.h"
#include "ns/KeyedArchiver.h"
#include "ns/Object.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vl {

class VLStylesheet;
using VLStylesheetPtr = std::shared_ptr<VLStylesheet>;

/// One key of a sort: a key-value coding key and a direction.
struct VLSortDescriptor {
  std::u16string key;
  bool ascending = true;

  /// Compares the values of `key` of two objects (ns::Value::compare; nil orders first).
  ns::ComparisonResult compareObject(ns::Object &a, ns::Object &b) const;
};

/// A collection of styles in insertion order; every lookup is linear and answers the first
/// match in that order. A style's parent, next and tab links point into the same sheet, and
/// the sheet owns the rings they form: when it goes it sets, for every style it holds, the
/// tab, next and parent style to nil, in that order. A style has no link back to its
/// stylesheet, so one style may sit in two sheets; removal touches only the sheet called.
///
/// Copying is an archive round trip, so a copy is deep and rings among the styles stay
/// rings among the copies. A decoded sheet also owns the styles its styles link to without
/// listing them (an import can leave such links), and those a damaged archive puts in its
/// other collections: it breaks their rings too when it goes. Decoding clears the automatic
/// flag of an automatic style whose parent is automatic as well, which could not be applied.
///
/// Keyed coding keys, all objects: "displayName", "fontTable", "styles", "listStyles",
/// "graphicStyles", "pageLayoutStyles", "properties".
class VLStylesheet : public ns::Object, public ns::Coding {
public:
  /// initWithFontTable: with nil: empty collections and no font table.
  VLStylesheet() = default;
  /// Empty collections and `fontTable`.
  explicit VLStylesheet(VLFontTablePtr fontTable) : _fontTable(std::move(fontTable)) {}
  VLStylesheet(const VLStylesheet &) = delete;
  VLStylesheet &operator=(const VLStylesheet &) = delete;
  ~VLStylesheet() override;
  static VLStylesheetPtr create(VLFontTablePtr fontTable = nullptr) {
    return std::make_shared<VLStylesheet>(std::move(fontTable));
  }

  VL_OBJECT(VLStylesheet)

  // Plain accessors.

  const std::optional<std::u16string> &displayName() const { return _displayName; }
  void setDisplayName(std::optional<std::u16string> name) { _displayName = std::move(name); }
  /// May be nil.
  const VLFontTablePtr &fontTable() const { return _fontTable; }
  void setFontTable(VLFontTablePtr fontTable) { _fontTable = std::move(fontTable); }
  /// Free-form values; never null.
  const ns::DictionaryPtr &properties() const { return _properties; }

  // Paragraph and text styles.

  /// The styles in insertion order (the live array).
  const std::vector<VLStylePtr> &styles() const { return _styles; }
  /// Replaces the array (nil entries dropped); no change notice.
  void setStyles(std::vector<VLStylePtr> styles);
  /// Appends `style` unless the sheet holds that very object; announced to observers of
  /// "styles". Nil is ignored.
  void addStyle(VLStylePtr style);
  /// Every other style whose parent, next or tab style is `style` gets nil there, then
  /// `style` is removed; announced to observers of "styles". The removed style keeps its own
  /// links.
  void removeStyle(const VLStylePtr &style);
  /// Points every other style's parent, next and tab links at `newStyle` instead of
  /// `oldStyle`, then removes the old style and adds the new one at the end.
  void replaceStyle(const VLStylePtr &oldStyle, VLStylePtr newStyle);

  /// The first style with that style name; nil for nil.
  VLStylePtr styleForName(std::optional<std::u16string_view> name) const;
  /// The first style with that display name (a style without one answers with its style
  /// name); nil for nil.
  VLStylePtr styleForDisplayName(std::optional<std::u16string_view> displayName) const;
  /// The first style whose own outline level (10 meaning none) equals `level`.
  VLStylePtr styleForOutlineLevel(int64_t level) const;
  /// The first style whose cascaded header level equals `level`. For 0 a default style is
  /// passed over while any other style has level 0.
  VLStylePtr styleForHeaderLevel(int64_t level) const;
  /// The first default paragraph style; when there is none a new one is added, so this
  /// never answers nil.
  VLStylePtr defaultParagraphStyle();
  /// The first default text style, or nil; none is made.
  VLStylePtr defaultTextStyle() const;
  /// True when any style paginates as a screenplay element, keeps with next or avoids
  /// widows and orphans.
  bool requiresSpecialPagination() const;
  /// outlineSettingsForStyle of the style shown as "Body Text", else of the default
  /// paragraph style.
  ns::DictionaryPtr defaultOutlineSettings();
  /// {"outlineLevelSettings": [{"displayName", "defaultStyle"}]} for `style` (its display and
  /// style name); nil means the default paragraph style.
  ns::DictionaryPtr outlineSettingsForStyle(VLStylePtr style);
  /// By "outlineLevel", then "displayName", then "isDefaultStyle", all ascending.
  static std::vector<VLSortDescriptor> defaultSortDescriptors();
  /// The first style that isEqualToStyle `style`, or nil. Costs one comparison per style,
  /// with the resolved attributes of `style` for every paragraph style of equal names.
  VLStylePtr styleMatchingStyle(const VLStylePtr &style) const;
  /// The direct children of `style` that lead to at least one style of the sheet, in the
  /// order the sheet's styles find them (a grandchild finds its parent); nil when there are
  /// none or `style` is nil.
  std::optional<std::vector<VLStylePtr>> descendantsOfStyle(const VLStylePtr &style) const;

  // Free names. Each tries names until one is free, so none fails; every try costs one
  // pass over the styles (or the graphic styles, list styles, page layouts).

  /// styleNameForDisplayName of `displayName` if no style has it as style name, else that
  /// name with "_1", "_2", ...: "Scene_20_Heading", then "Scene_20_Heading_1". Nil for nil
  /// or empty.
  std::optional<std::u16string>
  uniqueNameForDisplayName(std::optional<std::u16string_view> displayName) const;
  /// `name` if no style shows it as display name, else "name 2", "name 3", ... Nil for nil.
  std::optional<std::u16string>
  uniqueDisplayNameForName(std::optional<std::u16string_view> name) const;
  /// `format` (a format with one integer conversion, as "P%d") with the first number from 1
  /// that gives a free style name.
  std::u16string uniqueNameForStyle(const VLStylePtr &style, std::u16string_view format) const;
  /// The same with "P%d" for a paragraph style (and nil), "T%d" for a text style and "U%d"
  /// for any other kind.
  std::u16string uniqueNameForStyle(const VLStylePtr &style) const;
  /// "fr1", "fr2", ...: the first that no graphic style has as style name.
  std::u16string uniqueNameForGraphicStyle(const VLGraphicStylePtr &style) const;
  /// "L1", "L2", ...: the first that no list style has as style name.
  std::u16string uniqueNameForListStyle(const VLListStylePtr &listStyle) const;
  /// "pm1", "pm2", ...: the first that no page layout has as name.
  std::u16string uniqueNameForPageLayout(const VLPageLayoutPtr &layout) const;

  // Importing styles from another sheet.

  /// Copies `styles`, and every style their parent, next and tab links reach, into this
  /// sheet, and answers the map from each one's style name in its old sheet to its style
  /// here. Only paragraph styles come in. A style equal to one here (styleMatchingStyle)
  /// maps to that one and adds nothing. A parent comes in before its children, and the
  /// copy's parent is the parent's style here. A default style arrives as its difference
  /// from this sheet's default paragraph style, with that as parent, named after the
  /// localized "Imported Default Style %d", so the sheet keeps one default. A copy whose
  /// style name is taken replaces the style of that name (replaceStyle, so it goes last and
  /// links follow it) when `replaceDuplicates`, and is otherwise renamed "Name 2" (display
  /// name, the style name formed from it). Last, for each of `styles`, the style here that
  /// has its old style name takes the mapped next and tab styles (nil where unmapped). While
  /// this runs the map is in properties() under "importStyleMap". An empty or nil-only
  /// argument answers an empty map. Costs quadratic in the styles in the worst case.
  ns::DictionaryPtr importStyles(const std::vector<VLStylePtr> &styles, bool replaceDuplicates);
  /// Imports `style` if `remainingStyles` holds it, removing it there, and answers its style
  /// here; a style that is not held (done before, or nil) answers the map's entry for its
  /// name. Records in the map of a running importStyles, if any.
  VLStylePtr importStyle(const VLStylePtr &style, bool replaceDuplicates,
                         std::vector<VLStylePtr> &remainingStyles);
  /// Appends `style` unless it is nil or in `array`, then does the same for its parent, next
  /// and tab styles, in that order; rings are safe. Linear in what it reaches.
  void addStylesForStyle(const VLStylePtr &style, std::vector<VLStylePtr> &array) const;

  // Graphic styles.

  /// A new array with the graphic styles.
  std::vector<VLGraphicStylePtr> graphicStyles() const { return _graphicStyles; }
  /// Appends; no test for duplicates, no change notice.
  void addGraphicStyle(VLGraphicStylePtr style);
  /// Removes every entry of that object; no change notice.
  void removeGraphicStyle(const VLGraphicStylePtr &style);
  /// The first graphic style flagged default; when there is none a new default graphic style
  /// is added.
  VLGraphicStylePtr defaultGraphicStyle();

  // List styles and page layouts.

  /// The live array.
  const std::vector<VLListStylePtr> &listStyles() const { return _listStyles; }
  /// Appends; no test for duplicates, no change notice.
  void addListStyle(VLListStylePtr listStyle);
  /// Removes every entry of that object; no change notice.
  void removeListStyle(const VLListStylePtr &listStyle);
  /// The first list style with that style name, or nil (also for nil).
  VLListStylePtr listStyleForName(std::optional<std::u16string_view> name) const;
  /// The first list style with that display name (its style name while it has none), or
  /// nil (also for nil).
  VLListStylePtr listStyleForDisplayName(std::optional<std::u16string_view> displayName) const;
  /// The shared default list style of the process; the sheet does not hold it.
  static const VLListStylePtr &defaultListStyle() { return VLListStyle::defaultListStyle(); }
  /// The display name of the outline list style's level `level` (the first list style that
  /// numbers the outline), when that level has one; else the display name of
  /// styleForOutlineLevel, or nil when no style has that level.
  std::optional<std::u16string> displayNameForOutlineLevel(int64_t level) const;
  /// The live array.
  const std::vector<VLPageLayoutPtr> &pageLayoutStyles() const { return _pageLayoutStyles; }
  /// Plain; no change notice.
  void setPageLayoutStyles(std::vector<VLPageLayoutPtr> layouts) {
    _pageLayoutStyles = std::move(layouts);
  }
  /// Appends unless the sheet holds that very object, announced to observers of
  /// "pageLayoutStyles".
  void addPageLayoutStyle(VLPageLayoutPtr layout);
  /// Removes, announced to observers of "pageLayoutStyles".
  void removePageLayoutStyle(const VLPageLayoutPtr &layout);
  /// The first page layout with that name, or nil (also for nil).
  VLPageLayoutPtr pageLayoutStyleForName(std::optional<std::u16string_view> name) const;

  // The default stylesheets. Display names are localized and style names are formed from
  // them; each sheet ends with the default graphic style.

  /// "Default Style", "Body Text" and "Heading 1" to "Heading 3".
  static VLStylesheetPtr defaultStylesheet();
  /// "Chapter Title", "Section Text", "Section Separator", "Header" and a default style in
  /// `font` (nil: Courier 12). The body indent is 36 for a Courier family, else 18.
  static VLStylesheetPtr defaultNovelStylesheetWithFont(ns::FontPtr font);
  static VLStylesheetPtr defaultNovelStylesheet();
  /// "Action", "Scene Heading", "Character", "Dialogue", "Parenthetical", "Transition" and a
  /// default style in `font` (nil: Courier 12) with lines exactly 12 points high.
  static VLStylesheetPtr defaultScreenplayStylesheetWithFont(ns::FontPtr font);
  static VLStylesheetPtr defaultScreenplayStylesheet();

  /// A deep copy through the keyed archiver; nil only if the archive cannot be read back.
  ns::ObjectPtr copy() const override;

  void encodeWithCoder(ns::KeyedArchiver &coder) const override;
  void initWithCoder(ns::KeyedUnarchiver &coder) override;
  /// Lets go of everything it holds, which may hold it in turn.
  void decodingDidFail() override;

protected:
  /// "styles", "graphicStyles", "listStyles", "pageLayoutStyles" (new arrays),
  /// "displayName", "fontTable", "properties".
  bool kvcValueForKey(std::u16string_view key, ns::Value &value) override;

private:
  /// Points every other style's parent, next and tab links to `from` at `to`.
  void pointLinks(const VLStylePtr &from, const VLStylePtr &to);
  /// importStyle with `depth` parents imported above it.
  VLStylePtr importStyle(VLStylePtr style, bool replaceDuplicates,
                         std::vector<VLStylePtr> &remainingStyles, size_t depth);
  /// After decoding: remembers the styles that the sheet's styles, and the styles `held` by
  /// its keys out of place, reach through their links without listing them, and makes every
  /// automatic style applicable.
  void adoptDecodedStyles(const std::vector<VLStylePtr> &held);

  std::vector<VLListStylePtr> _listStyles;
  std::vector<VLGraphicStylePtr> _graphicStyles;
  std::vector<VLPageLayoutPtr> _pageLayoutStyles;
  ns::DictionaryPtr _properties = ns::Dictionary::create();
  std::optional<std::u16string> _displayName;
  VLFontTablePtr _fontTable;
  std::vector<VLStylePtr> _styles;
  // Styles a decoded sheet reaches without listing them; not archived.
  std::vector<VLStylePtr> _linkedStyles;
};

} // namespace vl
