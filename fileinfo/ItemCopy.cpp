#include "fileinfo/ItemCopy.hpp"

#include "base/Exception.hpp"
#include "fileinfo/ChunkCopy.hpp"
#include "fileinfo/CleanUp.hpp"
#include "fileinfo/CopyStatus.hpp"
#include "fileinfo/VerboseLog.hpp"
#include "foundation/Identifiers.hpp"

#include <utility>

namespace tav::internal {

namespace {

/// A second failure tells nobody more.
void removeQuietly(const FileInfoPtr& item) {
    try {
        if (item) {
            item->remove();
        }
    } catch (const Exception&) {
    }
}

} // namespace

Status ItemCopy::copy(TavBaseFileInfo& source, TavBaseFileInfo* destination, bool ensureUniqueName,
                      const ProgressDelegate* progress, void* userData, FileInfoPtr* outNewItem,
                      const CopyOptions& options) {
    source._cancelCopy.store(false, std::memory_order_relaxed);
    if (!source.exists()) {
        return CopyStatus::sourceMissing;
    }
    if (!source.isFile()) {
        return CopyStatus::sourceIsNoFile;
    }
    const bool destinationControls = destination != nullptr && destination->deviceControlsCopy();
    const bool sourceControls = source.deviceControlsCopy();
    if (destinationControls && sourceControls) {
        throw Exception("TavBaseFileInfo",
                        "File info objects are not yet able to perform this sort of copy.");
    }
    if (destinationControls) {
        return options == CopyOptions() ? destination->copyFromFile(&source, ensureUniqueName,
                                                                    progress, userData, outNewItem)
                                        : Status::NotSupported; // who drives it knows of no options
    }
    if (sourceControls) {
        throw Exception("TavBaseFileInfo",
                        "Subclass of TavBaseFileInfo must override this method to perform the "
                        "copy.");
    }
    // Whoever hears of the copy may let go of both.
    const FileInfoPtr kept = source.shared_from_this();
    const FileInfoPtr target = destination != nullptr ? destination->shared_from_this() : nullptr;
    const bool isPlain = destination != nullptr && options == CopyOptions();
    if (CopySupport* const support = isPlain ? source.copySupport() : nullptr) {
        const std::optional<Status> status =
            support->copyAtOnce({source, *destination, ensureUniqueName, progress, userData,
                                 source._cancelCopy, outNewItem});
        if (status) {
            return *status;
        }
    }
    return ItemCopy(source, target, ensureUniqueName, progress, userData, options).run(outNewItem);
}

ItemCopy::ItemCopy(TavBaseFileInfo& source, FileInfoPtr destination, bool ensureUniqueName,
                   const ProgressDelegate* progress, void* userData, const CopyOptions& options)
    : source_(source), destination_(std::move(destination)), ensureUniqueName_(ensureUniqueName),
      progress_(progress != nullptr && progress->copyingFile ? progress : nullptr),
      userData_(userData), options_(options), hasOptions_(options != CopyOptions()),
      isAllOrNothing_(options.keepsDestination || options.verifies) {}

Status ItemCopy::run(FileInfoPtr* outNewItem) {
    CleanUp abandoned([this] {
        if (isToBeRemoved_) {
            abandon();
        }
    });
    try {
        copy();
        abandoned.dismiss();
    } catch (const Exception& exception) {
        abandoned.dismiss();
        logRaised(exception);
        abandon();
        if (status_ == Status::Success) {
            status_ = CopyStatus::raised;
        }
        return status_;
    }
    if (outNewItem != nullptr) {
        *outNewItem = newItem_ ? newItem_ : destination_;
    }
    return status_;
}

/// Takes away what an exception leaves that came from outside the chunks.
void ItemCopy::abandon() {
    if (isAllOrNothing_ && !newItem_) {
        removeQuietly(temporaryFile_);
    }
    if (!options_.keepsDestination) {
        removeQuietly(destination_);
    }
}

void ItemCopy::copy() {
    if (hasOptions_ && !canBegin()) {
        return;
    }
    if (!options_.keepsDestination) {
        prepareDestination();
    } else if (!chooseDestination()) {
        return;
    }
    folder_ = destination_ ? destination_->parentFolder() : nullptr;
    if (!options_.keepsDestination) {
        removeLeftover();
    }
    isToBeRemoved_ = true;
    if (!hasRoom()) {
        logVerbose("There is not enough room to copy \"%@\".", source_.humanFriendlyPath());
        status_ = CopyStatus::noRoom;
    } else if (makeTemporaryFile() && openFiles()) {
        transfer();
    } else if (isAllOrNothing_ && temporaryFile_) {
        if (reading_) {
            closeSource();
        }
        temporaryFile_->remove();
    }
}

/// A new file's final name is taken by an empty one for a moment, so that the folder chooses it.
void ItemCopy::prepareDestination() {
    if (exists(destination_)) {
        if (destination_->isFolder()) {
            destination_ = destination_->createFile(source_.name(), {}, nullptr, ensureUniqueName_,
                                                    progress_, userData_);
        }
        if (destination_) {
            destination_->remove();
        }
    }
    isToBeRemoved_ = true; // it is the caller's own folder no more
}

void ItemCopy::removeLeftover() {
    const FileInfoPtr leftover = folder_ ? folder_->find(copyFileName) : nullptr;
    if (exists(leftover) && !leftover->remove()) {
        logVerbose("Couldn't remove the temporary file \"%@\".", leftover->humanFriendlyPath());
    }
}

bool ItemCopy::hasRoom() {
    const std::uint64_t free = destination_ ? destination_->freeSpaceOnVolume() : 0;
    const std::uint64_t size = options_.isWhole ? source_.wholeSize() : source_.size();
    const std::uint64_t kept = folder_ ? folder_->_freeSpaceToKeepOnVolume() : 0;
    const std::uint64_t needed = size + kept; // wraps, on purpose
    return free >= needed && free - needed >= options_.freeSpaceFloor;
}

bool ItemCopy::makeTemporaryFile() {
    // A name that no other copy has, and should a file of that name be there, it is not taken.
    temporaryFile_ = options_.keepsDestination
                         ? makeFile(".QuillboxCopy-" + stringWithNewUUID() + ".tmp", true)
                         : makeFile(copyFileName, false);
    if (!exists(temporaryFile_)) {
        status_ = CopyStatus::noTemporaryFile;
        return false;
    }
    narrowPermissions();
    return true;
}

bool ItemCopy::openFiles() {
    reading_ = source_.openFileForReading();
    if (!reading_) {
        status_ = CopyStatus::sourceNotOpened;
        return false;
    }
    writing_ = temporaryFile_->openFileForWriting();
    if (!writing_) {
        status_ = CopyStatus::temporaryFileNotOpened;
        return false;
    }
    return true;
}

/// An empty one. Where permissions are carried it is its owner's alone from its first moment: who
/// once has it open keeps it, whatever it may be allowed to whom later.
FileInfoPtr ItemCopy::makeFile(std::string_view name, bool ensureUniqueName) {
    Value::Dictionary attributes;
    const bool isPrivate = metadata_ && metadata_->permissions;
    if (isPrivate) {
        attributes.set("NSFilePosixPermissions", ownersAlone);
    }
    return folder_ ? folder_->createFile(name, {}, isPrivate ? &attributes : nullptr,
                                         ensureUniqueName, progress_, userData_)
                   : nullptr;
}

void ItemCopy::transfer() {
    isToBeRemoved_ = false;
    CleanUp discard([this] {
        closeTemporaryFile();
        if (!hasOptions_ || !newItem_) {
            temporaryFile_->remove();
        }
        closeSource();
    });
    try {
        ChunkRules rules;
        rules.isWhole = options_.isWhole;
        rules.isExact = hasOptions_;
        rules.reportsEndLater = options_.isDurable || options_.verifies;
        if (options_.carriesHoles) {
            rules.holesOfSource = source_.copySupport();
            rules.holesOfCopy = support_;
        }
        ChunkCopy chunks({source_, reading_.get(), *temporaryFile_, writing_.get()},
                         {progress_, userData_, source_._cancelCopy}, rules);
        chunks.copy(status_);
        if (hasOptions_) {
            finish(chunks);
        } else {
            closeTemporaryFile();
            closeSource();
            putInPlace();
        }
        discard.dismiss();
    } catch (const Exception& exception) {
        logRaised(exception);
        discard.run();
        if (status_ == Status::Success) {
            status_ = CopyStatus::raised;
        }
    }
}

/// Whatever the status is: a partial file is kept on purpose. That the destination may still stand
/// in the way is not looked at either; the copy stays under its temporary name then.
void ItemCopy::putInPlace() {
    static_cast<void>(temporaryFile_->moveTo(destination_.get()));
    giveDates();
    newItem_ = temporaryFile_;
}

void ItemCopy::giveDates() {
    temporaryFile_->setCreationDate(source_.creationDate());
    temporaryFile_->setModificationDate(source_.modificationDate());
}

void ItemCopy::closeTemporaryFile() { temporaryFile_->closeFile(writing_.get()); }

void ItemCopy::closeSource() { source_.closeFile(reading_.get()); }

} // namespace tav::internal
