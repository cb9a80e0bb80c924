// TextTab: one tab stop of a paragraph, a type (or alignment) and a location in points.
#pragma once

#include "ns/Dictionary.h"
#include "ns/KeyedArchiver.h"
#include "ns/Object.h"

#include <cstdint>
#include <memory>

namespace vl::ns {

class TextTab;
using TextTabPtr = std::shared_ptr<TextTab>;

/// Tab stop types, as the platform numbers them.
enum TextTabType : int64_t {
  LeftTabStopType = 0,
  RightTabStopType = 1,
  CenterTabStopType = 2,
  DecimalTabStopType = 3,
};

/// Paragraph and tab alignments, as the platform numbers them.
enum TextAlignment : int64_t {
  TextAlignmentLeft = 0,
  TextAlignmentRight = 1,
  TextAlignmentCenter = 2,
  TextAlignmentJustified = 3,
  TextAlignmentNatural = 4,
};

/// Option of createWithTextAlignment: a string of characters that end a column; a tab that
/// has it is a decimal tab.
inline constexpr std::u16string_view TabColumnTerminatorsAttributeName =
    u"NSTabColumnTerminatorsAttributeName";

/// An immutable tab stop, compared by value (type, location and options). Share it freely.
///
/// Keyed coding keys: "type" (integer), "location" (double), "options" (dictionary, only
/// when there are options).
class TextTab : public Object, public Coding {
public:
  /// A left tab at 0 (what the unarchiver starts from).
  TextTab() = default;
  TextTab(TextTabType type, double location);

  /// initWithType:location:. An unknown type is kept as given and treated as left by
  /// alignment().
  static TextTabPtr create(TextTabType type, double location);
  /// initWithTextAlignment:location:options:. Right and centre alignments give right and
  /// centre tabs; any other alignment a left tab, or a decimal tab when `options` holds
  /// TabColumnTerminatorsAttributeName. The options are kept (copied).
  static TextTabPtr createWithTextAlignment(TextAlignment alignment, double location,
                                            const DictionaryPtr &options = nullptr);

  VL_OBJECT(NSTextTab)

  double location() const { return location_; }
  TextTabType tabStopType() const { return type_; }
  /// Left for left tabs, right for right and decimal tabs, centre for centre tabs.
  TextAlignment alignment() const;
  /// The options given at creation, or null.
  const DictionaryPtr &options() const { return options_; }

  bool isEqual(const Object &other) const override;
  size_t hash() const override;
  /// "<NSTextTab: 0x...> 28L" style: the location followed by L, R, C or D.
  std::u16string description() const override;
  /// Tabs are immutable: a copy is the tab itself.
  ObjectPtr copy() const override;

  void encodeWithCoder(KeyedArchiver &coder) const override;
  void initWithCoder(KeyedUnarchiver &coder) override;

private:
  TextTabType type_ = LeftTabStopType;
  double location_ = 0;
  DictionaryPtr options_;
};

} // namespace vl::ns
