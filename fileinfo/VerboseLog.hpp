#pragma once

#include "log/LogFacility.hpp"

namespace tav::internal {

/// The type of records that tell what went on; off unless somebody switches it on.
inline constexpr int verboseLogType = 4;

/// `Log_`, but only when the verbose type is on: an ordinary record then. Nothing is formatted
/// otherwise; what the arguments themselves cost is the caller's.
template <class... Arguments>
void logVerbose(const char* form, const Arguments&... arguments) {
    if (LogIsEnabled(verboseLogType)) {
        Log_(form, arguments...);
    }
}

} // namespace tav::internal
