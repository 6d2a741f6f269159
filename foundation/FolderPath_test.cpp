#include "foundation/FileManager.hpp"
#include "foundation/FileManager_test.hpp"

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

TEST_P(RecursivelyCreatePath, WhatIsTooLongForAPathEndsTheWalk) {
    const std::string longName = '/' + std::string(200, 'd');
    std::string longPath = root;
    for (int i = 0; i < 100000; ++i) {
        longPath += longName;
    }
    recursivelyCreatePath(longPath);
    EXPECT_TRUE(files.attributes(root + longName + longName).ok());
    EXPECT_LT(faulty.callCount(), 40U);

    recursivelyCreatePath(path("a/" + std::string(256, 'x') + "/b"));
    EXPECT_EQ(namesIn("a"), Names());
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
