// The synthetic novel: pseudo-English prose from a fixed seed, paragraph by paragraph.
#include "support/Novel.h"

#include "ns/AttributeNames.h"
#include "ns/Dictionary.h"
#include "ns/String.h"

#include <algorithm>
#include <array>

namespace vl::bench {

bool StandInFont::isEqual(const ns::Object &other) const {
  auto *font = dynamic_cast<const StandInFont *>(&other);
  return font && font->bold == bold && font->italic == italic;
}

namespace {

// splitmix64: the same numbers on every platform and library, unlike std distributions.
class Random {
public:
  explicit Random(uint64_t seed) : state_(seed) {}
  uint64_t next() {
    uint64_t z = (state_ += 0x9e3779b97f4a7c15ULL);
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9ULL;
    z = (z ^ (z >> 27)) * 0x94d049bb133111ebULL;
    return z ^ (z >> 31);
  }
  uint64_t below(uint64_t n) { return n ? next() % n : 0; }
  bool chance(double p) { return static_cast<double>(next() >> 11) * 0x1.0p-53 < p; }

private:
  uint64_t state_;
};

const char *const CommonWords[] = {
    "the",  "and",  "a",    "of",   "to",    "was",   "he",   "she",  "it",   "in",
    "that", "her",  "his",  "had",  "you",   "I",     "not",  "for",  "on",   "with",
    "as",   "at",   "but",  "said", "they",  "be",    "from", "all",  "one",  "there",
    "what", "so",   "were", "have", "been",  "out",   "up",   "into", "then", "this",
    "no",   "them", "like", "my",   "me",    "we",    "him",  "by",   "if",   "would",
    "when", "an",   "or",   "who",  "about", "could", "back", "only", "down", "over"};

// Invented words of two to five syllables, some capitalized like names.
std::vector<std::u16string> inventWords(Random &random, size_t count) {
  static const char *const onsets[] = {"b",  "c",  "d",  "f",  "g",  "h",  "l",  "m",
                                       "n",  "p",  "r",  "s",  "t",  "v",  "w",  "br",
                                       "ch", "cl", "dr", "gr", "sh", "st", "th", "tr"};
  static const char *const vowels[] = {"a", "e", "i", "o", "u", "ea", "ou", "ai", "ie"};
  static const char *const codas[] = {"", "", "", "n", "r", "s", "t", "l", "nd", "st", "ck"};
  std::vector<std::u16string> words;
  words.reserve(count);
  while (words.size() < count) {
    std::u16string word;
    for (uint64_t s = 1 + random.below(2); s > 0; --s) {
      for (const char *part :
           {onsets[random.below(std::size(onsets))], vowels[random.below(std::size(vowels))],
            codas[random.below(std::size(codas))]})
        for (; *part; ++part)
          word += static_cast<char16_t>(*part);
    }
    if (random.chance(0.05))
      word[0] = static_cast<char16_t>(word[0] - u'a' + u'A');
    words.push_back(std::move(word));
  }
  return words;
}

struct Span {
  uint64_t location, length;
  bool bold, italic;
};

enum Kind { Body, Heading, Quote };

} // namespace

std::vector<ns::AttributedStringPtr> novelParagraphs(const NovelOptions &options) {
  Random random(options.seed);
  std::vector<std::u16string> invented = inventWords(random, 3000);

  std::vector<ns::Value> styles = options.styles;
  for (const char16_t *name : {u"Body Text", u"Chapter Heading", u"Block Quote"})
    if (styles.size() < 3)
      styles.emplace_back(std::make_shared<StandInStyle>(name));
  auto attributesFor = options.attributes;
  if (!attributesFor) {
    std::array<ns::Value, 4> fonts;
    for (int i = 0; i < 4; ++i)
      fonts[i] = ns::Value(std::make_shared<StandInFont>(i & 2, i & 1));
    attributesFor = [fonts](const ns::Value &style, bool bold, bool italic) {
      auto d = ns::Dictionary::create();
      d->setObject(style, NovelStyleAttributeName);
      d->setObject(fonts[(bold ? 2 : 0) + (italic ? 1 : 0)], ns::FontAttributeName);
      return ns::ConstDictionaryPtr(d);
    };
  }
  // One dictionary per style and emphasis, as a reader reuses a style's attributes.
  std::array<std::array<ns::ConstDictionaryPtr, 4>, 3> attributes;
  for (int s = 0; s < 3; ++s)
    for (int e = 0; e < 4; ++e)
      attributes[s][e] = attributesFor(styles[s], e & 2, e & 1);

  // Paragraph kinds and word counts adding up to the words asked for.
  const uint64_t count = std::max<uint64_t>(options.paragraphs, 1);
  std::vector<Kind> kinds(count, Body);
  std::vector<uint64_t> lengths(count, 3);
  uint64_t headings = 0;
  for (uint64_t i = 0; i < count; ++i) {
    if (i % 40 == 0) {
      kinds[i] = Heading;
      ++headings;
    } else if (random.chance(0.03)) {
      kinds[i] = Quote;
    }
  }
  uint64_t prose = options.words > 3 * headings ? options.words - 3 * headings : count;
  uint64_t mean = std::max<uint64_t>(prose / std::max<uint64_t>(count - headings, 1), 1);
  uint64_t total = 3 * headings;
  for (uint64_t i = 0; i < count; ++i)
    if (kinds[i] != Heading)
      total += lengths[i] = 1 + random.below(2 * mean - 1);
  while (total != options.words && options.words >= count) {
    uint64_t i = random.below(count);
    if (kinds[i] == Heading)
      continue;
    if (total < options.words) {
      ++lengths[i];
      ++total;
    } else if (lengths[i] > 1) {
      --lengths[i];
      --total;
    }
  }

  // Emphasis spans add two runs each; style changes add the rest. A span starts at a word
  // that is not in a span already, and covers 1.5 more words on average.
  double baseline = 2.0 * static_cast<double>(headings) + 2.0 * 0.03 * static_cast<double>(count);
  double spans = std::max(0.0, (static_cast<double>(options.runs) - baseline) / 2.0);
  double words = static_cast<double>(options.words);
  double spanChance = std::clamp(spans / std::max(words - 1.5 * spans, 1.0), 0.0, 1.0);

  std::vector<ns::AttributedStringPtr> paragraphs;
  paragraphs.reserve(count);
  uint64_t chapter = 0;
  for (uint64_t p = 0; p < count; ++p) {
    std::u16string text;
    std::vector<Span> emphasis;
    if (kinds[p] == Heading) {
      text = u"Chapter " + ns::u16(std::to_string(++chapter)) + u" ";
      std::u16string title = invented[random.below(invented.size())];
      title[0] = static_cast<char16_t>(title[0] & ~0x20);
      text += title;
    } else {
      bool dialogue = kinds[p] == Body && random.chance(0.25);
      if (dialogue)
        text += u'\u201C';
      bool sentenceStart = true;
      uint64_t spanLeft = 0;
      for (uint64_t w = 0; w < lengths[p]; ++w) {
        std::u16string word;
        if (random.chance(0.32)) {
          for (const char *c = CommonWords[random.below(std::size(CommonWords))]; *c; ++c)
            word += static_cast<char16_t>(*c);
        } else {
          word = invented[random.below(invented.size())];
        }
        if (sentenceStart && word[0] >= u'a' && word[0] <= u'z')
          word[0] = static_cast<char16_t>(word[0] - u'a' + u'A');
        if (spanLeft == 0 && random.chance(spanChance)) {
          spanLeft = std::min<uint64_t>(1 + random.below(4), lengths[p] - w);
          // Bold 40%, italic 50%, both 10%.
          uint64_t kind = random.below(10);
          emphasis.push_back(Span{text.size(), 0, kind < 4 || kind == 9, kind >= 4});
        }
        text += word;
        if (spanLeft > 0 && --spanLeft == 0)
          emphasis.back().length = text.size() - emphasis.back().location;
        sentenceStart = false;
        if (w + 1 == lengths[p]) {
          text += random.chance(0.9) ? u'.' : random.chance(0.5) ? u'?' : u'!';
        } else if (random.chance(0.08)) {
          text += random.chance(0.7) ? u',' : u'.';
          sentenceStart = text.back() == u'.';
        }
        if (w + 1 < lengths[p])
          text += u' ';
      }
      if (dialogue)
        text += u'\u201D';
    }
    text += u'\n';
    int style = kinds[p];
    auto paragraph = ns::MutableAttributedString::create(text, attributes[style][0]);
    for (const Span &span : emphasis)
      if (span.length)
        paragraph->setAttributes(attributes[style][(span.bold ? 2 : 0) + (span.italic ? 1 : 0)],
                                 ns::Range{span.location, span.length});
    paragraphs.push_back(std::move(paragraph));
  }
  return paragraphs;
}

ns::MutableAttributedStringPtr makeNovel(const NovelOptions &options) {
  auto novel = ns::MutableAttributedString::create();
  for (const ns::AttributedStringPtr &paragraph : novelParagraphs(options))
    novel->appendAttributedString(*paragraph);
  return novel;
}

} // namespace vl::bench
