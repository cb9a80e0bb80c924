// File system path strings: components, extensions and standardisation, with the platform's
// rules for "/" as separator, trailing slashes and dot files.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vl::ns {

// All of these are pure string operations: none touches the disk, and none fails. Trailing
// slashes are ignored ("/tmp/" names "tmp"), runs of slashes count as one, and "/" alone is
// the root. Each costs one pass over the path.

/// The last component: "/tmp/a.txt" gives "a.txt", "/tmp/" gives "tmp", "/" gives "/", and
/// "" gives "".
std::u16string lastPathComponent(std::u16string_view path);

/// The text after the last "." of the last component, or "" when there is none. A dot that
/// starts the component does not count: ".profile" has no extension, "a.b/" has "b".
std::u16string pathExtension(std::u16string_view path);

/// The path without its extension and its dot, and without trailing slashes:
/// "/tmp/a.txt" gives "/tmp/a", "a.b/" gives "a", ".profile" stays.
std::u16string stringByDeletingPathExtension(std::u16string_view path);

/// "path.extension", trailing slashes dropped first. An empty extension, an empty path or
/// the root leave the path as it is (without trailing slashes).
std::u16string stringByAppendingPathExtension(std::u16string_view path,
                                              std::u16string_view extension);

/// The two joined by one "/"; runs of slashes collapse and a trailing slash goes, except for
/// the root: ("/tmp/", "a") gives "/tmp/a", ("", "a") gives "a", ("/", "a") gives "/a".
std::u16string stringByAppendingPathComponent(std::u16string_view path,
                                              std::u16string_view component);

/// The path without its last component: "/a/b" gives "/a", "/a" and "/" give "/", "a" gives "".
std::u16string stringByDeletingLastPathComponent(std::u16string_view path);

/// The components, with "/" first for an absolute path and "/" last for a trailing slash:
/// "/tmp/a/" gives {"/", "tmp", "a", "/"}. Empty components are dropped.
std::vector<std::u16string> pathComponents(std::u16string_view path);

/// The components joined again by "/"; the inverse of pathComponents.
std::u16string pathWithComponents(const std::vector<std::u16string> &components);

/// True when the path starts with "/" or with "~" (a home directory).
bool isAbsolutePath(std::u16string_view path);

/// "~" and "~/x" with the current user's home ($HOME, else the password database), "~name"
/// with that user's home. A home that cannot be found leaves the path as it is.
std::u16string stringByExpandingTildeInPath(std::u16string_view path);

/// Expands "~", drops "." components and empty components, resolves ".." against the
/// component before it, and drops a trailing slash. Purely lexical: symbolic links are not
/// followed. ".." above the root stays at the root; leading ".." of a relative path stay.
/// A relative path that reduces to nothing answers ".".
std::u16string stringByStandardizingPath(std::u16string_view path);

} // namespace vl::ns
