#pragma once

#include "fileinfo/TavBaseFileInfo.hpp"

#include <atomic>
#include <cstdint>
#include <memory>

namespace tav::internal {

/// The two ends of a copy, open. The items are lent.
struct OpenCopy {
    TavBaseFileInfo& source;
    OpenFileToken* reading;
    TavBaseFileInfo& temporaryFile;
    OpenFileToken* writing;
};

/// Who hears of a copy; a null delegate is none. The flag is what asks the copy to stop: set from
/// any thread, and overwritten by each answer of the delegate.
struct CopyListener {
    const ProgressDelegate* delegate;
    void* userData;
    std::atomic<bool>& isCancelled;
};

/// Copies the content, one chunk at a time, no more than one in memory. The status is 0 before; it
/// becomes `chunkNotRead`, what a write answered, or `cancelled`, with which "File copy canceled"
/// is thrown, when the flag is set before a chunk.
///
/// A chunk counts as copied as a whole, also when the source had fewer bytes for it. Places are
/// told in 32 bits: those of a back-end whose size is beyond them begin at 0 again.
void copyChunks(const OpenCopy& copy, const CopyListener& listener, Status& status);

} // namespace tav::internal
