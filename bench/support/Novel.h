// Novel: a deterministic synthetic novel for benchmarks: about 200,000 words (1.2 million
// UTF-16 units) in 10,000 styled paragraphs, with bold and italic spans.
#pragma once

#include "ns/AttributedString.h"
#include "ns/MutableAttributedString.h"
#include "ns/Object.h"
#include "ns/Value.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace vl::bench {

/// The attribute under which a paragraph's style sits (the library's paragraph style key).
inline constexpr std::u16string_view NovelStyleAttributeName = u"VLParagraphStyleAttribute";

/// Stands in for a paragraph style: an object with identity and a name.
class StandInStyle : public ns::Object {
public:
  VL_OBJECT(StandInStyle)
  explicit StandInStyle(std::u16string name) : name(std::move(name)) {}
  std::u16string name;
};

/// Stands in for a font: equal by value (bold and italic), as fonts are.
class StandInFont : public ns::Object {
public:
  VL_OBJECT(StandInFont)
  StandInFont(bool bold, bool italic) : bold(bold), italic(italic) {}
  bool isEqual(const ns::Object &other) const override;
  size_t hash() const override { return (bold ? 2 : 0) + (italic ? 1 : 0); }
  bool bold, italic;
};

struct NovelOptions {
  uint64_t words = 200000;
  uint64_t paragraphs = 10000;
  /// About how many attribute runs the whole novel has: emphasis spans are placed to reach it.
  uint64_t runs = 40000;
  uint64_t seed = 20240601;
  /// Paragraph styles: [0] body text, [1] chapter headings, [2] block quotes. Fewer than three
  /// (or none) are filled with StandInStyle objects.
  std::vector<ns::Value> styles;
  /// The attributes of a run. By default the style under NovelStyleAttributeName and a
  /// StandInFont under ns::FontAttributeName. Called once per combination.
  std::function<ns::ConstDictionaryPtr(const ns::Value &style, bool bold, bool italic)> attributes;
};

/// The novel's paragraphs in order, each its own attributed string ending in "\n". The same
/// options always give the same text and runs.
std::vector<ns::AttributedStringPtr> novelParagraphs(const NovelOptions &options = {});

/// The novel in one string, built by appending its paragraphs one by one.
ns::MutableAttributedStringPtr makeNovel(const NovelOptions &options = {});

} // namespace vl::bench
