// Localized user-visible names of the model, through the host's main bundle.
#pragma once

#include "ns/Bundle.h"

#include <string>
#include <string_view>

namespace vl {

/// The main bundle's string for `key` in the default table, or `key` itself when the host
/// installed none.
inline std::u16string localizedString(std::u16string_view key) {
  return ns::Bundle::mainBundle()->localizedStringForKey(key, u"", {});
}

} // namespace vl
