// The writer frame: the order of its hooks over paragraphs, runs and markers, the ranges it
// walks, nested strings, and what the entry point takes from options and document attributes.
#include "converters/writer/VLSAttributedStringWriter.h"
#include "model/VLConstants.h"
#include "model/VLMasterPage.h"
#include "model/VLOutline.h"
#include "model/VLStylesheet.h"
#include "ns/Assert.h"
#include "ns/AttributeNames.h"
#include "ns/Font.h"
#include "ns/MutableAttributedString.h"
#include "ns/String.h"
#include "ns/TextAttachment.h"
#include "ns/URL.h"
#include "objects/VLSTextMarker.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

using namespace vl;
using ns::Range;
using Log = std::vector<std::string>;

namespace {

std::string text(Range r) {
  return "{" + std::to_string(r.location) + "," + std::to_string(r.length) + "}";
}

std::string name(const VLSTextMarkerPtr &marker) {
  return marker->identifier() ? ns::toUTF8(*marker->identifier()) : "?";
}

// Logs every hook it sees, in order, and otherwise does what the frame does.
class RecordingWriter : public VLSAttributedStringWriter {
public:
  using VLSAttributedStringWriter::VLSAttributedStringWriter;

  Log log;
  // Called from encodeCommentStart when set, to test nested walks.
  std::function<void(RecordingWriter &, const VLSTextMarkerPtr &)> onCommentStart;

  std::optional<ns::Data> data() override {
    log.push_back("data");
    return VLSAttributedStringWriter::data();
  }
  void startEncoding() override { log.push_back("start"); }
  void endEncoding() override { log.push_back("end"); }
  void encodeBodyInRange(Range r) override {
    log.push_back("body" + text(r));
    VLSAttributedStringWriter::encodeBodyInRange(r);
  }
  uint64_t encodeBlocksInRange(Range r) override {
    log.push_back("blocks" + text(r));
    return VLSAttributedStringWriter::encodeBlocksInRange(r);
  }
  uint64_t encodeListInRange(Range r) override {
    log.push_back("list" + text(r));
    return VLSAttributedStringWriter::encodeListInRange(r);
  }
  uint64_t encodeParagraphInRange(Range r) override {
    log.push_back("paragraph" + text(r));
    return VLSAttributedStringWriter::encodeParagraphInRange(r);
  }
  uint64_t encodeInlinesInRange(Range r) override {
    log.push_back("inlines" + text(r));
    return VLSAttributedStringWriter::encodeInlinesInRange(r);
  }
  uint64_t encodeAttachmentsInRange(Range r) override {
    log.push_back("attachments" + text(r));
    return VLSAttributedStringWriter::encodeAttachmentsInRange(r);
  }
  uint64_t encodeLinkInRange(Range r) override {
    log.push_back("link" + text(r));
    return VLSAttributedStringWriter::encodeLinkInRange(r);
  }
  uint64_t encodeFieldsInRange(Range r) override {
    log.push_back("fields" + text(r));
    return VLSAttributedStringWriter::encodeFieldsInRange(r);
  }
  uint64_t encodeSpanInRange(Range r) override {
    uint64_t next = VLSAttributedStringWriter::encodeSpanInRange(r);
    log.push_back("span \"" +
                  ns::toUTF8(currentString()->substringWithRange({r.location, next - r.location})) +
                  "\"");
    return next;
  }
  uint64_t encodeTextMarkersAtLocation(uint64_t location) override {
    log.push_back("markers@" + std::to_string(location));
    return VLSAttributedStringWriter::encodeTextMarkersAtLocation(location);
  }
  void encodeBookmarkStart(const VLSTextMarkerPtr &m) override {
    log.push_back("bookmarkStart " + name(m));
  }
  void encodeBookmarkEnd(const VLSTextMarkerPtr &m) override {
    log.push_back("bookmarkEnd " + name(m));
  }
  void encodeComment(const VLSTextMarkerPtr &m) override { log.push_back("comment " + name(m)); }
  void encodeCommentStart(const VLSTextMarkerPtr &m) override {
    log.push_back("commentStart " + name(m));
    if (onCommentStart)
      onCommentStart(*this, m);
  }
  void encodeCommentEnd(const VLSTextMarkerPtr &m) override {
    log.push_back("commentEnd " + name(m));
  }

  // The log without the hooks that are tried at every step, to keep expectations short.
  Log events() const {
    Log result;
    for (const std::string &entry : log)
      if (entry.rfind("markers@", 0) != 0 && entry.rfind("attachments", 0) != 0 &&
          entry.rfind("link", 0) != 0 && entry.rfind("fields", 0) != 0 &&
          entry.rfind("list", 0) != 0)
        result.push_back(entry);
    return result;
  }
};

ns::MutableAttributedStringPtr textOf(std::u16string_view string) {
  return ns::MutableAttributedString::create(string);
}

VLSTextMarkerPtr marker(std::u16string id, uint64_t type, uint64_t location, Range range = {}) {
  auto m = VLSTextMarker::textMarkerWithIdentifier(std::move(id), range);
  m->setTextMarkerType(type);
  m->setTextMarkerLocation(location);
  return m;
}

Log walk(RecordingWriter &writer, Range range) {
  writer.dataFromRange(range, nullptr, nullptr);
  return writer.events();
}

Log walkAll(const ns::AttributedStringPtr &string) {
  RecordingWriter writer(string);
  return walk(writer, {0, string->length()});
}

} // namespace

TEST(WriterFrameWalk, EmptyRangeStartsAndEndsWithoutParagraphs) {
  RecordingWriter writer(textOf(u"Some text\n"));
  EXPECT_FALSE(writer.dataFromRange({3, 0}, nullptr, nullptr));
  EXPECT_EQ(writer.log, (Log{"start", "body{3,0}", "blocks{3,0}", "end", "data"}));
}

TEST(WriterFrameWalk, HooksComeInTheirFixedOrder) {
  // Two paragraphs; the first has a bold run in the middle and an outline entry over it.
  auto string = textOf(u"Ab cd\nEf");
  string->addAttribute(ns::FontAttributeName, ns::Font::fontWithName(u"Helvetica-Bold", 12),
                       {3, 2});
  string->addAttribute(VLOutlineElementAttributeName, VLOutline::entryWithRange({0, 6}, 0), {0, 6});
  RecordingWriter writer(string);
  writer.dataFromRange({0, 8}, nullptr, nullptr);
  EXPECT_EQ(writer.log, (Log{"start",
                             "body{0,8}",
                             "blocks{0,8}",
                             "list{0,8}",
                             "paragraph{0,8}",
                             "inlines{0,5}",
                             "markers@0",
                             "attachments{0,5}",
                             "link{0,5}",
                             "fields{0,5}",
                             "span \"Ab \"",
                             "markers@3",
                             "attachments{3,2}",
                             "link{3,2}",
                             "fields{3,2}",
                             "span \"cd\"",
                             "markers@5",
                             "list{6,2}",
                             "paragraph{6,2}",
                             "inlines{6,2}",
                             "markers@6",
                             "attachments{6,2}",
                             "link{6,2}",
                             "fields{6,2}",
                             "span \"Ef\"",
                             "markers@8",
                             "end",
                             "data"}));
}

TEST(WriterFrameWalk, ParagraphsAreWalkedToTheirEndFromWhereTheRangeStarts) {
  auto string = textOf(u"One two\r\nThree four\u2029Five");
  RecordingWriter writer(string);
  // Starts inside the first paragraph and stops inside the second.
  EXPECT_EQ(walk(writer, {4, 8}), (Log{"start", "body{4,8}", "blocks{4,8}", "paragraph{4,8}",
                                       "inlines{4,3}", "span \"two\"", "paragraph{9,3}",
                                       "inlines{9,10}", "span \"Three four\"", "end", "data"}));
}

TEST(WriterFrameWalk, RangesPastTheTextAreClipped) {
  RecordingWriter writer(textOf(u"Abc"));
  EXPECT_EQ(walk(writer, {1, 100}), (Log{"start", "body{1,2}", "blocks{1,2}", "paragraph{1,2}",
                                         "inlines{1,2}", "span \"bc\"", "end", "data"}));
  RecordingWriter empty(nullptr);
  EXPECT_EQ(walk(empty, {5, 5}), (Log{"start", "body{0,0}", "blocks{0,0}", "end", "data"}));
}

TEST(WriterFrameWalk, AttachmentsArePassedOverOneCharacterAtATime) {
  auto string = textOf(u"a\uFFFC\uFFFCb");
  auto attachment = std::make_shared<ns::TextAttachment>();
  string->addAttribute(ns::AttachmentAttributeName, attachment, {1, 2});
  RecordingWriter writer(string);
  EXPECT_EQ(writer.encodeAttachmentsInRange({1, 3}), 2u);
  EXPECT_EQ(writer.encodeAttachmentsInRange({0, 4}), ns::NotFound);
  EXPECT_EQ(walk(writer, {0, 4}), (Log{"start", "body{0,4}", "blocks{0,4}", "paragraph{0,4}",
                                       "inlines{0,4}", "span \"a\"", "span \"b\"", "end", "data"}));
}

TEST(WriterFrameWalk, AHookThatMakesNoProgressFailsInsteadOfHanging) {
  struct Stuck : VLSAttributedStringWriter {
    using VLSAttributedStringWriter::VLSAttributedStringWriter;
    uint64_t encodeSpanInRange(Range r) override { return r.location; }
  };
  Stuck writer(textOf(u"abc"));
  EXPECT_THROW(writer.dataFromRange({0, 3}, nullptr, nullptr), ns::InternalInconsistencyException);
}

TEST(WriterFrameMarkers, PointCommentBeforeItsCharacterIsWrittenBeforeTheFirstSpan) {
  auto string = textOf(u"Hello");
  string->addAttribute(VLSTextMarkerAttributeName, marker(u"c1", 1, 1), {0, 1});
  EXPECT_EQ(walkAll(string),
            (Log{"start", "body{0,5}", "blocks{0,5}", "paragraph{0,5}", "inlines{0,5}",
                 "comment c1", "span \"H\"", "span \"ello\"", "end", "data"}));
}

TEST(WriterFrameMarkers, PointCommentAfterItsCharacterIsWrittenOnceTheWalkHasPassedIt) {
  auto string = textOf(u"Hello\nNext");
  auto c2 = marker(u"c2", 1, 2);
  string->addAttribute(VLSTextMarkerAttributeName, c2, {4, 1});
  EXPECT_EQ(walkAll(string),
            (Log{"start", "body{0,10}", "blocks{0,10}", "paragraph{0,10}", "inlines{0,5}",
                 "span \"Hell\"", "span \"o\"", "comment c2", "paragraph{6,4}", "inlines{6,4}",
                 "span \"Next\"", "end", "data"}));
  EXPECT_EQ(c2->range(), (Range{4, 1})) << "the walk keeps the marker's range in step";
}

TEST(WriterFrameMarkers, SpanningCommentOpensAtItsStartAndClosesWhereTheWalkPassesItsEnd) {
  auto string = textOf(u"One two three");
  auto c3 = marker(u"c3", 1, 0, {0, 0});
  string->addAttribute(VLSTextMarkerAttributeName, c3, {4, 3});
  EXPECT_EQ(walkAll(string),
            (Log{"start", "body{0,13}", "blocks{0,13}", "paragraph{0,13}", "inlines{0,13}",
                 "span \"One \"", "commentStart c3", "span \"two\"", "commentEnd c3",
                 "span \" three\"", "end", "data"}));
  EXPECT_EQ(c3->range(), (Range{4, 3}));
}

TEST(WriterFrameMarkers, TheRangeIsTheLongestRunEvenAcrossOtherAttributeChanges) {
  auto string = textOf(u"One two three");
  auto c = marker(u"c", 1, 0);
  string->addAttribute(VLSTextMarkerAttributeName, c, {4, 9});
  string->addAttribute(ns::UnderlineStyleAttributeName, 1, {6, 3});
  RecordingWriter writer(string);
  Log log = walk(writer, {0, 13});
  EXPECT_EQ(c->range(), (Range{4, 9}));
  EXPECT_EQ(std::count(log.begin(), log.end(), "commentStart c"), 1);
}

TEST(WriterFrameMarkers, TheBodyClosesAMarkerTheTextLeavesOpen) {
  // The bookmark runs onto the final line feed, which no paragraph walks over.
  auto string = textOf(u"Tail\n");
  string->addAttribute(VLSTextMarkerAttributeName, marker(u"b", 2, 0), {2, 3});
  RecordingWriter writer(string);
  EXPECT_EQ(walk(writer, {0, 5}),
            (Log{"start", "body{0,5}", "blocks{0,5}", "paragraph{0,5}", "inlines{0,4}",
                 "span \"Ta\"", "bookmarkStart b", "span \"il\"", "bookmarkEnd b", "end", "data"}));
  EXPECT_EQ(Log(writer.log.end() - 4, writer.log.end()),
            (Log{"markers@4", "bookmarkEnd b", "end", "data"}));
  EXPECT_FALSE(writer.currentMarker());
}

TEST(WriterFrameMarkers, BookmarksAndOtherTypes) {
  auto string = textOf(u"abcdef");
  string->addAttribute(VLSTextMarkerAttributeName, marker(u"point", 2, 1), {0, 1});
  string->addAttribute(VLSTextMarkerAttributeName, marker(u"outline", 3, 0), {2, 2});
  string->addAttribute(VLSTextMarkerAttributeName, marker(u"after", 2, 2), {5, 1});
  EXPECT_EQ(walkAll(string),
            (Log{"start", "body{0,6}", "blocks{0,6}", "paragraph{0,6}", "inlines{0,6}",
                 "bookmarkStart point", "bookmarkEnd point", "span \"a\"", "span \"b\"",
                 "span \"cd\"", "span \"e\"", "span \"f\"", "bookmarkEnd after", "end", "data"}));
}

TEST(WriterFrameMarkers, MarkersInsideAPushedStringCallNothing) {
  auto string = textOf(u"Noted text");
  auto note = marker(u"outer", 1, 0);
  string->addAttribute(VLSTextMarkerAttributeName, note, {0, 5});
  // The note's own text carries a marker too; positions in it say nothing about the document.
  auto inner = textOf(u"Inner note\nTwo");
  inner->addAttribute(VLSTextMarkerAttributeName, marker(u"inner", 1, 1), {0, 3});

  RecordingWriter writer(string);
  writer.onCommentStart = [&](RecordingWriter &w, const VLSTextMarkerPtr &) {
    w.pushAttributedString(inner);
    EXPECT_EQ(w.encodeTextMarkersAtLocation(0), ns::NotFound);
    EXPECT_EQ(w.encodeBlocksInRange({0, inner->length()}), inner->length());
    EXPECT_EQ(w.popAttributedString(), inner);
    EXPECT_EQ(w.currentString(), string);
  };
  EXPECT_EQ(
      walk(writer, {0, 10}),
      (Log{"start", "body{0,10}", "blocks{0,10}", "paragraph{0,10}", "inlines{0,10}",
           "commentStart outer", "blocks{0,14}", "paragraph{0,14}", "inlines{0,10}", "span \"Inn\"",
           "span \"er note\"", "paragraph{11,3}", "inlines{11,3}", "span \"Two\"", "span \"Noted\"",
           "commentEnd outer", "span \" text\"", "end", "data"}));
  EXPECT_THROW(writer.popAttributedString(), ns::InternalInconsistencyException);
}

TEST(WriterFrameEntry, BaseURLComesFromOptionsOrElseFromTheDocumentAttributes) {
  auto earlier = ns::URL::URLWithString(u"file:///earlier/doc.fdx");
  auto fromOptions = ns::URL::URLWithString(u"file:///options/doc.fdx");
  auto fromAttributes = ns::URL::URLWithString(u"file:///attributes/doc.fdx");
  auto attributesWithURL =
      ns::Dictionary::create({{std::u16string(ns::BaseURLDocumentOption), fromAttributes}});
  auto plainAttributes = ns::Dictionary::create();

  auto run = [&](const ns::DictionaryPtr &options, const ns::DictionaryPtr &attributes) {
    VLSAttributedStringWriter writer(textOf(u"x"));
    writer.setBaseURL(earlier);
    writer.dataFromRange({0, 1}, options, attributes, nullptr);
    return writer.baseURL();
  };
  // Options, even empty ones, decide alone: without the key they clear the base URL.
  EXPECT_FALSE(run(ns::Dictionary::create(), attributesWithURL));
  EXPECT_EQ(run(ns::Dictionary::create({{std::u16string(ns::BaseURLDocumentOption), fromOptions}}),
                attributesWithURL),
            fromOptions);
  // With no options the document attributes may replace it, but never clear it.
  EXPECT_EQ(run(nullptr, plainAttributes), earlier);
  EXPECT_EQ(run(nullptr, nullptr), earlier);
  EXPECT_EQ(run(nullptr, attributesWithURL), fromAttributes);

  // The three-argument entry is the same as nil options.
  VLSAttributedStringWriter writer(textOf(u"x"));
  writer.setBaseURL(earlier);
  writer.dataFromRange({0, 1}, plainAttributes, nullptr);
  EXPECT_EQ(writer.baseURL(), earlier);
  // A string holding a URL serves too.
  writer.dataFromRange(
      {0, 1}, ns::Dictionary::create({{std::u16string(ns::BaseURLDocumentOption), u"http://h/a/"}}),
      nullptr, nullptr);
  ASSERT_TRUE(writer.baseURL());
  EXPECT_EQ(writer.baseURL()->absoluteString(), u"http://h/a/");
}

TEST(WriterFrameEntry, DocumentAttributesGiveReferencesStylesheetAndTheStandardPage) {
  auto references = ns::Dictionary::create({{u"c1", marker(u"c1", 1, 1)}});
  auto sheet = VLStylesheet::create();
  auto standard = VLMasterPage::create();
  standard->setName(u"Standard (localized)");
  auto other = VLMasterPage::create();
  auto attributes = ns::Dictionary::create(
      {{std::u16string(VLReferencesDocumentAttribute), references},
       {std::u16string(VLStylesheetDocumentAttribute), sheet},
       {std::u16string(VLMasterPagesKey),
        ns::Dictionary::create({{u"First", other}, {u"Standard", standard}})}});
  VLSAttributedStringWriter writer(textOf(u"x"));
  EXPECT_FALSE(writer.stylesheet());
  EXPECT_FALSE(writer.masterPage());

  ns::ErrorPtr error;
  EXPECT_FALSE(writer.dataFromRange({0, 1}, attributes, &error)) << "the frame writes nothing";
  EXPECT_FALSE(error);
  EXPECT_EQ(writer.references(), references);
  EXPECT_EQ(writer.stylesheet(), sheet);
  EXPECT_EQ(writer.masterPage(), standard) << "found by key, whatever its name";

  // Missing keys are nil, never an error.
  writer.dataFromRange(
      {0, 1}, ns::Dictionary::create({{std::u16string(VLMasterPagesKey), u"junk"}}), nullptr);
  EXPECT_FALSE(writer.references());
  EXPECT_FALSE(writer.stylesheet());
  EXPECT_FALSE(writer.masterPage());
}
