#pragma once

#include "platform/FileSystem.hpp"

#include <string_view>

namespace tav::internal {

/// The names in a folder (through links); none when it cannot be read.
[[nodiscard]] FolderListing namesIn(std::string_view path);

} // namespace tav::internal
