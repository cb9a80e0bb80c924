// The default stylesheets: a plain document's headings, a novel's chapters and sections, and
// a screenplay's elements.
#include "model/VLLocalization.h"
#include "model/VLStylesheet.h"
#include "ns/String.h"

namespace vl {

namespace {

/// A new paragraph style shown as the localized `displayName`, named after it, inheriting
/// from `parent`.
VLStylePtr namedStyle(std::u16string_view displayName, const VLStylePtr &parent) {
  VLStylePtr style = VLStyle::create();
  style->setDisplayName(localizedString(displayName));
  style->setStyleName(VLStyle::styleNameForDisplayName(style->displayName()));
  style->setParentStyle(parent);
  return style;
}

std::vector<ns::TextTabPtr> oneLeftTabAt36() {
  return {ns::TextTab::create(ns::LeftTabStopType, 36.0)};
}

ns::FontPtr courierUnlessGiven(ns::FontPtr font) {
  return font ? std::move(font) : ns::Font::fontWithName(u"Courier", 12.0);
}

/// The default style of the novel and screenplay sheets: `font`, flush left, no indents and
/// no spacing.
VLStylePtr plainDefaultStyle(const ns::FontPtr &font) {
  VLStylePtr style = VLStyle::defaultParagraphStyle();
  style->setFont(font);
  return style;
}

void flushLeftWithoutSpacing(VLStyle &style) {
  style.setAlignment(ns::TextAlignmentLeft);
  style.setHeadIndent(0);
  style.setFirstLineHeadIndent(0);
  style.setTailIndent(0);
  style.setParagraphSpacingBefore(0);
  style.setParagraphSpacing(0);
}

} // namespace

VLStylesheetPtr VLStylesheet::defaultStylesheet() {
  auto sheet = VLStylesheet::create();
  VLStylePtr base = VLStyle::defaultParagraphStyle();
  VLStylePtr body = namedStyle(u"Body Text", base);
  VLStylePtr heading1 = namedStyle(u"Heading 1", base);
  VLStylePtr heading2 = namedStyle(u"Heading 2", base);
  VLStylePtr heading3 = namedStyle(u"Heading 3", base);

  body->setTabStyle(heading1);
  body->setParagraphSpacing(10.0);

  struct Heading {
    VLStylePtr style;
    int64_t level;
    std::optional<double> size;
    VLStylePtr tab;
  };
  for (const Heading &heading :
       {Heading{heading1, 1, 16.0, heading2}, Heading{heading2, 2, 13.0, heading3},
        Heading{heading3, 3, std::nullopt, body}}) {
    VLStyle &style = *heading.style;
    style.setNextStyle(body);
    style.setTabStyle(heading.tab);
    style.setOutlineLevel(heading.level);
    if (heading.size)
      style.setFontSize(*heading.size);
    style.setHasBoldFontWeight(true);
    style.setParagraphSpacingBefore(12.0);
    style.setParagraphSpacing(12.0);
    style.setKeepWithNext(true);
    style.setAvoidsWidowsAndOrphans(true);
  }

  for (const VLStylePtr &style : {base, body, heading1, heading2, heading3})
    sheet->addStyle(style);
  sheet->addGraphicStyle(VLGraphicStyle::defaultGraphicStyle());
  return sheet;
}

VLStylesheetPtr VLStylesheet::defaultNovelStylesheetWithFont(ns::FontPtr font) {
  font = courierUnlessGiven(std::move(font));
  // A fixed-pitch Courier needs a wider first-line indent to read as one.
  double bodyIndent = 18.0;
  if (font && ns::rangeOfString(font->familyName(), u"courier", ns::CaseInsensitiveSearch).length)
    bodyIndent = 36.0;

  auto sheet = VLStylesheet::create();
  VLStylePtr base = plainDefaultStyle(font);
  flushLeftWithoutSpacing(*base);

  VLStylePtr chapter = namedStyle(u"Chapter Title", base);
  VLStylePtr section = namedStyle(u"Section Text", base);
  VLStylePtr separator = namedStyle(u"Section Separator", base);
  VLStylePtr header = namedStyle(u"Header", base);

  chapter->setNextStyle(section);
  chapter->setTabStyle(section);
  chapter->setOutlineLevel(1);
  chapter->setParagraphSpacingBefore(204.0);
  chapter->setParagraphSpacing(24.0);
  chapter->setAlignment(ns::TextAlignmentCenter);
  chapter->setTextTransform(VLTextTransformUppercase);
  chapter->setPageBreakBefore(true);
  chapter->setLineHeightMultiple(0);
  chapter->setMinimumLineHeight(24.0);
  chapter->setMaximumLineHeight(0);
  chapter->setTabStops({});

  section->setTabStyle(separator);
  section->setFirstLineHeadIndent(bodyIndent);
  section->setLineHeightMultiple(0);
  section->setMinimumLineHeight(24.0);
  section->setMaximumLineHeight(0);
  section->setTabStops(oneLeftTabAt36());

  separator->setNextStyle(section);
  separator->setTabStyle(section);
  separator->setAlignment(ns::TextAlignmentCenter);
  separator->setFirstLineHeadIndent(36.0);
  separator->setLineHeightMultiple(0);
  separator->setMinimumLineHeight(24.0);
  separator->setMaximumLineHeight(0);
  separator->setTabStops(oneLeftTabAt36());

  header->setAlignment(ns::TextAlignmentRight);
  header->setTabStops(oneLeftTabAt36());

  for (const VLStylePtr &style : {chapter, section, separator, header, base})
    sheet->addStyle(style);
  sheet->addGraphicStyle(VLGraphicStyle::defaultGraphicStyle());
  return sheet;
}

VLStylesheetPtr VLStylesheet::defaultNovelStylesheet() {
  return defaultNovelStylesheetWithFont(ns::Font::fontWithName(u"Courier", 12.0));
}

VLStylesheetPtr VLStylesheet::defaultScreenplayStylesheetWithFont(ns::FontPtr font) {
  font = courierUnlessGiven(std::move(font));
  auto sheet = VLStylesheet::create();
  VLStylePtr base = plainDefaultStyle(font);
  base->setFontSize(12.0);
  flushLeftWithoutSpacing(*base);
  // Every line exactly 12 points high, as a typed page has it.
  base->setLineSpacingMode(VLLineSpacingExactly, 12.0);
  base->setTabStops({});

  struct Element {
    std::u16string_view name;
    std::optional<double> headIndent, firstLineHeadIndent, tailIndent, spacingBefore;
    int64_t textTransform; // 0: not defined
    std::optional<ns::TextAlignment> alignment;
    int64_t pagination;
  };
  // Indents from the left page margin; tail indents are negative, from the right margin. The
  // parenthetical's head indent below its first line is deliberate.
  const Element elements[] = {
      {u"Action", {}, {}, {}, 12.0, 0, {}, VLActionPagination},
      {u"Scene Heading", {}, {}, {}, 12.0, VLTextTransformUppercase, {}, VLSceneHeadingPagination},
      {u"Character",
       144.0,
       144.0,
       -18.0,
       12.0,
       VLTextTransformUppercase,
       {},
       VLCharacterPagination},
      {u"Dialogue", 72.0, 72.0, -108.0, {}, 0, {}, VLDialoguePagination},
      {u"Parenthetical", 101.0, 108.0, -144.0, {}, 0, {}, VLParentheticalPagination},
      {u"Transition", 288.0, 288.0, -10.8, 12.0, 0, ns::TextAlignmentRight, VLTransitionPagination},
  };
  std::vector<VLStylePtr> styles;
  for (const Element &element : elements) {
    VLStylePtr style = namedStyle(element.name, base);
    if (element.headIndent)
      style->setHeadIndent(*element.headIndent);
    if (element.firstLineHeadIndent)
      style->setFirstLineHeadIndent(*element.firstLineHeadIndent);
    if (element.tailIndent)
      style->setTailIndent(*element.tailIndent);
    if (element.spacingBefore)
      style->setParagraphSpacingBefore(*element.spacingBefore);
    if (element.textTransform)
      style->setTextTransform(element.textTransform);
    if (element.alignment)
      style->setAlignment(*element.alignment);
    style->setPaginationStyle(element.pagination);
    style->setTabStops({});
    styles.push_back(style);
  }
  const VLStylePtr &action = styles[0], &sceneHeading = styles[1], &character = styles[2],
                   &dialogue = styles[3], &parenthetical = styles[4], &transition = styles[5];
  action->setNextStyle(action);
  action->setTabStyle(character);
  sceneHeading->setNextStyle(action);
  sceneHeading->setTabStyle(action);
  character->setNextStyle(dialogue);
  character->setTabStyle(transition);
  dialogue->setNextStyle(action);
  dialogue->setTabStyle(parenthetical);
  parenthetical->setNextStyle(dialogue);
  parenthetical->setTabStyle(dialogue);

  for (const VLStylePtr &style : styles)
    sheet->addStyle(style);
  sheet->addStyle(base);
  sheet->addGraphicStyle(VLGraphicStyle::defaultGraphicStyle());
  return sheet;
}

VLStylesheetPtr VLStylesheet::defaultScreenplayStylesheet() {
  return defaultScreenplayStylesheetWithFont(ns::Font::fontWithName(u"Courier", 12.0));
}

} // namespace vl
