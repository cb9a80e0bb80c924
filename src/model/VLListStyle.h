// VLListStyle: a named set of list level styles, compared with and derived from the text
// lists of a paragraph.
#pragma once

#include "model/VLListLevelStyle.h"
#include "ns/KeyedArchiver.h"
#include "ns/Object.h"
#include "ns/TextList.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vl {

/// A list style: names, flags, a level, and the level styles in the order they were put in.
/// Levels are found by their `level` number, first match in that order.
///
/// Copying copies each level style (see VLListLevelStyle::copy) and points the copies back
/// at the new list style. Keyed coding keys: "styleName", "displayName",
/// "consecutiveNumbering", "level", "isOutlineStyle", "isAutomaticStyle" (the flags and the
/// level as number objects), "listLevels".
class VLListStyle : public ns::Object, public ns::Coding {
public:
  VLListStyle() = default;
  static VLListStylePtr create() { return std::make_shared<VLListStyle>(); }

  VL_OBJECT(VLListStyle)

  /// One list style for the process, made on first use: display name the localized
  /// "Default List Style", the style name formed from it, and ten bullet levels 1 to 10
  /// with the default bullet, put in with setListLevelStyle (so their listStyle is null).
  static const VLListStylePtr &defaultListStyle();

  bool consecutiveNumbering() const { return _consecutiveNumbering; }
  void setConsecutiveNumbering(bool flag) { _consecutiveNumbering = flag; }
  /// The list style numbers the outline.
  bool isOutlineStyle() const { return _isOutlineStyle; }
  void setIsOutlineStyle(bool flag) { _isOutlineStyle = flag; }
  /// Made for one use: applying one of its levels does not name it in the attributes.
  bool isAutomaticStyle() const { return _isAutomaticStyle; }
  void setIsAutomaticStyle(bool flag) { _isAutomaticStyle = flag; }
  /// The internal name (a stylesheet's uniqueNameForListStyle gives a free one).
  const std::optional<std::u16string> &styleName() const { return _styleName; }
  void setStyleName(std::optional<std::u16string> name) { _styleName = std::move(name); }
  /// The display name, or the style name while it is nil.
  const std::optional<std::u16string> &displayName() const;
  void setDisplayName(std::optional<std::u16string> name) { _displayName = std::move(name); }
  /// A level number, not an index.
  uint64_t level() const { return _level; }
  void setLevel(uint64_t level) { _level = level; }

  /// The level styles in the order they were put in (the live array).
  const std::vector<VLListLevelStylePtr> &listLevels() const { return _listLevels; }
  /// The level styles sorted by ascending level; equal levels keep their order. Costs a
  /// copy and a sort.
  std::vector<VLListLevelStylePtr> listLevelStyles() const;
  /// Appends `style` and points its listStyle here (nil when this list style is not held by
  /// a shared_ptr); a level already present stays. Null does nothing.
  void addListLevelStyle(VLListLevelStylePtr style);
  /// Removes the style of `level`, if any, and appends `style` without touching its
  /// listStyle. Fails the check "Style level must equal level" when the style's level is
  /// another (or the style is null).
  void setListLevelStyle(VLListLevelStylePtr style, uint64_t level);
  /// The first style with that level, or null. Linear in the level count.
  VLListLevelStylePtr listLevelStyleForLevel(uint64_t level) const;

  /// The text list of that level, or a new "{decimal}" list with no options when the style
  /// has no such level.
  ns::TextListPtr textListForLevel(uint64_t level) const;
  /// textListForLevel for 1 up to `level`; empty for 0.
  std::vector<ns::TextListPtr> textListsForLevel(uint64_t level) const;

  /// True when the marker format of each list, the first being level 1, equals that of the
  /// style's level; a level the style lacks, or a null list, is a difference. An empty array
  /// matches.
  bool matchesTextLists(const std::vector<ns::TextListPtr> &lists) const;
  /// A copy of this style in which every level whose marker format differs from the list at
  /// that position is replaced by listLevelStyleWithTextList. Take it once and keep it: the
  /// copy's unchanged number levels have lost their format, so deriving again from the copy
  /// replaces them too.
  VLListStylePtr derivedLevelStyleWithTextLists(const std::vector<ns::TextListPtr> &lists) const;

  /// "<VLListStyle: 0x...> - L1", with "outline-style" for an outline style and "?" when
  /// there is no name.
  std::u16string description() const override;
  ns::ObjectPtr copy() const override;

  void encodeWithCoder(ns::KeyedArchiver &coder) const override;
  void initWithCoder(ns::KeyedUnarchiver &coder) override;

protected:
  bool kvcValueForKey(std::u16string_view key, ns::Value &value) override;
  bool kvcSetValueForKey(std::u16string_view key, const ns::Value &value) override;

private:
  bool _consecutiveNumbering = false;
  bool _isOutlineStyle = false;
  bool _isAutomaticStyle = false;
  std::optional<std::u16string> _styleName;
  std::optional<std::u16string> _displayName;
  uint64_t _level = 0;
  std::vector<VLListLevelStylePtr> _listLevels;
};

} // namespace vl
