// The file that an older item stands for: its path, its reference, and what it leads to.

#include "base/PathString.hpp"
#include "fileinfo/local/AliasTarget.hpp"
#include "fileinfo/local/CachedAttributes.hpp"
#include "fileinfo/local/TavFileInfo.hpp"

#include <cerrno>
#include <utility>

namespace tav {

std::string TavFileInfo::path() {
    if (!itsPath_) {
        return {};
    }
    if (fileRefValid_ && !isLost_) {
        internal::FileNumbers file{itsFileRef_.device, itsFileRef_.number,
                                   itsFileRef_.birthNanoseconds, itsFileRef_.mount};
        const std::optional<std::string> now = internal::pathOfFile(file, *itsPath_);
        isLost_ = !now;
        if (now) {
            itsPath_ = *now;
            itsFileRef_ = internal::referenceOf(file, *now);
        }
    }
    return *itsPath_;
}

std::string TavFileInfo::description() {
    return itsPath_ ? path() : std::string("TavFileInfo has (null) path.");
}

const FileRef* TavFileInfo::fileRef() { return fileRefWithError(nullptr); }

const FileRef* TavFileInfo::fileRefWithError(Status* outError) {
    std::optional<FileAttributes> learned;
    const Status status = takeFileRef(learned);
    if (outError != nullptr) {
        *outError = status;
    }
    return status == Status::Success ? &itsFileRef_ : nullptr;
}

/// Takes the reference if it is not valid, and hands out the attributes that came with it.
Status TavFileInfo::takeFileRef(std::optional<FileAttributes>& learned) {
    if (fileRefValid_) {
        return Status::Success;
    }
    if (!itsPath_) {
        return Status::BadParameter;
    }
    Result<FileAttributes> found = FileSystem::current().attributes(*itsPath_);
    // Going step by step helps at more links on the way than the host follows at a time.
    if (!found.ok() && found.error() != SystemError(ENOENT)) {
        if (const std::optional<std::string> resolved = resolvedPath()) {
            found = FileSystem::current().attributes(*resolved);
            if (found.ok()) {
                itsPath_ = *resolved;
            }
        }
    }
    if (!found.ok()) {
        return Status::Failure;
    }
    itsFileRef_ = internal::referenceOf(internal::numbersOf(found.value()), *itsPath_);
    fileRefValid_ = true;
    isLost_ = false;
    learned = found.value();
    return Status::Success;
}

FileSpec TavFileInfo::fileSpecWithError(Status* outError) {
    const FileRef* const reference = fileRefWithError(outError);
    return reference != nullptr ? fileSpecFromFileRef(*reference) : FileSpec();
}

FileSpec TavFileInfo::fileSpec() { return fileSpecWithError(nullptr); }

std::optional<std::string> TavFileInfo::resolvedPath() { return internal::resolvedPathOf(path()); }

Result<FileAttributes> TavFileInfo::ownAttributes() {
    return FileSystem::current().attributes(path());
}

bool TavFileInfo::exists() { return !hasNoPath() && fileRef() != nullptr; }

bool TavFileInfo::cacheInfo() {
    if (folderAliasValid_) {
        return true;
    }
    std::optional<FileAttributes> learned;
    if (takeFileRef(learned) != Status::Success) {
        return false;
    }
    aliasRef_ = itsFileRef_;
    const Result<FileAttributes> own = learned ? Result(*learned) : ownAttributes();
    if (!own.ok()) {
        return false;
    }
    if (own.value().kind != FileKind::Link) {
        isFolder_ = own.value().kind == FileKind::Folder;
        isAlias_ = false;
    } else {
        Result<internal::AliasTarget> target =
            internal::aliasTargetAt(*itsPath_, FileSystem::current().targetAttributes(*itsPath_));
        if (!target.ok()) {
            return false;
        }
        aliasRef_ = std::move(target.value().reference);
        isFolder_ = target.value().isFolder;
        isAlias_ = true;
    }
    folderAliasValid_ = true;
    return true;
}

bool TavFileInfo::isFolder() { return cacheInfo() && isFolder_; }

bool TavFileInfo::isFile() { return cacheInfo() && !isFolder_; }

bool TavFileInfo::isAlias() { return cacheInfo() && isAlias_; }

TavFileInfoPtr TavFileInfo::aliasTarget() {
    return isAlias() ? withFileRef(&aliasRef_, true) : nullptr;
}

TavFileInfoPtr TavFileInfo::resolvedFileInfo() {
    TavFileInfoPtr target = aliasTarget();
    return target ? target : shared_from_this();
}

std::uint32_t TavFileInfo::resolvedSize() { return resolvedFileInfo()->size(); }

bool TavFileInfo::resolveAlias() {
    if (!isAlias()) {
        return false;
    }
    itsPath_ = pathFromFileRef(aliasRef_);
    itsFileRef_ = aliasRef_;
    fileRefValid_ = true;
    isLost_ = false;
    isAlias_ = false;
    return true;
}

void TavFileInfo::refresh() {
    // The folder and alias flags themselves stay, until they are computed again.
    folderAliasValid_ = false;
    fileRefValid_ = false;
    isLost_ = false;
    attrs_.reset();
}

} // namespace tav
