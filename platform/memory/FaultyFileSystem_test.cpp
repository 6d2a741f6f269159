#include "platform/memory/FaultyFileSystem.hpp"
#include "platform/memory/MemoryFileSystem.hpp"

#include <gtest/gtest.h>

namespace tav {
namespace {

class FaultyFileSystemTest : public testing::Test {
  protected:
    MemoryFileSystem memory;
    FaultyFileSystem files{memory};

    FaultyFileSystemTest() { memory.addFile("/a", "text"); }

    /// Each operation once; the errors in that order.
    std::vector<int> doEverything() {
        return {
            files.attributes("/a").error().number(),
            files.targetAttributes("/a").error().number(),
            files.folderEntries("/").error().number(),
            files.createLink("/l", "a").number(),
            files.linkTarget("/l").error().number(),
            files.canonicalPath("/a").error().number(),
            files.readFile("/a", 100).error().number(),
            files.writeFile("/b", bytesOf("x"), 0600).number(),
            files.createFolder("/f", 0700).number(),
            files.setPermissions("/b", 0640).number(),
            files.move("/b", "/c", Replace::No).number(),
            files.removeFile("/c").number(),
            files.removeFolder("/f").number(),
            files.syncFolder("/").number(),
        };
    }
};

TEST_F(FaultyFileSystemTest, PassesEverythingOnAndCounts) {
    EXPECT_EQ(doEverything(), std::vector<int>(14, 0));
    EXPECT_EQ(files.callCount(), 14U);
    const std::vector<std::string> expected = {
        "attributes /a",   "targetAttributes /a", "folderEntries /", "createLink /l a",
        "linkTarget /l",   "canonicalPath /a",    "readFile /a",     "writeFile /b",
        "createFolder /f", "setPermissions /b",   "move /b /c",      "removeFile /c",
        "removeFolder /f", "syncFolder /"};
    EXPECT_EQ(memory.calls(), expected);
}

TEST_F(FaultyFileSystemTest, EachCallCanFailWithoutReachingTheOther) {
    for (std::size_t number = 1; number <= 14; ++number) {
        memory.clearCalls();
        files.restartCount();
        files.failCall(number, EIO);
        const std::vector<int> errors = doEverything();
        EXPECT_EQ(errors.at(number - 1), EIO) << number;
        EXPECT_EQ(memory.calls().size(), 13U) << number;
        EXPECT_EQ(files.callCount(), 14U);
        for (const std::string_view name : {"/l", "/b", "/c", "/f"}) {
            memory.removeAll(name);
        }
    }
}

TEST_F(FaultyFileSystemTest, AnOperationFailsUntilToldOtherwise) {
    files.failOperation("readFile", EACCES);
    EXPECT_EQ(files.readFile("/a", 100).error(), SystemError(EACCES));
    EXPECT_EQ(files.readFile("/a", 100).error(), SystemError(EACCES));
    EXPECT_TRUE(files.attributes("/a").ok());
    files.failOperation("readFile", 0);
    EXPECT_TRUE(files.readFile("/a", 100).ok());
}

TEST_F(FaultyFileSystemTest, NothingFailsForCallZeroOrErrorZero) {
    files.failCall(1, 0);
    EXPECT_TRUE(files.attributes("/a").ok());
    files.failCall(0, EIO);
    EXPECT_TRUE(files.attributes("/a").ok());
}

TEST_F(FaultyFileSystemTest, AnActionComesOnceBeforeItsCall) {
    int times = 0;
    files.atCall(2, [&] {
        ++times;
        memory.addFile("/a", "changed");
    });
    EXPECT_EQ(files.readFile("/a", 100).value(), dataFromText("text"));
    EXPECT_EQ(files.readFile("/a", 100).value(), dataFromText("changed"));
    files.restartCount();
    EXPECT_TRUE(files.attributes("/a").ok());
    EXPECT_TRUE(files.attributes("/a").ok());
    EXPECT_EQ(times, 1);
}

TEST_F(FaultyFileSystemTest, AnActionMayUseTheFileSystemAndSetFaults) {
    files.atCall(1, [&] {
        EXPECT_TRUE(files.attributes("/a").ok());
        files.failOperation("readFile", EIO);
    });
    EXPECT_EQ(files.readFile("/a", 100).error(), SystemError(EIO));
    EXPECT_EQ(files.callCount(), 2U);
}

} // namespace
} // namespace tav
