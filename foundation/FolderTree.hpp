#pragma once

#include "base/Result.hpp"
#include "platform/FileSystem.hpp"

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tav {

/// Everything below a folder as it was when it was looked at. Links to folders inside are entries
/// like files: nothing behind them is listed.
struct FolderTree {
    struct Folder {
        std::size_t parent = 0; ///< Where the folder that it lies in stands; 0 for the first.
        std::size_t entry = 0;  ///< Where its name stands in that folder's entries.
        std::size_t depth = 0;  ///< 0 for the first.
        FileIdentity identity;
        FolderListing entries; ///< None of an unknown kind.
    };

    /// Of the first folder, as it was given.
    std::string path;
    /// Each folder right before all that lie in it, in all depths.
    std::vector<Folder> folders;
    /// Whether the first was reached through a link at its path.
    bool isReachedByLink = false;

    /// The name of a folder but the first; as long as the tree is not changed.
    [[nodiscard]] std::string_view nameOf(const Folder& folder) const {
        return folders[folder.parent].entries[folder.entry].name;
    }
};

/// Lists a folder, or the one that a link leads to, in all depths, which may be any. The whole tree
/// or the first failure: ENOTDIR for what is no folder, ESTALE where something else took a folder's
/// place meanwhile.
Result<FolderTree> listFolderTree(std::string_view path);

namespace internal {
/// Fills a tree whose only folder so far is this one.
SystemError listInnerFolders(FolderTree& tree, std::unique_ptr<OpenFolder> first);
/// The path of what stands there itself: a slash behind a link stands for what it leads to.
[[nodiscard]] std::string_view withoutTrailingSlashes(std::string_view path);
} // namespace internal

/// Removes what was listed and nothing else: each folder after its entries, the first at last; of a
/// tree reached by a link only the link. Stops at the first failure: ENOTEMPTY where something came
/// since, ENOENT where something went, ESTALE where something else has taken the place of a listed
/// folder.
///
/// No link is followed but those on the way to the first folder, and nothing put in a folder's
/// place meanwhile is gone into: all but the first are opened in the folders that they lie in, and
/// entries are removed from the very folder that was listed. What somebody may lose who exchanges a
/// folder at the wrong moment is an empty folder, or a new file by the name of a listed one.
SystemError removeListedTree(const FolderTree& tree);

/// Removes what stands at the path: a link itself, a folder with everything in it. Everything is
/// listed first, so what cannot be listed whole stays whole. Then as `removeListedTree`.
SystemError removeItem(std::string_view path);

} // namespace tav
