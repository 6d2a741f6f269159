#include "foundation/FolderTreeWalk.hpp"

#include <cerrno>
#include <utility>

namespace tav {

namespace {

constexpr std::size_t spacing = 8;

/// Beyond a few levels, a folder is held open until one comes whose depth is as round.
std::size_t roundness(std::size_t depth) {
    std::size_t divisor = 1;
    while (depth % (divisor * spacing) == 0) {
        divisor *= spacing;
    }
    return divisor;
}

// FAT gives a folder another number whenever it has forgotten it, but never another birth.
bool isSameFolder(const FileIdentity& a, const FileIdentity& b) {
    return a.device == b.device && a.birthNanoseconds == b.birthNanoseconds &&
           (a.birthNanoseconds != 0 || a.number == b.number);
}

} // namespace

Result<IdentifiedFolder> identified(Result<std::unique_ptr<OpenFolder>> folder) {
    if (!folder.ok()) {
        return folder.error();
    }
    const auto attributes = folder.value()->attributes();
    if (!attributes.ok()) {
        return attributes.error();
    }
    return IdentifiedFolder{std::move(folder).value(), attributes.value().identity};
}

Result<FirstFolder> openFirstFolder(std::string_view path) {
    FileSystem& files = FileSystem::current();
    const auto there = files.attributes(path);
    if (!there.ok()) {
        return there.error();
    }
    const bool isLink = there.value().kind == FileKind::Link;
    if (!isLink && there.value().kind != FileKind::Folder) {
        return SystemError(ENOTDIR);
    }
    auto opened = identified(files.openFolder(path));
    if (!opened.ok()) {
        return opened.error();
    }
    // A link may have come in the folder's place.
    if (!isLink && !isSameFolder(there.value().identity, opened.value().identity)) {
        return SystemError(ESTALE);
    }
    return FirstFolder{std::move(opened).value(), isLink};
}

Result<FolderTreeWalk> FolderTreeWalk::over(const FolderTree& tree) {
    auto first = openFirstFolder(tree.path);
    if (!first.ok()) {
        return first.error();
    }
    if (first.value().isReachedByLink != tree.isReachedByLink ||
        !isSameFolder(first.value().identity, tree.folders.front().identity)) {
        return SystemError(ESTALE);
    }
    return FolderTreeWalk(tree, std::move(first.value().folder));
}

FolderTreeWalk::FolderTreeWalk(const FolderTree& tree, std::unique_ptr<OpenFolder> first)
    : tree_(&tree) {
    open_.push_back({0, 0, std::move(first)});
}

void FolderTreeWalk::enter(std::size_t index, std::unique_ptr<OpenFolder> folder) {
    const std::size_t depth = tree_->folders[index].depth;
    const std::size_t round = roundness(depth);
    std::erase_if(open_, [&](const Open& open) {
        return open.depth != 0 && open.depth + spacing < depth && roundness(open.depth) <= round;
    });
    open_.push_back({index, depth, std::move(folder)});
}

Result<OpenFolder*> FolderTreeWalk::open(std::size_t index) {
    // What is open and no part of the way to the folder is closed: folders stand behind those that
    // they lie in, so on the way upwards such a one comes too late.
    std::vector<std::size_t> way;
    for (std::size_t at = index;; at = tree_->folders[at].parent) {
        while (open_.back().index > at) {
            open_.pop_back();
        }
        if (open_.back().index == at) {
            break;
        }
        way.push_back(at);
    }
    for (auto next = way.rbegin(); next != way.rend(); ++next) {
        const FolderTree::Folder& folder = tree_->folders[*next];
        auto opened = identified(open_.back().folder->openFolder(tree_->nameOf(folder)));
        const bool isOther =
            opened.ok() ? !isSameFolder(opened.value().identity, folder.identity)
                        : opened.error().number() == ENOTDIR; // a link or a file in its place
        if (isOther) {
            return SystemError(ESTALE);
        }
        if (!opened.ok()) {
            return opened.error();
        }
        enter(*next, std::move(opened.value().folder));
    }
    return open_.back().folder.get();
}

} // namespace tav
