// Copies with options, each alone and several together, over items that tell every call.

#include "fileinfo/CopyStatus.hpp"
#include "fileinfo/CopyWithOptions_test.hpp"

#include <stdexcept>

#include <gtest/gtest.h>

namespace tav {
namespace {

/// The options that are switches, by the bits of a number.
CopyOptions optionsOf(int bits) {
    CopyOptions options;
    options.keepsDestination = (bits & 1) != 0;
    options.isDurable = (bits & 2) != 0;
    options.verifies = (bits & 4) != 0;
    options.carriesPermissions = (bits & 8) != 0;
    options.carriesExtendedAttributes = (bits & 16) != 0;
    options.carriesHoles = (bits & 32) != 0;
    options.isWhole = (bits & 64) != 0;
    return options;
}

const char* const plainName = "/d/QuillboxCopyFile.tmp";

// keepsDestination

TEST_F(CopyWithOptions, TheOldFileStaysUntilTheNewOneIsWhole) {
    options.keepsDestination = true;
    expectNew(copy("/d/b"));
    EXPECT_EQ(deeds(), (Lines{"createFile /d OWN unique progress", "openFileForReading /s/a",
                              "read /s/a 0+4 (/s/a)", "write /d/OWN 0+4 (/d/OWN)", "report /d/OWN",
                              "read /s/a 4+4 (/s/a)", "write /d/OWN 4+4 (/d/OWN)", "report /d/OWN",
                              "read /s/a 8+2 (/s/a)", "write /d/OWN 8+2 (/d/OWN)", "report /d/OWN",
                              "closeFile /d/OWN (/d/OWN)", "closeFile /s/a (/s/a)",
                              "setModificationDate /d/OWN 200", "replace /d/OWN /d/b"}));
    EXPECT_EQ(percents, (std::vector<float>{40, 80, 100}));
}

TEST_F(CopyWithOptions, EveryCopyHasATemporaryNameOfItsOwn) {
    options.keepsDestination = true;
    std::set<std::string> names;
    delegate.copyingFile = [&](TavBaseFileInfo&, TavBaseFileInfo& to, float, void*) {
        names.insert(to.path());
        return false;
    };
    stage.addFile(plainName, "somebody else's");
    EXPECT_EQ(copy("/d/b"), Status::Success);
    EXPECT_EQ(copy("/d/b"), Status::Success);
    EXPECT_EQ(names.size(), 2U);
    for (const std::string& name : names) {
        EXPECT_TRUE(name.starts_with("/d/.QuillboxCopy-")) << name;
        EXPECT_TRUE(name.ends_with(".tmp")) << name;
    }
    EXPECT_EQ(stage.text(plainName), "somebody else's");
}

TEST_F(CopyWithOptions, AFileMayBeCopiedOntoItself) {
    options.keepsDestination = true;
    EXPECT_EQ(copy("/s/a"), Status::Success);
    EXPECT_EQ(stage.text("/s/a"), "0123456789");
    EXPECT_EQ(copy("/s"), Status::Success);
    EXPECT_EQ(stage.text("/s/a"), "0123456789");
}

TEST_F(CopyWithOptions, IntoAFolderNoPlaceholderIsMade) {
    options.keepsDestination = true;
    stage.addFile("/d/a", "older");
    EXPECT_EQ(copy("/d"), Status::Success);
    EXPECT_EQ(stage.callsOf("createFile"), Lines{"createFile /d OWN unique progress"});
    EXPECT_EQ(stage.callsOf("remove"), Lines{});
    EXPECT_EQ(stage.text("/d/a"), "0123456789");
    EXPECT_EQ(out->path(), "/d/a");
}

TEST_F(CopyWithOptions, AUniqueNameIsTakenWhenTheFileIsWhole) {
    options.keepsDestination = true;
    stage.addFile("/d/a", "older");
    EXPECT_EQ(copy("/d", true), Status::Success);
    EXPECT_EQ(stage.text("/d/a"), "older");
    EXPECT_EQ(stage.text("/d/a-1"), "0123456789");
    EXPECT_EQ(out->path(), "/d/a-1");
    EXPECT_EQ(stage.callsOf("replace"), Lines{});
}

TEST_F(CopyWithOptions, AUniqueNameThatIsTakenMeanwhileIsLeftToItsOwner) {
    options.keepsDestination = true;
    stage.at["closeFile /s/a (/s/a)"] = [&] {
        stage.addFile("/d/a", "faster");
        stage.addFile("/d/a-1", "faster too");
    };
    EXPECT_EQ(copy("/d", true), Status::Success);
    EXPECT_EQ(stage.text("/d/a"), "faster");
    EXPECT_EQ(stage.text("/d/a-1"), "faster too");
    EXPECT_EQ(stage.text("/d/a-2"), "0123456789");
    EXPECT_EQ(out->path(), "/d/a-2");
}

TEST_F(CopyWithOptions, AMoveToAFreeNameThatFailsIsNotTriedForEver) {
    options.keepsDestination = true;
    stage.failing = {"moveTo /d/OWN /d/a"};
    expectOld(Status{-213}, copy("/d", true));
    EXPECT_EQ(out->path(), "/d/a");
    EXPECT_EQ(stage.callsOf("moveTo").size(), 1U);
}

TEST_F(CopyWithOptions, AFolderInTheWayIsSeenAtOnce) {
    options.keepsDestination = true;
    stage.addFolder("/d/a");
    EXPECT_EQ(copy("/d"), Status{-213});
    EXPECT_EQ(deeds(), Lines{});
}

TEST_F(CopyWithOptions, WithoutAStepThatReplacesNothingIsTouched) {
    options.keepsDestination = true;
    stage.support = nullptr;
    expectOld(Status{-220}, copy("/d/b"));
    EXPECT_EQ(deeds(), Lines{});
    // A new file needs no such step.
    EXPECT_EQ(copy("/d/c"), Status::Success);
    EXPECT_EQ(stage.text("/d/c"), "0123456789");
}

TEST_F(CopyWithOptions, AVolumeWithoutAStepThatReplacesKeepsTheOldFile) {
    options.keepsDestination = true;
    support.answers["replace"] = Status::NotSupported;
    expectOld(Status{-220}, copy("/d/b"));
    EXPECT_EQ(copy("/d/c"), Status::Success);
    EXPECT_EQ(stage.text("/d/c"), "0123456789");
}

TEST_F(CopyWithOptions, AReplacementThatFailsKeepsTheOldFile) {
    options.keepsDestination = true;
    support.answers["replace"] = Status::Failure;
    expectOld(Status{-213}, copy("/d/b"));
    EXPECT_EQ(out->path(), "/d/b");
}

TEST_F(CopyWithOptions, EveryCallMayFailOrRaiseAndTheOldFileStandsUntilItIsReplaced) {
    options.keepsDestination = true;
    for (const bool durable : {false, true}) {
        options.isDurable = options.verifies = durable;
        options.carriesPermissions = durable;
        for (const int kind : {0, 1, 2}) {
            for (std::size_t call = 1;; ++call) {
                lay();
                stage.failingCall = kind == 0 ? call : 0;
                stage.throwingCall = kind == 0 ? 0 : call;
                stage.thrown = [kind] {
                    if (kind == 1) {
                        throw Exception("stage", "thrown");
                    }
                    throw std::runtime_error("foreign");
                };
                Status status = CopyStatus::raised;
                try {
                    status = copy("/d/b");
                } catch (const std::exception&) {
                }
                if (stage.calls.size() < call) {
                    EXPECT_GT(call, 30U);
                    break;
                }
                const std::string name = stage.calls[call - 1];
                SCOPED_TRACE(std::to_string(kind) + ' ' + name);
                const bool isReplaced = std::ranges::any_of(stage.calls,
                                                            [](const std::string& each) {
                                                                return each.starts_with("replace ");
                                                            }) &&
                                        !name.starts_with("replace ");
                // A file that is said not to exist, or to be a folder, is still one to be replaced.
                EXPECT_EQ(stage.text("/d/b"), isReplaced ? "0123456789" : "old");
                EXPECT_EQ(stage.text("/s/a"), "0123456789");
                if (!name.starts_with("remove") && !name.starts_with("closeFile")) {
                    EXPECT_EQ(stage.paths(), (Lines{"/d", "/d/b", "/s", "/s/a"}));
                }
                if (!isReplaced) {
                    EXPECT_NE(status, Status::Success);
                }
            }
        }
    }
}

TEST_F(CopyWithOptions, ACancelKeepsTheOldFile) {
    options.keepsDestination = true;
    stage.at["write /d/OWN 4+4 (/d/OWN)"] = [&] { source->cancelCopy(); };
    delegate.copyingFile = nullptr;
    expectOld(Status{-210}, copy("/d/b"));
}

// isDurable

TEST_F(CopyWithOptions, ADurableCopyEndsWhenAllIsOnTheMedium) {
    options.isDurable = true;
    expectNew(copy("/d/b"));
    const Lines all = deeds();
    EXPECT_EQ(Lines(all.end() - 9, all.end()),
              (Lines{"write /d/QuillboxCopyFile.tmp 8+2 (/d/QuillboxCopyFile.tmp)",
                     "setModificationDate /d/QuillboxCopyFile.tmp 200",
                     "syncContents /d/QuillboxCopyFile.tmp",
                     "closeFile /d/QuillboxCopyFile.tmp (/d/QuillboxCopyFile.tmp)",
                     "closeFile /s/a (/s/a)", "setModificationDate /d/QuillboxCopyFile.tmp 200",
                     "moveTo /d/QuillboxCopyFile.tmp /d/b", "syncFolder /d", "report /d/b"}));
    EXPECT_EQ(percents, (std::vector<float>{40, 80, 100}));
}

TEST_F(CopyWithOptions, ADurableCopyOfAnEmptyFileIsSyncedAndNotReported) {
    options.isDurable = true;
    stage.addFile("/s/a", "");
    EXPECT_EQ(copy("/d/c"), Status::Success);
    EXPECT_EQ(stage.callsOf("syncContents").size(), 1U);
    EXPECT_EQ(stage.callsOf("syncFolder"), Lines{"syncFolder /d"});
    EXPECT_TRUE(percents.empty());
}

TEST_F(CopyWithOptions, WhoCannotTellOfTheMediumSaysSoAtOnce) {
    options.isDurable = true;
    stage.support = nullptr;
    expectOld(Status{-220}, copy("/d/b"));
    EXPECT_EQ(deeds(), Lines{});
}

TEST_F(CopyWithOptions, AContentThatIsNotSyncedIsInPlaceAndSaysSo) {
    options.isDurable = true;
    support.answers["syncContents"] = Status::Failure;
    EXPECT_EQ(copy("/d/b"), Status{-212});
    EXPECT_EQ(stage.text("/d/b"), "0123456789");
    EXPECT_EQ(percents, (std::vector<float>{40, 80}));
}

TEST_F(CopyWithOptions, AContentThatIsNotSyncedReplacesNothing) {
    options.isDurable = options.keepsDestination = true;
    support.answers["syncContents"] = Status::NotSupported;
    expectOld(Status{-212}, copy("/d/b"));
    EXPECT_EQ(percents, (std::vector<float>{40, 80}));
}

TEST_F(CopyWithOptions, AFolderThatIsNotSyncedHasTheNewFileAndSaysSo) {
    options.isDurable = options.keepsDestination = true;
    support.answers["syncFolder"] = Status::Failure;
    EXPECT_EQ(copy("/d/b"), Status{-212});
    EXPECT_EQ(stage.text("/d/b"), "0123456789");
    EXPECT_EQ(out->path(), "/d/b");
    EXPECT_EQ(percents, (std::vector<float>{40, 80}));
}

TEST_F(CopyWithOptions, AMoveThatFailsCountsWithAnyOption) {
    options.isDurable = true;
    stage.failing = {"moveTo /d/QuillboxCopyFile.tmp /d/b"};
    EXPECT_EQ(copy("/d/b"), Status{-213});
    EXPECT_EQ(stage.text(plainName), "(none)");
    EXPECT_TRUE(stage.callsOf("syncFolder").empty());
}

TEST_F(CopyWithOptions, OfAPartThatCannotBeMovedTheFirstFailureIsTold) {
    options.isWhole = true;
    stage.failing = {"read /s/a 4+4 (/s/a)", "moveTo /d/QuillboxCopyFile.tmp /d/b"};
    EXPECT_EQ(copy("/d/b"), CopyStatus::chunkNotRead);
    EXPECT_EQ(stage.text(plainName), "(none)");
}

TEST_F(CopyWithOptions, ASourceThatCannotBeReadOnceMoreIsNotVerified) {
    options.verifies = options.keepsDestination = true;
    stage.at["openFileForReading /d/OWN"] = [this] { stage.failing = {"read /s/a 4+4 (/s/a)"}; };
    expectOld(CopyStatus::chunkNotRead, copy("/d/b"));
    stage.failing.clear();
    stage.at["openFileForReading /d/OWN"] = [this] { stage.files["/s/a"].content.resize(6); };
    EXPECT_EQ(copy("/d/b"), CopyStatus::chunkNotRead); // it has become shorter
    EXPECT_EQ(stage.text("/d/b"), "old");
}

TEST_F(CopyWithOptions, ADelegateThatRaisesAtTheEndLeavesTheNewFile) {
    options.isDurable = true;
    stage.at["report /d/b"] = [] { throw Exception("delegate", "thrown"); };
    EXPECT_EQ(copy("/d/b"), Status{-206});
    EXPECT_EQ(stage.text("/d/b"), "0123456789");
    EXPECT_EQ(out->path(), "/d/b");
}

// verifies

TEST_F(CopyWithOptions, AVerifiedCopyIsReadBackBeforeItIsPutInPlace) {
    options.verifies = options.keepsDestination = options.isDurable = true;
    expectNew(copy("/d/b"));
    const std::size_t closed = at("closeFile /d/OWN");
    EXPECT_LT(at("syncContents"), closed);
    const std::size_t opened = at("openFileForReading /d/OWN", closed);
    EXPECT_EQ(
        Lines(stage.calls.begin() + std::ptrdiff_t(opened),
              stage.calls.begin() + std::ptrdiff_t(opened) + 12),
        (Lines{"openFileForReading /d/OWN", "forgetCached /d/OWN", "read /s/a 0+4 (/s/a)",
               "read /d/OWN 0+4 (/d/OWN)", "read /s/a 4+4 (/s/a)", "read /d/OWN 4+4 (/d/OWN)",
               "read /s/a 8+2 (/s/a)", "read /d/OWN 8+2 (/d/OWN)", "read /s/a 10+1 (/s/a)",
               "read /d/OWN 10+1 (/d/OWN)", "closeFile /d/OWN (/d/OWN)", "closeFile /s/a (/s/a)"}));
    EXPECT_LT(opened, at("replace"));
    EXPECT_LT(at("syncFolder"), at("report /d/b"));
}

TEST_F(CopyWithOptions, WhatIsReadBackDifferentlyIsNotPutInPlace) {
    options.verifies = true;
    for (const bool keeps : {false, true}) {
        lay();
        options.keepsDestination = keeps;
        const std::string name = keeps ? "/d/OWN" : plainName;
        stage.at["read " + name + " 4+4 (" + name + ')'] = [&] {
            for (auto& [path, file] : stage.files) {
                if (path.ends_with(".tmp")) {
                    file.content[5] = std::byte{'x'};
                }
            }
        };
        EXPECT_EQ(copy("/d/b"), Status{-211});
        EXPECT_EQ(stage.text("/d/b"), keeps ? "old" : "(none)");
        for (const std::string& path : stage.paths()) {
            EXPECT_FALSE(path.ends_with(".tmp"));
        }
        EXPECT_EQ(percents, (std::vector<float>{40, 80}));
    }
}

TEST_F(CopyWithOptions, ASourceThatHasGrownIsNotWhatWasCopied) {
    options.verifies = true;
    stage.at["closeFile /d/QuillboxCopyFile.tmp (/d/QuillboxCopyFile.tmp)"] = [&] {
        stage.addFile("/s/a", "0123456789abc");
    };
    EXPECT_EQ(copy("/d/b"), Status{-211});
}

TEST_F(CopyWithOptions, ACopyThatIsTooLongIsSeen) {
    options.verifies = true;
    stage.at["closeFile /d/QuillboxCopyFile.tmp (/d/QuillboxCopyFile.tmp)"] = [&] {
        stage.addFile(plainName, "0123456789abc");
    };
    EXPECT_EQ(copy("/d/b"), Status{-211});
}

TEST_F(CopyWithOptions, WhatCannotBeReadBackIsNotVerified) {
    options.verifies = true;
    stage.failing = {"openFileForReading /d/QuillboxCopyFile.tmp"};
    EXPECT_EQ(copy("/d/b"), Status{-211});
    stage.failing = {"read /d/QuillboxCopyFile.tmp 0+4 (/d/QuillboxCopyFile.tmp)"};
    EXPECT_EQ(copy("/d/b"), Status{-211});
    EXPECT_EQ(stage.text(plainName), "(none)");
}

TEST_F(CopyWithOptions, ASourceThatIsNotReadAgainIsAChunkNotRead) {
    options.verifies = true;
    stage.at["closeFile /d/QuillboxCopyFile.tmp (/d/QuillboxCopyFile.tmp)"] = [&] {
        stage.files.erase("/s/a");
    };
    EXPECT_EQ(copy("/d/b"), Status{-205});
    EXPECT_EQ(stage.text("/d/b"), "(none)");
}

TEST_F(CopyWithOptions, ACancelIsSeenWhileItIsReadBack) {
    options.verifies = options.keepsDestination = true;
    delegate.copyingFile = nullptr;
    stage.at["read /d/OWN 0+4 (/d/OWN)"] = [&] { source->cancelCopy(); };
    expectOld(Status{-210}, copy("/d/b"));
}

// What any option changes

TEST_F(CopyWithOptions, AShortChunkWasNotReadWithAnyOption) {
    options.isWhole = true;
    stage.at["read /s/a 4+4 (/s/a)"] = [&] { stage.addFile("/s/a", "01234"); };
    EXPECT_EQ(copy("/d/b"), Status{-205});
    EXPECT_EQ(stage.text("/d/b"), "0123"); // in place, as of any copy that does not keep the old
}

// carries...

TEST_F(CopyWithOptions, CarriesWhatItIsToldTo) {
    options.carriesPermissions = true;
    expectNew(copy("/d/b"));
    EXPECT_EQ(stage.callsOf("setMetadata"), (Lines{"setMetadata /d/QuillboxCopyFile.tmp 384",
                                                   "setMetadata /d/QuillboxCopyFile.tmp 488"}));
    EXPECT_LT(at("setMetadata"), at("openFileForWriting"));
    EXPECT_LT(at("setMetadata", at("write")), at("closeFile"));
    lay();
    options = {};
    options.carriesExtendedAttributes = true;
    expectNew(copy("/d/b"));
    EXPECT_EQ(stage.callsOf("setMetadata"),
              Lines{"setMetadata /d/QuillboxCopyFile.tmp - user.a user.b"});
}

TEST_F(CopyWithOptions, TheGrowingCopyIsItsOwnersAloneFromItsFirstMoment) {
    options.carriesPermissions = true;
    support.carried.permissions = 04444;
    EXPECT_EQ(copy("/d/b"), Status::Success);
    EXPECT_EQ(stage.callsOf("createFile"),
              Lines{"createFile /d QuillboxCopyFile.tmp attributes progress"});
    EXPECT_EQ(stage.createdWith, Value(Value::Dictionary{{"NSFilePosixPermissions", 0600}}));
    EXPECT_EQ(stage.callsOf("setMetadata"),
              (Lines{"setMetadata /d/QuillboxCopyFile.tmp " + std::to_string(0600),
                     "setMetadata /d/QuillboxCopyFile.tmp " + std::to_string(04444)}));
    options.keepsDestination = true;
    stage.calls.clear();
    EXPECT_EQ(copy("/d/b"), Status::Success);
    EXPECT_EQ(stage.callsOf("createFile"), Lines{"createFile /d OWN attributes unique progress"});
    options.carriesPermissions = false;
    options.carriesExtendedAttributes = true;
    stage.calls.clear();
    EXPECT_EQ(copy("/d/b"), Status::Success);
    EXPECT_EQ(stage.callsOf("createFile"), Lines{"createFile /d OWN unique progress"});
}

TEST_F(CopyWithOptions, DatesAreSetBeforeTheFileIsReadOnly) {
    options.carriesPermissions = true;
    EXPECT_EQ(copy("/d/b"), Status::Success);
    const std::size_t readOnly = at("setMetadata", at("write"));
    EXPECT_LT(at("setCreationDate", at("write")), readOnly);
    EXPECT_LT(at("setModificationDate", at("write")), readOnly);
}

TEST_F(CopyWithOptions, WhatHasNoPlaceIsLostSilently) {
    options.carriesPermissions = options.carriesExtendedAttributes = true;
    support.answers["setMetadata"] = Status::NotSupported;
    expectNew(copy("/d/b"));
    lay();
    stage.support = nullptr;
    expectNew(copy("/d/b"));
}

TEST_F(CopyWithOptions, WhatCouldNotBeCarriedIsTold) {
    options.carriesExtendedAttributes = options.keepsDestination = true;
    support.answers["setMetadata"] = Status{-1};
    expectOld(Status{-1}, copy("/d/b"));
    lay();
    stage.failing = {"metadata /s/a"};
    expectOld(Status{-205}, copy("/d/b"));
}

TEST_F(CopyWithOptions, HolesStayHoles) {
    options.carriesHoles = true;
    support.stretches = {{1, 1}, {6, 1}};
    stage.addFile("/s/a", std::string("\0x\0\0\0\0y\0\0\0", 10));
    EXPECT_EQ(copy("/d/c"), Status::Success);
    EXPECT_EQ(stage.callsOf("write"),
              (Lines{"write /d/QuillboxCopyFile.tmp 1+1 (/d/QuillboxCopyFile.tmp)",
                     "write /d/QuillboxCopyFile.tmp 6+1 (/d/QuillboxCopyFile.tmp)"}));
    EXPECT_EQ(stage.callsOf("read").back(), "read /s/a 9+1 (/s/a)");
    EXPECT_EQ(stage.callsOf("setLength").size(), 1U);
    EXPECT_EQ(stage.text("/d/c"), stage.text("/s/a"));
    EXPECT_EQ(percents, (std::vector<float>{40, 80, 100}));
}

TEST_F(CopyWithOptions, ManyStretchesOfDataLieInOneChunk) {
    options.carriesHoles = true;
    support.stretches = {{0, 1}, {2, 1}, {3, 3}, {9, 1}};
    stage.addFile("/s/a", std::string("a\0bcde\0\0\0f", 10));
    EXPECT_EQ(copy("/d/c"), Status::Success);
    EXPECT_EQ(stage.text("/d/c"), stage.text("/s/a"));
    EXPECT_TRUE(stage.callsOf("setLength").empty());
}

TEST_F(CopyWithOptions, AFileOfNothingButAHole) {
    options.carriesHoles = true;
    stage.addFile("/s/a", std::string(10, '\0'));
    EXPECT_EQ(copy("/d/c"), Status::Success);
    EXPECT_TRUE(stage.callsOf("write").empty());
    EXPECT_EQ(stage.callsOf("nextData").size(), 1U);
    EXPECT_EQ(stage.text("/d/c"), stage.text("/s/a"));
    // Without a way to grow by a hole the last byte is written.
    support.answers["setLength"] = Status::NotSupported;
    EXPECT_EQ(copy("/d/e"), Status::Success);
    EXPECT_EQ(stage.text("/d/e"), stage.text("/s/a"));
    support.answers["setLength"] = Status{-1};
    EXPECT_EQ(copy("/d/f"), Status{-1});
}

TEST_F(CopyWithOptions, ASourceThatHasShrunkHasNoHoleAtItsEnd) {
    options.carriesHoles = options.keepsDestination = true;
    support.stretches = {{0, 4}};
    stage.at["read /s/a 0+4 (/s/a)"] = [&] { stage.addFile("/s/a", "01234"); };
    EXPECT_EQ(copy("/d/b"), Status{-205});
    EXPECT_EQ(stage.text("/d/b"), "old");
}

// isWhole, freeSpaceFloor

/// A file of 5 GiB with places of 64 bits, whose chunks have 1 GiB and hold nothing.
class WholeFileInfo : public StagedFileInfo {
  public:
    static std::shared_ptr<WholeFileInfo> at(CopyStage& stage, std::string_view path) {
        const auto item = internal::allocateItem<WholeFileInfo>();
        item->initWithStage(stage, path);
        return item;
    }
    std::uint64_t size() override { return std::uint64_t{1} << 30; } // the low 32 bits
    std::uint64_t wholeSize() override { return std::uint64_t{5} << 30; }
    std::uint64_t preferredChunkSize() override { return std::uint64_t{1} << 30; }
    bool cloneRange(FileRange range, OpenFileToken* /*readFileUserData*/,
                    TavBaseFileInfo* /*destination*/,
                    OpenFileToken* /*writeFileUserData*/) override {
        enter("cloneRange", std::to_string(range.location));
        return true;
    }
    std::optional<Data> fileContentsWithWholeRange(WholeFileRange range,
                                                   OpenFileToken* /*readFileUserData*/) override {
        enter("readWhole", std::to_string(range.location) + '+' + std::to_string(range.length));
        return std::nullopt;
    }

  protected:
    WholeFileInfo() = default;
};

TEST_F(CopyWithOptions, AWholeCopyHasSizesAndPlacesOf64Bits) {
    const auto large = WholeFileInfo::at(stage, "/s/a");
    stage.chunkSizes[plainName] = std::uint64_t{1} << 30;
    EXPECT_EQ(large->copyTo(item("/d/c").get(), false, nullptr, nullptr, nullptr), Status::Success);
    EXPECT_EQ(stage.callsOf("cloneRange"), Lines{"cloneRange /s/a 0"});
    stage.calls.clear();
    options.isWhole = true;
    EXPECT_EQ(large->copyTo(item("/d/e").get(), false, nullptr, nullptr, nullptr, options),
              Status{-205});
    EXPECT_EQ(stage.callsOf("cloneRange"),
              (Lines{"cloneRange /s/a 0", "cloneRange /s/a 1073741824",
                     "cloneRange /s/a 2147483648", "cloneRange /s/a 3221225472"}));
    EXPECT_EQ(stage.callsOf("readWhole"), Lines{"readWhole /s/a 4294967296+1073741824"});
    stage.freeSpace = (std::uint64_t{5} << 30) - 1;
    EXPECT_EQ(large->copyTo(item("/d/e").get(), false, nullptr, nullptr, nullptr, options),
              Status{-209});
}

TEST_F(CopyWithOptions, AVerifiedCopyOfAPartIsNotVerified) {
    stage.toldSizes["/s/a"] = 4; // as 32 bits of a larger size do
    options.verifies = true;
    EXPECT_EQ(copy("/d/c"), Status{-211});
    EXPECT_EQ(stage.text("/d/c"), "(none)");
}

TEST_F(CopyWithOptions, AWholeCopyLeansOnPlacesOf32BitsWhereThereAreNoOthers) {
    options.isWhole = true;
    expectNew(copy("/d/b"));
}

TEST_F(CopyWithOptions, LeavesMoreRoomThanTheFolderKeeps) {
    options.freeSpaceFloor = 5;
    stage.spaceToKeep = 2;
    stage.freeSpace = 16;
    EXPECT_EQ(copy("/d/c"), Status{-209});
    stage.freeSpace = 17;
    EXPECT_EQ(copy("/d/c"), Status::Success);
    options.freeSpaceFloor = std::numeric_limits<std::uint64_t>::max();
    EXPECT_EQ(copy("/d/e"), Status{-209});
}

TEST_F(CopyWithOptions, WithoutRoomTheOldFileStays) {
    options.keepsDestination = true;
    stage.freeSpace = 9;
    expectOld(Status{-209}, copy("/d/b"));
    EXPECT_EQ(deeds(), Lines{});
}

TEST_F(CopyWithOptions, ADeviceThatDrivesTheCopyKnowsOfNone) {
    const auto destination = item("/d");
    destination->setDeviceControlsCopy(true);
    options.freeSpaceFloor = 1;
    EXPECT_EQ(source->copyTo(destination.get(), false, nullptr, nullptr, &out, options),
              Status{-220});
    EXPECT_TRUE(stage.callsOf("copyFromFile").empty());
}

TEST_F(CopyWithOptions, ToNilCrashesNowhere) {
    for (const bool empty : {false, true}) {
        stage.addFile("/s/a", empty ? "" : "x");
        for (int bits = 1; bits < 128; ++bits) {
            options = optionsOf(bits);
            EXPECT_EQ(source->copyTo(nullptr, false, nullptr, nullptr, &out, options),
                      options.isDurable ? Status{-220} : Status{empty ? -202 : -209});
        }
    }
}

TEST_F(CopyWithOptions, AllCombinationsCopyTheFile) {
    support.stretches = {{0, 10}};
    for (int bits = 1; bits < 128; ++bits) {
        SCOPED_TRACE(bits);
        lay();
        options = optionsOf(bits);
        expectNew(copy("/d/b"));
        EXPECT_EQ(percents, (std::vector<float>{40, 80, 100}));
        EXPECT_EQ(stage.callsOf("syncFolder").size(), options.isDurable ? 1U : 0U);
    }
}

} // namespace
} // namespace tav
