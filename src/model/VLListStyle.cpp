// List styles: level lookup, text lists per level, matching and deriving from the lists of
// a paragraph, copying and keyed coding.
#include "model/VLListStyle.h"

#include "model/VLLocalization.h"
#include "model/VLStyle.h"
#include "ns/Array.h"
#include "ns/Assert.h"
#include "ns/String.h"

#include <algorithm>

namespace vl {

VL_REGISTER_CLASS(VLListStyle);

namespace {

ns::Value stringValue(const std::optional<std::u16string> &text) {
  return text ? ns::Value(*text) : ns::Value();
}

std::optional<std::u16string> optionalString(const ns::Value &value) {
  return value.isString() ? std::optional(value.string()) : std::nullopt;
}

} // namespace

const VLListStylePtr &VLListStyle::defaultListStyle() {
  static const VLListStylePtr shared = [] {
    auto style = VLListStyle::create();
    style->setDisplayName(localizedString(u"Default List Style"));
    style->setStyleName(VLStyle::styleNameForDisplayName(*style->displayName()));
    for (uint64_t level = 1; level <= 10; ++level) {
      auto bullet = std::make_shared<VLListBulletLevelStyle>();
      bullet->setLevel(level);
      style->setListLevelStyle(std::move(bullet), level);
    }
    return style;
  }();
  return shared;
}

const std::optional<std::u16string> &VLListStyle::displayName() const {
  return _displayName ? _displayName : _styleName;
}

std::vector<VLListLevelStylePtr> VLListStyle::listLevelStyles() const {
  std::vector<VLListLevelStylePtr> sorted = _listLevels;
  std::stable_sort(sorted.begin(), sorted.end(),
                   [](const auto &a, const auto &b) { return a->level() < b->level(); });
  return sorted;
}

void VLListStyle::addListLevelStyle(VLListLevelStylePtr style) {
  if (!style)
    return;
  style->setListStyle(std::static_pointer_cast<VLListStyle>(weak_from_this().lock()));
  _listLevels.push_back(std::move(style));
}

void VLListStyle::setListLevelStyle(VLListLevelStylePtr style, uint64_t level) {
  VL_ASSERT(style && style->level() == level, "Style level must equal level");
  auto old = std::find_if(_listLevels.begin(), _listLevels.end(),
                          [level](const auto &each) { return each->level() == level; });
  if (old != _listLevels.end())
    _listLevels.erase(old);
  _listLevels.push_back(std::move(style));
}

VLListLevelStylePtr VLListStyle::listLevelStyleForLevel(uint64_t level) const {
  for (const auto &style : _listLevels)
    if (style->level() == level)
      return style;
  return nullptr;
}

ns::TextListPtr VLListStyle::textListForLevel(uint64_t level) const {
  if (auto style = listLevelStyleForLevel(level))
    return style->textList();
  return ns::TextList::create(u"{decimal}", 0);
}

std::vector<ns::TextListPtr> VLListStyle::textListsForLevel(uint64_t level) const {
  std::vector<ns::TextListPtr> lists;
  for (uint64_t each = 1; each <= level; ++each)
    lists.push_back(textListForLevel(each));
  return lists;
}

namespace {

// Whether `list` has the marker format of the style's level (a missing level never does).
bool levelMatches(const VLListStyle &style, uint64_t level, const ns::TextListPtr &list) {
  auto levelStyle = style.listLevelStyleForLevel(level);
  return levelStyle && list && levelStyle->textList()->markerFormat() == list->markerFormat();
}

} // namespace

bool VLListStyle::matchesTextLists(const std::vector<ns::TextListPtr> &lists) const {
  uint64_t level = 1;
  for (const auto &list : lists)
    if (!levelMatches(*this, level++, list))
      return false;
  return true;
}

VLListStylePtr
VLListStyle::derivedLevelStyleWithTextLists(const std::vector<ns::TextListPtr> &lists) const {
  auto derived = std::static_pointer_cast<VLListStyle>(copy());
  uint64_t level = 1;
  for (const auto &list : lists) {
    // Compared with this style: the copy's number levels have lost their formats.
    if (!levelMatches(*this, level, list)) {
      auto replacement = VLListLevelStyle::listLevelStyleWithTextList(list);
      replacement->setLevel(level);
      derived->setListLevelStyle(std::move(replacement), level);
    }
    ++level;
  }
  return derived;
}

std::u16string VLListStyle::description() const {
  std::u16string name = _isOutlineStyle ? u"outline-style" : _styleName.value_or(u"?");
  return ns::format(u"%@ - %@", ns::Object::description(), name);
}

ns::ObjectPtr VLListStyle::copy() const {
  auto copy = std::make_shared<VLListStyle>();
  copy->_consecutiveNumbering = _consecutiveNumbering;
  copy->_isOutlineStyle = _isOutlineStyle;
  copy->_isAutomaticStyle = _isAutomaticStyle;
  copy->_styleName = _styleName;
  copy->_displayName = _displayName;
  copy->_level = _level;
  for (const auto &level : _listLevels)
    copy->addListLevelStyle(std::static_pointer_cast<VLListLevelStyle>(level->copy()));
  return copy;
}

void VLListStyle::encodeWithCoder(ns::KeyedArchiver &coder) const {
  coder.encodeObject(stringValue(_styleName), u"styleName");
  coder.encodeObject(stringValue(_displayName), u"displayName");
  coder.encodeObject(ns::Value(_consecutiveNumbering), u"consecutiveNumbering");
  coder.encodeObject(ns::Value(_level), u"level");
  coder.encodeObject(ns::Value(_isOutlineStyle), u"isOutlineStyle");
  coder.encodeObject(ns::Value(_isAutomaticStyle), u"isAutomaticStyle");
  auto levels = ns::Array::create();
  for (const auto &level : _listLevels)
    levels->addObject(ns::Value(level));
  coder.encodeObject(ns::Value(levels), u"listLevels");
}

// The levels are taken as the archive holds them: they do not point back here.
void VLListStyle::initWithCoder(ns::KeyedUnarchiver &coder) {
  _styleName = optionalString(coder.decodeObjectForKey(u"styleName"));
  _displayName = optionalString(coder.decodeObjectForKey(u"displayName"));
  _consecutiveNumbering = coder.decodeObjectForKey(u"consecutiveNumbering").boolValue();
  _level = coder.decodeObjectForKey(u"level").unsignedIntegerValue();
  _isOutlineStyle = coder.decodeObjectForKey(u"isOutlineStyle").boolValue();
  _isAutomaticStyle = coder.decodeObjectForKey(u"isAutomaticStyle").boolValue();
  _listLevels.clear();
  if (auto levels = coder.decodeObjectForKey(u"listLevels").array())
    for (const auto &value : *levels)
      if (auto level = value.as<VLListLevelStyle>())
        _listLevels.push_back(std::move(level));
}

bool VLListStyle::kvcValueForKey(std::u16string_view key, ns::Value &value) {
  if (key == u"styleName")
    value = stringValue(_styleName);
  else if (key == u"displayName")
    value = stringValue(displayName());
  else if (key == u"level")
    value = ns::Value(_level);
  else if (key == u"consecutiveNumbering")
    value = ns::Value(_consecutiveNumbering);
  else if (key == u"isOutlineStyle")
    value = ns::Value(_isOutlineStyle);
  else if (key == u"isAutomaticStyle")
    value = ns::Value(_isAutomaticStyle);
  else if (key == u"listLevelStyles") {
    auto levels = ns::Array::create();
    for (const auto &level : listLevelStyles())
      levels->addObject(ns::Value(level));
    value = ns::Value(levels);
  } else
    return ns::Object::kvcValueForKey(key, value);
  return true;
}

bool VLListStyle::kvcSetValueForKey(std::u16string_view key, const ns::Value &value) {
  if (key == u"styleName")
    _styleName = optionalString(value);
  else if (key == u"displayName")
    _displayName = optionalString(value);
  else if (key == u"level")
    _level = value.unsignedIntegerValue();
  else if (key == u"consecutiveNumbering")
    _consecutiveNumbering = value.boolValue();
  else if (key == u"isOutlineStyle")
    _isOutlineStyle = value.boolValue();
  else if (key == u"isAutomaticStyle")
    _isAutomaticStyle = value.boolValue();
  else
    return ns::Object::kvcSetValueForKey(key, value);
  return true;
}

} // namespace vl
