#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

/// Operations on slash paths as texts: nothing here looks at the file system. Paths are bytes and
/// come through unharmed. Where a path would be rebuilt, runs of slashes become one and a trailing
/// slash goes.
namespace tav {

/// "/a/b/" gives "b"; only slashes give "/".
[[nodiscard]] std::string_view lastPathComponent(std::string_view path);

/// What follows the last dot of the last component; empty without one, and for a name that begins
/// with its only dot.
[[nodiscard]] std::string_view pathExtension(std::string_view path);

/// "/a.b/c.tar.gz" gives "/a.b/c.tar". A name without extension stays, "a." and ".a" too.
[[nodiscard]] std::string stringByDeletingPathExtension(std::string_view path);
/// "/a" gives "/", "a" gives the empty text, "/" stays.
[[nodiscard]] std::string stringByDeletingLastPathComponent(std::string_view path);
/// An empty path or component adds nothing: "" and "a" give "a", "/a" and "" give "/a".
[[nodiscard]] std::string stringByAppendingPathComponent(std::string_view path,
                                                         std::string_view component);
/// A trailing slash is dropped first: "/tmp/" and "tiff" give "/tmp.tiff". The empty path and "/"
/// have no name to extend and stay.
[[nodiscard]] std::string stringByAppendingPathExtension(std::string_view path,
                                                         std::string_view extension);

/// "/a/b/" gives "/", "a", "b", "/": a leading slash and one trailing slash are components.
[[nodiscard]] std::vector<std::string> pathComponents(std::string_view path);
[[nodiscard]] std::string pathWithComponents(std::span<const std::string> components);

/// Whether the path begins with a slash or a tilde.
[[nodiscard]] bool isAbsolutePath(std::string_view path);

/// "~" and "~/x" with the home folder in place of the tilde; the home of another user is not known
/// here, so "~other" stays, and so does everything when the home folder is empty.
[[nodiscard]] std::string stringByExpandingTildeInPath(std::string_view path,
                                                       std::string_view homeFolder);
/// The way back: the home folder, or a path inside it, begins with "~" instead.
[[nodiscard]] std::string stringByAbbreviatingWithTildeInPath(std::string_view path,
                                                              std::string_view homeFolder);

/// Expands the tilde, removes "." and empty components, and in absolute paths resolves ".." by text
/// alone. Links are not looked at. Where nothing is left of a relative path it is ".".
[[nodiscard]] std::string stringByStandardizingPath(std::string_view path,
                                                    std::string_view homeFolder);

} // namespace tav
