#include "fileinfo/ItemCopy.hpp"

#include "base/Exception.hpp"
#include "fileinfo/ChunkCopy.hpp"
#include "fileinfo/CleanUp.hpp"
#include "fileinfo/CopyStatus.hpp"
#include "fileinfo/VerboseLog.hpp"

#include <utility>

namespace tav::internal {

namespace {

void logRaised(const Exception& exception) {
    logVerbose("Error copying file: \"%@\"", exception.reason());
}

bool exists(const FileInfoPtr& item) { return item && item->exists(); }

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

ItemCopy::ItemCopy(TavBaseFileInfo& source, FileInfoPtr destination, bool ensureUniqueName,
                   const ProgressDelegate* progress, void* userData)
    : source_(source), destination_(std::move(destination)), ensureUniqueName_(ensureUniqueName),
      progress_(progress != nullptr && progress->copyingFile ? progress : nullptr),
      userData_(userData) {}

Status ItemCopy::run(FileInfoPtr* outNewItem) {
    CleanUp abandon([this] {
        if (isToBeRemoved_) {
            removeQuietly(destination_);
        }
    });
    try {
        copy();
        abandon.dismiss();
    } catch (const Exception& exception) {
        abandon.dismiss();
        logRaised(exception);
        removeQuietly(destination_);
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

void ItemCopy::copy() {
    prepareDestination();
    folder_ = destination_ ? destination_->parentFolder() : nullptr;
    removeLeftover();
    if (!hasRoom()) {
        logVerbose("There is not enough room to copy \"%@\".", source_.humanFriendlyPath());
        status_ = CopyStatus::noRoom;
    } else if (makeTemporaryFile()) {
        transfer();
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
    const std::uint64_t size = source_.size();
    const std::uint64_t kept = folder_ ? folder_->_freeSpaceToKeepOnVolume() : 0;
    return free >= size + kept; // the sum wraps, on purpose
}

bool ItemCopy::makeTemporaryFile() {
    temporaryFile_ =
        folder_ ? folder_->createFile(copyFileName, {}, nullptr, false, progress_, userData_)
                : nullptr;
    if (!exists(temporaryFile_)) {
        status_ = CopyStatus::noTemporaryFile;
        return false;
    }
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

void ItemCopy::transfer() {
    isToBeRemoved_ = false;
    CleanUp discard([this] {
        closeTemporaryFile();
        temporaryFile_->remove();
        closeSource();
    });
    try {
        copyChunks({source_, reading_.get(), *temporaryFile_, writing_.get()},
                   {progress_, userData_, source_._cancelCopy}, status_);
        closeTemporaryFile();
        closeSource();
        putInPlace();
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
    temporaryFile_->setCreationDate(source_.creationDate());
    temporaryFile_->setModificationDate(source_.modificationDate());
    newItem_ = temporaryFile_;
}

void ItemCopy::closeTemporaryFile() { temporaryFile_->closeFile(writing_.get()); }

void ItemCopy::closeSource() { source_.closeFile(reading_.get()); }

} // namespace tav::internal
