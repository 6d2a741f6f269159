#include "fileinfo/TavBaseFileInfo.hpp"

#include "base/PathString.hpp"
#include "base/Unicode.hpp"
#include "fileinfo/ItemAllocation.hpp"
#include "fileinfo/VerboseLog.hpp"
#include "foundation/WindowsFilename.hpp"
#include "platform/Localization.hpp"

namespace tav {

struct TavBaseFileInfo::OldState {
    std::optional<Date> creationDate;
    std::optional<Date> modificationDate;
    std::optional<std::uint64_t> fileSize;
};

TavBaseFileInfo::TavBaseFileInfo() = default;
TavBaseFileInfo::~TavBaseFileInfo() = default;

FileInfoPtr TavBaseFileInfo::fileInfoWithPath(std::string_view /*path*/) { return nullptr; }

FileInfoPtr TavBaseFileInfo::fileInfo() { return internal::allocateItem<TavBaseFileInfo>(); }

TavBaseFileInfo::OldState& TavBaseFileInfo::oldState() {
    if (!old_) {
        old_ = std::make_unique<OldState>();
    }
    return *old_;
}

void TavBaseFileInfo::setOldFileSize(std::uint64_t size) { oldState().fileSize = size; }

std::optional<std::uint64_t> TavBaseFileInfo::oldFileSize() {
    return old_ ? old_->fileSize : std::nullopt;
}

void TavBaseFileInfo::setOldModificationDate(std::optional<Date> date) {
    oldState().modificationDate = date;
}

std::optional<Date> TavBaseFileInfo::oldModificationDate() {
    return old_ ? old_->modificationDate : std::nullopt;
}

void TavBaseFileInfo::setOldCreationDate(std::optional<Date> date) {
    oldState().creationDate = date;
}

std::optional<Date> TavBaseFileInfo::oldCreationDate() {
    return old_ ? old_->creationDate : std::nullopt;
}

bool TavBaseFileInfo::supportsModificationDate() { return true; }

bool TavBaseFileInfo::supportsCreationDate() { return true; }

bool TavBaseFileInfo::supportsTimezones() { return true; }

std::optional<std::string> TavBaseFileInfo::relativePathTo(TavBaseFileInfo* /*other*/) {
    return std::nullopt;
}

std::optional<std::string> TavBaseFileInfo::volumeRelativeStandardPath() { return std::nullopt; }

bool TavBaseFileInfo::isVolume() { return false; }

FileInfoPtr TavBaseFileInfo::volume() { return nullptr; }

std::uint64_t TavBaseFileInfo::freeSpaceOnVolume() { return 0; }

std::uint64_t TavBaseFileInfo::_freeSpaceToKeepOnVolume() { return 0; }

std::optional<std::string> TavBaseFileInfo::uuid() { return std::nullopt; }

std::string TavBaseFileInfo::path() { return {}; }

std::string TavBaseFileInfo::standardPath() { return path(); }

std::vector<std::string> TavBaseFileInfo::pathComponents() { return {}; }

std::string TavBaseFileInfo::humanFriendlyPath() { return path(); }

std::string TavBaseFileInfo::humanFriendlyName() { return name(); }

std::string TavBaseFileInfo::name() { return std::string(lastPathComponent(path())); }

std::string TavBaseFileInfo::extension() { return std::string(pathExtension(name())); }

std::string TavBaseFileInfo::nameWithoutExtension() {
    return stringByDeletingPathExtension(name());
}

void TavBaseFileInfo::setName(std::string_view /*name*/) {}

void TavBaseFileInfo::setNameKeepingExtension(std::string_view /*name*/) {}

void TavBaseFileInfo::updateName(std::string_view /*name*/) {}

std::int32_t TavBaseFileInfo::numBytesNeededForPath() {
    return static_cast<std::int32_t>(2 * utf16Length(path()));
}

std::int32_t TavBaseFileInfo::maxPathLength() {
    internal::logVerbose("Subclasses must override maxPathLength.");
    return 0;
}

std::string TavBaseFileInfo::makeValidFilename(std::string_view filename, bool encodeNonASCII) {
    return encodeNonASCII ? windowsValidFilename(filename)
                          : windowsValidFilenameByTranscodingNonASCIIChars(filename);
}

std::string TavBaseFileInfo::description() { return path(); }

bool TavBaseFileInfo::exists() { return false; }

bool TavBaseFileInfo::isFolder() { return false; }

bool TavBaseFileInfo::isFile() { return false; }

bool TavBaseFileInfo::isBundle() { return false; }

bool TavBaseFileInfo::visible() { return true; }

bool TavBaseFileInfo::isLocked() {
    internal::logVerbose("Class does not implement isLocked.");
    return false;
}

void TavBaseFileInfo::setLocked(bool /*locked*/) {
    internal::logVerbose("Class does not implement setLocked:");
}

void TavBaseFileInfo::setHideExtension(bool /*hide*/) {
    internal::logVerbose("Class does not implement setHideExtension:");
}

bool TavBaseFileInfo::hasDRM() { return false; }

bool TavBaseFileInfo::isEqualTo(TavBaseFileInfo* /*other*/) { return false; }

bool TavBaseFileInfo::contains(TavBaseFileInfo* /*other*/) { return false; }

std::string TavBaseFileInfo::kindString() { return localizedString("unknown"); }

std::optional<Value> TavBaseFileInfo::metadata() { return std::nullopt; }

void TavBaseFileInfo::setMetadata(const Value& /*metadata*/) {}

std::uint64_t TavBaseFileInfo::size() {
    std::uint64_t sum = 0;
    if (isFolder()) {
        for (const FileInfoPtr& child : folderContents()) {
            sum += child->size();
        }
    }
    return sum;
}

std::uint32_t TavBaseFileInfo::resolvedSize() {
    return static_cast<std::uint32_t>(size()); // the high half goes, on purpose
}

std::optional<Date> TavBaseFileInfo::modificationDate() { return std::nullopt; }

std::optional<Date> TavBaseFileInfo::creationDate() { return std::nullopt; }

void TavBaseFileInfo::setModificationDate(std::optional<Date> /*date*/) {}

void TavBaseFileInfo::setCreationDate(std::optional<Date> /*date*/) {}

FileInfoPtr TavBaseFileInfo::resolvedFileInfo() { return shared_from_this(); }

bool TavBaseFileInfo::resolveAlias() { return false; }

FileInfoPtr TavBaseFileInfo::aliasTarget() { return nullptr; }

void TavBaseFileInfo::refresh() {}

FileInfoPtr TavBaseFileInfo::parentFolder() { return nullptr; }

FileInfoPtr TavBaseFileInfo::tempFolder() { return nullptr; }

bool TavBaseFileInfo::remove() { return false; }

Status TavBaseFileInfo::moveTo(TavBaseFileInfo* /*destination*/) { return Status::NotSupported; }

void TavBaseFileInfo::cancelCopy() { _cancelCopy.store(true, std::memory_order_relaxed); }

bool TavBaseFileInfo::deviceControlsCopy() { return _deviceControlsCopy; }

void TavBaseFileInfo::setDeviceControlsCopy(bool controls) { _deviceControlsCopy = controls; }

std::uint64_t TavBaseFileInfo::preferredChunkSize() { return 8192; }

std::optional<Value::Dictionary> TavBaseFileInfo::savedInfo() { return std::nullopt; }

std::optional<Value::Dictionary> TavBaseFileInfo::syncCriteria() { return std::nullopt; }

bool TavBaseFileInfo::savedFileInfoIsSimilarToSavedInfo(const Value::Dictionary* /*first*/,
                                                        const Value::Dictionary* /*second*/) {
    return false;
}

std::optional<std::string> TavBaseFileInfo::udidCreating(bool /*create*/) { return std::nullopt; }

std::optional<Data> TavBaseFileInfo::zip() { return std::nullopt; }

std::optional<Data> TavBaseFileInfo::ditto() { return std::nullopt; }

FileInfoPtr TavBaseFileInfo::zipToFolder(TavBaseFileInfo* /*folder*/) { return nullptr; }

std::optional<FileInfoArray> TavBaseFileInfo::unzip() { return std::nullopt; }

} // namespace tav
