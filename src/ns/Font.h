// Font: one face of a family at one size, made through the font manager's catalogue.
#pragma once

#include "ns/FontCatalog.h"
#include "ns/KeyedArchiver.h"
#include "ns/Object.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace vl::ns {

class Font;
using FontPtr = std::shared_ptr<Font>;

/// An immutable font: a face of the font manager's catalogue and a size in points. Fonts are
/// interned: asking twice for the same face and size answers the same object while anyone
/// holds it. Equality is by PostScript name and size; the hash is computed once.
///
/// A size of 0, a negative size or one that is not finite means the default size, 12.
///
/// Keyed coding keys: "name" (the PostScript name) and "size" (double). A decoded font is a
/// new object, equal to the interned one; a name the catalogue lacks decodes to a font of
/// that name with no family members and no traits.
class Font : public Object, public Coding {
  struct Private {};
  friend class FontManager;

public:
  /// Only the font manager and the unarchiver make fonts.
  Font(Private, FontFace face, double size);

  /// The font `name` names, at `size`: a PostScript name ("Helvetica-Bold"), a full name
  /// ("Helvetica Bold") or a family name, meaning the family's regular member ("Times").
  /// Exact names first, then the same names ignoring ASCII case. Nil for a name the
  /// catalogue lacks; never a stand-in from another family.
  static FontPtr fontWithName(std::u16string_view name, double size);
  /// The user's font (Helvetica unless setUserFontName named another) at `size`; when the
  /// catalogue lacks it, Helvetica, then the catalogue's first face. Nil only for an empty
  /// catalogue.
  static FontPtr userFontOfSize(double size);
  /// The user font name; empty restores Helvetica.
  static void setUserFontName(std::u16string_view name);
  static std::u16string userFontName();
  /// Helvetica Neue's regular member, or the user font when the catalogue lacks it.
  static FontPtr systemFontOfSize(double size);
  /// Helvetica Neue Bold, or the user font converted to bold.
  static FontPtr boldSystemFontOfSize(double size);

  VL_OBJECT(NSFont)

  /// The PostScript name.
  const std::u16string &fontName() const { return face_.fontName; }
  const std::u16string &familyName() const { return face_.familyName; }
  /// The full name, as a font menu shows it.
  const std::u16string &displayName() const { return face_.displayName; }
  double pointSize() const { return size_; }
  /// The FontTraitMask bits of the face (what FontManager::traitsOfFont answers).
  uint32_t traits() const { return face_.traits; }
  bool isFixedPitch() const { return (face_.traits & FixedPitchFontMask) != 0; }
  const FontFace &face() const { return face_; }

  bool isEqual(const Object &other) const override;
  size_t hash() const override { return hash_; }
  /// "\"Helvetica-Bold 12 pt.\"": name and size.
  std::u16string description() const override;
  /// Fonts are immutable: a copy is the font itself.
  ObjectPtr copy() const override;

  void encodeWithCoder(KeyedArchiver &coder) const override;
  void initWithCoder(KeyedUnarchiver &coder) override;

private:
  static const bool registered_;
  FontFace face_;
  double size_ = 12;
  size_t hash_ = 0;
};

} // namespace vl::ns
