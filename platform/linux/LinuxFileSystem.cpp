#include "platform/linux/LinuxFileSystem.hpp"

#include "base/PathString.hpp"
#include "platform/linux/CanonicalPath.hpp"
#include "platform/linux/Descriptor.hpp"
#include "platform/linux/FileCalls.hpp"
#include "platform/linux/FolderRecords.hpp"
#include "platform/linux/LinuxAttributes.hpp"
#include "platform/linux/LinuxOpenFolder.hpp"

#include <algorithm>
#include <array>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <new>
#include <optional>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tav {

namespace {

Result<FileAttributes> attributesOf(std::string_view path, int flags) {
    const KernelPath kernelPath(path);
    return kernelPath.ok() ? attributesAt(kernelPath.folder(), kernelPath.text(), flags)
                           : Result<FileAttributes>(kernelPath.error());
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
    const auto folder = openFolderAt(kernelPath.folder(), kernelPath.text());
    if (!folder.ok()) {
        return folder.error();
    }
    alignas(struct ::dirent64) std::array<std::byte, 65536> buffer;
    std::vector<FolderEntry> entries;
    const SystemError error =
        forEachFolderRecord(folder.value(), buffer, [&](const FolderRecord& record) {
            const std::string_view name = record.name;
            if (name != "." && name != "..") {
                entries.push_back({std::string(name), kindOfMode(DTTOIF(unsigned{record.type}))});
            }
        });
    return error.isNone() ? Result(std::move(entries)) : error;
}

Result<std::unique_ptr<OpenFolder>> LinuxFileSystem::openFolder(std::string_view path) {
    const KernelPath kernelPath(path);
    if (!kernelPath.ok()) {
        return kernelPath.error();
    }
    auto folder = openFolderAt(kernelPath.folder(), kernelPath.text());
    if (!folder.ok()) {
        return folder.error();
    }
    return Result<std::unique_ptr<OpenFolder>>(
        std::make_unique<LinuxOpenFolder>(std::move(folder).value()));
}

Result<std::string> LinuxFileSystem::linkTarget(std::string_view path) {
    const KernelPath kernelPath(path);
    if (!kernelPath.ok()) {
        return kernelPath.error();
    }
    return linkTargetAt(kernelPath.folder(), kernelPath.text());
}

Result<std::string> LinuxFileSystem::canonicalPath(std::string_view path) {
    if (path.find('\0') != std::string_view::npos) {
        return SystemError(EINVAL);
    }
    if (path.size() < PATH_MAX) {
        const std::string text(path);
        std::array<char, PATH_MAX> buffer;
        const SystemError error =
            errorOf([&] { return ::realpath(text.c_str(), buffer.data()) == nullptr ? -1 : 0; });
        if (error.isNone()) {
            return std::string(buffer.data());
        }
        if (error != SystemError(ENAMETOOLONG)) {
            return error;
        }
    }
    return canonicalLongPath(path);
}

Result<Data> LinuxFileSystem::readFile(std::string_view path, std::uint64_t maximumSize) {
    const KernelPath kernelPath(path);
    if (!kernelPath.ok()) {
        return kernelPath.error();
    }
    const auto file = openWithoutWaiting(kernelPath.folder(), kernelPath.text(), O_RDONLY, 0);
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
    auto file = openWithoutWaiting(kernelPath.folder(), kernelPath.text(), O_WRONLY | O_CREAT,
                                   permissions & permissionBits);
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
    return kernelPath.ok() ? openFileAt(kernelPath.folder(), kernelPath.text(), options)
                           : Result<std::unique_ptr<OpenFile>>(kernelPath.error());
}

SystemError LinuxFileSystem::syncFolder(std::string_view path) {
    const KernelPath kernelPath(path);
    if (!kernelPath.ok()) {
        return kernelPath.error();
    }
    const auto folder = openFolderAt(kernelPath.folder(), kernelPath.text());
    return folder.ok() ? errorOf([&] { return ::fsync(folder.value().number()); }) : folder.error();
}

SystemError LinuxFileSystem::createFolder(std::string_view path, std::uint32_t permissions) {
    const KernelPath kernelPath(path);
    if (!kernelPath.ok()) {
        return kernelPath.error();
    }
    return errorOf([&] {
        return ::mkdirat(kernelPath.folder(), kernelPath.text(), permissions & permissionBits);
    });
}

SystemError LinuxFileSystem::createLink(std::string_view path, std::string_view target) {
    const KernelPath kernelPath(path);
    if (!kernelPath.ok()) {
        return kernelPath.error();
    }
    if (target.find('\0') != std::string_view::npos) {
        return SystemError(EINVAL);
    }
    // The kernel itself refuses what is longer than a link may be.
    const std::string text(target);
    return errorOf(
        [&] { return ::symlinkat(text.c_str(), kernelPath.folder(), kernelPath.text()); });
}

SystemError LinuxFileSystem::setPermissions(std::string_view path, std::uint32_t permissions) {
    const KernelPath kernelPath(path);
    if (!kernelPath.ok()) {
        return kernelPath.error();
    }
    return errorOf([&] {
        return ::fchmodat(kernelPath.folder(), kernelPath.text(), permissions & permissionBits, 0);
    });
}

SystemError LinuxFileSystem::setModificationDate(std::string_view path, Date date) {
    const KernelPath kernelPath(path);
    if (!kernelPath.ok()) {
        return kernelPath.error();
    }
    const auto time = kernelTimeOf(date);
    if (!time) {
        return SystemError(EINVAL);
    }
    const std::array<struct ::timespec, 2> times = {{{0, UTIME_OMIT}, *time}};
    return errorOf([&] {
        return ::utimensat(kernelPath.folder(), kernelPath.text(), times.data(),
                           AT_SYMLINK_NOFOLLOW);
    });
}

SystemError LinuxFileSystem::rename(const KernelPath& from, const KernelPath& to,
                                    unsigned int flags) {
    return errorOf(
        [&] { return ::renameat2(from.folder(), from.text(), to.folder(), to.text(), flags); });
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
        return rename(kernelFrom, kernelTo, 0);
    }
    SystemError error = rename(kernelFrom, kernelTo, RENAME_NOREPLACE);
    if (error == SystemError(EINVAL) || error == SystemError(ENOSYS)) {
        // Not every file system can refuse to replace: look first. Between the two calls somebody
        // else's file may come, and would be replaced.
        const auto there = attributes(to);
        error = there.ok() ? SystemError(EEXIST) : there.error();
        if (error == SystemError(ENOENT)) {
            return rename(kernelFrom, kernelTo, 0);
        }
    }
    if (error == SystemError(EEXIST) && isOtherSpelling(from, to)) {
        return rename(kernelFrom, kernelTo, 0);
    }
    return error;
}

SystemError LinuxFileSystem::removeFile(std::string_view path) {
    const KernelPath kernelPath(path);
    if (!kernelPath.ok()) {
        return kernelPath.error();
    }
    return errorOf([&] { return ::unlinkat(kernelPath.folder(), kernelPath.text(), 0); });
}

SystemError LinuxFileSystem::removeFolder(std::string_view path) {
    const KernelPath kernelPath(path);
    if (!kernelPath.ok()) {
        return kernelPath.error();
    }
    return errorOf(
        [&] { return ::unlinkat(kernelPath.folder(), kernelPath.text(), AT_REMOVEDIR); });
}

} // namespace tav
