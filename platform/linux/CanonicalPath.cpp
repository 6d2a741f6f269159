#include "platform/linux/CanonicalPath.hpp"

#include "platform/linux/Descriptor.hpp"
#include "platform/linux/FileCalls.hpp"

#include <cstdlib>
#include <memory>

#include <fcntl.h>
#include <unistd.h>

namespace tav {

namespace {

constexpr int mostLinks = 40;

/// A walk from the root along names, with the folder that was reached held open.
class Walk {
  public:
    SystemError begin() {
        path_.clear();
        return enter("/");
    }
    SystemError goUp() {
        path_.resize(path_.empty() ? 0 : path_.rfind('/'));
        return enter("..");
    }
    SystemError goInto(const std::string& name) {
        append(name);
        return enter(name.c_str());
    }
    void append(std::string_view name) {
        path_ += '/';
        path_ += name;
    }
    [[nodiscard]] int folder() const { return folder_.isOpen() ? folder_.number() : AT_FDCWD; }
    [[nodiscard]] std::string path() && { return path_.empty() ? "/" : std::move(path_); }

  private:
    SystemError enter(const char* name) {
        auto next = Descriptor::open(folder(), name, O_PATH | O_DIRECTORY | O_NOFOLLOW, 0);
        if (!next.ok()) {
            return next.error();
        }
        folder_ = std::move(next).value();
        return {};
    }

    std::string path_; ///< Empty for the root.
    Descriptor folder_;
};

/// An absolute path for one that counts from the working directory.
Result<std::string> absolutePath(std::string_view path) {
    if (path.starts_with('/')) {
        return std::string(path);
    }
    // Of any length: the C library walks up where the kernel refuses.
    const std::unique_ptr<char, decltype(&std::free)> folder(::getcwd(nullptr, 0), &std::free);
    if (folder == nullptr) {
        return SystemError(errno);
    }
    return std::string(folder.get()) + "/" + std::string(path);
}

} // namespace

Result<std::string> canonicalLongPath(std::string_view path) {
    auto absolute = absolutePath(path);
    if (!absolute.ok()) {
        return absolute;
    }
    std::string rest = std::move(absolute).value();
    Walk walk;
    SystemError error = walk.begin();
    int links = 0;
    std::size_t end = 0;
    while (error.isNone()) {
        const std::size_t begin = rest.find_first_not_of('/', end);
        if (begin == std::string::npos) {
            return std::move(walk).path();
        }
        end = std::min(rest.find('/', begin), rest.size());
        const std::string name = rest.substr(begin, end - begin);
        if (name == "." || name == "..") {
            error = name == ".." ? walk.goUp() : SystemError();
            continue;
        }
        const auto target = linkTargetAt(walk.folder(), name.c_str());
        if (target.ok()) {
            if (++links > mostLinks) {
                return SystemError(ELOOP);
            }
            rest = target.value() + rest.substr(end);
            end = 0;
            error = rest.starts_with('/') ? walk.begin() : SystemError();
        } else if (target.error() != SystemError(EINVAL)) {
            error = target.error(); // EINVAL: there is something, and no link
        } else if (end == rest.size()) {
            walk.append(name);
        } else {
            error = walk.goInto(name);
        }
    }
    return error;
}

} // namespace tav
