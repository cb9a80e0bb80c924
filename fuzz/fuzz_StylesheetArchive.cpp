// Fuzz target: decode arbitrary bytes as a keyed archive and, when a stylesheet comes out,
// use it as a host does: look styles up, resolve and describe them, import them
// into another sheet and copy the sheet.
#include "model/VLStylesheet.h"
#include "ns/Array.h"
#include "ns/KeyedArchiver.h"

#include <cstddef>
#include <cstdint>
#include <unordered_set>
#include <vector>

using namespace vl;

namespace {

// Enough styles to reach every kind of damage, few enough that one input stays fast.
constexpr size_t StylesExercised = 64;
constexpr size_t StylesImported = 128;

void exerciseStyle(const VLStylePtr &style) {
  (void)style->attributes();
  (void)style->textDefinition();
  (void)style->description();
  (void)style->lineSpacingModeWithInfo();
  (void)style->keepWithNextGivenPagiationStyle();
  (void)style->isEqualToStyle(style);
  (void)style->isDescendantOfStyle(style->nextStyle());
  if (style->isParagraphStyle())
    (void)style->derivedParagraphStyleWithAttributes(*style->attributes());
}

void exerciseSheet(VLStylesheet &sheet) {
  const std::vector<VLStylePtr> styles = sheet.styles();
  for (size_t i = 0; i < styles.size() && i < StylesExercised; ++i) {
    const VLStylePtr &style = styles[i];
    (void)sheet.styleForName(style->styleName());
    (void)sheet.styleForDisplayName(style->displayName());
    (void)sheet.descendantsOfStyle(style);
    (void)sheet.uniqueNameForDisplayName(style->displayName());
    exerciseStyle(style);
  }
  for (const VLGraphicStylePtr &style : sheet.graphicStyles())
    exerciseStyle(style);
  for (const VLListStylePtr &list : sheet.listStyles()) {
    (void)sheet.listStyleForName(list->styleName());
    (void)sheet.listStyleForDisplayName(list->displayName());
  }
  for (int64_t level = 0; level <= 11; ++level)
    (void)sheet.displayNameForOutlineLevel(level);
  (void)sheet.uniqueNameForListStyle(nullptr);
  (void)sheet.uniqueNameForPageLayout(nullptr);
  (void)sheet.uniqueNameForGraphicStyle(nullptr);
  (void)sheet.styleForHeaderLevel(0);
  (void)sheet.requiresSpecialPagination();
  (void)sheet.defaultOutlineSettings();
  (void)sheet.uniqueNameForStyle(nullptr);

  std::vector<VLStylePtr> closure;
  for (const VLStylePtr &style : styles)
    sheet.addStylesForStyle(style, closure);
  if (closure.size() <= StylesImported)
    (void)VLStylesheet::defaultStylesheet()->importStyles(styles, closure.size() % 2 == 0);

  auto copy = ns::copyOf(sheet);
  // A decoded sheet archives again, and its copy holds the same styles.
  if (copy && copy->styles().size() != sheet.styles().size())
    __builtin_trap();
}

// Style graphs without a stylesheet are the host's to unlink, and a damaged archive can
// hide rings in properties too: unlink everything reachable so leaks that remain are real.
void breakRings(const ns::Value &root) {
  std::unordered_set<const void *> seen;
  std::vector<ns::Value> pending{root};
  std::vector<VLStylePtr> styles;
  std::vector<ns::DictionaryPtr> dictionaries;
  auto push = [&](ns::Value value) {
    if (!value.isNil())
      pending.push_back(std::move(value));
  };
  while (!pending.empty()) {
    ns::Value value = std::move(pending.back());
    pending.pop_back();
    if (ns::ArrayPtr array = value.array()) {
      if (seen.insert(array.get()).second)
        for (const ns::Value &element : *array)
          push(element);
    } else if (ns::DictionaryPtr dictionary = value.dictionary()) {
      if (seen.insert(dictionary.get()).second) {
        for (const auto &entry : *dictionary)
          push(entry.second);
        dictionaries.push_back(dictionary);
      }
    } else if (auto sheet = value.as<VLStylesheet>()) {
      if (seen.insert(sheet.get()).second) {
        for (const VLStylePtr &style : sheet->styles())
          push(style);
        for (const VLGraphicStylePtr &style : sheet->graphicStyles())
          push(style);
        push(sheet->properties());
      }
    } else if (auto style = value.as<VLStyle>()) {
      if (seen.insert(style.get()).second) {
        push(style->parentStyle());
        push(style->nextStyle());
        push(style->tabStyle());
        push(style->properties());
        styles.push_back(style);
      }
    }
  }
  for (const VLStylePtr &style : styles) {
    style->setParentStyle(nullptr);
    style->setNextStyle(nullptr);
    style->setTabStyle(nullptr);
  }
  for (const ns::DictionaryPtr &dictionary : dictionaries)
    dictionary->removeAllObjects();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  ns::ErrorPtr error;
  ns::Value root = ns::KeyedUnarchiver::unarchiveObjectWithData(ns::Data(data, size), &error);
  if (auto sheet = root.as<VLStylesheet>())
    exerciseSheet(*sheet);
  breakRings(root);
  return 0;
}
