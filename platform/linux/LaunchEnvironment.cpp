#include "platform/linux/LaunchEnvironment.hpp"

#include <algorithm>
#include <array>
#include <functional>
#include <set>

#include <unistd.h>

namespace tav::internal {

bool belongsToInstaller(std::string_view variable) {
    constexpr std::array<std::string_view, 3> prefixes = {"DEBIAN_", "DPKG_", "DEBCONF_"};
    constexpr std::array<std::string_view, 14> names = {"LD_PRELOAD=",
                                                        "LD_LIBRARY_PATH=",
                                                        "LD_AUDIT=",
                                                        "NOTIFY_SOCKET=",
                                                        "LISTEN_FDS=",
                                                        "LISTEN_PID=",
                                                        "LISTEN_FDNAMES=",
                                                        "INVOCATION_ID=",
                                                        "JOURNAL_STREAM=",
                                                        "MAINPID=",
                                                        "DBUS_STARTER_ADDRESS=",
                                                        "DBUS_STARTER_BUS_TYPE=",
                                                        "PWD=",
                                                        "OLDPWD="};
    const auto begins = [variable](std::string_view beginning) {
        return variable.starts_with(beginning);
    };
    return std::any_of(prefixes.begin(), prefixes.end(), begins) ||
           std::any_of(names.begin(), names.end(), begins);
}

std::vector<std::string> launchEnvironment(std::vector<std::string> variables) {
    std::set<std::string, std::less<>> names;
    std::erase_if(variables, [&names](const std::string& variable) {
        return belongsToInstaller(variable) ||
               !names.insert(variable.substr(0, variable.find('='))).second;
    });
    return variables;
}

std::vector<std::string> currentEnvironment() {
    std::vector<std::string> variables;
    for (char** entry = ::environ; entry != nullptr && *entry != nullptr; ++entry) {
        variables.emplace_back(*entry);
    }
    return variables;
}

} // namespace tav::internal
