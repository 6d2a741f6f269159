#pragma once

#include "base/Status.hpp"
#include "platform/linux/Deadline.hpp"

#include <memory>

#include <systemd/sd-bus.h>

/// What everything that speaks to the session bus through libsystemd shares. The library is loaded
/// when it is first needed: most runs of the programs that link this send nothing, and loading
/// costs more than all the rest of their start.
namespace tav::internal {

/// The functions of the library that are used, by their own names.
struct SystemdLibrary {
    decltype(&::sd_bus_call) call = nullptr;
    decltype(&::sd_bus_close_unref) close_unref = nullptr;
    decltype(&::sd_bus_error_free) error_free = nullptr;
    decltype(&::sd_bus_get_n_queued_write) get_n_queued_write = nullptr;
    decltype(&::sd_bus_get_unique_name) get_unique_name = nullptr;
    decltype(&::sd_bus_is_ready) is_ready = nullptr;
    decltype(&::sd_bus_message_append) message_append = nullptr;
    decltype(&::sd_bus_message_append_array) message_append_array = nullptr;
    decltype(&::sd_bus_message_close_container) message_close_container = nullptr;
    decltype(&::sd_bus_message_enter_container) message_enter_container = nullptr;
    decltype(&::sd_bus_message_exit_container) message_exit_container = nullptr;
    decltype(&::sd_bus_message_get_path) message_get_path = nullptr;
    decltype(&::sd_bus_message_get_sender) message_get_sender = nullptr;
    decltype(&::sd_bus_message_has_signature) message_has_signature = nullptr;
    decltype(&::sd_bus_message_is_signal) message_is_signal = nullptr;
    decltype(&::sd_bus_message_new_method_call) message_new_method_call = nullptr;
    decltype(&::sd_bus_message_open_container) message_open_container = nullptr;
    decltype(&::sd_bus_message_read) message_read = nullptr;
    decltype(&::sd_bus_message_set_auto_start) message_set_auto_start = nullptr;
    decltype(&::sd_bus_message_set_expect_reply) message_set_expect_reply = nullptr;
    decltype(&::sd_bus_message_skip) message_skip = nullptr;
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
    bool isComplete = false; ///< All of them were found; otherwise none may be called.
};

const SystemdLibrary& systemdLibrary();

/// The library's answers: negative error numbers.
Status statusOfSystemd(int answer);

struct BusMessageUnref {
    void operator()(::sd_bus_message* message) const;
};
using BusMessage = std::unique_ptr<::sd_bus_message, BusMessageUnref>;

struct BusClose {
    void operator()(::sd_bus* bus) const;
};
using BusConnection = std::unique_ptr<::sd_bus, BusClose>;

/// Connects to the bus that the environment names, or to the user's own by convention, and waits
/// for its greeting. `ENOSYS` without the library. `outConnection` is set on success alone.
Status openBusConnection(const Deadline& deadline, BusConnection& outConnection);

/// One step of the connection, or a wait for its next.
Status workOnBus(::sd_bus* bus, const Deadline& deadline);

/// Calls a method and waits for the reply. `error` may be null; the caller frees what it gets.
int callOnBus(::sd_bus* bus, ::sd_bus_message* call, const Deadline& deadline,
              ::sd_bus_error* error, BusMessage& outReply);

} // namespace tav::internal
