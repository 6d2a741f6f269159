#include "platform/DesktopSession.hpp"
#include "platform/QuitRequests.hpp"
#include "platform/Workspace.hpp"
#include "platform/linux/Descriptor.hpp"
#include "platform/linux/SessionProcess.hpp"
#include "testing/SpawnedProcess.hpp"
#include "testing/TemporaryFolder.hpp"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <grp.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tav::internal {
namespace {

constexpr std::uint32_t nobody = 65534;

/// The variables that name the user behind an installer, put back afterwards.
class DesktopSessionsTest : public testing::Test {
  protected:
    DesktopSessionsTest() {
        for (const char* name : {"SUDO_UID", "SUDO_GID", "PKEXEC_UID"}) {
            ::unsetenv(name);
        }
        if (::geteuid() != 0) {
            skipReason_ = "needs root: an ordinary user always acts in his own session";
        }
    }
    ~DesktopSessionsTest() override {
        for (const char* name : {"SUDO_UID", "SUDO_GID", "PKEXEC_UID"}) {
            ::unsetenv(name);
        }
    }
    void SetUp() override {
        if (skipReason_ != nullptr) {
            GTEST_SKIP() << skipReason_;
        }
    }

    static bool has(const DesktopSession& session, const std::string& variable) {
        return std::count(session.environment.begin(), session.environment.end(), variable) == 1;
    }

    DesktopSessions& sessions = realDesktopSessions();

  private:
    const char* skipReason_ = nullptr;
};

TEST_F(DesktopSessionsTest, WithoutAUserBehindItTheInstallersSessionIsItsOwn) {
    EXPECT_TRUE(sessions.sessionOfInstaller().isOwn);
}

TEST_F(DesktopSessionsTest, TheUserBehindSudoOrPkexecIsTaken) {
    ::setenv("PKEXEC_UID", "65533", 1);
    EXPECT_EQ(sessions.sessionOfInstaller().user, 65533U);
    ::setenv("SUDO_UID", "65534", 1);
    const DesktopSession session = sessions.sessionOfInstaller();
    EXPECT_FALSE(session.isOwn);
    EXPECT_EQ(session.user, nobody) << "sudo is asked first";
    EXPECT_TRUE(has(session, "XDG_RUNTIME_DIR=/run/user/65534"));
}

TEST_F(DesktopSessionsTest, IdentifiersThatAreNoneOrRootsDoNotCount) {
    for (const char* text : {"", "0", "-1", "12x", " 12", "4294967296", "nobody"}) {
        ::setenv("SUDO_UID", text, 1);
        EXPECT_TRUE(sessions.sessionOfInstaller().isOwn) << text;
    }
}

TEST_F(DesktopSessionsTest, AUserWithoutAnAccountHasTheGroupThatSudoTells) {
    ::setenv("SUDO_UID", "54321", 1);
    ::setenv("SUDO_GID", "54322", 1);
    const DesktopSession session = sessions.sessionOfInstaller();
    EXPECT_EQ(session.group, 54322U);
    EXPECT_EQ(session.groups, std::vector<std::uint32_t>{54322});
}

TEST_F(DesktopSessionsTest, TheGroupThatSudoTellsIsNotTakenForPkexecs) {
    ::setenv("PKEXEC_UID", "54321", 1);
    ::setenv("SUDO_GID", "54322", 1);
    EXPECT_EQ(sessions.sessionOfInstaller().group, 54321U);
}

TEST_F(DesktopSessionsTest, TheInstallersDesktopVariablesAreHandedOnAndNoOthers) {
    ::setenv("SUDO_UID", "54321", 1);
    ::setenv("DISPLAY", ":7", 1);
    ::setenv("LC_ALL", "C.UTF-8", 1);
    ::setenv("TAV_SECRET", "root's", 1);
    ::setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/inherited", 1);
    const DesktopSession session = sessions.sessionOfInstaller();
    for (const char* name : {"DISPLAY", "LC_ALL", "TAV_SECRET", "DBUS_SESSION_BUS_ADDRESS"}) {
        ::unsetenv(name);
    }
    EXPECT_TRUE(has(session, "DISPLAY=:7"));
    EXPECT_TRUE(has(session, "LC_ALL=C.UTF-8"));
    EXPECT_FALSE(has(session, "TAV_SECRET=root's"));
    EXPECT_TRUE(has(session, "DBUS_SESSION_BUS_ADDRESS=unix:path=/inherited"))
        << "there is no /run/user/54321/bus";
}

/// A pause program that runs as a user who has no account, with that environment.
::pid_t runAs(::uid_t real, ::uid_t effective, const TemporaryFolder& folder,
              std::vector<const char*> environment) {
    installPauseProgram(folder.path("p"));
    ::chmod(folder.path().c_str(), 0755);
    int ends[2] = {-1, -1};
    EXPECT_EQ(::pipe2(ends, O_CLOEXEC), 0);
    const ::pid_t child = ::fork();
    if (child == 0) {
        const ::gid_t supplementary = 54399;
        static_cast<void>(::setgroups(1, &supplementary));
        static_cast<void>(::setresgid(54322, 54322, 54322));
        static_cast<void>(::setresuid(real, effective, effective));
        environment.push_back(nullptr);
        const char* const arguments[] = {"p", nullptr};
        ::execve(folder.path("p").c_str(), const_cast<char**>(arguments),
                 const_cast<char**>(environment.data()));
        ::_exit(1);
    }
    ::close(ends[1]);
    char end = 0;
    EXPECT_EQ(::read(ends[0], &end, 1), 0) << "closed by executing";
    ::close(ends[0]);
    waitUntilExecuted(child);
    return child;
}

void end(::pid_t child) {
    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
}

TEST_F(DesktopSessionsTest, WhatTheInstallerLacksIsTakenFromTheUsersDesktop) {
    const TemporaryFolder folder;
    const ::pid_t desktop = runAs(54321, 54321, folder,
                                  {"DISPLAY=:9", "PRIVATE=1", "XDG_CURRENT_DESKTOP=Sample",
                                   "DBUS_SESSION_BUS_ADDRESS=unix:path=/theirs"});
    ::setenv("PKEXEC_UID", "54321", 1);
    ::unsetenv("DISPLAY");
    ::unsetenv("WAYLAND_DISPLAY");
    const DesktopSession session = sessions.sessionOfInstaller();
    EXPECT_TRUE(has(session, "DISPLAY=:9"));
    EXPECT_TRUE(has(session, "XDG_CURRENT_DESKTOP=Sample"));
    EXPECT_TRUE(has(session, "DBUS_SESSION_BUS_ADDRESS=unix:path=/theirs"));
    EXPECT_FALSE(has(session, "PRIVATE=1"));
    end(desktop);
}

TEST_F(DesktopSessionsTest, AProcessBelongsToItsRealUser) {
    const TemporaryFolder folder;
    const ::pid_t privileged = runAs(54321, 0, folder, {"A=1"});
    EXPECT_EQ(sessions.sessionOfProcess(privileged).user, 54321U);
    end(privileged);
}

TEST_F(DesktopSessionsTest, OurOwnProcessesAreInOurOwnSession) {
    EXPECT_TRUE(sessions.sessionOfProcess(::getpid()).isOwn);
    EXPECT_TRUE(sessions.sessionOfProcess(1).isOwn);
}

/// A process of another user, who has no account, with one supplementary group.
TEST_F(DesktopSessionsTest, AProcessOfAnotherUserTellsUserGroupsAndEnvironment) {
    const TemporaryFolder folder;
    const ::pid_t child = runAs(54321, 54321, folder, {"DISPLAY=:9", "ODD=caf\xe9"});
    const DesktopSession session = sessions.sessionOfProcess(child);
    EXPECT_FALSE(session.isOwn);
    EXPECT_EQ(session.user, 54321U);
    EXPECT_EQ(session.group, 54322U);
    EXPECT_EQ(session.groups, std::vector<std::uint32_t>{54399});
    EXPECT_TRUE(has(session, "DISPLAY=:9"));
    EXPECT_TRUE(has(session, "ODD=caf\xe9")) << "variables are bytes";
    EXPECT_TRUE(has(session, "DBUS_SESSION_BUS_ADDRESS=unix:path=/run/user/54321/bus"));
    end(child);
}

DesktopSession nobodysSession() {
    DesktopSession session;
    session.isOwn = false;
    session.user = session.group = nobody;
    session.groups = {nobody};
    session.environment = {"ONLY=this"};
    return session;
}

TEST_F(DesktopSessionsTest, AFunctionRunsAsTheUserOfTheSession) {
    const Deadline deadline(std::chrono::seconds(10));
    EXPECT_EQ(runInSession(nobodysSession(), deadline,
                           [] {
                               ::uid_t real = 0;
                               ::uid_t effective = 0;
                               ::uid_t saved = 0;
                               ::getresuid(&real, &effective, &saved);
                               ::gid_t group = 0;
                               const bool isNobody = real == nobody && effective == nobody &&
                                                     saved == nobody && ::getgid() == nobody &&
                                                     ::getgroups(1, &group) == 1 && group == nobody;
                               const bool hasOnlyIts =
                                   ::getenv("ONLY") != nullptr && ::getenv("PATH") == nullptr;
                               return isNobody && hasOnlyIts && ::setuid(0) != 0
                                          ? static_cast<Status>(42)
                                          : Status::Failure;
                           }),
              static_cast<Status>(42));
    EXPECT_EQ(::geteuid(), 0U) << "the caller stays who he is";
}

TEST_F(DesktopSessionsTest, AFunctionHoldsNothingOfTheCallers) {
    const Deadline deadline(std::chrono::seconds(10));
    EXPECT_EQ(runInSession(nobodysSession(), deadline,
                           [] {
                               struct ::stat null;
                               struct ::stat output;
                               struct ::stat errors;
                               const bool areNull =
                                   ::stat("/dev/null", &null) == 0 && ::fstat(1, &output) == 0 &&
                                   ::fstat(2, &errors) == 0 && S_ISCHR(output.st_mode) &&
                                   output.st_rdev == null.st_rdev && errors.st_rdev == null.st_rdev;
                               int open = 0;
                               for (int number = 3; number < 1024; ++number) {
                                   open += ::fcntl(number, F_GETFD) >= 0 ? 1 : 0;
                               }
                               return areNull && open == 0 ? Status::Success : Status::Failure;
                           }),
              Status::Success);
}

TEST_F(DesktopSessionsTest, AFunctionHasASessionOfItsOwnAndNoTerminal) {
    const Deadline deadline(std::chrono::seconds(10));
    ::signal(SIGUSR1, SIG_IGN);
    EXPECT_EQ(runInSession(nobodysSession(), deadline,
                           [] {
                               const bool isAlone =
                                   ::getsid(0) == ::getpid() && ::open("/dev/tty", O_RDWR) < 0;
                               return isAlone && ::signal(SIGUSR1, SIG_DFL) == SIG_DFL
                                          ? Status::Success
                                          : Status::Failure;
                           }),
              Status::Success);
    ::signal(SIGUSR1, SIG_DFL);
}

TEST_F(DesktopSessionsTest, TheFirstOfTwoVariablesHolds) {
    DesktopSession session = nobodysSession();
    session.environment = {"A=first", "A=second"};
    const Deadline deadline(std::chrono::seconds(10));
    EXPECT_EQ(runInSession(session, deadline,
                           [] {
                               return std::string_view(::getenv("A")) == "first" ? Status::Success
                                                                                 : Status::Failure;
                           }),
              Status::Success);
}

TEST_F(DesktopSessionsTest, AFunctionThatThrowsIsAFailureOfTheChildAlone) {
    const Deadline deadline(std::chrono::seconds(10));
    EXPECT_EQ(runInSession(nobodysSession(), deadline,
                           []() -> Status { throw std::runtime_error("thrown in the child"); }),
              Status::Failure);
}

TEST_F(DesktopSessionsTest, AFunctionThatNeverAnswersIsEnded) {
    const Deadline deadline(std::chrono::milliseconds(100));
    EXPECT_EQ(runInSession(nobodysSession(), deadline,
                           [] {
                               ::pause();
                               return Status::Success;
                           }),
              statusFromErrorNumber(ETIMEDOUT));
}

TEST_F(DesktopSessionsTest, AFunctionThatDiesIsAFailure) {
    const Deadline deadline(std::chrono::seconds(10));
    EXPECT_EQ(runInSession(nobodysSession(), deadline, []() -> Status { ::_exit(3); }),
              Status::Failure);
}

// ---- What needs no second user.

TEST(BusQuitRequestsTest, WhatIsNoBusNameIsNotBuilt) {
    for (const char* name : {"", "nodots", ".a.b", "a..b", "a.b.", "a.1b", "a b.c", "a.b/c",
                             "caf\xc3\xa9.app", "com.example.\xff"}) {
        std::unique_ptr<QuitRequests::Request> request;
        EXPECT_NE(realQuitRequests().build(name, {}, request), Status::Success) << name;
        EXPECT_EQ(request, nullptr) << name;
    }
    std::unique_ptr<QuitRequests::Request> request;
    EXPECT_NE(realQuitRequests().build(std::string(100'000, 'a') + ".b", {}, request),
              Status::Success);
    const Status tail = realQuitRequests().build(std::string_view("a.b\0c", 5), {}, request);
    EXPECT_TRUE(tail == statusFromErrorNumber(EINVAL) || tail == statusFromErrorNumber(ENOSYS))
        << "not the name before the NUL";
}

/// A bus of the test's own, named by the environment.
class PrivateBusTest : public testing::Test {
  protected:
    void SetUp() override {
        if (::access("/usr/bin/dbus-daemon", X_OK) != 0) {
            GTEST_SKIP() << "needs dbus-daemon, for a session bus";
        }
        const std::string socket = folder_.path("bus");
        daemon_.emplace("/usr/bin/dbus-daemon",
                        std::vector<std::string>{"dbus-daemon", "--session", "--nofork",
                                                 "--nopidfile", "--address=unix:path=" + socket},
                        std::vector<std::string>{});
        const Deadline deadline(std::chrono::seconds(10));
        while (!listens(socket)) {
            ASSERT_FALSE(deadline.hasPassed()) << "the bus does not come up";
            ::usleep(1000);
        }
        ::setenv("DBUS_SESSION_BUS_ADDRESS", ("tcp:host=x;unix:path=" + socket).c_str(), 1);
    }
    ~PrivateBusTest() override { ::unsetenv("DBUS_SESSION_BUS_ADDRESS"); }

    std::unique_ptr<QuitRequests::Request> request_;

  private:
    static bool listens(const std::string& path) {
        const Descriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
        ::sockaddr_un address = {AF_UNIX, {}};
        path.copy(address.sun_path, sizeof address.sun_path - 1);
        return ::connect(socket.number(), reinterpret_cast<const ::sockaddr*>(&address),
                         sizeof address) == 0;
    }

    TemporaryFolder folder_;
    std::optional<SpawnedProcess> daemon_;
};

TEST_F(PrivateBusTest, ANameThatNobodyOwnsIsNoSuchProcess) {
    EXPECT_EQ(realQuitRequests().build("org.example.Nobody", {}, request_), Status::NoSuchProcess);
    EXPECT_EQ(static_cast<int>(Status::NoSuchProcess), -600);
    EXPECT_EQ(request_, nullptr);
}

TEST_F(PrivateBusTest, ANameWithAnOwnerIsAskedWhateverBecomesOfIt) {
    // The bus owns its own name; it knows no such action, which nobody waits to hear.
    ASSERT_EQ(realQuitRequests().build("org.freedesktop.DBus", {}, request_), Status::Success);
    EXPECT_EQ(realQuitRequests().send(*request_), Status::Success);
    realQuitRequests().dispose(std::move(request_));
}

TEST(BusQuitRequestsTest, OnlySocketsOfThisMachineAreConnectedTo) {
    const TemporaryFolder folder;
    const std::string trace = folder.path("trace");
    for (const std::string& address :
         {"unixexec:path=/usr/bin/touch,argv1=" + trace, std::string("tcp:host=127.0.0.1,port=1"),
          std::string("autolaunch:"), std::string(";;;"), std::string("rubbish")}) {
        ::setenv("DBUS_SESSION_BUS_ADDRESS", address.c_str(), 1);
        std::unique_ptr<QuitRequests::Request> request;
        EXPECT_NE(realQuitRequests().build("org.example.Nobody", {}, request), Status::Success);
    }
    ::unsetenv("DBUS_SESSION_BUS_ADDRESS");
    ::usleep(100'000);
    EXPECT_NE(::access(trace.c_str(), F_OK), 0) << "a program was run";
}

TEST(LinuxWorkspaceTest, WhatHasNoExecutableIsNotLaunched) {
    const TemporaryFolder folder;
    EXPECT_FALSE(realWorkspace().launchApplication("", {}));
    EXPECT_FALSE(realWorkspace().launchApplication(folder.path("gone.app"), {}));
    EXPECT_FALSE(realWorkspace().launchApplication(folder.path(), {})) << "an empty folder";
    installPauseProgram(folder.path("A.app/Contents/MacOS/Other"));
    EXPECT_FALSE(realWorkspace().launchApplication(folder.path("A.app"), {})) << "another name";
    installPauseProgram(folder.path("A.app/Contents/MacOS/A"));
    ::chmod(folder.path("A.app/Contents/MacOS/A").c_str(), 0644);
    EXPECT_FALSE(realWorkspace().launchApplication(folder.path("A.app"), {})) << "no program";
    installPauseProgram(folder.path("B.app/Contents/MacOS/B/file"));
    EXPECT_FALSE(realWorkspace().launchApplication(folder.path("B.app"), {})) << "a folder";
}

TEST(LinuxWorkspaceTest, ALaunchSucceedsWhereTheEndsOfChildrenAreIgnored) {
    // An installer that ignores the signal hands that on to us; nobody can be waited for then.
    const TemporaryFolder folder;
    installPauseProgram(folder.path("A.app/Contents/MacOS/other"));
    ASSERT_EQ(::symlink("/bin/true", folder.path("A.app/Contents/MacOS/A").c_str()), 0);
    const auto before = ::signal(SIGCHLD, SIG_IGN);
    const bool launched = realWorkspace().launchApplication(folder.path("A.app"), {});
    ::signal(SIGCHLD, before);
    EXPECT_TRUE(launched);
}

} // namespace
} // namespace tav::internal
