#include "platform/linux/FileCalls.hpp"
#include "platform/linux/LinuxFileSystem.hpp"
#include "platform/linux/LinuxOpenFile.hpp"

#include <algorithm>
#include <climits>
#include <string>

#include <sys/xattr.h>

namespace tav {

namespace {

constexpr std::size_t largestAttribute = 65536; // the kernel's XATTR_SIZE_MAX

/// A path for the calls that know no open folder, with the name of an attribute where one is asked
/// for. A long path goes through the kernel's link to the folder that it counts from, so these need
/// a mounted /proc.
class AttributePlace {
  public:
    explicit AttributePlace(std::string_view path, std::string_view name = {})
        : path_(path), name_(name) {
        if (!path_.ok()) {
            error_ = path_.error();
        } else if (name_.find('\0') != std::string::npos) {
            error_ = SystemError(EINVAL); // it would be another's
        } else if (path_.folder() == AT_FDCWD) {
            text_ = path_.text();
        } else {
            through_ = "/proc/self/fd/" + std::to_string(path_.folder()) + "/" + path_.text();
            text_ = through_.c_str();
        }
    }
    AttributePlace(const AttributePlace&) = delete;
    AttributePlace& operator=(const AttributePlace&) = delete;

    /// The rest only when there is none.
    [[nodiscard]] SystemError error() const { return error_; }
    [[nodiscard]] const char* path() const { return text_; }
    [[nodiscard]] const char* name() const { return name_.c_str(); }

  private:
    KernelPath path_;
    std::string name_;
    std::string through_;
    const char* text_ = nullptr;
    SystemError error_;
};

/// Reads with a call that answers the size of what it put into a buffer, or ERANGE when there is
/// not enough room.
template <class Bytes, class Call>
Result<Bytes> readWhole(Bytes buffer, Call call) {
    for (;;) {
        const ::ssize_t size = retryInterrupted([&] { return call(buffer.data(), buffer.size()); });
        if (size >= 0) {
            buffer.resize(static_cast<std::size_t>(size));
            return buffer;
        }
        if (errno != ERANGE || buffer.size() >= largestAttribute) {
            return SystemError(errno);
        }
        buffer.resize(largestAttribute);
    }
}

/// What is read of most of them at once.
constexpr std::size_t usualAttribute = 256;

} // namespace

Result<Data> LinuxFileSystem::extendedAttribute(std::string_view path, std::string_view name) {
    const AttributePlace place(path, name);
    if (!place.error().isNone()) {
        return place.error();
    }
    return readWhole(Data(usualAttribute), [&](void* value, std::size_t size) {
        return ::getxattr(place.path(), place.name(), value, size);
    });
}

SystemError LinuxFileSystem::setExtendedAttribute(std::string_view path, std::string_view name,
                                                  BytesView value) {
    const AttributePlace place(path, name);
    return place.error().isNone() ? errorOf([&] {
        return ::setxattr(place.path(), place.name(), value.data(), value.size(), 0);
    })
                                  : place.error();
}

Result<std::vector<std::string>> LinuxFileSystem::extendedAttributeNames(std::string_view path) {
    const AttributePlace place(path);
    if (!place.error().isNone()) {
        return place.error();
    }
    const Result<std::string> names =
        readWhole(std::string(1024, '\0'), [&](char* list, std::size_t size) {
            return ::listxattr(place.path(), list, size);
        });
    if (!names.ok() && names.error() != SystemError(ENOTSUP)) {
        return names.error();
    }
    // Each name ends with a NUL.
    std::vector<std::string> list;
    for (std::string_view rest = names.ok() ? names.value() : std::string_view(); !rest.empty();) {
        const std::size_t end = std::min(rest.find('\0'), rest.size() - 1);
        list.emplace_back(rest.substr(0, end));
        rest.remove_prefix(end + 1);
    }
    return list;
}

SystemError LinuxFileSystem::removeExtendedAttribute(std::string_view path, std::string_view name) {
    const AttributePlace place(path, name);
    return place.error().isNone()
               ? errorOf([&] { return ::removexattr(place.path(), place.name()); })
               : place.error();
}

Result<Data> LinuxOpenFile::extendedAttribute(std::string_view name) {
    const std::string attribute(name);
    if (attribute.find('\0') != std::string::npos) {
        return SystemError(EINVAL);
    }
    return readWhole(Data(usualAttribute), [&](void* value, std::size_t size) {
        return ::fgetxattr(file_.number(), attribute.c_str(), value, size);
    });
}

SystemError LinuxOpenFile::setExtendedAttribute(std::string_view name, BytesView value) {
    const std::string attribute(name);
    if (attribute.find('\0') != std::string::npos) {
        return SystemError(EINVAL);
    }
    return errorOf([&] {
        return ::fsetxattr(file_.number(), attribute.c_str(), value.data(), value.size(), 0);
    });
}

} // namespace tav
