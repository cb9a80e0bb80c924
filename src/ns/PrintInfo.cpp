// The shared print information.
#include "ns/PrintInfo.h"

namespace vl::ns {

namespace {
PrintInfoPtr &shared() {
  static PrintInfoPtr printInfo = std::make_shared<PrintInfo>();
  return printInfo;
}
} // namespace

const PrintInfoPtr &PrintInfo::sharedPrintInfo() {
  return shared();
}

void PrintInfo::setSharedPrintInfo(PrintInfoPtr printInfo) {
  shared() = printInfo ? std::move(printInfo) : std::make_shared<PrintInfo>();
}

bool PrintInfo::isEqual(const Object &other) const {
  auto *o = dynamic_cast<const PrintInfo *>(&other);
  return o && o->paperSize_ == paperSize_ && o->orientation_ == orientation_ &&
         o->leftMargin_ == leftMargin_ && o->rightMargin_ == rightMargin_ &&
         o->topMargin_ == topMargin_ && o->bottomMargin_ == bottomMargin_ &&
         o->horizontallyCentered_ == horizontallyCentered_ &&
         o->verticallyCentered_ == verticallyCentered_;
}

} // namespace vl::ns
