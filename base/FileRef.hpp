#pragma once

#include <cstdint>
#include <string>

namespace tav {

/// What names a file beyond its path: the numbers that its file system knows it by, and where it
/// was seen last. Equal references are the same file, whatever has become of its path. A value;
/// nothing is held open.
struct FileRef {
    std::uint64_t device = 0;
    std::uint64_t number = 0;
    std::int64_t birthNanoseconds = 0; ///< Since 1970; 0 where the file system keeps none.
    std::uint64_t mount = 0;           ///< Of the volume; 0 when it is not known.
    std::string path;                  ///< Where the file was last seen.

    /// Whether it names no file at all.
    [[nodiscard]] bool isZero() const { return device == 0 && number == 0; }
    friend bool operator==(const FileRef& a, const FileRef& b) {
        return a.device == b.device && a.number == b.number &&
               a.birthNanoseconds == b.birthNanoseconds;
    }
};

} // namespace tav
