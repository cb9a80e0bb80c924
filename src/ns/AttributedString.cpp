// Attributed string reads: the primitives over the engine, and everything else on top of the
// primitives so that subclasses keeping their text elsewhere serve every operation.
#include "ns/AttributedString.h"

#include "ns/Array.h"
#include "ns/Assert.h"
#include "ns/AttributeNames.h"
#include "ns/MutableAttributedString.h"
#include "ns/String.h"

#include <algorithm>

namespace vl::ns {

namespace {

bool sameAttributes(const ConstDictionaryPtr &a, const ConstDictionaryPtr &b) {
  return a == b || a->isEqual(*b);
}

// A range from a primitive that does not hold `position` (a faulty subclass) would stall a
// walk; one unit keeps it moving.
Range progressing(Range range, uint64_t position) {
  return range.contains(position) ? range : Range{position, 1};
}

// Grows `effective`, which holds `index`, over the neighbouring ranges for which
// `same(position, &range)` holds, inside `inRange`, and clips it to `inRange`.
template <class Same>
Range growRange(uint64_t index, Range effective, Range inRange, const Same &same) {
  effective = progressing(effective, index);
  uint64_t start = effective.location, end = effective.max();
  Range r;
  while (start > inRange.location && same(start - 1, &r))
    start = std::min(r.location, start - 1);
  while (end < inRange.max() && same(end, &r))
    end = std::max(r.max(), end + 1);
  return IntersectionRange(Range{start, end - start}, inRange);
}

// Walks `range` by the ranges `at` answers, forwards or backwards, calling `block` with each
// value. `at(position, effectiveRange, inRange, longest)` reads one value. The block may
// change the string inside the range it was given.
template <class T, class At, class Block>
void walk(const AttributedString &string, Range range, uint32_t options, const At &at,
          const Block &block) {
  const bool longest = !(options & AttributedStringEnumerationLongestEffectiveRangeNotRequired);
  bool stop = false;
  if (options & AttributedStringEnumerationReverse) {
    uint64_t position = range.max();
    while (position > range.location && !stop) {
      Range inRange{range.location, position - range.location};
      Range effective;
      T value = at(position - 1, &effective, inRange, longest);
      effective = progressing(IntersectionRange(effective, inRange), position - 1);
      block(value, effective, stop);
      position = std::min(effective.location, string.length());
    }
    return;
  }
  uint64_t position = range.location;
  uint64_t end = range.max();
  while (position < end && !stop) {
    Range inRange{position, end - position};
    Range effective;
    T value = at(position, &effective, inRange, longest);
    effective = progressing(IntersectionRange(effective, inRange), position);
    uint64_t before = string.length();
    block(value, effective, stop);
    uint64_t after = string.length();
    // Go on after the range given, shifted by what the block inserted or deleted there.
    end = std::min(end + after - before, after);
    position = effective.max() + after - before;
  }
}

} // namespace

AttributedString::AttributedString(std::u16string_view string) : storage_(string, nullptr) {}

AttributedString::AttributedString(std::u16string_view string, ConstDictionaryPtr attributes)
    : storage_(string, attributes) {}

AttributedString::AttributedString(const AttributedString &other) : Object(other) {
  if (const TextRuns *own = other.ownStorage()) {
    storage_ = *own;
    return;
  }
  storage_ = TextRuns(other.string(), other.runsInRange(Range{0, other.length()}));
}

AttributedString::~AttributedString() = default;

void AttributedString::checkRange(Range range, uint64_t length, const char *operation) {
  if (range.location <= length && range.length <= length - range.location) [[likely]]
    return;
  std::string message = operation;
  message += ": range ";
  message += toUTF8(StringFromRange(range));
  message += " out of bounds; string length ";
  message += std::to_string(length);
  detail::assertionFailed(message, __FILE__, __LINE__);
}

// Primitives.

uint64_t AttributedString::length() const {
  return storage_.length();
}

std::u16string_view AttributedString::string() const {
  return storage_.view();
}

ConstDictionaryPtr AttributedString::attributesAtIndex(uint64_t index,
                                                       Range *effectiveRange) const {
  uint64_t n = storage_.length();
  if (index < n)
    return storage_.attributesAt(index, effectiveRange);
  checkRange(Range{index, 0}, n, "attributesAtIndex:effectiveRange:");
  if (effectiveRange)
    *effectiveRange = Range{n, 0};
  return TextRuns::emptyAttributes();
}

// Reads a subclass may make faster.

char16_t AttributedString::characterAtIndex(uint64_t index) const {
  uint64_t n = length();
  if (index >= n)
    checkRange(Range{index, 1}, n, "characterAtIndex:");
  if (n == storage_.length())
    return storage_.characterAt(index);
  return string()[index];
}

std::u16string AttributedString::substringWithRange(Range range) const {
  checkRange(range, length(), "substringWithRange:");
  if (const TextRuns *own = ownStorage())
    return own->substring(range);
  return std::u16string(string().substr(range.location, range.length));
}

Range AttributedString::paragraphRangeForRange(Range range) const {
  uint64_t n = length();
  checkRange(range, n, "paragraphRangeForRange:");
  if (const TextRuns *own = ownStorage())
    return own->paragraphRange(range);
  return detail::paragraphRange(n, range, [this](uint64_t i) { return characterAtIndex(i); });
}

// Reads built on the primitives.

ConstDictionaryPtr AttributedString::attributesAtIndex(uint64_t index, Range *longestEffectiveRange,
                                                       Range inRange) const {
  uint64_t n = length();
  checkRange(inRange, n, "attributesAtIndex:longestEffectiveRange:inRange:");
  Range effective;
  ConstDictionaryPtr attributes = attributesAtIndex(index, &effective);
  if (!longestEffectiveRange)
    return attributes;
  if (index >= n) {
    *longestEffectiveRange = Range{n, 0};
    return attributes;
  }
  *longestEffectiveRange = growRange(index, effective, inRange, [&](uint64_t i, Range *r) {
    return sameAttributes(attributes, attributesAtIndex(i, r));
  });
  return attributes;
}

Value AttributedString::attribute(std::u16string_view name, uint64_t index,
                                  Range *effectiveRange) const {
  return attributesAtIndex(index, effectiveRange)->objectForKey(name);
}

Value AttributedString::attribute(std::u16string_view name, uint64_t index,
                                  Range *longestEffectiveRange, Range inRange) const {
  uint64_t n = length();
  checkRange(inRange, n, "attribute:atIndex:longestEffectiveRange:inRange:");
  Range effective;
  Value value = attribute(name, index, &effective);
  if (!longestEffectiveRange)
    return value;
  if (index >= n) {
    *longestEffectiveRange = Range{n, 0};
    return value;
  }
  *longestEffectiveRange = growRange(index, effective, inRange, [&](uint64_t i, Range *r) {
    return value.isEqual(attributesAtIndex(i, r)->objectForKey(name));
  });
  return value;
}

AttributedStringPtr AttributedString::attributedSubstringFromRange(Range range) const {
  checkRange(range, length(), "attributedSubstringFromRange:");
  auto result = std::make_shared<AttributedString>();
  if (const TextRuns *own = ownStorage()) {
    result->storage_ = TextRuns(own->substring(range), own->runsInRange(range));
    return result;
  }
  result->storage_ = TextRuns(substringWithRange(range), runsInRange(range));
  return result;
}

std::vector<TextRuns::Run> AttributedString::runsInRange(Range range) const {
  if (const TextRuns *own = ownStorage())
    return own->runsInRange(range);
  std::vector<TextRuns::Run> runs;
  for (uint64_t position = range.location; position < range.max();) {
    Range effective;
    ConstDictionaryPtr attributes = attributesAtIndex(position, &effective);
    effective = progressing(IntersectionRange(effective, range), position);
    runs.push_back(TextRuns::Run{effective.max() - position, std::move(attributes)});
    position = effective.max();
  }
  return runs;
}

void AttributedString::enumerateAttribute(std::u16string_view name, Range range, uint32_t options,
                                          const AttributeEnumerationBlock &block) const {
  checkRange(range, length(), "enumerateAttribute:inRange:options:usingBlock:");
  walk<Value>(
      *this, range, options,
      [&](uint64_t position, Range *effective, Range inRange, bool longest) {
        return longest ? attribute(name, position, effective, inRange)
                       : attribute(name, position, effective);
      },
      block);
}

void AttributedString::enumerateAttributesInRange(Range range, uint32_t options,
                                                  const AttributesEnumerationBlock &block) const {
  checkRange(range, length(), "enumerateAttributesInRange:options:usingBlock:");
  walk<ConstDictionaryPtr>(
      *this, range, options,
      [&](uint64_t position, Range *effective, Range inRange, bool longest) {
        return longest ? attributesAtIndex(position, effective, inRange)
                       : attributesAtIndex(position, effective);
      },
      block);
}

uint64_t AttributedString::nextWordFromIndex(uint64_t index, bool forward) const {
  const uint64_t n = length();
  index = std::min(index, n);
  if (forward ? index >= n : index == 0)
    return forward ? n : 0;
  // Word breaks never cross a paragraph end, so the paragraph around the index (at most
  // Reach units each way) is context enough. A result on the window's edge may lie beyond
  // it: then the window grows and the search runs again.
  constexpr uint64_t Reach = 4096;
  uint64_t start = index, end = index;
  while (start > 0 && index - start < Reach && !isParagraphSeparator(characterAtIndex(start - 1)))
    --start;
  while (end < n && end - index < Reach && !isParagraphSeparator(characterAtIndex(end)))
    ++end;
  end = std::min(n, end + 1);
  for (;;) {
    std::u16string window = substringWithRange(Range{start, end - start});
    uint64_t found = start + ns::nextWordFromIndex(window, index - start, forward);
    uint64_t grow = std::max<uint64_t>(end - start, 64);
    if (forward && found == end && end < n)
      end = std::min(n, end + grow);
    else if (!forward && found == start && start > 0)
      start -= std::min(start, grow);
    else
      return found;
  }
}

bool AttributedString::containsAttachments() const {
  uint64_t n = length();
  for (uint64_t position = 0; position < n;) {
    Range effective;
    if (attributesAtIndex(position, &effective)->containsKey(AttachmentAttributeName))
      return true;
    position = progressing(effective, position).max();
  }
  return false;
}

bool AttributedString::isEqualToAttributedString(const AttributedString &other) const {
  if (this == &other)
    return true;
  uint64_t n = length();
  if (n != other.length() || string() != other.string())
    return false;
  for (uint64_t position = 0; position < n;) {
    Range mine, theirs;
    if (!sameAttributes(attributesAtIndex(position, &mine),
                        other.attributesAtIndex(position, &theirs)))
      return false;
    position = std::min(progressing(mine, position).max(), progressing(theirs, position).max());
  }
  return true;
}

bool AttributedString::isEqual(const Object &other) const {
  auto *string = dynamic_cast<const AttributedString *>(&other);
  return string && isEqualToAttributedString(*string);
}

std::u16string AttributedString::description() const {
  std::u16string out;
  uint64_t n = length();
  for (uint64_t position = 0; position < n;) {
    Range effective;
    ConstDictionaryPtr attributes = attributesAtIndex(position, &effective);
    effective = progressing(IntersectionRange(effective, Range{0, n}), position);
    out += substringWithRange(Range{position, effective.max() - position});
    out += attributes->description();
    position = effective.max();
  }
  return out;
}

ObjectPtr AttributedString::copy() const {
  return std::make_shared<AttributedString>(*this);
}

ObjectPtr AttributedString::mutableCopy() const {
  return std::make_shared<MutableAttributedString>(*this);
}

} // namespace vl::ns

namespace vl::ns {

void AttributedString::encodeWithCoder(KeyedArchiver &coder) const {
  coder.encodeObject(Value(std::u16string(string())), u"NSString");
  auto lengths = Array::create();
  auto attributes = Array::create();
  for (const TextRuns::Run &run : runsInRange(Range{0, length()})) {
    lengths->addObject(Value(run.length));
    // The archiver only reads the dictionaries; it stores a shared one once.
    attributes->addObject(Value(std::const_pointer_cast<Dictionary>(run.attributes)));
  }
  coder.encodeObject(lengths, u"NSAttributeInfo");
  coder.encodeObject(attributes, u"NSAttributes");
}

void AttributedString::initWithCoder(KeyedUnarchiver &coder) {
  std::u16string text = coder.decodeObjectForKey(u"NSString").string();
  ArrayPtr lengths = coder.decodeObjectForKey(u"NSAttributeInfo").array();
  ArrayPtr attributes = coder.decodeObjectForKey(u"NSAttributes").array();
  std::vector<TextRuns::Run> runs;
  uint64_t covered = 0;
  if (lengths && attributes && lengths->count() == attributes->count()) {
    for (size_t i = 0; i < lengths->count(); ++i) {
      int64_t runLength = lengths->objectAtIndex(i).integerValue();
      if (runLength <= 0 || static_cast<uint64_t>(runLength) > text.size() - covered)
        break;
      covered += static_cast<uint64_t>(runLength);
      runs.push_back({static_cast<uint64_t>(runLength), attributes->objectAtIndex(i).dictionary()});
    }
  }
  if (covered != text.size()) {
    coder.failWithError(Error::errorWithDescription(CocoaErrorDomain, CoderReadCorruptError,
                                                    u"The attributed string's runs do not cover "
                                                    u"its text."));
    return;
  }
  storage_ = TextRuns(text, std::move(runs));
}

VL_REGISTER_CLASS(AttributedString);
VL_REGISTER_CLASS(MutableAttributedString);

} // namespace vl::ns
