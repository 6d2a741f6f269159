#pragma once

#include <cstdint>
#include <string>

#include <sys/stat.h>

namespace tav {

/// How many bytes of the medium a file takes; holes take none, and so does what is not there.
[[nodiscard]] inline std::uint64_t spaceUsedBy(const std::string& path) {
    struct ::stat status {};
    return ::stat(path.c_str(), &status) == 0 ? static_cast<std::uint64_t>(status.st_blocks) * 512
                                              : 0;
}

} // namespace tav
