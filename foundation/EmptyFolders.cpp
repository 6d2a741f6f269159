#include "base/PathString.hpp"
#include "base/Unicode.hpp"
#include "foundation/ArrayExtensions.hpp"
#include "foundation/FileManager.hpp"
#include "foundation/FolderTree.hpp"

#include <algorithm>
#include <cerrno>

namespace tav {

namespace {

using Names = std::vector<std::string>;

bool isPassedOver(std::string_view name, const Names& namesToIgnore) {
    return name.starts_with('.') || containsString(namesToIgnore, name);
}

/// Whether the folder could be listed and holds nothing but what is passed over.
bool holdsOnlyPassedOver(std::string_view folder, const Names& namesToIgnore) {
    const auto entries = FileSystem::current().folderEntries(folder);
    return entries.ok() && std::all_of(entries.value().begin(), entries.value().end(),
                                       [&](const FolderEntry& entry) {
                                           return isPassedOver(entry.name, namesToIgnore);
                                       });
}

/// Whether the error says that a path leads to nothing, not that it could not be followed.
bool saysNothingThere(SystemError error) {
    return error.number() == ENOENT || error.number() == ENOTDIR || error.number() == ELOOP;
}

/// Whether what stands at a path below a folder lets that folder be removed.
bool mayGo(std::string_view path, const Names& namesToIgnore) {
    const auto there = FileSystem::current().targetAttributes(path);
    if (!there.ok()) {
        return saysNothingThere(there.error());
    }
    return there.value().kind == FileKind::Folder
               ? holdsOnlyPassedOver(path, namesToIgnore)
               : isPassedOver(lastPathComponent(path), namesToIgnore);
}

std::vector<std::string> sortedPaths(const FolderTree& tree) {
    std::vector<std::string> paths = tree.paths();
    std::stable_sort(paths.begin(), paths.end(), [](const std::string& a, const std::string& b) {
        return CompareDirectoriesForEmpty(a, b) < 0;
    });
    return paths;
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
    const std::vector<std::string> paths = sortedPaths(tree.value());
    if (std::all_of(paths.begin(), paths.end(),
                    [&](const std::string& path) { return mayGo(path, namesToIgnore); })) {
        // Only what was listed, and so looked at: a file that came since keeps the folder.
        static_cast<void>(removeListedTree(tree.value()));
    }
}

void removeEmptyDirectoriesFromPath(std::string_view folder) {
    const auto tree = listFolderTree(folder);
    if (!tree.ok()) {
        return;
    }
    for (const std::string& path : sortedPaths(tree.value())) {
        const auto there = FileSystem::current().targetAttributes(path);
        if (there.ok() && there.value().kind == FileKind::Folder && holdsOnlyPassedOver(path, {})) {
            // Afterwards no other path leads anywhere. Trying again after a failure would take
            // time in proportion to the square of what is there.
            static_cast<void>(removeListedTree(tree.value()));
            return;
        }
    }
}

} // namespace tav
