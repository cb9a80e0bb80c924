// Path strings: components, extensions, joining and standardisation.
#include "ns/Path.h"

#include <gtest/gtest.h>

#include <cstdlib>

using namespace vl::ns;
using Components = std::vector<std::u16string>;

namespace {

struct Case {
  std::u16string in, out;
};

void expectAll(std::u16string (*f)(std::u16string_view), std::initializer_list<Case> cases) {
  for (const Case &c : cases)
    EXPECT_EQ(f(c.in), c.out) << std::string(c.in.begin(), c.in.end());
}

} // namespace

TEST(Path, ComponentsAndExtensionsIgnoreTrailingSlashesAndKeepTheRoot) {
  expectAll(lastPathComponent, {{u"/tmp/scratch.tiff", u"scratch.tiff"},
                                {u"/tmp/lock/", u"lock"},
                                {u"///", u"/"},
                                {u"", u""}});
  // An extension needs a dot after the first character of the name.
  expectAll(pathExtension, {{u".scratch.tiff", u"tiff"},
                            {u"/home/.profile", u""},
                            {u"/dir.d/file", u""},
                            {u"archive.tar.gz", u"gz"},
                            {u"/", u""}});
  expectAll(stringByDeletingPathExtension, {{u"scratch.bundle/", u"scratch"},
                                            {u"scratch..tiff", u"scratch."},
                                            {u"/dir.d/file", u"/dir.d/file"},
                                            {u"/", u"/"}});
  expectAll(stringByDeletingLastPathComponent,
            {{u"/a/b/", u"/a"}, {u"/a//b", u"/a"}, {u"/a", u"/"}, {u"/", u"/"}, {u"a", u""}});
  EXPECT_EQ(stringByAppendingPathExtension(u"/tmp/scratch.old", u"tiff"), u"/tmp/scratch.old.tiff");
  EXPECT_EQ(stringByAppendingPathExtension(u"/tmp/", u"tiff"), u"/tmp.tiff");
  EXPECT_EQ(stringByAppendingPathExtension(u"/", u"tiff"), u"/");
}

TEST(Path, JoiningUsesSingleSeparators) {
  EXPECT_EQ(stringByAppendingPathComponent(u"/tmp/", u"scratch.tiff"), u"/tmp/scratch.tiff");
  EXPECT_EQ(stringByAppendingPathComponent(u"/tmp//", u"/a//b/"), u"/tmp/a/b");
  EXPECT_EQ(stringByAppendingPathComponent(u"", u"scratch.tiff"), u"scratch.tiff");
  EXPECT_EQ(stringByAppendingPathComponent(u"/tmp/", u""), u"/tmp");

  EXPECT_EQ(pathComponents(u"/tmp/scratch"), (Components{u"/", u"tmp", u"scratch"}));
  EXPECT_EQ(pathComponents(u"tmp//scratch/"), (Components{u"tmp", u"scratch", u"/"}));
  EXPECT_TRUE(pathComponents(u"").empty());
  for (std::u16string path : {u"/tmp/scratch", u"tmp/scratch/", u"/", u"a"})
    EXPECT_EQ(pathWithComponents(pathComponents(path)), path);
  EXPECT_TRUE(isAbsolutePath(u"~/a"));
  EXPECT_FALSE(isAbsolutePath(u"a/b"));
}

TEST(Path, StandardizingIsLexicalAndExpandsTheTilde) {
  expectAll(stringByStandardizingPath, {{u"/a/./b//c/", u"/a/b/c"},
                                        {u"/a/b/../c", u"/a/c"},
                                        {u"/../a", u"/a"},
                                        {u"/a/..", u"/"},
                                        {u"../a/../b", u"../b"},
                                        {u"a/..", u"."}});
  const char *saved = std::getenv("HOME");
  std::string old = saved ? saved : "";
  setenv("HOME", "/home/writer", 1);
  expectAll(stringByExpandingTildeInPath, {{u"~", u"/home/writer"},
                                           {u"~/novel.scriv/", u"/home/writer/novel.scriv"},
                                           {u"/a/~", u"/a/~"},
                                           {u"~no-such-user-here/x", u"~no-such-user-here/x"}});
  EXPECT_EQ(stringByStandardizingPath(u"~/a/../b"), u"/home/writer/b");
  if (saved)
    setenv("HOME", old.c_str(), 1);
  else
    unsetenv("HOME");
}
