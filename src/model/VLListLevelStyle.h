// VLListLevelStyle and its number and bullet kinds: one level of a list style, which turns
// into a platform text list and back through its marker format.
#pragma once

#include "ns/AttributedString.h"
#include "ns/Dictionary.h"
#include "ns/KeyedArchiver.h"
#include "ns/Object.h"
#include "ns/TextList.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace vl {

class VLListStyle;
class VLListLevelStyle;
class VLListLevelProperties;
using VLListStylePtr = std::shared_ptr<VLListStyle>;
using VLListLevelStylePtr = std::shared_ptr<VLListLevelStyle>;
using VLListLevelPropertiesPtr = std::shared_ptr<VLListLevelProperties>;

/// A level style class as the keyword table names it: the class's initWithTextList:.
using VLListLevelStyleClass = VLListLevelStylePtr (*)(const ns::TextListPtr &list);
/// Keyword to level style class.
using VLListLevelClassTable = std::map<std::u16string, VLListLevelStyleClass, std::less<>>;
/// Keyword to format value (the number format or the bullet character).
using VLListFormatTable = std::map<std::u16string, std::u16string, std::less<>>;

/// One level of a list: a level number from 1, a back reference to the list style that holds
/// it (not owned), properties holding the display name, and a cached platform text list.
///
/// The base class stands for "some level": its markerFormat and createWithTextList fail an
/// internal check. Make levels with VLListNumberLevelStyle, VLListBulletLevelStyle or
/// listLevelStyleWithTextList.
///
/// Keyed coding keys of the base: "level", "listLevelProperties", "textList", "listStyle".
/// The concrete kinds write only their own keys but read the base's, so a decoded level has
/// level 0, no properties and no list style; its own values survive. An archived level
/// below 0 or above 1000 makes the archive fail to decode.
class VLListLevelStyle : public ns::Object, public ns::Coding {
public:
  /// Level 0, fresh properties, no list style.
  VLListLevelStyle();

  VL_OBJECT(VLListLevelStyle)

  // The keyword tables, made on first use and kept for the process.

  /// Keyword to class. "box" has no row (see formatByKeyword), so a "{box}" list becomes a
  /// number level whose format is the box character.
  static const VLListLevelClassTable &listLevelClassByKeyword();
  /// Keyword to format value: "1", "I", "i", "A", "a" for numbers, the bullet characters
  /// for bullets and "box". "octal" and the two hexadecimal keywords have no row.
  static const VLListFormatTable &formatByKeyword();

  /// Splits the marker format of `list` into prefix, keyword and suffix and answers the
  /// keyword. Without a "{" the suffix is the whole format and prefix and keyword are nil;
  /// with a "{" but no "}" after it, all three are nil. `prefix` and `suffix` may be null;
  /// they are set to nil first. A null list answers nil. Costs one scan of the format.
  static std::optional<std::u16string> keywordForList(const ns::TextListPtr &list,
                                                      std::optional<std::u16string> *prefix,
                                                      std::optional<std::u16string> *suffix);
  /// A level of the class the keyword of `list` names (a number level for an unknown or
  /// missing keyword) made with that class's createWithTextList. A null list counts as a
  /// list with an empty format.
  static VLListLevelStylePtr listLevelStyleWithTextList(const ns::TextListPtr &list);
  /// initWithTextList: of the base: fails the check "subclass responsibility".
  static VLListLevelStylePtr createWithTextList(const ns::TextListPtr &list);

  /// The level, counted from 1 (0 in a level read from an archive).
  uint64_t level() const { return _level; }
  void setLevel(uint64_t level) { _level = level; }

  /// The list style the level was added to with addListLevelStyle, or null when it was
  /// never added that way or the list style has gone.
  VLListStylePtr listStyle() const { return _listStyle.lock(); }
  /// Not owning: the level does not keep the list style alive.
  void setListStyle(const VLListStylePtr &listStyle) { _listStyle = listStyle; }

  /// Null in a level read from an archive.
  const VLListLevelPropertiesPtr &listLevelProperties() const { return _listLevelProperties; }
  void setListLevelProperties(VLListLevelPropertiesPtr properties);

  /// The display name held by the properties; nil when there are none.
  std::optional<std::u16string> displayName() const;
  /// Stores the name in the properties, making them when the level has none.
  void setDisplayName(std::optional<std::u16string> displayName);

  /// Prefix, "{keyword}" and suffix, or prefix and suffix alone when the level's format
  /// has no keyword. The base fails the check "Subclass responsibility".
  virtual std::u16string markerFormat() const;
  /// Options of the text list: 0.
  virtual uint64_t markerOptions() const { return 0; }
  /// The cached text list, or a new one from markerFormat and markerOptions, which is kept
  /// until a value that changes the marker format is set. Never null.
  const ns::TextListPtr &textList() const;

  /// Lays the level onto run attributes: the paragraph style (a copy of the one in
  /// `attributes`, or of the default) gets the text lists of the list style up to this
  /// level (none without a list style), a head indent of first line indent + 36 per level,
  /// and left tabs for the marker (11 points into the level) and the text; tab stops up to
  /// the head indent go. VLListStyleAttributeName is set to the list style unless it is
  /// automatic (and removed when there is no list style).
  void applyToAttributes(ns::Dictionary &attributes) const;

  /// "\t<marker>\t" with `attributes`: the marker of the text list for item `number`,
  /// between the tabs that applyToAttributes lays out.
  ns::AttributedStringPtr preambleForItemNumber(int64_t number,
                                                ns::ConstDictionaryPtr attributes) const;

  /// "<VLListNumberLevelStyle: 0x...> level:2 marker:{decimal}".
  std::u16string description() const override;
  /// A new level of the same class with the level number only; the bullet kind adds its own
  /// values. A copied number level therefore has no format, prefix, suffix or start value.
  ns::ObjectPtr copy() const override;

  void encodeWithCoder(ns::KeyedArchiver &coder) const override;
  void initWithCoder(ns::KeyedUnarchiver &coder) override;

protected:
  /// "%@{%@}%@" of prefix, keyword and suffix, or "%@%@" without a keyword; nil is "".
  static std::u16string markerFormatWithKeyword(std::optional<std::u16string_view> keyword,
                                                const std::optional<std::u16string> &prefix,
                                                const std::optional<std::u16string> &suffix);
  /// A fresh level of the receiver's class, for copy().
  virtual VLListLevelStylePtr newInstance() const;
  /// Drops the cached text list; setters that change the marker format call it.
  void invalidateTextList() { _textList.reset(); }

  bool kvcValueForKey(std::u16string_view key, ns::Value &value) override;
  bool kvcSetValueForKey(std::u16string_view key, const ns::Value &value) override;

private:
  uint64_t _level = 0;
  std::weak_ptr<VLListStyle> _listStyle;
  VLListLevelPropertiesPtr _listLevelProperties;
  mutable ns::TextListPtr _textList;
};

/// A numbered level: a format value of the keyword table ("1", "I", "i", "A", "a", or
/// another string that has no keyword), prefix, suffix, and values for the host.
///
/// Keyed coding keys: "styleName", "numFormat", "numLetterSync", "numPrefix", "numSuffix",
/// "displayLevels", "startValue", "textProperties".
class VLListNumberLevelStyle : public VLListLevelStyle {
public:
  VLListNumberLevelStyle() = default;
  /// initWithTextList:: prefix and suffix of the list's format, and the format value of its
  /// keyword (nil for a keyword with no value, such as "octal").
  static VLListLevelStylePtr createWithTextList(const ns::TextListPtr &list);

  VL_OBJECT(VLListNumberLevelStyle)

  /// "lower-latin", "upper-latin", "lower-roman", "upper-roman", "decimal" for "a", "A",
  /// "i", "I", "1"; nil for anything else.
  static std::optional<std::u16string_view> keywordForNumFormat(std::u16string_view numFormat);

  /// Not read by the logic.
  const ns::DictionaryPtr &textProperties() const { return _textProperties; }
  void setTextProperties(ns::DictionaryPtr properties) { _textProperties = std::move(properties); }
  bool numLetterSync() const { return _numLetterSync; }
  void setNumLetterSync(bool sync) { _numLetterSync = sync; }
  const std::optional<std::u16string> &styleName() const { return _styleName; }
  void setStyleName(std::optional<std::u16string> name) { _styleName = std::move(name); }
  const std::optional<std::u16string> &numFormat() const { return _numFormat; }
  void setNumFormat(std::optional<std::u16string> format);
  const std::optional<std::u16string> &numPrefix() const { return _numPrefix; }
  void setNumPrefix(std::optional<std::u16string> prefix);
  const std::optional<std::u16string> &numSuffix() const { return _numSuffix; }
  void setNumSuffix(std::optional<std::u16string> suffix);
  uint64_t displayLevels() const { return _displayLevels; }
  void setDisplayLevels(uint64_t levels) { _displayLevels = levels; }
  uint64_t startValue() const { return _startValue; }
  void setStartValue(uint64_t value) { _startValue = value; }

  /// The keyword of numFormat between prefix and suffix: "({lower-alpha})" read from a file
  /// comes back as "({lower-latin})", and a format without keyword gives prefix and suffix.
  std::u16string markerFormat() const override;

  void encodeWithCoder(ns::KeyedArchiver &coder) const override;
  void initWithCoder(ns::KeyedUnarchiver &coder) override;

protected:
  VLListLevelStylePtr newInstance() const override;
  bool kvcValueForKey(std::u16string_view key, ns::Value &value) override;
  bool kvcSetValueForKey(std::u16string_view key, const ns::Value &value) override;

private:
  ns::DictionaryPtr _textProperties = ns::Dictionary::create();
  bool _numLetterSync = false;
  std::optional<std::u16string> _styleName;
  std::optional<std::u16string> _numFormat;
  std::optional<std::u16string> _numPrefix;
  std::optional<std::u16string> _numSuffix;
  uint64_t _displayLevels = 0;
  uint64_t _startValue = 0;
};

/// A bullet level: a bullet character (U+2022 in a new level), prefix, suffix and a
/// relative size for the host.
///
/// Keyed coding keys: "styleName", "bulletChar", "numPrefix", "numSuffix",
/// "bulletRelativeSize".
class VLListBulletLevelStyle : public VLListLevelStyle {
public:
  VLListBulletLevelStyle() = default;
  /// initWithTextList:: prefix and suffix of the list's format, and the bullet of its
  /// keyword (nil for a keyword with no value).
  static VLListLevelStylePtr createWithTextList(const ns::TextListPtr &list);

  VL_OBJECT(VLListBulletLevelStyle)

  /// The keyword of a bullet character of the keyword table ("box" included); "disc" for
  /// any other character.
  static std::u16string_view keywordForBulletChar(char16_t bullet);
  /// The bullet character of a keyword of the table; U+2022 for any other keyword.
  static std::u16string bulletCharForKeyword(std::u16string_view keyword);

  /// Not read by the logic.
  const ns::DictionaryPtr &textProperties() const { return _textProperties; }
  void setTextProperties(ns::DictionaryPtr properties) { _textProperties = std::move(properties); }
  const std::optional<std::u16string> &styleName() const { return _styleName; }
  void setStyleName(std::optional<std::u16string> name) { _styleName = std::move(name); }
  const std::optional<std::u16string> &bulletChar() const { return _bulletChar; }
  void setBulletChar(std::optional<std::u16string> bullet);
  const std::optional<std::u16string> &numPrefix() const { return _numPrefix; }
  void setNumPrefix(std::optional<std::u16string> prefix);
  const std::optional<std::u16string> &numSuffix() const { return _numSuffix; }
  void setNumSuffix(std::optional<std::u16string> suffix);
  double bulletRelativeSize() const { return _bulletRelativeSize; }
  void setBulletRelativeSize(double size) { _bulletRelativeSize = size; }

  /// The keyword of the first character of bulletChar between prefix and suffix; prefix
  /// and suffix alone when bulletChar is nil or empty.
  std::u16string markerFormat() const override;
  /// The base copy plus style name, bullet, prefix, suffix and relative size.
  ns::ObjectPtr copy() const override;

  void encodeWithCoder(ns::KeyedArchiver &coder) const override;
  void initWithCoder(ns::KeyedUnarchiver &coder) override;

protected:
  VLListLevelStylePtr newInstance() const override;
  bool kvcValueForKey(std::u16string_view key, ns::Value &value) override;
  bool kvcSetValueForKey(std::u16string_view key, const ns::Value &value) override;

private:
  ns::DictionaryPtr _textProperties = ns::Dictionary::create();
  std::optional<std::u16string> _styleName;
  std::optional<std::u16string> _bulletChar = std::u16string(1, u'\u2022');
  std::optional<std::u16string> _numPrefix;
  std::optional<std::u16string> _numSuffix;
  double _bulletRelativeSize = 0;
};

} // namespace vl
