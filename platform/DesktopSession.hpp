#pragma once

#include "platform/Seam.hpp"

#include <cstdint>
#include <string>
#include <vector>

namespace tav {

class DesktopSessions;

namespace internal {
/// The sessions of the host's users (platform/linux).
DesktopSessions& realDesktopSessions();
} // namespace internal

/// On whose desktop something is asked or started: the user, with that user's groups and
/// environment (session bus, display, language). A value, complete when it is made: the process
/// that it was taken from may end meanwhile.
struct DesktopSession {
    /// The caller's own user and environment; then nothing else here has a meaning.
    bool isOwn = true;

    std::uint32_t user = 0;
    std::uint32_t group = 0;
    std::vector<std::uint32_t> groups;    ///< Supplementary; those of an account include `group`.
    std::vector<std::string> environment; ///< "NAME=value" each, complete.

    friend bool operator==(const DesktopSession&, const DesktopSession&) = default;
};

/// The seam that finds the desktop session to act in. An ordinary user has no choice and always
/// gets his own; root acts for the user whose desktop it is.
class DesktopSessions : public Seam<DesktopSessions, internal::realDesktopSessions> {
  public:
    virtual ~DesktopSessions() = default;

    /// The session of the user who owns a running process, with the environment of that process.
    virtual DesktopSession sessionOfProcess(int process) = 0;

    /// The session behind an installation that runs as root: that of the user who became root by
    /// `SUDO_UID` or `PKEXEC_UID`. The caller's own when there is none.
    virtual DesktopSession sessionOfInstaller() = 0;
};

} // namespace tav
