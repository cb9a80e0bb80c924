// Master pages: header and footer variants, and coding.
#include "ModelTestSupport.h"
#include "model/VLMasterPage.h"

#include <gtest/gtest.h>

using namespace vl;

namespace {

ns::AttributedStringPtr text(std::u16string_view string) {
  return ns::AttributedString::create(string);
}

std::u16string stringOf(const ns::AttributedStringPtr &text) {
  return text ? std::u16string(text->string()) : u"(nil)";
}

} // namespace

TEST(VLMasterPage, TurningAVariantOnSharesTheNormalTextAndOffDropsIt) {
  auto page = VLMasterPage::create();
  auto header = text(u"Chapter");
  page->setHeader(header);
  page->setDifferentFirstHeader(true);
  EXPECT_EQ(page->firstHeader(), header);
  page->setDifferentFirstHeader(false);
  EXPECT_FALSE(page->firstHeader());

  page->setHeader(text(u"Part"));
  page->setDifferentFirstHeader(true);
  EXPECT_EQ(stringOf(page->firstHeader()), u"Part"); // the header as it is now

  // Setting the flag it already has keeps what was typed into the variant.
  page->setFirstHeader(text(u"Title page"));
  page->setDifferentFirstHeader(true);
  EXPECT_EQ(stringOf(page->firstHeader()), u"Title page");
  // And setting the normal text leaves the variant alone.
  page->setHeader(text(u"Other"));
  EXPECT_EQ(stringOf(page->firstHeader()), u"Title page");
}

TEST(VLMasterPage, EachVariantStartsFromItsNormalText) {
  auto page = VLMasterPage::create();
  page->setHeader(text(u"H"));
  page->setFooter(text(u"F"));
  page->setDifferentHeaders(true);
  page->setDifferentFirstFooter(true);
  page->setDifferentFooters(true);
  EXPECT_EQ(page->leftHeader(), page->header());
  EXPECT_EQ(page->firstFooter(), page->footer());
  EXPECT_EQ(page->leftFooter(), page->footer());
  EXPECT_FALSE(page->firstHeader());
  page->setDifferentFooters(false);
  EXPECT_FALSE(page->leftFooter());
  EXPECT_EQ(stringOf(page->firstFooter()), u"F");
}

TEST(VLMasterPage, RoundTripsLayoutFlagsAndTexts) {
  auto page = VLMasterPage::masterPageWithPrintInfo(ns::PrintInfo());
  page->setName(u"Standard");
  page->setNextStyleName(u"Left");
  page->setHasHeaders(true);
  page->setCanMirrorPages(true);
  page->setHeader(text(u"Header"));
  page->setFooter(text(u"Footer"));
  page->setDifferentFirstHeader(true);
  page->setDifferentFooters(true);
  // Variants typed apart from the normal texts must not be overwritten by the flags' copies.
  page->setFirstHeader(text(u"First"));
  page->setLeftFooter(nullptr);
  page->pageLayout()->setLeftMargin(108);

  auto decoded = vl::test::roundTrip(page);
  ASSERT_TRUE(decoded);
  EXPECT_EQ(decoded->name(), u"Standard");
  EXPECT_EQ(decoded->nextStyleName(), u"Left");
  EXPECT_TRUE(decoded->hasHeaders() && !decoded->hasFooters() && decoded->canMirrorPages());
  EXPECT_TRUE(decoded->differentFirstHeader() && decoded->differentFooters());
  EXPECT_FALSE(decoded->differentHeaders() || decoded->differentFirstFooter());
  EXPECT_EQ(stringOf(decoded->footer()), u"Footer");
  EXPECT_EQ(stringOf(decoded->firstHeader()), u"First");
  EXPECT_FALSE(decoded->leftFooter());
  ASSERT_TRUE(decoded->pageLayout());
  EXPECT_EQ(decoded->pageLayout()->leftMargin(), 108);
}

TEST(VLMasterPage, ArchivesUnderItsOwnKeys) {
  auto page = VLMasterPage::masterPageWithPrintInfo(ns::PrintInfo());
  EXPECT_EQ(vl::test::archivedKeys(ns::Value(page), u"VLMasterPage"),
            vl::test::sorted({u"_name", u"_displayName", u"_properties", u"PageLayout",
                              u"_hasHeaders", u"_hasFooters", u"_differentFirstHeader",
                              u"_differentFirstFooter", u"_differentHeaders", u"_differentFooters",
                              u"Header", u"Footer", u"FirstHeader", u"FirstFooter", u"LeftHeader",
                              u"LeftFooter", u"NextStyleName", u"_canMirrorPages"}));
}
