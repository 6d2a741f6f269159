// Searching, listing, creating and removing in terms of the primitives.

#include "base/Unicode.hpp"
#include "fileinfo/KindFilters.hpp"
#include "fileinfo/ListingFilters.hpp"
#include "fileinfo/TavBaseFileInfo.hpp"
#include "fileinfo/UniqueName.hpp"
#include "fileinfo/VerboseLog.hpp"
#include "foundation/HomePath.hpp"
#include "foundation/WindowsFilename.hpp"

namespace tav {

namespace {

/// The folder that an operation of this item works in: the item itself, or what it lies in.
FileInfoPtr folderOf(TavBaseFileInfo& item) {
    return item.isFolder() ? item.shared_from_this() : item.parentFolder();
}

bool existsIn(const FileInfoPtr& folder, std::string_view name) {
    const FileInfoPtr found = folder ? folder->find(name) : nullptr;
    return found && found->exists();
}

std::string rootPathOf(TavBaseFileInfo& folder) {
    const FileInfoPtr resolved = folder.resolvedFileInfo();
    return stringByStandardizingPath(resolved ? resolved->path() : std::string()) + '/';
}

} // namespace

FileInfoPtr TavBaseFileInfo::find(std::string_view /*name*/) { return TavBaseFileInfo::fileInfo(); }

FileInfoPtr TavBaseFileInfo::findFirstDeep(std::string_view /*name*/) { return nullptr; }

FileInfoArray TavBaseFileInfo::findDeep(std::string_view /*name*/) { return {}; }

FileInfoPtr TavBaseFileInfo::findWithWindowsName(std::string_view name, bool useASCIIOnly) {
    if (!isFolder()) {
        return nullptr;
    }
    FileInfoPtr candidate;
    for (const FileInfoPtr& child : folderContents()) {
        const std::string childName = child->name();
        if (equalsIgnoringCase(name, childName)) {
            return child;
        }
        if (!candidate &&
            (equalsIgnoringCase(name,
                                windowsValidFilenameUsingASCIIOnly(childName, useASCIIOnly)) ||
             equalsIgnoringCase(name, windowsValidFilenameByTranscodingNonASCIIChars(childName)))) {
            candidate = child;
        }
    }
    return candidate;
}

FileInfoPtr TavBaseFileInfo::findWithWindowsName(std::string_view name) {
    return findWithWindowsName(name, false);
}

FileInfoArray TavBaseFileInfo::findAllFoldersWithName(std::string_view name) {
    FileInfoArray found;
    for (const FileInfoPtr& child : folderContents()) {
        if (child->isFolder() && equalsIgnoringCase(child->name(), name)) {
            found.push_back(child);
        }
    }
    return found;
}

std::string TavBaseFileInfo::uniqueFilename(std::string_view name) {
    const FileInfoPtr folder = folderOf(*this);
    return internal::uniqueName(
        name, [&](std::string_view candidate) { return existsIn(folder, candidate); });
}

FileInfoArray TavBaseFileInfo::folderContents() { return folderContentsWithFilter(nullptr); }

FileInfoArray TavBaseFileInfo::folderContentsWithFilter(TavBaseFileInfoFilter* filter) {
    return folderContentsWithFilter(filter, rootPathOf(*this));
}

FileInfoArray TavBaseFileInfo::folderContentsWithFilter(TavBaseFileInfoFilter* filter,
                                                        std::string_view withRootPath) {
    FileInfoArray contents;
    bool stop = false;
    folderContentsWithFilter(filter, &contents, &stop, withRootPath);
    return contents;
}

FileInfoArray TavBaseFileInfo::folderContentsDeepWithFilter(TavBaseFileInfoFilter* filter) {
    FileInfoArray contents;
    bool stop = false;
    internal::GoDeepFilter goDeep(filter, &contents);
    folderContentsWithFilter(&goDeep, &contents, &stop, rootPathOf(*this));
    return contents;
}

void TavBaseFileInfo::folderContentsWithFilter(TavBaseFileInfoFilter* /*filter*/,
                                               FileInfoArray* /*withArray*/,
                                               bool* /*stopAccumulating*/,
                                               std::string_view /*rootNodePath*/) {}

FileInfoPtr TavBaseFileInfo::createUniqueFolder(std::string_view /*name*/) { return nullptr; }

FileInfoPtr TavBaseFileInfo::createFolderWithPathComponents(const std::vector<std::string>& names) {
    FileInfoPtr folder = folderOf(*this);
    for (const std::string& name : names) {
        folder = folder ? folder->createFolder(name) : nullptr;
        if (!folder || !folder->exists()) {
            return nullptr;
        }
    }
    return folder;
}

FileInfoPtr TavBaseFileInfo::createFolder(std::string_view /*name*/) { return nullptr; }

bool TavBaseFileInfo::removeContents() {
    if (!isFolder()) {
        internal::logVerbose(
            "TavBaseFileInfo: Couldn't remove contents of file \"%@\"; not implemented.",
            humanFriendlyPath());
        return false;
    }
    bool allRemoved = true;
    for (const FileInfoPtr& child : folderContents()) {
        allRemoved = child->remove() && allRemoved;
    }
    return allRemoved;
}

void TavBaseFileInfo::removeEmptySubfolders() {
    if (!isFolder()) {
        return;
    }
    TavFoldersOnlyFilter foldersOnly;
    TavVisibleItemsFilter visibleItems;
    for (const FileInfoPtr& child : folderContentsWithFilter(&foldersOnly)) {
        if (child->isFolder() && child->folderContentsWithFilter(&visibleItems).empty()) {
            child->remove();
        }
    }
}

} // namespace tav
