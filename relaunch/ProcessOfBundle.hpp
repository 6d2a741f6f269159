#pragma once

#include "platform/Bundle.hpp"
#include "platform/BundleIdentifiers.hpp"
#include "process/ZoProcess.hpp"

#include <optional>
#include <string_view>

namespace tav {

/// The application bundle that owns an executable: the path itself where that is a folder,
/// otherwise the folder around `Contents/MacOS/` (names ignoring case) that the executable lies in.
[[nodiscard]] std::optional<Bundle> bundleForExecutablePath(std::string_view path);

/// The first running process, over all users, whose application bundle has exactly this identifier.
///
/// The answer is that of a plain walk that takes each process's executable, the bundle that owns
/// it and the bundle's identifier; `identifiers` remembers lists that have not changed since.
[[nodiscard]] std::optional<ZoProcess> processWithIdentifier(std::string_view identifier,
                                                             BundleIdentifiers& identifiers);

} // namespace tav
