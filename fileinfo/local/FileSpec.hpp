#pragma once

#include "base/FileRef.hpp"

#include <string>

namespace tav {

/// Names a file by the folder that it lies in and its name there; the file need not exist. The root
/// of the file system is the folder "/" with the empty name. A value.
struct FileSpec {
    FileRef folder;
    std::string name;

    /// Whether it names no file at all.
    [[nodiscard]] bool isZero() const { return folder.isZero(); }
    friend bool operator==(const FileSpec&, const FileSpec&) = default;
};

} // namespace tav
