// Page layouts: print information, the band geometry, validators, change notices and coding.
#include "ModelTestSupport.h"
#include "model/VLPageLayout.h"
#include "ns/Assert.h"

#include <gtest/gtest.h>

using namespace vl;
using vl::test::LayoutNotices;

namespace {

ns::PrintInfo printerMargins(double top, double bottom) {
  ns::PrintInfo info;
  info.setTopMargin(top);
  info.setBottomMargin(bottom);
  return info;
}

VLPageLayoutPtr layoutWithPrinterMargins(double top, double bottom) {
  return VLPageLayout::pageLayoutWithPrintInfo(printerMargins(top, bottom));
}

} // namespace

TEST(VLPageLayout, CarvesA35PointBandOutOfThePrinterMargins) {
  ns::PrintInfo info;
  info.setPaperSize({595, 842});
  info.setOrientation(ns::LandscapeOrientation);
  info.setLeftMargin(90);
  auto layout = VLPageLayout::pageLayoutWithPrintInfo(info); // margins 72
  EXPECT_EQ(layout->pageSize(), (ns::Size{595, 842}));
  EXPECT_EQ(layout->orientation(), ns::LandscapeOrientation);
  EXPECT_EQ(layout->leftMargin(), 90);
  EXPECT_EQ(layout->rightMargin(), 72);
  EXPECT_EQ(layout->topMargin(), 37.0);
  EXPECT_EQ(layout->headerStyle()->minimumHeight(), 35.0);
  EXPECT_EQ(layout->headerStyle()->bottomMargin(), 37.0);
  EXPECT_EQ(layout->contentTopMargin(), 72.0);
  EXPECT_EQ(layout->bottomMargin(), 37.0);
  EXPECT_EQ(layout->contentBottomMargin(), 72.0);

  auto small = layoutWithPrinterMargins(20, 72.5); // not clamped; fractions go to the band
  EXPECT_EQ(small->topMargin(), -15.0);
  EXPECT_EQ(small->headerStyle()->minimumHeight(), 35.0);
  EXPECT_EQ(small->contentTopMargin(), 20.0);
  EXPECT_EQ(small->footerStyle()->minimumHeight(), 35.5);
}

TEST(VLPageLayout, ZeroPrinterMarginLeavesMarginAndBandAlone) {
  auto layout = layoutWithPrinterMargins(72, 72);
  layout->setHeaderSpacing(10);
  layout->setStateWithPrintInfo(printerMargins(0, 0));
  EXPECT_EQ(layout->topMargin(), 10);
  EXPECT_EQ(layout->headerStyle()->minimumHeight(), 62);
  EXPECT_EQ(layout->bottomMargin(), 37);
  EXPECT_EQ(layout->footerStyle()->minimumHeight(), 35);
}

TEST(VLPageLayout, SpacingKeepsTheTextAndContentMarginKeepsTheEdge) {
  auto layout = layoutWithPrinterMargins(72, 72);
  layout->setHeaderSpacing(20);
  EXPECT_EQ(layout->topMargin(), 20);
  EXPECT_EQ(layout->headerStyle()->minimumHeight(), 52);
  EXPECT_EQ(layout->contentTopMargin(), 72);
  layout->setFooterSpacing(50);
  EXPECT_EQ(layout->footerStyle()->minimumHeight(), 22);
  EXPECT_EQ(layout->contentBottomMargin(), 72);

  layout->setContentTopMargin(100);
  EXPECT_EQ(layout->headerSpacing(), 20);
  EXPECT_EQ(layout->headerStyle()->minimumHeight(), 80);
  layout->setContentBottomMargin(40);
  EXPECT_EQ(layout->footerSpacing(), 50);
  EXPECT_EQ(layout->footerStyle()->minimumHeight(), -10);

  // Without bands the margins alone count, and nothing crashes.
  layout->setHeaderStyle(nullptr);
  layout->setFooterStyle(nullptr);
  layout->setHeaderSpacing(30);
  layout->setContentBottomMargin(60);
  EXPECT_EQ(layout->contentTopMargin(), 30);
  EXPECT_EQ(layout->contentBottomMargin(), 50);
}

TEST(VLPageLayout, ValidatorsCorrectToTheRangeAndAlwaysAccept) {
  auto layout = VLPageLayout::pageLayoutWithPrintInfo(ns::PrintInfo()); // 612 x 792
  ns::ErrorPtr error;
  ns::Value number(500);
  EXPECT_TRUE(layout->validateLeftMargin(&number, &error));
  EXPECT_DOUBLE_EQ(number.doubleValue(), 244.8);
  number = -1;
  EXPECT_TRUE(layout->validateRightMargin(&number, &error));
  EXPECT_EQ(number, ns::Value(0.0));
  number = 0.4 * 612; // the limit itself stands, as does anything inside
  EXPECT_TRUE(layout->validateLeftMargin(&number, &error));
  EXPECT_EQ(number.doubleValue(), 0.4 * 612);

  // The spacings and content margins are limited by the height.
  for (auto validate :
       {&VLPageLayout::validateHeaderSpacing, &VLPageLayout::validateFooterSpacing,
        &VLPageLayout::validateContentTopMargin, &VLPageLayout::validateContentBottomMargin}) {
    number = 500;
    EXPECT_TRUE(((*layout).*validate)(&number, &error));
    EXPECT_DOUBLE_EQ(number.doubleValue(), 0.4 * 792);
  }

  number = ns::Value();
  EXPECT_TRUE(layout->validateLeftMargin(&number, &error));
  EXPECT_TRUE(number.isNil());
  EXPECT_TRUE(layout->validateLeftMargin(nullptr, nullptr));
  EXPECT_FALSE(error);
}

TEST(VLPageLayout, EverySetterPostsOneNoticeWithTheLayout) {
  auto layout = VLPageLayout::create();
  LayoutNotices notices(*layout); // counts notices whose object is the layout
  for (auto set :
       {&VLPageLayout::setPageWidth, &VLPageLayout::setPageHeight, &VLPageLayout::setTopMargin,
        &VLPageLayout::setBottomMargin, &VLPageLayout::setLeftMargin, &VLPageLayout::setRightMargin,
        &VLPageLayout::setContentTopMargin, &VLPageLayout::setContentBottomMargin,
        &VLPageLayout::setHeaderSpacing, &VLPageLayout::setFooterSpacing})
    ((*layout).*set)(5);
  layout->setPageSize({1, 2});
  layout->setOrientation(1);
  layout->setHeaderStyle(VLHeaderFooterStyle::create());
  layout->setFooterStyle(VLHeaderFooterStyle::create());
  layout->setPageUsage(3);
  layout->setBackgroundImage(nullptr);
  layout->setFirstPageNumber(2);
  layout->setShouldMirrorPages(false);
  EXPECT_EQ(notices.count, 18);
  // Neither the nesting nor a band's own values announce anything.
  layout->setEditNesting(0);
  layout->headerStyle()->setMinimumHeight(99);
  EXPECT_EQ(notices.count, 18);
}

TEST(VLPageLayout, BracketsPostOnceAtTheOutermostEnd) {
  auto layout = VLPageLayout::create();
  LayoutNotices notices(*layout);
  layout->beginEditing();
  layout->setTopMargin(1);
  layout->beginEditing();
  layout->setLeftMargin(2);
  layout->endEditing();
  EXPECT_EQ(notices.count, 0);
  layout->endEditing();
  EXPECT_EQ(notices.count, 1);

  layout->beginEditing(); // a bracket that changed nothing still posts
  layout->endEditing();
  EXPECT_EQ(notices.count, 2);
  layout->setStateWithPrintInfo(ns::PrintInfo());
  EXPECT_EQ(notices.count, 3);
  EXPECT_THROW(layout->endEditing(), ns::InternalInconsistencyException);

  // Archived inside a bracket, the copy stays silent until its bracket is closed too.
  layout->beginEditing();
  auto decoded = vl::test::roundTrip(layout);
  ASSERT_TRUE(decoded);
  LayoutNotices decodedNotices(*decoded);
  decoded->setTopMargin(3);
  EXPECT_EQ(decodedNotices.count, 0);
  decoded->endEditing();
  EXPECT_EQ(decodedNotices.count, 1);
  layout->endEditing();
}

TEST(VLPageLayout, SpacingNoticeComesBeforeTheBandChanges) {
  auto layout = layoutWithPrinterMargins(72, 72);
  std::vector<double> seen;
  ns::NotificationCenter::defaultCenter().addObserver(
      &seen, [&](const ns::Notification &) { seen.push_back(layout->contentTopMargin()); },
      VLPageLayoutDidChangeNotification, layout.get());
  layout->setHeaderSpacing(20);
  layout->beginEditing();
  layout->setHeaderSpacing(30);
  layout->endEditing();
  EXPECT_EQ(seen, (std::vector<double>{55, 72})); // new edge 20 with the old band 35
  ns::NotificationCenter::defaultCenter().removeObserver(&seen);
}

TEST(VLPageLayout, MirroringIsPageUsageThreeAndKeyValueCodingGoesThroughTheSetters) {
  auto layout = layoutWithPrinterMargins(72, 72);
  LayoutNotices notices(*layout);
  layout->setValueForKey(ns::Value(20.0), u"headerSpacing");
  EXPECT_EQ(notices.count, 1);
  EXPECT_EQ(layout->valueForKey(u"contentTopMargin"), ns::Value(72.0));
  EXPECT_EQ(layout->valueForKeyPath(u"headerStyle.minimumHeight"), ns::Value(52.0));
  layout->setValueForKey(ns::Value(true), u"shouldMirrorPages");
  EXPECT_EQ(layout->valueForKey(u"pageUsage"), ns::Value(3));
  layout->setPageUsage(1); // other usages are carried, and do not mirror
  EXPECT_FALSE(layout->shouldMirrorPages());
  layout->setShouldMirrorPages(false);
  EXPECT_EQ(layout->pageUsage(), 0);
}

TEST(VLPageLayout, RoundTripsEveryField) {
  auto layout = layoutWithPrinterMargins(72.5, 80);
  layout->setName(u"pm1");
  layout->setPageSize({595.5, 842});
  layout->setOrientation(ns::LandscapeOrientation);
  layout->setRightMargin(54);
  layout->setPageUsage(7);
  layout->setFirstPageNumber(5);
  layout->headerStyle()->setLeftMargin(4);
  layout->headerStyle()->setDynamicSpacing(false);
  layout->setBackgroundImage(ns::Image::createWithPixels(1, 1, {255, 0, 0, 255}));

  auto decoded = vl::test::roundTrip(layout);
  ASSERT_TRUE(decoded);
  EXPECT_EQ(decoded->name(), u"pm1");
  EXPECT_EQ(decoded->displayName(), u"pm1") << "a layout without a display name shows its name";
  EXPECT_EQ(decoded->pageSize(), (ns::Size{595.5, 842}));
  EXPECT_EQ(decoded->orientation(), ns::LandscapeOrientation);
  EXPECT_EQ(decoded->topMargin(), 37);
  EXPECT_EQ(decoded->bottomMargin(), 45);
  EXPECT_EQ(decoded->rightMargin(), 54);
  EXPECT_EQ(decoded->pageUsage(), 7);
  EXPECT_EQ(decoded->firstPageNumber(), 5u);
  EXPECT_EQ(decoded->contentTopMargin(), 72.5);
  EXPECT_EQ(decoded->contentBottomMargin(), 80);
  EXPECT_EQ(decoded->headerStyle()->leftMargin(), 4);
  EXPECT_FALSE(decoded->headerStyle()->dynamicSpacing());
  ASSERT_TRUE(decoded->backgroundImage());
  EXPECT_EQ(decoded->backgroundImage()->pixels(), (std::vector<uint8_t>{255, 0, 0, 255}));
}

TEST(VLPageLayout, ArchivesUnderItsOwnKeys) {
  auto layout = VLPageLayout::create();
  EXPECT_EQ(vl::test::archivedKeys(ns::Value(layout), u"VLPageLayout"),
            vl::test::sorted({u"_name", u"_displayName", u"_properties", u"_pageSize",
                              u"_orientation", u"_pageUsage", u"_firstPageNumber", u"_topMargin",
                              u"_bottomMargin", u"_leftMargin", u"_rightMargin", u"_headerStyle",
                              u"_footerStyle", u"_backgroundImage", u"_editNesting"}));
  EXPECT_EQ(
      vl::test::archivedKeys(ns::Value(layout), u"VLHeaderFooterStyle"),
      vl::test::sorted({u"_name", u"_displayName", u"_properties", u"_minimumHeight", u"_topMargin",
                        u"_bottomMargin", u"_leftMargin", u"_rightMargin", u"_dynamicSpacing"}));
}
