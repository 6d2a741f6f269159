#include "fileinfo/ChunkCopy.hpp"

#include "base/Exception.hpp"
#include "base/Format.hpp"
#include "fileinfo/CopyStatus.hpp"
#include "platform/Localization.hpp"

#include <algorithm>
#include <limits>
#include <utility>

namespace tav::internal {

namespace {

constexpr std::uint64_t largest32 = std::numeric_limits<std::uint32_t>::max();

/// What suits both ends. Chunks of 0 bytes would never come to an end, and a range has 32 bits.
std::uint64_t chunkSizeOf(const OpenCopy& copy) {
    constexpr std::uint64_t usual = 8192;
    const std::uint64_t preferred = copy.source.preferredChunkSize();
    const std::uint64_t both = std::min(preferred, copy.temporaryFile.preferredChunkSize());
    return both == 0 ? usual : std::min(both, largest32);
}

/// The order of the steps, in single precision, is what everybody sees.
float percentOf(std::uint64_t done, std::uint64_t total) {
    return static_cast<float>(done) * 100.0F / static_cast<float>(total);
}

FileRange narrow(WholeFileRange range) { // wraps, on purpose
    return {static_cast<std::uint32_t>(range.location), static_cast<std::uint32_t>(range.length)};
}

/// Whether a file has bytes behind its first ones.
bool goesOnBehind(std::uint64_t size, TavBaseFileInfo& file, OpenFileToken* reading) {
    const std::optional<Data> next = file.fileContentsWithWholeRange({size, 1}, reading);
    return next && !next->empty();
}

} // namespace

void throwCancelled(TavBaseFileInfo& source) {
    throw Exception("File copy canceled",
                    tav::format(localizedString("copying file \"%@\" was canceled"),
                                source.humanFriendlyPath()));
}

ChunkCopy::ChunkCopy(const OpenCopy& copy, const CopyListener& listener, const ChunkRules& rules)
    : copy_(copy), listener_(listener), rules_(rules),
      total_(rules.isWhole ? copy.source.wholeSize() : copy.source.size()),
      chunkSize_(chunkSizeOf(copy)) {}

void ChunkCopy::copy(Status& status) {
    const bool hasHoles = rules_.holesOfSource != nullptr && rules_.holesOfCopy != nullptr;
    std::uint64_t offset = 0;
    while (status == Status::Success && offset != total_) {
        throwIfCancelled(status);
        const WholeFileRange range{offset, std::min(chunkSize_, total_ - offset)};
        status = hasHoles ? copyWithHoles(range) : copyRange(range);
        offset += range.length;
        if (status == Status::Success && (offset != total_ || !rules_.reportsEndLater)) {
            report(offset);
        }
    }
    if (status == Status::Success && hasHoles && written_ != total_) {
        status = endWithHole();
    }
}

void ChunkCopy::compare(OpenFileToken* readingBack, Status& status) {
    for (std::uint64_t offset = 0; status == Status::Success && offset != total_;) {
        throwIfCancelled(status);
        const WholeFileRange range{offset, std::min(chunkSize_, total_ - offset)};
        std::optional<Data> chunk = copy_.source.fileContentsWithWholeRange(range, copy_.reading);
        std::optional<Data> copied =
            copy_.temporaryFile.fileContentsWithWholeRange(range, readingBack);
        if (!chunk || chunk->size() != range.length) {
            status = CopyStatus::chunkNotRead;
        } else if (chunk != copied) {
            status = CopyStatus::notVerified;
        } else {
            copy_.reading->giveBack(std::move(*chunk));
            readingBack->giveBack(std::move(*copied));
        }
        offset += range.length;
    }
    if (status == Status::Success) {
        const bool sourceGoesOn = goesOnBehind(total_, copy_.source, copy_.reading);
        const bool copyGoesOn = goesOnBehind(total_, copy_.temporaryFile, readingBack);
        status = sourceGoesOn || copyGoesOn ? CopyStatus::notVerified : Status::Success;
    }
}

void ChunkCopy::reportEnd() {
    if (total_ != 0) {
        report(total_);
    }
}

void ChunkCopy::throwIfCancelled(Status& status) {
    if (listener_.isCancelled.load(std::memory_order_relaxed)) {
        status = CopyStatus::cancelled;
        throwCancelled(copy_.source);
    }
}

void ChunkCopy::report(std::uint64_t done) {
    if (listener_.delegate != nullptr) {
        listener_.isCancelled.store(
            listener_.delegate->copyingFile(copy_.source, copy_.temporaryFile,
                                            percentOf(done, total_), listener_.userData),
            std::memory_order_relaxed);
    }
}

Status ChunkCopy::copyRange(WholeFileRange range) {
    if (clone(range)) {
        return Status::Success;
    }
    std::optional<Data> chunk = read(range);
    if (!chunk || (rules_.isExact && chunk->size() != range.length)) {
        return CopyStatus::chunkNotRead;
    }
    const Status status = write(*chunk, range);
    copy_.reading->giveBack(std::move(*chunk));
    return status;
}

/// Of a chunk only what is no hole.
Status ChunkCopy::copyWithHoles(WholeFileRange range) {
    const std::uint64_t end = range.location + range.length;
    for (std::uint64_t offset = range.location; offset < end;) {
        if (stretch_.location + stretch_.length <= offset) {
            const std::optional<WholeFileRange> next =
                rules_.holesOfSource->nextData(*copy_.reading, offset);
            // Behind the last one there is nothing up to the end, however often it is asked.
            stretch_ = next && next->location >= offset && next->length != 0
                           ? WholeFileRange{next->location,
                                            std::min(next->length,
                                                     std::numeric_limits<std::uint64_t>::max() -
                                                         next->location)}
                           : WholeFileRange{total_, 1};
        }
        const std::uint64_t begin = std::max(offset, stretch_.location);
        offset = std::min(end, stretch_.location + stretch_.length);
        if (begin >= end) {
            break;
        }
        const Status status = copyRange({begin, offset - begin});
        if (status != Status::Success) {
            return status;
        }
        written_ = offset;
    }
    return Status::Success;
}

/// A source that has become shorter has no hole at its old end: its last byte is looked at.
Status ChunkCopy::endWithHole() {
    const WholeFileRange lastByte{total_ - 1, 1};
    const std::optional<Data> last = read(lastByte);
    if (!last || last->size() != 1) {
        return CopyStatus::chunkNotRead;
    }
    const Status status = rules_.holesOfCopy->setLength(*copy_.writing, total_);
    return status == Status::NotSupported ? write(*last, lastByte) : status;
}

std::optional<Data> ChunkCopy::read(WholeFileRange range) {
    return rules_.isWhole ? copy_.source.fileContentsWithWholeRange(range, copy_.reading)
                          : copy_.source.fileContentsWithRange(narrow(range), copy_.reading);
}

Status ChunkCopy::write(BytesView data, WholeFileRange range) {
    return rules_.isWhole
               ? copy_.temporaryFile.setFileContentsWithWholeRange(data, range, copy_.writing)
               : copy_.temporaryFile.setFileContentsWithRange(data, narrow(range), copy_.writing);
}

bool ChunkCopy::clone(WholeFileRange range) {
    return (!rules_.isWhole || range.location <= largest32) &&
           copy_.source.cloneRange(narrow(range), copy_.reading, &copy_.temporaryFile,
                                   copy_.writing);
}

} // namespace tav::internal
