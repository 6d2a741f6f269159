#include "fileinfo/local/FollowedPath.hpp"

#include "base/PathString.hpp"
#include "platform/Volumes.hpp"

#include <algorithm>
#include <array>

namespace tav {

namespace {

/// Whether the volume of a folder gives the same file other numbers from time to time.
bool inventsNumbers(std::string_view folder) {
    constexpr std::array<std::string_view, 3> types = {"vfat", "msdos", "exfat"};
    const Result<VolumeInfo> volume = Volumes::current().volumeOfPath(folder);
    return volume.ok() && (std::ranges::find(types, volume.value().typeName) != types.end() ||
                           volume.value().typeName.starts_with("fuse"));
}

} // namespace

internal::FileNumbers internal::numbersOf(const FileAttributes& attributes) {
    const FileIdentity& identity = attributes.identity;
    return {identity.device, identity.number, identity.birthNanoseconds, attributes.mount};
}

bool internal::isSameFile(FileNumbers& file, const FileAttributes& attributes) {
    const FileNumbers found = numbersOf(attributes);
    const bool isFromListing = file.birthNanoseconds == 0;
    const bool isSame = file.device == found.device
                            ? file.number == found.number &&
                                  (isFromListing || file.birthNanoseconds == found.birthNanoseconds)
                            : isFromListing && attributes.kind == FileKind::Folder;
    if (isSame) {
        file = found;
    }
    return isSame;
}

std::optional<std::string> internal::pathOfFile(FileNumbers& file, std::string_view lastSeen) {
    if (lastSeen.empty() || (file.device == 0 && file.number == 0)) {
        return std::nullopt;
    }
    FileSystem& files = FileSystem::current();
    const Result<FileAttributes> there = files.attributes(lastSeen);
    if (there.ok() && isSameFile(file, there.value())) {
        return std::string(lastSeen);
    }
    const std::string folder = stringByDeletingLastPathComponent(lastSeen);
    if (inventsNumbers(folder)) {
        return there.ok() ? std::optional<std::string>(lastSeen) : std::nullopt;
    }
    const Result<std::unique_ptr<OpenFolder>> open = files.openFolder(folder);
    if (!open.ok()) {
        return std::nullopt;
    }
    const Result<FolderListing> entries = open.value()->entries();
    if (!entries.ok()) {
        return std::nullopt;
    }
    for (const FolderListing::Entry entry : entries.value()) {
        if (entry.number != file.number) {
            continue;
        }
        const Result<FileAttributes> candidate = open.value()->attributes(entry.name);
        if (candidate.ok() && candidate.value().identity.device == file.device &&
            isSameFile(file, candidate.value())) {
            return stringByAppendingPathComponent(folder, entry.name);
        }
    }
    return std::nullopt;
}

} // namespace tav
