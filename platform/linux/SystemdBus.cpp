#include "platform/linux/SystemdBus.hpp"

#include "platform/linux/SharedLibrary.hpp"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <string>
#include <string_view>
#include <utility>

namespace tav::internal {
namespace {

SystemdLibrary load() {
    SystemdLibrary library;
    SharedLibrary host("libsystemd.so.0");
    host.find(library.call, "sd_bus_call");
    host.find(library.close_unref, "sd_bus_close_unref");
    host.find(library.error_free, "sd_bus_error_free");
    host.find(library.get_n_queued_write, "sd_bus_get_n_queued_write");
    host.find(library.get_unique_name, "sd_bus_get_unique_name");
    host.find(library.is_ready, "sd_bus_is_ready");
    host.find(library.message_append, "sd_bus_message_append");
    host.find(library.message_append_array, "sd_bus_message_append_array");
    host.find(library.message_close_container, "sd_bus_message_close_container");
    host.find(library.message_enter_container, "sd_bus_message_enter_container");
    host.find(library.message_exit_container, "sd_bus_message_exit_container");
    host.find(library.message_get_path, "sd_bus_message_get_path");
    host.find(library.message_get_sender, "sd_bus_message_get_sender");
    host.find(library.message_has_signature, "sd_bus_message_has_signature");
    host.find(library.message_is_signal, "sd_bus_message_is_signal");
    host.find(library.message_new_method_call, "sd_bus_message_new_method_call");
    host.find(library.message_open_container, "sd_bus_message_open_container");
    host.find(library.message_read, "sd_bus_message_read");
    host.find(library.message_set_auto_start, "sd_bus_message_set_auto_start");
    host.find(library.message_set_expect_reply, "sd_bus_message_set_expect_reply");
    host.find(library.message_skip, "sd_bus_message_skip");
    host.find(library.message_unref, "sd_bus_message_unref");
    host.find(library.open_user, "sd_bus_open_user");
    host.find(library.make, "sd_bus_new");
    host.find(library.process, "sd_bus_process");
    host.find(library.send, "sd_bus_send");
    host.find(library.service_name_is_valid, "sd_bus_service_name_is_valid");
    host.find(library.set_address, "sd_bus_set_address");
    host.find(library.set_bus_client, "sd_bus_set_bus_client");
    host.find(library.start, "sd_bus_start");
    host.find(library.wait, "sd_bus_wait");
    library.isComplete = host.isComplete();
    return library;
}

// NOLINTBEGIN(clang-analyzer-core.CallAndMessage): all of this runs only where every function was
// found.

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
Status connect(BusConnection& outConnection) {
    ::sd_bus* made = nullptr;
    const char* const address = ::secure_getenv("DBUS_SESSION_BUS_ADDRESS");
    if (address == nullptr) {
        const int answer = systemdLibrary().open_user(&made);
        outConnection.reset(made);
        return statusOfSystemd(answer);
    }
    const std::string local = localAddress(address);
    if (local.empty()) {
        return statusFromErrorNumber(ENOMEDIUM);
    }
    int answer = systemdLibrary().make(&made);
    outConnection.reset(made);
    if (answer >= 0) {
        answer = systemdLibrary().set_address(made, local.c_str());
    }
    if (answer >= 0) {
        answer = systemdLibrary().set_bus_client(made, 1);
    }
    if (answer >= 0) {
        answer = systemdLibrary().start(made);
    }
    return statusOfSystemd(answer);
}

/// Until the bus has greeted us, which the library itself would wait for without an end.
Status waitUntilReady(::sd_bus* bus, const Deadline& deadline) {
    for (;;) {
        const int ready = systemdLibrary().is_ready(bus);
        if (ready != 0) {
            return statusOfSystemd(ready);
        }
        const Status step = workOnBus(bus, deadline);
        if (step != Status::Success) {
            return step;
        }
    }
}

} // namespace

const SystemdLibrary& systemdLibrary() {
    static const SystemdLibrary loaded = load();
    return loaded;
}

Status statusOfSystemd(int answer) {
    return answer < 0 ? statusFromErrorNumber(-answer) : Status::Success;
}

void BusMessageUnref::operator()(::sd_bus_message* message) const {
    systemdLibrary().message_unref(message);
}

void BusClose::operator()(::sd_bus* bus) const { systemdLibrary().close_unref(bus); }

Status openBusConnection(const Deadline& deadline, BusConnection& outConnection) {
    if (!systemdLibrary().isComplete) {
        return statusFromErrorNumber(ENOSYS);
    }
    BusConnection connection;
    Status status = connect(connection);
    if (status == Status::Success) {
        status = waitUntilReady(connection.get(), deadline);
    }
    if (status == Status::Success) {
        outConnection = std::move(connection);
    }
    return status;
}

Status workOnBus(::sd_bus* bus, const Deadline& deadline) {
    if (deadline.hasPassed()) {
        return statusFromErrorNumber(ETIMEDOUT);
    }
    int answer = systemdLibrary().process(bus, nullptr);
    if (answer == 0) {
        answer = systemdLibrary().wait(bus, deadline.remainingMicroseconds());
    }
    return answer == -EINTR ? Status::Success : statusOfSystemd(answer);
}

int callOnBus(::sd_bus* bus, ::sd_bus_message* call, const Deadline& deadline,
              ::sd_bus_error* error, BusMessage& outReply) {
    ::sd_bus_message* reply = nullptr;
    // 0 would mean the library's own time-out.
    const int answer = systemdLibrary().call(
        bus, call, std::max<std::uint64_t>(1, deadline.remainingMicroseconds()), error, &reply);
    outReply.reset(reply);
    return answer;
}

// NOLINTEND(clang-analyzer-core.CallAndMessage)

} // namespace tav::internal
