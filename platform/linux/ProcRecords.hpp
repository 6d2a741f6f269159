#pragma once

#include "platform/ProcessTable.hpp"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

/// Readers of the texts that the kernel shows in /proc/PID, pure functions of the bytes. They
/// answer nothing for bytes that do not have the form.
namespace tav::internal {

/// The one line of /proc/PID/stat.
struct StatRecord {
    ProcessRecord process;
    /// A thread that is not the process itself: its number opens in /proc, though no listing shows
    /// it.
    bool isThread = false;
    bool isDead = false;
    /// Where the process's memory holds the number of its arguments; 0 for a caller who may not
    /// know.
    std::uint64_t stackStart = 0;
};

/// The short name stands between the first "(" and the last ")": it may hold both, and line feeds.
[[nodiscard]] std::optional<StatRecord> parseProcStat(std::string_view text);

/// The real and effective user of /proc/PID/status; nothing for a thread, too.
[[nodiscard]] std::optional<ProcessUsers> parseProcStatusUsers(std::string_view text);

/// The real group and the supplementary ones of /proc/PID/status.
struct StatusGroups {
    std::uint32_t real = 0;
    std::vector<std::uint32_t> supplementary;
};
[[nodiscard]] std::optional<StatusGroups> parseProcStatusGroups(std::string_view text);

/// How many arguments the texts of /proc/PID/cmdline are. `declared` is the number that the process
/// was started with (0 when that is not known); it stands as long as the texts are as many. Behind
/// a title that the process has written over its arguments the rest is padding, so empty texts at
/// the end do not count then.
[[nodiscard]] std::int32_t countArguments(std::string_view arguments, std::int64_t declared);

} // namespace tav::internal
