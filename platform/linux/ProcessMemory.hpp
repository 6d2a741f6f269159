#pragma once

#include "platform/linux/ProcRecords.hpp"

#include <cstdint>
#include <optional>
#include <string_view>

namespace tav::internal {

/// The number of arguments that a process was started with, from where its stack begins: what the
/// files in /proc do not tell. Nothing when the kernel refuses, as it does to other users.
[[nodiscard]] std::optional<std::int64_t> declaredArgumentCount(const StatRecord& record);

} // namespace tav::internal
