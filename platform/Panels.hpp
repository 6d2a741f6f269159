#pragma once

#include "platform/Seam.hpp"

#include <optional>
#include <string>

namespace tav {

/// What a person is asked to choose.
struct PanelRequest {
    bool folders = false;             ///< Folders only; otherwise files only.
    std::string prompt;               ///< On the button that chooses; empty: the panel's own text.
    std::optional<std::string> title; ///< Of the panel; nothing: the panel's own.
    /// An absolute path; anything else leaves it to the panel.
    std::string startFolder;
};

class Panels;

namespace internal {
/// The panels of the desktop (platform/linux).
Panels& realPanels();
} // namespace internal

/// The seam to the panels in which a person chooses one file or one folder.
class Panels : public Seam<Panels, internal::realPanels> {
  public:
    virtual ~Panels() = default;

    /// Shows a panel and waits, however long the person takes. The bytes of the absolute path that
    /// was chosen, which may be a link; nothing when nothing was chosen or no panel can be shown.
    [[nodiscard]] virtual std::optional<std::string> choose(const PanelRequest& request) = 0;
};

} // namespace tav
