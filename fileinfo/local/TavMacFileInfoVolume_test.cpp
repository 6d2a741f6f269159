#include "fileinfo/ItemAllocation.hpp"
#include "fileinfo/local/MacFileInfoFixture_test.hpp"
#include "platform/memory/MemorySystemLog.hpp"

#include <cerrno>

namespace tav {
namespace {

class VolumesTest : public MacFileInfoInMemory {
  protected:
    VolumesTest() {
        memory.addVolume("/media/stick");
        addVolume("/", 1000, 400);
        addVolume("/media/stick", 64, 16);
    }
    void addVolume(std::string_view root, std::uint64_t total, std::uint64_t free) {
        VolumeInfo info;
        info.rootPath = std::string(root);
        info.totalBytes = total;
        info.freeBytes = free;
        volumes.add(info);
    }
    static std::string volumeOf(std::string_view path) {
        const FileInfoPtr volume = at(path)->volume();
        return volume ? volume->path() : "nothing";
    }

    MemorySystemLog log;
    SystemLog::Replacement replacedLog{log};
};

using VolumesOnDiskTest = MacFileInfoOnDisk;

/// Tells protected answers.
class Open : public TavMacFileInfo {
  public:
    static std::uint64_t referenceNumber(std::string_view path) {
        const auto item = internal::allocateItem<Open>();
        item->initWithPath(path);
        return item->_vRefNum();
    }
};

TEST_F(VolumesTest, TheVolumeIsTheItemOfItsRoot) {
    memory.addFile("/media/stick/d/f", "");
    memory.addFile("/x/y", "");
    EXPECT_EQ(volumeOf("/media/stick/d/f"), "/media/stick");
    EXPECT_EQ(volumeOf("/media/stick"), "/media/stick");
    EXPECT_EQ(volumeOf("/x/y"), "/");
    EXPECT_EQ(volumeOf("/"), "/");
}

TEST_F(VolumesTest, ALinkLiesOnItsOwnVolume) {
    memory.addFile("/media/stick/f", "");
    memory.addLink("/l", "/media/stick/f");
    memory.addLink("/media/stick/broken", "/gone");
    EXPECT_EQ(volumeOf("/l"), "/");
    EXPECT_EQ(volumeOf("/media/stick/broken"), "/media/stick");
}

TEST_F(VolumesTest, WithoutAReferenceThePathTells) {
    EXPECT_EQ(volumeOf("/Volumes/Card/a/b"), "/Volumes/Card");
    EXPECT_EQ(volumeOf("/Volumes/Card/a"), "/Volumes/Card");
    EXPECT_EQ(volumeOf("/Volumes/Card"), "/Volumes/Card");
    EXPECT_EQ(volumeOf("/Volumes"), "nothing");
    EXPECT_EQ(volumeOf("/Volumes/"), "nothing");
    EXPECT_EQ(volumeOf("/VolumesX/a"), "/");
    EXPECT_EQ(volumeOf("/gone/a"), "/");
    EXPECT_EQ(volumeOf("gone"), "/");
    EXPECT_EQ(volumeOf(""), "/");
    memory.addFile("/Volumes/Card/a", "");
    EXPECT_EQ(volumeOf("/Volumes/Card/a"), "/") << "it is there, and on that volume";
}

TEST_F(VolumesTest, RootsAreVolumes) {
    memory.addFile("/media/stick/d/f", "");
    memory.addLink("/l", "/media/stick");
    EXPECT_TRUE(at("/")->isVolume());
    EXPECT_TRUE(at("/media/stick")->isVolume());
    EXPECT_FALSE(at("/media/stick/d")->isVolume());
    EXPECT_FALSE(at("/media/stick/d/f")->isVolume());
    EXPECT_FALSE(at("/l")->isVolume()) << "an alias of one";
    EXPECT_FALSE(at("/gone")->isVolume());
}

TEST_F(VolumesTest, FoldersWithoutAReferenceAreVolumesByTheirPath) {
    memory.addFolder("/Volumes/Card/d");
    memory.addFolder("/x");
    files.failOperation("attributes", EACCES);
    EXPECT_TRUE(at("/")->isVolume());
    EXPECT_TRUE(at("/Volumes/Card")->isVolume());
    EXPECT_FALSE(at("/Volumes/Card/d")->isVolume());
    EXPECT_FALSE(at("/Volumes")->isVolume());
    EXPECT_FALSE(at("/x")->isVolume());
}

TEST_F(VolumesTest, Sizes) {
    memory.addFile("/media/stick/d/a", "123");
    memory.addFile("/media/stick/d/e/.b", "45");
    EXPECT_EQ(at("/media/stick")->size(), 64U) << "of the volume";
    EXPECT_EQ(at("/")->size(), 1000U);
    EXPECT_EQ(at("/media/stick/d")->size(), 5U);
    EXPECT_EQ(at("/media/stick/d/a")->size(), 3U);
    EXPECT_EQ(at("/gone")->size(), 0U);
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(VolumesTest, TheSizeOfAnAliasIsItsOwnAndWritesAnEmptyLine) {
    memory.addFile("/d/f", "12345");
    memory.addLink("/toFile", "/d/f");
    memory.addLink("/toFolder", "/d");
    memory.addLink("/broken", "/nowhere");
    EXPECT_EQ(at("/toFile")->size(), 4U) << "the bytes of the link";
    EXPECT_EQ(log.lines(), std::vector<std::string>{""});
    EXPECT_EQ(at("/toFolder")->size(), 0U) << "an alias is not listed";
    EXPECT_EQ(at("/broken")->size(), 8U);
    EXPECT_EQ(log.lines(), (std::vector<std::string>{"", "", ""}));
    EXPECT_EQ(at("/toFile")->resolvedSize(), 5U);
    EXPECT_EQ(log.lines().size(), 3U);
}

TEST_F(VolumesTest, FreeSpaceIsThatAboveTheFirstThatExists) {
    memory.addFile("/media/stick/f", "");
    EXPECT_EQ(at("/media/stick/f")->freeSpaceOnVolume(), 16U);
    EXPECT_EQ(at("/media/stick/new/newer/f")->freeSpaceOnVolume(), 16U);
    EXPECT_EQ(at("/new")->freeSpaceOnVolume(), 400U);
    EXPECT_EQ(at("")->freeSpaceOnVolume(), 0U);
    EXPECT_EQ(at("relative/path")->freeSpaceOnVolume(), 0U);
}

TEST_F(VolumesTest, AVolumeThatIsNotToldAnswersNothing) {
    memory.addVolume("/media/other");
    EXPECT_EQ(at("/media/other")->size(), 0U);
    EXPECT_EQ(at("/media/other")->freeSpaceOnVolume(), 0U);
    EXPECT_EQ(volumeOf("/media/other"), "/");
    EXPECT_EQ(Open::referenceNumber("/media/other"), 0U);
    EXPECT_EQ(Open::referenceNumber("/gone"), 0U);
    EXPECT_NE(Open::referenceNumber("/media/stick"), 0U);
    EXPECT_NE(Open::referenceNumber("/media/stick"), Open::referenceNumber("/"));
}

TEST_F(VolumesTest, NoVolumeIsADevicesYetAndThatIsLookedUpOnce) {
    const Item item = at("/media/stick");
    EXPECT_FALSE(item->isBlackberryInternalMemoryRoot());
    EXPECT_FALSE(item->isBlackberryMemoryCardRoot());
    EXPECT_EQ(callsOf([&] { EXPECT_FALSE(item->isBlackberryMemoryCardRoot()); }), Calls{});
    EXPECT_FALSE(at("/gone")->isBlackberryMemoryCardRoot());
}

TEST_F(VolumesOnDiskTest, TheHostsVolumes) {
    addFile("f", "123");
    EXPECT_TRUE(at("/")->isVolume());
    EXPECT_GT(at("/")->size(), 0U);
    ASSERT_NE(in("f")->volume(), nullptr);
    EXPECT_TRUE(in("f")->volume()->isVolume());
    EXPECT_FALSE(in("f")->isVolume());
    EXPECT_GT(in("new/newer")->freeSpaceOnVolume(), 0U);
    EXPECT_TRUE(at("/proc")->isVolume());
    EXPECT_EQ(at("/proc/self")->volume()->path(), "/proc");
}

} // namespace
} // namespace tav
