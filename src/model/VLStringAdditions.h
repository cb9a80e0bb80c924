// String helpers the file formats share: identifiers, decoding of text of unknown encoding,
// file base names and small clean-ups of titles.
#pragma once

#include "ns/StringEncoding.h"

#include <optional>
#include <string>
#include <string_view>

namespace vl {

/// A fresh UUID string, "XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX" in upper case.
std::u16string UUID();
/// A fresh identifier that is a legal XML ID: "id" and the 32 hex digits of a UUID.
std::u16string uniqueID();

/// stringWithData(data, usedEncoding, error): the text of file bytes of unknown encoding.
/// UTF-8 when the bytes are valid UTF-8 (a byte-order mark dropped), storing 4 (UTF-8) in
/// `usedEncoding`; otherwise the plain text import's guess (UTF-16 or UTF-32 by their marks,
/// Windows 1252, Mac Roman), leaving `usedEncoding` unwritten. The platform layer does
/// exactly this, so the name is brought in rather than wrapped (a wrapper would make calls
/// with ns::Data ambiguous).
using ns::stringWithData;

/// The last path component without its extension: "/a/Chapter 1.rtf" gives "Chapter 1".
std::u16string basename(std::u16string_view path);
/// The text without a whole number at its very end (trailing blanks aside): "Chapter 12"
/// gives "Chapter ", "12" gives "". A number elsewhere stays: "A1b" is unchanged. ASCII digits
/// only. Costs one pass.
std::u16string stringByDeletingLastInteger(std::u16string_view string);
/// Each newline character (LF, VT, FF, CR, U+0085, U+2028, U+2029) replaced by one blank:
/// the length never changes, and CR LF gives two blanks.
std::u16string stringByDeletingNewlines(std::u16string_view string);

} // namespace vl
