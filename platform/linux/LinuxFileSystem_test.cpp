#include "platform/linux/Descriptor.hpp"
#include "platform/linux/LinuxFileSystem.hpp"
#include "testing/TemporaryFolder.hpp"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <optional>
#include <set>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace tav {
namespace {

using namespace std::string_literals;

/// What only the host itself has; the rules that every file system keeps are tested for all of them
/// at one place, with the in-memory one.
/// No test leaves a descriptor behind.
class LinuxFileSystemTest : public ::testing::Test {
  protected:
    TemporaryFolder folder;
    LinuxFileSystem files;
    const std::size_t openBefore = openDescriptors();

    void TearDown() override { EXPECT_EQ(openDescriptors(), openBefore); }

    static std::size_t openDescriptors() {
        return LinuxFileSystem().folderEntries("/proc/self/fd").value().size();
    }

    std::string path(std::string_view name) const { return folder.path(name); }
    std::string made(std::string_view name, std::string_view content) {
        EXPECT_TRUE(files.writeFile(path(name), bytesOf(content), 0644).isNone());
        return path(name);
    }
    std::string read(std::string_view name) {
        const auto content = files.readFile(path(name), 1 << 20);
        return content.ok() ? std::string(textOf(content.value()))
                            : "error " + std::to_string(content.error().number());
    }
};

TEST_F(LinuxFileSystemTest, IsWhatCurrentBeginsWith) {
    EXPECT_EQ(&FileSystem::current(), &internal::realFileSystem());
    EXPECT_NE(dynamic_cast<LinuxFileSystem*>(&FileSystem::current()), nullptr);
}

TEST_F(LinuxFileSystemTest, AttributesAreTheKernels) {
    const std::string file = made("f", "12345");
    ASSERT_EQ(::chmod(file.c_str(), 04751), 0);
    const struct ::timespec times[2] = {{0, 0}, {1'600'000'001, 250'000'000}};
    ASSERT_EQ(::utimensat(AT_FDCWD, file.c_str(), times, 0), 0);
    struct ::stat expected {};
    ASSERT_EQ(::stat(file.c_str(), &expected), 0);

    const auto answer = files.attributes(file);
    ASSERT_TRUE(answer.ok());
    const FileAttributes& attributes = answer.value();
    EXPECT_EQ(attributes.kind, FileKind::Regular);
    EXPECT_EQ(attributes.permissions, 04751U);
    EXPECT_EQ(attributes.user, expected.st_uid);
    EXPECT_EQ(attributes.group, expected.st_gid);
    EXPECT_EQ(attributes.size, 5U);
    EXPECT_EQ(attributes.identity.device, expected.st_dev);
    EXPECT_EQ(attributes.identity.number, expected.st_ino);
    EXPECT_DOUBLE_EQ(attributes.modificationDate.secondsSince1970(), 1'600'000'001.25);
    EXPECT_NEAR(attributes.changeDate.secondsSince1970(),
                double(expected.st_ctim.tv_sec) + double(expected.st_ctim.tv_nsec) / 1e9, 1e-6);
}

TEST_F(LinuxFileSystemTest, DatesBefore1970AreNegative) {
    const std::string file = made("f", "");
    const struct ::timespec times[2] = {{0, 0}, {-2, 500'000'000}};
    if (::utimensat(AT_FDCWD, file.c_str(), times, 0) != 0) {
        GTEST_SKIP() << "the file system keeps no such dates";
    }
    EXPECT_DOUBLE_EQ(files.attributes(file).value().modificationDate.secondsSince1970(), -1.5);
}

TEST_F(LinuxFileSystemTest, KindsOfEverythingThatStandsInFolders) {
    made("file", "");
    ASSERT_TRUE(files.createFolder(path("folder"), 0755).isNone());
    ASSERT_TRUE(files.createLink(path("link"), "nowhere").isNone());
    ASSERT_EQ(::mkfifo(path("pipe").c_str(), 0600), 0);
    const Descriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    struct ::sockaddr_un address {};
    address.sun_family = AF_UNIX;
    const std::string socketPath = path("socket");
    ASSERT_LT(socketPath.size(), sizeof(address.sun_path));
    std::copy(socketPath.begin(), socketPath.end(), address.sun_path);
    ASSERT_EQ(::bind(socket.number(), reinterpret_cast<const struct ::sockaddr*>(&address),
                     sizeof(address)),
              0);

    EXPECT_EQ(files.attributes(path("file")).value().kind, FileKind::Regular);
    EXPECT_EQ(files.attributes(path("folder")).value().kind, FileKind::Folder);
    EXPECT_EQ(files.attributes(path("link")).value().kind, FileKind::Link);
    EXPECT_EQ(files.attributes(path("pipe")).value().kind, FileKind::Pipe);
    EXPECT_EQ(files.attributes(path("socket")).value().kind, FileKind::Socket);
    EXPECT_EQ(files.attributes("/dev/null").value().kind, FileKind::Device);

    const auto entries = files.folderEntries(folder.path());
    ASSERT_TRUE(entries.ok());
    EXPECT_EQ(entries.value().size(), 5U);
    for (const FolderEntry& entry : entries.value()) {
        const FileKind kind = files.attributes(path(entry.name)).value().kind;
        EXPECT_TRUE(entry.kind == kind || entry.kind == FileKind::Unknown) << entry.name;
    }

    // Nothing of it may be waited for, nor read or written as if it were a file.
    for (const char* name : {"pipe", "socket"}) {
        EXPECT_EQ(files.readFile(path(name), 10).error(), SystemError(EINVAL)) << name;
        EXPECT_EQ(files.writeFile(path(name), bytesOf("x"), 0600), SystemError(EINVAL)) << name;
    }
    EXPECT_EQ(files.readFile("/dev/zero", 10).error(), SystemError(EINVAL));
    EXPECT_EQ(files.writeFile("/dev/null", bytesOf("x"), 0600), SystemError(EINVAL));
}

TEST_F(LinuxFileSystemTest, APipeThatSomebodyReadsIsNoFileEither) {
    ASSERT_EQ(::mkfifo(path("pipe").c_str(), 0600), 0);
    const auto reader = Descriptor::open(path("pipe").c_str(), O_RDONLY | O_NONBLOCK);
    ASSERT_TRUE(reader.ok());
    EXPECT_EQ(files.writeFile(path("pipe"), bytesOf("x"), 0600), SystemError(EINVAL));
}

TEST_F(LinuxFileSystemTest, ReadsFilesThatClaimToBeEmpty) {
    ASSERT_EQ(files.attributes("/proc/self/status").value().size, 0U);
    const auto content = files.readFile("/proc/self/status", 1 << 20);
    ASSERT_TRUE(content.ok());
    EXPECT_EQ(textOf(content.value()).substr(0, 5), "Name:");
    EXPECT_EQ(files.readFile("/proc/self/status", 10).error(), SystemError(EFBIG));
}

TEST_F(LinuxFileSystemTest, ReadsASparseFileOnlyWithinTheLimit) {
    const std::string file = made("sparse", "");
    ASSERT_EQ(::truncate(file.c_str(), ::off_t{1} << 40), 0);
    EXPECT_EQ(files.readFile(file, 16U << 20U).error(), SystemError(EFBIG));
}

TEST_F(LinuxFileSystemTest, ReadsWholeFilesThatAThreadChangesMeanwhile) {
    const std::string file = made("f", "");
    std::atomic<bool> stop = false;
    std::thread writer([&] {
        LinuxFileSystem mine;
        for (std::size_t round = 0; !stop; ++round) {
            const std::string content((round * 7919) % 30'000, 'a');
            EXPECT_TRUE(mine.writeFile(file, bytesOf(content), 0644).isNone());
        }
    });
    for (int round = 0; round < 300; ++round) {
        const auto content = files.readFile(file, 100'000);
        ASSERT_TRUE(content.ok());
        ASSERT_LT(content.value().size(), 30'000U);
        ASSERT_EQ(textOf(content.value()).find_first_not_of('a'), std::string_view::npos);
    }
    stop = true;
    writer.join();
}

TEST_F(LinuxFileSystemTest, WhatTheDiskSaysWhileWritingComesBack) {
    ASSERT_TRUE(files.createLink(path("full"), "/proc/self/coredump_filter").isNone());
    // A file of the kernel that takes numbers only.
    EXPECT_EQ(files.writeFile(path("full"), bytesOf("no number"), 0600), SystemError(EINVAL));
}

TEST_F(LinuxFileSystemTest, ReplacingNothingByNothingIsAChangeToo) {
    const std::string file = made("f", "");
    const struct ::timespec old[2] = {{1000, 0}, {1000, 0}};
    ASSERT_EQ(::utimensat(AT_FDCWD, file.c_str(), old, 0), 0);
    ASSERT_EQ(files.attributes(file).value().modificationDate, Date::fromSecondsSince1970(1000));
    made("f", "");
    EXPECT_GT(files.attributes(file).value().modificationDate, Date::fromSecondsSince1970(2000));
}

TEST_F(LinuxFileSystemTest, LeavesNothingOpen) {
    made("f", "text");
    const auto countOpen = [&] { return files.folderEntries("/proc/self/fd").value().size(); };
    const std::size_t before = countOpen();
    for (const char* name : {"f", "", "gone"}) {
        static_cast<void>(files.readFile(path(name), 100));
        static_cast<void>(files.readFile(path(name), 1));
        static_cast<void>(files.writeFile(path(name) + "/", bytesOf("x"), 0600));
        static_cast<void>(files.folderEntries(path(name)));
    }
    made("f", "again");
    EXPECT_EQ(countOpen(), before);
}

TEST_F(LinuxFileSystemTest, ListsMoreThanOneAnswerOfTheKernelHolds) {
    std::set<std::string> expected;
    for (int i = 0; i < 1500; ++i) {
        const std::string name = "name " + std::string(40, 'x') + std::to_string(i);
        made(name, "");
        expected.insert(name);
    }
    const auto entries = files.folderEntries(folder.path());
    ASSERT_TRUE(entries.ok());
    std::set<std::string> names;
    for (const FolderEntry& entry : entries.value()) {
        names.insert(entry.name);
    }
    EXPECT_EQ(entries.value().size(), expected.size());
    EXPECT_EQ(names, expected);
}

TEST_F(LinuxFileSystemTest, AFolderThatIsGoneWhileItIsReadIsAnError) {
    ASSERT_TRUE(files.createFolder(path("gone"), 0755).isNone());
    const auto pinned = Descriptor::open(path("gone").c_str(), O_PATH | O_DIRECTORY);
    ASSERT_TRUE(pinned.ok());
    ASSERT_TRUE(files.removeFolder(path("gone")).isNone());
    const std::string link = "/proc/self/fd/" + std::to_string(pinned.value().number());
    EXPECT_EQ(files.folderEntries(link).error(), SystemError(ENOENT));
}

TEST_F(LinuxFileSystemTest, ResolvesFortyLinksAndNoMore) {
    made("0", "end");
    for (int i = 1; i <= 41; ++i) {
        ASSERT_TRUE(files.createLink(path(std::to_string(i)), std::to_string(i - 1)).isNone());
    }
    EXPECT_EQ(read("40"), "end");
    EXPECT_EQ(files.canonicalPath(path("40")).value(), path("0"));
    EXPECT_EQ(files.targetAttributes(path("41")).error(), SystemError(ELOOP));
    EXPECT_EQ(files.canonicalPath(path("41")).error(), SystemError(ELOOP));
}

TEST_F(LinuxFileSystemTest, HardLinksAreTheSameFile) {
    const std::string file = made("a", "x");
    ASSERT_EQ(::link(file.c_str(), path("b").c_str()), 0);
    EXPECT_EQ(files.attributes(path("a")).value().identity,
              files.attributes(path("b")).value().identity);
    // A name that stands there is refused, also one of the same file.
    EXPECT_EQ(files.move(path("a"), path("b"), Replace::No), SystemError(EEXIST));
    EXPECT_TRUE(files.attributes(path("a")).ok());
}

TEST_F(LinuxFileSystemTest, ASecondFileIsAnotherEvenUnderAReusedNumber) {
    made("a", "x");
    const FileIdentity first = files.attributes(path("a")).value().identity;
    if (first.birthNanoseconds == 0) {
        GTEST_SKIP() << "the file system keeps no time of birth";
    }
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    EXPECT_LT(
        std::abs(double(first.birthNanoseconds) / 1e9 - std::chrono::duration<double>(now).count()),
        600.0);
}

TEST_F(LinuxFileSystemTest, MoveAcrossFileSystemsIsRefused) {
    const std::string file = made("a", "x");
    const auto here = files.attributes(folder.path());
    const auto other = files.attributes("/proc");
    ASSERT_NE(here.value().identity.device, other.value().identity.device);
    EXPECT_EQ(files.move(file, "/proc/self/a", Replace::No), SystemError(EXDEV));
    EXPECT_EQ(files.move(file, "/proc/self/a", Replace::Yes), SystemError(EXDEV));
    EXPECT_EQ(read("a"), "x");
}

/// A file system that cannot refuse to replace, as some in user space, or a kernel that has no such
/// call.
class NeverRefuses : public LinuxFileSystem {
  public:
    int answer = EINVAL;

  protected:
    SystemError rename(const KernelPath& from, const KernelPath& to, unsigned int flags) override {
        return flags != 0 ? SystemError(answer) : LinuxFileSystem::rename(from, to, flags);
    }
};

TEST_F(LinuxFileSystemTest, LooksFirstWhereTheKernelCannotRefuse) {
    NeverRefuses others;
    made("a", "a");
    made("b", "b");
    EXPECT_EQ(others.move(path("a"), path("b"), Replace::No), SystemError(EEXIST));
    EXPECT_EQ(read("b"), "b");
    ASSERT_TRUE(files.createLink(path("broken"), "nowhere").isNone());
    EXPECT_EQ(others.move(path("a"), path("broken"), Replace::No), SystemError(EEXIST));
    EXPECT_TRUE(others.move(path("a"), path("c"), Replace::No).isNone());
    EXPECT_EQ(read("c"), "a");
    others.answer = ENOSYS;
    EXPECT_EQ(others.move(path("c"), path("b"), Replace::No), SystemError(EEXIST));
    EXPECT_TRUE(others.move(path("c"), path("d"), Replace::No).isNone());
    EXPECT_TRUE(others.move(path("d"), path("c"), Replace::No).isNone());
    others.answer = EINVAL;
    EXPECT_EQ(others.move(path("c"), path("b/x"), Replace::No), SystemError(ENOTDIR));
    EXPECT_TRUE(others.move(path("c"), path("b"), Replace::Yes).isNone());
    EXPECT_EQ(read("b"), "a");
    // What no flag is to blame for is still refused.
    ASSERT_TRUE(files.createFolder(path("folder"), 0755).isNone());
    EXPECT_EQ(others.move(path("folder"), path("folder/inside"), Replace::No), SystemError(EINVAL));
}

/// A file system to which "a.txt" and "A.TXT" are one name, as far as one file goes.
class IgnoresCase : public LinuxFileSystem {
  public:
    IgnoresCase(std::string stored, std::string asked)
        : stored_(std::move(stored)), asked_(std::move(asked)) {}

    Result<FileAttributes> attributes(std::string_view path) override {
        return LinuxFileSystem::attributes(path == asked_ ? stored_ : std::string(path));
    }

  protected:
    SystemError rename(const KernelPath& from, const KernelPath& to, unsigned int flags) override {
        const bool stands = LinuxFileSystem::attributes(stored_).ok();
        return flags != 0 && to.text() == asked_ && stands
                   ? SystemError(EEXIST)
                   : LinuxFileSystem::rename(from, to, flags);
    }

  private:
    std::string stored_;
    std::string asked_;
};

TEST_F(LinuxFileSystemTest, ChangesTheCaseOfANameAlone) {
    made("a.txt", "x");
    made("b.txt", "b");
    IgnoresCase others(path("a.txt"), path("A.TXT"));
    EXPECT_EQ(others.move(path("b.txt"), path("A.TXT"), Replace::No), SystemError(EEXIST));
    EXPECT_EQ(read("a.txt"), "x");
    EXPECT_EQ(others.move(path("a.txt"), path("a.txt"), Replace::No), SystemError(EEXIST));
    EXPECT_TRUE(others.move(path("a.txt"), path("A.TXT"), Replace::No).isNone());
    EXPECT_EQ(read("A.TXT"), "x");
    EXPECT_EQ(files.attributes(path("a.txt")).error(), SystemError(ENOENT));
}

/// An ordinary user for its life, where the tests run as root.
class OrdinaryUser {
  public:
    OrdinaryUser() { become(65534); }
    ~OrdinaryUser() { become(0); }
    OrdinaryUser(const OrdinaryUser&) = delete;
    OrdinaryUser& operator=(const OrdinaryUser&) = delete;

  private:
    bool wasRoot_ = ::geteuid() == 0;
    void become(::uid_t user) const {
        if (wasRoot_) {
            EXPECT_EQ(::seteuid(user), 0);
        }
    }
};

TEST_F(LinuxFileSystemTest, WhatMayNotBeDoneAnswersSo) {
    const std::string file = made("f", "x");
    ASSERT_TRUE(files.createFolder(path("closed"), 0700).isNone());
    made("closed/f", "");
    ASSERT_TRUE(files.setPermissions(file, 0).isNone());
    ASSERT_TRUE(files.setPermissions(path("closed"), 0).isNone());
    ASSERT_TRUE(files.setPermissions(folder.path(), 0555).isNone());
    {
        const OrdinaryUser user;
        EXPECT_EQ(files.readFile(file, 10).error(), SystemError(EACCES));
        EXPECT_EQ(files.writeFile(file, bytesOf("y"), 0600), SystemError(EACCES));
        EXPECT_EQ(files.folderEntries(path("closed")).error(), SystemError(EACCES));
        EXPECT_EQ(files.attributes(path("closed/f")).error(), SystemError(EACCES));
        EXPECT_EQ(files.writeFile(path("new"), bytesOf("y"), 0600), SystemError(EACCES));
        EXPECT_EQ(files.createFolder(path("new"), 0700), SystemError(EACCES));
        EXPECT_EQ(files.createLink(path("new"), "f"), SystemError(EACCES));
        EXPECT_EQ(files.move(file, path("new"), Replace::No), SystemError(EACCES));
        EXPECT_EQ(files.removeFile(file), SystemError(EACCES));
        EXPECT_TRUE(files.attributes(file).ok());
    }
    ASSERT_TRUE(files.setPermissions(folder.path(), 0755).isNone());
}

} // namespace
} // namespace tav
