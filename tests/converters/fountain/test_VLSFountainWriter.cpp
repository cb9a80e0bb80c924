// Writing styled text as Fountain: element types from styles, emphasis back to marks, notes,
// the title page, and scene titles and synopses from the metadata model.
#include "converters/fountain/VLSFountainReader.h"
#include "converters/fountain/VLSFountainWriter.h"
#include "model/VLConstants.h"
#include "model/VLMemoryRDFModel.h"
#include "model/VLOutline.h"
#include "model/VLStyle.h"
#include "model/VLStylesheet.h"
#include "ns/AttributeNames.h"
#include "ns/Font.h"
#include "ns/FontManager.h"
#include "ns/MutableAttributedString.h"
#include "ns/ParagraphStyle.h"
#include "ns/String.h"
#include "ns/URL.h"
#include "objects/VLSTextMarker.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

using namespace vl;
using ns::Range;

namespace {

// A styled document built paragraph by paragraph from a stylesheet.
struct Document {
  VLStylesheetPtr sheet = VLStylesheet::defaultScreenplayStylesheet();
  ns::MutableAttributedStringPtr text = ns::MutableAttributedString::create();
  ns::DictionaryPtr attributes = ns::Dictionary::create();

  Range add(const VLStylePtr &style, std::u16string_view content) {
    Range range{text->length(), content.size()};
    std::u16string paragraph(content);
    paragraph.push_back(u'\n');
    auto attrs = style ? style->attributes() : ns::Dictionary::create();
    text->appendAttributedString(ns::AttributedString(paragraph, attrs));
    return range;
  }
  Range add(std::u16string_view displayName, std::u16string_view content) {
    VLStylePtr style = sheet->styleForDisplayName(displayName);
    EXPECT_TRUE(style) << ns::toUTF8(displayName);
    return add(style, content);
  }
  // Converts the font of `range` to have `traits` (1 italic, 2 bold).
  void emphasise(Range range, uint32_t traits) {
    auto font = text->attribute(ns::FontAttributeName, range.location, nullptr).as<ns::Font>();
    text->addAttribute(ns::FontAttributeName,
                       ns::FontManager::sharedFontManager()->convertFontToHaveTrait(font, traits),
                       range);
  }
  void underline(Range range) { text->addAttribute(ns::UnderlineStyleAttributeName, 1, range); }
  VLOutlinePtr outline(Range range, std::u16string identifier, int64_t level = 0) {
    auto entry = VLOutline::entryWithRange(range, level);
    entry->setIdentifier(std::move(identifier));
    text->addAttribute(VLOutlineElementAttributeName, entry, range);
    return entry;
  }

  std::string write(bool isScreenplay = true, ns::DictionaryPtr options = nullptr) {
    auto writer = VLSFountainWriter::create(text);
    writer->setIsScreenplay(isScreenplay);
    attributes->setObject(sheet, VLStylesheetDocumentAttribute);
    std::optional<ns::Data> data =
        writer->dataFromRange({0, text->length()}, options, attributes, nullptr);
    EXPECT_TRUE(data);
    return data ? std::string(data->view()) : std::string();
  }
};

VLSTextMarkerPtr commentMarker(ns::Value note, uint64_t location = VLSTextMarkerLocationSpanning) {
  auto marker = VLSTextMarker::textMarkerWithIdentifier(u"comment1", {});
  marker->setTextMarkerType(VLSTextMarkerTypeComment);
  marker->setTextMarkerLocation(location);
  marker->setRepresentedObject(std::move(note));
  return marker;
}

} // namespace

TEST(StyledFountainElements, ScreenplayStylesBecomeTheirElements) {
  Document doc;
  doc.add(u"Scene Heading", u"int. house - day");
  doc.add(u"Action", u"Rain on the window.");
  doc.add(u"Character", u"anna");
  doc.add(u"Parenthetical", u"(tired)");
  doc.add(u"Dialogue", u"Anyone home?\u2028Hello?");
  doc.add(u"Transition", u"CUT TO:");
  // Styles that transform to capitals write capitals; U+2028 is a line of the same element.
  EXPECT_EQ(doc.write(), "INT. HOUSE - DAY\n\nRain on the window.\n\nANNA\n(tired)\nAnyone "
                         "home?\nHello?\n\n> CUT TO:");
}

TEST(StyledFountainElements, PaginationOrDisplayNameDecides) {
  Document doc;
  auto shot = VLStyle::create();
  shot->setPaginationStyle(VLShotPagination);
  auto namedDialogue = VLStyle::create();
  namedDialogue->setDisplayName(u"Dialogue");
  auto heading = VLStyle::create();
  heading->setHeaderLevel(2);
  heading->setPaginationStyle(VLCharacterPagination);
  doc.add(shot, u"CLOSE ON THE DOOR");
  doc.add(u"Character", u"BEN");
  doc.add(namedDialogue, u"Who's there?");
  doc.add(heading, u"Act Two");
  doc.add(VLStylePtr(), u"No style at all.");
  // Shots are scene headings (forced, lacking a prefix); a header level wins over pagination.
  EXPECT_EQ(doc.write(),
            ".CLOSE ON THE DOOR\n\nBEN\nWho's there?\n\n##Act Two\n\nNo style at all.");
}

TEST(StyledFountainElements, BlankParagraphsVanishAndCentredActionIsMarked) {
  Document doc;
  doc.add(u"Action", u"Before.");
  doc.add(u"Action", u"");
  doc.add(u"Action", u"  ");
  Range end = doc.add(u"Action", u"THE END");
  auto centred = ns::MutableParagraphStyle::create();
  centred->setAlignment(ns::TextAlignmentCenter);
  doc.text->addAttribute(ns::ParagraphStyleAttributeName, centred, end);
  EXPECT_EQ(doc.write(), "Before.\n\n> THE END <");
}

TEST(StyledFountainElements, APlainProseStyleNamesTheFontOfTheTitlePage) {
  Document doc;
  auto prose = VLStyle::create();
  prose->setFont(ns::Font::fontWithName(u"Times-Roman", 12));
  auto courier = VLStyle::create();
  courier->setFont(ns::Font::fontWithName(u"Courier", 12));
  doc.add(courier, u"First.");
  doc.add(u"Action", u"Second.");
  doc.add(prose, u"Third.");
  EXPECT_EQ(doc.write(), "Font: Times\n\n\nFirst.\n\nSecond.\n\nThird.");
}

TEST(StyledFountainEmphasis, EachTraitHasItsMarkAndMarksHugTheWords) {
  Document doc;
  Range p = doc.add(u"Action", u"it bo bi un all plain");
  doc.emphasise({p.location, 2}, 1);
  doc.emphasise({p.location + 3, 2}, 2);
  doc.emphasise({p.location + 6, 2}, 3);
  doc.underline({p.location + 9, 2});
  // The blank after "all" is held back and written after the marks close.
  doc.emphasise({p.location + 12, 4}, 2);
  doc.underline({p.location + 12, 4});
  // Underline opens outside emphasis and closes after it.
  EXPECT_EQ(doc.write(), "*it* **bo** ***bi*** _un_ _**all**_ plain");
}

TEST(StyledFountainEmphasis, ATraitChangeInsideAMarkIsLostAndMarksCloseWithTheParagraph) {
  Document doc;
  Range p = doc.add(u"Dialogue", u"boldital ");
  doc.emphasise({p.location, 4}, 2);
  doc.emphasise({p.location + 4, 5}, 1);
  doc.add(u"Action", u"Next.");
  EXPECT_EQ(doc.write(), "**boldital** \n\nNext.");
}

TEST(StyledFountainNotes, ASpanningCommentWritesItsNoteBeforeItsTextAndPointCommentsNothing) {
  Document doc;
  Range p = doc.add(u"Action", u"Rain falls hard.");
  doc.text->addAttribute(VLSTextMarkerAttributeName,
                         commentMarker(ns::Value(u"check\nthe weather")), {p.location + 5, 5});
  doc.text->addAttribute(VLSTextMarkerAttributeName,
                         commentMarker(ns::Value(u"lost"), VLSTextMarkerLocationAfter),
                         {p.location + 1, 1});
  doc.text->addAttribute(VLSTextMarkerAttributeName, commentMarker(ns::Value()),
                         {p.location + 11, 4});
  EXPECT_EQ(doc.write(), "Rain[[check the weather]] falls hard.");
}

TEST(StyledFountainTitlePage, TitleAuthorAndTheNovelType) {
  Document doc;
  doc.add(u"Action", u"Text.");
  doc.attributes->setObject(ns::Value(u"Rain"), ns::TitleDocumentAttribute);
  doc.attributes->setObject(ns::Value(u"Ann Lee"), ns::AuthorDocumentAttribute);
  EXPECT_EQ(doc.write(), "Title: Rain\nAuthor: Ann Lee\n\n\nText.");
  EXPECT_EQ(doc.write(false), "Title: Rain\nAuthor: Ann Lee\nType: Novel\n\n\nText.");
}

TEST(StyledFountainModel, SynopsesFollowTheirHeadings) {
  Document doc;
  Range scene = doc.add(u"Scene Heading", u"INT. HOUSE");
  Range action = doc.add(u"Action", u"Rain.");
  doc.outline({scene.location, action.max() + 1 - scene.location}, u"scene1");
  Range roof = doc.add(u"Scene Heading", u"EXT. ROOF");
  doc.outline({roof.location, roof.length + 1}, u"scene 2"); // found as "#scene%202"

  auto model = VLMemoryRDFModel::create();
  auto resource = model->resourceForURI(u"file:///drafts/rain.fountain#scene1");
  resource->setValueForKey(ns::Value(u"Anna comes home.\nLate."), u"summary");
  resource->setValueForKey(ns::Value(u"#fac0bb"), u"color"); // Fountain has no colours
  model->resourceForURI(u"file:///drafts/rain.fountain#scene%202")
      ->setValueForKey(ns::Value(u""), u"summary");
  doc.attributes->setObject(model, VLRDFMetadataDocumentAttribute);

  // Without a base URL no resource is found.
  EXPECT_EQ(doc.write(), "INT. HOUSE\n\nRain.\n\nEXT. ROOF");
  auto options =
      ns::Dictionary::create({{std::u16string(ns::BaseURLDocumentOption),
                               ns::URL::URLWithString(u"file:///drafts/rain.fountain")}});
  EXPECT_EQ(doc.write(true, options),
            "INT. HOUSE\n\n=Anna comes home. Late.\n\nRain.\n\nEXT. ROOF");
}

TEST(StyledFountainModel, ANovelPutsItsSceneTitlesBack) {
  Document doc;
  doc.sheet = VLStylesheet::defaultNovelStylesheet();
  auto prose = VLStyle::create();
  Range first = doc.add(prose, u"It rained.");
  doc.outline({first.location, first.length + 1}, u"scene1");
  Range second = doc.add(prose, u"Later.");
  doc.outline({second.location, second.length + 1}, u"scene2");
  Range third = doc.add(prose, u"Then.");
  doc.outline({third.location, third.length + 1}, u"scene3");
  Range fourth = doc.add(prose, u"Last.");
  doc.outline({fourth.location, fourth.length + 1}, u"scene4", 1); // not a scene

  auto model = VLMemoryRDFModel::create();
  model->resourceForURI(u"#scene1")->setValueForKey(ns::Value(u"The Kitchen"), u"title");
  model->resourceForURI(u"#scene1")->setValueForKey(ns::Value(u"Where it starts."), u"summary");
  // The reader's placeholder title is written only when a synopsis goes with it.
  model->resourceForURI(u"#scene2")->setValueForKey(ns::Value(u"untitled section"), u"title");
  model->resourceForURI(u"#scene3")->setValueForKey(ns::Value(u"Untitled Section"), u"title");
  model->resourceForURI(u"#scene3")->setValueForKey(ns::Value(u"Night."), u"summary");
  model->resourceForURI(u"#scene4")->setValueForKey(ns::Value(u"Not a scene"), u"title");
  doc.attributes->setObject(model, VLRDFMetadataDocumentAttribute);

  EXPECT_EQ(doc.write(false),
            "Type: Novel\n\n\n.The Kitchen\n\n=Where it starts.\n\nIt "
            "rained.\n\nLater.\n\n.Untitled Section\n\n=Night.\n\nThen.\n\nLast.");
  // A screenplay writes no titles from the model.
  EXPECT_EQ(doc.write(true), "It rained.\n\nLater.\n\nThen.\n\nLast.");
}

namespace {

struct Read {
  ns::MutableAttributedStringPtr text;
  ns::DictionaryPtr attributes;
  bool isNovel = false;
};

Read read(std::string_view fountain) {
  auto reader = VLSFountainReader::create();
  Read result;
  result.text = reader->attributedStringWithData(ns::Data::fromString(fountain), nullptr,
                                                 &result.attributes, nullptr);
  EXPECT_TRUE(result.text && result.attributes);
  result.isNovel = reader->isNovel();
  return result;
}

// Each paragraph as "style: text", the text trimmed.
std::vector<std::string> paragraphs(const ns::AttributedString &text) {
  std::vector<std::string> result;
  uint64_t location = 0;
  while (location < text.length()) {
    Range paragraph = text.paragraphRangeForRange({location, 0});
    auto style = text.attribute(VLParagraphStyleAttributeName, location, nullptr).as<VLStyle>();
    result.push_back((style && style->displayName() ? ns::toUTF8(*style->displayName()) : "-") +
                     ": " + ns::toUTF8(ns::trimmed(text.substringWithRange(paragraph))));
    location = paragraph.max();
  }
  return result;
}

// Reads `fountain`, gives the outline entries' titles and synopses to a metadata model as a
// host would, and writes the text back.
std::string roundTrip(std::string_view fountain) {
  Read document = read(fountain);
  if (!document.text || !document.attributes)
    return {};
  auto model = VLMemoryRDFModel::create();
  model->addResourcesFromReferences(
      document.attributes->objectForKey(VLReferencesDocumentAttribute).dictionary());
  document.attributes->setObject(model, VLRDFMetadataDocumentAttribute);
  auto writer = VLSFountainWriter::create(document.text);
  writer->setIsScreenplay(!document.isNovel);
  auto data = writer->dataFromRange({0, document.text->length()}, document.attributes, nullptr);
  return data ? std::string(data->view()) : std::string();
}

// The seed inputs of the reader's fuzz target, a range of real and odd scripts.
std::vector<std::pair<std::string, std::string>> corpus() {
  std::vector<std::pair<std::string, std::string>> files;
  for (const auto &entry :
       std::filesystem::directory_iterator(VL_SOURCE_DIR "/fuzz/corpus/FountainReader")) {
    std::ifstream in(entry.path(), std::ios::binary);
    files.emplace_back(entry.path().filename().string(),
                       std::string(std::istreambuf_iterator<char>(in), {}));
  }
  return files;
}

} // namespace

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
  // capitalising style would not; a generated screenplay has none of them.
  auto files = corpus();
  auto screenplay = std::find_if(files.begin(), files.end(), [](const auto &file) {
    return file.first == "screenplay_20_pages.fountain";
  });
  ASSERT_NE(screenplay, files.end());
  Read first = read(screenplay->second);
  Read again = read(roundTrip(screenplay->second));
  ASSERT_TRUE(first.text && again.text);
  EXPECT_EQ(paragraphs(*again.text), paragraphs(*first.text));
}

TEST(FountainRoundTrip, WrittenTextSettlesAfterOneMoreRound) {
  // The first round drops what this side of Fountain cannot carry; what it writes must then
  // read and write back to itself.
  for (const auto &[name, original] : corpus()) {
    std::string twice = roundTrip(roundTrip(original));
    EXPECT_EQ(roundTrip(twice), twice) << name;
  }
}
