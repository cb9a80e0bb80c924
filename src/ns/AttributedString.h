// AttributedString: UTF-16 text with runs of attribute dictionaries (the platform's
// NSAttributedString), read through three primitives.
#pragma once

#include "ns/Dictionary.h"
#include "ns/KeyedArchiver.h"
#include "ns/Object.h"
#include "ns/Range.h"
#include "ns/TextRuns.h"
#include "ns/Value.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace vl::ns {

class AttributedString;
class MutableAttributedString;
using AttributedStringPtr = std::shared_ptr<AttributedString>;
using MutableAttributedStringPtr = std::shared_ptr<MutableAttributedString>;

/// Option bits of enumerateAttribute and enumerateAttributesInRange, as the platform
/// numbers them.
enum AttributedStringEnumerationOptions : uint32_t {
  AttributedStringEnumerationReverse = 2,
  AttributedStringEnumerationLongestEffectiveRangeNotRequired = 0x100000,
};

/// Receives one attribute's value over a range; set `stop` to end the walk.
using AttributeEnumerationBlock = std::function<void(const Value &value, Range range, bool &stop)>;
/// Receives the attributes over a range; set `stop` to end the walk.
using AttributesEnumerationBlock =
    std::function<void(const ConstDictionaryPtr &attributes, Range range, bool &stop)>;

/// Text with attributes. Reading rests on three virtual primitives: length(), string() and
/// attributesAtIndex(index, effectiveRange); every other read is written once on top of them.
/// The class keeps its own text and runs (see TextRuns). A subclass that keeps its text
/// elsewhere (forwarding to another string, or showing a slice of one) overrides all three
/// primitives, and then serves every operation; for speed it may also override
/// characterAtIndex, substringWithRange and paragraphRangeForRange, which otherwise go
/// through string(). Overriding one overload hides the others in C++: such a subclass adds
/// `using AttributedString::attributesAtIndex;`.
///
/// Attribute dictionaries are shared and must not be changed: attributesAtIndex answers the
/// dictionary the run holds, never a copy; take a mutableCopy to build new attributes.
///
/// Queries at an index equal to length() answer empty attributes (a nil value) with the
/// effective range {length, 0}, so walks that reach the end stop there. An index or range
/// beyond length() fails an internal check, as the platform raises its range exception.
class AttributedString : public Object, public Coding {
public:
  VL_OBJECT(NSAttributedString)

  /// Empty text.
  AttributedString() = default;
  /// initWithString: the text without attributes.
  explicit AttributedString(std::u16string_view string);
  /// initWithString:attributes: the text with `attributes` (nil: none) over all of it.
  AttributedString(std::u16string_view string, ConstDictionaryPtr attributes);
  /// initWithAttributedString: the text and runs of `other`, read through its primitives
  /// (O(n); a plain copy when `other` keeps its own storage).
  AttributedString(const AttributedString &other);
  AttributedString &operator=(const AttributedString &) = delete;
  ~AttributedString() override;

  static AttributedStringPtr create() { return std::make_shared<AttributedString>(); }
  static AttributedStringPtr create(std::u16string_view string) {
    return std::make_shared<AttributedString>(string);
  }
  static AttributedStringPtr create(std::u16string_view string, ConstDictionaryPtr attributes) {
    return std::make_shared<AttributedString>(string, std::move(attributes));
  }
  static AttributedStringPtr create(const AttributedString &other) {
    return std::make_shared<AttributedString>(other);
  }

  // Primitives.

  /// The number of UTF-16 units.
  virtual uint64_t length() const;
  /// The whole text, valid until the next change. The first call after an edit may cost
  /// O(n) (the text is made contiguous); hot paths use characterAtIndex, substringWithRange
  /// and paragraphRangeForRange instead.
  virtual std::u16string_view string() const;
  /// The attributes at `index` (never null) and, if `effectiveRange` is not null, a range
  /// around it over which they hold. O(log runs), O(1) when walking runs in order.
  virtual ConstDictionaryPtr attributesAtIndex(uint64_t index, Range *effectiveRange) const;

  // Reads a subclass may make faster.

  /// The unit at `index`; an index at or past length() fails a check.
  virtual char16_t characterAtIndex(uint64_t index) const;
  /// The units of `range`; a range past length() fails a check.
  virtual std::u16string substringWithRange(Range range) const;
  /// The whole paragraphs holding `range` (LF, CR, CRLF and U+2029 end a paragraph; U+2028
  /// does not). Costs the paragraphs concerned.
  virtual Range paragraphRangeForRange(Range range) const;

  // Reads built on the primitives.

  /// The attributes at `index` and, if asked, the full range of equal attributes around it,
  /// clipped to `inRange` (which must lie inside the text).
  ConstDictionaryPtr attributesAtIndex(uint64_t index, Range *longestEffectiveRange,
                                       Range inRange) const;
  /// The value of attribute `name` at `index` (nil if absent) and, if asked, a range around it
  /// over which it holds.
  Value attribute(std::u16string_view name, uint64_t index, Range *effectiveRange) const;
  /// The same with the full run of equal values (Value::isEqual), clipped to `inRange`.
  Value attribute(std::u16string_view name, uint64_t index, Range *longestEffectiveRange,
                  Range inRange) const;
  /// A new string with the text and attributes of `range`.
  AttributedStringPtr attributedSubstringFromRange(Range range) const;
  /// Calls `block` for each run of values of `name` inside `range` (nil included), in order
  /// or, with AttributedStringEnumerationReverse, from the end. Runs are the longest runs of
  /// equal values unless AttributedStringEnumerationLongestEffectiveRangeNotRequired is given.
  /// The block may change the string inside the range it is given: the walk goes on after
  /// that range, shifted by the change in length.
  void enumerateAttribute(std::u16string_view name, Range range, uint32_t options,
                          const AttributeEnumerationBlock &block) const;
  /// The same for whole attribute dictionaries.
  void enumerateAttributesInRange(Range range, uint32_t options,
                                  const AttributesEnumerationBlock &block) const;
  /// The end of the word at or after `index` (forward), or the start of the word before it,
  /// as ns::nextWordFromIndex answers on the text; clamps to 0 and length(). Reads only the
  /// paragraph around `index` (more when no word is found there).
  uint64_t nextWordFromIndex(uint64_t index, bool forward) const;
  /// True when some run holds AttachmentAttributeName.
  bool containsAttachments() const;
  /// Equal text and, unit by unit, equal attributes.
  bool isEqualToAttributedString(const AttributedString &other) const;

  bool isEqual(const Object &other) const override;
  size_t hash() const override { return length(); }
  /// The platform's form: each run's text followed by its attributes in braces.
  std::u16string description() const override;
  /// An AttributedString with the same text and attributes.
  ObjectPtr copy() const override;
  /// A MutableAttributedString with the same text and attributes.
  ObjectPtr mutableCopy() const override;

  /// Keys: "NSString" (the text), "NSAttributeInfo" (the run lengths), "NSAttributes" (one
  /// dictionary per run; runs sharing a dictionary share it in the archive too).
  void encodeWithCoder(KeyedArchiver &coder) const override;
  /// Restores text and runs; an archive whose runs do not cover the text exactly is corrupt.
  void initWithCoder(KeyedUnarchiver &coder) override;

protected:
  /// The engine when this object's primitives read it, i.e. when no subclass keeps the text
  /// elsewhere; null otherwise. Lets the reads above skip the virtual primitives.
  const TextRuns *ownStorage() const { return length() == storage_.length() ? &storage_ : nullptr; }
  /// Fails a check unless `range` lies inside a text of `length` units; `operation` names
  /// the caller in the message.
  static void checkRange(Range range, uint64_t length, const char *operation);
  /// The runs over `range` (inside the text), clipped to it, read through the primitives.
  std::vector<TextRuns::Run> runsInRange(Range range) const;

  TextRuns storage_;
};

} // namespace vl::ns
