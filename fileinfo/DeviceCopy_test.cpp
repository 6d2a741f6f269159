// Copies between two devices that exist in memory, and their cancelling from another thread.

#include "fileinfo/CopyStatus.hpp"
#include "fileinfo/DeviceFileInfo_test.hpp"

#include <atomic>
#include <random>
#include <thread>

#include <gtest/gtest.h>

namespace tav {
namespace {

class DeviceCopy : public testing::Test {
  protected:
    DeviceCopy() {
        card.addFolder("/E/DCIM");
        phone.addFolder("/C/Media");
        phone.keepsTwoSecondDates = true;
        std::string text;
        for (int n = 0; n < 20'000; ++n) {
            text += std::to_string(n);
        }
        content = text;
        card.addFile("/E/DCIM/1.jpg", content);
        EXPECT_TRUE(card.setModificationDate("/E/DCIM/1.jpg", Date(1001)).isNone());
        DeviceFileInfo::chunkSize = 1000;
    }
    ~DeviceCopy() override { DeviceFileInfo::chunkSize = 8192; }

    FileInfoPtr onCard(std::string_view path) { return DeviceFileInfo::at(card, path); }
    FileInfoPtr onPhone(std::string_view path) { return DeviceFileInfo::at(phone, path); }
    std::string contentOnPhone(std::string_view path) {
        const auto read = phone.readFile(path, 1 << 24);
        return read.ok() ? std::string(textOf(read.value())) : "(none)";
    }
    std::vector<std::string> namesOnPhone() {
        std::vector<std::string> names;
        const auto entries = phone.folderEntries("/C/Media");
        EXPECT_TRUE(entries.ok());
        for (const FolderEntry& entry : entries.value()) {
            names.push_back(entry.name);
        }
        return names;
    }

    MemoryFileSystem card;
    MemoryFileSystem phone;
    std::string content;
};

TEST_F(DeviceCopy, GoesThereAndBackWithDatesOfTwoSeconds) {
    FileInfoPtr there;
    ASSERT_EQ(onCard("E:\\DCIM\\1.jpg")->copyTo(onPhone("C:\\Media").get(), &there),
              Status::Success);
    EXPECT_EQ(there->path(), "C:\\Media\\1.jpg");
    EXPECT_EQ(contentOnPhone("/C/Media/1.jpg"), content);
    EXPECT_EQ(there->modificationDate(), Date(1000));
    EXPECT_EQ(namesOnPhone(), std::vector<std::string>{"1.jpg"});
    FileInfoPtr back;
    ASSERT_EQ(there->copyTo(onCard("E:\\DCIM").get(), true, nullptr, nullptr, &back),
              Status::Success);
    EXPECT_EQ(back->path(), "E:\\DCIM\\1-1.jpg");
    EXPECT_EQ(textOf(card.readFile("/E/DCIM/1-1.jpg", 1 << 24).value()), content);
    EXPECT_EQ(back->modificationDate(), Date(1000));
}

TEST_F(DeviceCopy, TakesChunksOfAnySize) {
    for (const std::uint64_t size : {1U, 7U, 999U, 88890U, 88889U, 1U << 20}) {
        DeviceFileInfo::chunkSize = size;
        float last = 0;
        std::uint64_t reports = 0;
        ProgressDelegate delegate;
        delegate.copyingFile = [&](TavBaseFileInfo&, TavBaseFileInfo&, float percent, void*) {
            EXPECT_GT(percent, last);
            last = percent;
            ++reports;
            return false;
        };
        ASSERT_EQ(onCard("E:\\DCIM\\1.jpg")
                      ->copyTo(onPhone("C:\\Media").get(), false, &delegate, nullptr, nullptr),
                  Status::Success);
        EXPECT_EQ(contentOnPhone("/C/Media/1.jpg"), content);
        EXPECT_EQ(last, 100);
        EXPECT_EQ(reports, (content.size() + size - 1) / size);
    }
}

TEST_F(DeviceCopy, AFullDeviceKeepsAPart) {
    phone.capacity = 5'500;
    EXPECT_EQ(onCard("E:\\DCIM\\1.jpg")->copyTo(onPhone("C:\\Media").get()), Status::Failure);
    EXPECT_EQ(contentOnPhone("/C/Media/1.jpg"), content.substr(0, 5'500));
}

TEST_F(DeviceCopy, AReadOnlyDeviceHasNoRoomForNil) {
    phone.isReadOnly = true;
    FileInfoPtr copy = onPhone("C:\\x");
    EXPECT_EQ(onCard("E:\\DCIM\\1.jpg")->copyTo(onPhone("C:\\Media").get(), &copy), Status{-209});
    EXPECT_EQ(copy, nullptr);
    EXPECT_EQ(onCard("E:\\DCIM\\1.jpg")->copyTo(onPhone("C:\\Media\\2.jpg").get(), &copy),
              Status{-202});
    EXPECT_EQ(copy->path(), "C:\\Media\\2.jpg");
}

TEST_F(DeviceCopy, KeepsTheOldFileOnlyWhereTheDeviceCan) {
    CopyOptions options;
    options.keepsDestination = options.verifies = options.isWhole = true;
    FileInfoPtr copy;
    ASSERT_EQ(onCard("E:\\DCIM\\1.jpg")
                  ->copyTo(onPhone("C:\\Media").get(), false, nullptr, nullptr, &copy, options),
              Status::Success);
    EXPECT_EQ(contentOnPhone("/C/Media/1.jpg"), content);
    EXPECT_EQ(onCard("E:\\DCIM\\1.jpg")
                  ->copyTo(onPhone("C:\\Media").get(), false, nullptr, nullptr, &copy, options),
              Status::NotSupported);
    ASSERT_EQ(onCard("E:\\DCIM\\1.jpg")
                  ->copyTo(onPhone("C:\\Media").get(), true, nullptr, nullptr, &copy, options),
              Status::Success);
    EXPECT_EQ(copy->path(), "C:\\Media\\1-1.jpg");
    EXPECT_EQ(namesOnPhone(), (std::vector<std::string>{"1-1.jpg", "1.jpg"}));
}

TEST_F(DeviceCopy, IsCancelledFromAnotherThreadAtAThousandMoments) {
    content.resize(20'000);
    card.addFile("/E/DCIM/1.jpg", content);
    std::mt19937 random(20'090'101);
    int cancelled = 0;
    for (int n = 0; n < 1000; ++n) {
        const FileInfoPtr source = onCard("E:\\DCIM\\1.jpg");
        const FileInfoPtr folder = onPhone("C:\\Media");
        std::atomic<bool> begins = false;
        const std::uint_fast32_t delay = random() % 8000;
        std::thread other([&] {
            while (!begins.load(std::memory_order_relaxed)) {
            }
            for (std::uint_fast32_t turn = 0; turn < delay; ++turn) {
                std::atomic_signal_fence(std::memory_order_seq_cst);
            }
            source->cancelCopy();
        });
        FileInfoPtr copy;
        begins.store(true, std::memory_order_relaxed);
        const Status status = source->copyTo(folder.get(), &copy);
        other.join();
        ASSERT_TRUE(copy);
        if (status == CopyStatus::cancelled) {
            ++cancelled;
            ASSERT_FALSE(copy->exists());
            ASSERT_TRUE(namesOnPhone().empty());
        } else {
            ASSERT_EQ(status, Status::Success);
            ASSERT_EQ(contentOnPhone("/C/Media/1.jpg"), content);
            ASSERT_EQ(namesOnPhone(), std::vector<std::string>{"1.jpg"});
            phone.removeAll("/C/Media/1.jpg");
        }
        phone.clearCalls();
        card.clearCalls();
    }
    RecordProperty("cancelled", cancelled);
}

} // namespace
} // namespace tav
