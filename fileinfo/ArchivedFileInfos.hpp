#pragma once

namespace tav {

/// Enters the item classes of this room among those that keyed archives may hold. Called by the
/// room's own coding operations; calling it again changes nothing. Any thread.
void registerArchivedFileInfos();

} // namespace tav
