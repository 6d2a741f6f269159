#include "fileinfo/local/FolderWalk.hpp"

#include "base/Exception.hpp"
#include "base/Format.hpp"
#include "base/Unicode.hpp"
#include "fileinfo/ItemAllocation.hpp"
#include "fileinfo/ItemCopy.hpp"
#include "fileinfo/VerboseLog.hpp"
#include "fileinfo/local/ErrorText.hpp"
#include "platform/Localization.hpp"

#include <utility>

namespace tav::internal {

namespace {

[[noreturn]] void throwUnreadable(std::string_view path, std::string_view why) {
    throw Exception(
        "folderContentsWithFilter",
        tav::format(localizedString("An exception occurred while trying to get the contents of "
                                    "the folder \"%@\". (%@)"),
                    path, why));
}

/// Cheap for nearly every name. Ignoring case "fi" is equal to the ligature, of one byte more.
bool isCopyFile(std::string_view name) {
    return (name.size() == copyFileName.size() || name.size() == copyFileName.size() + 1) &&
           (name.front() == 'Q' || name.front() == 'q') && equalsIgnoringCase(name, copyFileName);
}

/// Tells what is logged about a name, with its whole path; nothing is put together otherwise.
template <class Path>
void logAbout(const char* form, const Path& path) {
    if (LogIsEnabled(verboseLogType)) {
        logVerbose(form, path());
    }
}

} // namespace

FolderWalk::FolderWalk(TavMacFileInfo& folder, std::string_view rootNodePath)
    : path_(folder.path()), rootNodePath_(rootNodePath) {
    // Only walks put an open folder into an item, and it is the one that they list.
    auto* const outer = static_cast<WalkedFolder*>(folder._listingFolder);
    if (outer != nullptr && outer->depth() + 1 >= deepest) {
        throwUnreadable(path_, "Too many levels of folders");
    }
    Result<std::unique_ptr<WalkedFolder>> opened = WalkedFolder::open(path_, outer);
    if (!opened.ok()) {
        throwUnreadable(path_, errorText(opened.error()));
    }
    folder_ = std::move(opened).value();
    Result<FolderListing> entries = folder_->entries();
    if (!entries.ok()) {
        throwUnreadable(path_, errorText(entries.error()));
    }
    entries_ = std::move(entries).value();
    if (!path_.ends_with('/')) {
        path_ += '/';
    }
}

bool FolderWalk::appendTo(FileInfoArray& array, TavBaseFileInfoFilter* filter) {
    if (filter == nullptr && array.empty()) {
        array.reserve(entries_.size());
    }
    for (const FolderListing::Entry entry : entries_) {
        if (isCopyFile(entry.name)) {
            removeCopyFile(entry.name);
            continue;
        }
        const std::shared_ptr<TavMacFileInfo> item = itemOf(entry);
        // Taken away again however the filter ends.
        struct Lent {
            Lent(TavMacFileInfo& to, OpenFolder* folder) : item(to) {
                item._listingFolder = folder;
            }
            ~Lent() { item._listingFolder = nullptr; }
            Lent(const Lent&) = delete;
            Lent& operator=(const Lent&) = delete;
            TavMacFileInfo& item;
        };
        bool stop = false;
        bool isIncluded = true;
        {
            const Lent lent(*item, folder_.get());
            if (isSkipped(*item)) {
                continue;
            }
            isIncluded = filter == nullptr || filter->includeItem(*item, &stop);
        }
        if (isIncluded) {
            array.push_back(item);
        }
        if (stop) {
            return true;
        }
    }
    return false;
}

std::string FolderWalk::pathOf(std::string_view name) const {
    std::string path;
    path.reserve(path_.size() + name.size());
    path.append(path_).append(name);
    return path;
}

std::shared_ptr<TavMacFileInfo> FolderWalk::itemOf(const FolderListing::Entry& entry) const {
    auto item = allocateItem<TavMacFileInfo>();
    item->_itsPath = pathOf(entry.name);
    const FileAttributes& folder = folder_->ownAttributes();
    item->_itsFileRef = {folder.identity.device, entry.number, 0, folder.mount};
    item->_fileRefValid = true;
    FileKind kind = entry.kind;
    if (kind == FileKind::Unknown) {
        const Result<FileAttributes> found = folder_->attributes(entry.name);
        kind = found.ok() ? found.value().kind : kind;
    }
    if (kind == FileKind::Link || kind == FileKind::Unknown) {
        // Until it is told where it leads: when that fails, no link is taken for the folder itself.
        item->_isAlias = true;
    } else {
        item->_isFolder = kind == FileKind::Folder;
        item->_folderAliasValid = true;
    }
    return item;
}

void FolderWalk::removeCopyFile(std::string_view name) {
    if (folder_->removeFile(name).isNone()) {
        logAbout("Deleted Quillbox temporary file, \"%@\".", [&] { return pathOf(name); });
    }
}

bool FolderWalk::isSkipped(TavMacFileInfo& item) {
    if (!item.isFolder()) {
        return false;
    }
    const auto path = [&] { return item._itsPath; };
    if (!item.exists()) {
        logAbout("Skipping item \"%@\" because it refers to an item that cannot be found.", path);
        return true;
    }
    if (item._isAlias && leadsIntoTree(item)) {
        logAbout("Skipping item \"%@\" because it refers to an item already included.", path);
        return true;
    }
    return false;
}

bool FolderWalk::leadsIntoTree(TavMacFileInfo& alias) {
    if (alias._aliasRef == nullptr) {
        return false;
    }
    const std::string target = alias._aliasRef->path + '/';
    if (!rootNodePath_.empty() && target.starts_with(rootNodePath_)) {
        return true;
    }
    if (!canonicalRootNodePath_) {
        const Result<std::string> root = FileSystem::current().canonicalPath(rootNodePath_);
        canonicalRootNodePath_ = root.ok() ? root.value() + '/' : std::string();
    }
    return !canonicalRootNodePath_->empty() && target.starts_with(*canonicalRootNodePath_);
}

} // namespace tav::internal
