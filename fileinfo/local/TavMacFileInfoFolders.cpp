// Folders: what is in them, making, emptying and cleaning them.

#include "base/Exception.hpp"
#include "base/PathString.hpp"
#include "fileinfo/VerboseLog.hpp"
#include "fileinfo/local/ErrorText.hpp"
#include "fileinfo/local/FolderNames.hpp"
#include "fileinfo/local/FolderWalk.hpp"
#include "fileinfo/local/TavMacFileInfo.hpp"
#include "fileinfo/local/TavRemoveMacGeneratedItemsFilter.hpp"

#include <array>

namespace tav {

namespace {

constexpr int errorLogType = 2;

/// Makes the folder of an item that does not exist; whether it is there now.
bool makeFolder(TavBaseFileInfo& item) {
    const SystemError error = FileSystem::current().createFolder(item.path(), 0777);
    if (!error.isNone()) {
        if (LogIsEnabled(errorLogType)) {
            Log_("%@", internal::errorText(error));
        }
        return false;
    }
    item.refresh();
    return true;
}

void removeFileNamed(TavBaseFileInfo& folder, std::string_view name) {
    try {
        const FileInfoPtr item = folder.find(name);
        if (item && item->isFile()) {
            item->remove();
        }
    } catch (const Exception&) {
        // The next name is tried.
    }
}

} // namespace

void TavMacFileInfo::folderContentsWithFilter(TavBaseFileInfoFilter* filter,
                                              FileInfoArray* withArray, bool* stopAccumulating,
                                              std::string_view rootNodePath) {
    if (withArray == nullptr || !isFolder() || !exists() || isAlias()) {
        return;
    }
    // On the heap, since deep listings nest.
    const auto walk = std::make_unique<internal::FolderWalk>(*this, rootNodePath);
    if (walk->appendTo(*withArray, filter) && stopAccumulating != nullptr) {
        *stopAccumulating = true;
    }
}

FileInfoPtr TavMacFileInfo::createFolder(std::string_view path) {
    if (path.size() > 1 && path.ends_with('/')) {
        path.remove_suffix(1);
    }
    FileInfoPtr folder = isFolder() ? shared_from_this() : parentFolder();
    for (const std::string& component : tav::pathComponents(path)) {
        FileInfoPtr next;
        if (component == "/") {
            next = fileInfoWithPath(component);
        } else if (folder) {
            next = folder->find(component);
            next = next ? next->resolvedFileInfo() : nullptr;
        }
        if (!next) {
            return nullptr;
        }
        if (next->exists()) {
            if (!next->isFolder()) {
                internal::logVerbose("\"%@\" already exists and is not a folder.", next->path());
                return nullptr;
            }
        } else if (!makeFolder(*next)) {
            return nullptr;
        }
        folder = std::move(next);
    }
    return folder;
}

FileInfoPtr TavMacFileInfo::createUniqueFolder(std::string_view name) {
    return createFolder(uniqueFilename(name));
}

bool TavMacFileInfo::removeContents() {
    if (!exists()) {
        internal::logVerbose("The TavMacFileInfo \"%@\" doesn't exist!", description());
        return false;
    }
    if (!isFolder()) {
        internal::logVerbose("***** TavMacFileInfo:removeContents for a file-NOT DONE");
        return false;
    }
    internal::logVerbose("Removing contents of folder \"%@\"", description());
    bool allRemoved = true;
    const FolderListing names = internal::namesIn(path());
    for (const FolderListing::Entry entry : names) {
        const FileInfoPtr item = find(entry.name);
        if (item && item->remove()) {
            internal::logVerbose("   Removed item \"%@\"", entry.name);
        } else {
            internal::logVerbose("   *** Couldn't remove item \"%@\"", entry.name);
            allRemoved = false;
        }
    }
    return allRemoved;
}

void TavMacFileInfo::removeMacGeneratedItemsAtPath(std::string_view path) {
    const FileInfoPtr volume = fileInfoWithPath(path)->volume();
    if (!volume || !volume->exists()) {
        return;
    }
    const FileInfoPtr trash = volume->find(".Trashes");
    if (trash && trash->isFolder()) {
        trash->remove();
    }
    constexpr std::array<std::string_view, 4> names = {
        "Desktop DB", "Desktop DF", ".com.apple.timemachine.supported", ".Spotlight-V100"};
    for (const std::string_view name : names) {
        removeFileNamed(*volume, name);
    }
    TavRemoveMacGeneratedItemsFilter filter;
    static_cast<void>(volume->folderContentsDeepWithFilter(&filter));
}

} // namespace tav
