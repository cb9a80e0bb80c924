// Tests of Fountain parsing: title pages, every element kind of the line parser, its boneyard
// and note rules, the regex pipeline and where it differs, scripts and hostile text.
#include "converters/fountain/FNElement.h"
#include "converters/fountain/FNScript.h"
#include "converters/fountain/FastFountainParser.h"
#include "converters/fountain/FountainParser.h"
#include "ns/Dictionary.h"
#include "ns/FileManager.h"
#include "ns/String.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

using namespace vl;

namespace {

using Strings = std::vector<std::u16string>;

struct Parsed {
  FNElementArray elements;
  ns::ArrayPtr titlePage;

  size_t size() const { return elements.size(); }
  const FNElement &operator[](size_t i) const { return *elements.at(i); }
  // "Type: text" for each element, for whole-list comparisons.
  Strings summary() const {
    Strings result;
    for (const FNElementPtr &element : elements)
      result.push_back(element->elementType() + u": " + element->elementText());
    return result;
  }
};

Parsed fast(std::u16string_view text) {
  FastFountainParserPtr parser = FastFountainParser::createWithString(text);
  return {parser->elements(), parser->titlePage()};
}

Parsed regex(std::u16string_view text) {
  return {FountainParser::parseBodyOfString(text), FountainParser::parseTitlePageOfString(text)};
}

// The title page as (key, lines) pairs.
std::vector<std::pair<std::u16string, Strings>> entries(const ns::ArrayPtr &titlePage) {
  std::vector<std::pair<std::u16string, Strings>> result;
  for (const ns::Value &value : *titlePage) {
    auto dictionary = value.as<ns::Dictionary>();
    EXPECT_EQ(dictionary->count(), 1u);
    for (const auto &[key, lines] : *dictionary) {
      Strings strings;
      for (const ns::Value &line : *lines.as<ns::Array>())
        strings.push_back(line.string());
      result.emplace_back(key, strings);
    }
  }
  return result;
}

using Entries = std::vector<std::pair<std::u16string, Strings>>;

TEST(FastFountainTitlePage, InlineDirectivesBecomeEntriesAndLeaveTheBody) {
  Parsed p =
      fast(u"Title: Big Fish\nCredit: written by\nAuthor: John August\n\nINT. HOUSE - DAY\n");
  EXPECT_EQ(entries(p.titlePage), (Entries{{u"title", {u"Big Fish"}},
                                           {u"credit", {u"written by"}},
                                           {u"authors", {u"John August"}}}));
  EXPECT_EQ(p.summary(), (Strings{u"Scene Heading: INT. HOUSE - DAY"}));
}

TEST(FastFountainTitlePage, MultiLineValuesAreTrimmedAndDirectivesInARowShareTheirLines) {
  Parsed p = fast(u"Title:\n    Big Fish\n\tPart Two  \nDraft date: 1/2/03\n\nText.\n");
  EXPECT_EQ(entries(p.titlePage),
            (Entries{{u"title", {u"Big Fish", u"Part Two"}}, {u"draft date", {u"1/2/03"}}}));

  // Data-free directives one after another fill one array: each entry holds every line.
  p = fast(u"Title:\n  A\nContact:\n  B\n\nText.\n");
  EXPECT_EQ(entries(p.titlePage), (Entries{{u"title", {u"A", u"B"}}, {u"contact", {u"A", u"B"}}}));
  EXPECT_EQ(p.titlePage->objectAtIndex(0).as<ns::Dictionary>()->objectForKey(u"title").object(),
            p.titlePage->objectAtIndex(1).as<ns::Dictionary>()->objectForKey(u"contact").object());
  // An inline directive starts a new array.
  p = fast(u"Contact:\n  A\nTitle: T\nNotes:\n  B\n\nText.\n");
  EXPECT_EQ(entries(p.titlePage),
            (Entries{{u"contact", {u"A"}}, {u"title", {u"T"}}, {u"notes", {u"B"}}}));
}

TEST(FastFountainTitlePage, AuthorMapsButAuthorSDoesNot) {
  EXPECT_EQ(entries(fast(u"AUTHOR: X\n\nText.").titlePage), (Entries{{u"authors", {u"X"}}}));
  EXPECT_EQ(entries(fast(u"Author(s): X\n\nText.").titlePage), (Entries{{u"author(s)", {u"X"}}}));
}

TEST(FastFountainTitlePage, ALoneDirectiveWithNothingUnderItStaysInTheScript) {
  Parsed p = fast(u"FADE IN:\n\nA field.\n");
  EXPECT_TRUE(p.titlePage->empty());
  EXPECT_EQ(p.summary(), (Strings{u"Action: FADE IN:", u"Action: A field."}));
}

TEST(FastFountainTitlePage, ProseBeforeAColonLineIsLostAndTheTopGoesEverywhere) {
  Parsed p =
      fast(u"Some prose\nNote: it ends here\n\nAction.\n\nSome prose\nNote: it ends here\n\nEnd.");
  EXPECT_EQ(entries(p.titlePage), (Entries{{u"note", {u"it ends here"}}}));
  EXPECT_EQ(p.summary(), (Strings{u"Action: Action.", u"Action: End."}));
  // A top without any directive is no title page.
  p = fast(u"Just a line.\n\nAnother.");
  EXPECT_TRUE(p.titlePage->empty());
  EXPECT_EQ(p.size(), 2u);
}

TEST(FastFountainTitlePage, LineEndsOfAnyKindAndLeadingBlanks) {
  Parsed p = fast(u"\r\n  \tTitle: X\r\n\r\nINT. A - DAY\rText.\r\n");
  EXPECT_EQ(entries(p.titlePage), (Entries{{u"title", {u"X"}}}));
  EXPECT_EQ(p.summary(), (Strings{u"Scene Heading: INT. A - DAY\nText."}));
}

TEST(FastFountainParser, EmptyAndBlankTextGiveNothing) {
  for (std::u16string_view text : {u"", u"\n\n\n", u"   \t\n \r\n", u"\u2028\u2029\v\f"}) {
    Parsed p = fast(text);
    EXPECT_EQ(p.size(), 0u);
    EXPECT_TRUE(p.titlePage->empty());
  }
}

TEST(FastFountainParser, SceneHeadingsWithNumbersAndForcedOnes) {
  Parsed p = fast(u"INT. HOUSE - DAY #1A#\n\next. road - night\n\nI/E. CAR #12-B.#  \n\n"
                  u"EST. CITY\n\nIE SHIP\n\n.SNIPER SCOPE POV #7#\n\nINTERIOR\n\n...and then\n");
  ASSERT_EQ(p.size(), 8u);
  EXPECT_EQ(p[0].elementType(), FNElementTypeSceneHeading);
  EXPECT_EQ(p[0].elementText(), u"INT. HOUSE - DAY "); // not trimmed
  EXPECT_EQ(p[0].sceneNumber(), u"1A");
  EXPECT_EQ(p[1].elementText(), u"ext. road - night");
  EXPECT_FALSE(p[1].sceneNumber().has_value());
  EXPECT_EQ(p[2].elementText(), u"I/E. CAR ");
  EXPECT_EQ(p[2].sceneNumber(), u"12-B.");
  EXPECT_EQ(p[3].elementType(), FNElementTypeSceneHeading);
  EXPECT_EQ(p[4].elementType(), FNElementTypeSceneHeading);
  EXPECT_EQ(p[5].elementText(), u"SNIPER SCOPE POV");
  EXPECT_EQ(p[5].sceneNumber(), u"7");
  // No separator after INT, and three periods force nothing.
  EXPECT_EQ(p[6].elementType(), FNElementTypeAction);
  EXPECT_EQ(p[7].elementType(), FNElementTypeAction);
  EXPECT_EQ(p[7].elementText(), u"...and then");
}

TEST(FastFountainParser, SceneHeadingsNeedNoBlankLineAndTakeTheLinesUnderThem) {
  EXPECT_EQ(fast(u"A man runs.\nINT. HOUSE - DAY\nHe stops.\n").summary(),
            (Strings{u"Action: A man runs.", u"Scene Heading: INT. HOUSE - DAY\nHe stops."}));
  // Inside dialogue a heading keeps the dialogue going.
  EXPECT_EQ(fast(u"BOB\nINT. CAR\nHi.\n").summary(),
            (Strings{u"Character: BOB", u"Scene Heading: INT. CAR", u"Dialogue: Hi."}));
  // Caseless matching folds the long s onto "s".
  EXPECT_EQ(fast(u"E\u017fT. PARK\n")[0].elementType(), FNElementTypeSceneHeading);
}

TEST(FastFountainParser, CuesParentheticalsAndDialogue) {
  Parsed p = fast(u"BOB (V.O.)\n(quietly)\nHello.\n  How are you?\n(beat)\nFine.\n\nMARY\nHi.\n");
  EXPECT_EQ(p.summary(), (Strings{u"Character: BOB (V.O.)", u"Parenthetical: (quietly)",
                                  u"Dialogue: Hello.\n  How are you?", u"Parenthetical: (beat)",
                                  u"Dialogue: Fine.", u"Character: MARY", u"Dialogue: Hi."}));
}

TEST(FastFountainParser, CueRules) {
  // The last line of the file has no line under it: action.
  EXPECT_EQ(fast(u"Text.\n\nBOB").summary(), (Strings{u"Action: Text.", u"Action: BOB"}));
  // A lower-case letter anywhere makes it action.
  EXPECT_EQ(fast(u"BOB (cont'd)\nHi.\n")[0].elementType(), FNElementTypeAction);
  // Capitals right under a text line join it.
  EXPECT_EQ(fast(u"He yells.\nSTOP\nNow.\n").summary(),
            (Strings{u"Action: He yells.\nSTOP\nNow."}));
  // A line of blanks under a cue counts as a line.
  EXPECT_EQ(fast(u"BOB\n  \n")[0].elementType(), FNElementTypeCharacter);
}

TEST(FastFountainParser, DualDialogueMarksBothCues) {
  Parsed p = fast(u"BOB\nLeft.\n\nMARY ^ \nRight.\n");
  ASSERT_EQ(p.size(), 4u);
  EXPECT_TRUE(p[0].isDualDialogue());
  EXPECT_EQ(p[0].elementText(), u"BOB");
  EXPECT_TRUE(p[2].isDualDialogue());
  EXPECT_EQ(p[2].elementText(), u"MARY");
  // The walk back finds the last cue across anything, and leaves its own "^" alone.
  p = fast(u"BOB ^\nOne.\n\nINT. HALL\n\nAction.\n\nMARY ^\nTwo.\n");
  EXPECT_EQ(p[0].elementText(), u"BOB");
  EXPECT_TRUE(p[0].isDualDialogue());
  EXPECT_TRUE(p[4].isDualDialogue());
  // With no cue before it, only the marked one is dual.
  p = fast(u"MARY^\nTwo.\n");
  EXPECT_TRUE(p[0].isDualDialogue());
  EXPECT_EQ(p[0].elementText(), u"MARY");
}

TEST(FastFountainParser, Transitions) {
  Parsed p = fast(u"CUT TO:\n\n  SMASH CUT TO:\n\n> FADE TO BLACK\n\n>\n\nJUMP CUT TO:\n\n"
                  u"FADE IN:\nText.\n");
  ASSERT_EQ(p.size(), 7u);
  EXPECT_EQ(p.summary()[0], u"Transition: CUT TO:");
  EXPECT_EQ(p.summary()[1], u"Transition:   SMASH CUT TO:"); // as it stands
  EXPECT_EQ(p.summary()[2], u"Transition: FADE TO BLACK");
  EXPECT_EQ(p.summary()[3], u"Transition: ");
  EXPECT_EQ(p.summary()[4], u"Action: JUMP CUT TO:"); // not listed
  EXPECT_EQ(p.summary()[5], u"Character: FADE IN:");  // not listed, capitals with a line under
  EXPECT_EQ(p.summary()[6], u"Dialogue: Text.");
}

TEST(FastFountainParser, CenteredTextIsActionBetweenMarks) {
  Parsed p = fast(u">  THE END  <\n\n><\n");
  ASSERT_EQ(p.size(), 2u);
  EXPECT_EQ(p[0].elementType(), FNElementTypeAction);
  EXPECT_TRUE(p[0].isCentered());
  EXPECT_EQ(p[0].elementText(), u"THE END");
  EXPECT_TRUE(p[1].isCentered());
  EXPECT_EQ(p[1].elementText(), u"");
}

TEST(FastFountainParser, SectionsSynopsesAndPageBreaks) {
  Parsed p =
      fast(u"# Act One\n\n  ## Scene\n= The hero leaves.\n== Twice\n===\n\n#\n\n==== \nText.");
  EXPECT_EQ(p.summary(), (Strings{u"Section Heading:  Act One", u"Section Heading:  Scene",
                                  u"Synopsis:  The hero leaves.", u"Synopsis: = Twice",
                                  u"Page Break: ===", u"Page Break: ==== \nText."}));
  EXPECT_EQ(p[0].sectionDepth(), 1u);
  EXPECT_EQ(p[1].sectionDepth(), 4u); // leading blanks count
  EXPECT_EQ(p[0].description(), u"Section Heading (1):  Act One");
}

TEST(FastFountainParser, NotesNeedABlankLineBefore) {
  Parsed p =
      fast(u"Text.\n\n[[A note.]]\n  [[ another ]]  \nLine.\n[[joined]]\n\n[[a]b]]\n\n[[ ]]\n");
  EXPECT_EQ(p.summary(), (Strings{u"Action: Text.", u"Comment: A note.", u"Comment: another",
                                  u"Action: Line.\n[[joined]]", u"Action: [[a]b]]", u"Comment: "}));
}

TEST(FastFountainParser, BoneyardKeepsOnlyTheLinesBetweenItsMarks) {
  EXPECT_EQ(
      fast(u"/* opening is dropped\nkept\n\n  kept too\nclosing is dropped */\nAfter.\n").summary(),
      (Strings{u"Boneyard: \nkept\n\n  kept too\n\nAfter."})); // joins like any block
  EXPECT_EQ(fast(u"/* one line */\n").summary(), (Strings{u"Boneyard:  one line "}));
  // A closing mark outside any boneyard gives what was held, and its line is gone.
  EXPECT_EQ(fast(u"Text.\n\nwords here */\n").summary(),
            (Strings{u"Action: Text.", u"Boneyard: "}));
  // A boneyard never closed disappears with everything in it.
  EXPECT_EQ(fast(u"Text.\n\n/*\nlost\n\nBOB\nHi.\n").summary(), (Strings{u"Action: Text."}));
}

TEST(FastFountainParser, LinesEndAtEveryNewlineCharacter) {
  EXPECT_EQ(
      fast(u"BOB\u2028Hi.\u2029\u2029Text.\vMore.\u0085\u0085End.").summary(),
      (Strings{u"Character: BOB", u"Dialogue: Hi.", u"Action: Text.\nMore.", u"Action: End."}));
}

TEST(FastFountainParser, HostileTextParses) {
  std::u16string surrogates = u"A\xD800 \xDC00\n\n\xDBFF";
  EXPECT_EQ(fast(surrogates).size(), 2u);
  std::u16string hugeLine(200000, u'[');
  EXPECT_EQ(fast(u"Text.\n\n" + hugeLine + u"\n").size(), 2u);
  std::u16string notes;
  for (int i = 0; i < 2000; ++i)
    notes += u"[[ /* # = \n\n";
  EXPECT_FALSE(fast(notes).elements.empty());
}

TEST(FNElement, DescriptionNamesOneMark) {
  auto element = FNElement::elementOfType(FNElementTypeAction, u"Hi");
  EXPECT_EQ(element->description(), u"Action: Hi");
  EXPECT_FALSE(element->sceneNumber().has_value());
  element->setIsDualDialogue(true);
  element->setSectionDepth(2);
  EXPECT_EQ(element->description(), u"Action (dual dialogue): Hi");
  element->setIsCentered(true);
  EXPECT_EQ(element->description(), u"Action (centered): Hi");
}

TEST(FountainParserTitlePage, OnlyIndentedLinesAreData) {
  std::u16string text = u"Title:\n    Big Fish\nCredit:\nwritten by\nAuthor: John August\n"
                        u"Author(s): Two\n\nINT. HOUSE - DAY\n";
  EXPECT_EQ(entries(FountainParser::parseTitlePageOfString(text)),
            (Entries{{u"title", {u"Big Fish"}}, {u"authors", {u"John August"}}}));
  EXPECT_EQ(FountainParser::titlePageOfString(text),
            u"Title:\n    Big Fish\nCredit:\nwritten by\nAuthor: John August\nAuthor(s): Two");
  // The block goes up to its first line feed: the second stays.
  EXPECT_EQ(FountainParser::bodyOfString(text), u"\n\n\nINT. HOUSE - DAY\n\n\n");
  // A first block without a directive is body.
  EXPECT_EQ(FountainParser::titlePageOfString(u"Text.\n\nMore."), u"");
  EXPECT_EQ(FountainParser::bodyOfString(u"\n\nText.\n\nMore."), u"\n\nText.\n\nMore.\n\n");
  EXPECT_TRUE(FountainParser::parseTitlePageOfString(u"No blank line: at all").get()->empty());
}

TEST(FountainParser, ElementsOfAShortScript) {
  Parsed p =
      regex(u"Title: T\n\nINT. HOUSE - DAY\n\nA man enters.\n\nBOB\n(softly)\nHello "
            u"<there>...\n\nCUT TO:\n\n# Act Two\n\n= Summary here.\n\n---\n\n> THE END <\n");
  EXPECT_EQ(p.summary(),
            (Strings{u"SceneHeading: INT. HOUSE - DAY", u"Action: A man enters.", u"Character: BOB",
                     u"Parenthetical: (softly)", u"Dialogue: Hello <there>...",
                     u"Transition: CUT TO:", u"SectionHeading: # Act Two",
                     u"Synopsis:  Summary here.", u"Page Break: ", u"Action: THE END"}));
  EXPECT_EQ(p[6].sectionDepth(), 0u);
  EXPECT_TRUE(p[9].isCentered());
  // A scene number is no number here: the section rewrite takes the "#" and the rest of its
  // line, heading included.
  p = regex(u"Text.\n\nINT. HOUSE - DAY #1#\n\nMore.\n");
  EXPECT_EQ(p.summary(), (Strings{u"Action: Text.", u"SectionHeading: #1#", u"Action: More."}));
  EXPECT_FALSE(p[1].sceneNumber().has_value());
}

TEST(FountainParser, MultiLineNotesAndBoneyardsKeepTheirText) {
  Parsed p = regex(u"Text.\n/*\nhidden\nlines */\n[[a note\nover lines]]\nEnd.\n");
  Strings summary = p.summary();
  EXPECT_NE(std::find(summary.begin(), summary.end(), u"Boneyard: hidden\nlines "), summary.end());
  EXPECT_NE(std::find(summary.begin(), summary.end(), u"Comment: a note\nover lines"),
            summary.end());
}

TEST(FountainParser, DualDialogueWalksBackOverDialogueOnly) {
  Parsed p = regex(u"Text.\n\nBOB ^\nLeft.\n\nMARY ^\nRight.\n");
  ASSERT_EQ(p.size(), 5u);
  EXPECT_TRUE(p[1].isDualDialogue());
  EXPECT_EQ(p[1].elementText(), u"BOB "); // every "^" goes from the earlier cue
  EXPECT_TRUE(p[3].isDualDialogue());
  EXPECT_EQ(p[3].elementText(), u"MARY");
  // Something else between the cues stops the walk.
  p = regex(u"Text.\n\nBOB\nLeft.\n\nAction.\n\nMARY ^\nRight.\n");
  EXPECT_FALSE(p[1].isDualDialogue());
  // A cue at index 0 or 1 is never dual.
  p = regex(u"Text.\n\nMARY ^\nRight.\n");
  EXPECT_EQ(p[1].elementType(), FNElementTypeCharacter);
  EXPECT_FALSE(p[1].isDualDialogue());
}

TEST(BothParsers, AgreeOnPlainScreenplayText) {
  std::u16string text = u"Title: Same\nAuthor: Us\n\nThe room is dark.\n\nBOB\n(whispering)\n"
                        u"Who's there?\n\nMARY\nOnly me.\n\n[[check this]]\n\nCUT TO:\n\n"
                        u"She leaves.\n";
  Parsed a = fast(text), b = regex(text);
  EXPECT_EQ(a.summary(), b.summary());
  EXPECT_EQ(entries(a.titlePage), entries(b.titlePage));
}

class FNScriptTest : public ::testing::Test {
protected:
  std::filesystem::path dir =
      std::filesystem::temp_directory_path() /
      ("fnscript-" + std::to_string(::testing::UnitTest::GetInstance()->random_seed()));
  void SetUp() override { std::filesystem::create_directories(dir); }
  void TearDown() override { std::filesystem::remove_all(dir); }
  std::u16string write(const std::string &name, const std::string &bytes) {
    std::ofstream(dir / name, std::ios::binary) << bytes;
    return ns::fromUTF8((dir / name).string());
  }
};

TEST_F(FNScriptTest, LoadsStringsAndFilesThroughEitherParser) {
  auto script = FNScript::createWithString(u"Title: A\n\nINT. X - DAY #3#\n");
  EXPECT_FALSE(script->filename().has_value());
  EXPECT_FALSE(script->suppressSceneNumbers());
  ASSERT_EQ(script->elements().size(), 1u);
  EXPECT_EQ(script->elements()[0]->sceneNumber(), u"3");
  EXPECT_EQ(entries(script->titlePage()), (Entries{{u"title", {u"A"}}}));

  std::u16string path = write("draft.fountain", "INT. X - DAY\n\nCaf\xc3\xa9.\n");
  script->loadFile(path);
  EXPECT_EQ(script->filename(), u"draft.fountain");
  EXPECT_EQ(script->elements().size(), 2u);
  EXPECT_FALSE(script->elements()[0]->sceneNumber().has_value());
  EXPECT_TRUE(script->titlePage()->empty()); // a load replaces the title page
  EXPECT_EQ(script->elements()[1]->elementText(), u"Caf\u00e9.");

  script = FNScript::createWithFile(path, 1);
  EXPECT_EQ(script->filename(), u"draft.fountain");
  ASSERT_FALSE(script->elements().empty());
  EXPECT_EQ(script->elements()[0]->elementType(), u"SceneHeading");
  script->loadString(u"Text.", 0);
  EXPECT_EQ(script->elements()[0]->elementType(), FNElementTypeAction);
}

TEST_F(FNScriptTest, BytesThatAreNotUTF8AreDecodedAndMissingFilesLeaveItEmpty) {
  auto script = FNScript::createWithFile(write("latin.fountain", "Caf\xe9.\n"));
  ASSERT_EQ(script->elements().size(), 1u);
  EXPECT_EQ(script->elements()[0]->elementText(), u"Caf\u00e9.");

  std::u16string missing = ns::fromUTF8((dir / "missing.fountain").string());
  script = FNScript::createWithFile(missing);
  EXPECT_EQ(script->filename(), u"missing.fountain");
  EXPECT_TRUE(script->elements().empty());
  EXPECT_TRUE(script->titlePage()->empty());
  script = FNScript::createWithFile(missing, 1);
  EXPECT_TRUE(script->elements().empty());
  EXPECT_FALSE(FountainParser::parseBodyOfFile(missing).has_value());
  EXPECT_EQ(FountainParser::parseTitlePageOfFile(missing), nullptr);
}

} // namespace
