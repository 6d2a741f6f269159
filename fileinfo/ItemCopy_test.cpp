// The plain copy, step by step over items that tell every call.

#include "fileinfo/CopyStatus.hpp"
#include "fileinfo/PlainCopy_test.hpp"

#include <gtest/gtest.h>

namespace tav {
namespace {

// What is asked, and in which order

TEST_F(PlainCopyTest, OfANewFileAsksThisInThisOrder) {
    EXPECT_EQ(copy("/d/b"), Status::Success);
    EXPECT_EQ(stage.calls, (Lines{"exists /s/a",
                                  "isFile /s/a",
                                  "deviceControlsCopy /d/b",
                                  "deviceControlsCopy /s/a",
                                  "exists /d/b",
                                  "parentFolder /d/b",
                                  "find /d QuillboxCopyFile.tmp",
                                  "exists /d/QuillboxCopyFile.tmp",
                                  "freeSpaceOnVolume /d/b",
                                  "size /s/a",
                                  "freeSpaceToKeep /d",
                                  "createFile /d QuillboxCopyFile.tmp",
                                  "exists /d/QuillboxCopyFile.tmp",
                                  "openFileForReading /s/a",
                                  "openFileForWriting /d/QuillboxCopyFile.tmp",
                                  "size /s/a",
                                  "preferredChunkSize /s/a",
                                  "preferredChunkSize /d/QuillboxCopyFile.tmp",
                                  "read /s/a 0+4 (/s/a)",
                                  "write /d/QuillboxCopyFile.tmp 0+4 (/d/QuillboxCopyFile.tmp)",
                                  "read /s/a 4+4 (/s/a)",
                                  "write /d/QuillboxCopyFile.tmp 4+4 (/d/QuillboxCopyFile.tmp)",
                                  "read /s/a 8+2 (/s/a)",
                                  "write /d/QuillboxCopyFile.tmp 8+2 (/d/QuillboxCopyFile.tmp)",
                                  "closeFile /d/QuillboxCopyFile.tmp (/d/QuillboxCopyFile.tmp)",
                                  "closeFile /s/a (/s/a)",
                                  "moveTo /d/QuillboxCopyFile.tmp /d/b",
                                  "creationDate /s/a",
                                  "setCreationDate /d/b 100",
                                  "modificationDate /s/a",
                                  "setModificationDate /d/b 200"}));
    EXPECT_EQ(stage.text("/d/b"), "0123456789");
    EXPECT_EQ(stage.paths(), (Lines{"/d", "/d/b", "/s", "/s/a"}));
    EXPECT_EQ(outPath(), "/d/b");
}

TEST_F(PlainCopyTest, OntoAFileRemovesItFirst) {
    stage.addFile("/d/b", "old");
    EXPECT_EQ(copy("/d/b"), Status::Success);
    EXPECT_EQ(Lines(stage.calls.begin() + 4, stage.calls.begin() + 9),
              (Lines{"exists /d/b", "isFolder /d/b", "remove /d/b", "parentFolder /d/b",
                     "find /d QuillboxCopyFile.tmp"}));
    EXPECT_EQ(stage.text("/d/b"), "0123456789");
}

TEST_F(PlainCopyTest, IntoAFolderTakesTheNameFirstAndGivesItUpAgain) {
    Percents percents;
    EXPECT_EQ(source->copyTo(item("/d").get(), true, &percents.delegate, this, &out),
              Status::Success);
    EXPECT_EQ(Lines(stage.calls.begin() + 4, stage.calls.begin() + 10),
              (Lines{"exists /d", "isFolder /d", "name /s/a",
                     "createFile /d a unique progress user", "remove /d/a", "parentFolder /d/a"}));
    EXPECT_EQ(stage.callsOf("createFile"),
              (Lines{"createFile /d a unique progress user",
                     "createFile /d QuillboxCopyFile.tmp progress user"}));
    EXPECT_EQ(outPath(), "/d/a");
    EXPECT_EQ(percents.lines.front(), "/s/a /d/QuillboxCopyFile.tmp user");
}

TEST_F(PlainCopyTest, IntoAFolderWithAUniqueNameLeavesTheOlderFileAlone) {
    stage.addFile("/d/a", "old");
    EXPECT_EQ(copy("/d", true), Status::Success);
    EXPECT_EQ(outPath(), "/d/a-1");
    EXPECT_EQ(stage.text("/d/a"), "old");
    EXPECT_EQ(stage.text("/d/a-1"), "0123456789");
}

TEST_F(PlainCopyTest, IntoAFolderWithoutAUniqueNameReplacesTheOlderFile) {
    stage.addFile("/d/a", "old");
    EXPECT_EQ(copy("/d"), Status::Success);
    EXPECT_EQ(outPath(), "/d/a");
    EXPECT_EQ(stage.text("/d/a"), "0123456789");
    EXPECT_EQ(stage.paths(), (Lines{"/d", "/d/a", "/s", "/s/a"}));
}

TEST_F(PlainCopyTest, OfAnEmptyFileRunsNoChunk) {
    stage.addFile("/s/a", "");
    Percents percents;
    EXPECT_EQ(copy("/d/b", false, &percents.delegate), Status::Success);
    EXPECT_TRUE(percents.seen.empty());
    EXPECT_TRUE(stage.callsOf("read").empty());
    EXPECT_TRUE(stage.callsOf("write").empty());
    EXPECT_EQ(stage.text("/d/b"), "");
    EXPECT_EQ(stage.files["/d/b"].creationDate, Date(100));
    EXPECT_EQ(stage.files["/d/b"].modificationDate, Date(200));
    EXPECT_EQ(outPath(), "/d/b");
}

TEST_F(PlainCopyTest, GivesDatesOnEvenWhenThereAreNone) {
    stage.files["/s/a"].creationDate.reset();
    stage.files["/s/a"].modificationDate.reset();
    EXPECT_EQ(copy("/d/b"), Status::Success);
    EXPECT_EQ(stage.callsOf("setCreationDate"), Lines{"setCreationDate /d/b nil"});
    EXPECT_EQ(stage.callsOf("setModificationDate"), Lines{"setModificationDate /d/b nil"});
}

TEST_F(PlainCopyTest, ShortFormsAskForNoUniqueNameAndNoProgress) {
    EXPECT_EQ(source->copyTo(item("/d").get()), Status::Success);
    EXPECT_EQ(source->copyTo(item("/d").get(), &out), Status::Success);
    EXPECT_EQ(outPath(), "/d/a");
    EXPECT_EQ(stage.callsOf("createFile"),
              (Lines{"createFile /d a", "createFile /d QuillboxCopyFile.tmp", "createFile /d a",
                     "createFile /d QuillboxCopyFile.tmp"}));
}

TEST_F(PlainCopyTest, NeedsNoOutItem) {
    EXPECT_EQ(source->copyTo(item("/d/b").get(), false, nullptr, nullptr, nullptr),
              Status::Success);
    EXPECT_EQ(stage.text("/d/b"), "0123456789");
}

TEST_F(PlainCopyTest, MayAnswerIntoTheVeryPointerThatHoldsTheDestination) {
    FileInfoPtr both = item("/d/b");
    EXPECT_EQ(source->copyTo(both.get(), false, nullptr, nullptr, &both), Status::Success);
    EXPECT_EQ(both->path(), "/d/b");
    EXPECT_TRUE(both->exists());
}

TEST_F(PlainCopyTest, WithNoOptionsIsTheSameCallForCall) {
    EXPECT_EQ(copy("/d/b"), Status::Success);
    const Lines plain = stage.calls;
    stage.calls.clear();
    stage.files.erase("/d/b");
    EXPECT_EQ(source->copyTo(item("/d/b").get(), false, nullptr, nullptr, &out, CopyOptions()),
              Status::Success);
    EXPECT_EQ(stage.calls, plain);
}

// Chunks

TEST_F(PlainCopyTest, TakesTheSmallerChunkOfTheTwo) {
    stage.chunkSizes[temporary] = 3;
    EXPECT_EQ(copy("/d/b"), Status::Success);
    EXPECT_EQ(stage.callsOf("read"), (Lines{"read /s/a 0+3 (/s/a)", "read /s/a 3+3 (/s/a)",
                                            "read /s/a 6+3 (/s/a)", "read /s/a 9+1 (/s/a)"}));
    useChunks(5);
    stage.chunkSizes[temporary] = 7;
    stage.calls.clear();
    EXPECT_EQ(copy("/d/b"), Status::Success);
    EXPECT_EQ(stage.callsOf("read"), (Lines{"read /s/a 0+5 (/s/a)", "read /s/a 5+5 (/s/a)"}));
}

TEST_F(PlainCopyTest, HasNoChunksOfNothing) {
    useChunks(0);
    EXPECT_EQ(copy("/d/b"), Status::Success);
    EXPECT_EQ(stage.callsOf("read"), Lines{"read /s/a 0+10 (/s/a)"});
}

TEST_F(PlainCopyTest, KeepsChunksWithin32Bits) {
    useChunks(std::uint64_t{1} << 40);
    stage.chunkSizes[temporary] = std::uint64_t{1} << 32;
    stage.toldSizes["/s/a"] = (std::uint64_t{1} << 32) + 5;
    stage.at["write /d/QuillboxCopyFile.tmp 4294967295+6 (/d/QuillboxCopyFile.tmp)"] = [] {
        throw Exception("stage", "far enough");
    };
    EXPECT_EQ(copy("/d/b"), CopyStatus::raised);
    EXPECT_EQ(stage.callsOf("read"),
              (Lines{"read /s/a 0+4294967295 (/s/a)", "read /s/a 4294967295+6 (/s/a)"}));
}

TEST_F(PlainCopyTest, TellsPlacesIn32Bits) {
    const std::uint64_t half = std::uint64_t{1} << 31;
    useChunks(half);
    stage.chunkSizes[temporary] = half;
    stage.toldSizes["/s/a"] = 2 * half + 5;
    stage.files["/s/a"].content.clear();
    EXPECT_EQ(copy("/d/b"), Status::Success);
    EXPECT_EQ(stage.callsOf("read"),
              (Lines{"read /s/a 0+2147483648 (/s/a)", "read /s/a 2147483648+2147483648 (/s/a)",
                     "read /s/a 0+5 (/s/a)"}));
}

TEST_F(PlainCopyTest, ReportsAPercentageInSinglePrecisionAfterEachChunk) {
    stage.addFile("/s/a", std::string(7, 'x'));
    useChunks(1);
    Percents percents;
    EXPECT_EQ(copy("/d/b", false, &percents.delegate), Status::Success);
    EXPECT_EQ(percents.seen,
              (std::vector<float>{1.0F * 100.0F / 7.0F, 2.0F * 100.0F / 7.0F, 3.0F * 100.0F / 7.0F,
                                  4.0F * 100.0F / 7.0F, 5.0F * 100.0F / 7.0F, 6.0F * 100.0F / 7.0F,
                                  100.0F}));
    EXPECT_EQ(percents.seen[2], 42.857143F);
    EXPECT_EQ(percents.lines.front(), "/s/a /d/QuillboxCopyFile.tmp");
    EXPECT_EQ(stage.callsOf("moveTo").size(), 1U);
}

TEST_F(PlainCopyTest, RoundsThePercentageAsSinglePrecisionDoes) {
    // 16777217 has no float of its own, and the product is rounded before it is divided.
    const std::uint64_t total = 33554435;
    useChunks(16777217);
    stage.chunkSizes[temporary] = 16777217;
    stage.toldSizes["/s/a"] = total;
    Percents percents;
    EXPECT_EQ(copy("/d/b", false, &percents.delegate), Status::Success);
    EXPECT_EQ(percents.seen, (std::vector<float>{16777216.0F * 100.0F / 33554436.0F,
                                                 33554434.0F * 100.0F / 33554436.0F, 100.0F}));
}

TEST_F(PlainCopyTest, ADelegateThatDoesNotAnswerThisIsNone) {
    ProgressDelegate other;
    other.writingContentsForFile = [](TavBaseFileInfo&, std::uint32_t, std::uint32_t, void*) {
        return true;
    };
    EXPECT_EQ(copy("/d", false, &other), Status::Success);
    EXPECT_EQ(stage.callsOf("createFile"),
              (Lines{"createFile /d a", "createFile /d QuillboxCopyFile.tmp"}));
}

/// An item that copies its ranges without reading them, as often as it is allowed to.
class CloningFileInfo : public StagedFileInfo {
  public:
    static std::shared_ptr<CloningFileInfo> at(CopyStage& stage, std::string_view path) {
        const auto item = internal::allocateItem<CloningFileInfo>();
        item->initWithStage(stage, path);
        return item;
    }
    bool cloneRange(FileRange range, OpenFileToken* readFileUserData, TavBaseFileInfo* destination,
                    OpenFileToken* writeFileUserData) override {
        enter("cloneRange", std::to_string(range.location));
        if (clones-- <= 0) {
            return false;
        }
        auto& to = static_cast<StagedFileInfo::Token&>(*writeFileUserData);
        EXPECT_EQ(to.path, destination->path());
        EXPECT_EQ(static_cast<StagedFileInfo::Token&>(*readFileUserData).path, path());
        const std::string_view chunk = std::string_view(textOf(stage().files[path()].content))
                                           .substr(range.location, range.length);
        const Data cloned = dataFromText(chunk);
        Data& written = stage().files[to.path].content;
        written.insert(written.end(), cloned.begin(), cloned.end());
        return true;
    }
    int clones = 0;

  protected:
    CloningFileInfo() = default;
};

TEST_F(PlainCopyTest, AClonedChunkIsNeitherReadNorWritten) {
    const auto cloning = CloningFileInfo::at(stage, "/s/a");
    cloning->clones = 2;
    Percents percents;
    EXPECT_EQ(cloning->copyTo(item("/d/b").get(), false, &percents.delegate, nullptr, &out),
              Status::Success);
    EXPECT_EQ(stage.callsOf("cloneRange"),
              (Lines{"cloneRange /s/a 0", "cloneRange /s/a 4", "cloneRange /s/a 8"}));
    EXPECT_EQ(stage.callsOf("read"), Lines{"read /s/a 8+2 (/s/a)"});
    EXPECT_EQ(stage.callsOf("write").size(), 1U);
    EXPECT_EQ(stage.text("/d/b"), "0123456789");
    EXPECT_EQ(percents.seen, (std::vector<float>{40, 80, 100}));
}

TEST_F(PlainCopyTest, ACloneIsCancelledLikeAnything) {
    const auto cloning = CloningFileInfo::at(stage, "/s/a");
    cloning->clones = 3;
    Percents percents([](int) { return true; });
    EXPECT_EQ(cloning->copyTo(item("/d/b").get(), false, &percents.delegate, nullptr, &out),
              CopyStatus::cancelled);
    EXPECT_EQ(percents.seen, std::vector<float>{40});
}

} // namespace
} // namespace tav
