// Writing styled text as Fountain: element types from styles, emphasis back to marks, notes,
// the title page, and scene titles and synopses from the metadata model.
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
#include "ns/String.h"
#include "ns/URL.h"
#include "objects/VLSTextMarker.h"

#include <gtest/gtest.h>

#include <string>

using namespace vl;
using ns::Range;

namespace {

// A styled document built paragraph by paragraph from a stylesheet.
struct Document {
  VLStylesheetPtr sheet = VLStylesheet::defaultScreenplayStylesheet();
  ns::MutableAttributedStringPtr text = ns::MutableAttributedString::create();
  ns::DictionaryPtr attributes = ns::Dictionary::create();

  // The paragraph's range, line feed included.
  Range add(const VLStylePtr &style, std::u16string_view content) {
    Range range{text->length(), content.size() + 1};
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
  void outline(Range range, std::u16string identifier, int64_t level = 0) {
    auto entry = VLOutline::entryWithRange(range, level);
    entry->setIdentifier(std::move(identifier));
    text->addAttribute(VLOutlineElementAttributeName, entry, range);
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

TEST(StyledFountainElements, StylesDecideTheElements) {
  // The round trips through the reader show every screenplay style; here the rules.
  Document doc;
  auto shot = VLStyle::create();
  shot->setPaginationStyle(VLShotPagination);
  auto namedDialogue = VLStyle::create();
  namedDialogue->setDisplayName(u"Dialogue");
  auto heading = VLStyle::create();
  heading->setHeaderLevel(2);
  heading->setPaginationStyle(VLCharacterPagination);
  doc.add(u"Scene Heading", u"int. house - day");
  doc.add(u"Action", u"");
  doc.add(u"Action", u"  ");
  doc.add(shot, u"CLOSE ON THE DOOR");
  doc.add(u"Character", u"anna");
  doc.add(namedDialogue, u"Who's there?");
  doc.add(heading, u"Act Two");
  doc.add(VLStylePtr(), u"No style at all.");
  // Capitalising styles write capitals and blank paragraphs vanish. Pagination or else the
  // display name decides, a header level before both; a shot is a forced scene heading.
  EXPECT_EQ(doc.write(), "INT. HOUSE - DAY\n\n.CLOSE ON THE DOOR\n\nANNA\nWho's there?\n\n"
                         "##Act Two\n\nNo style at all.");
}

TEST(StyledFountainElements, TitlePageFromAttributesTypeAndProseFont) {
  Document doc;
  auto courier = VLStyle::create();
  courier->setFont(ns::Font::fontWithName(u"Courier", 12));
  auto prose = VLStyle::create();
  prose->setFont(ns::Font::fontWithName(u"Times-Roman", 12));
  doc.add(courier, u"First.");
  doc.add(u"Action", u"Second.");
  doc.add(prose, u"Third.");
  // The first plain prose style that is not Courier names the font.
  EXPECT_EQ(doc.write(), "Font: Times\n\n\nFirst.\n\nSecond.\n\nThird.");
  doc.attributes->setObject(ns::Value(u"Rain"), ns::TitleDocumentAttribute);
  doc.attributes->setObject(ns::Value(u"Ann Lee"), ns::AuthorDocumentAttribute);
  EXPECT_EQ(doc.write(false), "Title: Rain\nAuthor: Ann Lee\nType: Novel\nFont: "
                              "Times\n\n\nFirst.\n\nSecond.\n\nThird.");
}

TEST(StyledFountainEmphasis, EachTraitHasItsMarkAndMarksHugTheWords) {
  Document doc;
  // A trait change inside an open mark is lost; marks close with the paragraph.
  Range q = doc.add(u"Dialogue", u"boldital ");
  doc.emphasise({q.location, 4}, 2);
  doc.emphasise({q.location + 4, 5}, 1);
  Range p = doc.add(u"Action", u"it bo bi un all plain");
  doc.emphasise({p.location, 2}, 1);
  doc.emphasise({p.location + 3, 2}, 2);
  doc.emphasise({p.location + 6, 2}, 3);
  doc.underline({p.location + 9, 2});
  // The blank after "all" is held back and written after the marks close; underline opens
  // outside emphasis and closes after it.
  doc.emphasise({p.location + 12, 4}, 2);
  doc.underline({p.location + 12, 4});
  EXPECT_EQ(doc.write(), "**boldital** \n\n*it* **bo** ***bi*** _un_ _**all**_ plain");
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

TEST(StyledFountainModel, SynopsesFollowTheirHeadings) {
  Document doc;
  Range scene = doc.add(u"Scene Heading", u"INT. HOUSE");
  Range action = doc.add(u"Action", u"Rain.");
  doc.outline({scene.location, action.max() - scene.location}, u"scene1");
  Range roof = doc.add(u"Scene Heading", u"EXT. ROOF");
  doc.outline(roof, u"scene 2"); // found as "#scene%202"

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
  doc.outline(doc.add(prose, u"It rained."), u"scene1");
  doc.outline(doc.add(prose, u"Later."), u"scene2");
  doc.outline(doc.add(prose, u"Then."), u"scene3");
  doc.outline(doc.add(prose, u"Last."), u"scene4", 1); // not a scene

  auto model = VLMemoryRDFModel::create();
  auto set = [&](std::u16string_view uri, std::u16string_view key, std::u16string_view value) {
    model->resourceForURI(uri)->setValueForKey(ns::Value(value), key);
  };
  set(u"#scene1", u"title", u"The Kitchen");
  set(u"#scene1", u"summary", u"Where it starts.");
  // The reader's placeholder title is written only when a synopsis goes with it.
  set(u"#scene2", u"title", u"untitled section");
  set(u"#scene3", u"title", u"Untitled Section");
  set(u"#scene3", u"summary", u"Night.");
  set(u"#scene4", u"title", u"Not a scene");
  doc.attributes->setObject(model, VLRDFMetadataDocumentAttribute);

  EXPECT_EQ(doc.write(false),
            "Type: Novel\n\n\n.The Kitchen\n\n=Where it starts.\n\nIt "
            "rained.\n\nLater.\n\n.Untitled Section\n\n=Night.\n\nThen.\n\nLast.");
  // A screenplay writes no titles from the model.
  EXPECT_EQ(doc.write(true), "It rained.\n\nLater.\n\nThen.\n\nLast.");
}
