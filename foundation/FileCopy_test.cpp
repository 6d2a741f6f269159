#include "base/Exception.hpp"
#include "base/PathString.hpp"
#include "foundation/FileManager.hpp"
#include "foundation/FileManager_test.hpp"
#include "foundation/FolderTree.hpp"

#include <functional>
#include <tuple>

#include <sys/stat.h>

namespace tav {
namespace {

using Report = std::tuple<std::uint64_t, std::uint64_t, std::uint64_t>;

/// What a progress function was told, and when it cancels.
struct Reports {
    std::vector<Report> all;
    std::size_t cancelAt = 0; ///< The number of the call, the first being 1; 0 for never.
    std::function<void()> action;
};

int note(void* context, std::uint64_t step, std::uint64_t offset, std::uint64_t total) {
    auto& reports = *static_cast<Reports*>(context);
    reports.all.emplace_back(step, offset, total);
    if (reports.action) {
        reports.action();
    }
    return reports.all.size() == reports.cancelAt ? 7 : 0;
}

class CopyFile : public FileManagerTest {
  protected:
    Status copy(std::string_view from, std::string_view to) {
        return copyFile(path(from), path(to), note, &reports);
    }
    Status copyInSilence(std::string_view from, std::string_view to) {
        return copyFile(path(from), path(to), nullptr, nullptr);
    }

    Reports reports;
};

INSTANTIATE_TEST_SUITE_P(Worlds, CopyFile, testing::Values(Kind::Real, Kind::Memory), nameOfWorld);

TEST_P(CopyFile, CopiesTheContentAndRemovesTheSource) {
    makeFile("from", "content");
    EXPECT_EQ(copyInSilence("from", "to"), Status::Success);
    EXPECT_EQ(read("to"), "content");
    EXPECT_FALSE(stands("from"));
}

TEST_P(CopyFile, MakesTheFoldersOfTheDestination) {
    makeFile("from\xFF", "content");
    EXPECT_EQ(copyInSilence("from\xFF", "a/b/t\xFFo"), Status::Success);
    EXPECT_EQ(read("a/b/t\xFFo"), "content");
}

TEST_P(CopyFile, AFileInPlaceOfTheDestinationsFolderIsRemoved) {
    makeFile("from", "content");
    makeFile("a", "x");
    EXPECT_EQ(copyInSilence("from", "a/to"), Status::Success);
    EXPECT_EQ(read("a/to"), "content");
}

TEST_P(CopyFile, AnEmptyFileIsReportedOnce) {
    makeFile("from");
    EXPECT_EQ(copy("from", "to"), Status::Success);
    EXPECT_EQ(reports.all, (std::vector<Report>{{0, 0, 0}}));
    EXPECT_EQ(read("to"), "");
}

TEST_P(CopyFile, UpTo5MiBGoInStepsOf256KiB) {
    const std::string content = pattern(0x500000);
    makeFile("from", content);
    EXPECT_EQ(copy("from", "to"), Status::Success);
    std::vector<Report> expected = {{0, 0, 0x500000}};
    for (std::uint64_t offset = 0x40000; offset <= 0x500000; offset += 0x40000) {
        expected.emplace_back(0x40000, offset, 0x500000);
    }
    EXPECT_EQ(reports.all, expected);
    EXPECT_TRUE(read("to") == content);
}

TEST_P(CopyFile, MoreThan5MiBGoInStepsOf1MiB) {
    const std::string content = pattern(0x500001);
    makeFile("from", content);
    EXPECT_EQ(copy("from", "to"), Status::Success);
    EXPECT_EQ(reports.all, (std::vector<Report>{{0, 0, 0x500001},
                                                {0x100000, 0x100000, 0x500001},
                                                {0x100000, 0x200000, 0x500001},
                                                {0x100000, 0x300000, 0x500001},
                                                {0x100000, 0x400000, 0x500001},
                                                {0x100000, 0x500000, 0x500001},
                                                {1, 0x500001, 0x500001}}));
    EXPECT_TRUE(read("to") == content);
}

TEST_P(CopyFile, TheSourceIsGoneBeforeAnythingIsCopied) {
    makeFile("from", "content");
    reports.action = [&] { EXPECT_FALSE(stands("from")); };
    EXPECT_EQ(copy("from", "to"), Status::Success);
    EXPECT_EQ(reports.all.size(), 2U);
}

TEST_P(CopyFile, ACancelAtOnceCopiesNothing) {
    makeFile("from", "content");
    reports.cancelAt = 1;
    EXPECT_EQ(copy("from", "to"), Status::Failure);
    EXPECT_FALSE(stands("from"));
    EXPECT_EQ(read("to"), "");
    EXPECT_EQ(reports.all.size(), 1U);
}

TEST_P(CopyFile, ACancelRemovesWhatCameToStandAtTheSource) {
    makeFile("from", "content");
    reports.cancelAt = 1;
    reports.action = [&] { makeFile("from", "new"); };
    EXPECT_EQ(copy("from", "to"), Status::Failure);
    EXPECT_FALSE(stands("from"));
    // A success does not.
    makeFile("from", "content");
    reports = {};
    reports.action = [&] { makeFile("from", "new"); };
    EXPECT_EQ(copy("from", "other"), Status::Success);
    EXPECT_EQ(read("from"), "new");
}

TEST_P(CopyFile, AFailureRemovesWhatCameToStandAtTheSource) {
    makeFile("from", "content");
    reports.action = [&] { makeFile("from", "new"); };
    faulty.failOperation("OpenFile.write", ENOSPC);
    EXPECT_EQ(copy("from", "to"), statusFromErrorNumber(ENOSPC));
    EXPECT_EQ(reports.all.size(), 1U);
    EXPECT_FALSE(stands("from"));
}

TEST_P(CopyFile, AFolderThatCameToStandAtTheSourceStays) {
    makeFile("from", "content");
    reports.cancelAt = 1;
    reports.action = [&] { makeFolder("from"); };
    EXPECT_EQ(copy("from", "to"), Status::Failure);
    EXPECT_TRUE(isFolder("from"));
}

TEST_P(CopyFile, ACancelBetweenStepsKeepsWhatWasWritten) {
    const std::string content = pattern(0x90000);
    makeFile("from", content);
    reports.cancelAt = 2;
    EXPECT_EQ(copy("from", "to"), Status::Failure);
    EXPECT_TRUE(read("to") == content.substr(0, 0x40000));
    EXPECT_EQ(reports.all.size(), 2U);
}

TEST_P(CopyFile, ACancelAfterTheLastStepCountsToo) {
    makeFile("from", "content");
    reports.cancelAt = 2;
    EXPECT_EQ(copy("from", "to"), Status::Failure);
    EXPECT_EQ(read("to"), "content");
}

TEST_P(CopyFile, ASourceThatCannotBeOpenedStays) {
    makeFolder("folder");
    makeFile("folder/file", "x");
    EXPECT_EQ(copy("folder", "to"), statusFromErrorNumber(EISDIR));
    EXPECT_EQ(copy("missing", "to"), statusFromErrorNumber(ENOENT));
    EXPECT_EQ(copyFile("", path("to"), nullptr, nullptr), statusFromErrorNumber(ENOENT));
    EXPECT_EQ(read("folder/file"), "x");
    if (GetParam() == Kind::Real) {
        ASSERT_EQ(::mkfifo(path("pipe").c_str(), 0600), 0);
        EXPECT_EQ(copy("pipe", "to"), statusFromErrorNumber(EINVAL));
        EXPECT_TRUE(stands("pipe"));
    }
    EXPECT_FALSE(stands("to"));
    EXPECT_TRUE(reports.all.empty());
}

TEST_P(CopyFile, OfALinkTheContentIsCopiedAndTheLinkRemoved) {
    makeFile("target", "content");
    makeLink("link", "target");
    EXPECT_EQ(copyInSilence("link", "to"), Status::Success);
    EXPECT_EQ(attributesOf("to").kind, FileKind::Regular);
    EXPECT_EQ(read("to"), "content");
    EXPECT_EQ(read("target"), "content");
    EXPECT_FALSE(stands("link"));
}

TEST_P(CopyFile, AnExistingDestinationIsAFailureThatCostsTheSource) {
    makeFile("from", "content");
    makeFile("to", "old");
    EXPECT_EQ(copy("from", "to"), statusFromErrorNumber(EEXIST));
    EXPECT_EQ(read("to"), "old");
    EXPECT_FALSE(stands("from"));
    makeFile("from", "content");
    makeLink("link", "missing");
    EXPECT_EQ(copy("from", "link"), statusFromErrorNumber(EEXIST));
    EXPECT_FALSE(stands("missing"));
    EXPECT_TRUE(reports.all.empty());
}

TEST_P(CopyFile, OntoItselfMakesTheFileAnew) {
    makeFile("from", "content");
    const FileIdentity before = attributesOf("from").identity;
    EXPECT_EQ(copyInSilence("from", "from"), Status::Success);
    EXPECT_EQ(read("from"), "content");
    EXPECT_NE(attributesOf("from").identity, before);
}

TEST_P(CopyFile, ASourceThatCannotBeRemovedIsCopiedAllTheSame) {
    makeFile("from", "content");
    faulty.failOperation("removeFile", EACCES);
    EXPECT_EQ(copyInSilence("from", "to"), Status::Success);
    EXPECT_EQ(read("to"), "content");
    EXPECT_EQ(read("from"), "content");
}

TEST_P(CopyFile, ASourceThatIsCutMeanwhileIsAnError) {
    makeFile("target", pattern(0x90000));
    makeLink("link", "target");
    reports.action = [&] {
        if (reports.all.size() == 2) {
            makeFile("target", pattern(0x50000));
        }
    };
    EXPECT_EQ(copy("link", "to"), statusFromErrorNumber(EIO));
    EXPECT_EQ(reports.all,
              (std::vector<Report>{
                  {0, 0, 0x90000}, {0x40000, 0x40000, 0x90000}, {0x10000, 0x50000, 0x90000}}));
    EXPECT_TRUE(read("to") == pattern(0x50000));
}

TEST_P(CopyFile, ASourceThatGrowsMeanwhileIsCopiedAsFarAsItsOldSize) {
    makeFile("target", "content");
    makeLink("link", "target");
    reports.action = [&] { makeFile("target", "content and more"); };
    EXPECT_EQ(copy("link", "to"), Status::Success);
    EXPECT_EQ(read("to"), "content");
}

TEST_P(CopyFile, AThrowingProgressFunctionLeavesNothingOpen) {
    makeFile("from", "content");
    reports.action = [] { throw Exception("Test", "enough"); };
    EXPECT_THROW((void)copy("from", "to"), Exception);
}

TEST_P(CopyFile, EveryFaultIsAnswered) {
    // The source is opened (1) and removed (2); the destination's folder is looked at (3), what
    // stands there is removed (4), and each folder on its way is made, the missing one last.
    const std::size_t lastFolder = 4 + pathComponents(path("new")).size() - 1;
    for (const int error : sweptErrors) {
        for (std::size_t call = 1;; ++call) {
            makeFile("from", "content");
            faulty.restartCount();
            faulty.failCall(call, error);
            const Status status = copyInSilence("from", "new/to");
            const bool isDone = faulty.callCount() < call;
            faulty.failCall(0, 0);

            const bool isTold = call == 1 || call > lastFolder;
            const Status expected = isDone               ? Status::Success
                                    : call == lastFolder ? statusFromErrorNumber(ENOENT)
                                    : isTold             ? statusFromErrorNumber(error)
                                                         : Status::Success;
            EXPECT_EQ(status, expected) << call;
            if (status == Status::Success) {
                EXPECT_EQ(read("new/to"), "content") << call;
            }
            // The source stays only where nothing was begun, or where just its removal failed.
            EXPECT_EQ(stands("from"), call <= 2) << call;
            for (const char* left : {"new/to", "new", "from"}) {
                if (stands(left)) {
                    ASSERT_TRUE(removeItem(path(left)).isNone());
                }
            }
            if (isDone) {
                EXPECT_EQ(call, lastFolder + 7); // open, size, read, write, two closings
                break;
            }
        }
    }
}

TEST_P(CopyFile, AFailureOfEachStepIsItsStatus) {
    makeFolder("there");
    for (const char* operation :
         {"open", "OpenFile.attributes", "OpenFile.read", "OpenFile.write", "OpenFile.close"}) {
        makeFile("from", "content");
        faulty.failOperation(operation, EDQUOT);
        EXPECT_EQ(copyInSilence("from", "there/to"), statusFromErrorNumber(EDQUOT)) << operation;
        faulty.failOperation(operation, 0);
        EXPECT_EQ(stands("from"), std::string_view(operation) == "open");
        if (stands("there/to")) {
            ASSERT_TRUE(files.removeFile(path("there/to")).isNone());
        }
    }
}

TEST_P(CopyFile, AFullDiskKeepsWhatWasWritten) {
    makeFile("from", "content");
    faulty.restartCount();
    EXPECT_EQ(copyInSilence("from", "a"), Status::Success);
    const std::size_t calls = faulty.callCount();
    makeFile("from", "content");
    faulty.restartCount();
    faulty.shortWriteCall(calls - 2, 3); // write, and both are closed
    EXPECT_EQ(copyInSilence("from", "b"), statusFromErrorNumber(ENOSPC));
    EXPECT_EQ(read("b"), "con");
    EXPECT_FALSE(stands("from"));
}

TEST(CopyFileRelative, WorksInTheWorkingFolder) {
    MemoryFileSystem memory;
    memory.addFile("/from", "content");
    const FileSystem::Replacement replacement(memory);
    EXPECT_EQ(copyFile("from", "to", nullptr, nullptr), Status::Success);
    EXPECT_TRUE(memory.attributes("/to").ok());
}

} // namespace
} // namespace tav
