// Stylesheets: the style collection and its lookups, the other collections, copying
// through the archiver, coding, and breaking the style rings on destruction.
#include "model/VLStylesheet.h"

#include "ns/Array.h"

#include <algorithm>

namespace vl {

VL_REGISTER_CLASS(VLStylesheet);

namespace {

template <class T> ns::ArrayPtr arrayOf(const std::vector<std::shared_ptr<T>> &objects) {
  std::vector<ns::Value> values;
  values.reserve(objects.size());
  for (const auto &object : objects)
    values.emplace_back(object);
  return ns::Array::create(std::move(values));
}

template <class T> std::vector<std::shared_ptr<T>> vectorOf(const ns::Value &value) {
  std::vector<std::shared_ptr<T>> out;
  if (ns::ArrayPtr array = value.array()) {
    out.reserve(array->count());
    for (const ns::Value &element : *array)
      if (auto object = element.as<T>())
        out.push_back(std::move(object));
  }
  return out;
}

template <class T> void eraseIdentical(std::vector<T> &objects, const T &object) {
  std::erase(objects, object);
}

} // namespace

ns::ComparisonResult VLSortDescriptor::compareObject(ns::Object &a, ns::Object &b) const {
  ns::ComparisonResult result = a.valueForKey(key).compare(b.valueForKey(key));
  return ascending ? result : static_cast<ns::ComparisonResult>(-result);
}

VLStylesheet::~VLStylesheet() {
  // Styles hold each other in rings (a heading's next style is the body text, whose tab
  // style is the heading); the sheet owns them and undoes the rings.
  auto unlink = [](VLStyle &style) {
    style.setTabStyle(nullptr);
    style.setNextStyle(nullptr);
    style.setParentStyle(nullptr);
  };
  for (const VLStylePtr &style : _styles)
    if (style)
      unlink(*style);
  for (const VLGraphicStylePtr &style : _graphicStyles)
    if (style)
      unlink(*style);
}

// Paragraph and text styles.

void VLStylesheet::setStyles(std::vector<VLStylePtr> styles) {
  std::erase(styles, nullptr);
  _styles = std::move(styles);
}

void VLStylesheet::addStyle(VLStylePtr style) {
  if (!style)
    return;
  willChangeValueForKey(u"styles");
  if (std::find(_styles.begin(), _styles.end(), style) == _styles.end())
    _styles.push_back(std::move(style));
  didChangeValueForKey(u"styles");
}

void VLStylesheet::pointLinks(const VLStylePtr &from, const VLStylePtr &to) {
  for (const VLStylePtr &other : _styles) {
    if (other == from)
      continue;
    if (other->parentStyle() == from)
      other->setParentStyle(to);
    if (other->nextStyle() == from)
      other->setNextStyle(to);
    if (other->tabStyle() == from)
      other->setTabStyle(to);
  }
}

void VLStylesheet::removeStyle(const VLStylePtr &style) {
  if (!style)
    return;
  willChangeValueForKey(u"styles");
  // Hold the style: the array may own the last reference to it.
  VLStylePtr removed = style;
  pointLinks(removed, nullptr);
  eraseIdentical(_styles, removed);
  didChangeValueForKey(u"styles");
}

void VLStylesheet::replaceStyle(const VLStylePtr &oldStyle, VLStylePtr newStyle) {
  VLStylePtr replaced = oldStyle;
  pointLinks(replaced, newStyle);
  removeStyle(replaced);
  addStyle(std::move(newStyle));
}

VLStylePtr VLStylesheet::styleForName(std::optional<std::u16string_view> name) const {
  if (!name)
    return nullptr;
  for (const VLStylePtr &style : _styles)
    if (style->styleName() == *name)
      return style;
  return nullptr;
}

VLStylePtr VLStylesheet::styleForDisplayName(std::optional<std::u16string_view> displayName) const {
  if (!displayName)
    return nullptr;
  for (const VLStylePtr &style : _styles)
    if (style->displayName() == *displayName)
      return style;
  return nullptr;
}

VLStylePtr VLStylesheet::styleForOutlineLevel(int64_t level) const {
  for (const VLStylePtr &style : _styles)
    if (style->outlineLevel() == level)
      return style;
  return nullptr;
}

VLStylePtr VLStylesheet::styleForHeaderLevel(int64_t level) const {
  VLStylePtr fallback;
  for (const VLStylePtr &style : _styles) {
    if (style->headerLevel() != level)
      continue;
    // For "no level", body styles come before the default style, which has no level either.
    if (level != 0 || !style->isDefaultStyle())
      return style;
    if (!fallback)
      fallback = style;
  }
  return fallback;
}

VLStylePtr VLStylesheet::defaultParagraphStyle() {
  for (const VLStylePtr &style : _styles)
    if (style->isDefaultStyle() && style->isParagraphStyle())
      return style;
  VLStylePtr style = VLStyle::defaultParagraphStyle();
  addStyle(style);
  return style;
}

VLStylePtr VLStylesheet::defaultTextStyle() const {
  for (const VLStylePtr &style : _styles)
    if (style->isDefaultStyle() && style->isTextStyle())
      return style;
  return nullptr;
}

bool VLStylesheet::requiresSpecialPagination() const {
  return std::any_of(_styles.begin(), _styles.end(), [](const VLStylePtr &style) {
    return style->paginationStyle() != 0 || style->keepWithNext() ||
           style->avoidsWidowsAndOrphans();
  });
}

ns::DictionaryPtr VLStylesheet::defaultOutlineSettings() {
  VLStylePtr style = styleForDisplayName(u"Body Text");
  return outlineSettingsForStyle(style ? style : defaultParagraphStyle());
}

ns::DictionaryPtr VLStylesheet::outlineSettingsForStyle(VLStylePtr style) {
  if (!style)
    style = defaultParagraphStyle();
  auto level = ns::Dictionary::create();
  if (style->displayName())
    level->setObject(*style->displayName(), u"displayName");
  if (style->styleName())
    level->setObject(*style->styleName(), u"defaultStyle");
  return ns::Dictionary::create({{u"outlineLevelSettings", ns::Array::create({level})}});
}

std::vector<VLSortDescriptor> VLStylesheet::defaultSortDescriptors() {
  return {{u"outlineLevel", true}, {u"displayName", true}, {u"isDefaultStyle", true}};
}

// Graphic styles, list styles and page layouts.

void VLStylesheet::addGraphicStyle(VLGraphicStylePtr style) {
  if (style)
    _graphicStyles.push_back(std::move(style));
}

void VLStylesheet::removeGraphicStyle(const VLGraphicStylePtr &style) {
  VLGraphicStylePtr removed = style;
  eraseIdentical(_graphicStyles, removed);
}

VLGraphicStylePtr VLStylesheet::defaultGraphicStyle() {
  for (const VLGraphicStylePtr &style : _graphicStyles)
    if (style->isDefaultStyle())
      return style;
  VLGraphicStylePtr style = VLGraphicStyle::defaultGraphicStyle();
  addGraphicStyle(style);
  return style;
}

void VLStylesheet::addListStyle(ListStylePtr listStyle) {
  if (listStyle)
    _listStyles.push_back(std::move(listStyle));
}

void VLStylesheet::removeListStyle(const ListStylePtr &listStyle) {
  ListStylePtr removed = listStyle;
  eraseIdentical(_listStyles, removed);
}

void VLStylesheet::addPageLayoutStyle(VLPageLayoutPtr layout) {
  if (!layout || std::find(_pageLayoutStyles.begin(), _pageLayoutStyles.end(), layout) !=
                     _pageLayoutStyles.end())
    return;
  willChangeValueForKey(u"pageLayoutStyles");
  _pageLayoutStyles.push_back(std::move(layout));
  didChangeValueForKey(u"pageLayoutStyles");
}

void VLStylesheet::removePageLayoutStyle(const VLPageLayoutPtr &layout) {
  VLPageLayoutPtr removed = layout;
  willChangeValueForKey(u"pageLayoutStyles");
  eraseIdentical(_pageLayoutStyles, removed);
  didChangeValueForKey(u"pageLayoutStyles");
}

// Copying and coding.

ns::ObjectPtr VLStylesheet::copy() const {
  ns::Data archive = ns::KeyedArchiver::archivedDataWithRootObject(
      std::const_pointer_cast<VLStylesheet>(self<VLStylesheet>()));
  return ns::KeyedUnarchiver::unarchiveObjectWithData(archive).as<VLStylesheet>();
}

void VLStylesheet::encodeWithCoder(ns::KeyedArchiver &coder) const {
  coder.encodeObject(_displayName ? ns::Value(*_displayName) : ns::Value(), u"displayName");
  coder.encodeObject(_fontTable, u"fontTable");
  coder.encodeObject(arrayOf(_styles), u"styles");
  coder.encodeObject(arrayOf(_listStyles), u"listStyles");
  coder.encodeObject(arrayOf(_graphicStyles), u"graphicStyles");
  coder.encodeObject(arrayOf(_pageLayoutStyles), u"pageLayoutStyles");
  coder.encodeObject(_properties, u"properties");
}

void VLStylesheet::initWithCoder(ns::KeyedUnarchiver &coder) {
  ns::Value displayName = coder.decodeObjectForKey(u"displayName");
  _displayName =
      displayName.isString() ? std::optional<std::u16string>(displayName.string()) : std::nullopt;
  _fontTable = coder.decodeObjectForKey(u"fontTable").as<VLFontTable>();
  _styles = vectorOf<VLStyle>(coder.decodeObjectForKey(u"styles"));
  _listStyles = vectorOf<ns::Object>(coder.decodeObjectForKey(u"listStyles"));
  _graphicStyles = vectorOf<VLGraphicStyle>(coder.decodeObjectForKey(u"graphicStyles"));
  _pageLayoutStyles = vectorOf<VLPageLayout>(coder.decodeObjectForKey(u"pageLayoutStyles"));
  if (ns::DictionaryPtr properties = coder.decodeObjectForKey(u"properties").dictionary())
    _properties = std::move(properties);
}

bool VLStylesheet::kvcValueForKey(std::u16string_view key, ns::Value &value) {
  if (key == u"styles")
    value = arrayOf(_styles);
  else if (key == u"graphicStyles")
    value = arrayOf(_graphicStyles);
  else if (key == u"listStyles")
    value = arrayOf(_listStyles);
  else if (key == u"pageLayoutStyles")
    value = arrayOf(_pageLayoutStyles);
  else if (key == u"displayName")
    value = _displayName ? ns::Value(*_displayName) : ns::Value();
  else if (key == u"fontTable")
    value = _fontTable;
  else if (key == u"properties")
    value = _properties;
  else
    return Object::kvcValueForKey(key, value);
  return true;
}

} // namespace vl
