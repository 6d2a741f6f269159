// How plain copies end: every status, what was left over before, cancelling, devices that drive the
// copy, nothing to copy to, and sources that change meanwhile.

#include "fileinfo/CopyStatus.hpp"
#include "fileinfo/PlainCopy_test.hpp"
#include "fileinfo/SeenLog_test.hpp"
#include "platform/Localization.hpp"
#include "platform/memory/MemorySystemLog.hpp"

#include <gtest/gtest.h>

namespace tav {
namespace {

// Statuses

TEST_F(PlainCopyTest, OfNothingAnswersMinus200) {
    stage.files.erase("/s/a");
    EXPECT_EQ(copy("/d/b"), Status{-200});
    EXPECT_EQ(stage.calls, Lines{"exists /s/a"});
    EXPECT_EQ(out, untouched);
}

TEST_F(PlainCopyTest, OfAFolderAnswersMinus201) {
    stage.files["/s/a"].isFolder = true;
    EXPECT_EQ(copy("/d/b"), Status{-201});
    EXPECT_EQ(stage.calls, (Lines{"exists /s/a", "isFile /s/a"}));
    EXPECT_EQ(out, untouched);
}

TEST_F(PlainCopyTest, WithoutATemporaryFileAnswersMinus202) {
    stage.failing = {"createFile /d QuillboxCopyFile.tmp"};
    EXPECT_EQ(copy("/d/b"), Status{-202});
    EXPECT_EQ(outPath(), "/d/b");
    EXPECT_TRUE(stage.callsOf("openFileForReading").empty());
}

TEST_F(PlainCopyTest, WithATemporaryFileThatIsNotThereAnswersMinus202) {
    stage.at["createFile /d QuillboxCopyFile.tmp"] = [&] {
        stage.failing = {"exists /d/QuillboxCopyFile.tmp"};
    };
    EXPECT_EQ(copy("/d/b"), Status{-202});
    EXPECT_EQ(outPath(), "/d/b");
    EXPECT_TRUE(stage.callsOf("openFileForReading").empty());
}

TEST_F(PlainCopyTest, OfASourceThatDoesNotOpenAnswersMinus203AndLeavesTheTemporaryFile) {
    stage.failing = {"openFileForReading /s/a"};
    EXPECT_EQ(copy("/d/b"), Status{-203});
    EXPECT_EQ(outPath(), "/d/b");
    EXPECT_EQ(stage.text(temporary), "");
    EXPECT_EQ(stage.calls.back(), "openFileForReading /s/a");
}

TEST_F(PlainCopyTest, OntoATemporaryFileThatDoesNotOpenAnswersMinus204AndLeavesAllAsItIs) {
    stage.failing = {"openFileForWriting /d/QuillboxCopyFile.tmp"};
    EXPECT_EQ(copy("/d/b"), Status{-204});
    EXPECT_EQ(outPath(), "/d/b");
    EXPECT_EQ(stage.text(temporary), "");
    EXPECT_EQ(stage.calls.back(), "openFileForWriting /d/QuillboxCopyFile.tmp");
}

TEST_F(PlainCopyTest, WithAChunkThatIsNotReadAnswersMinus205AndKeepsThePart) {
    stage.failing = {"read /s/a 4+4 (/s/a)"};
    Percents percents;
    EXPECT_EQ(copy("/d/b", false, &percents.delegate), Status{-205});
    EXPECT_EQ(stage.text("/d/b"), "0123");
    EXPECT_EQ(stage.text(temporary), "(none)");
    EXPECT_EQ(stage.files["/d/b"].modificationDate, Date(200));
    EXPECT_EQ(outPath(), "/d/b");
    EXPECT_EQ(percents.seen, std::vector<float>{40});
}

TEST_F(PlainCopyTest, AnswersWhatAWriteAnsweredAndKeepsThePart) {
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

TEST_F(PlainCopyTest, OntoAnItemThatCannotWriteRangesAnswersMinus220) {
    EXPECT_EQ(
        source->copyTo(RangelessFileInfo::at(stage, "/d/b").get(), false, nullptr, nullptr, &out),
        Status{-220});
    EXPECT_EQ(outPath(), "/d/b");
    EXPECT_EQ(stage.text("/d/b"), "");
}

TEST_F(PlainCopyTest, WithLessRoomThanTheFileNeedsAnswersMinus209) {
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

TEST_F(PlainCopyTest, WithExactlyTheRoomThatItNeedsGoesOn) {
    stage.freeSpace = 10;
    EXPECT_EQ(copy("/d/b"), Status::Success);
}

TEST_F(PlainCopyTest, LeavesTheRoomThatTheFolderKeeps) {
    stage.spaceToKeep = 5;
    stage.freeSpace = 14;
    EXPECT_EQ(copy("/d/b"), Status{-209});
    stage.freeSpace = 15;
    EXPECT_EQ(copy("/d/b"), Status::Success);
}

TEST_F(PlainCopyTest, CountsTheRoomIn64Bits) {
    stage.toldSizes["/s/a"] = std::uint64_t{1} << 32;
    stage.freeSpace = (std::uint64_t{1} << 32) - 1;
    EXPECT_EQ(copy("/d/b"), Status{-209});
    // The sum wraps as unsigned numbers do: 10 + (2^64 - 10) is nothing.
    stage.toldSizes.clear();
    stage.spaceToKeep = std::uint64_t(0) - 10;
    stage.freeSpace = 0;
    EXPECT_EQ(copy("/d/b"), Status::Success);
}

TEST_F(PlainCopyTest, AMoveThatFailsIsNotLookedAt) {
    stage.failing = {"moveTo /d/QuillboxCopyFile.tmp /d/b"};
    EXPECT_EQ(copy("/d/b"), Status::Success);
    EXPECT_EQ(outPath(), temporary);
    EXPECT_EQ(stage.text(temporary), "0123456789");
    EXPECT_EQ(stage.files[temporary].modificationDate, Date(200));
}

TEST_F(PlainCopyTest, OntoAFileThatCannotBeRemovedStaysUnderTheTemporaryName) {
    stage.addFile("/d/b", "old");
    stage.failing = {"remove /d/b"};
    EXPECT_EQ(copy("/d/b"), Status::Success);
    EXPECT_EQ(stage.text("/d/b"), "old");
    EXPECT_EQ(outPath(), temporary);
}

// What was left over

TEST_F(PlainCopyTest, RemovesWhatAnEarlierCopyLeftOver) {
    SeenLog log;
    stage.addFile(temporary, "half");
    EXPECT_EQ(copy("/d/b"), Status::Success);
    EXPECT_EQ(Lines(stage.calls.begin() + 6, stage.calls.begin() + 10),
              (Lines{"find /d QuillboxCopyFile.tmp", "exists /d/QuillboxCopyFile.tmp",
                     "remove /d/QuillboxCopyFile.tmp", "freeSpaceOnVolume /d/b"}));
    EXPECT_EQ(log.lines(), Lines{});
    EXPECT_EQ(stage.text("/d/b"), "0123456789");
}

TEST_F(PlainCopyTest, GoesOnWhenWhatWasLeftOverCannotBeRemoved) {
    SeenLog log;
    stage.addFile(temporary, "more than ten bytes");
    stage.failing = {"remove /d/QuillboxCopyFile.tmp"};
    EXPECT_EQ(copy("/d/b"), Status::Success);
    EXPECT_EQ(log.lines(),
              Lines{"Couldn't remove the temporary file \"/d/QuillboxCopyFile.tmp\"."});
    EXPECT_EQ(stage.text("/d/b"), "0123456789");
}

TEST_F(PlainCopyTest, LogsNothingUnlessVerbose) {
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

TEST_F(PlainCopyTest, ForgetsAtItsBeginningThatItWasCancelled) {
    source->cancelCopy();
    EXPECT_EQ(copy("/d/b"), Status::Success);
}

TEST_F(PlainCopyTest, ForgetsTheCancelEvenWhenItCannotBegin) {
    const auto missing = item("/s/none");
    missing->cancelCopy();
    EXPECT_EQ(missing->copyTo(item("/d/b").get()), Status{-200});
    stage.addFile("/s/none", "x");
    EXPECT_EQ(missing->copyTo(item("/d/b").get()), Status::Success);
}

TEST_F(PlainCopyTest, ADelegateThatAnswersYesCancelsBeforeTheNextChunk) {
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

TEST_F(PlainCopyTest, IsCancelledInTheUsersLanguage) {
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

TEST_F(PlainCopyTest, AYesAfterTheLastChunkHasNoEffect) {
    useChunks(5);
    Percents percents([](int call) { return call == 2; });
    EXPECT_EQ(copy("/d/b", false, &percents.delegate), Status::Success);
    EXPECT_EQ(percents.seen, (std::vector<float>{50, 100}));
    EXPECT_EQ(stage.text("/d/b"), "0123456789");
}

TEST_F(PlainCopyTest, EveryAnswerOfTheDelegateOverwritesTheFlag) {
    Percents percents([&](int) {
        source->cancelCopy();
        return false;
    });
    EXPECT_EQ(copy("/d/b", false, &percents.delegate), Status::Success);
}

TEST_F(PlainCopyTest, WithoutADelegateTheFlagIsSeenBeforeEachChunk) {
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

TEST_F(PlainCopyTest, ThatIsCancelledHasRemovedTheOldFile) {
    stage.addFile("/d/b", "old");
    stage.at["createFile /d QuillboxCopyFile.tmp"] = [&] { source->cancelCopy(); };
    EXPECT_EQ(copy("/d/b"), Status{-210});
    EXPECT_EQ(stage.paths(), (Lines{"/d", "/s", "/s/a"}));
}

// Devices that drive copies

TEST_F(PlainCopyTest, BetweenTwoDevicesThatDriveItRaises) {
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

TEST_F(PlainCopyTest, IntoADeviceThatDrivesItIsTheDevicesOwn) {
    const auto destination = item("/d");
    destination->setDeviceControlsCopy(true);
    const ProgressDelegate unanswering;
    EXPECT_EQ(source->copyTo(destination.get(), true, &unanswering, this, &out), Status{-4321});
    EXPECT_EQ(stage.calls.back(), "copyFromFile /d /s/a unique progress user out");
    EXPECT_EQ(source->copyTo(destination.get(), false, nullptr, nullptr, nullptr), Status{-4321});
    EXPECT_EQ(stage.calls.back(), "copyFromFile /d /s/a");
}

TEST_F(PlainCopyTest, FromADeviceThatDrivesItRaises) {
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

TEST_F(PlainCopyTest, OfNothingByADeviceAnswersItsStatus) {
    stage.files.erase("/s/a");
    source->setDeviceControlsCopy(true);
    EXPECT_EQ(copy("/d"), Status{-200});
}

// Nil

TEST_F(PlainCopyTest, ToNilFindsNoRoom) {
    SeenLog log;
    out = untouched;
    EXPECT_EQ(source->copyTo(nullptr, false, nullptr, nullptr, &out), Status{-209});
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(log.lines(), Lines{"There is not enough room to copy \"/s/a\"."});
}

TEST_F(PlainCopyTest, OfAnEmptyFileToNilMakesNoTemporaryFile) {
    stage.addFile("/s/a", "");
    out = untouched;
    EXPECT_EQ(source->copyTo(nullptr, false, nullptr, nullptr, &out), Status{-202});
    EXPECT_EQ(out, nullptr);
}

TEST_F(PlainCopyTest, ToNilOfADeviceThatDrivesItRaises) {
    source->setDeviceControlsCopy(true);
    EXPECT_THROW(static_cast<void>(source->copyTo(nullptr)), Exception);
}

TEST_F(PlainCopyTest, IntoAFolderThatMakesNoFileIsACopyToNil) {
    stage.failing = {"createFile /d a"};
    EXPECT_EQ(copy("/d"), Status{-209});
    EXPECT_EQ(out, nullptr);
}

TEST_F(PlainCopyTest, ToAnItemWithoutAParentMakesNoTemporaryFile) {
    stage.hasParents = false;
    EXPECT_EQ(copy("/d/b"), Status{-202});
    EXPECT_EQ(outPath(), "/d/b");
}

TEST_F(PlainCopyTest, ToAFolderThatFindsNilGoesOn) {
    stage.failing = {"find /d QuillboxCopyFile.tmp"};
    EXPECT_EQ(copy("/d/b"), Status::Success);
}

// A source that changes meanwhile

TEST_F(PlainCopyTest, KeepsBothEndsWhenWhoeverHearsOfItLetsGoOfThem) {
    std::shared_ptr<StagedFileInfo> destination = item("/d/b");
    const std::weak_ptr<StagedFileInfo> ends[] = {source, destination};
    StagedFileInfo& copied = *source;
    bool areThere = true;
    const Percents told([&](int) {
        source.reset();
        destination.reset();
        areThere = areThere && !ends[0].expired() && !ends[1].expired();
        return false;
    });
    EXPECT_EQ(copied.copyTo(destination.get(), false, &told.delegate, nullptr, nullptr),
              Status::Success);
    EXPECT_TRUE(areThere);
    EXPECT_EQ(stage.text("/d/b"), "0123456789");
}

TEST_F(PlainCopyTest, OfASourceThatShrinksIsShorterAndSaysNothing) {
    stage.at["read /s/a 4+4 (/s/a)"] = [&] { stage.addFile("/s/a", "01234"); };
    Percents percents;
    EXPECT_EQ(copy("/d/b", false, &percents.delegate), Status::Success);
    EXPECT_EQ(stage.text("/d/b").substr(0, 5), "01234");
    EXPECT_EQ(percents.seen, (std::vector<float>{40, 80, 100}));
}

TEST_F(PlainCopyTest, OfASourceThatGrowsTakesWhatItWas) {
    stage.at["read /s/a 4+4 (/s/a)"] = [&] { stage.addFile("/s/a", "0123456789abcdef"); };
    EXPECT_EQ(copy("/d/b"), Status::Success);
    EXPECT_EQ(stage.text("/d/b"), "0123456789");
}

TEST_F(PlainCopyTest, OfASourceThatVanishesKeepsThePart) {
    stage.at["read /s/a 4+4 (/s/a)"] = [&] { stage.files.erase("/s/a"); };
    EXPECT_EQ(copy("/d/b"), Status{-205});
    EXPECT_EQ(stage.text("/d/b"), "0123");
    EXPECT_EQ(stage.callsOf("setModificationDate"), Lines{"setModificationDate /d/b nil"});
}

TEST_F(PlainCopyTest, OfASourceThatBecomesAFolderIsWhatItsBackEndReads) {
    stage.at["openFileForReading /s/a"] = [&] { stage.files["/s/a"] = {true, {}, {}, {}}; };
    EXPECT_EQ(copy("/d/b"), Status::Success);
    EXPECT_EQ(stage.text("/d/b"), "");
}

} // namespace
} // namespace tav
