#include "base/Exception.hpp"
#include "fileinfo/local/MacFileInfoFixture_test.hpp"
#include "platform/memory/MemoryChildProcess.hpp"
#include "platform/memory/MemoryClock.hpp"

#include <algorithm>
#include <cerrno>
#include <stdexcept>

namespace tav {
namespace {

using Arguments = std::vector<std::string>;

/// The start of every zip archive, with enough behind it to be taken for one.
const std::string zipText = std::string("PK\x05\x06") + std::string(18, '\0');

/// Archivers that a test writes.
class ArchivesTest : public MacFileInfoInMemory {
  protected:
    ArchivesTest() {
        memory.addFolder(temporary);
        memory.addFile("/home/notes.txt", "text");
        memory.addFile("/home/folder/f", "text");
        memory.addFile("/home/a.zip", zipText);
    }

    void install(std::string_view name) { memory.addFile("/usr/bin/" + std::string(name), ""); }
    /// The program puts this text where its argument of that place says.
    void programWrites(std::string text, std::size_t argument) {
        children.program = [this, text, argument](const ChildRequest& request) {
            memory.addFile(request.arguments.at(argument), text);
            return ChildEnd();
        };
    }
    [[nodiscard]] bool isThere(std::string_view path) { return memory.attributes(path).ok(); }
    static std::string textIn(const std::optional<Data>& data) {
        return data ? std::string(textOf(*data)) : "nothing";
    }
    static std::vector<std::string> namesIn(const std::optional<FileInfoArray>& items) {
        std::vector<std::string> names;
        for (const FileInfoPtr& item : items.value_or(FileInfoArray())) {
            names.push_back(item->name());
        }
        std::sort(names.begin(), names.end());
        return names;
    }
    const ChildRequest& asked() { return children.requests.back(); }

    const std::string temporary = "/tmp/tav-1000";
    const std::string working = temporary + "/OrvaneTemp/temp.zip";
    const std::string unpacked = temporary + "/OrvaneUnzip-0";
    MemoryChildProcess children;
    ChildProcess::Replacement replacedChildren{children};
    MemoryClock clock;
    Clock::Replacement replacedClock{clock};
};

// zip

TEST_F(ArchivesTest, ZipOfAFileHasNoR) {
    install("zip");
    programWrites("archive", 0);
    EXPECT_EQ(textIn(at("/home/notes.txt")->zip()), "archive");
    ASSERT_EQ(children.requests.size(), 1U);
    EXPECT_EQ(asked().program, "/usr/bin/zip");
    EXPECT_EQ(asked().arguments, (Arguments{working, "/home/notes.txt"}));
    EXPECT_EQ(asked().environment, (Arguments{"ZIPOPT=-y -q"}));
    EXPECT_EQ(asked().mayWrite, std::nullopt);
    EXPECT_EQ(contentOf(working), "archive");
}

TEST_F(ArchivesTest, ZipOfAFolderHasR) {
    install("zip");
    programWrites("archive", 1);
    EXPECT_EQ(textIn(at("/home/folder")->zip()), "archive");
    EXPECT_EQ(asked().arguments, (Arguments{"-r", working, "/home/folder"}));
}

TEST_F(ArchivesTest, WithoutAnItemOrItsProgramNothingIsRun) {
    install("zip");
    install("ditto");
    memory.addFolder("/out");
    EXPECT_EQ(at("/home/none")->zip(), std::nullopt);
    EXPECT_EQ(at("/home/none")->ditto(), std::nullopt);
    EXPECT_EQ(at("/home/none")->zipToFolder(at("/out").get()), nullptr);
    EXPECT_EQ(at("/home/none")->unzip(), std::nullopt);
    memory.removeAll("/usr/bin/zip");
    EXPECT_EQ(at("/home/notes.txt")->zip(), std::nullopt);
    install("zip");
    memory.removeAll("/usr/bin/ditto");
    EXPECT_EQ(at("/home/notes.txt")->ditto(), std::nullopt);
    EXPECT_EQ(at("/home/notes.txt")->zipToFolder(at("/out").get()), nullptr);
    EXPECT_EQ(at("/home/a.zip")->unzip(), std::nullopt);
    install("unzip"); // it packs nothing
    EXPECT_EQ(at("/home/notes.txt")->ditto(), std::nullopt);
    EXPECT_EQ(at("/home/notes.txt")->zipToFolder(at("/out").get()), nullptr);
    EXPECT_TRUE(children.requests.empty());
    EXPECT_FALSE(isThere(temporary + "/OrvaneTemp"));
    EXPECT_FALSE(isThere(unpacked));
}

TEST_F(ArchivesTest, WithoutATemporaryFolderNothingIsRun) {
    install("zip");
    install("ditto");
    folders.temporaryFolder = "";
    EXPECT_EQ(at("/home/notes.txt")->zip(), std::nullopt);
    EXPECT_EQ(at("/home/notes.txt")->ditto(), std::nullopt);
    EXPECT_EQ(at("/home/a.zip")->unzip(), std::nullopt);
    EXPECT_TRUE(children.requests.empty());
}

TEST_F(ArchivesTest, TheArchiveOfBeforeIsGoneWhenTheProgramBegins) {
    install("zip");
    install("ditto");
    memory.addFile(working, "before");
    children.program = [this](const ChildRequest&) {
        EXPECT_FALSE(isThere(working));
        return ChildEnd{ChildEnd::Kind::Exited, 12};
    };
    // A program that makes nothing; what it says of itself is not read.
    EXPECT_EQ(at("/home/notes.txt")->zip(), std::nullopt);
    memory.addFile(working, "before");
    EXPECT_EQ(at("/home/notes.txt")->ditto(), std::nullopt);
    EXPECT_EQ(children.requests.size(), 2U);
}

TEST_F(ArchivesTest, AnArchiveOfBeforeThatCannotGoIsNotAnswered) {
    install("zip");
    install("ditto");
    memory.addFile(working, "before");
    memory.setImmutable(working, true);
    EXPECT_EQ(at("/home/notes.txt")->zip(), std::nullopt);
    EXPECT_EQ(at("/home/notes.txt")->ditto(), std::nullopt);
    EXPECT_TRUE(children.requests.empty());
}

TEST_F(ArchivesTest, ASecondDittoReplacesTheFirst) {
    install("ditto");
    programWrites("first", 3);
    EXPECT_EQ(textIn(at("/home/notes.txt")->ditto()), "first");
    programWrites("2", 3);
    EXPECT_EQ(textIn(at("/home/folder")->ditto()), "2");
    EXPECT_EQ(contentOf(working), "2");
}

TEST_F(ArchivesTest, AProgramThatDoesNotStartMakesNothing) {
    install("zip");
    install("ditto");
    memory.addFolder("/out");
    children.program = [](const ChildRequest&) { return Result<ChildEnd>(SystemError(EACCES)); };
    EXPECT_EQ(at("/home/notes.txt")->zip(), std::nullopt);
    EXPECT_EQ(at("/home/notes.txt")->ditto(), std::nullopt);
    const FileInfoPtr archive = at("/home/notes.txt")->zipToFolder(at("/out").get());
    ASSERT_NE(archive, nullptr);
    EXPECT_FALSE(archive->exists());
    const std::optional<FileInfoArray> items = at("/home/a.zip")->unzip();
    ASSERT_TRUE(items);
    EXPECT_TRUE(items->empty());
}

TEST_F(ArchivesTest, OnlyZipToFolderSwallowsExceptions) {
    install("zip");
    install("ditto");
    memory.addFolder("/out");
    children.program = [](const ChildRequest&) -> Result<ChildEnd> {
        throw Exception("NSInvalidArgumentException", "launch path not accessible");
    };
    EXPECT_THROW(static_cast<void>(at("/home/notes.txt")->zip()), Exception);
    EXPECT_THROW(static_cast<void>(at("/home/notes.txt")->ditto()), Exception);
    EXPECT_THROW(static_cast<void>(at("/home/a.zip")->unzip()), Exception);
    EXPECT_NE(at("/home/notes.txt")->zipToFolder(at("/out").get()), nullptr);
    children.program = [](const ChildRequest&) -> Result<ChildEnd> {
        throw std::runtime_error("another kind");
    };
    EXPECT_THROW(static_cast<void>(at("/home/notes.txt")->zipToFolder(at("/out").get())),
                 std::runtime_error);
}

// ditto and what stands in for it

TEST_F(ArchivesTest, DittoIsRunWhereItIs) {
    install("ditto");
    install("bsdtar");
    install("unzip");
    programWrites("archive", 3);
    EXPECT_EQ(textIn(at("/home/folder")->ditto()), "archive");
    EXPECT_EQ(
        asked(),
        (ChildRequest{"/usr/bin/ditto", {"-kc", "--keepParent", "/home/folder", working}, {}, {}}));
    EXPECT_NE(at("/home/notes.txt")->zipToFolder(at("/home").get()), nullptr);
    EXPECT_EQ(asked().arguments,
              (Arguments{"-kc", "--keepParent", "/home/notes.txt", "/home/notes.txt.zip"}));
    children.program = nullptr;
    EXPECT_NE(at("/home/a.zip")->unzip(), std::nullopt);
    EXPECT_EQ(asked().program, "/usr/bin/ditto");
    EXPECT_EQ(asked().arguments, (Arguments{"-kx", "/home/a.zip", unpacked}));
}

TEST_F(ArchivesTest, BsdtarPacksInItsPlace) {
    install("bsdtar");
    programWrites("archive", 7);
    EXPECT_EQ(textIn(at("/home/folder")->ditto()), "archive");
    EXPECT_EQ(asked(), (ChildRequest{"/usr/bin/bsdtar",
                                     {"--format", "zip", "-s", ",^\\./,,S", "-C", "/home", "-cf",
                                      working, "./folder"},
                                     {},
                                     {}}));
    memory.addFile("/-d", "");
    static_cast<void>(at("/-d")->ditto());
    EXPECT_EQ(asked().arguments.at(5), "/");
    EXPECT_EQ(asked().arguments.at(8), "./-d");
    children.program = nullptr;
    memory.addFile("/a\\b", "");
    static_cast<void>(at("/a\\b")->ditto());
    EXPECT_EQ(asked().arguments,
              (Arguments{"--format", "zip", "-C", "/", "-cf", working, "./a\\b"}));
    for (const std::string name : {"A: notes", "z:", "Z:\\x", "a:b"}) {
        memory.addFile("/" + name, "");
        static_cast<void>(at("/" + name)->ditto());
        EXPECT_EQ(asked().arguments,
                  (Arguments{"--format", "zip", "-C", "/", "-cf", working, "./" + name}));
    }
    for (const std::string name : {"A", "ab:c", ":a", "1:a", "@:", "[:", "`:", "{:"}) {
        memory.addFile("/" + name, "");
        static_cast<void>(at("/" + name)->ditto());
        EXPECT_EQ(asked().arguments.at(2), "-s") << name;
    }
}

TEST_F(ArchivesTest, NamesThatAreNoTextArePackedAsBytes) {
    install("bsdtar");
    const auto environmentFor = [this](std::string_view path) {
        static_cast<void>(at(path)->ditto());
        return asked().environment;
    };
    memory.addFile("/home/\xC3\xA9/\xC3\xA9", "");
    EXPECT_EQ(environmentFor("/home/\xC3\xA9"), Arguments());
    memory.addFile("/\xFF/f", "");
    EXPECT_EQ(environmentFor("/\xFF/f"), Arguments());
    EXPECT_EQ(environmentFor("/\xFF"), (Arguments{"LC_ALL=C"}));
    memory.addFile("/home/folder/in/\xFE", "");
    EXPECT_EQ(environmentFor("/home/folder"), (Arguments{"LC_ALL=C"}));
    // A link is packed alone.
    memory.addLink("/home/link", "folder");
    EXPECT_EQ(environmentFor("/home/link"), Arguments());
}

// zipToFolder

TEST_F(ArchivesTest, TheArchiveIsNamedAfterTheItem) {
    install("ditto");
    memory.addFile("/out/notes.txt.zip", "before");
    children.program = [this](const ChildRequest& request) {
        EXPECT_FALSE(isThere("/out/notes.txt.zip"));
        memory.addFile(request.arguments.at(3), "archive");
        return ChildEnd();
    };
    const FileInfoPtr archive = at("/home/notes.txt")->zipToFolder(at("/out").get());
    ASSERT_NE(archive, nullptr);
    EXPECT_EQ(archive->path(), "/out/notes.txt.zip");
    EXPECT_TRUE(archive->exists());
    EXPECT_EQ(contentOf("/out/notes.txt.zip"), "archive");
    children.program = nullptr;
    EXPECT_EQ(at("/home/folder")->zipToFolder(at("/out").get())->path(), "/out/folder.zip");
}

TEST_F(ArchivesTest, AFolderByTheArchivesNameStays) {
    install("ditto");
    memory.addFile("/out/notes.txt.zip/f", "");
    const FileInfoPtr archive = at("/home/notes.txt")->zipToFolder(at("/out").get());
    ASSERT_NE(archive, nullptr);
    EXPECT_TRUE(isThere("/out/notes.txt.zip/f"));
}

TEST_F(ArchivesTest, FoldersThatAreNone) {
    install("ditto");
    EXPECT_EQ(at("/home/notes.txt")->zipToFolder(nullptr), nullptr);
    EXPECT_TRUE(children.requests.empty());
    const FileInfoPtr archive = at("/home/notes.txt")->zipToFolder(at("/missing").get());
    ASSERT_NE(archive, nullptr);
    EXPECT_EQ(archive->path(), "/missing/notes.txt.zip");
    EXPECT_FALSE(archive->exists());
    EXPECT_EQ(children.requests.size(), 1U);
}

// unzip

TEST_F(ArchivesTest, WhatIsUnpackedAtTheTopIsAnswered) {
    install("ditto");
    children.program = [this](const ChildRequest& request) {
        memory.addFile(request.arguments.at(2) + "/one", "");
        memory.addFile(request.arguments.at(2) + "/two/three", "");
        return ChildEnd();
    };
    EXPECT_EQ(namesIn(at("/home/a.zip")->unzip()), (Arguments{"one", "two"}));
    EXPECT_TRUE(isThere(unpacked + "/two/three"));
}

TEST_F(ArchivesTest, TheFolderIsNamedByTheTicks) {
    install("ditto");
    const auto folderNow = [this] {
        static_cast<void>(at("/home/a.zip")->unzip());
        return asked().arguments.at(2).substr(temporary.size());
    };
    EXPECT_EQ(folderNow(), "/OrvaneUnzip-0");
    clock.advance(std::chrono::milliseconds(16));
    EXPECT_EQ(folderNow(), "/OrvaneUnzip-0");
    clock.advance(std::chrono::milliseconds(1));
    EXPECT_EQ(folderNow(), "/OrvaneUnzip-1");
    clock.advance(std::chrono::milliseconds(2500));
    EXPECT_EQ(folderNow(), "/OrvaneUnzip-151");
    clock.advance(std::chrono::seconds(71'582'785)); // 4294967100 ticks
    EXPECT_EQ(folderNow(), "/OrvaneUnzip-4294967251");
    clock.advance(std::chrono::seconds(1));
    EXPECT_EQ(folderNow(), "/OrvaneUnzip-15");
}

TEST_F(ArchivesTest, TheSameTickUsesAndEmptiesTheSameFolder) {
    install("ditto");
    memory.addFile(unpacked + "/old/deep", "");
    children.program = [this](const ChildRequest& request) {
        EXPECT_FALSE(isThere(unpacked + "/old"));
        EXPECT_FALSE(isThere(unpacked + "/first"));
        EXPECT_TRUE(isThere(unpacked));
        memory.addFile(request.arguments.at(2) + "/first", "");
        return ChildEnd();
    };
    EXPECT_EQ(namesIn(at("/home/a.zip")->unzip()), (Arguments{"first"}));
    EXPECT_EQ(namesIn(at("/home/a.zip")->unzip()), (Arguments{"first"}));
}

TEST_F(ArchivesTest, OfALinkInTheFoldersPlaceOnlyTheLinkGoes) {
    install("ditto");
    for (const char* const target : {"/home/folder", "/nowhere"}) {
        memory.removeAll(unpacked);
        memory.addLink(unpacked, target);
        EXPECT_NE(at("/home/a.zip")->unzip(), std::nullopt);
        EXPECT_EQ(memory.attributes(unpacked).value().kind, FileKind::Folder);
        EXPECT_EQ(contentOf("/home/folder/f"), "text");
    }
    memory.removeAll(unpacked);
    memory.addFile(unpacked, "a file");
    EXPECT_NE(at("/home/a.zip")->unzip(), std::nullopt);
}

TEST_F(ArchivesTest, AFolderThatCannotBeEmptiedIsNotUsed) {
    install("ditto");
    memory.addFile(unpacked + "/old", "");
    memory.setImmutable(unpacked + "/old", true);
    EXPECT_EQ(at("/home/a.zip")->unzip(), std::nullopt);
    // But somebody was asked to make it accessible.
    ASSERT_EQ(children.requests.size(), 1U);
    EXPECT_EQ(asked().program, "/bin/chmod");
}

TEST_F(ArchivesTest, AFolderThatCanBeEmptiedOnceItIsAccessibleIsUsed) {
    install("ditto");
    memory.addFile(unpacked + "/old", "");
    files.failOperation("OpenFolder.removeFile", EACCES);
    children.program = [this](const ChildRequest& request) {
        if (request.program == "/bin/chmod") {
            files.failOperation("OpenFolder.removeFile", 0);
        } else {
            EXPECT_FALSE(isThere(unpacked + "/old"));
            memory.addFile(unpacked + "/new", "");
        }
        return ChildEnd();
    };
    EXPECT_EQ(namesIn(at("/home/a.zip")->unzip()), (Arguments{"new"}));
}

TEST_F(ArchivesTest, WhatALinkLeadsToIsNotMadeAccessible) {
    install("ditto");
    memory.addLink(unpacked, "/home/folder");
    files.failOperation("removeFile", EPERM);
    EXPECT_EQ(at("/home/a.zip")->unzip(), std::nullopt);
    EXPECT_TRUE(children.requests.empty());
}

TEST_F(ArchivesTest, BsdtarUnpacksInItsPlaceAndUnzipAfterIt) {
    install("bsdtar");
    install("unzip");
    EXPECT_NE(at("/home/a.zip")->unzip(), std::nullopt);
    EXPECT_EQ(asked(),
              (ChildRequest{"/usr/bin/bsdtar",
                            {"-C", unpacked, "-s", ",^/*[A-Za-z]:,./~,S", "--no-same-owner",
                             "--no-same-permissions", "--passphrase", "x", "-xf", "/home/a.zip"},
                            {},
                            {}}));
    memory.removeAll("/usr/bin/bsdtar");
    EXPECT_NE(at("/home/a.zip")->unzip(), std::nullopt);
    EXPECT_EQ(
        asked(),
        (ChildRequest{
            "/usr/bin/unzip", {"-q", "-o", "-P", "x", "/home/a.zip", "-d", unpacked}, {}, {}}));
}

TEST_F(ArchivesTest, UnzipIsGivenNoPatterns) {
    install("unzip");
    for (const std::string name : {"[x].zip", "*.zip", "?.zip", "\\a.zip", "x]"}) {
        memory.addFile("/home/" + name, zipText);
        children.program = [this, name](const ChildRequest& request) {
            EXPECT_EQ(request.arguments.at(4), unpacked + ".zip");
            EXPECT_EQ(memory.linkTarget(unpacked + ".zip").value(), "/home/" + name);
            return ChildEnd();
        };
        EXPECT_NE(at("/home/" + name)->unzip(), std::nullopt);
        EXPECT_FALSE(isThere(unpacked + ".zip"));
    }
    EXPECT_EQ(children.requests.size(), 5U);
    // Folders of the way are none.
    memory.addFile("/[h]/a.zip", zipText);
    children.program = nullptr;
    EXPECT_NE(at("/[h]/a.zip")->unzip(), std::nullopt);
    EXPECT_EQ(asked().arguments.at(4), "/[h]/a.zip");
}

TEST_F(ArchivesTest, APlainNameThatIsTakenLeadsToNoOtherArchive) {
    install("unzip");
    memory.addFile("/home/*.zip", zipText);
    memory.addFile("/home/other.zip", zipText);
    // What a process that ended meanwhile has left.
    memory.addLink(unpacked + ".zip", "/home/other.zip");
    children.program = [this](const ChildRequest& request) {
        EXPECT_EQ(memory.linkTarget(request.arguments.at(4)).value(), "/home/*.zip");
        return ChildEnd();
    };
    EXPECT_NE(at("/home/*.zip")->unzip(), std::nullopt);
    EXPECT_EQ(children.requests.size(), 1U);
    // A folder does not give way: unzip would look for an archive by a similar name.
    memory.addFile(unpacked + ".zip/f", "text");
    const std::optional<FileInfoArray> items = at("/home/*.zip")->unzip();
    ASSERT_TRUE(items);
    EXPECT_TRUE(items->empty());
    EXPECT_EQ(children.requests.size(), 1U);
    EXPECT_EQ(contentOf(unpacked + ".zip/f"), "text");
}

TEST_F(ArchivesTest, WhatIsNoZipArchiveIsNotGivenToOurs) {
    install("bsdtar");
    memory.addFile("/home/text.zip", "This is no archive.");
    memory.addFile("/home/encrypted.zip", "PK\x03\x04..\x01..................");
    for (const char* const path : {"/home/text.zip", "/home/encrypted.zip", "/home/folder"}) {
        const std::optional<FileInfoArray> items = at(path)->unzip();
        ASSERT_TRUE(items);
        EXPECT_TRUE(items->empty());
    }
    EXPECT_TRUE(children.requests.empty());
    install("ditto");
    EXPECT_NE(at("/home/text.zip")->unzip(), std::nullopt);
    EXPECT_EQ(children.requests.size(), 1U);
}

TEST_F(ArchivesTest, SomeOfTheFreeSpaceStaysFree) {
    constexpr std::uint64_t gigabyte = std::uint64_t{1} << 30U;
    install("bsdtar");
    const auto roomWith = [this](std::uint64_t total, std::uint64_t free) {
        VolumeInfo info;
        info.rootPath = "/";
        info.totalBytes = total;
        info.freeBytes = free;
        volumes.add(info);
        static_cast<void>(at("/home/a.zip")->unzip());
        return asked().mayWrite;
    };
    EXPECT_EQ(roomWith(1000, 400), 300U);
    EXPECT_EQ(roomWith(1000, 0), 0U);
    EXPECT_EQ(roomWith(100 * gigabyte, 4 * gigabyte), 3 * gigabyte);
    EXPECT_EQ(roomWith(100 * gigabyte, 90 * gigabyte), 89 * gigabyte);
    EXPECT_EQ(roomWith(0, 0), std::nullopt);
}

TEST_F(ArchivesTest, OfWhatTakesMoreNothingIsLeft) {
    for (const char* const program : {"ditto", "bsdtar", "unzip"}) {
        memory.removeAll("/usr/bin");
        install(program);
        children.program = [this](const ChildRequest&) {
            memory.addFile(unpacked + "/d/zeros", "0000");
            return ChildEnd{ChildEnd::Kind::WroteTooMuch, 0};
        };
        const std::optional<FileInfoArray> items = at("/home/a.zip")->unzip();
        ASSERT_TRUE(items);
        EXPECT_TRUE(items->empty());
        EXPECT_TRUE(isThere(unpacked));
        EXPECT_FALSE(isThere(unpacked + "/d"));
    }
}

TEST_F(ArchivesTest, LinksThatLeadOutGoBeforeTheAnswer) {
    for (const char* const program : {"ditto", "bsdtar"}) {
        memory.removeAll("/usr/bin");
        install(program);
        children.program = [this](const ChildRequest&) {
            memory.addLink(unpacked + "/out", "/home");
            memory.addLink(unpacked + "/in", "file");
            memory.addFile(unpacked + "/file", "");
            return ChildEnd();
        };
        EXPECT_EQ(namesIn(at("/home/a.zip")->unzip()), (Arguments{"file", "in"}));
        EXPECT_EQ(contentOf("/home/notes.txt"), "text");
    }
}

TEST_F(ArchivesTest, NothingIsCleanedBehindALinkThatTookTheFoldersPlace) {
    memory.addLink("/home/kept", "/tmp");
    memory.addFile("/home/__MACOSX/f", "text");
    for (const char* const program : {"ditto", "bsdtar", "unzip"}) {
        memory.removeAll("/usr/bin");
        install(program);
        children.program = [this](const ChildRequest&) {
            memory.removeAll(unpacked);
            memory.addLink(unpacked, "/home");
            return ChildEnd();
        };
        const std::optional<FileInfoArray> items = at("/home/a.zip")->unzip();
        ASSERT_TRUE(items);
        EXPECT_TRUE(items->empty());
        EXPECT_TRUE(isThere("/home/kept"));
        EXPECT_EQ(contentOf("/home/__MACOSX/f"), "text");
        EXPECT_EQ(memory.attributes(unpacked).value().kind, FileKind::Folder);
    }
}

TEST_F(ArchivesTest, ResourcesOfThePlatformGoWhereThePlatformIsNotHere) {
    const auto namesBy = [this](const char* program) {
        memory.removeAll("/usr/bin");
        install(program);
        return namesIn(at("/home/a.zip")->unzip());
    };
    children.program = [this](const ChildRequest&) {
        memory.addFile(unpacked + "/__MACOSX/._f", "");
        memory.addFile(unpacked + "/d/__MACOSX/f", "");
        return ChildEnd();
    };
    EXPECT_EQ(namesBy("bsdtar"), (Arguments{"d"}));
    EXPECT_TRUE(isThere(unpacked + "/d/__MACOSX/f"));
    EXPECT_EQ(namesBy("ditto"), (Arguments{"__MACOSX", "d"}));
    children.program = [this](const ChildRequest&) {
        memory.addFile(unpacked + "/__MACOSX", "");
        return ChildEnd();
    };
    EXPECT_EQ(namesBy("bsdtar"), (Arguments{"__MACOSX"}));
}

TEST_F(ArchivesTest, WhatCannotBeVouchedForIsNotShown) {
    install("bsdtar");
    children.program = [this](const ChildRequest& request) {
        if (request.program == "/usr/bin/bsdtar") {
            memory.addLink(unpacked + "/out", "/home");
            files.failOperation("OpenFolder.linkTarget", EACCES);
        } else {
            EXPECT_EQ(request,
                      (ChildRequest{"/bin/chmod", {"-R", "u+rwX", "--", unpacked}, {}, {}}));
        }
        return ChildEnd();
    };
    const std::optional<FileInfoArray> items = at("/home/a.zip")->unzip();
    files.failOperation("OpenFolder.linkTarget", 0);
    ASSERT_TRUE(items);
    EXPECT_TRUE(items->empty());
    EXPECT_EQ(children.requests.size(), 2U);
    EXPECT_TRUE(isThere(unpacked));
    EXPECT_FALSE(isThere(unpacked + "/out")) << "nor left for somebody else to follow";
}

TEST_F(ArchivesTest, WhatCanNeitherBeCleanedNorRemovedIsNotShown) {
    install("bsdtar");
    children.program = [this](const ChildRequest& request) {
        if (request.program == "/usr/bin/bsdtar") {
            memory.addLink(unpacked + "/out", "/home");
            memory.addFile(unpacked + "/f", "");
            files.failOperation("OpenFolder.removeFile", EIO);
        }
        return ChildEnd();
    };
    const std::optional<FileInfoArray> items = at("/home/a.zip")->unzip();
    ASSERT_TRUE(items);
    EXPECT_TRUE(items->empty());
    EXPECT_TRUE(isThere(unpacked + "/out"));
}

TEST_F(ArchivesTest, RightsThatAreMissingAreTaken) {
    install("bsdtar");
    children.program = [this](const ChildRequest& request) {
        if (request.program == "/usr/bin/bsdtar") {
            memory.addLink(unpacked + "/out", "/home");
            memory.addFile(unpacked + "/f", "");
        }
        files.failOperation("OpenFolder.removeFile",
                            request.program == "/usr/bin/bsdtar" ? EACCES : 0);
        return ChildEnd();
    };
    EXPECT_EQ(namesIn(at("/home/a.zip")->unzip()), (Arguments{"f"}));
}

TEST_F(ArchivesTest, WhateverFailsTheItemStays) {
    install("zip");
    install("bsdtar");
    memory.addFolder("/out");
    const auto sweep = [this](const auto& action) {
        for (std::size_t call = 1;; ++call) {
            files.restartCount();
            files.failCall(call, EIO);
            action();
            files.failCall(0, 0);
            EXPECT_EQ(contentOf("/home/folder/f"), "text") << call;
            EXPECT_EQ(contentOf("/home/a.zip"), zipText) << call;
            if (files.callCount() < call) {
                return;
            }
        }
    };
    sweep([] { static_cast<void>(at("/home/folder")->zip()); });
    sweep([] { static_cast<void>(at("/home/folder")->ditto()); });
    sweep([] { static_cast<void>(at("/home/folder")->zipToFolder(at("/out").get())); });
    children.program = [this](const ChildRequest& request) {
        memory.removeAll(request.arguments.at(1) + "/out");
        memory.addLink(request.arguments.at(1) + "/out", "/home");
        return ChildEnd();
    };
    sweep([] {
        try {
            // No answer shows the link.
            EXPECT_EQ(namesIn(at("/home/a.zip")->unzip()), Arguments());
        } catch (const Exception&) {
            // As every folder answers that cannot be listed.
        }
    });
}

} // namespace
} // namespace tav
