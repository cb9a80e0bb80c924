// Text encodings: one table describes them all; single-byte encodings decode through byte
// tables (our own for Symbol and NEXTSTEP, read from ICU for the rest), multi-byte ones through
// per-thread ICU converters, and the Unicode forms by hand.
#include "ns/StringEncoding.h"

#include "ns/String.h"

#include <unicode/ucnv.h>
#include <unicode/utf16.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <iterator>
#include <span>

namespace vl::ns {

namespace {

enum class Kind : uint8_t {
  UTF8,
  UTF16, // reads a byte-order mark, writes one
  UTF16BE,
  UTF16LE,
  UTF32, // reads a byte-order mark, writes one
  UTF32BE,
  UTF32LE,
  SingleByte,
  Converter, // a multi-byte ICU converter
};

enum class Source : uint8_t { ICU, Symbol, NEXTSTEP };

struct EncodingInfo {
  StringEncoding encoding;
  Kind kind;
  const char *converter; // ICU converter name (table source or alias key); null for our own
  const char *charset;   // preferred IANA name, "" when there is none
  uint32_t codepage;     // Windows code page, 0 when there is none
  const char16_t *name;
  Source source = Source::ICU;
  // In Windows code pages the bytes ICU maps to C1 controls are holes of the real tables
  // (0x81 in 1252, for one), so they do not decode.
  bool windowsHoles = false;
};

constexpr StringEncoding registry(uint32_t number) {
  return 0x80000000ULL | number;
}

const EncodingInfo encodingTable[] = {
    {ASCIIStringEncoding, Kind::SingleByte, "US-ASCII", "US-ASCII", 20127, u"Western (ASCII)"},
    {NEXTSTEPStringEncoding, Kind::SingleByte, nullptr, "x-nextstep", 0, u"Western (NextStep)",
     Source::NEXTSTEP},
    {JapaneseEUCStringEncoding, Kind::Converter, "EUC-JP", "EUC-JP", 51932, u"Japanese (EUC)"},
    {UTF8StringEncoding, Kind::UTF8, "UTF-8", "UTF-8", 65001, u"Unicode (UTF-8)"},
    {ISOLatin1StringEncoding, Kind::SingleByte, "ISO-8859-1", "ISO-8859-1", 28591,
     u"Western (ISO Latin 1)"},
    {SymbolStringEncoding, Kind::SingleByte, nullptr, "Adobe-Symbol-Encoding", 0, u"Symbol",
     Source::Symbol},
    {ShiftJISStringEncoding, Kind::Converter, "ibm-943_P15A-2003", "Shift_JIS", 932,
     u"Japanese (Windows, DOS)"},
    {ISOLatin2StringEncoding, Kind::SingleByte, "ISO-8859-2", "ISO-8859-2", 28592,
     u"Central European (ISO Latin 2)"},
    {UTF16StringEncoding, Kind::UTF16, "UTF-16", "UTF-16", 0, u"Unicode (UTF-16)"},
    {WindowsCP1251StringEncoding, Kind::SingleByte, "windows-1251", "windows-1251", 1251,
     u"Cyrillic (Windows)", Source::ICU, true},
    {WindowsCP1252StringEncoding, Kind::SingleByte, "windows-1252", "windows-1252", 1252,
     u"Western (Windows Latin 1)", Source::ICU, true},
    {WindowsCP1253StringEncoding, Kind::SingleByte, "windows-1253", "windows-1253", 1253,
     u"Greek (Windows)", Source::ICU, true},
    {WindowsCP1254StringEncoding, Kind::SingleByte, "windows-1254", "windows-1254", 1254,
     u"Turkish (Windows Latin 5)", Source::ICU, true},
    {WindowsCP1250StringEncoding, Kind::SingleByte, "windows-1250", "windows-1250", 1250,
     u"Central European (Windows Latin 2)", Source::ICU, true},
    {ISO2022JPStringEncoding, Kind::Converter, "ISO-2022-JP", "ISO-2022-JP", 50220,
     u"Japanese (ISO 2022-JP)"},
    {MacOSRomanStringEncoding, Kind::SingleByte, "macintosh", "macintosh", 10000,
     u"Western (Mac OS Roman)"},
    {UTF16BigEndianStringEncoding, Kind::UTF16BE, "UTF-16BE", "UTF-16BE", 1201,
     u"Unicode (UTF-16BE)"},
    {UTF16LittleEndianStringEncoding, Kind::UTF16LE, "UTF-16LE", "UTF-16LE", 1200,
     u"Unicode (UTF-16LE)"},
    {UTF32StringEncoding, Kind::UTF32, "UTF-32", "UTF-32", 0, u"Unicode (UTF-32)"},
    {UTF32BigEndianStringEncoding, Kind::UTF32BE, "UTF-32BE", "UTF-32BE", 12001,
     u"Unicode (UTF-32BE)"},
    {UTF32LittleEndianStringEncoding, Kind::UTF32LE, "UTF-32LE", "UTF-32LE", 12000,
     u"Unicode (UTF-32LE)"},
    {registry(0x0400), Kind::SingleByte, "ibm-437_P100-1995", "IBM437", 437, u"Latin-US (DOS)"},
    {registry(0x0410), Kind::SingleByte, "ibm-850_P100-1995", "IBM850", 850,
     u"Western (DOS Latin 1)"},
    {registry(0x041D), Kind::SingleByte, "windows-874", "windows-874", 874, u"Thai (Windows, DOS)",
     Source::ICU, true},
    {registry(0x0421), Kind::Converter, "windows-936", "GBK", 936,
     u"Simplified Chinese (Windows, DOS)"},
    {registry(0x0422), Kind::Converter, "windows-949", "KS_C_5601-1987", 949,
     u"Korean (Windows, DOS)"},
    {registry(0x0423), Kind::Converter, "windows-950", "Big5", 950,
     u"Traditional Chinese (Windows, DOS)"},
    {registry(0x0505), Kind::SingleByte, "windows-1255", "windows-1255", 1255, u"Hebrew (Windows)",
     Source::ICU, true},
    {registry(0x0506), Kind::SingleByte, "windows-1256", "windows-1256", 1256, u"Arabic (Windows)",
     Source::ICU, true},
    {registry(0x0507), Kind::SingleByte, "windows-1257", "windows-1257", 1257, u"Baltic (Windows)",
     Source::ICU, true},
    {registry(0x0508), Kind::SingleByte, "windows-1258", "windows-1258", 1258,
     u"Vietnamese (Windows)", Source::ICU, true},
    {registry(0x0203), Kind::SingleByte, "ISO-8859-3", "ISO-8859-3", 28593,
     u"Western (ISO Latin 3)"},
    {registry(0x0204), Kind::SingleByte, "ISO-8859-4", "ISO-8859-4", 28594,
     u"Central European (ISO Latin 4)"},
    {registry(0x0205), Kind::SingleByte, "ISO-8859-5", "ISO-8859-5", 28595,
     u"Cyrillic (ISO 8859-5)"},
    {registry(0x0206), Kind::SingleByte, "ISO-8859-6", "ISO-8859-6", 28596, u"Arabic (ISO 8859-6)"},
    {registry(0x0207), Kind::SingleByte, "ISO-8859-7", "ISO-8859-7", 28597, u"Greek (ISO 8859-7)"},
    {registry(0x0208), Kind::SingleByte, "ISO-8859-8", "ISO-8859-8", 28598, u"Hebrew (ISO 8859-8)"},
    {registry(0x0209), Kind::SingleByte, "ISO-8859-9", "ISO-8859-9", 28599,
     u"Turkish (ISO Latin 5)"},
    {registry(0x020A), Kind::SingleByte, "ISO-8859-10", "ISO-8859-10", 0, u"Nordic (ISO Latin 6)"},
    {registry(0x020B), Kind::SingleByte, "ISO-8859-11", "ISO-8859-11", 0, u"Thai (ISO 8859-11)"},
    {registry(0x020D), Kind::SingleByte, "ISO-8859-13", "ISO-8859-13", 28603,
     u"Baltic (ISO Latin 7)"},
    {registry(0x020E), Kind::SingleByte, "ISO-8859-14", "ISO-8859-14", 0, u"Celtic (ISO Latin 8)"},
    {registry(0x020F), Kind::SingleByte, "ISO-8859-15", "ISO-8859-15", 28605,
     u"Western (ISO Latin 9)"},
    {registry(0x0A02), Kind::SingleByte, "KOI8-R", "KOI8-R", 20866, u"Cyrillic (KOI8-R)"},
    {registry(0x0A08), Kind::SingleByte, "KOI8-U", "KOI8-U", 21866, u"Ukrainian (KOI8-U)"},
    {registry(0x0632), Kind::Converter, "GB18030", "GB18030", 54936, u"Chinese (GB 18030)"},
    {registry(0x0930), Kind::Converter, "GB2312", "GB2312", 0, u"Simplified Chinese (GB 2312)"},
    {registry(0x0940), Kind::Converter, "EUC-KR", "EUC-KR", 51949, u"Korean (EUC)"},
};

constexpr size_t encodingCount = std::size(encodingTable);

const EncodingInfo *infoFor(StringEncoding encoding) {
  for (const EncodingInfo &info : encodingTable)
    if (info.encoding == encoding)
      return &info;
  return nullptr;
}

constexpr char16_t hole = 0xFFFF; // a byte with no character

// The Symbol font's encoding: Adobe's table, with standard characters where Adobe used private
// ones (the serif and sans-serif (R), (C) and TM, the bracket and integral pieces, the arrow
// extenders), and the Apple logo at 0xF0 as in the Mac's Symbol font.
constexpr std::array<char16_t, 128> symbolHigh = {
    hole,   hole,   hole,   hole,   hole,   hole,   hole,   hole,   // 0x80
    hole,   hole,   hole,   hole,   hole,   hole,   hole,   hole,   // 0x88
    hole,   hole,   hole,   hole,   hole,   hole,   hole,   hole,   // 0x90
    hole,   hole,   hole,   hole,   hole,   hole,   hole,   hole,   // 0x98
    0x20AC, 0x03D2, 0x2032, 0x2264, 0x2044, 0x221E, 0x0192, 0x2663, // 0xA0
    0x2666, 0x2665, 0x2660, 0x2194, 0x2190, 0x2191, 0x2192, 0x2193, // 0xA8
    0x00B0, 0x00B1, 0x2033, 0x2265, 0x00D7, 0x221D, 0x2202, 0x2022, // 0xB0
    0x00F7, 0x2260, 0x2261, 0x2248, 0x2026, 0x23D0, 0x23AF, 0x21B5, // 0xB8
    0x2135, 0x2111, 0x211C, 0x2118, 0x2297, 0x2295, 0x2205, 0x2229, // 0xC0
    0x222A, 0x2283, 0x2287, 0x2284, 0x2282, 0x2286, 0x2208, 0x2209, // 0xC8
    0x2220, 0x2207, 0x00AE, 0x00A9, 0x2122, 0x220F, 0x221A, 0x22C5, // 0xD0
    0x00AC, 0x2227, 0x2228, 0x21D4, 0x21D0, 0x21D1, 0x21D2, 0x21D3, // 0xD8
    0x25CA, 0x2329, 0x00AE, 0x00A9, 0x2122, 0x2211, 0x239B, 0x239C, // 0xE0
    0x239D, 0x23A1, 0x23A2, 0x23A3, 0x23A7, 0x23A8, 0x23A9, 0x23AA, // 0xE8
    0xF8FF, 0x232A, 0x222B, 0x2320, 0x23AE, 0x2321, 0x239E, 0x239F, // 0xF0
    0x23A0, 0x23A4, 0x23A5, 0x23A6, 0x23AB, 0x23AC, 0x23AD, hole,   // 0xF8
};

// Letters and signs of Symbol's low half that differ from ASCII.
constexpr std::pair<uint8_t, char16_t> symbolLow[] = {
    {0x22, 0x2200}, {0x24, 0x2203}, {0x27, 0x220B}, {0x2A, 0x2217}, {0x2D, 0x2212}, {0x40, 0x2245},
    {0x41, 0x0391}, {0x42, 0x0392}, {0x43, 0x03A7}, {0x44, 0x0394}, {0x45, 0x0395}, {0x46, 0x03A6},
    {0x47, 0x0393}, {0x48, 0x0397}, {0x49, 0x0399}, {0x4A, 0x03D1}, {0x4B, 0x039A}, {0x4C, 0x039B},
    {0x4D, 0x039C}, {0x4E, 0x039D}, {0x4F, 0x039F}, {0x50, 0x03A0}, {0x51, 0x0398}, {0x52, 0x03A1},
    {0x53, 0x03A3}, {0x54, 0x03A4}, {0x55, 0x03A5}, {0x56, 0x03C2}, {0x57, 0x03A9}, {0x58, 0x039E},
    {0x59, 0x03A8}, {0x5A, 0x0396}, {0x5C, 0x2234}, {0x5E, 0x22A5}, {0x60, 0xF8E5}, {0x61, 0x03B1},
    {0x62, 0x03B2}, {0x63, 0x03C7}, {0x64, 0x03B4}, {0x65, 0x03B5}, {0x66, 0x03C6}, {0x67, 0x03B3},
    {0x68, 0x03B7}, {0x69, 0x03B9}, {0x6A, 0x03D5}, {0x6B, 0x03BA}, {0x6C, 0x03BB}, {0x6D, 0x03BC},
    {0x6E, 0x03BD}, {0x6F, 0x03BF}, {0x70, 0x03C0}, {0x71, 0x03B8}, {0x72, 0x03C1}, {0x73, 0x03C3},
    {0x74, 0x03C4}, {0x75, 0x03C5}, {0x76, 0x03D6}, {0x77, 0x03C9}, {0x78, 0x03BE}, {0x79, 0x03C8},
    {0x7A, 0x03B6}, {0x7E, 0x223C},
};

// Other spellings of Symbol's characters that encode to the same byte: Adobe's private-use
// code points, the Mac table's choices, and look-alikes (micro sign, ohm, increment).
constexpr std::pair<char16_t, uint8_t> symbolAlsoEncodes[] = {
    {0x00A0, 0x20}, {0x00B5, 0x6D}, {0x2126, 0x57}, {0x2206, 0x44}, {0x2215, 0xA4}, {0x220D, 0x27},
    {0x22C4, 0xE0}, {0x3008, 0xE1}, {0x3009, 0xF1}, {0x27E8, 0xE1}, {0x27E9, 0xF1}, {0xF6D9, 0xD3},
    {0xF6DA, 0xD2}, {0xF6DB, 0xD4}, {0xF8E6, 0xBD}, {0xF8E7, 0xBE}, {0xF8E8, 0xE2}, {0xF8E9, 0xE3},
    {0xF8EA, 0xE4}, {0xF8EB, 0xE6}, {0xF8EC, 0xE7}, {0xF8ED, 0xE8}, {0xF8EE, 0xE9}, {0xF8EF, 0xEA},
    {0xF8F0, 0xEB}, {0xF8F1, 0xEC}, {0xF8F2, 0xED}, {0xF8F3, 0xEE}, {0xF8F4, 0xEF}, {0xF8F5, 0xF4},
    {0xF8F6, 0xF6}, {0xF8F7, 0xF7}, {0xF8F8, 0xF8}, {0xF8F9, 0xF9}, {0xF8FA, 0xFA}, {0xF8FB, 0xFB},
    {0xF8FC, 0xFC}, {0xF8FD, 0xFD}, {0xF8FE, 0xFE},
};

// NEXTSTEP's high half; the low half is ASCII.
constexpr std::array<char16_t, 128> nextstepHigh = {
    0x00A0, 0x00C0, 0x00C1, 0x00C2, 0x00C3, 0x00C4, 0x00C5, 0x00C7, // 0x80
    0x00C8, 0x00C9, 0x00CA, 0x00CB, 0x00CC, 0x00CD, 0x00CE, 0x00CF, // 0x88
    0x00D0, 0x00D1, 0x00D2, 0x00D3, 0x00D4, 0x00D5, 0x00D6, 0x00D9, // 0x90
    0x00DA, 0x00DB, 0x00DC, 0x00DD, 0x00DE, 0x00B5, 0x00D7, 0x00F7, // 0x98
    0x00A9, 0x00A1, 0x00A2, 0x00A3, 0x2044, 0x00A5, 0x0192, 0x00A7, // 0xA0
    0x00A4, 0x2019, 0x201C, 0x00AB, 0x2039, 0x203A, 0xFB01, 0xFB02, // 0xA8
    0x00AE, 0x2013, 0x2020, 0x2021, 0x00B7, 0x00A6, 0x00B6, 0x2022, // 0xB0
    0x201A, 0x201E, 0x201D, 0x00BB, 0x2026, 0x2030, 0x00AC, 0x00BF, // 0xB8
    0x00B9, 0x02CB, 0x00B4, 0x02C6, 0x02DC, 0x00AF, 0x02D8, 0x02D9, // 0xC0
    0x00A8, 0x00B2, 0x02DA, 0x00B8, 0x00B3, 0x02DD, 0x02DB, 0x02C7, // 0xC8
    0x2014, 0x00B1, 0x00BC, 0x00BD, 0x00BE, 0x00E0, 0x00E1, 0x00E2, // 0xD0
    0x00E3, 0x00E4, 0x00E5, 0x00E7, 0x00E8, 0x00E9, 0x00EA, 0x00EB, // 0xD8
    0x00EC, 0x00C6, 0x00ED, 0x00AA, 0x00EE, 0x00EF, 0x00F0, 0x00F1, // 0xE0
    0x0141, 0x00D8, 0x0152, 0x00BA, 0x00F2, 0x00F3, 0x00F4, 0x00F5, // 0xE8
    0x00F6, 0x00E6, 0x00F9, 0x00FA, 0x00FB, 0x0131, 0x00FC, 0x00FD, // 0xF0
    0x0142, 0x00F8, 0x0153, 0x00DF, 0x00FE, 0x00FF, hole,   hole,   // 0xF8
};

// One single-byte encoding both ways.
struct ByteTable {
  static constexpr uint16_t none = 0xFFFF;
  std::array<char16_t, 256> unit;
  std::array<uint16_t, 256> low;                  // byte of each unit below 0x100, or none
  std::vector<std::pair<char16_t, uint8_t>> high; // the other units, sorted

  /// When several bytes decode to one character, the lowest byte encodes it; `extra` adds
  /// spellings that only encode.
  explicit ByteTable(const std::array<char16_t, 256> &units,
                     std::span<const std::pair<char16_t, uint8_t>> extra = {})
      : unit(units) {
    low.fill(none);
    for (size_t b = 0; b < 256; ++b)
      add(unit[b], static_cast<uint8_t>(b));
    for (auto [c, byte] : extra)
      add(c, byte);
    std::stable_sort(high.begin(), high.end(),
                     [](const auto &a, const auto &b) { return a.first < b.first; });
    high.erase(std::unique(high.begin(), high.end(),
                           [](const auto &a, const auto &b) { return a.first == b.first; }),
               high.end());
  }

  void add(char16_t c, uint8_t byte) {
    if (c == hole)
      return;
    if (c >= 0x100)
      high.emplace_back(c, byte);
    else if (low[c] == none)
      low[c] = byte;
  }

  std::optional<uint8_t> byteFor(char16_t c) const {
    if (c < 0x100) {
      if (low[c] == none)
        return std::nullopt;
      return static_cast<uint8_t>(low[c]);
    }
    auto it = std::lower_bound(high.begin(), high.end(), c,
                               [](const auto &entry, char16_t key) { return entry.first < key; });
    if (it == high.end() || it->first != c)
      return std::nullopt;
    return it->second;
  }
};

std::array<char16_t, 256> unitsFromICU(const EncodingInfo &info) {
  std::array<char16_t, 256> units;
  units.fill(hole);
  UErrorCode status = U_ZERO_ERROR;
  UConverter *converter = ucnv_open(info.converter, &status);
  if (U_FAILURE(status)) {
    ucnv_close(converter);
    return units;
  }
  ucnv_setToUCallBack(converter, UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
  for (int b = 0; b < 256; ++b) {
    char byte = static_cast<char>(b);
    UChar out[4];
    status = U_ZERO_ERROR;
    ucnv_resetToUnicode(converter);
    int32_t length = ucnv_toUChars(converter, out, 4, &byte, 1, &status);
    if (U_FAILURE(status) || length != 1)
      continue;
    if (info.windowsHoles && out[0] >= 0x80 && out[0] <= 0x9F)
      continue;
    units[static_cast<size_t>(b)] = out[0];
  }
  ucnv_close(converter);
  return units;
}

ByteTable *buildByteTable(const EncodingInfo &info) {
  std::array<char16_t, 256> units;
  switch (info.source) {
  case Source::ICU:
    return new ByteTable(unitsFromICU(info));
  case Source::Symbol: {
    for (int b = 0; b < 128; ++b)
      units[static_cast<size_t>(b)] = b == 0x7F ? hole : static_cast<char16_t>(b);
    for (auto [byte, c] : symbolLow)
      units[byte] = c;
    std::copy(symbolHigh.begin(), symbolHigh.end(), units.begin() + 128);
    return new ByteTable(units, symbolAlsoEncodes);
  }
  case Source::NEXTSTEP:
    for (int b = 0; b < 128; ++b)
      units[static_cast<size_t>(b)] = static_cast<char16_t>(b);
    std::copy(nextstepHigh.begin(), nextstepHigh.end(), units.begin() + 128);
    return new ByteTable(units);
  }
  return nullptr;
}

// Built on first use and kept for the life of the process; published without a lock (a
// thread that loses the race drops its copy).
std::atomic<const ByteTable *> byteTables[encodingCount];

const ByteTable *byteTableFor(const EncodingInfo &info) {
  auto &slot = byteTables[static_cast<size_t>(&info - encodingTable)];
  if (const ByteTable *table = slot.load(std::memory_order_acquire))
    return table;
  const ByteTable *built = buildByteTable(info);
  const ByteTable *expected = nullptr;
  if (!slot.compare_exchange_strong(expected, built, std::memory_order_acq_rel)) {
    delete built;
    return expected;
  }
  return built;
}

// ICU converters are not thread-safe: each thread keeps its own, opened on first use.
class ThreadConverters {
public:
  ThreadConverters() = default;
  ThreadConverters(const ThreadConverters &) = delete;
  ThreadConverters &operator=(const ThreadConverters &) = delete;
  ~ThreadConverters() {
    for (auto &entry : open_)
      ucnv_close(entry.second);
  }

  UConverter *get(const EncodingInfo &info) {
    for (auto &entry : open_)
      if (entry.first == &info)
        return entry.second;
    UErrorCode status = U_ZERO_ERROR;
    UConverter *converter = ucnv_open(info.converter, &status);
    if (U_FAILURE(status)) {
      ucnv_close(converter);
      return nullptr;
    }
    open_.emplace_back(&info, converter);
    return converter;
  }

private:
  std::vector<std::pair<const EncodingInfo *, UConverter *>> open_;
};

UConverter *converterFor(const EncodingInfo &info) {
  thread_local ThreadConverters converters;
  return converters.get(info);
}

bool decodeWithConverter(UConverter *converter, std::string_view bytes, std::u16string &out) {
  UErrorCode status = U_ZERO_ERROR;
  ucnv_resetToUnicode(converter);
  ucnv_setToUCallBack(converter, UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
  const char *source = bytes.data();
  const char *sourceEnd = source + bytes.size();
  UChar buffer[2048];
  do {
    status = U_ZERO_ERROR;
    UChar *target = buffer;
    ucnv_toUnicode(converter, &target, buffer + std::size(buffer), &source, sourceEnd, nullptr,
                   true, &status);
    out.append(buffer, static_cast<size_t>(target - buffer));
  } while (status == U_BUFFER_OVERFLOW_ERROR);
  return U_SUCCESS(status);
}

bool encodeWithConverter(UConverter *converter, std::u16string_view text, bool lossy,
                         std::string &out) {
  UErrorCode status = U_ZERO_ERROR;
  ucnv_resetFromUnicode(converter);
  if (lossy) {
    ucnv_setSubstString(converter, u"?", 1, &status);
    ucnv_setFromUCallBack(converter, UCNV_FROM_U_CALLBACK_SUBSTITUTE, nullptr, nullptr, nullptr,
                          &status);
  } else {
    ucnv_setFromUCallBack(converter, UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
  }
  if (U_FAILURE(status))
    return false;
  const UChar *source = text.data();
  const UChar *sourceEnd = source + text.size();
  char buffer[4096];
  do {
    status = U_ZERO_ERROR;
    char *target = buffer;
    ucnv_fromUnicode(converter, &target, buffer + sizeof buffer, &source, sourceEnd, nullptr, true,
                     &status);
    out.append(buffer, static_cast<size_t>(target - buffer));
  } while (status == U_BUFFER_OVERFLOW_ERROR);
  return U_SUCCESS(status);
}

constexpr std::string_view utf8Mark("\xEF\xBB\xBF", 3);
constexpr std::string_view utf16BEMark("\xFE\xFF", 2);
constexpr std::string_view utf16LEMark("\xFF\xFE", 2);
constexpr std::string_view utf32BEMark("\x00\x00\xFE\xFF", 4);
constexpr std::string_view utf32LEMark("\xFF\xFE\x00\x00", 4);

bool decodeUTF8(std::string_view bytes, std::u16string &out) {
  if (bytes.starts_with(utf8Mark))
    bytes.remove_prefix(utf8Mark.size());
  return fromUTF8Strict(bytes, out);
}

bool decodeUTF16(std::string_view bytes, bool bigEndian, std::u16string &out) {
  if (bytes.size() % 2)
    return false;
  const auto *b = reinterpret_cast<const uint8_t *>(bytes.data());
  out.resize(bytes.size() / 2);
  for (size_t i = 0; i < out.size(); ++i) {
    uint8_t first = b[2 * i], second = b[2 * i + 1];
    out[i] = static_cast<char16_t>(bigEndian ? (first << 8 | second) : (second << 8 | first));
  }
  return true;
}

void appendCodePoint(std::u16string &out, uint32_t c) {
  if (c <= 0xFFFF) {
    out += static_cast<char16_t>(c);
  } else {
    out += static_cast<char16_t>(U16_LEAD(c));
    out += static_cast<char16_t>(U16_TRAIL(c));
  }
}

bool decodeUTF32(std::string_view bytes, bool bigEndian, std::u16string &out) {
  if (bytes.size() % 4)
    return false;
  const auto *b = reinterpret_cast<const uint8_t *>(bytes.data());
  out.reserve(bytes.size() / 4);
  for (size_t i = 0; i < bytes.size(); i += 4) {
    uint32_t c =
        bigEndian
            ? (uint32_t(b[i]) << 24 | uint32_t(b[i + 1]) << 16 | uint32_t(b[i + 2]) << 8 | b[i + 3])
            : (uint32_t(b[i + 3]) << 24 | uint32_t(b[i + 2]) << 16 | uint32_t(b[i + 1]) << 8 |
               b[i]);
    if (c > 0x10FFFF || U_IS_SURROGATE(c))
      return false;
    appendCodePoint(out, c);
  }
  return true;
}

// Reads an optional byte-order mark; without one the data is big-endian.
bool decodeMarkedUTF16(std::string_view bytes, std::u16string &out) {
  bool bigEndian = true;
  if (bytes.starts_with(utf16BEMark) || bytes.starts_with(utf16LEMark)) {
    bigEndian = bytes.starts_with(utf16BEMark);
    bytes.remove_prefix(2);
  }
  return decodeUTF16(bytes, bigEndian, out);
}

bool decodeMarkedUTF32(std::string_view bytes, std::u16string &out) {
  bool bigEndian = true;
  if (bytes.starts_with(utf32BEMark) || bytes.starts_with(utf32LEMark)) {
    bigEndian = bytes.starts_with(utf32BEMark);
    bytes.remove_prefix(4);
  }
  return decodeUTF32(bytes, bigEndian, out);
}

// Code points of `text`, with an unpaired surrogate as -1.
template <class F> void forEachCodePoint(std::u16string_view text, F &&f) {
  for (size_t i = 0; i < text.size(); ++i) {
    char16_t c = text[i];
    if (U16_IS_LEAD(c) && i + 1 < text.size() && U16_IS_TRAIL(text[i + 1])) {
      f(static_cast<int32_t>(U16_GET_SUPPLEMENTARY(c, text[i + 1])));
      ++i;
    } else {
      f(U16_IS_SURROGATE(c) ? -1 : static_cast<int32_t>(c));
    }
  }
}

bool encodeUTF8(std::u16string_view text, bool lossy, std::string &out) {
  bool clean = true;
  forEachCodePoint(text, [&](int32_t c) { clean = clean && c >= 0; });
  if (clean) {
    out = toUTF8(text);
    return true;
  }
  if (!lossy)
    return false;
  std::u16string repaired;
  repaired.reserve(text.size());
  forEachCodePoint(
      text, [&](int32_t c) { appendCodePoint(repaired, static_cast<uint32_t>(c < 0 ? '?' : c)); });
  out = toUTF8(repaired);
  return true;
}

void appendUnit(std::string &out, uint32_t value, int bytes, bool bigEndian) {
  for (int i = 0; i < bytes; ++i) {
    int shift = bigEndian ? 8 * (bytes - 1 - i) : 8 * i;
    out += static_cast<char>((value >> shift) & 0xFF);
  }
}

void encodeUTF16(std::u16string_view text, bool bigEndian, bool mark, std::string &out) {
  out.reserve(2 * text.size() + 2);
  if (mark)
    appendUnit(out, 0xFEFF, 2, bigEndian);
  for (char16_t c : text)
    appendUnit(out, c, 2, bigEndian);
}

bool encodeUTF32(std::u16string_view text, bool bigEndian, bool mark, bool lossy,
                 std::string &out) {
  bool ok = true;
  out.reserve(4 * text.size() + 4);
  if (mark)
    appendUnit(out, 0xFEFF, 4, bigEndian);
  forEachCodePoint(text, [&](int32_t c) {
    if (c < 0) {
      ok = ok && lossy;
      c = '?';
    }
    appendUnit(out, static_cast<uint32_t>(c), 4, bigEndian);
  });
  return ok;
}

bool decodeSingleByte(const ByteTable &table, std::string_view bytes, std::u16string &out) {
  out.resize(bytes.size());
  for (size_t i = 0; i < bytes.size(); ++i) {
    char16_t c = table.unit[static_cast<uint8_t>(bytes[i])];
    if (c == hole)
      return false;
    out[i] = c;
  }
  return true;
}

bool encodeSingleByte(const ByteTable &table, std::u16string_view text, bool lossy,
                      std::string &out) {
  out.reserve(text.size());
  std::optional<uint8_t> question = table.byteFor(u'?');
  for (size_t i = 0; i < text.size(); ++i) {
    if (auto byte = table.byteFor(text[i])) {
      out += static_cast<char>(*byte);
      continue;
    }
    if (!lossy || !question)
      return false;
    if (U16_IS_LEAD(text[i]) && i + 1 < text.size() && U16_IS_TRAIL(text[i + 1]))
      ++i; // one "?" for the whole character
    out += static_cast<char>(*question);
  }
  return true;
}

bool decodeWith(const EncodingInfo &info, std::string_view bytes, std::u16string &out) {
  switch (info.kind) {
  case Kind::UTF8:
    return decodeUTF8(bytes, out);
  case Kind::UTF16:
    return decodeMarkedUTF16(bytes, out);
  case Kind::UTF16BE:
  case Kind::UTF16LE:
    return decodeUTF16(bytes, info.kind == Kind::UTF16BE, out);
  case Kind::UTF32:
    return decodeMarkedUTF32(bytes, out);
  case Kind::UTF32BE:
  case Kind::UTF32LE:
    return decodeUTF32(bytes, info.kind == Kind::UTF32BE, out);
  case Kind::SingleByte:
    return decodeSingleByte(*byteTableFor(info), bytes, out);
  case Kind::Converter:
    if (bytes.empty())
      return true;
    if (UConverter *converter = converterFor(info))
      return decodeWithConverter(converter, bytes, out);
    return false;
  }
  return false;
}

bool encodeWith(const EncodingInfo &info, std::u16string_view text, bool lossy, std::string &out) {
  switch (info.kind) {
  case Kind::UTF8:
    return encodeUTF8(text, lossy, out);
  case Kind::UTF16:
    encodeUTF16(text, false, true, out);
    return true;
  case Kind::UTF16BE:
  case Kind::UTF16LE:
    encodeUTF16(text, info.kind == Kind::UTF16BE, false, out);
    return true;
  case Kind::UTF32:
    return encodeUTF32(text, false, true, lossy, out);
  case Kind::UTF32BE:
  case Kind::UTF32LE:
    return encodeUTF32(text, info.kind == Kind::UTF32BE, false, lossy, out);
  case Kind::SingleByte:
    return encodeSingleByte(*byteTableFor(info), text, lossy, out);
  case Kind::Converter:
    if (text.empty())
      return true;
    if (UConverter *converter = converterFor(info))
      return encodeWithConverter(converter, text, lossy, out);
    return false;
  }
  return false;
}

ErrorPtr encodingError(int64_t code, StringEncoding encoding) {
  std::u16string name = localizedNameOfStringEncoding(encoding);
  if (name.empty())
    name = u"number " + u16(std::to_string(encoding));
  std::u16string description =
      code == FileReadInapplicableStringEncodingError
          ? u"The data couldn\u2019t be read using text encoding " + name + u"."
          : u"The text couldn\u2019t be written using text encoding " + name + u".";
  auto info = Dictionary::create();
  info->setObject(Value(description), LocalizedDescriptionKey);
  info->setObject(Value(encoding), StringEncodingErrorKey);
  return Error::errorWithDomain(CocoaErrorDomain, code, info);
}

// UTF-16 without a mark shows itself by zero bytes on one side of most units (Latin text)
// and almost none on the other.
std::optional<StringEncoding> unmarkedUTF16(std::string_view bytes) {
  if (bytes.size() < 2 || bytes.size() % 2)
    return std::nullopt;
  size_t sample = std::min<size_t>(bytes.size(), 4096);
  size_t evenZeros = 0, oddZeros = 0;
  for (size_t i = 0; i < sample; ++i)
    if (bytes[i] == 0)
      ++(i % 2 ? oddZeros : evenZeros);
  size_t units = sample / 2;
  if (oddZeros * 2 >= units && evenZeros * 10 < oddZeros)
    return UTF16LittleEndianStringEncoding;
  if (evenZeros * 2 >= units && oddZeros * 10 < evenZeros)
    return UTF16BigEndianStringEncoding;
  return std::nullopt;
}

bool equalsIgnoringASCIICase(std::string_view a, std::string_view b) {
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
           auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; };
           return lower(x) == lower(y);
         });
}

} // namespace

const std::vector<StringEncoding> &availableStringEncodings() {
  static const std::vector<StringEncoding> all = [] {
    std::vector<StringEncoding> list;
    for (const EncodingInfo &info : encodingTable)
      list.push_back(info.encoding);
    return list;
  }();
  return all;
}

std::u16string localizedNameOfStringEncoding(StringEncoding encoding) {
  const EncodingInfo *info = infoFor(encoding);
  return info ? std::u16string(info->name) : std::u16string();
}

bool isSingleByteEncoding(StringEncoding encoding) {
  const EncodingInfo *info = infoFor(encoding);
  return info && info->kind == Kind::SingleByte;
}

std::optional<std::u16string> decode(std::string_view bytes, StringEncoding encoding,
                                     ErrorPtr *error) {
  std::u16string out;
  const EncodingInfo *info = infoFor(encoding);
  if (!info || !decodeWith(*info, bytes, out)) {
    setError(error, encodingError(FileReadInapplicableStringEncodingError, encoding));
    return std::nullopt;
  }
  return out;
}

std::optional<std::string> encode(std::u16string_view string, StringEncoding encoding, bool lossy,
                                  ErrorPtr *error) {
  std::string out;
  const EncodingInfo *info = infoFor(encoding);
  if (!info || !encodeWith(*info, string, lossy, out)) {
    setError(error, encodingError(FileWriteInapplicableStringEncodingError, encoding));
    return std::nullopt;
  }
  return out;
}

std::optional<uint8_t> byteForCharacter(char16_t character, StringEncoding encoding) {
  const EncodingInfo *info = infoFor(encoding);
  if (!info || info->kind != Kind::SingleByte)
    return std::nullopt;
  return byteTableFor(*info)->byteFor(character);
}

std::optional<char16_t> characterForByte(uint8_t byte, StringEncoding encoding) {
  const EncodingInfo *info = infoFor(encoding);
  if (!info || info->kind != Kind::SingleByte)
    return std::nullopt;
  char16_t c = byteTableFor(*info)->unit[byte];
  return c == hole ? std::nullopt : std::optional<char16_t>(c);
}

std::optional<std::u16string> stringWithData(std::string_view bytes, StringEncoding *usedEncoding,
                                             ErrorPtr *) {
  std::u16string text;
  if (decodeUTF8(bytes, text)) {
    if (usedEncoding)
      *usedEncoding = UTF8StringEncoding;
    return text;
  }
  return decodePlainText(bytes, nullptr);
}

std::u16string decodePlainText(std::string_view bytes, StringEncoding *usedEncoding) {
  std::u16string text;
  auto attempt = [&](StringEncoding encoding) {
    text.clear();
    if (!decodeWith(*infoFor(encoding), bytes, text))
      return false;
    if (usedEncoding)
      *usedEncoding = encoding;
    return true;
  };
  // A UTF-32 little-endian mark begins like the UTF-16 one, so UTF-32 is tried first.
  if ((bytes.starts_with(utf32BEMark) || bytes.starts_with(utf32LEMark)) &&
      attempt(UTF32StringEncoding))
    return text;
  if ((bytes.starts_with(utf16BEMark) || bytes.starts_with(utf16LEMark)) &&
      attempt(UTF16StringEncoding))
    return text;
  if (auto guess = unmarkedUTF16(bytes); guess && attempt(*guess))
    return text;
  if (attempt(UTF8StringEncoding) || attempt(WindowsCP1252StringEncoding))
    return text;
  attempt(MacOSRomanStringEncoding); // maps every byte
  return text;
}

std::optional<StringEncoding> encodingForIANACharSetName(std::u16string_view name) {
  std::string ascii;
  for (char16_t c : name) {
    if (c > 0x7E)
      return std::nullopt;
    if (c != u' ' && c != u'\t')
      ascii += static_cast<char>(c);
  }
  if (ascii.empty())
    return std::nullopt;
  for (const EncodingInfo &info : encodingTable)
    if (equalsIgnoringASCIICase(ascii, info.charset))
      return info.encoding;
  for (std::string_view symbol : {"symbol", "x-mac-symbol", "adobe-symbol"})
    if (equalsIgnoringASCIICase(ascii, symbol))
      return SymbolStringEncoding;
  if (equalsIgnoringASCIICase(ascii, "nextstep"))
    return NEXTSTEPStringEncoding;
  // Any other alias ICU knows resolves to the same converter as one of the table's names.
  UErrorCode status = U_ZERO_ERROR;
  const char *canonical = ucnv_getAlias(ascii.c_str(), 0, &status);
  if (U_FAILURE(status) || !canonical)
    return std::nullopt;
  for (const EncodingInfo &info : encodingTable) {
    if (!info.converter)
      continue;
    status = U_ZERO_ERROR;
    const char *own = ucnv_getAlias(info.converter, 0, &status);
    if (U_SUCCESS(status) && own && std::strcmp(own, canonical) == 0)
      return info.encoding;
  }
  return std::nullopt;
}

std::u16string IANACharSetNameOfEncoding(StringEncoding encoding) {
  const EncodingInfo *info = infoFor(encoding);
  return info ? u16(info->charset) : std::u16string();
}

std::optional<StringEncoding> encodingForWindowsCodepage(uint32_t codepage) {
  if (codepage == 0)
    return std::nullopt;
  for (const EncodingInfo &info : encodingTable)
    if (info.codepage == codepage)
      return info.encoding;
  return std::nullopt;
}

std::optional<uint32_t> windowsCodepageForEncoding(StringEncoding encoding) {
  const EncodingInfo *info = infoFor(encoding);
  if (!info || info->codepage == 0)
    return std::nullopt;
  return info->codepage;
}

} // namespace vl::ns
