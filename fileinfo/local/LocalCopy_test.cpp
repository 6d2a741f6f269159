// The copy engine between local files, on the volumes and with the sources that make it hard.

#include "fileinfo/CopyStatus.hpp"
#include "fileinfo/local/TavMacFileInfo.hpp"
#include "platform/Volumes.hpp"
#include "testing/ForkedProcess.hpp"
#include "testing/OwnMounts.hpp"
#include "testing/SpaceUsed.hpp"
#include "testing/TemporaryFolder.hpp"

#include <atomic>
#include <chrono>
#include <functional>
#include <random>
#include <thread>
#include <utility>

#include <gtest/gtest.h>

#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tav {
namespace {

FileSystem& files() { return internal::realFileSystem(); }

std::shared_ptr<TavMacFileInfo> item(std::string_view path) {
    return TavMacFileInfo::fileInfoWithPath(path);
}

void write(std::string_view path, std::string_view text) {
    EXPECT_TRUE(files().writeFile(path, bytesOf(text), 0666).isNone());
}

std::string read(std::string_view path) {
    const auto content = files().readFile(path, 1U << 30U);
    return content.ok() ? std::string(textOf(content.value())) : "(none)";
}

std::uint64_t sizeOf(const std::string& path) {
    const auto found = files().attributes(path);
    return found.ok() ? found.value().size : 0;
}

/// The engine, whatever the class's own short forms do.
Status copy(const std::string& from, const std::string& to, const CopyOptions& options = {},
            FileInfoPtr* out = nullptr) {
    return item(from)->copyTo(item(to).get(), false, nullptr, nullptr, out, options);
}

TEST(LocalCopy, CarriesContentAndDates) {
    const TemporaryFolder folder;
    const std::string content(3'000'000, 'x');
    write(folder.path("a"), content);
    EXPECT_TRUE(files().setModificationDate(folder.path("a"), Date(1000.25)).isNone());
    FileInfoPtr made;
    ASSERT_EQ(copy(folder.path("a"), folder.path("b"), {}, &made), Status::Success);
    EXPECT_EQ(read(folder.path("b")), content);
    EXPECT_EQ(made->path(), folder.path("b"));
    EXPECT_EQ(made->modificationDate(), Date(1000.25));
    EXPECT_EQ(made->size(), content.size());
}

/// The name is held by an empty file first, which is written through a link that has it.
TEST(LocalCopy, IntoAFolderEmptiesWhatALinkOfTheNameLeadsTo) {
    const TemporaryFolder folder;
    const std::string into = folder.path("into");
    ASSERT_TRUE(files().createFolder(into, 0777).isNone());
    ASSERT_TRUE(files().createLink(into + "/a", folder.path("theirs")).isNone());
    CopyOptions safe;
    safe.keepsDestination = true;
    for (const bool isSafe : {true, false}) {
        write(folder.path("a"), "content");
        write(folder.path("theirs"), "theirs");
        ASSERT_EQ(copy(folder.path("a"), into, isSafe ? safe : CopyOptions()), Status::Success);
        EXPECT_EQ(read(into + "/a"), "content");
        EXPECT_EQ(read(folder.path("theirs")), isSafe ? "theirs" : "");
        ASSERT_TRUE(files().removeFile(into + "/a").isNone());
        ASSERT_TRUE(files().createLink(into + "/a", folder.path("theirs")).isNone());
    }
    // A link to the source itself, symbolic or hard.
    for (const bool isHard : {true, false}) {
        ASSERT_TRUE(files().removeFile(into + "/a").isNone());
        ASSERT_EQ(isHard ? ::link(folder.path("a").c_str(), (into + "/a").c_str())
                         : ::symlink(folder.path("a").c_str(), (into + "/a").c_str()),
                  0);
        write(folder.path("a"), "content");
        ASSERT_EQ(copy(folder.path("a"), into, safe), Status::Success);
        EXPECT_EQ(read(folder.path("a")) + read(into + "/a"), "contentcontent");
        ASSERT_TRUE(files().removeFile(into + "/a").isNone());
        ASSERT_EQ(isHard ? ::link(folder.path("a").c_str(), (into + "/a").c_str())
                         : ::symlink(folder.path("a").c_str(), (into + "/a").c_str()),
                  0);
        ASSERT_EQ(copy(folder.path("a"), into), Status::Success);
        EXPECT_EQ(read(folder.path("a")) + read(into + "/a"), "");
    }
}

/// Its folder would be the one without a path, which is on no volume.
TEST(LocalCopy, ABareNameIsNoDestination) {
    const TemporaryFolder folder;
    write(folder.path("a"), "content");
    EXPECT_EQ(copy(folder.path("a"), "QuillboxBareName"), CopyStatus::noRoom);
    EXPECT_EQ(read("QuillboxBareName"), "(none)");
}

TEST(LocalCopy, OfAFileOfTheTemporaryNameInItsOwnFolderLosesIt) {
    const TemporaryFolder folder;
    const std::string source = folder.path("QuillboxCopyFile.tmp");
    write(source, "content");
    CopyOptions safe;
    safe.keepsDestination = true;
    EXPECT_EQ(copy(source, folder.path("a"), safe), Status::Success);
    EXPECT_EQ(read(folder.path("a")) + read(source), "contentcontent");
    EXPECT_EQ(copy(source, folder.path("b")), Status::Success);
    EXPECT_EQ(read(folder.path("b")) + read(source), "(none)");
}

TEST(LocalCopy, ALargeFileIsCopiedUpToItsLow32Bits) {
    const TemporaryFolder folder;
    const std::uint64_t beyond = (std::uint64_t{1} << 32U) + 12'345;
    write(folder.path("a"), "");
    ASSERT_EQ(::truncate(folder.path("a").c_str(), ::off_t(beyond)), 0);
    ASSERT_EQ(copy(folder.path("a"), folder.path("b")), Status::Success);
    EXPECT_EQ(sizeOf(folder.path("b")), 12'345U);
}

TEST(LocalCopy, ASparseFileOf5GiBIsCopiedWhole) {
    const TemporaryFolder folder;
    const std::uint64_t size = std::uint64_t{5} << 30U;
    if (item(folder.path())->freeSpaceOnVolume() < size) {
        GTEST_SKIP() << "less than 5 GiB free in " << folder.path();
    }
    {
        OpenOptions forWriting;
        forWriting.write = forWriting.create = true;
        const auto file = files().open(folder.path("a"), forWriting);
        ASSERT_TRUE(file.ok());
        ASSERT_TRUE(file.value()->setPosition((std::uint64_t{1} << 32U) + 4096).isNone());
        ASSERT_TRUE(file.value()->write(bytesOf("beyond")).isNone());
        ASSERT_TRUE(file.value()->setSize(size).isNone());
    }
    CopyOptions options;
    options.isWhole = options.carriesHoles = options.keepsDestination = true;
    ASSERT_EQ(copy(folder.path("a"), folder.path("b"), options), Status::Success);
    EXPECT_EQ(sizeOf(folder.path("b")), size);
    EXPECT_LE(spaceUsedBy(folder.path("b")), spaceUsedBy(folder.path("a")) + (64U << 10U));
    const auto file = files().open(folder.path("b"), {});
    Data text(6);
    ASSERT_TRUE(file.ok());
    ASSERT_TRUE(file.value()->readAt((std::uint64_t{1} << 32U) + 4096, text).ok());
    EXPECT_EQ(textOf(text), "beyond");
}

TEST(LocalCopy, CarriesPermissionsAndExtendedAttributes) {
    const TemporaryFolder folder;
    write(folder.path("a"), "x");
    if (!files().setExtendedAttribute(folder.path("a"), "user.tav", bytesOf("v")).isNone()) {
        GTEST_SKIP() << "no extended attributes in " << folder.path();
    }
    ASSERT_TRUE(files().setPermissions(folder.path("a"), 0440).isNone());
    CopyOptions options;
    options.carriesPermissions = options.carriesExtendedAttributes = options.verifies = true;
    ASSERT_EQ(copy(folder.path("a"), folder.path("b"), options), Status::Success);
    EXPECT_EQ(files().attributes(folder.path("b")).value().permissions, 0440U);
    EXPECT_EQ(files().extendedAttribute(folder.path("b"), "user.tav").value(), dataFromText("v"));
}

TEST(LocalCopy, OfAReadOnlyFileCarriesTheCreationDate) {
    const TemporaryFolder folder;
    ASSERT_TRUE(files().setPermissions(folder.path(), 0777).isNone());
    EXPECT_EQ(runForked([&] {
                  if (::geteuid() == 0 && ::seteuid(65534) != 0) {
                      return 1;
                  }
                  write(folder.path("a"), "x");
                  item(folder.path("a"))->setCreationDate(Date(1000.25));
                  static_cast<void>(files().setPermissions(folder.path("a"), 0444));
                  CopyOptions options;
                  options.carriesPermissions = true;
                  if (copy(folder.path("a"), folder.path("b"), options) != Status::Success) {
                      return 2;
                  }
                  const auto dateOf = [&](const char* name) {
                      return item(folder.path(name))->creationDate();
                  };
                  return dateOf("a") != Date(1000.25) || dateOf("b") == dateOf("a") ? 0 : 3;
              }),
              ProcessEnd());
}

TEST(LocalCopy, APipeIsNoSourceToWaitFor) {
    const TemporaryFolder folder;
    ASSERT_EQ(::mkfifo(folder.path("pipe").c_str(), 0666), 0);
    EXPECT_EQ(copy(folder.path("pipe"), folder.path("b")), CopyStatus::sourceNotOpened);
    EXPECT_EQ(copy("/dev/zero", folder.path("b")), CopyStatus::sourceNotOpened);
    CopyOptions options;
    options.keepsDestination = true;
    EXPECT_EQ(copy(folder.path("pipe"), folder.path("c"), options), CopyStatus::sourceNotOpened);
    EXPECT_EQ(files().folderEntries(folder.path()).value().size(), 2U); // and the temporary file
}

/// Changes the source when its first chunk is copied.
Status copyWhile(const std::string& from, const std::string& to,
                 const std::function<void()>& change, const CopyOptions& options = {}) {
    ProgressDelegate delegate;
    bool isFirst = true;
    delegate.copyingFile = [&](TavBaseFileInfo&, TavBaseFileInfo&, float, void*) {
        if (std::exchange(isFirst, false)) {
            change();
        }
        return false;
    };
    return item(from)->copyTo(item(to).get(), false, &delegate, nullptr, nullptr, options);
}

TEST(LocalCopy, OfASourceThatChangesEndsWithAStatus) {
    const TemporaryFolder folder;
    const std::string from = folder.path("a");
    const std::string to = folder.path("b");
    const std::string content(2'500'000, 'x');
    CopyOptions safe;
    safe.keepsDestination = true;
    write(from, content);
    EXPECT_EQ(copyWhile(from, to, [&] { write(from, content + "more"); }), Status::Success);
    EXPECT_TRUE(read(to) == content);
    write(from, content);
    EXPECT_EQ(copyWhile(from, to, [&] { write(from, content.substr(0, 1'500'000)); }),
              Status::Success);
    // Its third chunk is empty, and writing that makes the copy as long as to where it would begin.
    EXPECT_EQ(sizeOf(to), 2'097'152U);
    EXPECT_TRUE(read(to) == content.substr(0, 1'500'000) + std::string(597'152, '\0'));
    write(from, content);
    write(to, "old");
    EXPECT_EQ(copyWhile(
                  from, to, [&] { write(from, "short"); }, safe),
              CopyStatus::chunkNotRead);
    EXPECT_EQ(read(to), "old");
    // An open file outlives its name.
    write(from, content);
    EXPECT_EQ(copyWhile(from, to, [&] { EXPECT_TRUE(files().removeFile(from).isNone()); }),
              Status::Success);
    EXPECT_TRUE(read(to) == content);
    write(from, content);
    EXPECT_EQ(copyWhile(from, to,
                        [&] {
                            EXPECT_TRUE(files().removeFile(from).isNone());
                            EXPECT_TRUE(files().createFolder(from, 0777).isNone());
                        }),
              Status::Success);
    EXPECT_TRUE(read(to) == content);
}

TEST(LocalCopy, OnTinyFullAndReadOnlyVolumesEndsWithAStatus) {
    const TemporaryFolder folder;
    const std::string from = folder.path("a");
    const std::string volume = folder.path("volume");
    write(from, std::string(600'000, 'x'));
    ASSERT_TRUE(files().createFolder(volume, 0777).isNone());
    const int end = runWithOwnMounts([&] {
        if (::mount("tmpfs", volume.c_str(), "tmpfs", 0, "size=400k") != 0) {
            return cannotMount;
        }
        const std::string to = volume + "/b";
        if (copy(from, to) != CopyStatus::noRoom) {
            return 1;
        }
        write(volume + "/old", "old");
        CopyOptions safe;
        safe.keepsDestination = safe.isDurable = true;
        if (copy(from, volume + "/old", safe) != CopyStatus::noRoom ||
            read(volume + "/old") != "old") {
            return 2;
        }
        // The room goes while the copy grows.
        if (::mount("tmpfs", volume.c_str(), "tmpfs", MS_REMOUNT, "size=4m") != 0) {
            return cannotMount;
        }
        write(from, std::string(3'000'000, 'x'));
        const auto fill = [&] {
            static_cast<void>(
                files().writeFile(volume + "/full", bytesOf(std::string(4'000'000, 'f')), 0666));
        };
        if (copyWhile(from, volume + "/old", fill, safe) != Status::Failure ||
            read(volume + "/old") != "old" || files().folderEntries(volume).value().size() != 2) {
            return 3;
        }
        static_cast<void>(files().removeFile(volume + "/full"));
        if (copyWhile(from, to, fill) != Status::Failure || sizeOf(to) == 0 ||
            sizeOf(to) >= 3'000'000) {
            return 4;
        }
        static_cast<void>(files().removeFile(volume + "/full"));
        if (::mount("tmpfs", volume.c_str(), "tmpfs", MS_REMOUNT | MS_RDONLY, "") != 0) {
            return cannotMount;
        }
        write(from, "small");
        if (copy(from, volume + "/c") != CopyStatus::noTemporaryFile) {
            return 5;
        }
        if (copy(from, volume + "/old", safe) != CopyStatus::noTemporaryFile ||
            read(volume + "/old") != "old") {
            return 6;
        }
        return passed;
    });
    if (end == cannotMount) {
        GTEST_SKIP() << "no mounts of one's own here";
    }
    EXPECT_EQ(end, passed);
}

TEST(LocalCopy, IsCancelledFromAnotherThreadAtRandomMoments) {
    const TemporaryFolder folder;
    const std::string content(9'000'000, 'x'); // large enough to be read ahead
    write(folder.path("a"), content);
    std::mt19937 random(20'090'102);
    for (int n = 0; n < 1000; ++n) {
        const auto source = item(folder.path("a"));
        const auto destination = item(folder.path("b"));
        std::atomic<bool> begins = false;
        const auto delay = static_cast<long>(random() % 4000);
        std::thread other([&] {
            while (!begins.load(std::memory_order_relaxed)) {
                std::this_thread::yield();
            }
            std::this_thread::sleep_for(std::chrono::microseconds(delay));
            source->cancelCopy();
        });
        FileInfoPtr made;
        begins.store(true, std::memory_order_relaxed);
        const Status status = source->copyTo(destination.get(), false, nullptr, nullptr, &made);
        other.join();
        const std::size_t names = files().folderEntries(folder.path()).value().size();
        if (status == CopyStatus::cancelled) {
            ASSERT_EQ(names, 1U);
        } else {
            ASSERT_EQ(status, Status::Success);
            ASSERT_EQ(names, 2U);
            ASSERT_TRUE(read(folder.path("b")) == content);
            ASSERT_TRUE(files().removeFile(folder.path("b")).isNone());
        }
    }
}

TEST(LocalCopy, TwoSafeCopiesIntoOneFolderAreConcurrent) {
    const TemporaryFolder folder;
    write(folder.path("a"), std::string(4'000'000, 'a'));
    write(folder.path("b"), std::string(4'000'000, 'b'));
    ASSERT_TRUE(files().createFolder(folder.path("to"), 0777).isNone());
    CopyOptions safe;
    safe.keepsDestination = true;
    for (int n = 0; n < 20; ++n) {
        Status first{};
        Status second{};
        std::thread other([&] { second = copy(folder.path("b"), folder.path("to"), safe); });
        first = copy(folder.path("a"), folder.path("to"), safe);
        other.join();
        ASSERT_EQ(first, Status::Success);
        ASSERT_EQ(second, Status::Success);
        ASSERT_TRUE(read(folder.path("to/a")) == std::string(4'000'000, 'a'));
        ASSERT_TRUE(read(folder.path("to/b")) == std::string(4'000'000, 'b'));
        ASSERT_EQ(files().folderEntries(folder.path("to")).value().size(), 2U);
    }
}

/// 0 where copies of 24 MB share the blocks of their source, chunk by chunk and with every report.
int copyOnAVolumeThatClones() {
    const TemporaryFolder folder;
    const std::string place = folder.path("volume");
    if (!files().createFolder(place, 0777).isNone() ||
        !mountImage(folder.path("image"), "mkfs.btrfs -q -f", "btrfs", place, "256M")) {
        return cannotMount;
    }
    constexpr std::size_t size = 24'000'001;
    std::string content(size, 'x');
    for (std::size_t i = 0; i < content.size(); i += 4096) {
        content[i] = static_cast<char>(i / 4096 * 7);
    }
    write(place + "/a", content);
    ::sync();
    const std::uint64_t before = Volumes::current().freeBytes(place).value();
    int reports = 0;
    ProgressDelegate delegate;
    delegate.copyingFile = [&](TavBaseFileInfo&, TavBaseFileInfo&, float, void*) {
        ++reports;
        return false;
    };
    if (item(place + "/a")->copyTo(item(place + "/b").get(), false, &delegate, nullptr, nullptr) !=
            Status::Success ||
        reports != 23) {
        return 1;
    }
    ::sync();
    const std::uint64_t after = Volumes::current().freeBytes(place).value();
    if (read(place + "/b") != content) {
        return 2;
    }
    return before < after + size / 2 ? passed : 3;
}

TEST(LocalCopy, SharesBlocksWhereTheVolumeCan) {
    const int answer = runWithOwnMounts(copyOnAVolumeThatClones);
    if (answer == cannotMount) {
        GTEST_SKIP() << "this machine cannot mount an image of btrfs";
    }
    EXPECT_EQ(answer, passed);
}

} // namespace
} // namespace tav
