// Built where the headers of the bus library were missing: there is no bus to be reached.

#include "platform/linux/SessionBus.hpp"

#include <cerrno>

namespace tav::internal {

Status checkBusName(const std::string& /*name*/) { return statusFromErrorNumber(ENOSYS); }

Status openSessionBus(const Deadline& /*deadline*/, std::unique_ptr<SessionBus>& /*outBus*/) {
    return statusFromErrorNumber(ENOSYS);
}

} // namespace tav::internal
