#pragma once

#include "base/Status.hpp"
#include "platform/DesktopSession.hpp"
#include "platform/linux/Deadline.hpp"

#include <functional>
#include <string>
#include <vector>

/// What child processes need to act in a desktop session that is not the caller's.
namespace tav::internal {

/// Makes the calling process the session's user for good: groups, then the identifiers, then the
/// environment. Nothing to do for the caller's own session. After a failure the process must end:
/// it is neither one user nor the other. Only for a process with one thread.
Status enterSession(const DesktopSession& session);

/// Runs a function in a child process inside the session, and answers its status. A child that has
/// not answered by the deadline is killed (`ETIMEDOUT`).
Status runInSession(const DesktopSession& session, const Deadline& deadline,
                    const std::function<Status()>& function);

/// Default dispositions for all signals, and none blocked.
void resetSignals();

/// Puts a list of "NAME=value" in the place of the calling process's environment.
void replaceEnvironment(const std::vector<std::string>& variables);

} // namespace tav::internal
