// Whole reads and writes of local items.

#include "fileinfo/local/MacFileInfoFixture_test.hpp"

#include <algorithm>
#include <cerrno>
#include <stdexcept>

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

namespace tav {
namespace {

using Lines = std::vector<std::string>;

constexpr std::size_t chunk = std::size_t{1} << 20U;

class LocalContentsTest : public MacFileInfoInMemory {
  protected:
    /// One report, of reading or of writing.
    struct Report {
        std::uint32_t done;
        std::uint32_t total;
        friend bool operator==(const Report&, const Report&) = default;
    };
    using Reports = std::vector<Report>;

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

TEST_F(LocalContentsOnDisk, AFileOfMoreThanFourGibibytesIsReadInChunksAsFarAsItsSizeSays) {
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

} // namespace
} // namespace tav
