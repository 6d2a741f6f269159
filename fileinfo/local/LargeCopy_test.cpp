// Large local files, whose content is read ahead by a thread while it is written.

#include "fileinfo/CopyOptions.hpp"
#include "fileinfo/CopyStatus.hpp"
#include "fileinfo/local/LocalOpenFile.hpp"
#include "fileinfo/local/MacFileInfoFixture_test.hpp"
#include "testing/OwnMounts.hpp"
#include "testing/SpaceUsed.hpp"

#include <functional>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

namespace tav {
namespace {

constexpr std::uint64_t mebibyte = std::uint64_t{1} << 20U;
constexpr std::uint64_t largeSize = 12 * mebibyte + 4321;
using Mode = internal::LocalOpenFile::Mode;

/// No two chunks are alike.
std::string largeContent(std::uint64_t size = largeSize) {
    std::string content(size, '\0');
    for (std::uint64_t i = 0; i < size; ++i) {
        content[i] = static_cast<char>(i * 31 ^ i >> 12U);
    }
    return content;
}

class LargeCopyThread : public MacFileInfoOnDisk {
  protected:
    const std::string content = largeContent();
    int reports = 0;
    /// What happens at each report, of which the first is 1; true cancels.
    std::function<bool(int report)> atReport = [](int /*report*/) { return false; };
    ProgressDelegate delegate;

    void SetUp() override {
        addFile("from", content);
        delegate.copyingFile = [this](TavBaseFileInfo& /*source*/, TavBaseFileInfo& /*copy*/,
                                      float /*percent*/,
                                      void* /*userData*/) { return atReport(++reports); };
    }
    void change(std::string_view name, const std::function<SystemError(OpenFile&)>& how) const {
        OpenOptions options;
        options.write = true;
        const auto file = FileSystem::current().open(folder.path(name), options);
        ASSERT_TRUE(file.ok() && how(*file.value()).isNone());
    }
    void cut(std::string_view name, std::uint64_t size) const {
        change(name, [size](OpenFile& file) { return file.setSize(size); });
    }
    Status copy(const CopyOptions& options = {}) {
        return in("from")->copyTo(in("to").get(), false, &delegate, nullptr, nullptr, options);
    }
};

// Contents are compared by EXPECT_TRUE: the framework would print megabytes of them.

TEST_F(LargeCopyThread, IsTheSameFile) {
    EXPECT_EQ(copy(), Status::Success);
    EXPECT_TRUE(contentOf("to") == content);
    EXPECT_EQ(reports, 13);
    EXPECT_EQ(spaceUsedBy(folder.path("to")), spaceUsedBy(folder.path("from")));
}

TEST_F(LargeCopyThread, OfEachSizeAroundWholeChunks) {
    for (const std::uint64_t size : {8 * mebibyte - 1, 8 * mebibyte, 8 * mebibyte + 1,
                                     9 * mebibyte - 4096, 33 * mebibyte + 1}) {
        const std::string other = largeContent(size);
        addFile("from", other);
        EXPECT_EQ(copy(), Status::Success) << size;
        EXPECT_TRUE(contentOf("to") == other) << size;
    }
}

TEST_F(LargeCopyThread, WithEachOptionIsTheSameFile) {
    CopyOptions all;
    all.keepsDestination = true;
    all.verifies = true;
    all.carriesPermissions = true;
    all.carriesExtendedAttributes = true;
    all.carriesHoles = true;
    all.isWhole = true;
    for (bool CopyOptions::*const option :
         {&CopyOptions::keepsDestination, &CopyOptions::verifies, &CopyOptions::carriesPermissions,
          &CopyOptions::carriesHoles, &CopyOptions::isWhole}) {
        CopyOptions one;
        one.*option = true;
        EXPECT_EQ(copy(one), Status::Success);
        EXPECT_TRUE(contentOf("to") == content);
    }
    EXPECT_EQ(copy(all), Status::Success);
    EXPECT_TRUE(contentOf("to") == content);
}

TEST_F(LargeCopyThread, HolesStayHolesAmongLargeStretches) {
    cut("from", 10 * mebibyte);
    cut("from", 30 * mebibyte);
    change("from", [](OpenFile& file) {
        const SystemError error = file.setPosition(20 * mebibyte);
        return error.isNone() ? file.write(bytesOf(std::string(9 * mebibyte, 'x'))) : error;
    });
    CopyOptions holes;
    holes.carriesHoles = true;
    EXPECT_EQ(copy(holes), Status::Success);
    EXPECT_TRUE(contentOf("to") == contentOf("from"));
    const std::uint64_t used = spaceUsedBy(folder.path("from"));
    if (used >= 30 * mebibyte) {
        GTEST_SKIP() << "the file system of temporary files keeps no holes";
    }
    EXPECT_EQ(spaceUsedBy(folder.path("to")), used);
}

TEST_F(LargeCopyThread, CancelledAfterAnyReportLeavesNothing) {
    for (int last = 1; last <= 12; ++last) {
        reports = 0;
        atReport = [last](int report) { return report == last; };
        EXPECT_EQ(copy(), CopyStatus::cancelled);
        EXPECT_EQ(reports, last);
        EXPECT_EQ(at(folder.path())->folderContents().size(), 1U);
    }
}

TEST_F(LargeCopyThread, AnExceptionOfTheDelegateIsHandedOn) {
    atReport = [](int report) {
        if (report == 3) {
            throw std::runtime_error("enough");
        }
        return false;
    };
    EXPECT_THROW(static_cast<void>(copy()), std::runtime_error);
    EXPECT_EQ(at(folder.path())->folderContents().size(), 1U);
}

TEST_F(LargeCopyThread, ASourceThatIsCutMeanwhileIsCopiedAsFarAsItGoes) {
    atReport = [this](int report) {
        if (report == 1) {
            cut("from", 6 * mebibyte + 17);
        }
        return false;
    };
    EXPECT_EQ(copy(), Status::Success);
    EXPECT_EQ(reports, 13);
    const std::string copied = contentOf("to");
    ASSERT_GE(copied.size(), 6 * mebibyte + 17);
    EXPECT_LE(copied.size(), largeSize);
    EXPECT_EQ(copied.compare(0, 6 * mebibyte + 17, content, 0, 6 * mebibyte + 17), 0);
    EXPECT_EQ(spaceUsedBy(folder.path("to")) / mebibyte, (copied.size() + 4095) / mebibyte);
}

TEST_F(LargeCopyThread, ASourceThatGrowsMeanwhileIsCopiedAsLongAsItWas) {
    atReport = [this](int report) {
        if (report == 1) {
            change("from", [](OpenFile& file) {
                const SystemError error = file.setPosition(largeSize);
                return error.isNone() ? file.write(bytesOf("more")) : error;
            });
        }
        return false;
    };
    EXPECT_EQ(copy(), Status::Success);
    EXPECT_TRUE(contentOf("to") == content);
}

TEST_F(LargeCopyThread, RangesInAnyOrderAreTheRightOnes) {
    using internal::LocalOpenFile;
    addFile("to", "");
    const auto from = LocalOpenFile::open(folder.path("from"), Mode::Reading);
    const auto to = LocalOpenFile::open(folder.path("to"), Mode::Writing);
    for (const std::uint64_t chunk : {0U, 1U, 2U, 1U, 5U, 6U, 7U, 3U, 4U, 11U, 8U, 9U, 10U, 0U}) {
        EXPECT_TRUE(to->copyRange(*from, {chunk * mebibyte, mebibyte})) << chunk;
    }
    EXPECT_FALSE(to->copyRange(*from, {12 * mebibyte, mebibyte})); // there is less
    EXPECT_FALSE(to->copyRange(*from, {12 * mebibyte, 4321}));     // too little to be worth it
    ASSERT_TRUE(from->read({12 * mebibyte, 4321}).ok());
    EXPECT_TRUE(to->write(from->read({12 * mebibyte, 4321}).value(), 12 * mebibyte).isNone());
    EXPECT_TRUE(from->close().isNone());
    EXPECT_TRUE(to->close().isNone());
    EXPECT_TRUE(contentOf("to") == content);
}

TEST_F(LargeCopyThread, ATokenMayGoBeforeItIsReadToItsEnd) {
    using internal::LocalOpenFile;
    addFile("to", "");
    auto from = LocalOpenFile::open(folder.path("from"), Mode::Reading);
    const auto to = LocalOpenFile::open(folder.path("to"), Mode::Writing);
    EXPECT_TRUE(to->copyRange(*from, {0, mebibyte}));
    from.reset();
    EXPECT_TRUE(to->close().isNone());
    EXPECT_TRUE(contentOf("to") == content.substr(0, mebibyte));
}

/// Of a copy that ends early nothing is kept on the medium but what it holds.
int placeOfAPart(const std::string& folder) {
    using internal::LocalOpenFile;
    const std::string source = folder + "/from";
    const std::string copy = folder + "/to";
    FileSystem& files = FileSystem::current();
    if (!files.writeFile(source, bytesOf(largeContent()), 0600).isNone() ||
        !files.writeFile(copy, {}, 0600).isNone()) {
        return 1;
    }
    const auto from = LocalOpenFile::open(source, Mode::Reading);
    const auto to = LocalOpenFile::open(copy, Mode::Writing);
    if (!to->copyRange(*from, {0, mebibyte})) {
        return 2;
    }
    if (spaceUsedBy(copy) < 12 * mebibyte) {
        return 3; // as much as is still to come
    }
    if (!to->close().isNone() || !from->close().isNone()) {
        return 4;
    }
    return spaceUsedBy(copy) == mebibyte && files.attributes(copy).value().size == mebibyte ? passed
                                                                                            : 5;
}

TEST_F(LargeCopyThread, WhatIsNotWrittenAfterAllGivesItsPlaceBack) {
    addFolder("volume");
    const std::string place = folder.path("volume");
    const int end = runWithOwnMounts([&] {
        return mountImage(folder.path("image"), "mkfs.ext4 -q -b 4096", "ext4", place, "64M")
                   ? placeOfAPart(place)
                   : cannotMount;
    });
    if (end == cannotMount) {
        GTEST_SKIP() << "no root, no loop devices or no mkfs.ext4";
    }
    EXPECT_EQ(end, passed);
}

/// A volume that has just enough room, and one that runs full meanwhile.
int copyWhereRoomIsShort(const std::string& folder, std::uint64_t taken) {
    FileSystem& files = FileSystem::current();
    const std::string content = largeContent();
    const std::string source = folder + "/from";
    if (!files.writeFile(source, bytesOf(content), 0600).isNone()) {
        return 1;
    }
    ProgressDelegate delegate;
    int reports = 0;
    delegate.copyingFile = [&](TavBaseFileInfo& /*source*/, TavBaseFileInfo& /*copy*/,
                               float /*percent*/, void* /*userData*/) {
        if (++reports == 2 && taken != 0) {
            static_cast<void>(
                files.writeFile(folder + "/other", bytesOf(std::string(taken, 'x')), 0600));
        }
        return false;
    };
    const Status status = TavMacFileInfo::fileInfoWithPath(source)->copyTo(
        TavMacFileInfo::fileInfoWithPath(folder + "/to").get(), false, &delegate, nullptr, nullptr);
    const auto copied = files.readFile(folder + "/to", 1U << 30U);
    if (!copied.ok()) {
        return 2;
    }
    if (status == Status::Success) {
        return textOf(copied.value()) == content ? passed : 3;
    }
    return content.starts_with(textOf(copied.value())) ? passed : 4;
}

TEST_F(LargeCopyThread, RunsIntoTheEndOfAVolumeAsAnyCopy) {
    addFolder("volume");
    const std::string place = folder.path("volume");
    for (const std::uint64_t taken : {std::uint64_t{0}, 4 * mebibyte, 64 * mebibyte}) {
        const int end = runWithOwnMounts([&] {
            return mountImage(folder.path("image"), "mkfs.ext4 -q -b 4096 -m 0", "ext4", place,
                              "32M")
                       ? copyWhereRoomIsShort(place, taken)
                       : cannotMount;
        });
        if (end == cannotMount) {
            GTEST_SKIP() << "no root, no loop devices or no mkfs.ext4";
        }
        EXPECT_EQ(end, passed) << taken;
    }
}

} // namespace
} // namespace tav
