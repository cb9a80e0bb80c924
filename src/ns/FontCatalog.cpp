// The built-in font catalogue: the standard faces every document of ours may name.
#include "ns/FontCatalog.h"

#include "ns/String.h"

namespace vl::ns {

namespace {

struct Member {
  const char *fontName;
  const char *faceName;
  uint32_t traits;
};

struct Family {
  const char *familyName;
  bool fixedPitch;
  std::vector<Member> members;
};

const std::vector<Family> &families() {
  static const std::vector<Family> table = {
      {"Courier",
       true,
       {{"Courier", "Regular", 0},
        {"Courier-Bold", "Bold", BoldFontMask},
        {"Courier-Oblique", "Oblique", ItalicFontMask},
        {"Courier-BoldOblique", "Bold Oblique", BoldFontMask | ItalicFontMask}}},
      {"Helvetica",
       false,
       {{"Helvetica", "Regular", 0},
        {"Helvetica-Bold", "Bold", BoldFontMask},
        {"Helvetica-Oblique", "Oblique", ItalicFontMask},
        {"Helvetica-BoldOblique", "Bold Oblique", BoldFontMask | ItalicFontMask}}},
      {"Times",
       false,
       {{"Times-Roman", "Roman", 0},
        {"Times-Bold", "Bold", BoldFontMask},
        {"Times-Italic", "Italic", ItalicFontMask},
        {"Times-BoldItalic", "Bold Italic", BoldFontMask | ItalicFontMask}}},
      {"Symbol", false, {{"Symbol", "Regular", NonStandardCharacterSetFontMask}}},
      {"Courier New",
       true,
       {{"CourierNewPSMT", "Regular", 0},
        {"CourierNewPS-BoldMT", "Bold", BoldFontMask},
        {"CourierNewPS-ItalicMT", "Italic", ItalicFontMask},
        {"CourierNewPS-BoldItalicMT", "Bold Italic", BoldFontMask | ItalicFontMask}}},
      {"Courier Prime",
       true,
       {{"CourierPrime", "Regular", 0},
        {"CourierPrime-Bold", "Bold", BoldFontMask},
        {"CourierPrime-Italic", "Italic", ItalicFontMask},
        {"CourierPrime-BoldItalic", "Bold Italic", BoldFontMask | ItalicFontMask}}},
      {"Arial",
       false,
       {{"ArialMT", "Regular", 0},
        {"Arial-BoldMT", "Bold", BoldFontMask},
        {"Arial-ItalicMT", "Italic", ItalicFontMask},
        {"Arial-BoldItalicMT", "Bold Italic", BoldFontMask | ItalicFontMask}}},
      {"Georgia",
       false,
       {{"Georgia", "Regular", 0},
        {"Georgia-Bold", "Bold", BoldFontMask},
        {"Georgia-Italic", "Italic", ItalicFontMask},
        {"Georgia-BoldItalic", "Bold Italic", BoldFontMask | ItalicFontMask}}},
      {"Palatino",
       false,
       {{"Palatino-Roman", "Roman", 0},
        {"Palatino-Bold", "Bold", BoldFontMask},
        {"Palatino-Italic", "Italic", ItalicFontMask},
        {"Palatino-BoldItalic", "Bold Italic", BoldFontMask | ItalicFontMask}}},
      {"Verdana",
       false,
       {{"Verdana", "Regular", 0},
        {"Verdana-Bold", "Bold", BoldFontMask},
        {"Verdana-Italic", "Italic", ItalicFontMask},
        {"Verdana-BoldItalic", "Bold Italic", BoldFontMask | ItalicFontMask}}},
      {"Helvetica Neue",
       false,
       {{"HelveticaNeue", "Regular", 0},
        {"HelveticaNeue-Bold", "Bold", BoldFontMask},
        {"HelveticaNeue-Italic", "Italic", ItalicFontMask},
        {"HelveticaNeue-BoldItalic", "Bold Italic", BoldFontMask | ItalicFontMask}}},
      {"Times New Roman",
       false,
       {{"TimesNewRomanPSMT", "Regular", 0},
        {"TimesNewRomanPS-BoldMT", "Bold", BoldFontMask},
        {"TimesNewRomanPS-ItalicMT", "Italic", ItalicFontMask},
        {"TimesNewRomanPS-BoldItalicMT", "Bold Italic", BoldFontMask | ItalicFontMask}}},
      {"Apple Symbols", false, {{"AppleSymbols", "Regular", 0}}},
  };
  return table;
}

class BuiltinFontCatalog : public FontCatalog {
public:
  std::vector<FontFace> faces() const override {
    std::vector<FontFace> out;
    for (const Family &family : families()) {
      for (const Member &member : family.members) {
        FontFace face;
        face.fontName = u16(member.fontName);
        face.familyName = u16(family.familyName);
        face.faceName = u16(member.faceName);
        // The regular (or roman) member is known by the family's own name.
        std::string_view faceName = member.faceName;
        face.displayName = face.familyName;
        if (faceName != "Regular" &&
            !(faceName == "Roman" && family.familyName != std::string_view("Times")))
          face.displayName += u" " + face.faceName;
        face.traits = member.traits | (family.fixedPitch ? uint32_t{FixedPitchFontMask} : 0u);
        face.weight = (member.traits & BoldFontMask) ? 9 : 5;
        out.push_back(std::move(face));
      }
    }
    return out;
  }
};

} // namespace

std::shared_ptr<FontCatalog> builtinFontCatalog() {
  static const std::shared_ptr<FontCatalog> catalog = std::make_shared<BuiltinFontCatalog>();
  return catalog;
}

} // namespace vl::ns
