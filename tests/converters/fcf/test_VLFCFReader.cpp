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

ns::MutableAttributedStringPtr read(std::string_view bytes, ns::DictionaryPtr *attributes = nullptr,
                                    const VLFCFReaderPtr &reader = VLFCFReader::create()) {
  return reader->attributedStringWithData(ns::Data::fromString(bytes), nullptr, attributes,
                                          nullptr);
}

std::string textOf(const ns::AttributedStringPtr &text) {
  return text ? ns::toUTF8(text->string()) : "(nil)";
}

} // namespace

TEST(VLFCFReaderHeader, OnlyTheMagicIsChecked) {
  FCFBytes bytes;
  bytes.record(1, "INT. HOUSE\r");
  ASSERT_EQ(bytes.str().size(), 43u);
  auto text = read(bytes.str());
  EXPECT_EQ(textOf(text), "INT. HOUSE\n");
  EXPECT_EQ(paragraphStyleNameAt(*text, 0), u"Scene_20_Heading");

  std::string odd = bytes.str();
  for (size_t i = 4; i < 20; ++i)
    odd[i] = '\x7f';
  EXPECT_EQ(textOf(read(odd)), "INT. HOUSE\n");

  // Wrong magic answers nil and leaves the out arguments alone; four bytes are enough.
  std::string wrong = bytes.str();
  wrong[3] = '1';
  auto sentinel = ns::Dictionary::create();
  ns::DictionaryPtr attributes = sentinel;
  EXPECT_FALSE(read(wrong, &attributes));
  EXPECT_EQ(attributes, sentinel);
  EXPECT_FALSE(read("RIFF"));

  // The header alone is an empty document with all its attributes.
  EXPECT_EQ(textOf(read(FCFBytes().str(), &attributes)), "");
  EXPECT_EQ(attributes->count(), 3u);
}

TEST(VLFCFReaderRecords, TypesOneToSixTakeTheElementStylesAndOthersTheDefault) {
  FCFBytes bytes;
  bytes.record(1, "EXT. PARK\r").record(2, "Rain.\r").record(3, "ANNA\r").record(4, "(wet)\r");
  bytes.record(5, "Hello.\r").record(6, "CUT TO:\r").record(0, "a\r").record(7, "b\r");
  bytes.record(-1, "c\r");
  auto reader = VLFCFReader::create();
  auto text = read(bytes.str(), nullptr, reader);
  ASSERT_TRUE(text);
  const std::u16string expected[] = {u"Scene_20_Heading", u"Action",           u"Character",
                                     u"Parenthetical",    u"Dialogue",         u"Transition",
                                     u"Default_20_Style", u"Default_20_Style", u"Default_20_Style"};
  uint64_t index = 0;
  for (const std::u16string &name : expected) {
    EXPECT_EQ(paragraphStyleNameAt(*text, index), name) << index;
    index = text->paragraphRangeForRange(ns::Range{index, 0}).max();
  }
  EXPECT_EQ(text->attribute(VLParagraphStyleAttributeName, index - 1, nullptr).as<VLStyle>(),
            reader->stylesheet()->defaultParagraphStyle());
}

TEST(VLFCFReaderRecords, TextLineEndsAndTheEndOfTheRecords) {
  const std::pair<FCFBytes, std::string> cases[] = {
      // Every CR becomes a line feed.
      {FCFBytes().record(2, "a\rb\r\nc\r"), "a\nb\n\nc\n"},
      // Records without a CR run together; an empty one adds nothing.
      {FCFBytes().record(3, "BOB").record(1, "").record(5, "Hi.\r"), "BOBHi.\n"},
      // A foreign tag ends the text and the read succeeds; a byte above 127 answers nil.
      {FCFBytes().record(2, "Kept.\r").raw("JUNK").record(2, "Lost.\r"), "Kept.\n"},
      {FCFBytes().record(2, "Caf\xc3\xa9\r"), "(nil)"}};
  for (const auto &[bytes, expected] : cases) {
    ns::DictionaryPtr attributes;
    EXPECT_EQ(textOf(read(bytes.str(), &attributes)), expected);
    EXPECT_EQ(bool(attributes), expected != "(nil)");
  }
  // The two records of "BOBHi." keep their own styles.
  auto text = read(FCFBytes().record(3, "BOB").record(5, "Hi.\r").str());
  ns::Range run;
  text->attribute(VLParagraphStyleAttributeName, 0, &run);
  EXPECT_EQ(run, ns::MakeRange(0, 3));
  EXPECT_EQ(paragraphStyleNameAt(*text, 3), u"Dialogue");
}

TEST(VLFCFReaderRecords, CorruptFilesFailACheckAtOnce) {
  const std::string recordCheck =
      "Invalid parameter not satisfying: dataOffset + length <= [data length]";
  // Lengths that do not fit, up to 4 GB, then a short header, a cut record head, no bytes.
  const std::pair<std::string, std::string> cases[] = {
      {FCFBytes().head(3, 2).str(), recordCheck},
      {FCFBytes().head(10, 2).raw("abc").str(), recordCheck},
      {FCFBytes().head(0xffffffffu, 2).str(), recordCheck},
      {FCFBytes().str().substr(0, 10), ""},
      {FCFBytes().word(0x46545854).word(8).str(), ""},
      {"", ""}};
  auto start = std::chrono::steady_clock::now();
  for (const auto &[bytes, check] : cases) {
    try {
      read(bytes);
      ADD_FAILURE() << "no check failed for " << bytes.size() << " bytes";
    } catch (const ns::InternalInconsistencyException &e) {
      EXPECT_TRUE(check.empty() || e.description() == check) << e.description();
    }
  }
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1))
      << "no memory is taken for a length before it is checked";
}

TEST(VLFCFReaderAttributes, TheDocumentAttributesAreTheDefaults) {
  ns::PrintInfo::resetSharedPrintInfo();
  ns::DictionaryPtr attributes;
  auto reader = VLFCFReader::create();
  ASSERT_TRUE(read(FCFBytes().record(2, "x").str(), &attributes, reader));
  EXPECT_EQ(attributes->objectForKey(VLStylesheetDocumentAttribute).as<VLStylesheet>(),
            reader->stylesheet());
  auto page = valueAtKeyPath(attributes, u"VLODFMasterPages.Standard").as<VLMasterPage>();
  ASSERT_TRUE(page);
  EXPECT_EQ(page->name(), u"Standard");
  const auto &shared = ns::PrintInfo::sharedPrintInfo();
  EXPECT_EQ(shared->leftMargin(), 108.0);
  EXPECT_EQ(shared->rightMargin(), 72.0);
  EXPECT_FALSE(shared->isHorizontallyCentered());
  ns::PrintInfo::resetSharedPrintInfo();
  EXPECT_EQ(valueAtKeyPath(attributes, u"settings.documentSettings.defaultContentStyle"),
            ns::Value(u"Action"));

  // The completion lists hold the standard entries, fresh on every call.
  auto settings = reader->defaultSettings();
  auto completions = valueAtKeyPath(settings, u"documentSettings.completions").dictionary();
  ASSERT_TRUE(completions);
  VLCompletionLists lists = completionListsFromDictionary(ns::Value(completions));
  EXPECT_EQ(lists.sceneIntros, (std::vector<std::u16string>{u"INT", u"EXT", u"I/E"}));
  EXPECT_EQ(lists.times.back(), u"THE NEXT DAY");
  EXPECT_EQ(lists.extensions[1], u"(CONT'D)");
  EXPECT_EQ(lists.transitions.back(), u"FADE TO BLACK.");
  completions->removeAllObjects();
  EXPECT_TRUE(
      valueAtKeyPath(reader->defaultSettings(), u"documentSettings.completions.times").array());
}

TEST(VLFCFReaderResult, TheResultClassCanBeChosenAndTheReaderReused) {
  auto reader = VLFCFReader::create();
  reader->setAttributedStringClass(VLFCFReader::attributedStringClassOf<VLStyledTextStorage>());
  auto text = read(FCFBytes().record(3, "ANNA\r").record(5, "Yes.\r").str(), nullptr, reader);
  ASSERT_TRUE(std::dynamic_pointer_cast<VLStyledTextStorage>(text));
  EXPECT_EQ(textOf(text), "ANNA\nYes.\n");
  EXPECT_EQ(paragraphStyleNameAt(*text, 5), u"Dialogue");

  reader->setAttributedStringClass(nullptr);
  text = read(FCFBytes().record(2, "Two").str(), nullptr, reader);
  EXPECT_FALSE(std::dynamic_pointer_cast<ns::TextStorage>(text));
  EXPECT_EQ(textOf(text), "Two");
}
