#pragma once

#include "base/Result.hpp"

#include <string_view>

namespace tav::internal {

/// Makes what a stranger's archive became safe to be read: takes away what is neither file, folder
/// nor link, and every link that leads out of the folder.
///
/// A link leads out when its text is an absolute path, or when on the way that it tells, step by
/// step and through other links, some ".." goes above the folder. It is also taken to lead out
/// when it cannot be told where a ".." goes, behind a name that is no folder: nothing is lost, it
/// leads nowhere. Links to what is missing and links in circles stay otherwise.
///
/// Everything is judged before anything is removed. Stops at the first failure: EACCES where a
/// folder may not be read or changed, ENOTDIR for a link in the folder's place, behind which lies
/// somebody else's. Memory is in proportion to what is there, and time nearly so.
SystemError cleanUnpackedFolder(std::string_view path);

} // namespace tav::internal
