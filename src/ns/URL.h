// URLs (the platform's NSURL): strict parsing, resolution against a base, file URLs,
// relative references between documents, and percent escaping.
#pragma once

#include "ns/Object.h"

#include <bitset>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace vl::ns {

class URL;
using URLPtr = std::shared_ptr<URL>;

/// The ASCII characters that percent escaping leaves as they are; everything outside ASCII
/// is always escaped. Stands for the platform's URL…AllowedCharacterSet character sets.
class PercentEncodingSet {
public:
  /// A set of exactly the ASCII characters in `characters`.
  explicit PercentEncodingSet(std::string_view characters = {});

  bool contains(char32_t c) const { return c < 128 && bits_.test(c); }
  /// The same set plus, or minus, the ASCII characters in `characters`.
  PercentEncodingSet adding(std::string_view characters) const;
  PercentEncodingSet removing(std::string_view characters) const;

private:
  std::bitset<128> bits_;
};

/// The platform's allowed sets: what each URL component may hold unescaped.
const PercentEncodingSet &URLUserAllowedCharacterSet();
const PercentEncodingSet &URLPasswordAllowedCharacterSet();
const PercentEncodingSet &URLHostAllowedCharacterSet();
const PercentEncodingSet &URLPathAllowedCharacterSet();
const PercentEncodingSet &URLQueryAllowedCharacterSet();
const PercentEncodingSet &URLFragmentAllowedCharacterSet();

/// `text` with every character outside `allowed` written as "%XX" escapes of its UTF-8
/// bytes (upper-case hex). An unpaired surrogate is escaped as U+FFFD. Linear in the text.
std::u16string stringByAddingPercentEncoding(std::u16string_view text,
                                             const PercentEncodingSet &allowed);

/// `text` with its "%XX" escapes decoded as UTF-8. Answers nullopt for a "%" that is not
/// followed by two hex digits, or for escapes that decode to invalid UTF-8.
std::optional<std::u16string> stringByRemovingPercentEncoding(std::u16string_view text);

/// An immutable URL reference: the string it was made from, an optional base URL, and the
/// absolute URL the two resolve to (RFC 3986). Equality and hash go by absoluteString.
///
/// Accessors read the absolute URL and answer empty strings (or nullopt) for what it lacks.
/// Every accessor costs at most one pass over the URL; the operations making new URLs cost
/// one parse.
class URL : public Object {
  struct Private {};

public:
  VL_OBJECT(NSURL)

  /// The parsed parts of a URL reference, still percent-escaped. Absent parts are nullopt;
  /// the path is always present, possibly empty.
  struct Components {
    std::optional<std::string> scheme;
    std::optional<std::string> authority;
    std::string path;
    std::optional<std::string> query;
    std::optional<std::string> fragment;
    /// The reference put back together.
    std::string string() const;
  };

  /// Use URLWithString or fileURLWithPath.
  URL(Private, std::u16string relative, URLPtr base, std::u16string absolute, Components parts);

  /// A URL made from `string`, or nil when it is not a valid URL reference: only the
  /// characters RFC 3986 allows, each where its grammar allows it, and "%" only as the start
  /// of a two-hex-digit escape. So "a b", "http://x/%zz", "é" and "" (with no base) give nil.
  static URLPtr URLWithString(std::u16string_view string);
  /// `string` as a reference relative to `relativeToURL` ("#id", "../x", "?q", "//host/p",
  /// "" for the base itself). An absolute `string` ignores the base; a nil base is the same
  /// as URLWithString. Nil when `string` is invalid.
  static URLPtr URLWithString(std::u16string_view string, URLPtr relativeToURL);

  /// A "file://" URL for `path`, escaped as a URL path must be; runs of slashes collapse.
  /// A relative path is taken relative to the current directory. A directory URL ends in
  /// "/". Nil for an empty path.
  static URLPtr fileURLWithPath(std::u16string_view path, bool isDirectory);
  /// As above, asking the file system whether `path` is a directory (a trailing "/" says so
  /// without asking).
  static URLPtr fileURLWithPath(std::u16string_view path);

  /// The resolved URL as text.
  const std::u16string &absoluteString() const { return absolute_; }
  /// The text the URL was made from.
  const std::u16string &relativeString() const { return relative_; }
  /// The base it was made relative to, or nil.
  const URLPtr &baseURL() const { return base_; }
  /// The same URL without a base.
  URLPtr absoluteURL() const;
  /// The parts of the resolved URL.
  const Components &components() const { return parts_; }

  /// "http", "file"... as written; "" when there is none.
  std::u16string scheme() const;
  /// The host, percent-decoded, without the brackets of an IPv6 literal; "" when none.
  std::u16string host() const;
  /// The port number, or nullopt when none is given (or it does not fit an int).
  std::optional<int> port() const;
  /// The path, percent-decoded, without a trailing slash unless it is "/"; "" when there is
  /// none or it does not decode to valid UTF-8.
  std::u16string path() const;
  /// The query, still escaped; nullopt without "?".
  std::optional<std::u16string> query() const;
  /// The fragment, still escaped; nullopt without "#".
  std::optional<std::u16string> fragment() const;
  /// The last component of path(): "c.html" for ".../b/c.html" or ".../c.html/", "/" for the
  /// root, "" without a path.
  std::u16string lastPathComponent() const;
  /// The extension of lastPathComponent(), or "".
  std::u16string pathExtension() const;
  /// True for the "file" scheme, in any case.
  bool isFileURL() const;

  /// The URL with `component` (escaped as a path) added to its path after one "/"; a
  /// trailing "/" with `isDirectory`. Query and fragment stay.
  URLPtr URLByAppendingPathComponent(std::u16string_view component, bool isDirectory = false) const;
  /// The URL of the directory holding the last path component, ending in "/". The root, or
  /// a URL without a path, answers itself.
  URLPtr URLByDeletingLastPathComponent() const;
  /// The URL without the extension of its last path component; a trailing "/" stays.
  URLPtr URLByDeletingPathExtension() const;
  /// The URL with "." and ".." segments of its path removed.
  URLPtr standardizedURL() const;

  /// The shortest reference that, written in the document at this URL, leads to `target`:
  /// from file:///a/b/c.html, file:///a/d/e.png is "../d/e.png", file:///a/b/e.png is
  /// "e.png", and file:///a/b/c.html#id is "#id". Escapes stay as they are, so the answer
  /// can go straight into an href. Nullopt when the two differ in scheme or authority, or
  /// either has no hierarchical path, so that no relative reference can reach it.
  std::optional<std::u16string> relativePathToURL(const URL &target) const;

  bool isEqual(const Object &other) const override;
  size_t hash() const override;
  /// The absolute string.
  std::u16string description() const override;
  /// URLs are immutable: a copy is the same object.
  ObjectPtr copy() const override;

private:
  static URLPtr make(std::u16string relative, URLPtr base, Components parts);
  /// An absolute URL of `parts`, without a base.
  static URLPtr fromParts(Components parts);

  std::u16string relative_;
  URLPtr base_;
  std::u16string absolute_;
  Components parts_;
};

} // namespace vl::ns
