#include "platform/linux/KernelPath.hpp"

namespace tav {

namespace {

// Of what remains of a long path: leaves room for "/proc/self/fd/..." before it.
constexpr std::size_t longestRest = PATH_MAX - 64;

} // namespace

void KernelPath::walk(std::string_view path) {
    // Many slashes at the end say what one says; with one the last piece always has a name.
    while (path.ends_with("//")) {
        path.remove_suffix(1);
    }
    while (path.size() >= longestRest) {
        const std::size_t slash = path.rfind('/', longestRest - 2);
        if (slash == std::string_view::npos) {
            error_ = SystemError(ENAMETOOLONG);
            return;
        }
        *std::copy_n(path.begin(), slash + 1, text_.begin()) = '\0';
        // The slash at its end lets links be followed, as they are on the way of any path.
        auto next = Descriptor::open(folder(), text(), O_PATH | O_DIRECTORY, 0);
        if (!next.ok()) {
            error_ = next.error();
            return;
        }
        folder_ = std::move(next).value();
        path.remove_prefix(path.find_first_not_of('/', slash));
    }
    *std::copy(path.begin(), path.end(), text_.begin()) = '\0';
}

} // namespace tav
