#include "fileinfo/local/ZipKind.hpp"
#include "platform/memory/FaultyFileSystem.hpp"
#include "platform/memory/MemoryFileSystem.hpp"
#include "testing/TemporaryFolder.hpp"

#include <string>

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace tav {
namespace {

using internal::ZipKind;

std::string little(std::uint64_t number, int size) {
    std::string bytes;
    for (int index = 0; index < size; ++index) {
        bytes += static_cast<char>(number >> (8 * index) & 0xFFU);
    }
    return bytes;
}

std::string localHeader(int flags) {
    return "PK\x03\x04" + little(20, 2) + little(static_cast<unsigned>(flags), 2) +
           std::string(18, '\0') + little(1, 2) + little(0, 2) + "n";
}

std::string centralHeader(int flags, const std::string& behind = "n") {
    return "PK\x01\x02" + little(20, 4) + little(static_cast<unsigned>(flags), 2) +
           std::string(18, '\0') + little(behind.size(), 2) + std::string(16, '\0') + behind;
}

std::string endRecord(std::size_t size, const std::string& comment = "") {
    return std::string("PK\x05\x06") + std::string(8, '\0') + little(size, 4) + little(7, 4) +
           little(comment.size(), 2) + comment;
}

class ZipKindTest : public testing::Test {
  protected:
    ZipKind kindOf(const std::string& content) {
        memory.addFile("/f", content);
        return internal::zipKind("/f");
    }

    MemoryFileSystem memory;
    FaultyFileSystem files{memory};
    FileSystem::Replacement replaced{files};
};

TEST_F(ZipKindTest, WhatBeginsAsAnArchive) {
    EXPECT_EQ(kindOf(localHeader(0)), ZipKind::Readable);
    EXPECT_EQ(kindOf(endRecord(0)), ZipKind::Readable);
    EXPECT_EQ(kindOf("PK\x07\x08" + localHeader(0)), ZipKind::Readable);
    EXPECT_EQ(kindOf("PK00" + localHeader(0)), ZipKind::Readable);
}

TEST_F(ZipKindTest, WhatIsNoArchive) {
    for (const std::string& content :
         {std::string(), std::string("PK\x03\x04"), std::string("PK\x03\x04xyz"),
          std::string("some text"), std::string(" PK\x03\x04zzzzzzzz"),
          std::string("\x1f\x8b\x08") + std::string(100, '\0'), "x" + endRecord(0)}) {
        EXPECT_EQ(kindOf(content), ZipKind::None) << content;
    }
    EXPECT_EQ(internal::zipKind("/none"), ZipKind::None);
    EXPECT_EQ(internal::zipKind("/"), ZipKind::None);
}

TEST_F(ZipKindTest, WhatIsEncryptedByTheFirstMemberOrTheList) {
    EXPECT_EQ(kindOf(localHeader(1)), ZipKind::Encrypted);
    EXPECT_EQ(kindOf(localHeader(0x801)), ZipKind::Encrypted);
    EXPECT_EQ(kindOf(localHeader(8)), ZipKind::Readable);
    const std::string first = centralHeader(0, std::string(300, 'n'));
    for (const int flags : {1, 0x41, 0x809}) {
        const std::string list = first + centralHeader(flags);
        EXPECT_EQ(kindOf(localHeader(0) + list + endRecord(list.size())), ZipKind::Encrypted);
        EXPECT_EQ(kindOf(localHeader(0) + list + endRecord(list.size(), std::string(0xFFFF, 'c'))),
                  ZipKind::Encrypted);
    }
    const std::string plain = first + centralHeader(0x808);
    EXPECT_EQ(kindOf(localHeader(0) + plain + endRecord(plain.size())), ZipKind::Readable);
}

TEST_F(ZipKindTest, ListsThatLie) {
    const std::string list = centralHeader(1);
    // It begins elsewhere, or before the file: nothing can be told.
    EXPECT_EQ(kindOf(localHeader(0) + list + endRecord(list.size() - 1)), ZipKind::Readable);
    EXPECT_EQ(kindOf(localHeader(0) + list + endRecord(0xFFFFFFFF)), ZipKind::Readable);
    EXPECT_EQ(kindOf(localHeader(0) + list), ZipKind::Readable);
    // The last end counts.
    EXPECT_EQ(kindOf(localHeader(0) + list + endRecord(list.size(), endRecord(0))),
              ZipKind::Readable);
    EXPECT_EQ(kindOf(localHeader(0) + endRecord(0) + list + endRecord(list.size())),
              ZipKind::Encrypted);
    // An entry that claims to be longer than the file.
    std::string longer = centralHeader(0);
    longer[28] = longer[29] = '\xFF';
    EXPECT_EQ(kindOf(localHeader(0) + longer + list + endRecord(longer.size() + list.size())),
              ZipKind::Readable);
}

TEST_F(ZipKindTest, FailuresAreNoArchiveOrNothingKnown) {
    const std::string list = centralHeader(1);
    memory.addFile("/f", localHeader(0) + list + endRecord(list.size()));
    for (std::size_t call = 1;; ++call) {
        files.restartCount();
        files.failCall(call, EIO);
        const ZipKind kind = internal::zipKind("/f");
        files.failCall(0, 0);
        if (files.callCount() < call) {
            EXPECT_EQ(kind, ZipKind::Encrypted);
            EXPECT_GT(call, 4U);
            break;
        }
        EXPECT_NE(kind, ZipKind::Encrypted) << call;
    }
}

TEST(ZipKindOnDiskTest, APipeIsNotWaitedFor) {
    const TemporaryFolder folder;
    ASSERT_EQ(::mkfifo(folder.path("pipe").c_str(), 0644), 0);
    EXPECT_EQ(internal::zipKind(folder.path("pipe")), ZipKind::None);
}

} // namespace
} // namespace tav
