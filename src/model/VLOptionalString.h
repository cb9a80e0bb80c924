// VLOptionalString: text that may be nil, in and out of dynamically typed values.
#pragma once

#include "ns/Value.h"

#include <optional>
#include <string>

namespace vl {

/// The text as a value, or nil.
inline ns::Value valueOfOptionalString(const std::optional<std::u16string> &text) {
  return text ? ns::Value(*text) : ns::Value();
}

/// The text a value holds, or nil for any other kind: a number is no name or title.
inline std::optional<std::u16string> optionalStringOfValue(const ns::Value &value) {
  if (value.isString())
    return value.string();
  return std::nullopt;
}

} // namespace vl
