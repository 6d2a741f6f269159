#include "platform/linux/LinuxAttributes.hpp"

#include "platform/linux/FileCalls.hpp"

#include <cerrno>
#include <cmath>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

namespace tav {

namespace {

Date dateOf(const struct ::statx_timestamp& time) {
    // Whole seconds are moved to 2001 first: a double then keeps more of the fraction.
    const auto seconds =
        double(time.tv_sec) - Date::secondsFrom1970To2001; // exact: both are whole numbers
    return Date(seconds + double(time.tv_nsec) / 1e9);
}

std::int64_t nanosecondsOf(const struct ::statx_timestamp& time) {
    // Wraps for a date that no disk honestly has: it only has to tell files apart.
    const auto nanoseconds =
        static_cast<std::uint64_t>(time.tv_sec) * 1'000'000'000U + time.tv_nsec;
    return static_cast<std::int64_t>(nanoseconds);
}

} // namespace

FileKind kindOfMode(unsigned int mode) {
    switch (mode & S_IFMT) {
    case S_IFREG:
        return FileKind::Regular;
    case S_IFDIR:
        return FileKind::Folder;
    case S_IFLNK:
        return FileKind::Link;
    case S_IFIFO:
        return FileKind::Pipe;
    case S_IFSOCK:
        return FileKind::Socket;
    case S_IFCHR:
    case S_IFBLK:
        return FileKind::Device;
    default:
        return FileKind::Unknown;
    }
}

Result<FileAttributes> attributesAt(int folder, const char* path, int flags) {
    struct ::statx status {};
    const int answer = retryInterrupted([&] {
        return ::statx(folder, path, flags | AT_NO_AUTOMOUNT,
                       STATX_BASIC_STATS | STATX_BTIME | STATX_MNT_ID, &status);
    });
    if (answer < 0) {
        return SystemError(errno);
    }
    FileAttributes attributes;
    attributes.kind = kindOfMode(status.stx_mode);
    attributes.permissions = status.stx_mode & permissionBits;
    attributes.user = status.stx_uid;
    attributes.group = status.stx_gid;
    attributes.size = status.stx_size;
    attributes.identity.device = ::makedev(status.stx_dev_major, status.stx_dev_minor);
    attributes.identity.number = status.stx_ino;
    if ((status.stx_mask & STATX_BTIME) != 0) {
        attributes.identity.birthNanoseconds = nanosecondsOf(status.stx_btime);
        attributes.creationDate = dateOf(status.stx_btime);
    }
    attributes.modificationDate = dateOf(status.stx_mtime);
    attributes.changeDate = dateOf(status.stx_ctime);
    attributes.isImmutable = (status.stx_attributes & STATX_ATTR_IMMUTABLE) != 0;
    if ((status.stx_mask & STATX_MNT_ID) != 0) {
        attributes.mount = status.stx_mnt_id;
    }
    return attributes;
}

std::optional<struct ::timespec> kernelTimeOf(Date date) {
    constexpr double limit = 9.2e18; // seconds, well below 2^63
    const double seconds = std::floor(date.secondsSinceReferenceDate());
    if (!(std::abs(seconds) <= limit)) {
        return std::nullopt;
    }
    struct ::timespec time {};
    // Moved to 1970 as a whole number, which a double may be too narrow for together with the
    // fraction.
    time.tv_sec =
        static_cast<::time_t>(seconds) + static_cast<::time_t>(Date::secondsFrom1970To2001);
    time.tv_nsec = std::lround((date.secondsSinceReferenceDate() - seconds) * 1e9);
    if (time.tv_nsec == 1'000'000'000) {
        ++time.tv_sec;
        time.tv_nsec = 0;
    }
    return time;
}

} // namespace tav
