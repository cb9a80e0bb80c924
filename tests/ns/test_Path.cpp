// Path strings: components, extensions, joining and standardisation.
#include "ns/Path.h"

#include <gtest/gtest.h>

#include <cstdlib>

using namespace vl::ns;
using Components = std::vector<std::u16string>;

TEST(Path, LastComponentIgnoresTrailingSlashesAndKeepsTheRoot) {
  EXPECT_EQ(lastPathComponent(u"/tmp/scratch.tiff"), u"scratch.tiff");
  EXPECT_EQ(lastPathComponent(u"/tmp/lock/"), u"lock");
  EXPECT_EQ(lastPathComponent(u"scratch///"), u"scratch");
  EXPECT_EQ(lastPathComponent(u"plain"), u"plain");
  EXPECT_EQ(lastPathComponent(u"/"), u"/");
  EXPECT_EQ(lastPathComponent(u"///"), u"/");
  EXPECT_EQ(lastPathComponent(u""), u"");
}

TEST(Path, ExtensionNeedsADotAfterTheFirstCharacterOfTheName) {
  EXPECT_EQ(pathExtension(u"/tmp/scratch.tiff"), u"tiff");
  EXPECT_EQ(pathExtension(u".scratch.tiff"), u"tiff");
  EXPECT_EQ(pathExtension(u"a.b/"), u"b");
  EXPECT_EQ(pathExtension(u"/home/.profile"), u"");
  EXPECT_EQ(pathExtension(u"/dir.d/file"), u"");
  EXPECT_EQ(pathExtension(u"archive.tar.gz"), u"gz");
  EXPECT_EQ(pathExtension(u"/"), u"");
  EXPECT_EQ(pathExtension(u""), u"");
}

TEST(Path, DeletingAndAppendingExtensions) {
  EXPECT_EQ(stringByDeletingPathExtension(u"/tmp/scratch.tiff"), u"/tmp/scratch");
  EXPECT_EQ(stringByDeletingPathExtension(u"scratch.bundle/"), u"scratch");
  EXPECT_EQ(stringByDeletingPathExtension(u"scratch..tiff"), u"scratch.");
  EXPECT_EQ(stringByDeletingPathExtension(u".profile"), u".profile");
  EXPECT_EQ(stringByDeletingPathExtension(u"/dir.d/file"), u"/dir.d/file");
  EXPECT_EQ(stringByDeletingPathExtension(u"/"), u"/");

  EXPECT_EQ(stringByAppendingPathExtension(u"/tmp/scratch.old", u"tiff"), u"/tmp/scratch.old.tiff");
  EXPECT_EQ(stringByAppendingPathExtension(u"/tmp/", u"tiff"), u"/tmp.tiff");
  EXPECT_EQ(stringByAppendingPathExtension(u"scratch", u""), u"scratch");
  EXPECT_EQ(stringByAppendingPathExtension(u"/", u"tiff"), u"/");
}

TEST(Path, AppendingComponentsUsesSingleSeparators) {
  EXPECT_EQ(stringByAppendingPathComponent(u"/tmp", u"scratch.tiff"), u"/tmp/scratch.tiff");
  EXPECT_EQ(stringByAppendingPathComponent(u"/tmp/", u"scratch.tiff"), u"/tmp/scratch.tiff");
  EXPECT_EQ(stringByAppendingPathComponent(u"/tmp//", u"/a//b/"), u"/tmp/a/b");
  EXPECT_EQ(stringByAppendingPathComponent(u"/", u"scratch.tiff"), u"/scratch.tiff");
  EXPECT_EQ(stringByAppendingPathComponent(u"", u"scratch.tiff"), u"scratch.tiff");
  EXPECT_EQ(stringByAppendingPathComponent(u"/tmp/", u""), u"/tmp");
  EXPECT_EQ(stringByAppendingPathComponent(u"/", u""), u"/");
}

TEST(Path, DeletingTheLastComponent) {
  EXPECT_EQ(stringByDeletingLastPathComponent(u"/a/b"), u"/a");
  EXPECT_EQ(stringByDeletingLastPathComponent(u"/a/b/"), u"/a");
  EXPECT_EQ(stringByDeletingLastPathComponent(u"/a//b"), u"/a");
  EXPECT_EQ(stringByDeletingLastPathComponent(u"/a"), u"/");
  EXPECT_EQ(stringByDeletingLastPathComponent(u"/"), u"/");
  EXPECT_EQ(stringByDeletingLastPathComponent(u"a"), u"");
  EXPECT_EQ(stringByDeletingLastPathComponent(u"a/b"), u"a");
  EXPECT_EQ(stringByDeletingLastPathComponent(u""), u"");
}

TEST(Path, ComponentsMarkTheRootAndATrailingSlash) {
  EXPECT_EQ(pathComponents(u"/tmp/scratch"), (Components{u"/", u"tmp", u"scratch"}));
  EXPECT_EQ(pathComponents(u"tmp//scratch/"), (Components{u"tmp", u"scratch", u"/"}));
  EXPECT_EQ(pathComponents(u"/"), (Components{u"/"}));
  EXPECT_TRUE(pathComponents(u"").empty());
  for (std::u16string path : {u"/tmp/scratch", u"tmp/scratch/", u"/", u"a"})
    EXPECT_EQ(pathWithComponents(pathComponents(path)), path);
}

TEST(Path, AbsolutePathsStartWithSlashOrTilde) {
  EXPECT_TRUE(isAbsolutePath(u"/a"));
  EXPECT_TRUE(isAbsolutePath(u"~/a"));
  EXPECT_FALSE(isAbsolutePath(u"a/b"));
  EXPECT_FALSE(isAbsolutePath(u""));
}

TEST(Path, StandardizingIsLexical) {
  EXPECT_EQ(stringByStandardizingPath(u"/a/./b//c/"), u"/a/b/c");
  EXPECT_EQ(stringByStandardizingPath(u"/a/b/../c"), u"/a/c");
  EXPECT_EQ(stringByStandardizingPath(u"/../a"), u"/a");
  EXPECT_EQ(stringByStandardizingPath(u"/a/.."), u"/");
  EXPECT_EQ(stringByStandardizingPath(u"../a/../b"), u"../b");
  EXPECT_EQ(stringByStandardizingPath(u"a/.."), u".");
  EXPECT_EQ(stringByStandardizingPath(u""), u"");
}

TEST(Path, TildeExpandsToHome) {
  const char *saved = std::getenv("HOME");
  std::string old = saved ? saved : "";
  setenv("HOME", "/home/writer", 1);
  EXPECT_EQ(stringByExpandingTildeInPath(u"~"), u"/home/writer");
  EXPECT_EQ(stringByExpandingTildeInPath(u"~/novel.scriv/"), u"/home/writer/novel.scriv");
  EXPECT_EQ(stringByExpandingTildeInPath(u"/a/~"), u"/a/~");
  EXPECT_EQ(stringByStandardizingPath(u"~/a/../b"), u"/home/writer/b");
  EXPECT_EQ(stringByExpandingTildeInPath(u"~no-such-user-here/x"), u"~no-such-user-here/x");
  if (saved)
    setenv("HOME", old.c_str(), 1);
  else
    unsetenv("HOME");
}
