// Tab stops: construction from types and alignments, value equality and coding.
#include "ns/TextTab.h"

#include "ns/String.h"

#include <bit>
#include <functional>

namespace vl::ns {

VL_REGISTER_CLASS(TextTab);

TextTab::TextTab(TextTabType type, double location) : type_(type), location_(location) {}

TextTabPtr TextTab::create(TextTabType type, double location) {
  return std::make_shared<TextTab>(type, location);
}

TextTabPtr TextTab::createWithTextAlignment(TextAlignment alignment, double location,
                                            const DictionaryPtr &options) {
  TextTabType type = LeftTabStopType;
  if (alignment == TextAlignmentRight)
    type = RightTabStopType;
  else if (alignment == TextAlignmentCenter)
    type = CenterTabStopType;
  else if (options && options->containsKey(TabColumnTerminatorsAttributeName))
    type = DecimalTabStopType;
  auto tab = std::make_shared<TextTab>(type, location);
  if (options && !options->empty())
    tab->options_ = std::static_pointer_cast<Dictionary>(options->copy());
  return tab;
}

TextAlignment TextTab::alignment() const {
  switch (type_) {
  case RightTabStopType:
  case DecimalTabStopType:
    return TextAlignmentRight;
  case CenterTabStopType:
    return TextAlignmentCenter;
  default:
    return TextAlignmentLeft;
  }
}

bool TextTab::isEqual(const Object &other) const {
  if (this == &other)
    return true;
  auto *tab = dynamic_cast<const TextTab *>(&other);
  if (!tab || tab->type_ != type_ || tab->location_ != location_)
    return false;
  bool mine = options_ && !options_->empty();
  bool theirs = tab->options_ && !tab->options_->empty();
  if (mine != theirs)
    return false;
  return !mine || options_->isEqual(*tab->options_);
}

size_t TextTab::hash() const {
  // 0.0 and -0.0 are equal, so they must hash alike.
  uint64_t bits = location_ == 0 ? 0 : std::bit_cast<uint64_t>(location_);
  return static_cast<size_t>(bits ^ (bits >> 29) ^ static_cast<uint64_t>(type_));
}

std::u16string TextTab::description() const {
  static constexpr char16_t letters[] = u"LRCD";
  char16_t letter = type_ >= 0 && type_ <= 3 ? letters[type_] : u'?';
  return Object::description() + u" " + stringFromDouble(location_) + letter;
}

ObjectPtr TextTab::copy() const {
  if (auto self = weak_from_this().lock())
    return std::const_pointer_cast<Object>(self);
  return std::make_shared<TextTab>(*this);
}

void TextTab::encodeWithCoder(KeyedArchiver &coder) const {
  coder.encodeInteger(type_, u"type");
  coder.encodeDouble(location_, u"location");
  if (options_ && !options_->empty())
    coder.encodeObject(Value(options_), u"options");
}

void TextTab::initWithCoder(KeyedUnarchiver &coder) {
  type_ = static_cast<TextTabType>(coder.decodeIntegerForKey(u"type"));
  location_ = coder.decodeDoubleForKey(u"location");
  options_ = coder.decodeObjectForKey(u"options").dictionary();
}

} // namespace vl::ns
