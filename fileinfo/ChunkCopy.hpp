#pragma once

#include "fileinfo/TavBaseFileInfo.hpp"

#include <atomic>
#include <cstdint>
#include <optional>

namespace tav::internal {

/// The two ends of a copy, open. All is lent.
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

/// How chunks are copied; all off is the plain way.
struct ChunkRules {
    bool isWhole = false; ///< Size and places have 64 bits.
    bool isExact = false; ///< A chunk of another length than asked for was not read.
    /// The last chunk is not reported, but by `reportEnd`.
    bool reportsEndLater = false;
    /// Both, or holes are read and written as zeros.
    CopySupport* holesOfSource = nullptr;
    CopySupport* holesOfCopy = nullptr;
};

/// How a copy that was asked to stop ends: throws "File copy canceled", with the file that was
/// copied in the user's words.
[[noreturn]] void throwCancelled(TavBaseFileInfo& source);

/// The content of a copy, chunk by chunk, of which no more than two are in memory; local files are
/// read four more ahead.
///
/// A chunk counts as copied as a whole, also when the source had fewer bytes for it, unless the
/// rules say otherwise. Where places have 32 bits, those of a back-end whose size is beyond them
/// begin at 0 again.
class ChunkCopy {
  public:
    /// Asks the source for its size, and both for their chunks.
    ChunkCopy(const OpenCopy& copy, const CopyListener& listener, const ChunkRules& rules);

    // The status is 0 before; it becomes `chunkNotRead`, what a write answered or `notVerified`, or
    // `cancelled`, with which "File copy canceled" is thrown, when the flag is set before a chunk.

    void copy(Status& status);
    /// Reads both again, also behind the end: `notVerified` unless they are the same.
    void compare(OpenFileToken* readingBack, Status& status);
    /// The report of the last chunk; none of an empty file.
    void reportEnd();

  private:
    void throwIfCancelled(Status& status);
    void report(std::uint64_t done);
    Status copyRange(WholeFileRange range);
    Status copyWithHoles(WholeFileRange range);
    Status endWithHole();
    std::optional<Data> read(WholeFileRange range);
    Status write(BytesView data, WholeFileRange range);
    bool clone(WholeFileRange range);

    OpenCopy copy_;
    CopyListener listener_;
    ChunkRules rules_;
    std::uint64_t total_;
    std::uint64_t chunkSize_;
    /// The last stretch that the source told to be no hole.
    WholeFileRange stretch_;
    std::uint64_t written_ = 0; ///< Behind the last byte that is no hole.
};

} // namespace tav::internal
