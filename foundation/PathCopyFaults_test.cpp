// Copies and moves in which one call fails, is the last of the process, or finds the source
// changed.

#include "foundation/PathCopy_test.hpp"
#include "testing/ForkedProcess.hpp"

#include <functional>

#include <signal.h>

namespace tav {
namespace {

constexpr int faults[] = {ENOSPC, EIO, EINTR, EDQUOT};

class PathCopyFaults : public PathCopyTest {
  protected:
    /// Every move is one to another volume.
    void separateVolumes() { faulty.failOperation("move", EXDEV); }
    /// On a disk, where every tree and every sync takes milliseconds, not each combination is tried
    /// that is tried in memory.
    static std::size_t strideHere() { return GetParam() == Kind::Real ? 5 : 1; }
    static std::vector<int> faultsOfMoves() {
        return GetParam() == Kind::Real ? std::vector<int>{EIO}
                                        : std::vector<int>(std::begin(faults), std::end(faults));
    }
    Status run(bool moves, std::string_view from, std::string_view to) {
        return moves ? move(from, to) : copy(from, to);
    }
    /// Does something with a fresh source for each call that a fault may hit, until none is left.
    /// The action has the number of the call and answers whether it was reached.
    static void sweep(const std::function<bool(std::size_t)>& action, std::size_t stride = 1) {
        std::size_t call = 1;
        while (action(call)) {
            call += stride;
            ASSERT_LT(call, 1000U);
        }
        EXPECT_GT(call, 10U);
    }
};

INSTANTIATE_TEST_SUITE_P(Worlds, PathCopyFaults, testing::Values(Kind::Real, Kind::Memory),
                         nameOfWorld);

TEST_P(PathCopyFaults, ACopyThatFailsLeavesNothingAndTheSourceAlone) {
    makeSource();
    makeFile("file", pattern(70'000));
    makeLink("link", "file");
    for (const char* name : {"from", "file", "link"}) {
        const Picture before = pictureOf(name);
        for (const int error : faults) {
            std::size_t call = 1;
            for (bool isReached = true; isReached; ++call) {
                faulty.restartCount();
                faulty.failCall(call, error);
                const Status status = copy(name, "to");
                isReached = faulty.callCount() >= call;
                faulty.failCall(0, 0);
                EXPECT_TRUE(pictureOf(name) == before) << call;
                if (status == Status::Success) {
                    EXPECT_TRUE(contentsOf(pictureOf("to")) == contentsOf(before)) << call;
                } else {
                    EXPECT_EQ(status, statusFromErrorNumber(error)) << call;
                    EXPECT_FALSE(stands("to")) << name << ' ' << call << ' ' << error;
                }
                removeAll("to");
                ASSERT_LT(call, 1000U);
            }
            EXPECT_GT(call, 5U);
        }
    }
}

TEST_P(PathCopyFaults, AMoveThatFailsLosesNothing) {
    separateVolumes();
    for (const int error : faultsOfMoves()) {
        sweep([&](std::size_t call) {
            removeAll("from");
            makeSource();
            const Picture before = contentsOf(pictureOf("from"));
            faulty.restartCount();
            faulty.failCall(call, error);
            const Status status = move("from", "to");
            const bool isReached = faulty.callCount() >= call;
            faulty.failCall(0, 0);
            const bool isCopied = contentsOf(pictureOf("to")) == before;
            EXPECT_TRUE(isCopied || contentsOf(pictureOf("from")) == before) << call;
            if (status == Status::Success) {
                EXPECT_TRUE(isCopied && !stands("from")) << call;
            } else {
                EXPECT_EQ(status, statusFromErrorNumber(error)) << call;
                EXPECT_TRUE(isCopied || !stands("to")) << call;
            }
            removeAll("to");
            return isReached;
        });
    }
}

TEST_P(PathCopyFaults, AMoveOfAFileThatFailsLosesNothing) {
    separateVolumes();
    for (const int error : faultsOfMoves()) {
        sweep([&](std::size_t call) {
            makeFile("from", "content");
            faulty.restartCount();
            faulty.failCall(call, error);
            const Status status = move("from", "to");
            const bool isReached = faulty.callCount() >= call;
            faulty.failCall(0, 0);
            EXPECT_TRUE(read("to") == "content" || read("from") == "content") << call;
            EXPECT_EQ(stands("from"), status != Status::Success) << call;
            removeAll("to");
            return isReached;
        });
    }
}

TEST_P(PathCopyFaults, WhenTheSourceCannotBeRemovedBothStay) {
    separateVolumes();
    makeFile("from", "content");
    faulty.failOperation("removeFile", EACCES);
    EXPECT_EQ(move("from", "to"), statusFromErrorNumber(EACCES));
    EXPECT_EQ(read("from"), "content");
    EXPECT_EQ(read("to"), "content");
}

TEST_P(PathCopyFaults, AMoveWaitsForTheMediumBeforeTheSourceGoes) {
    separateVolumes();
    makeFile("from", "content");
    faulty.failOperation("OpenFile.sync", EIO);
    EXPECT_EQ(move("from", "to"), statusFromErrorNumber(EIO));
    faulty.failOperation("OpenFile.sync", 0);
    faulty.failOperation("syncFolder", EIO);
    EXPECT_EQ(move("from", "to"), statusFromErrorNumber(EIO));
    EXPECT_EQ(namesIn("."), Names{"from"});
    // Where nothing can be waited for, nothing is.
    faulty.failOperation("OpenFile.sync", EINVAL);
    faulty.failOperation("syncFolder", EINVAL);
    EXPECT_EQ(move("from", "to"), Status::Success);
    EXPECT_EQ(namesIn("."), Names{"to"});
}

TEST_P(PathCopyFaults, AChangedSourceIsNotRemoved) {
    separateVolumes();
    struct Change {
        const char* what;
        std::function<void()> make;
    };
    const std::vector<Change> changes = {
        {"grown", [&] { makeFile("from/inner/file\xFF", "content and more"); }},
        {"new", [&] { makeFile("from/inner/new", "new"); }},
        {"gone", [&] { ASSERT_TRUE(files.removeFile(path("from/none")).isNone()); }},
    };
    for (const Change& change : changes) {
        makeSource();
        setPermissions("from/inner", 0750);
        // The first sync comes when a file has been read, and the last before the source goes.
        faulty.restartCount();
        EXPECT_EQ(copy("from", "counted"), Status::Success);
        const std::size_t calls = faulty.callCount();
        faulty.restartCount();
        faulty.atCall(calls + 1, change.make); // late in the copy, which syncs besides
        const Status status = move("from", "to");
        EXPECT_TRUE(status == statusFromErrorNumber(ESTALE) ||
                    status == statusFromErrorNumber(ENOENT))
            << change.what;
        EXPECT_FALSE(stands("to")) << change.what;
        EXPECT_EQ(read("from/.hidden"), pattern(70'000)) << change.what;
        removeAll("from");
        removeAll("counted");
    }
}

TEST_P(PathCopyFaults, WhatComesToTheSourceIsLostAtNoMoment) {
    separateVolumes();
    sweep(
        [&](std::size_t call) {
            makeSource();
            setPermissions("from/inner", 0750);
            faulty.restartCount();
            faulty.atCall(call, [&] {
                // Once its folder is gone there is no place for it.
                static_cast<void>(files.writeFile(path("from/inner/new"), bytesOf("new"), 0600));
            });
            const Status status = move("from", "to");
            const bool isReached = faulty.callCount() >= call;
            EXPECT_TRUE(!isReached || status != Status::Success || !stands("from")) << call;
            EXPECT_TRUE(read("to/inner/file\xFF") == "content" ||
                        read("from/inner/file\xFF") == "content")
                << call;
            if (stands("from/inner")) {
                EXPECT_TRUE(!isReached || read("from/inner/new") == "new") << call;
            }
            removeAll("from");
            removeAll("to");
            return isReached;
        },
        strideHere());
}

TEST_P(PathCopyFaults, AFileThatChangesMeanwhileEndsInAStatus) {
    const std::vector<std::function<void()>> changes = {
        [&] { makeFile("from", ""); },
        [&] { makeFile("from", pattern(50'000)); },
        [&] { makeFile("from", pattern(500'000)); },
        [&] { static_cast<void>(files.removeFile(path("from"))); },
        [&] {
            if (files.removeFile(path("from")).isNone()) {
                makeFolder("from");
            }
        },
        [&] {
            if (files.removeFile(path("from")).isNone()) {
                makeLink("from", "other");
            }
        }};
    makeFile("other", "secret");
    for (const auto& change : changes) {
        sweep([&](std::size_t call) {
            makeFile("from", pattern(100'000));
            faulty.restartCount();
            faulty.atCall(call, change);
            const Status status = copy("from", "to");
            const bool isReached = faulty.callCount() >= call;
            if (status != Status::Success) {
                EXPECT_FALSE(stands("to")) << call;
            } else if (attributesOf("to").kind == FileKind::Regular) {
                EXPECT_NE(read("to"), "secret") << call;
            }
            faulty.atCall(call, [] {});
            removeAll("from");
            removeAll("to");
            return isReached;
        });
    }
}

TEST_P(PathCopyFaults, ATreeThatChangesMeanwhileEndsInAStatus) {
    makeFolder("outside");
    makeFile("outside/file\xFF", "secret");
    const std::vector<std::function<void()>> changes = {
        [&] { makeFile("from/inner/file\xFF", ""); },
        [&] { static_cast<void>(files.removeFile(path("from/inner/file\xFF"))); },
        [&] {
            if (errorOfMove("from/inner", "aside", Replace::No) == 0) {
                makeLink("from/inner", "../outside");
            }
        },
        [&] {
            if (errorOfMove("from/inner", "aside", Replace::No) == 0) {
                makeFile("from/inner", "file");
            }
        },
        [&] {
            if (files.removeFile(path("from/inner/file\xFF")).isNone()) {
                makeLink("from/inner/file\xFF", "../../outside/file\xFF");
            }
        },
        [&] {
            if (errorOfMove("from", "aside", Replace::No) == 0) {
                makeLink("from", "outside");
            }
        }};
    for (const auto& change : changes) {
        sweep(
            [&](std::size_t call) {
                makeSource();
                setPermissions("from/inner", 0750);
                faulty.restartCount();
                faulty.atCall(call, change);
                const Status status = copy("from", "to");
                const bool isReached = faulty.callCount() >= call;
                EXPECT_EQ(stands("to"), status == Status::Success) << call;
                const auto made = pictureOf("to");
                EXPECT_TRUE(std::ranges::none_of(made, [](const auto& each) {
                    return each.second.ends_with("secret");
                })) << call;
                faulty.atCall(call, [] {});
                for (const char* left : {"from", "to", "aside"}) {
                    removeAll(left);
                }
                EXPECT_EQ(read("outside/file\xFF"), "secret");
                return isReached;
            },
            strideHere());
    }
}

class PathCopyEnds : public PathCopyFaults {};

INSTANTIATE_TEST_SUITE_P(Worlds, PathCopyEnds, testing::Values(Kind::Real), nameOfWorld);

TEST_P(PathCopyEnds, AtEveryCallTheSourceOrTheWholeCopyIsThere) {
    separateVolumes();
    for (const bool moves : {false, true}) {
        for (const bool isWithin : {false, true}) {
            if (moves && isWithin) {
                continue; // it writes as a copy does
            }
            makeSource();
            const Picture before = pictureOf("from");
            const Picture contents = contentsOf(before);
            sweep([&](std::size_t call) {
                const ProcessEnd end = runForked([&] {
                    faulty.restartCount();
                    if (isWithin) {
                        faulty.endProcessWithinCall(call);
                    } else {
                        faulty.endProcessAtCall(call);
                    }
                    return run(moves, "from", "to") == Status::Success ? 0 : 1;
                });
                const bool isReached = end.signal == SIGKILL;
                EXPECT_TRUE(isReached || end == ProcessEnd()) << call;
                if (moves) {
                    EXPECT_TRUE(contentsOf(pictureOf("from")) == contents ||
                                contentsOf(pictureOf("to")) == contents)
                        << call;
                    removeAll("from");
                    makeSource();
                } else {
                    EXPECT_TRUE(pictureOf("from") == before) << call;
                }
                removeAll("to");
                return isReached;
            });
            removeAll("from");
        }
    }
}

TEST(PathCopyInMemory, WhatGrewIsNotRemovedAlsoWhereTheClockStandsStill) {
    MemoryFileSystem memory;
    memory.keepsTwoSecondDates = true;
    FaultyFileSystem faulty(memory);
    const FileSystem::Replacement replaced(faulty);
    faulty.failOperation("move", EXDEV);
    for (const std::string source : {"/file", "/folder"}) {
        const std::string file = source == "/file" ? source : source + "/file";
        memory.addFile(file, "content");
        faulty.restartCount();
        EXPECT_EQ(copyPath(source, "/counted"), Status::Success);
        const std::size_t calls = faulty.callCount();
        const Date before = memory.attributes(file).value().changeDate;
        faulty.restartCount();
        faulty.atCall(calls + 1, [&] { memory.addFile(file, "content and more"); });
        EXPECT_EQ(movePath(source, "/to"), statusFromErrorNumber(ESTALE)) << source;
        EXPECT_EQ(memory.attributes(file).value().changeDate, before);
        EXPECT_EQ(memory.attributes(file).value().size, 16U);
        EXPECT_FALSE(memory.attributes("/to").ok());
        memory.removeAll("/counted");
    }
}

} // namespace
} // namespace tav
