// How often a local item asks the file system. Copies of many small files are made of little else.

#include "fileinfo/local/TavMacFileInfo.hpp"
#include "platform/memory/FaultyFileSystem.hpp"
#include "platform/memory/MemoryFileSystem.hpp"
#include "platform/memory/MemoryVolumes.hpp"

#include <cerrno>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

namespace tav {
namespace {

class QuestionsTest : public ::testing::Test {
  protected:
    QuestionsTest() {
        memory.addFile("/a/f", "content");
        VolumeInfo root;
        root.rootPath = "/";
        root.freeBytes = 7;
        volumes.add(root);
    }

    /// The calls that something takes with a new item.
    std::size_t calls(std::string_view path, const std::function<void(TavMacFileInfo&)>& done) {
        const auto item = TavMacFileInfo::fileInfoWithPath(path);
        counting.restartCount();
        done(*item);
        return counting.callCount();
    }

    MemoryFileSystem memory;
    MemoryVolumes volumes{memory};
    FaultyFileSystem counting{memory};
    FileSystem::Replacement files{counting};
    Volumes::Replacement replacement{volumes};
};

TEST_F(QuestionsTest, ADateIsGivenWithOne) {
    EXPECT_EQ(calls("/a/f", [](TavMacFileInfo& item) { item.setModificationDate(Date(1)); }), 2U);
    EXPECT_EQ(calls("/a/f", [](TavMacFileInfo& item) { item.setCreationDate(Date(2)); }), 2U);
    EXPECT_EQ(calls("/a/gone", [](TavMacFileInfo& item) { item.setCreationDate(Date(2)); }), 1U);
    const auto item = TavMacFileInfo::fileInfoWithPath("/a/f");
    EXPECT_EQ(item->modificationDate(), Date(1));
    EXPECT_EQ(item->creationDate(), Date(2));
}

TEST_F(QuestionsTest, AnItemThatKnowsItsFileLooksWhereItIsNow) {
    const auto modified = TavMacFileInfo::fileInfoWithPath("/a/f");
    const auto created = TavMacFileInfo::fileInfoWithPath("/a/f");
    const auto removed = TavMacFileInfo::fileInfoWithPath("/a/f");
    EXPECT_TRUE(modified->exists() && removed->exists());
    EXPECT_TRUE(created->creationDate()); // with its attributes
    ASSERT_TRUE(memory.move("/a/f", "/a/g", Replace::No).isNone());
    modified->setModificationDate(Date(3));
    created->setCreationDate(Date(4));
    const auto item = TavMacFileInfo::fileInfoWithPath("/a/g");
    EXPECT_EQ(item->modificationDate(), Date(3));
    EXPECT_EQ(item->creationDate(), Date(4));
    const auto hidden = TavMacFileInfo::fileInfoWithPath("/a/g");
    const auto locked = TavMacFileInfo::fileInfoWithPath("/a/g");
    EXPECT_TRUE(hidden->creationDate() && locked->creationDate());
    ASSERT_TRUE(memory.move("/a/g", "/a/f", Replace::No).isNone());
    hidden->setHideExtension(true);
    locked->setLocked(true);
    EXPECT_TRUE(memory.extendedAttribute("/a/f", "user.tav.hide-extension").ok());
    EXPECT_TRUE(TavMacFileInfo::fileInfoWithPath("/a/f")->isLocked());
    ASSERT_TRUE(memory.move("/a/f", "/a/g", Replace::No).isNone());
    EXPECT_TRUE(removed->remove());
    EXPECT_FALSE(item->isFile() && memory.attributes("/a/g").ok());
}

TEST_F(QuestionsTest, FreeSpaceIsAskedForWithOneAStep) {
    const auto free = [](TavMacFileInfo& item) { EXPECT_EQ(item.freeSpaceOnVolume(), 7U); };
    EXPECT_EQ(calls("/a/f", free), 1U);
    EXPECT_EQ(calls("/a/new", free), 2U);
    EXPECT_EQ(calls("/b/new/f", free), 4U);
}

/// Some file systems write a file that was cut to the medium when it is closed.
TEST_F(QuestionsTest, AnEmptyFileIsNotCutForWriting) {
    memory.addFile("/a/empty", "");
    counting.failOperation("OpenFile.setSize", EIO);
    EXPECT_TRUE(TavMacFileInfo::fileInfoWithPath("/a/empty")->openFileForWriting());
    EXPECT_FALSE(TavMacFileInfo::fileInfoWithPath("/a/f")->openFileForWriting());
}

TEST_F(QuestionsTest, AFileIsRemovedWithThree) {
    EXPECT_EQ(calls("/a/f", [](TavMacFileInfo& item) { EXPECT_TRUE(item.remove()); }), 3U);
    EXPECT_EQ(calls("/a/f", [](TavMacFileInfo& item) { EXPECT_FALSE(item.remove()); }), 1U);
}

} // namespace
} // namespace tav
