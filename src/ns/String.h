// String operations of the platform over UTF-16 text: conversion, case, search, paragraphs,
// words, lenient numbers, printf-style formatting and identifiers.
#pragma once

#include "ns/Range.h"
#include "ns/Value.h"

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vl::ns {

// Conversion at the I/O edges.

/// UTF-16 to UTF-8; an unpaired surrogate becomes U+FFFD.
std::string toUTF8(std::u16string_view text);
/// UTF-8 to UTF-16; malformed bytes become U+FFFD.
std::u16string fromUTF8(std::string_view text);
/// UTF-8 to UTF-16, or false (leaving `out` alone) when the bytes are not valid UTF-8.
bool fromUTF8Strict(std::string_view text, std::u16string &out);
/// ASCII literal helper: u16("abc") without a conversion library.
std::u16string u16(std::string_view ascii);

// Case, in the root locale.

/// Full mappings ("straße" gives "STRASSE"), so the length may change.
std::u16string uppercaseString(std::u16string_view text);
std::u16string lowercaseString(std::u16string_view text);
/// Each word's first character title case and the rest lower case. A word is a run of
/// letters, marks and digits, an apostrophe between letters included ("Don't", "3rd").
std::u16string capitalizedString(std::u16string_view text);
/// The full case folding of code point `c` into `out`; answers the units written (1 to 3).
/// A code point that does not fold is copied as it is.
int foldCodePoint(char32_t c, char16_t out[4]);
/// Compares the full case foldings, in code point order.
ComparisonResult caseInsensitiveCompare(std::u16string_view a, std::u16string_view b);
/// Plain comparison by UTF-16 units.
ComparisonResult compare(std::u16string_view a, std::u16string_view b);

// Search.

/// Option bits of rangeOfString, as the platform numbers them.
enum StringCompareOptions : uint32_t {
  CaseInsensitiveSearch = 1,
  LiteralSearch = 2,
  BackwardsSearch = 4,
  AnchoredSearch = 8,
};

/// The first (or, with BackwardsSearch, last) occurrence of `needle` inside `range` of
/// `text` (the whole text when range is absent; clipped to it); {NotFound, 0} when there is
/// none or the needle is empty. AnchoredSearch only matches at the start (or end, when
/// backwards). CaseInsensitiveSearch compares by full case folding ("ß" matches "SS") and
/// answers the range in `text`; a match never covers part of a character's folding.
/// Composed and decomposed accents are not taken as equal, LiteralSearch or not.
Range rangeOfString(std::u16string_view text, std::u16string_view needle, uint32_t options = 0,
                    std::optional<Range> range = std::nullopt);
bool hasPrefix(std::u16string_view text, std::u16string_view prefix);
bool hasSuffix(std::u16string_view text, std::u16string_view suffix);
/// Every occurrence of `target` replaced by `replacement`.
std::u16string stringByReplacingOccurrencesOfString(std::u16string_view text,
                                                    std::u16string_view target,
                                                    std::u16string_view replacement);
/// The pieces between separators; the whole text as one piece when the separator is
/// empty or absent.
std::vector<std::u16string> componentsSeparatedByString(std::u16string_view text,
                                                        std::u16string_view separator);

// Character sets, built once per process.

/// A set of Unicode code points. A moved-from set is empty and still usable.
class CharacterSet {
public:
  CharacterSet();
  ~CharacterSet();
  CharacterSet(const CharacterSet &);
  CharacterSet &operator=(const CharacterSet &);
  CharacterSet(CharacterSet &&) noexcept;
  CharacterSet &operator=(CharacterSet &&) noexcept;

  /// U+0020, U+0009 and the other horizontal blanks (Unicode Zs and tab).
  static const CharacterSet &whitespaceCharacterSet();
  /// Blanks plus line and paragraph ends (LF, VT, FF, CR, U+0085, U+2028, U+2029).
  static const CharacterSet &whitespaceAndNewlineCharacterSet();
  /// LF, VT, FF, CR, U+0085, U+2028, U+2029.
  static const CharacterSet &newlineCharacterSet();
  /// Unicode letters and marks (L*, M*).
  static const CharacterSet &letterCharacterSet();
  /// Letters, marks and numbers (L*, M*, N*).
  static const CharacterSet &alphanumericCharacterSet();
  /// Unicode decimal digits (Nd).
  static const CharacterSet &decimalDigitCharacterSet();
  /// Unicode punctuation (P*).
  static const CharacterSet &punctuationCharacterSet();
  /// Unicode symbols (S*).
  static const CharacterSet &symbolCharacterSet();
  /// Upper and title case letters (Lu, Lt).
  static const CharacterSet &uppercaseLetterCharacterSet();
  /// Lower case letters (Ll).
  static const CharacterSet &lowercaseLetterCharacterSet();
  /// Control and format characters (Cc, Cf).
  static const CharacterSet &controlCharacterSet();
  static CharacterSet characterSetWithCharactersInString(std::u16string_view characters);
  static CharacterSet characterSetWithRange(char32_t first, uint32_t length);
  /// A set from ICU's set syntax ("[\\p{L}_]"); a bad pattern is a programmer error and
  /// fails VL_ASSERT.
  static CharacterSet characterSetWithPattern(std::u16string_view pattern);

  /// One bit test for a code point of the Basic Multilingual Plane (any UTF-16 unit).
  bool characterIsMember(char32_t c) const;
  CharacterSet invertedSet() const;
  /// Changing a set costs a pass over its ranges; build sets once and keep them.
  CharacterSet &formUnionWithCharacterSet(const CharacterSet &other);
  CharacterSet &addCharactersInString(std::u16string_view characters);
  CharacterSet &removeCharactersInString(std::u16string_view characters);

private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

/// The pieces between characters of the set; each separator makes a cut, so two in a row
/// give an empty piece.
std::vector<std::u16string> componentsSeparatedByCharactersInSet(std::u16string_view text,
                                                                 const CharacterSet &separators);
std::u16string stringByTrimmingCharactersInSet(std::u16string_view text, const CharacterSet &set);
/// Trims whitespaceAndNewlineCharacterSet at both ends.
std::u16string trimmed(std::u16string_view text);

// Paragraphs and lines. A paragraph ends at LF, CR, CRLF or U+2029; U+2028 breaks a line
// inside a paragraph and does not end it. Lines also end at U+2028 and U+0085.

/// The whole paragraphs that hold `range`, their terminators included. A range that ends
/// just after a terminator does not reach into the next paragraph; an empty range at the
/// end of a text that ends with a terminator gives the empty last paragraph. The range is
/// clipped to the text. Costs the length of the paragraphs concerned.
Range paragraphRangeForRange(std::u16string_view text, Range range);
/// The platform's getParagraphStart:end:contentsEnd:forRange:; any pointer may be null.
void getParagraphStart(std::u16string_view text, uint64_t *start, uint64_t *end,
                       uint64_t *contentsEnd, Range range);
Range lineRangeForRange(std::u16string_view text, Range range);
void getLineStart(std::u16string_view text, uint64_t *start, uint64_t *end, uint64_t *contentsEnd,
                  Range range);
/// True for the UTF-16 units that end a paragraph (LF, CR, U+2029).
inline bool isParagraphSeparator(char16_t c) {
  return c == u'\n' || c == u'\r' || c == u'\u2029';
}

// Words.

/// Option bits of enumerateSubstringsInRange, as the platform numbers them.
enum StringEnumerationOptions : uint32_t {
  StringEnumerationByLines = 0,
  StringEnumerationByParagraphs = 1,
  StringEnumerationByComposedCharacterSequences = 2,
  StringEnumerationByWords = 3,
  StringEnumerationBySentences = 4,
  StringEnumerationReverse = 0x100,
  StringEnumerationSubstringNotRequired = 0x200,
  StringEnumerationLocalized = 0x400,
};

/// Receives each substring (empty when SubstringNotRequired), its range and its enclosing
/// range (with the separators that follow it); set `stop` to end the walk.
using SubstringBlock = std::function<void(std::u16string_view substring, Range substringRange,
                                          Range enclosingRange, bool &stop)>;

/// Walks `range` of `text` (clipped to it) by the unit the low byte of `options` names,
/// forwards or in reverse; an empty range walks nothing. Lines and paragraphs that meet the
/// range come whole, their terminators in the enclosing range. Composed characters, words
/// and sentences are found within the range alone (a word cut by its edge counts as a
/// word). Words come from ICU's word break rules, in the root locale whatever the
/// Localized bit says; only segments of letters, numbers, kana or ideographs are reported,
/// each with an enclosing range that runs on to the next word. A sentence's substring
/// leaves out its trailing blanks. Costs what the range holds: break iterators are kept
/// per thread and set on the range only. The block may itself walk other text.
void enumerateSubstringsInRange(std::u16string_view text, Range range, uint32_t options,
                                const SubstringBlock &block);

/// The platform's nextWordFromIndex:forward:, as option-arrow moves the caret. Forward: past
/// any blanks and punctuation at `index`, to the end of the word there (the text's length
/// when no word follows). Backward: to the start of the word that holds `index` - 1, or of
/// the last word before it (0 when there is none). In scripts cut into words by dictionary
/// (CJK, Thai) the answer is the edge of the whole run, so that recounting the words
/// between two answers agrees with a count of the whole text. Costs what it passes over.
uint64_t nextWordFromIndex(std::u16string_view text, uint64_t index, bool forward);

/// The number of words in `range` (clipped), as enumerateSubstringsInRange by words counts
/// them; costs what the range holds, never what the whole text holds.
uint64_t countWords(std::u16string_view text, Range range);

// Lenient numbers: leading blanks skipped, then an optional sign and digits; anything
// after is ignored; no digits give 0.

int64_t integerValue(std::u16string_view text);
int intValue(std::u16string_view text);
double doubleValue(std::u16string_view text);
float floatValue(std::u16string_view text);
/// True for a leading "Y", "y", "T", "t" or a digit 1-9 after blanks, signs and zeros.
bool boolValue(std::u16string_view text);
/// The shortest decimal form that reads back to the same double ("12", "0.1", "1e+21").
std::u16string stringFromDouble(double value);

// Formatting.

/// One argument of stringWithFormat. Built implicitly from numbers, strings and values.
class FormatArgument {
public:
  template <detail::PlainInteger T>
  FormatArgument(T i) : value_(i), isSigned_(std::is_signed_v<T>) {}
  FormatArgument(double d) : value_(d) {}
  FormatArgument(float f) : value_(static_cast<double>(f)) {}
  FormatArgument(bool b) : value_(static_cast<int64_t>(b)) {}
  FormatArgument(char16_t c) : value_(static_cast<uint64_t>(c)), isSigned_(false) {}
  FormatArgument(const char16_t *s) : value_(std::u16string(s)) {}
  FormatArgument(std::u16string_view s) : value_(std::u16string(s)) {}
  FormatArgument(const std::u16string &s) : value_(s) {}
  FormatArgument(Value v) : value_(std::move(v)) {}
  template <class T>
  requires std::derived_from<T, Object> FormatArgument(std::shared_ptr<T> o)
      : value_(std::move(o)) {}

  const Value &value() const { return value_; }
  bool isSigned() const { return isSigned_; }

private:
  Value value_;
  bool isSigned_ = true;
};

/// printf-style formatting with the platform's conversions: %@ (description of a value or
/// object, "(null)" for nil), %d %i %ld %lld %li %u %lu %llu %zu %zd (%d and %u are 32 bits
/// wide, as in C), %x %X %lx %o, %f %e %g %a with flags and precision (%1.3f, %2.1f), %c %C
/// (one UTF-16 unit), %s (the argument's string), %p, %%, widths, zero padding and "*"
/// ("%4.4x", "%02d"), and positional "%1$@". Numeric conversions take the argument's
/// integer or real value whatever its kind (3.7 with %ld gives 3, "42" with %d gives 42).
/// Missing arguments format as nil or 0; extra ones are ignored; an unknown conversion is
/// copied as written. Reals always use "." whatever the C locale says.
std::u16string stringWithFormat(std::u16string_view format,
                                std::initializer_list<FormatArgument> arguments);
template <class... Args> std::u16string format(std::u16string_view fmt, const Args &...arguments) {
  return stringWithFormat(fmt, {FormatArgument(arguments)...});
}

// Identifiers.

/// A fresh upper-case UUID string, "XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX" (libuuid).
std::u16string UUIDString();

} // namespace vl::ns
