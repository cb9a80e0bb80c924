// VLFont: late resolution to a platform font, copying and coding.
#include "model/VLFont.h"

#include "ns/Assert.h"
#include "ns/FontManager.h"
#include "ns/String.h"

namespace vl {

VL_REGISTER_CLASS(VLFont);

namespace {

// Only a working size: the style that uses the font sets the real one.
constexpr double resolutionSize = 12.0;

ns::Value valueOf(const std::optional<std::u16string> &string) {
  return string ? ns::Value(*string) : ns::Value();
}

std::optional<std::u16string> stringOf(const ns::Value &value) {
  if (!value.isString())
    return std::nullopt;
  return value.string();
}

} // namespace

VLFontPtr VLFont::font() {
  return std::make_shared<VLFont>();
}

VLFontPtr VLFont::fontWithNSFont(const ns::FontPtr &nsFont) {
  VL_ASSERT_PARAM(nsFont);
  auto font = VLFont::font();
  font->setFontName(nsFont->fontName());
  font->setNSFont(nsFont);
  return font;
}

ns::FontPtr VLFont::nsFont() {
  if (_nsFont)
    return _nsFont;
  ns::FontPtr font;
  if (_fontName)
    font = ns::Font::fontWithName(*_fontName, resolutionSize);
  if (!font) {
    auto &manager = *ns::FontManager::sharedFontManager();
    font = ns::Font::userFontOfSize(resolutionSize);
    if (_fontFamilyName)
      font = manager.convertFontToFamily(font, *_fontFamilyName);
    // Whether the font already has the trait is asked of the font being resolved, which has
    // no name yet, so the answer is always no and the conversion always runs; a conversion
    // to a trait the font has changes nothing.
    if (_hasBoldFontWeight)
      font = manager.convertFontToHaveTrait(font, ns::BoldFontMask);
    if (_hasItalicFontStyle)
      font = manager.convertFontToHaveTrait(font, ns::ItalicFontMask);
  }
  if (font)
    setNSFont(font);
  return _nsFont;
}

void VLFont::setNSFont(ns::FontPtr font) {
  _nsFont = std::move(font);
  if (!_nsFont)
    return;
  _fontFamilyName = _nsFont->familyName();
  uint32_t traits = ns::FontManager::sharedFontManager()->traitsOfFont(_nsFont);
  // Flags are only ever raised here: a file that asked for bold keeps asking for it even
  // when the font found for it is plain.
  if (traits & ns::BoldFontMask)
    _hasBoldFontWeight = true;
  if (traits & ns::ItalicFontMask)
    _hasItalicFontStyle = true;
}

std::u16string VLFont::description() const {
  return ns::format(u"%@ %@ (%ld)", Object::description(), valueOf(_fontName), _fontNumber);
}

ns::ObjectPtr VLFont::copy() const {
  auto font = VLFont::font();
  font->setFontName(_fontName);
  font->setFontFamilyName(_fontFamilyName);
  font->setGenericFontFamilyName(_genericFontFamilyName);
  font->setHasBoldFontWeight(_hasBoldFontWeight);
  font->setHasItalicFontStyle(_hasItalicFontStyle);
  font->setNSFont(_nsFont);
  font->setCharset(_charset);
  font->setFontNumber(_fontNumber);
  return font;
}

void VLFont::encodeWithCoder(ns::KeyedArchiver &coder) const {
  coder.encodeObject(valueOf(_fontName), u"_fontName");
  coder.encodeObject(valueOf(_fontFamilyName), u"_fontFamilyName");
  coder.encodeObject(valueOf(_genericFontFamilyName), u"_genericFontFamilyName");
  coder.encodeBool(_hasBoldFontWeight, u"_hasBoldFontWeight");
  coder.encodeBool(_hasItalicFontStyle, u"_hasItalicFontStyle");
  coder.encodeObject(ns::Value(_nsFont), u"_nsFont");
  coder.encodeInteger(_charset, u"_charset");
  coder.encodeInteger(_fontNumber, u"_fontNumber");
}

void VLFont::initWithCoder(ns::KeyedUnarchiver &coder) {
  _fontName = stringOf(coder.decodeObjectForKey(u"_fontName"));
  _fontFamilyName = stringOf(coder.decodeObjectForKey(u"_fontFamilyName"));
  _genericFontFamilyName = stringOf(coder.decodeObjectForKey(u"_genericFontFamilyName"));
  _hasBoldFontWeight = coder.decodeBoolForKey(u"_hasBoldFontWeight");
  _hasItalicFontStyle = coder.decodeBoolForKey(u"_hasItalicFontStyle");
  _nsFont = coder.decodeObjectForKey(u"_nsFont").as<ns::Font>();
  _charset = coder.decodeIntegerForKey(u"_charset");
  _fontNumber = coder.decodeIntegerForKey(u"_fontNumber");
}

} // namespace vl
