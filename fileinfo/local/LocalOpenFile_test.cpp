// Open files of local items, and ranges of them.

#include "fileinfo/local/LocalOpenFile.hpp"
#include "fileinfo/local/MacFileInfoFixture_test.hpp"
#include "testing/ForkedProcess.hpp"

#include <csignal>
#include <limits>

#include <gtest/gtest.h>

#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

namespace tav {
namespace {

using Token = std::shared_ptr<OpenFileToken>;
using Mode = internal::LocalOpenFile::Mode;

constexpr std::uint64_t gibibyte = std::uint64_t{1} << 30U;

std::string textOfRange(TavMacFileInfo& item, OpenFileToken* token, std::uint32_t location,
                        std::uint32_t length) {
    const auto data = item.fileContentsWithRange({location, length}, token);
    return data ? std::string(textOf(*data)) : "nothing";
}

class LocalOpenFileTest : public MacFileInfoInMemory {};

class LocalOpenFileOnDisk : public MacFileInfoOnDisk {
  protected:
    void addPipe(std::string_view name) { ASSERT_EQ(::mkfifo(folder.path(name).c_str(), 0600), 0); }
};

TEST_F(LocalOpenFileTest, ReadsRanges) {
    memory.addFile("/a", "0123456789");
    const Item item = at("/a");
    const Token token = item->openFileForReading();
    ASSERT_NE(token, nullptr);
    EXPECT_EQ(textOfRange(*item, token.get(), 0, 4), "0123");
    EXPECT_EQ(textOfRange(*item, token.get(), 3, 4), "3456");
    EXPECT_EQ(textOfRange(*item, token.get(), 2, 2), "23"); // backwards, too
    EXPECT_EQ(textOfRange(*item, token.get(), 5, 0), "");
    EXPECT_EQ(textOfRange(*item, token.get(), 0, 10), "0123456789");
}

TEST_F(LocalOpenFileTest, ReadsAsMuchAsThereIs) {
    memory.addFile("/a", "0123456789");
    const Item item = at("/a");
    const Token token = item->openFileForReading();
    EXPECT_EQ(textOfRange(*item, token.get(), 8, 4), "89");
    EXPECT_EQ(textOfRange(*item, token.get(), 10, 4), "");
    EXPECT_EQ(textOfRange(*item, token.get(), 4'000'000'000U, 4), "");
}

TEST_F(LocalOpenFileTest, ALongRangeTakesNoMoreMemoryThanTheFileHasBytes) {
    memory.addFile("/a", "0123456789");
    const Item item = at("/a");
    const Token token = item->openFileForReading();
    constexpr std::uint32_t longest = std::numeric_limits<std::uint32_t>::max();
    const auto data = item->fileContentsWithRange({4, longest}, token.get());
    ASSERT_TRUE(data);
    EXPECT_EQ(textOf(*data), "456789");
    EXPECT_LT(data->capacity(), 100U);
    EXPECT_EQ(textOfRange(*item, token.get(), 10, longest), "");
    EXPECT_EQ(textOfRange(*item, token.get(), longest, longest), "");
    const auto whole = item->fileContentsWithWholeRange(
        {0, std::numeric_limits<std::uint64_t>::max()}, token.get());
    ASSERT_TRUE(whole);
    EXPECT_EQ(textOf(*whole), "0123456789");
}

TEST_F(LocalOpenFileOnDisk, AfterAWriteThatEndedHalfwayTheNextBeginsAtItsPlace) {
    addFile("a", "");
    EXPECT_EQ(
        runForked([&] {
            ::signal(SIGXFSZ, SIG_IGN);
            struct ::rlimit limit {};
            if (::getrlimit(RLIMIT_FSIZE, &limit) != 0) {
                return 5;
            }
            const struct ::rlimit small = {5, limit.rlim_max};
            const Item item = in("a");
            const Token token = item->openFileForWriting();
            const BytesView data = bytesOf("0123456789");
            if (!token || ::setrlimit(RLIMIT_FSIZE, &small) != 0) {
                return 1;
            }
            if (item->setFileContentsWithRange(data, {0, 10}, token.get()) != Status::Failure) {
                return 2;
            }
            if (::setrlimit(RLIMIT_FSIZE, &limit) != 0) {
                return 3;
            }
            return item->setFileContentsWithRange(data, {0, 10}, token.get()) == Status::Success
                       ? 0
                       : 4;
        }),
        ProcessEnd());
    EXPECT_EQ(textOf(in("a")->fileContents().value_or(Data())), "0123456789");
}

TEST_F(LocalOpenFileOnDisk, ALongRangeHasTheContentOfAFileThatTellsNoSize) {
    const Item item = at("/proc/version");
    const Token token = item->openFileForReading();
    ASSERT_NE(token, nullptr);
    const std::string content = textOfRange(*item, token.get(), 0, 1000);
    EXPECT_NE(content, "");
    constexpr std::uint32_t longest = std::numeric_limits<std::uint32_t>::max();
    EXPECT_EQ(textOfRange(*item, token.get(), 0, longest), content);
    EXPECT_EQ(textOfRange(*item, token.get(), 5, longest), content.substr(5));
    EXPECT_EQ(textOfRange(*item, token.get(), longest, longest), "");
}

TEST_F(LocalOpenFileTest, MemoryThatIsGivenBackIsUsedAgain) {
    memory.addFile("/a", std::string(3000, 'x'));
    const Item item = at("/a");
    const Token token = item->openFileForReading();
    auto data = item->fileContentsWithRange({0, 1000}, token.get());
    ASSERT_TRUE(data);
    const std::byte* const place = data->data();
    token->giveBack(std::move(*data));
    data = item->fileContentsWithRange({1000, 1000}, token.get());
    ASSERT_TRUE(data);
    EXPECT_EQ(data->data(), place);
    EXPECT_EQ(data->size(), 1000U);
}

TEST_F(LocalOpenFileTest, AChunkIsOneCall) {
    memory.addFile("/a", std::string(3000, 'x'));
    memory.addFile("/b", "");
    const Item source = at("/a");
    const Item copy = at("/b");
    const Token reading = source->openFileForReading();
    const Token writing = copy->openFileForWriting();
    EXPECT_EQ(
        callsOf([&] {
            for (const std::uint32_t location : {0U, 1000U, 2000U}) {
                auto data = source->fileContentsWithRange({location, 1000}, reading.get());
                EXPECT_EQ(copy->setFileContentsWithRange(*data, {location, 1000}, writing.get()),
                          Status::Success);
            }
        }),
        (Calls{"OpenFile.readAt /a", "OpenFile.write /b", "OpenFile.readAt /a", "OpenFile.write /b",
               "OpenFile.readAt /a", "OpenFile.write /b"}));
    EXPECT_EQ(contentOf("/b"), std::string(3000, 'x'));
}

TEST_F(LocalOpenFileTest, OnlyWhatIsThereIsOpened) {
    memory.addFolder("/folder");
    memory.addLink("/broken", "/nowhere");
    for (const std::string_view path : {"/missing", "/folder", "/broken", ""}) {
        EXPECT_EQ(at(path)->openFileForReading(), nullptr) << path;
        EXPECT_EQ(at(path)->openFileForWriting(), nullptr) << path;
    }
    EXPECT_FALSE(memory.attributes("/missing").ok());
    EXPECT_FALSE(memory.attributes("/nowhere").ok());
}

TEST_F(LocalOpenFileTest, OpeningForWritingEmptiesTheFileAtOnce) {
    memory.addFile("/a", "content");
    memory.addFile("/b", "content");
    memory.addLink("/link", "/b");
    const Token token = at("/a")->openFileForWriting();
    ASSERT_NE(token, nullptr);
    EXPECT_EQ(contentOf("/a"), "");
    EXPECT_NE(at("/link")->openFileForWriting(), nullptr);
    EXPECT_EQ(contentOf("/b"), "");
    EXPECT_NE(at("/b")->openFileForReading(), nullptr);
}

TEST_F(LocalOpenFileTest, ReadingGoesThroughLinks) {
    memory.addFile("/a", "content");
    memory.addLink("/link", "/a");
    const Item link = at("/link");
    const Token token = link->openFileForReading();
    EXPECT_EQ(textOfRange(*link, token.get(), 0, 100), "content");
}

TEST_F(LocalOpenFileTest, AFileThatCannotBeOpenedOrEmptiedHasNoToken) {
    memory.addFile("/a", "content");
    files.failOperation("open", EACCES);
    EXPECT_EQ(at("/a")->openFileForReading(), nullptr);
    EXPECT_EQ(at("/a")->openFileForWriting(), nullptr);
    files.failOperation("open", 0);
    files.failOperation("OpenFile.setSize", EIO);
    EXPECT_EQ(at("/a")->openFileForWriting(), nullptr);
    EXPECT_NE(at("/a")->openFileForReading(), nullptr);
    memory.isReadOnly = true;
    EXPECT_EQ(at("/a")->openFileForWriting(), nullptr);
    EXPECT_EQ(contentOf("/a"), "content");
}

TEST_F(LocalOpenFileTest, TheTokenKnowsItsMode) {
    memory.addFile("/a", "");
    const Token reading = at("/a")->openFileForReading();
    const Token writing = at("/a")->openFileForWriting();
    EXPECT_EQ(internal::LocalOpenFile::stillOpen(reading.get())->mode(), Mode::Reading);
    EXPECT_EQ(internal::LocalOpenFile::stillOpen(writing.get())->mode(), Mode::Writing);
    EXPECT_EQ(static_cast<int>(Mode::Reading), 0);
    EXPECT_EQ(static_cast<int>(Mode::Writing), 1);
}

TEST_F(LocalOpenFileTest, WithoutAnOpenFileNothingIsReadOrWritten) {
    memory.addFile("/a", "content");
    const Item item = at("/a");
    OpenFileToken foreign;
    const Token closed = item->openFileForReading();
    item->closeFile(closed.get());
    for (OpenFileToken* const token :
         {static_cast<OpenFileToken*>(nullptr), &foreign, closed.get()}) {
        EXPECT_EQ(textOfRange(*item, token, 0, 4), "nothing");
        EXPECT_EQ(item->fileContentsWithWholeRange({0, 4}, token), std::nullopt);
        EXPECT_EQ(item->setFileContentsWithRange(bytesOf("x"), {0, 1}, token), Status::Failure);
        EXPECT_EQ(item->setFileContentsWithWholeRange(bytesOf("x"), {0, 1}, token),
                  Status::Failure);
        EXPECT_FALSE(item->cloneRange({0, 1}, token, item.get(), token));
        item->closeFile(token);
    }
    EXPECT_EQ(contentOf("/a"), "content");
}

TEST_F(LocalOpenFileTest, ClosingLetsGoOfTheFile) {
    memory.addFile("/a", "content");
    const Item item = at("/a");
    const Token token = item->openFileForReading();
    EXPECT_EQ(callsOf([&] { item->closeFile(token.get()); }), Calls{"OpenFile.close /a"});
    EXPECT_EQ(callsOf([&] { item->closeFile(token.get()); }), Calls{});
}

TEST_F(LocalOpenFileTest, ClosingWhatWasWrittenForgetsWhatWasLearned) {
    memory.addFile("/a", "content");
    const Item item = at("/a");
    EXPECT_EQ(item->size(), 7U);
    const Token reading = item->openFileForReading();
    const Token writing = item->openFileForWriting();
    ASSERT_EQ(item->setFileContentsWithRange(bytesOf("two"), {0, 3}, writing.get()),
              Status::Success);
    item->closeFile(reading.get());
    EXPECT_EQ(item->size(), 7U); // as it was learned
    item->closeFile(writing.get());
    EXPECT_EQ(item->size(), 3U);
}

TEST_F(LocalOpenFileTest, ATokenOutlivesItsItem) {
    memory.addFile("/a", "content");
    const Token token = at("/a")->openFileForReading();
    EXPECT_EQ(textOfRange(*at("/elsewhere"), token.get(), 0, 3), "con");
}

TEST_F(LocalOpenFileTest, AReadThatFailsAnswersNothing) {
    memory.addFile("/a", "content");
    const Item item = at("/a");
    const Token token = item->openFileForReading();
    files.failOperation("OpenFile.readAt", EIO);
    EXPECT_EQ(textOfRange(*item, token.get(), 0, 3), "nothing");
    files.failOperation("OpenFile.readAt", 0);
    EXPECT_EQ(textOfRange(*item, token.get(), 0, 3), "con");
    files.failOperation("OpenFile.attributes", EIO);
    EXPECT_EQ(textOfRange(*item, token.get(), 0, 2'000'000), "nothing");
    EXPECT_EQ(textOfRange(*item, token.get(), 0, 1'000'000), "content"); // asks nothing
}

TEST_F(LocalOpenFileTest, WritesAllTheDataWhateverTheRangesLength) {
    memory.addFile("/a", "");
    const Item item = at("/a");
    const Token token = item->openFileForWriting();
    EXPECT_EQ(item->setFileContentsWithRange(bytesOf("0123456789"), {0, 2}, token.get()),
              Status::Success);
    EXPECT_EQ(contentOf("/a"), "0123456789");
    EXPECT_EQ(item->setFileContentsWithRange(bytesOf("ab"), {3, 500}, token.get()),
              Status::Success);
    EXPECT_EQ(contentOf("/a"), "012ab56789");
    EXPECT_EQ(item->setFileContentsWithRange(bytesOf("xyz"), {9, 3}, token.get()), Status::Success);
    EXPECT_EQ(contentOf("/a"), "012ab5678xyz");
    EXPECT_EQ(item->setFileContentsWithRange({}, {5, 3}, token.get()), Status::Success);
    EXPECT_EQ(contentOf("/a"), "012ab5678xyz");
}

TEST_F(LocalOpenFileTest, ALocationBehindTheEndMakesTheFileLongerByZeros) {
    using namespace std::string_literals;
    memory.addFile("/a", "old");
    const Item item = at("/a");
    const Token token = item->openFileForWriting();
    EXPECT_EQ(item->setFileContentsWithRange(bytesOf("x"), {3, 1}, token.get()), Status::Success);
    EXPECT_EQ(contentOf("/a"), "\0\0\0x"s);
    EXPECT_EQ(item->setFileContentsWithRange({}, {6, 0}, token.get()), Status::Success);
    EXPECT_EQ(contentOf("/a"), "\0\0\0x\0\0"s); // also without data
    EXPECT_EQ(item->setFileContentsWithRange({}, {7, 0}, token.get()), Status::Success);
    EXPECT_EQ(contentOf("/a"), "\0\0\0x\0\0\0"s); // by one, too
    EXPECT_EQ(item->setFileContentsWithWholeRange(bytesOf("y"), {7, 1}, token.get()),
              Status::Success);
    EXPECT_EQ(contentOf("/a"), "\0\0\0x\0\0\0y"s);
}

TEST_F(LocalOpenFileTest, AFileThatGrewMeanwhileIsNotCut) {
    memory.addFile("/a", "");
    const Item item = at("/a");
    const Token token = item->openFileForWriting();
    memory.addFile("/a", "0123456789"); // somebody else's
    EXPECT_EQ(item->setFileContentsWithRange(bytesOf("x"), {4, 1}, token.get()), Status::Success);
    EXPECT_EQ(contentOf("/a"), "0123x56789");
}

TEST_F(LocalOpenFileTest, AWriteThatFailsIsAFailure) {
    memory.addFile("/a", "");
    const Item item = at("/a");
    const Token token = item->openFileForWriting();
    const auto write = [&](std::uint32_t location) {
        return item->setFileContentsWithRange(bytesOf("ab"), {location, 2}, token.get());
    };
    ASSERT_EQ(write(0), Status::Success);
    for (const int error : {EIO, ENOSPC, EDQUOT}) {
        files.failOperation("OpenFile.write", error);
        EXPECT_EQ(write(2), Status::Failure);
    }
    files.failOperation("OpenFile.write", 0);
    EXPECT_EQ(write(2), Status::Success); // where the host would write is looked up again
    EXPECT_EQ(contentOf("/a"), "abab");
    files.failOperation("OpenFile.setPosition", EIO);
    EXPECT_EQ(write(0), Status::Failure);
    EXPECT_EQ(write(4), Status::Success); // no need to
    files.failOperation("OpenFile.setSize", EFBIG);
    EXPECT_EQ(write(100), Status::Failure);
    files.failOperation("OpenFile.attributes", EIO);
    EXPECT_EQ(write(100), Status::Failure);
    EXPECT_EQ(contentOf("/a"), "ababab");
}

TEST_F(LocalOpenFileTest, AFullVolumeIsAFailureAndWhatFitIsThere) {
    memory.addFile("/a", "");
    memory.capacity = 3;
    const Item item = at("/a");
    const Token token = item->openFileForWriting();
    EXPECT_EQ(item->setFileContentsWithRange(bytesOf("01234"), {0, 5}, token.get()),
              Status::Failure);
    EXPECT_EQ(contentOf("/a"), "012");
}

TEST_F(LocalOpenFileTest, WhatWasOpenedForReadingIsNotWritten) {
    memory.addFile("/a", "content");
    const Item item = at("/a");
    const Token token = item->openFileForReading();
    EXPECT_EQ(item->setFileContentsWithRange(bytesOf("x"), {0, 1}, token.get()), Status::Failure);
    EXPECT_EQ(item->setFileContentsWithRange(bytesOf("x"), {100, 1}, token.get()), Status::Failure);
    EXPECT_EQ(contentOf("/a"), "content");
}

TEST_F(LocalOpenFileTest, WhatWasOpenedForWritingMayBeRead) {
    memory.addFile("/a", "");
    const Item item = at("/a");
    const Token token = item->openFileForWriting();
    ASSERT_EQ(item->setFileContentsWithRange(bytesOf("content"), {0, 7}, token.get()),
              Status::Success);
    EXPECT_EQ(textOfRange(*item, token.get(), 2, 3), "nte");
}

TEST_F(LocalOpenFileTest, TheFirstFailureIsKept) {
    memory.addFile("/a", "");
    const Item item = at("/a");
    const Token token = item->openFileForWriting();
    internal::LocalOpenFile* const file = internal::LocalOpenFile::stillOpen(token.get());
    ASSERT_NE(file, nullptr);
    EXPECT_TRUE(file->failure().isNone());
    files.failOperation("OpenFile.close", EDQUOT);
    item->closeFile(token.get());
    EXPECT_EQ(file->failure(), SystemError(EDQUOT));
}

TEST_F(LocalOpenFileTest, OffsetsThatNoFileHasAreFailures) {
    memory.addFile("/a", "");
    const Item item = at("/a");
    const Token token = item->openFileForWriting();
    constexpr std::uint64_t beyond = std::uint64_t{1} << 63U;
    EXPECT_EQ(item->fileContentsWithWholeRange({beyond, 4}, token.get()), std::nullopt);
    EXPECT_EQ(item->setFileContentsWithWholeRange(bytesOf("x"), {beyond, 1}, token.get()),
              Status::Failure);
    EXPECT_EQ(contentOf("/a"), "");
}

TEST_F(LocalOpenFileTest, TheWholeSizeIsThatOfTheContent) {
    memory.addFile("/folder/a", "content");
    memory.addLink("/link", "/folder/a");
    memory.addLink("/broken", "/nowhere");
    EXPECT_EQ(at("/folder/a")->wholeSize(), 7U);
    EXPECT_EQ(at("/link")->wholeSize(), 7U);
    EXPECT_EQ(at("/broken")->wholeSize(), 0U);
    EXPECT_EQ(at("/missing")->wholeSize(), 0U);
    EXPECT_EQ(at("/folder")->wholeSize(), 7U);
}

TEST_F(LocalOpenFileTest, WithoutSharedBlocksARangeIsTriedOnce) {
    memory.addFile("/a", "content");
    memory.addFile("/b", "");
    const Item source = at("/a");
    const Item copy = at("/b");
    const Token reading = source->openFileForReading();
    const Token writing = copy->openFileForWriting();
    OpenFileToken foreign;
    EXPECT_EQ(callsOf([&] {
                  EXPECT_FALSE(source->cloneRange({0, 4}, &foreign, copy.get(), writing.get()));
                  EXPECT_FALSE(source->cloneRange({0, 4}, reading.get(), copy.get(), &foreign));
              }),
              Calls{});
    EXPECT_EQ(
        callsOf([&] {
            EXPECT_FALSE(source->cloneRange({0, 4}, reading.get(), copy.get(), writing.get()));
            EXPECT_FALSE(source->cloneRange({4, 3}, reading.get(), copy.get(), writing.get()));
        }),
        Calls{"OpenFile.cloneRange /b"});
    EXPECT_EQ(contentOf("/b"), "");
}

// On the host's own files

TEST_F(LocalOpenFileOnDisk, NothingWaitsForPipesSocketsAndDevices) {
    addPipe("pipe");
    EXPECT_EQ(in("pipe")->openFileForReading(), nullptr);
    EXPECT_EQ(in("pipe")->openFileForWriting(), nullptr);
    for (const std::string_view path : {"/dev/null", "/dev/zero", "/dev/tty"}) {
        EXPECT_EQ(at(path)->openFileForReading(), nullptr) << path;
        EXPECT_EQ(at(path)->openFileForWriting(), nullptr) << path;
    }
    EXPECT_EQ(in("pipe")->wholeSize(), 0U);
}

TEST_F(LocalOpenFileOnDisk, ReadsAndWritesRanges) {
    addFile("a", "0123456789");
    const Item item = in("a");
    Token token = item->openFileForReading();
    ASSERT_NE(token, nullptr);
    EXPECT_EQ(textOfRange(*item, token.get(), 3, 4), "3456");
    EXPECT_EQ(textOfRange(*item, token.get(), 8, 4), "89");
    EXPECT_EQ(textOfRange(*item, token.get(), 11, 4), "");
    item->closeFile(token.get());
    token = item->openFileForWriting();
    EXPECT_EQ(contentOf("a"), "");
    EXPECT_EQ(item->setFileContentsWithRange(bytesOf("xy"), {2, 2}, token.get()), Status::Success);
    EXPECT_EQ(item->setFileContentsWithRange(bytesOf("ab"), {0, 2}, token.get()), Status::Success);
    EXPECT_EQ(contentOf("a"), "abxy");
    item->closeFile(token.get());
    EXPECT_EQ(item->size(), 4U);
}

TEST_F(LocalOpenFileOnDisk, NamesNeedNotBeUTF8) {
    addFile("\xFF\xFE", "content");
    const Item item = in("\xFF\xFE");
    const Token token = item->openFileForReading();
    ASSERT_NE(token, nullptr);
    EXPECT_EQ(textOfRange(*item, token.get(), 0, 7), "content");
}

TEST_F(LocalOpenFileOnDisk, FilesBeyond32BitsAreReachedWhole) {
    addFile("large", "");
    if (::truncate(folder.path("large").c_str(), ::off_t{5} << 30U) != 0) {
        GTEST_SKIP() << "no files of 5 GiB here";
    }
    const Item item = in("large");
    EXPECT_EQ(item->size(), gibibyte);
    EXPECT_EQ(item->wholeSize(), 5 * gibibyte);
    Token token = item->openFileForReading();
    const auto tail = item->fileContentsWithWholeRange({5 * gibibyte - 3, 10}, token.get());
    ASSERT_TRUE(tail);
    EXPECT_EQ(tail->size(), 3U);
    EXPECT_EQ(item->fileContentsWithRange({0xFFFFFFFFU, 2}, token.get()), Data(2));
    item->closeFile(token.get());

    token = item->openFileForWriting();
    EXPECT_EQ(item->setFileContentsWithWholeRange(bytesOf("end"), {6 * gibibyte, 3}, token.get()),
              Status::Success);
    // A file of more than 32 bits is never made longer for a location of 32 bits.
    EXPECT_EQ(item->setFileContentsWithRange(bytesOf("xy"), {0xFFFFFFFFU, 2}, token.get()),
              Status::Success);
    item->closeFile(token.get());
    EXPECT_EQ(item->wholeSize(), 6 * gibibyte + 3);
    token = item->openFileForReading();
    const auto end = item->fileContentsWithWholeRange({6 * gibibyte - 1, 100}, token.get());
    ASSERT_TRUE(end);
    EXPECT_EQ(textOf(*end), std::string_view("\0end", 4));
    EXPECT_EQ(textOfRange(*item, token.get(), 0xFFFFFFFFU, 2), "xy");
}

} // namespace
} // namespace tav
