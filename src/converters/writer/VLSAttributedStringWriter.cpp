// The shared walk of the text writers: blocks, paragraphs, inlines and markers.
#include "converters/writer/VLSAttributedStringWriter.h"

#include "model/VLConstants.h"
#include "ns/Assert.h"
#include "ns/AttributeNames.h"
#include "ns/String.h"

#include <algorithm>

namespace vl {

namespace {

// The value under ns::BaseURLDocumentOption: a URL, or a string that holds one.
ns::URLPtr baseURLFromValue(const ns::Value &value) {
  if (auto url = value.as<ns::URL>())
    return url;
  if (value.isString())
    return ns::URL::URLWithString(value.string());
  return nullptr;
}

// A hook that answers a position at or before the one it was given would walk forever.
void checkProgress(uint64_t next, uint64_t position) {
  VL_ASSERT(next > position, "Writer hook made no progress");
}

} // namespace

VLSAttributedStringWriter::VLSAttributedStringWriter(ns::AttributedStringPtr attributedString)
    : attributedString_(attributedString ? std::move(attributedString)
                                         : ns::AttributedString::create()) {}

VLSAttributedStringWriter::~VLSAttributedStringWriter() = default;

std::optional<ns::Data> VLSAttributedStringWriter::dataFromRange(
    ns::Range range, const ns::ConstDictionaryPtr &documentAttributes, ns::ErrorPtr *error) {
  return dataFromRange(range, nullptr, documentAttributes, error);
}

std::optional<ns::Data>
VLSAttributedStringWriter::dataFromRange(ns::Range range, const ns::ConstDictionaryPtr &options,
                                         const ns::ConstDictionaryPtr &documentAttributes,
                                         ns::ErrorPtr * /*error*/) {
  documentAttributes_ = documentAttributes;
  references_ = documentAttributes
                    ? documentAttributes->objectForKey(VLReferencesDocumentAttribute).dictionary()
                    : nullptr;
  if (options) {
    baseURL_ = baseURLFromValue(options->objectForKey(ns::BaseURLDocumentOption));
  } else if (documentAttributes) {
    if (ns::URLPtr url =
            baseURLFromValue(documentAttributes->objectForKey(ns::BaseURLDocumentOption)))
      baseURL_ = std::move(url);
  }

  const uint64_t length = attributedString_->length();
  const uint64_t start = std::min(range.location, length);
  const uint64_t end = std::min(range.max() < range.location ? length : range.max(), length);
  startEncoding();
  encodeBodyInRange(ns::Range{start, end - start});
  endEncoding();
  return data();
}

VLStylesheetPtr VLSAttributedStringWriter::stylesheet() const {
  if (!documentAttributes_)
    return nullptr;
  return documentAttributes_->objectForKey(VLStylesheetDocumentAttribute).as<VLStylesheet>();
}

VLMasterPagePtr VLSAttributedStringWriter::masterPage() const {
  if (!documentAttributes_)
    return nullptr;
  ns::DictionaryPtr pages = documentAttributes_->objectForKey(VLMasterPagesKey).dictionary();
  return pages ? pages->objectForKey(VLStandardMasterPageKey).as<VLMasterPage>() : nullptr;
}

void VLSAttributedStringWriter::pushAttributedString(ns::AttributedStringPtr string) {
  attributedStringStack_.push_back(std::move(attributedString_));
  attributedString_ = string ? std::move(string) : ns::AttributedString::create();
}

ns::AttributedStringPtr VLSAttributedStringWriter::popAttributedString() {
  VL_ASSERT(!attributedStringStack_.empty(), "popAttributedString without a pushed string");
  ns::AttributedStringPtr popped = std::move(attributedString_);
  attributedString_ = std::move(attributedStringStack_.back());
  attributedStringStack_.pop_back();
  return popped;
}

std::optional<ns::Data> VLSAttributedStringWriter::data() {
  return std::nullopt;
}

void VLSAttributedStringWriter::startEncoding() {}

void VLSAttributedStringWriter::endEncoding() {}

void VLSAttributedStringWriter::encodeBodyInRange(ns::Range range) {
  encodeBlocksInRange(range);
  if (currentMarker_)
    closeCurrentMarker();
  currentMarker_.reset();
}

uint64_t VLSAttributedStringWriter::encodeBlocksInRange(ns::Range range) {
  uint64_t position = range.location;
  const uint64_t end = range.max();
  while (position < end) {
    ns::Range rest{position, end - position};
    uint64_t next = encodeListInRange(rest);
    if (next == ns::NotFound)
      next = encodeParagraphInRange(rest);
    checkProgress(next, position);
    position = next;
  }
  return position;
}

uint64_t VLSAttributedStringWriter::encodeListInRange(ns::Range) {
  return ns::NotFound;
}

uint64_t VLSAttributedStringWriter::encodeParagraphInRange(ns::Range range) {
  const ns::AttributedString &string = *attributedString_;
  const uint64_t start = range.location;
  const ns::Range paragraph = string.paragraphRangeForRange(ns::Range{start, 0});
  const uint64_t end = paragraph.max();
  uint64_t contentsEnd = end;
  if (contentsEnd > paragraph.location) {
    char16_t last = string.characterAtIndex(contentsEnd - 1);
    if (ns::isParagraphSeparator(last)) {
      --contentsEnd;
      if (last == u'\n' && contentsEnd > paragraph.location &&
          string.characterAtIndex(contentsEnd - 1) == u'\r')
        --contentsEnd;
    }
  }
  // The range may start inside the terminator of a CRLF pair.
  contentsEnd = std::max(contentsEnd, start);
  encodeInlinesInRange(ns::Range{start, contentsEnd - start});
  encodeTextMarkersAtLocation(contentsEnd);
  return end;
}

uint64_t VLSAttributedStringWriter::encodeInlinesInRange(ns::Range range) {
  uint64_t position = range.location;
  const uint64_t end = range.max();
  while (position < end) {
    encodeTextMarkersAtLocation(position);
    ns::Range rest{position, end - position};
    uint64_t next = encodeAttachmentsInRange(rest);
    if (next == ns::NotFound)
      next = encodeLinkInRange(rest);
    if (next == ns::NotFound)
      next = encodeFieldsInRange(rest);
    if (next == ns::NotFound)
      next = encodeSpanInRange(rest);
    checkProgress(next, position);
    position = next;
  }
  return position;
}

uint64_t VLSAttributedStringWriter::encodeAttachmentsInRange(ns::Range range) {
  ns::Range effective;
  ns::Value attachment =
      attributedString_->attribute(ns::AttachmentAttributeName, range.location, &effective, range);
  return attachment.isNil() ? ns::NotFound : range.location + 1;
}

uint64_t VLSAttributedStringWriter::encodeLinkInRange(ns::Range) {
  return ns::NotFound;
}

uint64_t VLSAttributedStringWriter::encodeFieldsInRange(ns::Range) {
  return ns::NotFound;
}

uint64_t VLSAttributedStringWriter::encodeSpanInRange(ns::Range range) {
  ns::Range effective;
  attributedString_->attributesAtIndex(range.location, &effective);
  return std::min(effective.max(), range.max());
}

uint64_t VLSAttributedStringWriter::encodeTextMarkersAtLocation(uint64_t location) {
  if (!attributedStringStack_.empty())
    return ns::NotFound;
  if (currentMarker_ && currentMarker_->range().max() <= location)
    closeCurrentMarker();

  const uint64_t length = attributedString_->length();
  if (location >= length)
    return location;
  ns::Range effective;
  auto marker = attributedString_->attribute(VLSTextMarkerAttributeName, location, &effective)
                    .as<VLSTextMarker>();
  if (!marker || marker == currentMarker_)
    return location;

  const uint64_t type = marker->textMarkerType();
  switch (marker->textMarkerLocation()) {
  case VLSTextMarkerLocationBefore:
    if (type == VLSTextMarkerTypeBookmark) {
      encodeBookmarkStart(marker);
      encodeBookmarkEnd(marker);
    } else if (type == VLSTextMarkerTypeComment) {
      encodeComment(marker);
    }
    break;
  case VLSTextMarkerLocationAfter:
    marker->setRange(effective);
    currentMarker_ = std::move(marker);
    break;
  default: {
    ns::Range longest;
    attributedString_->attribute(VLSTextMarkerAttributeName, location, &longest,
                                 ns::Range{location, length - location});
    marker->setRange(longest);
    currentMarker_ = marker;
    if (type == VLSTextMarkerTypeBookmark)
      encodeBookmarkStart(marker);
    else if (type == VLSTextMarkerTypeComment)
      encodeCommentStart(marker);
    break;
  }
  }
  return location;
}

void VLSAttributedStringWriter::closeCurrentMarker() {
  VLSTextMarkerPtr marker = currentMarker_;
  if (marker->textMarkerType() == VLSTextMarkerTypeBookmark) {
    encodeBookmarkEnd(marker);
  } else if (marker->textMarkerType() == VLSTextMarkerTypeComment) {
    if (marker->textMarkerLocation() == VLSTextMarkerLocationAfter)
      encodeComment(marker);
    else
      encodeCommentEnd(marker);
  }
  currentMarker_.reset();
}

void VLSAttributedStringWriter::encodeBookmarkStart(const VLSTextMarkerPtr &) {}

void VLSAttributedStringWriter::encodeBookmarkEnd(const VLSTextMarkerPtr &) {}

void VLSAttributedStringWriter::encodeComment(const VLSTextMarkerPtr &) {}

void VLSAttributedStringWriter::encodeCommentStart(const VLSTextMarkerPtr &) {}

void VLSAttributedStringWriter::encodeCommentEnd(const VLSTextMarkerPtr &) {}

} // namespace vl
