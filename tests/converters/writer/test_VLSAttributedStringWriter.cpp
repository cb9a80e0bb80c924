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

#include <functional>
#include <string>

using namespace vl;
using ns::Range;

namespace {

std::string text(Range r) {
  return "{" + std::to_string(r.location) + "," + std::to_string(r.length) + "}";
}

// Writes down every hook it meets, in order, "|" between them, and otherwise lets the frame
// do its work.
class RecordingWriter : public VLSAttributedStringWriter {
public:
  using Base = VLSAttributedStringWriter;
  using Base::Base;

  std::string log;
  // Hooks tried at every step, written down only when asked for.
  bool everyHook = false;
  // Runs inside encodeCommentStart when set, to test nested walks.
  std::function<void(RecordingWriter &)> onCommentStart;

  void note(const std::string &entry, bool always = true) {
    if (always || everyHook)
      log += (log.empty() ? "" : "|") + entry;
  }

  std::optional<ns::Data> data() override {
    note("data");
    return Base::data();
  }
  void startEncoding() override { note("start"); }
  void endEncoding() override { note("end"); }
  void encodeBodyInRange(Range r) override {
    note("body" + text(r));
    Base::encodeBodyInRange(r);
  }
  uint64_t encodeSpanInRange(Range r) override {
    uint64_t next = Base::encodeSpanInRange(r);
    note("'" + ns::toUTF8(currentString()->substringWithRange({r.location, next - r.location})) +
         "'");
    return next;
  }
  uint64_t encodeTextMarkersAtLocation(uint64_t location) override {
    note("markers@" + std::to_string(location), false);
    return Base::encodeTextMarkersAtLocation(location);
  }
  void encodeCommentStart(const VLSTextMarkerPtr &m) override {
    note("commentStart " + ns::toUTF8(*m->identifier()));
    if (onCommentStart)
      onCommentStart(*this);
  }

#define RECORD_RANGE_HOOK(Hook, Name, Always)                                                      \
  uint64_t Hook(Range r) override {                                                                \
    note(Name + text(r), Always);                                                                  \
    return Base::Hook(r);                                                                          \
  }
  RECORD_RANGE_HOOK(encodeBlocksInRange, "blocks", true)
  RECORD_RANGE_HOOK(encodeListInRange, "list", false)
  RECORD_RANGE_HOOK(encodeParagraphInRange, "paragraph", true)
  RECORD_RANGE_HOOK(encodeInlinesInRange, "inlines", true)
  RECORD_RANGE_HOOK(encodeAttachmentsInRange, "attachments", false)
  RECORD_RANGE_HOOK(encodeLinkInRange, "link", false)
  RECORD_RANGE_HOOK(encodeFieldsInRange, "fields", false)
#undef RECORD_RANGE_HOOK
#define RECORD_MARKER_HOOK(Hook, Name)                                                             \
  void Hook(const VLSTextMarkerPtr &m) override {                                                  \
    note(Name " " + ns::toUTF8(*m->identifier()));                                                 \
  }
  RECORD_MARKER_HOOK(encodeBookmarkStart, "bookmarkStart")
  RECORD_MARKER_HOOK(encodeBookmarkEnd, "bookmarkEnd")
  RECORD_MARKER_HOOK(encodeComment, "comment")
  RECORD_MARKER_HOOK(encodeCommentEnd, "commentEnd")
#undef RECORD_MARKER_HOOK
};

ns::MutableAttributedStringPtr textOf(std::u16string_view string) {
  return ns::MutableAttributedString::create(string);
}

VLSTextMarkerPtr marker(std::u16string id, uint64_t type, uint64_t location) {
  auto m = VLSTextMarker::textMarkerWithIdentifier(std::move(id), {});
  m->setTextMarkerType(type);
  m->setTextMarkerLocation(location);
  return m;
}

// The log of a walk over `range`, between "start|body...|blocks..." and "end|data".
std::string walk(RecordingWriter &writer, Range range) {
  writer.dataFromRange(range, nullptr, nullptr);
  std::string frame = "start|body" + text(range) + "|blocks" + text(range) + "|";
  EXPECT_EQ(writer.log.substr(0, frame.size()), frame);
  EXPECT_EQ(writer.log.substr(writer.log.size() - 9), "|end|data");
  return writer.log.substr(frame.size(), writer.log.size() - frame.size() - 9);
}

std::string walk(const ns::AttributedStringPtr &string) {
  RecordingWriter writer(string);
  return walk(writer, {0, string->length()});
}

} // namespace

TEST(WriterFrameWalk, RangesAreClippedAndParagraphsWalkedFromWhereTheRangeStarts) {
  RecordingWriter empty(textOf(u"Some text\n"));
  EXPECT_FALSE(empty.dataFromRange({3, 0}, nullptr, nullptr)) << "the frame writes nothing";
  EXPECT_EQ(empty.log, "start|body{3,0}|blocks{3,0}|end|data");
  RecordingWriter clipped(textOf(u"Abc"));
  clipped.dataFromRange({1, 100}, nullptr, nullptr);
  EXPECT_EQ(clipped.log, "start|body{1,2}|blocks{1,2}|paragraph{1,2}|inlines{1,2}|'bc'|end|data");
  RecordingWriter none(nullptr);
  none.dataFromRange({5, 5}, nullptr, nullptr);
  EXPECT_EQ(none.log, "start|body{0,0}|blocks{0,0}|end|data");
  // A paragraph is walked to its end whatever the range's length; attachments are passed over
  // one character at a time.
  auto string = textOf(u"One two\r\nThree\uFFFC\uFFFCfour\u2029Five");
  string->addAttribute(ns::AttachmentAttributeName, std::make_shared<ns::TextAttachment>(),
                       {14, 2});
  RecordingWriter writer(string);
  EXPECT_EQ(walk(writer, {4, 8}), "paragraph{4,8}|inlines{4,3}|'two'|paragraph{9,3}"
                                  "|inlines{9,11}|'Three'|'four'");
}

TEST(WriterFrameWalk, HooksComeInTheirFixedOrder) {
  // Two paragraphs; the first has a bold run and an outline entry over it.
  auto string = textOf(u"Ab cd\nEf");
  string->addAttribute(ns::FontAttributeName, ns::Font::fontWithName(u"Helvetica-Bold", 12),
                       {3, 2});
  string->addAttribute(VLOutlineElementAttributeName, VLOutline::entryWithRange({0, 6}, 0), {0, 6});
  RecordingWriter writer(string);
  writer.everyHook = true;
  EXPECT_EQ(walk(writer, {0, 8}),
            "list{0,8}|paragraph{0,8}|inlines{0,5}"
            "|markers@0|attachments{0,5}|link{0,5}|fields{0,5}|'Ab '"
            "|markers@3|attachments{3,2}|link{3,2}|fields{3,2}|'cd'|markers@5"
            "|list{6,2}|paragraph{6,2}|inlines{6,2}"
            "|markers@6|attachments{6,2}|link{6,2}|fields{6,2}|'Ef'|markers@8");

  struct Stuck : VLSAttributedStringWriter {
    using VLSAttributedStringWriter::VLSAttributedStringWriter;
    uint64_t encodeSpanInRange(Range r) override { return r.location; }
  };
  Stuck stuck(textOf(u"abc"));
  EXPECT_THROW(stuck.dataFromRange({0, 3}, nullptr, nullptr), ns::InternalInconsistencyException)
      << "a hook that makes no progress fails instead of hanging";
}

TEST(WriterFrameMarkers, CommentsOpenAndCloseAsTheWalkPassesThem) {
  auto string = textOf(u"Hello\nNext");
  auto after = marker(u"after", 1, 2);
  string->addAttribute(VLSTextMarkerAttributeName, marker(u"before", 1, 1), {0, 1});
  string->addAttribute(VLSTextMarkerAttributeName, after, {4, 1});
  // Before: at once, ahead of the first span. After: once the walk has passed it, here at
  // the paragraph's contents end.
  EXPECT_EQ(walk(string), "paragraph{0,10}|inlines{0,5}|comment before|'H'|'ell'|'o'"
                          "|comment after|paragraph{6,4}|inlines{6,4}|'Next'");
  EXPECT_EQ(after->range(), (Range{4, 1})) << "the walk keeps the marker's range in step";

  string = textOf(u"One two three");
  auto spanning = marker(u"c", 1, 0);
  string->addAttribute(VLSTextMarkerAttributeName, spanning, {4, 6});
  string->addAttribute(ns::UnderlineStyleAttributeName, 1, {6, 3});
  EXPECT_EQ(
      walk(string),
      "paragraph{0,13}|inlines{0,13}|'One '|commentStart c|'tw'|'o t'|'h'|commentEnd c|'ree'");
  EXPECT_EQ(spanning->range(), (Range{4, 6})) << "the longest run, across other changes";
}

TEST(WriterFrameMarkers, BookmarksAndOtherTypes) {
  auto string = textOf(u"abcdef");
  string->addAttribute(VLSTextMarkerAttributeName, marker(u"point", 2, 1), {0, 1});
  string->addAttribute(VLSTextMarkerAttributeName, marker(u"outline", 3, 0), {2, 2});
  string->addAttribute(VLSTextMarkerAttributeName, marker(u"after", 2, 2), {5, 1});
  EXPECT_EQ(walk(string), "paragraph{0,6}|inlines{0,6}|bookmarkStart point|bookmarkEnd point"
                          "|'a'|'b'|'cd'|'e'|'f'|bookmarkEnd after");
  // The body closes a marker that runs onto the final line feed, which no paragraph walks.
  string = textOf(u"Tail\n");
  string->addAttribute(VLSTextMarkerAttributeName, marker(u"b", 2, 0), {2, 3});
  RecordingWriter writer(string);
  EXPECT_EQ(walk(writer, {0, 5}),
            "paragraph{0,5}|inlines{0,4}|'Ta'|bookmarkStart b|'il'|bookmarkEnd b");
  EXPECT_FALSE(writer.currentMarker());
}

TEST(WriterFrameMarkers, MarkersInsideAPushedStringCallNothing) {
  auto string = textOf(u"Noted text");
  string->addAttribute(VLSTextMarkerAttributeName, marker(u"outer", 1, 0), {0, 5});
  // The note's own text has a marker too; positions in it say nothing about the document.
  auto inner = textOf(u"Inner\nTwo");
  inner->addAttribute(VLSTextMarkerAttributeName, marker(u"inner", 1, 1), {0, 3});
  RecordingWriter writer(string);
  writer.onCommentStart = [&](RecordingWriter &w) {
    w.pushAttributedString(inner);
    EXPECT_EQ(w.encodeBlocksInRange({0, inner->length()}), inner->length());
    EXPECT_EQ(w.popAttributedString(), inner);
    EXPECT_EQ(w.currentString(), string);
  };
  EXPECT_EQ(walk(writer, {0, 10}),
            "paragraph{0,10}|inlines{0,10}|commentStart outer|blocks{0,9}|paragraph{0,9}"
            "|inlines{0,5}|'Inn'|'er'|paragraph{6,3}|inlines{6,3}|'Two'|'Noted'|commentEnd outer"
            "|' text'");
  EXPECT_THROW(writer.popAttributedString(), ns::InternalInconsistencyException);
}

TEST(WriterFrameEntry, BaseURLComesFromOptionsOrElseFromTheDocumentAttributes) {
  auto earlier = ns::URL::URLWithString(u"file:///earlier/doc.fdx");
  auto given = ns::URL::URLWithString(u"file:///given/doc.fdx");
  auto withURL = [](ns::Value url) {
    return ns::Dictionary::create({{std::u16string(ns::BaseURLDocumentOption), url}});
  };
  auto run = [&](const ns::DictionaryPtr &options, const ns::DictionaryPtr &attributes) {
    VLSAttributedStringWriter writer(textOf(u"x"));
    writer.setBaseURL(earlier);
    writer.dataFromRange({0, 1}, options, attributes, nullptr);
    return writer.baseURL();
  };
  // Options, even empty ones, decide alone: without the key they clear the base URL.
  EXPECT_FALSE(run(ns::Dictionary::create(), withURL(given)));
  EXPECT_EQ(run(withURL(given), withURL(earlier)), given);
  // With no options the document attributes may replace it, but never clear it.
  EXPECT_EQ(run(nullptr, ns::Dictionary::create()), earlier);
  EXPECT_EQ(run(nullptr, nullptr), earlier);
  EXPECT_EQ(run(nullptr, withURL(given)), given);
  // A string that holds a URL serves too.
  ns::URLPtr fromString = run(withURL(u"http://h/a/"), nullptr);
  ASSERT_TRUE(fromString);
  EXPECT_EQ(fromString->absoluteString(), u"http://h/a/");

  // The three-argument entry is the one with nil options.
  VLSAttributedStringWriter writer(textOf(u"x"));
  writer.setBaseURL(earlier);
  writer.dataFromRange({0, 1}, ns::Dictionary::create(), nullptr);
  EXPECT_EQ(writer.baseURL(), earlier);
}

TEST(WriterFrameEntry, DocumentAttributesGiveReferencesStylesheetAndTheStandardPage) {
  auto references = ns::Dictionary::create({{u"c1", marker(u"c1", 1, 1)}});
  auto sheet = VLStylesheet::create();
  auto standard = VLMasterPage::create();
  standard->setName(u"Standard (localized)");
  auto attributes = ns::Dictionary::create(
      {{std::u16string(VLReferencesDocumentAttribute), references},
       {std::u16string(VLStylesheetDocumentAttribute), sheet},
       {std::u16string(VLMasterPagesKey),
        ns::Dictionary::create({{u"First", VLMasterPage::create()}, {u"Standard", standard}})}});
  VLSAttributedStringWriter writer(textOf(u"x"));
  ns::ErrorPtr error;
  EXPECT_FALSE(writer.dataFromRange({0, 1}, attributes, &error)) << "the frame writes nothing";
  EXPECT_FALSE(error);
  EXPECT_EQ(writer.references(), references);
  EXPECT_EQ(writer.stylesheet(), sheet);
  EXPECT_EQ(writer.masterPage(), standard) << "found by key, whatever its name";

  // Missing or mistyped keys are nil, never an error.
  writer.dataFromRange(
      {0, 1}, ns::Dictionary::create({{std::u16string(VLMasterPagesKey), u"junk"}}), nullptr);
  EXPECT_FALSE(writer.references());
  EXPECT_FALSE(writer.stylesheet());
  EXPECT_FALSE(writer.masterPage());
}
