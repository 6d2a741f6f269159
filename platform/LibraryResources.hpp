#pragma once

#include "base/Image.hpp"

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tav {

/// The folders that hold the files of the library itself (icons, translations), best first: those
/// of the resources of the main bundle, then the data folder of the installed library. A program
/// that was built and not installed has the source tree's besides. The environment has no say.
/// Found once. Files are read from the host, whatever stands in for its file system. Any thread.
[[nodiscard]] const std::vector<std::string>& libraryResourceFolders();

/// The path of the file `name.type` in the first of these folders that has it; nothing where none
/// has. The name may have folders ("icons/genericfile"), but not "..".
[[nodiscard]] std::optional<std::string> libraryResource(std::string_view name,
                                                         std::string_view type);

/// The picture in the resource `name.png`, read anew each time; null when there is none, or it
/// cannot be read.
[[nodiscard]] std::shared_ptr<Image> libraryImage(std::string_view name);

namespace internal {

/// The folders of a program. `buildFolder` is where programs lie that were not installed.
[[nodiscard]] std::vector<std::string> resourceFolders(std::optional<std::string> executable,
                                                       std::string_view installedFolder,
                                                       std::string_view sourceFolder,
                                                       std::string_view buildFolder);

[[nodiscard]] std::optional<std::string> resourceIn(std::span<const std::string> folders,
                                                    std::string_view name, std::string_view type);

} // namespace internal
} // namespace tav
