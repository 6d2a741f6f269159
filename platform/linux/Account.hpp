#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace tav::internal {

/// What the host knows of a user.
struct Account {
    std::string name;
    std::string home;
    std::string shell;
    std::uint32_t group = 0;
};

/// Nothing for a user without an account. May ask the network, where accounts come from there.
[[nodiscard]] std::optional<Account> accountOf(std::uint32_t user);

} // namespace tav::internal
