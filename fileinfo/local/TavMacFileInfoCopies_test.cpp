// Whole local items copied by the file manager.

#include "fileinfo/DeviceFileInfo_test.hpp"
#include "fileinfo/local/MacFileInfoFixture_test.hpp"

#include <cerrno>

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace tav {
namespace {

const Date someDate(300000001.5);

class LocalCopiesTest : public MacFileInfoInMemory {
  protected:
    void SetUp() override {
        memory.addFile("/a.txt", "abc");
        memory.addFolder("/folder");
    }

    FileInfoPtr out = at("/untouched");
};

class LocalCopiesOnDisk : public MacFileInfoOnDisk {
  protected:
    FileInfoPtr out;
};

TEST_F(LocalCopiesTest, AFileIsCopiedIntoAFolder) {
    ASSERT_TRUE(memory.setPermissions("/a.txt", 0640).isNone());
    ASSERT_TRUE(memory.setModificationDate("/a.txt", someDate).isNone());
    EXPECT_EQ(at("/a.txt")->copyTo(at("/folder").get(), "b.txt", &out), Status::Success);
    EXPECT_EQ(contentOf("/folder/b.txt"), "abc");
    EXPECT_EQ(contentOf("/a.txt"), "abc");
    ASSERT_NE(out, nullptr);
    EXPECT_EQ(out->path(), "/folder/b.txt");
    EXPECT_EQ(out->size(), 3U);
    EXPECT_EQ(out->modificationDate(), someDate);
    EXPECT_EQ(memory.attributes("/folder/b.txt").value().permissions, 0640U);
}

TEST_F(LocalCopiesTest, BesideAFileTheCopyIsItsSibling) {
    memory.addFile("/folder/other", "x");
    EXPECT_EQ(at("/a.txt")->copyTo(at("/folder/other").get(), "b.txt", &out), Status::Success);
    EXPECT_EQ(out->path(), "/folder/b.txt");
    EXPECT_EQ(contentOf("/folder/b.txt"), "abc");
    EXPECT_EQ(contentOf("/folder/other"), "x");
}

TEST_F(LocalCopiesTest, TheNewItemNeedNotBeWanted) {
    EXPECT_EQ(at("/a.txt")->copyTo(at("/folder").get(), "b.txt", nullptr), Status::Success);
    EXPECT_EQ(at("/a.txt")->copyTo(at("/folder").get(), "b.txt", nullptr), Status::Failure);
}

TEST_F(LocalCopiesTest, TheShortFormsKeepTheName) {
    memory.addFolder("/other");
    EXPECT_EQ(at("/a.txt")->copyTo(at("/folder").get()), Status::Success);
    EXPECT_EQ(contentOf("/folder/a.txt"), "abc");
    EXPECT_EQ(at("/a.txt")->copyTo(at("/other").get(), &out), Status::Success);
    EXPECT_EQ(out->path(), "/other/a.txt");
    // Not in pieces, so nothing is replaced.
    EXPECT_EQ(at("/a.txt")->copyTo(at("/folder").get()), Status::Failure);
    EXPECT_EQ(at("/a.txt")->copyTo(at("/folder/a.txt").get(), &out), Status::Failure);
    EXPECT_EQ(out, nullptr);
}

TEST_F(LocalCopiesTest, WhatHasTheNameAlreadyStays) {
    memory.addFile("/folder/b.txt", "old");
    memory.addFolder("/folder/c");
    memory.addLink("/folder/d", "/nowhere");
    for (const std::string_view name : {"b.txt", "c", "d"}) {
        out = at("/untouched");
        EXPECT_EQ(at("/a.txt")->copyTo(at("/folder").get(), name, &out), Status::Failure) << name;
        EXPECT_EQ(out, nullptr);
    }
    EXPECT_EQ(contentOf("/folder/b.txt"), "old");
    EXPECT_FALSE(has("/nowhere"));
}

TEST_F(LocalCopiesTest, ABadParameterLeavesTheOut) {
    const FileInfoPtr untouched = out;
    EXPECT_EQ(at("/missing")->copyTo(at("/folder").get(), "b", &out), Status::BadParameter);
    EXPECT_EQ(at("/a.txt")->copyTo(at("/missing").get(), "b", &out), Status::BadParameter);
    EXPECT_EQ(at("/a.txt")->copyTo(at("").get(), "b", &out), Status::BadParameter);
    EXPECT_EQ(at("/a.txt")->copyTo(nullptr, "b", &out), Status::BadParameter);
    EXPECT_EQ(at("/missing")->copyTo(at("/folder").get()), Status::BadParameter);
    EXPECT_EQ(at("/a.txt")->copyTo(nullptr), Status::BadParameter);
    EXPECT_EQ(at("/a.txt")->copyTo(nullptr, &out), Status::BadParameter);
    EXPECT_EQ(out, untouched);
}

TEST_F(LocalCopiesTest, AFolderIsCopiedWithAllThatIsInIt) {
    memory.addFile("/tree/x/1", "one");
    memory.addFolder("/tree/empty");
    memory.addLink("/tree/link", "x/1");
    EXPECT_EQ(at("/tree")->copyTo(at("/folder").get(), "copy", &out), Status::Success);
    EXPECT_TRUE(out->isFolder());
    EXPECT_EQ(contentOf("/folder/copy/x/1"), "one");
    EXPECT_TRUE(at("/folder/copy/empty")->isFolder());
    EXPECT_EQ(memory.linkTarget("/folder/copy/link").value(), "x/1");
}

TEST_F(LocalCopiesTest, AnAliasIsCopiedAsOne) {
    memory.addLink("/link", "/a.txt");
    memory.addLink("/broken", "/nowhere");
    EXPECT_EQ(at("/link")->copyTo(at("/folder").get(), "l", &out), Status::Success);
    EXPECT_EQ(memory.linkTarget("/folder/l").value(), "/a.txt");
    EXPECT_EQ(at("/broken")->copyTo(at("/folder").get(), "m", &out), Status::Success);
    EXPECT_EQ(memory.linkTarget("/folder/m").value(), "/nowhere");
}

TEST_F(LocalCopiesTest, IntoItselfAFolderIsNotCopied) {
    memory.addFile("/tree/1", "one");
    EXPECT_EQ(at("/tree")->copyTo(at("/tree").get(), "copy", &out), Status::Failure);
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(contentOf("/tree/1"), "one");
}

TEST_F(LocalCopiesTest, EveryOtherFailureIsMinusOne) {
    memory.capacity = 4;
    EXPECT_EQ(at("/a.txt")->copyTo(at("/folder").get(), "b", &out), Status::Failure);
    EXPECT_EQ(out, nullptr);
    memory.capacity = 1000;
    memory.isReadOnly = true;
    EXPECT_EQ(at("/a.txt")->copyTo(at("/folder").get(), "b", nullptr), Status::Failure);
    EXPECT_EQ(contentOf("/a.txt"), "abc");
}

TEST_F(LocalCopiesTest, ToAnotherBackEndItGoesAsFromAnyItem) {
    MemoryFileSystem device;
    device.addFolder("/E/folder");
    const auto elsewhere = DeviceFileInfo::at(device, "E:\\folder");
    EXPECT_EQ(at("/a.txt")->copyTo(elsewhere.get(), "b.txt", &out), Status::Success);
    EXPECT_EQ(out->path(), "E:\\folder\\b.txt");
    EXPECT_EQ(out->fileContents(), dataFromText("abc"));
    EXPECT_EQ(at("/a.txt")->copyTo(elsewhere.get()), Status::Success);
    EXPECT_EQ(elsewhere->find("a.txt")->fileContents(), dataFromText("abc"));
    // What is no file cannot go there.
    EXPECT_EQ(at("/folder")->copyTo(elsewhere.get(), "c", &out), Status::BadParameter);
    EXPECT_EQ(at("/missing")->copyTo(elsewhere.get()), Status::BadParameter);
}

TEST_F(LocalCopiesOnDisk, CopiesWhateverTheNamesAre) {
    addFile("\xFF", "abc");
    addFolder("folder");
    const auto source = in("\xFF");
    source->setModificationDate(someDate);
    source->setHideExtension(true);
    source->setCreationDate(Date(200000000.25));
    EXPECT_EQ(source->copyTo(in("folder").get(), "-b \xFE", &out), Status::Success);
    EXPECT_EQ(contentOf("folder/-b \xFE"), "abc");
    EXPECT_EQ(out->modificationDate(), someDate);
    EXPECT_EQ(source->copyTo(in("folder").get(), &out), Status::Success);
    EXPECT_EQ(out->name(), "\xFF");
}

TEST_F(LocalCopiesOnDisk, NothingWaitsForPipes) {
    ASSERT_EQ(::mkfifo(folder.path("pipe").c_str(), 0600), 0);
    addFolder("folder");
    static_cast<void>(in("pipe")->copyTo(in("folder").get(), "copy", &out));
    addFile("a", "abc");
    EXPECT_EQ(in("a")->copyTo(in("pipe").get(), "copy", &out), Status::Success); // beside it
    EXPECT_EQ(contentOf("copy"), "abc");
}

} // namespace
} // namespace tav
