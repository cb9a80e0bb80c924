// FontManager: font lookup in the installed catalogue, traits, and conversions between
// sizes, faces and families.
#pragma once

#include "ns/Font.h"
#include "ns/FontCatalog.h"
#include "ns/Object.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vl::ns {

class FontManager;
using FontManagerPtr = std::shared_ptr<FontManager>;

/// The process's font manager. It indexes the catalogue once when it is installed; lookups
/// are then hash lookups under one short lock, and fonts are interned by face and size.
///
/// The platform's convertFont:toSize:, convertFont:toHaveTrait:, convertFont:toNotHaveTrait:
/// and convertFont:toFamily: share their first keyword; the two trait forms take the same
/// argument types, so they are named convertFontToHaveTrait and convertFontToNotHaveTrait,
/// and the family form convertFontToFamily beside it. Every conversion of a nil font answers
/// nil, and a conversion to a face the catalogue lacks answers the font unchanged.
class FontManager : public Object {
public:
  FontManager();
  ~FontManager() override;

  static const FontManagerPtr &sharedFontManager();
  /// Replaces the catalogue (null restores the built-in one). Fonts made before keep their
  /// values; new lookups see only the new catalogue. Costs one pass over its faces.
  static void setCatalog(std::shared_ptr<FontCatalog> catalog);
  std::shared_ptr<FontCatalog> catalog() const;

  VL_OBJECT(NSFontManager)

  /// The traits the font's face has (bold 2, italic 1, fixed pitch 0x400, ...); never
  /// unbold or unitalic. 0 for nil.
  uint32_t traitsOfFont(const FontPtr &font) const;
  /// The same face at `size` (see Font for sizes).
  FontPtr convertFont(const FontPtr &font, double size);
  /// The member of the font's family that has the traits `trait` asks for: bold 2, italic 1,
  /// unbold 4 (not bold), unitalic 0x1000000 (not italic), in any combination; the other
  /// traits of the font are kept where the family allows. Other bits are ignored.
  FontPtr convertFontToHaveTrait(const FontPtr &font, uint32_t trait);
  /// The member without the bold (2) or italic (1) traits named; other bits are ignored.
  FontPtr convertFontToNotHaveTrait(const FontPtr &font, uint32_t trait);
  /// The member of `family` closest to the font's traits (Helvetica Bold to Times gives
  /// Times Bold; to Symbol, Symbol); unchanged for a family the catalogue lacks.
  FontPtr convertFontToFamily(const FontPtr &font, std::u16string_view family);
  /// Whether the font `name` names has every trait in `traits` (unbold: is not bold;
  /// unitalic: is not italic). False for a name the catalogue lacks.
  bool fontNamedHasTraits(std::u16string_view name, uint32_t traits) const;

  /// PostScript names of every face, sorted.
  std::vector<std::u16string> availableFonts() const;
  /// Family names, sorted.
  std::vector<std::u16string> availableFontFamilies() const;
  /// The faces of `family` in catalogue order; empty for an unknown family. Family names
  /// here and in convertFontToFamily match exactly, or else ignoring ASCII case.
  std::vector<FontFace> availableMembersOfFontFamily(std::u16string_view family) const;

  /// The face `name` names, as Font::fontWithName finds it, or nullopt.
  std::optional<FontFace> faceNamed(std::u16string_view name) const;
  /// The interned font of `face` at `size`; the face's PostScript name identifies it.
  FontPtr fontWithFace(const FontFace &face, double size);

private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
  FontPtr convertTraits(const FontPtr &font, int bold, int italic);
};

} // namespace vl::ns
