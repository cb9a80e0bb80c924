// Colours: constructors, the system colour catalogue, conversions between spaces, equality
// and coding.
#include "ns/Color.h"

#include "ns/Image.h"
#include "ns/String.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace vl::ns {

VL_REGISTER_CLASS(Color);

namespace {

double clampUnit(double value) {
  if (std::isnan(value))
    return 0;
  return std::clamp(value, 0.0, 1.0);
}

double luma(double r, double g, double b) {
  return clampUnit(0.299 * r + 0.587 * g + 0.114 * b);
}

// The system colours and the RGB values they stand for when converted.
struct SystemColor {
  std::u16string_view name;
  uint8_t r, g, b;
};
constexpr SystemColor systemColors[] = {
    {u"alternateSelectedControlColor", 0x1F, 0x5F, 0xD9},
    {u"alternateSelectedControlTextColor", 0xFF, 0xFF, 0xFF},
    {u"controlBackgroundColor", 0xFF, 0xFF, 0xFF},
    {u"controlColor", 0xEC, 0xEC, 0xEC},
    {u"controlTextColor", 0x00, 0x00, 0x00},
    {u"disabledControlTextColor", 0x80, 0x80, 0x80},
    {u"gridColor", 0xCC, 0xCC, 0xCC},
    {u"headerColor", 0xFF, 0xFF, 0xFF},
    {u"headerTextColor", 0x00, 0x00, 0x00},
    {u"highlightColor", 0xFF, 0xFF, 0xFF},
    {u"keyboardFocusIndicatorColor", 0x3B, 0x99, 0xFC},
    {u"knobColor", 0x8F, 0x8F, 0x8F},
    {u"labelColor", 0x00, 0x00, 0x00},
    {u"linkColor", 0x00, 0x68, 0xDA},
    {u"scrollBarColor", 0xC4, 0xC4, 0xC4},
    {u"secondaryLabelColor", 0x80, 0x80, 0x80},
    {u"secondarySelectedControlColor", 0xDC, 0xDC, 0xDC},
    {u"selectedControlColor", 0xB3, 0xD7, 0xFF},
    {u"selectedControlTextColor", 0x00, 0x00, 0x00},
    {u"selectedTextBackgroundColor", 0xB3, 0xD7, 0xFF},
    {u"selectedTextColor", 0x00, 0x00, 0x00},
    {u"shadowColor", 0x00, 0x00, 0x00},
    {u"textBackgroundColor", 0xFF, 0xFF, 0xFF},
    {u"textColor", 0x00, 0x00, 0x00},
    {u"windowBackgroundColor", 0xEC, 0xEC, 0xEC},
    {u"windowFrameColor", 0xAA, 0xAA, 0xAA},
};

const SystemColor *findSystemColor(std::u16string_view name) {
  for (const SystemColor &color : systemColors)
    if (color.name == name)
      return &color;
  return nullptr;
}

ColorPtr systemColor(std::u16string_view name) {
  return Color::colorWithCatalogName(SystemColorList, name);
}

constexpr std::u16string_view spaceNames[] = {CalibratedRGBColorSpace,   DeviceRGBColorSpace,
                                              CalibratedWhiteColorSpace, DeviceWhiteColorSpace,
                                              NamedColorSpace,           PatternColorSpace};

size_t bitsOf(double value) {
  return static_cast<size_t>(value == 0 ? 0 : std::bit_cast<uint64_t>(value));
}

} // namespace

Color::Color() = default;

Color::Color(Space space, double c0, double c1, double c2, double alpha)
    : space_(space), components_{clampUnit(c0), clampUnit(c1), clampUnit(c2)},
      alpha_(clampUnit(alpha)) {}

ColorPtr Color::make(Space space, double c0, double c1, double c2, double alpha) {
  return ColorPtr(new Color(space, c0, c1, c2, alpha));
}

ColorPtr Color::colorWithCalibratedRed(double red, double green, double blue, double alpha) {
  return make(Space::CalibratedRGB, red, green, blue, alpha);
}

ColorPtr Color::colorWithDeviceRed(double red, double green, double blue, double alpha) {
  return make(Space::DeviceRGB, red, green, blue, alpha);
}

ColorPtr Color::colorWithCalibratedWhite(double white, double alpha) {
  return make(Space::CalibratedWhite, white, 0, 0, alpha);
}

ColorPtr Color::colorWithDeviceWhite(double white, double alpha) {
  return make(Space::DeviceWhite, white, 0, 0, alpha);
}

ColorPtr Color::colorWithCatalogName(std::u16string_view listName, std::u16string_view colorName) {
  const SystemColor *system = listName == SystemColorList ? findSystemColor(colorName) : nullptr;
  if (!system)
    return nullptr;
  auto color = make(Space::Named, system->r / 255.0, system->g / 255.0, system->b / 255.0, 1.0);
  color->catalog_ = listName;
  color->name_ = colorName;
  return color;
}

ColorPtr Color::colorWithPatternImage(std::shared_ptr<Image> image) {
  if (!image)
    return nullptr;
  auto color = make(Space::Pattern, 0, 0, 0, 1.0);
  color->pattern_ = std::move(image);
  return color;
}

#define VL_SHARED_COLOR(Name, expression)                                                          \
  const ColorPtr &Color::Name() {                                                                  \
    static const ColorPtr color = expression;                                                      \
    return color;                                                                                  \
  }

VL_SHARED_COLOR(blackColor, colorWithCalibratedWhite(0, 1))
VL_SHARED_COLOR(whiteColor, colorWithCalibratedWhite(1, 1))
VL_SHARED_COLOR(grayColor, colorWithCalibratedWhite(0.5, 1))
VL_SHARED_COLOR(lightGrayColor, colorWithCalibratedWhite(2.0 / 3.0, 1))
VL_SHARED_COLOR(darkGrayColor, colorWithCalibratedWhite(1.0 / 3.0, 1))
VL_SHARED_COLOR(clearColor, colorWithCalibratedWhite(0, 0))
VL_SHARED_COLOR(redColor, colorWithCalibratedRed(1, 0, 0, 1))
VL_SHARED_COLOR(greenColor, colorWithCalibratedRed(0, 1, 0, 1))
VL_SHARED_COLOR(blueColor, colorWithCalibratedRed(0, 0, 1, 1))
VL_SHARED_COLOR(cyanColor, colorWithCalibratedRed(0, 1, 1, 1))
VL_SHARED_COLOR(yellowColor, colorWithCalibratedRed(1, 1, 0, 1))
VL_SHARED_COLOR(magentaColor, colorWithCalibratedRed(1, 0, 1, 1))
VL_SHARED_COLOR(orangeColor, colorWithCalibratedRed(1, 0.5, 0, 1))
VL_SHARED_COLOR(purpleColor, colorWithCalibratedRed(0.5, 0, 0.5, 1))
VL_SHARED_COLOR(brownColor, colorWithCalibratedRed(0.6, 0.4, 0.2, 1))
VL_SHARED_COLOR(textColor, systemColor(u"textColor"))
VL_SHARED_COLOR(textBackgroundColor, systemColor(u"textBackgroundColor"))
VL_SHARED_COLOR(selectedTextColor, systemColor(u"selectedTextColor"))
VL_SHARED_COLOR(selectedTextBackgroundColor, systemColor(u"selectedTextBackgroundColor"))
VL_SHARED_COLOR(controlColor, systemColor(u"controlColor"))
VL_SHARED_COLOR(controlTextColor, systemColor(u"controlTextColor"))
VL_SHARED_COLOR(controlBackgroundColor, systemColor(u"controlBackgroundColor"))
VL_SHARED_COLOR(selectedControlColor, systemColor(u"selectedControlColor"))
VL_SHARED_COLOR(alternateSelectedControlColor, systemColor(u"alternateSelectedControlColor"))
VL_SHARED_COLOR(gridColor, systemColor(u"gridColor"))
VL_SHARED_COLOR(windowBackgroundColor, systemColor(u"windowBackgroundColor"))
VL_SHARED_COLOR(keyboardFocusIndicatorColor, systemColor(u"keyboardFocusIndicatorColor"))

#undef VL_SHARED_COLOR

std::u16string_view Color::colorSpaceName() const {
  return spaceNames[static_cast<size_t>(space_)];
}

bool Color::rgba(RGBA &out) const {
  switch (space_) {
  case Space::CalibratedRGB:
  case Space::DeviceRGB:
  case Space::Named:
    out = {components_[0], components_[1], components_[2], alpha_};
    return true;
  case Space::CalibratedWhite:
  case Space::DeviceWhite:
    out = {components_[0], components_[0], components_[0], alpha_};
    return true;
  case Space::Pattern:
    break;
  }
  return false;
}

double Color::redComponent() const {
  RGBA c;
  return rgba(c) ? c.r : 0;
}

double Color::greenComponent() const {
  RGBA c;
  return rgba(c) ? c.g : 0;
}

double Color::blueComponent() const {
  RGBA c;
  return rgba(c) ? c.b : 0;
}

double Color::whiteComponent() const {
  if (space_ == Space::CalibratedWhite || space_ == Space::DeviceWhite)
    return components_[0];
  RGBA c;
  return rgba(c) ? luma(c.r, c.g, c.b) : 0;
}

double Color::alphaComponent() const {
  return alpha_;
}

ColorPtr Color::shared() const {
  if (auto self = weak_from_this().lock())
    return std::const_pointer_cast<Color>(std::static_pointer_cast<const Color>(self));
  return std::make_shared<Color>(*this);
}

ColorPtr Color::colorUsingColorSpaceName(std::u16string_view name) const {
  if (name == colorSpaceName())
    return shared();
  RGBA c;
  if (!rgba(c))
    return nullptr;
  if (name == CalibratedRGBColorSpace)
    return colorWithCalibratedRed(c.r, c.g, c.b, c.a);
  if (name == DeviceRGBColorSpace)
    return colorWithDeviceRed(c.r, c.g, c.b, c.a);
  if (name == CalibratedWhiteColorSpace)
    return colorWithCalibratedWhite(whiteComponent(), c.a);
  if (name == DeviceWhiteColorSpace)
    return colorWithDeviceWhite(whiteComponent(), c.a);
  return nullptr;
}

bool Color::isEqual(const Object &other) const {
  if (this == &other)
    return true;
  auto *color = dynamic_cast<const Color *>(&other);
  if (!color || color->space_ != space_)
    return false;
  switch (space_) {
  case Space::Named:
    return color->catalog_ == catalog_ && color->name_ == name_;
  case Space::Pattern:
    return color->pattern_ == pattern_;
  default:
    return std::equal(std::begin(components_), std::end(components_),
                      std::begin(color->components_)) &&
           color->alpha_ == alpha_;
  }
}

size_t Color::hash() const {
  size_t h = static_cast<size_t>(space_) * 0x9e3779b97f4a7c15ULL;
  switch (space_) {
  case Space::Named:
    return h ^ std::hash<std::u16string>()(name_);
  case Space::Pattern:
    return h ^ std::hash<const void *>()(pattern_.get());
  default:
    for (double c : components_)
      h = (h * 31) ^ bitsOf(c);
    return (h * 31) ^ bitsOf(alpha_);
  }
}

std::u16string Color::description() const {
  std::u16string out(colorSpaceName());
  switch (space_) {
  case Space::Named:
    return out + u" " + catalog_ + u" " + name_;
  case Space::Pattern:
    return out;
  case Space::CalibratedWhite:
  case Space::DeviceWhite:
    return out + u" " + stringFromDouble(components_[0]) + u" " + stringFromDouble(alpha_);
  default:
    for (double c : components_)
      out += u" " + stringFromDouble(c);
    return out + u" " + stringFromDouble(alpha_);
  }
}

ObjectPtr Color::copy() const {
  return shared();
}

void Color::encodeWithCoder(KeyedArchiver &coder) const {
  coder.encodeObject(Value(colorSpaceName()), u"space");
  switch (space_) {
  case Space::Named:
    coder.encodeObject(Value(catalog_), u"catalog");
    coder.encodeObject(Value(name_), u"name");
    break;
  case Space::Pattern:
    coder.encodeObject(Value(pattern_->representationUsingType(ImageFileTypePNG)), u"pattern");
    break;
  case Space::CalibratedWhite:
  case Space::DeviceWhite:
    coder.encodeDouble(components_[0], u"white");
    coder.encodeDouble(alpha_, u"alpha");
    break;
  default:
    coder.encodeDouble(components_[0], u"red");
    coder.encodeDouble(components_[1], u"green");
    coder.encodeDouble(components_[2], u"blue");
    coder.encodeDouble(alpha_, u"alpha");
    break;
  }
}

void Color::initWithCoder(KeyedUnarchiver &coder) {
  std::u16string space = coder.decodeObjectForKey(u"space").string();
  double alpha = coder.containsValueForKey(u"alpha") ? coder.decodeDoubleForKey(u"alpha") : 1.0;
  ColorPtr decoded;
  if (space == CalibratedRGBColorSpace || space == DeviceRGBColorSpace) {
    decoded = make(space == DeviceRGBColorSpace ? Space::DeviceRGB : Space::CalibratedRGB,
                   coder.decodeDoubleForKey(u"red"), coder.decodeDoubleForKey(u"green"),
                   coder.decodeDoubleForKey(u"blue"), alpha);
  } else if (space == CalibratedWhiteColorSpace || space == DeviceWhiteColorSpace) {
    decoded = make(space == DeviceWhiteColorSpace ? Space::DeviceWhite : Space::CalibratedWhite,
                   coder.decodeDoubleForKey(u"white"), 0, 0, alpha);
  } else if (space == NamedColorSpace) {
    decoded = colorWithCatalogName(coder.decodeObjectForKey(u"catalog").string(),
                                   coder.decodeObjectForKey(u"name").string());
  } else if (space == PatternColorSpace) {
    decoded =
        colorWithPatternImage(Image::createWithData(coder.decodeObjectForKey(u"pattern").data()));
  }
  // Anything unreadable decodes as black rather than as nothing.
  if (!decoded)
    decoded = blackColor();
  space_ = decoded->space_;
  std::copy(std::begin(decoded->components_), std::end(decoded->components_), components_);
  alpha_ = decoded->alpha_;
  catalog_ = decoded->catalog_;
  name_ = decoded->name_;
  pattern_ = decoded->pattern_;
}

} // namespace vl::ns
