#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

/// Paths with "\" between their components and perhaps a drive prefix ("C:\") in front, as texts.
///
/// Positions and lengths count UTF-16 units, so a drive's letter may be any character up to U+FFFF,
/// or a byte that is no UTF-8. "Slash form" is the path with "/", which the operations of
/// base/PathString.hpp take. Any thread.
namespace tav {

/// Every "/" as "\"; nothing else changes.
[[nodiscard]] std::string windowsPathFromPath(std::string_view path);

/// Every "\" as "/", and one separator at the end dropped. A drive's root ("C:\") keeps its own,
/// and so does a path of one character. "C:/" is no drive's root here and gives "C:".
[[nodiscard]] std::string pathFromWindowsPath(std::string_view path);

struct WindowsPathParts {
    /// The first three characters, upper-cased (full Unicode: "ß:\" gives "SS:\"), when they end in
    /// ":\" or ":/"; otherwise empty.
    std::string drive;
    /// What follows, with "\" as separator.
    std::string path;

    friend bool operator==(const WindowsPathParts&, const WindowsPathParts&) = default;
};

[[nodiscard]] WindowsPathParts decomposeWindowsPath(std::string_view path);

/// The operations of slash paths on Windows paths. Those on extensions take the path as it is;
/// those on components leave the drive prefix aside and put it back, upper-cased.
[[nodiscard]] std::string windowsStringByDeletingPathExtension(std::string_view path);
[[nodiscard]] std::string windowsStringByAppendingPathExtension(std::string_view path,
                                                                std::string_view extension);
[[nodiscard]] std::string windowsPathExtension(std::string_view path);
[[nodiscard]] std::string windowsStringByDeletingLastPathComponent(std::string_view path);
/// Where nothing follows the drive prefix, the component is taken as it is, slashes and all: "C:\"
/// and "x/y" give "C:\x/y".
[[nodiscard]] std::string windowsStringByAppendingPathComponent(std::string_view path,
                                                                std::string_view component);
[[nodiscard]] std::string windowsLastPathComponent(std::string_view path);
/// The drive prefix comes first, when there is one. A separator that is a component is "/", as in
/// slash paths.
[[nodiscard]] std::vector<std::string> windowsPathComponents(std::string_view path);
[[nodiscard]] std::string windowsPathWithComponents(std::span<const std::string> components);

/// The path with "_" for what is illegal between separators; the drive prefix is upper-cased.
/// Dots and blanks at the end stay.
[[nodiscard]] std::string windowsValidPathname(std::string_view path);

} // namespace tav
