// VLSFountainReader: reads a Fountain file into styled text with its stylesheet, master pages,
// comment and outline references and settings.
#pragma once

#include "converters/fountain/FNScript.h"
#include "model/VLDocumentSettings.h"
#include "model/VLOutline.h"
#include "model/VLReader.h"
#include "model/VLStylesheet.h"
#include "ns/MutableAttributedString.h"
#include "ns/TextRuns.h"
#include "objects/VLSTextMarker.h"

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vl {

class VLSFountainReader;
using VLSFountainReaderPtr = std::shared_ptr<VLSFountainReader>;

/// "resourceType" of a scene's outline properties: the maker's own object type.
inline constexpr std::u16string_view VLObjectResourceType =
    u"http://www.velmoran.com/rdf-syntax/1.0/VelmoranObject";
/// "resourceType" of a section's outline properties: a sequence of the W3C RDF syntax.
inline constexpr std::u16string_view VLSectionResourceType =
    u"http://www.w3.org/1999/02/22-rdf-syntax-ns#Seq";

/// Turns the bytes of a Fountain file into styled text. Each element of the parsed script
/// becomes one paragraph in the attributes of a style of the default screenplay stylesheet
/// (or, when the title page says "Type: Novel", of the novel stylesheet, where scene headings
/// only title outline entries). Emphasis marks become font traits and underlining, notes
/// become comment markers, scene headings and sections open outline entries, and the
/// completion lists of the settings fill up.
///
/// A reader serves one document: its completion lists, references and open outline entry
/// are not reset by a read. Identifiers of comments ("comment%d") and outline entries
/// ("scene%d") come from process-wide counters, so readers must run one at a time.
///
/// The document attributes of a read: VLStylesheetDocumentAttribute, "settings",
/// VLMasterPagesKey (the page under "Standard") and VLReferencesDocumentAttribute (comment
/// markers and the markers of non-empty outline entries, by identifier).
class VLSFountainReader : public VLReader {
public:
  VL_OBJECT(VLSFountainReader)

  /// A reader with the start lists of completions and an open, empty "Introduction" entry.
  VLSFountainReader();
  ~VLSFountainReader() override;
  static VLSFountainReaderPtr create() { return std::make_shared<VLSFountainReader>(); }

  /// Decodes the bytes (UTF-8, else the plain text guess), parses them and builds the text;
  /// `options` is not read. Nil, with whatever the decoder left in `error`, when the bytes
  /// cannot be decoded; parsing itself never fails. `documentAttributes`, when not null, is
  /// filled after success. Linear in the text.
  ns::MutableAttributedStringPtr attributedStringWithData(const ns::Data &data,
                                                          const ns::DictionaryPtr &options,
                                                          ns::DictionaryPtr *documentAttributes,
                                                          ns::ErrorPtr *error) override;

  // Parsing the texts that feed the completion lists.

  /// Cuts a scene heading into intro (before the first "."; left alone when there is none),
  /// location and time (behind the first "- " that precedes a known time, else the first
  /// "- ", up to the next "-"; nil when there is no dash), all upper case and trimmed.
  /// Any out pointer may be null. Always true.
  bool parseSceneHeading(std::u16string_view string, std::optional<std::u16string> *intro,
                         std::optional<std::u16string> *location,
                         std::optional<std::u16string> *time) const;
  /// Cuts a cue into a name (what stands before "(", trimmed, upper case; nil when nothing
  /// does) and an extension ("(" to ")", upper case; left alone when nothing follows the
  /// name). True when it read a name or an extension.
  static bool parseCharacter(std::u16string_view string, std::optional<std::u16string> *name,
                             std::optional<std::u16string> *extension);
  /// Puts the intro, location and time of the heading, those of some length, at the front of
  /// their lists (an equal entry moves there).
  void updateCompletionsFromSceneHeading(std::u16string_view string);
  /// Puts the name and extension of the cue, when read, at the front of their lists.
  void updateCompletionsFromCharacter(std::u16string_view string);
  /// Puts the upper case of the whole string at the front of the transitions.
  void updateCompletionsFromTransition(std::u16string_view string);
  /// The six lists, most recently seen first.
  VLCompletionLists completionLists() const;

  /// settingsDictionaryArrayWithStrings of the settings tree.
  static ns::ArrayPtr
  settingsDictionaryArrayWithStrings(const std::vector<std::u16string> &strings);
  /// outlineLevelSettingsForStylesheet of the settings tree: one "Scene" level, or nil.
  static ns::ArrayPtr outlineLevelSettingsForStylesheet(const VLStylesheet *stylesheet);

  // Identifiers, comments and outline entries.

  /// "comment%d" with the process-wide comment counter, raised while references hold it.
  std::u16string uniqueCommentID();
  /// "scene%d" with the process-wide scene counter, raised while references hold it. An
  /// identifier handed out but not yet stored comes out again.
  std::u16string uniqueSceneID();
  /// Stores a comment marker with `text` at {location, 0} in the references.
  void addComment(std::u16string_view text, uint64_t location);
  /// Ends the open entry at the end of the text and opens a new one there.
  void startOutlineEntryWithTitle(std::u16string_view title, int64_t level);
  /// Gives the open entry the range up to `location` and, when that is not empty, stores
  /// its outline marker (type 3, the properties as represented object).
  void endOutlineEntryAtLocation(uint64_t location);

  // Mark-up of one paragraph.

  /// Removes each pair of `mark` and gives the text between them `fontTraits`; a text no
  /// longer than the mark loses the marks and gets no trait. An unpaired mark stays.
  void replaceMarkup(std::u16string_view mark, uint32_t fontTraits,
                     ns::MutableAttributedString &attributedString) const;
  /// Removes each pair of `mark` and underlines the text between them.
  void replaceMarkup(std::u16string_view mark, ns::MutableAttributedString &attributedString) const;
  /// Cuts out each "[[...]]" and stores it as a comment at its place plus `relativeOffset`.
  void replaceCommentMarkupInAttributedString(ns::MutableAttributedString &attributedString,
                                              uint64_t relativeOffset);
  /// Bold italic, bold, italic, underlining, then notes, in that order.
  void processMarkupInAttributedString(ns::MutableAttributedString &attributedString,
                                       uint64_t relativeOffset);
  /// Centres every paragraph style run, with no indents.
  static void centerAttributedString(ns::MutableAttributedString &attributedString);

  /// Takes "type" (novel mode when its last line is "novel", ignoring case) and "font" (the
  /// base font family) from the title page; the rest of it is dropped.
  void processTitlePageForScript(const FNScript &script);
  /// Lays every comment marker of the references on the text, in one batch of edits: a
  /// point comment sits on the character before it, or on the first one at location 0.
  void applyReferences();

  // Accessors.

  /// The target text: set it before reading to have the read fill it; when nil, a read
  /// makes an ns::TextStorage.
  const ns::MutableAttributedStringPtr &attributedString() const { return _attributedString; }
  void setAttributedString(ns::MutableAttributedStringPtr string) {
    _attributedString = std::move(string);
  }
  const VLStylesheetPtr &stylesheet() const { return _stylesheet; }
  bool isNovel() const { return _isNovel; }
  const std::u16string &baseFontFamily() const { return _baseFontFamily; }
  /// Made empty on first use.
  const ns::DictionaryPtr &settings();
  /// Identifier to VLSTextMarker; never null.
  const ns::DictionaryPtr &references();
  /// {"Standard": the page}, made on first use from the shared print information with
  /// margins of 108 left, 72 right, top and bottom, and headers and footers 36 from the edge.
  const ns::DictionaryPtr &masterPages();
  const VLOutlinePtr &currentSceneOutline() const { return _currentSceneOutline; }
  const ns::DictionaryPtr &currentSceneProperties() const { return _currentSceneProperties; }

private:
  enum class Kind;
  struct Completions;
  struct WalkState;

  void walkElement(const FNElement &element, WalkState &state);
  void prepareAttributes();
  ns::ConstDictionaryPtr sectionAttributes(int64_t level);
  ns::ConstDictionaryPtr attributesWithOutline(const ns::ConstDictionaryPtr &attributes);
  void writeElement(std::u16string text, Kind kind, const ns::ConstDictionaryPtr &attributes,
                    bool centered, WalkState &state);
  void appendText(std::u16string_view text, const ns::ConstDictionaryPtr &attributes);
  bool containsReference(const std::u16string &identifier) const;
  void storeReference(const VLSTextMarkerPtr &marker);
  void flushReferences();
  ns::DictionaryPtr makeDocumentAttributes(uint64_t sceneCount);

  ns::MutableAttributedStringPtr _attributedString;
  VLStylesheetPtr _stylesheet;
  ns::DictionaryPtr _masterPages;
  ns::DictionaryPtr _settings;
  ns::DictionaryPtr _references;
  ns::DictionaryPtr _currentSceneProperties;
  VLOutlinePtr _currentSceneOutline;
  std::unique_ptr<Completions> _completions;
  bool _isNovel = false;
  std::u16string _baseFontFamily;

  // State of one read. Markers wait in a sorted map until the walk ends, so that a script
  // of many notes does not insert into the middle of the references dictionary each time.
  std::map<std::u16string, VLSTextMarkerPtr> _pendingReferences;
  // Attributes are made once a read: per kind of paragraph, per heading style, and with the
  // open outline entry added; frozen once here, so that paragraphs share them unhashed.
  std::vector<ns::ConstDictionaryPtr> _kindAttributes;
  ns::ConstDictionaryPtr _separatorAttributes;
  std::vector<std::pair<const VLStyle *, ns::ConstDictionaryPtr>> _sectionAttributes;
  std::vector<std::pair<const ns::Dictionary *, ns::ConstDictionaryPtr>> _outlineAttributes;
  VLOutlinePtr _outlineOfAttributes;
  ns::TextRuns _internedAttributes;
};

} // namespace vl
