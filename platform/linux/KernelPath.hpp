#pragma once

#include "base/Result.hpp"
#include "platform/linux/Descriptor.hpp"

#include <algorithm>
#include <array>
#include <climits>
#include <string_view>

namespace tav {

/// A path as the kernel's calls of the "at" family want it: a text that ends in a NUL and the
/// folder that it counts from, or why there can be none.
///
/// The kernel takes 4095 bytes at once. The way of a longer path is walked piece by piece, and what
/// remains counts from the folder that was reached; at most two descriptors are open at a time, and
/// one for as long as this lives. The forty links that the kernel follows are forty a piece then.
class KernelPath {
  public:
    explicit KernelPath(std::string_view path) {
        if (path.find('\0') != std::string_view::npos) {
            error_ = SystemError(EINVAL);
        } else if (path.size() >= text_.size()) {
            walk(path);
        } else {
            *std::copy(path.begin(), path.end(), text_.begin()) = '\0';
        }
    }

    [[nodiscard]] bool ok() const { return error_.isNone(); }
    [[nodiscard]] SystemError error() const { return error_; }
    /// Only when `ok()`: the open folder, or `AT_FDCWD` for an ordinary path.
    [[nodiscard]] int folder() const { return folder_.isOpen() ? folder_.number() : AT_FDCWD; }
    /// Only when `ok()`: what counts from the folder.
    [[nodiscard]] const char* text() const { return text_.data(); }

  private:
    void walk(std::string_view path);

    SystemError error_;
    Descriptor folder_;
    std::array<char, PATH_MAX> text_;
};

} // namespace tav
