#pragma once

#include "base/Data.hpp"
#include "base/Result.hpp"
#include "platform/OpenFile.hpp"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <utility>

namespace tav {

/// An open file with a position, closed with the object. Nothing here raises: failures are the
/// host's error numbers. After `closeFile` every operation fails with EBADF. One thread at a time.
class FileHandle {
  public:
    /// The most that `readFileIntoMutableData` reads, in bytes.
    static constexpr std::uint64_t largestRead = 1'000'000'000;

    /// Opens for reading and writing and makes a missing file with the permissions 0700, less the
    /// process's mask. A file that is there keeps its content; the position is its beginning. Null
    /// when it cannot be opened: only regular files can, through links, and nothing is waited for.
    [[nodiscard]] static std::unique_ptr<FileHandle>
    fileHandleOpeningOrCreatingAtPath(std::string_view path);

    /// Takes over an open file, however it was opened. Null reads as a file that is closed.
    explicit FileHandle(std::unique_ptr<OpenFile> file) : file_(std::move(file)) {}

    /// Writes at the position with one write of the host: 0, or the error number. EIO when the host
    /// took fewer bytes than there were, which it does when the disk is full; they stay written.
    [[nodiscard]] int writeBuffer(BytesView bytes);

    /// Reads at the position: 0 when the buffer was filled, otherwise EIO, whatever the reason.
    /// What did come is in the buffer then.
    [[nodiscard]] int readIntoBuffer(std::span<std::byte> buffer);

    /// The file from its beginning on, at most `largestRead` bytes of it; the position is behind
    /// them. Nothing when its size cannot be told, when fewer bytes come than that, or when they do
    /// not fit into memory. An empty file is an empty buffer.
    [[nodiscard]] std::optional<Data> readFileIntoMutableData();

    /// 0 when it cannot be told.
    [[nodiscard]] std::uint64_t fileSize();

    /// Where the next read or write happens.
    Result<std::uint64_t> offsetInFile();
    SystemError seekToFileOffset(std::uint64_t offset);
    /// Answers the new position, which is the size.
    Result<std::uint64_t> seekToEndOfFile();

    /// At the position, at most so many bytes; fewer come only at the end of the file. ENOMEM when
    /// they do not fit into memory.
    Result<Data> readDataOfLength(std::size_t length);
    /// Writes all of it at the position. After a failure an unknown part is written.
    SystemError writeData(BytesView bytes);

    /// Cuts the file, or grows it by zeros, and moves the position there.
    SystemError truncateFileAtOffset(std::uint64_t offset);
    /// Waits until the content is on the medium.
    SystemError synchronizeFile();
    /// Closes now and answers what the host still had to say about earlier writes. Once closed,
    /// closing again is no failure.
    SystemError closeFile();

  private:
    std::unique_ptr<OpenFile> file_;
};

namespace internal {
/// The first bytes of a file, as many as it has but at most `maximumSize`.
std::optional<Data> readFromStart(OpenFile& file, std::uint64_t maximumSize);
} // namespace internal

} // namespace tav
