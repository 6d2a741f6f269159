// Copies and moves from one real volume to another.

#include "foundation/FileManager.hpp"
#include "platform/FileSystem.hpp"
#include "testing/OwnMounts.hpp"
#include "testing/TemporaryFolder.hpp"

#include <cerrno>
#include <functional>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include <sys/mount.h>

namespace tav {
namespace {

FileSystem& files() { return internal::realFileSystem(); }

class PathCopyVolumes : public testing::Test {
  protected:
    TemporaryFolder folder;
    std::string place = folder.path("volume");

    void SetUp() override { ASSERT_TRUE(files().createFolder(place, 0755).isNone()); }
    /// Runs checks in a child where a volume is mounted.
    static void check(const char* what, const std::function<int()>& run) {
        const int end = runWithOwnMounts(run);
        if (end == cannotMount) {
            GTEST_SKIP() << "this machine cannot mount " << what;
        }
        EXPECT_EQ(end, passed);
    }
    [[nodiscard]] bool mountMemory(const char* options) const {
        return ::mount("none", place.c_str(), "tmpfs", 0, options) == 0;
    }
    static bool stands(const std::string& path) { return files().attributes(path).ok(); }
    [[nodiscard]] bool makeTree() const {
        return runInShell("cd '" + folder.path() +
                          "' && mkdir -p from/a/b && echo text >from/a/file && chmod 640 "
                          "from/a/file && ln -s a/file from/link && truncate -s 1M from/hole && "
                          "touch -d '2001-02-03 04:05:06' from/a/file from/a from && cp -a from "
                          "kept");
    }
    /// Whether a folder is like the one that was kept, in names, contents, permissions and dates.
    [[nodiscard]] bool isLikeKept(const std::string& path) const {
        const std::string list = " && find . -mindepth 1 -printf '%P %y %m %l %TY-%Tm-%Td %TT\\n' "
                                 "| grep -v '^a/b\\|^hole\\|^link' | sort";
        return runInShell("diff -r --no-dereference '" + path + "' '" + folder.path("kept") +
                          "' && test \"$(cd '" + path + "'" + list + ")\" = \"$(cd '" +
                          folder.path("kept") + "'" + list + ")\"");
    }
};

TEST_F(PathCopyVolumes, ATreeMovesToAnotherVolumeAndBack) {
    check("a tmpfs", [this] {
        if (!mountMemory("size=16m") || !makeTree()) {
            return cannotMount;
        }
        const std::string from = folder.path("from");
        const std::string to = place + "/to";
        if (files().move(from, to, Replace::No) != SystemError(EXDEV)) {
            return 1;
        }
        if (movePath(from, to) != Status::Success || stands(from) || !isLikeKept(to)) {
            return 2;
        }
        if (movePath(to, from) != Status::Success || stands(to) || !isLikeKept(from)) {
            return 3;
        }
        if (copyPath(from, to) != Status::Success || !isLikeKept(from) || !isLikeKept(to)) {
            return 4;
        }
        return movePath(from, to) == statusFromErrorNumber(EEXIST) && isLikeKept(from) ? passed : 5;
    });
}

TEST_F(PathCopyVolumes, AFileAndALinkMoveToAnotherVolume) {
    check("a tmpfs", [this] {
        if (!mountMemory("size=16m") || !makeTree()) {
            return cannotMount;
        }
        const std::string file = folder.path("from/a/file");
        const std::string link = folder.path("from/link");
        if (movePath(file, place + "/file") != Status::Success || stands(file) ||
            textOf(files().readFile(place + "/file", 100).value()) != "text\n") {
            return 1;
        }
        return movePath(link, place + "/link") == Status::Success && !stands(link) &&
                       files().linkTarget(place + "/link").value() == "a/file"
                   ? passed
                   : 2;
    });
}

TEST_F(PathCopyVolumes, ASmallVolumeTakesAllOrNothing) {
    check("a tmpfs", [this] {
        if (!mountMemory("size=64k") || !makeTree() ||
            !runInShell("head -c 200000 /dev/urandom >'" + folder.path("from/large") + "' && cp '" +
                        folder.path("from/large") + "' '" + folder.path("kept/large") + "'")) {
            return cannotMount;
        }
        const std::string from = folder.path("from");
        for (const auto operation : {copyPath, movePath}) {
            if (operation(from, place + "/to") != statusFromErrorNumber(ENOSPC) ||
                stands(place + "/to")) {
                return 1;
            }
        }
        return runInShell("diff -r --no-dereference '" + from + "' '" + folder.path("kept") + "'")
                   ? passed
                   : 2;
    });
}

TEST_F(PathCopyVolumes, OfAReadOnlyVolumeNothingIsMovedAndNothingIsPutThere) {
    check("a tmpfs", [this] {
        if (!mountMemory("size=1m") || !makeTree() ||
            copyPath(folder.path("from"), place + "/there") != Status::Success ||
            ::mount("none", place.c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr) != 0) {
            return cannotMount;
        }
        for (const auto operation : {copyPath, movePath}) {
            if (operation(folder.path("from"), place + "/to") != statusFromErrorNumber(EROFS)) {
                return 1;
            }
        }
        if (!isLikeKept(folder.path("from")) ||
            copyPath(place + "/there", folder.path("copied")) != Status::Success ||
            !isLikeKept(folder.path("copied"))) {
            return 2;
        }
        // What cannot be removed stays, and so does its copy.
        return movePath(place + "/there", folder.path("moved")) == statusFromErrorNumber(EROFS) &&
                       isLikeKept(place + "/there") && isLikeKept(folder.path("moved"))
                   ? passed
                   : 3;
    });
}

TEST_F(PathCopyVolumes, WhereBlocksAreSharedACopyTakesNoRoom) {
    check("an image of btrfs", [this] {
        if (!mountImage(folder.path("image"), "mkfs.btrfs -q -f", "btrfs", place, "128M") ||
            !runInShell("head -c 40000000 /dev/zero | tr '\\0' x >'" + place + "/0'")) {
            return cannotMount;
        }
        // Five of them would not fit.
        for (const char* name : {"/1", "/2", "/3", "/4"}) {
            if (copyPath(place + "/0", place + name) != Status::Success) {
                return 1;
            }
        }
        return runInShell("cmp '" + place + "/0' '" + place + "/4'") ? passed : 2;
    });
}

TEST_F(PathCopyVolumes, AFATVolumeLosesWhatItDoesNotKeep) {
    check("an image of FAT", [this] {
        if (!mountImage(folder.path("image"), "mkfs.vfat", "vfat", place) ||
            !runInShell("echo text >'" + folder.path("file") + "'") ||
            !files().setPermissions(folder.path("file"), 0601).isNone() ||
            !files().setModificationDate(folder.path("file"), Date(600'000'003.5)).isNone()) {
            return cannotMount;
        }
        static_cast<void>(files().setExtendedAttribute(folder.path("file"), "user.a", {}));
        return copyPath(folder.path("file"), place + "/file") == Status::Success &&
                       files().attributes(place + "/file").value().modificationDate ==
                           Date(600'000'002) &&
                       movePath(folder.path("file"), place + "/other") == Status::Success
                   ? passed
                   : 1;
    });
}

} // namespace
} // namespace tav
