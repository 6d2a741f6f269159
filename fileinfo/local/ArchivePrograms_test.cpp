// Packing and unpacking by the programs of the host, there and back.

#include "fileinfo/local/MacFileInfoFixture_test.hpp"
#include "platform/ChildProcess.hpp"
#include "platform/memory/MemoryClock.hpp"
#include "testing/ForkedProcess.hpp"

#include <algorithm>
#include <filesystem>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tav {
namespace {

using Names = std::vector<std::string>;

/// A zip archive of empty files as somebody else made it.
std::string emptyFilesZipped(const Names& names) {
    std::string archive;
    std::string list;
    const auto two = [](std::size_t number) {
        return std::string{static_cast<char>(number & 0xFFU), static_cast<char>(number >> 8U)};
    };
    for (const std::string& name : names) {
        const std::string zeros(16, '\0');
        list += "PK\x01\x02" + two(0x0314) + two(10) + zeros + zeros.substr(12) + two(name.size()) +
                zeros.substr(4) + two(archive.size()) + two(0) + name;
        archive +=
            "PK\x03\x04" + two(10) + zeros + zeros.substr(12) + two(name.size()) + two(0) + name;
    }
    return archive + list + "PK\x05\x06" + two(0) + two(0) + two(names.size()) + two(names.size()) +
           two(list.size()) + two(0) + two(archive.size()) + two(0) + two(0);
}

/// Items on disk, with a temporary folder of their own.
class ArchiveProgramsTest : public MacFileInfoOnDisk {
  protected:
    ArchiveProgramsTest() {
        addFolder("temporary");
        addFolder("d");
        folders.temporaryFolder = folder.path("temporary");
    }

    static bool isThere(const char* program) { return ::access(program, X_OK) == 0; }
    [[nodiscard]] std::string unpacked(std::string_view name) const {
        return folder.path("temporary/OrvaneUnzip-0/" + std::string(name));
    }
    static std::string contentOf(const std::string& path) {
        const Result<Data> content = FileSystem::current().readFile(path, 1U << 24U);
        return content.ok() ? std::string(textOf(content.value())) : "nothing";
    }
    /// What is in a folder, in all depths: names, kinds, rights, contents and, but for links,
    /// times.
    static Names picture(const std::string& path) {
        Names lines;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(path)) {
            struct ::stat status = {};
            ::lstat(entry.path().c_str(), &status);
            const std::string inside = entry.path().string().substr(path.size());
            std::string line = inside + " " + std::to_string(status.st_mode);
            if (entry.is_symlink()) {
                line += " " + std::filesystem::read_symlink(entry.path()).string();
            } else {
                line += " " + std::to_string(status.st_mtim.tv_sec);
            }
            if (entry.is_regular_file() && !entry.is_symlink()) {
                line += " " + contentOf(entry.path());
            }
            lines.push_back(line);
        }
        std::sort(lines.begin(), lines.end());
        return lines;
    }
    /// Gives a file or folder rights and a time of long ago.
    void settle(std::string_view name, ::mode_t mode) const {
        ASSERT_EQ(::chmod(folder.path(name).c_str(), mode), 0);
        const ::timespec times[2] = {{1'000'000'000, 0}, {1'000'000'000, 0}};
        ASSERT_EQ(::utimensat(AT_FDCWD, folder.path(name).c_str(), times, 0), 0);
    }
    /// Packs an item by the operation, and unpacks what it made.
    [[nodiscard]] Names thereAndBack(const Item& item, bool byZip) const {
        const std::optional<Data> data = byZip ? item->zip() : item->ditto();
        EXPECT_TRUE(data);
        const Item archive = in("temporary/OrvaneTemp/temp.zip");
        EXPECT_EQ(data ? std::string(textOf(*data)) : "none", contentOf(archive->path()));
        return namesOf(archive->unzip());
    }
    static Names namesOf(const std::optional<FileInfoArray>& items) {
        Names names;
        for (const FileInfoPtr& item : items.value_or(FileInfoArray())) {
            names.push_back(item->name());
        }
        std::sort(names.begin(), names.end());
        return names;
    }

    MemoryUserFolders folders;
    UserFolders::Replacement replacedFolders{folders};
    MemoryClock clock;
    Clock::Replacement replacedClock{clock};
};

/// By bsdtar, or where the platform is, by ditto.
class DittoProgramTest : public ArchiveProgramsTest {
  protected:
    void SetUp() override {
        if (!isThere("/usr/bin/bsdtar")) {
            GTEST_SKIP() << "needs bsdtar";
        }
    }
};

class ZipProgramTest : public ArchiveProgramsTest {
  protected:
    void SetUp() override {
        if (!isThere("/usr/bin/zip") || !isThere("/usr/bin/bsdtar")) {
            GTEST_SKIP() << "needs zip and bsdtar";
        }
    }
};

TEST_F(DittoProgramTest, AFile) {
    addFile("notes.txt", std::string(100'000, 'n'));
    settle("notes.txt", 0640);
    EXPECT_EQ(thereAndBack(in("notes.txt"), false), (Names{"notes.txt"}));
    EXPECT_EQ(contentOf(unpacked("notes.txt")), std::string(100'000, 'n'));
    EXPECT_LT(std::filesystem::file_size(folder.path("temporary/OrvaneTemp/temp.zip")), 10'000U);
}

TEST_F(DittoProgramTest, AFolderWithAllThatIsInIt) {
    addFile("d/f", "content");
    addFolder("d/empty");
    addFolder("d/in");
    addFile("d/in/run", "#!/bin/sh\n");
    addLink("d/link", "./in/run");
    addLink("d/in/up", "../f");
    addLink("d/missing", "missing too");
    settle("d/f", 0600);
    settle("d/in/run", 0755);
    settle("d/empty", 0700);
    settle("d/in", 0755);
    const Names before = picture(folder.path("d"));
    EXPECT_EQ(thereAndBack(in("d"), false), (Names{"d"}));
    EXPECT_EQ(picture(unpacked("d")), before);
}

TEST_F(DittoProgramTest, AnEmptyFolderAndALinkAlone) {
    EXPECT_EQ(thereAndBack(in("d"), false), (Names{"d"}));
    EXPECT_TRUE(std::filesystem::is_empty(unpacked("d")));
    addLink("link", "d");
    EXPECT_EQ(thereAndBack(in("link"), false), (Names{"link"}));
    EXPECT_EQ(std::filesystem::read_symlink(unpacked("link")), "d");
}

TEST_F(DittoProgramTest, NamesOfAnyBytes) {
    for (const std::string name :
         {"-rf", "--help", "@file", "[x]*?", "new\nline", "\xC3\xA9", "a\\b", "a:b", "C:", "Z:\\x",
          " ", "...", "$(x)", "\xFF\xFE", "d\xFF"}) {
        addFile(name, name);
        EXPECT_EQ(thereAndBack(in(name), false), (Names{name}));
        EXPECT_EQ(contentOf(unpacked(name)), name);
        addFolder("d/" + name);
        addFile("d/" + name + "/" + name, name);
    }
    const Names before = picture(folder.path("d"));
    EXPECT_EQ(thereAndBack(in("d"), false), (Names{"d"}));
    EXPECT_EQ(picture(unpacked("d")), before);
}

TEST_F(DittoProgramTest, LettersWithAColonAreNoDrives) {
    addFile("a.zip", emptyFilesZipped({"A: notes", "B: notes", "/C:", "d/E:f", "G:/h"}));
    EXPECT_EQ(namesOf(in("a.zip")->unzip()), (Names{"A: notes", "B: notes", "C:", "G:", "d"}));
    EXPECT_TRUE(std::filesystem::is_regular_file(unpacked("d/E:f")));
    EXPECT_TRUE(std::filesystem::is_regular_file(unpacked("G:/h")));
}

TEST_F(DittoProgramTest, NamesThatAreUTF8AreMarkedSo) {
    addFile("\xC3\xA9", "");
    const std::optional<Data> data = in("\xC3\xA9")->ditto();
    ASSERT_TRUE(data);
    ASSERT_GT(data->size(), 8U);
    EXPECT_EQ(std::to_integer<int>((*data)[7]) & 0x08, 0x08);
    // The name stands behind the header, without a folder before it.
    EXPECT_EQ(textOf(*data).substr(30, 2), "\xC3\xA9");
}

TEST_F(DittoProgramTest, ArchivesOfAnyName) {
    addFile("f", "content");
    for (const std::string name : {"-a", "[x]*?", "new\nline", "\xFF\xFE", "a'b"}) {
        addFolder(name);
        const FileInfoPtr archive = in("f")->zipToFolder(in(name).get());
        ASSERT_TRUE(archive && archive->exists()) << name;
        EXPECT_EQ(archive->path(), folder.path(name + "/f.zip"));
        rename(name + "/f.zip", name + "/" + name);
        EXPECT_EQ(namesOf(in(name + "/" + name)->unzip()), (Names{"f"})) << name;
        EXPECT_EQ(contentOf(unpacked("f")), "content");
    }
}

TEST_F(DittoProgramTest, ZipToFolderReplacesAndTellsNothing) {
    addFile("notes.txt", "content");
    addFile("d/notes.txt.zip", "before");
    const FileInfoPtr archive = in("notes.txt")->zipToFolder(in("d").get());
    ASSERT_TRUE(archive && archive->exists());
    EXPECT_EQ(namesOf(archive->unzip()), (Names{"notes.txt"}));
    const FileInfoPtr nowhere = in("notes.txt")->zipToFolder(in("missing").get());
    ASSERT_NE(nowhere, nullptr);
    EXPECT_FALSE(nowhere->exists());
}

TEST_F(DittoProgramTest, PipesAreNotWaitedFor) {
    ASSERT_EQ(::mkfifo(folder.path("d/pipe").c_str(), 0644), 0);
    addFile("d/f", "content");
    EXPECT_EQ(thereAndBack(in("d"), false), (Names{"d"}));
    EXPECT_EQ(contentOf(unpacked("d/f")), "content");
    EXPECT_FALSE(std::filesystem::exists(unpacked("d/pipe")));
    static_cast<void>(in("d/pipe")->ditto());
    EXPECT_EQ(namesOf(in("d/pipe")->unzip()), Names());
}

TEST_F(DittoProgramTest, WhatTakesMoreThanThereIsLeavesNothing) {
    addFile("d/zeros", std::string(20'000'000, '\0'));
    const FileInfoPtr archive = in("d")->zipToFolder(in("temporary").get());
    ASSERT_TRUE(archive && archive->exists());
    MemoryVolumes volumes(FileSystem::current());
    VolumeInfo info;
    info.rootPath = folder.path();
    info.totalBytes = 1U << 30U;
    info.freeBytes = 10'000'000;
    volumes.add(info);
    const Volumes::Replacement replaced(volumes);
    const std::optional<FileInfoArray> items = archive->unzip();
    ASSERT_TRUE(items);
    EXPECT_TRUE(items->empty());
    EXPECT_TRUE(std::filesystem::is_empty(folder.path("temporary/OrvaneUnzip-0")));
}

TEST_F(DittoProgramTest, WhatCannotBeReadEndsIt) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "needs root, to become somebody else";
    }
    addFile("d/f", "content");
    addFile("d/secret", "secret");
    ASSERT_EQ(::chmod(folder.path("d/secret").c_str(), 0600), 0);
    ASSERT_EQ(::chmod(folder.path().c_str(), 0755), 0);
    ASSERT_EQ(::chmod(folder.path("temporary").c_str(), 0777), 0);
    const ProcessEnd end = runForked([this] {
        constexpr ::uid_t nobody = 65534;
        if (::setresgid(nobody, nobody, nobody) != 0 || ::setresuid(nobody, nobody, nobody) != 0) {
            return 100;
        }
        return in("d")->ditto() ? 0 : 1;
    });
    EXPECT_EQ(end, (ProcessEnd{0, 0}));
    EXPECT_EQ(namesOf(in("temporary/OrvaneTemp/temp.zip")->unzip()), (Names{"d"}));
    // What comes behind it in the folder's own order is missing, too.
    EXPECT_NE(contentOf(unpacked("d/secret")), "secret");
}

TEST_F(ZipProgramTest, AFolderUnderItsWholePath) {
    addFile("d/f", "content");
    addLink("d/link", "f");
    addLink("d/self", ".");
    addLink("d/too", ".");
    settle("d/f", 0640);
    const Names names = thereAndBack(in("d"), true);
    const std::string path = folder.path("d").substr(1);
    EXPECT_EQ(names, (Names{path.substr(0, path.find('/'))}));
    EXPECT_EQ(contentOf(unpacked(path + "/f")), "content");
    // Two links to their own folder would be followed without an end.
    EXPECT_EQ(std::filesystem::read_symlink(unpacked(path + "/self")), ".");
    EXPECT_EQ(std::filesystem::read_symlink(unpacked(path + "/too")), ".");
}

TEST_F(ZipProgramTest, NamesOfAnyBytes) {
    for (const std::string name :
         {"-rf", "@file", "[x]*?", "new\nline", "\xC3\xA9", "a\\b", " ", "\xFF\xFE"}) {
        addFile(name, name);
        static_cast<void>(thereAndBack(in(name), true));
        EXPECT_EQ(contentOf(unpacked(folder.path(name).substr(1))), name);
    }
}

TEST_F(ZipProgramTest, ASecondZipReplacesTheFirst) {
    addFile("one", "1");
    addFile("two", "2");
    EXPECT_TRUE(in("one")->zip());
    EXPECT_TRUE(in("two")->zip());
    static_cast<void>(in("temporary/OrvaneTemp/temp.zip")->unzip());
    EXPECT_FALSE(std::filesystem::exists(unpacked(folder.path("one").substr(1))));
    EXPECT_TRUE(std::filesystem::exists(unpacked(folder.path("two").substr(1))));
}

TEST_F(ZipProgramTest, OptionsInTheCallersEnvironmentChangeNothing) {
    addFile("f", "content");
    ::setenv("ZIPOPT", "-m", 1); // would remove the file
    EXPECT_TRUE(in("f")->zip());
    ::unsetenv("ZIPOPT");
    EXPECT_EQ(contentOf(folder.path("f")), "content");
}

TEST_F(ZipProgramTest, TwoUnzipsInATickUseOneFolder) {
    addFile("f", "content");
    const FileInfoPtr archive = in("f")->zipToFolder(in("d").get());
    ASSERT_TRUE(archive && archive->exists());
    EXPECT_EQ(namesOf(archive->unzip()), (Names{"f"}));
    addFile("temporary/OrvaneUnzip-0/more", "");
    EXPECT_EQ(namesOf(archive->unzip()), (Names{"f"}));
}

} // namespace
} // namespace tav
