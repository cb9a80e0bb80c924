// CharacterSet: sets of code points over ICU's UnicodeSet, with a bitmap of the
// Basic Multilingual Plane so that membership of a UTF-16 unit is one bit test.
#include "ns/Assert.h"
#include "ns/String.h"

#include <unicode/uniset.h>
#include <unicode/unistr.h>
#include <unicode/utf16.h>

#include <algorithm>
#include <array>
#include <utility>

namespace vl::ns {

struct CharacterSet::Impl {
  icu::UnicodeSet set;
  std::array<uint64_t, 0x10000 / 64> bmp{};

  // Rebuilds the bitmap after the set changed; costs one pass over the set's ranges.
  void sync() {
    bmp.fill(0);
    int32_t count = set.getRangeCount();
    for (int32_t r = 0; r < count; ++r) {
      UChar32 first = set.getRangeStart(r);
      if (first > 0xFFFF)
        break;
      UChar32 last = std::min<UChar32>(set.getRangeEnd(r), 0xFFFF);
      for (UChar32 c = first; c <= last;) {
        // Whole words at a time where the range covers them.
        if ((c & 63) == 0 && c + 63 <= last) {
          bmp[static_cast<size_t>(c) >> 6] = ~uint64_t{0};
          c += 64;
        } else {
          bmp[static_cast<size_t>(c) >> 6] |= uint64_t{1} << (c & 63);
          ++c;
        }
      }
    }
  }
};

CharacterSet CharacterSet::characterSetWithPattern(std::u16string_view pattern) {
  UErrorCode status = U_ZERO_ERROR;
  CharacterSet out;
  out.impl_->set.applyPattern(
      icu::UnicodeString(pattern.data(), static_cast<int32_t>(pattern.size())), status);
  VL_ASSERT(U_SUCCESS(status), "Bad character set pattern");
  out.impl_->sync();
  return out;
}

CharacterSet::CharacterSet() : impl_(std::make_unique<Impl>()) {}
CharacterSet::~CharacterSet() = default;
CharacterSet::CharacterSet(const CharacterSet &other)
    : impl_(other.impl_ ? std::make_unique<Impl>(*other.impl_) : std::make_unique<Impl>()) {}
CharacterSet &CharacterSet::operator=(const CharacterSet &other) {
  if (this != &other)
    impl_ = other.impl_ ? std::make_unique<Impl>(*other.impl_) : std::make_unique<Impl>();
  return *this;
}
// A moved-from set stays usable and empty.
CharacterSet::CharacterSet(CharacterSet &&other) noexcept
    : impl_(std::exchange(other.impl_, nullptr)) {}
CharacterSet &CharacterSet::operator=(CharacterSet &&other) noexcept {
  if (this != &other)
    impl_ = std::exchange(other.impl_, nullptr);
  return *this;
}

const CharacterSet &CharacterSet::whitespaceCharacterSet() {
  static const CharacterSet set = characterSetWithPattern(u"[\\p{Zs}\\u0009]");
  return set;
}

const CharacterSet &CharacterSet::whitespaceAndNewlineCharacterSet() {
  static const CharacterSet set =
      characterSetWithPattern(u"[\\p{Zs}\\u0009-\\u000D\\u0085\\u2028\\u2029]");
  return set;
}

const CharacterSet &CharacterSet::newlineCharacterSet() {
  static const CharacterSet set =
      characterSetWithPattern(u"[\\u000A-\\u000D\\u0085\\u2028\\u2029]");
  return set;
}

const CharacterSet &CharacterSet::letterCharacterSet() {
  static const CharacterSet set = characterSetWithPattern(u"[\\p{L}\\p{M}]");
  return set;
}

const CharacterSet &CharacterSet::alphanumericCharacterSet() {
  static const CharacterSet set = characterSetWithPattern(u"[\\p{L}\\p{M}\\p{N}]");
  return set;
}

const CharacterSet &CharacterSet::decimalDigitCharacterSet() {
  static const CharacterSet set = characterSetWithPattern(u"[\\p{Nd}]");
  return set;
}

const CharacterSet &CharacterSet::punctuationCharacterSet() {
  static const CharacterSet set = characterSetWithPattern(u"[\\p{P}]");
  return set;
}

const CharacterSet &CharacterSet::symbolCharacterSet() {
  static const CharacterSet set = characterSetWithPattern(u"[\\p{S}]");
  return set;
}

const CharacterSet &CharacterSet::uppercaseLetterCharacterSet() {
  static const CharacterSet set = characterSetWithPattern(u"[\\p{Lu}\\p{Lt}]");
  return set;
}

const CharacterSet &CharacterSet::lowercaseLetterCharacterSet() {
  static const CharacterSet set = characterSetWithPattern(u"[\\p{Ll}]");
  return set;
}

const CharacterSet &CharacterSet::controlCharacterSet() {
  static const CharacterSet set = characterSetWithPattern(u"[\\p{Cc}\\p{Cf}]");
  return set;
}

CharacterSet CharacterSet::characterSetWithCharactersInString(std::u16string_view characters) {
  CharacterSet out;
  out.addCharactersInString(characters);
  return out;
}

CharacterSet CharacterSet::characterSetWithRange(char32_t first, uint32_t length) {
  CharacterSet out;
  if (length > 0 && first <= 0x10FFFF) {
    char32_t last =
        static_cast<char32_t>(std::min<uint64_t>(uint64_t{first} + length - 1, 0x10FFFF));
    out.impl_->set.add(static_cast<UChar32>(first), static_cast<UChar32>(last));
    out.impl_->sync();
  }
  return out;
}

bool CharacterSet::characterIsMember(char32_t c) const {
  if (!impl_)
    return false;
  if (c < 0x10000)
    return (impl_->bmp[c >> 6] >> (c & 63)) & 1;
  return c <= 0x10FFFF && impl_->set.contains(static_cast<UChar32>(c));
}

CharacterSet CharacterSet::invertedSet() const {
  CharacterSet out;
  if (impl_)
    out.impl_->set = impl_->set;
  out.impl_->set.complement();
  out.impl_->sync();
  return out;
}

CharacterSet &CharacterSet::formUnionWithCharacterSet(const CharacterSet &other) {
  if (!impl_)
    impl_ = std::make_unique<Impl>();
  if (other.impl_) {
    impl_->set.addAll(other.impl_->set);
    for (size_t i = 0; i < impl_->bmp.size(); ++i)
      impl_->bmp[i] |= other.impl_->bmp[i];
  }
  return *this;
}

CharacterSet &CharacterSet::addCharactersInString(std::u16string_view characters) {
  if (!impl_)
    impl_ = std::make_unique<Impl>();
  for (size_t i = 0; i < characters.size();) {
    UChar32 c;
    U16_NEXT(characters.data(), i, characters.size(), c);
    impl_->set.add(c);
    if (c < 0x10000)
      impl_->bmp[static_cast<size_t>(c) >> 6] |= uint64_t{1} << (c & 63);
  }
  return *this;
}

CharacterSet &CharacterSet::removeCharactersInString(std::u16string_view characters) {
  if (!impl_)
    impl_ = std::make_unique<Impl>();
  for (size_t i = 0; i < characters.size();) {
    UChar32 c;
    U16_NEXT(characters.data(), i, characters.size(), c);
    impl_->set.remove(c);
    if (c < 0x10000)
      impl_->bmp[static_cast<size_t>(c) >> 6] &= ~(uint64_t{1} << (c & 63));
  }
  return *this;
}

namespace {
// Index just past the last code point at the start of `text` that is in `set`.
size_t skipLeading(std::u16string_view text, const CharacterSet &set) {
  size_t i = 0;
  while (i < text.size()) {
    size_t next = i;
    UChar32 c;
    U16_NEXT(text.data(), next, text.size(), c);
    if (!set.characterIsMember(static_cast<char32_t>(c)))
      break;
    i = next;
  }
  return i;
}

// Index of the end of what remains after dropping code points in `set` from the end.
size_t skipTrailing(std::u16string_view text, size_t start, const CharacterSet &set) {
  size_t end = text.size();
  while (end > start) {
    size_t prev = end;
    UChar32 c;
    U16_PREV(text.data(), start, prev, c);
    if (!set.characterIsMember(static_cast<char32_t>(c)))
      break;
    end = prev;
  }
  return end;
}
} // namespace

std::u16string stringByTrimmingCharactersInSet(std::u16string_view text, const CharacterSet &set) {
  size_t start = skipLeading(text, set);
  size_t end = skipTrailing(text, start, set);
  return std::u16string(text.substr(start, end - start));
}

std::u16string trimmed(std::u16string_view text) {
  return stringByTrimmingCharactersInSet(text, CharacterSet::whitespaceAndNewlineCharacterSet());
}

} // namespace vl::ns
