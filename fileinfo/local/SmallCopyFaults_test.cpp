// Small local files, which are copied at once: every call fails once and ends the process once.

#include "fileinfo/ItemAllocation.hpp"
#include "fileinfo/local/TavMacFileInfo.hpp"
#include "platform/memory/FaultyFileSystem.hpp"
#include "testing/ForkedProcess.hpp"
#include "testing/TemporaryFolder.hpp"

#include <cerrno>
#include <csignal>
#include <string>

#include <gtest/gtest.h>

namespace tav {
namespace {

class StepwiseItem : public TavMacFileInfo {
  public:
    static std::shared_ptr<TavMacFileInfo> at(std::string_view path) {
        auto item = internal::allocateItem<StepwiseItem>();
        item->initWithPath(path);
        return item;
    }

  protected:
    StepwiseItem() = default;
};

enum class Way : bool { AtOnce, Stepwise };

/// "from/a", small, and the folder "to".
class Stage {
  public:
    explicit Stage(Way way) : way_(way) {
        for (const char* name : {"from", "to"}) {
            EXPECT_TRUE(files().createFolder(folder_.path(name), 0777).isNone());
        }
        EXPECT_TRUE(files().writeFile(folder_.path("from/a"), bytesOf("content"), 0666).isNone());
    }

    std::shared_ptr<TavMacFileInfo> item(std::string_view name) {
        const std::string path = folder_.path(name);
        return way_ == Way::AtOnce ? TavMacFileInfo::fileInfoWithPath(path)
                                   : StepwiseItem::at(path);
    }

  private:
    static FileSystem& files() { return internal::realFileSystem(); }

    TemporaryFolder folder_;
    Way way_;
};

std::size_t callsOfOneCopy(Way way) {
    Stage stage(way);
    FaultyFileSystem counted(internal::realFileSystem());
    const FileSystem::Replacement replacement(counted);
    const auto source = stage.item("from/a");
    const auto destination = stage.item("to");
    EXPECT_TRUE(source->isFile());
    EXPECT_TRUE(destination->isFolder());
    counted.restartCount();
    EXPECT_EQ(source->copyTo(destination.get(), false, nullptr, nullptr, nullptr), Status::Success);
    return counted.callCount();
}

TEST(SmallCopyFaults, AsksHalfAsMuchAtMost) {
    const std::size_t atOnce = callsOfOneCopy(Way::AtOnce);
    EXPECT_LE(atOnce, 12U);
    EXPECT_LE(atOnce * 2, callsOfOneCopy(Way::Stepwise));
}

TEST(SmallCopyFaults, AFileThatIsNotWholeWhenItIsClosedDoesNotReplaceAnother) {
    for (const int error : {EDQUOT, EIO}) {
        Stage stage(Way::AtOnce);
        EXPECT_TRUE(stage.item("to")->createFile("a", bytesOf("old"), nullptr)->exists());
        FaultyFileSystem faulty(internal::realFileSystem());
        const FileSystem::Replacement replacement(faulty);
        faulty.failOperation("OpenFile.close", error);
        CopyOptions options;
        options.keepsDestination = true;
        const auto source = stage.item("from/a");
        EXPECT_EQ(source->copyTo(stage.item("to").get(), false, nullptr, nullptr, nullptr, options),
                  Status::Failure);
        faulty.failOperation("OpenFile.close", 0);
        EXPECT_EQ(textOf(stage.item("to/a")->fileContents().value()), "old");
        EXPECT_EQ(stage.item("to")->folderContents().size(), 1U);
    }
}

TEST(SmallCopyFaults, EveryCallMayFailOnce) {
    for (const int error : {ENOSPC, EIO, EINTR, EDQUOT}) {
        bool isThrough = false;
        for (std::size_t call = 1; !isThrough; ++call) {
            Stage stage(Way::AtOnce);
            FaultyFileSystem faulty(internal::realFileSystem());
            Status status{};
            {
                const FileSystem::Replacement replacement(faulty);
                faulty.failCall(call, error);
                const auto source = stage.item("from/a");
                status = source->copyTo(stage.item("to").get(), false, nullptr, nullptr, nullptr);
                isThrough = faulty.callCount() < call;
            }
            EXPECT_EQ(stage.item("from/a")->size(), 7U) << call;
            if (status == Status::Success) {
                // The move, the dates and the placeholder's removal are not looked at.
                const bool isInPlace = stage.item("to/a")->size() == 7;
                const bool isUnderItsTemporaryName =
                    stage.item("to/QuillboxCopyFile.tmp")->size() == 7;
                EXPECT_TRUE(isInPlace || isUnderItsTemporaryName) << call;
            } else {
                EXPECT_LE(static_cast<int>(status), -1) << call;
            }
        }
    }
}

TEST(SmallCopyFaults, AKillLeavesAllOrNothingUnderTheName) {
    bool isThrough = false;
    for (std::size_t call = 1; !isThrough; ++call) {
        Stage stage(Way::AtOnce);
        const ProcessEnd end = runForked([&] {
            FaultyFileSystem faulty(internal::realFileSystem());
            const FileSystem::Replacement replacement(faulty);
            faulty.endProcessWithinCall(call);
            const auto source = stage.item("from/a");
            return source->copyTo(stage.item("to").get(), false, nullptr, nullptr, nullptr) ==
                           Status::Success
                       ? 0
                       : 1;
        });
        isThrough = end.signal != SIGKILL;
        const auto copied = stage.item("to/a");
        EXPECT_TRUE(!copied->exists() || copied->size() == 7) << call;
        EXPECT_EQ(stage.item("from/a")->size(), 7U) << call;
        // The next copy clears what is left.
        EXPECT_EQ(
            stage.item("from/a")->copyTo(stage.item("to").get(), false, nullptr, nullptr, nullptr),
            Status::Success);
        EXPECT_EQ(stage.item("to")->folderContents().size(), 1U) << call;
        EXPECT_EQ(stage.item("to/a")->size(), 7U) << call;
    }
}

} // namespace
} // namespace tav
