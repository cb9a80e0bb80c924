// Tests of text encodings: byte tables, strict decoding, lossy encoding, the Unicode forms,
// plain-text detection, charset names and Windows code pages.
#include "ns/StringEncoding.h"

#include <gtest/gtest.h>
#include <unicode/uchar.h>

#include <atomic>
#include <thread>

using namespace vl::ns;

namespace {

std::string bytes(std::initializer_list<int> values) {
  std::string out;
  for (int v : values)
    out += static_cast<char>(v);
  return out;
}

std::string charName(char16_t c) {
  char name[128];
  UErrorCode status = U_ZERO_ERROR;
  u_charName(c, U_UNICODE_CHAR_NAME, name, sizeof name, &status);
  return name;
}

constexpr StringEncoding registry(uint32_t number) {
  return 0x80000000ULL | number;
}

} // namespace

TEST(StringEncodingTables, MacRomanHighHalf) {
  const std::pair<int, char16_t> known[] = {
      {0x80, 0x00C4}, {0x8E, 0x00E9}, {0xA5, 0x2022}, {0xAA, 0x2122}, {0xC9, 0x2026},
      {0xCA, 0x00A0}, {0xD0, 0x2013}, {0xD2, 0x201C}, {0xD5, 0x2019}, {0xDB, 0x20AC},
      {0xDE, 0xFB01}, {0xF0, 0xF8FF}, {0xF5, 0x0131}, {0xFF, 0x02C7},
  };
  for (auto [byte, unit] : known) {
    EXPECT_EQ(characterForByte(static_cast<uint8_t>(byte), MacOSRomanStringEncoding), unit)
        << std::hex << byte;
    EXPECT_EQ(byteForCharacter(unit, MacOSRomanStringEncoding), byte) << std::hex << byte;
  }
  // Every byte is defined, and each decodes to a character that encodes back to it.
  for (int b = 0; b < 256; ++b) {
    auto unit = characterForByte(static_cast<uint8_t>(b), MacOSRomanStringEncoding);
    ASSERT_TRUE(unit) << b;
    EXPECT_EQ(byteForCharacter(*unit, MacOSRomanStringEncoding), b);
  }
  EXPECT_EQ(byteForCharacter(0x0105, MacOSRomanStringEncoding), std::nullopt); // ą
  EXPECT_EQ(byteForCharacter(0x00A4, MacOSRomanStringEncoding), std::nullopt); // ¤ gave way to €
}

TEST(StringEncodingTables, Symbol) {
  const std::pair<int, char16_t> known[] = {
      {0x61, 0x03B1}, {0x41, 0x0391}, {0xA5, 0x221E}, {0xB9, 0x2260}, {0x22, 0x2200},
      {0xE5, 0x2211}, {0xB4, 0x00D7}, {0x30, 0x0030}, {0x2D, 0x2212}, {0xA0, 0x20AC},
  };
  for (auto [byte, unit] : known)
    EXPECT_EQ(characterForByte(static_cast<uint8_t>(byte), SymbolStringEncoding), unit)
        << std::hex << byte;
  // The letter positions hold Greek letters only.
  for (int b = 0x41; b <= 0x7A; ++b) {
    if (b > 0x5A && b < 0x61)
      continue;
    auto unit = characterForByte(static_cast<uint8_t>(b), SymbolStringEncoding);
    ASSERT_TRUE(unit) << std::hex << b;
    EXPECT_NE(charName(*unit).find("GREEK"), std::string::npos) << std::hex << b;
  }
  EXPECT_EQ(characterForByte(0x80, SymbolStringEncoding), std::nullopt);
  // Other spellings of the same signs encode to the same byte.
  EXPECT_EQ(byteForCharacter(0x00B5, SymbolStringEncoding), 0x6D); // micro sign
  EXPECT_EQ(byteForCharacter(0x00AE, SymbolStringEncoding), 0xD2); // the serif one wins
  EXPECT_EQ(byteForCharacter(u'a', SymbolStringEncoding), std::nullopt);
  EXPECT_EQ(decode(bytes({0x61, 0x2B, 0x62, 0xB9, 0x70}), SymbolStringEncoding),
            u"\u03B1+\u03B2\u2260\u03C0");
  EXPECT_EQ(encode(u"\u03B1 \u2264 \u221E", SymbolStringEncoding),
            bytes({0x61, 0x20, 0xA3, 0x20, 0xA5}));
}

TEST(StringEncodingTables, NEXTSTEPAndWindowsCodePages) {
  const std::tuple<int, StringEncoding, char16_t> known[] = {
      {0x80, NEXTSTEPStringEncoding, 0x00A0},      {0xAE, NEXTSTEPStringEncoding, 0xFB01},
      {0xD0, NEXTSTEPStringEncoding, 0x2014},      {0xFB, NEXTSTEPStringEncoding, 0x00DF},
      {0x80, WindowsCP1252StringEncoding, 0x20AC}, {0x9F, WindowsCP1252StringEncoding, 0x0178},
      {0xC0, WindowsCP1251StringEncoding, 0x0410}, {0xC1, WindowsCP1253StringEncoding, 0x0391},
      {0xF0, WindowsCP1254StringEncoding, 0x011F}, {0xB9, WindowsCP1250StringEncoding, 0x0105},
      {0x81, ISOLatin1StringEncoding, 0x0081},
  };
  for (auto [byte, encoding, unit] : known)
    EXPECT_EQ(characterForByte(static_cast<uint8_t>(byte), encoding), unit) << encoding;
  EXPECT_EQ(characterForByte(0xFE, NEXTSTEPStringEncoding), std::nullopt);
  for (int hole : {0x81, 0x8D, 0x8F, 0x90, 0x9D})
    EXPECT_EQ(characterForByte(static_cast<uint8_t>(hole), WindowsCP1252StringEncoding),
              std::nullopt)
        << std::hex << hole;
  // Multi-byte encodings have no one-byte lookups.
  EXPECT_EQ(characterForByte(0x41, ShiftJISStringEncoding), std::nullopt);
}

TEST(StringEncodingDecode, StrictFailures) {
  for (const std::string &bad :
       {bytes({0xC3, 0x28}), bytes({0xC0, 0xAF}), bytes({0xED, 0xA0, 0x80}),
        bytes({0x61, 0xE2, 0x82}), bytes({0xFF})}) {
    ErrorPtr error;
    EXPECT_EQ(decode(bad, UTF8StringEncoding, &error), std::nullopt);
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code(), FileReadInapplicableStringEncodingError);
  }
  EXPECT_EQ(decode(bytes({0x61, 0x81}), WindowsCP1252StringEncoding), std::nullopt);
  EXPECT_EQ(decode(bytes({0x61, 0x80}), WindowsCP1252StringEncoding), u"a\u20AC");
  EXPECT_EQ(decode(bytes({0x82}), ShiftJISStringEncoding), std::nullopt); // cut-off lead byte
  EXPECT_EQ(decode("abc", 999999), std::nullopt);
}

TEST(StringEncodingDecode, MultiByteEncodings) {
  EXPECT_EQ(decode(bytes({0x82, 0xA0, 0x5C, 0x7E}), ShiftJISStringEncoding), u"\u3042\\~");
  EXPECT_EQ(decode("\x1B$B$\"\x1B(B", ISO2022JPStringEncoding), u"\u3042");
  EXPECT_EQ(decode(bytes({0xA4, 0xA2}), JapaneseEUCStringEncoding), u"\u3042");
  auto jis = encode(u"a\u3042b", ISO2022JPStringEncoding);
  ASSERT_TRUE(jis);
  EXPECT_EQ(decode(*jis, ISO2022JPStringEncoding), u"a\u3042b");
}

TEST(StringEncodingEncode, StrictAndLossy) {
  ErrorPtr error;
  EXPECT_EQ(encode(u"a\u20ACb", ASCIIStringEncoding, false, &error), std::nullopt);
  ASSERT_TRUE(error);
  EXPECT_EQ(error->code(), FileWriteInapplicableStringEncodingError);
  EXPECT_EQ(encode(u"a\u20ACb", ASCIIStringEncoding, true), "a?b");
  EXPECT_EQ(encode(u"x\U0001F600y", WindowsCP1252StringEncoding, true), "x?y");
  EXPECT_EQ(encode(u"\u00E9\u3042", ShiftJISStringEncoding, true), "?\x82\xA0");
  std::u16string lone = u"a";
  lone += static_cast<char16_t>(0xD800);
  lone += u'b';
  EXPECT_EQ(encode(lone, UTF8StringEncoding), std::nullopt);
  EXPECT_EQ(encode(lone, UTF8StringEncoding, true), "a?b");
}

TEST(StringEncodingUnicode, ByteOrders) {
  EXPECT_EQ(encode(u"A\u00E9", UTF16StringEncoding), bytes({0xFF, 0xFE, 0x41, 0, 0xE9, 0}));
  EXPECT_EQ(encode(u"\U0001F600", UTF32BigEndianStringEncoding), bytes({0, 1, 0xF6, 0}));
  EXPECT_EQ(encode(u"A", UTF32StringEncoding), bytes({0xFF, 0xFE, 0, 0, 0x41, 0, 0, 0}));

  EXPECT_EQ(decode(bytes({0xFF, 0xFE, 0x41, 0}), UTF16StringEncoding), u"A");
  EXPECT_EQ(decode(bytes({0, 0x41}), UTF16StringEncoding), u"A"); // no mark: big-endian
  EXPECT_EQ(decode(bytes({0xFF, 0xFE, 0x41, 0}), UTF16LittleEndianStringEncoding), u"\uFEFFA");
  EXPECT_EQ(decode(bytes({0, 0x41, 0}), UTF16BigEndianStringEncoding), std::nullopt);
  EXPECT_EQ(decode(bytes({0, 0xD8, 0, 0}), UTF32LittleEndianStringEncoding), std::nullopt);
  EXPECT_EQ(decode("\xEF\xBB\xBFok", UTF8StringEncoding), u"ok");

  std::u16string text = u"Fade in: \u201CCaf\u00E9\u201D \U0001F3AC";
  for (StringEncoding e : {UTF8StringEncoding, UTF16StringEncoding, UTF16BigEndianStringEncoding,
                           UTF16LittleEndianStringEncoding, UTF32StringEncoding,
                           UTF32BigEndianStringEncoding, UTF32LittleEndianStringEncoding}) {
    auto encoded = encode(text, e);
    ASSERT_TRUE(encoded) << e;
    EXPECT_EQ(decode(*encoded, e), text) << e;
  }
}

TEST(StringEncodingDetection, UTF8FirstThenPlainTextGuesses) {
  StringEncoding used = 0;
  EXPECT_EQ(stringWithData(Data::fromString("\xEF\xBB\xBF"
                                            "Caf\xC3\xA9"),
                           &used),
            u"Caf\u00E9");
  EXPECT_EQ(used, UTF8StringEncoding);
  // Not UTF-8: the plain-text guess decodes, and the encoding slot is left alone.
  used = 77;
  EXPECT_EQ(stringWithData(std::string("Caf\xE9 \x93q\x94"), &used), u"Caf\u00E9 \u201Cq\u201D");
  EXPECT_EQ(used, 77u);

  const std::tuple<std::string, std::u16string, StringEncoding> guesses[] = {
      {bytes({0xFE, 0xFF, 0, 0x41}), u"A", UTF16StringEncoding},
      {bytes({0xFF, 0xFE, 0, 0, 0x41, 0, 0, 0}), u"A", UTF32StringEncoding},
      // "FF FE 00 00" with a length that is no UTF-32 is UTF-16 text starting with U+0000.
      {bytes({0xFF, 0xFE, 0, 0, 0x41, 0}), std::u16string(u"\0A", 2), UTF16StringEncoding},
      {bytes({0x48, 0, 0x69, 0, 0x21, 0}), u"Hi!", UTF16LittleEndianStringEncoding},
      {bytes({0, 0x48, 0, 0x69}), u"Hi", UTF16BigEndianStringEncoding},
      {"\xE2\x80\x9Cq\xE2\x80\x9D", u"\u201Cq\u201D", UTF8StringEncoding},
      {"\x93q\x94", u"\u201Cq\u201D", WindowsCP1252StringEncoding},
      {"\x8E\x81", u"\u00E9\u00C5", MacOSRomanStringEncoding},
  };
  for (const auto &[data, text, encoding] : guesses) {
    EXPECT_EQ(decodePlainText(data, &used), text) << encoding;
    EXPECT_EQ(used, encoding);
  }
}

TEST(StringEncodingNames, CharsetNames) {
  const std::pair<const char16_t *, StringEncoding> names[] = {
      {u"utf8", UTF8StringEncoding},
      {u"CP1252", WindowsCP1252StringEncoding},
      {u"x-mac-roman", MacOSRomanStringEncoding},
      {u"sjis", ShiftJISStringEncoding},
      {u"ISO-8859-15", registry(0x020F)},
      {u"big5", registry(0x0423)},
      {u"symbol", SymbolStringEncoding},
  };
  for (const auto &[name, encoding] : names)
    EXPECT_EQ(encodingForIANACharSetName(name), encoding) << encoding;
  EXPECT_EQ(encodingForIANACharSetName(u"no-such-charset"), std::nullopt);
  // Each encoding has its preferred name.
  EXPECT_EQ(IANACharSetNameOfEncoding(UTF8StringEncoding), u"UTF-8");
  EXPECT_EQ(IANACharSetNameOfEncoding(MacOSRomanStringEncoding), u"macintosh");
  EXPECT_EQ(IANACharSetNameOfEncoding(424242), u"");
}

TEST(StringEncodingNames, WindowsCodePages) {
  const std::pair<uint32_t, StringEncoding> pages[] = {
      {1252, WindowsCP1252StringEncoding},
      {10000, MacOSRomanStringEncoding},
      {932, ShiftJISStringEncoding},
      {65001, UTF8StringEncoding},
      {936, registry(0x0421)},
  };
  for (auto [page, encoding] : pages) {
    EXPECT_EQ(encodingForWindowsCodepage(page), encoding) << page;
    EXPECT_EQ(windowsCodepageForEncoding(encoding), page) << page;
  }
  EXPECT_EQ(encodingForWindowsCodepage(12345), std::nullopt);
  EXPECT_EQ(windowsCodepageForEncoding(SymbolStringEncoding), std::nullopt);

  // Each code page decodes its own script.
  const std::tuple<uint32_t, std::string, std::u16string> samples[] = {
      {874, "\xA1", u"\u0E01"},     {932, "\x82\xA0", u"\u3042"}, {936, "\xB0\xA1", u"\u554A"},
      {949, "\xB0\xA1", u"\uAC00"}, {950, "\xA4\x40", u"\u4E00"}, {1255, "\xE0", u"\u05D0"},
      {1256, "\xC7", u"\u0627"},    {1257, "\xE0", u"\u0105"},
  };
  for (const auto &[page, encoded, text] : samples)
    EXPECT_EQ(decode(encoded, *encodingForWindowsCodepage(page)), text) << page;
}

TEST(StringEncodingNames, EveryEncodingIsUsable) {
  for (StringEncoding e : availableStringEncodings()) {
    EXPECT_FALSE(localizedNameOfStringEncoding(e).empty()) << e;
    std::u16string name = IANACharSetNameOfEncoding(e);
    EXPECT_EQ(encodingForIANACharSetName(name), e) << e;
    if (e == SymbolStringEncoding)
      continue; // its letters are Greek
    auto encoded = encode(u"Hello, world", e);
    ASSERT_TRUE(encoded) << e;
    EXPECT_EQ(decode(*encoded, e), u"Hello, world") << e;
  }
}

TEST(StringEncodingThreads, ConvertersAreNotShared) {
  std::string sjis;
  std::u16string expected;
  for (int i = 0; i < 500; ++i) {
    sjis += "\x82\xA0\x82\xA2x";
    expected += u"\u3042\u3044x";
  }
  std::atomic<int> wrong{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t)
    threads.emplace_back([&] {
      for (int round = 0; round < 40; ++round) {
        if (decode(sjis, ShiftJISStringEncoding) != expected)
          ++wrong;
        if (encode(expected, ShiftJISStringEncoding) != sjis)
          ++wrong;
      }
    });
  for (auto &thread : threads)
    thread.join();
  EXPECT_EQ(wrong.load(), 0);
}
