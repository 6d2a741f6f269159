#include "platform/FileSystemConformance_test.hpp"
#include "platform/memory/FaultyFileSystem.hpp"

#include <array>
#include <utility>

namespace tav {
namespace {

constexpr OpenOptions forReading = {};
constexpr OpenOptions forWriting = {.write = true, .create = true};
constexpr std::uint64_t mebibyte = 1U << 20U;

/// Where files have holes, and blocks that two of them share. Whether a file system has any is its
/// own business; what is said about them has to be true everywhere.
class HolesConformance : public FileSystemConformance {
  protected:
    std::unique_ptr<OpenFile> opened(std::string_view name, const OpenOptions& options) {
        auto file = files.open(path(name), options);
        EXPECT_EQ(file.error().number(), 0) << name;
        return file.ok() ? std::move(file).value() : nullptr;
    }
    static std::vector<DataStretch> stretchesOf(OpenFile& file) {
        std::vector<DataStretch> stretches;
        std::uint64_t offset = 0;
        for (auto next = file.nextData(0); next.ok(); next = file.nextData(offset)) {
            EXPECT_GE(next.value().begin, offset);
            EXPECT_GT(next.value().end, next.value().begin);
            offset = next.value().end;
            stretches.push_back(next.value());
        }
        EXPECT_EQ(file.nextData(offset).error(), SystemError(ENXIO));
        return stretches;
    }
    static bool covers(const std::vector<DataStretch>& stretches, std::uint64_t offset) {
        return std::ranges::any_of(stretches, [&](const DataStretch& stretch) {
            return stretch.begin <= offset && offset < stretch.end;
        });
    }
};

INSTANTIATE_TEST_SUITE_P(, HolesConformance, testing::Values(Kind::Real, Kind::Memory),
                         [](const auto& tested) {
                             return tested.param == Kind::Real ? "Real" : "Memory";
                         });

TEST_P(HolesConformance, AFileWithoutHolesIsOneStretch) {
    makeFile("f", "0123456789");
    const auto file = opened("f", forReading);
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(file->nextData(0).value(), (DataStretch{0, 10}));
    EXPECT_EQ(file->nextData(7).value(), (DataStretch{7, 10}));
}

TEST_P(HolesConformance, AtTheEndAndBehindItIsNoData) {
    makeFile("f", "0123456789");
    makeFile("empty");
    const auto file = opened("f", forReading);
    ASSERT_NE(file, nullptr);
    for (const std::uint64_t offset :
         {std::uint64_t{10}, std::uint64_t{11}, 5 * mebibyte, (std::uint64_t{1} << 63U) - 1}) {
        EXPECT_EQ(file->nextData(offset).error(), SystemError(ENXIO)) << offset;
    }
    EXPECT_EQ(file->nextData(std::uint64_t{1} << 63U).error(), SystemError(EINVAL));
    EXPECT_EQ(file->nextData(unlimited).error(), SystemError(EINVAL));
    EXPECT_EQ(opened("empty", forReading)->nextData(0).error(), SystemError(ENXIO));
}

TEST_P(HolesConformance, WhateverIsNoHoleIsTold) {
    const auto file = opened("f", forWriting);
    ASSERT_NE(file, nullptr);
    // A hole, data, a hole, data, a hole.
    for (const std::uint64_t offset : {mebibyte, 3 * mebibyte + 5}) {
        ASSERT_TRUE(file->setPosition(offset).isNone());
        ASSERT_TRUE(file->write(bytesOf("data")).isNone());
    }
    ASSERT_TRUE(file->setSize(5 * mebibyte).isNone());
    const auto stretches = stretchesOf(*file);
    EXPECT_TRUE(covers(stretches, mebibyte) && covers(stretches, mebibyte + 3));
    EXPECT_TRUE(covers(stretches, 3 * mebibyte + 5) && covers(stretches, 3 * mebibyte + 8));
    EXPECT_LE(stretches.back().end, 5 * mebibyte);
    // Inside of one the rest of it is told.
    const auto inside = file->nextData(mebibyte + 2);
    ASSERT_TRUE(inside.ok());
    EXPECT_EQ(inside.value().begin, mebibyte + 2);
    Data hole(100, std::byte{'#'});
    EXPECT_EQ(file->readAt(mebibyte / 2, hole).value(), 100U);
    EXPECT_EQ(hole, Data(100, std::byte{0}));
}

TEST_P(HolesConformance, AskingLeavesThePosition) {
    const auto file = opened("f", forWriting);
    ASSERT_NE(file, nullptr);
    ASSERT_TRUE(file->setPosition(mebibyte).isNone());
    ASSERT_TRUE(file->write(bytesOf("data")).isNone());
    ASSERT_TRUE(file->setPosition(7).isNone());
    for (const std::uint64_t offset : {std::uint64_t{0}, mebibyte + 1, 2 * mebibyte, unlimited}) {
        static_cast<void>(file->nextData(offset));
        EXPECT_EQ(file->position().value(), 7U) << offset;
    }
}

TEST_P(HolesConformance, ACloneIsMadeOrNothingIsChanged) {
    const std::string content(64 * 1024, 'a');
    makeFile("from", content);
    makeFile("to", "before");
    const auto from = opened("from", forReading);
    const auto to = opened("to", forWriting);
    ASSERT_TRUE(from && to);
    ASSERT_TRUE(to->setPosition(2).isNone());
    const SystemError error = to->cloneRange(*from, 0, content.size(), 0);
    EXPECT_TRUE(error.isNone() || error == SystemError(EOPNOTSUPP)) << error.number();
    EXPECT_TRUE(read("to") == (error.isNone() ? content : "before"));
    EXPECT_TRUE(read("from") == content);
    EXPECT_EQ(to->position().value(), 2U);
    EXPECT_EQ(from->position().value(), 0U);
}

TEST_P(HolesConformance, ACloneOfNothingChangesNothing) {
    makeFile("from", "content");
    makeFile("to", "before");
    const auto to = opened("to", forWriting);
    EXPECT_TRUE(to->cloneRange(*opened("from", forReading), 3, 0, 1).isNone());
    EXPECT_EQ(read("to"), "before");
}

TEST_P(HolesConformance, NoCloneIsMadeInAFileOpenedToRead) {
    makeFile("from", "content");
    makeFile("to", "before");
    const auto from = opened("from", forReading);
    for (const std::uint64_t length : {std::uint64_t{0}, std::uint64_t{7}, unlimited}) {
        EXPECT_EQ(opened("to", forReading)->cloneRange(*from, 0, length, 0), SystemError(EBADF));
    }
    EXPECT_EQ(read("to"), "before");
}

TEST_P(HolesConformance, AFileOfAnotherKindIsNotCloned) {
    makeFile("to", "before");
    MemoryFileSystem other;
    other.addFile("/from", "content");
    const auto from = other.open("/from", {});
    const SystemError error = opened("to", forWriting)->cloneRange(*from.value(), 0, 7, 0);
    EXPECT_EQ(error, SystemError(GetParam() == Kind::Real ? EXDEV : EOPNOTSUPP));
    EXPECT_EQ(read("to"), "before");
}

TEST_P(HolesConformance, WhatTheHostForgetsIsStillThere) {
    const auto file = opened("f", forWriting);
    ASSERT_NE(file, nullptr);
    file->forgetCached();
    ASSERT_TRUE(file->write(bytesOf("text")).isNone());
    file->forgetCached();
    ASSERT_TRUE(file->sync().isNone());
    file->forgetCached();
    EXPECT_EQ(read("f"), "text");
    EXPECT_EQ(file->position().value(), 4U);
}

TEST_P(HolesConformance, OnlyTheKernelsFilesHaveNumbers) {
    makeFile("f");
    FaultyFileSystem faulty(files);
    const auto file = opened("f", forReading);
    const auto other = opened("f", forReading);
    if (GetParam() == Kind::Memory) {
        EXPECT_EQ(file->descriptor(), -1);
        return;
    }
    EXPECT_GE(file->descriptor(), 0);
    EXPECT_NE(file->descriptor(), other->descriptor());
    EXPECT_GE(faulty.open(path("f"), {}).value()->descriptor(), 0);
    EXPECT_EQ(files.canonicalPath("/proc/self/fd/" + std::to_string(file->descriptor())).value(),
              path("f"));
}

} // namespace
} // namespace tav
