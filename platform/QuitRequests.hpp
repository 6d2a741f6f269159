#pragma once

#include "base/Status.hpp"
#include "platform/DesktopSession.hpp"
#include "platform/Seam.hpp"

#include <memory>
#include <string_view>

namespace tav {

class QuitRequests;

namespace internal {
/// Requests over the session bus (platform/linux).
QuitRequests& realQuitRequests();
} // namespace internal

/// The seam that asks a running application to quit, addressed by its bundle identifier.
///
/// A request is built, sent once and disposed of. Sending hands it to the system and waits for no
/// reply: whether the application heeds it is not known. Building and sending together never take
/// longer than `timeLimit`, whatever state the bus is in. A request belongs to one thread; sending
/// in another user's session forks.
class QuitRequests : public Seam<QuitRequests, internal::realQuitRequests> {
  public:
    /// In milliseconds.
    static constexpr int timeLimit = 2000;

    /// A built request; each implementation has its own.
    class Request {
      public:
        virtual ~Request() = default;
    };

    virtual ~QuitRequests() = default;

    /// Not success when the identifier is no valid address, nobody there can be reached, or nobody
    /// owns the address (`Status::NoSuchProcess`); `outRequest` is set on success alone.
    virtual Status build(std::string_view bundleIdentifier, const DesktopSession& session,
                         std::unique_ptr<Request>& outRequest) = 0;
    virtual Status send(Request& request) = 0;
    virtual void dispose(std::unique_ptr<Request> request) = 0;
};

} // namespace tav
