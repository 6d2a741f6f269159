#pragma once

#include "platform/Panels.hpp"

#include <chrono>
#include <optional>
#include <string>

namespace tav::internal {

/// How long the portal may take for what takes no person's time.
struct PortalPatience {
    std::chrono::milliseconds connect{2'000}; ///< To reach the bus.
    /// For the answer that a panel is being shown. The portal may have to be started for it.
    std::chrono::milliseconds reply{25'000};
};

/// What became of a request to the portal.
struct PortalAnswer {
    bool isShown = false;           ///< There is a portal that shows panels.
    std::optional<std::string> url; ///< The first that was chosen, as the portal wrote it.
};

/// Has the desktop portal show a panel (`OpenFile` of `org.freedesktop.portal.FileChooser`) and
/// waits for what becomes of it: without an end while the portal is on the bus, no longer than the
/// connection or the portal lives.
///
/// Not shown where there is no bus, no portal, or one without panels. A portal that does not reply
/// in time, or says what cannot be understood, has shown one in which nothing was chosen.
[[nodiscard]] PortalAnswer chooseThroughPortal(const PanelRequest& request,
                                               const PortalPatience& patience);

} // namespace tav::internal
