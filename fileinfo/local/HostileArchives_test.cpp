// Archives of strangers, made by testdata/hostile-archives/make.py, unpacked by the host's
// programs.

#include "fileinfo/local/Archiver.hpp"
#include "fileinfo/local/MacFileInfoFixture_test.hpp"
#include "foundation/FolderTree.hpp"
#include "platform/ChildProcess.hpp"
#include "platform/memory/MemoryClock.hpp"
#include "testing/ForkedProcess.hpp"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace tav {
namespace {

using Path = std::filesystem::path;

const std::string archivesFolder = TAV_TESTDATA "/hostile-archives/";
const std::string outside = "/tmp/tav-hostile";

struct HostileArchive {
    std::string name;
    bool hasGood[2]; ///< By bsdtar, by unzip.
};

std::vector<HostileArchive> hostileArchives() {
    std::ifstream table(archivesFolder + "archives.txt");
    std::vector<HostileArchive> archives;
    std::string name;
    std::string bsdtar;
    std::string unzip;
    while (table >> name >> bsdtar >> unzip) {
        archives.push_back({name, {bsdtar == "good", unzip == "good"}});
    }
    return archives;
}

std::string contentOf(const std::string& path) {
    std::ostringstream content;
    content << std::ifstream(path, std::ios::binary).rdbuf();
    return content.str();
}

/// All that is in a folder but in one of its folders: kinds, rights, dates, names and contents.
std::map<std::string, std::string> everythingIn(const std::string& folder, const std::string& but) {
    std::map<std::string, std::string> all;
    std::filesystem::recursive_directory_iterator entry(folder);
    for (; entry != std::filesystem::recursive_directory_iterator(); ++entry) {
        const std::string path = entry->path();
        struct ::stat status = {};
        ::lstat(path.c_str(), &status);
        // Folders that are worked in have the date of that.
        const bool isFolder = S_ISDIR(status.st_mode);
        all[path] = std::to_string(status.st_mode) + " " +
                    (isFolder ? ""
                              : std::to_string(status.st_mtim.tv_nsec) + " " +
                                    std::to_string(status.st_nlink) + " " + contentOf(path));
        if (path == but) {
            entry.disable_recursion_pending();
        }
    }
    return all;
}

/// A folder as the programs find it, with a sentinel where they must not come.
class Sandbox {
  public:
    Sandbox() {
        for (const char* const name : {"sentinel", "sentinel/folder", "temporary", "in"}) {
            std::filesystem::create_directory(folder.path(name));
        }
        std::ofstream(folder.path("sentinel/file")) << "sentinel\n";
        std::ofstream(folder.path("sentinel/folder/file")) << "sentinel\n";
        folders.temporaryFolder = folder.path("temporary");
    }

    [[nodiscard]] std::string archive() const { return folder.path("in/archive.zip"); }
    [[nodiscard]] std::string unpacked() const { return folder.path("temporary/OrvaneUnzip-0"); }

    /// Everything that is wrong with the sandbox once something was unpacked, in lines.
    [[nodiscard]] std::string complaints() const;

    TemporaryFolder folder;
    MemoryUserFolders folders;
    MemoryClock clock;
    UserFolders::Replacement replacedFolders{folders};
    Clock::Replacement replacedClock{clock};
};

/// Where a link leads by the kernel's own rule for what stays beneath a folder; 0, or the error.
int errorBeneath(int folder, const std::string& path) {
    ::open_how how = {};
    how.flags = O_PATH | O_CLOEXEC;
    how.resolve = RESOLVE_BENEATH;
    const long opened = ::syscall(SYS_openat2, folder, path.c_str(), &how, sizeof how);
    if (opened < 0) {
        return errno;
    }
    ::close(static_cast<int>(opened));
    return 0;
}

std::string complaintsAboutEntry(int folder, const std::string& path,
                                 const FolderListing::Entry& entry) {
    if (entry.kind == FileKind::Link) {
        return errorBeneath(folder, path) == EXDEV ? "leads out: " + path + "\n" : "";
    }
    if (entry.kind != FileKind::Regular && entry.kind != FileKind::Folder) {
        return "is special: " + path + "\n";
    }
    struct ::stat status = {};
    ::fstatat(folder, path.c_str(), &status, AT_SYMLINK_NOFOLLOW);
    return (status.st_mode & (S_ISUID | S_ISGID | S_ISVTX)) != 0 || status.st_uid != ::geteuid()
               ? "lends rights: " + path + "\n"
               : "";
}

std::string Sandbox::complaints() const {
    const Result<FolderTree> tree = listFolderTree(unpacked());
    if (!tree.ok()) {
        return "cannot be listed\n";
    }
    const int root = ::open(unpacked().c_str(), O_PATH | O_CLOEXEC);
    std::string lines;
    std::vector<std::string> paths;
    for (const FolderTree::Folder& inner : tree.value().folders) {
        const bool isFirst = paths.empty();
        paths.push_back(
            isFirst ? "" : paths[inner.parent] + std::string(tree.value().nameOf(inner)) + "/");
        if (paths.back().size() < 3000) {
            for (const FolderListing::Entry& entry : inner.entries) {
                lines += complaintsAboutEntry(root, paths.back() + std::string(entry.name), entry);
            }
        }
    }
    ::close(root);
    return lines;
}

class HostileArchivesTest : public testing::Test {
  protected:
    static bool isThere(const char* program) { return ::access(program, X_OK) == 0; }

    /// Unpacks one of the archives in a sandbox by something and looks around.
    template <class Unpack>
    static std::string complaintsAfter(const std::string& name, bool hasGood, Unpack unpack) {
        const Sandbox sandbox;
        std::filesystem::copy_file(archivesFolder + name, sandbox.archive());
        const auto before = everythingIn(sandbox.folder.path(), sandbox.unpacked());
        unpack(sandbox);
        auto after = everythingIn(sandbox.folder.path(), sandbox.unpacked());
        after.erase(sandbox.unpacked());
        std::string complaints = after == before ? "" : "something else was changed\n";
        if (std::filesystem::exists(std::filesystem::symlink_status(outside))) {
            complaints += "something came to " + outside + "\n";
            std::filesystem::remove_all(outside);
        }
        const std::string good = contentOf(sandbox.unpacked() + "/good.txt");
        if ((good == "good\n") != hasGood) {
            complaints += "the good member is \"" + good + "\"\n";
        }
        return complaints + sandbox.complaints();
    }
};

TEST_F(HostileArchivesTest, ThereAreManyAndAllOfThem) {
    const std::vector<HostileArchive> archives = hostileArchives();
    EXPECT_GE(archives.size(), 60U);
    for (const HostileArchive& archive : archives) {
        EXPECT_TRUE(std::filesystem::is_regular_file(archivesFolder + archive.name))
            << archive.name;
    }
}

TEST_F(HostileArchivesTest, WhatIsKeptIsWhatTheScriptMakes) {
    if (!isThere("/usr/bin/python3")) {
        GTEST_SKIP() << "needs python3";
    }
    const TemporaryFolder folder;
    std::filesystem::copy_file(archivesFolder + "make.py", folder.path("make.py"));
    ASSERT_TRUE(
        ChildProcess::current().run({"/usr/bin/python3", {folder.path("make.py")}, {}, {}}).ok());
    for (const HostileArchive& archive : hostileArchives()) {
        EXPECT_TRUE(contentOf(folder.path(archive.name)) ==
                    contentOf(archivesFolder + archive.name))
            << archive.name;
    }
}

TEST_F(HostileArchivesTest, UnpackedByBsdtar) {
    if (!isThere("/usr/bin/bsdtar")) {
        GTEST_SKIP() << "needs bsdtar";
    }
    for (const HostileArchive& archive : hostileArchives()) {
        EXPECT_EQ(complaintsAfter(
                      archive.name, archive.hasGood[0],
                      [](const Sandbox& sandbox) {
                          EXPECT_TRUE(TavMacFileInfo::fileInfoWithPath(sandbox.archive())->unzip());
                      }),
                  "")
            << archive.name;
    }
}

TEST_F(HostileArchivesTest, UnpackedByUnzip) {
    if (!isThere("/usr/bin/unzip")) {
        GTEST_SKIP() << "needs unzip";
    }
    for (const HostileArchive& archive : hostileArchives()) {
        EXPECT_EQ(complaintsAfter(archive.name, archive.hasGood[1],
                                  [](const Sandbox& sandbox) {
                                      std::filesystem::create_directory(sandbox.unpacked());
                                      FaultyFileSystem files(FileSystem::current());
                                      // No other program is there.
                                      files.failOperation("targetAttributes", ENOENT);
                                      const FileSystem::Replacement replaced(files);
                                      EXPECT_TRUE(internal::dittoUnpack(sandbox.archive(),
                                                                        sandbox.unpacked()));
                                  }),
                  "")
            << archive.name;
    }
}

TEST_F(HostileArchivesTest, UnpackedByAnOrdinaryUser) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "needs root, to become somebody else; it is one already in the others";
    }
    if (!isThere("/usr/bin/bsdtar")) {
        GTEST_SKIP() << "needs bsdtar";
    }
    const TemporaryFolder folder;
    ASSERT_EQ(::chmod(folder.path().c_str(), 0777), 0);
    const std::string report = folder.path("report");
    const ProcessEnd end = runForked([&folder, &report] {
        constexpr ::uid_t nobody = 65534;
        if (::setresgid(nobody, nobody, nobody) != 0 || ::setresuid(nobody, nobody, nobody) != 0) {
            return 100;
        }
        ::setenv("TMPDIR", folder.path().c_str(), 1);
        ::alarm(200);
        for (const HostileArchive& archive : hostileArchives()) {
            const std::string complaints =
                complaintsAfter(archive.name, archive.hasGood[0], [](const Sandbox& sandbox) {
                    const auto item = TavMacFileInfo::fileInfoWithPath(sandbox.archive());
                    static_cast<void>(item->unzip());
                });
            if (!complaints.empty()) {
                std::ofstream(report, std::ios::app) << archive.name << ": " << complaints;
            }
        }
        return 0;
    });
    EXPECT_EQ(end, (ProcessEnd{0, 0}));
    EXPECT_EQ(contentOf(report), "");
}

} // namespace
} // namespace tav
