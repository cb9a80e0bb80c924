// Stylesheets: the style collection and its lookups, the other collections, copying
// through the archiver, coding, and breaking the style rings on destruction.
#include "model/VLStylesheet.h"

#include "model/VLLocalization.h"
#include "ns/Array.h"
#include "ns/String.h"

#include <algorithm>
#include <unordered_set>

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

constexpr std::u16string_view ImportStyleMapKey = u"importStyleMap";

/// `format` with the first number from 1 for which `taken` is false.
template <class Taken> std::u16string firstFreeName(std::u16string_view format, Taken taken) {
  for (int64_t number = 1;; ++number) {
    std::u16string name = ns::format(format, number);
    if (!taken(name))
      return name;
  }
}

/// The first of `objects` whose `name` (a member answering an optional name) is `name`.
template <class T, class Name>
std::shared_ptr<T> firstNamed(const std::vector<std::shared_ptr<T>> &objects,
                              std::u16string_view name, Name nameOf) {
  for (const auto &object : objects)
    if (object && nameOf(*object) == name)
      return object;
  return nullptr;
}

/// The style the map holds for the style name of `style`; nil for nil, for a style with no
/// name, and when there is no map.
VLStylePtr mappedStyle(const ns::DictionaryPtr &map, const VLStylePtr &style) {
  if (!map || !style || !style->styleName())
    return nullptr;
  return map->objectForKey(*style->styleName()).as<VLStyle>();
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
  for (const VLStylePtr &style : _linkedStyles)
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

VLStylePtr VLStylesheet::styleMatchingStyle(const VLStylePtr &style) const {
  if (!style)
    return nullptr;
  for (const VLStylePtr &candidate : _styles)
    if (candidate->isEqualToStyle(style))
      return candidate;
  return nullptr;
}

std::optional<std::vector<VLStylePtr>>
VLStylesheet::descendantsOfStyle(const VLStylePtr &style) const {
  if (!style)
    return std::nullopt;
  std::vector<VLStylePtr> children;
  for (const VLStylePtr &member : _styles) {
    // Climb to the ancestor that is a child of `style`, if the chain passes through it.
    const VLStylePtr *climber = &member;
    for (size_t depth = 1;
         *climber && (*climber)->parentStyle() != style && depth < VLStyleMaxCascadeDepth; ++depth)
      climber = &(*climber)->parentStyle();
    if (!*climber || (*climber)->parentStyle() != style)
      continue;
    if (std::find(children.begin(), children.end(), *climber) == children.end())
      children.push_back(*climber);
  }
  if (children.empty())
    return std::nullopt;
  return children;
}

// Free names.

std::optional<std::u16string>
VLStylesheet::uniqueNameForDisplayName(std::optional<std::u16string_view> displayName) const {
  std::optional<std::u16string> name = VLStyle::styleNameForDisplayName(displayName);
  if (!name || !styleForName(*name))
    return name;
  return firstFreeName(*name + u"_%ld", [this](const std::u16string &tried) {
    return styleForName(tried) != nullptr;
  });
}

std::optional<std::u16string>
VLStylesheet::uniqueDisplayNameForName(std::optional<std::u16string_view> name) const {
  if (!name)
    return std::nullopt;
  if (!styleForDisplayName(*name))
    return std::u16string(*name);
  for (int64_t number = 2;; ++number) {
    std::u16string tried = ns::format(u"%@ %ld", *name, number);
    if (!styleForDisplayName(tried))
      return tried;
  }
}

std::u16string VLStylesheet::uniqueNameForStyle(const VLStylePtr &,
                                                std::u16string_view format) const {
  return firstFreeName(
      format, [this](const std::u16string &tried) { return styleForName(tried) != nullptr; });
}

std::u16string VLStylesheet::uniqueNameForStyle(const VLStylePtr &style) const {
  std::u16string_view format = u"P%d";
  if (style && style->isTextStyle())
    format = u"T%d";
  else if (style && !style->isParagraphStyle())
    format = u"U%d";
  return uniqueNameForStyle(style, format);
}

std::u16string VLStylesheet::uniqueNameForGraphicStyle(const VLGraphicStylePtr &) const {
  return firstFreeName(u"fr%d", [this](const std::u16string &tried) {
    return firstNamed(_graphicStyles, tried,
                      [](const VLGraphicStyle &style) { return style.styleName(); }) != nullptr;
  });
}

std::u16string VLStylesheet::uniqueNameForListStyle(const VLListStylePtr &) const {
  return firstFreeName(
      u"L%d", [this](const std::u16string &tried) { return listStyleForName(tried) != nullptr; });
}

std::u16string VLStylesheet::uniqueNameForPageLayout(const VLPageLayoutPtr &) const {
  return firstFreeName(u"pm%d", [this](const std::u16string &tried) {
    return pageLayoutStyleForName(tried) != nullptr;
  });
}

// Importing.

void VLStylesheet::addStylesForStyle(const VLStylePtr &style,
                                     std::vector<VLStylePtr> &array) const {
  std::unordered_set<const VLStyle *> present;
  for (const VLStylePtr &member : array)
    present.insert(member.get());
  // Depth first, parent before next before tab, without recursion: next links alone can
  // chain every style of a sheet.
  std::vector<VLStylePtr> pending{style};
  while (!pending.empty()) {
    VLStylePtr current = std::move(pending.back());
    pending.pop_back();
    if (!current || !present.insert(current.get()).second)
      continue;
    pending.push_back(current->tabStyle());
    pending.push_back(current->nextStyle());
    pending.push_back(current->parentStyle());
    array.push_back(std::move(current));
  }
}

ns::DictionaryPtr VLStylesheet::importStyles(const std::vector<VLStylePtr> &styles,
                                             bool replaceDuplicates) {
  auto map = ns::Dictionary::create();
  _properties->setObject(map, ImportStyleMapKey);
  // The map must not outlive the call in the sheet's properties, whatever happens.
  struct RemoveMap {
    ns::Dictionary &properties;
    ~RemoveMap() { properties.removeObjectForKey(ImportStyleMapKey); }
  } removeMap{*_properties};

  std::vector<VLStylePtr> remaining;
  for (const VLStylePtr &style : styles)
    addStylesForStyle(style, remaining);
  while (!remaining.empty()) {
    VLStylePtr first = remaining.front();
    if (first->isParagraphStyle())
      importStyle(first, replaceDuplicates, remaining);
    else
      remaining.erase(remaining.begin());
  }

  // Looked up by the old name: a style renamed on the way is not found under it.
  for (const VLStylePtr &style : styles) {
    if (!style)
      continue;
    if (VLStylePtr here = styleForName(style->styleName())) {
      here->setNextStyle(mappedStyle(map, style->nextStyle()));
      here->setTabStyle(mappedStyle(map, style->tabStyle()));
    }
  }
  return map;
}

VLStylePtr VLStylesheet::importStyle(const VLStylePtr &style, bool replaceDuplicates,
                                     std::vector<VLStylePtr> &remainingStyles) {
  return importStyle(style, replaceDuplicates, remainingStyles, 1);
}

VLStylePtr VLStylesheet::importStyle(VLStylePtr style, bool replaceDuplicates,
                                     std::vector<VLStylePtr> &remainingStyles, size_t depth) {
  // `style` is held by value: the caller may pass an element of `remainingStyles`.
  ns::DictionaryPtr map = _properties->objectForKey(ImportStyleMapKey).dictionary();
  auto record = [&](const VLStylePtr &imported) {
    if (map && style->styleName())
      map->setObject(imported, *style->styleName());
    return imported;
  };
  auto held = std::find(remainingStyles.begin(), remainingStyles.end(), style);
  if (!style || held == remainingStyles.end())
    return mappedStyle(map, style);
  remainingStyles.erase(held);

  if (VLStylePtr match = styleMatchingStyle(style))
    return record(match);

  VLStylePtr parent;
  if (depth < VLStyleMaxCascadeDepth)
    parent = importStyle(style->parentStyle(), replaceDuplicates, remainingStyles, depth + 1);
  VLStylePtr copy = ns::copyOf(*style);
  copy->setParentStyle(parent);

  if (copy->isDefaultStyle()) {
    // This sheet keeps its one default: a foreign default arrives as its difference.
    copy->setIsDefaultStyle(false);
    VLStylePtr base = defaultParagraphStyle();
    VLStylePtr difference = base->diffWithAttributes(*copy->attributes());
    difference->setParentStyle(base);
    addStyle(difference);
    if (!difference->styleName()) {
      std::u16string name =
          uniqueNameForStyle(difference, localizedString(u"Imported Default Style %d"));
      difference->setDisplayName(uniqueDisplayNameForName(name));
      difference->setStyleName(VLStyle::styleNameForDisplayName(difference->displayName()));
    }
    return record(difference);
  }

  if (VLStylePtr taken = styleForName(copy->styleName())) {
    if (replaceDuplicates) {
      replaceStyle(taken, copy);
      return record(copy);
    }
    copy->setDisplayName(uniqueDisplayNameForName(copy->displayName()));
    copy->setStyleName(VLStyle::styleNameForDisplayName(copy->displayName()));
  }
  addStyle(copy);
  return record(copy);
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

void VLStylesheet::addListStyle(VLListStylePtr listStyle) {
  if (listStyle)
    _listStyles.push_back(std::move(listStyle));
}

void VLStylesheet::removeListStyle(const VLListStylePtr &listStyle) {
  VLListStylePtr removed = listStyle;
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

VLListStylePtr VLStylesheet::listStyleForName(std::optional<std::u16string_view> name) const {
  if (!name)
    return nullptr;
  return firstNamed(_listStyles, *name, [](const VLListStyle &style) { return style.styleName(); });
}

VLListStylePtr
VLStylesheet::listStyleForDisplayName(std::optional<std::u16string_view> displayName) const {
  if (!displayName)
    return nullptr;
  return firstNamed(_listStyles, *displayName,
                    [](const VLListStyle &style) { return style.displayName(); });
}

std::optional<std::u16string> VLStylesheet::displayNameForOutlineLevel(int64_t level) const {
  auto outline = std::find_if(_listStyles.begin(), _listStyles.end(),
                              [](const VLListStylePtr &style) { return style->isOutlineStyle(); });
  if (outline != _listStyles.end() && level >= 0)
    if (VLListLevelStylePtr levelStyle =
            (*outline)->listLevelStyleForLevel(static_cast<uint64_t>(level)))
      if (std::optional<std::u16string> name = levelStyle->displayName())
        return name;
  VLStylePtr style = styleForOutlineLevel(level);
  return style ? style->displayName() : std::nullopt;
}

VLPageLayoutPtr
VLStylesheet::pageLayoutStyleForName(std::optional<std::u16string_view> name) const {
  if (!name)
    return nullptr;
  return firstNamed(_pageLayoutStyles, *name,
                    [](const VLPageLayout &layout) { return layout.name(); });
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
  // Every style a key holds, alone or in an array, in its place or not: a damaged archive
  // may put styles where they are dropped, and their rings are the sheet's to break too.
  std::vector<VLStylePtr> held;
  auto decode = [&](std::u16string_view key) {
    ns::Value value = coder.decodeObjectForKey(key);
    if (auto style = value.as<VLStyle>())
      held.push_back(std::move(style));
    else if (ns::ArrayPtr array = value.array())
      for (const ns::Value &element : *array)
        if (auto style = element.as<VLStyle>())
          held.push_back(std::move(style));
    return value;
  };
  ns::Value displayName = decode(u"displayName");
  _displayName =
      displayName.isString() ? std::optional<std::u16string>(displayName.string()) : std::nullopt;
  _fontTable = decode(u"fontTable").as<VLFontTable>();
  _styles = vectorOf<VLStyle>(decode(u"styles"));
  _listStyles = vectorOf<VLListStyle>(decode(u"listStyles"));
  _graphicStyles = vectorOf<VLGraphicStyle>(decode(u"graphicStyles"));
  _pageLayoutStyles = vectorOf<VLPageLayout>(decode(u"pageLayoutStyles"));
  if (ns::DictionaryPtr properties = decode(u"properties").dictionary())
    _properties = std::move(properties);
  adoptDecodedStyles(held);
}

void VLStylesheet::decodingDidFail() {
  _listStyles.clear();
  _graphicStyles.clear();
  _pageLayoutStyles.clear();
  _properties->removeAllObjects();
  _fontTable = nullptr;
  _styles.clear();
  _linkedStyles.clear();
}

void VLStylesheet::adoptDecodedStyles(const std::vector<VLStylePtr> &held) {
  // Breadth first over the links from the listed styles and the held ones; what is reached
  // and not listed is adopted.
  std::unordered_set<const VLStyle *> known;
  std::vector<VLStyle *> reached;
  for (const VLStylePtr &style : _styles)
    if (known.insert(style.get()).second)
      reached.push_back(style.get());
  for (const VLGraphicStylePtr &style : _graphicStyles)
    if (known.insert(style.get()).second)
      reached.push_back(style.get());
  for (const VLStylePtr &style : held)
    if (known.insert(style.get()).second) {
      reached.push_back(style.get());
      _linkedStyles.push_back(style);
    }
  for (size_t i = 0; i < reached.size(); ++i) {
    const VLStyle &style = *reached[i];
    for (const VLStylePtr *link : {&style.parentStyle(), &style.nextStyle(), &style.tabStyle()})
      if (*link && known.insert(link->get()).second) {
        reached.push_back(link->get());
        _linkedStyles.push_back(*link);
      }
  }
  // Applying an automatic style names its parent in the text, which an automatic parent
  // cannot stand for; an archive that pairs them is damaged and the child keeps its values
  // but no longer stands for its parent.
  for (VLStyle *style : reached)
    if (style->isAutomaticStyle() && style->parentStyle() &&
        style->parentStyle()->isAutomaticStyle())
      style->setIsAutomaticStyle(false);
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
