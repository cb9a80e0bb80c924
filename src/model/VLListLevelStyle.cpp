// List level styles: the keyword tables, marker formats in both directions, the text list
// cache, the indent and tab layout of a level, copying and keyed coding.
#include "model/VLListLevelStyle.h"

#include "model/VLConstants.h"
#include "model/VLListAdditions.h"
#include "model/VLListLevelProperties.h"
#include "model/VLListStyle.h"
#include "ns/Assert.h"
#include "ns/AttributeNames.h"
#include "ns/Error.h"
#include "ns/ParagraphStyle.h"
#include "ns/String.h"

namespace vl {

VL_REGISTER_CLASS(VLListNumberLevelStyle);
VL_REGISTER_CLASS(VLListBulletLevelStyle);

namespace {

ns::Value stringValue(const std::optional<std::u16string> &text) {
  return text ? ns::Value(*text) : ns::Value();
}

std::optional<std::u16string> optionalString(const ns::Value &value) {
  return value.isString() ? std::optional(value.string()) : std::nullopt;
}

// The bullet rows of the keyword table, "box" included, in table order.
struct BulletRow {
  std::u16string_view keyword;
  char16_t bullet;
};
constexpr BulletRow bulletRows[] = {
    {u"square", u'\u25AA'}, {u"hyphen", u'\u2043'}, {u"disc", u'\u2022'}, {u"diamond", u'\u25C6'},
    {u"check", u'\u2713'},  {u"circle", u'\u25E6'}, {u"box", u'\u25AB'}};
constexpr char16_t defaultBullet = u'\u2022';

// No writer nests lists this deep; applying such a level would build one list per level.
constexpr uint64_t deepestArchivedLevel = 1000;

// Prefix and suffix of the list's format, and the format value of its keyword, for the
// initWithTextList: of both kinds.
struct ParsedFormat {
  std::optional<std::u16string> prefix, suffix, value;
};

ParsedFormat parseFormat(const ns::TextListPtr &list) {
  ParsedFormat parsed;
  auto keyword = VLListLevelStyle::keywordForList(list, &parsed.prefix, &parsed.suffix);
  if (keyword) {
    const auto &formats = VLListLevelStyle::formatByKeyword();
    auto it = formats.find(*keyword);
    if (it != formats.end())
      parsed.value = it->second;
  }
  return parsed;
}

// The keys both kinds have, each as fields of its own.
template <class Level>
bool commonValueForKey(Level &level, std::u16string_view key, ns::Value &value) {
  if (key == u"numPrefix")
    value = stringValue(level.numPrefix());
  else if (key == u"numSuffix")
    value = stringValue(level.numSuffix());
  else if (key == u"styleName")
    value = stringValue(level.styleName());
  else if (key == u"textProperties")
    value = ns::Value(level.textProperties());
  else
    return false;
  return true;
}

template <class Level>
bool commonSetValueForKey(Level &level, std::u16string_view key, const ns::Value &value) {
  if (key == u"numPrefix")
    level.setNumPrefix(optionalString(value));
  else if (key == u"numSuffix")
    level.setNumSuffix(optionalString(value));
  else if (key == u"styleName")
    level.setStyleName(optionalString(value));
  else if (key == u"textProperties")
    level.setTextProperties(value.dictionary());
  else
    return false;
  return true;
}

} // namespace

// VLListLevelStyle

VLListLevelStyle::VLListLevelStyle() : _listLevelProperties(VLListLevelProperties::create()) {}

const VLListLevelClassTable &VLListLevelStyle::listLevelClassByKeyword() {
  static const VLListLevelClassTable table = [] {
    VLListLevelClassTable made;
    for (auto keyword :
         {u"decimal", u"upper-roman", u"lower-roman", u"upper-latin", u"upper-alpha",
          u"lower-latin", u"lower-alpha", u"octal", u"upper-hexadecimal", u"lower-hexadecimal"})
      made.emplace(keyword, &VLListNumberLevelStyle::createWithTextList);
    // "box" stays out: it is read as a number level (see formatByKeyword).
    for (const auto &row : bulletRows)
      if (row.keyword != u"box")
        made.emplace(row.keyword, &VLListBulletLevelStyle::createWithTextList);
    return made;
  }();
  return table;
}

const VLListFormatTable &VLListLevelStyle::formatByKeyword() {
  static const VLListFormatTable table = [] {
    VLListFormatTable made = {{u"decimal", u"1"},     {u"upper-roman", u"I"},
                              {u"lower-roman", u"i"}, {u"upper-latin", u"A"},
                              {u"upper-alpha", u"A"}, {u"lower-latin", u"a"},
                              {u"lower-alpha", u"a"}};
    for (const auto &row : bulletRows)
      made.emplace(row.keyword, std::u16string(1, row.bullet));
    return made;
  }();
  return table;
}

std::optional<std::u16string>
VLListLevelStyle::keywordForList(const ns::TextListPtr &list, std::optional<std::u16string> *prefix,
                                 std::optional<std::u16string> *suffix) {
  if (prefix)
    prefix->reset();
  if (suffix)
    suffix->reset();
  if (!list)
    return std::nullopt;
  std::u16string_view format = list->markerFormat();
  size_t open = format.find(u'{');
  if (open == std::u16string_view::npos) {
    if (suffix)
      *suffix = std::u16string(format);
    return std::nullopt;
  }
  size_t close = format.find(u'}', open + 1);
  if (close == std::u16string_view::npos)
    return std::nullopt;
  if (prefix)
    *prefix = std::u16string(format.substr(0, open));
  if (suffix)
    *suffix = std::u16string(format.substr(close + 1));
  return std::u16string(format.substr(open + 1, close - open - 1));
}

VLListLevelStylePtr VLListLevelStyle::listLevelStyleWithTextList(const ns::TextListPtr &list) {
  ns::TextListPtr source = list ? list : ns::TextList::create(u"");
  auto keyword = keywordForList(source, nullptr, nullptr);
  const auto &classes = listLevelClassByKeyword();
  auto it = keyword ? classes.find(*keyword) : classes.end();
  VLListLevelStyleClass levelClass =
      it != classes.end() ? it->second : &VLListNumberLevelStyle::createWithTextList;
  return levelClass(source);
}

VLListLevelStylePtr VLListLevelStyle::createWithTextList(const ns::TextListPtr &) {
  VL_ASSERT(false, "subclass responsibility");
  return nullptr;
}

void VLListLevelStyle::setListLevelProperties(VLListLevelPropertiesPtr properties) {
  _listLevelProperties = std::move(properties);
}

std::optional<std::u16string> VLListLevelStyle::displayName() const {
  return _listLevelProperties ? _listLevelProperties->displayName() : std::nullopt;
}

void VLListLevelStyle::setDisplayName(std::optional<std::u16string> displayName) {
  if (!_listLevelProperties)
    _listLevelProperties = VLListLevelProperties::create();
  _listLevelProperties->setDisplayName(std::move(displayName));
}

std::u16string VLListLevelStyle::markerFormat() const {
  VL_ASSERT(false, "Subclass responsibility");
  return {};
}

const ns::TextListPtr &VLListLevelStyle::textList() const {
  if (!_textList)
    _textList = ns::TextList::create(markerFormat(), markerOptions());
  return _textList;
}

void VLListLevelStyle::applyToAttributes(ns::Dictionary &attributes) const {
  auto current = attributes.objectForKey(ns::ParagraphStyleAttributeName).as<ns::ParagraphStyle>();
  auto paragraph =
      (current ? *current : *ns::ParagraphStyle::defaultParagraphStyle()).mutableParagraphStyle();
  VLListStylePtr listStyle = this->listStyle();
  paragraph->setTextLists(listStyle ? listStyle->textListsForLevel(_level)
                                    : std::vector<ns::TextListPtr>());

  // Levels count from 1; a level read from an archive is 0, and its marker tab then stands
  // before the first line indent.
  double firstLine = paragraph->firstLineHeadIndent();
  auto level = static_cast<double>(_level);
  float headIndent = static_cast<float>(firstLine + level * VLListLevelIndent);
  std::vector<ns::TextTabPtr> tabs;
  for (const auto &tab : paragraph->tabStops())
    if (tab->location() > headIndent)
      tabs.push_back(tab);
  paragraph->setTabStops(std::move(tabs));
  paragraph->addTabStop(ns::TextTab::create(
      ns::LeftTabStopType, firstLine + (level - 1) * VLListLevelIndent + VLListMarkerOffset));
  paragraph->addTabStop(ns::TextTab::create(ns::LeftTabStopType, headIndent));
  paragraph->setHeadIndent(headIndent);

  if (!listStyle)
    attributes.removeObjectForKey(VLListStyleAttributeName);
  else if (!listStyle->isAutomaticStyle())
    attributes.setObject(ns::Value(listStyle), VLListStyleAttributeName);
  attributes.setObject(ns::Value(paragraph), ns::ParagraphStyleAttributeName);
}

ns::AttributedStringPtr
VLListLevelStyle::preambleForItemNumber(int64_t number, ns::ConstDictionaryPtr attributes) const {
  return ns::AttributedString::create(
      ns::format(u"\t%@\t", textList()->markerForItemNumber(number)), std::move(attributes));
}

std::u16string VLListLevelStyle::description() const {
  return ns::format(u"%@ level:%lu marker:%@", ns::Object::description(), _level, markerFormat());
}

VLListLevelStylePtr VLListLevelStyle::newInstance() const {
  return std::make_shared<VLListLevelStyle>();
}

ns::ObjectPtr VLListLevelStyle::copy() const {
  VLListLevelStylePtr copy = newInstance();
  copy->_level = _level;
  return copy;
}

std::u16string
VLListLevelStyle::markerFormatWithKeyword(std::optional<std::u16string_view> keyword,
                                          const std::optional<std::u16string> &prefix,
                                          const std::optional<std::u16string> &suffix) {
  std::u16string format = prefix.value_or(u"");
  if (keyword) {
    format += u'{';
    format += *keyword;
    format += u'}';
  }
  format += suffix.value_or(u"");
  return format;
}

void VLListLevelStyle::encodeWithCoder(ns::KeyedArchiver &coder) const {
  coder.encodeInteger(static_cast<int64_t>(_level), u"level");
  coder.encodeObject(ns::Value(_listLevelProperties), u"listLevelProperties");
  coder.encodeObject(ns::Value(_textList), u"textList");
  coder.encodeObject(ns::Value(listStyle()), u"listStyle");
}

void VLListLevelStyle::initWithCoder(ns::KeyedUnarchiver &coder) {
  int64_t level = coder.decodeIntegerForKey(u"level");
  if (level < 0 || static_cast<uint64_t>(level) > deepestArchivedLevel) {
    coder.failWithError(ns::Error::errorWithDescription(
        ns::CocoaErrorDomain, ns::CoderReadCorruptError, u"A list level is out of range."));
    return;
  }
  _level = static_cast<uint64_t>(level);
  _listLevelProperties =
      coder.decodeObjectForKey(u"listLevelProperties").as<VLListLevelProperties>();
  _textList = coder.decodeObjectForKey(u"textList").as<ns::TextList>();
  _listStyle = coder.decodeObjectForKey(u"listStyle").as<VLListStyle>();
}

bool VLListLevelStyle::kvcValueForKey(std::u16string_view key, ns::Value &value) {
  if (key == u"level")
    value = ns::Value(_level);
  else if (key == u"displayName")
    value = stringValue(displayName());
  else if (key == u"markerFormat")
    value = ns::Value(markerFormat());
  else if (key == u"listStyle")
    value = ns::Value(listStyle());
  else if (key == u"listLevelProperties")
    value = ns::Value(_listLevelProperties);
  else if (key == u"textList")
    value = ns::Value(textList());
  else
    return ns::Object::kvcValueForKey(key, value);
  return true;
}

bool VLListLevelStyle::kvcSetValueForKey(std::u16string_view key, const ns::Value &value) {
  if (key == u"level")
    _level = value.unsignedIntegerValue();
  else if (key == u"displayName")
    setDisplayName(optionalString(value));
  else
    return ns::Object::kvcSetValueForKey(key, value);
  return true;
}

// VLListNumberLevelStyle

VLListLevelStylePtr VLListNumberLevelStyle::createWithTextList(const ns::TextListPtr &list) {
  auto level = std::make_shared<VLListNumberLevelStyle>();
  ParsedFormat parsed = parseFormat(list);
  level->_numPrefix = std::move(parsed.prefix);
  level->_numSuffix = std::move(parsed.suffix);
  level->_numFormat = std::move(parsed.value);
  return level;
}

std::optional<std::u16string_view>
VLListNumberLevelStyle::keywordForNumFormat(std::u16string_view numFormat) {
  if (numFormat == u"a")
    return u"lower-latin";
  if (numFormat == u"A")
    return u"upper-latin";
  if (numFormat == u"i")
    return u"lower-roman";
  if (numFormat == u"I")
    return u"upper-roman";
  if (numFormat == u"1")
    return u"decimal";
  return std::nullopt;
}

void VLListNumberLevelStyle::setNumFormat(std::optional<std::u16string> format) {
  _numFormat = std::move(format);
  invalidateTextList();
}

void VLListNumberLevelStyle::setNumPrefix(std::optional<std::u16string> prefix) {
  _numPrefix = std::move(prefix);
  invalidateTextList();
}

void VLListNumberLevelStyle::setNumSuffix(std::optional<std::u16string> suffix) {
  _numSuffix = std::move(suffix);
  invalidateTextList();
}

std::u16string VLListNumberLevelStyle::markerFormat() const {
  auto keyword = _numFormat ? keywordForNumFormat(*_numFormat) : std::nullopt;
  return markerFormatWithKeyword(keyword, _numPrefix, _numSuffix);
}

VLListLevelStylePtr VLListNumberLevelStyle::newInstance() const {
  return std::make_shared<VLListNumberLevelStyle>();
}

// The base's keys are read here but not written: an archive holds no level number,
// properties or list style for a concrete level.
void VLListNumberLevelStyle::encodeWithCoder(ns::KeyedArchiver &coder) const {
  coder.encodeObject(stringValue(_styleName), u"styleName");
  coder.encodeObject(stringValue(_numFormat), u"numFormat");
  coder.encodeBool(_numLetterSync, u"numLetterSync");
  coder.encodeObject(stringValue(_numPrefix), u"numPrefix");
  coder.encodeObject(stringValue(_numSuffix), u"numSuffix");
  coder.encodeInteger(static_cast<int64_t>(_displayLevels), u"displayLevels");
  coder.encodeInteger(static_cast<int64_t>(_startValue), u"startValue");
  coder.encodeObject(ns::Value(_textProperties), u"textProperties");
}

void VLListNumberLevelStyle::initWithCoder(ns::KeyedUnarchiver &coder) {
  VLListLevelStyle::initWithCoder(coder);
  _styleName = optionalString(coder.decodeObjectForKey(u"styleName"));
  _numFormat = optionalString(coder.decodeObjectForKey(u"numFormat"));
  _numLetterSync = coder.decodeBoolForKey(u"numLetterSync");
  _numPrefix = optionalString(coder.decodeObjectForKey(u"numPrefix"));
  _numSuffix = optionalString(coder.decodeObjectForKey(u"numSuffix"));
  _displayLevels = static_cast<uint64_t>(coder.decodeIntegerForKey(u"displayLevels"));
  _startValue = static_cast<uint64_t>(coder.decodeIntegerForKey(u"startValue"));
  _textProperties = coder.decodeObjectForKey(u"textProperties").dictionary();
  if (!_textProperties)
    _textProperties = ns::Dictionary::create();
}

bool VLListNumberLevelStyle::kvcValueForKey(std::u16string_view key, ns::Value &value) {
  if (commonValueForKey(*this, key, value))
    return true;
  if (key == u"numFormat")
    value = stringValue(_numFormat);
  else if (key == u"numLetterSync")
    value = ns::Value(_numLetterSync);
  else if (key == u"displayLevels")
    value = ns::Value(_displayLevels);
  else if (key == u"startValue")
    value = ns::Value(_startValue);
  else
    return VLListLevelStyle::kvcValueForKey(key, value);
  return true;
}

bool VLListNumberLevelStyle::kvcSetValueForKey(std::u16string_view key, const ns::Value &value) {
  if (commonSetValueForKey(*this, key, value))
    return true;
  if (key == u"numFormat")
    setNumFormat(optionalString(value));
  else if (key == u"numLetterSync")
    _numLetterSync = value.boolValue();
  else if (key == u"displayLevels")
    _displayLevels = value.unsignedIntegerValue();
  else if (key == u"startValue")
    _startValue = value.unsignedIntegerValue();
  else
    return VLListLevelStyle::kvcSetValueForKey(key, value);
  return true;
}

// VLListBulletLevelStyle

VLListLevelStylePtr VLListBulletLevelStyle::createWithTextList(const ns::TextListPtr &list) {
  auto level = std::make_shared<VLListBulletLevelStyle>();
  ParsedFormat parsed = parseFormat(list);
  level->_numPrefix = std::move(parsed.prefix);
  level->_numSuffix = std::move(parsed.suffix);
  level->_bulletChar = std::move(parsed.value);
  return level;
}

std::u16string_view VLListBulletLevelStyle::keywordForBulletChar(char16_t bullet) {
  for (const auto &row : bulletRows)
    if (row.bullet == bullet)
      return row.keyword;
  return u"disc";
}

std::u16string VLListBulletLevelStyle::bulletCharForKeyword(std::u16string_view keyword) {
  for (const auto &row : bulletRows)
    if (row.keyword == keyword)
      return std::u16string(1, row.bullet);
  return std::u16string(1, defaultBullet);
}

void VLListBulletLevelStyle::setBulletChar(std::optional<std::u16string> bullet) {
  _bulletChar = std::move(bullet);
  invalidateTextList();
}

void VLListBulletLevelStyle::setNumPrefix(std::optional<std::u16string> prefix) {
  _numPrefix = std::move(prefix);
  invalidateTextList();
}

void VLListBulletLevelStyle::setNumSuffix(std::optional<std::u16string> suffix) {
  _numSuffix = std::move(suffix);
  invalidateTextList();
}

std::u16string VLListBulletLevelStyle::markerFormat() const {
  std::optional<std::u16string_view> keyword;
  if (_bulletChar && !_bulletChar->empty())
    keyword = keywordForBulletChar(_bulletChar->front());
  return markerFormatWithKeyword(keyword, _numPrefix, _numSuffix);
}

VLListLevelStylePtr VLListBulletLevelStyle::newInstance() const {
  return std::make_shared<VLListBulletLevelStyle>();
}

ns::ObjectPtr VLListBulletLevelStyle::copy() const {
  auto copy = std::static_pointer_cast<VLListBulletLevelStyle>(VLListLevelStyle::copy());
  copy->_styleName = _styleName;
  copy->_bulletChar = _bulletChar;
  copy->_numPrefix = _numPrefix;
  copy->_numSuffix = _numSuffix;
  copy->_bulletRelativeSize = _bulletRelativeSize;
  return copy;
}

void VLListBulletLevelStyle::encodeWithCoder(ns::KeyedArchiver &coder) const {
  coder.encodeObject(stringValue(_styleName), u"styleName");
  coder.encodeObject(stringValue(_bulletChar), u"bulletChar");
  coder.encodeObject(stringValue(_numPrefix), u"numPrefix");
  coder.encodeObject(stringValue(_numSuffix), u"numSuffix");
  coder.encodeDouble(_bulletRelativeSize, u"bulletRelativeSize");
}

void VLListBulletLevelStyle::initWithCoder(ns::KeyedUnarchiver &coder) {
  VLListLevelStyle::initWithCoder(coder);
  _styleName = optionalString(coder.decodeObjectForKey(u"styleName"));
  _bulletChar = optionalString(coder.decodeObjectForKey(u"bulletChar"));
  _numPrefix = optionalString(coder.decodeObjectForKey(u"numPrefix"));
  _numSuffix = optionalString(coder.decodeObjectForKey(u"numSuffix"));
  _bulletRelativeSize = coder.decodeDoubleForKey(u"bulletRelativeSize");
}

bool VLListBulletLevelStyle::kvcValueForKey(std::u16string_view key, ns::Value &value) {
  if (commonValueForKey(*this, key, value))
    return true;
  if (key == u"bulletChar")
    value = stringValue(_bulletChar);
  else if (key == u"bulletRelativeSize")
    value = ns::Value(_bulletRelativeSize);
  else
    return VLListLevelStyle::kvcValueForKey(key, value);
  return true;
}

bool VLListBulletLevelStyle::kvcSetValueForKey(std::u16string_view key, const ns::Value &value) {
  if (commonSetValueForKey(*this, key, value))
    return true;
  if (key == u"bulletChar")
    setBulletChar(optionalString(value));
  else if (key == u"bulletRelativeSize")
    _bulletRelativeSize = value.doubleValue();
  else
    return VLListLevelStyle::kvcSetValueForKey(key, value);
  return true;
}

} // namespace vl
