#include "platform/linux/LinuxVolumes.hpp"

#include "platform/OpenFile.hpp"
#include "platform/linux/FileCalls.hpp"
#include "platform/linux/KernelPath.hpp"

#include <array>
#include <limits>
#include <new>

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

namespace tav {

namespace {

constexpr std::uint64_t largestTable = 64U << 20U;
constexpr int mostReadings = 5;

std::uint64_t bytesOf(std::uint64_t blocks, std::uint64_t blockSize) {
    constexpr auto most = std::numeric_limits<std::uint64_t>::max();
    return blockSize != 0 && blocks > most / blockSize ? most : blocks * blockSize;
}

} // namespace

Volumes& internal::realVolumes() {
    // Never destroyed: others may use it while the program ends.
    alignas(LinuxVolumes) static std::array<std::byte, sizeof(LinuxVolumes)> storage;
    static Volumes& instance = *new (storage.data()) LinuxVolumes;
    return instance;
}

std::size_t LinuxVolumes::readings() const {
    const std::lock_guard lock(mutex_);
    return readings_;
}

SystemError LinuxVolumes::openTable() {
    auto file = Descriptor::open(path_.c_str(), O_RDONLY);
    if (!file.ok()) {
        return file.error();
    }
    file_ = std::move(file).value();
    return {};
}

/// Asking makes the kernel forget that it has.
bool LinuxVolumes::hasChanged() const {
    struct ::pollfd event {};
    event.fd = file_.number();
    event.events = POLLPRI;
    const int answer = retryInterrupted([&] { return ::poll(&event, 1, 0); });
    return answer > 0 && (event.revents & (POLLPRI | POLLERR)) != 0;
}

SystemError LinuxVolumes::readTable() {
    // A table that changes while it is read may lack a line: it is read again then, but not
    // forever.
    for (int reading = 0; reading < mostReadings; ++reading) {
        if (::lseek(file_.number(), 0, SEEK_SET) < 0) {
            return SystemError(errno);
        }
        const auto text = readToEnd(file_, 16384, largestTable);
        if (!text.ok()) {
            return text.error();
        }
        table_ = MountTable(textOf(text.value()));
        ++readings_;
        if (!hasChanged()) {
            break;
        }
    }
    return {};
}

/// Nothing where the table has no such mount, in a changed root for one.
Result<std::optional<Mount>> LinuxVolumes::mount(std::uint64_t identifier) {
    const std::lock_guard lock(mutex_);
    const bool wasOpen = file_.isOpen();
    SystemError error = wasOpen ? SystemError() : openTable();
    if (error.isNone() && (!wasOpen || hasChanged())) {
        error = readTable();
    }
    const Mount* found = error.isNone() ? table_.find(identifier) : nullptr;
    if (error.isNone() && found == nullptr && wasOpen) {
        // An open table stays that of the namespace that it was opened in.
        error = openTable();
        error = error.isNone() ? readTable() : error;
        found = error.isNone() ? table_.find(identifier) : nullptr;
    }
    if (!error.isNone()) {
        file_.reset(); // begins anew with the next question
        return error;
    }
    return found == nullptr ? std::optional<Mount>() : std::optional(*found);
}

Result<VolumeInfo> LinuxVolumes::volumeOfPath(std::string_view path) {
    const KernelPath kernelPath(path);
    if (!kernelPath.ok()) {
        return kernelPath.error();
    }
    // Held, so that all answers are about one thing; nothing waits or is read by this.
    const auto place = Descriptor::open(kernelPath.folder(), kernelPath.text(), O_PATH, 0);
    if (!place.ok()) {
        return place.error();
    }
    struct ::statx status {};
    SystemError error = errorOf([&] {
        return ::statx(place.value().number(), "", AT_EMPTY_PATH | AT_NO_AUTOMOUNT, STATX_MNT_ID,
                       &status);
    });
    struct ::statvfs space {};
    if (error.isNone()) {
        error = errorOf([&] { return ::fstatvfs(place.value().number(), &space); });
    }
    if (!error.isNone()) {
        return error;
    }
    if ((status.stx_mask & STATX_MNT_ID) == 0) {
        return SystemError(ENOSYS);
    }
    auto found = mount(status.stx_mnt_id);
    if (!found.ok()) {
        return found.error();
    }
    VolumeInfo volume;
    volume.identifier = status.stx_mnt_id;
    volume.totalBytes = bytesOf(space.f_blocks, space.f_frsize);
    volume.freeBytes = bytesOf(space.f_bavail, space.f_frsize);
    volume.isReadOnly = (space.f_flag & ST_RDONLY) != 0;
    if (std::optional<Mount>& mount = found.value()) {
        volume.rootPath = std::move(mount->path);
        volume.typeName = std::move(mount->typeName);
        volume.deviceIdentifier = mount->hasBlockDevice() ? std::move(mount->device) : "";
    } else {
        // Mounted where this process cannot see it, above its own root mostly.
        volume.rootPath = "/";
    }
    return volume;
}

Result<std::uint64_t> LinuxVolumes::freeBytes(std::string_view path) {
    const KernelPath kernelPath(path);
    if (!kernelPath.ok()) {
        return kernelPath.error();
    }
    if (kernelPath.folder() != AT_FDCWD) {
        return Volumes::freeBytes(path); // there is no call that counts from a folder
    }
    struct ::statvfs space {};
    const SystemError error = errorOf([&] { return ::statvfs(kernelPath.text(), &space); });
    return error.isNone() ? Result(bytesOf(space.f_bavail, space.f_frsize)) : error;
}

Result<std::uint64_t> LinuxVolumes::freeBytesOfFile(const OpenFile& file, std::string_view path) {
    const int number = file.descriptor();
    if (number < 0) {
        return freeBytes(path);
    }
    struct ::statvfs space {};
    const SystemError error = errorOf([&] { return ::fstatvfs(number, &space); });
    return error.isNone() ? Result(bytesOf(space.f_bavail, space.f_frsize)) : error;
}

bool LinuxVolumes::isVolumeRoot(std::string_view path) {
    const KernelPath kernelPath(path);
    struct ::statx status {};
    return kernelPath.ok() &&
           errorOf([&] {
               return ::statx(kernelPath.folder(), kernelPath.text(),
                              AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT, STATX_TYPE, &status);
           }).isNone() &&
           S_ISDIR(status.stx_mode) && (status.stx_attributes & STATX_ATTR_MOUNT_ROOT) != 0;
}

} // namespace tav
