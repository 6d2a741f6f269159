#pragma once

#include "base/Status.hpp"
#include "platform/linux/Deadline.hpp"

#include <memory>
#include <string>

namespace tav::internal {

/// A connection to the session bus that the process's environment names.
///
/// No call lasts longer than its deadline, however the other end behaves: a bus that takes the
/// connection and never speaks ends in a time-out. One thread.
class SessionBus {
  public:
    virtual ~SessionBus() = default;

    /// Success when somebody owns the name, `Status::NoSuchProcess` when nobody does.
    virtual Status findOwner(const std::string& name, const Deadline& deadline) = 0;

    /// Asks the application that owns the name to perform one of its actions, without parameters:
    /// the call `ActivateAction` of `org.freedesktop.Application`, at the object that the name
    /// stands for. No reply is expected, and nothing is started to receive it.
    virtual Status activateAction(const std::string& name, const std::string& action,
                                  const Deadline& deadline) = 0;
};

/// Whether a text can be the name of an application on the bus at all.
Status checkBusName(const std::string& name);

/// Connects; `outBus` is set on success alone. Without a bus, or without the library that speaks to
/// it, the status says so.
Status openSessionBus(const Deadline& deadline, std::unique_ptr<SessionBus>& outBus);

} // namespace tav::internal
