// VLFCFWriter: records and their terminators, ranges, type codes, lossy text, and round trips
// through the reader.
#include "FCFTestSupport.h"
#include "converters/fcf/VLFCFReader.h"
#include "converters/fcf/VLFCFWriter.h"
#include "model/VLStylesheet.h"
#include "ns/AttributeNames.h"
#include "ns/Font.h"
#include "ns/MutableAttributedString.h"
#include "objects/VLSTextMarker.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <utility>

using namespace vl;
using vl::test::FCFBytes;
using vl::test::paragraphStyleNameAt;

namespace {

/// Styled text built paragraph by paragraph from the default screenplay stylesheet.
class Script {
public:
  Script() : sheet_(VLStylesheet::defaultScreenplayStylesheet()) {}

  Script &add(std::u16string_view styleName, std::u16string_view text) {
    VLStylePtr style = sheet_->styleForName(styleName);
    text_->appendAttributedString(
        ns::AttributedString(text, style ? style->attributes() : nullptr));
    return *this;
  }
  const ns::MutableAttributedStringPtr &text() const { return text_; }
  const VLStylesheetPtr &sheet() const { return sheet_; }

  std::string write(ns::Range range) const {
    return std::string(VLFCFWriter::create(text_)->dataFromRange(range).view());
  }
  std::string write() const { return write(ns::Range{0, text_->length()}); }

private:
  VLStylesheetPtr sheet_;
  ns::MutableAttributedStringPtr text_ = ns::MutableAttributedString::create();
};

VLStylePtr styleWith(std::u16string_view displayName, int64_t pagination) {
  auto style = VLStyle::create();
  style->setDisplayName(std::u16string(displayName));
  if (pagination)
    style->setPaginationStyle(pagination);
  return style;
}

} // namespace

TEST(VLFCFWriterRecords, WritesTheWorkedExample) {
  Script script;
  script.add(u"Scene_20_Heading", u"INT. HOUSE\n");
  EXPECT_EQ(script.write(), FCFBytes().record(1, "INT. HOUSE\r").str());
}

TEST(VLFCFWriterRecords, EmptyRangeGivesTheHeaderAlone) {
  Script script;
  script.add(u"Action", u"Text\n");
  EXPECT_EQ(script.write(ns::Range{2, 0}), FCFBytes().str());
  EXPECT_EQ(VLFCFWriter::create(nullptr)->dataFromRange(ns::Range{0, 0}).length(), 20u);
}

TEST(VLFCFWriterRecords, EveryTerminatorBecomesOneReturn) {
  Script script;
  script.add(u"Action", u"a\nb\rc\r\nd\u2029\ne");
  EXPECT_EQ(script.write(), FCFBytes()
                                .record(2, "a\r")
                                .record(2, "b\r")
                                .record(2, "c\r")
                                .record(2, "d\r")
                                .record(2, "\r")
                                .record(2, "e")
                                .str());
}

TEST(VLFCFWriterRecords, TextEndingInABreakHasNoEmptyRecordAfterIt) {
  Script script;
  script.add(u"Character", u"ANNA\n").add(u"Dialogue", u"Yes.\n");
  EXPECT_EQ(script.write(), FCFBytes().record(3, "ANNA\r").record(5, "Yes.\r").str());
}

TEST(VLFCFWriterRanges, PartialParagraphsAtBothEnds) {
  Script script;
  script.add(u"Action", u"Rain falls.\n").add(u"Transition", u"CUT TO:\n");
  // Starts inside the action and ends inside the transition: the cut paragraph has no CR.
  EXPECT_EQ(script.write(ns::Range{5, 10}),
            FCFBytes().record(2, "falls.\r").record(6, "CUT").str());
  // The style is the one at the range start, not at the paragraph start.
  script.add(u"Action", u"ANNA").add(u"Character", u" SMITH\n");
  EXPECT_EQ(script.write(ns::Range{24, 6}), FCFBytes().record(3, " SMITH").str());
}

TEST(VLFCFWriterTypes, PaginationStylesMapToTypeCodes) {
  const std::pair<int64_t, int32_t> table[] = {{0, 0}, {1, 1}, {2, 2}, {3, 3}, {4, 4},
                                               {5, 5}, {6, 0}, {7, 6}, {8, 0}, {-1, 0}};
  for (auto [pagination, type] : table)
    EXPECT_EQ(VLFCFWriter::typeForPaginationStyle(pagination), type) << pagination;
}

TEST(VLFCFWriterTypes, StylesWithoutPaginationGoByDisplayName) {
  EXPECT_EQ(VLFCFWriter::typeForStyle(nullptr), 0);
  EXPECT_EQ(VLFCFWriter::typeForStyle(styleWith(u"Dialog", 0)), 5);
  EXPECT_EQ(VLFCFWriter::typeForStyle(styleWith(u"My Heading", 1)), 1);
  EXPECT_EQ(VLFCFWriter::typeForStyle(styleWith(u"Shot", 0)), 0);
  EXPECT_EQ(VLFCFWriter::typeForStyle(styleWith(u"Footnote", 0)), 0);
}

TEST(VLFCFWriterText, NonASCIIBecomesOneQuestionMarkPerUnit) {
  Script script;
  script.add(u"Action", u"Caf\u00e9 \U0001F600\n");
  EXPECT_EQ(script.write(), FCFBytes().record(2, "Caf? ??\r").str());
}

TEST(VLFCFWriterLoss, CharacterAttributesAndMarkersAreDropped) {
  Script plain;
  plain.add(u"Action", u"He runs.\n");
  Script rich;
  rich.add(u"Action", u"He runs.\n");
  rich.text()->addAttribute(ns::FontAttributeName, ns::Font::fontWithName(u"Courier-Bold", 12),
                            ns::Range{3, 4});
  rich.text()->addAttribute(ns::LinkAttributeName, u"https://example.com", ns::Range{0, 2});
  rich.text()->addAttribute(VLSTextMarkerAttributeName,
                            VLSTextMarker::textMarkerWithIdentifier(u"c1", ns::Range{0, 8}),
                            ns::Range{0, 8});
  EXPECT_EQ(rich.write(), plain.write());
}

TEST(VLFCFWriterRoundTrip, FileToTextToFileIsByteForByte) {
  FCFBytes file;
  file.record(1, "INT. KITCHEN - NIGHT\r")
      .record(2, "A kettle screams.\r")
      .record(0, "\r")
      .record(3, "MARA\r")
      .record(4, "(to herself)\r")
      .record(5, "Not again.\r")
      .record(6, "SMASH CUT TO:\r")
      .record(2, "Silence.");
  auto text =
      VLFCFReader::create()->attributedStringWithData(file.data(), nullptr, nullptr, nullptr);
  ASSERT_TRUE(text);
  auto written = VLFCFWriter::create(text)->dataFromRange(ns::Range{0, text->length()});
  EXPECT_EQ(written.view(), file.str());
}

TEST(VLFCFWriterRoundTrip, ShotsAndCustomStylesComeBackAsTheDefaultStyle) {
  Script script;
  script.add(u"Action", u"Wide.\n");
  auto shot = styleWith(u"Shot", 0);
  shot->setStyleName(u"Shot");
  script.text()->appendAttributedString(
      ns::AttributedString(u"ANGLE ON DOOR\n", shot->attributes()));
  auto text = VLFCFReader::create()->attributedStringWithData(ns::Data::fromString(script.write()),
                                                              nullptr, nullptr, nullptr);
  ASSERT_TRUE(text);
  EXPECT_EQ(paragraphStyleNameAt(*text, 0), u"Action");
  EXPECT_EQ(paragraphStyleNameAt(*text, 6), u"Default_20_Style");
}
