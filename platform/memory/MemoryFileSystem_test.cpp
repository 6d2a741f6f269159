#include "platform/memory/MemoryFileSystem.hpp"

#include <system_error>

#include <gtest/gtest.h>

namespace tav {
namespace {

class MemoryFileSystemTest : public testing::Test {
  protected:
    MemoryFileSystem files;

    FileAttributes attributesOf(std::string_view path) {
        const auto attributes = files.attributes(path);
        EXPECT_TRUE(attributes.ok()) << path;
        return attributes.ok() ? attributes.value() : FileAttributes();
    }
    std::string contentOf(std::string_view path) {
        const auto content = files.readFile(path, 1000);
        return content.ok() ? std::string(textOf(content.value()))
                            : "error " + std::to_string(content.error().number());
    }
    std::vector<std::string> namesIn(std::string_view path) {
        std::vector<std::string> names;
        const auto entries = files.folderEntries(path);
        EXPECT_TRUE(entries.ok()) << path;
        for (std::size_t index = 0; entries.ok() && index < entries.value().size(); ++index) {
            names.push_back(entries.value()[index].name);
        }
        return names;
    }
    SystemError write(std::string_view path, std::string_view text) {
        return files.writeFile(path, bytesOf(text), 0600);
    }
};

// Setting the stage.

TEST_F(MemoryFileSystemTest, BeginsWithAnEmptyRoot) {
    EXPECT_EQ(attributesOf("/").kind, FileKind::Folder);
    EXPECT_TRUE(namesIn("/").empty());
}

TEST_F(MemoryFileSystemTest, HelpersMakeTheFoldersOnTheWay) {
    files.addFile("/a/b/file", "text");
    files.addFolder("x/y/");
    files.addLink("/l/m/link", "../../a");
    EXPECT_EQ(contentOf("/a/b/file"), "text");
    EXPECT_EQ(attributesOf("/x/y").kind, FileKind::Folder);
    EXPECT_EQ(files.canonicalPath("/l/m/link/b").value(), "/a/b");
}

TEST_F(MemoryFileSystemTest, HelpersGoThroughLinks) {
    files.addFolder("/real");
    files.addLink("/link", "real");
    files.addFile("/link/deep/file", "text");
    EXPECT_EQ(contentOf("/real/deep/file"), "text");
    files.addLink("/toFile", "/real/other");
    files.addFile("/toFile", "made");
    EXPECT_EQ(contentOf("/real/other"), "made");
}

TEST_F(MemoryFileSystemTest, AddFileKeepsTheIdentityOfAFileThatIsThere) {
    files.addFile("/a", "one");
    const FileAttributes before = attributesOf("/a");
    files.addFile("/a", "other");
    EXPECT_EQ(contentOf("/a"), "other");
    EXPECT_EQ(attributesOf("/a").identity, before.identity);
    EXPECT_GT(attributesOf("/a").changeDate, before.changeDate);
    EXPECT_EQ(attributesOf("/a").size, 5U);
}

TEST_F(MemoryFileSystemTest, AddFolderLeavesAFolderAsItIs) {
    files.addFile("/a/b", "text");
    files.addFolder("/a");
    EXPECT_EQ(contentOf("/a/b"), "text");
}

TEST_F(MemoryFileSystemTest, HelpersRefuseWhatCannotBe) {
    files.addFile("/file", "");
    files.addFolder("/folder");
    EXPECT_THROW(files.addFile("/file/x", ""), std::system_error);
    EXPECT_THROW(files.addFile("/folder", ""), std::system_error);
    EXPECT_THROW(files.addFile("/new/", ""), std::system_error);
    EXPECT_THROW(files.addFolder("/file"), std::system_error);
    EXPECT_THROW(files.addLink("/file", "x"), std::system_error);
    EXPECT_THROW(files.addLink("/l", ""), std::system_error);
    EXPECT_THROW(files.addFile("", ""), std::system_error);
    EXPECT_THROW(files.addFile(std::string("/a\0b", 4), ""), std::system_error);
    EXPECT_THROW(files.addFile("/" + std::string(256, 'n'), ""), std::system_error);
    EXPECT_THROW(files.addVolume("/folder"), std::system_error);
}

TEST_F(MemoryFileSystemTest, RemoveAllTakesWholeTreesAndNeverFollowsALink) {
    files.addFile("/a/b/c/file", "text");
    files.addFile("/kept/file", "text");
    files.addLink("/a/link", "/kept");
    files.removeAll("/a/link");
    files.removeAll("/a");
    files.removeAll("/missing/too");
    files.removeAll("/");
    EXPECT_EQ(namesIn("/"), std::vector<std::string>{"kept"});
    EXPECT_EQ(contentOf("/kept/file"), "text");
}

TEST_F(MemoryFileSystemTest, DepthDoesNotMatter) {
    // Deeper than any path reaches: the tree is put into a new folder again and again.
    files.addFile("/d/bottom", "x");
    for (int level = 0; level < 50000; ++level) {
        files.addFolder("/n");
        ASSERT_TRUE(files.move("/d", "/n/d", Replace::No).isNone());
        ASSERT_TRUE(files.move("/n", "/d", Replace::No).isNone());
    }
    files.removeAll("/d");
    EXPECT_TRUE(namesIn("/").empty());
    files.capacity = 1;
    EXPECT_TRUE(write("/file", "y").isNone()); // the bottom's byte is free again
}

// Clock and identities.

TEST_F(MemoryFileSystemTest, AChangeTakesTheClocksTime) {
    files.setNow(Date(1000));
    files.addFile("/f", "");
    const Date made = attributesOf("/f").modificationDate;
    EXPECT_GE(made, Date(1000)); // making and writing are two changes
    EXPECT_LT(made, Date(1000.1));
    files.setNow(Date(2000));
    EXPECT_EQ(files.now(), Date(2000));
    ASSERT_TRUE(write("/f", "x").isNone());
    EXPECT_EQ(attributesOf("/f").modificationDate, Date(2000));
    EXPECT_EQ(attributesOf("/f").changeDate, Date(2000));
    EXPECT_EQ(attributesOf("/").modificationDate, Date(1000));
}

TEST_F(MemoryFileSystemTest, TheClockGoesOnWithEachChangeAndWithNothingElse) {
    files.addFile("/f", "");
    const Date before = files.now();
    EXPECT_EQ(contentOf("/f"), "");
    EXPECT_EQ(write("/missing/f", "x"), SystemError(ENOENT));
    EXPECT_EQ(files.removeFolder("/f"), SystemError(ENOTDIR));
    EXPECT_EQ(files.now(), before);
    ASSERT_TRUE(files.setPermissions("/f", 0).isNone());
    EXPECT_GT(files.now(), before);
}

TEST_F(MemoryFileSystemTest, PermissionsChangeOnlyTheChangeDate) {
    files.addFile("/f", "");
    const FileAttributes before = attributesOf("/f");
    ASSERT_TRUE(files.setPermissions("/f", 0640).isNone());
    EXPECT_EQ(attributesOf("/f").modificationDate, before.modificationDate);
    EXPECT_GT(attributesOf("/f").changeDate, before.changeDate);
}

TEST_F(MemoryFileSystemTest, EveryChangeInAFolderChangesItsDate) {
    Date last = attributesOf("/").modificationDate;
    const auto expectChange = [&](SystemError error) {
        EXPECT_TRUE(error.isNone());
        EXPECT_GT(attributesOf("/").modificationDate, last);
        last = attributesOf("/").modificationDate;
    };
    expectChange(write("/f", ""));
    expectChange(files.createFolder("/d", 0700));
    expectChange(files.createLink("/l", "d"));
    expectChange(files.move("/f", "/g", Replace::No));
    expectChange(files.removeFile("/g"));
    expectChange(files.removeFolder("/d"));
}

TEST_F(MemoryFileSystemTest, ANumberIsNeverGivenTwice) {
    files.addFile("/f", "");
    const FileIdentity first = attributesOf("/f").identity;
    EXPECT_NE(first.birthNanoseconds, 0);
    ASSERT_TRUE(files.removeFile("/f").isNone());
    files.addFile("/f", "");
    EXPECT_NE(attributesOf("/f").identity.number, first.number);
    EXPECT_GT(attributesOf("/f").identity.birthNanoseconds, first.birthNanoseconds);
}

TEST_F(MemoryFileSystemTest, NoClockOverflows) {
    for (const double seconds : {1e300, -1e300}) {
        files.setNow(Date(seconds));
        files.addFile("/f", "");
        EXPECT_EQ(attributesOf("/f").changeDate, Date(seconds));
        files.removeAll("/f");
    }
}

// Journal.

TEST_F(MemoryFileSystemTest, TheJournalHasEveryCallAlsoThoseThatFail) {
    files.addFile("/a/b", "");
    EXPECT_TRUE(files.calls().empty());
    EXPECT_EQ(contentOf("/a/b"), "");
    EXPECT_FALSE(files.targetAttributes("/missing").ok());
    EXPECT_TRUE(files.move("/a/b", "/a/c", Replace::No).isNone());
    EXPECT_TRUE(files.createLink("/l", "a").isNone());
    files.removeAll("/l");
    const std::vector<std::string> expected = {"readFile /a/b", "targetAttributes /missing",
                                               "move /a/b /a/c", "createLink /l a"};
    EXPECT_EQ(files.calls(), expected);
    files.clearCalls();
    EXPECT_TRUE(files.calls().empty());
}

// Options.

TEST_F(MemoryFileSystemTest, CaseMayNotMatter) {
    files.isCaseInsensitive = true;
    files.addFile("/Folder/Stra\xC3\x9F"
                  "e",
                  "text");
    EXPECT_EQ(contentOf("/FOLDER/strasse"), "text");
    EXPECT_EQ(files.createFolder("/folder", 0700), SystemError(EEXIST));
    ASSERT_TRUE(write("/fOLDER/STRASSE", "new").isNone());
    EXPECT_EQ(namesIn("/folder"), std::vector<std::string>{"Stra\xC3\x9F"
                                                           "e"});
    EXPECT_TRUE(files.removeFile("/folder/STRASSE").isNone());
    EXPECT_TRUE(namesIn("/Folder").empty());
}

TEST_F(MemoryFileSystemTest, WhereCaseMattersNamesDiffer) {
    files.addFile("/a", "small");
    files.addFile("/A", "large");
    EXPECT_EQ(contentOf("/a"), "small");
    EXPECT_EQ(contentOf("/A"), "large");
}

TEST_F(MemoryFileSystemTest, AMoveChangesTheSpellingWhereCaseDoesNotMatter) {
    files.isCaseInsensitive = true;
    files.addFile("/name", "text");
    EXPECT_EQ(files.move("/name", "/name", Replace::No), SystemError(EEXIST));
    EXPECT_TRUE(files.move("/name", "/Name", Replace::No).isNone());
    EXPECT_EQ(namesIn("/"), std::vector<std::string>{"Name"});
    EXPECT_TRUE(files.move("/NAME", "/NAME", Replace::Yes).isNone());
    EXPECT_EQ(namesIn("/"), std::vector<std::string>{"NAME"});
    files.addFile("/other", "other");
    EXPECT_TRUE(files.move("/OTHER", "/name", Replace::Yes).isNone());
    EXPECT_EQ(namesIn("/"), std::vector<std::string>{"name"});
    EXPECT_EQ(contentOf("/name"), "other");
}

TEST_F(MemoryFileSystemTest, AReadOnlyFileSystemChangesNothing) {
    files.addFile("/f", "text");
    files.addFolder("/d");
    files.isReadOnly = true;
    const Date before = files.now();
    const SystemError readOnly(EROFS);
    EXPECT_EQ(write("/f", "x"), readOnly);
    EXPECT_EQ(write("/new", "x"), readOnly);
    EXPECT_EQ(files.createFolder("/new", 0700), readOnly);
    EXPECT_EQ(files.createLink("/new", "x"), readOnly);
    EXPECT_EQ(files.setPermissions("/f", 0), readOnly);
    EXPECT_EQ(files.move("/f", "/g", Replace::Yes), readOnly);
    EXPECT_EQ(files.removeFile("/f"), readOnly);
    EXPECT_EQ(files.removeFolder("/d"), readOnly);
    EXPECT_EQ(files.now(), before);
    EXPECT_EQ(contentOf("/f"), "text");
    files.addFile("/f", "somebody else's");
    EXPECT_EQ(contentOf("/f"), "somebody else's");
}

TEST_F(MemoryFileSystemTest, AFullFileSystemTakesWhatFits) {
    files.capacity = 10;
    EXPECT_TRUE(write("/a", "123456").isNone());
    EXPECT_EQ(write("/b", "123456"), SystemError(ENOSPC));
    EXPECT_EQ(contentOf("/b"), "1234");
    EXPECT_TRUE(write("/a", "12").isNone());
    EXPECT_TRUE(write("/b", "12345678").isNone());
    EXPECT_THROW(files.addFile("/c", "x"), std::system_error);
    ASSERT_TRUE(files.removeFile("/a").isNone());
    EXPECT_TRUE(write("/c", "12").isNone());
    ASSERT_TRUE(files.move("/c", "/b", Replace::Yes).isNone());
    EXPECT_TRUE(write("/d", "12345678").isNone());
    files.capacity = 0;
    EXPECT_EQ(write("/d", "x"), SystemError(ENOSPC));
}

TEST_F(MemoryFileSystemTest, DatesMayBeEvenSeconds) {
    files.keepsTwoSecondDates = true;
    files.setNow(Date(1003.75));
    files.addFile("/f", "");
    EXPECT_EQ(attributesOf("/f").modificationDate, Date(1002));
    EXPECT_EQ(attributesOf("/f").changeDate, Date(1002));
    files.setNow(Date(-1003.75));
    ASSERT_TRUE(write("/f", "x").isNone());
    EXPECT_EQ(attributesOf("/f").modificationDate, Date(-1004));
    files.setNow(Date(1004));
    ASSERT_TRUE(write("/f", "x").isNone());
    EXPECT_EQ(attributesOf("/f").modificationDate, Date(1004));
}

TEST_F(MemoryFileSystemTest, CharactersMayBeForbiddenInNewNames) {
    files.addFile("/a:b", "text");
    files.forbiddenCharacters = ":*";
    EXPECT_EQ(write("/c*", "x"), SystemError(EINVAL));
    EXPECT_EQ(files.createFolder("/c:", 0700), SystemError(EINVAL));
    EXPECT_EQ(files.createLink("/c:", "x"), SystemError(EINVAL));
    EXPECT_EQ(files.move("/a:b", "/a*b", Replace::No), SystemError(EINVAL));
    EXPECT_TRUE(write("/a:b", "new").isNone());
    EXPECT_TRUE(files.createLink("/link", "a:b").isNone());
    EXPECT_TRUE(files.move("/a:b", "/ab", Replace::No).isNone());
    EXPECT_EQ(contentOf("/ab"), "new");
}

TEST_F(MemoryFileSystemTest, AVolumeIsAnotherDevice) {
    files.addFile("/f", "");
    files.addVolume("/Volumes/Disk");
    files.addFile("/Volumes/Disk/folder/g", "");
    EXPECT_NE(attributesOf("/Volumes/Disk/folder/g").identity.device,
              attributesOf("/f").identity.device);
    EXPECT_EQ(files.move("/f", "/Volumes/Disk/f", Replace::No), SystemError(EXDEV));
    EXPECT_EQ(files.move("/Volumes/Disk/folder", "/folder", Replace::Yes), SystemError(EXDEV));
    EXPECT_TRUE(files.move("/Volumes/Disk/folder/g", "/Volumes/Disk/g", Replace::No).isNone());
    EXPECT_EQ(files.move("/Volumes/Disk", "/Disk", Replace::No), SystemError(EBUSY));
    files.addFolder("/empty");
    EXPECT_EQ(files.move("/empty", "/Volumes/Disk", Replace::Yes), SystemError(EBUSY));
    EXPECT_EQ(files.removeFolder("/Volumes/Disk"), SystemError(EBUSY));
}

TEST_F(MemoryFileSystemTest, RelativePathsCountFromTheRoot) {
    files.addFile("a/b", "text");
    EXPECT_EQ(contentOf("/a/b"), "text");
    EXPECT_EQ(contentOf("../../a/./b"), "text");
    EXPECT_EQ(files.canonicalPath(".").value(), "/");
}

} // namespace
} // namespace tav
