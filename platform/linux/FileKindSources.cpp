// Where the desktop of this user and host keeps what it knows.

#include "base/PathString.hpp"
#include "platform/FileSystem.hpp"
#include "platform/UserFolders.hpp"
#include "platform/UserLanguages.hpp"
#include "platform/linux/KeyFile.hpp"
#include "platform/linux/LinuxFileKinds.hpp"

#include <algorithm>
#include <cstdint>
#include <cstdlib>

namespace tav::internal {
namespace {

constexpr std::uint64_t largestSettings = 1U << 20U;

void addFolders(std::vector<std::string>& folders, std::string_view list) {
    while (!list.empty()) {
        const std::size_t colon = std::min(list.find(':'), list.size());
        const std::string_view folder = list.substr(0, colon);
        list.remove_prefix(std::min(colon + 1, list.size()));
        if (folder.starts_with('/')) {
            folders.emplace_back(folder);
        }
    }
}

/// The icon theme in the settings of the newest GTK that has any, the user's before the host's;
/// empty when none is set.
std::string themeOfSettings() {
    const std::string own = realUserFolders().configuration();
    for (const std::string_view version : {"gtk-4.0", "gtk-3.0"}) {
        for (const std::string_view folder : {std::string_view(own), std::string_view("/etc")}) {
            if (folder.empty()) {
                continue;
            }
            std::string path = stringByAppendingPathComponent(folder, version);
            path += "/settings.ini";
            const Result<Data> bytes = realFileSystem().readFile(path, largestSettings);
            if (bytes.ok()) {
                const KeyFile settings(textOf(bytes.value()));
                const std::string& theme = settings.value("Settings", "gtk-icon-theme-name");
                if (!theme.empty()) {
                    return theme;
                }
            }
        }
    }
    return {};
}

} // namespace

FileKindSources fileKindSourcesOfHost() {
    FileKindSources sources;
    const std::string own = realUserFolders().data();
    if (!own.empty()) {
        sources.dataFolders.push_back(own);
    }
    const char* const shared = ::secure_getenv("XDG_DATA_DIRS");
    addFolders(sources.dataFolders,
               shared != nullptr && *shared != '\0' ? shared : "/usr/local/share:/usr/share");
    const std::string home = realUserFolders().home();
    if (!home.empty()) {
        sources.iconFolders.push_back(stringByAppendingPathComponent(home, ".icons"));
    }
    for (const std::string& folder : sources.dataFolders) {
        sources.iconFolders.push_back(stringByAppendingPathComponent(folder, "icons"));
    }
    sources.iconTheme = themeOfSettings();
    sources.languages = userLanguages();
    return sources;
}

} // namespace tav::internal
