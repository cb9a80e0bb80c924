// URLs: strict parsing, resolution, file URLs, relative references and percent escaping.
#include "ns/String.h"
#include "ns/URL.h"
#include "ns/Value.h"

#include <gtest/gtest.h>

using namespace vl::ns;

namespace {
std::u16string resolved(std::u16string_view reference, std::u16string_view base) {
  URLPtr url = URL::URLWithString(reference, URL::URLWithString(base));
  return url ? url->absoluteString() : u"(nil)";
}

std::optional<std::u16string> relative(std::u16string_view from, std::u16string_view to) {
  return URL::URLWithString(from)->relativePathToURL(*URL::URLWithString(to));
}
} // namespace

TEST(URL, ParsingIsStrict) {
  for (const char16_t *bad :
       {u"a b", u"http://x/%zz", u"http://x/%4", u"http://x/caf\u00e9", u"http://x/a\"b",
        u"http://x/#a#b", u"http://x y/", u"http://x:8o/", u"1http:x", u""})
    EXPECT_EQ(URL::URLWithString(bad), nullptr) << toUTF8(bad);
  for (const char16_t *good :
       {u"http://x/%41?q=1&r=a/b?#frag/?", u"mailto:someone@example.com",
        u"urn:com.velmoran.unassigned", u"http://[::1]:80/", u"#scene-1", u"./a:b"})
    EXPECT_NE(URL::URLWithString(good), nullptr) << toUTF8(good);
}

TEST(URL, ComponentsOfAnAbsoluteURL) {
  URLPtr url = URL::URLWithString(u"HTTP://user@Example.com:8080/a%20b/c.html/?x=1#top");
  ASSERT_NE(url, nullptr);
  EXPECT_EQ(url->scheme(), u"HTTP");
  EXPECT_EQ(url->host(), u"Example.com");
  EXPECT_EQ(url->port(), 8080);
  EXPECT_EQ(url->path(), u"/a b/c.html");
  EXPECT_EQ(url->pathExtension(), u"html");
  EXPECT_EQ(url->query(), u"x=1");
  EXPECT_EQ(url->fragment(), u"top");
  EXPECT_EQ(URL::URLWithString(u"http://example.com")->port(), std::nullopt);
  EXPECT_EQ(URL::URLWithString(u"http://[::1]/")->host(), u"::1");
  // An escape that is not UTF-8 leaves no readable path.
  EXPECT_EQ(URL::URLWithString(u"http://x/%FF")->path(), u"");
}

TEST(URL, ResolvesReferencesAgainstABase) {
  std::u16string base = u"http://a/b/c/d;p?q";
  EXPECT_EQ(resolved(u"#id", base), u"http://a/b/c/d;p?q#id");
  EXPECT_EQ(resolved(u"g", base), u"http://a/b/c/g");
  EXPECT_EQ(resolved(u"../../../g", base), u"http://a/g");
  EXPECT_EQ(resolved(u"?y", base), u"http://a/b/c/d;p?y");
  EXPECT_EQ(resolved(u"//g/x", base), u"http://g/x");
  EXPECT_EQ(resolved(u"g;x=1/../y", base), u"http://a/b/c/y");
  EXPECT_EQ(resolved(u"", base), base);
  EXPECT_EQ(resolved(u"a b", base), u"(nil)");
  EXPECT_EQ(resolved(u"x", u"http://a"), u"http://a/x");
}

TEST(URL, KeepsTheReferenceAndItsBaseAndComparesAbsolutely) {
  URLPtr base = URL::URLWithString(u"file:///novel/chapter.html");
  URLPtr url = URL::URLWithString(u"#scene-2", base);
  EXPECT_EQ(url->relativeString(), u"#scene-2");
  EXPECT_EQ(url->baseURL(), base);
  EXPECT_EQ(url->absoluteString(), u"file:///novel/chapter.html#scene-2");
  EXPECT_EQ(URL::URLWithString(u"http://x/", base)->baseURL(), nullptr) << "absolute: no base";

  // Equality goes by the absolute string.
  URLPtr a = URL::URLWithString(u"b.html", URL::URLWithString(u"file:///x/a.html"));
  URLPtr b = URL::URLWithString(u"file:///x/b.html");
  EXPECT_TRUE(a->isEqual(*b));
  EXPECT_EQ(a->hash(), b->hash());
  EXPECT_FALSE(a->isEqual(*URL::URLWithString(u"file:///x/B.html")));
}

TEST(URL, FileURLsEscapeThePath) {
  URLPtr file = URL::fileURLWithPath(u"/Users/me/My Novel #2/caf\u00e9.rtf", false);
  EXPECT_EQ(file->absoluteString(), u"file:///Users/me/My%20Novel%20%232/caf%C3%A9.rtf");
  EXPECT_EQ(file->path(), u"/Users/me/My Novel #2/caf\u00e9.rtf");
  EXPECT_TRUE(file->isFileURL());
  EXPECT_EQ(URL::fileURLWithPath(u"/a//b", true)->absoluteString(), u"file:///a/b/");
  EXPECT_EQ(URL::fileURLWithPath(u"/a/b/", true)->path(), u"/a/b");
  EXPECT_EQ(URL::fileURLWithPath(u"", false), nullptr);
}

TEST(URL, PathOperationsMakeNewURLs) {
  URLPtr dir = URL::fileURLWithPath(u"/novel.scriv", true);
  URLPtr docs = dir->URLByAppendingPathComponent(u"Files/Docs", true);
  EXPECT_EQ(docs->absoluteString(), u"file:///novel.scriv/Files/Docs/");
  EXPECT_EQ(docs->URLByAppendingPathComponent(u"1 a.rtf")->absoluteString(),
            u"file:///novel.scriv/Files/Docs/1%20a.rtf");
  EXPECT_EQ(
      URL::URLWithString(u"http://x/a?q")->URLByAppendingPathComponent(u"b")->absoluteString(),
      u"http://x/a/b?q");

  EXPECT_EQ(
      URL::URLWithString(u"file:///a/b/c.html")->URLByDeletingLastPathComponent()->absoluteString(),
      u"file:///a/b/");
  EXPECT_EQ(URL::URLWithString(u"file:///")->URLByDeletingLastPathComponent()->absoluteString(),
            u"file:///");

  EXPECT_EQ(
      URL::URLWithString(u"file:///a/b.scriv/")->URLByDeletingPathExtension()->absoluteString(),
      u"file:///a/b/");
  EXPECT_EQ(
      URL::URLWithString(u"file:///a.d/.profile")->URLByDeletingPathExtension()->absoluteString(),
      u"file:///a.d/.profile");
  EXPECT_EQ(URL::URLWithString(u"http://x/a/./b/../c")->standardizedURL()->absoluteString(),
            u"http://x/a/c");
}

TEST(URL, RelativePathBetweenDocuments) {
  EXPECT_EQ(relative(u"file:///a/b/c.html", u"file:///a/d/e.png"), u"../d/e.png");
  EXPECT_EQ(relative(u"file:///a/b/c.html", u"file:///a/b/e.png"), u"e.png");
  EXPECT_EQ(relative(u"file:///a/b/c.html", u"file:///a/b/c.html#id"), u"#id");
  EXPECT_EQ(relative(u"file:///a/b/c.html", u"file:///a/b/d/e.html#x"), u"d/e.html#x");
  EXPECT_EQ(relative(u"file:///a/b/c.html", u"file:///x/y.html"), u"../../x/y.html");
  EXPECT_EQ(relative(u"file:///a/b/c.html", u"file:///a/"), u"../");
  EXPECT_EQ(relative(u"file:///a/b/c.html", u"file:///a/b/"), u"./");
  EXPECT_EQ(relative(u"file:///a/b/c.html", u"file:///a/b/x:y.html"), u"./x:y.html");
  EXPECT_EQ(relative(u"file:///a/b/", u"file:///a/b/images/p%20q.png"), u"images/p%20q.png");
  EXPECT_EQ(relative(u"file:///a/b.html", u"http://h/a/b.html"), std::nullopt);
  EXPECT_EQ(relative(u"http://h/a", u"http://g/a"), std::nullopt);

  // Whatever the answer, it leads back to the target.
  URLPtr from = URL::URLWithString(u"file:///a/b/c.html");
  for (std::u16string to : {u"file:///a/d/e.png", u"file:///x/y.html", u"file:///a/b/x:y.html",
                            u"file:///a/", u"file:///a/b/c.html#id"}) {
    URLPtr target = URL::URLWithString(to);
    EXPECT_EQ(resolved(*from->relativePathToURL(*target), from->absoluteString()), to);
  }
}

TEST(URL, PercentEncodingRoundTrips) {
  std::u16string text = u"Caf\u00e9 50%/#1 \U0001F600?";
  std::u16string escaped = stringByAddingPercentEncoding(text, URLPathAllowedCharacterSet());
  EXPECT_EQ(escaped, u"Caf%C3%A9%2050%25/%231%20%F0%9F%98%80%3F");
  EXPECT_EQ(stringByRemovingPercentEncoding(escaped), text);
  EXPECT_EQ(stringByAddingPercentEncoding(u"a?b#c;d", URLQueryAllowedCharacterSet()), u"a?b%23c;d");
  EXPECT_EQ(stringByAddingPercentEncoding(u"a/b", URLPathAllowedCharacterSet().removing("/")),
            u"a%2Fb");
  EXPECT_EQ(stringByAddingPercentEncoding(u"\xD800", URLPathAllowedCharacterSet()), u"%EF%BF%BD");
}

TEST(URL, RemovingPercentEncodingRejectsMalformedInput) {
  EXPECT_EQ(stringByRemovingPercentEncoding(u"a%20b%2fc"), u"a b/c");
  EXPECT_EQ(stringByRemovingPercentEncoding(u"\u00e9%C3%A9"), u"\u00e9\u00e9");
  EXPECT_EQ(stringByRemovingPercentEncoding(u"100%"), std::nullopt);
  EXPECT_EQ(stringByRemovingPercentEncoding(u"%G1"), std::nullopt);
  EXPECT_EQ(stringByRemovingPercentEncoding(u"%C3"), std::nullopt);
}
