// Fonts: lookup by name through the font manager, the user and system fonts, equality and
// coding.
#include "ns/Font.h"

#include "ns/FontManager.h"
#include "ns/String.h"

#include <bit>
#include <cmath>
#include <functional>
#include <mutex>

namespace vl::ns {

namespace {

std::mutex userFontMutex;
std::u16string &userFontNameStorage() {
  static std::u16string name = u"Helvetica";
  return name;
}

size_t hashOf(const std::u16string &name, double size) {
  uint64_t bits = std::bit_cast<uint64_t>(size);
  return std::hash<std::u16string>()(name) ^ (bits * 0x9e3779b97f4a7c15ULL);
}

} // namespace

const bool Font::registered_ = [] {
  registerClass("NSFont", [] { return std::make_shared<Font>(Private{}, FontFace{}, 12.0); });
  return true;
}();

Font::Font(Private, FontFace face, double size)
    : face_(std::move(face)), size_(size), hash_(hashOf(face_.fontName, size)) {}

FontPtr Font::fontWithName(std::u16string_view name, double size) {
  const auto &manager = FontManager::sharedFontManager();
  auto face = manager->faceNamed(name);
  if (!face)
    return nullptr;
  return manager->fontWithFace(*face, size);
}

void Font::setUserFontName(std::u16string_view name) {
  std::lock_guard lock(userFontMutex);
  userFontNameStorage() = name.empty() ? u"Helvetica" : std::u16string(name);
}

std::u16string Font::userFontName() {
  std::lock_guard lock(userFontMutex);
  return userFontNameStorage();
}

FontPtr Font::userFontOfSize(double size) {
  if (auto font = fontWithName(userFontName(), size))
    return font;
  if (auto font = fontWithName(u"Helvetica", size))
    return font;
  const auto &manager = FontManager::sharedFontManager();
  auto names = manager->availableFonts();
  return names.empty() ? nullptr : fontWithName(names.front(), size);
}

FontPtr Font::systemFontOfSize(double size) {
  if (auto font = fontWithName(u"HelveticaNeue", size))
    return font;
  return userFontOfSize(size);
}

FontPtr Font::boldSystemFontOfSize(double size) {
  if (auto font = fontWithName(u"HelveticaNeue-Bold", size))
    return font;
  return FontManager::sharedFontManager()->convertFontToHaveTrait(userFontOfSize(size),
                                                                  BoldFontMask);
}

bool Font::isEqual(const Object &other) const {
  if (this == &other)
    return true;
  auto *font = dynamic_cast<const Font *>(&other);
  return font && font->hash_ == hash_ && font->size_ == size_ &&
         font->face_.fontName == face_.fontName;
}

std::u16string Font::description() const {
  return u"\"" + face_.fontName + u" " + stringFromDouble(size_) + u" pt.\"";
}

ObjectPtr Font::copy() const {
  if (auto self = weak_from_this().lock())
    return std::const_pointer_cast<Object>(self);
  return std::make_shared<Font>(*this);
}

void Font::encodeWithCoder(KeyedArchiver &coder) const {
  coder.encodeObject(Value(face_.fontName), u"name");
  coder.encodeDouble(size_, u"size");
}

void Font::initWithCoder(KeyedUnarchiver &coder) {
  std::u16string name = coder.decodeObjectForKey(u"name").string();
  double size = coder.decodeDoubleForKey(u"size");
  size_ = std::isfinite(size) && size > 0 ? size : 12.0;
  if (auto face = FontManager::sharedFontManager()->faceNamed(name)) {
    face_ = *face;
  } else {
    face_ = FontFace{};
    face_.fontName = face_.displayName = face_.familyName = name;
  }
  hash_ = hashOf(face_.fontName, size_);
}

} // namespace vl::ns
