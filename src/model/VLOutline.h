// VLOutline: one entry of a document's outline (a scene, a chapter, a section), kept in the text.
#pragma once

#include "model/VLRangeHolder.h"
#include "ns/AttributedString.h"
#include "ns/KeyedArchiver.h"
#include "ns/Object.h"
#include "ns/Range.h"
#include "ns/Value.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace vl {

class VLOutline;
using VLOutlinePtr = std::shared_ptr<VLOutline>;

/// An outline entry. It is no tree node: entries live in the text as values of
/// VLOutlineElementAttributeName over the paragraphs they own, so they move with the text, and
/// a tree, where a host wants one, is built from `level`. Entries compare by identity, so the
/// runs of two entries never merge, however alike they are.
///
/// The word counts belong to the host: nothing here computes them, and wordCountNeedsUpdate
/// is how the host learns that it has to. The flag starts true and only the host clears it;
/// no setter sets it, and no setter announces a change.
///
/// Keyed coding keys, written in this order: "identifier" (object), "range" (text as
/// ns::StringFromRange gives it), "level" (integer), "title", "attributedString" (objects),
/// "wordCount", "wordCountIncludingChildren", "textTransform" (32-bit integers: a count above
/// 2147483647 does not survive). The flag is not archived: a decoded entry always needs a
/// recount. Key-value coding reaches every property by its name ("range" as "{a, b}" text);
/// a value that is not text sets a text property to nil, and nil sets a number to 0.
class VLOutline : public ns::Object, public ns::Coding, public VLRangeHolder {
public:
  VL_OBJECT(VLOutline)

  /// An entry at {0, 0}, level 0 (what the unarchiver starts from); its counts need an update.
  VLOutline() = default;
  /// initWithRange:level:. Stores both; the counts need an update.
  VLOutline(ns::Range range, int64_t level);
  /// entryWithRange:level:.
  static VLOutlinePtr entryWithRange(ns::Range range, int64_t level);

  /// The stable identifier that links to the entry (an XML id in HTML, a scene in FDX and
  /// Fountain). A new entry has none: whoever makes the entry names it, with a fresh
  /// uniqueID() (VLStringAdditions.h) or a numbered "scene%d", since only the document knows
  /// which names are taken.
  const std::optional<std::u16string> &identifier() const { return _identifier; }
  void setIdentifier(std::optional<std::u16string> identifier) {
    _identifier = std::move(identifier);
  }
  /// The cached range: outlineEntriesInRange refreshes it from the runs.
  ns::Range range() const override { return _range; }
  void setRange(ns::Range range) override { _range = range; }
  /// Nesting level; 0 is the body or scene level.
  int64_t level() const { return _level; }
  void setLevel(int64_t level) { _level = level; }
  /// What the outline shows; nil when untitled.
  const std::optional<std::u16string> &title() const { return _title; }
  void setTitle(std::optional<std::u16string> title) { _title = std::move(title); }
  /// Words of this entry alone.
  uint64_t wordCount() const { return _wordCount; }
  void setWordCount(uint64_t count) { _wordCount = count; }
  bool wordCountNeedsUpdate() const { return _wordCountNeedsUpdate; }
  void setWordCountNeedsUpdate(bool needsUpdate) { _wordCountNeedsUpdate = needsUpdate; }
  /// Words of this entry and its children.
  uint64_t wordCountIncludingChildren() const { return _wordCountIncludingChildren; }
  void setWordCountIncludingChildren(uint64_t count) { _wordCountIncludingChildren = count; }
  /// A text transform value (0 none, 1 lower, 2 upper, 3 capitalized), carried for the host.
  int64_t textTransform() const { return _textTransform; }
  void setTextTransform(int64_t transform) { _textTransform = transform; }
  /// Text carried for the host; may be nil.
  const ns::AttributedStringPtr &attributedString() const { return _attributedString; }
  void setAttributedString(ns::AttributedStringPtr attributedString) {
    _attributedString = std::move(attributedString);
  }

  /// "%p %@ (%ld) - \"%@\"": the entry, its range as text, its level and its title.
  std::u16string description() const override;
  /// A new entry with every field, the flag included. An immutable carried text is shared; a
  /// mutable one is copied, so that editing it does not change the copy.
  ns::ObjectPtr copy() const override;

  void encodeWithCoder(ns::KeyedArchiver &coder) const override;
  /// Reads what encodeWithCoder wrote (a missing key leaves 0, nil or {0, 0}) and sets
  /// wordCountNeedsUpdate, whatever the stored counts are.
  void initWithCoder(ns::KeyedUnarchiver &coder) override;

protected:
  bool kvcValueForKey(std::u16string_view key, ns::Value &value) override;
  bool kvcSetValueForKey(std::u16string_view key, const ns::Value &value) override;

private:
  bool _wordCountNeedsUpdate = true;
  std::optional<std::u16string> _identifier;
  int64_t _level = 0;
  std::optional<std::u16string> _title;
  uint64_t _wordCount = 0;
  uint64_t _wordCountIncludingChildren = 0;
  int64_t _textTransform = 0;
  ns::AttributedStringPtr _attributedString;
  ns::Range _range;
};

} // namespace vl
