#pragma once

namespace tav {

/// Enters the items of the local file system, and those that they build on, among the classes that
/// keyed archives may hold. Calling it again changes nothing. Any thread.
void registerArchivedLocalFileInfos();

} // namespace tav
