#include "platform/memory/MemoryFileSystem.hpp"
#include "platform/memory/MemoryVolumes.hpp"

#include <cerrno>
#include <system_error>

#include <gtest/gtest.h>

namespace tav {
namespace {

TEST(MemoryVolumes, TellsTheVolumeThatAPathLiesOn) {
    MemoryFileSystem files;
    files.addVolume("/media/stick");
    files.addFile("/media/stick/folder/f", "");
    files.addFile("/home/f", "");
    files.addLink("/home/toStick", "/media/stick/folder");
    MemoryVolumes volumes(files);
    EXPECT_EQ(volumes.volumeOfPath("/home").error(), SystemError(ENODEV));
    VolumeInfo stick;
    stick.rootPath = "/media/stick";
    stick.typeName = "vfat";
    stick.totalBytes = 1000;
    volumes.add(stick);
    VolumeInfo root;
    root.rootPath = "/";
    root.typeName = "ext4";
    volumes.add(root);

    EXPECT_EQ(volumes.volumeOfPath("/media/stick/folder/f").value().typeName, "vfat");
    EXPECT_EQ(volumes.volumeOfPath("/home/toStick").value().rootPath, "/media/stick");
    EXPECT_EQ(volumes.volumeOfPath("/home/f").value().rootPath, "/");
    EXPECT_EQ(volumes.volumeOfPath("/home/f").value().identifier,
              files.attributes("/home/f").value().mount);
    EXPECT_EQ(volumes.volumeOfPath("/home/gone").error(), SystemError(ENOENT));
    EXPECT_TRUE(volumes.isVolumeRoot("/"));
    EXPECT_TRUE(volumes.isVolumeRoot("/media/stick"));
    EXPECT_FALSE(volumes.isVolumeRoot("/media/stick/folder"));
    EXPECT_FALSE(volumes.isVolumeRoot("/media"));
    EXPECT_FALSE(volumes.isVolumeRoot("/home/toStick"));
    EXPECT_FALSE(volumes.isVolumeRoot("/gone"));

    stick.freeBytes = 5;
    volumes.add(stick);
    EXPECT_EQ(volumes.volumeOfPath("/media/stick").value().freeBytes, 5U);
    stick.rootPath = "/gone";
    EXPECT_THROW(volumes.add(stick), std::system_error);
}

TEST(MemoryFileSystemMetadata, TwoSecondVolumesRoundDatesDown) {
    MemoryFileSystem files;
    files.keepsTwoSecondDates = true;
    files.addFile("/f", "");
    ASSERT_TRUE(files.setModificationDate("/f", Date(600'000'003.5)).isNone());
    EXPECT_EQ(files.attributes("/f").value().modificationDate, Date(600'000'002));
    ASSERT_TRUE(files.setModificationDate("/f", Date(-0.5)).isNone());
    EXPECT_EQ(files.attributes("/f").value().modificationDate, Date(-2));
}

TEST(MemoryFileSystemMetadata, VolumesWithoutExtendedAttributes) {
    MemoryFileSystem files;
    files.keepsExtendedAttributes = false;
    files.addFile("/f", "");
    EXPECT_EQ(files.setExtendedAttribute("/f", "user.a", {}), SystemError(ENOTSUP));
    EXPECT_EQ(files.extendedAttribute("/f", "user.a").error(), SystemError(ENOTSUP));
    EXPECT_EQ(files.removeExtendedAttribute("/f", "user.a"), SystemError(ENOTSUP));
    EXPECT_EQ(files.extendedAttribute("/gone", "user.a").error(), SystemError(ENOENT));
}

TEST(MemoryFileSystemMetadata, ReadOnlyVolumesTakeNoChange) {
    MemoryFileSystem files;
    files.addFile("/f", "");
    files.isReadOnly = true;
    EXPECT_EQ(files.setModificationDate("/f", Date(0)), SystemError(EROFS));
    EXPECT_EQ(files.setExtendedAttribute("/f", "user.a", {}), SystemError(EROFS));
    EXPECT_EQ(files.removeExtendedAttribute("/f", "user.a"), SystemError(EROFS));
    EXPECT_EQ(files.openFolder("/").value()->createFolder("d", 0700), SystemError(EROFS));
    EXPECT_EQ(files.openFolder("/").value()->removeFile("f"), SystemError(EROFS));
}

TEST(MemoryFileSystemMetadata, WhatIsImmutableStaysAsItIs) {
    MemoryFileSystem files;
    files.addFile("/d/f", "text");
    files.addFile("/d/g", "");
    files.addFile("/locked/f", "");
    files.setImmutable("/d/f", true);
    files.setImmutable("/locked", true);
    EXPECT_TRUE(files.attributes("/d/f").value().isImmutable);
    EXPECT_FALSE(files.attributes("/d").value().isImmutable);
    OpenOptions writing;
    writing.write = true;
    const SystemError refused(EPERM);
    EXPECT_EQ(files.writeFile("/d/f", {}, 0600), refused);
    EXPECT_EQ(files.open("/d/f", writing).error(), refused);
    EXPECT_TRUE(files.open("/d/f", {}).ok());
    EXPECT_EQ(files.setPermissions("/d/f", 0600), refused);
    EXPECT_EQ(files.setModificationDate("/d/f", Date(0)), refused);
    EXPECT_EQ(files.setExtendedAttribute("/d/f", "user.a", {}), refused);
    EXPECT_EQ(files.removeExtendedAttribute("/d/f", "user.a"), refused);
    EXPECT_EQ(files.removeFile("/d/f"), refused);
    EXPECT_EQ(files.move("/d/f", "/d/h", Replace::No), refused);
    EXPECT_EQ(files.move("/d/g", "/d/f", Replace::Yes), refused);
    EXPECT_EQ(files.createFolder("/locked/new", 0700), refused);
    EXPECT_EQ(files.createLink("/locked/new", "x"), refused);
    EXPECT_EQ(files.removeFile("/locked/f"), refused);
    EXPECT_EQ(files.removeFolder("/locked"), refused);
    EXPECT_EQ(files.move("/d/g", "/locked/g", Replace::No), refused);
    files.setImmutable("/d/f", false);
    EXPECT_TRUE(files.removeFile("/d/f").isNone());
    EXPECT_THROW(files.setImmutable("/gone", true), std::system_error);
}

TEST(MemoryFileSystemMetadata, OpenFoldersAreInTheJournal) {
    MemoryFileSystem files;
    files.addFile("/d/f", "");
    {
        const auto folder = files.openFolder("/d");
        static_cast<void>(folder.value()->entries());
        static_cast<void>(folder.value()->attributes("f"));
    }
    EXPECT_EQ(files.calls(), (std::vector<std::string>{"openFolder /d", "OpenFolder.entries /d",
                                                       "OpenFolder.attributes /d/f"}));
    // Held while it is taken away with all that is in it.
    const auto folder = files.openFolder("/d");
    files.removeAll("/d");
    EXPECT_EQ(folder.value()->entries().error(), SystemError(ENOENT));
    EXPECT_EQ(folder.value()->attributes("f").error(), SystemError(ENOENT));
}

} // namespace
} // namespace tav
