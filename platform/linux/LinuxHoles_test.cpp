// Holes, and blocks that two files share, on file systems that have them.

#include "platform/linux/LinuxFileSystem.hpp"
#include "testing/OwnMounts.hpp"
#include "testing/SpaceUsed.hpp"
#include "testing/TemporaryFolder.hpp"

#include <algorithm>
#include <cerrno>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include <sys/mman.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tav {
namespace {

constexpr OpenOptions forReading = {};
constexpr OpenOptions forWriting = {.write = true, .create = true};
constexpr std::uint64_t block = 4096;
constexpr std::uint64_t mebibyte = 1U << 20U;

LinuxFileSystem& files() {
    static LinuxFileSystem instance;
    return instance;
}

std::string read(const std::string& path) {
    const auto content = files().readFile(path, 1U << 30U);
    return content.ok() ? std::string(textOf(content.value())) : "error";
}

bool write(const std::string& path, std::string_view text) {
    return files().writeFile(path, bytesOf(text), 0600).isNone();
}

struct Volume {
    std::string type;
    std::string make;
};

/// A file system whose files can share blocks, in an image on a loop device.
class SharedBlocks : public testing::TestWithParam<Volume> {
  protected:
    TemporaryFolder folder;
    std::string place = folder.path("volume");

    void SetUp() override { ASSERT_TRUE(files().createFolder(place, 0755).isNone()); }
    [[nodiscard]] std::string path(std::string_view name) const {
        return place + "/" + std::string(name);
    }
    /// Runs the checks, as `runWithOwnMounts` does, with the volume mounted.
    void onVolume(const std::function<int()>& run) const {
        const int end = runWithOwnMounts([&] {
            return mountImage(folder.path("image"), GetParam().make, GetParam().type, place, "320M")
                       ? run()
                       : cannotMount;
        });
        if (end == cannotMount) {
            GTEST_SKIP() << "no root, no loop devices, no mkfs." << GetParam().type << " or no "
                         << GetParam().type << " in the kernel";
        }
        EXPECT_EQ(end, passed);
    }
};

INSTANTIATE_TEST_SUITE_P(Volumes, SharedBlocks,
                         testing::Values(Volume{"btrfs", "mkfs.btrfs -q -f"},
                                         Volume{"xfs", "mkfs.xfs -q -f"}),
                         [](const auto& tested) { return tested.param.type; });

TEST_P(SharedBlocks, ARangeIsClonedAndThePositionsStay) {
    onVolume([this] {
        const std::string content = std::string(2 * block, 'a') + std::string(2 * block, 'b');
        if (!write(path("from"), content) || !write(path("to"), std::string(4 * block, 'c'))) {
            return 1;
        }
        const auto from = files().open(path("from"), forReading);
        const auto to = files().open(path("to"), forWriting);
        if (!to.value()->setPosition(3).isNone() ||
            !to.value()->cloneRange(*from.value(), block, 2 * block, 2 * block).isNone()) {
            return 2;
        }
        if (read(path("to")) !=
            std::string(2 * block, 'c') + std::string(block, 'a') + std::string(block, 'b')) {
            return 3;
        }
        if (to.value()->position().value() != 3 || from.value()->position().value() != 0) {
            return 4;
        }
        // What is written to one is not seen in the other.
        return to.value()->write(bytesOf("xyz")).isNone() && read(path("from")) == content ? passed
                                                                                           : 5;
    });
}

TEST_P(SharedBlocks, ARangeUpToTheEndNeedsNoWholeBlock) {
    onVolume([this] {
        const std::string content(3 * block + 17, 'a');
        if (!write(path("from"), content)) {
            return 1;
        }
        const auto from = files().open(path("from"), forReading);
        const auto to = files().open(path("to"), forWriting);
        if (!to.value()->cloneRange(*from.value(), 0, content.size(), 0).isNone()) {
            return 2;
        }
        return read(path("to")) == content ? passed : 3;
    });
}

TEST_P(SharedBlocks, WhatIsNoWholeBlockIsRefused) {
    onVolume([this] {
        const std::string content(4 * block, 'a');
        if (!write(path("from"), content) || !write(path("to"), "before")) {
            return 1;
        }
        const auto from = files().open(path("from"), forReading);
        const auto to = files().open(path("to"), forWriting);
        struct Range {
            std::uint64_t fromOffset;
            std::uint64_t length;
            std::uint64_t offset;
        };
        for (const Range& range :
             {Range{1, block, 0}, Range{0, 100, 0}, Range{0, block, 3}, Range{0, 5 * block, 0},
              Range{8 * block, block, 0}, Range{~std::uint64_t{0} - block + 1, block, 0}}) {
            const SystemError error =
                to.value()->cloneRange(*from.value(), range.fromOffset, range.length, range.offset);
            if (error != SystemError(EINVAL) && error != SystemError(EOVERFLOW)) {
                return 2;
            }
        }
        return read(path("to")) == "before" && read(path("from")) == content ? passed : 3;
    });
}

TEST_P(SharedBlocks, AnotherVolumeAndAFileToReadAreRefused) {
    onVolume([this] {
        const std::string content(block, 'a');
        if (!write(path("from"), content) || !write(path("to"), "before") ||
            !write(folder.path("outside"), content)) {
            return 1;
        }
        const auto from = files().open(path("from"), forReading);
        const auto outside = files().open(folder.path("outside"), forReading);
        const auto to = files().open(path("to"), forWriting);
        const auto toRead = files().open(path("to"), forReading);
        if (to.value()->cloneRange(*outside.value(), 0, block, 0) != SystemError(EXDEV)) {
            return 2;
        }
        if (toRead.value()->cloneRange(*from.value(), 0, block, 0) != SystemError(EBADF)) {
            return 3;
        }
        return read(path("to")) == "before" ? passed : 4;
    });
}

TEST_P(SharedBlocks, AFullVolumeClonesAllTheSame) {
    onVolume([this] {
        const std::string content(32 * mebibyte, 'a');
        if (!write(path("from"), content)) {
            return 1;
        }
        const auto from = files().open(path("from"), forReading);
        for (int i = 0; i < 20; ++i) {
            const auto to = files().open(path(std::to_string(i)), forWriting);
            if (!to.value()->cloneRange(*from.value(), 0, content.size(), 0).isNone()) {
                return 2;
            }
        }
        return read(path("19")) == content ? passed : 3;
    });
}

/// Holes on a file system of memory, which has blocks of one page.
TEST(LinuxHoles, AreToldToTheByteOfABlock) {
    const TemporaryFolder folder;
    const std::string file = folder.path("f");
    const int end = runWithOwnMounts([&] {
        if (::mount("none", folder.path().c_str(), "tmpfs", 0, "size=64m,huge=never") != 0) {
            return cannotMount;
        }
        const auto opened = files().open(file, forWriting);
        OpenFile& f = *opened.value();
        if (!f.setPosition(2 * block).isNone() || !f.write(bytesOf("x")).isNone() ||
            !f.setPosition(8 * block).isNone() || !f.write(bytesOf("y")).isNone() ||
            !f.setSize(12 * block).isNone()) {
            return 1;
        }
        if (f.nextData(0).value() != DataStretch{2 * block, 3 * block} ||
            f.nextData(2 * block + 1).value() != DataStretch{2 * block + 1, 3 * block} ||
            f.nextData(3 * block).value() != DataStretch{8 * block, 9 * block}) {
            return 2;
        }
        if (f.nextData(9 * block).error() != SystemError(ENXIO) ||
            f.nextData(12 * block).error() != SystemError(ENXIO)) {
            return 3;
        }
        if (f.position().value() != 8 * block + 1 || spaceUsedBy(file) != 2 * block) {
            return 4;
        }
        // All hole.
        return f.setSize(0).isNone() && f.setSize(block).isNone() &&
                       f.nextData(0).error() == SystemError(ENXIO)
                   ? passed
                   : 5;
    });
    if (end == cannotMount) {
        GTEST_SKIP() << "mounts need root";
    }
    EXPECT_EQ(end, passed);
}

TEST(LinuxHoles, VolumesWithoutSharedBlocksRefuseClones) {
    const TemporaryFolder folder;
    const int end = runWithOwnMounts([&] {
        if (::mount("none", folder.path().c_str(), "tmpfs", 0, "size=1m") != 0) {
            return cannotMount;
        }
        if (!write(folder.path("from"), std::string(block, 'a')) ||
            !write(folder.path("to"), "before")) {
            return 1;
        }
        const auto from = files().open(folder.path("from"), forReading);
        const auto to = files().open(folder.path("to"), forWriting);
        if (to.value()->cloneRange(*from.value(), 0, block, 0) != SystemError(EOPNOTSUPP)) {
            return 2;
        }
        return read(folder.path("to")) == "before" ? passed : 3;
    });
    if (end == cannotMount) {
        GTEST_SKIP() << "mounts need root";
    }
    EXPECT_EQ(end, passed);
}

/// What an expected write takes on the medium before it happens; the file can be read as before.
int expectedOn(const std::string& file, std::uint64_t used) {
    const auto opened = files().open(file, forWriting);
    OpenFile& f = *opened.value();
    if (!f.write(bytesOf("before")).isNone() || !f.sync().isNone()) {
        return 1;
    }
    f.expectWrite(block, 2 * block);
    f.expectWrite(3 * block, 1);
    f.expectWrite(~std::uint64_t{0}, 1);
    f.expectWrite(0, ~std::uint64_t{0});
    f.expectWrite(block, 0);
    if (spaceUsedBy(file) != used) {
        return 2;
    }
    if (f.attributes().value().size != 6 || f.position().value() != 6 || read(file) != "before") {
        return 3;
    }
    if (!f.setPosition(block).isNone() || !f.write(bytesOf("behind")).isNone()) {
        return 4;
    }
    if (read(file) != "before" + std::string(block - 6, '\0') + "behind") {
        return 5;
    }
    const auto toRead = files().open(file, forReading);
    toRead.value()->expectWrite(16 * block, block);
    return f.setSize(6).isNone() && spaceUsedBy(file) == block && read(file) == "before" ? passed
                                                                                         : 6;
}

TEST(LinuxHoles, AnExpectedWriteHasItsPlaceOnTheMedium) {
    const TemporaryFolder folder;
    const std::string place = folder.path("volume");
    ASSERT_TRUE(files().createFolder(place, 0755).isNone());
    const int end = runWithOwnMounts([&] {
        return mountImage(folder.path("image"), "mkfs.ext4 -q -b 4096", "ext4", place)
                   ? expectedOn(place + "/f", 4 * block)
                   : cannotMount;
    });
    if (end == cannotMount) {
        GTEST_SKIP() << "no root, no loop devices or no mkfs.ext4";
    }
    EXPECT_EQ(end, passed);
}

/// Without extents in the file system nothing can be kept ready.
TEST(LinuxHoles, WhereNoPlaceCanBeKeptAnExpectedWriteChangesNothing) {
    const TemporaryFolder folder;
    const std::string place = folder.path("volume");
    ASSERT_TRUE(files().createFolder(place, 0755).isNone());
    const int end = runWithOwnMounts([&] {
        return mountImage(folder.path("image"), "mkfs.ext4 -q -O ^extents,^64bit -b 4096", "ext4",
                          place)
                   ? expectedOn(place + "/f", block)
                   : cannotMount;
    });
    if (end == cannotMount) {
        GTEST_SKIP() << "no root, no loop devices or no mkfs.ext4";
    }
    EXPECT_EQ(end, passed);
}

TEST(LinuxHoles, MemoryIsNotFilledForAnExpectedWrite) {
    const TemporaryFolder folder;
    const int end = runWithOwnMounts([&] {
        return ::mount("none", folder.path().c_str(), "tmpfs", 0, "size=1m,huge=never") == 0
                   ? expectedOn(folder.path("f"), block)
                   : cannotMount;
    });
    if (end == cannotMount) {
        GTEST_SKIP() << "mounts need root";
    }
    EXPECT_EQ(end, passed);
}

TEST(LinuxHoles, WhatIsSyncedAndForgottenLeavesTheMemory) {
    const TemporaryFolder folder;
    const auto opened = files().open(folder.path("f"), forWriting);
    OpenFile& file = *opened.value();
    const std::string content(4 * mebibyte, 'x');
    ASSERT_TRUE(file.write(bytesOf(content)).isNone());
    ASSERT_TRUE(file.sync().isNone());
    const auto pagesInMemory = [&] {
        void* const mapped =
            ::mmap(nullptr, content.size(), PROT_READ, MAP_SHARED, file.descriptor(), 0);
        EXPECT_NE(mapped, MAP_FAILED);
        std::vector<unsigned char> pages(content.size() / block);
        EXPECT_EQ(::mincore(mapped, content.size(), pages.data()), 0);
        ::munmap(mapped, content.size());
        return std::ranges::count_if(pages, [](unsigned char page) { return (page & 1U) != 0; });
    };
    const auto before = pagesInMemory();
    file.forgetCached();
    if (before > 0) {
        EXPECT_LE(pagesInMemory(), before); // of a file system of memory all of it stays
    }
    EXPECT_TRUE(read(folder.path("f")) == content);
}

} // namespace
} // namespace tav
