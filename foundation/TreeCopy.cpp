#include "foundation/TreeCopy.hpp"

#include "base/PathString.hpp"

#include <cerrno>
#include <memory>
#include <utility>

namespace tav::internal {

namespace {

constexpr std::uint32_t onlyTheOwner = 0700;

/// The path of a folder of a tree.
std::string pathOf(const FolderTree& tree, std::size_t index) {
    std::vector<std::string_view> names;
    for (std::size_t at = index; at != 0; at = tree.folders[at].parent) {
        names.push_back(tree.nameOf(tree.folders[at]));
    }
    std::string path = tree.path;
    for (auto name = names.rbegin(); name != names.rend(); ++name) {
        path += '/';
        path += *name;
    }
    return path;
}

/// A path as long as this lives with a name behind it.
class WithName {
  public:
    WithName(std::string& path, std::string_view name) : path_(path), size_(path.size()) {
        path_ += name;
    }
    ~WithName() { path_.resize(size_); }
    WithName(const WithName&) = delete;
    WithName& operator=(const WithName&) = delete;

  private:
    std::string& path_;
    std::size_t size_;
};

/// EINVAL when the place where the copy shall stand lies in the folder that is copied.
SystemError checkOutside(std::string_view source, std::string_view destination) {
    FileSystem& files = FileSystem::current();
    const auto folder = files.canonicalPath(source);
    if (!folder.ok()) {
        return folder.error();
    }
    const std::string parent = stringByDeletingLastPathComponent(destination);
    auto place = files.canonicalPath(parent.empty() ? "." : parent);
    if (!place.ok()) {
        return place.error();
    }
    const std::string inside = folder.value() == "/" ? "/" : folder.value() + "/";
    place.value() += '/';
    return place.value().starts_with(inside) ? SystemError(EINVAL) : SystemError();
}

} // namespace

SystemError TreeCopy::copy(std::string_view source) {
    SystemError error = checkOutside(source, destination_);
    if (!error.isNone()) {
        return error;
    }
    auto tree = listFolderTree(source);
    if (!tree.ok()) {
        return tree.error();
    }
    if (tree.value().isReachedByLink) {
        return SystemError(ESTALE); // it was a folder a moment ago
    }
    source_ = std::move(tree).value();
    firstFinished_ = source_.folders.size();
    error = checkKinds();
    if (error.isNone()) {
        error = makeFirstFolder();
    }
    if (!error.isNone()) {
        return error;
    }
    error = copyFolders();
    if (error.isNone()) {
        error = finishFolders();
    }
    if (!error.isNone()) {
        undo();
    }
    return error;
}

/// Before anything is made: pipes, sockets and devices cannot be copied.
SystemError TreeCopy::checkKinds() const {
    for (const FolderTree::Folder& folder : source_.folders) {
        for (const FolderListing::Entry& entry : folder.entries) {
            if (entry.kind != FileKind::Regular && entry.kind != FileKind::Folder &&
                entry.kind != FileKind::Link) {
                return SystemError(EINVAL);
            }
        }
    }
    return {};
}

SystemError TreeCopy::makeFirstFolder() {
    FileSystem& files = FileSystem::current();
    const SystemError error = files.createFolder(destination_, onlyTheOwner);
    if (!error.isNone()) {
        return error;
    }
    const auto first = openFirstFolder(destination_);
    if (!first.ok() || first.value().isReachedByLink) {
        static_cast<void>(files.removeFolder(destination_));
        return first.ok() ? SystemError(ESTALE) : first.error();
    }
    made_.path = destination_;
    made_.folders.push_back({0, 0, 0, first.value().identity, {}});
    return {};
}

SystemError TreeCopy::copyFolders() {
    auto from = FolderTreeWalk::over(source_);
    if (!from.ok()) {
        return from.error();
    }
    auto to = FolderTreeWalk::over(made_);
    if (!to.ok()) {
        return to.error();
    }
    for (std::size_t index = 0; index < source_.folders.size(); ++index) {
        const auto source = from.value().open(index);
        if (!source.ok()) {
            return source.error();
        }
        const auto attributes = source.value()->attributes();
        if (!attributes.ok()) {
            return attributes.error();
        }
        folders_.push_back({attributes.value().permissions, attributes.value().modificationDate,
                            attributes.value().changeDate});
        const auto made = index == 0 ? to.value().open(0) : makeFolder(index, to.value());
        if (!made.ok()) {
            return made.error();
        }
        fromPath_ = pathOf(source_, index) + '/';
        toPath_ = pathOf(made_, index) + '/';
        const SystemError error = copyEntries(*source.value(), *made.value(), index);
        if (!error.isNone()) {
            return error;
        }
    }
    return {};
}

Result<OpenFolder*> TreeCopy::makeFolder(std::size_t index, FolderTreeWalk& made) {
    const FolderTree::Folder& listed = source_.folders[index];
    const std::string_view name = source_.nameOf(listed);
    const auto parent = made.open(listed.parent);
    if (!parent.ok()) {
        return parent.error();
    }
    const SystemError error = parent.value()->createFolder(name, onlyTheOwner);
    if (!error.isNone()) {
        return error;
    }
    auto opened = identified(parent.value()->openFolder(name));
    if (!opened.ok()) {
        static_cast<void>(parent.value()->removeFolder(name));
        return opened.error();
    }
    FolderListing& beside = made_.folders[listed.parent].entries;
    const std::size_t entry = beside.size();
    beside.add(name, FileKind::Folder, opened.value().identity.number);
    made_.folders.push_back({listed.parent, entry, listed.depth, opened.value().identity, {}});
    OpenFolder* const folder = opened.value().folder.get();
    made.enter(index, std::move(opened.value().folder));
    return folder;
}

SystemError TreeCopy::copyEntries(OpenFolder& from, OpenFolder& to, std::size_t index) {
    for (const FolderListing::Entry& entry : source_.folders[index].entries) {
        if (entry.kind == FileKind::Folder) {
            continue; // it has its own turn
        }
        const SystemError error = entry.kind == FileKind::Link ? copyLink(from, entry, index)
                                                               : copyFile(from, to, entry, index);
        if (!error.isNone()) {
            return error;
        }
    }
    return {};
}

SystemError TreeCopy::copyFile(OpenFolder& from, OpenFolder& to, const FolderListing::Entry& entry,
                               std::size_t index) {
    const auto source = from.open(entry.name, {});
    if (!source.ok()) {
        return source.error();
    }
    const auto attributes = source.value()->attributes();
    if (!attributes.ok()) {
        return attributes.error();
    }
    // Opening follows links, and one may have come in the file's place. Listings of some file
    // systems number files otherwise.
    if (attributes.value().identity.number != entry.number) {
        const auto there = from.attributes(entry.name);
        if (!there.ok()) {
            return there.error();
        }
        if (there.value().identity != attributes.value().identity) {
            return SystemError(ESTALE);
        }
    }
    const auto made = to.open(entry.name, ItemCopier::optionsForCopyOf(attributes.value()));
    if (!made.ok()) {
        return made.error();
    }
    made_.folders[index].entries.add(entry.name, FileKind::Regular, 0);
    entries_.push_back({attributes.value().size, attributes.value().changeDate});
    const WithName fromName(fromPath_, entry.name);
    const WithName toName(toPath_, entry.name);
    return items_.copyFile(*source.value(), attributes.value(), fromPath_, *made.value(), toPath_);
}

SystemError TreeCopy::copyLink(OpenFolder& from, const FolderListing::Entry& entry,
                               std::size_t index) {
    const auto attributes = from.attributes(entry.name);
    if (!attributes.ok()) {
        return attributes.error();
    }
    const auto target = from.linkTarget(entry.name);
    if (!target.ok()) {
        return target.error();
    }
    const WithName toName(toPath_, entry.name);
    const SystemError error =
        ItemCopier::makeLink(toPath_, target.value(), attributes.value().modificationDate);
    if (error.isNone()) {
        made_.folders[index].entries.add(entry.name, FileKind::Link, 0);
        entries_.push_back({attributes.value().size, attributes.value().changeDate});
    }
    return error;
}

SystemError TreeCopy::finishFolders() {
    while (firstFinished_ > 0) {
        --firstFinished_;
        const Seen& seen = folders_[firstFinished_];
        const SystemError error =
            items_.finishFolder(pathOf(source_, firstFinished_), seen.permissions,
                                seen.modificationDate, pathOf(made_, firstFinished_));
        if (!error.isNone()) {
            return error;
        }
    }
    return {};
}

SystemError TreeCopy::checkSource() {
    auto walk = FolderTreeWalk::over(source_);
    if (!walk.ok()) {
        return walk.error();
    }
    auto seen = entries_.begin();
    for (std::size_t index = 0; index < source_.folders.size(); ++index) {
        const auto folder = walk.value().open(index);
        if (!folder.ok()) {
            return folder.error();
        }
        const auto attributes = folder.value()->attributes();
        if (!attributes.ok() || attributes.value().changeDate != folders_[index].changeDate) {
            return attributes.ok() ? SystemError(ESTALE) : attributes.error();
        }
        for (const FolderListing::Entry& entry : source_.folders[index].entries) {
            if (entry.kind == FileKind::Folder) {
                continue;
            }
            const auto there = folder.value()->attributes(entry.name);
            if (!there.ok()) {
                return there.error();
            }
            if (there.value().size != seen->size || there.value().changeDate != seen->changeDate) {
                return SystemError(ESTALE);
            }
            ++seen;
        }
    }
    return {};
}

void TreeCopy::undo() {
    // From the first on: what lies in a folder is reached through it.
    for (std::size_t index = firstFinished_; index < made_.folders.size(); ++index) {
        static_cast<void>(FileSystem::current().setPermissions(pathOf(made_, index), onlyTheOwner));
    }
    static_cast<void>(removeListedTree(made_));
}

} // namespace tav::internal
