// Color: a colour in one of the platform's colour spaces (RGB and white, calibrated or
// device; named catalogue colours; patterns), with conversions between them.
#pragma once

#include "ns/KeyedArchiver.h"
#include "ns/Object.h"

#include <memory>
#include <string>
#include <string_view>

namespace vl::ns {

class Color;
class Image;
using ColorPtr = std::shared_ptr<Color>;

// Colour space names, as the platform spells them.
inline constexpr std::u16string_view CalibratedRGBColorSpace = u"NSCalibratedRGBColorSpace";
inline constexpr std::u16string_view DeviceRGBColorSpace = u"NSDeviceRGBColorSpace";
inline constexpr std::u16string_view CalibratedWhiteColorSpace = u"NSCalibratedWhiteColorSpace";
inline constexpr std::u16string_view DeviceWhiteColorSpace = u"NSDeviceWhiteColorSpace";
inline constexpr std::u16string_view NamedColorSpace = u"NSNamedColorSpace";
inline constexpr std::u16string_view PatternColorSpace = u"NSPatternColorSpace";

/// The catalogue of the named system colours.
inline constexpr std::u16string_view SystemColorList = u"System";

/// An immutable colour. Components are clamped to 0...1 (NaN becomes 0).
///
/// Equality includes the space: device red is not calibrated red, and textColor is not
/// blackColor though both resolve to black. Named colours compare by catalogue and name,
/// patterns by the identity of their image.
///
/// Conversions (colorUsingColorSpaceName): calibrated and device spaces take each other's
/// values unchanged; white to RGB repeats the white; RGB to white takes the luma
/// 0.299 R + 0.587 G + 0.114 B; a named colour converts through its fixed RGB value; nothing
/// converts to the named or pattern spaces, and a pattern converts to nothing.
///
/// The component getters answer the component of the colour's conversion to the space they
/// belong to (redComponent of a grey is its white), and 0 when there is none (a pattern).
///
/// The shared colours: blackColor, whiteColor, grayColor (0.5), lightGrayColor (2/3),
/// darkGrayColor (1/3) and clearColor (white 0, alpha 0) are calibrated white; redColor,
/// greenColor, blueColor, cyanColor, yellowColor, magentaColor, orangeColor (1, 0.5, 0),
/// purpleColor (0.5, 0, 0.5) and brownColor (0.6, 0.4, 0.2) are calibrated RGB; textColor,
/// textBackgroundColor and the other system colours are named colours of the "System"
/// catalogue.
///
/// Keyed coding keys: "space" (the space name); "red", "green", "blue" or "white", and
/// "alpha" (doubles); "catalog" and "name" (strings) for named colours; "pattern" (the image
/// bytes) for patterns.
class Color : public Object, public Coding {
public:
  /// Calibrated black (what the unarchiver starts from).
  Color();

  static ColorPtr colorWithCalibratedRed(double red, double green, double blue, double alpha);
  static ColorPtr colorWithDeviceRed(double red, double green, double blue, double alpha);
  static ColorPtr colorWithCalibratedWhite(double white, double alpha);
  static ColorPtr colorWithDeviceWhite(double white, double alpha);
  /// A named colour, or nil for a catalogue or name the system does not have.
  static ColorPtr colorWithCatalogName(std::u16string_view listName, std::u16string_view colorName);
  /// A colour that paints with `image`; nil for a nil image.
  static ColorPtr colorWithPatternImage(std::shared_ptr<Image> image);

  static const ColorPtr &blackColor();
  static const ColorPtr &whiteColor();
  static const ColorPtr &grayColor();
  static const ColorPtr &lightGrayColor();
  static const ColorPtr &darkGrayColor();
  static const ColorPtr &clearColor();
  static const ColorPtr &redColor();
  static const ColorPtr &greenColor();
  static const ColorPtr &blueColor();
  static const ColorPtr &cyanColor();
  static const ColorPtr &yellowColor();
  static const ColorPtr &magentaColor();
  static const ColorPtr &orangeColor();
  static const ColorPtr &purpleColor();
  static const ColorPtr &brownColor();
  // System colours: named colours of the "System" catalogue.
  static const ColorPtr &textColor();
  static const ColorPtr &textBackgroundColor();
  static const ColorPtr &selectedTextColor();
  static const ColorPtr &selectedTextBackgroundColor();
  static const ColorPtr &controlColor();
  static const ColorPtr &controlTextColor();
  static const ColorPtr &controlBackgroundColor();
  static const ColorPtr &selectedControlColor();
  static const ColorPtr &alternateSelectedControlColor();
  static const ColorPtr &gridColor();
  static const ColorPtr &windowBackgroundColor();
  static const ColorPtr &keyboardFocusIndicatorColor();

  VL_OBJECT(NSColor)

  std::u16string_view colorSpaceName() const;
  double redComponent() const;
  double greenComponent() const;
  double blueComponent() const;
  double whiteComponent() const;
  double alphaComponent() const;
  /// The catalogue and colour names of a named colour; empty for others.
  const std::u16string &catalogNameComponent() const { return catalog_; }
  const std::u16string &colorNameComponent() const { return name_; }
  /// The image of a pattern colour; null for others.
  const std::shared_ptr<Image> &patternImage() const { return pattern_; }

  /// The colour in the space `name` names (this colour when it is in that space already),
  /// or nil when there is no conversion or the name is not a space.
  ColorPtr colorUsingColorSpaceName(std::u16string_view name) const;

  bool isEqual(const Object &other) const override;
  size_t hash() const override;
  /// "NSCalibratedRGBColorSpace 1 0 0 1", "NSNamedColorSpace System textColor".
  std::u16string description() const override;
  /// Colours are immutable: a copy is the colour itself.
  ObjectPtr copy() const override;

  void encodeWithCoder(KeyedArchiver &coder) const override;
  void initWithCoder(KeyedUnarchiver &coder) override;

private:
  enum class Space : uint8_t {
    CalibratedRGB,
    DeviceRGB,
    CalibratedWhite,
    DeviceWhite,
    Named,
    Pattern
  };
  Color(Space space, double c0, double c1, double c2, double alpha);
  static ColorPtr make(Space space, double c0, double c1, double c2, double alpha);
  struct RGBA {
    double r, g, b, a;
  };
  bool rgba(RGBA &out) const;
  ColorPtr shared() const;

  Space space_ = Space::CalibratedWhite;
  // RGB: red, green, blue; white: white in [0]; named: the resolved RGB.
  double components_[3] = {0, 0, 0};
  double alpha_ = 1;
  std::u16string catalog_;
  std::u16string name_;
  std::shared_ptr<Image> pattern_;
};

} // namespace vl::ns
