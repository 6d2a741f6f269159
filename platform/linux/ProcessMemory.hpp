#pragma once

#include "platform/linux/ProcRecords.hpp"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tav::internal {

/// Arguments and environment of a process, as they lie in its memory.
struct StartTexts {
    std::string bytes; ///< Both, the arguments first.
    std::size_t argumentsSize = 0;
    std::int64_t declaredCount = 0; ///< The number of arguments that the process was started with.

    [[nodiscard]] std::string_view arguments() const {
        return std::string_view(bytes).substr(0, argumentsSize);
    }
    [[nodiscard]] std::string_view environment() const {
        return std::string_view(bytes).substr(argumentsSize);
    }
};

/// Reads both with one system call, at the places that the process's record names: half the cost
/// of the two files in /proc. Nothing when the kernel refuses (it asks for more here than for the
/// files), or when the process has written a title over its arguments: then the files tell.
[[nodiscard]] std::optional<StartTexts> readStartTexts(const StatRecord& record);

} // namespace tav::internal
