#pragma once

#include "platform/FileSystem.hpp"
#include "platform/linux/Descriptor.hpp"

#include <cstdint>
#include <memory>
#include <string>

namespace tav {

// What the file system and an open folder ask of the kernel alike. Paths count from the open
// folder, or from the working directory for `AT_FDCWD`.

/// The twelve bits of `chmod`: the others of a mode are not the caller's.
inline constexpr std::uint32_t permissionBits = 07777;

/// A call's answer 0 or -1 with `errno`, as an error.
template <class Call>
SystemError errorOf(Call call) {
    return retryInterrupted(call) < 0 ? SystemError(errno) : SystemError();
}

/// The text of a link.
Result<std::string> linkTargetAt(int folder, const char* path);

/// Opens what may turn out to be a pipe or a device without waiting for its other end.
Result<Descriptor> openWithoutWaiting(int folder, const char* path, int flags, std::uint32_t mode);

/// Whether the open file may be read or written as a file. Its size, too.
Result<std::uint64_t> sizeOfRegularFile(const Descriptor& file);

/// As `FileSystem::open`.
Result<std::unique_ptr<OpenFile>> openFileAt(int folder, const char* path,
                                             const OpenOptions& options);

/// Opens a folder for listing; `O_NOFOLLOW` among the flags refuses a link.
Result<Descriptor> openFolderAt(int folder, const char* path, int flags = 0);

} // namespace tav
