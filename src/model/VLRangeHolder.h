// VLRangeHolder: an object in the text that keeps a cached copy of the range it covers.
#pragma once

#include "ns/Range.h"

namespace vl {

/// Implemented by the objects that live in attribute runs and remember where they sit
/// (outline entries, markers, spans). The runs are the truth: the queries that walk them
/// call setRange with the run they found, so the cached range is only as fresh as the last
/// such walk.
class VLRangeHolder {
public:
  virtual ~VLRangeHolder() = default;
  /// The range last stored; nothing checks it against the text.
  virtual ns::Range range() const = 0;
  /// Stores `range` as it is, with no notification.
  virtual void setRange(ns::Range range) = 0;
};

} // namespace vl
