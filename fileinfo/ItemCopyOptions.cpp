// What a copy does beyond the plain one.

#include "fileinfo/ChunkCopy.hpp"
#include "fileinfo/CopyStatus.hpp"
#include "fileinfo/ItemCopy.hpp"

namespace tav::internal {

/// Whether all that was asked for can be done, as far as that can be told; nothing is changed yet.
bool ItemCopy::canBegin() {
    support_ = destination_ ? destination_->copySupport() : nullptr;
    if (options_.isDurable && support_ == nullptr) {
        status_ = Status::NotSupported;
        return false;
    }
    CopySupport* const own = source_.copySupport();
    const bool carries = options_.carriesPermissions || options_.carriesExtendedAttributes;
    if (!carries || own == nullptr || support_ == nullptr) {
        return true;
    }
    metadata_ = own->metadata(source_);
    if (!metadata_) {
        status_ = CopyStatus::chunkNotRead;
        return false;
    }
    if (!options_.carriesPermissions) {
        metadata_->permissions.reset();
    }
    if (!options_.carriesExtendedAttributes) {
        metadata_->extendedAttributes.clear();
    }
    return true;
}

/// Without touching what stands there, and without a placeholder: a name that is chosen here may be
/// taken when the file is whole, and another one is chosen then.
bool ItemCopy::chooseDestination() {
    if (exists(destination_) && destination_->isFolder()) {
        const FileInfoPtr folder = destination_;
        const std::string name = source_.name();
        destination_ = folder->find(ensureUniqueName_ ? folder->uniqueFilename(name) : name);
        uniqueNamesIn_ = ensureUniqueName_ ? folder : nullptr;
    }
    if (!exists(destination_)) {
        return true;
    }
    if (destination_->isFolder()) {
        status_ = CopyStatus::notReplaced;
    } else if (support_ == nullptr) {
        status_ = Status::NotSupported;
    }
    return status_ == Status::Success;
}

/// Also where the back-end gives a new file no permissions, or the file was there before.
void ItemCopy::narrowPermissions() {
    if (metadata_ && metadata_->permissions) {
        FileMetadata narrowed;
        narrowed.permissions = ownersAlone;
        static_cast<void>(support_->setMetadata(*temporaryFile_, narrowed));
    }
}

/// The order is what counts: all that belongs to the file is on the medium and is looked at before
/// the file takes its name, and the end is told when that is on the medium, too.
void ItemCopy::finish(ChunkCopy& chunks) {
    if (status_ == Status::Success && metadata_) {
        giveDates(); // once the file is read-only, one of them cannot be set any more
        const Status given = support_->setMetadata(*temporaryFile_, *metadata_);
        status_ = given == Status::NotSupported ? Status::Success : given;
    }
    if (status_ == Status::Success && options_.isDurable) {
        status_ = sync();
    }
    closeTemporaryFile();
    if (status_ == Status::Success && support_ != nullptr) {
        status_ = support_->outcomeOfClosing(*writing_);
    }
    if (status_ == Status::Success && options_.verifies) {
        verify(chunks);
    }
    closeSource();
    if (status_ != Status::Success && isAllOrNothing_) {
        temporaryFile_->remove();
        return;
    }
    giveDates(); // closing may have set another
    const Status placed = placeWhole();
    if (placed != Status::Success) {
        if (status_ == Status::Success) {
            status_ = placed;
        }
        temporaryFile_->remove();
        return;
    }
    newItem_ = temporaryFile_;
    if (options_.isDurable && (!folder_ || support_->syncFolder(*folder_) != Status::Success) &&
        status_ == Status::Success) {
        status_ = CopyStatus::notDurable;
    }
    if (status_ == Status::Success && (options_.isDurable || options_.verifies)) {
        chunks.reportEnd();
    }
}

Status ItemCopy::sync() {
    giveDates();
    return support_->syncContents(*writing_) == Status::Success ? Status::Success
                                                                : CopyStatus::notDurable;
}

void ItemCopy::verify(ChunkCopy& chunks) {
    const std::shared_ptr<OpenFileToken> readingBack = temporaryFile_->openFileForReading();
    if (!readingBack) {
        status_ = CopyStatus::notVerified;
        return;
    }
    if (options_.isDurable && support_ != nullptr) {
        support_->forgetCached(*readingBack);
    }
    chunks.compare(readingBack.get(), status_);
    temporaryFile_->closeFile(readingBack.get());
}

Status ItemCopy::placeWhole() {
    if (uniqueNamesIn_) {
        return moveToFreeName();
    }
    if (options_.keepsDestination && support_ != nullptr) {
        const Status replaced = support_->replace(*temporaryFile_, *destination_);
        if (replaced != Status::NotSupported) {
            return replaced == Status::Success ? replaced : CopyStatus::notReplaced;
        }
        if (exists(destination_)) {
            return Status::NotSupported;
        }
    }
    return temporaryFile_->moveTo(destination_.get()) == Status::Success ? Status::Success
                                                                         : CopyStatus::notReplaced;
}

/// A move never takes the place of a file, so a name that is taken by now is left to who has it.
Status ItemCopy::moveToFreeName() {
    constexpr int tries = 100;
    for (int n = 0; n < tries && destination_; ++n) {
        if (temporaryFile_->moveTo(destination_.get()) == Status::Success) {
            return Status::Success;
        }
        destination_->refresh();
        if (!destination_->exists()) {
            break; // that was not why
        }
        destination_ = uniqueNamesIn_->find(uniqueNamesIn_->uniqueFilename(source_.name()));
    }
    return CopyStatus::notReplaced;
}

} // namespace tav::internal
