#include "fileinfo/local/UnpackedFolder.hpp"

#include "fileinfo/local/LinksOut.hpp"
#include "foundation/FolderTree.hpp"
#include "foundation/FolderTreeWalk.hpp"
#include "platform/OpenFolder.hpp"

#include <algorithm>
#include <cerrno>
#include <utility>
#include <vector>

namespace tav::internal {

namespace {

bool isOrdinary(FileKind kind) {
    return kind == FileKind::Regular || kind == FileKind::Folder || kind == FileKind::Link;
}

/// The links of the tree, and what has to go whatever the links say.
struct Found {
    explicit Found(const FolderTree& tree) : links(tree) {}
    LinksOut links;
    std::vector<LinksOut::Link> strange;
};

SystemError find(const FolderTree& tree, FolderTreeWalk& walk, Found& found) {
    for (std::size_t index = 0; index < tree.folders.size(); ++index) {
        const FolderListing& entries = tree.folders[index].entries;
        for (std::size_t entry = 0; entry < entries.size(); ++entry) {
            if (!isOrdinary(entries[entry].kind)) {
                found.strange.push_back({index, entry});
            } else if (entries[entry].kind == FileKind::Link) {
                const Result<OpenFolder*> folder = walk.open(index);
                if (!folder.ok()) {
                    return folder.error();
                }
                Result<std::string> text = folder.value()->linkTarget(entries[entry].name);
                if (!text.ok()) {
                    return text.error();
                }
                found.links.add(index, entry, std::move(text).value());
            }
        }
    }
    return {};
}

} // namespace

SystemError cleanUnpackedFolder(std::string_view path) {
    const Result<FolderTree> listed = listFolderTree(path);
    if (!listed.ok()) {
        return listed.error();
    }
    const FolderTree& tree = listed.value();
    if (tree.isReachedByLink) {
        return SystemError(ENOTDIR);
    }
    Result<FolderTreeWalk> walk = FolderTreeWalk::over(tree);
    if (!walk.ok()) {
        return walk.error();
    }
    Found found(tree);
    const SystemError error = find(tree, walk.value(), found);
    if (!error.isNone()) {
        return error;
    }
    std::vector<LinksOut::Link> leaving = found.links.leadingOut();
    leaving.insert(leaving.end(), found.strange.begin(), found.strange.end());
    for (const LinksOut::Link& link : leaving) {
        const Result<OpenFolder*> folder = walk.value().open(link.folder);
        const SystemError removal =
            folder.ok()
                ? folder.value()->removeFile(tree.folders[link.folder].entries[link.entry].name)
                : folder.error();
        if (!removal.isNone()) {
            return removal;
        }
    }
    return {};
}

} // namespace tav::internal
