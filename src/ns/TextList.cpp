// List markers: keyword lookup, number systems and value semantics of list levels.
#include "ns/TextList.h"

#include <algorithm>
#include <functional>

namespace vl::ns {

VL_REGISTER_CLASS(TextList);

namespace {

// Digits of the magnitude of `number` in `base`, with a minus sign in front when negative.
std::u16string positional(int64_t number, unsigned base, const char *digits) {
  uint64_t magnitude = number < 0 ? 0 - static_cast<uint64_t>(number) : number;
  std::u16string out;
  do {
    out.push_back(static_cast<char16_t>(digits[magnitude % base]));
    magnitude /= base;
  } while (magnitude);
  if (number < 0)
    out.push_back(u'-');
  std::reverse(out.begin(), out.end());
  return out;
}

std::u16string decimal(int64_t number) {
  return positional(number, 10, "0123456789");
}

std::u16string roman(int64_t number, bool upper) {
  if (number < 1 || number > 3999)
    return decimal(number);
  static constexpr struct {
    int value;
    const char *letters;
  } table[] = {{1000, "m"}, {900, "cm"}, {500, "d"}, {400, "cd"}, {100, "c"}, {90, "xc"}, {50, "l"},
               {40, "xl"},  {10, "x"},   {9, "ix"},  {5, "v"},    {4, "iv"},  {1, "i"}};
  std::u16string out;
  for (const auto &row : table) {
    for (; number >= row.value; number -= row.value)
      for (const char *c = row.letters; *c; ++c)
        out.push_back(static_cast<char16_t>(upper ? *c - 'a' + 'A' : *c));
  }
  return out;
}

// a..z, aa..az, ba..: each place holds 1 to 26, so there is no zero digit.
std::u16string alphabetic(int64_t number, bool upper) {
  if (number < 1)
    return decimal(number);
  uint64_t n = static_cast<uint64_t>(number);
  std::u16string out;
  while (n > 0) {
    --n;
    out.push_back(static_cast<char16_t>((upper ? u'A' : u'a') + n % 26));
    n /= 26;
  }
  std::reverse(out.begin(), out.end());
  return out;
}

} // namespace

std::optional<std::u16string> markerForKeyword(std::u16string_view keyword, int64_t number) {
  if (keyword == u"decimal")
    return decimal(number);
  if (keyword == u"lower-roman")
    return roman(number, false);
  if (keyword == u"upper-roman")
    return roman(number, true);
  if (keyword == u"lower-alpha" || keyword == u"lower-latin")
    return alphabetic(number, false);
  if (keyword == u"upper-alpha" || keyword == u"upper-latin")
    return alphabetic(number, true);
  if (keyword == u"octal")
    return positional(number, 8, "01234567");
  if (keyword == u"lower-hexadecimal")
    return positional(number, 16, "0123456789abcdef");
  if (keyword == u"upper-hexadecimal")
    return positional(number, 16, "0123456789ABCDEF");
  static constexpr struct {
    std::u16string_view keyword;
    char16_t bullet;
  } bullets[] = {{u"disc", u'\u2022'},   {u"circle", u'\u25E6'}, {u"square", u'\u25AA'},
                 {u"hyphen", u'\u2043'}, {u"box", u'\u25AB'},    {u"check", u'\u2713'},
                 {u"diamond", u'\u25C6'}};
  for (const auto &row : bullets)
    if (row.keyword == keyword)
      return std::u16string(1, row.bullet);
  return std::nullopt;
}

TextList::TextList(std::u16string markerFormat, uint64_t options)
    : markerFormat_(std::move(markerFormat)), listOptions_(options) {}

TextListPtr TextList::create(std::u16string markerFormat, uint64_t options) {
  return std::make_shared<TextList>(std::move(markerFormat), options);
}

std::u16string TextList::markerForItemNumber(int64_t number) const {
  std::u16string_view format = markerFormat_;
  size_t open = format.find(u'{');
  if (open == std::u16string_view::npos)
    return markerFormat_;
  size_t close = format.find(u'}', open + 1);
  std::u16string_view prefix = format.substr(0, open);
  if (close == std::u16string_view::npos)
    return std::u16string(prefix);
  std::u16string_view suffix = format.substr(close + 1);
  auto marker = markerForKeyword(format.substr(open + 1, close - open - 1), number);
  std::u16string out(prefix);
  if (marker)
    out += *marker;
  out += suffix;
  return out;
}

bool TextList::isEqual(const Object &other) const {
  if (this == &other)
    return true;
  auto *list = dynamic_cast<const TextList *>(&other);
  return list && list->markerFormat_ == markerFormat_ && list->listOptions_ == listOptions_ &&
         list->startingItemNumber_ == startingItemNumber_;
}

size_t TextList::hash() const {
  return std::hash<std::u16string>()(markerFormat_) ^ listOptions_;
}

std::u16string TextList::description() const {
  return Object::description() + u" " + markerFormat_;
}

ObjectPtr TextList::copy() const {
  return std::make_shared<TextList>(*this);
}

void TextList::encodeWithCoder(KeyedArchiver &coder) const {
  coder.encodeObject(Value(markerFormat_), u"markerFormat");
  coder.encodeInteger(static_cast<int64_t>(listOptions_), u"listOptions");
  coder.encodeInteger(startingItemNumber_, u"startingItemNumber");
}

void TextList::initWithCoder(KeyedUnarchiver &coder) {
  markerFormat_ = coder.decodeObjectForKey(u"markerFormat").string();
  listOptions_ = static_cast<uint64_t>(coder.decodeIntegerForKey(u"listOptions"));
  startingItemNumber_ = coder.containsValueForKey(u"startingItemNumber")
                            ? coder.decodeIntegerForKey(u"startingItemNumber")
                            : 1;
}

} // namespace vl::ns
