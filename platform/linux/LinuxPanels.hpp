#pragma once

#include "platform/Panels.hpp"
#include "platform/linux/FileChooserPortal.hpp"

namespace tav {

/// The panels of the desktop portal; where there is none, those of the program `zenity`; where
/// neither is, none.
class LinuxPanels final : public Panels {
  public:
    explicit LinuxPanels(internal::PortalPatience patience = {}) : patience_(patience) {}

    std::optional<std::string> choose(const PanelRequest& request) override;

  private:
    internal::PortalPatience patience_;
};

} // namespace tav
