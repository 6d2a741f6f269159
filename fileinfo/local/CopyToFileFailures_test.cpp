// A local file copied onto another one when calls fail, and when the source changes meanwhile.

#include "fileinfo/local/CopyToFile_test.hpp"

#include <algorithm>
#include <cerrno>
#include <limits>

#include <gtest/gtest.h>

namespace tav {
namespace {

constexpr std::size_t chunk = std::size_t{1} << 20U;

TEST_F(CopyToFileTest, AReadThatFailsEndsTheCopy) {
    memory.addFile("/home/user/a", longText(3 * chunk));
    ProgressDelegate progress = delegate();
    EXPECT_EQ(raisedByCopy("/home/user/a", "/b", &progress), "nothing");
    percents.clear();
    progress.copyingFile = [&](auto&&...) {
        percents.push_back(0);
        files.failOperation("OpenFile.readAt", EIO); // from the second chunk on
        return false;
    };
    EXPECT_EQ(raisedByCopy("/home/user/a", "/b", &progress),
              "copyToFile: Could not read the file \"~/a\".");
    EXPECT_FALSE(has("/b"));
    EXPECT_EQ(percents.size(), 2U);
}

TEST_F(CopyToFileTest, AReadWithoutAnAnswerIsRepeated) {
    memory.addFile("/a", longText(2 * chunk));
    const auto source = OddFile::at("/a");
    source->emptyReads = 5;
    const ProgressDelegate progress = delegate();
    source->copyToFile(at("/b").get(), &progress, nullptr);
    EXPECT_TRUE(contentOf("/b") == longText(2 * chunk));
    EXPECT_EQ(source->reads, 7);
    EXPECT_EQ(percents, (Percents{25, 50, 75, 100, 100}));
}

TEST_F(CopyToFileTest, ReadsWithoutAnAnswerCanBeCancelled) {
    memory.addFile("/a", "abc");
    const auto source = OddFile::at("/a");
    source->emptyReads = std::numeric_limits<int>::max();
    source->onRead = [&] {
        if (source->reads == 1000) {
            source->cancelCopy();
        }
    };
    EXPECT_EQ(raisedBy([&] { source->copyToFile(at("/b").get(), nullptr, nullptr); }),
              "File copy canceled: copying file \"/a\" was canceled");
    EXPECT_FALSE(has("/b"));
    EXPECT_EQ(source->reads, 1000);
}

TEST_F(CopyToFileTest, AWriteThatFailsEndsTheCopy) {
    memory.addFile("/a", longText(3 * chunk));
    for (const int error : {EIO, ENOSPC, EDQUOT}) {
        files.failOperation("OpenFile.write", error);
        EXPECT_EQ(raisedByCopy("/a", "/home/user/b"),
                  "copyToFile: Could not write the file \"~/b\".");
        EXPECT_FALSE(has("/home/user/b"));
    }
    files.failOperation("OpenFile.write", 0);
    memory.capacity = 4 * chunk + 5;
    EXPECT_EQ(raisedByCopy("/a", "/home/user/b"), "copyToFile: Could not write the file \"~/b\".");
    EXPECT_FALSE(has("/home/user/b"));
}

TEST_F(CopyToFileTest, WhatTheHostSaysWhenTheFileIsClosedCounts) {
    memory.addFile("/a", "abc");
    files.failOperation("OpenFile.close", EDQUOT);
    EXPECT_EQ(raisedByCopy("/a", "/b"), "copyToFile: Could not write the file \"/b\".");
    EXPECT_FALSE(has("/b"));
}

TEST_F(CopyToFileTest, DatesThatCannotBeSetAreNotTold) {
    memory.addFile("/a", "abc");
    files.failOperation("setModificationDate", EPERM);
    files.failOperation("setExtendedAttribute", ENOTSUP);
    EXPECT_EQ(raisedByCopy("/a", "/b"), "nothing");
    EXPECT_EQ(contentOf("/b"), "abc");
}

TEST_F(CopyToFileTest, WhicheverCallFailsTheSourceStaysAndThereIsNoHalfCopy) {
    const std::string text = longText(2 * chunk + 3);
    for (const int error : {EIO, ENOSPC, EACCES, EDQUOT}) {
        for (const bool isThere : {false, true}) {
            bool wasCalled = true;
            for (std::size_t call = 1; wasCalled; ++call) {
                memory.addFile("/a", text);
                memory.removeAll("/b");
                if (isThere) {
                    memory.addFile("/b", "old");
                }
                files.restartCount();
                files.failCall(call, error);
                const std::string raised = raisedByCopy("/a", "/b");
                wasCalled = files.callCount() >= call;
                files.failCall(0, 0);
                EXPECT_TRUE(contentOf("/a") == text);
                if (raised == "nothing") {
                    EXPECT_TRUE(contentOf("/b") == text) << call;
                } else {
                    const std::string left = contentOf("/b");
                    EXPECT_TRUE(left == "nothing" || (isThere && left == "old")) << call << raised;
                }
            }
        }
    }
}

// Sources that change

TEST_F(CopyToFileTest, ASourceThatBecomesShorterMakesAShorterCopy) {
    memory.addFile("/a", longText(4 * chunk));
    ProgressDelegate progress = delegate();
    const auto count = progress.copyingFile;
    progress.copyingFile = [&](TavBaseFileInfo& file, TavBaseFileInfo& toFile, float percent,
                               void* userData) {
        memory.addFile("/a", longText(chunk + 5));
        return count(file, toFile, percent, userData);
    };
    EXPECT_EQ(raisedByCopy("/a", "/b", &progress), "nothing");
    EXPECT_TRUE(contentOf("/b") == longText(chunk + 5));
    EXPECT_EQ(percents, (Percents{12.5F, 25, 37.5F, 50, 62.5F, 75, 87.5F, 100, 100}));
}

TEST_F(CopyToFileTest, ASourceThatGrowsIsCopiedAsFarAsItWasKnown) {
    memory.addFile("/a", "abc");
    const Item source = at("/a");
    EXPECT_EQ(source->size(), 3U);
    memory.addFile("/a", "abcdef");
    source->copyToFile(at("/b").get(), nullptr, nullptr);
    EXPECT_EQ(contentOf("/b"), "abc");
}

TEST_F(CopyToFileTest, ASourceThatVanishesIsCopiedFromTheOpenFile) {
    memory.addFile("/a", longText(2 * chunk));
    ProgressDelegate progress;
    progress.copyingFile = [&](auto&&...) {
        memory.removeAll("/a");
        return false;
    };
    EXPECT_EQ(raisedByCopy("/a", "/b", &progress), "nothing");
    EXPECT_TRUE(contentOf("/b") == longText(2 * chunk));
}

} // namespace
} // namespace tav
