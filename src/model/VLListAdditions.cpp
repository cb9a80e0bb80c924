// List additions to the platform's text list and mutable paragraph style.
#include "model/VLListAdditions.h"

#include "ns/String.h"

#include <algorithm>

namespace vl {

bool isOrderedList(const ns::TextList &list) {
  std::u16string_view format = list.markerFormat();
  size_t open = format.find(u'{');
  if (open == std::u16string_view::npos)
    return false;
  size_t close = format.find(u'}', open + 1);
  if (close == std::u16string_view::npos)
    return false;
  std::u16string keyword = ns::trimmed(format.substr(open + 1, close - open - 1));
  static constexpr std::u16string_view ordered[] = {
      u"decimal",     u"upper-roman", u"lower-roman", u"upper-alpha",       u"upper-latin",
      u"lower-alpha", u"lower-latin", u"octal",       u"upper-hexadecimal", u"lower-hexadecimal"};
  return std::find(std::begin(ordered), std::end(ordered), keyword) != std::end(ordered);
}

void applyLists(ns::MutableParagraphStyle &style, const std::vector<ns::TextListPtr> *lists) {
  double firstLine = style.firstLineHeadIndent();
  size_t oldCount = style.textLists().size();
  double oldIndent = oldCount ? static_cast<double>(oldCount) * VLListLevelIndent + firstLine : 0;
  // Without lists the indent goes to 0, not to the first line indent.
  double newIndent = lists ? static_cast<double>(lists->size()) * VLListLevelIndent + firstLine : 0;

  double cleared = std::max(oldIndent, newIndent);
  std::vector<ns::TextTabPtr> tabs;
  for (const auto &tab : style.tabStops())
    if (tab->location() > cleared)
      tabs.push_back(tab);
  style.setTabStops(std::move(tabs));

  if (lists && !lists->empty()) {
    double marker =
        static_cast<double>(lists->size() - 1) * VLListLevelIndent + firstLine + VLListMarkerOffset;
    style.addTabStop(ns::TextTab::create(ns::LeftTabStopType, marker));
    style.addTabStop(ns::TextTab::create(ns::LeftTabStopType, newIndent));
  }
  // A shallower list frees a band that gets its default tab stops back.
  if (oldIndent > newIndent)
    for (const auto &tab : ns::ParagraphStyle::defaultParagraphStyle()->tabStops())
      if (tab->tabStopType() == ns::LeftTabStopType && tab->location() > newIndent &&
          tab->location() < oldIndent)
        style.addTabStop(tab);

  style.setHeadIndent(newIndent);
  style.setTextLists(lists ? *lists : std::vector<ns::TextListPtr>());
}

} // namespace vl
