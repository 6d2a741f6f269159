#pragma once

#include "platform/ChildProcess.hpp"

#include <functional>
#include <vector>

namespace tav {

/// Runs no program: notes what was asked and does what the test has in mind.
class MemoryChildProcess final : public ChildProcess {
  public:
    std::vector<ChildRequest> requests; ///< What was asked, in order.
    /// What the program does; without, it ends at once with the status 0.
    std::function<Result<ChildEnd>(const ChildRequest&)> program;

    Result<ChildEnd> run(const ChildRequest& request) override {
        requests.push_back(request);
        return program ? program(request) : ChildEnd();
    }
};

} // namespace tav
