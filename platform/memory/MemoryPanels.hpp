#pragma once

#include "platform/Panels.hpp"

#include <optional>
#include <string>
#include <vector>

namespace tav {

/// A person who has made up his mind.
class MemoryPanels final : public Panels {
  public:
    std::optional<std::string> choice;  ///< Nothing: the panel is cancelled.
    std::vector<PanelRequest> requests; ///< What was asked, in order.

    std::optional<std::string> choose(const PanelRequest& request) override {
        requests.push_back(request);
        return choice;
    }
};

} // namespace tav
