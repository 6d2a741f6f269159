#include "base/Unicode.hpp"
#include "foundation/ArrayExtensions.hpp"
#include "foundation/FileManager.hpp"
#include "foundation/FolderTree.hpp"
#include "foundation/FolderTreeWalk.hpp"

#include <algorithm>
#include <cerrno>

namespace tav {

namespace {

using Names = std::vector<std::string>;

bool isPassedOver(std::string_view name, const Names& namesToIgnore) {
    return name.starts_with('.') || containsString(namesToIgnore, name);
}

bool holdsOnlyPassedOver(const FolderListing& entries, const Names& namesToIgnore) {
    return std::all_of(entries.begin(), entries.end(), [&](const FolderListing::Entry& entry) {
        return isPassedOver(entry.name, namesToIgnore);
    });
}

/// What a link leads to.
enum class Target {
    Nothing,
    File,
    EmptyFolder, ///< It holds nothing but what is passed over.
    Other,       ///< Any other folder, and what cannot be looked at.
};

Target targetOf(OpenFolder& folder, std::string_view link, const Names& namesToIgnore) {
    const auto there = folder.targetAttributes(link);
    if (!there.ok()) {
        const int error = there.error().number();
        return error == ENOENT || error == ENOTDIR || error == ELOOP ? Target::Nothing
                                                                     : Target::Other;
    }
    if (there.value().kind != FileKind::Folder) {
        return Target::File;
    }
    const auto target = folder.openTargetFolder(link);
    if (!target.ok()) {
        return Target::Other;
    }
    const auto entries = target.value()->entries();
    return entries.ok() && holdsOnlyPassedOver(entries.value(), namesToIgnore) ? Target::EmptyFolder
                                                                               : Target::Other;
}

/// Whether nothing below the first folder keeps it. The order in which that is looked at (that of
/// `CompareDirectoriesForEmpty` or any other) changes nothing.
bool mayGo(const FolderTree& tree, FolderTreeWalk& walk, const Names& namesToIgnore) {
    for (std::size_t index = 0; index < tree.folders.size(); ++index) {
        const FolderListing& entries = tree.folders[index].entries;
        if (index != 0 && !holdsOnlyPassedOver(entries, namesToIgnore)) {
            return false;
        }
        for (const FolderListing::Entry& entry : entries) {
            if (entry.kind == FileKind::Folder) {
                continue; // it has its own turn
            }
            Target target = Target::File;
            if (entry.kind == FileKind::Link) {
                const auto folder = walk.open(index);
                target = folder.ok() ? targetOf(*folder.value(), entry.name, namesToIgnore)
                                     : Target::Other;
            }
            if (target == Target::Other ||
                (target == Target::File && !isPassedOver(entry.name, namesToIgnore))) {
                return false;
            }
        }
    }
    return true;
}

bool hasEmptyFolder(const FolderTree& tree, FolderTreeWalk& walk) {
    for (std::size_t index = 0; index < tree.folders.size(); ++index) {
        const FolderListing& entries = tree.folders[index].entries;
        if (index != 0 && holdsOnlyPassedOver(entries, {})) {
            return true;
        }
        for (const FolderListing::Entry& entry : entries) {
            if (entry.kind != FileKind::Link) {
                continue;
            }
            const auto folder = walk.open(index);
            if (!folder.ok()) {
                return false;
            }
            if (targetOf(*folder.value(), entry.name, {}) == Target::EmptyFolder) {
                return true;
            }
        }
    }
    return false;
}

} // namespace

int CompareDirectoriesForEmpty(std::string_view a, std::string_view b) {
    return caseInsensitiveCompare(b, a);
}

void removeDirectoryIfEmpty(std::string_view folder, const Names& namesToIgnore) {
    const auto tree = listFolderTree(folder);
    if (!tree.ok()) {
        return;
    }
    auto walk = FolderTreeWalk::over(tree.value());
    if (walk.ok() && mayGo(tree.value(), walk.value(), namesToIgnore)) {
        // Only what was listed, and so looked at: a file that came since keeps the folder.
        static_cast<void>(removeListedTree(tree.value()));
    }
}

void removeEmptyDirectoriesFromPath(std::string_view folder) {
    const auto tree = listFolderTree(folder);
    if (!tree.ok()) {
        return;
    }
    auto walk = FolderTreeWalk::over(tree.value());
    if (walk.ok() && hasEmptyFolder(tree.value(), walk.value())) {
        // Once: afterwards nothing below is left to be looked at, and to try again for each empty
        // folder after a failure would take time in proportion to the square of what is there.
        static_cast<void>(removeListedTree(tree.value()));
    }
}

} // namespace tav
