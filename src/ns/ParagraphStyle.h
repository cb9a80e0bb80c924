// ParagraphStyle and MutableParagraphStyle: the values that lay out a paragraph (alignment,
// spacing, indents, line heights, tab stops, writing direction, header level, lists).
#pragma once

#include "ns/KeyedArchiver.h"
#include "ns/Object.h"
#include "ns/TextList.h"
#include "ns/TextTab.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace vl::ns {

class ParagraphStyle;
class MutableParagraphStyle;
using ParagraphStylePtr = std::shared_ptr<ParagraphStyle>;
using MutableParagraphStylePtr = std::shared_ptr<MutableParagraphStyle>;

/// Writing directions, as the platform numbers them.
enum WritingDirection : int64_t {
  WritingDirectionNatural = -1,
  WritingDirectionLeftToRight = 0,
  WritingDirectionRightToLeft = 1,
};

/// An immutable set of paragraph values, compared by value. Share it freely: copy() of an
/// immutable style is the style itself; mutableCopy() makes a MutableParagraphStyle.
///
/// A new style has the platform's default values (those of defaultParagraphStyle()):
/// alignment natural, twelve left tab stops every 28 points from 28 to 336,
/// tighteningFactorForTruncation 0.05, writing direction natural, every other value 0 and
/// no lists.
///
/// Equality compares every value exactly (the two float values as floats), tab stops and
/// lists element by element. The hash reads a few scalars and the counts, so it is cheap.
///
/// Keyed coding keys: "alignment", "lineSpacing", "paragraphSpacing",
/// "paragraphSpacingBefore", "headIndent", "tailIndent", "firstLineHeadIndent",
/// "minimumLineHeight", "maximumLineHeight", "lineHeightMultiple", "defaultTabInterval"
/// (doubles, alignment an integer), "tabStops" (array of TextTab), "baseWritingDirection",
/// "headerLevel" (integers), "hyphenationFactor", "tighteningFactorForTruncation" (floats),
/// "textLists" (array of TextList). A key missing from an archive keeps the default value.
class ParagraphStyle : public Object, public Coding {
public:
  ParagraphStyle();
  ParagraphStyle(const ParagraphStyle &) = default;
  ParagraphStyle &operator=(const ParagraphStyle &) = default;

  /// The platform's default style: one shared immutable instance.
  static const ParagraphStylePtr &defaultParagraphStyle();

  VL_OBJECT(NSParagraphStyle)

  TextAlignment alignment() const { return alignment_; }
  double lineSpacing() const { return lineSpacing_; }
  double paragraphSpacing() const { return paragraphSpacing_; }
  double paragraphSpacingBefore() const { return paragraphSpacingBefore_; }
  double headIndent() const { return headIndent_; }
  /// Positive: from the left margin; zero or negative: from the right margin.
  double tailIndent() const { return tailIndent_; }
  double firstLineHeadIndent() const { return firstLineHeadIndent_; }
  double minimumLineHeight() const { return minimumLineHeight_; }
  double maximumLineHeight() const { return maximumLineHeight_; }
  double lineHeightMultiple() const { return lineHeightMultiple_; }
  double defaultTabInterval() const { return defaultTabInterval_; }
  /// Sorted by location; stops at the same location keep the order they were added in.
  const std::vector<TextTabPtr> &tabStops() const { return tabStops_; }
  WritingDirection baseWritingDirection() const { return baseWritingDirection_; }
  float hyphenationFactor() const { return hyphenationFactor_; }
  float tighteningFactorForTruncation() const { return tighteningFactorForTruncation_; }
  /// The heading level for HTML-like export; 0 means none.
  int64_t headerLevel() const { return headerLevel_; }
  /// The lists the paragraph belongs to, outermost first.
  const std::vector<TextListPtr> &textLists() const { return textLists_; }

  bool isEqual(const Object &other) const override;
  size_t hash() const override;
  /// The values in one line, for diagnostics.
  std::u16string description() const override;
  /// An immutable style: this one when it is immutable and shared, else a new one.
  ObjectPtr copy() const override;
  /// A new MutableParagraphStyle with the same values. Tab stops and lists are shared with
  /// this style, as the platform's copies share them.
  ObjectPtr mutableCopy() const override;
  /// Typed forms of copy() and mutableCopy().
  ParagraphStylePtr immutableCopy() const;
  MutableParagraphStylePtr mutableParagraphStyle() const;

  void encodeWithCoder(KeyedArchiver &coder) const override;
  void initWithCoder(KeyedUnarchiver &coder) override;

protected:
  TextAlignment alignment_ = TextAlignmentNatural;
  WritingDirection baseWritingDirection_ = WritingDirectionNatural;
  double lineSpacing_ = 0;
  double paragraphSpacing_ = 0;
  double paragraphSpacingBefore_ = 0;
  double headIndent_ = 0;
  double tailIndent_ = 0;
  double firstLineHeadIndent_ = 0;
  double minimumLineHeight_ = 0;
  double maximumLineHeight_ = 0;
  double lineHeightMultiple_ = 0;
  double defaultTabInterval_ = 0;
  float hyphenationFactor_ = 0;
  float tighteningFactorForTruncation_ = 0.05f;
  int64_t headerLevel_ = 0;
  std::vector<TextTabPtr> tabStops_;
  std::vector<TextListPtr> textLists_;
};

/// A paragraph style with a setter for each value. Setters store what they are given;
/// they post nothing. Null tab stops and lists are ignored.
class MutableParagraphStyle : public ParagraphStyle {
public:
  MutableParagraphStyle() = default;
  explicit MutableParagraphStyle(const ParagraphStyle &other) : ParagraphStyle(other) {}
  static MutableParagraphStylePtr create() { return std::make_shared<MutableParagraphStyle>(); }

  VL_OBJECT(NSMutableParagraphStyle)

  void setAlignment(TextAlignment alignment) { alignment_ = alignment; }
  void setLineSpacing(double value) { lineSpacing_ = value; }
  void setParagraphSpacing(double value) { paragraphSpacing_ = value; }
  void setParagraphSpacingBefore(double value) { paragraphSpacingBefore_ = value; }
  void setHeadIndent(double value) { headIndent_ = value; }
  void setTailIndent(double value) { tailIndent_ = value; }
  void setFirstLineHeadIndent(double value) { firstLineHeadIndent_ = value; }
  void setMinimumLineHeight(double value) { minimumLineHeight_ = value; }
  void setMaximumLineHeight(double value) { maximumLineHeight_ = value; }
  void setLineHeightMultiple(double value) { lineHeightMultiple_ = value; }
  void setDefaultTabInterval(double value) { defaultTabInterval_ = value; }
  void setBaseWritingDirection(WritingDirection value) { baseWritingDirection_ = value; }
  void setHyphenationFactor(float value) { hyphenationFactor_ = value; }
  void setTighteningFactorForTruncation(float value) { tighteningFactorForTruncation_ = value; }
  void setHeaderLevel(int64_t value) { headerLevel_ = value; }
  /// Replaces the tab stops, sorting them by location (stable); null entries are dropped.
  void setTabStops(std::vector<TextTabPtr> tabStops);
  /// Inserts `tab` after the stops at or before its location. Linear in the stop count.
  void addTabStop(TextTabPtr tab);
  /// Removes the first stop equal to `tab`; nothing when there is none.
  void removeTabStop(const TextTab &tab);
  void setTextLists(std::vector<TextListPtr> lists);
  /// Takes every value of `other`.
  void setParagraphStyle(const ParagraphStyle &other);

  /// A new immutable style with the same values (so copyOf, which keeps the static type,
  /// must not be used on a mutable style: take immutableCopy()).
  ObjectPtr copy() const override;
};

} // namespace vl::ns
