#include "platform/memory/MemoryDesktop.hpp"

#include <utility>

namespace tav {
namespace {

struct MemoryRequest final : public QuitRequests::Request {
    std::string identifier;
    DesktopSession session;
};

} // namespace

void MemoryDesktop::note(std::string_view what, std::string_view whom,
                         const DesktopSession& session) {
    std::string entry = std::string(what) + " " + std::string(whom);
    if (!session.isOwn) {
        entry += " as " + std::to_string(session.user);
    }
    journal.push_back(std::move(entry));
}

DesktopSession MemoryDesktop::Sessions::sessionOfProcess(int process) {
    const auto found = desktop_.sessions.find(process);
    return found == desktop_.sessions.end() ? DesktopSession() : found->second;
}

DesktopSession MemoryDesktop::Sessions::sessionOfInstaller() { return desktop_.installerSession; }

Status MemoryDesktop::Quits::build(std::string_view bundleIdentifier, const DesktopSession& session,
                                   std::unique_ptr<Request>& outRequest) {
    if (desktop_.buildStatus != Status::Success) {
        desktop_.note("build failed", bundleIdentifier, session);
        return desktop_.buildStatus;
    }
    auto request = std::make_unique<MemoryRequest>();
    request->identifier = bundleIdentifier;
    request->session = session;
    outRequest = std::move(request);
    ++desktop_.openRequests;
    return Status::Success;
}

Status MemoryDesktop::Quits::send(Request& request) {
    const auto& sent = static_cast<MemoryRequest&>(request);
    desktop_.note("quit", sent.identifier, sent.session);
    return desktop_.sendStatus;
}

void MemoryDesktop::Quits::dispose(std::unique_ptr<Request> request) {
    if (request) {
        --desktop_.openRequests;
    }
}

bool MemoryDesktop::Launches::launchApplication(std::string_view path,
                                                const DesktopSession& session) {
    desktop_.note("launch", path, session);
    return desktop_.launches;
}

} // namespace tav
