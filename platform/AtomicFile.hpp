#pragma once

#include "base/Data.hpp"
#include "base/Result.hpp"

#include <cstdint>
#include <memory>
#include <string_view>

namespace tav {

class OpenFile;

/// Puts a file with this content at a path, whole or not at all: whoever reads finds the old
/// content or the new, also after the process or the machine has stopped at any moment. One way for
/// every file that must not be torn. Works on `FileSystem::current()`; may be called from any
/// thread, and of two calls for one path one wins.
///
/// The content goes to a sibling with a name of its own (".name.0123456789abcdef.new"), which is
/// synced and takes the path's name; then the folder is synced, where that is possible. A link
/// at the path is followed, so that it stays; one that leads to where nothing stands makes the file
/// there. The permissions of a file that is replaced are kept exactly, a new one gets
/// `permissions`, less the process's mask. Not kept: its owner and group (it becomes the caller's),
/// access lists and other extras, and its other names (hard links keep the old content).
///
/// EISDIR for a folder, EINVAL for anything else that is no file, ELOOP beyond forty links. After a
/// failure the sibling is gone and the old file stands; only when the very last step, the sync of
/// the folder, fails, the new content is there, but may not survive a loss of power. A process that
/// is killed may leave the sibling behind.
SystemError writeFileAtomically(std::string_view path, BytesView content,
                                std::uint32_t permissions = 0666);

/// What a file that is put in place has to come through: the end of the process at any moment, or
/// that of the machine, too, for which it has to be waited until everything is on the medium.
enum class Surviving : bool { EndOfProcess, LossOfPower };

/// The same, and answers the new file, open for reading and appending: for whoever holds the old
/// one open and goes on with the new. The file is answered, too, when the folder cannot be synced.
[[nodiscard]] Result<std::unique_ptr<OpenFile>>
replaceFileAtomically(std::string_view path, BytesView content, Surviving surviving,
                      std::uint32_t permissions = 0666);

} // namespace tav
