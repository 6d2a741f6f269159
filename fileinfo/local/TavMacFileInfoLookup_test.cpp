#include "fileinfo/local/MacFileInfoFixture_test.hpp"
#include "testing/OwnMounts.hpp"

#include <cerrno>

#include <sys/mount.h>

namespace tav {
namespace {

using LookupTest = MacFileInfoInMemory;
using LookupOnDiskTest = MacFileInfoOnDisk;

TEST_F(LookupTest, ParentFoldersEndAtTheRoot) {
    EXPECT_EQ(at("/a/b")->parentFolder()->path(), "/a");
    EXPECT_EQ(at("/a")->parentFolder()->path(), "/");
    EXPECT_EQ(at("/")->parentFolder(), nullptr);
    EXPECT_EQ(at("")->parentFolder()->path(), "");
    EXPECT_NE(asMacFileInfo(at("/a/b")->parentFolder().get()), nullptr);
}

TEST_F(LookupTest, FindAnswersAChildOfAFolderAndASiblingOfAFile) {
    memory.addFile("/d/file", "");
    EXPECT_EQ(at("/d")->find("x")->path(), "/d/x");
    EXPECT_EQ(at("/d/file")->find("x")->path(), "/d/x");
    EXPECT_EQ(at("/gone")->find("x")->path(), "/gone/x") << "need not exist";
    EXPECT_EQ(at("/")->find("x")->path(), "/x");
    EXPECT_EQ(at("/d")->find("x/y")->path(), "/d/x/y");
    EXPECT_EQ(at("/d")->find("")->path(), "/d");
}

TEST_F(LookupTest, FindGoesByWhatAnAliasLeadsTo) {
    memory.addFile("/d/file", "");
    memory.addLink("/toFolder", "/d");
    memory.addLink("/toFile", "/d/file");
    memory.addLink("/toNowhere", "/gone");
    memory.addLink("/loop", "/loop");
    EXPECT_EQ(at("/toFolder")->find("x")->path(), "/toFolder/x");
    EXPECT_EQ(at("/toFile")->find("x")->path(), "/x");
    EXPECT_EQ(at("/toNowhere")->find("x")->path(), "/x");
    EXPECT_EQ(at("/loop")->find("x")->path(), "/loop/x");
}

TEST_F(LookupTest, WhatIsFoundMayBeResolved) {
    memory.addFile("/d/file", "");
    memory.addLink("/d/l", "file");
    EXPECT_EQ(at("/d")->find("l")->path(), "/d/l");
    EXPECT_EQ(at("/d")->find("l", false)->path(), "/d/l");
    EXPECT_EQ(at("/d")->find("l", true)->path(), "/d/file");
    EXPECT_EQ(at("/d")->find("l", true, true)->path(), "/d/file");
    EXPECT_EQ(at("/d")->find("gone", true)->path(), "/d/gone");
}

TEST_F(LookupTest, FindingAsksAboutTheFolderOnce) {
    memory.addFile("/d/file", "");
    const Item folder = at("/d");
    EXPECT_EQ(callsOf([&] {
                  for (int i = 0; i < 10; ++i) {
                      EXPECT_EQ(folder->find("file")->name(), "file");
                  }
              }),
              Calls{"attributes /d"});
}

TEST_F(LookupTest, FindingAtAnyDepthIgnoresCase) {
    memory.addFile("/d/a/Name", "");
    memory.addFile("/d/b/c/name", "");
    memory.addFolder("/d/NAME");
    memory.addFile("/d/other", "");
    const FileInfoArray found = at("/d")->findDeep("nAmE");
    EXPECT_EQ(found.size(), 3U);
    const FileInfoPtr first = at("/d")->findFirstDeep("name");
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(first->path(), found.front()->path());
    EXPECT_TRUE(at("/d")->findDeep("gone").empty());
    EXPECT_EQ(at("/d")->findFirstDeep("gone"), nullptr);
}

TEST_F(LookupTest, MovingTakesThePathAndReplacesNothing) {
    memory.addFile("/d/a", "1");
    memory.addFile("/d/b", "22");
    memory.addFolder("/e");
    const Item item = at("/d/a");
    EXPECT_EQ(item->moveTo(at("/d/b").get()), Status::Failure);
    EXPECT_EQ(item->path(), "/d/a");
    EXPECT_EQ(at("/d/b")->size(), 2U);
    EXPECT_EQ(item->moveTo(at("/e/c").get()), Status::Success);
    EXPECT_EQ(item->path(), "/e/c");
    EXPECT_TRUE(item->exists());
    EXPECT_EQ(item->size(), 1U);
    EXPECT_FALSE(at("/d/a")->exists());
    EXPECT_EQ(item->moveTo(nullptr), Status::Failure);
    EXPECT_EQ(at("/gone")->moveTo(at("/x").get()), Status::Failure);
    EXPECT_EQ(item->moveTo(at("").get()), Status::Failure);
    EXPECT_EQ(item->moveTo(at("/nowhere/c").get()), Status::Failure);
    EXPECT_EQ(item->path(), "/e/c");
}

TEST_F(LookupTest, MovingWithinAVolumeTakesOneCall) {
    memory.addFile("/d/a", "1");
    const Item item = at("/d/a");
    const Item destination = at("/d/b");
    EXPECT_EQ(callsOf([&] { EXPECT_EQ(item->moveTo(destination.get()), Status::Success); }),
              Calls{"move /d/a /d/b"});
    EXPECT_EQ(callsOf([&] { EXPECT_EQ(item->moveTo(at("/gone/b").get()), Status::Failure); }),
              Calls{"move /d/b /gone/b"});
}

TEST_F(LookupTest, MovingToAnotherVolumeTakesEverythingAlong) {
    memory.addVolume("/volume");
    memory.addFile("/d/e/f", "content");
    memory.addLink("/d/l", "e/f");
    ASSERT_TRUE(memory.setModificationDate("/d/e/f", Date(5)).isNone());
    const Item item = at("/d");
    ASSERT_TRUE(item->isFolder());
    EXPECT_EQ(item->moveTo(at("/volume/moved").get()), Status::Success);
    EXPECT_EQ(item->path(), "/volume/moved");
    EXPECT_TRUE(item->isFolder());
    EXPECT_FALSE(at("/d")->exists());
    EXPECT_EQ(at("/volume/moved/e/f")->size(), 7U);
    EXPECT_EQ(memory.attributes("/volume/moved/e/f").value().modificationDate, Date(5));
    EXPECT_EQ(memory.linkTarget("/volume/moved/l").value(), "e/f");
}

TEST_F(LookupTest, AMoveToAnotherVolumeThatFailsChangesNothing) {
    memory.addVolume("/volume");
    memory.addFile("/d/f", "content");
    memory.addFile("/volume/there", "old");
    const Item item = at("/d/f");
    EXPECT_EQ(item->moveTo(at("/volume/there").get()), Status::Failure);
    EXPECT_EQ(item->moveTo(at("/volume/gone/f").get()), Status::Failure);
    for (std::size_t call = 1;; ++call) {
        files.restartCount();
        files.failCall(call, EIO);
        const Status status = item->moveTo(at("/volume/f").get());
        const bool failed = files.callCount() >= call;
        files.failCall(0, 0);
        if (!failed) {
            EXPECT_EQ(status, Status::Success);
            EXPECT_EQ(item->path(), "/volume/f");
            break;
        }
        ASSERT_LT(call, 100U);
        if (status == Status::Success) { // what failed had another way
            ASSERT_EQ(item->moveTo(at("/d/f").get()), Status::Success);
        }
        EXPECT_EQ(item->path(), "/d/f") << call;
        EXPECT_EQ(memory.attributes("/d/f").value().size, 7U) << call;
        memory.removeAll("/volume/f");
    }
    EXPECT_EQ(at("/volume/there")->size(), 3U);
    EXPECT_FALSE(at("/d/f")->exists());
}

TEST_F(LookupTest, RemovingAFileAFolderAndALink) {
    memory.addFile("/d/e/f", "");
    memory.addFile("/g", "");
    memory.addLink("/l", "/d");
    EXPECT_TRUE(at("/l")->remove());
    EXPECT_TRUE(at("/d/e/f")->exists()) << "only the link goes";
    const Item folder = at("/d");
    ASSERT_TRUE(folder->isFolder());
    EXPECT_TRUE(folder->remove());
    EXPECT_FALSE(folder->exists()) << "refreshed";
    EXPECT_FALSE(folder->isFolder());
    EXPECT_FALSE(folder->remove());
    EXPECT_TRUE(at("/g")->remove());
    EXPECT_FALSE(at("")->remove());
    EXPECT_FALSE(at("/gone")->remove());
}

TEST_F(LookupTest, WhatCannotBeRemovedStaysKnown) {
    memory.addFile("/f", "");
    memory.setImmutable("/f", true);
    const Item item = at("/f");
    EXPECT_FALSE(item->remove());
    EXPECT_EQ(callsOf([&] { EXPECT_TRUE(item->exists()); }), Calls{});
}

TEST_F(LookupTest, RemovingFailsAtEveryCallWithoutLyingAboutIt) {
    for (std::size_t call = 1;; ++call) {
        memory.removeAll("/d");
        memory.addFile("/d/e/f", "");
        memory.addFile("/d/g", "");
        files.restartCount();
        files.failCall(call, EIO);
        const bool removed = at("/d")->remove();
        const bool failed = files.callCount() >= call;
        files.failCall(0, 0);
        EXPECT_EQ(removed, !memory.attributes("/d").ok()) << call;
        if (!failed) {
            EXPECT_TRUE(removed);
            break;
        }
    }
}

TEST_F(LookupOnDiskTest, MovingToAnotherVolume) {
    addFolder("volume");
    addFolder("d");
    addFile("d/f", "1");
    const int end = runWithOwnMounts([&] {
        if (::mount("none", folder.path("volume").c_str(), "tmpfs", 0, "size=1m") != 0) {
            return cannotMount;
        }
        const Item item = in("d");
        if (item->moveTo(in("volume/e").get()) != Status::Success ||
            item->path() != folder.path("volume/e") || in("d")->exists()) {
            return 1;
        }
        if (!in("volume/e/f")->isFile() || in("volume/e/f")->size() != 1) {
            return 2;
        }
        return item->moveTo(in("d").get()) == Status::Success && in("d/f")->isFile() &&
                       !in("volume/e")->exists()
                   ? passed
                   : 3;
    });
    if (end == cannotMount) {
        GTEST_SKIP() << "mounts need root";
    }
    EXPECT_EQ(end, passed);
}

TEST_F(LookupOnDiskTest, RemovingAndMoving) {
    addFolder("d");
    addFile("d/f", "1");
    addLink("d/l", "/");
    const Item item = in("d");
    EXPECT_EQ(item->moveTo(in("e").get()), Status::Success);
    EXPECT_EQ(item->path(), folder.path("e"));
    EXPECT_TRUE(in("e/f")->isFile());
    EXPECT_TRUE(item->remove());
    EXPECT_FALSE(in("e")->exists());
    EXPECT_TRUE(at("/")->exists());
}

} // namespace
} // namespace tav
