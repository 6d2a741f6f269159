#pragma once

#include "base/Image.hpp"

#include <memory>

namespace tav {

/// The icon of folders, "genericfolder" among the library's icons: one object for all who ask, read
/// at the first question and kept for the life of the process. Null when it cannot be read, which
/// the next question tries again. To be asked first on the main thread, as all icons.
[[nodiscard]] std::shared_ptr<Image> genericFolderIcon();

/// The icon of files that have none of their own, "genericfile"; likewise.
[[nodiscard]] std::shared_ptr<Image> genericFileIcon();

} // namespace tav
