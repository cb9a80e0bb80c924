// A font catalogue over fontconfig's listing of the installed fonts (built only when the
// fontconfig development files were found).
#include "ns/FontCatalog.h"

#ifdef VLWP_HAVE_FONTCONFIG

#include "ns/String.h"

#include <algorithm>
#include <fontconfig/fontconfig.h>
#include <unordered_set>

namespace vl::ns {

namespace {

std::u16string stringOf(FcPattern *pattern, const char *object) {
  FcChar8 *value = nullptr;
  if (FcPatternGetString(pattern, object, 0, &value) != FcResultMatch || !value)
    return {};
  return fromUTF8(reinterpret_cast<const char *>(value));
}

int intOf(FcPattern *pattern, const char *object, int fallback) {
  int value = 0;
  return FcPatternGetInteger(pattern, object, 0, &value) == FcResultMatch ? value : fallback;
}

// fontconfig's weight scale onto the platform's 0 to 15.
int platformWeight(int weight) {
  static constexpr struct {
    int fc;
    int platform;
  } steps[] = {{FC_WEIGHT_EXTRALIGHT, 2}, {FC_WEIGHT_LIGHT, 3},      {FC_WEIGHT_BOOK, 4},
               {FC_WEIGHT_REGULAR, 5},    {FC_WEIGHT_MEDIUM, 6},     {FC_WEIGHT_DEMIBOLD, 8},
               {FC_WEIGHT_BOLD, 9},       {FC_WEIGHT_EXTRABOLD, 10}, {FC_WEIGHT_BLACK, 11}};
  int out = 1;
  for (const auto &step : steps)
    if (weight >= step.fc)
      out = step.platform;
  return out;
}

std::u16string withoutBlanks(std::u16string text) {
  std::erase(text, u' ');
  return text;
}

class FontconfigCatalog : public FontCatalog {
public:
  explicit FontconfigCatalog(std::vector<FontFace> faces) : faces_(std::move(faces)) {}
  std::vector<FontFace> faces() const override { return faces_; }

private:
  std::vector<FontFace> faces_;
};

} // namespace

std::shared_ptr<FontCatalog> fontconfigFontCatalog() {
  FcConfig *config = FcInitLoadConfigAndFonts();
  if (!config)
    return nullptr;
  FcPattern *pattern = FcPatternCreate();
  FcObjectSet *objects =
      FcObjectSetBuild(FC_FAMILY, FC_STYLE, FC_FULLNAME, FC_POSTSCRIPT_NAME, FC_WEIGHT, FC_SLANT,
                       FC_WIDTH, FC_SPACING, static_cast<char *>(nullptr));
  FcFontSet *set = pattern && objects ? FcFontList(config, pattern, objects) : nullptr;
  std::vector<FontFace> faces;
  if (set) {
    for (int i = 0; i < set->nfont; ++i) {
      FcPattern *font = set->fonts[i];
      FontFace face;
      face.familyName = stringOf(font, FC_FAMILY);
      if (face.familyName.empty())
        continue;
      face.faceName = stringOf(font, FC_STYLE);
      if (face.faceName.empty())
        face.faceName = u"Regular";
      face.displayName = stringOf(font, FC_FULLNAME);
      if (face.displayName.empty())
        face.displayName = face.familyName + u" " + face.faceName;
      face.fontName = stringOf(font, FC_POSTSCRIPT_NAME);
      if (face.fontName.empty())
        face.fontName = withoutBlanks(face.familyName) + u"-" + withoutBlanks(face.faceName);
      int weight = intOf(font, FC_WEIGHT, FC_WEIGHT_REGULAR);
      face.weight = platformWeight(weight);
      if (weight >= FC_WEIGHT_DEMIBOLD)
        face.traits |= BoldFontMask;
      if (intOf(font, FC_SLANT, FC_SLANT_ROMAN) != FC_SLANT_ROMAN)
        face.traits |= ItalicFontMask;
      int width = intOf(font, FC_WIDTH, FC_WIDTH_NORMAL);
      if (width < FC_WIDTH_NORMAL)
        face.traits |= CondensedFontMask;
      else if (width > FC_WIDTH_NORMAL)
        face.traits |= ExpandedFontMask;
      int spacing = intOf(font, FC_SPACING, FC_PROPORTIONAL);
      if (spacing == FC_MONO || spacing == FC_CHARCELL)
        face.traits |= FixedPitchFontMask;
      faces.push_back(std::move(face));
    }
    FcFontSetDestroy(set);
  }
  if (objects)
    FcObjectSetDestroy(objects);
  if (pattern)
    FcPatternDestroy(pattern);
  FcConfigDestroy(config);

  // fontconfig lists in no fixed order and may list one face from several files.
  std::stable_sort(faces.begin(), faces.end(), [](const FontFace &a, const FontFace &b) {
    if (a.familyName != b.familyName)
      return a.familyName < b.familyName;
    if (a.weight != b.weight)
      return a.weight < b.weight;
    return a.fontName < b.fontName;
  });
  std::unordered_set<std::u16string> seen;
  std::erase_if(faces, [&](const FontFace &face) { return !seen.insert(face.fontName).second; });
  return std::make_shared<FontconfigCatalog>(std::move(faces));
}

} // namespace vl::ns

#else

namespace vl::ns {

std::shared_ptr<FontCatalog> fontconfigFontCatalog() {
  return nullptr;
}

} // namespace vl::ns

#endif
