#include "platform/linux/LinuxProcessTable.hpp"
#include "testing/SpawnedProcess.hpp"
#include "testing/TemporaryFolder.hpp"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <functional>
#include <thread>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <pty.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tav::internal {
namespace {

class LinuxProcessTableTest : public ::testing::Test {
  protected:
    LinuxProcessTable table;
    TemporaryFolder folder;

    [[nodiscard]] std::string path(const std::string& name) const { return folder.path(name); }

    /// Installs a program under that name, and answers its path.
    [[nodiscard]] std::string program(const std::string& name) const {
        installPauseProgram(path(name));
        return path(name);
    }

    std::string areaText(int process) {
        const std::optional<ArgumentArea> area = table.argumentArea(
            process, table.executablePath(process).value_or(""), ArgumentArea::Layout::Plain, 1);
        EXPECT_TRUE(area && area->layout == ArgumentArea::Layout::Counted);
        return area ? std::string(textOf(area->bytes)) : std::string();
    }

    bool lists(ProcessSelector selector, int value, int process) {
        const std::vector<int> found = table.processes(selector, value).value();
        return std::count(found.begin(), found.end(), process) == 1;
    }
};

std::string area(std::int32_t count, std::string_view rest) {
    std::string text(reinterpret_cast<const char*>(&count), sizeof count);
    return text.append(rest);
}

TEST_F(LinuxProcessTableTest, ListsOurselvesOnceAndInAscendingOrder) {
    const std::vector<int> found = table.processes(ProcessSelector::All, 0).value();
    EXPECT_TRUE(std::is_sorted(found.begin(), found.end()));
    EXPECT_EQ(std::count(found.begin(), found.end(), ::getpid()), 1);
    EXPECT_EQ(table.currentProcess(), ::getpid());
    EXPECT_EQ(table.effectiveUser(), ::geteuid());
}

TEST_F(LinuxProcessTableTest, SelectsByGroupAndUsers) {
    const SpawnedProcess sleeper(program("s"), {"zero", "60"}, {});
    const int process = sleeper.identifier();
    EXPECT_TRUE(lists(ProcessSelector::ProcessGroup, ::getpgrp(), process));
    EXPECT_FALSE(lists(ProcessSelector::ProcessGroup, process, process));
    EXPECT_TRUE(lists(ProcessSelector::User, static_cast<int>(::geteuid()), process));
    EXPECT_TRUE(lists(ProcessSelector::RealUser, static_cast<int>(::getuid()), process));
    EXPECT_FALSE(lists(ProcessSelector::RealUser, 54321, process));
    EXPECT_FALSE(lists(ProcessSelector::Terminal, 54321, process));
}

TEST_F(LinuxProcessTableTest, TheRecordIsTheKernels) {
    const SpawnedProcess sleeper(program("a) S 1 (b"), {"zero", "60"}, {});
    const std::optional<ProcessRecord> record = table.record(sleeper.identifier());
    ASSERT_TRUE(record);
    EXPECT_EQ(record->processIdentifier, sleeper.identifier());
    EXPECT_EQ(record->parent, ::getpid());
    EXPECT_EQ(record->processGroup, ::getpgrp());
    EXPECT_EQ(record->shortName, "a) S 1 (b");
    EXPECT_FALSE(record->isZombie);
    const std::optional<ProcessUsers> users = table.users(sleeper.identifier());
    ASSERT_TRUE(users);
    EXPECT_EQ(users->real, ::getuid());
    EXPECT_EQ(users->effective, ::geteuid());
}

TEST_F(LinuxProcessTableTest, AZombieIsThereWithoutPathAndArguments) {
    SpawnedProcess sleeper(program("s"), {"zero", "60"}, {});
    sleeper.kill(SIGKILL);
    sleeper.waitUntilZombie();
    const std::optional<ProcessRecord> record = table.record(sleeper.identifier());
    ASSERT_TRUE(record);
    EXPECT_TRUE(record->isZombie);
    EXPECT_EQ(record->shortName, "s");
    EXPECT_TRUE(lists(ProcessSelector::All, 0, sleeper.identifier()));
    EXPECT_EQ(table.executablePath(sleeper.identifier()), std::nullopt);
    EXPECT_FALSE(table.argumentArea(sleeper.identifier(), "", ArgumentArea::Layout::Counted, 8192));
    EXPECT_TRUE(table.signal(sleeper.identifier(), SIGTERM)) << "a zombie can be signalled";
    const int reaped = sleeper.identifier();
    sleeper.wait();
    EXPECT_FALSE(table.record(reaped));
    EXPECT_FALSE(table.users(reaped));
    EXPECT_FALSE(table.signal(reaped, SIGTERM));
}

TEST_F(LinuxProcessTableTest, AThreadIsNoProcess) {
    std::atomic<int> thread = 0;
    std::atomic<bool> ends = false;
    std::jthread worker([&] {
        thread = static_cast<int>(::syscall(SYS_gettid));
        while (!ends) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    });
    while (thread == 0) {
        std::this_thread::yield();
    }
    EXPECT_FALSE(table.record(thread));
    EXPECT_FALSE(table.users(thread));
    EXPECT_FALSE(lists(ProcessSelector::All, 0, thread));
    ends = true;
}

TEST_F(LinuxProcessTableTest, IdentifiersThatAreNoneAnswerNothing) {
    for (const int process : {0, -1, INT32_MIN, INT32_MAX}) {
        EXPECT_FALSE(table.record(process)) << process;
        EXPECT_FALSE(table.users(process)) << process;
        EXPECT_FALSE(table.executableLink(process)) << process;
        EXPECT_FALSE(table.executablePath(process)) << process;
        EXPECT_FALSE(table.argumentArea(process, "", ArgumentArea::Layout::Counted, 1)) << process;
        EXPECT_FALSE(table.signal(process, 0)) << process;
    }
}

TEST_F(LinuxProcessTableTest, HandsOverTheCountedLayoutWhole) {
    const std::string executable = program("s");
    const std::string longText(20000, 'x');
    const SpawnedProcess sleeper(executable, {"zero", "60", "", longText, ""},
                                 {"A=1", "B=two words"});
    EXPECT_EQ(areaText(sleeper.identifier()),
              area(5, executable + '\0' + "zero" + '\0' + "60" + '\0' + '\0' + longText + '\0' +
                          '\0' + "A=1" + '\0' + "B=two words" + '\0'));
}

TEST_F(LinuxProcessTableTest, AReplacedExecutableKeepsItsPath) {
    const std::string executable = program("App.app/Contents/MacOS/App");
    const SpawnedProcess sleeper(executable, {executable, "60"}, {});
    const int process = sleeper.identifier();
    EXPECT_EQ(table.executablePath(process), executable);
    installPauseProgram(executable + ".new");
    ASSERT_EQ(::rename((executable + ".new").c_str(), executable.c_str()), 0);
    EXPECT_EQ(table.executableLink(process), executable + " (deleted)");
    EXPECT_EQ(table.executablePath(process), executable);
}

TEST_F(LinuxProcessTableTest, ARemovedExecutableKeepsItsPath) {
    const std::string executable = program("gone");
    const SpawnedProcess sleeper(executable, {"zero", "60"}, {});
    ASSERT_EQ(::unlink(executable.c_str()), 0);
    EXPECT_EQ(table.executablePath(sleeper.identifier()), executable);
}

TEST_F(LinuxProcessTableTest, AFileThatIsReallyCalledDeleted) {
    const std::string executable = program("x (deleted)");
    const SpawnedProcess sleeper(executable, {"zero", "60"}, {});
    EXPECT_EQ(table.executablePath(sleeper.identifier()), executable);
    ASSERT_EQ(::unlink(executable.c_str()), 0);
    EXPECT_EQ(table.executableLink(sleeper.identifier()), executable + " (deleted)");
    EXPECT_EQ(table.executablePath(sleeper.identifier()), executable);
}

TEST_F(LinuxProcessTableTest, AFolderMovedAsideIsFollowed) {
    const std::string executable = program("App.app/Contents/MacOS/App");
    const SpawnedProcess sleeper(executable, {executable, "60"}, {});
    ASSERT_EQ(::rename(path("App.app").c_str(), path("Old.app").c_str()), 0);
    EXPECT_EQ(table.executablePath(sleeper.identifier()), path("Old.app/Contents/MacOS/App"));
}

TEST_F(LinuxProcessTableTest, AFolderMovedAsideAndRemovedIsKnownByTheFirstArgument) {
    const std::string executable = program("App.app/Contents/MacOS/App");
    const SpawnedProcess sleeper(executable, {executable, "60"}, {});
    const SpawnedProcess relative(executable, {"App", "60"}, {});
    ASSERT_EQ(::rename(path("App.app").c_str(), path("Old.app").c_str()), 0);
    installPauseProgram(executable);
    const std::string old = path("Old.app/Contents/MacOS/App");
    ASSERT_EQ(::unlink(old.c_str()), 0);
    EXPECT_EQ(table.executablePath(sleeper.identifier()), executable);
    EXPECT_EQ(table.executablePath(relative.identifier()), old) << "no absolute first argument";
}

TEST_F(LinuxProcessTableTest, AFirstArgumentThatNamesNothingIsNoPath) {
    const std::string executable = program("App.app/Contents/MacOS/App");
    const SpawnedProcess sleeper(executable, {path("nothing/here"), "60"}, {});
    ASSERT_EQ(::unlink(executable.c_str()), 0);
    EXPECT_EQ(table.executablePath(sleeper.identifier()), executable);
}

TEST_F(LinuxProcessTableTest, AnotherFileCalledDeletedIsNotMistakenForIt) {
    const std::string executable = program("App");
    const SpawnedProcess sleeper(executable, {"zero", "60"}, {});
    ASSERT_EQ(::unlink(executable.c_str()), 0);
    installPauseProgram(executable + " (deleted)");
    EXPECT_EQ(table.executablePath(sleeper.identifier()), executable);
}

/// A process that runs a program at a path in a mount namespace of its own, where another volume
/// covers the folder. Removed: its file is gone again.
::pid_t runBehindAnotherVolume(const std::string& folder, const std::string& path, bool removed) {
    int ends[2];
    EXPECT_EQ(::pipe2(ends, O_CLOEXEC), 0);
    const ::pid_t child = ::fork();
    if (child == 0) {
        if (::unshare(CLONE_NEWNS) != 0 ||
            ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
            ::mount("tmpfs", folder.c_str(), "tmpfs", 0, nullptr) != 0) {
            static_cast<void>(::write(ends[1], "x", 1));
            ::_exit(1);
        }
        installPauseProgram(path);
        const int file = ::open(path.c_str(), O_PATH | O_CLOEXEC);
        if (removed) {
            ::unlink(path.c_str());
        }
        const char* const arguments[] = {path.c_str(), nullptr};
        const char* const environment[] = {nullptr};
        ::fexecve(file, const_cast<char**>(arguments), const_cast<char**>(environment));
        ::_exit(1);
    }
    ::close(ends[1]);
    char failed = 0;
    const bool couldMount = ::read(ends[0], &failed, 1) == 0;
    ::close(ends[0]);
    if (!couldMount) {
        ::waitpid(child, nullptr, 0);
        return -1;
    }
    waitUntilExecuted(child);
    return child;
}

TEST_F(LinuxProcessTableTest, AnExecutableOfAnotherTreeHasNoPathHere) {
    for (const bool removed : {false, true}) {
        const std::string executable = program("App.app/Contents/MacOS/App");
        const ::pid_t other = runBehindAnotherVolume(folder.path(), executable, removed);
        if (other < 0) {
            GTEST_SKIP() << "needs root, to mount a volume in another namespace";
        }
        EXPECT_EQ(table.executableLink(other), executable + (removed ? " (deleted)" : ""));
        EXPECT_EQ(table.executablePath(other), std::nullopt) << "a different file has that path";
        // Nor is its first argument a path of ours.
        ASSERT_EQ(::unlink(executable.c_str()), 0);
        const std::optional<std::string> gone = table.executablePath(other);
        EXPECT_TRUE(gone == executable || !gone) << "there is nothing at that path";
        ::kill(other, SIGKILL);
        ::waitpid(other, nullptr, 0);
    }
}

TEST_F(LinuxProcessTableTest, TheTerminalIsThatOfItsDevice) {
    int controller = -1;
    const ::pid_t child = ::forkpty(&controller, nullptr, nullptr, nullptr);
    ASSERT_GE(child, 0);
    if (child == 0) {
        ::pause();
        ::_exit(0);
    }
    char name[64];
    struct ::stat device;
    ASSERT_EQ(::ptsname_r(controller, name, sizeof name), 0);
    ASSERT_EQ(::stat(name, &device), 0);
    const auto number = static_cast<int>(device.st_rdev);
    // The child takes the terminal a moment after it was made.
    while (table.record(child)->terminalProcessGroup != child) {
        std::this_thread::yield();
    }
    EXPECT_EQ(table.record(child)->terminal, number);
    EXPECT_EQ(table.record(child)->processGroup, child);
    EXPECT_TRUE(lists(ProcessSelector::Terminal, number, child));
    EXPECT_FALSE(lists(ProcessSelector::Terminal, number, ::getpid()));
    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
    ::close(controller);
}

TEST_F(LinuxProcessTableTest, PathsAreBytes) {
    const std::string executable = program("caf\xe9 \xff\n");
    const SpawnedProcess sleeper(executable, {"zero", "60"}, {});
    EXPECT_EQ(table.executablePath(sleeper.identifier()), executable);
}

TEST_F(LinuxProcessTableTest, KernelThreadsHaveNoExecutable) {
    // Process 2 is the parent of all kernel threads, outside of containers.
    const std::optional<ProcessRecord> record = table.record(2);
    if (!record || record->shortName != "kthreadd") {
        GTEST_SKIP() << "no kernel threads to be seen here (a process namespace of its own)";
    }
    EXPECT_EQ(table.executableLink(2), std::nullopt);
    EXPECT_EQ(table.executablePath(2), std::nullopt);
    EXPECT_FALSE(table.argumentArea(2, "", ArgumentArea::Layout::Counted, 8192));
}

/// What the test finds out as another user, in a child process.
int runAsOtherUser(const std::function<bool()>& question) {
    const ::pid_t child = ::fork();
    if (child == 0) {
        const bool isOther =
            ::setresgid(65534, 65534, 65534) == 0 && ::setresuid(65534, 65534, 65534) == 0;
        ::_exit(!isOther ? 2 : question() ? 0 : 1);
    }
    int status = -1;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST_F(LinuxProcessTableTest, AnotherUsersExecutableIsUnknownItsArgumentsAreNot) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "needs root, to ask as a second user";
    }
    const std::string executable = program("s");
    const SpawnedProcess sleeper(executable, {"zero", "60"}, {"SECRET=1"});
    const int process = sleeper.identifier();
    EXPECT_EQ(runAsOtherUser([&] {
                  return table.record(process).has_value() && table.users(process)->real == 0 &&
                         !table.executableLink(process) && !table.executablePath(process) &&
                         areaText(process) == area(2, std::string_view("\0zero\00060\0", 9)) &&
                         !table.signal(process, 0);
              }),
              0);
}

TEST_F(LinuxProcessTableTest, AProcessThatMayNotBeLookedIntoStillHasItsUsers) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "needs root, to run a process of a second user";
    }
    // A process that gave up its privileges: most of what /proc has of it is root's.
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    const ::pid_t child = ::fork();
    if (child == 0) {
        static_cast<void>(::setresuid(65533, 65534, 65534));
        ::prctl(PR_SET_DUMPABLE, 0);
        static_cast<void>(::write(ends[1], "x", 1));
        ::pause();
        ::_exit(0);
    }
    char ready = 0;
    ASSERT_EQ(::read(ends[0], &ready, 1), 1);
    EXPECT_EQ(table.userOf(child), 65534U);
    EXPECT_EQ(table.users(child)->real, 65533U);
    EXPECT_EQ(table.users(child)->effective, 65534U);
    EXPECT_TRUE(lists(ProcessSelector::User, 65534, child));
    EXPECT_TRUE(lists(ProcessSelector::RealUser, 65533, child));
    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
    ::close(ends[0]);
    ::close(ends[1]);
}

/// A child that has overwritten its arguments, as programs with a title do; it waits to be killed.
::pid_t forkWithTitle(LinuxProcessTable& table, std::string_view title, char padding) {
    const ::pid_t child = ::fork();
    if (child == 0) {
        // The name that glibc keeps is the first argument itself, where the kernel put it.
        char* const begin = ::program_invocation_name;
        const std::size_t size = table.contents(::getpid(), "cmdline")->size();
        std::fill_n(begin, size, padding);
        title.copy(begin, std::min(title.size(), size));
        ::raise(SIGSTOP);
        ::_exit(0);
    }
    int status = 0;
    ::waitpid(child, &status, WUNTRACED);
    return child;
}

TEST_F(LinuxProcessTableTest, ATitleWrittenOverTheArgumentsIsRead) {
    const std::string ours = table.executablePath(::getpid()).value();
    const ::pid_t padded = forkWithTitle(table, "worker: idle", '\0');
    const std::string text = areaText(padded);
    EXPECT_TRUE(text.starts_with(area(1, ours + '\0' + "worker: idle" + '\0')));
    ::kill(padded, SIGKILL);
    ::waitpid(padded, nullptr, 0);

    // Without a NUL before its end the title runs on into the environment, as far as its first NUL.
    const ::pid_t running = forkWithTitle(table, "worker: busy", 'x');
    EXPECT_TRUE(areaText(running).starts_with(area(1, ours + '\0' + "worker: busyxxx")));
    ::kill(running, SIGKILL);
    ::waitpid(running, nullptr, 0);
}

TEST_F(LinuxProcessTableTest, KernelFactsAreThere) {
    EXPECT_FALSE(table.kernelRelease().value().empty());
    EXPECT_GE(table.argumentMaximum().value(), 131072);
}

} // namespace
} // namespace tav::internal
