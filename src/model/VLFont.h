// VLFont: a font named as a file names it (name, family, weight, style), resolved to a
// platform font only when someone asks for one.
#pragma once

#include "ns/Font.h"
#include "ns/KeyedArchiver.h"
#include "ns/Object.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace vl {

class VLFont;
using VLFontPtr = std::shared_ptr<VLFont>;

/// A font description kept apart from the platform's font objects, so that a font table read
/// from a file can name fonts this machine lacks and still find the closest one later. The
/// size is not part of it: size belongs to the style.
///
/// Keyed coding keys, in the order written: "_fontName", "_fontFamilyName",
/// "_genericFontFamilyName" (strings or nil), "_hasBoldFontWeight", "_hasItalicFontStyle"
/// (booleans), "_nsFont" (the resolved font or nil), "_charset", "_fontNumber" (integers).
class VLFont : public ns::Object, public ns::Coding {
public:
  /// An empty font: no names, not bold, not italic, nothing resolved, charset and number 0.
  VLFont() = default;

  /// A new empty font.
  static VLFontPtr font();
  /// A new font named after `nsFont`'s PostScript name and holding it, its family and its
  /// bold and italic traits. A nil `nsFont` is a programmer error: fails the check "Invalid
  /// parameter not satisfying: nsFont".
  static VLFontPtr fontWithNSFont(const ns::FontPtr &nsFont);

  VL_OBJECT(VLFont)

  /// The full font name, as a file's font table gives it; nil when none was given.
  const std::optional<std::u16string> &fontName() const { return _fontName; }
  void setFontName(std::optional<std::u16string> fontName) { _fontName = std::move(fontName); }
  const std::optional<std::u16string> &fontFamilyName() const { return _fontFamilyName; }
  void setFontFamilyName(std::optional<std::u16string> name) { _fontFamilyName = std::move(name); }
  /// The generic family ("roman", "swiss"...) a file may give; only kept, never used here.
  const std::optional<std::u16string> &genericFontFamilyName() const {
    return _genericFontFamilyName;
  }
  void setGenericFontFamilyName(std::optional<std::u16string> name) {
    _genericFontFamilyName = std::move(name);
  }
  bool hasBoldFontWeight() const { return _hasBoldFontWeight; }
  void setHasBoldFontWeight(bool bold) { _hasBoldFontWeight = bold; }
  bool hasItalicFontStyle() const { return _hasItalicFontStyle; }
  void setHasItalicFontStyle(bool italic) { _hasItalicFontStyle = italic; }

  /// The platform font, resolved on first call at a working size of 12: the font `fontName`
  /// names if the catalogue has it; otherwise the user font converted to `fontFamilyName`
  /// (when set), then to bold and italic as the flags ask. The answer is kept through
  /// setNSFont, which may set the flags and replaces the family name with the resolved one.
  /// Nil only when the catalogue is empty. Costs a few catalogue lookups the first time.
  ns::FontPtr nsFont();
  /// Keeps `font` and takes its family name; sets the bold and italic flags when the font has
  /// those traits, and never clears them: a plain font set over a bold one leaves the font
  /// marked bold. Nil forgets the resolved font and leaves names and flags alone.
  void setNSFont(ns::FontPtr font);

  /// The RTF character set number of the font table entry.
  int64_t charset() const { return _charset; }
  void setCharset(int64_t charset) { _charset = charset; }
  /// The RTF font number (\fN) of the font table entry.
  int64_t fontNumber() const { return _fontNumber; }
  void setFontNumber(int64_t fontNumber) { _fontNumber = fontNumber; }

  /// "<VLFont: 0x...> Name (3)": the base description, fontName ("(null)" when nil) and
  /// fontNumber.
  std::u16string description() const override;
  /// A new font filled through the setters, in field order; setting the resolved font may
  /// add bold or italic flags from its traits.
  ns::ObjectPtr copy() const override;

  void encodeWithCoder(ns::KeyedArchiver &coder) const override;
  void initWithCoder(ns::KeyedUnarchiver &coder) override;

private:
  std::optional<std::u16string> _fontName;
  std::optional<std::u16string> _fontFamilyName;
  std::optional<std::u16string> _genericFontFamilyName;
  bool _hasBoldFontWeight = false;
  bool _hasItalicFontStyle = false;
  ns::FontPtr _nsFont;
  int64_t _charset = 0;
  int64_t _fontNumber = 0;
};

} // namespace vl
