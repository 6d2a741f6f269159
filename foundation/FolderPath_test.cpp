#include "foundation/FileManager.hpp"
#include "foundation/FileManager_test.hpp"
#include "foundation/FolderTree.hpp"

namespace tav {
namespace {

class RecursivelyCreatePath : public FileManagerTest {};

INSTANTIATE_TEST_SUITE_P(Worlds, RecursivelyCreatePath, testing::Values(Kind::Real, Kind::Memory),
                         nameOfWorld);

TEST_P(RecursivelyCreatePath, MakesEveryMissingFolder) {
    recursivelyCreatePath(path("a/b\xFF/c"));
    EXPECT_TRUE(isFolder("a/b\xFF/c"));
    recursivelyCreatePath(path("x/y/"));
    EXPECT_TRUE(isFolder("x/y"));
}

TEST_P(RecursivelyCreatePath, LeavesAFolderThatIsThere) {
    makeFolder("a");
    makeFile("a/file", "x");
    makeLink("link", "a");
    faulty.restartCount();
    recursivelyCreatePath(path("a"));
    recursivelyCreatePath(path("link"));
    EXPECT_EQ(faulty.callCount(), 2U); // one look each
    EXPECT_EQ(read("link/file"), "x");
    EXPECT_EQ(attributesOf("link").kind, FileKind::Link);
}

TEST_P(RecursivelyCreatePath, RemovesAFileAtThePath) {
    makeFile("a", "x");
    recursivelyCreatePath(path("a"));
    EXPECT_TRUE(isFolder("a"));
}

TEST_P(RecursivelyCreatePath, RemovesALinkThatLeadsToNoFolder) {
    makeFile("file", "x");
    makeLink("link", "file");
    makeLink("nothing", "missing");
    makeLink("loop", "loop");
    for (const char* name : {"link", "nothing", "loop"}) {
        recursivelyCreatePath(path(name));
        EXPECT_TRUE(isFolder(name)) << name;
    }
    EXPECT_EQ(read("file"), "x");
    EXPECT_FALSE(stands("missing"));
}

TEST_P(RecursivelyCreatePath, AFileFurtherUpStays) {
    makeFile("a", "x");
    recursivelyCreatePath(path("a/b"));
    EXPECT_EQ(read("a"), "x");
}

TEST_P(RecursivelyCreatePath, APathMayHaveAnyLength) {
    // Three kinds: right below and beyond what the host takes at once, and far beyond.
    for (const std::size_t levels : {38U, 39U, 40U, 41U, 42U, 2000U}) {
        std::string longPath = path("top");
        for (std::size_t level = 0; level < levels; ++level) {
            longPath += '/' + std::string(100, 'd');
        }
        faulty.restartCount();
        recursivelyCreatePath(longPath);
        EXPECT_LT(faulty.callCount(), 2 * levels + 20) << levels;
        EXPECT_TRUE(files.openFolder(longPath).ok()) << levels;
        ASSERT_TRUE(removeItem(path("top")).isNone());
    }
}

TEST_P(RecursivelyCreatePath, LinksOnALongPathAreFollowed) {
    std::string longPath = path("top");
    for (int level = 0; level < 41; ++level) {
        longPath += '/' + std::string(100, 'd');
    }
    recursivelyCreatePath(longPath);
    makeFolder("outside");
    ASSERT_TRUE(files.createLink(longPath + "/link", path("outside")).isNone());
    recursivelyCreatePath(longPath + "/link/inner/most");
    EXPECT_TRUE(isFolder("outside/inner/most"));
    ASSERT_TRUE(removeItem(path("top")).isNone());
}

TEST_P(RecursivelyCreatePath, ANameThatIsTooLongEndsTheWalk) {
    recursivelyCreatePath(path("a/" + std::string(256, 'x') + "/b"));
    EXPECT_EQ(namesIn("a"), Names());
    std::string longPath = path("top");
    for (int level = 0; level < 60; ++level) {
        longPath += '/' + std::string(100, 'd');
    }
    recursivelyCreatePath(longPath + '/' + std::string(256, 'x') + "/b");
    const auto entries = files.folderEntries(longPath);
    ASSERT_TRUE(entries.ok());
    EXPECT_TRUE(entries.value().empty());
    ASSERT_TRUE(removeItem(path("top")).isNone());
}

TEST_P(RecursivelyCreatePath, AFaultNeverTakesAwayMoreThanTheFileAtThePath) {
    for (const int error : sweptErrors) {
        for (std::size_t call = 1;; ++call) {
            makeFolder("top");
            makeFolder("top/real");
            makeFile("top/real/kept", "x");
            makeLink("top/link", "real");
            makeFile("top/file", "x");
            faulty.restartCount();
            faulty.failCall(call, error);
            recursivelyCreatePath(path("top/link"));
            recursivelyCreatePath(path("top/file"));
            recursivelyCreatePath(path("top/a/b"));
            const bool isDone = faulty.callCount() < call;
            faulty.failCall(0, 0);
            EXPECT_EQ(attributesOf("top/link").kind, FileKind::Link) << call;
            EXPECT_EQ(read("top/real/kept"), "x");
            recursivelyCreatePath(path("top/file"));
            recursivelyCreatePath(path("top/a/b"));
            EXPECT_TRUE(isFolder("top/file") && isFolder("top/a/b")) << call;
            for (const char* folder : {"top/a/b", "top/a", "top/file"}) {
                ASSERT_TRUE(files.removeFolder(path(folder)).isNone());
            }
            ASSERT_TRUE(files.removeFile(path("top/link")).isNone());
            ASSERT_TRUE(files.removeFile(path("top/real/kept")).isNone());
            ASSERT_TRUE(files.removeFolder(path("top/real")).isNone());
            ASSERT_TRUE(files.removeFolder(path("top")).isNone());
            if (isDone) {
                break;
            }
        }
    }
}

TEST(RecursivelyCreatePathRelative, TakesTheFirstComponentForTheRoot) {
    MemoryFileSystem memory;
    const FileSystem::Replacement replacement(memory);
    recursivelyCreatePath("a/b/c");
    EXPECT_TRUE(memory.attributes("/b/c").ok());
    EXPECT_FALSE(memory.attributes("/a").ok());
    recursivelyCreatePath("a");
    recursivelyCreatePath("");
    EXPECT_FALSE(memory.attributes("/a").ok());
    recursivelyCreatePath("/");
}

} // namespace
} // namespace tav
