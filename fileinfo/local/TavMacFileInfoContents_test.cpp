// Whole reads and writes of local items, and new files.

#include "fileinfo/local/CachedAttributes.hpp"
#include "fileinfo/local/MacFileInfoFixture_test.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <limits>
#include <stdexcept>

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

namespace tav {
namespace {

using Lines = std::vector<std::string>;

constexpr std::size_t chunk = std::size_t{1} << 20U;
const Date someDate(300000001.5);

/// A text that has other bytes everywhere.
std::string longText(std::size_t size) {
    std::string text(size, '\0');
    for (std::size_t index = 0; index < size; ++index) {
        text[index] = static_cast<char>('a' + (index / 1000 + index) % 26);
    }
    return text;
}

class LocalContentsTest : public MacFileInfoInMemory {
  protected:
    /// One report, of reading or of writing.
    struct Report {
        std::uint32_t done;
        std::uint32_t total;
        friend bool operator==(const Report&, const Report&) = default;
    };
    using Reports = std::vector<Report>;

    std::string contentOf(std::string_view path) {
        const auto content = memory.readFile(path, std::numeric_limits<std::uint64_t>::max());
        return content.ok() ? std::string(textOf(content.value())) : "nothing";
    }
    bool has(std::string_view path) { return memory.attributes(path).ok(); }
    /// Asks to stop at the report of that number; 0 for never.
    ProgressDelegate delegate(std::size_t stopsAt = 0) {
        ProgressDelegate progress;
        progress.readingContentsForFile = [this, stopsAt](TavBaseFileInfo& file, BytesView soFar,
                                                          std::uint32_t done, std::uint32_t total,
                                                          void* userData) {
            reports.push_back({done, total});
            items.push_back(&file);
            pointers.push_back(userData);
            seen.push_back(Data(soFar.begin(), soFar.end()));
            return reports.size() == stopsAt;
        };
        progress.writingContentsForFile = [this, stopsAt](TavBaseFileInfo& file, std::uint32_t done,
                                                          std::uint32_t total, void* userData) {
            reports.push_back({done, total});
            items.push_back(&file);
            pointers.push_back(userData);
            return reports.size() == stopsAt;
        };
        return progress;
    }

    Reports reports;
    std::vector<TavBaseFileInfo*> items;
    std::vector<void*> pointers;
    std::vector<Data> seen;
};

class LocalContentsOnDisk : public MacFileInfoOnDisk {
  protected:
    std::string contentOf(std::string_view name) {
        const auto content = FileSystem::current().readFile(folder.path(name), chunk);
        return content.ok() ? std::string(textOf(content.value())) : "nothing";
    }
    std::uint64_t numberOf(std::string_view name) {
        return FileSystem::current().attributes(folder.path(name)).value().identity.number;
    }
    std::uint32_t permissionsOf(std::string_view name) {
        return FileSystem::current().attributes(folder.path(name)).value().permissions;
    }
};

// Reading

TEST_F(LocalContentsTest, ReadsTheWholeFile) {
    memory.addFile("/a", "content");
    memory.addFile("/empty", "");
    memory.addLink("/link", "/a");
    EXPECT_EQ(at("/a")->fileContents(), dataFromText("content"));
    EXPECT_EQ(at("/a")->fileContentsWithProgress(nullptr, nullptr), dataFromText("content"));
    EXPECT_EQ(at("/empty")->fileContents(), Data());
    EXPECT_EQ(at("/link")->fileContents(), dataFromText("content"));
}

TEST_F(LocalContentsTest, WhatIsNoFileHasNoContents) {
    memory.addFolder("/folder");
    memory.addLink("/broken", "/nowhere");
    for (const std::string_view path : {"/missing", "/folder", "/broken", ""}) {
        EXPECT_EQ(at(path)->fileContents(), std::nullopt) << path;
    }
}

TEST_F(LocalContentsTest, AFileThatCannotBeReadHasNoContents) {
    memory.addFile("/a", "content");
    files.failOperation("readFile", EIO);
    EXPECT_EQ(at("/a")->fileContents(), std::nullopt);
}

TEST_F(LocalContentsTest, ReportsTheReadingOfEveryChunk) {
    const std::string text = longText(2 * chunk + 5);
    memory.addFile("/a", text);
    const Item item = at("/a");
    const ProgressDelegate progress = delegate();
    int user = 0;
    EXPECT_EQ(item->fileContentsWithProgress(&progress, &user), dataFromText(text));
    constexpr auto total = static_cast<std::uint32_t>(2 * chunk + 5);
    EXPECT_EQ(reports, (Reports{{chunk, total}, {2 * chunk, total}, {total, total}}));
    EXPECT_EQ(items, (std::vector<TavBaseFileInfo*>{item.get(), item.get(), item.get()}));
    EXPECT_EQ(pointers, (std::vector<void*>{&user, &user, &user}));
    // The buffer has its whole length from the start, zeros where nothing was read yet.
    std::string first = text;
    std::fill(first.begin() + chunk, first.end(), '\0');
    EXPECT_EQ(seen.at(0), dataFromText(first));
    EXPECT_EQ(seen.at(2), dataFromText(text));
}

TEST_F(LocalContentsTest, NoMoreThanAChunkIsReadAtOnceWithoutAReport) {
    memory.addFile("/a", longText(chunk));
    memory.addFile("/b", longText(chunk + 1));
    const ProgressDelegate progress = delegate();
    EXPECT_EQ(at("/a")->fileContentsWithProgress(&progress, nullptr)->size(), chunk);
    EXPECT_EQ(reports, Reports{});
    EXPECT_EQ(at("/b")->fileContentsWithProgress(&progress, nullptr)->size(), chunk + 1);
    EXPECT_EQ(reports, (Reports{{chunk, chunk + 1}, {chunk + 1, chunk + 1}}));
}

TEST_F(LocalContentsTest, ADelegateThatDoesNotAnswerTheReportIsNone) {
    memory.addFile("/a", longText(chunk + 1));
    ProgressDelegate progress = delegate();
    progress.readingContentsForFile = nullptr;
    EXPECT_EQ(callsOf([&] {
                  EXPECT_EQ(at("/a")->fileContentsWithProgress(&progress, nullptr)->size(),
                            chunk + 1);
              }).back(),
              "readFile /a");
    const Item item = at("/a");
    progress.writingContentsForFile = nullptr;
    EXPECT_TRUE(item->setFileContents(bytesOf(longText(chunk + 2)), &progress, nullptr));
    EXPECT_TRUE(contentOf("/a") == longText(chunk + 2));
    EXPECT_EQ(reports, Reports{});
}

TEST_F(LocalContentsTest, AStoppedReadAnswersZerosForTheRest) {
    const std::string text = longText(3 * chunk);
    memory.addFile("/a", text);
    const ProgressDelegate progress = delegate(2);
    std::string half = text;
    std::fill(half.begin() + 2 * chunk, half.end(), '\0');
    EXPECT_EQ(at("/a")->fileContentsWithProgress(&progress, nullptr), dataFromText(half));
    EXPECT_EQ(reports.size(), 2U);
}

TEST_F(LocalContentsTest, WhatADelegateRaisesWhileReadingGoesToTheCaller) {
    memory.addFile("/a", longText(2 * chunk));
    ProgressDelegate progress;
    progress.readingContentsForFile = [](auto&&...) -> bool { throw std::runtime_error("enough"); };
    EXPECT_THROW(static_cast<void>(at("/a")->fileContentsWithProgress(&progress, nullptr)),
                 std::runtime_error);
    EXPECT_EQ(at("/a")->fileContents()->size(), 2 * chunk);
}

TEST_F(LocalContentsTest, AChunkThatCannotBeReadLeavesNoContents) {
    memory.addFile("/a", longText(2 * chunk));
    const ProgressDelegate progress = delegate();
    files.failOperation("OpenFile.readAt", EIO);
    EXPECT_EQ(at("/a")->fileContentsWithProgress(&progress, nullptr), std::nullopt);
    files.failOperation("OpenFile.readAt", 0);
    files.failOperation("open", EACCES);
    EXPECT_EQ(at("/a")->fileContentsWithProgress(&progress, nullptr), std::nullopt);
    EXPECT_EQ(reports, Reports{});
}

TEST_F(LocalContentsTest, AFileThatIsCutMeanwhileEndsThere) {
    memory.addFile("/a", longText(3 * chunk));
    ProgressDelegate progress = delegate();
    progress.readingContentsForFile = [&](TavBaseFileInfo&, BytesView, std::uint32_t done,
                                          std::uint32_t total, void*) {
        reports.push_back({done, total});
        memory.addFile("/a", longText(chunk + 7)); // somebody else's doing
        return false;
    };
    EXPECT_EQ(at("/a")->fileContentsWithProgress(&progress, nullptr),
              dataFromText(longText(chunk + 7)));
    EXPECT_EQ(reports, (Reports{{chunk, 3 * chunk}, {chunk + 7, 3 * chunk}}));
}

TEST_F(LocalContentsTest, AFileThatGrewIsReadAsFarAsItWasKnown) {
    memory.addFile("/a", longText(chunk + 1));
    const Item item = at("/a");
    EXPECT_EQ(item->size(), chunk + 1);
    memory.addFile("/a", longText(chunk + 100));
    const ProgressDelegate progress = delegate();
    EXPECT_EQ(item->fileContentsWithProgress(&progress, nullptr)->size(), chunk + 1);
    EXPECT_EQ(item->fileContents()->size(), chunk + 100);
}

TEST_F(LocalContentsTest, AChunkOfAWholeReadIsOneCall) {
    memory.addFile("/a", longText(2 * chunk));
    const Item item = at("/a");
    const ProgressDelegate progress = delegate();
    EXPECT_EQ(item->size(), 2 * chunk);
    const Calls calls =
        callsOf([&] { EXPECT_TRUE(item->fileContentsWithProgress(&progress, nullptr)); });
    EXPECT_EQ(std::ranges::count(calls, "OpenFile.readAt /a"), 2);
    EXPECT_EQ(std::ranges::count(calls, "readFile /a"), 0);
}

// Writing

TEST_F(LocalContentsTest, WritesTheWholeFile) {
    memory.addFile("/a", "content");
    const Item item = at("/a");
    EXPECT_EQ(item->size(), 7U);
    EXPECT_TRUE(item->setFileContents(bytesOf("new")));
    EXPECT_EQ(contentOf("/a"), "new");
    EXPECT_EQ(item->size(), 3U); // what was learned is forgotten
    EXPECT_TRUE(item->setFileContents({}, nullptr, nullptr));
    EXPECT_EQ(contentOf("/a"), "");
}

TEST_F(LocalContentsTest, AMissingItemIsNotWritten) {
    SeenLog log;
    EXPECT_FALSE(at("/home/user/missing")->setFileContents(bytesOf("x")));
    EXPECT_FALSE(has("/home/user/missing"));
    ASSERT_EQ(log.lines().size(), 1U);
    EXPECT_NE(log.lines().front().find(
                  "TavMacFileInfo-setFileContents: item \"~/missing\" does not exist."),
              std::string::npos)
        << log.lines().front();
}

TEST_F(LocalContentsTest, AFolderIsNotWritten) {
    SeenLog log;
    memory.addFolder("/folder");
    EXPECT_FALSE(at("/folder")->setFileContents(bytesOf("x")));
    ASSERT_EQ(log.lines().size(), 1U);
    EXPECT_NE(
        log.lines().front().find("TavMacFileInfo-setFileContents: item \"/folder\" is not a file."),
        std::string::npos)
        << log.lines().front();
}

TEST_F(LocalContentsTest, NothingIsLoggedUnlessItIsSwitchedOn) {
    SeenLog log;
    gLogEnable[4] = false;
    memory.addFolder("/folder");
    EXPECT_FALSE(at("/folder")->setFileContents(bytesOf("x")));
    EXPECT_FALSE(at("/missing")->setFileContents(bytesOf("x")));
    EXPECT_EQ(at("/")->createFile("folder", {}, nullptr), nullptr);
    EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(LocalContentsTest, ReportsTheWritingOfEveryChunk) {
    memory.addFile("/a", "old");
    const Item item = at("/a");
    const std::string text = longText(2 * chunk + 5);
    const ProgressDelegate progress = delegate();
    int user = 0;
    EXPECT_EQ(item->size(), 3U);
    EXPECT_TRUE(item->setFileContents(bytesOf(text), &progress, &user));
    EXPECT_TRUE(contentOf("/a") == text);
    constexpr auto total = static_cast<std::uint32_t>(2 * chunk + 5);
    EXPECT_EQ(reports, (Reports{{chunk, total}, {2 * chunk, total}, {total, total}}));
    EXPECT_EQ(items.front(), item.get());
    EXPECT_EQ(pointers.front(), &user);
    EXPECT_EQ(item->size(), 2 * chunk + 5);
}

TEST_F(LocalContentsTest, NoMoreThanAChunkIsWrittenInOneStep) {
    memory.addFile("/a", "old");
    const Item item = at("/a");
    const ProgressDelegate progress = delegate();
    EXPECT_EQ(callsOf([&] {
                  EXPECT_TRUE(item->setFileContents(bytesOf(longText(chunk)), &progress, nullptr));
              }).back(),
              "writeFile /a");
    EXPECT_EQ(reports, Reports{});
    const std::string longer = longText(chunk + 1);
    EXPECT_EQ(callsOf([&] {
                  EXPECT_TRUE(item->setFileContents(bytesOf(longer), nullptr, nullptr));
              }).back(),
              "writeFile /a");
    EXPECT_TRUE(item->setFileContents(bytesOf(longer), &progress, nullptr));
    EXPECT_EQ(reports, (Reports{{chunk, chunk + 1}, {chunk + 1, chunk + 1}}));
}

TEST_F(LocalContentsTest, AStoppedWriteKeepsTheChunksSoFar) {
    memory.addFile("/a", longText(5 * chunk));
    const Item item = at("/a");
    const ProgressDelegate progress = delegate(2);
    EXPECT_TRUE(item->setFileContents(bytesOf(longText(4 * chunk)), &progress, nullptr));
    EXPECT_TRUE(contentOf("/a") == longText(2 * chunk));
    EXPECT_EQ(item->size(), 2 * chunk);
    EXPECT_EQ(reports.size(), 2U);
}

TEST_F(LocalContentsTest, WhatADelegateRaisesWhileWritingGoesToTheCaller) {
    memory.addFile("/a", "old");
    ProgressDelegate progress;
    progress.writingContentsForFile = [](auto&&...) -> bool { throw std::runtime_error("enough"); };
    EXPECT_THROW(at("/a")->setFileContents(bytesOf(longText(2 * chunk)), &progress, nullptr),
                 std::runtime_error);
    EXPECT_TRUE(contentOf("/a") == longText(chunk));
}

TEST_F(LocalContentsTest, AWriteThatFailsIsTold) {
    memory.addFile("/a", "old");
    const Item item = at("/a");
    const std::string text = longText(2 * chunk);
    const ProgressDelegate progress = delegate();
    for (const std::string_view operation :
         {"open", "OpenFile.setSize", "OpenFile.write", "OpenFile.close"}) {
        files.failOperation(operation, ENOSPC);
        EXPECT_FALSE(item->setFileContents(bytesOf(text), &progress, nullptr)) << operation;
        files.failOperation(operation, 0);
    }
    files.failOperation("writeFile", EIO);
    EXPECT_FALSE(item->setFileContents(bytesOf("new")));
    files.failOperation("writeFile", 0);
    EXPECT_TRUE(item->setFileContents(bytesOf("new"), &progress, nullptr));
}

TEST_F(LocalContentsTest, AfterAFailureTheItemKnowsWhatIsThere) {
    memory.addFile("/a", "old");
    const Item item = at("/a");
    EXPECT_EQ(item->size(), 3U);
    memory.capacity = chunk + 7;
    const ProgressDelegate progress = delegate();
    EXPECT_FALSE(item->setFileContents(bytesOf(longText(2 * chunk)), &progress, nullptr));
    EXPECT_EQ(item->size(), chunk + 7);
    EXPECT_EQ(reports, (Reports{{chunk, 2 * chunk}}));
    memory.capacity = 5;
    EXPECT_FALSE(item->setFileContents(bytesOf("0123456789")));
    EXPECT_EQ(item->size(), 5U);
}

TEST_F(LocalContentsOnDisk, AFileIsRewrittenInPlace) {
    addFile("a", "old");
    ASSERT_EQ(::link(folder.path("a").c_str(), folder.path("other").c_str()), 0);
    addLink("link", "a");
    ASSERT_EQ(::chmod(folder.path("a").c_str(), 0640), 0);
    const std::uint64_t number = numberOf("a");
    EXPECT_TRUE(in("link")->setFileContents(bytesOf("new")));
    EXPECT_EQ(contentOf("other"), "new");
    EXPECT_EQ(numberOf("a"), number);
    EXPECT_EQ(permissionsOf("a"), 0640U);
    EXPECT_TRUE(in("link")->isAlias());
    const std::string text = longText(chunk + 1);
    ProgressDelegate progress;
    progress.writingContentsForFile = [](auto&&...) { return false; };
    EXPECT_TRUE(in("a")->setFileContents(bytesOf(text), &progress, nullptr));
    EXPECT_EQ(numberOf("a"), number);
    EXPECT_EQ(in("other")->size(), chunk + 1);
}

TEST_F(LocalContentsOnDisk, NothingWaitsForPipesAndDevices) {
    ASSERT_EQ(::mkfifo(folder.path("pipe").c_str(), 0600), 0);
    EXPECT_EQ(in("pipe")->fileContents(), std::nullopt);
    EXPECT_FALSE(in("pipe")->setFileContents(bytesOf("x")));
    EXPECT_EQ(at("/dev/zero")->fileContents(), std::nullopt);
    EXPECT_FALSE(at("/dev/null")->setFileContents(bytesOf("x")));
    // What is there is rewritten, or not; it is answered either way.
    const FileInfoPtr pipe = at(folder.path())->createFile("pipe", bytesOf("x"), nullptr);
    ASSERT_NE(pipe, nullptr);
    EXPECT_EQ(pipe->name(), "pipe");
}

TEST_F(LocalContentsOnDisk, NamesNeedNotBeUTF8) {
    const FileInfoPtr made = at(folder.path())->createFile("\xFF.txt", bytesOf("x"), nullptr);
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(made->name(), "\xFF.txt");
    EXPECT_EQ(contentOf("\xFF.txt"), "x");
    const FileInfoPtr second =
        at(folder.path())->createFile("\xFF.txt", bytesOf("y"), nullptr, true);
    EXPECT_EQ(second->name(), "\xFF-1.txt");
    EXPECT_EQ(contentOf("\xFF-1.txt"), "y");
    EXPECT_TRUE(made->setFileContents(bytesOf("z")));
    EXPECT_EQ(made->fileContents(), dataFromText("z"));
}

TEST_F(LocalContentsOnDisk, AFileOfFiveGibibytesIsReadInChunksAsFarAsItsSizeSays) {
    addFile("large", "");
    if (::truncate(folder.path("large").c_str(), (::off_t{4} << 30U) + 2 * ::off_t{chunk}) != 0) {
        GTEST_SKIP() << "no files of 4 GiB here";
    }
    ProgressDelegate progress;
    std::vector<std::uint32_t> totals;
    progress.readingContentsForFile = [&](TavBaseFileInfo&, BytesView, std::uint32_t,
                                          std::uint32_t total, void*) {
        totals.push_back(total);
        return false;
    };
    const auto contents = in("large")->fileContentsWithProgress(&progress, nullptr);
    ASSERT_TRUE(contents);
    EXPECT_EQ(contents->size(), 2 * chunk);
    EXPECT_EQ(totals, (std::vector<std::uint32_t>{2 * chunk, 2 * chunk}));
}

// New files

TEST_F(LocalContentsTest, AFileIsMadeInTheFolder) {
    memory.addFolder("/folder");
    const FileInfoPtr made = at("/folder")->createFile("a.txt", bytesOf("content"), nullptr);
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(made->path(), "/folder/a.txt");
    EXPECT_TRUE(made->isFile());
    EXPECT_EQ(contentOf("/folder/a.txt"), "content");
    const FileInfoPtr empty = at("/folder")->createFile("empty", {}, nullptr);
    EXPECT_EQ(contentOf("/folder/empty"), "");
    EXPECT_EQ(empty->size(), 0U);
}

TEST_F(LocalContentsTest, AFileMakesASibling) {
    memory.addFile("/folder/a", "");
    const FileInfoPtr made = at("/folder/a")->createFile("b", bytesOf("content"), nullptr);
    EXPECT_EQ(made->path(), "/folder/b");
    EXPECT_EQ(contentOf("/folder/b"), "content");
}

TEST_F(LocalContentsTest, AFileThatIsThereIsRewritten) {
    memory.addFile("/a", "old");
    ASSERT_TRUE(memory.setPermissions("/a", 0640).isNone());
    const Value::Dictionary attributes = {{"NSFilePosixPermissions", Value(0600)},
                                          {"NSFileModificationDate", Value(someDate)}};
    const FileInfoPtr made = at("/")->createFile("a", bytesOf("new"), &attributes);
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(made->path(), "/a");
    EXPECT_EQ(contentOf("/a"), "new");
    EXPECT_EQ(memory.attributes("/a").value().permissions, 0640U); // attributes are left alone
    EXPECT_NE(at("/a")->modificationDate(), someDate);
    const ProgressDelegate progress = delegate();
    int user = 0;
    ASSERT_NE(
        at("/")->createFile("a", bytesOf(longText(2 * chunk)), nullptr, false, &progress, &user),
        nullptr);
    EXPECT_EQ(reports, (Reports{{chunk, 2 * chunk}, {2 * chunk, 2 * chunk}}));
    EXPECT_EQ(pointers.front(), &user);
}

TEST_F(LocalContentsTest, AnItemIsAnsweredAlsoWhenItCouldNotBeRewritten) {
    memory.addFile("/a", "old");
    files.failOperation("writeFile", EIO);
    const FileInfoPtr made = at("/")->createFile("a", bytesOf("new"), nullptr);
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(made->path(), "/a");
    EXPECT_EQ(contentOf("/a"), "old");
}

TEST_F(LocalContentsTest, AFolderInTheWayIsLogged) {
    SeenLog log;
    memory.addFolder("/top/folder");
    EXPECT_EQ(at("/top")->createFile("folder", bytesOf("x"), nullptr), nullptr);
    ASSERT_EQ(log.lines().size(), 1U);
    EXPECT_NE(log.lines().front().find("TavMacFileInfo:createFile-\"/top/folder\" is a folder!"),
              std::string::npos)
        << log.lines().front();
    memory.addLink("/top/link", "/top/folder");
    EXPECT_EQ(at("/top")->createFile("link", bytesOf("x"), nullptr), nullptr);
    EXPECT_EQ(at("/top")->createFile("", bytesOf("x"), nullptr), nullptr);
    EXPECT_EQ(at("/top")->createFile("..", bytesOf("x"), nullptr), nullptr);
}

TEST_F(LocalContentsTest, NoProgressIsToldOfANewFile) {
    const ProgressDelegate progress = delegate();
    const std::string text = longText(2 * chunk);
    static_cast<void>(at("/")->createFile("a", bytesOf(text), nullptr, false, &progress, nullptr));
    static_cast<void>(at("/")->createFile("a", bytesOf(text), nullptr, true, &progress, nullptr));
    EXPECT_TRUE(contentOf("/a-1") == text);
    EXPECT_EQ(reports, Reports{});
}

TEST_F(LocalContentsTest, UniqueNamesAreCounted) {
    memory.addFile("/name.txt", "old");
    const auto nameOfNew = [&](std::string_view name) {
        return at("/")->createFile(name, bytesOf("new"), nullptr, true)->name();
    };
    EXPECT_EQ(nameOfNew("name.txt"), "name-1.txt");
    EXPECT_EQ(nameOfNew("name.txt"), "name-2.txt");
    EXPECT_EQ(nameOfNew("free.txt"), "free.txt");
    memory.addFolder("/README");
    EXPECT_EQ(nameOfNew("README"), "README-1"); // without extension no dot
    memory.addFile("/.profile", "old");
    EXPECT_EQ(nameOfNew(".profile"), ".profile-1");
    memory.addFile("/a.tar.gz", "old");
    EXPECT_EQ(nameOfNew("a.tar.gz"), "a.tar-1.gz");
    memory.addLink("/broken.txt", "/nowhere");
    EXPECT_EQ(nameOfNew("broken.txt"), "broken-1.txt");
    EXPECT_EQ(contentOf("/name.txt"), "old");
    EXPECT_EQ(contentOf("/name-1.txt"), "new");
    EXPECT_EQ(contentOf("/name-2.txt"), "new");
    EXPECT_FALSE(has("/nowhere"));
}

TEST_F(LocalContentsTest, AUniqueNameThatSomebodyElseTakesMeanwhileIsTheirs) {
    memory.addFile("/name.txt", "old");
    files.restartCount();
    static_cast<void>(at("/")->createFile("name.txt", bytesOf("x"), nullptr, true));
    const std::size_t count = files.callCount();
    // At whatever call it comes, nobody loses anything.
    for (std::size_t call = 1; call <= count; ++call) {
        memory.removeAll("/name-1.txt");
        memory.removeAll("/name-2.txt");
        files.restartCount();
        bool isTheirs = false;
        files.atCall(call, [&] {
            if (!has("/name-1.txt")) {
                memory.addFile("/name-1.txt", "theirs");
                isTheirs = true;
            }
        });
        const FileInfoPtr made = at("/")->createFile("name.txt", bytesOf("ours"), nullptr, true);
        ASSERT_NE(made, nullptr);
        EXPECT_EQ(made->name(), isTheirs ? "name-2.txt" : "name-1.txt") << call;
        EXPECT_EQ(contentOf(made->path()), "ours") << call;
        EXPECT_EQ(contentOf("/name-1.txt"), isTheirs ? "theirs" : "ours") << call;
        files.atCall(call, [] {});
    }
}

TEST_F(LocalContentsTest, NamesThatAreAlwaysTakenMeanwhileComeToAnEnd) {
    files.failOperation("open", EEXIST);
    EXPECT_EQ(at("/")->createFile("a", bytesOf("x"), nullptr, true), nullptr);
}

TEST_F(LocalContentsTest, AnItemIsAnsweredAlsoWhenNothingCouldBeMade) {
    const FileInfoPtr made = at("/missing")->createFile("a", bytesOf("x"), nullptr);
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(made->path(), "/missing/a");
    EXPECT_FALSE(made->exists());
    memory.isReadOnly = true;
    EXPECT_FALSE(at("/")->createFile("a", bytesOf("x"), nullptr)->exists());
    EXPECT_FALSE(at("/")->createFile("a", bytesOf("x"), nullptr, true)->exists());
    memory.isReadOnly = false;
    memory.capacity = 3;
    EXPECT_EQ(at("/")->createFile("a", bytesOf("01234"), nullptr)->size(), 3U); // what fitted
    const std::string longName(300, 'x');
    EXPECT_FALSE(at("/")->createFile(longName, bytesOf("x"), nullptr)->exists());
}

TEST_F(LocalContentsTest, ANewFileGetsItsAttributes) {
    const Value::Dictionary attributes = {
        {"NSFileModificationDate", Value(someDate)},
        {"NSFileCreationDate", Value(Date(200000000.25))},
        {"NSFilePosixPermissions", Value(0604)},
        {"NSFileHFSTypeCode", Value(0x54455854)},     // "TEXT"
        {"NSFileHFSCreatorCode", Value(0xF0F1F2F3U)}, // more than 31 bits
        {"NSFileExtensionHidden", Value(true)},
    };
    for (const bool isUnique : {false, true}) {
        const FileInfoPtr made =
            at("/")->createFile("a.txt", bytesOf("content"), &attributes, isUnique);
        const Item item = at(made->path());
        EXPECT_EQ(item->modificationDate(), someDate);
        EXPECT_EQ(item->creationDate(), Date(200000000.25));
        EXPECT_EQ(item->attribute("NSFilePosixPermissions"), Value(0604));
        EXPECT_EQ(item->typeCode(), 0x54455854U);
        EXPECT_EQ(item->creatorCode(), 0xF0F1F2F3U);
        EXPECT_EQ(item->humanFriendlyName(), isUnique ? "a-1" : "a");
        EXPECT_FALSE(item->isLocked());
    }
}

TEST_F(LocalContentsTest, EveryAttributeThatIsSetIsReadBack) {
    const std::array<Value::Dictionary::Entry, 9> entries = {{
        {"NSFileModificationDate", Value(someDate)},
        {"NSFileCreationDate", Value(someDate)},
        {"NSFilePosixPermissions", Value(0444)},
        {"NSFileHFSTypeCode", Value(1)},
        {"NSFileHFSCreatorCode", Value(2)},
        {"NSFileExtensionHidden", Value(true)},
        {"NSFileExtensionHidden", Value(false)},
        {"NSFileImmutable", Value(true)},
        {"NSFileImmutable", Value(false)},
    }};
    for (const auto& [key, value] : entries) {
        const Value::Dictionary attributes = {{key, value}};
        memory.removeAll("/a.txt");
        static_cast<void>(at("/")->createFile("a.txt", bytesOf("x"), &attributes));
        EXPECT_EQ(at("/a.txt")->attribute(key), value) << key;
        EXPECT_EQ(contentOf("/a.txt"), "x");
    }
}

TEST_F(LocalContentsTest, ALockedFileKeepsItsOtherAttributes) {
    const Value::Dictionary attributes = {{"NSFileImmutable", Value(true)},
                                          {"NSFilePosixPermissions", Value(0664)},
                                          {"NSFileModificationDate", Value(someDate)},
                                          {"NSFileHFSTypeCode", Value(1)}};
    static_cast<void>(at("/")->createFile("a", bytesOf("x"), &attributes));
    EXPECT_TRUE(at("/a")->isLocked());
    EXPECT_EQ(at("/a")->attribute("NSFilePosixPermissions"), Value(0444));
    EXPECT_EQ(at("/a")->modificationDate(), someDate);
    EXPECT_EQ(at("/a")->typeCode(), 1U);
    const Value::Dictionary unlocked = {{"NSFileImmutable", Value(false)},
                                        {"NSFilePosixPermissions", Value(0444)}};
    static_cast<void>(at("/")->createFile("b", bytesOf("x"), &unlocked));
    EXPECT_EQ(at("/b")->attribute("NSFilePosixPermissions"), Value(0644));
}

TEST_F(LocalContentsTest, AttributesOfOtherNamesAndTypesArePassedOver) {
    const Value::Dictionary attributes = {{"NSFileSize", Value(5)},
                                          {"NSFileOwnerAccountID", Value(5)},
                                          {"Colour", Value("red")},
                                          {"NSFileModificationDate", Value("yesterday")},
                                          {"NSFileCreationDate", Value(5)},
                                          {"NSFilePosixPermissions", Value("all")},
                                          {"NSFileHFSTypeCode", Value("TEXT")},
                                          {"NSFileExtensionHidden", Value("YES")},
                                          {"NSFileImmutable", Value("YES")}};
    static_cast<void>(at("/")->createFile("a.b", bytesOf("x"), &attributes));
    static_cast<void>(at("/")->createFile("plain", bytesOf("x"), nullptr));
    EXPECT_EQ(at("/a.b")->size(), 1U);
    EXPECT_EQ(at("/a.b")->attribute("NSFilePosixPermissions"),
              at("/plain")->attribute("NSFilePosixPermissions"));
    EXPECT_EQ(at("/a.b")->typeCode(), 0x3F3F3F3FU);
    EXPECT_EQ(at("/a.b")->humanFriendlyName(), "a.b");
    EXPECT_EQ(memory.extendedAttributeNames("/a.b").value(), Lines{});
}

TEST_F(LocalContentsTest, ADateThatIsNoNumberIsPassedOver) {
    const Value::Dictionary attributes = {
        {"NSFileCreationDate", Value(Date(std::numeric_limits<double>::infinity()))},
        {"NSFileModificationDate", Value(Date(std::numeric_limits<double>::quiet_NaN()))}};
    static_cast<void>(at("/")->createFile("a", bytesOf("x"), &attributes));
    EXPECT_EQ(contentOf("/a"), "x");
    EXPECT_EQ(memory.extendedAttributeNames("/a").value(), Lines{});
}

TEST_F(LocalContentsTest, OneAttributeThatFailsDoesNotKeepTheOthers) {
    files.failOperation("setExtendedAttribute", ENOTSUP);
    const Value::Dictionary attributes = {{"NSFileHFSTypeCode", Value(1)},
                                          {"NSFileModificationDate", Value(someDate)},
                                          {"NSFilePosixPermissions", Value(0600)}};
    static_cast<void>(at("/")->createFile("a", bytesOf("x"), &attributes));
    EXPECT_EQ(at("/a")->modificationDate(), someDate);
    EXPECT_EQ(at("/a")->attribute("NSFilePosixPermissions"), Value(0600));
}

TEST_F(LocalContentsOnDisk, NobodyMayDoMoreWithANewFileThanInTheEnd) {
    const ::mode_t mask = ::umask(0);
    const Value::Dictionary attributes = {{"NSFilePosixPermissions", Value(04640)}};
    static_cast<void>(at(folder.path())->createFile("a", bytesOf("x"), &attributes));
    const Value::Dictionary locked = {{"NSFilePosixPermissions", Value(0400)},
                                      {"NSFileModificationDate", Value(someDate)}};
    static_cast<void>(at(folder.path())->createFile("b", bytesOf("x"), &locked));
    ::umask(077);
    const Value::Dictionary open = {{"NSFilePosixPermissions", Value(0666)}};
    static_cast<void>(at(folder.path())->createFile("c", bytesOf("x"), &open));
    ::umask(mask);
    EXPECT_EQ(permissionsOf("a"), 04640U);
    EXPECT_EQ(permissionsOf("b"), 0400U);
    EXPECT_EQ(in("b")->modificationDate(), someDate);
    EXPECT_EQ(permissionsOf("c"), 0666U); // whatever the mask says
    EXPECT_EQ(contentOf("b"), "x");
}

TEST_F(LocalContentsTest, ANewFileIsNotOpenToOthersBeforeItsPermissionsAreSet) {
    const Value::Dictionary attributes = {{"NSFilePosixPermissions", Value(0600)}};
    files.failOperation("setPermissions", EIO);
    static_cast<void>(at("/")->createFile("a", bytesOf("x"), &attributes));
    EXPECT_EQ(memory.attributes("/a").value().permissions, 0600U);
    // Its owner may write it until then, which the other attributes need.
    const Value::Dictionary readOnly = {{"NSFilePosixPermissions", Value(0404)}};
    static_cast<void>(at("/")->createFile("b", bytesOf("x"), &readOnly));
    EXPECT_EQ(memory.attributes("/b").value().permissions, 0604U);
}

TEST_F(LocalContentsTest, AnEmptyFileIsMadeWithItsWholePath) {
    const FileInfoPtr made = TavMacFileInfo::fileInfoCreateFileWithFullPath("/x/y/file.txt");
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(made->path(), "/x/y/file.txt");
    EXPECT_EQ(contentOf("/x/y/file.txt"), "");
    EXPECT_EQ(TavMacFileInfo::fileInfoCreateFileWithFullPath("~/in/file")->path(),
              "/home/user/in/file");
    EXPECT_EQ(contentOf("/home/user/in/file"), "");
    memory.addFile("/full", "content");
    EXPECT_NE(TavMacFileInfo::fileInfoCreateFileWithFullPath("/full"), nullptr);
    EXPECT_EQ(contentOf("/full"), ""); // as it is written
    EXPECT_EQ(TavMacFileInfo::fileInfoCreateFileWithFullPath("/x/y"), nullptr);
    EXPECT_EQ(TavMacFileInfo::fileInfoCreateFileWithFullPath("/full/z"), nullptr);
    EXPECT_EQ(TavMacFileInfo::fileInfoCreateFileWithFullPath("/"), nullptr);
}

} // namespace
} // namespace tav
