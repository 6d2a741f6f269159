// Exceptions in the middle of a plain copy, and every single call failing or throwing in turn.

#include "fileinfo/CopyStage_test.hpp"
#include "fileinfo/CopyStatus.hpp"
#include "fileinfo/SeenLog_test.hpp"

#include <stdexcept>

#include <gtest/gtest.h>

namespace tav {
namespace {

const char* const temporary = "/d/QuillboxCopyFile.tmp";
const std::string removesTemporary = std::string("remove ") + temporary;
const std::string thrownLine = "Error copying file: \"thrown on purpose\"";

/// "/s/a" with ten bytes in three chunks, to "/d/b".
class ThrowingCopy : public testing::Test {
  protected:
    ThrowingCopy() {
        stage.addFolder("/s");
        stage.addFolder("/d");
        stage.addFile("/s/a", "0123456789");
        stage.chunkSizes["/s/a"] = 4;
    }
    std::shared_ptr<StagedFileInfo> item(std::string_view path) {
        return StagedFileInfo::at(stage, path);
    }
    Status copy(std::string_view destination, bool ensureUniqueName = false) {
        out = untouched;
        return source->copyTo(item(destination).get(), ensureUniqueName, &delegate, nullptr, &out);
    }
    void throwAt(std::string_view call) {
        stage.at[std::string(call)] = [] { throw Exception("stage", "thrown on purpose"); };
    }
    void throwForeignAt(std::string_view call) {
        stage.at[std::string(call)] = [] { throw std::runtime_error("foreign"); };
    }
    /// What comes after a call, that one included.
    [[nodiscard]] Lines callsFrom(std::string_view call) const {
        return {std::ranges::find(stage.calls, call), stage.calls.end()};
    }

    CopyStage stage;
    ProgressDelegate delegate;
    std::shared_ptr<StagedFileInfo> source = item("/s/a");
    FileInfoPtr untouched = item("/untouched");
    FileInfoPtr out;
    SeenLog log;
};

const Lines discarded = {"closeFile /d/QuillboxCopyFile.tmp (/d/QuillboxCopyFile.tmp)",
                         removesTemporary, "closeFile /s/a (/s/a)"};

// Inside the chunks

TEST_F(ThrowingCopy, AReadThatRaisesEndsItAndTakesTheTemporaryFileAway) {
    throwAt("read /s/a 4+4 (/s/a)");
    EXPECT_EQ(copy("/d/b"), Status{-206});
    Lines expected = discarded;
    expected.insert(expected.begin(), "read /s/a 4+4 (/s/a)");
    EXPECT_EQ(callsFrom("read /s/a 4+4 (/s/a)"), expected);
    EXPECT_EQ(out->path(), "/d/b");
    EXPECT_EQ(stage.paths(), (Lines{"/d", "/s", "/s/a"}));
    EXPECT_EQ(log.lines(), Lines{thrownLine});
}

TEST_F(ThrowingCopy, AWriteThatRaisesEndsItAndTakesTheTemporaryFileAway) {
    throwAt("write /d/QuillboxCopyFile.tmp 8+2 (/d/QuillboxCopyFile.tmp)");
    EXPECT_EQ(copy("/d/b"), Status{-206});
    EXPECT_EQ(out->path(), "/d/b");
    EXPECT_EQ(stage.paths(), (Lines{"/d", "/s", "/s/a"}));
}

TEST_F(ThrowingCopy, ADelegateThatRaisesEndsItAndTakesTheTemporaryFileAway) {
    delegate.copyingFile = [](TavBaseFileInfo&, TavBaseFileInfo&, float percent, void*) {
        if (percent > 50) {
            throw Exception("delegate", "thrown on purpose");
        }
        return false;
    };
    EXPECT_EQ(copy("/d/b"), Status{-206});
    EXPECT_EQ(out->path(), "/d/b");
    EXPECT_EQ(stage.callsOf("write").size(), 2U);
    EXPECT_EQ(stage.paths(), (Lines{"/d", "/s", "/s/a"}));
    EXPECT_EQ(log.lines(), Lines{thrownLine});
}

TEST_F(ThrowingCopy, ADelegateThatRaisesOnTheLastChunkEndsItAllTheSame) {
    delegate.copyingFile = [](TavBaseFileInfo&, TavBaseFileInfo&, float percent, void*) -> bool {
        if (percent == 100) {
            throw Exception("delegate", "thrown on purpose");
        }
        return false;
    };
    EXPECT_EQ(copy("/d/b"), Status{-206});
    EXPECT_EQ(stage.paths(), (Lines{"/d", "/s", "/s/a"}));
}

TEST_F(ThrowingCopy, AnExceptionOfTheEndOfTheFirstClosesBothOnceMore) {
    throwAt(discarded[0]);
    EXPECT_EQ(copy("/d/b"), Status{-206});
    // The clean-up raises there again, outside the chunks by now.
    EXPECT_EQ(callsFrom(discarded[0]), (Lines{discarded[0], discarded[0], "remove /d/b"}));
    EXPECT_EQ(out, untouched);
    EXPECT_EQ(log.lines(), (Lines{thrownLine, thrownLine}));
}

TEST_F(ThrowingCopy, AMoveThatRaisesTakesTheTemporaryFileAway) {
    throwAt("moveTo /d/QuillboxCopyFile.tmp /d/b");
    EXPECT_EQ(copy("/d/b"), Status{-206});
    Lines expected = {"moveTo /d/QuillboxCopyFile.tmp /d/b"};
    expected.insert(expected.end(), discarded.begin(), discarded.end());
    EXPECT_EQ(callsFrom(expected[0]), expected);
    EXPECT_EQ(out->path(), "/d/b");
    EXPECT_EQ(stage.paths(), (Lines{"/d", "/s", "/s/a"}));
}

TEST_F(ThrowingCopy, ADateThatRaisesTakesTheNewFileAway) {
    throwAt("setModificationDate /d/b 200");
    EXPECT_EQ(copy("/d/b"), Status{-206});
    EXPECT_EQ(out->path(), "/d/b");
    EXPECT_EQ(stage.paths(), (Lines{"/d", "/s", "/s/a"}));
}

TEST_F(ThrowingCopy, AStatusThatWasThereBeforeStays) {
    stage.failing = {"read /s/a 4+4 (/s/a)"};
    throwAt("moveTo /d/QuillboxCopyFile.tmp /d/b");
    EXPECT_EQ(copy("/d/b"), Status{-205});
    EXPECT_EQ(stage.paths(), (Lines{"/d", "/s", "/s/a"}));
}

TEST_F(ThrowingCopy, ARemovalThatRaisesAfterACancelIsOutsideTheChunks) {
    delegate.copyingFile = [](TavBaseFileInfo&, TavBaseFileInfo&, float, void*) { return true; };
    throwAt(removesTemporary);
    EXPECT_EQ(copy("/d/b"), Status{-210});
    EXPECT_EQ(callsFrom(removesTemporary), (Lines{removesTemporary, "remove /d/b"}));
    EXPECT_EQ(out, untouched);
    EXPECT_EQ(log.lines(),
              (Lines{"Error copying file: \"copying file \"/s/a\" was canceled\"", thrownLine}));
}

// Outside the chunks: the destination is removed, the out item is left alone

TEST_F(ThrowingCopy, OutsideTheChunksTheDestinationIsRemoved) {
    for (const char* call :
         {"parentFolder /d/b", "find /d QuillboxCopyFile.tmp", "exists /d/QuillboxCopyFile.tmp",
          "freeSpaceOnVolume /d/b", "freeSpaceToKeep /d", "createFile /d QuillboxCopyFile.tmp",
          "openFileForReading /s/a", "openFileForWriting /d/QuillboxCopyFile.tmp"}) {
        SCOPED_TRACE(call);
        stage.calls.clear();
        stage.at.clear();
        const std::size_t logged = log.lines().size();
        throwAt(call);
        EXPECT_EQ(copy("/d/b"), Status{-206});
        EXPECT_EQ(callsFrom(call), (Lines{call, "remove /d/b"}));
        EXPECT_EQ(out, untouched);
        EXPECT_EQ(log.lines().size(), logged + 1);
        EXPECT_EQ(log.lines().back(), thrownLine);
    }
}

TEST_F(ThrowingCopy, AnOldFileWhoseRemovalRaisesIsRemovedOnceMore) {
    stage.addFile("/d/b", "old");
    throwAt("remove /d/b");
    EXPECT_EQ(copy("/d/b"), Status{-206}); // also when that raises again
    EXPECT_EQ(callsFrom("remove /d/b"), (Lines{"remove /d/b", "remove /d/b"}));
    EXPECT_EQ(out, untouched);
}

TEST_F(ThrowingCopy, AnExceptionInsteadOfThePlaceholderRemovesTheFolder) {
    throwAt("createFile /d a");
    EXPECT_EQ(copy("/d"), Status{-206});
    EXPECT_EQ(callsFrom("createFile /d a"), (Lines{"createFile /d a", "remove /d"}));
    EXPECT_EQ(out, untouched);
}

TEST_F(ThrowingCopy, WithThePlaceholderTheDestinationIsTheFile) {
    throwAt("remove /d/a");
    EXPECT_EQ(copy("/d"), Status{-206});
    EXPECT_EQ(callsFrom("remove /d/a"), (Lines{"remove /d/a", "remove /d/a"}));
}

TEST_F(ThrowingCopy, BeforeTheGuardTheExceptionIsTheCallers) {
    throwAt("exists /s/a");
    EXPECT_THROW(static_cast<void>(copy("/d/b")), Exception);
    EXPECT_EQ(out, untouched);
}

TEST_F(ThrowingCopy, ToNilThereIsNothingToRemove) {
    throwAt("size /s/a");
    EXPECT_EQ(source->copyTo(nullptr), Status{-206});
    EXPECT_EQ(stage.calls.back(), "size /s/a");
}

// Exceptions of another kind

TEST_F(ThrowingCopy, AnotherExceptionOfADelegateReachesTheCallerAfterTheCleanUp) {
    delegate.copyingFile = [](TavBaseFileInfo&, TavBaseFileInfo&, float, void*) -> bool {
        throw std::runtime_error("foreign");
    };
    EXPECT_THROW(static_cast<void>(copy("/d/b")), std::runtime_error);
    EXPECT_EQ(callsFrom(discarded[0]), discarded);
    EXPECT_EQ(out, untouched);
    EXPECT_EQ(stage.paths(), (Lines{"/d", "/s", "/s/a"}));
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(ThrowingCopy, AnotherExceptionOutsideTheChunksRemovesTheDestination) {
    throwForeignAt("createFile /d QuillboxCopyFile.tmp");
    EXPECT_THROW(static_cast<void>(copy("/d")), std::runtime_error);
    EXPECT_EQ(callsFrom("createFile /d QuillboxCopyFile.tmp"),
              (Lines{"createFile /d QuillboxCopyFile.tmp", "remove /d/a"}));
    EXPECT_EQ(out, untouched);
}

TEST_F(ThrowingCopy, AnotherExceptionInsteadOfThePlaceholderLeavesTheFolder) {
    throwForeignAt("createFile /d a");
    EXPECT_THROW(static_cast<void>(copy("/d")), std::runtime_error);
    EXPECT_EQ(stage.calls.back(), "createFile /d a");
    EXPECT_EQ(stage.paths(), (Lines{"/d", "/s", "/s/a"}));
}

TEST_F(ThrowingCopy, TheFirstOfTwoOtherExceptionsReachesTheCaller) {
    throwForeignAt("read /s/a 0+4 (/s/a)");
    stage.at[removesTemporary] = [] { throw std::logic_error("second"); };
    EXPECT_THROW(static_cast<void>(copy("/d/b")), std::runtime_error);
}

// Every call in turn. Only what is asked of the source before the guard may raise.

struct Sweep {
    const char* destination;
    bool ensureUniqueName;
    bool hasOldFile;
};

class SweptCopy : public testing::TestWithParam<Sweep> {
  protected:
    /// Ends in a file, whole or as a part, or none; the source stays whole; all that is left beside
    /// is the temporary file.
    static void expectNothingElse(CopyStage& stage, std::size_t call, Status status) {
        SCOPED_TRACE(std::to_string(call) + " " + stage.calls[call - 1]);
        EXPECT_EQ(stage.text("/s/a"), "0123456789");
        for (const std::string& path : stage.paths()) {
            EXPECT_TRUE(path == "/s" || path == "/s/a" || path == "/d" || path == "/d/a" ||
                        path == "/d/a-1" || path == temporary ||
                        path == "/QuillboxCopyFile.tmp") // of a folder that is said to be none
                << path;
        }
        const std::int32_t number = static_cast<std::int32_t>(status);
        EXPECT_TRUE(number == 0 || number == -7 || (number <= -200 && number >= -210)) << number;
    }
    void sweep(const std::function<void(CopyStage&, std::size_t)>& arm) {
        for (std::size_t call = 1;; ++call) {
            CopyStage stage;
            stage.addFolder("/s");
            stage.addFolder("/d");
            stage.addFile("/s/a", "0123456789");
            stage.chunkSizes["/s/a"] = 4;
            if (GetParam().hasOldFile) {
                stage.addFile("/d/a", "old");
            }
            arm(stage, call);
            Status status{};
            bool reached = false;
            try {
                status = StagedFileInfo::at(stage, "/s/a")
                             ->copyTo(StagedFileInfo::at(stage, GetParam().destination).get(),
                                      GetParam().ensureUniqueName, nullptr, nullptr, nullptr);
            } catch (const Exception&) {
                EXPECT_LE(call, 4U);
                continue;
            } catch (const std::runtime_error&) {
                reached = true;
            }
            if (stage.calls.size() < call) {
                EXPECT_EQ(status, Status::Success);
                EXPECT_GT(call, 30U);
                return;
            }
            expectNothingElse(stage, call, status);
            if (GetParam().ensureUniqueName && GetParam().hasOldFile && call > 4 &&
                stage.files.contains("/d")) {
                EXPECT_EQ(stage.text("/d/a"), "old");
            }
            EXPECT_EQ(reached, bool(foreign));
        }
    }
    bool foreign = false;
};

TEST_P(SweptCopy, EveryCallMayFail) {
    sweep([](CopyStage& stage, std::size_t call) { stage.failingCall = call; });
}

TEST_P(SweptCopy, EveryCallMayRaise) {
    sweep([](CopyStage& stage, std::size_t call) { stage.throwingCall = call; });
}

TEST_P(SweptCopy, EveryCallMayRaiseAnotherKindOfException) {
    foreign = true;
    sweep([](CopyStage& stage, std::size_t call) {
        stage.throwingCall = call;
        stage.thrown = [] { throw std::runtime_error("foreign"); };
    });
}

INSTANTIATE_TEST_SUITE_P(All, SweptCopy,
                         testing::Values(Sweep{"/d/a", false, false}, Sweep{"/d/a", false, true},
                                         Sweep{"/d", false, false}, Sweep{"/d", true, false},
                                         Sweep{"/d", true, true}));

} // namespace
} // namespace tav
