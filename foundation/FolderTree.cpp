#include "foundation/FolderTree.hpp"

#include "foundation/FolderTreeWalk.hpp"

#include <cerrno>
#include <utility>

namespace tav {

namespace {

/// The entries of a folder, with their kinds.
Result<FolderListing> listFolder(OpenFolder& folder) {
    auto listing = folder.entries();
    if (!listing.ok()) {
        return listing;
    }
    bool tellsKinds = true;
    for (const FolderListing::Entry& entry : listing.value()) {
        tellsKinds = tellsKinds && entry.kind != FileKind::Unknown;
    }
    if (tellsKinds) {
        return listing;
    }
    FolderListing withKinds;
    for (const FolderListing::Entry& entry : listing.value()) {
        FileKind kind = entry.kind;
        if (kind == FileKind::Unknown) {
            const auto attributes = folder.attributes(entry.name);
            if (!attributes.ok()) {
                return attributes.error();
            }
            kind = attributes.value().kind;
        }
        withKinds.add(entry.name, kind, entry.number);
    }
    return withKinds;
}

SystemError removeFiles(OpenFolder& folder, const FolderListing& entries) {
    for (const FolderListing::Entry& entry : entries) {
        if (entry.kind == FileKind::Folder) {
            continue; // gone already, with what was in it
        }
        const SystemError error = folder.removeFile(entry.name);
        if (!error.isNone()) {
            return error;
        }
    }
    return {};
}

} // namespace

SystemError internal::listInnerFolders(FolderTree& tree, std::unique_ptr<OpenFolder> first) {
    struct Found {
        std::size_t parent = 0;
        std::size_t entry = 0;
    };
    OpenFolder* folder = first.get();
    FolderTreeWalk walk(tree, std::move(first));
    std::vector<Found> found; // and not yet listed
    for (;;) {
        const std::size_t index = tree.folders.size() - 1;
        auto listing = listFolder(*folder);
        if (!listing.ok()) {
            return listing.error();
        }
        tree.folders[index].entries = std::move(listing).value();
        const FolderListing& entries = tree.folders[index].entries;
        for (std::size_t i = 0; i < entries.size(); ++i) {
            if (entries[i].kind == FileKind::Folder) {
                found.push_back({index, i});
            }
        }
        if (found.empty()) {
            return {};
        }
        const Found next = found.back();
        found.pop_back();
        const auto parent = walk.open(next.parent);
        if (!parent.ok()) {
            return parent.error();
        }
        const FolderTree::Folder& above = tree.folders[next.parent];
        auto opened = identified(parent.value()->openFolder(above.entries[next.entry].name));
        if (!opened.ok()) {
            return opened.error();
        }
        folder = opened.value().folder.get();
        tree.folders.push_back(
            {next.parent, next.entry, above.depth + 1, opened.value().identity, {}});
        walk.enter(tree.folders.size() - 1, std::move(opened.value().folder));
    }
}

Result<FolderTree> listFolderTree(std::string_view path) {
    auto first = openFirstFolder(path);
    if (!first.ok()) {
        return first.error();
    }
    FolderTree tree;
    tree.path = path;
    tree.isReachedByLink = first.value().isReachedByLink;
    tree.folders.push_back({0, 0, 0, first.value().identity, {}});
    const SystemError error = internal::listInnerFolders(tree, std::move(first.value().folder));
    return error.isNone() ? Result<FolderTree>(std::move(tree)) : error;
}

SystemError removeListedTree(const FolderTree& tree) {
    FileSystem& files = FileSystem::current();
    if (tree.isReachedByLink) {
        return files.removeFile(tree.path);
    }
    auto opened = FolderTreeWalk::over(tree);
    if (!opened.ok()) {
        return opened.error();
    }
    FolderTreeWalk& walk = opened.value();
    for (std::size_t index = tree.folders.size(); index-- > 0;) {
        const FolderTree::Folder& listed = tree.folders[index];
        const auto folder = walk.open(index);
        if (!folder.ok()) {
            return folder.error();
        }
        SystemError error = removeFiles(*folder.value(), listed.entries);
        if (!error.isNone()) {
            return error;
        }
        if (index != 0) {
            const auto parent = walk.open(listed.parent);
            if (!parent.ok()) {
                return parent.error();
            }
            error = parent.value()->removeFolder(tree.nameOf(listed));
            if (!error.isNone()) {
                return error;
            }
        }
    }
    return files.removeFolder(tree.path);
}

std::string_view internal::withoutTrailingSlashes(std::string_view path) {
    while (path.size() > 1 && path.ends_with('/')) {
        path.remove_suffix(1);
    }
    return path;
}

SystemError removeItem(std::string_view path) {
    path = internal::withoutTrailingSlashes(path);
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
