// TextRuns: the storage engine of attributed strings: UTF-16 text in a gap buffer and
// attribute runs in blocks, over shared, interned attribute dictionaries.
#pragma once

#include "ns/Dictionary.h"
#include "ns/Range.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace vl::ns {

namespace detail {
/// The whole paragraphs holding `range` in a text of `length` units read through `charAt`:
/// LF, CR, CRLF and U+2029 end a paragraph, U+2028 does not. The LF of a CRLF belongs to the
/// paragraph that the CR ends, and a range ending just after a terminator stays in its
/// paragraph. Costs the length of the paragraphs concerned.
template <class CharAt> Range paragraphRange(uint64_t length, Range range, const CharAt &charAt) {
  auto isSeparator = [](char16_t c) { return c == u'\n' || c == u'\r' || c == u'\u2029'; };
  uint64_t location = std::min(range.location, length);
  uint64_t rangeEnd = location + std::min(range.length, length - location);
  auto insideCRLF = [&](uint64_t i) {
    return i > 0 && i < length && charAt(i) == u'\n' && charAt(i - 1) == u'\r';
  };
  uint64_t start = insideCRLF(location) ? location - 1 : location;
  while (start > 0 && !isSeparator(charAt(start - 1)))
    --start;
  uint64_t last = rangeEnd > location ? rangeEnd - 1 : location;
  uint64_t end;
  if (insideCRLF(last)) {
    end = last + 1;
  } else {
    end = last;
    while (end < length && !isSeparator(charAt(end)))
      ++end;
    if (end < length)
      end += (charAt(end) == u'\r' && end + 1 < length && charAt(end + 1) == u'\n') ? 2 : 1;
  }
  return Range{start, end - start};
}
} // namespace detail

/// The text and runs of one attributed string.
///
/// Text lives in a gap buffer: an edit moves the gap to the edit (a memmove as long as the
/// distance from the previous edit) and then costs what it inserts, so typing at one place in
/// a long text costs microseconds. view() closes the gap at the end of the text and answers
/// one contiguous view; its first call after an edit elsewhere costs O(n).
///
/// Runs live in blocks of at most MaxRunsPerBlock runs, with a table of block starts: finding
/// the run at an index is a binary search over blocks and a short walk in one block, and an
/// edit touches one or two blocks plus the table. The last run found is remembered, so walking
/// runs in order (forwards or backwards) costs O(1) a step. Adjacent runs never hold equal
/// dictionaries: an edit merges them.
///
/// Attribute dictionaries are frozen copies, shared by every run (and every string) that holds
/// equal attributes: setAttributes interns its argument, so a novel with tens of thousands of
/// runs holds a few hundred dictionaries. A dictionary this engine hands out must not be
/// changed; copy it first.
///
/// Positions are not checked here: callers check ranges first. Even const reads move the gap
/// or the remembered run, so one object must not be read from two threads at once.
class TextRuns {
public:
  struct Run {
    uint64_t length = 0;
    ConstDictionaryPtr attributes;
  };

  static constexpr size_t MaxRunsPerBlock = 128;

  TextRuns() = default;
  /// `text` with `attributes` (nil: none) over all of it.
  TextRuns(std::u16string_view text, const ConstDictionaryPtr &attributes);
  /// `text` with `runs`, whose lengths must add up to the text's; empty runs are dropped and
  /// equal neighbours merged.
  TextRuns(std::u16string_view text, std::vector<Run> runs);
  TextRuns(const TextRuns &other);
  TextRuns &operator=(const TextRuns &other);
  TextRuns(TextRuns &&other) noexcept;
  TextRuns &operator=(TextRuns &&other) noexcept;
  ~TextRuns();

  /// The one empty dictionary, shared by all runs without attributes.
  static const ConstDictionaryPtr &emptyAttributes();
  /// The frozen dictionary equal to `attributes` that this engine holds, made if needed.
  /// Nil and empty dictionaries give emptyAttributes(). Costs a hash of the dictionary
  /// unless it is already one this engine (or another) froze.
  ConstDictionaryPtr intern(const ConstDictionaryPtr &attributes);

  // Text.

  uint64_t length() const { return capacity_ - (gapEnd_ - gapStart_); }
  char16_t characterAt(uint64_t index) const {
    return buffer_[index < gapStart_ ? index : index + (gapEnd_ - gapStart_)];
  }
  /// Copies the units of `range` to `out`.
  void copyCharacters(Range range, char16_t *out) const;
  std::u16string substring(Range range) const;
  /// The whole text; valid until the next change.
  std::u16string_view view() const;
  /// The whole paragraphs holding `range` (LF, CR, CRLF and U+2029 end a paragraph).
  Range paragraphRange(Range range) const;

  // Runs.

  /// The attributes at `index` (below length()) and, if asked, the run holding it, which is
  /// the longest range of equal attributes.
  const ConstDictionaryPtr &attributesAt(uint64_t index, Range *runRange) const;
  /// Copies of the runs that overlap `range`, clipped to it.
  std::vector<Run> runsInRange(Range range) const;

  // Edits; ranges must lie inside the text.

  /// Replaces the units of `range` by `text`, which takes the attributes of the first
  /// replaced unit, else of the unit before, else of the unit after.
  void replaceCharacters(Range range, std::u16string_view text);
  /// Replaces the units of `range` by `text` with `runs` (lengths adding up to the text's).
  void replaceCharacters(Range range, std::u16string_view text, std::vector<Run> runs);
  void setAttributes(const ConstDictionaryPtr &attributes, Range range);

  // Diagnostics.

  size_t runCount() const;
  size_t blockCount() const { return blocks_.size(); }
  /// The number of distinct dictionary objects the runs hold.
  size_t distinctAttributeCount() const;
  /// Heap bytes held for text, runs, blocks and the intern table (not the dictionaries).
  size_t memoryUsage() const;
  /// "" when every invariant holds, else what is broken.
  std::string checkInvariants() const;

private:
  struct Block {
    uint64_t length = 0;
    std::vector<Run> runs;
  };
  struct Position {
    size_t block = 0;
    size_t run = 0;
    uint64_t start = 0; // of the run
  };

  // Gap buffer.
  void moveGap(uint64_t position) const;
  void replaceText(Range range, std::u16string_view text);
  void assignText(std::u16string_view text);
  /// The first paragraph separator in [from, to), or `to`.
  uint64_t nextSeparator(uint64_t from, uint64_t to) const;
  /// The position after the last paragraph separator before `to`, or 0.
  uint64_t afterPreviousSeparator(uint64_t to) const;

  // Runs.
  Position locate(uint64_t index) const;
  size_t blockOf(uint64_t index) const;
  void spliceRuns(uint64_t position, uint64_t removeLength, std::vector<Run> runs);
  /// Splits, joins or drops a block that grew too long, too short or empty; answers whether
  /// it did, which moves the runs of blocks from `block` on.
  bool rebalance(size_t block);
  void recomputeStarts(size_t fromBlock);
  void adoptRuns(std::vector<Run> runs);
  void internRuns(std::vector<Run> &runs);
  void sweepInterned();

  mutable std::unique_ptr<char16_t[]> buffer_;
  size_t capacity_ = 0;
  mutable size_t gapStart_ = 0;
  mutable size_t gapEnd_ = 0;

  std::vector<Block> blocks_;
  std::vector<uint64_t> starts_;
  uint64_t version_ = 0;
  mutable uint64_t cursorVersion_ = ~uint64_t(0);
  mutable Position cursor_;

  std::unordered_multimap<size_t, ConstDictionaryPtr> interned_;
  size_t sweepAt_ = 64;
};

} // namespace vl::ns
