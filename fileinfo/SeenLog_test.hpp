#pragma once

#include "log/LogFacility.hpp"
#include "platform/memory/MemorySystemLog.hpp"

#include <string>
#include <vector>

namespace tav {

/// What the library logs while this lives, the verbose lines included: without a handler it goes to
/// the system's log, which a test can read.
class SeenLog {
  public:
    SeenLog() { gLogEnable[4] = true; }
    ~SeenLog() { gLogEnable[4] = wasVerbose_; }
    SeenLog(const SeenLog&) = delete;
    SeenLog& operator=(const SeenLog&) = delete;

    [[nodiscard]] std::vector<std::string> lines() { return log_.lines(); }

  private:
    bool wasVerbose_ = gLogEnable[4];
    MemorySystemLog log_;
    SystemLog::Replacement replacement_{log_};
};

} // namespace tav
