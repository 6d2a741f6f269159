#include "platform/QuitRequests.hpp"
#include "platform/linux/SessionBus.hpp"
#include "platform/linux/SessionProcess.hpp"

#include <string>
#include <utility>

namespace tav::internal {
namespace {

class BusQuitRequest final : public QuitRequests::Request {
  public:
    BusQuitRequest(std::string name, DesktopSession session)
        : name_(std::move(name)), session_(std::move(session)) {}

    /// Reaches the bus and makes sure of an owner: a message that nobody receives would never fail.
    Status connect() {
        const Status opened = openSessionBus(deadline_, bus_);
        return opened == Status::Success ? bus_->findOwner(name_, deadline_) : opened;
    }

    Status send() {
        if (session_.isOwn) {
            return bus_->activateAction(name_, "quit", deadline_);
        }
        // A user's bus talks to that user alone, so a process of that user has to do all of it.
        return runInSession(session_, deadline_, [this] {
            const Status connected = connect();
            return connected == Status::Success ? bus_->activateAction(name_, "quit", deadline_)
                                                : connected;
        });
    }

  private:
    std::string name_;
    DesktopSession session_;
    Deadline deadline_{std::chrono::milliseconds(QuitRequests::timeLimit)};
    std::unique_ptr<SessionBus> bus_;
};

class BusQuitRequests final : public QuitRequests {
  public:
    Status build(std::string_view bundleIdentifier, const DesktopSession& session,
                 std::unique_ptr<Request>& outRequest) override {
        const std::string name(bundleIdentifier);
        Status status = checkBusName(name);
        if (status != Status::Success) {
            return status;
        }
        auto request = std::make_unique<BusQuitRequest>(name, session);
        if (session.isOwn) {
            status = request->connect();
        }
        if (status == Status::Success) {
            outRequest = std::move(request);
        }
        return status;
    }

    Status send(Request& request) override { return static_cast<BusQuitRequest&>(request).send(); }

    void dispose(std::unique_ptr<Request> request) override { request.reset(); }
};

} // namespace

QuitRequests& realQuitRequests() {
    static BusQuitRequests requests;
    return requests;
}

} // namespace tav::internal
