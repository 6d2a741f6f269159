#include "foundation/WindowsPath.hpp"

#include "base/PathString.hpp"
#include "base/Unicode.hpp"
#include "foundation/WindowsFilename.hpp"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace tav {

namespace {

std::string replaced(std::string_view text, char from, char to) {
    std::string result(text);
    std::replace(result.begin(), result.end(), from, to);
    return result;
}

// How many bytes the drive prefix has; 0 without one.
std::size_t drivePrefixLength(std::string_view path) {
    constexpr std::string_view behindLetter = ":\\";
    constexpr std::size_t longestUnit = 3;
    for (std::size_t at = 1; at <= longestUnit && at < path.size(); ++at) {
        if (path.substr(at, behindLetter.size()) == behindLetter &&
            utf16Length(path.substr(0, at)) == 1) {
            return at + behindLetter.size();
        }
    }
    return 0;
}

} // namespace

std::string windowsPathFromPath(std::string_view path) { return replaced(path, '/', '\\'); }

std::string pathFromWindowsPath(std::string_view path) {
    std::string result = replaced(path, '\\', '/');
    const bool isDriveRoot = !path.empty() && drivePrefixLength(path) == path.size();
    if (!isDriveRoot && result.size() > 1 && result.back() == '/') {
        result.pop_back();
    }
    return result;
}

WindowsPathParts decomposeWindowsPath(std::string_view path) {
    std::string converted = windowsPathFromPath(path);
    const std::size_t length = drivePrefixLength(converted);
    if (length == 0) {
        return {{}, std::move(converted)};
    }
    return {uppercaseString(std::string_view(converted).substr(0, length)),
            converted.substr(length)};
}

std::string windowsStringByDeletingPathExtension(std::string_view path) {
    return windowsPathFromPath(stringByDeletingPathExtension(pathFromWindowsPath(path)));
}

std::string windowsStringByAppendingPathExtension(std::string_view path,
                                                  std::string_view extension) {
    return windowsPathFromPath(
        stringByAppendingPathExtension(pathFromWindowsPath(path), extension));
}

std::string windowsPathExtension(std::string_view path) {
    return std::string(pathExtension(pathFromWindowsPath(path)));
}

std::string windowsStringByDeletingLastPathComponent(std::string_view path) {
    const WindowsPathParts parts = decomposeWindowsPath(path);
    return parts.drive +
           windowsPathFromPath(stringByDeletingLastPathComponent(pathFromWindowsPath(parts.path)));
}

std::string windowsStringByAppendingPathComponent(std::string_view path,
                                                  std::string_view component) {
    WindowsPathParts parts = decomposeWindowsPath(path);
    if (parts.path.empty()) {
        return parts.drive.append(component);
    }
    return parts.drive + windowsPathFromPath(stringByAppendingPathComponent(
                             pathFromWindowsPath(parts.path), component));
}

std::string windowsLastPathComponent(std::string_view path) {
    return std::string(lastPathComponent(pathFromWindowsPath(decomposeWindowsPath(path).path)));
}

std::vector<std::string> windowsPathComponents(std::string_view path) {
    WindowsPathParts parts = decomposeWindowsPath(path);
    std::vector<std::string> components = pathComponents(pathFromWindowsPath(parts.path));
    if (!parts.drive.empty()) {
        components.insert(components.begin(), std::move(parts.drive));
    }
    return components;
}

std::string windowsPathWithComponents(std::span<const std::string> components) {
    return windowsPathFromPath(pathWithComponents(components));
}

std::string windowsValidPathname(std::string_view path) {
    const WindowsPathParts parts = decomposeWindowsPath(path);
    return parts.drive + replaceInvalidChars(parts.path, illegalPathnameCharset, "_");
}

} // namespace tav
