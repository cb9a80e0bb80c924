// File system helpers: directories, listings, copies, removal and atomic writes, including
// writes interrupted at each step.
#include "ns/Assert.h"
#include "ns/FileManager.h"
#include "ns/Path.h"
#include "ns/String.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <sys/stat.h>
#include <unistd.h>

using namespace vl::ns;
using Names = std::vector<std::u16string>;

namespace {

class FileManagerTest : public ::testing::Test {
protected:
  void SetUp() override {
    auto dir = fm->createTemporaryDirectory(u"vlwp-test");
    ASSERT_TRUE(dir);
    root = *dir;
  }
  void TearDown() override {
    chmod(toUTF8(root).c_str(), 0700);
    fm->removeItemAtPath(root);
  }

  std::u16string at(std::u16string_view relative) const {
    return stringByAppendingPathComponent(root, relative);
  }
  void put(std::u16string_view relative, std::string_view text) {
    ASSERT_TRUE(fm->createFileAtPath(at(relative), Data::fromString(text)));
  }
  std::string get(std::u16string_view relative) {
    auto data = fm->contentsAtPath(at(relative));
    return data ? std::string(data->view()) : "(none)";
  }
  // A manager whose atomic writes fail at `step` with EIO.
  FileManagerPtr failingAt(std::string step) {
    auto manager = std::make_shared<FileManager>();
    manager->setFailureInjector([step](std::string_view s) { return s == step ? EIO : 0; });
    return manager;
  }
  static int64_t codeOf(const ErrorPtr &error) { return error ? error->code() : -1; }

  FileManagerPtr fm = FileManager::defaultManager();
  std::u16string root;
};

} // namespace

TEST_F(FileManagerTest, CreatesDirectoriesWithOrWithoutIntermediates) {
  ErrorPtr error;
  EXPECT_FALSE(fm->createDirectoryAtPath(at(u"a/b/c"), false, &error));
  ASSERT_NE(error, nullptr);
  EXPECT_EQ(error->code(), FileNoSuchFileError);
  EXPECT_EQ(error->userInfo()->objectForKey(FilePathErrorKey).string(), at(u"a/b/c"));

  EXPECT_TRUE(fm->createDirectoryAtPath(at(u"a/b/c"), true));
  EXPECT_TRUE(fm->createDirectoryAtPath(at(u"a/b/c"), true));
  EXPECT_FALSE(fm->createDirectoryAtPath(at(u"a/b/c"), false, &error));
  EXPECT_EQ(codeOf(error), FileWriteFileExistsError);
  put(u"file", "x");
  EXPECT_FALSE(fm->createDirectoryAtPath(at(u"file/sub"), true));
}

TEST_F(FileManagerTest, ListingsAreSortedAndWalksStayInsideTheTree) {
  ASSERT_TRUE(fm->createDirectoryAtPath(at(u"d/e"), true));
  for (auto name : {u"b", u"a", u"C", u"d/z", u"d/e/y", u"d.txt"})
    put(name, "");
  ASSERT_EQ(symlink("/", toUTF8(at(u"link")).c_str()), 0);

  EXPECT_EQ(fm->contentsOfDirectoryAtPath(root),
            (Names{u"C", u"a", u"b", u"d", u"d.txt", u"link"}));
  EXPECT_EQ(fm->subpathsOfDirectoryAtPath(root),
            (Names{u"C", u"a", u"b", u"d", u"d/e", u"d/e/y", u"d/z", u"d.txt", u"link"}));

  ErrorPtr error;
  EXPECT_EQ(fm->contentsOfDirectoryAtPath(at(u"missing"), &error), std::nullopt);
  EXPECT_EQ(codeOf(error), FileReadNoSuchFileError);
}

TEST_F(FileManagerTest, AtomicFileWritesReplaceWholeAndKeepPermissions) {
  put(u"f", "old contents");
  ASSERT_EQ(chmod(toUTF8(at(u"f")).c_str(), 0640), 0);
  put(u"f", "new");
  EXPECT_EQ(get(u"f"), "new");
  auto attributes = fm->attributesOfItemAtPath(at(u"f"));
  ASSERT_NE(attributes, nullptr);
  EXPECT_EQ(attributes->objectForKey(FilePosixPermissions).integerValue(), 0640);
  EXPECT_EQ(fm->contentsOfDirectoryAtPath(root), (Names{u"f"}));

  ErrorPtr error;
  EXPECT_FALSE(
      fm->writeData(Data::fromString("x"), at(u"f"), DataWritingWithoutOverwriting, &error));
  EXPECT_EQ(codeOf(error), FileWriteFileExistsError);
  EXPECT_FALSE(fm->createFileAtPath(at(u"missing/f"), Data::fromString("x"), &error));
  EXPECT_EQ(codeOf(error), FileNoSuchFileError);
}

TEST_F(FileManagerTest, AnInterruptedFileWriteLeavesTheOldFile) {
  put(u"f", "old");
  for (std::string step : {"write", "sync", "rename"}) {
    SCOPED_TRACE(step);
    ErrorPtr error;
    EXPECT_FALSE(failingAt(step)->createFileAtPath(at(u"f"), Data::fromString("new"), &error));
    EXPECT_EQ(codeOf(error), FileWriteUnknownError);
    EXPECT_EQ(get(u"f"), "old");
    EXPECT_EQ(fm->contentsOfDirectoryAtPath(root), (Names{u"f"}));
  }
}

TEST_F(FileManagerTest, RemovalTakesTheTreeButNotWhatLinksPointTo) {
  ASSERT_TRUE(fm->createDirectoryAtPath(at(u"tree/a/b"), true));
  put(u"tree/a/b/deep", "x");
  put(u"tree/top", "x");
  ASSERT_TRUE(fm->createDirectoryAtPath(at(u"outside"), false));
  put(u"outside/keep", "kept");
  ASSERT_EQ(symlink(toUTF8(at(u"outside")).c_str(), toUTF8(at(u"tree/a/link")).c_str()), 0);
  ASSERT_EQ(chmod(toUTF8(at(u"tree/a/b")).c_str(), 0500), 0); // no write: blocks the removal

  ErrorPtr error;
  if (geteuid() != 0) {
    EXPECT_FALSE(fm->removeItemAtPath(at(u"tree"), &error));
    EXPECT_EQ(codeOf(error), FileWriteNoPermissionError);
    EXPECT_EQ(error->userInfo()->objectForKey(FilePathErrorKey).string(), at(u"tree/a/b/deep"));
  }
  ASSERT_EQ(chmod(toUTF8(at(u"tree/a/b")).c_str(), 0700), 0);
  EXPECT_TRUE(fm->removeItemAtPath(at(u"tree")));
  EXPECT_FALSE(fm->fileExistsAtPath(at(u"tree")));
  EXPECT_EQ(get(u"outside/keep"), "kept");

  // A trailing slash does not make removal follow the link.
  ASSERT_EQ(symlink(toUTF8(at(u"outside")).c_str(), toUTF8(at(u"link")).c_str()), 0);
  EXPECT_TRUE(fm->removeItemAtPath(at(u"link/")));
  EXPECT_FALSE(fm->fileExistsAtPath(at(u"link")));
  EXPECT_EQ(get(u"outside/keep"), "kept");
}

TEST_F(FileManagerTest, CopiesTreesWithLinksAndPermissions) {
  ASSERT_TRUE(fm->createDirectoryAtPath(at(u"src/sub"), true));
  put(u"src/sub/f", "data");
  ASSERT_EQ(chmod(toUTF8(at(u"src/sub/f")).c_str(), 0751), 0);
  ASSERT_EQ(symlink("sub/f", toUTF8(at(u"src/link")).c_str()), 0);

  EXPECT_TRUE(fm->copyItemAtPath(at(u"src"), at(u"dst")));
  EXPECT_EQ(fm->subpathsAtPath(at(u"dst")), (Names{u"link", u"sub", u"sub/f"}));
  EXPECT_EQ(get(u"dst/sub/f"), "data");
  EXPECT_EQ(fm->attributesOfItemAtPath(at(u"dst/sub/f"))
                ->objectForKey(FilePosixPermissions)
                .integerValue(),
            0751);
  EXPECT_EQ(fm->attributesOfItemAtPath(at(u"dst/link"))->objectForKey(FileType).string(),
            FileTypeSymbolicLink);
  EXPECT_EQ(get(u"dst/link"), "data");

  ErrorPtr error;
  EXPECT_FALSE(fm->copyItemAtPath(at(u"src/sub/f"), at(u"dst/sub/f"), &error));
  EXPECT_EQ(codeOf(error), FileWriteFileExistsError);
  EXPECT_FALSE(fm->copyItemAtPath(at(u"src"), at(u"src/sub/copy"), &error));
  EXPECT_FALSE(fm->fileExistsAtPath(at(u"src/sub/copy")));
  // Moves go only to free paths.
  EXPECT_FALSE(fm->moveItemAtPath(at(u"dst/link"), at(u"dst/sub/f"), &error));
  EXPECT_EQ(codeOf(error), FileWriteFileExistsError);
}

TEST_F(FileManagerTest, UniqueFileNamesNumberTheStem) {
  std::u16string images = at(u"images");
  EXPECT_EQ(fm->uniqueFileNameForFilename(u"pic.png", images), at(u"images/pic.png"));
  EXPECT_TRUE(fm->fileExistsAtPath(images)); // made on demand
  put(u"images/pic.png", "");
  EXPECT_EQ(fm->uniqueFileNameForFilename(u"pic.png", images), at(u"images/pic-1.png"));
  put(u"images/.profile", "");
  EXPECT_EQ(fm->uniqueFileNameForFilename(u".profile", images), at(u"images/.profile-1"));
  EXPECT_THROW(fm->uniqueFileNameForFilename(u"x", at(u"no/such/parent")),
               InternalInconsistencyException);
}

TEST_F(FileManagerTest, AtomicDirectoryWritesSwapWholeTrees) {
  auto writeTree = [this](std::string marker) {
    return [this, marker](const std::u16string &dir, ErrorPtr *error) {
      return fm->createDirectoryAtPath(stringByAppendingPathComponent(dir, u"Files"), false,
                                       error) &&
             fm->createFileAtPath(stringByAppendingPathComponent(dir, u"Files/doc"),
                                  Data::fromString(marker), error);
    };
  };
  EXPECT_TRUE(fm->writeDirectoryAtomically(at(u"p.scriv"), writeTree("first")));
  EXPECT_EQ(get(u"p.scriv/Files/doc"), "first");
  put(u"p.scriv/stale", "");

  EXPECT_TRUE(fm->writeDirectoryAtomically(at(u"p.scriv"), writeTree("second")));
  EXPECT_EQ(fm->subpathsAtPath(at(u"p.scriv")), (Names{u"Files", u"Files/doc"}));
  EXPECT_EQ(get(u"p.scriv/Files/doc"), "second");
  EXPECT_EQ(fm->contentsOfDirectoryAtPath(root), (Names{u"p.scriv"}));
}

TEST_F(FileManagerTest, AnInterruptedDirectoryWriteLeavesTheOldTree) {
  ASSERT_TRUE(fm->createDirectoryAtPath(at(u"p.scriv/Files"), true));
  put(u"p.scriv/Files/doc", "old");
  auto writeNew = [](FileManagerPtr manager) {
    return [manager](const std::u16string &dir, ErrorPtr *error) {
      return manager->createFileAtPath(stringByAppendingPathComponent(dir, u"doc"),
                                       Data::fromString("new"), error);
    };
  };
  for (std::string step : {"create", "moveAside", "moveIntoPlace"}) {
    SCOPED_TRACE(step);
    auto manager = failingAt(step);
    ErrorPtr error;
    EXPECT_FALSE(manager->writeDirectoryAtomically(at(u"p.scriv"), writeNew(manager), &error));
    EXPECT_EQ(codeOf(error), FileWriteUnknownError);
    EXPECT_EQ(fm->subpathsAtPath(at(u"p.scriv")), (Names{u"Files", u"Files/doc"}));
    EXPECT_EQ(get(u"p.scriv/Files/doc"), "old");
    EXPECT_EQ(fm->contentsOfDirectoryAtPath(root), (Names{u"p.scriv"}));
  }

  // A writer that fails passes its own error on.
  ErrorPtr error;
  auto own = Error::errorWithDomain(u"test", 7);
  EXPECT_FALSE(fm->writeDirectoryAtomically(
      at(u"p.scriv"),
      [&](const std::u16string &dir, ErrorPtr *out) {
        put(lastPathComponent(dir) + u"/partial", "half");
        setError(out, own);
        return false;
      },
      &error));
  EXPECT_EQ(error, own);
  EXPECT_EQ(fm->contentsOfDirectoryAtPath(root), (Names{u"p.scriv"}));

  // Once the new tree is in place, failing to clear away the old one is no failure.
  auto manager = failingAt("removeAside");
  EXPECT_TRUE(manager->writeDirectoryAtomically(at(u"p.scriv"), writeNew(manager)));
  EXPECT_EQ(get(u"p.scriv/doc"), "new");
}

TEST_F(FileManagerTest, ReplacementAndTemporaryDirectories) {
  put(u"doc.rtfd", "");
  URLPtr target = URL::fileURLWithPath(at(u"doc.rtfd"), false);
  URLPtr replacement = fm->URLForDirectory(ItemReplacementDirectory, target, true);
  ASSERT_NE(replacement, nullptr);
  EXPECT_EQ(stringByDeletingLastPathComponent(replacement->path()), root);
  EXPECT_EQ(fm->URLForDirectory(ItemReplacementDirectory, URL::URLWithString(u"http://x/y"), true),
            nullptr);

  const char *saved = std::getenv("TMPDIR");
  std::string old = saved ? saved : "";
  setenv("TMPDIR", toUTF8(root).c_str(), 1);
  EXPECT_EQ(TemporaryDirectory(), root + u"/");
  auto made = fm->createTemporaryDirectory(u"epub");
  ASSERT_TRUE(made);
  EXPECT_EQ(stringByDeletingLastPathComponent(*made), root);
  EXPECT_EQ(lastPathComponent(*made).substr(0, 5), u"epub.");
  if (saved)
    setenv("TMPDIR", old.c_str(), 1);
  else
    unsetenv("TMPDIR");
}
