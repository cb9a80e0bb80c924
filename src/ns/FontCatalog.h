// FontCatalog: the faces that fonts are looked up in, as a replaceable interface with a
// built-in deterministic catalogue and an optional one over the installed fonts.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace vl::ns {

/// Trait bits of fonts, as the platform numbers them. traitsOfFont reports the bits a face
/// has (italic, bold, fixed pitch, ...); unbold and unitalic are only requests to the
/// conversions and no face has them.
enum FontTraitMask : uint32_t {
  ItalicFontMask = 0x00000001,
  BoldFontMask = 0x00000002,
  UnboldFontMask = 0x00000004,
  NonStandardCharacterSetFontMask = 0x00000008,
  NarrowFontMask = 0x00000010,
  ExpandedFontMask = 0x00000020,
  CondensedFontMask = 0x00000040,
  SmallCapsFontMask = 0x00000080,
  PosterFontMask = 0x00000100,
  CompressedFontMask = 0x00000200,
  FixedPitchFontMask = 0x00000400,
  UnitalicFontMask = 0x01000000,
};

/// One face of a family.
struct FontFace {
  /// The PostScript name, unique in a catalogue: "Helvetica-Bold".
  std::u16string fontName;
  /// "Helvetica".
  std::u16string familyName;
  /// The full name: "Helvetica Bold".
  std::u16string displayName;
  /// The face's name inside its family: "Bold", "Oblique", "Regular".
  std::u16string faceName;
  /// FontTraitMask bits the face has.
  uint32_t traits = 0;
  /// The platform's weight scale, 0 to 15: 5 regular, 9 bold.
  int weight = 5;

  bool operator==(const FontFace &) const = default;
};

/// Where fonts come from. FontManager::setCatalog installs one; it is read once, when
/// installed, so a catalogue must answer the same faces every time.
class FontCatalog {
public:
  virtual ~FontCatalog() = default;
  /// Every face, PostScript names unique. The order is the order members of a family are
  /// listed in.
  virtual std::vector<FontFace> faces() const = 0;
};

/// The built-in catalogue: the Courier, Helvetica, Times and Symbol families of the
/// PostScript standard faces; Courier New, Courier Prime, Arial, Georgia, Palatino, Verdana,
/// Helvetica Neue and Times New Roman with regular, bold, italic and bold italic members;
/// and Apple Symbols. Needs no font files; the same on every machine.
std::shared_ptr<FontCatalog> builtinFontCatalog();

/// A catalogue of the fonts fontconfig lists on this machine, by their exact names; it never
/// stands one family in for another. Null when the library was built without fontconfig or
/// fontconfig cannot start. Costs a listing of the installed fonts.
std::shared_ptr<FontCatalog> fontconfigFontCatalog();

} // namespace vl::ns
