#include "platform/linux/LinuxOpenFile.hpp"

#include "platform/linux/FileCalls.hpp"
#include "platform/linux/LinuxAttributes.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <limits>

#include <fcntl.h>
#include <linux/fs.h>
#include <linux/magic.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

namespace tav {

// The kernel itself answers EBADF for the number of a closed descriptor; a transfer of nothing does
// not reach it.

namespace {

constexpr auto largestOffset = static_cast<std::uint64_t>(std::numeric_limits<::off_t>::max());

/// Ext4 takes a quarter less time to write where the blocks are there before (Linux 6.18). File
/// systems that copy on write gain nothing, and those in memory would fill the range with zeros.
bool gainsByBlocksBefore(const Descriptor& file) {
    struct ::statfs volume {};
    return errorOf([&] { return ::fstatfs(file.number(), &volume); }).isNone() &&
           volume.f_type == EXT4_SUPER_MAGIC;
}

} // namespace

Result<FileAttributes> LinuxOpenFile::attributes() {
    return attributesAt(file_.number(), "", AT_EMPTY_PATH);
}

Result<std::size_t> LinuxOpenFile::read(std::span<std::byte> buffer) {
    return file_.isOpen() ? readFully(file_, buffer) : SystemError(EBADF);
}

Result<std::size_t> LinuxOpenFile::readAt(std::uint64_t offset, std::span<std::byte> buffer) {
    if (!file_.isOpen()) {
        return SystemError(EBADF);
    }
    if (offset > largestOffset) {
        return SystemError(EINVAL);
    }
    // The kernel refuses to look for bytes beyond the largest offset, where there are none.
    const auto size =
        static_cast<std::size_t>(std::min<std::uint64_t>(buffer.size(), largestOffset - offset));
    return transferFully(size, [&](std::size_t done, std::size_t remaining) {
        return ::pread(file_.number(), buffer.data() + done, remaining,
                       static_cast<::off_t>(offset + done));
    });
}

Result<std::size_t> LinuxOpenFile::writeOnce(BytesView bytes) {
    if (!canWrite()) {
        return SystemError(EBADF);
    }
    const ::ssize_t written =
        retryInterrupted([&] { return ::write(file_.number(), bytes.data(), bytes.size()); });
    return written < 0 ? Result<std::size_t>(SystemError(errno))
                       : Result(static_cast<std::size_t>(written));
}

SystemError LinuxOpenFile::write(BytesView bytes) {
    return canWrite() ? writeFully(file_, bytes) : SystemError(EBADF);
}

Result<std::uint64_t> LinuxOpenFile::position() {
    const ::off_t offset = ::lseek(file_.number(), 0, SEEK_CUR);
    return offset < 0 ? Result<std::uint64_t>(SystemError(errno))
                      : Result(static_cast<std::uint64_t>(offset));
}

SystemError LinuxOpenFile::setPosition(std::uint64_t offset) {
    if (!file_.isOpen()) {
        return SystemError(EBADF);
    }
    if (offset > largestOffset) {
        return SystemError(EINVAL);
    }
    return ::lseek(file_.number(), static_cast<::off_t>(offset), SEEK_SET) < 0 ? SystemError(errno)
                                                                               : SystemError();
}

SystemError LinuxOpenFile::setSize(std::uint64_t size) {
    if (!canWrite()) {
        return SystemError(EBADF); // the kernel has EINVAL for this
    }
    if (size > largestOffset) {
        return SystemError(EFBIG);
    }
    const int answer =
        retryInterrupted([&] { return ::ftruncate(file_.number(), static_cast<::off_t>(size)); });
    return answer < 0 ? SystemError(errno) : SystemError();
}

Result<DataStretch> LinuxOpenFile::nextData(std::uint64_t offset) {
    if (!file_.isOpen()) {
        return SystemError(EBADF);
    }
    if (offset > largestOffset) {
        return SystemError(EINVAL);
    }
    // The kernel answers by moving the position.
    const ::off_t position = ::lseek(file_.number(), 0, SEEK_CUR);
    if (position < 0) {
        return SystemError(errno);
    }
    const ::off_t begin = ::lseek(file_.number(), static_cast<::off_t>(offset), SEEK_DATA);
    const int error = begin < 0 ? errno : 0;
    const ::off_t end = begin < 0 ? -1 : ::lseek(file_.number(), begin, SEEK_HOLE);
    ::lseek(file_.number(), position, SEEK_SET);
    if (begin >= 0 && end > begin) {
        return DataStretch{static_cast<std::uint64_t>(begin), static_cast<std::uint64_t>(end)};
    }
    if (error == ENXIO) {
        return SystemError(ENXIO);
    }
    // A file system without an answer, or a file that was cut meanwhile.
    const auto attributes = this->attributes();
    if (!attributes.ok()) {
        return attributes.error();
    }
    return offset < attributes.value().size ? Result(DataStretch{offset, attributes.value().size})
                                            : Result<DataStretch>(SystemError(ENXIO));
}

SystemError LinuxOpenFile::cloneRange(OpenFile& from, std::uint64_t fromOffset,
                                      std::uint64_t length, std::uint64_t offset) {
    if (!canWrite()) {
        return SystemError(EBADF);
    }
    if (length == 0) {
        return {}; // the kernel takes it for everything up to the end
    }
    if (from.descriptor() < 0) {
        return SystemError(EXDEV);
    }
    ::file_clone_range range{};
    range.src_fd = from.descriptor();
    range.src_offset = fromOffset;
    range.src_length = length;
    range.dest_offset = offset;
    const int answer =
        retryInterrupted([&] { return ::ioctl(file_.number(), FICLONERANGE, &range); });
    return answer < 0 ? SystemError(errno) : SystemError();
}

void LinuxOpenFile::expectWrite(std::uint64_t offset, std::uint64_t length) {
    if (!canWrite() || length == 0 || offset > largestOffset || length > largestOffset - offset) {
        return;
    }
    if (!gainsByExpecting_) {
        gainsByExpecting_ = gainsByBlocksBefore(file_);
    }
    if (*gainsByExpecting_) {
        // What failed once, for want of room or of extents, is not tried again.
        gainsByExpecting_ =
            errorOf([&] {
                return ::fallocate(file_.number(), FALLOC_FL_KEEP_SIZE,
                                   static_cast<::off_t>(offset), static_cast<::off_t>(length));
            }).isNone();
    }
}

void LinuxOpenFile::forgetCached() {
    if (file_.isOpen()) {
        ::posix_fadvise(file_.number(), 0, 0, POSIX_FADV_DONTNEED);
    }
}

int LinuxOpenFile::descriptor() const { return file_.number(); }

SystemError LinuxOpenFile::setModificationDate(Date date) {
    const auto time = kernelTimeOf(date);
    if (!time) {
        return SystemError(EINVAL);
    }
    const std::array<struct ::timespec, 2> times = {{{0, UTIME_OMIT}, *time}};
    return errorOf([&] { return ::futimens(file_.number(), times.data()); });
}

SystemError LinuxOpenFile::sync() {
    return retryInterrupted([&] { return ::fsync(file_.number()); }) < 0 ? SystemError(errno)
                                                                         : SystemError();
}

SystemError LinuxOpenFile::close() { return file_.isOpen() ? file_.close() : SystemError(EBADF); }

} // namespace tav
