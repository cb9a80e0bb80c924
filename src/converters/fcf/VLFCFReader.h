// VLFCFReader: reads an FCF file (big-endian tagged records of typed ASCII paragraphs) into
// text styled from the default screenplay stylesheet.
#pragma once

#include "model/VLReader.h"
#include "model/VLStyle.h"
#include "model/VLStylesheet.h"
#include "ns/Data.h"
#include "ns/Dictionary.h"
#include "ns/MutableAttributedString.h"

#include <concepts>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace vl {

class VLFCFReader;
using VLFCFReaderPtr = std::shared_ptr<VLFCFReader>;

/// The first word of every FCF file, "FCF2".
inline constexpr int32_t VLFCFMagic = 0x46434632;
/// The tag that opens every text record, "FTXT".
inline constexpr int32_t VLFCFTextTag = 0x46545854;
/// Bytes of the header: the magic and four words nobody reads.
inline constexpr uint64_t VLFCFHeaderLength = 20;

/// Reads FCF bytes. The file is a 20-byte header (the magic "FCF2" and four ignored words),
/// then records of tag "FTXT", a length (4 + text bytes), a paragraph type and the ASCII text;
/// every integer is 32-bit big-endian. Types 1 to 6 are scene heading, action, character,
/// parenthetical, dialogue and transition; any other type is the default paragraph style.
/// Paragraph breaks are CR bytes in the text and come out as "\n".
///
/// The format carries nothing else, so the document attributes are always the defaults:
/// the default screenplay stylesheet, defaultSettings and defaultMasterPages.
///
/// A reader may serve any number of reads in turn; each read loads fresh styles.
class VLFCFReader : public VLReader {
public:
  VL_OBJECT(VLFCFReader)

  /// Makes the empty result of a read; the reader appends to it and replaces characters.
  using AttributedStringClass = std::function<ns::MutableAttributedStringPtr()>;

  VLFCFReader() = default;
  static VLFCFReaderPtr create() { return std::make_shared<VLFCFReader>(); }

  /// A result class that makes a default-constructed T, e.g. a text storage.
  template <std::derived_from<ns::MutableAttributedString> T>
  static AttributedStringClass attributedStringClassOf() {
    return [] { return std::make_shared<T>(); };
  }

  /// Reads the whole file. A file that does not start with the magic answers nil, as does a
  /// record holding a byte above 127; `documentAttributes` is then left alone. A word that is
  /// not "FTXT" where a record should start ends the text there, and the read succeeds with
  /// what came before. A record whose length runs past the end of the data, a length below 4
  /// (it wraps around), and a file cut inside a header word are programmer-visible
  /// corruption: they fail an internal check (ns::InternalInconsistencyException, "Invalid
  /// parameter not satisfying: dataOffset + length <= [data length]" for a record), before
  /// any memory is taken for the record. `options` is not read and `error` is never written.
  /// Linear in the data.
  ns::MutableAttributedStringPtr attributedStringWithData(const ns::Data &data,
                                                          const ns::DictionaryPtr &options,
                                                          ns::DictionaryPtr *documentAttributes,
                                                          ns::ErrorPtr *error) override;

  /// Loads a fresh default screenplay stylesheet and takes the six element styles from it.
  /// Every read calls it.
  void setupStyles();
  /// A new settings tree: one outline level ("Scene", style "Scene_20_Heading"), the
  /// default content style "Action", and the completion lists for scene intros, times,
  /// extensions and transitions.
  ns::DictionaryPtr defaultSettings() const;
  /// A new dictionary holding, under "Standard", a master page named the localized
  /// "Standard" and made from the shared print information, after setting on that shared
  /// object, for everyone: no centring, left margin 108, right, top and bottom 72.
  ns::DictionaryPtr defaultMasterPages() const;

  /// The big-endian word at dataOffset; advances it by 4. Fewer than 4 bytes left fails an
  /// internal check.
  int32_t readInt();
  /// The next `length` bytes as text, advancing dataOffset by `length`; nil when one of them
  /// is above 127. Bytes past the end of the data fail an internal check before anything is
  /// copied.
  std::optional<std::u16string> readASCIIStringOfLength(uint64_t length);

  // Accessors.

  const ns::Data &data() const { return _data; }
  /// Also sets dataOffset to 0.
  void setData(ns::Data data) {
    _data = std::move(data);
    _dataOffset = 0;
  }
  uint64_t dataOffset() const { return _dataOffset; }
  void setDataOffset(uint64_t offset) { _dataOffset = offset; }
  /// The length of data.
  uint64_t endOffset() const { return _data.length(); }

  /// Never set by the reader: type 0 takes the stylesheet's default paragraph style.
  const VLStylePtr &generalStyle() const { return _generalStyle; }
  void setGeneralStyle(VLStylePtr style) { _generalStyle = std::move(style); }
  const VLStylePtr &sceneHeadingStyle() const { return _sceneHeadingStyle; }
  void setSceneHeadingStyle(VLStylePtr style) { _sceneHeadingStyle = std::move(style); }
  const VLStylePtr &actionStyle() const { return _actionStyle; }
  void setActionStyle(VLStylePtr style) { _actionStyle = std::move(style); }
  const VLStylePtr &characterStyle() const { return _characterStyle; }
  void setCharacterStyle(VLStylePtr style) { _characterStyle = std::move(style); }
  const VLStylePtr &parentheticalStyle() const { return _parentheticalStyle; }
  void setParentheticalStyle(VLStylePtr style) { _parentheticalStyle = std::move(style); }
  const VLStylePtr &dialogStyle() const { return _dialogStyle; }
  void setDialogStyle(VLStylePtr style) { _dialogStyle = std::move(style); }
  const VLStylePtr &transitionStyle() const { return _transitionStyle; }
  void setTransitionStyle(VLStylePtr style) { _transitionStyle = std::move(style); }
  const VLStylesheetPtr &stylesheet() const { return _stylesheet; }
  void setStylesheet(VLStylesheetPtr stylesheet) { _stylesheet = std::move(stylesheet); }

  /// The maker of results; while none is set, one that makes an ns::MutableAttributedString.
  AttributedStringClass attributedStringClass() const;
  /// Chooses the result class before a read; an empty function restores the default.
  void setAttributedStringClass(AttributedStringClass attributedStringClass) {
    _attributedStringClass = std::move(attributedStringClass);
  }

private:
  /// The style a record type stands for: 1 to 6 the element styles, else the default.
  const VLStylePtr &styleForType(int32_t type, const VLStylePtr &defaultStyle) const;

  ns::Data _data;
  uint64_t _dataOffset = 0;
  VLStylePtr _generalStyle;
  VLStylePtr _sceneHeadingStyle;
  VLStylePtr _actionStyle;
  VLStylePtr _characterStyle;
  VLStylePtr _parentheticalStyle;
  VLStylePtr _dialogStyle;
  VLStylePtr _transitionStyle;
  VLStylesheetPtr _stylesheet;
  AttributedStringClass _attributedStringClass;
};

} // namespace vl
