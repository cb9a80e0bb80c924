// File system path strings.
#include "ns/Path.h"

#include "ns/String.h"

#include <cstdlib>
#include <pwd.h>
#include <unistd.h>

namespace vl::ns {

namespace {

std::u16string_view withoutTrailingSlashes(std::u16string_view path) {
  while (path.size() > 1 && path.back() == u'/')
    path.remove_suffix(1);
  return path;
}

// Runs of slashes become one; a trailing slash goes unless it is kept or the path is the root.
std::u16string collapsed(std::u16string_view path, bool keepTrailingSlash = false) {
  std::u16string out;
  out.reserve(path.size());
  for (char16_t c : path) {
    if (c == u'/' && !out.empty() && out.back() == u'/')
      continue;
    out += c;
  }
  if (!keepTrailingSlash && out.size() > 1 && out.back() == u'/')
    out.pop_back();
  return out;
}

// Where the last component of a path without trailing slashes starts.
size_t lastComponentStart(std::u16string_view trimmed) {
  size_t slash = trimmed.rfind(u'/');
  return slash == std::u16string_view::npos ? 0 : slash + 1;
}

// The position of the extension's dot in a path without trailing slashes, or npos.
size_t extensionDot(std::u16string_view trimmed) {
  if (trimmed == u"/")
    return std::u16string_view::npos;
  size_t start = lastComponentStart(trimmed);
  size_t dot = trimmed.rfind(u'.');
  if (dot == std::u16string_view::npos || dot <= start)
    return std::u16string_view::npos;
  return dot;
}

std::u16string homeDirectory(std::u16string_view user) {
  if (user.empty()) {
    if (const char *home = std::getenv("HOME"); home && *home)
      return fromUTF8(home);
  }
  std::string name = toUTF8(user);
  struct passwd entry;
  struct passwd *found = nullptr;
  std::string buffer(16384, '\0');
  int rc = user.empty() ? getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found)
                        : getpwnam_r(name.c_str(), &entry, buffer.data(), buffer.size(), &found);
  if (rc != 0 || !found || !found->pw_dir)
    return {};
  return fromUTF8(found->pw_dir);
}

} // namespace

std::u16string lastPathComponent(std::u16string_view path) {
  std::u16string_view trimmed = withoutTrailingSlashes(path);
  if (trimmed == u"/")
    return u"/";
  return std::u16string(trimmed.substr(lastComponentStart(trimmed)));
}

std::u16string pathExtension(std::u16string_view path) {
  std::u16string_view trimmed = withoutTrailingSlashes(path);
  size_t dot = extensionDot(trimmed);
  return dot == std::u16string_view::npos ? std::u16string()
                                          : std::u16string(trimmed.substr(dot + 1));
}

std::u16string stringByDeletingPathExtension(std::u16string_view path) {
  std::u16string_view trimmed = withoutTrailingSlashes(path);
  size_t dot = extensionDot(trimmed);
  return std::u16string(dot == std::u16string_view::npos ? trimmed : trimmed.substr(0, dot));
}

std::u16string stringByAppendingPathExtension(std::u16string_view path,
                                              std::u16string_view extension) {
  std::u16string_view trimmed = withoutTrailingSlashes(path);
  if (extension.empty() || trimmed.empty() || trimmed == u"/")
    return std::u16string(trimmed);
  std::u16string out(trimmed);
  out += u'.';
  out += extension;
  return out;
}

std::u16string stringByAppendingPathComponent(std::u16string_view path,
                                              std::u16string_view component) {
  if (path.empty())
    return collapsed(component);
  if (component.empty())
    return collapsed(path);
  std::u16string joined(path);
  joined += u'/';
  joined += component;
  return collapsed(joined);
}

std::u16string stringByDeletingLastPathComponent(std::u16string_view path) {
  std::u16string_view trimmed = withoutTrailingSlashes(path);
  if (trimmed == u"/")
    return u"/";
  size_t slash = trimmed.rfind(u'/');
  if (slash == std::u16string_view::npos)
    return {};
  std::u16string_view parent = trimmed.substr(0, slash);
  while (!parent.empty() && parent.back() == u'/')
    parent.remove_suffix(1);
  return parent.empty() ? u"/" : std::u16string(parent);
}

std::vector<std::u16string> pathComponents(std::u16string_view path) {
  std::vector<std::u16string> components;
  if (path.empty())
    return components;
  if (path.front() == u'/')
    components.emplace_back(u"/");
  size_t i = 0;
  while (i < path.size()) {
    size_t slash = path.find(u'/', i);
    if (slash == std::u16string_view::npos)
      slash = path.size();
    if (slash > i)
      components.emplace_back(path.substr(i, slash - i));
    i = slash + 1;
  }
  if (path.back() == u'/' && components.size() > 1)
    components.emplace_back(u"/");
  return components;
}

std::u16string pathWithComponents(const std::vector<std::u16string> &components) {
  std::u16string joined;
  for (size_t i = 0; i < components.size(); ++i) {
    if (i > 0)
      joined += u'/';
    joined += components[i];
  }
  // The "/" components double their separators; collapsing undoes that.
  return collapsed(joined, true);
}

bool isAbsolutePath(std::u16string_view path) {
  return !path.empty() && (path.front() == u'/' || path.front() == u'~');
}

std::u16string stringByExpandingTildeInPath(std::u16string_view path) {
  if (path.empty() || path.front() != u'~')
    return std::u16string(path);
  size_t slash = path.find(u'/');
  if (slash == std::u16string_view::npos)
    slash = path.size();
  std::u16string home = homeDirectory(path.substr(1, slash - 1));
  if (home.empty())
    return std::u16string(path);
  return collapsed(home + std::u16string(path.substr(slash)));
}

std::u16string stringByStandardizingPath(std::u16string_view path) {
  if (path.empty())
    return {};
  std::u16string expanded = stringByExpandingTildeInPath(path);
  bool absolute = !expanded.empty() && expanded.front() == u'/';
  std::vector<std::u16string_view> kept;
  std::u16string_view rest = expanded;
  while (!rest.empty()) {
    size_t slash = rest.find(u'/');
    std::u16string_view part = rest.substr(0, slash);
    rest = slash == std::u16string_view::npos ? std::u16string_view() : rest.substr(slash + 1);
    if (part.empty() || part == u".")
      continue;
    if (part == u"..") {
      if (!kept.empty() && kept.back() != u"..")
        kept.pop_back();
      else if (!absolute)
        kept.push_back(part);
      continue;
    }
    kept.push_back(part);
  }
  std::u16string out = absolute ? u"/" : u"";
  for (size_t i = 0; i < kept.size(); ++i) {
    if (i > 0)
      out += u'/';
    out += kept[i];
  }
  if (out.empty())
    out = u".";
  return out;
}

} // namespace vl::ns
