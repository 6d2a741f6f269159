#pragma once

#include "platform/DesktopSession.hpp"
#include "platform/QuitRequests.hpp"
#include "platform/Workspace.hpp"

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace tav {

/// Desktop sessions, quit requests and the launch service in memory, in one: they write what they
/// are asked for into one journal, so that a test sees the order of effects. One thread.
///
/// Entries read "quit ID", "build failed ID", "launch PATH", each with " as USER" behind it when
/// the session is not the caller's own.
class MemoryDesktop {
  public:
    std::vector<std::string> journal;

    /// What each step of a quit request answers.
    Status buildStatus = Status::Success;
    Status sendStatus = Status::Success;
    /// Sessions by process; a process that is not here belongs to the caller.
    std::map<int, DesktopSession> sessions;
    DesktopSession installerSession;
    /// Whether launching succeeds.
    bool launches = true;
    /// Requests that were built and not yet disposed of.
    int openRequests = 0;

    MemoryDesktop() : sessionsSeam_(*this), quitSeam_(*this), workspaceSeam_(*this) {}

    [[nodiscard]] DesktopSessions& desktopSessions() { return sessionsSeam_; }
    [[nodiscard]] QuitRequests& quitRequests() { return quitSeam_; }
    [[nodiscard]] Workspace& workspace() { return workspaceSeam_; }

  private:
    class Sessions final : public DesktopSessions {
      public:
        explicit Sessions(MemoryDesktop& desktop) : desktop_(desktop) {}
        DesktopSession sessionOfProcess(int process) override;
        DesktopSession sessionOfInstaller() override;

      private:
        MemoryDesktop& desktop_;
    };

    class Quits final : public QuitRequests {
      public:
        explicit Quits(MemoryDesktop& desktop) : desktop_(desktop) {}
        Status build(std::string_view bundleIdentifier, const DesktopSession& session,
                     std::unique_ptr<Request>& outRequest) override;
        Status send(Request& request) override;
        void dispose(std::unique_ptr<Request> request) override;

      private:
        MemoryDesktop& desktop_;
    };

    class Launches final : public Workspace {
      public:
        explicit Launches(MemoryDesktop& desktop) : desktop_(desktop) {}
        bool launchApplication(std::string_view path, const DesktopSession& session) override;

      private:
        MemoryDesktop& desktop_;
    };

    void note(std::string_view what, std::string_view whom, const DesktopSession& session);

    Sessions sessionsSeam_;
    Quits quitSeam_;
    Launches workspaceSeam_;
};

} // namespace tav
