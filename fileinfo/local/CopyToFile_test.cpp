// A local file copied onto another one, chunk by chunk.

#include "fileinfo/local/CopyToFile_test.hpp"

#include "fileinfo/DeviceFileInfo_test.hpp"
#include "platform/Localization.hpp"
#include "platform/memory/MemorySystemLog.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <functional>
#include <limits>
#include <stdexcept>

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

namespace tav {
namespace {

constexpr std::size_t chunk = std::size_t{1} << 20U;
const Date someDate(300000001.5);
const Date earlierDate(200000000.25);

TEST_F(CopyToFileTest, CopiesTheContentAndBothDates) {
    const std::string text = longText(2 * chunk + chunk / 2);
    memory.addFile("/a", text);
    at("/a")->setCreationDate(earlierDate);
    at("/a")->setModificationDate(someDate);
    const ProgressDelegate progress = delegate();
    int user = 0;
    const Item destination = at("/b");
    at("/a")->copyToFile(destination.get(), &progress, &user);
    EXPECT_TRUE(contentOf("/b") == text);
    EXPECT_EQ(at("/b")->creationDate(), earlierDate);
    EXPECT_EQ(at("/b")->modificationDate(), someDate);
    EXPECT_EQ(destination->modificationDate(), someDate);
    EXPECT_EQ(destination->size(), text.size());
    // Before and after each chunk, and once more in the end.
    EXPECT_EQ(percents, (Percents{20, 40, 60, 80, 90, 100, 100}));
    EXPECT_EQ(paths, "/a to /b");
    EXPECT_EQ(pointer, &user);
}

TEST_F(CopyToFileTest, AnEmptyFileIsReportedOnce) {
    memory.addFile("/a", "");
    at("/a")->setCreationDate(earlierDate);
    at("/a")->setModificationDate(someDate);
    memory.addFile("/b", "old");
    const ProgressDelegate progress = delegate();
    EXPECT_EQ(raisedByCopy("/a", "/b", &progress), "nothing");
    EXPECT_EQ(contentOf("/b"), "");
    EXPECT_EQ(percents, Percents{100});
    EXPECT_EQ(at("/b")->creationDate(), earlierDate);
    EXPECT_EQ(at("/b")->modificationDate(), someDate);
}

TEST_F(CopyToFileTest, OneChunkIsReportedAtItsHalfItsEndAndTheEnd) {
    memory.addFile("/a", "abc");
    const ProgressDelegate progress = delegate();
    EXPECT_EQ(raisedByCopy("/a", "/b", &progress), "nothing");
    EXPECT_EQ(percents, (Percents{50, 100, 100}));
}

TEST_F(CopyToFileTest, WithoutADelegateItCopiesAllTheSame) {
    memory.addFile("/a", "abc");
    EXPECT_EQ(raisedByCopy("/a", "/b"), "nothing");
    EXPECT_EQ(contentOf("/b"), "abc");
    const ProgressDelegate other; // answers nothing
    memory.addFile("/a", "abcd");
    EXPECT_EQ(raisedByCopy("/a", "/b", &other), "nothing");
    EXPECT_EQ(contentOf("/b"), "abcd");
}

TEST_F(CopyToFileTest, FoldersOnTheWayAreMade) {
    memory.addFile("/a", "abc");
    EXPECT_EQ(raisedByCopy("/a", "/x/y/b"), "nothing");
    EXPECT_EQ(contentOf("/x/y/b"), "abc");
}

TEST_F(CopyToFileTest, ALongerFileIsCut) {
    memory.addFile("/a", "abc");
    memory.addFile("/b", "0123456789");
    EXPECT_EQ(raisedByCopy("/a", "/b"), "nothing");
    EXPECT_EQ(contentOf("/b"), "abc");
}

TEST_F(CopyToFileTest, AFileIsNotCopiedOntoItself) {
    memory.addFile("/a", "abc");
    memory.addLink("/link", "/a");
    const ProgressDelegate progress = delegate(1);
    for (const std::string_view path : {"/a", "/A", "/link"}) {
        EXPECT_EQ(raisedByCopy("/a", path, &progress), "nothing") << path;
        EXPECT_EQ(raisedByCopy(path, "/a", &progress), "nothing") << path;
    }
    EXPECT_EQ(contentOf("/a"), "abc");
    EXPECT_FALSE(has("/A")); // equal ignoring case, whatever stands there
    EXPECT_EQ(percents, Percents{});
}

TEST_F(CopyToFileTest, WhatIsNoFileIsNotCopied) {
    memory.addFolder("/home/user/folder");
    memory.addFile("/home/user/a", "abc");
    EXPECT_EQ(raisedByCopy("/home/user/a", "/home/user/folder"),
              "copyToFile: Can't copy the file \"~/a\" because the destination \"~/folder\" is not "
              "a file.");
    EXPECT_EQ(raisedByCopy("/home/user/missing", "/home/user/b"),
              "copyToFile: Can't copy the file \"~/missing\" because it does not exist.");
    EXPECT_EQ(raisedByCopy("/home/user/folder", "/home/user/b"),
              "copyToFile: Can't copy the file \"~/folder\" because it is not a file.");
    // The destination is looked at first.
    EXPECT_EQ(raisedByCopy("/home/user/missing", "/home/user/folder"),
              "copyToFile: Can't copy the file \"~/missing\" because the destination \"~/folder\" "
              "is not a file.");
    EXPECT_FALSE(has("/home/user/b"));
}

TEST_F(CopyToFileTest, ReasonsAreInTheUsersLanguage) {
    const std::array<std::string, 1> languages = {"de"};
    const std::array<std::string, 1> shipped = {TAV_TESTDATA "/../resources"};
    Translations german(languages, shipped);
    const Translations::Replacement replacement(german);
    memory.addFile("/a", "abc");
    memory.addFolder("/folder");
    EXPECT_EQ(raisedByCopy("/a", "/folder"),
              "copyToFile: Die Datei „/a“ kann nicht kopiert werden, weil das Ziel „/folder“ keine "
              "Datei ist.");
    EXPECT_EQ(raisedByCopy("/missing", "/b"), "copyToFile: Die Datei „/missing“ kann nicht kopiert "
                                              "werden, weil sie nicht vorhanden ist.");
    EXPECT_EQ(raisedByCopy("/folder", "/b"),
              "copyToFile: „/folder“ kann nicht kopiert werden, weil es keine Datei ist.");
    const ProgressDelegate stopping = delegate(1);
    EXPECT_EQ(raisedByCopy("/a", "/b", &stopping),
              "copyToFile: Das Kopieren der Datei wurde abgebrochen.");
    const Item cancelled = at("/a");
    cancelled->cancelCopy();
    EXPECT_EQ(raisedBy([&] { cancelled->copyToFile(at("/b").get(), nullptr, nullptr); }),
              "File copy canceled: Kopieren der Datei „/a“ wurde abgebrochen");
    files.failOperation("OpenFile.readAt", EIO);
    EXPECT_EQ(raisedByCopy("/a", "/b"), "copyToFile: Die Datei „/a“ konnte nicht gelesen werden.");
    files.failOperation("OpenFile.readAt", 0);
    files.failOperation("OpenFile.write", EIO);
    EXPECT_EQ(raisedByCopy("/a", "/b"),
              "copyToFile: Die Datei „/b“ konnte nicht geschrieben werden.");
    files.failOperation("open", EACCES);
    EXPECT_EQ(raisedByCopy("/a", "/b"),
              "copyToFile: Die Datei „/a“ konnte nicht zum Lesen geöffnet werden.");
}

// Opening

TEST_F(CopyToFileTest, ASourceThatCannotBeOpenedLeavesTheDestination) {
    memory.addFile("/home/user/a", "abc");
    memory.addFile("/b", "old");
    files.failOperation("open", EACCES);
    EXPECT_EQ(raisedByCopy("/home/user/a", "/b"),
              "copyToFile: Could not open the file \"~/a\" for reading.");
    EXPECT_EQ(contentOf("/b"), "old");
    EXPECT_EQ(raisedByCopy("/home/user/a", "/new"),
              "copyToFile: Could not open the file \"~/a\" for reading.");
    EXPECT_FALSE(has("/new")); // which had been made already
}

TEST_F(CopyToFileTest, ADestinationThatCannotBeOpenedStays) {
    memory.addFile("/a", "abc");
    memory.addFile("/home/user/b", "old");
    files.failOperation("OpenFile.setSize", EIO);
    EXPECT_EQ(raisedByCopy("/a", "/home/user/b"),
              "copyToFile: Could not open the file \"~/b\" for writing.");
    EXPECT_EQ(contentOf("/home/user/b"), "old");
    files.failOperation("OpenFile.setSize", 0);
    files.failOperation("OpenFile.attributes", EIO);
    EXPECT_EQ(raisedByCopy("/a", "/home/user/new"),
              "copyToFile: Could not open the file \"~/new\" for writing.");
    EXPECT_FALSE(has("/home/user/new"));
    memory.addLink("/broken", "/nowhere");
    EXPECT_EQ(raisedByCopy("/a", "/broken"),
              "copyToFile: Could not open the file \"/broken\" for writing.");
    EXPECT_TRUE(has("/broken"));
    EXPECT_FALSE(has("/nowhere"));
    EXPECT_EQ(raisedByCopy("/a", "/home/user/b/inside"),
              "copyToFile: Could not open the file \"~/b/inside\" for writing.");
}

TEST_F(CopyToFileTest, WithoutADestinationNothingIsOpenedForWriting) {
    memory.addFile("/a", "abc");
    EXPECT_EQ(raisedBy([&] { at("/a")->copyToFile(nullptr, nullptr, nullptr); }),
              "copyToFile: Could not open the file \"(null)\" for writing.");
    EXPECT_EQ(raisedBy([&] { at("/missing")->copyToFile(nullptr, nullptr, nullptr); }),
              "copyToFile: Can't copy the file \"/missing\" because it does not exist.");
}

TEST_F(CopyToFileTest, AMissingFileOfAnotherBackEndIsNotMade) {
    memory.addFile("/a", "abc");
    MemoryFileSystem device;
    device.addFolder("/E");
    const auto elsewhere = DeviceFileInfo::at(device, "E:\\b");
    EXPECT_EQ(raisedBy([&] { at("/a")->copyToFile(elsewhere.get(), nullptr, nullptr); }),
              "copyToFile: Could not open the file \"E:\\b\" for writing.");
    EXPECT_FALSE(elsewhere->exists());
    EXPECT_FALSE(has("/E:\\b"));
}

TEST_F(CopyToFileOnDisk, NothingWaitsForPipes) {
    ASSERT_EQ(::mkfifo(folder.path("pipe").c_str(), 0600), 0);
    addFile("a", "abc");
    EXPECT_TRUE(raisedByCopy("pipe", "new").ends_with("pipe\" for reading."));
    EXPECT_FALSE(in("new")->exists());
    EXPECT_TRUE(raisedByCopy("a", "pipe").ends_with("pipe\" for writing."));
    EXPECT_TRUE(in("pipe")->exists());
}

// Stopping

TEST_F(CopyToFileTest, AnAnswerOfYesStopsTheCopyAndTakesItAway) {
    memory.addFile("/a", longText(2 * chunk));
    for (const std::size_t report : {1U, 2U, 3U, 4U}) {
        percents.clear();
        const ProgressDelegate progress = delegate(report);
        EXPECT_EQ(raisedByCopy("/a", "/new", &progress), "copyToFile: The file copy was canceled.");
        EXPECT_FALSE(has("/new")) << report;
        EXPECT_EQ(percents.size(), report);
        memory.addFile("/old", "old");
        percents.clear();
        EXPECT_EQ(raisedByCopy("/a", "/old", &progress), "copyToFile: The file copy was canceled.");
        EXPECT_FALSE(has("/old")) << report; // its content was gone anyway
    }
    EXPECT_TRUE(contentOf("/a") == longText(2 * chunk));
}

TEST_F(CopyToFileTest, TheFirstReportComesBeforeTheChunkIsWritten) {
    memory.addFile("/a", longText(2 * chunk));
    ProgressDelegate progress;
    std::vector<std::size_t> sizes;
    progress.copyingFile = [&](auto&&...) {
        sizes.push_back(contentOf("/b").size());
        return false;
    };
    EXPECT_EQ(raisedByCopy("/a", "/b", &progress), "nothing");
    EXPECT_EQ(sizes, (std::vector<std::size_t>{0, chunk, chunk, 2 * chunk, 2 * chunk}));
}

TEST_F(CopyToFileTest, TheAnswerToTheLastReportDoesNotCount) {
    memory.addFile("/a", "abc");
    const ProgressDelegate progress = delegate(3);
    EXPECT_EQ(raisedByCopy("/a", "/b", &progress), "nothing");
    EXPECT_EQ(contentOf("/b"), "abc");
}

TEST_F(CopyToFileTest, AFlagSetBeforeCancelsAndStays) {
    memory.addFile("/home/user/a", "abc");
    memory.addFile("/home/user/empty", "");
    const Item source = at("/home/user/a");
    source->cancelCopy();
    for (int time = 0; time < 2; ++time) {
        EXPECT_EQ(raisedBy([&] { source->copyToFile(at("/b").get(), nullptr, nullptr); }),
                  "File copy canceled: copying file \"~/a\" was canceled");
        EXPECT_FALSE(has("/b"));
    }
    const Item empty = at("/home/user/empty"); // no chunk, no test
    empty->cancelCopy();
    EXPECT_EQ(raisedBy([&] { empty->copyToFile(at("/b").get(), nullptr, nullptr); }), "nothing");
    EXPECT_EQ(contentOf("/b"), "");
}

TEST_F(CopyToFileTest, TheFlagIsTestedBeforeEachChunk) {
    memory.addFile("/a", longText(2 * chunk));
    for (const std::size_t report : {1U, 2U, 3U}) {
        percents.clear();
        const Item source = at("/a");
        ProgressDelegate progress;
        progress.copyingFile = [&](auto&&...) {
            percents.push_back(0);
            if (percents.size() == report) {
                source->cancelCopy();
            }
            return false;
        };
        const std::string raised =
            raisedBy([&] { source->copyToFile(at("/b").get(), &progress, nullptr); });
        if (report < 3) {
            EXPECT_EQ(raised, "File copy canceled: copying file \"/a\" was canceled");
            EXPECT_FALSE(has("/b"));
            EXPECT_EQ(percents.size(), 2U);
        } else {
            EXPECT_EQ(raised, "nothing"); // no chunk comes any more
            EXPECT_TRUE(contentOf("/b") == longText(2 * chunk));
        }
    }
}

TEST_F(CopyToFileTest, WhateverADelegateRaisesGoesToTheCallerAndTheCopyAway) {
    memory.addFile("/a", longText(2 * chunk));
    for (std::size_t report = 1; report <= 5; ++report) {
        std::size_t count = 0;
        ProgressDelegate progress;
        progress.copyingFile = [&](auto&&...) -> bool {
            if (++count == report) {
                throw std::runtime_error("enough");
            }
            return false;
        };
        EXPECT_THROW(at("/a")->copyToFile(at("/b").get(), &progress, nullptr), std::runtime_error);
        EXPECT_FALSE(has("/b")) << report;
        count = 0;
        progress.copyingFile = [&](auto&&...) -> bool {
            if (++count == report) {
                throw Exception("mine", "enough");
            }
            return false;
        };
        EXPECT_EQ(raisedByCopy("/a", "/b", &progress), "mine: enough");
        EXPECT_FALSE(has("/b")) << report;
    }
}

TEST_F(CopyToFileTest, TheFirstReasonIsTold) {
    memory.addFile("/a", "abc");
    const auto destination = OddFile::at("/b");
    destination->raisesInTheEnd = true;
    const ProgressDelegate progress = delegate(1);
    EXPECT_EQ(raisedBy([&] { at("/a")->copyToFile(destination.get(), &progress, nullptr); }),
              "copyToFile: The file copy was canceled.");
    EXPECT_FALSE(has("/b"));
    EXPECT_TRUE(destination->removedAfterClosing);
    files.failOperation("removeFile", EPERM);
    percents.clear();
    EXPECT_EQ(raisedByCopy("/a", "/b", &progress), "copyToFile: The file copy was canceled.");
}

// Numbers

TEST_F(CopyToFileTest, TheBytesThatAreDoneHaveSinglePrecision) {
    constexpr std::uint64_t exact = std::uint64_t{1} << 24U; // one more is no float
    memory.addFile("/a", std::string(exact + 1, 'x'));
    const auto source = OddFile::at("/a");
    source->chunkSize = exact;
    const ProgressDelegate progress = delegate();
    source->copyToFile(at("/b").get(), &progress, nullptr);
    EXPECT_EQ(percents, (Percents{50, 100, 100, 100, 100}));
    EXPECT_EQ(memory.attributes("/b").value().size, exact + 1); // what remains is counted exactly
}

TEST_F(CopyToFileTest, ChunksHaveTheSourcesSize) {
    memory.addFile("/a", "abcde");
    const auto source = OddFile::at("/a");
    const auto destination = OddFile::at("/b");
    source->chunkSize = 2;
    destination->chunkSize = 1;
    const ProgressDelegate progress = delegate();
    source->copyToFile(destination.get(), &progress, nullptr);
    EXPECT_EQ(percents, (Percents{20, 40, 60, 80, 90, 100, 100}));
    EXPECT_EQ(contentOf("/b"), "abcde");
    source->chunkSize = 0; // never nothing at a time
    source->copyToFile(at("/c").get(), nullptr, nullptr);
    EXPECT_EQ(contentOf("/c"), "abcde");
}

TEST_F(CopyToFileTest, AChunkIsOneReadAndOneWrite) {
    memory.addFile("/a", longText(3 * chunk));
    const Calls calls = callsOf([&] { EXPECT_EQ(raisedByCopy("/a", "/b"), "nothing"); });
    const auto first = std::ranges::find(calls, "OpenFile.readAt /a");
    const auto last = std::ranges::find(calls, "OpenFile.close /b");
    EXPECT_EQ(Calls(first, last),
              (Calls{"OpenFile.readAt /a", "OpenFile.write /b", "OpenFile.readAt /a",
                     "OpenFile.write /b", "OpenFile.readAt /a", "OpenFile.write /b"}));
    EXPECT_EQ(*(last + 1), "OpenFile.close /a");
}

TEST_F(CopyToFileTest, OfAnAliasTheBytesOfItsTextAreCopied) {
    MemorySystemLog log;
    const SystemLog::Replacement replacement(log);
    memory.addFile("/abc", "0123456789");
    memory.addLink("/link", "/abc");
    EXPECT_EQ(raisedByCopy("/link", "/b"), "nothing");
    EXPECT_EQ(contentOf("/b"), "0123");
    EXPECT_EQ(log.lines(), std::vector<std::string>{""}); // `size` of an alias
}

TEST_F(CopyToFileTest, AnAliasForTheDestinationLeadsOn) {
    memory.addFile("/a", "abc");
    at("/a")->setModificationDate(someDate);
    at("/a")->setCreationDate(earlierDate);
    memory.addFile("/target", "old");
    memory.addLink("/link", "/target");
    EXPECT_EQ(raisedByCopy("/a", "/link"), "nothing");
    EXPECT_EQ(contentOf("/target"), "abc");
    EXPECT_TRUE(at("/link")->isAlias());
    EXPECT_EQ(at("/target")->modificationDate(), someDate);
    EXPECT_EQ(at("/target")->creationDate(), earlierDate);
}

// On the host's own files

TEST_F(CopyToFileOnDisk, CopiesWhateverTheNamesAre) {
    const std::string text = longText(2 * chunk + 1);
    addFile("\xFF", text);
    in("\xFF")->setModificationDate(someDate);
    EXPECT_EQ(raisedByCopy("\xFF", "new/-b \xFE"), "nothing");
    EXPECT_EQ(contentOf("new/-b \xFE"), text);
    EXPECT_EQ(in("new/-b \xFE")->modificationDate(), someDate);
}

TEST_F(CopyToFileOnDisk, AnotherNameOfTheSourceIsNotEmptied) {
    addFile("a", "abc");
    ASSERT_EQ(::link(folder.path("a").c_str(), folder.path("other").c_str()), 0);
    EXPECT_EQ(raisedByCopy("a", "other"), "nothing");
    EXPECT_EQ(contentOf("a"), "abc");
    EXPECT_EQ(contentOf("other"), "abc");
}

TEST_F(CopyToFileOnDisk, OfMoreThan32BitsTheSizeInThemIsCopied) {
    addFile("large", "");
    if (::truncate(folder.path("large").c_str(), (::off_t{4} << 30U) + 3) != 0) {
        GTEST_SKIP() << "no files of 4 GiB here";
    }
    EXPECT_EQ(raisedByCopy("large", "copy"), "nothing");
    EXPECT_EQ(contentOf("copy"), std::string(3, '\0'));
}

} // namespace
} // namespace tav
