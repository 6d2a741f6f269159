#include "platform/linux/LinuxChildProcess.hpp"
#include "testing/ForkedProcess.hpp"
#include "testing/TemporaryFolder.hpp"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

namespace tav {
namespace {

using Kind = ChildEnd::Kind;
using Lines = std::vector<std::string>;

std::string contentOf(const std::string& path) {
    std::ostringstream content;
    content << std::ifstream(path, std::ios::binary).rdbuf();
    return content.str();
}

Lines linesOf(const std::string& path) {
    std::ifstream file(path);
    Lines lines;
    for (std::string line; std::getline(file, line);) {
        lines.push_back(line);
    }
    return lines;
}

/// A disposition of a signal, put back afterwards.
class Disposition {
  public:
    Disposition(int signal, void (*handler)(int)) : signal_(signal) {
        struct ::sigaction action = {};
        action.sa_handler = handler; // without SA_RESTART
        ::sigaction(signal, &action, &before_);
    }
    ~Disposition() { ::sigaction(signal_, &before_, nullptr); }
    Disposition(const Disposition&) = delete;
    Disposition& operator=(const Disposition&) = delete;

  private:
    int signal_;
    struct ::sigaction before_ = {};
};

/// Writes where the shell's own standard streams lead, which is not those of its commands.
const std::string standardStreams =
    "for n in 0 1 2; do l=$(readlink /proc/$$/fd/$n); echo $l >> \"$1\"; done";

/// Waits until the bound of one file holds, which comes a moment after the start, though not for
/// ever. It writes nothing that would be counted.
const std::string onceBounded =
    "n=0; while [ $n -lt 1000 ] && grep -q 'Max file size  *unlimited' /proc/$$/limits; do "
    "n=$((n + 1)); sleep 0.01; done; ";

class LinuxChildProcessTest : public testing::Test {
  protected:
    /// Runs a script, whose arguments "$1", ... follow.
    Result<ChildEnd> script(const std::string& text, Lines arguments = {}) {
        request.program = "/bin/sh";
        request.arguments = {"-c", text, "script"};
        request.arguments.insert(request.arguments.end(), arguments.begin(), arguments.end());
        return children.run(request);
    }
    [[nodiscard]] std::string out() const { return folder.path("out"); }

    TemporaryFolder folder;
    ChildRequest request;
    LinuxChildProcess children;
};

TEST_F(LinuxChildProcessTest, HowItEnded) {
    EXPECT_EQ(script("exit 0").value(), (ChildEnd{Kind::Exited, 0}));
    EXPECT_EQ(script("exit 3").value(), (ChildEnd{Kind::Exited, 3}));
    EXPECT_EQ(script("exit 255").value(), (ChildEnd{Kind::Exited, 255}));
    EXPECT_EQ(script("kill -TERM $$").value(), (ChildEnd{Kind::Signalled, SIGTERM}));
}

TEST_F(LinuxChildProcessTest, ItsEndIsWaitedFor) {
    EXPECT_TRUE(script("sleep 0.2; echo done > \"$1\"", {out()}).ok());
    EXPECT_EQ(contentOf(out()), "done\n");
}

TEST_F(LinuxChildProcessTest, WhatCannotBeStarted) {
    request.program = folder.path("missing");
    EXPECT_EQ(children.run(request).error().number(), ENOENT);
    request.program = folder.path();
    EXPECT_EQ(children.run(request).error().number(), EACCES);
    request.program = folder.path("text");
    std::ofstream(request.program) << "exit 0\n";
    EXPECT_EQ(children.run(request).error().number(), EACCES);
    std::filesystem::permissions(request.program, std::filesystem::perms::owner_all);
    // No shell is asked what it may be.
    EXPECT_EQ(children.run(request).error().number(), ENOEXEC);
    request.program = "/bin/true/x";
    EXPECT_EQ(children.run(request).error().number(), ENOTDIR);
    request.program = "/bin/true";
    request.arguments = {std::string(64UL << 20U, 'a')};
    EXPECT_EQ(children.run(request).error().number(), E2BIG);
}

TEST_F(LinuxChildProcessTest, ProgramsAreAbsolutePathsAndTextsHaveNoNul) {
    for (const std::string& program : {std::string(), std::string("true"), std::string("./true"),
                                       std::string("/bin/true\0x", 11)}) {
        request.program = program;
        EXPECT_EQ(children.run(request).error().number(), EINVAL) << program;
    }
    request.program = "/bin/true";
    request.arguments = {std::string("a\0b", 3)};
    EXPECT_EQ(children.run(request).error().number(), EINVAL);
    request.arguments = {};
    request.environment = {std::string("A=a\0b", 5)};
    EXPECT_EQ(children.run(request).error().number(), EINVAL);
}

TEST_F(LinuxChildProcessTest, ArgumentsArriveAsTheyAre) {
    const Lines arguments{out(), "", "-rf", "a b", "$HOME", "*", "`x`;'\"\\", "\xFF\xFE", "n\nl"};
    ASSERT_TRUE(script("printf '%s|' \"$@\" > \"$1\"", arguments).ok());
    std::string expected;
    for (const std::string& argument : arguments) {
        expected += argument + "|";
    }
    EXPECT_EQ(contentOf(out()), expected);
}

TEST_F(LinuxChildProcessTest, ItsNameIsItsPath) {
    ASSERT_TRUE(script("tr '\\0' '\\n' < /proc/$$/cmdline > \"$1\"", {out()}).ok());
    EXPECT_EQ(linesOf(out()).at(0), "/bin/sh");
}

TEST_F(LinuxChildProcessTest, TheEnvironmentIsSmallAndTold) {
    ::setenv("ZIPOPT", "-m", 1);
    ::setenv("LD_LIBRARY_PATH", "/nowhere", 1);
    ::setenv("TZ", "UTC", 1);
    request.environment = {"ZIPOPT=-y -q", "A==b", "A=second", "HOME=/h"};
    const Result<ChildEnd> end = script("tr '\\0' '\\n' < /proc/$$/environ > \"$1\"", {out()});
    ::unsetenv("ZIPOPT");
    ::unsetenv("LD_LIBRARY_PATH");
    ::unsetenv("TZ");
    ASSERT_TRUE(end.ok());
    Lines lines = linesOf(out());
    std::erase_if(lines, [](const std::string& line) { return line.starts_with("TMPDIR="); });
    EXPECT_EQ(lines, (Lines{"ZIPOPT=-y -q", "A==b", "HOME=/h", "LC_ALL=C.UTF-8",
                            "PATH=/usr/local/bin:/usr/bin:/bin", "TZ=UTC"}));
    request.environment = {"LC_ALL=C"};
    ASSERT_TRUE(script("echo $LC_ALL > \"$1\"", {out()}).ok());
    EXPECT_EQ(contentOf(out()), "C\n");
}

TEST_F(LinuxChildProcessTest, ItReadsNothingAndPrintsNowhere) {
    ASSERT_TRUE(script("echo lost; echo lost >&2; cat > \"$1\"; " + standardStreams, {out()}).ok());
    EXPECT_EQ(linesOf(out()), (Lines{"/dev/null", "/dev/null", "/dev/null"}));
}

TEST_F(LinuxChildProcessTest, NothingElseIsOpen) {
    // As careless code opens files.
    const int leaked = ::open("/dev/null", O_RDONLY);
    const int high = ::dup2(leaked, 200);
    ASSERT_TRUE(script("ls /proc/$$/fd > \"$1\"", {out()}).ok());
    ::close(leaked);
    ::close(high);
    const Lines lines = linesOf(out());
    const std::set<std::string> open(lines.begin(), lines.end());
    EXPECT_EQ(open.count("200"), 0U);
    EXPECT_EQ(open.count(std::to_string(leaked)), 0U);
    EXPECT_EQ(open.count("2"), 1U);
}

TEST_F(LinuxChildProcessTest, WithoutStandardStreamsOfItsOwnTheCallerGivesThemAllTheSame) {
    const int input = ::dup(STDIN_FILENO);
    ::close(STDIN_FILENO);
    const Result<ChildEnd> end = script(standardStreams, {out()});
    ::dup2(input, STDIN_FILENO);
    ::close(input);
    ASSERT_TRUE(end.ok());
    EXPECT_EQ(linesOf(out()), (Lines{"/dev/null", "/dev/null", "/dev/null"}));
}

TEST_F(LinuxChildProcessTest, ItHasASessionOfItsOwn) {
    ASSERT_TRUE(script("cut -d' ' -f1,5,6 /proc/$$/stat > \"$1\"", {out()}).ok());
    std::istringstream numbers(contentOf(out()));
    int process = 0;
    int group = 0;
    int session = 0;
    numbers >> process >> group >> session;
    EXPECT_GT(process, 0);
    EXPECT_EQ(group, process);
    EXPECT_EQ(session, process);
    EXPECT_EQ(script("exec 3</dev/tty").value().kind, Kind::Exited);
    EXPECT_NE(script("exec 3</dev/tty").value().number, 0);
}

TEST_F(LinuxChildProcessTest, NoSignalIsBlockedOrIgnored) {
    const Disposition ignored(SIGPIPE, SIG_IGN);
    ::sigset_t all;
    ::sigset_t before;
    ::sigfillset(&all);
    ::pthread_sigmask(SIG_BLOCK, &all, &before);
    const Result<ChildEnd> end =
        script("exec grep -E 'Sig(Blk|Ign)' /proc/self/status > \"$1\"", {out()});
    ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
    ASSERT_TRUE(end.ok());
    const Lines lines = linesOf(out());
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(lines[0], "SigBlk:\t0000000000000000");
    // But two that the C library has for itself.
    EXPECT_EQ(std::stoull(lines[1].substr(8), nullptr, 16) & ~0x1'8000'0000ULL, 0U);
}

TEST_F(LinuxChildProcessTest, WhoIgnoresTheEndsOfChildrenIsNotTold) {
    const Disposition ignored(SIGCHLD, SIG_IGN);
    EXPECT_EQ(script("sleep 0.1; echo done > \"$1\"; exit 3", {out()}).value().kind,
              Kind::NobodyCanTell);
    EXPECT_EQ(contentOf(out()), "done\n");
    request.mayWrite = 1000;
    EXPECT_EQ(script("sleep 0.1; echo again > \"$1\"", {out()}).value().kind, Kind::NobodyCanTell);
    EXPECT_EQ(contentOf(out()), "again\n");
    request.program = folder.path("missing");
    EXPECT_EQ(children.run(request).error().number(), ENOENT);
}

TEST_F(LinuxChildProcessTest, ItsEndsAreNobodyElsesToHandle) {
    // The status is there also where the program handles the signal, and interruptions are none.
    static int handled;
    handled = 0;
    const Disposition handler(SIGCHLD, [](int) { ++handled; });
    EXPECT_EQ(script("exit 4").value(), (ChildEnd{Kind::Exited, 4}));
    EXPECT_EQ(handled, 1);
}

TEST_F(LinuxChildProcessTest, InterruptionsDoNotEndTheWait) {
    static int alarms;
    alarms = 0;
    const Disposition handler(SIGALRM, [](int) { ++alarms; });
    ::itimerval timer = {{0, 5000}, {0, 5000}};
    ::setitimer(ITIMER_REAL, &timer, nullptr);
    const Result<ChildEnd> end = script("sleep 0.2; exit 5");
    request.mayWrite = 1000;
    const Result<ChildEnd> counted = script("sleep 0.2; exit 6");
    timer = {};
    ::setitimer(ITIMER_REAL, &timer, nullptr);
    EXPECT_EQ(end.value(), (ChildEnd{Kind::Exited, 5}));
    EXPECT_EQ(counted.value(), (ChildEnd{Kind::Exited, 6}));
    EXPECT_GT(alarms, 10);
}

TEST_F(LinuxChildProcessTest, OneFileStopsAtWhatTheProgramMayWrite) {
    request.mayWrite = 100'000;
    EXPECT_EQ(script(onceBounded + "exec head -c 100000 /dev/zero > \"$1\"", {out()}).value(),
              (ChildEnd{Kind::Exited, 0}));
    // Large at once, so that the kernel stops it before it is counted.
    EXPECT_EQ(script(onceBounded + "exec dd if=/dev/zero of=\"$1\" bs=50000 count=40", {out()})
                  .value()
                  .kind,
              Kind::WroteTooMuch);
    EXPECT_EQ(std::filesystem::file_size(out()), 100'000U);
    // A hole is too much as well.
    EXPECT_EQ(script(onceBounded + "exec truncate -s 1T \"$1\"", {out()}).value().kind,
              Kind::WroteTooMuch);
    // Larger than any file can be.
    request.mayWrite = ~std::uint64_t{0};
    EXPECT_EQ(script("exit 0").value(), (ChildEnd{Kind::Exited, 0}));
}

TEST_F(LinuxChildProcessTest, ManyFilesStopTogether) {
    request.mayWrite = 1'000'000;
    // Each of them is small enough, and it would never end.
    EXPECT_EQ(script("while :; do printf '%010000d' 1 > \"$1\"; done", {out()}).value(),
              (ChildEnd{Kind::WroteTooMuch, 0}));
}

TEST_F(LinuxChildProcessTest, WhatItWroteRightBeforeItsEndCountsToo) {
    const std::string pieces = "i=0; while [ $i -lt 9 ]; do printf '%010000d' 1 > \"$1\"; "
                               "i=$((i + 1)); done; exit 7";
    request.mayWrite = 50'000;
    for (int round = 0; round < 10; ++round) {
        EXPECT_EQ(script(pieces, {out()}).value(), (ChildEnd{Kind::WroteTooMuch, 0}));
    }
    request.mayWrite = 90'000;
    EXPECT_EQ(script(pieces, {out()}).value(), (ChildEnd{Kind::Exited, 7}));
    // By somebody who is not root.
    request.mayWrite = 50'000;
    EXPECT_EQ(runForked([&] {
                  constexpr ::uid_t nobody = 65534;
                  if (::geteuid() == 0 && (::chmod(folder.path().c_str(), 0777) != 0 ||
                                           ::setresuid(nobody, nobody, nobody) != 0)) {
                      return 100;
                  }
                  const Result<ChildEnd> end = script(pieces, {folder.path("another")});
                  return end.ok() ? static_cast<int>(end.value().kind) : 101;
              }),
              (ProcessEnd{static_cast<int>(Kind::WroteTooMuch), 0}));
}

TEST_F(LinuxChildProcessTest, ALimitThatTheCallerHasStays) {
    const auto sizeWith = [this](::rlimit limit) {
        const ProcessEnd end = runForked([&] {
            if (::setrlimit(RLIMIT_FSIZE, &limit) != 0) {
                return 100;
            }
            request.mayWrite = 100'000;
            const Result<ChildEnd> written =
                script("sleep 0.1; exec head -c 5000 /dev/zero > \"$1\"", {out()});
            return written.ok() && written.value().kind == Kind::WroteTooMuch ? 0 : 1;
        });
        EXPECT_EQ(end, (ProcessEnd{0, 0}));
        return std::filesystem::file_size(out());
    };
    EXPECT_EQ(sizeWith({1000, RLIM_INFINITY}), 1000U);
    EXPECT_EQ(sizeWith({2000, 2000}), 2000U);
}

TEST_F(LinuxChildProcessTest, WithoutABoundItWritesWhatItLikes) {
    EXPECT_EQ(script("exec head -c 3000000 /dev/zero > \"$1\"", {out()}).value(),
              (ChildEnd{Kind::Exited, 0}));
    EXPECT_EQ(std::filesystem::file_size(out()), 3'000'000U);
}

TEST_F(LinuxChildProcessTest, ThreadsRunProgramsAtTheSameTime) {
    std::vector<std::thread> threads;
    std::vector<int> statuses(8, -1);
    for (int number = 0; number < 8; ++number) {
        threads.emplace_back([number, &statuses] {
            for (int round = 0; round < 5; ++round) {
                const Result<ChildEnd> end = ChildProcess::current().run(
                    {"/bin/sh", {"-c", "exit " + std::to_string(number)}, {}, 1U << 20U});
                statuses[static_cast<std::size_t>(number)] = end.ok() ? end.value().number : -2;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(statuses, (std::vector<int>{0, 1, 2, 3, 4, 5, 6, 7}));
}

} // namespace
} // namespace tav
