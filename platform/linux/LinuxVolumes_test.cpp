#include "platform/FileSystem.hpp"
#include "platform/linux/LinuxVolumes.hpp"
#include "testing/OwnMounts.hpp"
#include "testing/TemporaryFolder.hpp"

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace tav {
namespace {

FileSystem& files() { return internal::realFileSystem(); }

std::uint64_t mountOf(const std::string& path) {
    return files().targetAttributes(path).value().mount;
}

class LinuxVolumesTest : public testing::Test {
  protected:
    TemporaryFolder folder;
    LinuxVolumes volumes;

    std::string made(const std::string& name) {
        EXPECT_TRUE(files().createFolder(folder.path(name), 0755).isNone());
        return folder.path(name);
    }
};

TEST_F(LinuxVolumesTest, IsWhatCurrentBeginsWith) {
    EXPECT_EQ(&Volumes::current(), &internal::realVolumes());
    EXPECT_NE(dynamic_cast<LinuxVolumes*>(&Volumes::current()), nullptr);
}

TEST_F(LinuxVolumesTest, TellsTheVolumeOfAPath) {
    const auto answer = volumes.volumeOfPath(folder.path());
    ASSERT_TRUE(answer.ok());
    const VolumeInfo& volume = answer.value();
    EXPECT_EQ(volume.identifier, mountOf(folder.path()));
    EXPECT_EQ(mountOf(volume.rootPath), volume.identifier);
    EXPECT_TRUE(volumes.isVolumeRoot(volume.rootPath));
    EXPECT_FALSE(volume.isReadOnly);
    EXPECT_FALSE(volume.typeName.empty());
    struct ::statvfs space {};
    ASSERT_EQ(::statvfs(folder.path().c_str(), &space), 0);
    EXPECT_EQ(volume.totalBytes, space.f_blocks * space.f_frsize);
    EXPECT_LE(volume.freeBytes, volume.totalBytes);
    const auto free = volumes.freeBytes(folder.path());
    ASSERT_TRUE(free.ok());
    EXPECT_LE(free.value(), volume.totalBytes);
    EXPECT_GT(free.value(), volume.freeBytes / 2); // others write meanwhile
    ASSERT_TRUE(files().writeFile(folder.path("f"), {}, 0600).isNone());
    const auto file = files().open(folder.path("f"), {});
    ASSERT_TRUE(file.ok());
    const auto freeThere = volumes.freeBytesOfFile(*file.value(), "/proc"); // the file counts
    ASSERT_TRUE(freeThere.ok());
    EXPECT_GT(freeThere.value(), volume.freeBytes / 2);
    struct ::stat status {};
    ASSERT_EQ(::stat(folder.path().c_str(), &status), 0);
    const std::string device =
        std::to_string(::major(status.st_dev)) + ":" + std::to_string(::minor(status.st_dev));
    EXPECT_EQ(volume.deviceIdentifier, ::major(status.st_dev) == 0 ? "" : device);
}

TEST_F(LinuxVolumesTest, VolumesWithoutADeviceHaveNone) {
    const auto proc = volumes.volumeOfPath("/proc/self/status");
    ASSERT_TRUE(proc.ok());
    EXPECT_EQ(proc.value().rootPath, "/proc");
    EXPECT_EQ(proc.value().typeName, "proc");
    EXPECT_EQ(proc.value().deviceIdentifier, "");
    EXPECT_EQ(proc.value().totalBytes, 0U);
}

TEST_F(LinuxVolumesTest, RootsAreFolders) {
    ASSERT_TRUE(files().createLink(folder.path("l"), "/proc").isNone());
    EXPECT_TRUE(volumes.isVolumeRoot("/"));
    EXPECT_TRUE(volumes.isVolumeRoot("/proc"));
    EXPECT_TRUE(volumes.isVolumeRoot("/proc/"));
    EXPECT_FALSE(volumes.isVolumeRoot("/proc/self"));
    EXPECT_FALSE(volumes.isVolumeRoot(folder.path()));
    EXPECT_FALSE(volumes.isVolumeRoot(folder.path("l")));
    EXPECT_FALSE(volumes.isVolumeRoot(folder.path("gone")));
    EXPECT_FALSE(volumes.isVolumeRoot(""));
    EXPECT_FALSE(volumes.isVolumeRoot(std::string("/\0", 2)));
}

TEST_F(LinuxVolumesTest, WhatIsNotThere) {
    ASSERT_TRUE(files().createLink(folder.path("nowhere"), "gone").isNone());
    ASSERT_TRUE(files().createLink(folder.path("self"), "self").isNone());
    ASSERT_TRUE(files().createLink(folder.path("l"), "/proc/self").isNone());
    EXPECT_EQ(volumes.volumeOfPath(folder.path("gone")).error(), SystemError(ENOENT));
    EXPECT_EQ(volumes.volumeOfPath(folder.path("nowhere")).error(), SystemError(ENOENT));
    EXPECT_EQ(volumes.volumeOfPath(folder.path("self")).error(), SystemError(ELOOP));
    EXPECT_EQ(volumes.volumeOfPath("").error(), SystemError(ENOENT));
    EXPECT_EQ(volumes.volumeOfPath(std::string("/\0", 2)).error(), SystemError(EINVAL));
    EXPECT_EQ(volumes.volumeOfPath(folder.path("l")).value().typeName, "proc");
    EXPECT_EQ(volumes.freeBytes(folder.path("gone")).error(), SystemError(ENOENT));
    EXPECT_EQ(volumes.freeBytes(folder.path("nowhere")).error(), SystemError(ENOENT));
    EXPECT_EQ(volumes.freeBytes(folder.path("self")).error(), SystemError(ELOOP));
    EXPECT_EQ(volumes.freeBytes("").error(), SystemError(ENOENT));
    EXPECT_EQ(volumes.freeBytes(std::string("/\0", 2)).error(), SystemError(EINVAL));
    EXPECT_EQ(volumes.freeBytes(folder.path("l")).value(), 0U);
}

TEST_F(LinuxVolumesTest, NothingIsWaitedForNorLeftOpen) {
    ASSERT_EQ(::mkfifo(folder.path("pipe").c_str(), 0600), 0);
    const auto count = [] { return files().folderEntries("/proc/self/fd").value().size(); };
    EXPECT_TRUE(volumes.volumeOfPath(folder.path("pipe")).ok());
    const std::size_t before = count(); // with the table's
    std::string deep = made("d");
    for (int level = 0; level < 50; ++level) {
        deep += '/' + std::string(200, 'd');
        ASSERT_TRUE(files().createFolder(deep, 0700).isNone());
    }
    EXPECT_TRUE(volumes.volumeOfPath(folder.path("pipe")).ok());
    EXPECT_EQ(volumes.volumeOfPath(deep).value(), volumes.volumeOfPath(folder.path()).value());
    EXPECT_FALSE(volumes.volumeOfPath(deep + "/gone").ok());
    EXPECT_TRUE(volumes.freeBytes(deep).ok());
    EXPECT_FALSE(volumes.freeBytes(deep + "/gone").ok());
    EXPECT_FALSE(volumes.isVolumeRoot(deep));
    EXPECT_EQ(count(), before);
    EXPECT_EQ(volumes.readings(), 1U);
}

TEST_F(LinuxVolumesTest, ARecordedTableIsReadInPlaceOfTheKernels) {
    const std::string identifier = std::to_string(mountOf(folder.path()));
    const std::string table = folder.path("table");
    const auto record = [&](const std::string& text) {
        ASSERT_TRUE(files().writeFile(table, tav::bytesOf(text), 0600).isNone());
    };
    record(identifier +
           " 1 8:17 /x /media/My\\040Stick\\134\xFF rw shared:2 - vfat /dev/sdb1 rw\n");
    LinuxVolumes recorded(table);
    const auto volume = recorded.volumeOfPath(folder.path());
    ASSERT_TRUE(volume.ok());
    EXPECT_EQ(volume.value().rootPath, "/media/My Stick\\\xFF");
    EXPECT_EQ(volume.value().typeName, "vfat");
    EXPECT_EQ(volume.value().deviceIdentifier, "8:17");
    // What the table does not know is mounted above what this process sees.
    const auto unknown = recorded.volumeOfPath("/proc");
    ASSERT_TRUE(unknown.ok());
    EXPECT_EQ(unknown.value().rootPath, "/");
    EXPECT_EQ(unknown.value().typeName, "");
    EXPECT_EQ(unknown.value().deviceIdentifier, "");

    LinuxVolumes missing(folder.path("gone"));
    EXPECT_EQ(missing.volumeOfPath("/").error(), SystemError(ENOENT));
    LinuxVolumes noFile(folder.path());
    EXPECT_EQ(noFile.volumeOfPath("/").error(), SystemError(EISDIR));
}

TEST_F(LinuxVolumesTest, MountsThatComeAndGoAreSeen) {
    const std::string a = made("a b\n\\");
    const std::string b = made("b");
    const int end = runWithOwnMounts([&] {
        LinuxVolumes mine;
        const auto outer = mine.volumeOfPath(a);
        if (::mount("none", a.c_str(), "tmpfs", 0, "size=64k") != 0) {
            return cannotMount;
        }
        const auto inner = mine.volumeOfPath(a);
        if (!outer.ok() || !inner.ok() || inner.value().rootPath != a ||
            inner.value().typeName != "tmpfs" || inner.value().totalBytes != 65536 ||
            inner.value().isReadOnly || !inner.value().deviceIdentifier.empty()) {
            return 1;
        }
        if (inner.value().identifier == outer.value().identifier || !mine.isVolumeRoot(a) ||
            mine.isVolumeRoot(b)) {
            return 2;
        }
        // Another place of the same volume, and one that is not to be written to.
        if (::mount(a.c_str(), b.c_str(), nullptr, MS_BIND, nullptr) != 0 ||
            ::mount("none", b.c_str(), nullptr, MS_BIND | MS_REMOUNT | MS_RDONLY, nullptr) != 0) {
            return cannotMount;
        }
        const auto bound = mine.volumeOfPath(b);
        if (!bound.ok() || bound.value().rootPath != b || !bound.value().isReadOnly ||
            bound.value().identifier == inner.value().identifier || !mine.isVolumeRoot(b) ||
            bound.value().totalBytes != 65536) {
            return 3;
        }
        const auto still = mine.volumeOfPath(a);
        if (!still.ok() || still.value().isReadOnly || still.value().rootPath != a) {
            return 4;
        }
        const std::size_t readings = mine.readings();
        static_cast<void>(mine.volumeOfPath(a));
        if (mine.readings() != readings) {
            return 5; // nothing has changed
        }
        if (::umount(b.c_str()) != 0 || ::umount(a.c_str()) != 0) {
            return 6;
        }
        const auto after = mine.volumeOfPath(a);
        return after.ok() && after.value().identifier == outer.value().identifier ? passed : 7;
    });
    if (end == cannotMount) {
        GTEST_SKIP() << "mounts need root";
    }
    EXPECT_EQ(end, passed);
}

TEST_F(LinuxVolumesTest, AnotherNamespaceHasAnotherTable) {
    ASSERT_TRUE(volumes.volumeOfPath("/proc").ok()); // with the table of this one open
    const std::string a = made("a");
    const int end = runWithOwnMounts([&] {
        if (::mount("none", a.c_str(), "tmpfs", 0, nullptr) != 0) {
            return cannotMount;
        }
        const auto volume = volumes.volumeOfPath(a);
        return volume.ok() && volume.value().rootPath == a ? passed : 1;
    });
    if (end == cannotMount) {
        GTEST_SKIP() << "mounts need root";
    }
    EXPECT_EQ(end, passed);
}

TEST_F(LinuxVolumesTest, InAChangedRootTheVolumeAboveIsTheRoot) {
    const std::string a = made("a");
    const int end = runWithOwnMounts([&] {
        LinuxVolumes mine;
        static_cast<void>(mine.volumeOfPath("/"));
        if (::chroot(a.c_str()) != 0 || ::chdir("/") != 0) {
            return cannotMount;
        }
        const auto volume = mine.volumeOfPath("/");
        // The open table is gone on with; it does not show what lies above.
        return volume.ok() && volume.value().rootPath == "/" && volume.value().totalBytes > 0
                   ? passed
                   : 1;
    });
    if (end == cannotMount) {
        GTEST_SKIP() << "a changed root needs root";
    }
    EXPECT_EQ(end, passed);
}

TEST_F(LinuxVolumesTest, AVolumeOnABlockDeviceNamesIt) {
    const std::string place = made("place");
    const int end = runWithOwnMounts([&] {
        if (!mountImage(folder.path("image"), "mkfs.ext4 -q -F", "ext4", place)) {
            return cannotMount;
        }
        LinuxVolumes mine;
        const auto volume = mine.volumeOfPath(place + "/lost+found");
        const int result = volume.ok() && volume.value().rootPath == place &&
                                   volume.value().typeName == "ext4" &&
                                   volume.value().deviceIdentifier.starts_with("7:")
                               ? passed
                               : 1;
        static_cast<void>(::umount(place.c_str()));
        return result;
    });
    if (end == cannotMount) {
        GTEST_SKIP() << "no root, no loop devices or no mkfs.ext4";
    }
    EXPECT_EQ(end, passed);
}

TEST_F(LinuxVolumesTest, FatRoundsDatesDownAndKeepsNoAttributes) {
    const std::string place = made("place");
    const int end = runWithOwnMounts([&] {
        if (!mountImage(folder.path("image"), "mkfs.vfat", "vfat", place)) {
            return cannotMount;
        }
        LinuxVolumes mine;
        const auto volume = mine.volumeOfPath(place);
        int result = volume.ok() && volume.value().typeName == "vfat" ? passed : 1;
        const std::string file = place + "/f";
        if (!files().writeFile(file, {}, 0600).isNone() ||
            !files().setModificationDate(file, Date(600'000'003.5)).isNone() ||
            files().attributes(file).value().modificationDate != Date(600'000'002)) {
            result = 2;
        }
        if (files().setExtendedAttribute(file, "user.a", {}) != SystemError(ENOTSUP)) {
            result = 3;
        }
        static_cast<void>(::umount(place.c_str()));
        return result;
    });
    if (end == cannotMount) {
        GTEST_SKIP() << "no root, no loop devices, no mkfs.vfat or no vfat in the kernel";
    }
    EXPECT_EQ(end, passed);
}

TEST_F(LinuxVolumesTest, ManyThreadsMayAsk) {
    std::vector<std::thread> threads;
    std::atomic<int> wrong = 0;
    for (int number = 0; number < 4; ++number) {
        threads.emplace_back([&] {
            for (int round = 0; round < 200; ++round) {
                const auto volume = volumes.volumeOfPath("/proc/self");
                wrong += volume.ok() && volume.value().rootPath == "/proc" ? 0 : 1;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(wrong, 0);
}

} // namespace
} // namespace tav
