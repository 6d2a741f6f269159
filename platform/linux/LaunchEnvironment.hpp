#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tav::internal {

/// Whether a variable ("NAME=value") belongs to the installer that runs us, not to the user's
/// session: an application must not get it (preloaded libraries, the package manager's and the
/// service manager's own, the folder that the installer stood in).
[[nodiscard]] bool belongsToInstaller(std::string_view variable);

/// The environment that an application is started with, from that of a session. The first of
/// several variables with one name holds.
[[nodiscard]] std::vector<std::string> launchEnvironment(std::vector<std::string> variables);

/// The calling process's own environment.
[[nodiscard]] std::vector<std::string> currentEnvironment();

} // namespace tav::internal
