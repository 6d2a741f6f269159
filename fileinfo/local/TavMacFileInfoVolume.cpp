// Sizes and volumes.

#include "base/PathString.hpp"
#include "fileinfo/local/CachedAttributes.hpp"
#include "fileinfo/local/TavMacFileInfo.hpp"
#include "platform/SystemLog.hpp"
#include "platform/Volumes.hpp"

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <utility>

namespace tav {

namespace {

constexpr std::string_view volumesFolder = "/Volumes/";
/// Components of a folder directly in that folder: "/", "Volumes", its name.
constexpr std::size_t volumeComponents = 3;

/// Whether a path lies where volumes are mounted, or is that folder itself.
bool isAmongVolumes(std::string_view path) {
    return path.starts_with(volumesFolder) || path == "/Volumes";
}

} // namespace

/// Where to ask for the item's volume: that of a link is the one that the link lies on.
/// `learned`: the attributes, when the file was asked for them just now.
std::string TavMacFileInfo::_pathOnVolume(const std::optional<FileAttributes>& learned) {
    const std::string own = learned ? _itsPath : path();
    if (learned && !_folderAliasValid) {
        _cacheAliasInfo(learned);
    }
    return isAlias() ? stringByDeletingLastPathComponent(own) : own;
}

Result<VolumeInfo> TavMacFileInfo::_volumeInfo() {
    std::optional<FileAttributes> learned;
    if (_takeFileRef(learned) != Status::Success) {
        return SystemError(ENOENT);
    }
    return Volumes::current().volumeOfPath(_pathOnVolume(learned));
}

std::uint64_t TavMacFileInfo::_vRefNum() {
    const Result<VolumeInfo> info = _volumeInfo();
    return info.ok() ? info.value().identifier : 0;
}

FileInfoPtr TavMacFileInfo::volume() {
    const Result<VolumeInfo> info = _volumeInfo();
    if (info.ok()) {
        return fileInfoWithPath(info.value().rootPath);
    }
    if (!isAmongVolumes(_itsPath)) {
        return fileInfoWithPath("/");
    }
    std::vector<std::string> components = pathComponents();
    if (components.size() < volumeComponents) {
        return nullptr;
    }
    components.resize(volumeComponents);
    return fileInfoWithPath(pathWithComponents(components));
}

bool TavMacFileInfo::isVolume() {
    if (!isFolder()) {
        return false;
    }
    if (fileRef(nullptr) != Status::Success) {
        return _itsPath == "/" ||
               (_itsPath.starts_with(volumesFolder) && pathComponents().size() == volumeComponents);
    }
    // An alias of a volume is none.
    return !isAlias() && Volumes::current().isVolumeRoot(path());
}

std::uint64_t TavMacFileInfo::size() {
    if (isAlias()) {
        SystemLog::current().write(""); // this is meant
    }
    if (isVolume()) {
        const Result<VolumeInfo> info = _volumeInfo();
        return info.ok() ? info.value().totalBytes : 0;
    }
    if (isFile()) {
        // 32 bits of it: sizes of 4 GiB and more wrap, and callers know them so.
        return _cacheAttributes() ? static_cast<std::uint32_t>(_attrs->file.size) : 0;
    }
    // The sum of the sizes in the folder, one folder after another: folders may nest to any depth.
    std::uint64_t sum = 0;
    FileInfoArray pending = folderContents();
    while (!pending.empty()) {
        const FileInfoPtr item = std::move(pending.back());
        pending.pop_back();
        TavMacFileInfo* const folder = asMacFileInfo(item.get());
        if (folder != nullptr && folder->isFolder() && !folder->isAlias() && !folder->isVolume()) {
            FileInfoArray inside = folder->folderContents();
            std::ranges::move(inside, std::back_inserter(pending));
        } else {
            sum += item->size();
        }
    }
    return sum;
}

std::uint64_t TavMacFileInfo::freeSpaceOnVolume() {
    auto item = std::static_pointer_cast<TavMacFileInfo>(shared_from_this());
    std::optional<FileAttributes> learned;
    while (item && item->_takeFileRef(learned) != Status::Success) {
        const std::size_t length = item->_itsPath.size();
        item = std::dynamic_pointer_cast<TavMacFileInfo>(item->parentFolder());
        // What is above a relative path is the empty one, and so on for ever.
        if (item && item->_itsPath.size() >= length) {
            return 0;
        }
    }
    if (!item) {
        return 0;
    }
    const auto free = Volumes::current().freeBytes(item->_pathOnVolume(learned));
    return free.ok() ? free.value() : 0;
}

void TavMacFileInfo::_cacheBlackberryInfo() {
    if (_blackberryInfoValid) {
        return;
    }
    if (isVolume()) {
        // The volumes of devices are not told from others yet.
        _isBlackberryInternalMemoryRoot = false;
        _isBlackberryMemoryCardRoot = false;
    }
    _blackberryInfoValid = true;
}

bool TavMacFileInfo::isBlackberryInternalMemoryRoot() {
    _cacheBlackberryInfo();
    return _isBlackberryInternalMemoryRoot;
}

bool TavMacFileInfo::isBlackberryMemoryCardRoot() {
    _cacheBlackberryInfo();
    return _isBlackberryMemoryCardRoot;
}

} // namespace tav
