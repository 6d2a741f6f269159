// The session bus through libsystemd.

#include "platform/linux/SessionBus.hpp"
#include "platform/linux/SystemdBus.hpp"

#include <algorithm>
#include <cerrno>
#include <utility>

namespace tav::internal {
namespace {

/// The object that stands for an application: "." becomes "/" and "-" becomes "_".
std::string objectPath(const std::string& name) {
    std::string path = "/" + name;
    std::replace(path.begin(), path.end(), '.', '/');
    std::replace(path.begin(), path.end(), '-', '_');
    return path;
}

// NOLINTBEGIN(clang-analyzer-core.CallAndMessage): all of this runs only where every function was
// found.

class SystemdSessionBus final : public SessionBus {
  public:
    explicit SystemdSessionBus(BusConnection bus) : bus_(std::move(bus)) {}

    Status findOwner(const std::string& name, const Deadline& deadline) override {
        ::sd_bus_message* made = nullptr;
        int answer = systemdLibrary().message_new_method_call(
            bus_.get(), &made, "org.freedesktop.DBus", "/org/freedesktop/DBus",
            "org.freedesktop.DBus", "GetNameOwner");
        const BusMessage message(made);
        if (answer >= 0) {
            answer = systemdLibrary().message_append(message.get(), "s", name.c_str());
        }
        if (answer >= 0) {
            BusMessage reply;
            answer = callOnBus(bus_.get(), message.get(), deadline, nullptr, reply);
        }
        return answer == -ENXIO ? Status::NoSuchProcess : statusOfSystemd(answer);
    }

    Status activateAction(const std::string& name, const std::string& action,
                          const Deadline& deadline) override {
        ::sd_bus_message* made = nullptr;
        int answer = systemdLibrary().message_new_method_call(
            bus_.get(), &made, name.c_str(), objectPath(name).c_str(),
            "org.freedesktop.Application", "ActivateAction");
        const BusMessage message(made);
        if (answer >= 0) {
            answer =
                systemdLibrary().message_append(message.get(), "sava{sv}", action.c_str(), 0, 0);
        }
        if (answer >= 0) {
            answer = systemdLibrary().message_set_auto_start(message.get(), 0);
        }
        if (answer >= 0) {
            answer = systemdLibrary().message_set_expect_reply(message.get(), 0);
        }
        if (answer >= 0) {
            answer = systemdLibrary().send(bus_.get(), message.get(), nullptr);
        }
        return answer >= 0 ? waitUntilWritten(deadline) : statusOfSystemd(answer);
    }

  private:
    Status waitUntilWritten(const Deadline& deadline) {
        for (;;) {
            std::uint64_t queued = 0;
            const int answer = systemdLibrary().get_n_queued_write(bus_.get(), &queued);
            if (answer < 0 || queued == 0) {
                return statusOfSystemd(answer);
            }
            const Status step = workOnBus(bus_.get(), deadline);
            if (step != Status::Success) {
                return step;
            }
        }
    }

    BusConnection bus_;
};

} // namespace

Status checkBusName(const std::string& name) {
    if (!systemdLibrary().isComplete) {
        return statusFromErrorNumber(ENOSYS);
    }
    // What follows a NUL the library would not see.
    return name.find('\0') == std::string::npos &&
                   systemdLibrary().service_name_is_valid(name.c_str()) > 0
               ? Status::Success
               : statusFromErrorNumber(EINVAL);
}

Status openSessionBus(const Deadline& deadline, std::unique_ptr<SessionBus>& outBus) {
    BusConnection connection;
    const Status opened = openBusConnection(deadline, connection);
    if (opened == Status::Success) {
        outBus = std::make_unique<SystemdSessionBus>(std::move(connection));
    }
    return opened;
}

// NOLINTEND(clang-analyzer-core.CallAndMessage)

} // namespace tav::internal
