// VLFontTable: the fonts of a document in file order, with lookups by name and by platform
// font.
#pragma once

#include "model/VLFont.h"
#include "ns/Array.h"
#include "ns/Dictionary.h"
#include "ns/KeyedArchiver.h"
#include "ns/Object.h"

#include <memory>
#include <string_view>

namespace vl {

class VLFontTable;
using VLFontTablePtr = std::shared_ptr<VLFontTable>;

/// An ordered list of VLFont (duplicates allowed) and a dictionary of free-form values that
/// the RTF reader keeps its parse state in. Lookups walk the list in order, so they cost its
/// length; a document has a few dozen fonts at most.
///
/// Keyed coding keys: "fonts" (array of VLFont), "properties" (dictionary).
class VLFontTable : public ns::Object, public ns::Coding {
public:
  /// An empty table with an empty properties dictionary.
  VLFontTable();

  VL_OBJECT(VLFontTable)

  /// The first font whose fontName equals `name`, or nil. Fonts without a name never match.
  VLFontPtr fontForName(std::u16string_view name) const;
  /// The first font whose resolved nsFont equals `nsFont`, or nil. Resolves every font it
  /// passes (see VLFont::nsFont), so a lookup may change the fonts' family names and flags.
  VLFontPtr fontForNSFont(const ns::FontPtr &nsFont);
  /// Appends `font`, without looking for an equal one; nil is ignored.
  void addFont(const VLFontPtr &font);

  /// The fonts, in order; shared with the table (changing the array changes the table).
  /// Entries that are not VLFont are skipped by the lookups.
  const ns::ArrayPtr &fonts() const { return _fonts; }
  /// Shares `fonts` with the caller; nil gives an empty list.
  void setFonts(ns::ArrayPtr fonts);
  /// Never nil.
  const ns::DictionaryPtr &properties() const { return _properties; }

  /// "%@\n%@": the base description and the fonts array's.
  std::u16string description() const override;
  /// New fonts array holding copies of the fonts, and a new properties dictionary with the
  /// same values.
  ns::ObjectPtr copy() const override;

  void encodeWithCoder(ns::KeyedArchiver &coder) const override;
  void initWithCoder(ns::KeyedUnarchiver &coder) override;

private:
  ns::ArrayPtr _fonts;
  ns::DictionaryPtr _properties;
};

} // namespace vl
