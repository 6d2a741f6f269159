#include "platform/linux/Descriptor.hpp"
#include "platform/linux/LinuxFileSystem.hpp"
#include "testing/ForkedProcess.hpp"
#include "testing/TemporaryFolder.hpp"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sched.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

namespace tav {
namespace {

constexpr OpenOptions forReading = {};
constexpr OpenOptions forWriting = {.write = true, .create = true};
constexpr OpenOptions forAppending = {.write = true, .create = true, .append = true};
constexpr OpenOptions asNew = {.write = true, .create = true, .mustBeNew = true};

/// What only the host's open files have; the rules that all keep are tested for all of them at one
/// place, with those in memory. No test leaves a descriptor behind.
class LinuxOpenFileTest : public testing::Test {
  protected:
    TemporaryFolder folder;
    LinuxFileSystem files;
    const std::size_t openBefore = openDescriptors();

    void TearDown() override { EXPECT_EQ(openDescriptors(), openBefore); }

    static std::size_t openDescriptors() {
        return LinuxFileSystem().folderEntries("/proc/self/fd").value().size();
    }
    [[nodiscard]] std::string path(std::string_view name) const { return folder.path(name); }
    int errorOfOpen(const std::string& opened, const OpenOptions& options) {
        return files.open(opened, options).error().number();
    }
    void expectNoFile(const std::string& opened) {
        for (const OpenOptions& options :
             {forReading, OpenOptions{.write = true}, forWriting, forAppending}) {
            EXPECT_EQ(errorOfOpen(opened, options), EINVAL) << opened;
        }
        EXPECT_EQ(errorOfOpen(opened, asNew), EEXIST) << opened;
    }
};

TEST_F(LinuxOpenFileTest, PipesAreNoFilesAndNobodyWaitsForTheirOtherEnd) {
    ASSERT_EQ(::mkfifo(path("pipe").c_str(), 0600), 0);
    ASSERT_TRUE(files.createLink(path("link"), "pipe").isNone());
    expectNoFile(path("pipe"));
    expectNoFile(path("link"));
    const auto reader = Descriptor::open(path("pipe").c_str(), O_RDONLY | O_NONBLOCK);
    ASSERT_TRUE(reader.ok());
    expectNoFile(path("pipe"));
    const auto writer = Descriptor::open(path("pipe").c_str(), O_WRONLY | O_NONBLOCK);
    ASSERT_TRUE(writer.ok());
    expectNoFile(path("pipe"));
    expectNoFile("/proc/self/fd/" + std::to_string(reader.value().number()));
}

TEST_F(LinuxOpenFileTest, SocketsAndDevicesAreNoFiles) {
    const Descriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    struct ::sockaddr_un address {};
    address.sun_family = AF_UNIX;
    const std::string socketPath = path("socket");
    ASSERT_LT(socketPath.size(), sizeof(address.sun_path));
    std::copy(socketPath.begin(), socketPath.end(), address.sun_path);
    ASSERT_EQ(::bind(socket.number(), reinterpret_cast<const struct ::sockaddr*>(&address),
                     sizeof(address)),
              0);
    expectNoFile(socketPath);
    for (const char* device : {"/dev/null", "/dev/zero", "/dev/full"}) {
        expectNoFile(device);
    }
    ASSERT_TRUE(files.createLink(path("link"), "/dev/full").isNone());
    expectNoFile(path("link"));
}

TEST_F(LinuxOpenFileTest, ReadsFilesThatClaimToBeEmpty) {
    const auto file = files.open("/proc/self/status", {});
    ASSERT_TRUE(file.ok());
    EXPECT_EQ(file.value()->attributes().value().size, 0U);
    Data buffer(5);
    EXPECT_EQ(file.value()->read(buffer).value(), 5U);
    EXPECT_EQ(textOf(buffer), "Name:");
}

TEST_F(LinuxOpenFileTest, ARunningProgramIsNotOpenedForWriting) {
    EXPECT_EQ(errorOfOpen("/proc/self/exe", {.write = true}), ETXTBSY);
    EXPECT_EQ(errorOfOpen("/proc/self/exe", forReading), 0);
}

TEST_F(LinuxOpenFileTest, NoProgramThatIsStartedInheritsIt) {
    const auto file = files.open(path("f"), forWriting);
    ASSERT_TRUE(file.ok());
    bool isFound = false;
    const auto entries = files.folderEntries("/proc/self/fd");
    for (const FolderEntry& entry : entries.value()) {
        if (files.linkTarget("/proc/self/fd/" + entry.name).error().isNone() &&
            files.linkTarget("/proc/self/fd/" + entry.name).value() == path("f")) {
            isFound = true;
            EXPECT_EQ(::fcntl(std::stoi(entry.name), F_GETFD), FD_CLOEXEC);
        }
    }
    EXPECT_TRUE(isFound);
}

TEST_F(LinuxOpenFileTest, TheMaskTakesAwayFromThePermissions) {
    const ::mode_t mask = ::umask(027);
    EXPECT_EQ(errorOfOpen(path("f"), forWriting), 0);
    EXPECT_EQ(errorOfOpen(path("g"), {.write = true, .create = true, .permissions = 0100757}), 0);
    ::umask(mask);
    EXPECT_EQ(files.attributes(path("f")).value().permissions, 0640U);
    EXPECT_EQ(files.attributes(path("g")).value().permissions, 0750U);
}

TEST_F(LinuxOpenFileTest, WhatMayNotBeDoneAnswersSo) {
    ASSERT_TRUE(files.writeFile(path("closed"), bytesOf("x"), 0600).isNone());
    ASSERT_TRUE(files.writeFile(path("readable"), bytesOf("x"), 0600).isNone());
    ASSERT_TRUE(files.setPermissions(path("closed"), 0).isNone());
    ASSERT_TRUE(files.setPermissions(path("readable"), 0444).isNone());
    ASSERT_TRUE(files.setPermissions(folder.path(), 0555).isNone());
    EXPECT_EQ(runForked([&] {
                  if (::geteuid() == 0 && ::seteuid(65534) != 0) {
                      return 1;
                  }
                  return errorOfOpen(path("closed"), forReading) == EACCES &&
                                 errorOfOpen(path("readable"), forReading) == 0 &&
                                 errorOfOpen(path("readable"), forWriting) == EACCES &&
                                 errorOfOpen(path("readable"), asNew) == EEXIST &&
                                 errorOfOpen(path("new"), forWriting) == EACCES
                             ? 0
                             : 2;
              }),
              ProcessEnd());
    ASSERT_TRUE(files.setPermissions(folder.path(), 0755).isNone());
}

// Interruptions.

std::atomic<int> alarms = 0;

/// Interrupts this thread's calls again and again for its life.
class Interruptions {
  public:
    Interruptions() {
        alarms = 0;
        struct ::sigaction action {};
        action.sa_handler = [](int) { ++alarms; };
        action.sa_flags = 0; // no SA_RESTART: calls come back with EINTR
        EXPECT_EQ(::sigaction(SIGALRM, &action, &before_), 0);
        set(200);
    }
    ~Interruptions() {
        set(0);
        ::sigaction(SIGALRM, &before_, nullptr);
    }
    Interruptions(const Interruptions&) = delete;
    Interruptions& operator=(const Interruptions&) = delete;

  private:
    static void set(::suseconds_t microseconds) {
        const struct ::itimerval timer = {{0, microseconds}, {0, microseconds}};
        EXPECT_EQ(::setitimer(ITIMER_REAL, &timer, nullptr), 0);
    }
    struct ::sigaction before_ = {};
};

TEST_F(LinuxOpenFileTest, InterruptedCallsAreTakenUpAgain) {
    const std::string text(1'000'000, 'x');
    Data buffer(text.size());
    const Interruptions interruptions;
    for (int round = 0; round < 1000 && alarms < 200; ++round) {
        auto opened = files.open(path("f"), forWriting);
        ASSERT_TRUE(opened.ok());
        OpenFile& file = *opened.value();
        ASSERT_TRUE(file.setSize(0).isNone());
        ASSERT_TRUE(file.write(bytesOf(text)).isNone());
        ASSERT_TRUE(file.sync().isNone());
        ASSERT_EQ(file.readAt(0, buffer).value(), text.size());
        ASSERT_TRUE(textOf(buffer) == text);
        ASSERT_TRUE(file.setPosition(0).isNone());
        ASSERT_EQ(file.read(buffer).value(), text.size());
        ASSERT_TRUE(file.close().isNone());
        ASSERT_TRUE(files.syncFolder(folder.path()).isNone());
    }
    EXPECT_GE(alarms, 10);
}

// Disks that take no more.

TEST_F(LinuxOpenFileTest, AtTheLimitOfAFileWhatFitsIsWritten) {
    EXPECT_EQ(runForked([&] {
                  ::signal(SIGXFSZ, SIG_IGN);
                  const struct ::rlimit limit = {1000, 1000};
                  if (::setrlimit(RLIMIT_FSIZE, &limit) != 0) {
                      return 1;
                  }
                  const auto opened = files.open(path("f"), forAppending);
                  OpenFile& file = *opened.value();
                  const std::string text(700, 'x');
                  if (!file.write(bytesOf(text)).isNone()) {
                      return 2;
                  }
                  const auto written = file.writeOnce(bytesOf(text));
                  if (!written.ok() || written.value() != 300) {
                      return 3;
                  }
                  if (file.writeOnce(bytesOf(text)).error() != SystemError(EFBIG) ||
                      file.write(bytesOf(text)) != SystemError(EFBIG) ||
                      file.setSize(1001) != SystemError(EFBIG)) {
                      return 4;
                  }
                  return file.position().value() == 1000 ? 0 : 5;
              }),
              ProcessEnd());
    EXPECT_EQ(files.attributes(path("f")).value().size, 1000U);
}

constexpr int cannotMount = 77;

/// Fills a small disk; the number of what went wrong.
int fillDisk(FileSystem& files, const std::string& disk) {
    const auto opened = files.open(disk + "/f", asNew);
    if (!opened.ok()) {
        return 1;
    }
    OpenFile& file = *opened.value();
    const Data much(1U << 20U, std::byte{'x'});
    const auto written = file.writeOnce(much);
    if (!written.ok() || written.value() == 0 || written.value() >= much.size()) {
        return 2;
    }
    if (file.position().value() != written.value() ||
        file.attributes().value().size != written.value()) {
        return 3;
    }
    if (file.writeOnce(much).error() != SystemError(ENOSPC) ||
        file.write(much) != SystemError(ENOSPC)) {
        return 4;
    }
    if (!file.setSize(1).isNone() || !file.setPosition(1).isNone() ||
        !file.write(bytesOf("y")).isNone() || file.write(much) != SystemError(ENOSPC)) {
        return 5;
    }
    std::byte second = {};
    if (file.readAt(1, std::span(&second, 1)).value() != 1 || second != std::byte{'y'}) {
        return 6;
    }
    return file.sync().isNone() && file.close().isNone() ? 0 : 7;
}

TEST_F(LinuxOpenFileTest, OnAFullDiskWhatFitsIsWritten) {
    const ProcessEnd end = runForked([&] {
        // In a world of the child's own, where the disk goes with it.
        if (::unshare(CLONE_NEWNS) != 0 ||
            ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
            ::mount("none", folder.path().c_str(), "tmpfs", 0, "size=64k") != 0) {
            return cannotMount;
        }
        return fillDisk(files, folder.path());
    });
    if (end == ProcessEnd{cannotMount, 0}) {
        GTEST_SKIP() << "needs the right to mount a small tmpfs";
    }
    EXPECT_EQ(end, ProcessEnd());
}

} // namespace
} // namespace tav
