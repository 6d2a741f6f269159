#pragma once

#include "base/Data.hpp"
#include "base/Result.hpp"

#include <cstddef>
#include <cstdint>
#include <span>

namespace tav {

struct FileAttributes;

/// How a file is opened. Only regular files can be opened: EISDIR for a folder, EINVAL for anything
/// else; opening never waits (for the other end of a pipe, say). A path that leads through a link
/// to where nothing stands makes the file there.
struct OpenOptions {
    bool write = false;     ///< Not only for reading. Reading is always possible.
    bool create = false;    ///< Make the file when it is missing; only together with `write`.
    bool mustBeNew = false; ///< With `create`: EEXIST when anything stands there, a link included.
    bool append = false;    ///< Every write goes to the end as it is at that moment, in one step;
                            ///< only together with `write`.
    std::uint32_t permissions = 0666; ///< Of a file that is made, less the process's mask.

    /// Whether each option comes with the one that it needs; EINVAL otherwise.
    [[nodiscard]] constexpr bool areConsistent() const {
        return (write || (!create && !append)) && (create || !mustBeNew);
    }
};

/// A regular file held open, with a position for reading and writing that begins at 0. It follows
/// the file through a move or removal and is closed with the object. Nothing raises; failures are
/// the host's error numbers: EBADF for a change where it was opened only to read, EINVAL for an
/// offset and EFBIG for a size of 2^63 or more. An interrupted call is taken up again. One thread
/// at a time.
class OpenFile {
  public:
    OpenFile() = default;
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;
    virtual ~OpenFile() = default;

    virtual Result<FileAttributes> attributes() = 0;

    /// Reads at the position and moves it; fewer bytes than asked come only at the end of the file.
    /// After a failure the position is unknown.
    virtual Result<std::size_t> read(std::span<std::byte> buffer) = 0;
    /// Reads at an offset and leaves the position.
    virtual Result<std::size_t> readAt(std::uint64_t offset, std::span<std::byte> buffer) = 0;

    /// One write of the host at the position (at the end for a file opened to append): how many
    /// bytes it took, which may be fewer than there were, when the disk is full say. The position
    /// is behind them then. Between the old end and a position beyond it come zeros.
    virtual Result<std::size_t> writeOnce(BytesView bytes) = 0;
    /// Writes all, in as many steps as it takes. After a failure an unknown part is written.
    virtual SystemError write(BytesView bytes) = 0;

    /// Where the next read happens, and the next write unless it appends.
    virtual Result<std::uint64_t> position() = 0;
    /// May lie beyond the end.
    virtual SystemError setPosition(std::uint64_t offset) = 0;
    /// Cuts the file, or grows it by zeros. The position stays.
    virtual SystemError setSize(std::uint64_t size) = 0;
    /// Waits until the content is on the medium.
    virtual SystemError sync() = 0;
    /// Closes now and answers what the host still had to say about earlier writes; afterwards
    /// every call answers EBADF.
    virtual SystemError close() = 0;
};

} // namespace tav
