#pragma once

#include "platform/UserFolders.hpp"

#include <cstdint>
#include <functional>
#include <optional>

namespace tav {

namespace internal {

/// Where the user's folders are asked for.
struct UserFolderSources {
    /// A variable of the environment; nothing when it is not set.
    std::function<std::optional<std::string>(const char* name)> variable;
    /// The user whose rights the process has.
    std::function<std::uint32_t()> user;
    /// The home folder of his account; empty without an account.
    std::function<std::string()> accountHome;
    /// Where everybody may make files.
    std::string sharedTemporaryFolder;
};

/// The environment of this process (not of one that gained rights by being started), the host's
/// accounts and /tmp.
[[nodiscard]] UserFolderSources userFolderSourcesOfHost();

} // namespace internal

/// The folders of the XDG base directory rules, below `$HOME`, or below the home folder of the
/// account where that is not set. Variables that hold no absolute path count as not set. Everything
/// is asked anew with each call; folders are looked at through `FileSystem::current()`.
///
/// `temporary` is `$TMPDIR` where that is a folder (no link) of the user's own that no one else may
/// write in; otherwise `tav-UID` in the shared one, which is made with 0700 and believed only when
/// it is a folder, his, and has exactly these permissions.
class LinuxUserFolders final : public UserFolders {
  public:
    explicit LinuxUserFolders(
        internal::UserFolderSources sources = internal::userFolderSourcesOfHost())
        : sources_(std::move(sources)) {}

    std::string home() override;
    std::string data() override;
    /// The first of `$XDG_DATA_DIRS` that is an absolute path of a folder, `/usr/local/share` when
    /// there is none.
    std::string globalData() override;
    std::string configuration() override;
    std::string caches() override;
    std::string temporary() override;

  private:
    [[nodiscard]] std::string absolutePath(const char* variable) const;
    [[nodiscard]] std::string folderOf(const char* variable, const char* folderInHome);
    [[nodiscard]] bool isOwnFolder(const std::string& path, std::uint32_t forbiddenPermissions,
                                   std::uint32_t neededPermissions) const;

    internal::UserFolderSources sources_;
};

} // namespace tav
