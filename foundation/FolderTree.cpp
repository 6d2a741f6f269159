#include "foundation/FolderTree.hpp"

#include "base/PathString.hpp"

#include <cerrno>
#include <cstddef>
#include <utility>

namespace tav {

namespace {

// FAT gives a folder another number whenever it has forgotten it, but never another birth.
bool isSameFolder(const FileIdentity& a, const FileIdentity& b) {
    return a.device == b.device && a.birthNanoseconds == b.birthNanoseconds &&
           (a.birthNanoseconds != 0 || a.number == b.number);
}

std::string pathOfEntry(const std::string& folder, const std::string& name) {
    return folder.ends_with('/') ? folder + name : folder + '/' + name;
}

SystemError listFolder(FolderTree::Folder& folder) {
    FileSystem& files = FileSystem::current();
    auto entries = files.folderEntries(folder.path);
    if (!entries.ok()) {
        return entries.error();
    }
    folder.entries = std::move(entries).value();
    for (FolderEntry& entry : folder.entries) {
        if (entry.kind == FileKind::Unknown) {
            const auto attributes = files.attributes(pathOfEntry(folder.path, entry.name));
            if (!attributes.ok()) {
                return attributes.error();
            }
            entry.kind = attributes.value().kind;
        }
    }
    return {};
}

SystemError removeListedFolder(const FolderTree::Folder& folder) {
    FileSystem& files = FileSystem::current();
    const auto attributes = files.attributes(folder.path);
    if (!attributes.ok()) {
        return attributes.error();
    }
    if (attributes.value().kind != FileKind::Folder ||
        !isSameFolder(attributes.value().identity, folder.identity)) {
        return SystemError(ESTALE);
    }
    for (const FolderEntry& entry : folder.entries) {
        if (entry.kind == FileKind::Folder) {
            continue; // gone already, with what was in it
        }
        const SystemError error = files.removeFile(pathOfEntry(folder.path, entry.name));
        if (!error.isNone()) {
            return error;
        }
    }
    return files.removeFolder(folder.path);
}

} // namespace

std::vector<std::string> FolderTree::paths() const {
    std::vector<std::string> all;
    for (const Folder& folder : folders) {
        for (const FolderEntry& entry : folder.entries) {
            all.push_back(pathOfEntry(folder.path, entry.name));
        }
    }
    return all;
}

Result<FolderTree> listFolderTree(std::string_view path) {
    FileSystem& files = FileSystem::current();
    const auto there = files.attributes(path);
    if (!there.ok()) {
        return there.error();
    }
    FolderTree tree;
    tree.isReachedByLink = there.value().kind == FileKind::Link;
    const auto start = tree.isReachedByLink ? files.targetAttributes(path) : there;
    if (!start.ok()) {
        return start.error();
    }
    if (start.value().kind != FileKind::Folder) {
        return SystemError(ENOTDIR);
    }
    tree.folders.push_back({std::string(path), start.value().identity, {}});
    for (std::size_t i = 0; i < tree.folders.size(); ++i) {
        const SystemError error = listFolder(tree.folders[i]);
        if (!error.isNone()) {
            return error;
        }
        // By index: the folders move as others are added.
        for (std::size_t j = 0; j < tree.folders[i].entries.size(); ++j) {
            if (tree.folders[i].entries[j].kind != FileKind::Folder) {
                continue;
            }
            std::string inner = pathOfEntry(tree.folders[i].path, tree.folders[i].entries[j].name);
            const auto attributes = files.attributes(inner);
            if (!attributes.ok()) {
                return attributes.error();
            }
            if (attributes.value().kind != FileKind::Folder) {
                return SystemError(ESTALE);
            }
            tree.folders.push_back({std::move(inner), attributes.value().identity, {}});
        }
    }
    return tree;
}

SystemError removeListedTree(const FolderTree& tree) {
    if (tree.isReachedByLink) {
        return FileSystem::current().removeFile(tree.folders.front().path);
    }
    for (auto folder = tree.folders.rbegin(); folder != tree.folders.rend(); ++folder) {
        const SystemError error = removeListedFolder(*folder);
        if (!error.isNone()) {
            return error;
        }
    }
    return {};
}

SystemError removeItem(std::string_view path) {
    const auto there = FileSystem::current().attributes(path);
    if (!there.ok()) {
        return there.error();
    }
    if (there.value().kind != FileKind::Folder) {
        return FileSystem::current().removeFile(path);
    }
    const auto tree = listFolderTree(path);
    return tree.ok() ? removeListedTree(tree.value()) : tree.error();
}

} // namespace tav
