#pragma once

#include "base/Result.hpp"
#include "platform/FileSystem.hpp"

#include <string>
#include <string_view>
#include <vector>

namespace tav {

/// Everything below a folder as it was when it was looked at. Links to folders inside are entries
/// like files: nothing behind them is listed.
struct FolderTree {
    struct Folder {
        std::string path;
        FileIdentity identity;
        std::vector<FolderEntry> entries; ///< None of an unknown kind.
    };

    /// Each folder behind the one that it lies in; the first is the one that was asked for.
    std::vector<Folder> folders;
    /// Whether the first was reached through a link at its path.
    bool isReachedByLink = false;

    /// The whole paths of all entries.
    [[nodiscard]] std::vector<std::string> paths() const;
};

/// Lists a folder, or the one that a link leads to, in all depths with one descriptor at a time.
/// The whole tree or the first failure: ENOTDIR for what is no folder.
Result<FolderTree> listFolderTree(std::string_view path);

/// Removes what was listed and nothing else: each folder after its entries, the first at last; of a
/// tree reached by a link only the link. Stops at the first failure: ENOTEMPTY where something came
/// since, ENOENT where something went, ESTALE where another folder has taken the place of a listed
/// one.
///
/// Links are not followed. The file system is asked by paths, so there is one moment between the
/// look at a folder and the removal of each of its entries in which somebody who may change the
/// folders above can put a link in its place: to be kept out of folders that others may write.
SystemError removeListedTree(const FolderTree& tree);

/// Removes what stands at the path: a link itself, a folder with everything in it. Everything is
/// listed first, so what cannot be listed whole stays whole. Then as `removeListedTree`.
SystemError removeItem(std::string_view path);

} // namespace tav
