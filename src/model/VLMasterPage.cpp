// VLMasterPage: header and footer variants, key-value access and keyed coding.
#include "model/VLMasterPage.h"

#include <array>

namespace vl {

VL_REGISTER_CLASS(VLMasterPage);

namespace {

struct FlagField {
  std::u16string_view key;      // key-value coding
  std::u16string_view coderKey; // keyed archives
  bool (VLMasterPage::*get)() const;
  void (VLMasterPage::*set)(bool);
};

// In the order they are archived; canMirrorPages is archived after the texts.
constexpr std::array<FlagField, 7> kFlags{{
    {u"hasHeaders", u"_hasHeaders", &VLMasterPage::hasHeaders, &VLMasterPage::setHasHeaders},
    {u"hasFooters", u"_hasFooters", &VLMasterPage::hasFooters, &VLMasterPage::setHasFooters},
    {u"differentFirstHeader", u"_differentFirstHeader", &VLMasterPage::differentFirstHeader,
     &VLMasterPage::setDifferentFirstHeader},
    {u"differentFirstFooter", u"_differentFirstFooter", &VLMasterPage::differentFirstFooter,
     &VLMasterPage::setDifferentFirstFooter},
    {u"differentHeaders", u"_differentHeaders", &VLMasterPage::differentHeaders,
     &VLMasterPage::setDifferentHeaders},
    {u"differentFooters", u"_differentFooters", &VLMasterPage::differentFooters,
     &VLMasterPage::setDifferentFooters},
    {u"canMirrorPages", u"_canMirrorPages", &VLMasterPage::canMirrorPages,
     &VLMasterPage::setCanMirrorPages},
}};
constexpr size_t kArchivedBeforeTexts = 6;

struct TextField {
  std::u16string_view key;
  std::u16string_view coderKey;
  const ns::AttributedStringPtr &(VLMasterPage::*get)() const;
  void (VLMasterPage::*set)(ns::AttributedStringPtr);
};

// In the order they are archived.
constexpr std::array<TextField, 6> kTexts{{
    {u"header", u"Header", &VLMasterPage::header, &VLMasterPage::setHeader},
    {u"footer", u"Footer", &VLMasterPage::footer, &VLMasterPage::setFooter},
    {u"firstHeader", u"FirstHeader", &VLMasterPage::firstHeader, &VLMasterPage::setFirstHeader},
    {u"firstFooter", u"FirstFooter", &VLMasterPage::firstFooter, &VLMasterPage::setFirstFooter},
    {u"leftHeader", u"LeftHeader", &VLMasterPage::leftHeader, &VLMasterPage::setLeftHeader},
    {u"leftFooter", u"LeftFooter", &VLMasterPage::leftFooter, &VLMasterPage::setLeftFooter},
}};

void encodeText(ns::KeyedArchiver &coder, const ns::AttributedStringPtr &text,
                std::u16string_view key) {
  coder.encodeObject(text, key);
}

ns::AttributedStringPtr decodeText(ns::KeyedUnarchiver &coder, std::u16string_view key) {
  return coder.decodeObjectForKey(key).as<ns::AttributedString>();
}

} // namespace

VLMasterPagePtr VLMasterPage::masterPageWithPrintInfo(const ns::PrintInfo &printInfo) {
  auto page = create();
  page->setPageLayout(VLPageLayout::pageLayoutWithPrintInfo(printInfo));
  return page;
}

void VLMasterPage::setVariantFlag(bool &flag, bool on, const ns::AttributedStringPtr &normal,
                                  ns::AttributedStringPtr &variant) {
  if (flag == on)
    return;
  flag = on;
  variant = on ? normal : nullptr;
}

void VLMasterPage::setDifferentFirstHeader(bool flag) {
  setVariantFlag(_differentFirstHeader, flag, _header, _firstHeader);
}

void VLMasterPage::setDifferentHeaders(bool flag) {
  setVariantFlag(_differentHeaders, flag, _header, _leftHeader);
}

void VLMasterPage::setDifferentFirstFooter(bool flag) {
  setVariantFlag(_differentFirstFooter, flag, _footer, _firstFooter);
}

void VLMasterPage::setDifferentFooters(bool flag) {
  setVariantFlag(_differentFooters, flag, _footer, _leftFooter);
}

bool VLMasterPage::kvcValueForKey(std::u16string_view key, ns::Value &value) {
  if (key == u"pageLayout") {
    value = _pageLayout;
    return true;
  }
  if (key == u"nextStyleName") {
    value = valueFromName(_nextStyleName);
    return true;
  }
  for (const FlagField &flag : kFlags)
    if (key == flag.key) {
      value = (this->*flag.get)();
      return true;
    }
  for (const TextField &text : kTexts)
    if (key == text.key) {
      value = (this->*text.get)();
      return true;
    }
  return VLStyleObject::kvcValueForKey(key, value);
}

bool VLMasterPage::kvcSetValueForKey(std::u16string_view key, const ns::Value &value) {
  if (key == u"pageLayout") {
    setPageLayout(value.as<VLPageLayout>());
    return true;
  }
  if (key == u"nextStyleName") {
    setNextStyleName(nameFromValue(value));
    return true;
  }
  for (const FlagField &flag : kFlags)
    if (key == flag.key) {
      (this->*flag.set)(value.boolValue());
      return true;
    }
  for (const TextField &text : kTexts)
    if (key == text.key) {
      (this->*text.set)(value.as<ns::AttributedString>());
      return true;
    }
  return VLStyleObject::kvcSetValueForKey(key, value);
}

void VLMasterPage::encodeWithCoder(ns::KeyedArchiver &coder) const {
  VLStyleObject::encodeWithCoder(coder);
  coder.encodeObject(_pageLayout, u"PageLayout");
  for (size_t i = 0; i < kArchivedBeforeTexts; ++i)
    coder.encodeBool((this->*kFlags[i].get)(), kFlags[i].coderKey);
  for (const TextField &text : kTexts)
    encodeText(coder, (this->*text.get)(), text.coderKey);
  coder.encodeObject(valueFromName(_nextStyleName), u"NextStyleName");
  for (size_t i = kArchivedBeforeTexts; i < kFlags.size(); ++i)
    coder.encodeBool((this->*kFlags[i].get)(), kFlags[i].coderKey);
}

void VLMasterPage::initWithCoder(ns::KeyedUnarchiver &coder) {
  VLStyleObject::initWithCoder(coder);
  setPageLayout(coder.decodeObjectForKey(u"PageLayout").as<VLPageLayout>());
  // Flags before texts: the variant setters copy texts, which the decoded ones then replace.
  for (size_t i = 0; i < kArchivedBeforeTexts; ++i)
    (this->*kFlags[i].set)(coder.decodeBoolForKey(kFlags[i].coderKey));
  for (const TextField &text : kTexts)
    (this->*text.set)(decodeText(coder, text.coderKey));
  setNextStyleName(nameFromValue(coder.decodeObjectForKey(u"NextStyleName")));
  for (size_t i = kArchivedBeforeTexts; i < kFlags.size(); ++i)
    (this->*kFlags[i].set)(coder.decodeBoolForKey(kFlags[i].coderKey));
}

} // namespace vl
