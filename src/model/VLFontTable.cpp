// VLFontTable: ordered lookups, copying with copied fonts, and coding.
#include "model/VLFontTable.h"

#include "ns/String.h"

namespace vl {

VL_REGISTER_CLASS(VLFontTable);

VLFontTable::VLFontTable() : _fonts(ns::Array::create()), _properties(ns::Dictionary::create()) {}

VLFontPtr VLFontTable::fontForName(std::u16string_view name) const {
  for (const ns::Value &value : *_fonts) {
    auto font = value.as<VLFont>();
    if (font && font->fontName() && *font->fontName() == name)
      return font;
  }
  return nullptr;
}

VLFontPtr VLFontTable::fontForNSFont(const ns::FontPtr &nsFont) {
  for (const ns::Value &value : *_fonts) {
    auto font = value.as<VLFont>();
    if (!font)
      continue;
    ns::FontPtr resolved = font->nsFont();
    if (resolved && nsFont && resolved->isEqual(*nsFont))
      return font;
  }
  return nullptr;
}

void VLFontTable::addFont(const VLFontPtr &font) {
  if (font)
    _fonts->addObject(ns::Value(font));
}

void VLFontTable::setFonts(ns::ArrayPtr fonts) {
  _fonts = fonts ? std::move(fonts) : ns::Array::create();
}

std::u16string VLFontTable::description() const {
  return ns::format(u"%@\n%@", Object::description(), _fonts);
}

ns::ObjectPtr VLFontTable::copy() const {
  auto table = std::make_shared<VLFontTable>();
  for (const ns::Value &value : *_fonts) {
    auto font = value.as<VLFont>();
    table->_fonts->addObject(font ? ns::Value(ns::copyOf(*font)) : value);
  }
  table->_properties = std::static_pointer_cast<ns::Dictionary>(_properties->copy());
  return table;
}

void VLFontTable::encodeWithCoder(ns::KeyedArchiver &coder) const {
  coder.encodeObject(ns::Value(_fonts), u"fonts");
  coder.encodeObject(ns::Value(_properties), u"properties");
}

void VLFontTable::initWithCoder(ns::KeyedUnarchiver &coder) {
  setFonts(coder.decodeObjectForKey(u"fonts").array());
  auto properties = coder.decodeObjectForKey(u"properties").dictionary();
  _properties = properties ? properties : ns::Dictionary::create();
}

} // namespace vl
