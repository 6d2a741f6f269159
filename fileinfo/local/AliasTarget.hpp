#pragma once

#include "base/FileRef.hpp"
#include "fileinfo/local/FollowedPath.hpp"
#include "platform/FileSystem.hpp"

#include <optional>
#include <string>
#include <string_view>

namespace tav::internal {

/// What an alias leads to.
struct AliasTarget {
    FileRef reference; ///< With the absolute path without links.
    bool isFolder = false;
};

[[nodiscard]] FileRef referenceOf(const FileNumbers& file, std::string_view path);

/// Where the link at a path leads to. `target` is what the file system answered for it.
[[nodiscard]] Result<AliasTarget> aliasTargetAt(const std::string& path,
                                                const Result<FileAttributes>& target);

/// The path with every alias on the way resolved, one component at a time; nothing for the empty
/// path and when a component does not exist.
[[nodiscard]] std::optional<std::string> resolvedPathOf(std::string_view path);

} // namespace tav::internal
