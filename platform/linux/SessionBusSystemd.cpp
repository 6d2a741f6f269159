// The session bus through libsystemd, which is loaded when it is first needed: most runs of the
// programs that link this send nothing, and loading costs more than all the rest of their start.

#include "platform/linux/SessionBus.hpp"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <string_view>
#include <utility>

#include <systemd/sd-bus.h>

#include <dlfcn.h>

namespace tav::internal {
namespace {

/// The functions of the library that are used here, by their own names.
struct Library {
    decltype(&::sd_bus_call) call = nullptr;
    decltype(&::sd_bus_close_unref) close_unref = nullptr;
    decltype(&::sd_bus_get_n_queued_write) get_n_queued_write = nullptr;
    decltype(&::sd_bus_is_ready) is_ready = nullptr;
    decltype(&::sd_bus_message_append) message_append = nullptr;
    decltype(&::sd_bus_message_new_method_call) message_new_method_call = nullptr;
    decltype(&::sd_bus_message_set_auto_start) message_set_auto_start = nullptr;
    decltype(&::sd_bus_message_set_expect_reply) message_set_expect_reply = nullptr;
    decltype(&::sd_bus_message_unref) message_unref = nullptr;
    decltype(&::sd_bus_open_user) open_user = nullptr;
    decltype(&::sd_bus_new) make = nullptr;
    decltype(&::sd_bus_process) process = nullptr;
    decltype(&::sd_bus_send) send = nullptr;
    decltype(&::sd_bus_service_name_is_valid) service_name_is_valid = nullptr;
    decltype(&::sd_bus_set_address) set_address = nullptr;
    decltype(&::sd_bus_set_bus_client) set_bus_client = nullptr;
    decltype(&::sd_bus_start) start = nullptr;
    decltype(&::sd_bus_wait) wait = nullptr;
    bool isComplete = false;
};

Library load() {
    Library library;
    // Stays loaded: it keeps per-thread state of its own.
    void* const handle = ::dlopen("libsystemd.so.0", RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) {
        return library;
    }
    library.isComplete = true;
    const auto find = [&](auto& function, const char* name) {
        function =
            reinterpret_cast<std::remove_reference_t<decltype(function)>>(::dlsym(handle, name));
        library.isComplete = library.isComplete && function != nullptr;
    };
    find(library.call, "sd_bus_call");
    find(library.close_unref, "sd_bus_close_unref");
    find(library.get_n_queued_write, "sd_bus_get_n_queued_write");
    find(library.is_ready, "sd_bus_is_ready");
    find(library.message_append, "sd_bus_message_append");
    find(library.message_new_method_call, "sd_bus_message_new_method_call");
    find(library.message_set_auto_start, "sd_bus_message_set_auto_start");
    find(library.message_set_expect_reply, "sd_bus_message_set_expect_reply");
    find(library.message_unref, "sd_bus_message_unref");
    find(library.make, "sd_bus_new");
    find(library.open_user, "sd_bus_open_user");
    find(library.process, "sd_bus_process");
    find(library.send, "sd_bus_send");
    find(library.service_name_is_valid, "sd_bus_service_name_is_valid");
    find(library.set_address, "sd_bus_set_address");
    find(library.set_bus_client, "sd_bus_set_bus_client");
    find(library.start, "sd_bus_start");
    find(library.wait, "sd_bus_wait");
    return library;
}

const Library& library() {
    static const Library loaded = load();
    return loaded;
}

/// The library's answers: negative error numbers.
Status statusOf(int answer) {
    return answer < 0 ? statusFromErrorNumber(-answer) : Status::Success;
}

/// The object that stands for an application: "." becomes "/" and "-" becomes "_".
std::string objectPath(const std::string& name) {
    std::string path = "/" + name;
    std::replace(path.begin(), path.end(), '.', '/');
    std::replace(path.begin(), path.end(), '-', '_');
    return path;
}

// NOLINTBEGIN(clang-analyzer-core.CallAndMessage): all of this runs only where every function was
// found.

struct MessageUnref {
    void operator()(::sd_bus_message* message) const { library().message_unref(message); }
};
using Message = std::unique_ptr<::sd_bus_message, MessageUnref>;

struct BusClose {
    void operator()(::sd_bus* bus) const { library().close_unref(bus); }
};
using Connection = std::unique_ptr<::sd_bus, BusClose>;

/// The elements of a bus address that are sockets of this machine. The others are not for us: they
/// run programs ("unixexec:") or look for machines ("tcp:"), neither of which ends in time, and the
/// address may be another user's.
std::string localAddress(std::string_view address) {
    std::string local;
    while (!address.empty()) {
        const std::string_view element = address.substr(0, address.find(';'));
        if (element.starts_with("unix:")) {
            local.append(local.empty() ? "" : ";").append(element);
        }
        address.remove_prefix(std::min(element.size() + 1, address.size()));
    }
    return local;
}

/// Begins to connect to the bus that the environment names, or to the user's own by convention.
Status connect(Connection& outConnection) {
    ::sd_bus* made = nullptr;
    const char* const address = ::secure_getenv("DBUS_SESSION_BUS_ADDRESS");
    if (address == nullptr) {
        const int answer = library().open_user(&made);
        outConnection.reset(made);
        return statusOf(answer);
    }
    const std::string local = localAddress(address);
    if (local.empty()) {
        return statusFromErrorNumber(ENOMEDIUM);
    }
    int answer = library().make(&made);
    outConnection.reset(made);
    if (answer >= 0) {
        answer = library().set_address(made, local.c_str());
    }
    if (answer >= 0) {
        answer = library().set_bus_client(made, 1);
    }
    if (answer >= 0) {
        answer = library().start(made);
    }
    return statusOf(answer);
}

class SystemdSessionBus final : public SessionBus {
  public:
    explicit SystemdSessionBus(Connection bus) : bus_(std::move(bus)) {}

    /// Until the bus has greeted us, which the library itself would wait for without an end.
    Status waitUntilReady(const Deadline& deadline) {
        for (;;) {
            const int ready = library().is_ready(bus_.get());
            if (ready != 0) {
                return statusOf(ready);
            }
            const Status step = workOnce(deadline);
            if (step != Status::Success) {
                return step;
            }
        }
    }

    Status findOwner(const std::string& name, const Deadline& deadline) override {
        ::sd_bus_message* made = nullptr;
        int answer = library().message_new_method_call(bus_.get(), &made, "org.freedesktop.DBus",
                                                       "/org/freedesktop/DBus",
                                                       "org.freedesktop.DBus", "GetNameOwner");
        const Message message(made);
        if (answer >= 0) {
            answer = library().message_append(message.get(), "s", name.c_str());
        }
        if (answer >= 0) {
            ::sd_bus_message* reply = nullptr;
            // 0 would mean the library's own time-out.
            answer = library().call(bus_.get(), message.get(),
                                    std::max<std::uint64_t>(1, deadline.remainingMicroseconds()),
                                    nullptr, &reply);
            const Message received(reply);
        }
        return answer == -ENXIO ? Status::NoSuchProcess : statusOf(answer);
    }

    Status activateAction(const std::string& name, const std::string& action,
                          const Deadline& deadline) override {
        ::sd_bus_message* made = nullptr;
        int answer = library().message_new_method_call(
            bus_.get(), &made, name.c_str(), objectPath(name).c_str(),
            "org.freedesktop.Application", "ActivateAction");
        const Message message(made);
        if (answer >= 0) {
            answer = library().message_append(message.get(), "sava{sv}", action.c_str(), 0, 0);
        }
        if (answer >= 0) {
            answer = library().message_set_auto_start(message.get(), 0);
        }
        if (answer >= 0) {
            answer = library().message_set_expect_reply(message.get(), 0);
        }
        if (answer >= 0) {
            answer = library().send(bus_.get(), message.get(), nullptr);
        }
        return answer >= 0 ? waitUntilWritten(deadline) : statusOf(answer);
    }

  private:
    /// One step of the connection, or a wait for its next.
    Status workOnce(const Deadline& deadline) {
        if (deadline.hasPassed()) {
            return statusFromErrorNumber(ETIMEDOUT);
        }
        int answer = library().process(bus_.get(), nullptr);
        if (answer == 0) {
            answer = library().wait(bus_.get(), deadline.remainingMicroseconds());
        }
        return answer == -EINTR ? Status::Success : statusOf(answer);
    }

    Status waitUntilWritten(const Deadline& deadline) {
        for (;;) {
            std::uint64_t queued = 0;
            const int answer = library().get_n_queued_write(bus_.get(), &queued);
            if (answer < 0 || queued == 0) {
                return statusOf(answer);
            }
            const Status step = workOnce(deadline);
            if (step != Status::Success) {
                return step;
            }
        }
    }

    Connection bus_;
};

} // namespace

Status checkBusName(const std::string& name) {
    if (!library().isComplete) {
        return statusFromErrorNumber(ENOSYS);
    }
    // What follows a NUL the library would not see.
    return name.find('\0') == std::string::npos && library().service_name_is_valid(name.c_str()) > 0
               ? Status::Success
               : statusFromErrorNumber(EINVAL);
}

Status openSessionBus(const Deadline& deadline, std::unique_ptr<SessionBus>& outBus) {
    if (!library().isComplete) {
        return statusFromErrorNumber(ENOSYS);
    }
    Connection connection;
    const Status started = connect(connection);
    if (started != Status::Success) {
        return started;
    }
    auto bus = std::make_unique<SystemdSessionBus>(std::move(connection));
    const Status ready = bus->waitUntilReady(deadline);
    if (ready == Status::Success) {
        outBus = std::move(bus);
    }
    return ready;
}

// NOLINTEND(clang-analyzer-core.CallAndMessage)

} // namespace tav::internal
