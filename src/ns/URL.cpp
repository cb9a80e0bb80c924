// URLs: RFC 3986 parsing, reference resolution, file URLs and percent escaping.
#include "ns/URL.h"

#include "ns/Path.h"
#include "ns/String.h"

#include <algorithm>
#include <charconv>
#include <functional>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace vl::ns {

namespace {

constexpr std::string_view Alphanumerics =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789";

bool isAlpha(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}
bool isDigit(char c) {
  return c >= '0' && c <= '9';
}
bool isHex(char c) {
  return isDigit(c) || (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f');
}
int hexValue(char c) {
  return isDigit(c) ? c - '0' : (c >= 'a' ? c - 'a' + 10 : c - 'A' + 10);
}
bool isUnreserved(char c) {
  return isAlpha(c) || isDigit(c) || c == '-' || c == '.' || c == '_' || c == '~';
}
bool isSubDelimiter(char c) {
  return std::string_view("!$&'()*+,;=").find(c) != std::string_view::npos;
}
bool isPathCharacter(char c) {
  return isUnreserved(c) || isSubDelimiter(c) || c == ':' || c == '@';
}

// True when every character of `text` satisfies `allowed`, or is a "%XX" escape.
template <class Allowed> bool allValid(std::string_view text, Allowed allowed) {
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '%') {
      if (i + 2 >= text.size() || !isHex(text[i + 1]) || !isHex(text[i + 2]))
        return false;
      i += 2;
    } else if (!allowed(text[i])) {
      return false;
    }
  }
  return true;
}

bool validScheme(std::string_view scheme) {
  if (scheme.empty() || !isAlpha(scheme.front()))
    return false;
  return std::all_of(scheme.begin(), scheme.end(), [](char c) {
    return isAlpha(c) || isDigit(c) || c == '+' || c == '-' || c == '.';
  });
}

bool validPort(std::string_view port) {
  return std::all_of(port.begin(), port.end(), isDigit);
}

bool validAuthority(std::string_view authority) {
  size_t at = authority.find('@');
  if (at != std::string_view::npos) {
    if (!allValid(authority.substr(0, at),
                  [](char c) { return isUnreserved(c) || isSubDelimiter(c) || c == ':'; }))
      return false;
    authority.remove_prefix(at + 1);
  }
  if (!authority.empty() && authority.front() == '[') {
    size_t close = authority.find(']');
    if (close == std::string_view::npos)
      return false;
    std::string_view literal = authority.substr(1, close - 1);
    if (literal.empty() || !std::all_of(literal.begin(), literal.end(), [](char c) {
          return isUnreserved(c) || isSubDelimiter(c) || c == ':';
        }))
      return false;
    std::string_view rest = authority.substr(close + 1);
    return rest.empty() || (rest.front() == ':' && validPort(rest.substr(1)));
  }
  size_t colon = authority.rfind(':');
  if (colon != std::string_view::npos) {
    if (!validPort(authority.substr(colon + 1)))
      return false;
    authority = authority.substr(0, colon);
  }
  return allValid(authority, [](char c) { return isUnreserved(c) || isSubDelimiter(c); });
}

// Splits and checks a URL reference; nullopt when it breaks the grammar.
std::optional<URL::Components> parse(std::string_view s) {
  URL::Components parts;
  size_t colon = s.find(':');
  size_t delimiter = s.find_first_of("/?#");
  if (colon != std::string_view::npos && colon < delimiter) {
    // A colon in the first segment makes it a scheme; a relative reference may not have one.
    if (!validScheme(s.substr(0, colon)))
      return std::nullopt;
    parts.scheme = std::string(s.substr(0, colon));
    s.remove_prefix(colon + 1);
  }
  if (s.starts_with("//")) {
    s.remove_prefix(2);
    size_t end = std::min(s.find_first_of("/?#"), s.size());
    if (!validAuthority(s.substr(0, end)))
      return std::nullopt;
    parts.authority = std::string(s.substr(0, end));
    s.remove_prefix(end);
  }
  size_t end = std::min(s.find_first_of("?#"), s.size());
  auto pathCharacter = [](char c) { return isPathCharacter(c) || c == '/'; };
  auto queryCharacter = [](char c) { return isPathCharacter(c) || c == '/' || c == '?'; };
  if (!allValid(s.substr(0, end), pathCharacter))
    return std::nullopt;
  parts.path = std::string(s.substr(0, end));
  s.remove_prefix(end);
  if (!s.empty() && s.front() == '?') {
    s.remove_prefix(1);
    end = std::min(s.find('#'), s.size());
    if (!allValid(s.substr(0, end), queryCharacter))
      return std::nullopt;
    parts.query = std::string(s.substr(0, end));
    s.remove_prefix(end);
  }
  if (!s.empty() && s.front() == '#') {
    s.remove_prefix(1);
    if (!allValid(s, queryCharacter))
      return std::nullopt;
    parts.fragment = std::string(s);
  }
  return parts;
}

// Drops "." and ".." segments as reference resolution does.
std::string removeDotSegments(std::string_view input) {
  std::string in(input);
  std::string out;
  size_t i = 0;
  auto popSegment = [&out] {
    size_t slash = out.rfind('/');
    out.erase(slash == std::string::npos ? 0 : slash);
  };
  while (i < in.size()) {
    std::string_view rest = std::string_view(in).substr(i);
    if (rest.starts_with("../")) {
      i += 3;
    } else if (rest.starts_with("./")) {
      i += 2;
    } else if (rest.starts_with("/./")) {
      i += 2;
    } else if (rest == "/.") {
      in.replace(i, 2, "/");
    } else if (rest.starts_with("/../")) {
      i += 3;
      popSegment();
    } else if (rest == "/..") {
      in.replace(i, 3, "/");
      popSegment();
    } else if (rest == "." || rest == "..") {
      i = in.size();
    } else {
      size_t next = in.find('/', rest.front() == '/' ? i + 1 : i);
      if (next == std::string::npos)
        next = in.size();
      out.append(in, i, next - i);
      i = next;
    }
  }
  return out;
}

// The reference `ref` resolved against the absolute parts of a base.
URL::Components resolve(const URL::Components &base, const URL::Components &ref) {
  URL::Components target;
  if (ref.scheme) {
    target = ref;
    target.path = removeDotSegments(ref.path);
    return target;
  }
  target.scheme = base.scheme;
  if (ref.authority) {
    target.authority = ref.authority;
    target.path = removeDotSegments(ref.path);
    target.query = ref.query;
  } else {
    target.authority = base.authority;
    if (ref.path.empty()) {
      target.path = base.path;
      target.query = ref.query ? ref.query : base.query;
    } else {
      if (ref.path.front() == '/') {
        target.path = removeDotSegments(ref.path);
      } else {
        std::string merged;
        if (base.authority && base.path.empty()) {
          merged = "/" + ref.path;
        } else {
          size_t slash = base.path.rfind('/');
          merged =
              slash == std::string::npos ? ref.path : base.path.substr(0, slash + 1) + ref.path;
        }
        target.path = removeDotSegments(merged);
      }
      target.query = ref.query;
    }
  }
  target.fragment = ref.fragment;
  return target;
}

std::optional<std::string> asciiOnly(std::u16string_view text) {
  std::string out;
  out.reserve(text.size());
  for (char16_t c : text) {
    if (c >= 128)
      return std::nullopt;
    out += static_cast<char>(c);
  }
  return out;
}

// Percent-decodes ASCII text; nullopt for malformed escapes or invalid UTF-8.
std::optional<std::u16string> decode(std::string_view text) {
  std::string bytes;
  bytes.reserve(text.size());
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '%') {
      bytes += text[i];
      continue;
    }
    if (i + 2 >= text.size() || !isHex(text[i + 1]) || !isHex(text[i + 2]))
      return std::nullopt;
    bytes += static_cast<char>(hexValue(text[i + 1]) * 16 + hexValue(text[i + 2]));
    i += 2;
  }
  std::u16string out;
  if (!fromUTF8Strict(bytes, out))
    return std::nullopt;
  return out;
}

std::string lowercase(std::string_view text) {
  std::string out(text);
  for (char &c : out)
    if (c >= 'A' && c <= 'Z')
      c = static_cast<char>(c - 'A' + 'a');
  return out;
}

std::vector<std::string_view> segments(std::string_view path) {
  std::vector<std::string_view> out;
  if (!path.empty() && path.front() == '/')
    path.remove_prefix(1);
  while (true) {
    size_t slash = path.find('/');
    out.push_back(path.substr(0, slash));
    if (slash == std::string_view::npos)
      break;
    path.remove_prefix(slash + 1);
  }
  return out;
}

std::string escapePath(std::u16string_view path) {
  return toUTF8(stringByAddingPercentEncoding(path, URLPathAllowedCharacterSet()));
}

} // namespace

// Percent escaping.

PercentEncodingSet::PercentEncodingSet(std::string_view characters) {
  *this = adding(characters);
}

PercentEncodingSet PercentEncodingSet::adding(std::string_view characters) const {
  PercentEncodingSet set = *this;
  for (char c : characters)
    if (static_cast<unsigned char>(c) < 128)
      set.bits_.set(static_cast<size_t>(c));
  return set;
}

PercentEncodingSet PercentEncodingSet::removing(std::string_view characters) const {
  PercentEncodingSet set = *this;
  for (char c : characters)
    if (static_cast<unsigned char>(c) < 128)
      set.bits_.reset(static_cast<size_t>(c));
  return set;
}

const PercentEncodingSet &URLUserAllowedCharacterSet() {
  static const PercentEncodingSet set = PercentEncodingSet(Alphanumerics).adding("-._~!$&'()*+,;=");
  return set;
}

const PercentEncodingSet &URLPasswordAllowedCharacterSet() {
  return URLUserAllowedCharacterSet();
}

const PercentEncodingSet &URLHostAllowedCharacterSet() {
  static const PercentEncodingSet set = URLUserAllowedCharacterSet().adding(":[]");
  return set;
}

const PercentEncodingSet &URLPathAllowedCharacterSet() {
  static const PercentEncodingSet set =
      PercentEncodingSet(Alphanumerics).adding("-._~!$&'()*+,=:@/");
  return set;
}

const PercentEncodingSet &URLQueryAllowedCharacterSet() {
  static const PercentEncodingSet set = URLPathAllowedCharacterSet().adding(";?");
  return set;
}

const PercentEncodingSet &URLFragmentAllowedCharacterSet() {
  return URLQueryAllowedCharacterSet();
}

std::u16string stringByAddingPercentEncoding(std::u16string_view text,
                                             const PercentEncodingSet &allowed) {
  static constexpr char Hex[] = "0123456789ABCDEF";
  std::u16string out;
  out.reserve(text.size());
  for (size_t i = 0; i < text.size(); ++i) {
    if (allowed.contains(text[i])) {
      out += text[i];
      continue;
    }
    size_t length = 1;
    if (i + 1 < text.size() && text[i] >= 0xD800 && text[i] < 0xDC00 && text[i + 1] >= 0xDC00 &&
        text[i + 1] < 0xE000)
      length = 2;
    for (unsigned char byte : toUTF8(text.substr(i, length))) {
      out += u'%';
      out += static_cast<char16_t>(Hex[byte >> 4]);
      out += static_cast<char16_t>(Hex[byte & 0xF]);
    }
    i += length - 1;
  }
  return out;
}

std::optional<std::u16string> stringByRemovingPercentEncoding(std::u16string_view text) {
  // UTF-8 never uses ASCII bytes inside a multi-byte sequence, so escapes survive the
  // conversion untouched.
  return decode(toUTF8(text));
}

// URL.

std::string URL::Components::string() const {
  std::string out;
  if (scheme)
    out += *scheme + ":";
  if (authority)
    out += "//" + *authority;
  out += path;
  if (query)
    out += "?" + *query;
  if (fragment)
    out += "#" + *fragment;
  return out;
}

URL::URL(Private, std::u16string relative, URLPtr base, std::u16string absolute, Components parts)
    : relative_(std::move(relative)), base_(std::move(base)), absolute_(std::move(absolute)),
      parts_(std::move(parts)) {}

URLPtr URL::make(std::u16string relative, URLPtr base, Components parts) {
  std::u16string absolute = base ? u16(parts.string()) : relative;
  return std::make_shared<URL>(Private{}, std::move(relative), std::move(base), std::move(absolute),
                               std::move(parts));
}

URLPtr URL::fromParts(Components parts) {
  std::u16string string = u16(parts.string());
  return make(std::move(string), nullptr, std::move(parts));
}

URLPtr URL::URLWithString(std::u16string_view string) {
  return URLWithString(string, nullptr);
}

URLPtr URL::URLWithString(std::u16string_view string, URLPtr relativeToURL) {
  std::optional<std::string> ascii = asciiOnly(string);
  if (!ascii)
    return nullptr;
  std::optional<Components> parts = parse(*ascii);
  if (!parts || (ascii->empty() && !relativeToURL))
    return nullptr;
  if (!relativeToURL || parts->scheme)
    return make(std::u16string(string), nullptr, std::move(*parts));
  Components resolved = resolve(relativeToURL->parts_, *parts);
  return make(std::u16string(string), std::move(relativeToURL), std::move(resolved));
}

URLPtr URL::fileURLWithPath(std::u16string_view path, bool isDirectory) {
  if (path.empty())
    return nullptr;
  std::u16string absolute(path);
  if (absolute.front() != u'/') {
    std::string cwd(4096, '\0');
    if (!getcwd(cwd.data(), cwd.size()))
      return nullptr;
    absolute = stringByAppendingPathComponent(fromUTF8(cwd.c_str()), path);
  }
  absolute = pathWithComponents(pathComponents(absolute));
  if (isDirectory && absolute.back() != u'/')
    absolute += u'/';
  Components parts;
  parts.scheme = "file";
  parts.authority = "";
  parts.path = escapePath(absolute);
  return fromParts(std::move(parts));
}

URLPtr URL::fileURLWithPath(std::u16string_view path) {
  if (path.empty())
    return nullptr;
  struct stat info;
  bool isDirectory =
      path.back() == u'/' || (stat(toUTF8(path).c_str(), &info) == 0 && S_ISDIR(info.st_mode));
  return fileURLWithPath(path, isDirectory);
}

URLPtr URL::absoluteURL() const {
  if (!base_)
    return std::const_pointer_cast<URL>(self<URL>());
  return make(absolute_, nullptr, parts_);
}

std::u16string URL::scheme() const {
  return parts_.scheme ? u16(*parts_.scheme) : std::u16string();
}

std::u16string URL::host() const {
  if (!parts_.authority)
    return {};
  std::string_view host = *parts_.authority;
  if (size_t at = host.find('@'); at != std::string_view::npos)
    host.remove_prefix(at + 1);
  if (!host.empty() && host.front() == '[')
    return u16(host.substr(1, host.find(']') - 1));
  host = host.substr(0, host.rfind(':'));
  return decode(host).value_or(std::u16string());
}

std::optional<int> URL::port() const {
  if (!parts_.authority)
    return std::nullopt;
  std::string_view authority = *parts_.authority;
  size_t colon = authority.rfind(':');
  if (colon == std::string_view::npos || authority.find(']', colon) != std::string_view::npos ||
      authority.find('@', colon) != std::string_view::npos)
    return std::nullopt;
  std::string_view digits = authority.substr(colon + 1);
  int port = 0;
  auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), port);
  if (digits.empty() || error != std::errc() || end != digits.data() + digits.size())
    return std::nullopt;
  return port;
}

std::u16string URL::path() const {
  std::string_view raw = parts_.path;
  while (raw.size() > 1 && raw.back() == '/')
    raw.remove_suffix(1);
  return decode(raw).value_or(std::u16string());
}

std::optional<std::u16string> URL::query() const {
  if (!parts_.query)
    return std::nullopt;
  return u16(*parts_.query);
}

std::optional<std::u16string> URL::fragment() const {
  if (!parts_.fragment)
    return std::nullopt;
  return u16(*parts_.fragment);
}

std::u16string URL::lastPathComponent() const {
  return ns::lastPathComponent(path());
}

std::u16string URL::pathExtension() const {
  return ns::pathExtension(lastPathComponent());
}

bool URL::isFileURL() const {
  return parts_.scheme && lowercase(*parts_.scheme) == "file";
}

URLPtr URL::URLByAppendingPathComponent(std::u16string_view component, bool isDirectory) const {
  Components parts = parts_;
  if (parts.path.empty() || parts.path.back() != '/')
    parts.path += '/';
  while (!component.empty() && component.front() == u'/')
    component.remove_prefix(1);
  parts.path += escapePath(component);
  if (isDirectory && parts.path.back() != '/')
    parts.path += '/';
  return fromParts(std::move(parts));
}

URLPtr URL::URLByDeletingLastPathComponent() const {
  std::string_view path = parts_.path;
  while (path.size() > 1 && path.back() == '/')
    path.remove_suffix(1);
  size_t slash = path.rfind('/');
  if (path.empty() || path == "/" || slash == std::string_view::npos)
    return std::const_pointer_cast<URL>(self<URL>());
  Components parts = parts_;
  parts.path = std::string(path.substr(0, slash + 1));
  parts.query.reset();
  parts.fragment.reset();
  return fromParts(std::move(parts));
}

URLPtr URL::URLByDeletingPathExtension() const {
  std::string_view path = parts_.path;
  bool trailingSlash = path.size() > 1 && path.back() == '/';
  while (path.size() > 1 && path.back() == '/')
    path.remove_suffix(1);
  size_t start = path.rfind('/');
  start = start == std::string_view::npos ? 0 : start + 1;
  size_t dot = path.rfind('.');
  if (dot == std::string_view::npos || dot <= start)
    return std::const_pointer_cast<URL>(self<URL>());
  Components parts = parts_;
  parts.path = std::string(path.substr(0, dot)) + (trailingSlash ? "/" : "");
  return fromParts(std::move(parts));
}

URLPtr URL::standardizedURL() const {
  Components parts = parts_;
  parts.path = removeDotSegments(parts_.path);
  return fromParts(std::move(parts));
}

std::optional<std::u16string> URL::relativePathToURL(const URL &target) const {
  const Components &from = parts_;
  const Components &to = target.parts_;
  if (!from.scheme || !to.scheme || lowercase(*from.scheme) != lowercase(*to.scheme) ||
      from.authority != to.authority)
    return std::nullopt;
  std::string fromPath = removeDotSegments(from.path.empty() ? "/" : from.path);
  std::string toPath = removeDotSegments(to.path.empty() ? "/" : to.path);
  if (fromPath.front() != '/' || toPath.front() != '/')
    return std::nullopt;

  std::string out;
  if (fromPath == toPath && from.query == to.query && to.fragment)
    return u16("#" + *to.fragment);

  std::vector<std::string_view> fromSegments = segments(fromPath);
  std::vector<std::string_view> toSegments = segments(toPath);
  // Only directories are shared: the last segment names the document (or "" after a "/").
  size_t common = 0;
  while (common + 1 < fromSegments.size() && common + 1 < toSegments.size() &&
         fromSegments[common] == toSegments[common])
    ++common;
  for (size_t i = common; i + 1 < fromSegments.size(); ++i)
    out += "../";
  std::string down;
  for (size_t i = common; i < toSegments.size(); ++i) {
    if (i > common)
      down += '/';
    down += toSegments[i];
  }
  // A colon in the first segment would read as a scheme.
  if (out.empty() && down.substr(0, down.find('/')).find(':') != std::string::npos)
    out = "./";
  out += down;
  if (out.empty())
    out = "./";
  if (to.query)
    out += "?" + *to.query;
  if (to.fragment)
    out += "#" + *to.fragment;
  return u16(out);
}

bool URL::isEqual(const Object &other) const {
  auto *url = dynamic_cast<const URL *>(&other);
  return url && url->absolute_ == absolute_;
}

size_t URL::hash() const {
  return std::hash<std::u16string>()(absolute_);
}

std::u16string URL::description() const {
  return absolute_;
}

ObjectPtr URL::copy() const {
  return std::const_pointer_cast<Object>(shared_from_this());
}

} // namespace vl::ns
