#include "platform/linux/Account.hpp"

#include <cerrno>
#include <vector>

#include <pwd.h>

namespace tav::internal {

std::optional<Account> accountOf(std::uint32_t user) {
    ::passwd entry;
    ::passwd* found = nullptr;
    std::vector<char> buffer(16384);
    int error = 0;
    while ((error = ::getpwuid_r(user, &entry, buffer.data(), buffer.size(), &found)) == ERANGE &&
           buffer.size() < (1U << 20U)) {
        buffer.resize(buffer.size() * 2);
    }
    if (error != 0 || found == nullptr) {
        return std::nullopt;
    }
    return Account{entry.pw_name, entry.pw_dir, entry.pw_shell, entry.pw_gid};
}

} // namespace tav::internal
