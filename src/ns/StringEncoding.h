// Text encodings by the platform's numbers: strict decoding, strict or lossy encoding,
// one-character lookups, plain-text detection, charset names and Windows code pages.
#pragma once

#include "ns/Data.h"
#include "ns/Error.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vl::ns {

/// A text encoding, numbered as the platform numbers them (NSStringEncoding). Numbers above
/// 0x80000000 are the platform's encoding-registry numbers with the top bit set.
using StringEncoding = uint64_t;

/// Strict 7-bit ASCII: bytes 0x80 and up do not decode.
inline constexpr StringEncoding ASCIIStringEncoding = 1;
inline constexpr StringEncoding NEXTSTEPStringEncoding = 2;
inline constexpr StringEncoding JapaneseEUCStringEncoding = 3;
inline constexpr StringEncoding UTF8StringEncoding = 4;
inline constexpr StringEncoding ISOLatin1StringEncoding = 5;
/// The Symbol font's encoding (Greek letters and mathematical signs).
inline constexpr StringEncoding SymbolStringEncoding = 6;
/// Windows code page 932, the Shift-JIS family.
inline constexpr StringEncoding ShiftJISStringEncoding = 8;
inline constexpr StringEncoding ISOLatin2StringEncoding = 9;
/// UTF-16 with a byte-order mark (read either way, written little-endian).
inline constexpr StringEncoding UnicodeStringEncoding = 10;
inline constexpr StringEncoding UTF16StringEncoding = UnicodeStringEncoding;
inline constexpr StringEncoding WindowsCP1251StringEncoding = 11;
inline constexpr StringEncoding WindowsCP1252StringEncoding = 12;
inline constexpr StringEncoding WindowsCP1253StringEncoding = 13;
inline constexpr StringEncoding WindowsCP1254StringEncoding = 14;
inline constexpr StringEncoding WindowsCP1250StringEncoding = 15;
inline constexpr StringEncoding ISO2022JPStringEncoding = 21;
inline constexpr StringEncoding MacOSRomanStringEncoding = 30;
inline constexpr StringEncoding UTF16BigEndianStringEncoding = 0x90000100;
inline constexpr StringEncoding UTF16LittleEndianStringEncoding = 0x94000100;
/// UTF-32 with a byte-order mark (read either way, written little-endian).
inline constexpr StringEncoding UTF32StringEncoding = 0x8c000100;
inline constexpr StringEncoding UTF32BigEndianStringEncoding = 0x98000100;
inline constexpr StringEncoding UTF32LittleEndianStringEncoding = 0x9c000100;

/// Error codes (domain CocoaErrorDomain) of a failed decode and a failed encode, as the
/// platform numbers them.
inline constexpr int64_t FileReadInapplicableStringEncodingError = 261;
inline constexpr int64_t FileWriteInapplicableStringEncodingError = 517;
/// User-info key of those errors: the encoding's number.
inline constexpr std::u16string_view StringEncodingErrorKey = u"NSStringEncodingErrorKey";

/// Every encoding this layer converts, in a fixed order.
const std::vector<StringEncoding> &availableStringEncodings();
/// A human-readable name ("Western (Mac OS Roman)"); "" for an encoding not available.
std::u16string localizedNameOfStringEncoding(StringEncoding encoding);
/// True for encodings of one byte per character (the ones the one-character lookups serve).
bool isSingleByteEncoding(StringEncoding encoding);

/// The text of `bytes` in `encoding`, or an empty optional (and an error with
/// FileReadInapplicableStringEncodingError) when a byte is illegal or unmapped in it, or the
/// encoding is not available. A leading byte-order mark is dropped for UTF-8 and the
/// mark-reading UTF-16/UTF-32; the explicit-endian forms keep it as U+FEFF. Unpaired UTF-16
/// surrogates in UTF-16 data are kept. Linear in the bytes.
std::optional<std::u16string> decode(std::string_view bytes, StringEncoding encoding,
                                     ErrorPtr *error = nullptr);
inline std::optional<std::u16string> decode(const Data &data, StringEncoding encoding,
                                            ErrorPtr *error = nullptr) {
  return decode(data.view(), encoding, error);
}

/// The bytes of `string` in `encoding`. A character the encoding cannot hold (or an
/// unpaired surrogate, outside UTF-16) becomes "?" when `lossy`, and otherwise makes the
/// whole call answer an empty optional with FileWriteInapplicableStringEncodingError.
/// UTF16StringEncoding and UTF32StringEncoding write a byte-order mark.
std::optional<std::string> encode(std::u16string_view string, StringEncoding encoding,
                                  bool lossy = false, ErrorPtr *error = nullptr);

/// The byte of one UTF-16 unit in a single-byte encoding (Mac Roman, a Windows code page,
/// Symbol...); empty when the encoding cannot hold it or is not single-byte. No allocation.
std::optional<uint8_t> byteForCharacter(char16_t character, StringEncoding encoding);
/// The UTF-16 unit of one byte in a single-byte encoding; empty for a byte the encoding
/// leaves undefined or an encoding that is not single-byte. No allocation.
std::optional<char16_t> characterForByte(uint8_t byte, StringEncoding encoding);

/// Decodes file bytes whose encoding is not known, as a text import does: strict UTF-8
/// first (a UTF-8 byte-order mark dropped), storing UTF8StringEncoding in `usedEncoding`
/// when that works. Otherwise decodePlainText, which never fails, and `usedEncoding` is left
/// as it was; `error` is not written.
std::optional<std::u16string> stringWithData(std::string_view bytes, StringEncoding *usedEncoding,
                                             ErrorPtr *error = nullptr);
inline std::optional<std::u16string> stringWithData(const Data &data, StringEncoding *usedEncoding,
                                                    ErrorPtr *error = nullptr) {
  return stringWithData(data.view(), usedEncoding, error);
}

/// The plain-text guess, in this order: a UTF-32 or UTF-16 byte-order mark; UTF-16 without
/// a mark when zero bytes sit at every other position; strict UTF-8; strict Windows 1252;
/// and last Mac Roman, which maps every byte. Stores the encoding it used.
std::u16string decodePlainText(std::string_view bytes, StringEncoding *usedEncoding = nullptr);

/// The encoding of an IANA charset name or alias ("UTF-8", "windows-1252", "macintosh",
/// "Shift_JIS", "latin1", "cp1252"...), ignoring case; empty when unknown.
std::optional<StringEncoding> encodingForIANACharSetName(std::u16string_view name);
/// The preferred charset name of an encoding ("UTF-8", "windows-1252", "macintosh",
/// "Shift_JIS"); "" when it has none.
std::u16string IANACharSetNameOfEncoding(StringEncoding encoding);

/// The encoding of a Windows code page (1252, 932, 10000 for Mac Roman, 65001 for UTF-8...);
/// empty when unknown.
std::optional<StringEncoding> encodingForWindowsCodepage(uint32_t codepage);
/// The Windows code page of an encoding; empty when it has none.
std::optional<uint32_t> windowsCodepageForEncoding(StringEncoding encoding);

} // namespace vl::ns
