// Paragraph styles: the platform defaults, value equality, copies, tab stop order and coding.
#include "ns/ParagraphStyle.h"

#include "ns/Array.h"
#include "ns/String.h"

#include <algorithm>
#include <bit>

namespace vl::ns {

VL_REGISTER_CLASS(ParagraphStyle);
VL_REGISTER_CLASS(MutableParagraphStyle);

namespace {

// The platform's default tab stops: left stops every 28 points, twelve of them.
const std::vector<TextTabPtr> &defaultTabStops() {
  static const std::vector<TextTabPtr> stops = [] {
    std::vector<TextTabPtr> out;
    for (int i = 1; i <= 12; ++i)
      out.push_back(TextTab::create(LeftTabStopType, 28.0 * i));
    return out;
  }();
  return stops;
}

template <class T> bool sameElements(const std::vector<T> &a, const std::vector<T> &b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](const T &x, const T &y) { return x == y || (x && y && x->isEqual(*y)); });
}

size_t mix(size_t seed, double value) {
  uint64_t bits = value == 0 ? 0 : std::bit_cast<uint64_t>(value);
  return (seed ^ (bits + 0x9e3779b97f4a7c15ULL + (seed << 6) + (seed >> 2)));
}

void sortTabStops(std::vector<TextTabPtr> &stops) {
  std::erase(stops, nullptr);
  std::stable_sort(stops.begin(), stops.end(), [](const TextTabPtr &a, const TextTabPtr &b) {
    return a->location() < b->location();
  });
}

template <class T> ArrayPtr arrayOf(const std::vector<std::shared_ptr<T>> &items) {
  auto array = Array::create();
  for (const auto &item : items)
    array->addObject(Value(item));
  return array;
}

template <class T> std::vector<std::shared_ptr<T>> itemsOf(const Value &value) {
  std::vector<std::shared_ptr<T>> out;
  if (auto array = value.array())
    for (const Value &item : *array)
      if (auto typed = item.as<T>())
        out.push_back(std::move(typed));
  return out;
}

} // namespace

ParagraphStyle::ParagraphStyle() : tabStops_(defaultTabStops()) {}

const ParagraphStylePtr &ParagraphStyle::defaultParagraphStyle() {
  static const ParagraphStylePtr style = std::make_shared<ParagraphStyle>();
  return style;
}

bool ParagraphStyle::isEqual(const Object &other) const {
  if (this == &other)
    return true;
  auto *o = dynamic_cast<const ParagraphStyle *>(&other);
  return o && alignment_ == o->alignment_ && baseWritingDirection_ == o->baseWritingDirection_ &&
         lineSpacing_ == o->lineSpacing_ && paragraphSpacing_ == o->paragraphSpacing_ &&
         paragraphSpacingBefore_ == o->paragraphSpacingBefore_ && headIndent_ == o->headIndent_ &&
         tailIndent_ == o->tailIndent_ && firstLineHeadIndent_ == o->firstLineHeadIndent_ &&
         minimumLineHeight_ == o->minimumLineHeight_ &&
         maximumLineHeight_ == o->maximumLineHeight_ &&
         lineHeightMultiple_ == o->lineHeightMultiple_ &&
         defaultTabInterval_ == o->defaultTabInterval_ &&
         hyphenationFactor_ == o->hyphenationFactor_ &&
         tighteningFactorForTruncation_ == o->tighteningFactorForTruncation_ &&
         headerLevel_ == o->headerLevel_ && sameElements(tabStops_, o->tabStops_) &&
         sameElements(textLists_, o->textLists_);
}

size_t ParagraphStyle::hash() const {
  size_t h = static_cast<size_t>(alignment_) * 31 + tabStops_.size();
  h = mix(h, headIndent_);
  h = mix(h, firstLineHeadIndent_);
  h = mix(h, tailIndent_);
  h = mix(h, paragraphSpacing_);
  return h ^ (textLists_.size() << 8) ^ static_cast<size_t>(headerLevel_ << 12);
}

std::u16string ParagraphStyle::description() const {
  auto number = [](double v) { return stringFromDouble(v); };
  std::u16string tabs;
  for (const auto &tab : tabStops_) {
    static constexpr char16_t letters[] = u"LRCD";
    int64_t t = tab->tabStopType();
    tabs += (tabs.empty() ? u"" : u" ") + number(tab->location());
    tabs += t >= 0 && t <= 3 ? letters[t] : u'?';
  }
  std::u16string lists;
  for (const auto &list : textLists_)
    lists += (lists.empty() ? u"" : u" ") + list->markerFormat();
  return u"Alignment " + number(alignment_) + u", LineSpacing " + number(lineSpacing_) +
         u", ParagraphSpacing " + number(paragraphSpacing_) + u", ParagraphSpacingBefore " +
         number(paragraphSpacingBefore_) + u", HeadIndent " + number(headIndent_) +
         u", TailIndent " + number(tailIndent_) + u", FirstLineHeadIndent " +
         number(firstLineHeadIndent_) + u", LineHeight " + number(minimumLineHeight_) + u"/" +
         number(maximumLineHeight_) + u", LineHeightMultiple " + number(lineHeightMultiple_) +
         u", DefaultTabInterval " + number(defaultTabInterval_) + u", Tabs (" + tabs +
         u"), BaseWritingDirection " + number(baseWritingDirection_) + u", HyphenationFactor " +
         number(hyphenationFactor_) + u", TighteningFactor " +
         number(tighteningFactorForTruncation_) + u", HeaderLevel " +
         number(static_cast<double>(headerLevel_)) + u", Lists (" + lists + u")";
}

ObjectPtr ParagraphStyle::copy() const {
  if (auto self = weak_from_this().lock())
    return std::const_pointer_cast<Object>(self);
  return std::make_shared<ParagraphStyle>(*this);
}

ObjectPtr ParagraphStyle::mutableCopy() const {
  return std::make_shared<MutableParagraphStyle>(*this);
}

ParagraphStylePtr ParagraphStyle::immutableCopy() const {
  return std::static_pointer_cast<ParagraphStyle>(copy());
}

MutableParagraphStylePtr ParagraphStyle::mutableParagraphStyle() const {
  return std::make_shared<MutableParagraphStyle>(*this);
}

void ParagraphStyle::encodeWithCoder(KeyedArchiver &coder) const {
  coder.encodeInteger(alignment_, u"alignment");
  coder.encodeDouble(lineSpacing_, u"lineSpacing");
  coder.encodeDouble(paragraphSpacing_, u"paragraphSpacing");
  coder.encodeDouble(paragraphSpacingBefore_, u"paragraphSpacingBefore");
  coder.encodeDouble(headIndent_, u"headIndent");
  coder.encodeDouble(tailIndent_, u"tailIndent");
  coder.encodeDouble(firstLineHeadIndent_, u"firstLineHeadIndent");
  coder.encodeDouble(minimumLineHeight_, u"minimumLineHeight");
  coder.encodeDouble(maximumLineHeight_, u"maximumLineHeight");
  coder.encodeDouble(lineHeightMultiple_, u"lineHeightMultiple");
  coder.encodeDouble(defaultTabInterval_, u"defaultTabInterval");
  coder.encodeObject(Value(arrayOf(tabStops_)), u"tabStops");
  coder.encodeInteger(baseWritingDirection_, u"baseWritingDirection");
  coder.encodeFloat(hyphenationFactor_, u"hyphenationFactor");
  coder.encodeFloat(tighteningFactorForTruncation_, u"tighteningFactorForTruncation");
  coder.encodeInteger(headerLevel_, u"headerLevel");
  coder.encodeObject(Value(arrayOf(textLists_)), u"textLists");
}

void ParagraphStyle::initWithCoder(KeyedUnarchiver &coder) {
  auto real = [&](std::u16string_view key, double &field) {
    if (coder.containsValueForKey(key))
      field = coder.decodeDoubleForKey(key);
  };
  if (coder.containsValueForKey(u"alignment"))
    alignment_ = static_cast<TextAlignment>(coder.decodeIntegerForKey(u"alignment"));
  real(u"lineSpacing", lineSpacing_);
  real(u"paragraphSpacing", paragraphSpacing_);
  real(u"paragraphSpacingBefore", paragraphSpacingBefore_);
  real(u"headIndent", headIndent_);
  real(u"tailIndent", tailIndent_);
  real(u"firstLineHeadIndent", firstLineHeadIndent_);
  real(u"minimumLineHeight", minimumLineHeight_);
  real(u"maximumLineHeight", maximumLineHeight_);
  real(u"lineHeightMultiple", lineHeightMultiple_);
  real(u"defaultTabInterval", defaultTabInterval_);
  if (coder.containsValueForKey(u"tabStops")) {
    tabStops_ = itemsOf<TextTab>(coder.decodeObjectForKey(u"tabStops"));
    sortTabStops(tabStops_);
  }
  if (coder.containsValueForKey(u"baseWritingDirection"))
    baseWritingDirection_ =
        static_cast<WritingDirection>(coder.decodeIntegerForKey(u"baseWritingDirection"));
  if (coder.containsValueForKey(u"hyphenationFactor"))
    hyphenationFactor_ = coder.decodeFloatForKey(u"hyphenationFactor");
  if (coder.containsValueForKey(u"tighteningFactorForTruncation"))
    tighteningFactorForTruncation_ = coder.decodeFloatForKey(u"tighteningFactorForTruncation");
  if (coder.containsValueForKey(u"headerLevel"))
    headerLevel_ = coder.decodeIntegerForKey(u"headerLevel");
  if (coder.containsValueForKey(u"textLists"))
    textLists_ = itemsOf<TextList>(coder.decodeObjectForKey(u"textLists"));
}

void MutableParagraphStyle::setTabStops(std::vector<TextTabPtr> tabStops) {
  sortTabStops(tabStops);
  tabStops_ = std::move(tabStops);
}

void MutableParagraphStyle::addTabStop(TextTabPtr tab) {
  if (!tab)
    return;
  auto at = std::upper_bound(
      tabStops_.begin(), tabStops_.end(), tab->location(),
      [](double location, const TextTabPtr &t) { return location < t->location(); });
  tabStops_.insert(at, std::move(tab));
}

void MutableParagraphStyle::removeTabStop(const TextTab &tab) {
  auto it = std::find_if(tabStops_.begin(), tabStops_.end(),
                         [&](const TextTabPtr &t) { return t->isEqual(tab); });
  if (it != tabStops_.end())
    tabStops_.erase(it);
}

void MutableParagraphStyle::setTextLists(std::vector<TextListPtr> lists) {
  std::erase(lists, nullptr);
  textLists_ = std::move(lists);
}

void MutableParagraphStyle::setParagraphStyle(const ParagraphStyle &other) {
  if (&other != this)
    ParagraphStyle::operator=(other);
}

ObjectPtr MutableParagraphStyle::copy() const {
  return std::make_shared<ParagraphStyle>(static_cast<const ParagraphStyle &>(*this));
}

} // namespace vl::ns
