#pragma once

#include "base/Data.hpp"
#include "base/Date.hpp"
#include "base/Result.hpp"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

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

/// A stretch of a file's bytes, the end not included.
struct DataStretch {
    std::uint64_t begin = 0;
    std::uint64_t end = 0;
    friend bool operator==(const DataStretch&, const DataStretch&) = default;
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
    /// Whether a second thread may call `readAt` at any time.
    [[nodiscard]] virtual bool canBeReadBeside() const { return false; }

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
    /// The next stretch at or behind an offset that is not a hole; the position stays. ENXIO when
    /// there is none up to the end. Where the file system keeps no holes, or does not tell them,
    /// everything is data. A hole reads as zeros.
    virtual Result<DataStretch> nextData(std::uint64_t offset) = 0;
    /// Lets a range of this file share the blocks of one of the other, which reads the same bytes
    /// and costs no time. EOPNOTSUPP, EXDEV or EINVAL where that cannot be: another file system or
    /// one without shared blocks, or a range that does not begin and end with a block (the end of
    /// the other file serves, too). Then nothing is changed. The position stays.
    virtual SystemError cloneRange(OpenFile& from, std::uint64_t fromOffset, std::uint64_t length,
                                   std::uint64_t offset) = 0;
    /// Tells that a range behind the end is written next. Some file systems write it faster then,
    /// since they find its place on the medium at once and not block by block. A hint: nothing that
    /// can be read changes, and what is not written after all may keep its place until the file is
    /// cut.
    virtual void expectWrite(std::uint64_t /*offset*/, std::uint64_t /*length*/) {}
    /// Lets the host forget what it holds of the content in memory, so that the next read asks the
    /// medium. Only what is synced goes. A hint: some of it may stay.
    virtual void forgetCached() = 0;
    /// The number by which the kernel knows the open file, as long as it is open; -1 for none.
    [[nodiscard]] virtual int descriptor() const = 0;
    /// As the three of `FileSystem` do it by a path, also once the file has no path any more. Dates
    /// and extended attributes need not be opened for writing.
    virtual SystemError setModificationDate(Date date) = 0;
    virtual Result<Data> extendedAttribute(std::string_view name) = 0;
    virtual SystemError setExtendedAttribute(std::string_view name, BytesView value) = 0;
    /// Waits until the content is on the medium.
    virtual SystemError sync() = 0;
    /// Closes now and answers what the host still had to say about earlier writes; afterwards
    /// every call answers EBADF.
    virtual SystemError close() = 0;
};

} // namespace tav
