// The main bundle: localized strings, resources and the information dictionary.
#include "ns/Bundle.h"
#include "ns/PropertyListSerialization.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <unistd.h>

using namespace vl::ns;

namespace {

class BundleTest : public ::testing::Test {
protected:
  void SetUp() override {
    dir_ = std::filesystem::temp_directory_path() / ("vl_bundle_" + std::to_string(getpid()));
    std::filesystem::remove_all(dir_);
    std::filesystem::create_directories(dir_ / "App/Contents/Resources/en.lproj");
    Bundle::resetMainBundle();
  }
  void TearDown() override {
    Bundle::resetMainBundle();
    std::filesystem::remove_all(dir_);
  }
  void touch(const std::filesystem::path &path, std::string_view bytes = "x") {
    std::ofstream(path, std::ios::binary).write(bytes.data(), std::streamsize(bytes.size()));
  }
  std::filesystem::path dir_;
};

} // namespace

TEST_F(BundleTest, LocalizedStringsFallBackToTheValueThenTheKey) {
  Bundle &b = *Bundle::mainBundle();
  EXPECT_EQ(b.localizedStringForKey(u"Standard"), u"Standard");
  EXPECT_EQ(b.localizedStringForKey(u"Standard", u"Default"), u"Default");
  b.setStringsTable(u"", Dictionary::create({{u"Standard", Value(u"Standard (fr)")}}));
  b.setStringsTable(u"Other", Dictionary::create({{u"Scene", Value(u"Sc\u00e8ne")}}));
  EXPECT_EQ(b.localizedStringForKey(u"Standard", u"", u"Localizable"), u"Standard (fr)");
  EXPECT_EQ(b.localizedStringForKey(u"Scene", u"", u"Other"), u"Sc\u00e8ne");
  b.setStringsTable(u"Localizable", nullptr);
  EXPECT_EQ(b.localizedStringForKey(u"Standard"), u"Standard");
}

TEST_F(BundleTest, ResourcesAreFoundOnlyWhenTheFileExists) {
  Bundle &b = *Bundle::mainBundle();
  EXPECT_FALSE(b.pathForResource("DefaultEPubStyles", "css"));
  auto resources = dir_ / "App/Contents/Resources";
  touch(resources / "DefaultEPubStyles.css");
  touch(resources / "en.lproj/Localized.txt");
  b.setResourceDirectory(resources.string());
  EXPECT_EQ(b.pathForResource("DefaultEPubStyles", "css"),
            (resources / "DefaultEPubStyles.css").string());
  EXPECT_EQ(b.pathForResource("Localized", "txt"), (resources / "en.lproj/Localized.txt").string());
  EXPECT_FALSE(b.pathForResource("en", "lproj")) << "a directory is no resource";
}

TEST_F(BundleTest, BundlesReadTheirInformationDictionary) {
  EXPECT_EQ(Bundle::bundleWithPath((dir_ / "missing").string()), nullptr);
  auto info = Dictionary::create(
      {{u"CFBundleIdentifier", Value(u"com.example.action")}, {u"AMName", Value(u"Export")}});
  Data plist =
      PropertyListSerialization::dataWithPropertyList(Value(info), PropertyListXMLFormat_v1_0);
  touch(dir_ / "App/Contents/Info.plist", plist.view());
  auto bundle = Bundle::bundleWithPath((dir_ / "App").string());
  ASSERT_TRUE(bundle);
  EXPECT_EQ(bundle->bundleIdentifier(), u"com.example.action");
  EXPECT_EQ(bundle->objectForInfoDictionaryKey(u"AMName"), Value(u"Export"));
  EXPECT_EQ(bundle->resourcePath(), (dir_ / "App/Contents/Resources").string());
  Bundle::mainBundle()->setInfoDictionary(nullptr);
  EXPECT_EQ(Bundle::mainBundle()->bundleIdentifier(), u"");
}
