// VLFCFReader: the header and record checks, paragraph types, line ends, the document
// attributes and the result class.
#include "FCFTestSupport.h"
#include "converters/fcf/VLFCFReader.h"
#include "model/VLConstants.h"
#include "model/VLDocumentSettings.h"
#include "model/VLMasterPage.h"
#include "model/VLStyledTextStorage.h"
#include "ns/Assert.h"
#include "ns/PrintInfo.h"
#include "ns/String.h"
#include "ns/TextStorage.h"

#include <gtest/gtest.h>

#include <chrono>

using namespace vl;
using vl::test::FCFBytes;
using vl::test::paragraphStyleNameAt;

namespace {

ns::MutableAttributedStringPtr read(const FCFBytes &bytes,
                                    ns::DictionaryPtr *attributes = nullptr) {
  return VLFCFReader::create()->attributedStringWithData(bytes.data(), nullptr, attributes,
                                                         nullptr);
}

std::string textOf(const ns::AttributedString &text) {
  return ns::toUTF8(text.string());
}

// The description of the check a corrupt file fails, or "" when the read does not throw.
std::string failureOf(const FCFBytes &bytes) {
  try {
    read(bytes);
  } catch (const ns::InternalInconsistencyException &e) {
    return e.description();
  }
  return {};
}

const std::string RecordCheck =
    "Invalid parameter not satisfying: dataOffset + length <= [data length]";

} // namespace

TEST(VLFCFReaderHeader, ReadsTheWorkedExample) {
  FCFBytes bytes;
  bytes.record(1, "INT. HOUSE\r");
  ASSERT_EQ(bytes.str().size(), 43u);
  auto text = read(bytes);
  ASSERT_TRUE(text);
  EXPECT_EQ(textOf(*text), "INT. HOUSE\n");
  EXPECT_EQ(paragraphStyleNameAt(*text, 0), u"Scene_20_Heading");
}

TEST(VLFCFReaderHeader, WrongMagicAnswersNilAndLeavesTheOutArgumentsAlone) {
  FCFBytes bytes;
  std::string wrong = bytes.record(2, "Text\r").str();
  wrong[3] = '1';
  auto sentinel = ns::Dictionary::create();
  ns::DictionaryPtr attributes = sentinel;
  ns::ErrorPtr error;
  EXPECT_FALSE(VLFCFReader::create()->attributedStringWithData(ns::Data::fromString(wrong), nullptr,
                                                               &attributes, &error));
  EXPECT_EQ(attributes, sentinel);
  EXPECT_FALSE(error);
  // Four bytes are enough to refuse a file: the magic is checked before anything else is read.
  EXPECT_FALSE(VLFCFReader::create()->attributedStringWithData(ns::Data::fromString("RIFF"),
                                                               nullptr, nullptr, nullptr));
}

TEST(VLFCFReaderHeader, HeaderWordsAreNotChecked) {
  FCFBytes bytes;
  std::string odd = bytes.record(2, "Go.").str();
  for (size_t i = 4; i < 20; ++i)
    odd[i] = '\x7f';
  auto text = VLFCFReader::create()->attributedStringWithData(ns::Data::fromString(odd), nullptr,
                                                              nullptr, nullptr);
  ASSERT_TRUE(text);
  EXPECT_EQ(textOf(*text), "Go.");
}

TEST(VLFCFReaderHeader, HeaderAloneIsAnEmptyDocumentWithAllAttributes) {
  ns::DictionaryPtr attributes;
  auto text = read(FCFBytes(), &attributes);
  ASSERT_TRUE(text);
  EXPECT_EQ(text->length(), 0u);
  ASSERT_TRUE(attributes);
  EXPECT_EQ(attributes->count(), 3u);
}

TEST(VLFCFReaderTypes, TypesOneToSixTakeTheElementStyles) {
  FCFBytes bytes;
  bytes.record(1, "EXT. PARK - DAY\r")
      .record(2, "Rain.\r")
      .record(3, "ANNA\r")
      .record(4, "(wet)\r")
      .record(5, "Hello.\r")
      .record(6, "CUT TO:\r");
  auto text = read(bytes);
  ASSERT_TRUE(text);
  const std::u16string expected[] = {u"Scene_20_Heading", u"Action",   u"Character",
                                     u"Parenthetical",    u"Dialogue", u"Transition"};
  uint64_t index = 0;
  for (const std::u16string &name : expected) {
    EXPECT_EQ(paragraphStyleNameAt(*text, index), name);
    index = text->paragraphRangeForRange(ns::Range{index, 0}).max();
  }
}

TEST(VLFCFReaderTypes, UnknownTypesTakeTheDefaultStyle) {
  FCFBytes bytes;
  bytes.record(0, "a\r").record(7, "b\r").record(-1, "c\r");
  auto reader = VLFCFReader::create();
  auto text = reader->attributedStringWithData(bytes.data(), nullptr, nullptr, nullptr);
  ASSERT_TRUE(text);
  auto defaultStyle = reader->stylesheet()->defaultParagraphStyle();
  for (uint64_t index : {0, 2, 4})
    EXPECT_EQ(text->attribute(VLParagraphStyleAttributeName, index, nullptr).as<VLStyle>(),
              defaultStyle);
  EXPECT_FALSE(reader->generalStyle());
}

TEST(VLFCFReaderRecords, RecordsWithoutReturnRunTogetherInTwoRuns) {
  // An empty record adds nothing, not even a paragraph end.
  FCFBytes bytes;
  bytes.record(3, "BOB").record(1, "").record(5, "Hi.\r");
  auto text = read(bytes);
  ASSERT_TRUE(text);
  EXPECT_EQ(textOf(*text), "BOBHi.\n");
  ns::Range run;
  text->attribute(VLParagraphStyleAttributeName, 0, &run);
  EXPECT_EQ(run, ns::MakeRange(0, 3));
  EXPECT_EQ(paragraphStyleNameAt(*text, 3), u"Dialogue");
}

TEST(VLFCFReaderRecords, EveryReturnBecomesALineFeed) {
  FCFBytes bytes;
  bytes.record(2, "a\rb\r\nc\r");
  auto text = read(bytes);
  ASSERT_TRUE(text);
  EXPECT_EQ(textOf(*text), "a\nb\n\nc\n");
}

TEST(VLFCFReaderRecords, ForeignTagEndsTheTextAndTheReadSucceeds) {
  FCFBytes bytes;
  bytes.record(2, "Kept.\r").raw("JUNK").record(2, "Lost.\r");
  ns::DictionaryPtr attributes;
  auto text = read(bytes, &attributes);
  ASSERT_TRUE(text);
  EXPECT_EQ(textOf(*text), "Kept.\n");
  EXPECT_TRUE(attributes);
}

TEST(VLFCFReaderRecords, NonASCIITextAnswersNil) {
  FCFBytes bytes;
  bytes.record(2, "Caf\xc3\xa9\r");
  ns::DictionaryPtr attributes;
  EXPECT_FALSE(read(bytes, &attributes));
  EXPECT_FALSE(attributes);
}

TEST(VLFCFReaderCorruption, LengthsThatDoNotFitFailTheRecordCheck) {
  EXPECT_EQ(failureOf(FCFBytes().head(3, 2)), RecordCheck);
  EXPECT_EQ(failureOf(FCFBytes().head(10, 2).raw("abc")), RecordCheck);
  // A length of 4 GB is refused at once, before any memory is taken for it.
  auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(failureOf(FCFBytes().head(0xffffffffu, 2)), RecordCheck);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
}

TEST(VLFCFReaderCorruption, CutWordsFailACheck) {
  // Right magic and a short header; a record cut inside its head; no bytes at all.
  auto readBytes = [](std::string bytes) {
    return VLFCFReader::create()->attributedStringWithData(ns::Data::fromString(bytes), nullptr,
                                                           nullptr, nullptr);
  };
  EXPECT_THROW(readBytes(FCFBytes().str().substr(0, 10)), ns::InternalInconsistencyException);
  EXPECT_THROW(read(FCFBytes().word(0x46545854).word(8)), ns::InternalInconsistencyException);
  EXPECT_THROW(readBytes(""), ns::InternalInconsistencyException);
}

TEST(VLFCFReaderAttributes, TheDocumentAttributesAreTheDefaults) {
  ns::PrintInfo::resetSharedPrintInfo();
  ns::DictionaryPtr attributes;
  auto reader = VLFCFReader::create();
  ASSERT_TRUE(reader->attributedStringWithData(FCFBytes().record(2, "x").data(), nullptr,
                                               &attributes, nullptr));
  ASSERT_TRUE(attributes);
  EXPECT_EQ(attributes->objectForKey(VLStylesheetDocumentAttribute).as<VLStylesheet>(),
            reader->stylesheet());
  EXPECT_TRUE(reader->stylesheet()->styleForName(u"Scene_20_Heading"));

  auto page = valueAtKeyPath(attributes, u"VLODFMasterPages.Standard").as<VLMasterPage>();
  ASSERT_TRUE(page);
  EXPECT_EQ(page->name(), u"Standard");
  const auto &shared = ns::PrintInfo::sharedPrintInfo();
  EXPECT_EQ(shared->leftMargin(), 108.0);
  EXPECT_EQ(shared->rightMargin(), 72.0);
  EXPECT_FALSE(shared->isHorizontallyCentered());
  EXPECT_FALSE(shared->isVerticallyCentered());
  ns::PrintInfo::resetSharedPrintInfo();

  EXPECT_EQ(valueAtKeyPath(attributes, u"settings.documentSettings.defaultContentStyle"),
            ns::Value(u"Action"));
}

TEST(VLFCFReaderAttributes, DefaultSettingsHoldTheListedValues) {
  auto settings = VLFCFReader::create()->defaultSettings();
  auto levels = valueAtKeyPath(settings, u"outlineSettings.outlineLevelSettings").array();
  ASSERT_TRUE(levels);
  ASSERT_EQ(levels->count(), 1u);
  EXPECT_EQ(levels->objectAtIndex(0).dictionary()->objectForKey(u"defaultStyle"),
            ns::Value(u"Scene_20_Heading"));
  EXPECT_EQ(levels->objectAtIndex(0).dictionary()->objectForKey(u"displayName"),
            ns::Value(u"Scene"));

  auto completions = valueAtKeyPath(settings, u"documentSettings.completions").dictionary();
  ASSERT_TRUE(completions);
  EXPECT_EQ(completions->allKeys(),
            (std::vector<std::u16string>{u"extensions", u"sceneIntros", u"times", u"transitions"}));
  VLCompletionLists lists = completionListsFromDictionary(ns::Value(completions));
  EXPECT_EQ(lists.sceneIntros, (std::vector<std::u16string>{u"INT", u"EXT", u"I/E"}));
  EXPECT_EQ(lists.times.size(), 9u);
  EXPECT_EQ(lists.times.back(), u"THE NEXT DAY");
  EXPECT_EQ(lists.extensions[1], u"(CONT'D)");
  EXPECT_EQ(lists.transitions.back(), u"FADE TO BLACK.");

  // Fresh on every call: changing one tree leaves the next alone.
  completions->removeAllObjects();
  EXPECT_TRUE(valueAtKeyPath(VLFCFReader::create()->defaultSettings(),
                             u"documentSettings.completions.times")
                  .array());
}

TEST(VLFCFReaderResult, TheResultClassCanBeChosen) {
  auto reader = VLFCFReader::create();
  reader->setAttributedStringClass(VLFCFReader::attributedStringClassOf<VLStyledTextStorage>());
  auto text = reader->attributedStringWithData(
      FCFBytes().record(3, "ANNA\r").record(5, "Yes.\r").data(), nullptr, nullptr, nullptr);
  ASSERT_TRUE(std::dynamic_pointer_cast<VLStyledTextStorage>(text));
  EXPECT_EQ(textOf(*text), "ANNA\nYes.\n");
  EXPECT_EQ(paragraphStyleNameAt(*text, 5), u"Dialogue");

  // The same reader reads again from the start of the new data.
  reader->setAttributedStringClass(nullptr);
  text = reader->attributedStringWithData(FCFBytes().record(2, "Two").data(), nullptr, nullptr,
                                          nullptr);
  ASSERT_TRUE(text);
  EXPECT_FALSE(std::dynamic_pointer_cast<ns::TextStorage>(text));
  EXPECT_EQ(textOf(*text), "Two");
}
