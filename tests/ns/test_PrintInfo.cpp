// The shared print information: defaults, changes in place, and copies.
#include "ns/PrintInfo.h"

#include <gtest/gtest.h>

using namespace vl::ns;

TEST(PrintInfo, SharedInstanceHasLetterDefaultsAndChangesInPlace) {
  PrintInfo::resetSharedPrintInfo();
  const PrintInfoPtr &shared = PrintInfo::sharedPrintInfo();
  EXPECT_EQ(shared->paperSize(), MakeSize(612, 792));
  EXPECT_EQ(shared->orientation(), PortraitOrientation);
  EXPECT_EQ(shared->leftMargin(), 72);
  shared->setLeftMargin(108);
  shared->setHorizontallyCentered(false);
  EXPECT_EQ(PrintInfo::sharedPrintInfo()->leftMargin(), 108);
  EXPECT_FALSE(PrintInfo::sharedPrintInfo()->isHorizontallyCentered());

  auto copy = copyOf(*PrintInfo::sharedPrintInfo());
  EXPECT_TRUE(copy->isEqual(*PrintInfo::sharedPrintInfo()));
  copy->setOrientation(LandscapeOrientation);
  EXPECT_EQ(PrintInfo::sharedPrintInfo()->orientation(), PortraitOrientation);

  PrintInfo::resetSharedPrintInfo();
  EXPECT_EQ(PrintInfo::sharedPrintInfo()->leftMargin(), 72);
  EXPECT_TRUE(PrintInfo::sharedPrintInfo()->isHorizontallyCentered());
}
