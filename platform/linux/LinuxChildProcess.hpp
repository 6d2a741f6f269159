#pragma once

#include "platform/ChildProcess.hpp"

namespace tav {

/// Programs of the host as child processes.
class LinuxChildProcess final : public ChildProcess {
  public:
    Result<ChildEnd> run(const ChildRequest& request) override;
};

} // namespace tav
