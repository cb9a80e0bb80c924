// Regular expressions over ICU's uregex API, the cache of compiled patterns, and the string
// conveniences.
#include "ns/RegularExpression.h"

#include "ns/String.h"

#include <unicode/uregex.h>
#include <unicode/utext.h>

#include <array>
#include <charconv>
#include <mutex>
#include <unordered_map>

namespace vl::ns {

namespace {

uint32_t icuFlags(RegularExpressionOptions options) {
  uint32_t flags = 0;
  if (options & RegularExpressionCaseInsensitive)
    flags |= UREGEX_CASE_INSENSITIVE;
  if (options & RegularExpressionAllowCommentsAndWhitespace)
    flags |= UREGEX_COMMENTS;
  if (options & RegularExpressionIgnoreMetacharacters)
    flags |= UREGEX_LITERAL;
  if (options & RegularExpressionDotMatchesLineSeparators)
    flags |= UREGEX_DOTALL;
  if (options & RegularExpressionAnchorsMatchLines)
    flags |= UREGEX_MULTILINE;
  if (options & RegularExpressionUseUnixLineSeparators)
    flags |= UREGEX_UNIX_LINES;
  if (options & RegularExpressionUseUnicodeWordBoundaries)
    flags |= UREGEX_UWORD;
  return flags;
}

RegularExpressionOptions fromRKL(RKLRegexOptions options) {
  uint32_t out = 0;
  if (options & RKLCaseless)
    out |= RegularExpressionCaseInsensitive;
  if (options & RKLComments)
    out |= RegularExpressionAllowCommentsAndWhitespace;
  if (options & RKLMultiline)
    out |= RegularExpressionAnchorsMatchLines;
  if (options & RKLDotAll)
    out |= RegularExpressionDotMatchesLineSeparators;
  if (options & RKLUnicodeWordBoundaries)
    out |= RegularExpressionUseUnicodeWordBoundaries;
  return static_cast<RegularExpressionOptions>(out);
}

ErrorPtr compileError(std::u16string_view pattern, UErrorCode status, const UParseError &where) {
  auto info = Dictionary::create();
  info->setObject(Value(u"The value \u201C" + std::u16string(pattern) + u"\u201D is invalid."),
                  LocalizedDescriptionKey);
  std::string reason = u_errorName(status);
  if (where.offset >= 0)
    reason += " at offset " + std::to_string(where.offset);
  info->setObject(Value(u16(reason)), LocalizedFailureReasonErrorKey);
  info->setObject(Value(pattern), InvalidValueKey);
  return Error::errorWithDomain(CocoaErrorDomain, FormattingError, info);
}

Range clip(std::optional<Range> range, size_t length) {
  if (!range)
    return Range{0, length};
  uint64_t start = std::min<uint64_t>(range->location, length);
  uint64_t rest = length - start; // no overflow, whatever the range's length
  return Range{start, std::min<uint64_t>(range->length, rest)};
}

std::u16string_view slice(std::u16string_view string, Range r) {
  return string.substr(static_cast<size_t>(r.location), static_cast<size_t>(r.length));
}

// A replacement template split once into literal text and group references.
struct Template {
  struct Piece {
    std::u16string literal;
    int64_t group = -1; // -1: literal
  };
  std::vector<Piece> pieces;

  Template(std::u16string_view text, size_t groups) {
    std::u16string literal;
    auto flush = [&] {
      if (!literal.empty())
        pieces.push_back({std::move(literal), -1});
      literal.clear();
    };
    for (size_t i = 0; i < text.size(); ++i) {
      char16_t c = text[i];
      if (c == u'\\') {
        if (i + 1 < text.size())
          literal += text[++i];
      } else if (c == u'$' && i + 1 < text.size() && text[i + 1] >= u'0' && text[i + 1] <= u'9') {
        // The first digit always belongs to the reference; more only while the group exists.
        int64_t group = text[++i] - u'0';
        while (i + 1 < text.size() && text[i + 1] >= u'0' && text[i + 1] <= u'9') {
          int64_t longer = group * 10 + (text[i + 1] - u'0');
          if (longer > static_cast<int64_t>(groups))
            break;
          group = longer;
          ++i;
        }
        flush();
        pieces.push_back({{}, group});
      } else {
        literal += c;
      }
    }
    flush();
  }

  void expand(const TextCheckingResult &result, std::u16string_view string,
              std::u16string &out) const {
    for (const Piece &piece : pieces) {
      if (piece.group < 0)
        out += piece.literal;
      else
        out += result.substring(string, static_cast<size_t>(piece.group));
    }
  }
};

} // namespace

// TextCheckingResult

std::u16string_view TextCheckingResult::substring(std::u16string_view string, size_t index) const {
  Range r = rangeAtIndex(index);
  if (r.location == NotFound || r.location > string.size())
    return {};
  return string.substr(static_cast<size_t>(r.location), static_cast<size_t>(r.length));
}

TextCheckingResult TextCheckingResult::resultByAdjustingRangesWithOffset(int64_t offset) const {
  TextCheckingResult moved = *this;
  for (Range &r : moved.ranges_)
    if (r.location != NotFound)
      r.location = static_cast<uint64_t>(static_cast<int64_t>(r.location) + offset);
  return moved;
}

// One search: a matcher borrowed from the expression, set on the subject's range.
class RegularExpression::Lease {
public:
  Lease(const RegularExpression &owner, std::u16string_view string, MatchingOptions options,
        Range range)
      : owner_(owner), matcher_(owner.borrowMatcher()),
        anchored_((options & MatchingAnchored) != 0) {
    if (!matcher_)
      return;
    UErrorCode status = U_ZERO_ERROR;
    UText text = UTEXT_INITIALIZER;
    // The matcher keeps a shallow clone of `text`; the characters are not copied.
    utext_openUChars(&text, string.data(), static_cast<int64_t>(string.size()), &status);
    uregex_setUText(matcher_, &text, &status);
    utext_close(&text);
    uregex_setRegion64(matcher_, static_cast<int64_t>(range.location),
                       static_cast<int64_t>(range.max()), &status);
    uregex_useTransparentBounds(matcher_, (options & MatchingWithTransparentBounds) != 0, &status);
    uregex_useAnchoringBounds(matcher_, (options & MatchingWithoutAnchoringBounds) == 0, &status);
    ok_ = U_SUCCESS(status);
  }
  ~Lease() { owner_.returnMatcher(matcher_); }
  Lease(const Lease &) = delete;
  Lease &operator=(const Lease &) = delete;

  /// Moves to the next match; false at the end or when ICU gives up.
  bool next() {
    if (!ok_)
      return false;
    UErrorCode status = U_ZERO_ERROR;
    bool found;
    if (anchored_) {
      found = !searched_ && uregex_lookingAt64(matcher_, -1, &status);
    } else {
      found = uregex_findNext(matcher_, &status);
    }
    searched_ = true;
    ok_ = found && U_SUCCESS(status);
    return ok_;
  }

  Range group(size_t index) {
    UErrorCode status = U_ZERO_ERROR;
    int32_t g = static_cast<int32_t>(index);
    int64_t start = uregex_start64(matcher_, g, &status);
    int64_t end = uregex_end64(matcher_, g, &status);
    if (U_FAILURE(status) || start < 0)
      return Range{NotFound, 0};
    return Range{static_cast<uint64_t>(start), static_cast<uint64_t>(end - start)};
  }

  void fill(TextCheckingResult &result, size_t groups) {
    result.ranges_.resize(groups + 1);
    for (size_t i = 0; i <= groups; ++i)
      result.ranges_[i] = group(i);
  }

private:
  const RegularExpression &owner_;
  URegularExpression *matcher_;
  bool anchored_;
  bool searched_ = false;
  bool ok_ = false;
};

// RegularExpression

RegularExpression::RegularExpression(Private, std::u16string pattern,
                                     RegularExpressionOptions options,
                                     URegularExpression *prototype)
    : pattern_(std::move(pattern)), options_(options), prototype_(prototype) {
  UErrorCode status = U_ZERO_ERROR;
  int32_t groups = uregex_groupCount(prototype_, &status);
  captureGroups_ = U_SUCCESS(status) && groups > 0 ? static_cast<size_t>(groups) : 0;
}

RegularExpression::~RegularExpression() {
  if (URegularExpression *spare = spare_.exchange(nullptr))
    uregex_close(spare);
  uregex_close(prototype_);
}

URegularExpression *RegularExpression::borrowMatcher() const {
  if (URegularExpression *spare = spare_.exchange(nullptr))
    return spare;
  // Clones share the compiled pattern; cloning is safe while other threads use theirs.
  UErrorCode status = U_ZERO_ERROR;
  URegularExpression *matcher = uregex_clone(prototype_, &status);
  if (U_FAILURE(status)) {
    uregex_close(matcher);
    return nullptr;
  }
  return matcher;
}

void RegularExpression::returnMatcher(URegularExpression *matcher) const {
  if (!matcher)
    return;
  URegularExpression *expected = nullptr;
  if (!spare_.compare_exchange_strong(expected, matcher))
    uregex_close(matcher); // another search returned one first
}

RegularExpressionPtr
RegularExpression::regularExpressionWithPattern(std::u16string_view pattern,
                                                RegularExpressionOptions options, ErrorPtr *error) {
  UParseError where{};
  UErrorCode status = U_ZERO_ERROR;
  if (pattern.size() > static_cast<size_t>(INT32_MAX)) {
    setError(error, compileError(u"", U_REGEX_PATTERN_TOO_BIG, where));
    return nullptr;
  }
  // ICU refuses an empty pattern; the platform treats it as one that matches everywhere.
  std::u16string_view source = pattern.empty() ? std::u16string_view(u"(?:)") : pattern;
  URegularExpression *compiled = uregex_open(source.data(), static_cast<int32_t>(source.size()),
                                             icuFlags(options), &where, &status);
  if (U_FAILURE(status)) {
    uregex_close(compiled);
    setError(error, compileError(pattern, status, where));
    return nullptr;
  }
  return std::make_shared<RegularExpression>(Private{}, std::u16string(pattern), options, compiled);
}

namespace {

struct CacheKey {
  std::u16string_view pattern; // points into the cached expression's own pattern
  uint32_t options;
  bool operator==(const CacheKey &) const = default;
};

struct CacheKeyHash {
  size_t operator()(const CacheKey &key) const {
    return std::hash<std::u16string_view>{}(key.pattern) * 31 + key.options;
  }
};

struct PatternCache {
  // Enough for every pattern of the parsers at once; past this, entries are dropped
  // (their holders keep them alive).
  static constexpr size_t capacity = 512;
  std::mutex mutex;
  std::unordered_map<CacheKey, RegularExpressionPtr, CacheKeyHash> entries;
};

PatternCache &patternCache() {
  static PatternCache cache;
  return cache;
}

} // namespace

RegularExpressionPtr RegularExpression::cached(std::u16string_view pattern,
                                               RegularExpressionOptions options, ErrorPtr *error) {
  // Each thread first looks among the patterns it used last: a hit costs a hash and a
  // compare, and takes no lock.
  thread_local std::array<RegularExpressionPtr, 64> recent;
  CacheKey key{pattern, options};
  RegularExpressionPtr &slot = recent[CacheKeyHash{}(key) % recent.size()];
  if (slot && slot->options_ == options && slot->pattern_ == pattern)
    return slot;

  PatternCache &cache = patternCache();
  {
    std::lock_guard lock(cache.mutex);
    auto found = cache.entries.find(key);
    if (found != cache.entries.end())
      return slot = found->second;
  }
  // Compiled outside the lock; two threads missing at once both compile and one result wins.
  RegularExpressionPtr compiled = regularExpressionWithPattern(pattern, options, error);
  if (!compiled)
    return nullptr;
  std::lock_guard lock(cache.mutex);
  if (cache.entries.size() >= PatternCache::capacity)
    cache.entries.erase(cache.entries.begin());
  auto [it, inserted] =
      cache.entries.emplace(CacheKey{compiled->pattern(), options}, std::move(compiled));
  return slot = it->second;
}

std::u16string RegularExpression::escapedPatternForString(std::u16string_view string) {
  static constexpr std::u16string_view special = u"\\^$.|?*+()[]{}/-# ";
  std::u16string out;
  out.reserve(string.size());
  for (char16_t c : string) {
    if (special.find(c) != std::u16string_view::npos)
      out += u'\\';
    out += c;
  }
  return out;
}

std::u16string RegularExpression::escapedTemplateForString(std::u16string_view string) {
  std::u16string out;
  out.reserve(string.size());
  for (char16_t c : string) {
    if (c == u'\\' || c == u'$')
      out += u'\\';
    out += c;
  }
  return out;
}

void RegularExpression::enumerateMatchesInString(std::u16string_view string,
                                                 MatchingOptions options,
                                                 std::optional<Range> range,
                                                 const MatchBlock &block) const {
  Lease lease(*this, string, options, clip(range, string.size()));
  TextCheckingResult result;
  bool stop = false;
  while (!stop && lease.next()) {
    lease.fill(result, captureGroups_);
    block(result, stop);
  }
}

std::vector<TextCheckingResult>
RegularExpression::matchesInString(std::u16string_view string, MatchingOptions options,
                                   std::optional<Range> range) const {
  std::vector<TextCheckingResult> matches;
  Lease lease(*this, string, options, clip(range, string.size()));
  while (lease.next()) {
    matches.emplace_back();
    lease.fill(matches.back(), captureGroups_);
  }
  return matches;
}

uint64_t RegularExpression::numberOfMatchesInString(std::u16string_view string,
                                                    MatchingOptions options,
                                                    std::optional<Range> range) const {
  uint64_t count = 0;
  Lease lease(*this, string, options, clip(range, string.size()));
  while (lease.next())
    ++count;
  return count;
}

std::optional<TextCheckingResult>
RegularExpression::firstMatchInString(std::u16string_view string, MatchingOptions options,
                                      std::optional<Range> range) const {
  Lease lease(*this, string, options, clip(range, string.size()));
  if (!lease.next())
    return std::nullopt;
  TextCheckingResult result;
  lease.fill(result, captureGroups_);
  return result;
}

Range RegularExpression::rangeOfFirstMatchInString(std::u16string_view string,
                                                   MatchingOptions options,
                                                   std::optional<Range> range) const {
  Lease lease(*this, string, options, clip(range, string.size()));
  return lease.next() ? lease.group(0) : Range{NotFound, 0};
}

bool RegularExpression::hasMatchInString(std::u16string_view string, MatchingOptions options,
                                         std::optional<Range> range) const {
  Lease lease(*this, string, options, clip(range, string.size()));
  return lease.next();
}

std::u16string RegularExpression::stringByReplacingMatchesInString(
    std::u16string_view string, MatchingOptions options, std::optional<Range> range,
    std::u16string_view templ) const {
  std::u16string out;
  out.reserve(string.size());
  Template expansion(templ, captureGroups_);
  size_t copied = 0;
  enumerateMatchesInString(string, options, range, [&](const TextCheckingResult &match, bool &) {
    Range whole = match.range();
    out.append(string.substr(copied, static_cast<size_t>(whole.location) - copied));
    expansion.expand(match, string, out);
    copied = static_cast<size_t>(whole.max());
  });
  out.append(string.substr(copied));
  return out;
}

uint64_t RegularExpression::replaceMatchesInString(std::u16string &string, MatchingOptions options,
                                                   std::optional<Range> range,
                                                   std::u16string_view templ) const {
  uint64_t count = 0;
  std::u16string out;
  Template expansion(templ, captureGroups_);
  size_t copied = 0;
  std::u16string_view source = string;
  enumerateMatchesInString(source, options, range, [&](const TextCheckingResult &match, bool &) {
    Range whole = match.range();
    out.append(source.substr(copied, static_cast<size_t>(whole.location) - copied));
    expansion.expand(match, source, out);
    copied = static_cast<size_t>(whole.max());
    ++count;
  });
  if (count) {
    out.append(source.substr(copied));
    string = std::move(out);
  }
  return count;
}

std::u16string RegularExpression::replacementStringForResult(const TextCheckingResult &result,
                                                             std::u16string_view string,
                                                             int64_t offset,
                                                             std::u16string_view templ) const {
  std::u16string out;
  Template(templ, captureGroups_)
      .expand(result.resultByAdjustingRangesWithOffset(offset), string, out);
  return out;
}

std::vector<std::u16string> RegularExpression::componentsSeparatedByMatchesInString(
    std::u16string_view string, MatchingOptions options, std::optional<Range> range) const {
  Range within = clip(range, string.size());
  std::vector<std::u16string> pieces;
  uint64_t start = within.location;
  enumerateMatchesInString(string, options, within, [&](const TextCheckingResult &match, bool &) {
    Range whole = match.range();
    if (whole.length == 0)
      return;
    pieces.emplace_back(slice(string, Range{start, whole.location - start}));
    start = whole.max();
  });
  pieces.emplace_back(slice(string, Range{start, within.max() - start}));
  return pieces;
}

bool RegularExpression::isEqual(const Object &other) const {
  auto *o = dynamic_cast<const RegularExpression *>(&other);
  return o && o->options_ == options_ && o->pattern_ == pattern_;
}

size_t RegularExpression::hash() const {
  return std::hash<std::u16string_view>{}(pattern_) ^ options_;
}

std::u16string RegularExpression::description() const {
  char hex[16];
  auto end = std::to_chars(hex, hex + sizeof hex, static_cast<uint32_t>(options_), 16).ptr;
  return u"<NSRegularExpression: " + pattern_ + u" 0x" +
         u16(std::string_view(hex, static_cast<size_t>(end - hex))) + u">";
}

// String conveniences

namespace {

RegularExpressionPtr compiled(std::u16string_view regex, RKLRegexOptions options, ErrorPtr *error) {
  return RegularExpression::cached(regex, fromRKL(options), error);
}

std::optional<TextCheckingResult> firstMatch(std::u16string_view string, std::u16string_view regex,
                                             RKLRegexOptions options, std::optional<Range> range,
                                             ErrorPtr *error) {
  RegularExpressionPtr re = compiled(regex, options, error);
  if (!re)
    return std::nullopt;
  return re->firstMatchInString(string, MatchingNoOptions, range);
}

std::vector<std::u16string> captureStrings(const TextCheckingResult &match,
                                           std::u16string_view string) {
  std::vector<std::u16string> strings;
  strings.reserve(match.numberOfRanges());
  for (size_t i = 0; i < match.numberOfRanges(); ++i)
    strings.emplace_back(match.substring(string, i));
  return strings;
}

} // namespace

bool isMatchedByRegex(std::u16string_view string, std::u16string_view regex,
                      RKLRegexOptions options, std::optional<Range> range, ErrorPtr *error) {
  RegularExpressionPtr re = compiled(regex, options, error);
  return re && re->hasMatchInString(string, MatchingNoOptions, range);
}

Range rangeOfRegex(std::u16string_view string, std::u16string_view regex, int64_t capture) {
  return rangeOfRegex(string, regex, RKLNoOptions, std::nullopt, capture);
}

Range rangeOfRegex(std::u16string_view string, std::u16string_view regex, RKLRegexOptions options,
                   std::optional<Range> range, int64_t capture, ErrorPtr *error) {
  auto match = firstMatch(string, regex, options, range, error);
  if (!match || capture < 0)
    return Range{NotFound, 0};
  return match->rangeAtIndex(static_cast<size_t>(capture));
}

std::optional<std::u16string> stringByMatching(std::u16string_view string,
                                               std::u16string_view regex, int64_t capture) {
  return stringByMatching(string, regex, RKLNoOptions, std::nullopt, capture);
}

std::optional<std::u16string> stringByMatching(std::u16string_view string,
                                               std::u16string_view regex, RKLRegexOptions options,
                                               std::optional<Range> range, int64_t capture,
                                               ErrorPtr *error) {
  Range r = rangeOfRegex(string, regex, options, range, capture, error);
  if (r.location == NotFound)
    return std::nullopt;
  return std::u16string(slice(string, r));
}

std::vector<std::u16string> componentsMatchedByRegex(std::u16string_view string,
                                                     std::u16string_view regex, int64_t capture) {
  return componentsMatchedByRegex(string, regex, RKLNoOptions, std::nullopt, capture);
}

std::vector<std::u16string> componentsMatchedByRegex(std::u16string_view string,
                                                     std::u16string_view regex,
                                                     RKLRegexOptions options,
                                                     std::optional<Range> range, int64_t capture,
                                                     ErrorPtr *error) {
  std::vector<std::u16string> strings;
  RegularExpressionPtr re = compiled(regex, options, error);
  if (!re || capture < 0)
    return strings;
  re->enumerateMatchesInString(
      string, MatchingNoOptions, range, [&](const TextCheckingResult &match, bool &) {
        strings.emplace_back(match.substring(string, static_cast<size_t>(capture)));
      });
  return strings;
}

std::vector<std::u16string> captureComponentsMatchedByRegex(std::u16string_view string,
                                                            std::u16string_view regex,
                                                            RKLRegexOptions options,
                                                            std::optional<Range> range,
                                                            ErrorPtr *error) {
  auto match = firstMatch(string, regex, options, range, error);
  if (!match)
    return {};
  return captureStrings(*match, string);
}

std::vector<std::vector<std::u16string>>
arrayOfCaptureComponentsMatchedByRegex(std::u16string_view string, std::u16string_view regex,
                                       RKLRegexOptions options, std::optional<Range> range,
                                       ErrorPtr *error) {
  std::vector<std::vector<std::u16string>> all;
  RegularExpressionPtr re = compiled(regex, options, error);
  if (!re)
    return all;
  re->enumerateMatchesInString(string, MatchingNoOptions, range,
                               [&](const TextCheckingResult &match, bool &) {
                                 all.push_back(captureStrings(match, string));
                               });
  return all;
}

std::u16string stringByReplacingOccurrencesOfRegex(std::u16string_view string,
                                                   std::u16string_view regex,
                                                   std::u16string_view replacement,
                                                   RKLRegexOptions options,
                                                   std::optional<Range> range, ErrorPtr *error) {
  RegularExpressionPtr re = compiled(regex, options, error);
  if (!re)
    return std::u16string(string);
  return re->stringByReplacingMatchesInString(string, MatchingNoOptions, range, replacement);
}

uint64_t replaceOccurrencesOfRegex(std::u16string &string, std::u16string_view regex,
                                   std::u16string_view replacement, RKLRegexOptions options,
                                   std::optional<Range> range, ErrorPtr *error) {
  RegularExpressionPtr re = compiled(regex, options, error);
  if (!re)
    return 0;
  return re->replaceMatchesInString(string, MatchingNoOptions, range, replacement);
}

std::vector<std::u16string>
componentsSeparatedByRegex(std::u16string_view string, std::u16string_view regex,
                           RKLRegexOptions options, std::optional<Range> range, ErrorPtr *error) {
  RegularExpressionPtr re = compiled(regex, options, error);
  if (!re)
    return {};
  return re->componentsSeparatedByMatchesInString(string, MatchingNoOptions, range);
}

bool enumerateStringsMatchedByRegex(std::u16string_view string, std::u16string_view regex,
                                    RKLRegexOptions options, std::optional<Range> range,
                                    ErrorPtr *error, const MatchBlock &block) {
  RegularExpressionPtr re = compiled(regex, options, error);
  if (!re)
    return false;
  re->enumerateMatchesInString(string, MatchingNoOptions, range, block);
  return true;
}

bool enumerateStringsMatchedByRegex(std::u16string_view string, std::u16string_view regex,
                                    const MatchBlock &block) {
  return enumerateStringsMatchedByRegex(string, regex, RKLNoOptions, std::nullopt, nullptr, block);
}

int64_t captureCountForRegex(std::u16string_view regex, RKLRegexOptions options, ErrorPtr *error) {
  RegularExpressionPtr re = compiled(regex, options, error);
  return re ? static_cast<int64_t>(re->numberOfCaptureGroups()) : -1;
}

bool isRegexValid(std::u16string_view regex, RKLRegexOptions options, ErrorPtr *error) {
  return compiled(regex, options, error) != nullptr;
}

} // namespace vl::ns
