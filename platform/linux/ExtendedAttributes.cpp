#include "platform/linux/FileCalls.hpp"
#include "platform/linux/LinuxFileSystem.hpp"

#include <algorithm>
#include <climits>
#include <string>

#include <sys/xattr.h>

namespace tav {

namespace {

constexpr std::size_t largestAttribute = 65536; // the kernel's XATTR_SIZE_MAX

/// A path for the calls that know no open folder. A long path goes through the kernel's link to the
/// folder that it counts from, so these need a mounted /proc.
class WholePath {
  public:
    explicit WholePath(const KernelPath& path) {
        if (path.folder() == AT_FDCWD) {
            text_ = path.text();
            return;
        }
        through_ = "/proc/self/fd/" + std::to_string(path.folder()) + "/" + path.text();
        text_ = through_.c_str();
    }
    WholePath(const WholePath&) = delete;
    WholePath& operator=(const WholePath&) = delete;

    [[nodiscard]] const char* text() const { return text_; }

  private:
    std::string through_;
    const char* text_ = nullptr;
};

/// A name with a NUL would be another's.
SystemError errorOfAttributeName(std::string_view name) {
    return name.find('\0') == std::string_view::npos ? SystemError() : SystemError(EINVAL);
}

} // namespace

Result<Data> LinuxFileSystem::extendedAttribute(std::string_view path, std::string_view name) {
    const KernelPath kernelPath(path);
    if (!kernelPath.ok()) {
        return kernelPath.error();
    }
    if (const SystemError error = errorOfAttributeName(name); !error.isNone()) {
        return error;
    }
    const WholePath whole(kernelPath);
    const std::string attribute(name);
    Data value(256);
    for (;;) {
        ::ssize_t size = retryInterrupted([&] {
            return ::getxattr(whole.text(), attribute.c_str(), value.data(), value.size());
        });
        if (size >= 0) {
            value.resize(static_cast<std::size_t>(size));
            return value;
        }
        if (errno != ERANGE || value.size() >= largestAttribute) {
            return SystemError(errno);
        }
        value.resize(largestAttribute);
    }
}

SystemError LinuxFileSystem::setExtendedAttribute(std::string_view path, std::string_view name,
                                                  BytesView value) {
    const KernelPath kernelPath(path);
    if (!kernelPath.ok()) {
        return kernelPath.error();
    }
    if (const SystemError error = errorOfAttributeName(name); !error.isNone()) {
        return error;
    }
    const WholePath whole(kernelPath);
    const std::string attribute(name);
    return errorOf(
        [&] { return ::setxattr(whole.text(), attribute.c_str(), value.data(), value.size(), 0); });
}

Result<std::vector<std::string>> LinuxFileSystem::extendedAttributeNames(std::string_view path) {
    const KernelPath kernelPath(path);
    if (!kernelPath.ok()) {
        return kernelPath.error();
    }
    const WholePath whole(kernelPath);
    std::string names(1024, '\0');
    ::ssize_t size = 0;
    while ((size = retryInterrupted(
                [&] { return ::listxattr(whole.text(), names.data(), names.size()); })) < 0) {
        if (errno == ENOTSUP) {
            return std::vector<std::string>();
        }
        if (errno != ERANGE || names.size() >= largestAttribute) {
            return SystemError(errno);
        }
        names.resize(largestAttribute);
    }
    // Each name ends with a NUL.
    std::vector<std::string> list;
    for (std::string_view rest(names.data(), static_cast<std::size_t>(size)); !rest.empty();) {
        const std::size_t end = std::min(rest.find('\0'), rest.size() - 1);
        list.emplace_back(rest.substr(0, end));
        rest.remove_prefix(end + 1);
    }
    return list;
}

SystemError LinuxFileSystem::removeExtendedAttribute(std::string_view path, std::string_view name) {
    const KernelPath kernelPath(path);
    if (!kernelPath.ok()) {
        return kernelPath.error();
    }
    if (const SystemError error = errorOfAttributeName(name); !error.isNone()) {
        return error;
    }
    const WholePath whole(kernelPath);
    const std::string attribute(name);
    return errorOf([&] { return ::removexattr(whole.text(), attribute.c_str()); });
}

} // namespace tav
