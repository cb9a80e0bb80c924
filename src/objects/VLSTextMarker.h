// VLSTextMarker: a comment, bookmark or outline marker that gives a stretch of text an identity.
#pragma once

#include "model/VLRangeHolder.h"
#include "ns/Date.h"
#include "ns/Geometry.h"
#include "ns/KeyedArchiver.h"
#include "ns/Object.h"
#include "ns/Range.h"
#include "ns/Value.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace vl {

class VLSTextMarker;
using VLSTextMarkerPtr = std::shared_ptr<VLSTextMarker>;

/// Values of textMarkerType. Writers call hooks only for comments and bookmarks; any other
/// value is carried and ignored.
enum VLSTextMarkerType : uint64_t {
  VLSTextMarkerTypeComment = 1,
  VLSTextMarkerTypeBookmark = 2,
  VLSTextMarkerTypeOutlineEntry = 3,
};

/// Values of textMarkerLocation.
enum VLSTextMarkerLocation : uint64_t {
  /// The marker covers its range, with a start and an end.
  VLSTextMarkerLocationSpanning = 0,
  /// A point marker standing before the character it sits on.
  VLSTextMarkerLocationBefore = 1,
  /// A point marker standing after the character it sits on.
  VLSTextMarkerLocationAfter = 2,
};

/// A marker stored in the text under VLSTextMarkerAttributeName and, by its identifier, in a
/// document's references. Markers compare by identity: two markers with equal fields are two
/// markers, so adjacent runs holding them never merge.
///
/// The range lives twice: in this field and in the run of text that holds the marker. Code
/// that writes text reads the run; readers and writers keep the field up where they set it.
///
/// Keyed coding keys, written in this order: "range" (text as ns::StringFromRange gives it),
/// "imageSize" (size), "textMarkerType" and "textMarkerLocation" (32-bit integers, so higher
/// bits are lost), "canDelete" (boolean), "identifier", "representedObject", "date"
/// (objects). Key-value coding reaches the same names; "range" and "imageSize" travel as
/// "{a, b}" text there.
class VLSTextMarker : public ns::Object, public ns::Coding, public VLRangeHolder {
public:
  VL_OBJECT(VLSTextMarker)

  /// An empty marker at {0, 0} with the default image size (what the unarchiver starts from).
  VLSTextMarker();
  /// initWithRange:. Stores the range; the image size is 12 by 12, everything else empty.
  explicit VLSTextMarker(ns::Range range);
  /// textMarkerWithIdentifier:range:.
  static VLSTextMarkerPtr textMarkerWithIdentifier(std::optional<std::u16string> identifier,
                                                   ns::Range range);

  /// The image size of a new marker.
  static constexpr ns::Size DefaultImageSize{12.0, 12.0};

  bool canDelete() const { return _canDelete; }
  void setCanDelete(bool canDelete) { _canDelete = canDelete; }
  /// What the marker stands for: a comment's text, an outline entry's properties, ...
  const ns::Value &representedObject() const { return _representedObject; }
  void setRepresentedObject(ns::Value representedObject) {
    _representedObject = std::move(representedObject);
  }
  /// The key of the marker in a document's references; nil when it has none.
  const std::optional<std::u16string> &identifier() const { return _identifier; }
  void setIdentifier(std::optional<std::u16string> identifier) {
    _identifier = std::move(identifier);
  }
  const std::optional<ns::Date> &date() const { return _date; }
  void setDate(std::optional<ns::Date> date) { _date = date; }
  /// A VLSTextMarkerType value, or any other number.
  uint64_t textMarkerType() const { return _textMarkerType; }
  void setTextMarkerType(uint64_t type) { _textMarkerType = type; }
  /// A VLSTextMarkerLocation value, or any other number (read as spanning by writers).
  uint64_t textMarkerLocation() const { return _textMarkerLocation; }
  void setTextMarkerLocation(uint64_t location) { _textMarkerLocation = location; }
  ns::Range range() const override { return _range; }
  void setRange(ns::Range range) override { _range = range; }
  ns::Size imageSize() const { return _imageSize; }
  void setImageSize(ns::Size size) { _imageSize = size; }

  /// copyWithZone:. A new marker with every field, and a copy of the represented object
  /// (Object::copy for objects, so a dictionary becomes a new dictionary of the same values;
  /// values other than objects are values already). A represented object that cannot be
  /// copied fails the internal check of Object::copy.
  ns::ObjectPtr copy() const override;
  /// copy(), typed.
  std::shared_ptr<VLSTextMarker> copyMarker() const;
  /// The base description, then " %@ %@" with the identifier and the range as text.
  std::u16string description() const override;

  void encodeWithCoder(ns::KeyedArchiver &coder) const override;
  /// Reads what encodeWithCoder wrote; a missing key leaves 0, false, nil or {0, 0} (also
  /// for the image size: a decoded marker has what was coded).
  void initWithCoder(ns::KeyedUnarchiver &coder) override;

protected:
  bool kvcValueForKey(std::u16string_view key, ns::Value &value) override;
  bool kvcSetValueForKey(std::u16string_view key, const ns::Value &value) override;

private:
  bool _canDelete = false;
  ns::Value _representedObject;
  std::optional<std::u16string> _identifier;
  std::optional<ns::Date> _date;
  uint64_t _textMarkerType = 0;
  uint64_t _textMarkerLocation = 0;
  ns::Range _range;
  ns::Size _imageSize = DefaultImageSize;
};

} // namespace vl
