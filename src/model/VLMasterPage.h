// VLMasterPage: a page layout with the texts of its headers and footers.
#pragma once

#include "model/VLPageLayout.h"
#include "model/VLStyleObject.h"
#include "ns/AttributedString.h"
#include "ns/PrintInfo.h"

#include <memory>
#include <optional>
#include <string>

namespace vl {

class VLMasterPage;
using VLMasterPagePtr = std::shared_ptr<VLMasterPage>;

/// The running heads of a kind of page: the geometry (pageLayout), the normal header and
/// footer (used on right pages), and variants for the first page and for left pages, each
/// switched on by a flag. Readers file the page writers use under "Standard" in the
/// VLMasterPagesKey document attribute.
///
/// Texts are held by reference, not copied: a text given to a setter is shared with the
/// caller, and nil clears it. Turning a variant on starts it as a share of the normal text.
/// Nothing here posts notices; the layout announces its own changes.
///
/// Keyed coding writes the base's keys, then "PageLayout"; "_hasHeaders", "_hasFooters",
/// "_differentFirstHeader", "_differentFirstFooter", "_differentHeaders",
/// "_differentFooters" (booleans); "Header", "Footer", "FirstHeader", "FirstFooter",
/// "LeftHeader", "LeftFooter", "NextStyleName"; "_canMirrorPages" (boolean). Decoding goes
/// through the setters in that order, so the decoded texts replace what the flags copied.
/// While the text class cannot be archived, a text is archived as its plain string: the
/// words come back, their attributes do not.
class VLMasterPage : public VLStyleObject {
public:
  VL_OBJECT(VLMasterPage)

  /// No layout, no texts, every flag off.
  VLMasterPage() = default;
  static VLMasterPagePtr create() { return std::make_shared<VLMasterPage>(); }
  /// A new master page with a new VLPageLayout::pageLayoutWithPrintInfo; names, texts and
  /// flags are left to the caller.
  static VLMasterPagePtr masterPageWithPrintInfo(const ns::PrintInfo &printInfo);

  /// The geometry; null on a page made by the plain constructor until one is set.
  const VLPageLayoutPtr &pageLayout() const { return _pageLayout; }
  void setPageLayout(VLPageLayoutPtr layout) { _pageLayout = std::move(layout); }
  /// The name of the master page that follows this one; nil until set.
  const std::optional<std::u16string> &nextStyleName() const { return _nextStyleName; }
  void setNextStyleName(std::optional<std::u16string> name) { _nextStyleName = std::move(name); }

  // Plain flags.
  bool hasHeaders() const { return _hasHeaders; }
  void setHasHeaders(bool flag) { _hasHeaders = flag; }
  bool hasFooters() const { return _hasFooters; }
  void setHasFooters(bool flag) { _hasFooters = flag; }
  bool canMirrorPages() const { return _canMirrorPages; }
  void setCanMirrorPages(bool flag) { _canMirrorPages = flag; }

  // Variant flags. Setting a flag to the value it has does nothing. Otherwise turning it on
  // makes the variant text the normal text as it is now (the same object), and turning it
  // off clears the variant text.

  /// The first page has its own header (firstHeader, started from header).
  bool differentFirstHeader() const { return _differentFirstHeader; }
  void setDifferentFirstHeader(bool flag);
  /// Left pages have their own header (leftHeader, started from header).
  bool differentHeaders() const { return _differentHeaders; }
  void setDifferentHeaders(bool flag);
  /// The first page has its own footer (firstFooter, started from footer).
  bool differentFirstFooter() const { return _differentFirstFooter; }
  void setDifferentFirstFooter(bool flag);
  /// Left pages have their own footer (leftFooter, started from footer).
  bool differentFooters() const { return _differentFooters; }
  void setDifferentFooters(bool flag);

  // Texts; each may be null. Setting header or footer leaves the variants alone.

  /// The normal (right page) header.
  const ns::AttributedStringPtr &header() const { return _header; }
  void setHeader(ns::AttributedStringPtr text) { _header = std::move(text); }
  /// The normal (right page) footer.
  const ns::AttributedStringPtr &footer() const { return _footer; }
  void setFooter(ns::AttributedStringPtr text) { _footer = std::move(text); }
  const ns::AttributedStringPtr &firstHeader() const { return _firstHeader; }
  void setFirstHeader(ns::AttributedStringPtr text) { _firstHeader = std::move(text); }
  const ns::AttributedStringPtr &firstFooter() const { return _firstFooter; }
  void setFirstFooter(ns::AttributedStringPtr text) { _firstFooter = std::move(text); }
  const ns::AttributedStringPtr &leftHeader() const { return _leftHeader; }
  void setLeftHeader(ns::AttributedStringPtr text) { _leftHeader = std::move(text); }
  const ns::AttributedStringPtr &leftFooter() const { return _leftFooter; }
  void setLeftFooter(ns::AttributedStringPtr text) { _leftFooter = std::move(text); }

  void encodeWithCoder(ns::KeyedArchiver &coder) const override;
  void initWithCoder(ns::KeyedUnarchiver &coder) override;

protected:
  /// Keys named after the accessors ("pageLayout", "nextStyleName", "hasHeaders",
  /// "differentFirstHeader", "header", "leftFooter", ...). Writes go through the setters.
  bool kvcValueForKey(std::u16string_view key, ns::Value &value) override;
  bool kvcSetValueForKey(std::u16string_view key, const ns::Value &value) override;

private:
  /// Stores `on` in `flag` if it differs, starting `variant` from `normal` or clearing it.
  static void setVariantFlag(bool &flag, bool on, const ns::AttributedStringPtr &normal,
                             ns::AttributedStringPtr &variant);

  bool _differentFirstHeader = false;
  bool _differentHeaders = false;
  bool _differentFirstFooter = false;
  bool _differentFooters = false;
  bool _hasHeaders = false;
  bool _hasFooters = false;
  bool _canMirrorPages = false;
  ns::AttributedStringPtr _header;
  ns::AttributedStringPtr _footer;
  ns::AttributedStringPtr _firstHeader;
  ns::AttributedStringPtr _firstFooter;
  ns::AttributedStringPtr _leftHeader;
  ns::AttributedStringPtr _leftFooter;
  VLPageLayoutPtr _pageLayout;
  std::optional<std::u16string> _nextStyleName;
};

} // namespace vl
