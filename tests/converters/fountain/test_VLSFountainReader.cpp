// Tests of the Fountain reader: element styles, emphasis, notes, outline entries, completion
// lists, novel mode and the document attributes of a read.
#include "converters/fountain/VLSFountainReader.h"
#include "model/VLConstants.h"
#include "model/VLDocumentSettings.h"
#include "model/VLMasterPage.h"
#include "model/VLOutline.h"
#include "model/VLStylesheet.h"
#include "ns/AttributeNames.h"
#include "ns/Font.h"
#include "ns/ParagraphStyle.h"
#include "ns/String.h"
#include "ns/TextStorage.h"
#include "objects/VLSTextMarker.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <utility>
#include <vector>

using namespace vl;

namespace {

using Strings = std::vector<std::u16string>;
using Paragraphs = std::vector<std::pair<std::u16string, std::u16string>>;

struct Read {
  VLSFountainReaderPtr reader;
  ns::MutableAttributedStringPtr text;
  ns::DictionaryPtr attributes;

  std::u16string string() const { return std::u16string(text->string()); }
  uint64_t at(std::u16string_view needle, uint64_t from = 0) const {
    return text->string().find(needle, from);
  }

  // (display name of the paragraph's style, paragraph text without its line feed).
  Paragraphs paragraphs() const {
    Paragraphs result;
    for (uint64_t start = 0; start < text->length();) {
      ns::Range paragraph = text->paragraphRangeForRange(ns::Range{start, 0});
      auto style = text->attribute(VLParagraphStyleAttributeName, start, nullptr).as<VLStyle>();
      std::u16string body = text->substringWithRange(paragraph);
      if (!body.empty() && body.back() == u'\n')
        body.pop_back();
      result.emplace_back(style ? style->displayName().value_or(u"?") : u"(none)", body);
      start = paragraph.max();
    }
    return result;
  }
  ns::FontPtr fontAt(uint64_t index) const {
    return text->attribute(ns::FontAttributeName, index, nullptr).as<ns::Font>();
  }
  uint32_t traitsAt(uint64_t index) const { return fontAt(index)->traits() & 3; }
  VLOutlinePtr outlineAt(uint64_t index) const {
    return text->attribute(VLOutlineElementAttributeName, index, nullptr).as<VLOutline>();
  }
  VLSTextMarkerPtr markerAt(uint64_t index) const {
    return text->attribute(VLSTextMarkerAttributeName, index, nullptr).as<VLSTextMarker>();
  }
  Strings completions(std::u16string_view list) const {
    return stringsFromSettingsDictionaryArray(valueAtKeyPath(
        attributes, std::u16string(VLCompletionsKeyPath) + u"." + std::u16string(list)));
  }
  // The references of one marker type, in identifier order.
  std::vector<VLSTextMarkerPtr> markers(uint64_t type) const {
    std::vector<VLSTextMarkerPtr> result;
    for (const auto &[identifier, value] : *reader->references())
      if (auto marker = value.as<VLSTextMarker>(); marker && marker->textMarkerType() == type)
        result.push_back(marker);
    return result;
  }
  VLSTextMarkerPtr outlineMarker(const VLOutlinePtr &entry) const {
    return reader->references()->objectForKey(*entry->identifier()).as<VLSTextMarker>();
  }
};

Read read(std::string_view fountain, VLSFountainReaderPtr reader = VLSFountainReader::create()) {
  ns::DictionaryPtr attributes;
  auto text = reader->attributedStringWithData(ns::Data::fromString(fountain), nullptr, &attributes,
                                               nullptr);
  return {reader, text, attributes};
}

constexpr std::string_view ShortScript = "Title: Big Fish\n"
                                         "Author: John August\n"
                                         "\n"
                                         "INT. HOUSE - DAY\n"
                                         "\n"
                                         "Bob enters.\n"
                                         "\n"
                                         "BOB (V.O.)\n"
                                         "(quietly)\n"
                                         "Hello there.\n"
                                         "\n"
                                         "CUT TO:\n"
                                         "\n"
                                         "EXT. PARK - NIGHT\n";

TEST(FountainReaderElements, EachElementBecomesAParagraphInItsScreenplayStyle) {
  Read r = read(ShortScript);
  ASSERT_TRUE(r.text);
  EXPECT_TRUE(std::dynamic_pointer_cast<ns::TextStorage>(r.text));
  EXPECT_EQ(r.paragraphs(), (Paragraphs{{u"Scene Heading", u"INT. HOUSE - DAY"},
                                        {u"Action", u"Bob enters."},
                                        {u"Character", u"BOB (V.O.)"},
                                        {u"Parenthetical", u"(quietly)"},
                                        {u"Dialogue", u"Hello there."},
                                        {u"Transition", u"CUT TO:"},
                                        {u"Scene Heading", u"EXT. PARK - NIGHT"}}));
  EXPECT_EQ(r.fontAt(0)->familyName(), u"Courier");
  EXPECT_EQ(r.fontAt(0)->pointSize(), 12.0);
  EXPECT_FALSE(r.reader->isNovel());
}

TEST(FountainReaderElements, LinesOfOneElementStayOneParagraph) {
  Read r = read("Line one\nLine two\n\n   Indented action.\n\nBOB\n  Hi\n  there\n");
  EXPECT_EQ(r.paragraphs(), (Paragraphs{{u"Action", u"Line one\u2028Line two"},
                                        {u"Action", u"   Indented action."},
                                        {u"Character", u"BOB"},
                                        {u"Dialogue", u"Hi\u2028there"}}));
}

TEST(FountainReaderElements, CentredTextIsACentredActionWithoutIndents) {
  Read r = read("> THE END <\n");
  EXPECT_EQ(r.paragraphs(), (Paragraphs{{u"Action", u"THE END"}}));
  auto style =
      r.text->attribute(ns::ParagraphStyleAttributeName, 0, nullptr).as<ns::ParagraphStyle>();
  EXPECT_EQ(style->alignment(), ns::TextAlignmentCenter);
  EXPECT_EQ(style->firstLineHeadIndent(), 0.0);
  EXPECT_EQ(style->headIndent(), 0.0);
  EXPECT_EQ(style->tailIndent(), 0.0);
}

TEST(FountainReaderElements, SectionsTakeAHeadingStyleMadeOnceFromAction) {
  Read r = read("# Act One\n\n## Sequence\n\nText.\n\n## Another\n");
  EXPECT_EQ(r.paragraphs(), (Paragraphs{{u"Heading 1", u"Act One"},
                                        {u"Heading 2", u"Sequence"},
                                        {u"Action", u"Text."},
                                        {u"Heading 2", u"Another"}}));
  const VLStylesheetPtr &sheet = r.reader->stylesheet();
  int heading2 = 0;
  for (const VLStylePtr &style : sheet->styles())
    heading2 += style->displayName() == u"Heading 2";
  EXPECT_EQ(heading2, 1);
  VLStylePtr style = sheet->styleForDisplayName(u"Heading 2");
  EXPECT_EQ(style->styleName(), u"Heading_20_2");
  EXPECT_EQ(style->headerLevel(), 2);
  EXPECT_EQ(style->parentStyle(), sheet->styleForDisplayName(u"Action"));
  EXPECT_EQ(style->nextStyle(), sheet->styleForDisplayName(u"Action"));
}

TEST(FountainReaderElements, DualDialogueReadsAsTwoCuesWithoutTheMark) {
  Read r = read("BOB\nHi.\n\nALICE ^\nHello.\n");
  EXPECT_EQ(r.paragraphs(), (Paragraphs{{u"Character", u"BOB"},
                                        {u"Dialogue", u"Hi."},
                                        {u"Character", u"ALICE"},
                                        {u"Dialogue", u"Hello."}}));
}

TEST(FountainReaderElements, BoneyardsPageBreaksAndTheTitlePageLeaveNoText) {
  Read r = read("Title: Gone\n\nBefore.\n\n/* hidden\nstuff */\n\n===\n\nAfter.\n");
  EXPECT_EQ(r.string(), u"Before.\nAfter.\n");
}

TEST(FountainReaderElements, FadeInTakesTheSceneHeadingStyle) {
  Read r = read(">FADE IN:\n\nINT. HOUSE - DAY\n");
  EXPECT_EQ(r.paragraphs(),
            (Paragraphs{{u"Scene Heading", u"FADE IN:"}, {u"Scene Heading", u"INT. HOUSE - DAY"}}));
  EXPECT_EQ(r.completions(u"locations"), (Strings{u"HOUSE", u"FADE IN:"}));
  EXPECT_EQ(r.completions(u"transitions").front(), u"CUT TO:");
}

// Emphasis.

TEST(FountainReaderEmphasis, StarsBecomeTraitsAndTheMarksGo) {
  Read r = read("A *soft* and **loud** and ***both*** word.\n");
  EXPECT_EQ(r.string(), u"A soft and loud and both word.\n");
  EXPECT_EQ(r.traitsAt(0), 0u);
  EXPECT_EQ(r.traitsAt(r.at(u"soft")), ns::ItalicFontMask);
  EXPECT_EQ(r.traitsAt(r.at(u"soft") + 3), ns::ItalicFontMask);
  EXPECT_EQ(r.traitsAt(r.at(u" and loud")), 0u);
  EXPECT_EQ(r.traitsAt(r.at(u"loud")), ns::BoldFontMask);
  EXPECT_EQ(r.traitsAt(r.at(u"both") + 3), ns::BoldFontMask | ns::ItalicFontMask);
  EXPECT_EQ(r.traitsAt(r.at(u" word")), 0u);
}

TEST(FountainReaderEmphasis, UnderscoresUnderlineEvenInsideWords) {
  Read r = read("An _underlined_ snake_case_name.\n");
  EXPECT_EQ(r.string(), u"An underlined snakecasename.\n");
  auto underline = [&](uint64_t i) {
    return r.text->attribute(ns::UnderlineStyleAttributeName, i, nullptr).integerValue();
  };
  EXPECT_EQ(underline(r.at(u"underlined")), 1);
  EXPECT_EQ(underline(r.at(u"underlined") + 9), 1);
  EXPECT_EQ(underline(r.at(u" snake")), 0);
  EXPECT_EQ(underline(r.at(u"case")), 1);
  EXPECT_EQ(underline(r.at(u"name")), 0);
}

TEST(FountainReaderEmphasis, ShortOrUnpairedMarksGiveNoTrait) {
  // A text no longer than its mark loses the marks and stays plain.
  Read r = read("Go **a** and *b* and ***cd*** now.\n");
  EXPECT_EQ(r.string(), u"Go a and b and cd now.\n");
  for (std::u16string_view word : {u"a and", u"b and", u"cd now"})
    EXPECT_EQ(r.traitsAt(r.at(word)), 0u) << ns::toUTF8(word);

  Read unpaired = read("Costs 5 * 3 dollars.\n");
  EXPECT_EQ(unpaired.string(), u"Costs 5 * 3 dollars.\n");
  EXPECT_EQ(unpaired.traitsAt(0), 0u);
}

TEST(FountainReaderEmphasis, ABackslashDoesNotEscapeAStar) {
  Read r = read("Say \\*this\\* now.\n");
  EXPECT_EQ(r.string(), u"Say \\this\\ now.\n");
  EXPECT_EQ(r.traitsAt(r.at(u"this")), ns::ItalicFontMask);
}

// Notes.

TEST(FountainReaderNotes, ABlockNoteSitsOnTheCharacterBeforeIt) {
  Read r = read("First.\n\n[[A note]]\n\nSecond.\n");
  EXPECT_EQ(r.string(), u"First.\nSecond.\n");
  std::vector<VLSTextMarkerPtr> comments = r.markers(VLSTextMarkerTypeComment);
  ASSERT_EQ(comments.size(), 1u);
  const VLSTextMarkerPtr &note = comments[0];
  EXPECT_EQ(note->representedObject().string(), u"A note");
  EXPECT_EQ(note->range(), (ns::Range{6, 1}));
  EXPECT_EQ(note->textMarkerLocation(), VLSTextMarkerLocationAfter);
  EXPECT_EQ(r.markerAt(6), note);
  EXPECT_FALSE(r.markerAt(5));
  EXPECT_FALSE(r.markerAt(7));
  EXPECT_EQ(r.attributes->objectForKey(VLReferencesDocumentAttribute)
                .dictionary()
                ->objectForKey(*note->identifier())
                .as<VLSTextMarker>(),
            note);
}

TEST(FountainReaderNotes, ANoteAtTheStartSitsOnTheFirstCharacter) {
  Read r = read("[[Opening]]\n\nText.\n");
  VLSTextMarkerPtr note = r.markers(VLSTextMarkerTypeComment).at(0);
  EXPECT_EQ(note->range(), (ns::Range{0, 1}));
  EXPECT_EQ(note->textMarkerLocation(), VLSTextMarkerLocationBefore);
  EXPECT_EQ(r.markerAt(0), note);
}

TEST(FountainReaderNotes, ANoteAtTheEndGetsALineFeedToSitOn) {
  Read only = read("[[Only a note]]\n");
  EXPECT_EQ(only.string(), u"\n");
  EXPECT_EQ(only.markers(VLSTextMarkerTypeComment).at(0)->range(), (ns::Range{0, 1}));

  Read last = read("Text.\n\n[[Last]]\n\n===\n");
  EXPECT_EQ(last.string(), u"Text.\n\n");
  EXPECT_EQ(last.markerAt(5)->representedObject().string(), u"Last");
}

TEST(FountainReaderNotes, InlineNotesAreCutOutAtTheirPlace) {
  Read r = read("First.\n\nHe waits[[beat]] and goes[[two]].\n");
  EXPECT_EQ(r.string(), u"First.\nHe waits and goes.\n");
  std::vector<VLSTextMarkerPtr> comments = r.markers(VLSTextMarkerTypeComment);
  ASSERT_EQ(comments.size(), 2u);
  std::set<std::u16string> notes;
  for (const VLSTextMarkerPtr &note : comments) {
    notes.insert(note->representedObject().string());
    uint64_t sitsOn =
        note->representedObject().string() == u"beat" ? r.at(u" and") - 1 : r.at(u".\n", 8) - 1;
    EXPECT_EQ(note->range(), (ns::Range{sitsOn, 1}));
    EXPECT_EQ(r.markerAt(sitsOn), note);
  }
  EXPECT_EQ(notes, (std::set<std::u16string>{u"beat", u"two"}));
}

// Outline entries.

TEST(FountainReaderOutline, ScenesOwnTheirParagraphsAndCarryTheirSynopsis) {
  Read r = read("INT. HOUSE - DAY\n= They meet.\n\nAction one.\n\nEXT. PARK - NIGHT\n\nTwo.\n");
  VLOutlinePtr first = r.outlineAt(0), second = r.outlineAt(r.at(u"EXT."));
  ASSERT_TRUE(first && second);
  EXPECT_NE(first, second);
  EXPECT_EQ(r.outlineAt(r.at(u"Action one")), first);
  EXPECT_EQ(r.outlineAt(r.at(u"Two.")), second);
  EXPECT_EQ(first->title(), u"INT. HOUSE - DAY");
  EXPECT_EQ(first->level(), 0);
  EXPECT_EQ(first->range(), (ns::Range{0, r.at(u"EXT.")}));
  EXPECT_EQ(second->range().max(), r.text->length());
  EXPECT_NE(first->identifier(), second->identifier());
  EXPECT_TRUE(ns::hasPrefix(*first->identifier(), u"scene"));

  VLSTextMarkerPtr marker = r.outlineMarker(first);
  ASSERT_TRUE(marker);
  EXPECT_EQ(marker->textMarkerType(), VLSTextMarkerTypeOutlineEntry);
  EXPECT_EQ(marker->range(), first->range());
  ns::DictionaryPtr properties = marker->representedObject().dictionary();
  EXPECT_EQ(properties->objectForKey(u"title").string(), u"INT. HOUSE - DAY");
  EXPECT_EQ(properties->objectForKey(u"summary").string(), u"They meet.");
  EXPECT_EQ(properties->objectForKey(u"resourceType").string(), VLObjectResourceType);
  EXPECT_EQ(properties->objectForKey(u"level").integerValue(), 0);
  // Outline markers stay in the references and touch no character.
  EXPECT_FALSE(r.markerAt(0));
  // The empty introduction left no marker.
  EXPECT_EQ(r.markers(VLSTextMarkerTypeOutlineEntry).size(), 2u);
}

TEST(FountainReaderOutline, TextBeforeTheFirstSceneStaysInTheIntroduction) {
  Read r = read("= Prologue synopsis\n\nSome text.\n\nINT. A - DAY\n");
  VLOutlinePtr intro = r.outlineAt(0);
  EXPECT_EQ(intro->title(), u"Introduction");
  ns::DictionaryPtr properties = r.outlineMarker(intro)->representedObject().dictionary();
  EXPECT_EQ(properties->objectForKey(u"summary").string(), u"Prologue synopsis");
  EXPECT_FALSE(properties->containsKey(u"level"));
}

TEST(FountainReaderOutline, SectionsAreEntriesAtTheirDepth) {
  Read r = read("# Act One\n\n## Sequence\n\nINT. A - DAY\n\nText.\n");
  VLOutlinePtr act = r.outlineAt(0), sequence = r.outlineAt(r.at(u"Sequence"));
  EXPECT_EQ(act->title(), u"Act One");
  EXPECT_EQ(act->level(), 1);
  EXPECT_EQ(sequence->level(), 2);
  EXPECT_EQ(r.outlineAt(r.at(u"Text."))->level(), 0);
  ns::DictionaryPtr properties = r.outlineMarker(sequence)->representedObject().dictionary();
  EXPECT_EQ(properties->objectForKey(u"resourceType").string(), VLSectionResourceType);
  EXPECT_EQ(properties->objectForKey(u"level").integerValue(), 2);

  std::set<std::u16string> identifiers;
  for (const VLSTextMarkerPtr &marker : r.markers(VLSTextMarkerTypeOutlineEntry))
    identifiers.insert(*marker->identifier());
  EXPECT_EQ(identifiers.size(), 3u);
}

// Completions.

TEST(FountainReaderCompletions, ListsHoldWhatWasSeenMostRecentFirst) {
  Read r = read("INT. HOUSE - DAY\n\nBOB (V.O.)\nHi.\n\nALICE\nYo.\n\n"
                "EXT. PARK - WEST SIDE - NIGHT\n\nBOB (CONT'D)\nAgain.\n\nCUT TO:\n\n"
                "I/E. CAR - DUSK\n");
  EXPECT_EQ(r.completions(u"characters"), (Strings{u"BOB", u"ALICE"}));
  EXPECT_EQ(r.completions(u"extensions"),
            (Strings{u"(CONT'D)", u"(V.O.)", u"(O.S.)", u"(O.C.)", u"(SUBTITLE)"}));
  EXPECT_EQ(r.completions(u"sceneIntros"), (Strings{u"I/E", u"EXT", u"INT"}));
  // A hyphen inside a location does not cut it when a known time follows.
  EXPECT_EQ(r.completions(u"locations"), (Strings{u"CAR", u"PARK - WEST SIDE", u"HOUSE"}));
  EXPECT_EQ(r.completions(u"times"),
            (Strings{u"DUSK", u"NIGHT", u"DAY", u"AFTERNOON", u"MORNING", u"EVENING", u"LATER",
                     u"MOMENTS LATER", u"CONTINUOUS", u"THE NEXT DAY"}));
  // A transition is listed as its paragraph, line feed included.
  Strings transitions = r.completions(u"transitions");
  EXPECT_EQ(transitions.front(), u"CUT TO:\n");
  EXPECT_EQ(transitions.size(), 10u);
}

TEST(FountainReaderCompletions, SceneHeadingsPreferTheMostRecentKnownTime) {
  auto reader = VLSFountainReader::create();
  std::optional<std::u16string> intro, location, time;
  reader->parseSceneHeading(u"int. x - dusk - day\n", &intro, &location, &time);
  EXPECT_EQ(intro, u"INT");
  EXPECT_EQ(location, u"X - DUSK");
  EXPECT_EQ(time, u"DAY");

  reader->updateCompletionsFromSceneHeading(u"EXT. Y - DUSK\n");
  reader->parseSceneHeading(u"INT. X - DUSK - DAY\n", nullptr, &location, &time);
  EXPECT_EQ(location, u"X");
  EXPECT_EQ(time, u"DUSK");

  intro = u"unchanged";
  reader->parseSceneHeading(u"FADE IN:\n", &intro, &location, &time);
  EXPECT_EQ(intro, u"unchanged");
  EXPECT_EQ(location, u"FADE IN:");
  EXPECT_EQ(time, std::nullopt);
}

TEST(FountainReaderCompletions, CuesSplitIntoNameAndExtension) {
  std::optional<std::u16string> name, extension = u"unchanged";
  EXPECT_TRUE(VLSFountainReader::parseCharacter(u"bob\n", &name, &extension));
  EXPECT_EQ(name, u"BOB");
  EXPECT_EQ(extension, u"unchanged");
  EXPECT_TRUE(VLSFountainReader::parseCharacter(u"Bob (v.o.)\n", &name, &extension));
  EXPECT_EQ(name, u"BOB");
  EXPECT_EQ(extension, u"(V.O.)");
  EXPECT_TRUE(VLSFountainReader::parseCharacter(u"(O.S.)", &name, &extension));
  EXPECT_EQ(name, std::nullopt);
  EXPECT_EQ(extension, u"(O.S.)");
  EXPECT_FALSE(VLSFountainReader::parseCharacter(u"", &name, &extension));
}

// Novel mode.

TEST(FountainReaderNovel, ScenesTitleEntriesAndSeparatorsStandBetweenThem) {
  Read r = read("Title: A Novel\nType: Novel\nFont: Times\n\n"
                "It was dark.\nIt rained.\n\nINT. HOUSE - DAY\n\nShe waited.\n\n"
                "EXT. GARDEN - NIGHT\n\nHe left.\n");
  EXPECT_TRUE(r.reader->isNovel());
  EXPECT_EQ(r.paragraphs(), (Paragraphs{{u"Section Text", u"It was dark. It rained."},
                                        {u"Section Separator", u"#"},
                                        {u"Section Text", u"She waited."},
                                        {u"Section Separator", u"#"},
                                        {u"Section Text", u"He left."}}));
  EXPECT_EQ(r.fontAt(0)->familyName(), u"Times");
  EXPECT_EQ(r.fontAt(0)->pointSize(), 12.0);
  EXPECT_FALSE(r.reader->stylesheet()->styleForName(u"Scene_20_Heading"));
  EXPECT_EQ(r.outlineAt(0)->title(), u"Untitled Section");
  EXPECT_EQ(r.outlineAt(r.at(u"She"))->title(), u"INT. HOUSE - DAY");
  EXPECT_EQ(r.outlineAt(r.at(u"He left"))->title(), u"EXT. GARDEN - NIGHT");
  ns::DictionaryPtr settings = r.attributes->objectForKey(u"settings").dictionary();
  EXPECT_FALSE(settings->containsKey(VLOutlineSettingsKey));
  EXPECT_TRUE(
      valueAtKeyPath(settings, u"documentSettings.shouldHideBodyTextEntriesInOutline").isNil());
}

TEST(FountainReaderNovel, ProseWithoutScenesHidesBodyEntries) {
  Read r = read("Type: novel\n\nJust prose.\n\n# Part Two\n\nMore prose.\n");
  EXPECT_EQ(r.outlineAt(0)->title(), u"Untitled Section");
  // Text after a section opens an entry of its own.
  VLOutlinePtr after = r.outlineAt(r.at(u"More"));
  EXPECT_EQ(after->title(), u"Untitled Section");
  EXPECT_EQ(after->level(), 0);
  EXPECT_NE(after, r.outlineAt(0));
  EXPECT_EQ(
      valueAtKeyPath(r.attributes, u"settings.documentSettings.shouldHideBodyTextEntriesInOutline"),
      ns::Value(true));
}

// Document attributes.

TEST(FountainReaderDocument, AttributesHoldStylesheetSettingsMasterPageAndReferences) {
  Read r = read(ShortScript);
  ASSERT_TRUE(r.attributes);
  EXPECT_EQ(r.attributes->allKeys(),
            (Strings{u"VLODFMasterPages", u"VLReferences", u"VLStylesheet", u"settings"}));
  EXPECT_EQ(r.attributes->objectForKey(VLStylesheetDocumentAttribute).as<VLStylesheet>(),
            r.reader->stylesheet());
  EXPECT_TRUE(isScreenplayDocument(r.attributes));
  EXPECT_EQ(r.attributes->objectForKey(VLReferencesDocumentAttribute).dictionary(),
            r.reader->references());

  ns::Value level = valueAtKeyPath(r.attributes, u"settings.outlineSettings.outlineLevelSettings")
                        .array()
                        ->objectAtIndex(0);
  EXPECT_EQ(level.dictionary()->objectForKey(u"displayName").string(), u"Scene");
  EXPECT_EQ(level.dictionary()->objectForKey(u"defaultStyle").string(), u"Scene_20_Heading");

  auto page = r.attributes->objectForKey(VLMasterPagesKey)
                  .dictionary()
                  ->objectForKey(u"Standard")
                  .as<VLMasterPage>();
  ASSERT_TRUE(page);
  EXPECT_EQ(page->name(), u"Standard");
  const VLPageLayoutPtr &layout = page->pageLayout();
  EXPECT_EQ(layout->leftMargin(), 108.0);
  EXPECT_EQ(layout->rightMargin(), 72.0);
  EXPECT_EQ(layout->headerSpacing(), 36.0);
  EXPECT_EQ(layout->footerSpacing(), 36.0);
  EXPECT_EQ(layout->contentTopMargin(), 72.0);
  EXPECT_EQ(layout->contentBottomMargin(), 72.0);
}

TEST(FountainReaderDocument, WithoutAnAttributesPointerTheTextComesAlone) {
  auto reader = VLSFountainReader::create();
  auto text = reader->attributedStringWithData(ns::Data::fromString("Text.\n\n[[note]]\n\nMore.\n"),
                                               nullptr, nullptr, nullptr);
  ASSERT_TRUE(text);
  EXPECT_EQ(text->string(), u"Text.\nMore.\n");
  EXPECT_TRUE(text->attribute(VLSTextMarkerAttributeName, 5, nullptr).as<VLSTextMarker>());
  EXPECT_EQ(reader->settings()->count(), 0u);
}

TEST(FountainReaderDocument, EmptyInputGivesEmptyTextAndNoEntries) {
  Read r = read("");
  ASSERT_TRUE(r.text);
  EXPECT_EQ(r.text->length(), 0u);
  ASSERT_TRUE(r.attributes);
  EXPECT_EQ(r.reader->references()->count(), 0u);
  EXPECT_EQ(r.completions(u"sceneIntros"), (Strings{u"INT", u"EXT", u"I/E"}));
}

TEST(FountainReaderDocument, AHostsTextIsFilledInPlace) {
  auto reader = VLSFountainReader::create();
  auto target = ns::MutableAttributedString::create();
  reader->setAttributedString(target);
  Read r = read("Words.\n", reader);
  EXPECT_EQ(r.text, target);
  EXPECT_EQ(target->string(), u"Words.\n");
}

TEST(FountainReaderDocument, OtherEncodingsAreDecoded) {
  Read r = read("Caf\xe9 scene.\n"); // Windows 1252
  EXPECT_EQ(r.string(), u"Caf\u00e9 scene.\n");
}

} // namespace
