#pragma once

#include "platform/FileSystem.hpp"

#include <ctime>
#include <optional>

namespace tav {

/// What stands in the type bits of a `st_mode`.
FileKind kindOfMode(unsigned int mode);

/// `statx` with its flags: of a path that counts from the open folder (`AT_FDCWD` for the working
/// directory), or with `AT_EMPTY_PATH` and "" of the open file itself.
Result<FileAttributes> attributesAt(int folder, const char* path, int flags);

/// A date as the kernel wants it, to the nearest nanosecond; nothing for one that it cannot take.
std::optional<struct ::timespec> kernelTimeOf(Date date);

} // namespace tav
