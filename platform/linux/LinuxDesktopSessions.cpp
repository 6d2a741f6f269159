#include "platform/DesktopSession.hpp"
#include "platform/linux/Account.hpp"
#include "platform/linux/LinuxProcessTable.hpp"
#include "platform/linux/ProcRecords.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdlib>
#include <optional>
#include <string_view>

#include <grp.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tav::internal {
namespace {

std::vector<std::uint32_t> groupsOf(const Account& account) {
    std::vector<::gid_t> groups(64);
    auto count = static_cast<int>(groups.size());
    while (::getgrouplist(account.name.c_str(), account.group, groups.data(), &count) < 0) {
        groups.resize(std::max(static_cast<std::size_t>(count), groups.size() * 2));
        count = static_cast<int>(groups.size());
    }
    groups.resize(static_cast<std::size_t>(count));
    return {groups.begin(), groups.end()};
}

bool hasVariable(const std::vector<std::string>& environment, std::string_view name) {
    return std::any_of(environment.begin(), environment.end(), [name](const std::string& entry) {
        return entry.size() > name.size() && entry.starts_with(name) && entry[name.size()] == '=';
    });
}

void addMissing(std::vector<std::string>& environment, std::string_view name,
                std::string_view value) {
    if (!hasVariable(environment, name)) {
        environment.push_back(std::string(name) + "=" + std::string(value));
    }
}

/// What every program of a user may rely on, and where the user's session bus is by convention.
void complete(DesktopSession& session, const std::optional<Account>& account) {
    std::vector<std::string>& environment = session.environment;
    if (account) {
        addMissing(environment, "HOME", account->home);
        addMissing(environment, "USER", account->name);
        addMissing(environment, "LOGNAME", account->name);
        addMissing(environment, "SHELL", account->shell);
    }
    addMissing(environment, "PATH", "/usr/local/bin:/usr/bin:/bin");
    const std::string runtime = "/run/user/" + std::to_string(session.user);
    addMissing(environment, "XDG_RUNTIME_DIR", runtime);
    addMissing(environment, "DBUS_SESSION_BUS_ADDRESS", "unix:path=" + runtime + "/bus");
}

std::vector<std::string> splitTexts(std::string_view texts) {
    std::vector<std::string> parts;
    while (!texts.empty()) {
        const std::size_t length = std::min(texts.find('\0'), texts.size());
        if (length > 0) {
            parts.emplace_back(texts.substr(0, length));
        }
        texts.remove_prefix(std::min(length + 1, texts.size()));
    }
    return parts;
}

std::optional<std::uint32_t> identifierIn(const char* variable) {
    const char* const text = std::getenv(variable);
    const std::string_view digits = text != nullptr ? text : "";
    std::uint32_t identifier = 0;
    const auto [end, error] =
        std::from_chars(digits.data(), digits.data() + digits.size(), identifier);
    if (error != std::errc() || end != digits.data() + digits.size() || identifier == 0) {
        return std::nullopt;
    }
    return identifier;
}

/// The installer's variables that speak of the desktop it was started from.
bool isDesktopVariable(std::string_view entry) {
    constexpr std::array<std::string_view, 12> names = {"DISPLAY=",          "WAYLAND_DISPLAY=",
                                                        "XAUTHORITY=",       "LANG=",
                                                        "LANGUAGE=",         "TZ=",
                                                        "XDG_SESSION_TYPE=", "XDG_CURRENT_DESKTOP=",
                                                        "XDG_SESSION_ID=",   "XDG_SESSION_DESKTOP=",
                                                        "DESKTOP_SESSION=",  "XDG_SEAT="};
    return entry.starts_with("LC_") ||
           std::any_of(names.begin(), names.end(),
                       [entry](std::string_view name) { return entry.starts_with(name); });
}

std::string_view nameOf(std::string_view entry) { return entry.substr(0, entry.find('=')); }

/// Fills in what is missing of the desktop from a process that the user runs there: whoever became
/// root by another way than sudo has none of it left.
void completeFromDesktop(DesktopSession& session) {
    const auto isGraphical = [](const std::vector<std::string>& environment) {
        return hasVariable(environment, "DISPLAY") || hasVariable(environment, "WAYLAND_DISPLAY");
    };
    if (isGraphical(session.environment)) {
        return;
    }
    LinuxProcessTable& table = linuxProcessTable();
    for (const int process :
         table.processes(ProcessSelector::RealUser, static_cast<int>(session.user))
             .value_or(std::vector<int>())) {
        const std::optional<Data> texts = table.environment(process);
        const std::vector<std::string> theirs =
            texts ? splitTexts(textOf(*texts)) : std::vector<std::string>();
        if (!isGraphical(theirs)) {
            continue;
        }
        for (const std::string& entry : theirs) {
            if ((isDesktopVariable(entry) || entry.starts_with("XDG_") ||
                 entry.starts_with("DBUS_SESSION_BUS_ADDRESS=")) &&
                !hasVariable(session.environment, nameOf(entry))) {
                session.environment.push_back(entry);
            }
        }
        return;
    }
}

class LinuxDesktopSessions final : public DesktopSessions {
  public:
    DesktopSession sessionOfProcess(int process) override {
        if (::geteuid() != 0) {
            return {};
        }
        LinuxProcessTable& table = linuxProcessTable();
        const std::optional<ProcessUsers> users = table.users(process);
        if (!users) {
            return sessionOfInstaller();
        }
        if (users->real == ::geteuid()) {
            return {};
        }
        DesktopSession session;
        session.isOwn = false;
        session.user = users->real;
        const std::optional<Account> account = accountOf(session.user);
        if (account) {
            session.group = account->group;
            session.groups = groupsOf(*account);
        } else if (const std::optional<Data> status = table.contents(process, "status")) {
            // A user that the host has no account for: as the process itself runs.
            const std::optional<StatusGroups> groups = parseProcStatusGroups(textOf(*status));
            session.group = groups ? groups->real : session.user;
            session.groups = groups ? groups->supplementary : std::vector<std::uint32_t>();
        } else {
            session.group = session.user;
        }
        if (const std::optional<Data> environment = table.environment(process)) {
            session.environment = splitTexts(textOf(*environment));
        }
        complete(session, account);
        return session;
    }

    DesktopSession sessionOfInstaller() override {
        if (::geteuid() != 0) {
            return {};
        }
        std::optional<std::uint32_t> user = identifierIn("SUDO_UID");
        // Only sudo tells a group with it.
        const std::optional<std::uint32_t> group = user ? identifierIn("SUDO_GID") : std::nullopt;
        if (!user) {
            user = identifierIn("PKEXEC_UID");
        }
        if (!user) {
            return {};
        }
        DesktopSession session;
        session.isOwn = false;
        session.user = *user;
        const std::optional<Account> account = accountOf(*user);
        session.group = account ? account->group : group.value_or(*user);
        session.groups = account ? groupsOf(*account) : std::vector{session.group};
        for (char** entry = ::environ; entry != nullptr && *entry != nullptr; ++entry) {
            if (isDesktopVariable(*entry)) {
                session.environment.emplace_back(*entry);
            }
        }
        completeFromDesktop(session);
        const std::string bus = "/run/user/" + std::to_string(*user) + "/bus";
        const char* const inherited = std::getenv("DBUS_SESSION_BUS_ADDRESS");
        struct ::stat socket;
        if (inherited != nullptr && ::stat(bus.c_str(), &socket) != 0) {
            addMissing(session.environment, "DBUS_SESSION_BUS_ADDRESS", inherited);
        }
        complete(session, account);
        return session;
    }
};

} // namespace

DesktopSessions& realDesktopSessions() {
    static LinuxDesktopSessions sessions;
    return sessions;
}

} // namespace tav::internal
