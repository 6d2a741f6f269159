#include "base/PathString.hpp"

#include <algorithm>
#include <cstddef>

namespace tav {

namespace {

constexpr char slash = '/';

bool isOnlySlashes(std::string_view path) {
    return !path.empty() && path.find_first_not_of(slash) == std::string_view::npos;
}

// Without slashes at the end; "/" when there is nothing else.
std::string_view withoutTrailingSlashes(std::string_view path) {
    while (path.size() > 1 && path.back() == slash) {
        path.remove_suffix(1);
    }
    return path;
}

// Calls `use` with every component that is not empty.
template <class Use>
void forEachName(std::string_view path, Use use) {
    std::size_t begin = 0;
    while ((begin = path.find_first_not_of(slash, begin)) != std::string_view::npos) {
        const std::size_t end = std::min(path.find(slash, begin), path.size());
        use(path.substr(begin, end - begin));
        begin = end;
    }
}

void appendName(std::string& path, std::string_view name) {
    if (!path.empty() && path.back() != slash) {
        path += slash;
    }
    path += name;
}

// Whether there are no slashes to leave out but one at the beginning, as in most paths.
bool isTidy(std::string_view path) {
    return !path.ends_with(slash) && path.find("//") == std::string_view::npos;
}

// The names of `path` behind `target`, with one slash between; a leading slash counts only when
// `target` is empty.
void appendPath(std::string& target, std::string_view path) {
    if (isTidy(path)) {
        if (target.empty()) {
            target = path;
        } else if (!path.empty()) {
            appendName(target, path.substr(path.starts_with(slash) ? 1 : 0));
        }
        return;
    }
    if (target.empty() && path.starts_with(slash)) {
        target = slash;
    }
    forEachName(path, [&](std::string_view name) { appendName(target, name); });
}

std::string rebuilt(std::string_view path) {
    std::string result;
    result.reserve(path.size());
    appendPath(result, path);
    return result;
}

// Where the dot of the extension stands in a name; npos without an extension. A dot at the end has
// none behind it, so "a.", "." and ".." are names without.
std::size_t extensionDot(std::string_view name) {
    const std::size_t dot = name.rfind('.');
    return dot == 0 || dot + 1 == name.size() ? std::string_view::npos : dot;
}

} // namespace

std::string_view lastPathComponent(std::string_view path) {
    const std::string_view trimmed = withoutTrailingSlashes(path);
    if (trimmed == "/") {
        return trimmed;
    }
    return trimmed.substr(trimmed.rfind(slash) + 1); // npos + 1 is 0
}

std::string_view pathExtension(std::string_view path) {
    const std::string_view name = lastPathComponent(path);
    const std::size_t dot = extensionDot(name);
    return dot == std::string_view::npos ? std::string_view() : name.substr(dot + 1);
}

std::string stringByDeletingPathExtension(std::string_view path) {
    std::string result = rebuilt(path);
    if (const std::string_view extension = pathExtension(result); !extension.empty()) {
        result.resize(result.size() - extension.size() - 1);
    }
    return result;
}

std::string stringByDeletingLastPathComponent(std::string_view path) {
    std::string result = rebuilt(path);
    const std::size_t last = result.rfind(slash);
    if (last == std::string::npos) {
        return {};
    }
    result.resize(last == 0 ? 1 : last);
    return result;
}

std::string stringByAppendingPathComponent(std::string_view path, std::string_view component) {
    std::string result;
    result.reserve(path.size() + 1 + component.size());
    appendPath(result, path);
    appendPath(result, component);
    return result;
}

std::string stringByAppendingPathExtension(std::string_view path, std::string_view extension) {
    std::string result = rebuilt(path);
    if (!result.empty() && result != "/") {
        result += '.';
        result += extension;
    }
    return result;
}

std::vector<std::string> pathComponents(std::string_view path) {
    std::vector<std::string> components;
    if (path.starts_with(slash)) {
        components.emplace_back("/");
    }
    forEachName(path, [&](std::string_view name) { components.emplace_back(name); });
    if (path.ends_with(slash) && !isOnlySlashes(path)) {
        components.emplace_back("/");
    }
    return components;
}

std::string pathWithComponents(std::span<const std::string> components) {
    std::string result;
    for (const std::string& component : components) {
        appendPath(result, component);
    }
    return result;
}

bool isAbsolutePath(std::string_view path) {
    return path.starts_with(slash) || path.starts_with('~');
}

std::string stringByExpandingTildeInPath(std::string_view path, std::string_view homeFolder) {
    const bool isOfThisUser = path == "~" || path.starts_with("~/");
    if (!isOfThisUser || homeFolder.empty()) {
        return std::string(path);
    }
    return stringByAppendingPathComponent(homeFolder, path.substr(1));
}

std::string stringByAbbreviatingWithTildeInPath(std::string_view path,
                                                std::string_view homeFolder) {
    const std::string home = rebuilt(homeFolder);
    const std::string whole = rebuilt(path);
    if (home.empty() || !whole.starts_with(home)) {
        return std::string(path);
    }
    const std::string_view inside = std::string_view(whole).substr(home.size());
    if (!inside.empty() && inside.front() != slash && home != "/") {
        return std::string(path);
    }
    return stringByAppendingPathComponent("~", inside);
}

std::string stringByStandardizingPath(std::string_view path, std::string_view homeFolder) {
    const std::string expanded = stringByExpandingTildeInPath(path, homeFolder);
    const bool isFromRoot = expanded.starts_with(slash);
    std::string result(isFromRoot ? "/" : "");
    forEachName(expanded, [&](std::string_view name) {
        if (name == "..") {
            if (isFromRoot) {
                result.resize(std::max<std::size_t>(result.rfind(slash), 1));
                return;
            }
        } else if (name == ".") {
            return;
        }
        appendName(result, name);
    });
    if (result.empty() && !path.empty()) {
        return ".";
    }
    return result;
}

} // namespace tav
