// Finding other items from this one; moving and removing it; what its content is.

#include "base/PathString.hpp"
#include "fileinfo/ItemMedia.hpp"
#include "fileinfo/ListingFilters.hpp"
#include "fileinfo/local/CachedAttributes.hpp"
#include "fileinfo/local/TavMacFileInfo.hpp"
#include "foundation/FileManager.hpp"
#include "foundation/FolderTree.hpp"

#include <limits>

namespace tav {

FileInfoPtr TavMacFileInfo::parentFolder() {
    return _itsPath == "/" ? nullptr
                           : fileInfoWithPath(stringByDeletingLastPathComponent(_itsPath));
}

FileInfoPtr TavMacFileInfo::find(std::string_view name) { return find(name, false); }

std::shared_ptr<TavMacFileInfo> TavMacFileInfo::find(std::string_view name, bool resolveAliases) {
    return find(name, resolveAliases, false);
}

std::shared_ptr<TavMacFileInfo> TavMacFileInfo::find(std::string_view name, bool resolveAliases,
                                                     bool allowingPrompts) {
    const std::string folder = isFile() ? stringByDeletingLastPathComponent(_itsPath) : _itsPath;
    auto found = fileInfoWithPath(stringByAppendingPathComponent(folder, name));
    if (resolveAliases) {
        found->resolveAliasAllowingPrompts(allowingPrompts);
    }
    return found;
}

FileInfoArray TavMacFileInfo::findDeep(std::string_view name) {
    internal::FindItemFilter filter(name, true, false);
    return folderContentsDeepWithFilter(&filter);
}

FileInfoPtr TavMacFileInfo::findFirstDeep(std::string_view name) {
    internal::FindItemFilter filter(name, true, true);
    const FileInfoArray found = folderContentsDeepWithFilter(&filter);
    return found.empty() ? nullptr : found.front();
}

Status TavMacFileInfo::moveTo(TavBaseFileInfo* destination) {
    if (destination == nullptr) {
        return Status::Failure;
    }
    const std::string newPath = destination->path();
    if (movePath(path(), newPath) != Status::Success) {
        return Status::Failure;
    }
    setPath(newPath);
    return Status::Success;
}

bool TavMacFileInfo::remove() {
    const std::optional<std::string> now = _pathOfExisting();
    if (!now || !removeItem(*now).isNone()) {
        return false;
    }
    refresh();
    return true;
}

std::optional<FileWrapper> TavMacFileInfo::fileWrapper() {
    Result<Data> contents =
        FileSystem::current().readFile(path(), std::numeric_limits<std::uint32_t>::max());
    if (!contents.ok()) {
        return std::nullopt;
    }
    return FileWrapper{name(), std::move(contents).value()};
}

bool TavMacFileInfo::hasDRM() {
    if (_hasDRM == -1) {
        _hasDRM = ItemMedia::current().isProtectedFile(path()) ? 1 : 0;
    }
    return _hasDRM == 1;
}

std::optional<Value> TavMacFileInfo::metadata() {
    return ItemMedia::current().metadataForFile(path());
}

void TavMacFileInfo::setMetadata(const Value& metadata) {
    ItemMedia::current().setMetadata(metadata, path());
}

} // namespace tav
