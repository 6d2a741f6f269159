#include "platform/linux/FileCalls.hpp"

#include "platform/linux/LinuxOpenFile.hpp"

#include <array>
#include <climits>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tav {

Result<std::string> linkTargetAt(int folder, const char* path) {
    std::array<char, PATH_MAX> buffer;
    const ::ssize_t length =
        retryInterrupted([&] { return ::readlinkat(folder, path, buffer.data(), buffer.size()); });
    if (length < 0) {
        return SystemError(errno);
    }
    if (static_cast<std::size_t>(length) == buffer.size()) {
        return SystemError(ENAMETOOLONG); // perhaps cut
    }
    return std::string(buffer.data(), static_cast<std::size_t>(length));
}

Result<Descriptor> openWithoutWaiting(int folder, const char* path, int flags, std::uint32_t mode) {
    auto file = Descriptor::open(folder, path, flags | O_NONBLOCK, mode);
    // Sockets, pipes that nobody reads and devices without a driver do not even open.
    if (file.error() == SystemError(ENXIO) || file.error() == SystemError(ENODEV)) {
        return SystemError(EINVAL);
    }
    return file;
}

Result<std::uint64_t> sizeOfRegularFile(const Descriptor& file) {
    struct ::stat status {};
    if (::fstat(file.number(), &status) != 0) {
        return SystemError(errno);
    }
    if (S_ISDIR(status.st_mode)) {
        return SystemError(EISDIR);
    }
    if (!S_ISREG(status.st_mode)) {
        return SystemError(EINVAL);
    }
    return static_cast<std::uint64_t>(status.st_size);
}

Result<std::unique_ptr<OpenFile>> openFileAt(int folder, const char* path,
                                             const OpenOptions& options) {
    if (!options.areConsistent()) {
        return SystemError(EINVAL);
    }
    const int flags = (options.write ? O_RDWR : O_RDONLY) | (options.create ? O_CREAT : 0) |
                      (options.mustBeNew ? O_EXCL : 0) | (options.append ? O_APPEND : 0);
    auto file = openWithoutWaiting(folder, path, flags, options.permissions & permissionBits);
    if (!file.ok()) {
        return file.error();
    }
    // What was made just now is a file.
    if (!options.mustBeNew) {
        if (const auto size = sizeOfRegularFile(file.value()); !size.ok()) {
            return size.error();
        }
    }
    return Result<std::unique_ptr<OpenFile>>(
        std::make_unique<LinuxOpenFile>(std::move(file).value(), options.write));
}

Result<Descriptor> openFolderAt(int folder, const char* path, int flags) {
    return Descriptor::open(folder, path, O_RDONLY | O_DIRECTORY | O_NONBLOCK | flags, 0);
}

} // namespace tav
