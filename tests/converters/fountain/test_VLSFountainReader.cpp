// Tests of the Fountain reader: element styles, emphasis, notes, outline entries, completion
// lists, novel mode, the document attributes of a read, and round trips through the writer.
#include "converters/fountain/VLSFountainReader.h"
#include "converters/fountain/VLSFountainWriter.h"
#include "model/VLConstants.h"
#include "model/VLDocumentSettings.h"
#include "model/VLMasterPage.h"
#include "model/VLMemoryRDFModel.h"
#include "model/VLOutline.h"
#include "model/VLStylesheet.h"
#include "ns/AttributeNames.h"
#include "ns/Font.h"
#include "ns/ParagraphStyle.h"
#include "ns/String.h"
#include "ns/TextStorage.h"
#include "objects/VLSTextMarker.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <vector>

using namespace vl;

namespace {

using Strings = std::vector<std::u16string>;

struct Read {
  VLSFountainReaderPtr reader;
  ns::MutableAttributedStringPtr text;
  ns::DictionaryPtr attributes;

  // "Style: text" for each paragraph, without its line feed.
  Strings paragraphs() const {
    Strings result;
    for (uint64_t start = 0; start < text->length();) {
      ns::Range paragraph = text->paragraphRangeForRange(ns::Range{start, 0});
      auto style = text->attribute(VLParagraphStyleAttributeName, start, nullptr).as<VLStyle>();
      std::u16string body = text->substringWithRange(paragraph);
      if (!body.empty() && body.back() == u'\n')
        body.pop_back();
      result.push_back((style ? style->displayName().value_or(u"?") : u"-") + u": " + body);
      start = paragraph.max();
    }
    return result;
  }
  // The text with each run of emphasis as "[flags|text]": b bold, i italic, u underlined.
  std::u16string emphasis() const {
    std::u16string result, open;
    for (uint64_t i = 0; i < text->length(); ++i) {
      uint32_t traits = text->attribute(ns::FontAttributeName, i, nullptr).as<ns::Font>()->traits();
      std::u16string flags =
          std::u16string(traits & ns::BoldFontMask ? u"b" : u"") +
          (traits & ns::ItalicFontMask ? u"i" : u"") +
          (text->attribute(ns::UnderlineStyleAttributeName, i, nullptr).integerValue() ? u"u"
                                                                                       : u"");
      if (flags != open) {
        result += std::u16string(open.empty() ? u"" : u"]") + (flags.empty() ? u"" : u"[") + flags +
                  (flags.empty() ? u"" : u"|");
        open = flags;
      }
      result += text->string()[i];
    }
    return result + (open.empty() ? u"" : u"]");
  }
  // Each comment as "note {range} before|after", once it is seen to lie on the text over
  // exactly its range; sorted.
  Strings notes() const {
    Strings result;
    for (const auto &[identifier, value] : *reader->references()) {
      auto marker = value.as<VLSTextMarker>();
      if (!marker || marker->textMarkerType() != VLSTextMarkerTypeComment)
        continue;
      ns::Range run;
      EXPECT_EQ(text->attribute(VLSTextMarkerAttributeName, marker->range().location, &run,
                                ns::Range{0, text->length()}),
                ns::Value(marker));
      EXPECT_EQ(run, marker->range());
      result.push_back(
          marker->representedObject().string() + u" " + ns::StringFromRange(marker->range()) +
          (marker->textMarkerLocation() == VLSTextMarkerLocationAfter ? u" after" : u" before"));
    }
    std::sort(result.begin(), result.end());
    return result;
  }
  // Each outline entry in text order as "title (level) {range}: synopsis", once its marker in
  // the references is seen to match it. The level is the one of the marker's properties.
  Strings outline() const {
    Strings result;
    VLOutlinePtr last;
    for (uint64_t i = 0; i < text->length(); ++i) {
      auto entry = text->attribute(VLOutlineElementAttributeName, i, nullptr).as<VLOutline>();
      if (!entry || entry == last)
        continue;
      last = entry;
      auto marker = reader->references()->objectForKey(*entry->identifier()).as<VLSTextMarker>();
      EXPECT_TRUE(marker && marker->textMarkerType() == VLSTextMarkerTypeOutlineEntry);
      if (!marker)
        continue;
      EXPECT_EQ(marker->range(), entry->range());
      EXPECT_FALSE(text->attribute(VLSTextMarkerAttributeName, i, nullptr).as<VLSTextMarker>());
      ns::DictionaryPtr properties = marker->representedObject().dictionary();
      EXPECT_EQ(properties->objectForKey(u"title").string(), entry->title());
      ns::Value level = properties->objectForKey(u"level");
      EXPECT_TRUE(level.isNil() || level.integerValue() == entry->level());
      EXPECT_EQ(properties->objectForKey(u"resourceType").string(),
                entry->level() ? VLSectionResourceType : VLObjectResourceType);
      ns::Value summary = properties->objectForKey(u"summary");
      result.push_back(*entry->title() + u" (" +
                       (level.isNil() ? u"-" : ns::fromUTF8(std::to_string(level.integerValue()))) +
                       u") " + ns::StringFromRange(entry->range()) +
                       (summary.isNil() ? u"" : u": " + summary.string()));
    }
    size_t markers = 0;
    for (const auto &[identifier, value] : *reader->references())
      if (auto marker = value.as<VLSTextMarker>())
        markers += marker->textMarkerType() == VLSTextMarkerTypeOutlineEntry;
    EXPECT_EQ(markers, result.size()) << "an empty entry leaves no marker";
    return result;
  }
  Strings completions(std::u16string_view list) const {
    return stringsFromSettingsDictionaryArray(valueAtKeyPath(
        attributes, std::u16string(VLCompletionsKeyPath) + u"." + std::u16string(list)));
  }
};

Read read(std::string_view fountain, VLSFountainReaderPtr reader = VLSFountainReader::create()) {
  ns::DictionaryPtr attributes;
  auto text = reader->attributedStringWithData(ns::Data::fromString(fountain), nullptr, &attributes,
                                               nullptr);
  EXPECT_TRUE(text && attributes);
  return {reader, text, attributes};
}

// Reads `fountain`, gives the outline entries' titles and synopses to a metadata model as a
// host would, and writes the text back.
std::string roundTrip(std::string_view fountain) {
  Read r = read(fountain);
  if (!r.text || !r.attributes)
    return {};
  auto model = VLMemoryRDFModel::create();
  model->addResourcesFromReferences(r.reader->references());
  r.attributes->setObject(model, VLRDFMetadataDocumentAttribute);
  auto writer = VLSFountainWriter::create(r.text);
  writer->setIsScreenplay(!r.reader->isNovel());
  auto data = writer->dataFromRange({0, r.text->length()}, r.attributes, nullptr);
  return data ? std::string(data->view()) : std::string();
}

// The seed inputs of the reader's fuzz target, a range of real and odd scripts, by name.
std::map<std::string, std::string> corpus() {
  std::map<std::string, std::string> files;
  for (const auto &entry :
       std::filesystem::directory_iterator(VL_SOURCE_DIR "/fuzz/corpus/FountainReader")) {
    std::ifstream in(entry.path(), std::ios::binary);
    files[entry.path().filename().string()] = std::string(std::istreambuf_iterator<char>(in), {});
  }
  return files;
}

constexpr std::string_view ShortScript = "Title: Big Fish\nAuthor: John August\n\n"
                                         "INT. HOUSE - DAY\n\nBob enters.\n\n"
                                         "BOB (V.O.)\n(quietly)\nHello there.\n\nCUT TO:\n\n"
                                         "EXT. PARK - NIGHT\n";

TEST(FountainReaderElements, EachElementBecomesAParagraphInItsStyle) {
  const std::pair<std::string_view, Strings> cases[] = {
      {ShortScript,
       {u"Scene Heading: INT. HOUSE - DAY", u"Action: Bob enters.", u"Character: BOB (V.O.)",
        u"Parenthetical: (quietly)", u"Dialogue: Hello there.", u"Transition: CUT TO:",
        u"Scene Heading: EXT. PARK - NIGHT"}},
      // Lines of one element stay one paragraph.
      {"Line one\nLine two\n\n   Indented action.\n\nBOB\n  Hi\n  there\n",
       {u"Action: Line one\u2028Line two", u"Action:    Indented action.", u"Character: BOB",
        u"Dialogue: Hi\u2028there"}},
      // Sections take heading styles; dual dialogue loses its mark; forced FADE IN: is a heading.
      {"# Act One\n\n## Sequence\n\nText.\n\n## Another\n",
       {u"Heading 1: Act One", u"Heading 2: Sequence", u"Action: Text.", u"Heading 2: Another"}},
      {"BOB\nHi.\n\nALICE ^\nHello.\n",
       {u"Character: BOB", u"Dialogue: Hi.", u"Character: ALICE", u"Dialogue: Hello."}},
      {">FADE IN:\n\nINT. HOUSE - DAY\n",
       {u"Scene Heading: FADE IN:", u"Scene Heading: INT. HOUSE - DAY"}},
      // Boneyards, page breaks and the title page leave no text.
      {"Title: Gone\n\nBefore.\n\n/* hidden\nstuff */\n\n===\n\nAfter.\n",
       {u"Action: Before.", u"Action: After."}},
      {"Caf\xe9 scene.\n", {u"Action: Caf\u00e9 scene."}}, // Windows 1252
      {"", {}}};
  for (const auto &[fountain, paragraphs] : cases)
    EXPECT_EQ(read(fountain).paragraphs(), paragraphs) << fountain;

  Read r = read("# Act One\n\n## Sequence\n\nText.\n\n## Another\n\n> THE END <\n");
  EXPECT_TRUE(std::dynamic_pointer_cast<ns::TextStorage>(r.text));
  EXPECT_FALSE(r.reader->isNovel());
  EXPECT_EQ(r.text->attribute(ns::FontAttributeName, 0, nullptr).as<ns::Font>()->familyName(),
            u"Courier");
  // One heading style of each level, made from Action.
  const VLStylesheetPtr &sheet = r.reader->stylesheet();
  EXPECT_EQ(std::count_if(sheet->styles().begin(), sheet->styles().end(),
                          [](const VLStylePtr &s) { return s->displayName() == u"Heading 2"; }),
            1);
  VLStylePtr heading = sheet->styleForDisplayName(u"Heading 2");
  EXPECT_EQ(heading->headerLevel(), 2);
  EXPECT_EQ(heading->parentStyle(), sheet->styleForDisplayName(u"Action"));
  EXPECT_EQ(heading->nextStyle(), sheet->styleForDisplayName(u"Action"));
  // Centred text is a centred action without indents.
  auto centred =
      r.text->attribute(ns::ParagraphStyleAttributeName, r.text->string().find(u"THE END"), nullptr)
          .as<ns::ParagraphStyle>();
  EXPECT_EQ(centred->alignment(), ns::TextAlignmentCenter);
  EXPECT_EQ(centred->firstLineHeadIndent() + centred->headIndent() + centred->tailIndent(), 0.0);
}

TEST(FountainReaderElements, EmphasisMarksBecomeTraits) {
  const std::pair<std::string_view, std::u16string_view> cases[] = {
      {"A *soft* and **loud** and ***both*** word.\n",
       u"A [i|soft] and [b|loud] and [bi|both] word.\n"},
      {"An _underlined_ snake_case_name.\n", u"An [u|underlined] snake[u|case]name.\n"},
      {"**Bold _and under_** _**under bold**_\n", u"[b|Bold ][bu|and under] [bu|under bold]\n"},
      // A text no longer than its mark loses the marks; an unpaired mark stays.
      {"Go **a** and *b* and ***cd*** now.\n", u"Go a and b and cd now.\n"},
      {"Costs 5 * 3 dollars.\n", u"Costs 5 * 3 dollars.\n"},
      {"Say \\*this\\* now.\n", u"Say \\[i|this\\] now.\n"}}; // no escapes
  for (const auto &[fountain, emphasis] : cases)
    EXPECT_EQ(read(fountain).emphasis(), emphasis) << fountain;
}

TEST(FountainReaderNotes, NotesAreCommentsOnTheCharacterBeforeThem) {
  struct Case {
    std::string_view fountain;
    std::u16string_view text;
    Strings notes;
  };
  const Case cases[] = {
      {"First.\n\n[[A note]]\n\nSecond.\n", u"First.\nSecond.\n", {u"A note {6, 1} after"}},
      // At the start a note sits on the first character; at the end it gets a line feed.
      {"[[Opening]]\n\nText.\n", u"Text.\n", {u"Opening {0, 1} before"}},
      {"[[Only a note]]\n", u"\n", {u"Only a note {0, 1} before"}},
      {"Text.\n\n[[Last]]\n\n===\n", u"Text.\n\n", {u"Last {5, 1} after"}},
      // Inline notes are cut out at their place.
      {"First.\n\nHe waits[[beat]] and goes[[two]].\n",
       u"First.\nHe waits and goes.\n",
       {u"beat {14, 1} after", u"two {23, 1} after"}}};
  for (const Case &c : cases) {
    Read r = read(c.fountain);
    EXPECT_EQ(r.text->string(), c.text) << c.fountain;
    EXPECT_EQ(r.notes(), c.notes) << c.fountain;
  }
  // The document's references are the reader's, and so hold the notes.
  Read r = read(ShortScript);
  EXPECT_EQ(r.attributes->objectForKey(VLReferencesDocumentAttribute).dictionary(),
            r.reader->references());
}

TEST(FountainReaderOutline, ScenesAndSectionsOpenEntriesThatOwnTheTextUnderThem) {
  const std::pair<std::string_view, Strings> cases[] = {
      // The empty introduction leaves no entry.
      {"INT. HOUSE - DAY\n= They meet.\n\nAction one.\n\nEXT. PARK - NIGHT\n\nTwo.\n",
       {u"INT. HOUSE - DAY (0) {0, 29}: They meet.", u"EXT. PARK - NIGHT (0) {29, 23}"}},
      {"= Prologue synopsis\n\nSome text.\n\nINT. A - DAY\n",
       {u"Introduction (-) {0, 11}: Prologue synopsis", u"INT. A - DAY (0) {11, 13}"}},
      {"# Act One\n\n## Sequence\n\nINT. A - DAY\n\nText.\n",
       {u"Act One (1) {0, 8}", u"Sequence (2) {8, 9}", u"INT. A - DAY (0) {17, 19}"}}};
  for (const auto &[fountain, outline] : cases)
    EXPECT_EQ(read(fountain).outline(), outline) << fountain;
}

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
  EXPECT_EQ(read(">FADE IN:\n\nINT. HOUSE - DAY\n").completions(u"locations"),
            (Strings{u"HOUSE", u"FADE IN:"}));
  // Of two known times the one seen more recently ends the heading.
  EXPECT_EQ(read("INT. X - DUSK - DAY\n").completions(u"locations"), (Strings{u"X - DUSK"}));
  EXPECT_EQ(read("EXT. Y - DUSK\n\nINT. X - DUSK - DAY\n").completions(u"locations"),
            (Strings{u"X", u"Y"}));
  EXPECT_EQ(read("").completions(u"sceneIntros"), (Strings{u"INT", u"EXT", u"I/E"}));
}

TEST(FountainReaderNovel, ScenesTitleEntriesAndSeparatorsStandBetweenThem) {
  Read r = read("Title: A Novel\nType: Novel\nFont: Times\n\n"
                "It was dark.\nIt rained.\n\nINT. HOUSE - DAY\n\nShe waited.\n\n"
                "EXT. GARDEN - NIGHT\n\nHe left.\n");
  EXPECT_TRUE(r.reader->isNovel());
  EXPECT_EQ(r.paragraphs(), (Strings{u"Section Text: It was dark. It rained.",
                                     u"Section Separator: #", u"Section Text: She waited.",
                                     u"Section Separator: #", u"Section Text: He left."}));
  EXPECT_EQ(r.text->attribute(ns::FontAttributeName, 0, nullptr).as<ns::Font>()->familyName(),
            u"Times");
  EXPECT_FALSE(r.reader->stylesheet()->styleForName(u"Scene_20_Heading"));
  EXPECT_EQ(r.outline(), (Strings{u"Untitled Section (0) {0, 26}", u"INT. HOUSE - DAY (0) {26, 14}",
                                  u"EXT. GARDEN - NIGHT (0) {40, 9}"}));
  ns::DictionaryPtr settings = r.attributes->objectForKey(u"settings").dictionary();
  EXPECT_FALSE(settings->containsKey(VLOutlineSettingsKey));
  EXPECT_TRUE(
      valueAtKeyPath(settings, u"documentSettings.shouldHideBodyTextEntriesInOutline").isNil());

  // Prose without scenes hides body entries; text after a section opens an entry of its own.
  r = read("Type: novel\n\nJust prose.\n\n# Part Two\n\nMore prose.\n");
  EXPECT_EQ(r.outline(), (Strings{u"Untitled Section (0) {0, 12}", u"Part Two (1) {12, 9}",
                                  u"Untitled Section (0) {21, 12}"}));
  EXPECT_EQ(
      valueAtKeyPath(r.attributes, u"settings.documentSettings.shouldHideBodyTextEntriesInOutline"),
      ns::Value(true));
}

TEST(FountainReaderDocument, AttributesHoldStylesheetSettingsMasterPageAndReferences) {
  Read r = read(ShortScript);
  EXPECT_EQ(r.attributes->allKeys(),
            (Strings{u"VLODFMasterPages", u"VLReferences", u"VLStylesheet", u"settings"}));
  EXPECT_EQ(r.attributes->objectForKey(VLStylesheetDocumentAttribute).as<VLStylesheet>(),
            r.reader->stylesheet());
  EXPECT_TRUE(isScreenplayDocument(r.attributes));
  auto page = valueAtKeyPath(r.attributes, std::u16string(VLMasterPagesKey) + u".Standard")
                  .as<VLMasterPage>();
  ASSERT_TRUE(page);
  EXPECT_EQ(page->pageLayout()->leftMargin(), 108.0);
  EXPECT_EQ(page->pageLayout()->rightMargin(), 72.0);
}

TEST(FountainReaderDocument, AHostsTextIsFilledInPlaceAndNeedsNoAttributesPointer) {
  auto reader = VLSFountainReader::create();
  auto target = ns::MutableAttributedString::create();
  reader->setAttributedString(target);
  auto text = reader->attributedStringWithData(ns::Data::fromString("Text.\n\n[[note]]\n\nMore.\n"),
                                               nullptr, nullptr, nullptr);
  EXPECT_EQ(text, target);
  EXPECT_EQ(target->string(), u"Text.\nMore.\n");
  EXPECT_TRUE(text->attribute(VLSTextMarkerAttributeName, 5, nullptr).as<VLSTextMarker>());
  EXPECT_EQ(reader->settings()->count(), 0u);
}

TEST(FountainRoundTrip, AScreenplayLosesOnlyWhatTheFormatsDoNotCarry) {
  // Lost: the title page, scene numbers, notes (the reader makes point comments), dual
  // dialogue marks, boneyards and page breaks. Transitions come back forced. Synopses
  // survive through the metadata model.
  EXPECT_EQ(roundTrip("Title: Rain\nAuthor: Ann\n\nFADE IN:\n\n# Act One\n= The act.\n\n"
                      "INT. HOUSE - DAY #1#\n= Anna comes home.\n\n"
                      "Rain on the **window**, *soft* and _slow_, ***loud***.\n\n"
                      "ANNA\n(tired)\nAnyone home?\nHello?\n\n[[a note]]\n\nCUT TO:\n\n"
                      ".THE ROOF\n\nBEN ^\nNo.\n\n/* old */\n\n===\n\n> THE END <\n"),
            "FADE IN:\n\n#Act One\n\n=The act.\n\n"
            "INT. HOUSE - DAY \n\n=Anna comes home.\n\n"
            "Rain on the **window**, *soft* and _slow_, ***loud***.\n\n"
            "ANNA\n(tired)\nAnyone home?\nHello?\n\n> CUT TO:\n\n"
            ".THE ROOF\n\nBEN\nNo.\n\n> THE END <");
}

TEST(FountainRoundTrip, ANovelKeepsItsTypeFontSceneTitlesAndSynopses) {
  // Line ends inside a paragraph became blanks on reading; the centred scene separator
  // comes back as centred text.
  EXPECT_EQ(roundTrip("Type: Novel\nFont: Times\n\nINT. KITCHEN\n= Where it starts.\n\n"
                      "It rained.\nAll day.\n\nEXT. GARDEN\n\nThe sun came out.\n"),
            "Type: Novel\nFont: Times\n\n\nINT. KITCHEN\n\n=Where it starts.\n\n"
            "It rained. All day.\n\n> # <\n\nEXT. GARDEN\n\nThe sun came out.");
}

TEST(FountainRoundTrip, EveryParagraphOfAScreenplayComesBackInItsStyle) {
  // Blank paragraphs, styles outside the screenplay table and lower-case text under a
  // capitalising style would not; a generated screenplay has none of them. Forced headings
  // ("EST.") come back without trailing blanks.
  auto trimmed = [](Strings paragraphs) {
    for (std::u16string &paragraph : paragraphs)
      paragraph = ns::trimmed(paragraph);
    return paragraphs;
  };
  std::string screenplay = corpus().at("screenplay_20_pages.fountain");
  EXPECT_EQ(trimmed(read(roundTrip(screenplay)).paragraphs()),
            trimmed(read(screenplay).paragraphs()));
}

TEST(FountainRoundTrip, WrittenTextSettlesAfterOneMoreRound) {
  // The first round drops what this side of Fountain cannot carry; what it writes must then
  // read and write back to itself.
  for (const auto &[name, original] : corpus()) {
    std::string twice = roundTrip(roundTrip(original));
    EXPECT_EQ(roundTrip(twice), twice) << name;
  }
}

} // namespace
