// User defaults: registered and set layers, typed reads, copies, and the file they persist in.
#include "ns/Assert.h"
#include "ns/PropertyListSerialization.h"
#include "ns/String.h"
#include "ns/UserDefaults.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>

using namespace vl::ns;

namespace {

class UserDefaultsTest : public ::testing::Test {
protected:
  void SetUp() override {
    dir_ = std::filesystem::temp_directory_path() /
           ("vl_defaults_" + std::to_string(getpid()) + "_" +
            ::testing::UnitTest::GetInstance()->current_test_info()->name());
    std::filesystem::remove_all(dir_);
    std::filesystem::create_directories(dir_);
    UserDefaults::resetStandardUserDefaults();
  }
  void TearDown() override {
    UserDefaults::resetStandardUserDefaults();
    std::filesystem::remove_all(dir_);
  }
  std::string file(const char *name) const { return (dir_ / name).string(); }

  std::filesystem::path dir_;
};

void writeFile(const std::string &path, std::string_view bytes) {
  std::ofstream out(path, std::ios::binary);
  out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

std::string readFile(const std::string &path) {
  std::ifstream in(path, std::ios::binary);
  return std::string((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
}

} // namespace

TEST_F(UserDefaultsTest, SetValuesSitOverRegisteredOnes) {
  UserDefaults &d = *UserDefaults::standardUserDefaults();
  d.registerDefaults(Dictionary({{u"units", Value(u"Inches")}, {u"count", Value(3)}}));
  EXPECT_EQ(d.stringForKey(u"units"), u"Inches");
  d.setObject(Value(u"Centimeters"), u"units");
  EXPECT_EQ(d.stringForKey(u"units"), u"Centimeters");
  d.setObject(Value(), u"units");
  EXPECT_EQ(d.stringForKey(u"units"), u"Inches");
  d.setObject(Value(true), u"flag");
  EXPECT_EQ(d.dictionaryRepresentation()->count(), 3u) << "both layers";
}

TEST_F(UserDefaultsTest, TypedReadsConvertAndContainersAreCopiedInAndOut) {
  UserDefaults d;
  d.setObject(Value(u"42"), u"text");
  d.setObject(Value(u"YES"), u"yes");
  d.setObject(Value(2.5), u"real");
  d.setObject(Value(Array::create({Value(1)})), u"list");
  EXPECT_EQ(d.integerForKey(u"text"), 42);
  EXPECT_TRUE(d.boolForKey(u"yes"));
  EXPECT_EQ(d.stringForKey(u"real"), u"2.5");
  EXPECT_EQ(d.dictionaryForKey(u"list"), nullptr);

  auto importers = Dictionary::create({{u"public.rtf", Value(u"com.example.rtf")}});
  d.setObject(Value(importers), u"VLPreferredImporters");
  importers->setObject(Value(u"changed"), u"public.rtf");
  auto read = d.dictionaryForKey(u"VLPreferredImporters");
  EXPECT_EQ(read->objectForKey(u"public.rtf"), Value(u"com.example.rtf"));
  read->removeAllObjects();
  EXPECT_EQ(d.dictionaryForKey(u"VLPreferredImporters")->count(), 1u);
  EXPECT_THROW(d.setObject(Value(std::make_shared<Object>()), u"bad"),
               InternalInconsistencyException);
}

TEST_F(UserDefaultsTest, PersistsSetValuesInTheHostsFile) {
  std::string path = file("prefs.plist");
  {
    UserDefaults d;
    d.registerDefaults(Dictionary({{u"registered", Value(1)}}));
    d.setObject(Value(u"before path"), u"early");
    ASSERT_TRUE(d.setPersistentStorePath(path));
    d.setObject(Value(Dictionary::create({{u"x", Value(Date(10))}})), u"nested");
    ErrorPtr error;
    ASSERT_TRUE(d.synchronize(&error)) << (error ? toUTF8(error->description()) : "");
  }
  // The file is a binary property list of the set values alone, with no temporary beside it.
  auto saved = PropertyListSerialization::propertyListWithData(Data::fromString(readFile(path)))
                   .dictionary();
  ASSERT_TRUE(saved);
  EXPECT_EQ(saved->count(), 2u);
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir_),
                          std::filesystem::directory_iterator()),
            1);
  UserDefaults reread;
  reread.setObject(Value(u"dropped"), u"unsaved");
  ASSERT_TRUE(reread.setPersistentStorePath(path));
  EXPECT_EQ(reread.stringForKey(u"early"), u"before path");
  EXPECT_EQ(reread.dictionaryForKey(u"nested")->objectForKey(u"x"), Value(Date(10)));
  EXPECT_TRUE(reread.objectForKey(u"unsaved").isNil());
  EXPECT_TRUE(reread.objectForKey(u"registered").isNil());
}

TEST_F(UserDefaultsTest, ADamagedFileIsNeitherReadNorOverwritten) {
  std::string path = file("damaged.plist");
  writeFile(path, "bplist00 not really");
  UserDefaults d;
  ErrorPtr error;
  EXPECT_FALSE(d.setPersistentStorePath(path, &error));
  ASSERT_NE(error, nullptr);
  EXPECT_EQ(error->code(), PropertyListReadCorruptError);
  d.setObject(Value(1), u"k");
  EXPECT_TRUE(d.synchronize());
  EXPECT_EQ(readFile(path), "bplist00 not really");

  writeFile(path, R"(<plist><array/></plist>)");
  EXPECT_FALSE(d.setPersistentStorePath(path));

  // A write that fails reports its cause.
  ASSERT_TRUE(d.setPersistentStorePath(file("sub/prefs.plist")));
  d.setObject(Value(2), u"k");
  EXPECT_FALSE(d.synchronize(&error));
  ASSERT_NE(error, nullptr);
  EXPECT_EQ(error->code(), ENOENT);
}
