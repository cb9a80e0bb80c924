// The font manager: the catalogue index, interning, and face matching for conversions.
#include "ns/FontManager.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <mutex>
#include <unordered_map>

namespace vl::ns {

namespace {

std::u16string foldASCII(std::u16string_view text) {
  std::u16string out(text);
  for (char16_t &c : out)
    if (c >= u'A' && c <= u'Z')
      c = static_cast<char16_t>(c - u'A' + u'a');
  return out;
}

double normalSize(double size) {
  return std::isfinite(size) && size > 0 ? size : 12.0;
}

bool isBold(const FontFace &face) {
  return (face.traits & BoldFontMask) != 0;
}
bool isItalic(const FontFace &face) {
  return (face.traits & ItalicFontMask) != 0;
}

// Everything known about the catalogue, built once per catalogue and never changed.
struct Index {
  std::shared_ptr<FontCatalog> catalog;
  std::vector<FontFace> faces;
  std::unordered_map<std::u16string, size_t> byName;   // PostScript, then full, then family
  std::unordered_map<std::u16string, size_t> byFolded; // the same, ASCII case folded
  std::unordered_map<std::u16string, std::vector<size_t>> families;
  std::unordered_map<std::u16string, std::u16string> familyByFolded;
  std::vector<std::u16string> fontNames;
  std::vector<std::u16string> familyNames;

  explicit Index(std::shared_ptr<FontCatalog> source) : catalog(std::move(source)) {
    faces = catalog->faces();
    for (size_t i = 0; i < faces.size(); ++i) {
      families[faces[i].familyName].push_back(i);
      fontNames.push_back(faces[i].fontName);
    }
    // Earlier kinds of names win: a PostScript name is never shadowed by a full name.
    auto add = [&](const std::u16string &name, size_t i) {
      if (name.empty())
        return;
      byName.emplace(name, i);
      byFolded.emplace(foldASCII(name), i);
    };
    for (size_t i = 0; i < faces.size(); ++i)
      add(faces[i].fontName, i);
    for (size_t i = 0; i < faces.size(); ++i)
      add(faces[i].displayName, i);
    for (auto &[family, members] : families) {
      familyNames.push_back(family);
      familyByFolded.emplace(foldASCII(family), family);
      add(family, regularMember(members));
    }
    std::sort(fontNames.begin(), fontNames.end());
    std::sort(familyNames.begin(), familyNames.end());
  }

  // The member that is neither bold nor italic and closest to the regular weight; the first
  // member when every face has a trait.
  size_t regularMember(const std::vector<size_t> &members) const {
    size_t best = members.front();
    int bestScore = 1 << 20;
    for (size_t i : members) {
      const FontFace &face = faces[i];
      int score = (isBold(face) ? 1000 : 0) + (isItalic(face) ? 1000 : 0) +
                  std::popcount(face.traits & ~(BoldFontMask | ItalicFontMask)) * 100 +
                  std::abs(face.weight - 5);
      if (score < bestScore) {
        best = i;
        bestScore = score;
      }
    }
    return best;
  }

  const FontFace *find(std::u16string_view name) const {
    std::u16string key(name);
    if (auto it = byName.find(key); it != byName.end())
      return &faces[it->second];
    if (auto it = byFolded.find(foldASCII(key)); it != byFolded.end())
      return &faces[it->second];
    return nullptr;
  }

  // The members of the family named exactly, or else ignoring ASCII case; null when none.
  const std::vector<size_t> *members(std::u16string_view family) const {
    std::u16string key(family);
    if (auto it = families.find(key); it != families.end())
      return &it->second;
    if (auto it = familyByFolded.find(foldASCII(key)); it != familyByFolded.end())
      return &families.at(it->second);
    return nullptr;
  }

  // The member of `family` with exactly the bold and italic flags asked for that keeps most
  // of the other traits and comes closest to `weight`; null when the family has no such face.
  const FontFace *match(std::u16string_view family, bool bold, bool italic, uint32_t others,
                        int weight) const {
    const std::vector<size_t> *list = members(family);
    if (!list)
      return nullptr;
    const FontFace *best = nullptr;
    int bestScore = 0;
    for (size_t i : *list) {
      const FontFace &face = faces[i];
      if (isBold(face) != bold || isItalic(face) != italic)
        continue;
      uint32_t faceOthers = face.traits & ~(BoldFontMask | ItalicFontMask);
      int score = std::popcount(faceOthers ^ others) * 100 + std::abs(face.weight - weight);
      if (!best || score < bestScore) {
        best = &face;
        bestScore = score;
      }
    }
    return best;
  }
};

struct InternKey {
  std::u16string name;
  uint64_t sizeBits;
  bool operator==(const InternKey &) const = default;
};
struct InternKeyHash {
  size_t operator()(const InternKey &key) const {
    return std::hash<std::u16string>()(key.name) ^ (key.sizeBits * 0x9e3779b97f4a7c15ULL);
  }
};

} // namespace

struct FontManager::Impl {
  mutable std::mutex mutex;
  std::shared_ptr<const Index> index;
  std::unordered_map<InternKey, std::weak_ptr<Font>, InternKeyHash> interned;
  size_t purgeAt = 256;

  std::shared_ptr<const Index> currentIndex() const {
    std::lock_guard lock(mutex);
    return index;
  }
};

FontManager::FontManager() : impl_(std::make_unique<Impl>()) {
  impl_->index = std::make_shared<Index>(builtinFontCatalog());
}

FontManager::~FontManager() = default;

const FontManagerPtr &FontManager::sharedFontManager() {
  static const FontManagerPtr manager = std::make_shared<FontManager>();
  return manager;
}

void FontManager::setCatalog(std::shared_ptr<FontCatalog> catalog) {
  auto index = std::make_shared<Index>(catalog ? std::move(catalog) : builtinFontCatalog());
  Impl &impl = *sharedFontManager()->impl_;
  std::lock_guard lock(impl.mutex);
  impl.index = std::move(index);
  impl.interned.clear();
  impl.purgeAt = 256;
}

std::shared_ptr<FontCatalog> FontManager::catalog() const {
  return impl_->currentIndex()->catalog;
}

std::optional<FontFace> FontManager::faceNamed(std::u16string_view name) const {
  auto index = impl_->currentIndex();
  if (const FontFace *face = index->find(name))
    return *face;
  return std::nullopt;
}

FontPtr FontManager::fontWithFace(const FontFace &face, double size) {
  size = normalSize(size);
  InternKey key{face.fontName, std::bit_cast<uint64_t>(size)};
  std::lock_guard lock(impl_->mutex);
  auto &slot = impl_->interned[key];
  if (auto font = slot.lock())
    return font;
  auto font = std::make_shared<Font>(Font::Private{}, face, size);
  slot = font;
  // Drop the entries of fonts nobody holds any more, so odd sizes from files cannot make
  // the table grow without bound.
  if (impl_->interned.size() >= impl_->purgeAt) {
    std::erase_if(impl_->interned, [](const auto &entry) { return entry.second.expired(); });
    impl_->purgeAt = std::max<size_t>(256, impl_->interned.size() * 2);
  }
  return font;
}

uint32_t FontManager::traitsOfFont(const FontPtr &font) const {
  return font ? font->traits() : 0;
}

FontPtr FontManager::convertFont(const FontPtr &font, double size) {
  if (!font)
    return nullptr;
  return fontWithFace(font->face(), size);
}

FontPtr FontManager::convertTraits(const FontPtr &font, int bold, int italic) {
  if (!font)
    return nullptr;
  const FontFace &face = font->face();
  bool wantBold = bold < 0 ? isBold(face) : bold > 0;
  bool wantItalic = italic < 0 ? isItalic(face) : italic > 0;
  if (wantBold == isBold(face) && wantItalic == isItalic(face))
    return font;
  int weight = wantBold == isBold(face) ? face.weight : (wantBold ? 9 : 5);
  auto index = impl_->currentIndex();
  const FontFace *match = index->match(face.familyName, wantBold, wantItalic,
                                       face.traits & ~(BoldFontMask | ItalicFontMask), weight);
  if (!match)
    return font;
  return fontWithFace(*match, font->pointSize());
}

FontPtr FontManager::convertFontToHaveTrait(const FontPtr &font, uint32_t trait) {
  int bold = (trait & BoldFontMask) ? 1 : (trait & UnboldFontMask) ? 0 : -1;
  int italic = (trait & ItalicFontMask) ? 1 : (trait & UnitalicFontMask) ? 0 : -1;
  return convertTraits(font, bold, italic);
}

FontPtr FontManager::convertFontToNotHaveTrait(const FontPtr &font, uint32_t trait) {
  return convertTraits(font, (trait & BoldFontMask) ? 0 : -1, (trait & ItalicFontMask) ? 0 : -1);
}

FontPtr FontManager::convertFontToFamily(const FontPtr &font, std::u16string_view family) {
  if (!font)
    return nullptr;
  const FontFace &face = font->face();
  if (face.familyName == family)
    return font;
  auto index = impl_->currentIndex();
  uint32_t others = face.traits & ~(BoldFontMask | ItalicFontMask);
  // The same bold and italic flags if the family has them; else drop italic, then bold.
  const FontFace *match = nullptr;
  for (auto [bold, italic] :
       {std::pair{isBold(face), isItalic(face)}, std::pair{isBold(face), false},
        std::pair{false, isItalic(face)}, std::pair{false, false}}) {
    if ((match = index->match(family, bold, italic, others, face.weight)))
      break;
  }
  if (!match) {
    const std::vector<size_t> *members = index->members(family);
    if (!members)
      return font;
    match = &index->faces[index->regularMember(*members)];
  }
  return fontWithFace(*match, font->pointSize());
}

bool FontManager::fontNamedHasTraits(std::u16string_view name, uint32_t traits) const {
  auto face = faceNamed(name);
  if (!face)
    return false;
  if ((traits & UnboldFontMask) && isBold(*face))
    return false;
  if ((traits & UnitalicFontMask) && isItalic(*face))
    return false;
  uint32_t asked = traits & ~(UnboldFontMask | UnitalicFontMask);
  return (face->traits & asked) == asked;
}

std::vector<std::u16string> FontManager::availableFonts() const {
  return impl_->currentIndex()->fontNames;
}

std::vector<std::u16string> FontManager::availableFontFamilies() const {
  return impl_->currentIndex()->familyNames;
}

std::vector<FontFace> FontManager::availableMembersOfFontFamily(std::u16string_view family) const {
  auto index = impl_->currentIndex();
  std::vector<FontFace> out;
  if (const std::vector<size_t> *members = index->members(family))
    for (size_t i : *members)
      out.push_back(index->faces[i]);
  return out;
}

} // namespace vl::ns
