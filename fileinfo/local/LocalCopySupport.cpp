#include "fileinfo/local/LocalCopySupport.hpp"

#include "fileinfo/local/LocalCopySeries.hpp"
#include "fileinfo/local/LocalOpenFile.hpp"
#include "fileinfo/local/SmallCopy.hpp"
#include "fileinfo/local/TavMacFileInfo.hpp"
#include "platform/NeverDestroyed.hpp"

#include <cerrno>
#include <limits>
#include <typeinfo>

namespace tav::internal {

namespace {

/// Of extended attributes, those that any user may have and copy.
constexpr std::string_view userAttributes = "user.";

/// The bits by which a program runs as its file's user or group. A copy belongs to whoever copies,
/// in whose name it is not to run.
constexpr std::uint32_t runsAsOwnerOrGroup = 06000;

Status statusOf(SystemError error) {
    switch (error.number()) {
    case 0:
        return Status::Success;
    case EINVAL:
    case ENOSYS:
    case ENOTSUP:
        return Status::NotSupported; // the volume knows no such thing
    default:
        return Status::Failure;
    }
}

/// Whether the volume has no room for an extended attribute of that kind or size. Some answer
/// ENOSPC for one that is larger than they ever keep.
bool hasNoPlaceForAttribute(SystemError error) {
    switch (error.number()) {
    case ENOTSUP:
    case E2BIG:
    case ERANGE:
    case ENOSPC:
        return true;
    default:
        return false;
    }
}

/// Whether the volume keeps no such permissions: FAT refuses some by EPERM, which is nothing else
/// for one's own file.
bool hasNoPlaceForPermissions(SystemError error) {
    return error == SystemError(EPERM) || error == SystemError(ENOTSUP);
}

/// Appends those of the user's kind; whether all of them could be read.
bool readAttributes(std::string_view path,
                    std::vector<FileMetadata::ExtendedAttribute>& attributes) {
    FileSystem& files = FileSystem::current();
    Result<std::vector<std::string>> names = files.extendedAttributeNames(path);
    if (!names.ok()) {
        return names.error() == SystemError(ENOTSUP);
    }
    for (std::string& name : names.value()) {
        if (!name.starts_with(userAttributes)) {
            continue;
        }
        Result<Data> value = files.extendedAttribute(path, name);
        if (value.ok()) {
            attributes.push_back({std::move(name), std::move(value).value()});
        } else if (value.error() != SystemError(ENODATA)) {
            return false;
        }
    }
    return true;
}

} // namespace

bool isPlainLocalItem(const TavBaseFileInfo& item) {
    static const std::type_info& plain = []() -> const std::type_info& {
        const FileInfoPtr made = TavMacFileInfo::fileInfo();
        const TavBaseFileInfo& itself = *made;
        return typeid(itself);
    }();
    return typeid(item) == plain;
}

LocalCopySupport& LocalCopySupport::shared() { return neverDestroyed<LocalCopySupport>(); }

Status LocalCopySupport::replace(TavBaseFileInfo& file, TavBaseFileInfo& destination) {
    TavMacFileInfo* const local = asMacFileInfo(&file);
    if (local == nullptr || asMacFileInfo(&destination) == nullptr) {
        return Status::NotSupported;
    }
    const std::string newPath = destination.path();
    if (!FileSystem::current().move(local->path(), newPath, Replace::Yes).isNone()) {
        return Status::Failure;
    }
    local->setPath(newPath);
    destination.refresh();
    return Status::Success;
}

Status LocalCopySupport::syncContents(OpenFileToken& written) {
    LocalOpenFile* const file = LocalOpenFile::stillOpen(&written);
    return file != nullptr ? statusOf(file->file().sync()) : Status::NotSupported;
}

Status LocalCopySupport::outcomeOfClosing(OpenFileToken& closed) {
    const auto* const file = dynamic_cast<const LocalOpenFile*>(&closed);
    return file == nullptr || file->closeFailure().isNone() ? Status::Success : Status::Failure;
}

Status LocalCopySupport::syncFolder(TavBaseFileInfo& folder) {
    return asMacFileInfo(&folder) != nullptr
               ? statusOf(FileSystem::current().syncFolder(folder.path()))
               : Status::NotSupported;
}

void LocalCopySupport::forgetCached(OpenFileToken& token) {
    if (LocalOpenFile* const file = LocalOpenFile::stillOpen(&token)) {
        file->file().forgetCached();
    }
}

std::optional<FileMetadata> LocalCopySupport::metadata(TavBaseFileInfo& file) {
    if (asMacFileInfo(&file) == nullptr) {
        return std::nullopt;
    }
    const std::string path = file.path();
    const Result<FileAttributes> found = FileSystem::current().targetAttributes(path);
    if (!found.ok()) {
        return std::nullopt;
    }
    FileMetadata metadata;
    metadata.permissions = found.value().permissions & ~runsAsOwnerOrGroup;
    const FileKind kind = found.value().kind;
    // Pipes, sockets and devices have none of the user's.
    if ((kind == FileKind::Regular || kind == FileKind::Folder) &&
        !readAttributes(path, metadata.extendedAttributes)) {
        return std::nullopt;
    }
    return metadata;
}

Status LocalCopySupport::setMetadata(TavBaseFileInfo& file, const FileMetadata& metadata) {
    if (asMacFileInfo(&file) == nullptr) {
        return Status::NotSupported;
    }
    FileSystem& files = FileSystem::current();
    const std::string path = file.path();
    SystemError first;
    // Before the permissions, which may take away the right to do it.
    for (const FileMetadata::ExtendedAttribute& attribute : metadata.extendedAttributes) {
        const SystemError error = files.setExtendedAttribute(path, attribute.name, attribute.value);
        if (first.isNone() && !hasNoPlaceForAttribute(error)) {
            first = error;
        }
    }
    if (metadata.permissions) {
        const SystemError error = files.setPermissions(path, *metadata.permissions);
        if (first.isNone() && !hasNoPlaceForPermissions(error)) {
            first = error;
        }
    }
    file.refresh();
    return first.isNone() ? Status::Success : Status::Failure;
}

std::optional<WholeFileRange> LocalCopySupport::nextData(OpenFileToken& reading,
                                                         std::uint64_t offset) {
    LocalOpenFile* const file = LocalOpenFile::stillOpen(&reading);
    if (file == nullptr) {
        return std::nullopt;
    }
    const Result<DataStretch> stretch = file->nextData(offset);
    if (stretch.ok()) {
        return WholeFileRange{stretch.value().begin, stretch.value().end - stretch.value().begin};
    }
    if (stretch.error() == SystemError(ENXIO)) {
        return std::nullopt;
    }
    // Whoever takes bytes for a hole that are none loses them; reading them tells what is wrong.
    constexpr std::uint64_t largest = std::numeric_limits<std::int64_t>::max();
    return offset < largest ? std::optional(WholeFileRange{offset, largest - offset})
                            : std::nullopt;
}

Status LocalCopySupport::setLength(OpenFileToken& writing, std::uint64_t length) {
    LocalOpenFile* const file = LocalOpenFile::stillOpen(&writing);
    return file != nullptr ? statusOf(file->setSize(length)) : Status::NotSupported;
}

std::optional<Status> LocalCopySupport::copyAtOnce(const PlainCopy& copy) {
    if (!isPlainLocalItem(copy.source) || !isPlainLocalItem(copy.destination)) {
        return std::nullopt;
    }
    return SmallCopy(copy, static_cast<TavMacFileInfo&>(copy.source),
                     static_cast<TavMacFileInfo&>(copy.destination))
        .run();
}

std::unique_ptr<CopySeries> LocalCopySupport::beginSeries(std::span<const FileInfoPtr> files,
                                                          TavBaseFileInfo& folder,
                                                          bool ensureUniqueName) {
    // Unique names take the steps, which read for themselves.
    return !ensureUniqueName && isPlainLocalItem(folder)
               ? std::make_unique<LocalCopySeries>(files, static_cast<TavMacFileInfo&>(folder))
               : nullptr;
}

} // namespace tav::internal
