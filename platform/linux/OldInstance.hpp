#pragma once

#include "platform/linux/Deadline.hpp"
#include "platform/linux/Descriptor.hpp"

#include <string>
#include <string_view>
#include <vector>

namespace tav::internal {

class LinuxProcessTable;

/// The processes of a user that run from the bundle at a canonical path (an executable in its
/// `Contents/MacOS`), each held by a descriptor that becomes readable when the process ends. The
/// caller itself is never among them.
[[nodiscard]] std::vector<Descriptor>
holdProcessesOfBundle(LinuxProcessTable& table, std::string_view bundlePath, std::uint32_t user);

/// Waits until all of them have ended, or the deadline has passed.
void waitForEnd(const std::vector<Descriptor>& processes, const Deadline& deadline);

/// Waits until nobody owns the name on the session bus, or there is no bus, or the deadline has
/// passed.
void waitForFreeName(const std::string& name, const Deadline& deadline);

} // namespace tav::internal
