// The default stylesheets, style by style: order, names, links, what each style defines and
// the values writers see.
#include "model/VLStylesheet.h"
#include "ns/Array.h"
#include "ns/Bundle.h"
#include "ns/String.h"

#include <gtest/gtest.h>

using namespace vl;
using ns::Value;

namespace {

constexpr uint32_t resetBits =
    0x7fffffffu & ~(VLStyleDefinesBaseWritingDirection | VLStyleDefinesUnderlinePattern |
                    VLStyleDefinesUnderlineMask);
constexpr uint32_t lineHeightBits = VLStyleDefinesLineHeightMultiple |
                                    VLStyleDefinesMinimumLineHeight |
                                    VLStyleDefinesMaximumLineHeight;
constexpr uint32_t indentBits =
    VLStyleDefinesHeadIndent | VLStyleDefinesFirstLineHeadIndent | VLStyleDefinesTailIndent;
constexpr uint32_t tabs = VLStyleDefinesTabStops, before = VLStyleDefinesParagraphSpacingBefore,
                   after = VLStyleDefinesParagraphSpacing, aligned = VLStyleDefinesAlignment,
                   transformed = VLStyleDefinesTextTransform;
constexpr int64_t left = ns::TextAlignmentLeft, center = ns::TextAlignmentCenter,
                  right = ns::TextAlignmentRight, upper = VLTextTransformUppercase;

using Values = std::vector<std::pair<std::u16string_view, Value>>; // by key-value coding

struct Row {
  std::u16string_view displayName, styleName;
  std::u16string_view parent, next, tab; // style names; empty for none
  uint32_t defines;
  Values values;
};

Value tabsAt(std::initializer_list<double> locations) {
  auto array = ns::Array::create();
  for (double location : locations)
    array->addObject(ns::TextTab::create(ns::LeftTabStopType, location));
  return array;
}

Value courier12() {
  return ns::Font::fontWithName(u"Courier", 12);
}

Value nameOf(const VLStylePtr &style) {
  return style ? Value(*style->styleName()) : Value(u"");
}

void expectRows(const VLStylesheet &sheet, const std::vector<Row> &rows) {
  ASSERT_EQ(sheet.styles().size(), rows.size());
  for (size_t i = 0; i < rows.size(); ++i) {
    const Row &row = rows[i];
    const VLStylePtr &style = sheet.styles()[i];
    SCOPED_TRACE(ns::toUTF8(row.displayName));
    EXPECT_EQ(style->displayName(), row.displayName);
    EXPECT_EQ(style->styleName(), row.styleName);
    EXPECT_EQ(nameOf(style->parentStyle()), Value(row.parent));
    EXPECT_EQ(nameOf(style->nextStyle()), Value(row.next));
    EXPECT_EQ(nameOf(style->tabStyle()), Value(row.tab));
    EXPECT_EQ(style->defines(), row.defines) << std::hex << (style->defines() ^ row.defines);
    EXPECT_EQ(style->isDefaultStyle(), row.styleName == u"Default_20_Style");
    EXPECT_TRUE(style->isParagraphStyle());
    for (const auto &[key, expected] : row.values)
      EXPECT_EQ(style->valueForKey(key), expected) << ns::toUTF8(key);
  }
  auto graphics = sheet.graphicStyles();
  ASSERT_EQ(graphics.size(), 1u);
  EXPECT_TRUE(graphics[0]->isDefaultStyle());
  EXPECT_EQ(graphics[0]->styleName(), u"Default_20_Graphic_20_Style");
}

} // namespace

// clang-format off
TEST(VLDefaultStylesheets, DefaultStylesheet) {
  constexpr uint32_t headingBits = VLStyleDefinesHeaderLevel | VLStyleDefinesHasBoldFontWeight |
      before | after | VLStyleDefinesKeepWithNext | VLStyleDefinesAvoidsWidowsAndOrphans;
  auto heading = [](int level, double size) {
    return Values{{u"headerLevel", level}, {u"outlineLevel", level}, {u"fontSize", size},
                  {u"hasBoldFontWeight", true}, {u"paragraphSpacingBefore", 12.0},
                  {u"paragraphSpacing", 12.0}, {u"keepWithNext", true},
                  {u"avoidsWidowsAndOrphans", true}};
  };
  expectRows(*VLStylesheet::defaultStylesheet(), {
      {u"Default Style", u"Default_20_Style", u"", u"", u"", resetBits,
       {{u"fontSize", 12.0}, {u"font", ns::Font::userFontOfSize(12)}, {u"hasBoldFontWeight", false},
        {u"outlineLevel", 10}}},
      {u"Body Text", u"Body_20_Text", u"Default_20_Style", u"", u"Heading_20_1", after,
       {{u"paragraphSpacing", 10.0}, {u"paragraphSpacingBefore", 0.0}}},
      {u"Heading 1", u"Heading_20_1", u"Default_20_Style", u"Body_20_Text", u"Heading_20_2",
       headingBits | VLStyleDefinesFontSize, heading(1, 16)},
      {u"Heading 2", u"Heading_20_2", u"Default_20_Style", u"Body_20_Text", u"Heading_20_3",
       headingBits | VLStyleDefinesFontSize, heading(2, 13)},
      {u"Heading 3", u"Heading_20_3", u"Default_20_Style", u"Body_20_Text", u"Body_20_Text",
       headingBits, heading(3, 12)},
  });
}

TEST(VLDefaultStylesheets, NovelStylesheet) {
  expectRows(*VLStylesheet::defaultNovelStylesheet(), {
      {u"Chapter Title", u"Chapter_20_Title", u"Default_20_Style", u"Section_20_Text",
       u"Section_20_Text", VLStyleDefinesHeaderLevel | before | after | aligned | transformed |
           VLStyleDefinesPageBreakBefore | lineHeightBits | tabs,
       {{u"outlineLevel", 1}, {u"paragraphSpacingBefore", 204.0}, {u"paragraphSpacing", 24.0},
        {u"alignment", center}, {u"textTransform", upper}, {u"pageBreakBefore", true},
        {u"minimumLineHeight", 24.0}, {u"font", courier12()}}},
      {u"Section Text", u"Section_20_Text", u"Default_20_Style", u"", u"Section_20_Separator",
       VLStyleDefinesFirstLineHeadIndent | lineHeightBits | tabs,
       {{u"firstLineHeadIndent", 36.0}, {u"minimumLineHeight", 24.0}, {u"tabStops", tabsAt({36})}}},
      {u"Section Separator", u"Section_20_Separator", u"Default_20_Style", u"Section_20_Text",
       u"Section_20_Text", aligned | VLStyleDefinesFirstLineHeadIndent | lineHeightBits | tabs,
       {{u"alignment", center}, {u"firstLineHeadIndent", 36.0}, {u"minimumLineHeight", 24.0},
        {u"tabStops", tabsAt({36})}}},
      {u"Header", u"Header", u"Default_20_Style", u"", u"", aligned | tabs,
       {{u"alignment", right}, {u"tabStops", tabsAt({36})}}},
      {u"Default Style", u"Default_20_Style", u"", u"", u"", resetBits,
       {{u"font", courier12()}, {u"tabStops", tabsAt({})}, {u"defaultTabInterval", 36.0}}},
  });
}

TEST(VLDefaultStylesheets, ScreenplayStylesheet) {
  constexpr uint32_t element = VLStyleDefinesPaginationStyle | tabs;
  auto values = [](double head, double first, double tail, double spacingBefore,
                   int64_t transform, int64_t alignment, int64_t pagination) {
    return Values{{u"headIndent", head}, {u"firstLineHeadIndent", first}, {u"tailIndent", tail},
                  {u"paragraphSpacingBefore", spacingBefore}, {u"textTransform", transform},
                  {u"alignment", alignment}, {u"paginationStyle", pagination},
                  {u"tabStops", tabsAt({})}, {u"font", courier12()},
                  {u"minimumLineHeight", 12.0}, {u"maximumLineHeight", 12.0},
                  {u"lineHeightMultiple", 0.0}};
  };
  auto sheet = VLStylesheet::defaultScreenplayStylesheet();
  expectRows(*sheet, {
      {u"Action", u"Action", u"Default_20_Style", u"Action", u"Character", element | before,
       values(0, 0, 0, 12, 0, left, 2)},
      {u"Scene Heading", u"Scene_20_Heading", u"Default_20_Style", u"Action", u"Action",
       element | before | transformed, values(0, 0, 0, 12, 2, left, 1)},
      {u"Character", u"Character", u"Default_20_Style", u"Dialogue", u"Transition",
       element | before | transformed | indentBits, values(144, 144, -18, 12, 2, left, 3)},
      {u"Dialogue", u"Dialogue", u"Default_20_Style", u"Action", u"Parenthetical",
       element | indentBits, values(72, 72, -108, 0, 0, left, 5)},
      {u"Parenthetical", u"Parenthetical", u"Default_20_Style", u"Dialogue", u"Dialogue",
       element | indentBits, values(101, 108, -144, 0, 0, left, 4)},
      {u"Transition", u"Transition", u"Default_20_Style", u"", u"",
       element | before | indentBits | aligned, values(288, 288, -10.8, 12, 0, right, 7)},
      {u"Default Style", u"Default_20_Style", u"", u"", u"", resetBits,
       values(0, 0, 0, 0, 0, left, 0)},
  });
  Value info;
  EXPECT_EQ(sheet->styleForName(u"Dialogue")->lineSpacingModeWithInfo(&info), VLLineSpacingExactly)
      << "through the cascade";
  EXPECT_EQ(info, Value(12.0));
  EXPECT_TRUE(sheet->requiresSpecialPagination());
}
// clang-format on

TEST(VLDefaultStylesheets, NovelBodyIndentFollowsTheFontFamily) {
  auto indentWith = [](ns::FontPtr font) {
    auto sheet = VLStylesheet::defaultNovelStylesheetWithFont(std::move(font));
    return std::pair{sheet->styleForName(u"Section_20_Text")->firstLineHeadIndent(),
                     sheet->styleForName(u"Section_20_Separator")->firstLineHeadIndent()};
  };
  EXPECT_EQ(indentWith(ns::Font::fontWithName(u"Helvetica", 11)), std::pair(18.0, 36.0));
  EXPECT_EQ(indentWith(ns::Font::fontWithName(u"Courier New", 12)), std::pair(36.0, 36.0));
  EXPECT_EQ(indentWith(nullptr), std::pair(36.0, 36.0)) << "nil means Courier";
  auto times = VLStylesheet::defaultNovelStylesheetWithFont(ns::Font::fontWithName(u"Times", 14));
  EXPECT_EQ(times->defaultParagraphStyle()->font()->familyName(), u"Times");
}

TEST(VLDefaultStylesheets, NamesComeFromTheLocalizedDisplayNames) {
  ns::Bundle::mainBundle()->setStringsTable(
      u"", ns::Dictionary::create({{u"Body Text", Value(u"Texte courant")},
                                   {u"Default Graphic Style", Value(u"Image")}}));
  auto sheet = VLStylesheet::defaultStylesheet();
  ns::Bundle::resetMainBundle();
  auto body = sheet->styleForDisplayName(u"Texte courant");
  ASSERT_TRUE(body);
  EXPECT_EQ(body->styleName(), u"Texte_20_courant");
  EXPECT_EQ(sheet->styleForName(u"Heading_20_1")->nextStyle(), body);
  EXPECT_EQ(sheet->graphicStyles()[0]->styleName(), u"Image");
}
