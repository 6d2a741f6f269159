// The plain copy, step by step over items that tell every call.

#include "fileinfo/CopyStage_test.hpp"
#include "fileinfo/CopyStatus.hpp"
#include "fileinfo/SeenLog_test.hpp"
#include "platform/Localization.hpp"
#include "platform/memory/MemorySystemLog.hpp"

#include <gtest/gtest.h>

namespace tav {
namespace {

using Lines = std::vector<std::string>;

/// "/s/a" with ten bytes, and the folder "/d".
class PlainCopy : public testing::Test {
  protected:
    PlainCopy() {
        stage.addFolder("/s");
        stage.addFolder("/d");
        stage.addFile("/s/a", "0123456789");
        useChunks(4);
    }
    void useChunks(std::uint64_t size) { stage.chunkSizes["/s/a"] = size; }

    std::shared_ptr<StagedFileInfo> item(std::string_view path) {
        return StagedFileInfo::at(stage, path);
    }
    Status copy(std::string_view destination, bool ensureUniqueName = false,
                const ProgressDelegate* delegate = nullptr) {
        out = untouched;
        return source->copyTo(item(destination).get(), ensureUniqueName, delegate, nullptr, &out);
    }
    std::string outPath() const { return out ? out->path() : "(nil)"; }

    CopyStage stage;
    std::shared_ptr<StagedFileInfo> source = item("/s/a");
    FileInfoPtr untouched = item("/untouched");
    FileInfoPtr out;
};

/// A delegate that notes the percentages; its answer is what `answers` says of the call's number
/// from 1 on.
struct Percents {
    explicit Percents(std::function<bool(int)> answers = [](int) { return false; }) {
        delegate.copyingFile = [this, answers](TavBaseFileInfo& from, TavBaseFileInfo& to,
                                               float percent, void* user) {
            seen.push_back(percent);
            lines.push_back(from.path() + ' ' + to.path() + (user != nullptr ? " user" : ""));
            return answers(int(seen.size()));
        };
    }
    ProgressDelegate delegate;
    std::vector<float> seen;
    Lines lines;
};

const char* const temporary = "/d/QuillboxCopyFile.tmp";

// What is asked, and in which order

TEST_F(PlainCopy, OfANewFileAsksThisInThisOrder) {
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

TEST_F(PlainCopy, OntoAFileRemovesItFirst) {
    stage.addFile("/d/b", "old");
    EXPECT_EQ(copy("/d/b"), Status::Success);
    EXPECT_EQ(Lines(stage.calls.begin() + 4, stage.calls.begin() + 9),
              (Lines{"exists /d/b", "isFolder /d/b", "remove /d/b", "parentFolder /d/b",
                     "find /d QuillboxCopyFile.tmp"}));
    EXPECT_EQ(stage.text("/d/b"), "0123456789");
}

TEST_F(PlainCopy, IntoAFolderTakesTheNameFirstAndGivesItUpAgain) {
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

TEST_F(PlainCopy, IntoAFolderWithAUniqueNameLeavesTheOlderFileAlone) {
    stage.addFile("/d/a", "old");
    EXPECT_EQ(copy("/d", true), Status::Success);
    EXPECT_EQ(outPath(), "/d/a-1");
    EXPECT_EQ(stage.text("/d/a"), "old");
    EXPECT_EQ(stage.text("/d/a-1"), "0123456789");
}

TEST_F(PlainCopy, IntoAFolderWithoutAUniqueNameReplacesTheOlderFile) {
    stage.addFile("/d/a", "old");
    EXPECT_EQ(copy("/d"), Status::Success);
    EXPECT_EQ(outPath(), "/d/a");
    EXPECT_EQ(stage.text("/d/a"), "0123456789");
    EXPECT_EQ(stage.paths(), (Lines{"/d", "/d/a", "/s", "/s/a"}));
}

TEST_F(PlainCopy, OfAnEmptyFileRunsNoChunk) {
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

TEST_F(PlainCopy, GivesDatesOnEvenWhenThereAreNone) {
    stage.files["/s/a"].creationDate.reset();
    stage.files["/s/a"].modificationDate.reset();
    EXPECT_EQ(copy("/d/b"), Status::Success);
    EXPECT_EQ(stage.callsOf("setCreationDate"), Lines{"setCreationDate /d/b nil"});
    EXPECT_EQ(stage.callsOf("setModificationDate"), Lines{"setModificationDate /d/b nil"});
}

TEST_F(PlainCopy, ShortFormsAskForNoUniqueNameAndNoProgress) {
    EXPECT_EQ(source->copyTo(item("/d").get()), Status::Success);
    EXPECT_EQ(source->copyTo(item("/d").get(), &out), Status::Success);
    EXPECT_EQ(outPath(), "/d/a");
    EXPECT_EQ(stage.callsOf("createFile"),
              (Lines{"createFile /d a", "createFile /d QuillboxCopyFile.tmp", "createFile /d a",
                     "createFile /d QuillboxCopyFile.tmp"}));
}

TEST_F(PlainCopy, NeedsNoOutItem) {
    EXPECT_EQ(source->copyTo(item("/d/b").get(), false, nullptr, nullptr, nullptr),
              Status::Success);
    EXPECT_EQ(stage.text("/d/b"), "0123456789");
}

TEST_F(PlainCopy, MayAnswerIntoTheVeryPointerThatHoldsTheDestination) {
    FileInfoPtr both = item("/d/b");
    EXPECT_EQ(source->copyTo(both.get(), false, nullptr, nullptr, &both), Status::Success);
    EXPECT_EQ(both->path(), "/d/b");
    EXPECT_TRUE(both->exists());
}

TEST_F(PlainCopy, WithNoOptionsIsTheSameCallForCall) {
    EXPECT_EQ(copy("/d/b"), Status::Success);
    const Lines plain = stage.calls;
    stage.calls.clear();
    stage.files.erase("/d/b");
    EXPECT_EQ(source->copyTo(item("/d/b").get(), false, nullptr, nullptr, &out, CopyOptions()),
              Status::Success);
    EXPECT_EQ(stage.calls, plain);
}

// Chunks

TEST_F(PlainCopy, TakesTheSmallerChunkOfTheTwo) {
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

TEST_F(PlainCopy, HasNoChunksOfNothing) {
    useChunks(0);
    EXPECT_EQ(copy("/d/b"), Status::Success);
    EXPECT_EQ(stage.callsOf("read"), Lines{"read /s/a 0+10 (/s/a)"});
}

TEST_F(PlainCopy, KeepsChunksWithin32Bits) {
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

TEST_F(PlainCopy, TellsPlacesIn32Bits) {
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

TEST_F(PlainCopy, ReportsAPercentageInSinglePrecisionAfterEachChunk) {
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

TEST_F(PlainCopy, RoundsThePercentageAsSinglePrecisionDoes) {
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

TEST_F(PlainCopy, ADelegateThatDoesNotAnswerThisIsNone) {
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

TEST_F(PlainCopy, AClonedChunkIsNeitherReadNorWritten) {
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

TEST_F(PlainCopy, ACloneIsCancelledLikeAnything) {
    const auto cloning = CloningFileInfo::at(stage, "/s/a");
    cloning->clones = 3;
    Percents percents([](int) { return true; });
    EXPECT_EQ(cloning->copyTo(item("/d/b").get(), false, &percents.delegate, nullptr, &out),
              CopyStatus::cancelled);
    EXPECT_EQ(percents.seen, std::vector<float>{40});
}

// Statuses

TEST_F(PlainCopy, OfNothingAnswersMinus200) {
    stage.files.erase("/s/a");
    EXPECT_EQ(copy("/d/b"), Status{-200});
    EXPECT_EQ(stage.calls, Lines{"exists /s/a"});
    EXPECT_EQ(out, untouched);
}

TEST_F(PlainCopy, OfAFolderAnswersMinus201) {
    stage.files["/s/a"].isFolder = true;
    EXPECT_EQ(copy("/d/b"), Status{-201});
    EXPECT_EQ(stage.calls, (Lines{"exists /s/a", "isFile /s/a"}));
    EXPECT_EQ(out, untouched);
}

TEST_F(PlainCopy, WithoutATemporaryFileAnswersMinus202) {
    stage.failing = {"createFile /d QuillboxCopyFile.tmp"};
    EXPECT_EQ(copy("/d/b"), Status{-202});
    EXPECT_EQ(outPath(), "/d/b");
    EXPECT_TRUE(stage.callsOf("openFileForReading").empty());
}

TEST_F(PlainCopy, WithATemporaryFileThatIsNotThereAnswersMinus202) {
    stage.at["createFile /d QuillboxCopyFile.tmp"] = [&] {
        stage.failing = {"exists /d/QuillboxCopyFile.tmp"};
    };
    EXPECT_EQ(copy("/d/b"), Status{-202});
    EXPECT_EQ(outPath(), "/d/b");
    EXPECT_TRUE(stage.callsOf("openFileForReading").empty());
}

TEST_F(PlainCopy, OfASourceThatDoesNotOpenAnswersMinus203AndLeavesTheTemporaryFile) {
    stage.failing = {"openFileForReading /s/a"};
    EXPECT_EQ(copy("/d/b"), Status{-203});
    EXPECT_EQ(outPath(), "/d/b");
    EXPECT_EQ(stage.text(temporary), "");
    EXPECT_EQ(stage.calls.back(), "openFileForReading /s/a");
}

TEST_F(PlainCopy, OntoATemporaryFileThatDoesNotOpenAnswersMinus204AndLeavesAllAsItIs) {
    stage.failing = {"openFileForWriting /d/QuillboxCopyFile.tmp"};
    EXPECT_EQ(copy("/d/b"), Status{-204});
    EXPECT_EQ(outPath(), "/d/b");
    EXPECT_EQ(stage.text(temporary), "");
    EXPECT_EQ(stage.calls.back(), "openFileForWriting /d/QuillboxCopyFile.tmp");
}

TEST_F(PlainCopy, WithAChunkThatIsNotReadAnswersMinus205AndKeepsThePart) {
    stage.failing = {"read /s/a 4+4 (/s/a)"};
    Percents percents;
    EXPECT_EQ(copy("/d/b", false, &percents.delegate), Status{-205});
    EXPECT_EQ(stage.text("/d/b"), "0123");
    EXPECT_EQ(stage.text(temporary), "(none)");
    EXPECT_EQ(stage.files["/d/b"].modificationDate, Date(200));
    EXPECT_EQ(outPath(), "/d/b");
    EXPECT_EQ(percents.seen, std::vector<float>{40});
}

TEST_F(PlainCopy, AnswersWhatAWriteAnsweredAndKeepsThePart) {
    stage.failing = {"write /d/QuillboxCopyFile.tmp 4+4 (/d/QuillboxCopyFile.tmp)"};
    Percents percents;
    EXPECT_EQ(copy("/d/b", false, &percents.delegate), Status{-7});
    EXPECT_EQ(stage.text("/d/b"), "0123");
    EXPECT_EQ(stage.callsOf("write").size(), 2U);
    EXPECT_EQ(outPath(), "/d/b");
    EXPECT_EQ(percents.seen, std::vector<float>{40});
}

/// A back-end that opens files but knows no ranges.
class RangelessFileInfo : public StagedFileInfo {
  public:
    static std::shared_ptr<RangelessFileInfo> at(CopyStage& stage, std::string_view path) {
        const auto item = internal::allocateItem<RangelessFileInfo>();
        item->initWithStage(stage, path);
        return item;
    }
    FileInfoPtr parentFolder() override { return at(stage(), "/d"); }
    FileInfoPtr createFile(std::string_view name, BytesView contents,
                           const Value::Dictionary* attributes, bool ensureUniqueName,
                           const ProgressDelegate* withProgress, void* userData) override {
        const FileInfoPtr made = StagedFileInfo::createFile(
            name, contents, attributes, ensureUniqueName, withProgress, userData);
        return made ? at(stage(), made->path()) : nullptr;
    }
    using StagedFileInfo::createFile;
    Status setFileContentsWithRange(BytesView data, FileRange range,
                                    OpenFileToken* writeFileUserData) override {
        return TavBaseFileInfo::setFileContentsWithRange(data, range, writeFileUserData);
    }

  protected:
    RangelessFileInfo() = default;
};

TEST_F(PlainCopy, OntoAnItemThatCannotWriteRangesAnswersMinus220) {
    EXPECT_EQ(
        source->copyTo(RangelessFileInfo::at(stage, "/d/b").get(), false, nullptr, nullptr, &out),
        Status{-220});
    EXPECT_EQ(outPath(), "/d/b");
    EXPECT_EQ(stage.text("/d/b"), "");
}

TEST_F(PlainCopy, WithLessRoomThanTheFileNeedsAnswersMinus209) {
    SeenLog log;
    stage.freeSpace = 9;
    stage.addFile("/d/b", "old");
    EXPECT_EQ(copy("/d/b"), Status{-209});
    EXPECT_EQ(stage.calls.back(), "freeSpaceToKeep /d");
    EXPECT_TRUE(stage.callsOf("createFile").empty());
    EXPECT_EQ(stage.text("/d/b"), "(none)"); // gone before the room was asked for
    EXPECT_EQ(outPath(), "/d/b");
    EXPECT_EQ(log.lines(), Lines{"There is not enough room to copy \"/s/a\"."});
}

TEST_F(PlainCopy, WithExactlyTheRoomThatItNeedsGoesOn) {
    stage.freeSpace = 10;
    EXPECT_EQ(copy("/d/b"), Status::Success);
}

TEST_F(PlainCopy, LeavesTheRoomThatTheFolderKeeps) {
    stage.spaceToKeep = 5;
    stage.freeSpace = 14;
    EXPECT_EQ(copy("/d/b"), Status{-209});
    stage.freeSpace = 15;
    EXPECT_EQ(copy("/d/b"), Status::Success);
}

TEST_F(PlainCopy, CountsTheRoomIn64Bits) {
    stage.toldSizes["/s/a"] = std::uint64_t{1} << 32;
    stage.freeSpace = (std::uint64_t{1} << 32) - 1;
    EXPECT_EQ(copy("/d/b"), Status{-209});
    // The sum wraps as unsigned numbers do: 10 + (2^64 - 10) is nothing.
    stage.toldSizes.clear();
    stage.spaceToKeep = std::uint64_t(0) - 10;
    stage.freeSpace = 0;
    EXPECT_EQ(copy("/d/b"), Status::Success);
}

TEST_F(PlainCopy, AMoveThatFailsIsNotLookedAt) {
    stage.failing = {"moveTo /d/QuillboxCopyFile.tmp /d/b"};
    EXPECT_EQ(copy("/d/b"), Status::Success);
    EXPECT_EQ(outPath(), temporary);
    EXPECT_EQ(stage.text(temporary), "0123456789");
    EXPECT_EQ(stage.files[temporary].modificationDate, Date(200));
}

TEST_F(PlainCopy, OntoAFileThatCannotBeRemovedStaysUnderTheTemporaryName) {
    stage.addFile("/d/b", "old");
    stage.failing = {"remove /d/b"};
    EXPECT_EQ(copy("/d/b"), Status::Success);
    EXPECT_EQ(stage.text("/d/b"), "old");
    EXPECT_EQ(outPath(), temporary);
}

// What was left over

TEST_F(PlainCopy, RemovesWhatAnEarlierCopyLeftOver) {
    SeenLog log;
    stage.addFile(temporary, "half");
    EXPECT_EQ(copy("/d/b"), Status::Success);
    EXPECT_EQ(Lines(stage.calls.begin() + 6, stage.calls.begin() + 10),
              (Lines{"find /d QuillboxCopyFile.tmp", "exists /d/QuillboxCopyFile.tmp",
                     "remove /d/QuillboxCopyFile.tmp", "freeSpaceOnVolume /d/b"}));
    EXPECT_EQ(log.lines(), Lines{});
    EXPECT_EQ(stage.text("/d/b"), "0123456789");
}

TEST_F(PlainCopy, GoesOnWhenWhatWasLeftOverCannotBeRemoved) {
    SeenLog log;
    stage.addFile(temporary, "more than ten bytes");
    stage.failing = {"remove /d/QuillboxCopyFile.tmp"};
    EXPECT_EQ(copy("/d/b"), Status::Success);
    EXPECT_EQ(log.lines(),
              Lines{"Couldn't remove the temporary file \"/d/QuillboxCopyFile.tmp\"."});
    EXPECT_EQ(stage.text("/d/b"), "0123456789");
}

TEST_F(PlainCopy, LogsNothingUnlessVerbose) {
    MemorySystemLog log;
    const SystemLog::Replacement replacement(log);
    stage.addFile(temporary, "");
    stage.failing = {"remove /d/QuillboxCopyFile.tmp"};
    stage.freeSpace = 0;
    EXPECT_EQ(copy("/d/b"), Status{-209});
    stage.freeSpace = 100;
    stage.at["read /s/a 0+4 (/s/a)"] = [] { throw Exception("stage", "thrown"); };
    EXPECT_EQ(copy("/d/b"), Status{-206});
    EXPECT_TRUE(log.lines().empty());
}

// Cancelling

TEST_F(PlainCopy, ForgetsAtItsBeginningThatItWasCancelled) {
    source->cancelCopy();
    EXPECT_EQ(copy("/d/b"), Status::Success);
}

TEST_F(PlainCopy, ForgetsTheCancelEvenWhenItCannotBegin) {
    const auto missing = item("/s/none");
    missing->cancelCopy();
    EXPECT_EQ(missing->copyTo(item("/d/b").get()), Status{-200});
    stage.addFile("/s/none", "x");
    EXPECT_EQ(missing->copyTo(item("/d/b").get()), Status::Success);
}

TEST_F(PlainCopy, ADelegateThatAnswersYesCancelsBeforeTheNextChunk) {
    SeenLog log;
    useChunks(5);
    Percents percents([](int) { return true; });
    EXPECT_EQ(copy("/d/b", false, &percents.delegate), Status{-210});
    EXPECT_EQ(percents.seen, std::vector<float>{50});
    EXPECT_EQ(outPath(), "/d/b");
    EXPECT_FALSE(out->exists());
    EXPECT_EQ(stage.paths(), (Lines{"/d", "/s", "/s/a"}));
    const auto closed = std::ranges::find(stage.calls, "closeFile /d/QuillboxCopyFile.tmp "
                                                       "(/d/QuillboxCopyFile.tmp)");
    EXPECT_EQ(Lines(closed, closed + 3),
              (Lines{"closeFile /d/QuillboxCopyFile.tmp (/d/QuillboxCopyFile.tmp)",
                     "remove /d/QuillboxCopyFile.tmp", "closeFile /s/a (/s/a)"}));
    EXPECT_EQ(log.lines(), Lines{"Error copying file: \"copying file \"/s/a\" was canceled\""});
}

TEST_F(PlainCopy, IsCancelledInTheUsersLanguage) {
    const std::string languages[] = {"de"};
    const std::string folders[] = {TAV_TESTDATA "/../resources"};
    Translations german(languages, folders);
    const Translations::Replacement replacement(german);
    SeenLog log;
    Percents percents([](int) { return true; });
    EXPECT_EQ(copy("/d/b", false, &percents.delegate), Status{-210});
    EXPECT_EQ(log.lines(),
              Lines{"Error copying file: \"Kopieren der Datei „/s/a“ wurde abgebrochen\""});
}

TEST_F(PlainCopy, AYesAfterTheLastChunkHasNoEffect) {
    useChunks(5);
    Percents percents([](int call) { return call == 2; });
    EXPECT_EQ(copy("/d/b", false, &percents.delegate), Status::Success);
    EXPECT_EQ(percents.seen, (std::vector<float>{50, 100}));
    EXPECT_EQ(stage.text("/d/b"), "0123456789");
}

TEST_F(PlainCopy, EveryAnswerOfTheDelegateOverwritesTheFlag) {
    Percents percents([&](int) {
        source->cancelCopy();
        return false;
    });
    EXPECT_EQ(copy("/d/b", false, &percents.delegate), Status::Success);
}

TEST_F(PlainCopy, WithoutADelegateTheFlagIsSeenBeforeEachChunk) {
    stage.at["write /d/QuillboxCopyFile.tmp 4+4 (/d/QuillboxCopyFile.tmp)"] = [&] {
        source->cancelCopy();
    };
    EXPECT_EQ(copy("/d/b"), Status{-210});
    EXPECT_EQ(stage.callsOf("write").size(), 2U);
    EXPECT_EQ(stage.paths(), (Lines{"/d", "/s", "/s/a"}));
    stage.at = {{"write /d/QuillboxCopyFile.tmp 8+2 (/d/QuillboxCopyFile.tmp)",
                 [&] { source->cancelCopy(); }}};
    EXPECT_EQ(copy("/d/b"), Status::Success);
}

TEST_F(PlainCopy, ThatIsCancelledHasRemovedTheOldFile) {
    stage.addFile("/d/b", "old");
    stage.at["createFile /d QuillboxCopyFile.tmp"] = [&] { source->cancelCopy(); };
    EXPECT_EQ(copy("/d/b"), Status{-210});
    EXPECT_EQ(stage.paths(), (Lines{"/d", "/s", "/s/a"}));
}

// Devices that drive copies

TEST_F(PlainCopy, BetweenTwoDevicesThatDriveItRaises) {
    const auto destination = item("/d");
    destination->setDeviceControlsCopy(true);
    source->setDeviceControlsCopy(true);
    try {
        static_cast<void>(source->copyTo(destination.get(), false, nullptr, nullptr, &out));
        FAIL();
    } catch (const Exception& exception) {
        EXPECT_EQ(exception.name(), "TavBaseFileInfo");
        EXPECT_EQ(exception.reason(),
                  "File info objects are not yet able to perform this sort of copy.");
    }
    EXPECT_EQ(stage.paths(), (Lines{"/d", "/s", "/s/a"}));
}

TEST_F(PlainCopy, IntoADeviceThatDrivesItIsTheDevicesOwn) {
    const auto destination = item("/d");
    destination->setDeviceControlsCopy(true);
    const ProgressDelegate unanswering;
    EXPECT_EQ(source->copyTo(destination.get(), true, &unanswering, this, &out), Status{-4321});
    EXPECT_EQ(stage.calls.back(), "copyFromFile /d /s/a unique progress user out");
    EXPECT_EQ(source->copyTo(destination.get(), false, nullptr, nullptr, nullptr), Status{-4321});
    EXPECT_EQ(stage.calls.back(), "copyFromFile /d /s/a");
}

TEST_F(PlainCopy, FromADeviceThatDrivesItRaises) {
    source->setDeviceControlsCopy(true);
    try {
        static_cast<void>(copy("/d"));
        FAIL();
    } catch (const Exception& exception) {
        EXPECT_EQ(exception.name(), "TavBaseFileInfo");
        EXPECT_EQ(exception.reason(),
                  "Subclass of TavBaseFileInfo must override this method to perform the copy.");
    }
    EXPECT_EQ(out, untouched);
}

TEST_F(PlainCopy, OfNothingByADeviceAnswersItsStatus) {
    stage.files.erase("/s/a");
    source->setDeviceControlsCopy(true);
    EXPECT_EQ(copy("/d"), Status{-200});
}

// Nil

TEST_F(PlainCopy, ToNilFindsNoRoom) {
    SeenLog log;
    out = untouched;
    EXPECT_EQ(source->copyTo(nullptr, false, nullptr, nullptr, &out), Status{-209});
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(log.lines(), Lines{"There is not enough room to copy \"/s/a\"."});
}

TEST_F(PlainCopy, OfAnEmptyFileToNilMakesNoTemporaryFile) {
    stage.addFile("/s/a", "");
    out = untouched;
    EXPECT_EQ(source->copyTo(nullptr, false, nullptr, nullptr, &out), Status{-202});
    EXPECT_EQ(out, nullptr);
}

TEST_F(PlainCopy, ToNilOfADeviceThatDrivesItRaises) {
    source->setDeviceControlsCopy(true);
    EXPECT_THROW(static_cast<void>(source->copyTo(nullptr)), Exception);
}

TEST_F(PlainCopy, IntoAFolderThatMakesNoFileIsACopyToNil) {
    stage.failing = {"createFile /d a"};
    EXPECT_EQ(copy("/d"), Status{-209});
    EXPECT_EQ(out, nullptr);
}

TEST_F(PlainCopy, ToAnItemWithoutAParentMakesNoTemporaryFile) {
    stage.hasParents = false;
    EXPECT_EQ(copy("/d/b"), Status{-202});
    EXPECT_EQ(outPath(), "/d/b");
}

TEST_F(PlainCopy, ToAFolderThatFindsNilGoesOn) {
    stage.failing = {"find /d QuillboxCopyFile.tmp"};
    EXPECT_EQ(copy("/d/b"), Status::Success);
}

// A source that changes meanwhile

TEST_F(PlainCopy, OfASourceThatShrinksIsShorterAndSaysNothing) {
    stage.at["read /s/a 4+4 (/s/a)"] = [&] { stage.addFile("/s/a", "01234"); };
    Percents percents;
    EXPECT_EQ(copy("/d/b", false, &percents.delegate), Status::Success);
    EXPECT_EQ(stage.text("/d/b").substr(0, 5), "01234");
    EXPECT_EQ(percents.seen, (std::vector<float>{40, 80, 100}));
}

TEST_F(PlainCopy, OfASourceThatGrowsTakesWhatItWas) {
    stage.at["read /s/a 4+4 (/s/a)"] = [&] { stage.addFile("/s/a", "0123456789abcdef"); };
    EXPECT_EQ(copy("/d/b"), Status::Success);
    EXPECT_EQ(stage.text("/d/b"), "0123456789");
}

TEST_F(PlainCopy, OfASourceThatVanishesKeepsThePart) {
    stage.at["read /s/a 4+4 (/s/a)"] = [&] { stage.files.erase("/s/a"); };
    EXPECT_EQ(copy("/d/b"), Status{-205});
    EXPECT_EQ(stage.text("/d/b"), "0123");
    EXPECT_EQ(stage.callsOf("setModificationDate"), Lines{"setModificationDate /d/b nil"});
}

TEST_F(PlainCopy, OfASourceThatBecomesAFolderIsWhatItsBackEndReads) {
    stage.at["openFileForReading /s/a"] = [&] { stage.files["/s/a"] = {true, {}, {}, {}}; };
    EXPECT_EQ(copy("/d/b"), Status::Success);
    EXPECT_EQ(stage.text("/d/b"), "");
}

} // namespace
} // namespace tav
