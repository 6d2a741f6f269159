#include "fileinfo/local/DesktopFolders.hpp"

#include "base/Data.hpp"
#include "base/PathString.hpp"
#include "platform/FileSystem.hpp"
#include "platform/UserFolders.hpp"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

namespace tav {

namespace {

constexpr std::string_view blanks = " \t";

void skipBlanks(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
}

bool skip(std::string_view& text, std::string_view beginning) {
    if (!text.starts_with(beginning)) {
        return false;
    }
    text.remove_prefix(beginning.size());
    return true;
}

/// The text up to the closing quote, backslashes taken away; nothing without that quote.
std::optional<std::string> unquoted(std::string_view text) {
    std::string plain;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] == '"') {
            return plain;
        }
        if (text[at] == '\\' && at + 1 < text.size()) {
            ++at;
        }
        plain += text[at];
    }
    return std::nullopt;
}

/// The absolute path that a line names for the word; empty when it does not.
std::string pathFromLine(std::string_view line, std::string_view word,
                         std::string_view homeFolder) {
    skipBlanks(line);
    if (!skip(line, "XDG_") || !skip(line, word) || !skip(line, "_DIR")) {
        return {};
    }
    skipBlanks(line);
    if (!skip(line, "=")) {
        return {};
    }
    skipBlanks(line);
    if (!skip(line, "\"")) {
        return {};
    }
    const bool isInHome = skip(line, "$HOME");
    const std::optional<std::string> path = unquoted(line);
    if (!path) {
        return {};
    }
    if (isInHome) {
        return path->empty() || path->starts_with('/')
                   ? stringByAppendingPathComponent(homeFolder, *path)
                   : std::string();
    }
    return path->starts_with('/') ? *path : std::string();
}

} // namespace

std::string internal::desktopFolderFromSettings(std::string_view settings, std::string_view word,
                                                std::string_view homeFolder) {
    std::string found;
    while (!settings.empty()) {
        const std::size_t end = std::min(settings.find('\n'), settings.size());
        if (std::string path = pathFromLine(settings.substr(0, end), word, homeFolder);
            !path.empty()) {
            found = std::move(path);
        }
        settings.remove_prefix(std::min(end + 1, settings.size()));
    }
    return found;
}

std::string internal::desktopFolder(std::string_view word) {
    static constexpr std::array<std::pair<std::string_view, std::string_view>, 8> names = {{
        {"DESKTOP", "Desktop"},
        {"DOCUMENTS", "Documents"},
        {"DOWNLOAD", "Downloads"},
        {"MUSIC", "Music"},
        {"PICTURES", "Pictures"},
        {"PUBLICSHARE", "Public"},
        {"TEMPLATES", "Templates"},
        {"VIDEOS", "Videos"},
    }};
    const auto* name =
        std::ranges::find(names, word, [](const auto& entry) { return entry.first; });
    UserFolders& folders = UserFolders::current();
    const std::string home = folders.home();
    if (name == names.end() || home.empty()) {
        return {};
    }
    constexpr std::uint64_t maximumSize = 65536; // a dozen lines are usual
    const Result<Data> settings = FileSystem::current().readFile(
        stringByAppendingPathComponent(folders.configuration(), "user-dirs.dirs"), maximumSize);
    std::string path = settings.ok()
                           ? desktopFolderFromSettings(textOf(settings.value()), word, home)
                           : std::string();
    return path.empty() ? stringByAppendingPathComponent(home, name->second) : path;
}

} // namespace tav
