#include "platform/linux/LinuxUserFolders.hpp"

#include "base/PathString.hpp"
#include "platform/FileSystem.hpp"
#include "platform/NeverDestroyed.hpp"
#include "platform/linux/Account.hpp"

#include <cerrno>
#include <cstdlib>
#include <string_view>

#include <unistd.h>

namespace tav {

namespace {

/// The path when it is absolute, without slashes at its end; otherwise empty.
std::string cleanAbsolutePath(std::string_view path) {
    if (!path.starts_with('/')) {
        return {};
    }
    const std::size_t last = path.find_last_not_of('/');
    return std::string(path.substr(0, last == std::string_view::npos ? 1 : last + 1));
}

} // namespace

UserFolders& internal::realUserFolders() { return neverDestroyed<LinuxUserFolders>(); }

internal::UserFolderSources internal::userFolderSourcesOfHost() {
    UserFolderSources sources;
    sources.variable = [](const char* name) {
        const char* const text = ::secure_getenv(name);
        return text != nullptr ? std::optional<std::string>(text) : std::nullopt;
    };
    sources.user = [] { return std::uint32_t{::geteuid()}; };
    sources.accountHome = [] {
        std::optional<Account> account = accountOf(::geteuid());
        return account ? std::move(account->home) : std::string();
    };
    sources.sharedTemporaryFolder = "/tmp";
    return sources;
}

/// What a variable names; empty when it names nothing absolute.
std::string LinuxUserFolders::absolutePath(const char* variable) const {
    return cleanAbsolutePath(sources_.variable(variable).value_or(std::string()));
}

std::string LinuxUserFolders::folderOf(const char* variable, const char* folderInHome) {
    std::string named = absolutePath(variable);
    if (!named.empty()) {
        return named;
    }
    const std::string homeFolder = home();
    return homeFolder.empty() ? std::string()
                              : stringByAppendingPathComponent(homeFolder, folderInHome);
}

std::string LinuxUserFolders::home() {
    std::string named = absolutePath("HOME");
    return named.empty() ? cleanAbsolutePath(sources_.accountHome()) : named;
}

std::string LinuxUserFolders::data() { return folderOf("XDG_DATA_HOME", ".local/share"); }

std::string LinuxUserFolders::configuration() { return folderOf("XDG_CONFIG_HOME", ".config"); }

std::string LinuxUserFolders::caches() { return folderOf("XDG_CACHE_HOME", ".cache"); }

std::string LinuxUserFolders::globalData() {
    const std::string list = sources_.variable("XDG_DATA_DIRS").value_or(std::string());
    std::string_view rest = list;
    while (!rest.empty()) {
        const std::size_t colon = rest.find(':');
        std::string path = cleanAbsolutePath(rest.substr(0, colon));
        if (!path.empty()) {
            const Result<FileAttributes> attributes = FileSystem::current().targetAttributes(path);
            if (attributes.ok() && attributes.value().kind == FileKind::Folder) {
                return path;
            }
        }
        rest.remove_prefix(colon == std::string_view::npos ? rest.size() : colon + 1);
    }
    return "/usr/local/share";
}

bool LinuxUserFolders::isOwnFolder(const std::string& path, std::uint32_t forbiddenPermissions,
                                   std::uint32_t neededPermissions) const {
    const Result<FileAttributes> attributes = FileSystem::current().attributes(path);
    return attributes.ok() && attributes.value().kind == FileKind::Folder &&
           attributes.value().user == sources_.user() &&
           (attributes.value().permissions & forbiddenPermissions) == 0 &&
           (attributes.value().permissions & neededPermissions) == neededPermissions;
}

std::string LinuxUserFolders::temporary() {
    std::string named = absolutePath("TMPDIR");
    if (!named.empty() && isOwnFolder(named, 0022, 0700)) {
        return named;
    }
    std::string own = stringByAppendingPathComponent(sources_.sharedTemporaryFolder,
                                                     "tav-" + std::to_string(sources_.user()));
    const SystemError error = FileSystem::current().createFolder(own, 0700);
    if (!error.isNone() && error != SystemError(EEXIST)) {
        return {};
    }
    // Whoever came first may have made it, with links inside, or may still write there.
    return isOwnFolder(own, 0077, 0700) ? own : std::string();
}

} // namespace tav
