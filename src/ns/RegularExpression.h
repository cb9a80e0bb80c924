// Regular expressions over ICU: compiled patterns with a process-wide cache, match results,
// replacement templates, and the string conveniences the text parsers use.
#pragma once

#include "ns/Error.h"
#include "ns/Object.h"
#include "ns/Range.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

struct URegularExpression;

namespace vl::ns {

class RegularExpression;
using RegularExpressionPtr = std::shared_ptr<RegularExpression>;

/// Compile options, numbered as the platform's NSRegularExpressionOptions.
enum RegularExpressionOptions : uint32_t {
  RegularExpressionNoOptions = 0,
  RegularExpressionCaseInsensitive = 1 << 0,
  RegularExpressionAllowCommentsAndWhitespace = 1 << 1,
  RegularExpressionIgnoreMetacharacters = 1 << 2,
  RegularExpressionDotMatchesLineSeparators = 1 << 3,
  RegularExpressionAnchorsMatchLines = 1 << 4,
  RegularExpressionUseUnixLineSeparators = 1 << 5,
  RegularExpressionUseUnicodeWordBoundaries = 1 << 6,
};
constexpr RegularExpressionOptions operator|(RegularExpressionOptions a,
                                             RegularExpressionOptions b) {
  return static_cast<RegularExpressionOptions>(static_cast<uint32_t>(a) | b);
}

/// Options of one search, numbered as the platform's NSMatchingOptions. Progress and
/// completion reports are not made; the other three are honoured.
enum MatchingOptions : uint32_t {
  MatchingNoOptions = 0,
  MatchingReportProgress = 1 << 0,
  MatchingReportCompletion = 1 << 1,
  /// Only a match that starts at the start of the search range counts.
  MatchingAnchored = 1 << 2,
  /// Look-ahead sees the text past the search range (ICU lets look-behind see before the
  /// range either way).
  MatchingWithTransparentBounds = 1 << 3,
  /// ^ and $ do not match at the edges of the search range (only at the text's).
  MatchingWithoutAnchoringBounds = 1 << 4,
};
constexpr MatchingOptions operator|(MatchingOptions a, MatchingOptions b) {
  return static_cast<MatchingOptions>(static_cast<uint32_t>(a) | b);
}

/// Options of the string conveniences below. These are ICU's flag values (as the
/// convenience layer's callers write them: caseless is 2), not RegularExpressionOptions.
enum RKLRegexOptions : uint32_t {
  RKLNoOptions = 0,
  RKLCaseless = 2,
  RKLComments = 4,
  RKLMultiline = 8,
  RKLDotAll = 32,
  RKLUnicodeWordBoundaries = 256,
};
constexpr RKLRegexOptions operator|(RKLRegexOptions a, RKLRegexOptions b) {
  return static_cast<RKLRegexOptions>(static_cast<uint32_t>(a) | b);
}

/// Error code of a pattern that does not compile (domain CocoaErrorDomain), as the platform
/// numbers it (NSFormattingError).
inline constexpr int64_t FormattingError = 2048;
/// User-info key holding the pattern that did not compile.
inline constexpr std::u16string_view InvalidValueKey = u"NSInvalidValue";

/// One match: the range of the whole match and of each capture group, in UTF-16 units of
/// the searched string. A default-made result is "no match": it has no ranges.
class TextCheckingResult {
public:
  TextCheckingResult() = default;
  explicit TextCheckingResult(std::vector<Range> ranges) : ranges_(std::move(ranges)) {}

  /// The range of the whole match; {NotFound, 0} for no match.
  Range range() const { return rangeAtIndex(0); }
  /// 1 + the pattern's capture groups; 0 for no match.
  size_t numberOfRanges() const { return ranges_.size(); }
  /// The range of capture group `index` (0 is the whole match); {NotFound, 0} for a group
  /// that did not take part in the match or an index past numberOfRanges.
  Range rangeAtIndex(size_t index) const {
    return index < ranges_.size() ? ranges_[index] : Range{NotFound, 0};
  }
  /// The text of group `index` inside `string` (the string that was searched); empty for a
  /// group that did not take part. Costs nothing: a view into `string`.
  std::u16string_view substring(std::u16string_view string, size_t index) const;
  /// The same result with every found range moved by `offset`.
  TextCheckingResult resultByAdjustingRangesWithOffset(int64_t offset) const;

  bool empty() const { return ranges_.empty(); }
  explicit operator bool() const { return !ranges_.empty(); }
  bool operator==(const TextCheckingResult &) const = default;

private:
  friend class RegularExpression; // refills one result while enumerating
  std::vector<Range> ranges_;
};

/// Receives each match in order; set `stop` to end the search.
using MatchBlock = std::function<void(const TextCheckingResult &result, bool &stop)>;

/// A compiled ICU regular expression (the platform's NSRegularExpression). Immutable once
/// made and safe to share across threads: each search borrows a matcher of its own (one spare
/// matcher is kept per pattern, so a single thread clones no matcher after its first search).
///
/// Searches take an optional range of the string (the whole string when absent); a range that
/// reaches past the string is clipped to it. Positions are UTF-16 units of the string.
/// A search that ICU abandons (its backtracking stack overflows) ends as if there were no
/// further matches.
class RegularExpression : public Object {
public:
  VL_OBJECT(NSRegularExpression)

  /// Compiles `pattern`; null, with a CocoaErrorDomain/FormattingError error naming ICU's
  /// complaint and its offset, when the pattern is bad. Costs one ICU compile: for patterns used
  /// again, prefer cached().
  static RegularExpressionPtr
  regularExpressionWithPattern(std::u16string_view pattern,
                               RegularExpressionOptions options = RegularExpressionNoOptions,
                               ErrorPtr *error = nullptr);
  /// The same (initWithPattern:options:error:).
  static RegularExpressionPtr create(std::u16string_view pattern,
                                     RegularExpressionOptions options = RegularExpressionNoOptions,
                                     ErrorPtr *error = nullptr) {
    return regularExpressionWithPattern(pattern, options, error);
  }

  /// The process-wide shared compiled form of (pattern, options): the same object for the same
  /// key while it stays in the cache. Compiles on a miss; a bad pattern answers null and the
  /// error, and is not cached. A pattern the thread used lately costs a hash and a compare;
  /// others take the one mutex of the shared cache, which holds a few hundred patterns and
  /// forgets some when it is full.
  static RegularExpressionPtr cached(std::u16string_view pattern,
                                     RegularExpressionOptions options = RegularExpressionNoOptions,
                                     ErrorPtr *error = nullptr);

  /// `string` with every metacharacter escaped, to match it literally.
  static std::u16string escapedPatternForString(std::u16string_view string);
  /// `string` with "$" and "\" escaped, to use it as a literal replacement template.
  static std::u16string escapedTemplateForString(std::u16string_view string);

  RegularExpression(const RegularExpression &) = delete;
  RegularExpression &operator=(const RegularExpression &) = delete;
  ~RegularExpression() override;

  const std::u16string &pattern() const { return pattern_; }
  RegularExpressionOptions options() const { return options_; }
  size_t numberOfCaptureGroups() const { return captureGroups_; }

  /// Calls `block` for each match in order until it sets `stop`. Empty matches are reported
  /// too; the search then moves on by one character.
  void enumerateMatchesInString(std::u16string_view string, MatchingOptions options,
                                std::optional<Range> range, const MatchBlock &block) const;
  void enumerateMatchesInString(std::u16string_view string, const MatchBlock &block) const {
    enumerateMatchesInString(string, MatchingNoOptions, std::nullopt, block);
  }
  std::vector<TextCheckingResult> matchesInString(std::u16string_view string,
                                                  MatchingOptions options = MatchingNoOptions,
                                                  std::optional<Range> range = std::nullopt) const;
  uint64_t numberOfMatchesInString(std::u16string_view string,
                                   MatchingOptions options = MatchingNoOptions,
                                   std::optional<Range> range = std::nullopt) const;
  /// The first match, or an empty optional.
  std::optional<TextCheckingResult>
  firstMatchInString(std::u16string_view string, MatchingOptions options = MatchingNoOptions,
                     std::optional<Range> range = std::nullopt) const;
  /// The range of the first match, or {NotFound, 0}.
  Range rangeOfFirstMatchInString(std::u16string_view string,
                                  MatchingOptions options = MatchingNoOptions,
                                  std::optional<Range> range = std::nullopt) const;
  /// Whether there is any match: the cheapest search (no result is built).
  bool hasMatchInString(std::u16string_view string, MatchingOptions options = MatchingNoOptions,
                        std::optional<Range> range = std::nullopt) const;

  /// A copy of `string` with each match inside `range` replaced by `templ` expanded: "$n" is
  /// the text of group n (digits are taken while they name an existing group; a group that
  /// did not take part gives ""), "\" makes the next character literal ("\$", "\\").
  std::u16string stringByReplacingMatchesInString(std::u16string_view string,
                                                  MatchingOptions options,
                                                  std::optional<Range> range,
                                                  std::u16string_view templ) const;
  std::u16string stringByReplacingMatchesInString(std::u16string_view string,
                                                  std::u16string_view templ) const {
    return stringByReplacingMatchesInString(string, MatchingNoOptions, std::nullopt, templ);
  }
  /// Replaces in place, as stringByReplacingMatchesInString; answers how many matches were
  /// replaced.
  uint64_t replaceMatchesInString(std::u16string &string, MatchingOptions options,
                                  std::optional<Range> range, std::u16string_view templ) const;
  /// `templ` expanded for one match of this expression in `string`; `offset` is added to the
  /// result's ranges first (for a string that has changed length since the search).
  std::u16string replacementStringForResult(const TextCheckingResult &result,
                                            std::u16string_view string, int64_t offset,
                                            std::u16string_view templ) const;
  /// The pieces of `range` of `string` between matches (the text before the first match and
  /// after the last one included, even when empty). Empty matches do not split. No match
  /// gives the whole range as one piece.
  std::vector<std::u16string>
  componentsSeparatedByMatchesInString(std::u16string_view string,
                                       MatchingOptions options = MatchingNoOptions,
                                       std::optional<Range> range = std::nullopt) const;

  bool isEqual(const Object &other) const override;
  size_t hash() const override;
  std::u16string description() const override;

private:
  struct Private {
    explicit Private() = default;
  };

public:
  /// Use regularExpressionWithPattern(); public only for std::make_shared.
  RegularExpression(Private, std::u16string pattern, RegularExpressionOptions options,
                    URegularExpression *prototype);

private:
  class Lease;
  URegularExpression *borrowMatcher() const;
  void returnMatcher(URegularExpression *matcher) const;

  std::u16string pattern_;
  RegularExpressionOptions options_;
  size_t captureGroups_ = 0;
  URegularExpression *prototype_; // compiled once, only ever cloned
  mutable std::atomic<URegularExpression *> spare_{nullptr};
};

// String conveniences over the cached patterns. `regex` is compiled with `options` (ICU flag
// values) through RegularExpression::cached. A bad pattern answers as no match (NotFound,
// nullopt, empty, or the string unchanged) and fills `error` when one is given; nothing here
// fails otherwise. `range` limits the search (whole string when absent; clipped to it).

/// Whether `regex` matches anywhere in `range` of `string`.
bool isMatchedByRegex(std::u16string_view string, std::u16string_view regex,
                      RKLRegexOptions options = RKLNoOptions,
                      std::optional<Range> range = std::nullopt, ErrorPtr *error = nullptr);
/// The range of capture `capture` (0: the whole match) of the first match; {NotFound, 0} when
/// nothing matches or that group did not take part.
Range rangeOfRegex(std::u16string_view string, std::u16string_view regex, int64_t capture = 0);
Range rangeOfRegex(std::u16string_view string, std::u16string_view regex, RKLRegexOptions options,
                   std::optional<Range> range, int64_t capture, ErrorPtr *error = nullptr);
/// The text of capture `capture` of the first match; empty optional when nothing matches or
/// that group did not take part.
std::optional<std::u16string> stringByMatching(std::u16string_view string,
                                               std::u16string_view regex, int64_t capture = 0);
std::optional<std::u16string> stringByMatching(std::u16string_view string,
                                               std::u16string_view regex, RKLRegexOptions options,
                                               std::optional<Range> range, int64_t capture,
                                               ErrorPtr *error = nullptr);
/// Capture `capture` of every match, in order.
std::vector<std::u16string> componentsMatchedByRegex(std::u16string_view string,
                                                     std::u16string_view regex,
                                                     int64_t capture = 0);
std::vector<std::u16string> componentsMatchedByRegex(std::u16string_view string,
                                                     std::u16string_view regex,
                                                     RKLRegexOptions options,
                                                     std::optional<Range> range, int64_t capture,
                                                     ErrorPtr *error = nullptr);
/// The whole match and each capture of the first match ("" for a group that did not take
/// part); empty when nothing matches.
std::vector<std::u16string> captureComponentsMatchedByRegex(
    std::u16string_view string, std::u16string_view regex, RKLRegexOptions options = RKLNoOptions,
    std::optional<Range> range = std::nullopt, ErrorPtr *error = nullptr);
/// captureComponentsMatchedByRegex for every match, in order.
std::vector<std::vector<std::u16string>> arrayOfCaptureComponentsMatchedByRegex(
    std::u16string_view string, std::u16string_view regex, RKLRegexOptions options = RKLNoOptions,
    std::optional<Range> range = std::nullopt, ErrorPtr *error = nullptr);
/// A copy with every match replaced by the template `replacement` ("$1", "\$"; see
/// RegularExpression::stringByReplacingMatchesInString).
std::u16string stringByReplacingOccurrencesOfRegex(std::u16string_view string,
                                                   std::u16string_view regex,
                                                   std::u16string_view replacement,
                                                   RKLRegexOptions options = RKLNoOptions,
                                                   std::optional<Range> range = std::nullopt,
                                                   ErrorPtr *error = nullptr);
/// Replaces in place; answers the number of matches replaced.
uint64_t replaceOccurrencesOfRegex(std::u16string &string, std::u16string_view regex,
                                   std::u16string_view replacement,
                                   RKLRegexOptions options = RKLNoOptions,
                                   std::optional<Range> range = std::nullopt,
                                   ErrorPtr *error = nullptr);
/// The pieces between matches (see componentsSeparatedByMatchesInString).
std::vector<std::u16string> componentsSeparatedByRegex(std::u16string_view string,
                                                       std::u16string_view regex,
                                                       RKLRegexOptions options = RKLNoOptions,
                                                       std::optional<Range> range = std::nullopt,
                                                       ErrorPtr *error = nullptr);
/// Calls `block` with each match in order until it sets `stop`; answers false for a bad
/// pattern.
bool enumerateStringsMatchedByRegex(std::u16string_view string, std::u16string_view regex,
                                    RKLRegexOptions options, std::optional<Range> range,
                                    ErrorPtr *error, const MatchBlock &block);
bool enumerateStringsMatchedByRegex(std::u16string_view string, std::u16string_view regex,
                                    const MatchBlock &block);
/// The number of capture groups of `regex`, or -1 (and the error) when it does not compile.
int64_t captureCountForRegex(std::u16string_view regex, RKLRegexOptions options = RKLNoOptions,
                             ErrorPtr *error = nullptr);
/// Whether `regex` compiles.
bool isRegexValid(std::u16string_view regex, RKLRegexOptions options = RKLNoOptions,
                  ErrorPtr *error = nullptr);

} // namespace vl::ns
