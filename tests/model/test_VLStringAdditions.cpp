// String helpers: identifiers, decoding, base names, trailing numbers and newlines.
#include "model/VLStringAdditions.h"

#include <gtest/gtest.h>

#include <cwctype>

using namespace vl;

TEST(VLStringAdditions, IdentifiersAreFreshAndWellFormed) {
  std::u16string uuid = UUID();
  ASSERT_EQ(uuid.size(), 36u);
  for (size_t i : {8, 13, 18, 23})
    EXPECT_EQ(uuid[i], u'-');

  std::u16string id = uniqueID();
  ASSERT_EQ(id.size(), 34u);
  EXPECT_EQ(id.substr(0, 2), u"id");
  for (char16_t c : id.substr(2))
    EXPECT_TRUE(std::iswxdigit(static_cast<wint_t>(c))) << static_cast<int>(c);
  EXPECT_NE(uniqueID(), id);
}

TEST(VLStringAdditions, DecodesUTF8FirstAndOtherwiseGuesses) {
  ns::StringEncoding used = 999;
  auto utf8 = stringWithData(ns::Data::fromString("caf\xc3\xa9"), &used, nullptr);
  EXPECT_EQ(utf8, u"caf\u00e9");
  EXPECT_EQ(used, 4u);

  used = 999;
  auto latin = stringWithData(ns::Data::fromString("caf\xe9"), &used, nullptr);
  EXPECT_EQ(latin, u"caf\u00e9") << "not UTF-8: the plain text guess";
  EXPECT_EQ(used, 999u) << "the encoding slot is left alone";

  EXPECT_EQ(stringWithData(ns::Data(), nullptr, nullptr), u"");
}

TEST(VLStringAdditions, BasenameDropsDirectoryAndExtension) {
  EXPECT_EQ(basename(u"/Users/a/Chapter 1.rtf"), u"Chapter 1");
  EXPECT_EQ(basename(u"archive.tar.gz"), u"archive.tar");
  EXPECT_EQ(basename(u""), u"");
}

TEST(VLStringAdditions, DeletesOnlyANumberAtTheEnd) {
  EXPECT_EQ(stringByDeletingLastInteger(u"Chapter 12"), u"Chapter ");
  EXPECT_EQ(stringByDeletingLastInteger(u"A1b"), u"A1b");
  EXPECT_EQ(stringByDeletingLastInteger(u"Scene 3 take 14"), u"Scene 3 take ");
  EXPECT_EQ(stringByDeletingLastInteger(u"2024"), u"");
  EXPECT_EQ(stringByDeletingLastInteger(u"Part \u0663"), u"Part \u0663")
      << "only ASCII digits count";
}

TEST(VLStringAdditions, ReplacesEachNewlineByOneBlank) {
  EXPECT_EQ(stringByDeletingNewlines(u"a\r\nb\u2029c\u2028d\ve"), u"a  b c d e");
  EXPECT_EQ(stringByDeletingNewlines(u"no breaks"), u"no breaks");
}
