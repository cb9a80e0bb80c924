// Printing Fountain scripts: each element type, scene numbers, dual dialogue, title pages, the
// whole document and files.
#include "converters/fountain/FNElement.h"
#include "converters/fountain/FNScript.h"
#include "converters/fountain/FountainWriter.h"
#include "ns/Array.h"
#include "ns/Dictionary.h"
#include "ns/FileManager.h"
#include "ns/String.h"
#include "ns/URL.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

using namespace vl;

namespace {

FNElementPtr element(std::u16string_view type, std::u16string_view text) {
  return FNElement::elementOfType(type, text);
}

std::string body(FNElementArray elements, bool suppressSceneNumbers = false) {
  FNScript script;
  script.setElements(std::move(elements));
  script.setSuppressSceneNumbers(suppressSceneNumbers);
  return ns::toUTF8(FountainWriter::bodyFromScript(script));
}

ns::DictionaryPtr entry(std::u16string key, std::vector<ns::Value> lines) {
  return ns::Dictionary::create({{std::move(key), ns::Array::create(std::move(lines))}});
}

std::string titlePage(std::vector<ns::Value> entries) {
  FNScript script;
  script.setTitlePage(ns::Array::create(std::move(entries)));
  return ns::toUTF8(FountainWriter::titlePageFromScript(script));
}

} // namespace

TEST(FountainWriterBody, EachTypeHasItsLineAndBlankOnesNoneButPageBreaks) {
  auto section = element(FNElementTypeSectionHeading, u"Act One");
  section->setSectionDepth(2);
  EXPECT_EQ(
      body({section, element(FNElementTypeSynopsis, u"Where it starts."),
            element(FNElementTypeSceneHeading, u"INT. HOUSE - DAY"),
            element(FNElementTypeAction, u"Rain.\nMore rain."),
            element(FNElementTypeCharacter, u"ANNA"),
            element(FNElementTypeParenthetical, u"(softly)"),
            element(FNElementTypeDialogue, u"Hello."), element(FNElementTypeComment, u"check this"),
            element(FNElementTypeTransition, u"CUT TO:"), element(FNElementTypePageBreak, u""),
            element(u"Boneyard", u"old scene"), element(u"SceneHeading", u"kept as it stands")}),
      "\n##Act One\n"
      "\n=Where it starts.\n"
      "\nINT. HOUSE - DAY\n"
      "\nRain.\nMore rain.\n"
      "\nANNA\n"
      "(softly)\n"
      "Hello.\n"
      "\n[[check this]]\n"
      "\n> CUT TO:\n"
      "\n====\n"
      "\n/*old scene*/\n"
      "\nkept as it stands\n");
}

TEST(FountainWriterBody, SceneHeadingsAreForcedWithoutAKnownPrefixAndNumberedUnlessSuppressed) {
  auto numbered = element(FNElementTypeSceneHeading, u"INT. HOUSE");
  numbered->setSceneNumber(u"12A");
  auto forced = element(FNElementTypeSceneHeading, u"THE ROOF");
  forced->setSceneNumber(u"13");
  FNElementArray headings{numbered, forced, element(FNElementTypeSceneHeading, u"int. kitchen"),
                          element(FNElementTypeSceneHeading, u"I/E CAR"),
                          element(FNElementTypeSceneHeading, u"EXT. FIELD")};
  EXPECT_EQ(body(headings), "\nINT. HOUSE #12A#\n\n.THE ROOF #13#\n\nint. kitchen\n\nI/E CAR\n"
                            "\nEXT. FIELD\n");
  EXPECT_EQ(body({numbered, forced}, true), "\nINT. HOUSE\n\n.THE ROOF\n");
}

TEST(FountainWriterBody, CentredTextAndTransitions) {
  auto centred = element(FNElementTypeAction, u"THE END");
  centred->setIsCentered(true);
  auto trailingBlank = element(FNElementTypeAction, u"FIN ");
  trailingBlank->setIsCentered(true);
  EXPECT_EQ(body({centred, trailingBlank}), "\n> THE END <\n\n> FIN <\n");
  // Every transition is forced, also the ones a reader would know unaided.
  EXPECT_EQ(body({element(FNElementTypeTransition, u"FADE OUT.")}), "\n> FADE OUT.\n");
  // A transition whose text itself holds a transition line between line feeds has no line;
  // the platform prints its nil.
  EXPECT_EQ(body({element(FNElementTypeTransition, u"A\nCUT TO:\nB")}), "\n(null)\n");
}

TEST(FountainWriterBody, OnlyTheSecondCueOfADualPairIsMarked) {
  auto cue = [](std::u16string_view name) {
    auto e = element(FNElementTypeCharacter, name);
    e->setIsDualDialogue(true);
    return e;
  };
  EXPECT_EQ(body({cue(u"ANNA"), element(FNElementTypeDialogue, u"Yes."), cue(u"BEN"),
                  element(FNElementTypeDialogue, u"No."), cue(u"CARL"), cue(u"DORA"),
                  element(FNElementTypeCharacter, u"EVE")}),
            "\nANNA\nYes.\n\nBEN ^\nNo.\n\nCARL\n\nDORA ^\n\nEVE\n");
}

TEST(FountainWriterTitlePage, KeysAreCapitalisedAndSeveralValuesIndented) {
  EXPECT_EQ(titlePage({entry(u"title", {u"Big Fish"}), entry(u"authors", {u"John August"}),
                       entry(u"draft date", {u"1/2/03"})}),
            "Title: Big Fish\nAuthor: John August\nDraft date: 1/2/03\n");
  EXPECT_EQ(titlePage({entry(u"authors", {u"Ann", u"Ben"}), entry(u"contact", {})}),
            "Authors:\n\tAnn\n\tBen\nContact:\n");
  EXPECT_EQ(titlePage({}), "");
  EXPECT_EQ(titlePage({entry(u"\u00e9t\u00e9", {u"x"})}), "\u00c9t\u00e9: x\n");
}

TEST(FountainWriterDocument, TitlePageThenBodyTrimmedOfLineEnds) {
  FNScript script;
  EXPECT_EQ(FountainWriter::documentFromScript(script), u"");
  script.setElements({element(FNElementTypeSceneHeading, u"INT. HOUSE")});
  EXPECT_EQ(FountainWriter::documentFromScript(script), u"INT. HOUSE");
  script.setTitlePage(ns::Array::create({entry(u"title", {u"X"})}));
  EXPECT_EQ(script.stringFromDocument(), u"Title: X\n\n\nINT. HOUSE");
  EXPECT_EQ(script.description(), script.stringFromDocument());
  EXPECT_EQ(script.stringFromTitlePage(), u"Title: X\n");
  EXPECT_EQ(script.stringFromBody(), u"\nINT. HOUSE\n");
  script.setElements({});
  EXPECT_EQ(script.stringFromDocument(), u"Title: X");
}

TEST(FountainWriterDocument, WritesFilesAsUTF8) {
  std::filesystem::path dir = std::filesystem::temp_directory_path() / "vl_fountain_writer_test";
  std::filesystem::create_directories(dir);
  FNScript script;
  script.setElements({element(FNElementTypeAction, u"Caf\u00e9.")});
  std::u16string path = ns::fromUTF8((dir / "a.fountain").string());
  ASSERT_TRUE(script.writeToURL(ns::URL::fileURLWithPath(path, false)));
  EXPECT_EQ(ns::FileManager::defaultManager()->contentsAtPath(path)->view(), "Caf\xc3\xa9.");
  EXPECT_FALSE(script.writeToURL(ns::URL::URLWithString(u"http://example.com/a.fountain")));
  EXPECT_FALSE(script.writeToFile(ns::fromUTF8((dir / "missing" / "b.fountain").string())));
  std::filesystem::remove_all(dir);
}
