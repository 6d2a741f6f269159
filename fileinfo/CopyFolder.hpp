#pragma once

#include "fileinfo/TavBaseFileInfo.hpp"

#include <optional>

namespace tav::internal {

/// The folder that a copy by name goes to: the destination itself, or the one that it lies in as a
/// file, which may be null. Nothing when it is neither.
[[nodiscard]] inline std::optional<FileInfoPtr> folderToCopyInto(TavBaseFileInfo& destination) {
    if (destination.isFolder()) {
        return destination.shared_from_this();
    }
    return destination.isFile() ? std::optional(destination.parentFolder()) : std::nullopt;
}

} // namespace tav::internal
