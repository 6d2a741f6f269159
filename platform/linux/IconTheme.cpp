#include "platform/linux/IconTheme.hpp"

#include "base/PathString.hpp"
#include "platform/FileSystem.hpp"
#include "platform/linux/KeyFile.hpp"

#include <algorithm>
#include <cstdint>
#include <utility>

namespace tav::internal {
namespace {

constexpr std::uint64_t largestDescription = 1U << 20U;
constexpr std::size_t mostThemes = 16;
constexpr std::size_t mostDirectories = 1000;
// Sharp in lists and in panels, and every theme has it.
constexpr unsigned bestSize = 48;

bool isPlainName(std::string_view name) {
    return !name.empty() && name.front() != '.' && name.find('/') == std::string_view::npos &&
           name.find('\0') == std::string_view::npos;
}

bool isInside(std::string_view path) {
    const std::vector<std::string> components = pathComponents(path);
    return !components.empty() &&
           std::all_of(components.begin(), components.end(),
                       [](const std::string& component) { return isPlainName(component); });
}

/// Smaller is better: the distance to the best size, above it first.
unsigned rankOfSize(unsigned size) {
    constexpr unsigned below = 2000000;
    return size >= bestSize ? size - bestSize : below + bestSize - size;
}

} // namespace

IconTheme::IconTheme(std::vector<std::string> iconFolders, std::string_view themeName)
    : iconFolders_(std::move(iconFolders)) {
    addThemes(themeName);
    addThemes("Adwaita");
    addThemes("hicolor");
}

/// The text of the first description that there is.
std::string IconTheme::descriptionOf(std::string_view theme) const {
    for (const std::string& folder : iconFolders_) {
        const Result<Data> bytes = realFileSystem().readFile(
            stringByAppendingPathComponent(folder, std::string(theme) + "/index.theme"),
            largestDescription);
        if (bytes.ok()) {
            return std::string(textOf(bytes.value()));
        }
    }
    return {};
}

/// The theme with those that it inherits from, each once, in the order in which they are named.
void IconTheme::addThemes(std::string_view name) {
    std::vector<std::string> waiting = {std::string(name)};
    while (!waiting.empty() && themes_.size() < mostThemes) {
        const std::string next = std::move(waiting.back());
        waiting.pop_back();
        const bool isKnown = std::any_of(themes_.begin(), themes_.end(),
                                         [&](const Theme& theme) { return theme.name == next; });
        // The last resort of every theme, so that it comes last.
        if (isKnown || !isPlainName(next) || (next == "hicolor" && name != "hicolor")) {
            continue;
        }
        const KeyFile description(descriptionOf(next));
        Theme theme{next, {}};
        for (std::string& directory : description.list("Icon Theme", "Directories")) {
            const unsigned size = description.number(directory, "Size", 0);
            // Those for screens with smaller pixels hold the same pictures once more.
            const bool isUsed =
                size > 0 && isInside(directory) && description.number(directory, "Scale", 1) == 1;
            if (isUsed && theme.directories.size() < mostDirectories) {
                theme.directories.push_back({std::move(directory), size});
            }
        }
        std::stable_sort(theme.directories.begin(), theme.directories.end(),
                         [](const Directory& a, const Directory& b) {
                             return rankOfSize(a.size) < rankOfSize(b.size);
                         });
        themes_.push_back(std::move(theme));
        std::vector<std::string> inherited = description.list("Icon Theme", "Inherits");
        std::move(inherited.rbegin(), inherited.rend(), std::back_inserter(waiting));
    }
}

std::string IconTheme::pathIn(const Theme& theme, std::string_view icon) const {
    for (const Directory& directory : theme.directories) {
        for (const std::string& folder : iconFolders_) {
            std::string path = stringByAppendingPathComponent(folder, theme.name);
            path.append("/").append(directory.name).append("/").append(icon).append(".png");
            const Result<FileAttributes> attributes = realFileSystem().targetAttributes(path);
            if (attributes.ok() && attributes.value().kind == FileKind::Regular) {
                return path;
            }
        }
    }
    return {};
}

std::string IconTheme::pathOfIcon(std::span<const std::string> names) const {
    for (const Theme& theme : themes_) {
        for (const std::string& name : names) {
            std::string path = isPlainName(name) ? pathIn(theme, name) : std::string();
            if (!path.empty()) {
                return path;
            }
        }
    }
    return {};
}

} // namespace tav::internal
