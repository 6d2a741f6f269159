#pragma once

#include "platform/DesktopSession.hpp"
#include "platform/Seam.hpp"

#include <string_view>

namespace tav {

class Workspace;

namespace internal {
/// The host's launch service (platform/linux).
Workspace& realWorkspace();
} // namespace internal

/// The seam that starts applications. Starting forks: not to be done while another thread of the
/// process holds a lock that the child would need.
class Workspace : public Seam<Workspace, internal::realWorkspace> {
  public:
    virtual ~Workspace() = default;

    /// Starts the application whose bundle lies at a path, in a session's name, and returns at
    /// once.
    ///
    /// The application outlives the caller: it has a session of its own, standard streams on
    /// /dev/null, no other descriptors, default signal dispositions and "/" as working directory. A
    /// detached child waits first for the old instance to be gone: for the processes of that user
    /// that run from the same bundle now, and for the bus name that is the bundle's identifier; at
    /// most 10 seconds, then it goes on regardless.
    ///
    /// False when the bundle has no executable file; what goes wrong in the child is not known.
    virtual bool launchApplication(std::string_view path, const DesktopSession& session) = 0;
};

} // namespace tav
