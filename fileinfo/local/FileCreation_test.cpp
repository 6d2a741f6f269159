// New files of local items, and the attributes that they are given.

#include "fileinfo/local/MacFileInfoFixture_test.hpp"

#include <array>
#include <cerrno>
#include <limits>

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace tav {
namespace {

using Lines = std::vector<std::string>;

constexpr std::size_t chunk = std::size_t{1} << 20U;
const Date someDate(300000001.5);

class FileCreationTest : public MacFileInfoInMemory {
  protected:
    ProgressDelegate delegate() {
        ProgressDelegate progress;
        progress.writingContentsForFile = [this](TavBaseFileInfo&, std::uint32_t done,
                                                 std::uint32_t, void* userData) {
            written.push_back(done);
            pointer = userData;
            return false;
        };
        return progress;
    }

    std::vector<std::size_t> written; ///< As the delegate was told.
    void* pointer = nullptr;
};

class FileCreationOnDisk : public MacFileInfoOnDisk {
  protected:
    std::uint32_t permissionsOf(std::string_view name) {
        return FileSystem::current().attributes(folder.path(name)).value().permissions;
    }
};

TEST_F(FileCreationTest, AFileIsMadeInTheFolder) {
    memory.addFolder("/folder");
    const FileInfoPtr made = at("/folder")->createFile("a.txt", bytesOf("content"), nullptr);
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(made->path(), "/folder/a.txt");
    EXPECT_TRUE(made->isFile());
    EXPECT_EQ(contentOf("/folder/a.txt"), "content");
    const FileInfoPtr empty = at("/folder")->createFile("empty", {}, nullptr);
    EXPECT_EQ(contentOf("/folder/empty"), "");
    EXPECT_EQ(empty->size(), 0U);
}

TEST_F(FileCreationTest, AFileMakesASibling) {
    memory.addFile("/folder/a", "");
    const FileInfoPtr made = at("/folder/a")->createFile("b", bytesOf("content"), nullptr);
    EXPECT_EQ(made->path(), "/folder/b");
    EXPECT_EQ(contentOf("/folder/b"), "content");
}

TEST_F(FileCreationTest, AFileThatIsThereIsRewritten) {
    memory.addFile("/a", "old");
    ASSERT_TRUE(memory.setPermissions("/a", 0640).isNone());
    const Value::Dictionary attributes = {{"NSFilePosixPermissions", Value(0600)},
                                          {"NSFileModificationDate", Value(someDate)}};
    const FileInfoPtr made = at("/")->createFile("a", bytesOf("new"), &attributes);
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(made->path(), "/a");
    EXPECT_EQ(contentOf("/a"), "new");
    EXPECT_EQ(memory.attributes("/a").value().permissions, 0640U); // attributes are left alone
    EXPECT_NE(at("/a")->modificationDate(), someDate);
    const ProgressDelegate progress = delegate();
    int user = 0;
    ASSERT_NE(
        at("/")->createFile("a", bytesOf(longText(2 * chunk)), nullptr, false, &progress, &user),
        nullptr);
    EXPECT_EQ(written, (std::vector<std::size_t>{chunk, 2 * chunk}));
    EXPECT_EQ(pointer, &user);
}

TEST_F(FileCreationTest, AnItemIsAnsweredAlsoWhenItCouldNotBeRewritten) {
    memory.addFile("/a", "old");
    files.failOperation("writeFile", EIO);
    const FileInfoPtr made = at("/")->createFile("a", bytesOf("new"), nullptr);
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(made->path(), "/a");
    EXPECT_EQ(contentOf("/a"), "old");
}

TEST_F(FileCreationTest, AFolderInTheWayIsLogged) {
    SeenLog log;
    memory.addFolder("/top/folder");
    EXPECT_EQ(at("/top")->createFile("folder", bytesOf("x"), nullptr), nullptr);
    ASSERT_EQ(log.lines().size(), 1U);
    EXPECT_NE(log.lines().front().find("TavMacFileInfo:createFile-\"/top/folder\" is a folder!"),
              std::string::npos)
        << log.lines().front();
    memory.addLink("/top/link", "/top/folder");
    EXPECT_EQ(at("/top")->createFile("link", bytesOf("x"), nullptr), nullptr);
    EXPECT_EQ(at("/top")->createFile("", bytesOf("x"), nullptr), nullptr);
    EXPECT_EQ(at("/top")->createFile("..", bytesOf("x"), nullptr), nullptr);
}

TEST_F(FileCreationTest, NoProgressIsToldOfANewFile) {
    const ProgressDelegate progress = delegate();
    const std::string text = longText(2 * chunk);
    static_cast<void>(at("/")->createFile("a", bytesOf(text), nullptr, false, &progress, nullptr));
    static_cast<void>(at("/")->createFile("a", bytesOf(text), nullptr, true, &progress, nullptr));
    EXPECT_TRUE(contentOf("/a-1") == text);
    EXPECT_TRUE(written.empty());
}

TEST_F(FileCreationTest, UniqueNamesAreCounted) {
    memory.addFile("/name.txt", "old");
    const auto nameOfNew = [&](std::string_view name) {
        return at("/")->createFile(name, bytesOf("new"), nullptr, true)->name();
    };
    EXPECT_EQ(nameOfNew("name.txt"), "name-1.txt");
    EXPECT_EQ(nameOfNew("name.txt"), "name-2.txt");
    EXPECT_EQ(nameOfNew("free.txt"), "free.txt");
    memory.addFolder("/README");
    EXPECT_EQ(nameOfNew("README"), "README-1"); // without extension no dot
    memory.addFile("/.profile", "old");
    EXPECT_EQ(nameOfNew(".profile"), ".profile-1");
    memory.addFile("/a.tar.gz", "old");
    EXPECT_EQ(nameOfNew("a.tar.gz"), "a.tar-1.gz");
    memory.addLink("/broken.txt", "/nowhere");
    EXPECT_EQ(nameOfNew("broken.txt"), "broken-1.txt");
    EXPECT_EQ(contentOf("/name.txt"), "old");
    EXPECT_EQ(contentOf("/name-1.txt"), "new");
    EXPECT_EQ(contentOf("/name-2.txt"), "new");
    EXPECT_FALSE(has("/nowhere"));
}

TEST_F(FileCreationTest, AUniqueNameThatSomebodyElseTakesMeanwhileIsTheirs) {
    memory.addFile("/name.txt", "old");
    files.restartCount();
    static_cast<void>(at("/")->createFile("name.txt", bytesOf("x"), nullptr, true));
    const std::size_t count = files.callCount();
    // At whatever call it comes, nobody loses anything.
    for (std::size_t call = 1; call <= count; ++call) {
        memory.removeAll("/name-1.txt");
        memory.removeAll("/name-2.txt");
        files.restartCount();
        bool isTheirs = false;
        files.atCall(call, [&] {
            if (!has("/name-1.txt")) {
                memory.addFile("/name-1.txt", "theirs");
                isTheirs = true;
            }
        });
        const FileInfoPtr made = at("/")->createFile("name.txt", bytesOf("ours"), nullptr, true);
        ASSERT_NE(made, nullptr);
        EXPECT_EQ(made->name(), isTheirs ? "name-2.txt" : "name-1.txt") << call;
        EXPECT_EQ(contentOf(made->path()), "ours") << call;
        EXPECT_EQ(contentOf("/name-1.txt"), isTheirs ? "theirs" : "ours") << call;
        files.atCall(call, [] {});
    }
}

TEST_F(FileCreationTest, NamesThatAreAlwaysTakenMeanwhileComeToAnEnd) {
    files.failOperation("open", EEXIST);
    EXPECT_EQ(at("/")->createFile("a", bytesOf("x"), nullptr, true), nullptr);
}

TEST_F(FileCreationTest, AnItemIsAnsweredAlsoWhenNothingCouldBeMade) {
    const FileInfoPtr made = at("/missing")->createFile("a", bytesOf("x"), nullptr);
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(made->path(), "/missing/a");
    EXPECT_FALSE(made->exists());
    memory.isReadOnly = true;
    EXPECT_FALSE(at("/")->createFile("a", bytesOf("x"), nullptr)->exists());
    EXPECT_FALSE(at("/")->createFile("a", bytesOf("x"), nullptr, true)->exists());
    memory.isReadOnly = false;
    memory.capacity = 3;
    EXPECT_EQ(at("/")->createFile("a", bytesOf("01234"), nullptr)->size(), 3U); // what fitted
    const std::string longName(300, 'x');
    EXPECT_FALSE(at("/")->createFile(longName, bytesOf("x"), nullptr)->exists());
}

TEST_F(FileCreationTest, ANewFileGetsItsAttributes) {
    const Value::Dictionary attributes = {
        {"NSFileModificationDate", Value(someDate)},
        {"NSFileCreationDate", Value(Date(200000000.25))},
        {"NSFilePosixPermissions", Value(0604)},
        {"NSFileHFSTypeCode", Value(0x54455854)},     // "TEXT"
        {"NSFileHFSCreatorCode", Value(0xF0F1F2F3U)}, // more than 31 bits
        {"NSFileExtensionHidden", Value(true)},
    };
    for (const bool isUnique : {false, true}) {
        const FileInfoPtr made =
            at("/")->createFile("a.txt", bytesOf("content"), &attributes, isUnique);
        const Item item = at(made->path());
        EXPECT_EQ(item->modificationDate(), someDate);
        EXPECT_EQ(item->creationDate(), Date(200000000.25));
        EXPECT_EQ(item->attribute("NSFilePosixPermissions"), Value(0604));
        EXPECT_EQ(item->typeCode(), 0x54455854U);
        EXPECT_EQ(item->creatorCode(), 0xF0F1F2F3U);
        EXPECT_EQ(item->humanFriendlyName(), isUnique ? "a-1" : "a");
        EXPECT_FALSE(item->isLocked());
    }
}

TEST_F(FileCreationTest, EveryAttributeThatIsSetIsReadBack) {
    const std::array<Value::Dictionary::Entry, 9> entries = {{
        {"NSFileModificationDate", Value(someDate)},
        {"NSFileCreationDate", Value(someDate)},
        {"NSFilePosixPermissions", Value(0444)},
        {"NSFileHFSTypeCode", Value(1)},
        {"NSFileHFSCreatorCode", Value(2)},
        {"NSFileExtensionHidden", Value(true)},
        {"NSFileExtensionHidden", Value(false)},
        {"NSFileImmutable", Value(true)},
        {"NSFileImmutable", Value(false)},
    }};
    for (const auto& [key, value] : entries) {
        const Value::Dictionary attributes = {{key, value}};
        memory.removeAll("/a.txt");
        static_cast<void>(at("/")->createFile("a.txt", bytesOf("x"), &attributes));
        EXPECT_EQ(at("/a.txt")->attribute(key), value) << key;
        EXPECT_EQ(contentOf("/a.txt"), "x");
    }
}

TEST_F(FileCreationTest, ALockedFileKeepsItsOtherAttributes) {
    const Value::Dictionary attributes = {{"NSFileImmutable", Value(true)},
                                          {"NSFilePosixPermissions", Value(0664)},
                                          {"NSFileModificationDate", Value(someDate)},
                                          {"NSFileHFSTypeCode", Value(1)}};
    static_cast<void>(at("/")->createFile("a", bytesOf("x"), &attributes));
    EXPECT_TRUE(at("/a")->isLocked());
    EXPECT_EQ(at("/a")->attribute("NSFilePosixPermissions"), Value(0444));
    EXPECT_EQ(at("/a")->modificationDate(), someDate);
    EXPECT_EQ(at("/a")->typeCode(), 1U);
    const Value::Dictionary unlocked = {{"NSFileImmutable", Value(false)},
                                        {"NSFilePosixPermissions", Value(0444)}};
    static_cast<void>(at("/")->createFile("b", bytesOf("x"), &unlocked));
    EXPECT_EQ(at("/b")->attribute("NSFilePosixPermissions"), Value(0644));
}

TEST_F(FileCreationTest, AttributesOfOtherNamesAndTypesArePassedOver) {
    const Value::Dictionary attributes = {{"NSFileSize", Value(5)},
                                          {"NSFileOwnerAccountID", Value(5)},
                                          {"Colour", Value("red")},
                                          {"NSFileModificationDate", Value("yesterday")},
                                          {"NSFileCreationDate", Value(5)},
                                          {"NSFilePosixPermissions", Value("all")},
                                          {"NSFileHFSTypeCode", Value("TEXT")},
                                          {"NSFileExtensionHidden", Value("YES")},
                                          {"NSFileImmutable", Value("YES")}};
    static_cast<void>(at("/")->createFile("a.b", bytesOf("x"), &attributes));
    static_cast<void>(at("/")->createFile("plain", bytesOf("x"), nullptr));
    EXPECT_EQ(at("/a.b")->size(), 1U);
    EXPECT_EQ(at("/a.b")->attribute("NSFilePosixPermissions"),
              at("/plain")->attribute("NSFilePosixPermissions"));
    EXPECT_EQ(at("/a.b")->typeCode(), 0x3F3F3F3FU);
    EXPECT_EQ(at("/a.b")->humanFriendlyName(), "a.b");
    EXPECT_EQ(memory.extendedAttributeNames("/a.b").value(), Lines{});
}

TEST_F(FileCreationTest, ADateThatIsNoNumberIsPassedOver) {
    const Value::Dictionary attributes = {
        {"NSFileCreationDate", Value(Date(std::numeric_limits<double>::infinity()))},
        {"NSFileModificationDate", Value(Date(std::numeric_limits<double>::quiet_NaN()))}};
    static_cast<void>(at("/")->createFile("a", bytesOf("x"), &attributes));
    EXPECT_EQ(contentOf("/a"), "x");
    EXPECT_EQ(memory.extendedAttributeNames("/a").value(), Lines{});
}

TEST_F(FileCreationTest, OneAttributeThatFailsDoesNotKeepTheOthers) {
    files.failOperation("setExtendedAttribute", ENOTSUP);
    const Value::Dictionary attributes = {{"NSFileHFSTypeCode", Value(1)},
                                          {"NSFileModificationDate", Value(someDate)},
                                          {"NSFilePosixPermissions", Value(0600)}};
    static_cast<void>(at("/")->createFile("a", bytesOf("x"), &attributes));
    EXPECT_EQ(at("/a")->modificationDate(), someDate);
    EXPECT_EQ(at("/a")->attribute("NSFilePosixPermissions"), Value(0600));
}

TEST_F(FileCreationOnDisk, NobodyMayDoMoreWithANewFileThanInTheEnd) {
    const ::mode_t mask = ::umask(0);
    const Value::Dictionary attributes = {{"NSFilePosixPermissions", Value(04640)}};
    static_cast<void>(at(folder.path())->createFile("a", bytesOf("x"), &attributes));
    const Value::Dictionary locked = {{"NSFilePosixPermissions", Value(0400)},
                                      {"NSFileModificationDate", Value(someDate)}};
    static_cast<void>(at(folder.path())->createFile("b", bytesOf("x"), &locked));
    ::umask(077);
    const Value::Dictionary open = {{"NSFilePosixPermissions", Value(0666)}};
    static_cast<void>(at(folder.path())->createFile("c", bytesOf("x"), &open));
    ::umask(mask);
    EXPECT_EQ(permissionsOf("a"), 04640U);
    EXPECT_EQ(permissionsOf("b"), 0400U);
    EXPECT_EQ(in("b")->modificationDate(), someDate);
    EXPECT_EQ(permissionsOf("c"), 0666U); // whatever the mask says
    EXPECT_EQ(contentOf("b"), "x");
}

TEST_F(FileCreationTest, ANewFileIsNotOpenToOthersBeforeItsPermissionsAreSet) {
    const Value::Dictionary attributes = {{"NSFilePosixPermissions", Value(0600)}};
    files.failOperation("setPermissions", EIO);
    static_cast<void>(at("/")->createFile("a", bytesOf("x"), &attributes));
    EXPECT_EQ(memory.attributes("/a").value().permissions, 0600U);
    // Its owner may write it until then, which the other attributes need.
    const Value::Dictionary readOnly = {{"NSFilePosixPermissions", Value(0404)}};
    static_cast<void>(at("/")->createFile("b", bytesOf("x"), &readOnly));
    EXPECT_EQ(memory.attributes("/b").value().permissions, 0604U);
}

TEST_F(FileCreationTest, AnEmptyFileIsMadeWithItsWholePath) {
    const FileInfoPtr made = TavMacFileInfo::fileInfoCreateFileWithFullPath("/x/y/file.txt");
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(made->path(), "/x/y/file.txt");
    EXPECT_EQ(contentOf("/x/y/file.txt"), "");
    EXPECT_EQ(TavMacFileInfo::fileInfoCreateFileWithFullPath("~/in/file")->path(),
              "/home/user/in/file");
    EXPECT_EQ(contentOf("/home/user/in/file"), "");
    memory.addFile("/full", "content");
    EXPECT_NE(TavMacFileInfo::fileInfoCreateFileWithFullPath("/full"), nullptr);
    EXPECT_EQ(contentOf("/full"), ""); // as it is written
    EXPECT_EQ(TavMacFileInfo::fileInfoCreateFileWithFullPath("/x/y"), nullptr);
    EXPECT_EQ(TavMacFileInfo::fileInfoCreateFileWithFullPath("/full/z"), nullptr);
    EXPECT_EQ(TavMacFileInfo::fileInfoCreateFileWithFullPath("/"), nullptr);
}

} // namespace
} // namespace tav
