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

// An element with one of its marks set.
template <typename Setter, typename Value>
FNElementPtr marked(std::u16string_view type, std::u16string_view text, Setter set, Value value) {
  auto e = element(type, text);
  ((*e).*set)(value);
  return e;
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

TEST(FountainWriterBody, EachElementHasItsLine) {
  struct Case {
    FNElementArray elements;
    std::string expected;
  };
  auto numbered =
      marked(FNElementTypeSceneHeading, u"INT. HOUSE", &FNElement::setSceneNumber, u"12A");
  auto forced = marked(FNElementTypeSceneHeading, u"THE ROOF", &FNElement::setSceneNumber, u"13");
  auto dual = [](std::u16string_view name) {
    return marked(FNElementTypeCharacter, name, &FNElement::setIsDualDialogue, true);
  };
  const Case cases[] = {
      // Blank elements give nothing, except page breaks; unknown types print their text.
      {{marked(FNElementTypeSectionHeading, u"Act One", &FNElement::setSectionDepth, 2),
        element(FNElementTypeSynopsis, u"Where it starts."),
        element(FNElementTypeAction, u"Rain.\nMore rain."), element(FNElementTypeAction, u"  "),
        element(FNElementTypeCharacter, u"ANNA"), element(FNElementTypeParenthetical, u"(softly)"),
        element(FNElementTypeDialogue, u"Hello."), element(FNElementTypeComment, u"check this"),
        element(FNElementTypePageBreak, u""), element(u"Boneyard", u"old scene"),
        element(u"SceneHeading", u"kept as it stands")},
       "\n##Act One\n\n=Where it starts.\n\nRain.\nMore rain.\n\nANNA\n(softly)\nHello.\n"
       "\n[[check this]]\n\n====\n\n/*old scene*/\n\nkept as it stands\n"},
      // Headings without a known prefix are forced.
      {{numbered, forced, element(FNElementTypeSceneHeading, u"int. kitchen"),
        element(FNElementTypeSceneHeading, u"I/E CAR")},
       "\nINT. HOUSE #12A#\n\n.THE ROOF #13#\n\nint. kitchen\n\nI/E CAR\n"},
      // Every transition is forced; one whose text holds a transition line prints nil.
      {{marked(FNElementTypeAction, u"THE END", &FNElement::setIsCentered, true),
        marked(FNElementTypeAction, u"FIN ", &FNElement::setIsCentered, true),
        element(FNElementTypeTransition, u"FADE OUT."),
        element(FNElementTypeTransition, u"A\nCUT TO:\nB")},
       "\n> THE END <\n\n> FIN <\n\n> FADE OUT.\n\n(null)\n"},
      // Only the second cue of a dual pair is marked.
      {{dual(u"ANNA"), element(FNElementTypeDialogue, u"Yes."), dual(u"BEN"),
        element(FNElementTypeDialogue, u"No."), dual(u"CARL"), dual(u"DORA"),
        element(FNElementTypeCharacter, u"EVE")},
       "\nANNA\nYes.\n\nBEN ^\nNo.\n\nCARL\n\nDORA ^\n\nEVE\n"}};
  for (const Case &c : cases)
    EXPECT_EQ(body(c.elements), c.expected);
  EXPECT_EQ(body({numbered, forced}, true), "\nINT. HOUSE\n\n.THE ROOF\n");
}

TEST(FountainWriterDocument, TitlePageKeysAreCapitalisedAndSeveralValuesIndented) {
  EXPECT_EQ(titlePage({entry(u"title", {u"Big Fish"}), entry(u"authors", {u"John August"}),
                       entry(u"draft date", {u"1/2/03"})}),
            "Title: Big Fish\nAuthor: John August\nDraft date: 1/2/03\n");
  EXPECT_EQ(titlePage({entry(u"authors", {u"Ann", u"Ben"}), entry(u"contact", {})}),
            "Authors:\n\tAnn\n\tBen\nContact:\n");
  EXPECT_EQ(titlePage({entry(u"\u00e9t\u00e9", {u"x"})}), "\u00c9t\u00e9: x\n");

  // The document is the title page, then the body, trimmed of line ends.
  FNScript script;
  EXPECT_EQ(script.stringFromDocument(), u"");
  script.setElements({element(FNElementTypeSceneHeading, u"INT. HOUSE")});
  EXPECT_EQ(script.stringFromDocument(), u"INT. HOUSE");
  script.setTitlePage(ns::Array::create({entry(u"title", {u"Caf\u00e9"})}));
  EXPECT_EQ(script.stringFromDocument(), u"Title: Caf\u00e9\n\n\nINT. HOUSE");

  std::filesystem::path dir = std::filesystem::temp_directory_path() / "vl_fountain_writer_test";
  std::filesystem::create_directories(dir);
  std::u16string path = ns::fromUTF8((dir / "a.fountain").string());
  ASSERT_TRUE(script.writeToURL(ns::URL::fileURLWithPath(path, false)));
  EXPECT_EQ(ns::FileManager::defaultManager()->contentsAtPath(path)->view(),
            "Title: Caf\xc3\xa9\n\n\nINT. HOUSE");
  EXPECT_FALSE(script.writeToURL(ns::URL::URLWithString(u"http://example.com/a.fountain")));
  EXPECT_FALSE(script.writeToFile(ns::fromUTF8((dir / "missing" / "b.fountain").string())));
  std::filesystem::remove_all(dir);
  script.setElements({});
  EXPECT_EQ(script.stringFromDocument(), u"Title: Caf\u00e9");
}
