#include "platform/linux/LinuxFileSystem.hpp"

#include "base/PathString.hpp"
#include "platform/linux/Descriptor.hpp"
#include "platform/linux/LinuxAttributes.hpp"
#include "platform/linux/LinuxOpenFile.hpp"

#include <algorithm>
#include <array>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <span>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tav {

namespace {

constexpr std::uint32_t permissionBits = 07777;

/// A path as the kernel wants it: a copy that ends in a NUL, or why it cannot be one.
class KernelPath {
  public:
    explicit KernelPath(std::string_view path) {
        if (path.find('\0') != std::string_view::npos) {
            error_ = SystemError(EINVAL);
        } else if (path.size() >= text_.size()) {
            error_ = SystemError(ENAMETOOLONG);
        } else {
            *std::copy(path.begin(), path.end(), text_.begin()) = '\0';
        }
    }

    [[nodiscard]] bool ok() const { return error_.isNone(); }
    [[nodiscard]] SystemError error() const { return error_; }
    /// Only when `ok()`.
    [[nodiscard]] const char* text() const { return text_.data(); }

  private:
    SystemError error_;
    std::array<char, PATH_MAX> text_;
};

/// The call's answer 0 or -1 with `errno`, as an error.
template <class Call>
SystemError errorOf(Call call) {
    return retryInterrupted(call) < 0 ? SystemError(errno) : SystemError();
}

Result<FileAttributes> attributesOf(std::string_view path, int flags) {
    const KernelPath kernelPath(path);
    return kernelPath.ok() ? attributesAt(AT_FDCWD, kernelPath.text(), flags)
                           : Result<FileAttributes>(kernelPath.error());
}

/// Appends the entries of one answer of the kernel.
void appendEntries(std::span<const std::byte> answer, std::vector<FolderEntry>& entries) {
    std::size_t offset = 0;
    while (offset < answer.size()) {
        const std::byte* record = answer.data() + offset;
        unsigned short length = 0;
        std::memcpy(&length, record + offsetof(struct ::dirent64, d_reclen), sizeof(length));
        const auto type =
            std::to_integer<unsigned int>(record[offsetof(struct ::dirent64, d_type)]);
        const std::string_view name =
            reinterpret_cast<const char*>(record + offsetof(struct ::dirent64, d_name));
        if (name != "." && name != "..") {
            entries.push_back({std::string(name), kindOfMode(DTTOIF(type))});
        }
        offset += length;
    }
}

/// Whether the open file may be read or written as a file. Its size, too.
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

/// Opens what may turn out to be a pipe or a device without waiting for its other end.
Result<Descriptor> openWithoutWaiting(const KernelPath& path, int flags, std::uint32_t mode) {
    auto file = Descriptor::open(AT_FDCWD, path.text(), flags | O_NONBLOCK, mode);
    // Sockets, pipes that nobody reads and devices without a driver do not even open.
    if (file.error() == SystemError(ENXIO) || file.error() == SystemError(ENODEV)) {
        return SystemError(EINVAL);
    }
    return file;
}

} // namespace

FileSystem& internal::realFileSystem() {
    // Never destroyed: others may use it while the program ends.
    alignas(LinuxFileSystem) static std::array<std::byte, sizeof(LinuxFileSystem)> storage;
    static FileSystem& instance = *new (storage.data()) LinuxFileSystem;
    return instance;
}

Result<FileAttributes> LinuxFileSystem::attributes(std::string_view path) {
    return attributesOf(path, AT_SYMLINK_NOFOLLOW);
}

Result<FileAttributes> LinuxFileSystem::targetAttributes(std::string_view path) {
    return attributesOf(path, 0);
}

Result<std::vector<FolderEntry>> LinuxFileSystem::folderEntries(std::string_view path) {
    const KernelPath kernelPath(path);
    if (!kernelPath.ok()) {
        return kernelPath.error();
    }
    const auto folder = Descriptor::open(kernelPath.text(), O_RDONLY | O_DIRECTORY | O_NONBLOCK);
    if (!folder.ok()) {
        return folder.error();
    }
    alignas(struct ::dirent64) std::array<std::byte, 32768> buffer;
    std::vector<FolderEntry> entries;
    for (;;) {
        const ::ssize_t got = retryInterrupted(
            [&] { return ::getdents64(folder.value().number(), buffer.data(), buffer.size()); });
        if (got < 0) {
            return SystemError(errno);
        }
        if (got == 0) {
            return entries;
        }
        appendEntries(std::span(buffer).first(static_cast<std::size_t>(got)), entries);
    }
}

Result<std::string> LinuxFileSystem::linkTarget(std::string_view path) {
    const KernelPath kernelPath(path);
    if (!kernelPath.ok()) {
        return kernelPath.error();
    }
    std::array<char, PATH_MAX> buffer;
    const ::ssize_t length = retryInterrupted(
        [&] { return ::readlinkat(AT_FDCWD, kernelPath.text(), buffer.data(), buffer.size()); });
    if (length < 0) {
        return SystemError(errno);
    }
    if (static_cast<std::size_t>(length) == buffer.size()) {
        return SystemError(ENAMETOOLONG); // perhaps cut
    }
    return std::string(buffer.data(), static_cast<std::size_t>(length));
}

Result<std::string> LinuxFileSystem::canonicalPath(std::string_view path) {
    const KernelPath kernelPath(path);
    if (!kernelPath.ok()) {
        return kernelPath.error();
    }
    std::array<char, PATH_MAX> buffer;
    const SystemError error =
        errorOf([&] { return ::realpath(kernelPath.text(), buffer.data()) == nullptr ? -1 : 0; });
    if (!error.isNone()) {
        return error;
    }
    return std::string(buffer.data());
}

Result<Data> LinuxFileSystem::readFile(std::string_view path, std::uint64_t maximumSize) {
    const KernelPath kernelPath(path);
    if (!kernelPath.ok()) {
        return kernelPath.error();
    }
    const auto file = openWithoutWaiting(kernelPath, O_RDONLY, 0);
    if (!file.ok()) {
        return file.error();
    }
    const auto size = sizeOfRegularFile(file.value());
    if (!size.ok()) {
        return size.error();
    }
    if (size.value() > maximumSize) {
        return SystemError(EFBIG);
    }
    return readToEnd(file.value(), size.value(), maximumSize);
}

SystemError LinuxFileSystem::writeFile(std::string_view path, BytesView content,
                                       std::uint32_t permissions) {
    const KernelPath kernelPath(path);
    if (!kernelPath.ok()) {
        return kernelPath.error();
    }
    auto file = openWithoutWaiting(kernelPath, O_WRONLY | O_CREAT, permissions & permissionBits);
    if (!file.ok()) {
        return file.error();
    }
    const auto size = sizeOfRegularFile(file.value());
    if (!size.ok()) {
        return size.error();
    }
    // An empty file that is replaced by nothing shall look changed, too; else writing does it.
    if (size.value() > 0 || content.empty()) {
        const SystemError error = errorOf([&] { return ::ftruncate(file.value().number(), 0); });
        if (!error.isNone()) {
            return error;
        }
    }
    const SystemError error = writeFully(file.value(), content);
    return error.isNone() ? file.value().close() : error;
}

Result<std::unique_ptr<OpenFile>> LinuxFileSystem::open(std::string_view path,
                                                        const OpenOptions& options) {
    const KernelPath kernelPath(path);
    if (!options.areConsistent() || !kernelPath.ok()) {
        return options.areConsistent() ? kernelPath.error() : SystemError(EINVAL);
    }
    const int flags = (options.write ? O_RDWR : O_RDONLY) | (options.create ? O_CREAT : 0) |
                      (options.mustBeNew ? O_EXCL : 0) | (options.append ? O_APPEND : 0);
    auto file = openWithoutWaiting(kernelPath, flags, options.permissions & permissionBits);
    if (!file.ok()) {
        return file.error();
    }
    if (const auto size = sizeOfRegularFile(file.value()); !size.ok()) {
        return size.error();
    }
    return Result<std::unique_ptr<OpenFile>>(
        std::make_unique<LinuxOpenFile>(std::move(file).value(), options.write));
}

SystemError LinuxFileSystem::syncFolder(std::string_view path) {
    const KernelPath kernelPath(path);
    if (!kernelPath.ok()) {
        return kernelPath.error();
    }
    const auto folder = Descriptor::open(kernelPath.text(), O_RDONLY | O_DIRECTORY | O_NONBLOCK);
    return folder.ok() ? errorOf([&] { return ::fsync(folder.value().number()); }) : folder.error();
}

SystemError LinuxFileSystem::createFolder(std::string_view path, std::uint32_t permissions) {
    const KernelPath kernelPath(path);
    if (!kernelPath.ok()) {
        return kernelPath.error();
    }
    return errorOf(
        [&] { return ::mkdirat(AT_FDCWD, kernelPath.text(), permissions & permissionBits); });
}

SystemError LinuxFileSystem::createLink(std::string_view path, std::string_view target) {
    const KernelPath kernelPath(path);
    const KernelPath kernelTarget(target);
    if (!kernelPath.ok() || !kernelTarget.ok()) {
        return kernelPath.ok() ? kernelTarget.error() : kernelPath.error();
    }
    return errorOf([&] { return ::symlinkat(kernelTarget.text(), AT_FDCWD, kernelPath.text()); });
}

SystemError LinuxFileSystem::setPermissions(std::string_view path, std::uint32_t permissions) {
    const KernelPath kernelPath(path);
    if (!kernelPath.ok()) {
        return kernelPath.error();
    }
    return errorOf(
        [&] { return ::fchmodat(AT_FDCWD, kernelPath.text(), permissions & permissionBits, 0); });
}

SystemError LinuxFileSystem::rename(const char* from, const char* to, unsigned int flags) {
    return errorOf([&] { return ::renameat2(AT_FDCWD, from, AT_FDCWD, to, flags); });
}

/// Whether both paths lead to one file and its folder does not list the second name: the file
/// system takes names for equal that differ, in their case for one. A hard link's name is listed.
bool LinuxFileSystem::isOtherSpelling(std::string_view from, std::string_view to) {
    const auto fromAttributes = attributes(from);
    const auto toAttributes = attributes(to);
    if (!fromAttributes.ok() || !toAttributes.ok() ||
        fromAttributes.value().identity != toAttributes.value().identity) {
        return false;
    }
    const std::string_view name = lastPathComponent(to);
    if (name == "." || name == "..") {
        return false; // never listed
    }
    const std::string folder = stringByDeletingLastPathComponent(to);
    const auto entries = folderEntries(folder.empty() ? "." : folder);
    return entries.ok() &&
           std::none_of(entries.value().begin(), entries.value().end(),
                        [&](const FolderEntry& entry) { return entry.name == name; });
}

SystemError LinuxFileSystem::move(std::string_view from, std::string_view to, Replace replace) {
    const KernelPath kernelFrom(from);
    const KernelPath kernelTo(to);
    if (!kernelFrom.ok() || !kernelTo.ok()) {
        return kernelFrom.ok() ? kernelTo.error() : kernelFrom.error();
    }
    if (replace == Replace::Yes) {
        return rename(kernelFrom.text(), kernelTo.text(), 0);
    }
    SystemError error = rename(kernelFrom.text(), kernelTo.text(), RENAME_NOREPLACE);
    if (error == SystemError(EINVAL) || error == SystemError(ENOSYS)) {
        // Not every file system can refuse to replace: look first. Between the two calls somebody
        // else's file may come, and would be replaced.
        const auto there = attributes(to);
        error = there.ok() ? SystemError(EEXIST) : there.error();
        if (error == SystemError(ENOENT)) {
            return rename(kernelFrom.text(), kernelTo.text(), 0);
        }
    }
    if (error == SystemError(EEXIST) && isOtherSpelling(from, to)) {
        return rename(kernelFrom.text(), kernelTo.text(), 0);
    }
    return error;
}

SystemError LinuxFileSystem::removeFile(std::string_view path) {
    const KernelPath kernelPath(path);
    if (!kernelPath.ok()) {
        return kernelPath.error();
    }
    return errorOf([&] { return ::unlinkat(AT_FDCWD, kernelPath.text(), 0); });
}

SystemError LinuxFileSystem::removeFolder(std::string_view path) {
    const KernelPath kernelPath(path);
    if (!kernelPath.ok()) {
        return kernelPath.error();
    }
    return errorOf([&] { return ::unlinkat(AT_FDCWD, kernelPath.text(), AT_REMOVEDIR); });
}

} // namespace tav
