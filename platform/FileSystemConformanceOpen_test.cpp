#include "platform/FileSystemConformance_test.hpp"

#include <array>

namespace tav {
namespace {

constexpr OpenOptions forReading = {};
constexpr OpenOptions forWriting = {.write = true, .create = true};
constexpr OpenOptions forAppending = {.write = true, .create = true, .append = true};
constexpr OpenOptions asNew = {.write = true, .create = true, .mustBeNew = true};

/// What every open file has to do alike.
class OpenFileConformance : public FileSystemConformance {
  protected:
    /// Fails the test, and answers a null pointer, when it cannot be opened.
    std::unique_ptr<OpenFile> opened(std::string_view name, const OpenOptions& options) {
        auto file = files.open(path(name), options);
        EXPECT_EQ(file.error().number(), 0) << name;
        return file.ok() ? std::move(file).value() : nullptr;
    }
    int errorOfOpen(std::string_view name, const OpenOptions& options) {
        return files.open(path(name), options).error().number();
    }
    static std::string readFrom(OpenFile& file, std::size_t size) {
        Data buffer(size, std::byte{'#'});
        const auto got = file.read(buffer);
        return got.ok() ? std::string(textOf(buffer).substr(0, got.value()))
                        : "error " + std::to_string(got.error().number());
    }
    static std::string readFrom(OpenFile& file, std::uint64_t offset, std::size_t size) {
        Data buffer(size, std::byte{'#'});
        const auto got = file.readAt(offset, buffer);
        return got.ok() ? std::string(textOf(buffer).substr(0, got.value()))
                        : "error " + std::to_string(got.error().number());
    }
    static std::uint64_t positionOf(OpenFile& file) {
        const auto position = file.position();
        EXPECT_TRUE(position.ok());
        return position.ok() ? position.value() : unlimited;
    }
};

INSTANTIATE_TEST_SUITE_P(, OpenFileConformance, testing::Values(Kind::Real, Kind::Memory),
                         [](const auto& tested) {
                             return tested.param == Kind::Real ? "Real" : "Memory";
                         });

// Opening.

TEST_P(OpenFileConformance, WhatIsMissingIsMadeOnlyWhenAskedFor) {
    EXPECT_EQ(errorOfOpen("f", forReading), ENOENT);
    EXPECT_EQ(errorOfOpen("f", {.write = true}), ENOENT);
    EXPECT_TRUE(namesIn(".").empty());
    EXPECT_NE(opened("f", forWriting), nullptr);
    EXPECT_EQ(read("f"), "");
    EXPECT_NE(opened("f", forReading), nullptr);
    EXPECT_NE(opened("f", {.write = true}), nullptr);
}

TEST_P(OpenFileConformance, OpeningLeavesTheContent) {
    makeFile("f", "text");
    const FileAttributes before = attributesOf("f");
    EXPECT_NE(opened("f", forWriting), nullptr);
    EXPECT_NE(opened("f", forAppending), nullptr);
    EXPECT_EQ(read("f"), "text");
    EXPECT_EQ(attributesOf("f").identity, before.identity);
    EXPECT_EQ(attributesOf("f").modificationDate, before.modificationDate);
    EXPECT_EQ(attributesOf("f").permissions, before.permissions);
}

TEST_P(OpenFileConformance, ANewFileGetsThePermissionsAndAnOldOneKeepsThem) {
    for (const std::uint32_t permissions : {0600U, 0400U, 0U, 0700U}) {
        OpenOptions options = asNew;
        options.permissions = permissions;
        const auto file = opened("f", options);
        ASSERT_NE(file, nullptr);
        EXPECT_EQ(attributesOf("f").permissions, permissions);
        // The permissions are for those who open it later.
        EXPECT_TRUE(file->write(bytesOf("x")).isNone());
        EXPECT_TRUE(files.removeFile(path("f")).isNone());
    }
    makeFile("g");
    ASSERT_TRUE(files.setPermissions(path("g"), 0640).isNone());
    OpenOptions options = forWriting;
    options.permissions = 0600;
    EXPECT_NE(opened("g", options), nullptr);
    EXPECT_EQ(attributesOf("g").permissions, 0640U);
}

TEST_P(OpenFileConformance, WhatMustBeNewIsRefusedWhereAnythingStands) {
    makeFile("f", "text");
    makeFolder("d");
    makeLink("toFile", "f");
    makeLink("nowhere", "gone");
    makeLink("self", "self");
    for (const std::string_view name : {"f", "d", "d/.", "d/..", "toFile", "nowhere", "self"}) {
        EXPECT_EQ(errorOfOpen(name, asNew), EEXIST) << name;
    }
    EXPECT_EQ(errorOfOpen("gone", asNew), 0);
    EXPECT_EQ(errorOfOpen("gone", asNew), EEXIST);
    EXPECT_EQ(read("f"), "text");
}

TEST_P(OpenFileConformance, OptionsThatContradictThemselvesAreRefused) {
    makeFile("f");
    EXPECT_EQ(errorOfOpen("f", {.create = true}), EINVAL);
    EXPECT_EQ(errorOfOpen("new", {.create = true}), EINVAL);
    EXPECT_EQ(errorOfOpen("f", {.append = true}), EINVAL);
    EXPECT_EQ(errorOfOpen("f", {.mustBeNew = true}), EINVAL);
    EXPECT_EQ(errorOfOpen("new", {.write = true, .mustBeNew = true}), EINVAL);
    EXPECT_EQ(namesIn("."), Names{"f"});
}

TEST_P(OpenFileConformance, FoldersAreNotOpened) {
    makeFolder("d");
    makeLink("l", "d");
    makeFile("f");
    for (const OpenOptions& options : {forReading, OpenOptions{.write = true}, forWriting}) {
        for (const std::string_view name : {"d", "d/", "d/.", "d/..", "l", "l/"}) {
            EXPECT_EQ(errorOfOpen(name, options), EISDIR) << name;
        }
        EXPECT_EQ(files.open("/", options).error(), SystemError(EISDIR));
        EXPECT_EQ(errorOfOpen("f/", options), options.create ? EISDIR : ENOTDIR);
        EXPECT_EQ(errorOfOpen("new/", options), options.create ? EISDIR : ENOENT);
    }
    EXPECT_EQ(errorOfOpen("d/", asNew), EISDIR);
    EXPECT_EQ(errorOfOpen("new/", asNew), EISDIR);
    EXPECT_EQ(namesIn("."), (Names{"d", "f", "l"}));
}

TEST_P(OpenFileConformance, LinksAreFollowed) {
    makeFolder("d");
    makeFile("d/f", "text");
    makeLink("l", "d/f");
    makeLink("chain", path("l"));
    const auto file = opened("chain", forWriting);
    ASSERT_NE(file, nullptr);
    EXPECT_TRUE(file->write(bytesOf("T")).isNone());
    EXPECT_EQ(read("d/f"), "Text");
    EXPECT_EQ(attributesOf("l").kind, FileKind::Link);
    makeLink("self", "self");
    EXPECT_EQ(errorOfOpen("self", forReading), ELOOP);
    EXPECT_EQ(errorOfOpen("self", forWriting), ELOOP);
    EXPECT_EQ(errorOfOpen("self/x", asNew), ELOOP);
}

TEST_P(OpenFileConformance, ThroughADanglingLinkTheFileIsMadeThere) {
    makeFolder("d");
    makeLink("l", "d/made");
    makeLink("slash", "d/none/");
    makeLink("deep", "no/such");
    EXPECT_EQ(errorOfOpen("l", forReading), ENOENT);
    EXPECT_EQ(errorOfOpen("l", {.write = true}), ENOENT);
    EXPECT_NE(opened("l", forWriting), nullptr);
    EXPECT_EQ(namesIn("d"), Names{"made"});
    EXPECT_EQ(attributesOf("l").kind, FileKind::Link);
    EXPECT_EQ(errorOfOpen("slash", forWriting), EISDIR);
    EXPECT_EQ(errorOfOpen("deep", forWriting), ENOENT);
    EXPECT_EQ(namesIn("d"), Names{"made"});
}

TEST_P(OpenFileConformance, PathsThatAreNoneAreNotOpened) {
    makeFile("f", "text");
    using namespace std::string_literals;
    const std::vector<std::pair<std::string, int>> cases = {
        {"", ENOENT},
        {path("n\0l"s), EINVAL},
        {path("f") + "\0"s, EINVAL},
        {path(std::string(256, 'n')), ENAMETOOLONG},
        {path("f/x"), ENOTDIR},
        {path("gone/x"), ENOENT},
    };
    for (const auto& [wrong, error] : cases) {
        for (const OpenOptions& options : {forReading, forWriting, forAppending, asNew}) {
            EXPECT_EQ(files.open(wrong, options).error().number(), error) << wrong;
        }
        EXPECT_EQ(files.syncFolder(wrong).number(), error) << wrong;
    }
    EXPECT_EQ(namesIn("."), Names{"f"});
}

TEST_P(OpenFileConformance, NamesAreBytes) {
    for (const std::string& name :
         {std::string("\xFF\xFE\n"), std::string("e\xCC\x81"), std::string(255, '\xC3')}) {
        const auto file = opened(name, asNew);
        ASSERT_NE(file, nullptr);
        EXPECT_TRUE(file->write(bytesOf(name)).isNone());
        EXPECT_EQ(namesIn("."), Names{name});
        EXPECT_EQ(read(name), name);
        EXPECT_TRUE(files.removeFile(path(name)).isNone());
    }
}

// Reading.

TEST_P(OpenFileConformance, ReadsAtThePositionAndMovesIt) {
    makeFile("f", "0123456789");
    const auto file = opened("f", forReading);
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(positionOf(*file), 0U);
    EXPECT_EQ(readFrom(*file, 4), "0123");
    EXPECT_EQ(positionOf(*file), 4U);
    EXPECT_EQ(readFrom(*file, 0), "");
    EXPECT_EQ(readFrom(*file, 100), "456789");
    EXPECT_EQ(positionOf(*file), 10U);
    EXPECT_EQ(readFrom(*file, 1), "");
    EXPECT_TRUE(file->setPosition(8).isNone());
    EXPECT_EQ(readFrom(*file, 1), "8");
    EXPECT_TRUE(file->setPosition(1000).isNone());
    EXPECT_EQ(positionOf(*file), 1000U);
    EXPECT_EQ(readFrom(*file, 5), "");
    EXPECT_EQ(positionOf(*file), 1000U);
    EXPECT_EQ(attributesOf("f").size, 10U);
}

TEST_P(OpenFileConformance, ReadsAtAnOffsetAndLeavesThePosition) {
    makeFile("f", "0123456789");
    const auto file = opened("f", forReading);
    ASSERT_NE(file, nullptr);
    EXPECT_TRUE(file->setPosition(3).isNone());
    EXPECT_EQ(readFrom(*file, 7, 2), "78");
    EXPECT_EQ(readFrom(*file, 8, 100), "89");
    EXPECT_EQ(readFrom(*file, 10, 1), "");
    EXPECT_EQ(readFrom(*file, 1ULL << 40U, 1), "");
    EXPECT_EQ(readFrom(*file, (1ULL << 63U) - 1, 10), "");
    EXPECT_EQ(readFrom(*file, 1ULL << 63U, 1), "error " + std::to_string(EINVAL));
    EXPECT_EQ(readFrom(*file, unlimited, 1), "error " + std::to_string(EINVAL));
    EXPECT_EQ(positionOf(*file), 3U);
    EXPECT_EQ(readFrom(*file, 1), "3");
}

TEST_P(OpenFileConformance, PositionsAreBelowTwoToThe63) {
    const auto file = opened("f", forWriting);
    ASSERT_NE(file, nullptr);
    EXPECT_TRUE(file->setPosition(7).isNone());
    EXPECT_EQ(file->setPosition(1ULL << 63U), SystemError(EINVAL));
    EXPECT_EQ(file->setPosition(unlimited), SystemError(EINVAL));
    EXPECT_EQ(positionOf(*file), 7U);
    EXPECT_EQ(file->setSize(1ULL << 63U), SystemError(EFBIG));
    EXPECT_EQ(file->setSize(unlimited), SystemError(EFBIG));
    EXPECT_EQ(file->setSize((1ULL << 63U) - 1), SystemError(EFBIG));
    EXPECT_EQ(attributesOf("f").size, 0U);
}

TEST_P(OpenFileConformance, LargeContentsComeBack) {
    std::string large(3'000'000, '\0');
    for (std::size_t index = 0; index < large.size(); ++index) {
        large[index] = static_cast<char>(index * 31 % 251);
    }
    const auto file = opened("f", asNew);
    ASSERT_NE(file, nullptr);
    EXPECT_TRUE(file->write(bytesOf(large)).isNone());
    EXPECT_EQ(positionOf(*file), large.size());
    EXPECT_TRUE(readFrom(*file, 0, large.size() + 1) == large);
    EXPECT_TRUE(file->setPosition(0).isNone());
    EXPECT_TRUE(readFrom(*file, large.size()) == large);
    EXPECT_TRUE(read("f") == large);
}

// Writing.

TEST_P(OpenFileConformance, WritesAtThePositionAndMovesIt) {
    makeFile("f", "0123456789");
    const auto file = opened("f", forWriting);
    ASSERT_NE(file, nullptr);
    EXPECT_TRUE(file->write(bytesOf("ab")).isNone());
    EXPECT_EQ(positionOf(*file), 2U);
    EXPECT_EQ(readFrom(*file, 1), "2");
    EXPECT_EQ(file->writeOnce(bytesOf("cd")).value(), 2U);
    EXPECT_EQ(positionOf(*file), 5U);
    EXPECT_EQ(read("f"), "ab2cd56789");
    EXPECT_TRUE(file->setPosition(9).isNone());
    EXPECT_TRUE(file->write(bytesOf("xyz")).isNone());
    EXPECT_EQ(read("f"), "ab2cd5678xyz");
    EXPECT_EQ(positionOf(*file), 12U);
    EXPECT_EQ(file->attributes().value().size, 12U);
}

TEST_P(OpenFileConformance, BehindTheEndComeZerosFirst) {
    using namespace std::string_literals;
    const auto file = opened("f", forWriting);
    ASSERT_NE(file, nullptr);
    EXPECT_TRUE(file->setPosition(3).isNone());
    EXPECT_TRUE(file->write(bytesOf("x")).isNone());
    EXPECT_EQ(read("f"), "\0\0\0x"s);
    EXPECT_EQ(positionOf(*file), 4U);
}

TEST_P(OpenFileConformance, WritingNothingChangesNothing) {
    makeFile("f", "text");
    const FileAttributes before = attributesOf("f");
    for (const OpenOptions& options : {forWriting, forAppending}) {
        const auto file = opened("f", options);
        ASSERT_NE(file, nullptr);
        EXPECT_TRUE(file->setPosition(9).isNone());
        EXPECT_TRUE(file->write({}).isNone());
        EXPECT_EQ(file->writeOnce({}).value(), 0U);
        EXPECT_EQ(positionOf(*file), 9U);
    }
    EXPECT_EQ(read("f"), "text");
    EXPECT_EQ(attributesOf("f").modificationDate, before.modificationDate);
}

TEST_P(OpenFileConformance, TwoThatAppendDoNotOverwriteEachOther) {
    makeFile("f", "0");
    const auto one = opened("f", forAppending);
    const auto other = opened("f", forAppending);
    ASSERT_TRUE(one != nullptr && other != nullptr);
    EXPECT_EQ(positionOf(*one), 0U);
    EXPECT_TRUE(one->write(bytesOf("11")).isNone());
    EXPECT_EQ(positionOf(*one), 3U);
    EXPECT_TRUE(other->write(bytesOf("2")).isNone());
    EXPECT_EQ(positionOf(*other), 4U);
    EXPECT_EQ(one->writeOnce(bytesOf("1")).value(), 1U);
    EXPECT_EQ(positionOf(*one), 5U);
    EXPECT_EQ(read("f"), "01121");
    // The position is for reading only.
    EXPECT_TRUE(one->setPosition(1).isNone());
    EXPECT_EQ(readFrom(*one, 2), "11");
    EXPECT_TRUE(one->write(bytesOf("3")).isNone());
    EXPECT_EQ(read("f"), "011213");
    EXPECT_EQ(positionOf(*one), 6U);
    // The end is where it is at that moment, also when it has come nearer.
    EXPECT_TRUE(other->setSize(1).isNone());
    EXPECT_TRUE(one->write(bytesOf("4")).isNone());
    EXPECT_EQ(read("f"), "04");
    EXPECT_EQ(positionOf(*one), 2U);
}

TEST_P(OpenFileConformance, WhatOneWritesTheOtherReads) {
    const auto writer = opened("f", forWriting);
    const auto reader = opened("f", forReading);
    ASSERT_TRUE(writer != nullptr && reader != nullptr);
    EXPECT_EQ(readFrom(*reader, 4), "");
    EXPECT_TRUE(writer->write(bytesOf("text")).isNone());
    EXPECT_EQ(readFrom(*reader, 4), "text");
    EXPECT_EQ(positionOf(*writer), 4U);
    EXPECT_TRUE(writer->setPosition(0).isNone());
    EXPECT_EQ(positionOf(*reader), 4U);
}

TEST_P(OpenFileConformance, WhatIsOpenOnlyToReadIsNotChanged) {
    makeFile("f", "text");
    const auto file = opened("f", forReading);
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(file->write(bytesOf("x")), SystemError(EBADF));
    EXPECT_EQ(file->writeOnce(bytesOf("x")).error(), SystemError(EBADF));
    EXPECT_EQ(file->write({}), SystemError(EBADF));
    EXPECT_EQ(file->writeOnce({}).error(), SystemError(EBADF));
    EXPECT_EQ(file->setSize(0), SystemError(EBADF));
    EXPECT_EQ(file->setSize(4), SystemError(EBADF));
    EXPECT_TRUE(file->sync().isNone());
    EXPECT_EQ(readFrom(*file, 9), "text");
    EXPECT_EQ(read("f"), "text");
}

// Sizes.

TEST_P(OpenFileConformance, TheSizeIsCutAndGrownByZeros) {
    using namespace std::string_literals;
    makeFile("f", "0123456789");
    for (const OpenOptions& options : {forWriting, forAppending}) {
        const auto file = opened("f", options);
        ASSERT_NE(file, nullptr);
        EXPECT_TRUE(file->setPosition(5).isNone());
        EXPECT_TRUE(file->setSize(3).isNone());
        EXPECT_EQ(read("f"), "012");
        EXPECT_EQ(positionOf(*file), 5U);
        EXPECT_EQ(readFrom(*file, 1), "");
        EXPECT_TRUE(file->setSize(6).isNone());
        EXPECT_EQ(read("f"), "012\0\0\0"s);
        EXPECT_EQ(file->attributes().value().size, 6U);
        EXPECT_EQ(positionOf(*file), 5U);
        EXPECT_EQ(readFrom(*file, 4), "\0"s);
        EXPECT_TRUE(file->setSize(0).isNone());
        EXPECT_EQ(read("f"), "");
        EXPECT_TRUE(file->setPosition(0).isNone());
        EXPECT_TRUE(file->write(bytesOf("0123456789")).isNone());
    }
}

// Attributes, and what becomes of the name.

TEST_P(OpenFileConformance, AttributesAreThoseOfTheFile) {
    makeFile("f", "12345");
    makeLink("l", "f");
    const auto file = opened("l", forWriting);
    ASSERT_NE(file, nullptr);
    const auto attributes = file->attributes();
    ASSERT_TRUE(attributes.ok());
    const FileAttributes expected = attributesOf("f");
    EXPECT_EQ(attributes.value().kind, FileKind::Regular);
    EXPECT_EQ(attributes.value().permissions, expected.permissions);
    EXPECT_EQ(attributes.value().user, expected.user);
    EXPECT_EQ(attributes.value().group, expected.group);
    EXPECT_EQ(attributes.value().size, 5U);
    EXPECT_EQ(attributes.value().identity, expected.identity);
    EXPECT_EQ(attributes.value().modificationDate, expected.modificationDate);
    EXPECT_EQ(attributes.value().changeDate, expected.changeDate);
}

TEST_P(OpenFileConformance, AFileStaysOpenWhenItIsMoved) {
    makeFile("f", "text");
    makeFolder("d");
    const auto file = opened("f", forWriting);
    ASSERT_NE(file, nullptr);
    ASSERT_EQ(errorOfMove("f", "d/g", Replace::No), 0);
    makeFile("f", "other");
    EXPECT_TRUE(file->write(bytesOf("T")).isNone());
    EXPECT_EQ(read("d/g"), "Text");
    EXPECT_EQ(read("f"), "other");
    EXPECT_EQ(file->attributes().value().identity, attributesOf("d/g").identity);
}

TEST_P(OpenFileConformance, AFileStaysWhileItIsOpenWhenItIsRemovedOrReplaced) {
    for (const bool isReplaced : {false, true}) {
        makeFile("f", "text");
        const auto file = opened("f", forWriting);
        const auto second = opened("f", forReading);
        ASSERT_TRUE(file != nullptr && second != nullptr);
        if (isReplaced) {
            makeFile("g", "new");
            ASSERT_EQ(errorOfMove("g", "f", Replace::Yes), 0);
        } else {
            ASSERT_TRUE(files.removeFile(path("f")).isNone());
        }
        EXPECT_EQ(readFrom(*file, 9), "text");
        EXPECT_TRUE(file->write(bytesOf(" and more")).isNone());
        EXPECT_EQ(readFrom(*second, 99), "text and more");
        EXPECT_TRUE(file->sync().isNone());
        EXPECT_EQ(file->attributes().value().size, 13U);
        EXPECT_EQ(file->attributes().value().kind, FileKind::Regular);
        EXPECT_EQ(read("f"), isReplaced ? "new" : "error " + std::to_string(ENOENT));
        EXPECT_TRUE(file->close().isNone());
        EXPECT_EQ(readFrom(*second, 0, 4), "text");
    }
}

TEST_P(OpenFileConformance, PermissionsOfAnOpenFileMayChange) {
    makeFile("f", "text");
    const auto file = opened("f", forWriting);
    ASSERT_NE(file, nullptr);
    ASSERT_TRUE(files.setPermissions(path("f"), 0).isNone());
    EXPECT_TRUE(file->write(bytesOf("T")).isNone());
    EXPECT_EQ(file->attributes().value().permissions, 0U);
}

// Syncing and closing.

TEST_P(OpenFileConformance, SyncsFilesAndFolders) {
    makeFolder("d");
    makeLink("l", "d");
    const auto file = opened("d/f", forWriting);
    ASSERT_NE(file, nullptr);
    EXPECT_TRUE(file->write(bytesOf("x")).isNone());
    EXPECT_TRUE(file->sync().isNone());
    EXPECT_TRUE(files.syncFolder(path("d")).isNone());
    EXPECT_TRUE(files.syncFolder(path("d/")).isNone());
    EXPECT_TRUE(files.syncFolder(path("l")).isNone());
    EXPECT_EQ(files.syncFolder(path("d/f")), SystemError(ENOTDIR));
    EXPECT_EQ(files.syncFolder(path("gone")), SystemError(ENOENT));
}

TEST_P(OpenFileConformance, WhatIsClosedAnswersEBADF) {
    makeFile("f", "text");
    for (const OpenOptions& options : {forReading, forWriting, forAppending}) {
        const auto file = opened("f", options);
        ASSERT_NE(file, nullptr);
        EXPECT_TRUE(file->close().isNone());
        EXPECT_EQ(file->close(), SystemError(EBADF));
        EXPECT_EQ(file->attributes().error(), SystemError(EBADF));
        std::array<std::byte, 4> buffer = {};
        EXPECT_EQ(file->read(buffer).error(), SystemError(EBADF));
        EXPECT_EQ(file->read({}).error(), SystemError(EBADF));
        EXPECT_EQ(file->readAt(0, buffer).error(), SystemError(EBADF));
        EXPECT_EQ(file->readAt(unlimited, {}).error(), SystemError(EBADF));
        EXPECT_EQ(file->writeOnce(buffer).error(), SystemError(EBADF));
        EXPECT_EQ(file->writeOnce({}).error(), SystemError(EBADF));
        EXPECT_EQ(file->write(buffer), SystemError(EBADF));
        EXPECT_EQ(file->write({}), SystemError(EBADF));
        EXPECT_EQ(file->position().error(), SystemError(EBADF));
        EXPECT_EQ(file->setPosition(0), SystemError(EBADF));
        EXPECT_EQ(file->setPosition(unlimited), SystemError(EBADF));
        EXPECT_EQ(file->setSize(0), SystemError(EBADF));
        EXPECT_EQ(file->setSize(unlimited), SystemError(EBADF));
        EXPECT_EQ(file->sync(), SystemError(EBADF));
        EXPECT_EQ(file->nextData(0).error(), SystemError(EBADF));
        EXPECT_EQ(file->nextData(unlimited).error(), SystemError(EBADF));
        EXPECT_EQ(file->cloneRange(*file, 0, 0, 0), SystemError(EBADF));
        EXPECT_EQ(file->cloneRange(*file, 0, 4, 8), SystemError(EBADF));
        EXPECT_EQ(file->descriptor(), -1);
        file->forgetCached();
    }
    EXPECT_EQ(read("f"), "text");
}

TEST_P(OpenFileConformance, ReadingAndWritingChangeTheDatesAsTheyShould) {
    makeFile("f", "text");
    const Date before = attributesOf("f").modificationDate;
    const auto file = opened("f", forWriting);
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(readFrom(*file, 2), "te");
    EXPECT_TRUE(file->setPosition(0).isNone());
    EXPECT_EQ(attributesOf("f").modificationDate, before);
    // A kernel's clock ticks in milliseconds.
    for (int round = 0; round < 100000 && attributesOf("f").modificationDate == before; ++round) {
        EXPECT_TRUE(file->setPosition(0).isNone());
        ASSERT_TRUE(file->write(bytesOf("T")).isNone());
    }
    EXPECT_GT(attributesOf("f").modificationDate, before);
    EXPECT_EQ(file->attributes().value().modificationDate, attributesOf("f").modificationDate);
}

// Dates and extended attributes.

TEST_P(OpenFileConformance, AnOpenFileKnowsItsDateWhereverItIs) {
    makeFile("f", "content");
    const auto file = opened("f", forReading);
    ASSERT_NE(file, nullptr);
    EXPECT_TRUE(files.move(path("f"), path("g"), Replace::No).isNone());
    EXPECT_TRUE(file->setModificationDate(Date(1234.5)).isNone());
    EXPECT_EQ(files.attributes(path("g")).value().modificationDate, Date(1234.5));
    EXPECT_EQ(file->setModificationDate(Date(1e300)).number(), EINVAL);
    EXPECT_TRUE(files.removeFile(path("g")).isNone());
    EXPECT_TRUE(file->setModificationDate(Date(1.0)).isNone());
    EXPECT_EQ(file->attributes().value().modificationDate, Date(1.0));
}

TEST_P(OpenFileConformance, AnOpenFileKnowsItsExtendedAttributes) {
    makeFile("f", "content");
    const auto file = opened("f", forWriting);
    ASSERT_NE(file, nullptr);
    const SystemError error = file->setExtendedAttribute("user.tav.a", bytesOf("one"));
    if (error == SystemError(ENOTSUP)) {
        GTEST_SKIP() << "the file system keeps no extended attributes";
    }
    EXPECT_TRUE(error.isNone());
    EXPECT_EQ(textOf(files.extendedAttribute(path("f"), "user.tav.a").value()), "one");
    EXPECT_TRUE(file->setExtendedAttribute("user.tav.a", bytesOf(std::string(1000, 'x'))).isNone());
    EXPECT_EQ(file->extendedAttribute("user.tav.a").value().size(), 1000U);
    EXPECT_EQ(file->extendedAttribute("user.tav.b").error().number(), ENODATA);
    const std::string_view withNul("user.tav.a\0b", 12);
    EXPECT_EQ(file->extendedAttribute(withNul).error().number(), EINVAL);
    EXPECT_EQ(file->setExtendedAttribute(withNul, {}).number(), EINVAL);
    for (const std::string& name : {std::string(), std::string("user.") + std::string(300, 'n')}) {
        EXPECT_EQ(file->setExtendedAttribute(name, {}).number(), ERANGE) << name;
        EXPECT_EQ(file->extendedAttribute(name).error().number(), ERANGE) << name;
    }
    EXPECT_EQ(file->setExtendedAttribute("user.big", Data((64U << 10U) + 1)).number(), E2BIG);
}

TEST_P(OpenFileConformance, AClosedFileHasNoDateAndNoAttributes) {
    makeFile("f", "content");
    const auto file = opened("f", forWriting);
    ASSERT_NE(file, nullptr);
    EXPECT_TRUE(file->close().isNone());
    EXPECT_EQ(file->setModificationDate(Date(1.0)).number(), EBADF);
    EXPECT_EQ(file->extendedAttribute("user.tav.a").error().number(), EBADF);
    EXPECT_EQ(file->setExtendedAttribute("user.tav.a", {}).number(), EBADF);
}

} // namespace
} // namespace tav
