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

/// What suits both ends. None would never come to an end, and a range has 32 bits.
std::uint64_t chunkSize(const OpenCopy& copy) {
    constexpr std::uint64_t usual = 8192;
    constexpr std::uint64_t largest = std::numeric_limits<std::uint32_t>::max();
    const std::uint64_t preferred = copy.source.preferredChunkSize();
    const std::uint64_t both = std::min(preferred, copy.temporaryFile.preferredChunkSize());
    return both == 0 ? usual : std::min(both, largest);
}

void throwIfCancelled(const OpenCopy& copy, const CopyListener& listener, Status& status) {
    if (listener.isCancelled.load(std::memory_order_relaxed)) {
        status = CopyStatus::cancelled;
        throw Exception("File copy canceled",
                        tav::format(localizedString("copying file \"%@\" was canceled"),
                                    copy.source.humanFriendlyPath()));
    }
}

Status copyRange(const OpenCopy& copy, FileRange range) {
    if (copy.source.cloneRange(range, copy.reading, &copy.temporaryFile, copy.writing)) {
        return Status::Success;
    }
    std::optional<Data> chunk = copy.source.fileContentsWithRange(range, copy.reading);
    if (!chunk) {
        return CopyStatus::chunkNotRead;
    }
    const Status status = copy.temporaryFile.setFileContentsWithRange(*chunk, range, copy.writing);
    copy.reading->giveBack(std::move(*chunk));
    return status;
}

/// The order of the steps, in single precision, is what everybody sees.
float percentOf(std::uint64_t done, std::uint64_t total) {
    return static_cast<float>(done) * 100.0F / static_cast<float>(total);
}

} // namespace

void copyChunks(const OpenCopy& copy, const CopyListener& listener, Status& status) {
    const std::uint64_t total = copy.source.size();
    const std::uint64_t largest = chunkSize(copy);
    std::uint64_t offset = 0;
    while (status == Status::Success && offset != total) {
        throwIfCancelled(copy, listener, status);
        const std::uint64_t length = std::min(largest, total - offset);
        status = copyRange(copy, {static_cast<std::uint32_t>(offset), // wraps, on purpose
                                  static_cast<std::uint32_t>(length)});
        offset += length;
        if (status == Status::Success && listener.delegate != nullptr) {
            listener.isCancelled.store(
                listener.delegate->copyingFile(copy.source, copy.temporaryFile,
                                               percentOf(offset, total), listener.userData),
                std::memory_order_relaxed);
        }
    }
}

} // namespace tav::internal
