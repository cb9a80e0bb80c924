// Walking text by lines, paragraphs, characters, words and sentences, and word boundaries,
// over ICU break iterators that are kept per thread and set on the range in question only.
#include "ns/Assert.h"
#include "ns/String.h"

#include <unicode/brkiter.h>
#include <unicode/locid.h>
#include <unicode/ubrk.h>
#include <unicode/utext.h>
#include <unicode/utf16.h>

#include <array>
#include <vector>

namespace vl::ns {

namespace {
enum class BreakKind { Character, Word, Sentence };

// Making a break iterator loads rules and costs far more than using one, so each thread
// keeps those it made. A lease takes one out of the thread's pool and gives it back, so a
// block that counts words while a walk is going on gets an iterator of its own.
class BreakLease {
public:
  explicit BreakLease(BreakKind kind) : kind_(kind) {
    auto &pool = pools()[static_cast<size_t>(kind)];
    if (!pool.empty()) {
      iterator_ = std::move(pool.back());
      pool.pop_back();
    } else {
      UErrorCode status = U_ZERO_ERROR;
      const icu::Locale &root = icu::Locale::getRoot();
      switch (kind) {
      case BreakKind::Character:
        iterator_.reset(icu::BreakIterator::createCharacterInstance(root, status));
        break;
      case BreakKind::Word:
        iterator_.reset(icu::BreakIterator::createWordInstance(root, status));
        break;
      case BreakKind::Sentence:
        iterator_.reset(icu::BreakIterator::createSentenceInstance(root, status));
        break;
      }
      VL_ASSERT(U_SUCCESS(status) && iterator_, "Cannot create an ICU break iterator");
    }
  }
  ~BreakLease() {
    utext_close(&text_);
    pools()[static_cast<size_t>(kind_)].push_back(std::move(iterator_));
  }
  BreakLease(const BreakLease &) = delete;
  BreakLease &operator=(const BreakLease &) = delete;

  /// Sets the iterator on `text`, which must outlive the lease. Opening the UText costs
  /// nothing in proportion to the text; boundaries are then found near where they are asked.
  icu::BreakIterator &on(std::u16string_view text) {
    VL_ASSERT(text.size() <= static_cast<size_t>(INT32_MAX), "Text too long to break");
    UErrorCode status = U_ZERO_ERROR;
    utext_openUChars(&text_, text.data(), static_cast<int64_t>(text.size()), &status);
    iterator_->setText(&text_, status);
    VL_ASSERT(U_SUCCESS(status), "Cannot set the text of an ICU break iterator");
    return *iterator_;
  }

private:
  using Pool = std::vector<std::unique_ptr<icu::BreakIterator>>;
  static std::array<Pool, 3> &pools() {
    thread_local std::array<Pool, 3> pools;
    return pools;
  }

  BreakKind kind_;
  std::unique_ptr<icu::BreakIterator> iterator_;
  UText text_ = UTEXT_INITIALIZER;
};

bool isWordStatus(int32_t status) {
  return status >= UBRK_WORD_NONE_LIMIT;
}

// Scripts written without spaces are cut into words by dictionary, over the whole run of
// such characters, so a boundary inside a run may move when the run changes anywhere.
bool insideDictionaryRun(std::u16string_view text, uint64_t i) {
  static const CharacterSet dictionary = CharacterSet::characterSetWithPattern(
      u"[[:Han:][:Hiragana:][:Katakana:][:Thai:][:Lao:][:Khmer:][:Myanmar:]\\u3005\\u30FC"
      u"\\uFF70\\uFF9E\\uFF9F]");
  if (i == 0 || i >= text.size())
    return false;
  UChar32 before, after;
  U16_GET(text.data(), 0, i - 1, text.size(), before);
  U16_GET(text.data(), 0, i, text.size(), after);
  return dictionary.characterIsMember(static_cast<char32_t>(before)) &&
         dictionary.characterIsMember(static_cast<char32_t>(after));
}

Range clip(std::u16string_view text, Range range) {
  uint64_t location = std::min<uint64_t>(range.location, text.size());
  return Range{location, std::min<uint64_t>(range.length, text.size() - location)};
}

struct Reporter {
  std::u16string_view text;
  bool wantsSubstring;
  const SubstringBlock &block;
  bool stop = false;

  void operator()(Range substring, Range enclosing) {
    block(wantsSubstring ? text.substr(substring.location, substring.length)
                         : std::u16string_view(),
          substring, enclosing, stop);
  }
};

// Lines or paragraphs that meet the range, whole, with their terminators in the enclosing
// range.
void enumerateLines(std::u16string_view text, Range range, bool paragraphs, bool reverse,
                    Reporter &report) {
  auto bounds = [&](uint64_t at, uint64_t &start, uint64_t &end, uint64_t &contentsEnd) {
    if (paragraphs)
      getParagraphStart(text, &start, &end, &contentsEnd, Range{at, 0});
    else
      getLineStart(text, &start, &end, &contentsEnd, Range{at, 0});
  };
  uint64_t start, end, contentsEnd;
  if (!reverse) {
    for (uint64_t at = range.location; at < range.max() && !report.stop; at = end) {
      bounds(at, start, end, contentsEnd);
      report(Range{start, contentsEnd - start}, Range{start, end - start});
    }
  } else {
    for (uint64_t at = range.max(); at > range.location && !report.stop; at = start) {
      bounds(at - 1, start, end, contentsEnd);
      report(Range{start, contentsEnd - start}, Range{start, end - start});
    }
  }
}

void enumerateSegments(std::u16string_view text, Range range, BreakKind kind, bool reverse,
                       Reporter &report) {
  std::u16string_view part = text.substr(range.location, range.length);
  BreakLease lease(kind);
  icu::BreakIterator &it = lease.on(part);
  const uint64_t base = range.location;
  auto emit = [&](uint64_t start, uint64_t end, uint64_t enclosingEnd) {
    uint64_t contentsEnd = end;
    if (kind == BreakKind::Sentence) {
      const CharacterSet &blanks = CharacterSet::whitespaceAndNewlineCharacterSet();
      while (contentsEnd > start && blanks.characterIsMember(part[contentsEnd - 1]))
        --contentsEnd;
    }
    report(Range{base + start, contentsEnd - start}, Range{base + start, enclosingEnd - start});
  };

  if (kind != BreakKind::Word) {
    if (!reverse) {
      for (int32_t s = it.first(), e = it.next(); e != icu::BreakIterator::DONE && !report.stop;
           s = e, e = it.next())
        emit(static_cast<uint64_t>(s), static_cast<uint64_t>(e), static_cast<uint64_t>(e));
    } else {
      for (int32_t e = it.last(), s = it.previous(); s != icu::BreakIterator::DONE && !report.stop;
           e = s, s = it.previous())
        emit(static_cast<uint64_t>(s), static_cast<uint64_t>(e), static_cast<uint64_t>(e));
    }
    return;
  }

  // Words: only segments of letters, numbers, kana or ideographs count; each one's enclosing
  // range runs on to the start of the next word (or the end of the range).
  if (!reverse) {
    int32_t wordStart = -1, wordEnd = -1;
    for (int32_t s = it.first(), e = it.next(); e != icu::BreakIterator::DONE;
         s = e, e = it.next()) {
      if (!isWordStatus(it.getRuleStatus()))
        continue;
      if (wordStart >= 0) {
        emit(static_cast<uint64_t>(wordStart), static_cast<uint64_t>(wordEnd),
             static_cast<uint64_t>(s));
        if (report.stop)
          return;
      }
      wordStart = s;
      wordEnd = e;
    }
    if (wordStart >= 0)
      emit(static_cast<uint64_t>(wordStart), static_cast<uint64_t>(wordEnd), part.size());
  } else {
    uint64_t nextWordStart = part.size();
    int32_t e = it.last();
    while (!report.stop) {
      int32_t status = it.getRuleStatus();
      int32_t s = it.previous();
      if (s == icu::BreakIterator::DONE)
        break;
      if (isWordStatus(status)) {
        emit(static_cast<uint64_t>(s), static_cast<uint64_t>(e), nextWordStart);
        nextWordStart = static_cast<uint64_t>(s);
      }
      e = s;
    }
  }
}
} // namespace

void enumerateSubstringsInRange(std::u16string_view text, Range range, uint32_t options,
                                const SubstringBlock &block) {
  range = clip(text, range);
  if (range.empty() || !block)
    return;
  Reporter report{text, !(options & StringEnumerationSubstringNotRequired), block};
  bool reverse = options & StringEnumerationReverse;
  switch (options & 0xFF) {
  case StringEnumerationByLines:
    enumerateLines(text, range, false, reverse, report);
    break;
  case StringEnumerationByParagraphs:
    enumerateLines(text, range, true, reverse, report);
    break;
  case StringEnumerationByComposedCharacterSequences:
    enumerateSegments(text, range, BreakKind::Character, reverse, report);
    break;
  case StringEnumerationByWords:
    enumerateSegments(text, range, BreakKind::Word, reverse, report);
    break;
  case StringEnumerationBySentences:
    enumerateSegments(text, range, BreakKind::Sentence, reverse, report);
    break;
  default:
    break;
  }
}

uint64_t nextWordFromIndex(std::u16string_view text, uint64_t index, bool forward) {
  const uint64_t length = text.size();
  if (forward ? index >= length : index == 0)
    return forward ? length : 0;
  index = std::min(index, length);
  BreakLease lease(BreakKind::Word);
  icu::BreakIterator &it = lease.on(text);
  // Within a dictionary run the answer is the run's edge, so that recounting the words
  // between two answers gives what a count of the whole text would.
  if (forward) {
    // Past any blanks and punctuation, to the end of the word at or after the index.
    for (int32_t e = it.following(static_cast<int32_t>(index)); e != icu::BreakIterator::DONE;
         e = it.next()) {
      if (isWordStatus(it.getRuleStatus())) {
        while (e != icu::BreakIterator::DONE && insideDictionaryRun(text, static_cast<uint64_t>(e)))
          e = it.next();
        return e == icu::BreakIterator::DONE ? length : static_cast<uint64_t>(e);
      }
    }
    return length;
  }
  // Back over any blanks and punctuation, to the start of the word that holds index - 1 or
  // comes before it.
  it.following(static_cast<int32_t>(index - 1));
  for (;;) {
    int32_t status = it.getRuleStatus();
    int32_t s = it.previous();
    if (s == icu::BreakIterator::DONE)
      return 0;
    if (isWordStatus(status)) {
      while (s != icu::BreakIterator::DONE && insideDictionaryRun(text, static_cast<uint64_t>(s)))
        s = it.previous();
      return s == icu::BreakIterator::DONE ? 0 : static_cast<uint64_t>(s);
    }
  }
}

uint64_t countWords(std::u16string_view text, Range range) {
  range = clip(text, range);
  if (range.empty())
    return 0;
  BreakLease lease(BreakKind::Word);
  icu::BreakIterator &it = lease.on(text.substr(range.location, range.length));
  uint64_t count = 0;
  for (int32_t e = it.next(); e != icu::BreakIterator::DONE; e = it.next())
    count += isWordStatus(it.getRuleStatus());
  return count;
}

} // namespace vl::ns
