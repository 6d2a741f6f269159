// Finding, listing, making and removing older items.

#include "base/PathString.hpp"
#include "base/Unicode.hpp"
#include "fileinfo/UniqueName.hpp"
#include "fileinfo/local/CachedAttributes.hpp"
#include "fileinfo/local/FolderNames.hpp"
#include "fileinfo/local/LegacyListingFilters.hpp"
#include "foundation/FolderTree.hpp"

#include <unordered_set>

namespace tav {

namespace {

/// The resolved paths of the items in an array that grows, ignoring case.
class ResolvedPaths {
  public:
    explicit ResolvedPaths(const TavFileInfoArray& items) : items_(items) {}

    /// Whether the item's path is one of them.
    [[nodiscard]] bool contain(TavFileInfo& item) {
        for (; known_ < items_.size(); ++known_) {
            const TavFileInfoPtr& each = items_[known_];
            if (const auto path = each ? each->resolvedPath() : std::nullopt) {
                paths_.insert(caselessForm(*path));
            }
        }
        return paths_.contains(caselessForm(item.path()));
    }

  private:
    const TavFileInfoArray& items_;
    std::size_t known_ = 0; ///< How many items are in the set.
    std::unordered_set<std::string> paths_;
};

} // namespace

TavFileInfoPtr TavFileInfo::parentFolder() {
    return itsPath_ ? fileInfoWithPath(stringByDeletingLastPathComponent(*itsPath_))
                    : fileInfoWithPath(nullptr);
}

TavFileInfoPtr TavFileInfo::folder() { return isFolder() ? shared_from_this() : parentFolder(); }

TavFileInfoPtr TavFileInfo::find(std::string_view name) { return find(name, false); }

TavFileInfoPtr TavFileInfo::find(std::string_view name, bool resolveAliases) {
    const bool isSibling = isFile();
    if (!itsPath_) {
        return fileInfoWithPath(nullptr);
    }
    TavFileInfoPtr found =
        itemIn(isSibling ? stringByDeletingLastPathComponent(*itsPath_) : *itsPath_, name);
    if (resolveAliases) {
        found->resolveAlias();
    }
    return found;
}

TavFileInfoArray TavFileInfo::findDeep(std::string_view name) {
    legacy::FindItemFilter filter(name, true, false);
    return folderContentsDeepWithFilter(&filter);
}

TavFileInfoPtr TavFileInfo::findFirstDeep(std::string_view name) {
    legacy::FindItemFilter filter(name, true, true);
    const TavFileInfoArray found = folderContentsDeepWithFilter(&filter);
    return found.empty() ? nullptr : found.front();
}

std::string TavFileInfo::uniqueFilename(std::string_view name) {
    const TavFileInfoPtr place = folder();
    return internal::uniqueName(
        name, [&](std::string_view candidate) { return place->find(candidate)->exists(); });
}

TavFileInfoArray TavFileInfo::folderContents() { return folderContentsWithFilter(nullptr); }

TavFileInfoArray TavFileInfo::folderContentsWithFilter(TavFileInfoFilter* filter) {
    TavFileInfoArray contents;
    folderContentsWithFilter(filter, &contents, nullptr);
    return contents;
}

void TavFileInfo::folderContentsWithFilter(TavFileInfoFilter* filter, TavFileInfoArray* withArray,
                                           bool* stopAccumulating) {
    if (withArray == nullptr || !isFolder()) {
        return;
    }
    const std::string own = path(); // of a folder that is gone nothing is listed
    const FolderListing names = internal::namesIn(own);
    for (const FolderListing::Entry entry : names) {
        TavFileInfoPtr item = itemIn(own, entry.name);
        // What the listing tells need not be asked for.
        if (entry.kind != FileKind::Link && entry.kind != FileKind::Unknown) {
            item->isFolder_ = entry.kind == FileKind::Folder;
            item->folderAliasValid_ = true;
        }
        bool stop = false;
        if (filter == nullptr || filter->includeItem(*item, &stop)) {
            withArray->push_back(std::move(item));
        }
        if (stop) {
            if (stopAccumulating != nullptr) {
                *stopAccumulating = true;
            }
            return;
        }
    }
}

TavFileInfoArray TavFileInfo::folderContentsDeepWithFilter(TavFileInfoFilter* filter) {
    TavFileInfoArray contents;
    legacy::GoDeepFilter goDeep(filter, &contents);
    static_cast<void>(goDeep.enter(*this));
    folderContentsWithFilter(&goDeep, &contents, nullptr);
    return contents;
}

void TavFileInfo::addFolderContentsToArray(TavFileInfoArray* array) {
    if (array == nullptr || !isFolder()) {
        return;
    }
    ResolvedPaths known(*array);
    for (TavFileInfoPtr& item : folderContents()) {
        const TavFileInfoPtr resolved = item->resolvedFileInfo();
        if (resolved->isFile() || !known.contain(*resolved)) {
            array->push_back(std::move(item));
        }
    }
}

bool TavFileInfo::_array(const TavFileInfoArray& array, TavFileInfo* containsInfo) {
    return containsInfo != nullptr && containsInfo->itsPath_ &&
           ResolvedPaths(array).contain(*containsInfo);
}

TavFileInfoPtr TavFileInfo::createFolder(std::string_view name) {
    const TavFileInfoPtr place = folder();
    if (!place->itsPath_) {
        return nullptr; // and not one in the working directory
    }
    TavFileInfoPtr made = itemIn(place->path(), name);
    FileSystem& files = FileSystem::current();
    const Result<FileAttributes> there = files.targetAttributes(*made->itsPath_);
    const bool isThere = there.ok() ? there.value().kind == FileKind::Folder
                                    : files.createFolder(*made->itsPath_, 0777).isNone();
    return isThere ? made : nullptr;
}

bool TavFileInfo::removeContents() {
    if (!exists() || !isFolder()) {
        return false;
    }
    bool allRemoved = true;
    const FolderListing names = internal::namesIn(path());
    for (const FolderListing::Entry entry : names) {
        allRemoved = find(entry.name)->remove() && allRemoved;
    }
    return allRemoved;
}

bool TavFileInfo::remove() {
    if (!exists() || !removeItem(path()).isNone()) {
        return false;
    }
    refresh();
    return true;
}

} // namespace tav
