#include "platform/linux/LinuxPanels.hpp"
#include "testing/SpawnedProcess.hpp"
#include "testing/TemporaryFolder.hpp"

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace tav {
namespace {

using namespace std::chrono_literals;
using Choice = std::optional<std::string>;

std::string contentOf(const std::string& path) {
    std::ostringstream content;
    content << std::ifstream(path).rdbuf();
    return content.str();
}

/// A variable of the environment, put back afterwards.
class Variable {
  public:
    Variable(const char* name, const std::string& value) : name_(name) {
        if (const char* const before = ::getenv(name)) {
            before_ = before;
        }
        ::setenv(name, value.c_str(), 1);
    }
    ~Variable() {
        if (before_) {
            ::setenv(name_, before_->c_str(), 1);
        } else {
            ::unsetenv(name_);
        }
    }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;

  private:
    const char* name_;
    std::optional<std::string> before_;
};

/// Panels where no bus is, and a search path with nothing in it.
class LinuxPanelsTest : public testing::Test {
  protected:
    void addZenity(const std::string& script) {
        const std::string path = folder.path("bin/zenity");
        std::ofstream(path) << "#!/bin/sh\n" << script << "\n";
        std::filesystem::permissions(path, std::filesystem::perms::owner_all);
    }
    /// One that is not to be reached says so.
    void addTreacherousZenity() { addZenity("echo /zenity"); }

    Choice choose(const PanelRequest& request = {}) { return panels.choose(request); }

    TemporaryFolder folder;
    std::string bin = [this] {
        std::filesystem::create_directory(folder.path("bin"));
        return folder.path("bin");
    }();
    std::string address = "unix:path=" + folder.path("bus");
    Variable searchPath{"PATH", bin};
    Variable busAddress{"DBUS_SESSION_BUS_ADDRESS", address};
    internal::PortalPatience patience{5'000ms, 5'000ms};
    LinuxPanels panels{patience};
};

TEST_F(LinuxPanelsTest, WithoutAPortalAndZenityNothingIsChosen) { EXPECT_EQ(choose(), Choice()); }

TEST_F(LinuxPanelsTest, ZenityIsToldWhatToShow) {
    addZenity("for argument; do echo \"$argument\" >> " + folder.path("told") +
              "; done; echo /chosen");
    PanelRequest request;
    EXPECT_EQ(choose(request), Choice("/chosen"));
    EXPECT_EQ(contentOf(folder.path("told")), "--file-selection\n");
    std::filesystem::remove(folder.path("told"));
    request = {true, "Take", "A; title $HOME \xFF", "/start here"};
    EXPECT_EQ(choose(request), Choice("/chosen"));
    EXPECT_EQ(contentOf(folder.path("told")), "--file-selection\n--directory\n"
                                              "--title=A; title $HOME \xEF\xBF\xBD\n"
                                              "--filename=/start here/\n");
    std::filesystem::remove(folder.path("told"));
    request = {false, "", std::nullopt, "/"};
    EXPECT_EQ(choose(request), Choice("/chosen"));
    EXPECT_EQ(contentOf(folder.path("told")), "--file-selection\n--filename=/\n");
    std::filesystem::remove(folder.path("told"));
    request.startFolder = "relative";
    EXPECT_EQ(choose(request), Choice("/chosen"));
    EXPECT_EQ(contentOf(folder.path("told")), "--file-selection\n");
}

TEST_F(LinuxPanelsTest, WhatZenityAnswers) {
    addZenity("printf '/a b\\377\\nc\\n'");
    EXPECT_EQ(choose(), Choice("/a b\xFF\nc"));
    addZenity("printf /no-line-end");
    EXPECT_EQ(choose(), Choice("/no-line-end"));
    addZenity("echo /cancelled; exit 1");
    EXPECT_EQ(choose(), Choice());
    addZenity("echo /ended; kill -9 $$");
    EXPECT_EQ(choose(), Choice());
    for (const char* const script : {"true", "echo", "echo relative", "printf '/a\\000b\\n'"}) {
        addZenity(script);
        EXPECT_EQ(choose(), Choice()) << script;
    }
    addZenity("while echo /for-ever; do :; done; exit 0");
    EXPECT_EQ(choose(), Choice());
    // Its output is read to the end, its complaints are not.
    addZenity("echo complaint >&2; printf /slow; exec 1>&1; printf ' path\\n'");
    EXPECT_EQ(choose(), Choice("/slow path"));
}

TEST_F(LinuxPanelsTest, ABusThatNeverGreetsIsNotWaitedFor) {
    addZenity("echo /chosen");
    const std::string path = folder.path("bus");
    const int listener = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    ::sockaddr_un name{};
    name.sun_family = AF_UNIX;
    path.copy(name.sun_path, sizeof name.sun_path - 1);
    ASSERT_EQ(::bind(listener, reinterpret_cast<::sockaddr*>(&name), sizeof name), 0);
    ASSERT_EQ(::listen(listener, 4), 0);
    LinuxPanels hasty({50ms, 50ms});
    EXPECT_EQ(hasty.choose({}), Choice("/chosen"));
    ::close(listener);
}

TEST_F(LinuxPanelsTest, ProgramsAndMachinesInTheAddressOfTheBusAreNotReached) {
    const Variable other("DBUS_SESSION_BUS_ADDRESS",
                         "unixexec:path=/bin/touch,argv1=" + folder.path("touched"));
    EXPECT_EQ(choose(), Choice());
    EXPECT_FALSE(std::filesystem::exists(folder.path("touched")));
}

#ifdef TAV_PORTAL_PROGRAM

/// The same with a bus and a portal of the test's own.
class PortalPanelsTest : public LinuxPanelsTest {
  protected:
    void SetUp() override {
        if (::access(daemon, X_OK) != 0) {
            GTEST_SKIP() << "needs " << daemon;
        }
        std::ofstream(folder.path("bus.conf"))
            << "<busconfig><type>session</type><listen>" << address
            << "</listen><auth>EXTERNAL</auth><policy context=\"default\">"
               "<allow send_destination=\"*\" eavesdrop=\"true\"/><allow "
               "eavesdrop=\"true\"/><allow own=\"*\"/>"
               "</policy></busconfig>";
        bus_ = std::make_unique<SpawnedProcess>(
            daemon,
            std::vector<std::string>{"dbus-daemon", "--nofork", "--nopidfile",
                                     "--config-file=" + folder.path("bus.conf")},
            std::vector<std::string>{});
        waitFor([this] { return std::filesystem::exists(folder.path("bus")); });
        addTreacherousZenity();
    }

    void startPortal(std::vector<std::string> behaviour) {
        portal_.reset();
        std::filesystem::remove(record());
        behaviour.insert(behaviour.begin(), {"portal_program", record()});
        portal_ = std::make_unique<SpawnedProcess>(
            TAV_PORTAL_PROGRAM, behaviour,
            std::vector<std::string>{"DBUS_SESSION_BUS_ADDRESS=" + address});
        waitFor([this] { return contentOf(record()).starts_with("ready\n"); });
    }

    Choice chooseWith(const std::vector<std::string>& behaviour, const PanelRequest& request = {}) {
        startPortal(behaviour);
        return choose(request);
    }
    Choice chosenUrl(const std::string& url) { return chooseWith({"respond", "0", url}); }

    std::string record() { return folder.path("record"); }
    std::string busIdentifier() { return std::to_string(bus_->identifier()); }

    template <class Condition>
    static void waitFor(Condition condition) {
        for (int left = 2'000; left > 0 && !condition(); --left) {
            std::this_thread::sleep_for(10ms);
        }
        ASSERT_TRUE(condition());
    }

    static constexpr const char* daemon = "/usr/bin/dbus-daemon";

  private:
    std::unique_ptr<SpawnedProcess> bus_;
    std::unique_ptr<SpawnedProcess> portal_;
};

TEST_F(PortalPanelsTest, ThePortalIsToldWhatToShow) {
    EXPECT_EQ(chooseWith({"respond", "0", "file:///chosen"}), Choice("/chosen"));
    EXPECT_EQ(contentOf(record()), "ready\nwindow=\ntitle=\ndirectory=false\n");
    EXPECT_EQ(chooseWith({"respond", "0", "file:///chosen"},
                         {true, "Take _it\xFF", "A title\xFF", "/a b\xFF"}),
              Choice("/chosen"));
    EXPECT_EQ(contentOf(record()), "ready\nwindow=\ntitle=A title\xEF\xBF\xBD\ndirectory=true\n"
                                   "accept_label=Take __it\xEF\xBF\xBD\n"
                                   "current_folder=2f612062ff00\n");
    EXPECT_EQ(chooseWith({"respond", "0", "file:///chosen"}, {true, "", "", "relative"}),
              Choice("/chosen"));
    EXPECT_EQ(contentOf(record()), "ready\nwindow=\ntitle=\ndirectory=true\n");
}

TEST_F(PortalPanelsTest, TheFirstUrlIsThePath) {
    EXPECT_EQ(chooseWith({"respond", "0", "file:///a", "file:///b"}), Choice("/a"));
    EXPECT_EQ(chosenUrl("file:///a%20b%FF%0A%25"), Choice("/a b\xFF\n%"));
    EXPECT_EQ(chosenUrl("file://localhost/c"), Choice("/c"));
    EXPECT_EQ(chosenUrl("FILE:/d"), Choice("/d"));
    for (const char* const url : {"file://elsewhere/a", "http://localhost/a", "/a", "", "file:a",
                                  "file:///a%00b", "file:///a%2", "file:///a b"}) {
        EXPECT_EQ(chosenUrl(url), Choice()) << url;
    }
}

TEST_F(PortalPanelsTest, NothingIsChosenInAPanelThatIsCancelledOrEnds) {
    EXPECT_EQ(chooseWith({"respond", "1", "file:///a"}), Choice());
    EXPECT_EQ(chooseWith({"respond", "2", "file:///a"}), Choice());
    EXPECT_EQ(chooseWith({"respond", "4294967295", "file:///a"}), Choice());
}

TEST_F(PortalPanelsTest, AnAnswerBeforeTheReplyIsNotLost) {
    EXPECT_EQ(chooseWith({"early", "file:///early"}), Choice("/early"));
}

TEST_F(PortalPanelsTest, OldPortalsNameTheRequestThemselves) {
    EXPECT_EQ(chooseWith({"other-path", "0", "file:///old"}), Choice("/old"));
}

TEST_F(PortalPanelsTest, OnlyThePortalAnswersAndOnlyThisRequest) {
    EXPECT_EQ(chooseWith({"stranger"}), Choice("/own"));
}

TEST_F(PortalPanelsTest, AnswersThatAreNoneChooseNothing) {
    for (const char* const form : {"text", "urls-are-text", "urls-are-numbers", "no-urls"}) {
        EXPECT_EQ(chooseWith({"malformed", form}), Choice()) << form;
    }
    EXPECT_EQ(chooseWith({"respond", "0"}), Choice());
    EXPECT_EQ(chooseWith({"wrong-reply"}), Choice());
}

TEST_F(PortalPanelsTest, WithoutAPortalThatShowsPanelsZenityDoes) {
    EXPECT_EQ(choose(), Choice("/zenity")) << "nobody has the name";
    EXPECT_EQ(chooseWith({"has-no-panels"}), Choice("/zenity"));
    const std::string prefix = "org.freedesktop.DBus.Error.";
    EXPECT_EQ(chooseWith({"error", prefix + "UnknownInterface"}), Choice("/zenity"));
    EXPECT_EQ(chooseWith({"error", prefix + "Spawn.ChildExited"}), Choice("/zenity"));
    EXPECT_EQ(chooseWith({"error", prefix + "AccessDenied"}), Choice());
    EXPECT_EQ(chooseWith({"error", "org.freedesktop.portal.Error.Failed"}), Choice());
}

TEST_F(PortalPanelsTest, APortalThatDoesNotReplyIsNotWaitedFor) {
    startPortal({"never-replies"});
    LinuxPanels hasty({5'000ms, 100ms});
    EXPECT_EQ(hasty.choose({}), Choice());
}

TEST_F(PortalPanelsTest, APersonMayTakeLongerThanAReply) {
    startPortal({"slow", "file:///slow"});
    LinuxPanels hasty({5'000ms, 1'000ms});
    EXPECT_EQ(hasty.choose({}), Choice("/slow"));
}

TEST_F(PortalPanelsTest, APortalThatLeavesTheBusIsNotWaitedFor) {
    EXPECT_EQ(chooseWith({"vanishes"}), Choice());
}

TEST_F(PortalPanelsTest, ABusThatEndsIsNotWaitedFor) {
    EXPECT_EQ(chooseWith({"ends-bus", busIdentifier()}), Choice());
}

#endif

} // namespace
} // namespace tav
