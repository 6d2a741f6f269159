#include "platform/FileSystem.hpp"
#include "platform/ReadAhead.hpp"
#include "testing/TemporaryFolder.hpp"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <functional>
#include <string>
#include <thread>

#include <gtest/gtest.h>

namespace tav {
namespace {

constexpr std::size_t pieceSize = 1000;

/// A file of which only reading at an offset is known: "abc...zabc..." of a length, which a test
/// can change, and a failure at an offset.
class ReadableFile final : public OpenFile {
  public:
    std::atomic<std::uint64_t> size = 10 * pieceSize;
    std::atomic<std::uint64_t> failsAt = ~std::uint64_t{0};
    std::atomic<std::uint64_t> readTo = 0;
    std::atomic<bool> isHeld = false;
    bool isForOneThread = false;

    static char byteAt(std::uint64_t offset) { return static_cast<char>('a' + offset % 26); }

    [[nodiscard]] bool canBeReadBeside() const override { return !isForOneThread; }
    Result<std::size_t> readAt(std::uint64_t offset, std::span<std::byte> buffer) override {
        while (isHeld) {
            std::this_thread::yield();
        }
        if (offset + buffer.size() > failsAt) {
            return SystemError(EIO);
        }
        const auto length = static_cast<std::size_t>(
            std::min<std::uint64_t>(buffer.size(), size - std::min<std::uint64_t>(size, offset)));
        for (std::size_t i = 0; i < length; ++i) {
            buffer[i] = static_cast<std::byte>(byteAt(offset + i));
        }
        readTo = offset + length;
        return length;
    }

    Result<FileAttributes> attributes() override { return SystemError(ENOSYS); }
    Result<std::size_t> read(std::span<std::byte> /*buffer*/) override {
        return SystemError(ENOSYS);
    }
    Result<std::size_t> writeOnce(BytesView /*bytes*/) override { return SystemError(ENOSYS); }
    SystemError write(BytesView /*bytes*/) override { return SystemError(ENOSYS); }
    Result<std::uint64_t> position() override { return SystemError(ENOSYS); }
    SystemError setPosition(std::uint64_t /*offset*/) override { return SystemError(ENOSYS); }
    SystemError setSize(std::uint64_t /*size*/) override { return SystemError(ENOSYS); }
    Result<DataStretch> nextData(std::uint64_t /*offset*/) override { return SystemError(ENOSYS); }
    SystemError cloneRange(OpenFile& /*from*/, std::uint64_t /*fromOffset*/,
                           std::uint64_t /*length*/, std::uint64_t /*offset*/) override {
        return SystemError(ENOSYS);
    }
    void forgetCached() override {}
    [[nodiscard]] int descriptor() const override { return -1; }
    SystemError setModificationDate(Date /*date*/) override { return SystemError(ENOSYS); }
    Result<Data> extendedAttribute(std::string_view /*name*/) override {
        return SystemError(ENOSYS);
    }
    SystemError setExtendedAttribute(std::string_view /*name*/, BytesView /*value*/) override {
        return SystemError(ENOSYS);
    }
    SystemError sync() override { return SystemError(ENOSYS); }
    SystemError close() override { return SystemError(ENOSYS); }
};

std::string contentOf(std::uint64_t begin, std::uint64_t end) {
    std::string content;
    for (std::uint64_t offset = begin; offset < end; ++offset) {
        content.push_back(ReadableFile::byteAt(offset));
    }
    return content;
}

class ReadAheadThread : public testing::Test {
  protected:
    ReadableFile file;

    std::unique_ptr<ReadAhead> started(std::uint64_t begin, std::uint64_t end) {
        return ReadAhead::start(file, begin, end, pieceSize);
    }
    /// Until nothing comes any more.
    static std::string allOf(ReadAhead& ahead) {
        std::string all;
        for (;;) {
            const auto piece = ahead.next();
            if (!piece.ok()) {
                return all + "!" + std::to_string(piece.error().number());
            }
            if (piece.value().empty()) {
                return all;
            }
            all += textOf(piece.value());
        }
    }
};

TEST_F(ReadAheadThread, GivesPieceAfterPiece) {
    const auto ahead = started(0, 3500);
    EXPECT_EQ(ahead->position(), 0U);
    for (std::uint64_t begin = 0; begin < 3500; begin += pieceSize) {
        const std::uint64_t end = std::min<std::uint64_t>(begin + pieceSize, 3500);
        const auto piece = ahead->next();
        ASSERT_TRUE(piece.ok());
        EXPECT_EQ(textOf(piece.value()), contentOf(begin, end));
        EXPECT_EQ(ahead->position(), end);
    }
    for (int i = 0; i < 3; ++i) {
        const auto behind = ahead->next();
        EXPECT_TRUE(behind.ok() && behind.value().empty());
        EXPECT_EQ(ahead->position(), 3500U);
    }
}

TEST_F(ReadAheadThread, BeginsWhereItIsTold) {
    for (const std::uint64_t begin : {std::uint64_t{1}, std::uint64_t{2999}}) {
        EXPECT_EQ(allOf(*started(begin, 8000)), contentOf(begin, 8000));
    }
    EXPECT_EQ(allOf(*started(500, 500)), "");
}

TEST_F(ReadAheadThread, TheEndOfTheFileIsTheEnd) {
    EXPECT_EQ(allOf(*started(0, 20 * pieceSize)), contentOf(0, 10 * pieceSize));
    file.size = 2500;
    EXPECT_EQ(allOf(*started(0, 20 * pieceSize)), contentOf(0, 2500));
    file.size = 0;
    EXPECT_EQ(allOf(*started(0, 20 * pieceSize)), "");
}

TEST_F(ReadAheadThread, AFailureComesInItsPlaceAndIsTheLast) {
    file.failsAt = 4 * pieceSize;
    const auto ahead = started(0, 10 * pieceSize);
    EXPECT_EQ(allOf(*ahead), contentOf(0, 4 * pieceSize) + "!" + std::to_string(EIO));
    EXPECT_EQ(ahead->position(), 4 * pieceSize);
    EXPECT_EQ(allOf(*ahead), "");
}

TEST_F(ReadAheadThread, IsAFewPiecesAheadAndNoMore) {
    file.size = 100 * pieceSize;
    const auto ahead = started(0, 100 * pieceSize);
    const auto readsUpTo = [this](std::uint64_t offset) {
        while (file.readTo < offset) { // the time limit of the test ends it
            std::this_thread::yield();
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(20)); // to go on, if it did
        return file.readTo == offset;
    };
    EXPECT_TRUE(readsUpTo(4 * pieceSize));
    static_cast<void>(ahead->next());
    EXPECT_TRUE(readsUpTo(4 * pieceSize)); // the piece is still held
    for (int i = 0; i < 4; ++i) {
        static_cast<void>(ahead->next());
    }
    while (file.readTo < 6 * pieceSize) {
        std::this_thread::yield();
    }
    EXPECT_LE(file.readTo, 8 * pieceSize);
}

TEST_F(ReadAheadThread, EndsAtAnyMoment) {
    file.size = 100 * pieceSize;
    for (int taken = 0; taken < 20; ++taken) {
        const auto ahead = started(0, 100 * pieceSize);
        for (int i = 0; i < taken; ++i) {
            ASSERT_EQ(ahead->next().value().size(), pieceSize);
        }
    }
}

TEST_F(ReadAheadThread, TheEndWaitsForTheReadThatIsUnderWay) {
    file.isHeld = true;
    auto ahead = started(0, 10 * pieceSize);
    std::atomic<bool> hasEnded = false;
    std::thread ending([&] {
        ahead.reset();
        hasEnded = true;
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_FALSE(hasEnded);
    file.isHeld = false;
    ending.join();
}

TEST_F(ReadAheadThread, FilesForOneThreadAreLeftAlone) {
    file.isForOneThread = true;
    EXPECT_EQ(started(0, 10 * pieceSize), nullptr);
}

TEST_F(ReadAheadThread, WithoutMemoryThereIsNone) {
    EXPECT_EQ(ReadAhead::start(file, 0, 1, std::size_t{1} << 60U), nullptr);
}

TEST_F(ReadAheadThread, ReadsFilesOfTheHostBesideTheirPosition) {
    const TemporaryFolder folder;
    FileSystem& files = internal::realFileSystem();
    const std::string content = contentOf(0, 123456);
    ASSERT_TRUE(files.writeFile(folder.path("f"), bytesOf(content), 0600).isNone());
    const auto opened = files.open(folder.path("f"), {});
    ASSERT_TRUE(opened.value()->setPosition(17).isNone());
    EXPECT_EQ(allOf(*ReadAhead::start(*opened.value(), 0, content.size(), 4096)), content);
    EXPECT_EQ(opened.value()->position().value(), 17U);
}

} // namespace
} // namespace tav
