#include "platform/linux/LinuxOpenFolder.hpp"

#include "platform/linux/FileCalls.hpp"
#include "platform/linux/FolderRecords.hpp"
#include "platform/linux/LinuxAttributes.hpp"

#include <algorithm>
#include <array>
#include <climits>
#include <new>
#include <stdexcept>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tav {

namespace {

/// A name as the kernel wants it: a copy that ends in a NUL, or why it cannot be one.
class KernelName {
  public:
    explicit KernelName(std::string_view name) {
        if (!isEntryName(name)) {
            error_ = SystemError(EINVAL);
        } else if (name.size() >= text_.size()) {
            error_ = SystemError(ENAMETOOLONG);
        } else {
            *std::copy(name.begin(), name.end(), text_.begin()) = '\0';
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

Result<std::unique_ptr<OpenFolder>> opened(const Descriptor& folder, std::string_view name,
                                           int flags) {
    const KernelName kernelName(name);
    if (!kernelName.ok()) {
        return kernelName.error();
    }
    auto inner = openFolderAt(folder.number(), kernelName.text(), flags);
    if (!inner.ok()) {
        return inner.error();
    }
    return Result<std::unique_ptr<OpenFolder>>(
        std::make_unique<LinuxOpenFolder>(std::move(inner).value()));
}

} // namespace

Result<FileAttributes> LinuxOpenFolder::attributes() {
    return attributesAt(folder_.number(), "", AT_EMPTY_PATH);
}

Result<FolderListing> LinuxOpenFolder::entries() {
    if (::lseek(folder_.number(), 0, SEEK_SET) < 0) {
        return SystemError(errno);
    }
    alignas(struct ::dirent64) std::array<std::byte, 65536> buffer;
    try {
        FolderListing listing;
        const SystemError error =
            forEachFolderRecord(folder_, buffer, [&](const FolderRecord& record) {
                const std::string_view name = record.name;
                if (name != "." && name != "..") {
                    listing.add(name, kindOfMode(DTTOIF(unsigned{record.type})), record.number);
                }
            });
        return error.isNone() ? Result(std::move(listing)) : error;
    } catch (const std::bad_alloc&) {
        return SystemError(ENOMEM);
    } catch (const std::length_error&) {
        return SystemError(ENOMEM);
    }
}

Result<FileAttributes> LinuxOpenFolder::attributes(std::string_view name) {
    const KernelName kernelName(name);
    return kernelName.ok() ? attributesAt(folder_.number(), kernelName.text(), AT_SYMLINK_NOFOLLOW)
                           : Result<FileAttributes>(kernelName.error());
}

Result<FileAttributes> LinuxOpenFolder::targetAttributes(std::string_view name) {
    const KernelName kernelName(name);
    return kernelName.ok() ? attributesAt(folder_.number(), kernelName.text(), 0)
                           : Result<FileAttributes>(kernelName.error());
}

Result<std::string> LinuxOpenFolder::linkTarget(std::string_view name) {
    const KernelName kernelName(name);
    return kernelName.ok() ? linkTargetAt(folder_.number(), kernelName.text())
                           : Result<std::string>(kernelName.error());
}

Result<std::unique_ptr<OpenFolder>> LinuxOpenFolder::openFolder(std::string_view name) {
    return opened(folder_, name, O_NOFOLLOW);
}

Result<std::unique_ptr<OpenFolder>> LinuxOpenFolder::openTargetFolder(std::string_view name) {
    return opened(folder_, name, 0);
}

Result<std::unique_ptr<OpenFile>> LinuxOpenFolder::open(std::string_view name,
                                                        const OpenOptions& options) {
    const KernelName kernelName(name);
    return kernelName.ok() ? openFileAt(folder_.number(), kernelName.text(), options)
                           : Result<std::unique_ptr<OpenFile>>(kernelName.error());
}

SystemError LinuxOpenFolder::createFolder(std::string_view name, std::uint32_t permissions) {
    const KernelName kernelName(name);
    return kernelName.ok() ? errorOf([&] {
        return ::mkdirat(folder_.number(), kernelName.text(), permissions & permissionBits);
    })
                           : kernelName.error();
}

SystemError LinuxOpenFolder::removeFile(std::string_view name) {
    const KernelName kernelName(name);
    return kernelName.ok()
               ? errorOf([&] { return ::unlinkat(folder_.number(), kernelName.text(), 0); })
               : kernelName.error();
}

SystemError LinuxOpenFolder::removeFolder(std::string_view name) {
    const KernelName kernelName(name);
    return kernelName.ok() ? errorOf([&] {
        return ::unlinkat(folder_.number(), kernelName.text(), AT_REMOVEDIR);
    })
                           : kernelName.error();
}

} // namespace tav
