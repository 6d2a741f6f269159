// Copying and moving whole items by their paths.

#include "foundation/FileManager.hpp"
#include "foundation/ItemCopier.hpp"
#include "foundation/TreeCopy.hpp"

#include <cerrno>
#include <memory>

namespace tav {

namespace {

using internal::ItemCopier;
using internal::TreeCopy;
using internal::withoutTrailingSlashes;

/// One copy of an item, from its beginning to the removal of the source.
class PathCopy {
  public:
    PathCopy(std::string_view source, std::string_view destination, bool waitsForMedium)
        : source_(withoutTrailingSlashes(source)),
          destination_(withoutTrailingSlashes(destination)), items_(waitsForMedium),
          tree_(destination_, items_) {}

    SystemError copy() {
        FileSystem& files = FileSystem::current();
        const auto there = files.attributes(source_);
        if (!there.ok()) {
            return there.error();
        }
        seen_ = there.value();
        const auto taken = files.attributes(destination_);
        if (taken.ok() || taken.error().number() != ENOENT) {
            return taken.ok() ? SystemError(EEXIST) : taken.error();
        }
        const SystemError error = copyByKind();
        if (!error.isNone()) {
            return error;
        }
        const SystemError finishing = items_.finishFolderOf(destination_);
        if (!finishing.isNone()) {
            undo();
        }
        return finishing;
    }

    /// Only when the copy is whole. When the source is no more what was copied, the copy goes;
    /// when it cannot be removed, both stay.
    SystemError removeSource() {
        const SystemError error = checkSource();
        if (!error.isNone()) {
            undo();
            return error;
        }
        return isFolder() ? tree_.removeSource() : FileSystem::current().removeFile(source_);
    }

  private:
    [[nodiscard]] bool isFolder() const { return seen_.kind == FileKind::Folder; }

    SystemError copyByKind() {
        switch (seen_.kind) {
        case FileKind::Folder:
            return tree_.copy(source_);
        case FileKind::Link:
            return copyLink();
        case FileKind::Regular:
            return copyFile();
        default:
            return SystemError(EINVAL);
        }
    }

    SystemError copyLink() {
        const auto target = FileSystem::current().linkTarget(source_);
        return target.ok()
                   ? ItemCopier::makeLink(destination_, target.value(), seen_.modificationDate)
                   : target.error();
    }

    SystemError copyFile() {
        FileSystem& files = FileSystem::current();
        const auto from = files.open(source_, {});
        if (!from.ok()) {
            return from.error();
        }
        const auto attributes = from.value()->attributes();
        if (!attributes.ok()) {
            return attributes.error();
        }
        if (attributes.value().identity != seen_.identity) {
            return SystemError(ESTALE); // a link may have come in its place
        }
        seen_ = attributes.value();
        const auto to = files.open(destination_, ItemCopier::optionsForCopyOf(seen_));
        if (!to.ok()) {
            return to.error();
        }
        const SystemError error =
            items_.copyFile(*from.value(), seen_, source_, *to.value(), destination_);
        if (!error.isNone()) {
            undo();
        }
        return error;
    }

    SystemError checkSource() {
        if (isFolder()) {
            return tree_.checkSource();
        }
        const auto there = FileSystem::current().attributes(source_);
        if (!there.ok()) {
            return there.error();
        }
        const FileAttributes& now = there.value();
        return now.identity == seen_.identity && now.size == seen_.size &&
                       now.changeDate == seen_.changeDate
                   ? SystemError()
                   : SystemError(ESTALE);
    }

    void undo() {
        if (isFolder()) {
            tree_.undo();
        } else {
            static_cast<void>(FileSystem::current().removeFile(destination_));
        }
    }

    std::string_view source_;
    std::string_view destination_;
    ItemCopier items_;
    TreeCopy tree_;
    FileAttributes seen_; ///< Of the source, from before it was read.
};

} // namespace

Status copyPath(std::string_view source, std::string_view destination) {
    return PathCopy(source, destination, false).copy().status();
}

Status movePath(std::string_view source, std::string_view destination) {
    const SystemError error = FileSystem::current().move(source, destination, Replace::No);
    if (error.number() != EXDEV) {
        return error.status();
    }
    PathCopy copy(source, destination, true);
    const SystemError copying = copy.copy();
    return (copying.isNone() ? copy.removeSource() : copying).status();
}

} // namespace tav
