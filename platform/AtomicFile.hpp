#pragma once

#include "base/Data.hpp"
#include "base/Result.hpp"

#include <cstdint>
#include <string_view>

namespace tav {

/// Puts a file with this content at a path, whole or not at all: whoever reads finds the old
/// content or the new, also after the process or the machine has stopped at any moment.
///
/// The content goes to a sibling with a name of its own, which is synced and takes the path's name;
/// then the folder is synced. A link at the path is followed, so that it stays; the permissions of
/// a file that is replaced are kept, a new one gets `permissions`. After a failure the sibling is
/// gone and the old file stands. One way for every file that must not be torn.
SystemError writeFileAtomically(std::string_view path, BytesView content,
                                std::uint32_t permissions = 0666);

} // namespace tav
