// What the copies with options lean on, of local files.

#include "fileinfo/DeviceFileInfo_test.hpp"
#include "fileinfo/local/LocalCopySupport.hpp"
#include "fileinfo/local/LocalOpenFile.hpp"
#include "fileinfo/local/MacFileInfoFixture_test.hpp"

#include <algorithm>
#include <cerrno>
#include <limits>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace tav {
namespace {

using Token = std::shared_ptr<OpenFileToken>;

FileMetadata::ExtendedAttribute attributeOf(std::string name, std::string_view text) {
    return {std::move(name), dataFromText(text)};
}

class LocalCopySupportTest : public MacFileInfoInMemory {
  protected:
    std::uint32_t permissionsOf(std::string_view path) {
        return memory.attributes(path).value().permissions;
    }
    /// A token whose file is closed.
    static Token closedToken(const Item& item) {
        Token token = item->openFileForReading();
        item->closeFile(token.get());
        return token;
    }

    MemoryFileSystem device;
    CopySupport& support = internal::LocalCopySupport::shared();
};

class LocalCopySupportOnDisk : public MacFileInfoOnDisk {
  protected:
    CopySupport& support = internal::LocalCopySupport::shared();
};

TEST_F(LocalCopySupportTest, EveryLocalItemHasTheSame) {
    EXPECT_EQ(at("/a")->copySupport(), &support);
    EXPECT_EQ(at("/b")->copySupport(), &support);
    EXPECT_EQ(DeviceFileInfo::at(device, "E:\\a")->copySupport(), nullptr);
}

// Taking the place of another file

TEST_F(LocalCopySupportTest, AFileTakesThePlaceOfAnotherInOneStep) {
    memory.addFile("/folder/new", "whole");
    memory.addFile("/folder/old", "o");
    const Item file = at("/folder/new");
    const Item destination = at("/folder/old");
    EXPECT_EQ(destination->size(), 1U);
    EXPECT_EQ(
        callsOf([&] { EXPECT_EQ(support.replace(*file, *destination), Status::Success); }).back(),
        "move /folder/new /folder/old");
    EXPECT_EQ(contentOf("/folder/old"), "whole");
    EXPECT_EQ(contentOf("/folder/new"), "nothing");
    EXPECT_EQ(file->path(), "/folder/old");
    EXPECT_TRUE(file->exists());
    EXPECT_EQ(destination->size(), 5U); // what was learned of the old one is forgotten
}

TEST_F(LocalCopySupportTest, AFileTakesAPlaceThatIsFree) {
    memory.addFile("/new", "whole");
    EXPECT_EQ(support.replace(*at("/new"), *at("/free")), Status::Success);
    EXPECT_EQ(contentOf("/free"), "whole");
}

TEST_F(LocalCopySupportTest, WhatCannotTakeThePlaceStaysWhereItIs) {
    memory.addFile("/new", "whole");
    memory.addFile("/old", "old");
    memory.addFolder("/folder");
    memory.addVolume("/stick");
    const Item file = at("/new");
    for (const std::string_view path : {"/folder", "/stick/file", "/missing/file"}) {
        EXPECT_EQ(support.replace(*file, *at(path)), Status::Failure) << path;
        EXPECT_EQ(file->path(), "/new");
    }
    files.failOperation("move", EIO);
    EXPECT_EQ(support.replace(*file, *at("/old")), Status::Failure);
    EXPECT_EQ(file->path(), "/new");
    EXPECT_EQ(contentOf("/old"), "old");
    EXPECT_EQ(support.replace(*at("/gone"), *at("/old")), Status::Failure);
}

TEST_F(LocalCopySupportTest, ItemsOfOtherBackEndsAreNotSupported) {
    memory.addFile("/a", "abc");
    device.addFile("/E/a", "abc");
    const auto elsewhere = DeviceFileInfo::at(device, "E:\\a");
    EXPECT_EQ(support.replace(*at("/a"), *elsewhere), Status::NotSupported);
    EXPECT_EQ(support.replace(*elsewhere, *at("/a")), Status::NotSupported);
    EXPECT_EQ(support.syncFolder(*elsewhere), Status::NotSupported);
    EXPECT_EQ(support.metadata(*elsewhere), std::nullopt);
    EXPECT_EQ(support.setMetadata(*elsewhere, {}), Status::NotSupported);
    EXPECT_EQ(contentOf("/a"), "abc");
}

// Waiting for the medium

TEST_F(LocalCopySupportTest, ContentsAreSynced) {
    memory.addFile("/a", "");
    const Item item = at("/a");
    const Token token = item->openFileForWriting();
    EXPECT_EQ(callsOf([&] { EXPECT_EQ(support.syncContents(*token), Status::Success); }),
              Calls{"OpenFile.sync /a"});
    for (const int error : {EIO, ENOSPC, EDQUOT}) {
        files.failOperation("OpenFile.sync", error);
        EXPECT_EQ(support.syncContents(*token), Status::Failure);
    }
    for (const int error : {EINVAL, ENOTSUP, ENOSYS}) {
        files.failOperation("OpenFile.sync", error);
        EXPECT_EQ(support.syncContents(*token), Status::NotSupported);
    }
}

TEST_F(LocalCopySupportTest, FoldersAreSynced) {
    memory.addFolder("/folder");
    const Item folder = at("/folder");
    EXPECT_EQ(callsOf([&] { EXPECT_EQ(support.syncFolder(*folder), Status::Success); }).back(),
              "syncFolder /folder");
    files.failOperation("syncFolder", EIO);
    EXPECT_EQ(support.syncFolder(*folder), Status::Failure);
    files.failOperation("syncFolder", EINVAL);
    EXPECT_EQ(support.syncFolder(*folder), Status::NotSupported);
    files.failOperation("syncFolder", 0);
    EXPECT_EQ(support.syncFolder(*at("/missing")), Status::Failure);
}

TEST_F(LocalCopySupportTest, WithoutAnOpenFileNothingIsSupported) {
    memory.addFile("/a", "abc");
    OpenFileToken foreign;
    const Token closed = closedToken(at("/a"));
    for (OpenFileToken* const token : {&foreign, closed.get()}) {
        EXPECT_EQ(support.syncContents(*token), Status::NotSupported);
        EXPECT_EQ(support.setLength(*token, 1), Status::NotSupported);
        EXPECT_EQ(support.nextData(*token, 0), std::nullopt);
        support.forgetCached(*token);
    }
    EXPECT_EQ(contentOf("/a"), "abc");
}

// What a file carries

TEST_F(LocalCopySupportTest, AFileCarriesPermissionsAndExtendedAttributes) {
    memory.addFile("/a", "abc");
    memory.addFile("/b", "abc");
    ASSERT_TRUE(memory.setPermissions("/a", 07751).isNone());
    ASSERT_TRUE(memory.setExtendedAttribute("/a", "user.one", bytesOf("1")).isNone());
    ASSERT_TRUE(memory.setExtendedAttribute("/a", "user.none", {}).isNone());
    const auto metadata = support.metadata(*at("/a"));
    ASSERT_TRUE(metadata);
    EXPECT_EQ(metadata->permissions, 01751U); // but never to run as whoever copies
    EXPECT_EQ(metadata->extendedAttributes.size(), 2U);
    const Item copy = at("/b");
    EXPECT_EQ(copy->typeCode(), 0x3F3F3F3FU);
    ASSERT_TRUE(memory.setExtendedAttribute("/a", "user.tav.type", bytesOf("TEXT")).isNone());
    EXPECT_EQ(support.setMetadata(*copy, *support.metadata(*at("/a"))), Status::Success);
    EXPECT_EQ(support.metadata(*at("/b")), support.metadata(*at("/a")));
    EXPECT_EQ(copy->typeCode(), 0x54455854U); // asked for anew
}

TEST_F(LocalCopySupportTest, AnAliasCarriesWhatItLeadsToCarries) {
    memory.addFile("/a", "abc");
    memory.addLink("/link", "/a");
    memory.addLink("/broken", "/nowhere");
    ASSERT_TRUE(memory.setPermissions("/a", 0640).isNone());
    ASSERT_TRUE(memory.setExtendedAttribute("/a", "user.one", bytesOf("1")).isNone());
    EXPECT_EQ(support.metadata(*at("/link")), (FileMetadata{0640, {attributeOf("user.one", "1")}}));
    EXPECT_EQ(support.metadata(*at("/broken")), std::nullopt);
    EXPECT_EQ(support.metadata(*at("/missing")), std::nullopt);
}

TEST_F(LocalCopySupportTest, WhatCannotBeReadIsNotTakenForNothing) {
    memory.addFile("/a", "abc");
    ASSERT_TRUE(memory.setPermissions("/a", 0640).isNone());
    ASSERT_TRUE(memory.setExtendedAttribute("/a", "user.one", bytesOf("1")).isNone());
    files.failOperation("extendedAttribute", EIO);
    EXPECT_EQ(support.metadata(*at("/a")), std::nullopt);
    files.failOperation("extendedAttribute", ENODATA); // it went meanwhile
    EXPECT_EQ(support.metadata(*at("/a")), (FileMetadata{0640, {}}));
    files.failOperation("extendedAttribute", 0);
    files.failOperation("extendedAttributeNames", EIO);
    EXPECT_EQ(support.metadata(*at("/a")), std::nullopt);
    files.failOperation("extendedAttributeNames", ENOTSUP); // the volume keeps none
    EXPECT_EQ(support.metadata(*at("/a")), (FileMetadata{0640, {}}));
}

TEST_F(LocalCopySupportTest, TheRightToWriteIsTakenAwayLast) {
    memory.addFile("/a", "abc");
    const Calls calls = callsOf([&] {
        EXPECT_EQ(support.setMetadata(*at("/a"), {0444, {attributeOf("user.one", "1")}}),
                  Status::Success);
    });
    const auto first = std::ranges::find_if(
        calls, [](const std::string& call) { return call.starts_with("setExtendedAttribute"); });
    const auto last = std::ranges::find_if(
        calls, [](const std::string& call) { return call.starts_with("setPermissions"); });
    EXPECT_LT(first, last);
    EXPECT_NE(last, calls.end());
}

TEST_F(LocalCopySupportTest, NothingAskedForIsNothingDone) {
    memory.addFile("/a", "abc");
    EXPECT_EQ(callsOf([&] { EXPECT_EQ(support.setMetadata(*at("/a"), {}), Status::Success); }),
              Calls{});
}

TEST_F(LocalCopySupportTest, WhatTheVolumeHasNoPlaceForIsLost) {
    memory.addFile("/a", "abc");
    const FileMetadata metadata{0640, {attributeOf("user.one", "1")}};
    for (const int error : {ENOTSUP, E2BIG, ERANGE, ENOSPC}) {
        files.failOperation("setExtendedAttribute", error);
        EXPECT_EQ(support.setMetadata(*at("/a"), metadata), Status::Success) << error;
        EXPECT_EQ(permissionsOf("/a"), 0640U);
    }
    files.failOperation("setExtendedAttribute", 0);
    for (const int error : {EPERM, ENOTSUP}) {
        files.failOperation("setPermissions", error);
        EXPECT_EQ(support.setMetadata(*at("/a"), metadata), Status::Success) << error;
    }
}

TEST_F(LocalCopySupportTest, AFailureIsToldWithAllTried) {
    memory.addFile("/a", "abc");
    const FileMetadata metadata{0640, {attributeOf("user.one", "1"), attributeOf("user.two", "2")}};
    files.failOperation("setExtendedAttribute", EIO);
    EXPECT_EQ(support.setMetadata(*at("/a"), metadata), Status::Failure);
    EXPECT_EQ(permissionsOf("/a"), 0640U);
    files.failOperation("setExtendedAttribute", 0);
    files.restartCount();
    files.failCall(1, EDQUOT); // of the first attribute
    EXPECT_EQ(support.setMetadata(*at("/a"), metadata), Status::Failure);
    EXPECT_TRUE(memory.extendedAttribute("/a", "user.two").ok());
    files.failCall(0, 0);
    files.failOperation("setPermissions", EIO);
    EXPECT_EQ(support.setMetadata(*at("/a"), metadata), Status::Failure);
    EXPECT_EQ(support.setMetadata(*at("/missing"), metadata), Status::Failure);
}

TEST_F(LocalCopySupportOnDisk, OnlyTheUsersAttributesAreCarried) {
    addFile("a", "abc");
    addFile("b", "abc");
    const std::string path = folder.path("a");
    if (::setxattr(path.c_str(), "user.one", "1", 1, 0) != 0) {
        GTEST_SKIP() << "no extended attributes here";
    }
    if (::setxattr(path.c_str(), "trusted.two", "2", 1, 0) != 0) {
        GTEST_SKIP() << "only root sets others than the user's";
    }
    const auto metadata = support.metadata(*in("a"));
    ASSERT_TRUE(metadata);
    EXPECT_EQ(metadata->extendedAttributes,
              (std::vector<FileMetadata::ExtendedAttribute>{attributeOf("user.one", "1")}));
    EXPECT_EQ(support.setMetadata(*in("b"), *metadata), Status::Success);
    EXPECT_EQ(support.metadata(*in("b")), metadata);
}

TEST_F(LocalCopySupportOnDisk, PipesCarryPermissionsOnly) {
    ASSERT_EQ(::mkfifo(folder.path("pipe").c_str(), 0600), 0);
    EXPECT_EQ(support.metadata(*in("pipe")), (FileMetadata{0600, {}}));
    const auto folderMetadata = support.metadata(*at(folder.path()));
    ASSERT_TRUE(folderMetadata);
    EXPECT_TRUE(folderMetadata->permissions);
}

// Holes

TEST_F(LocalCopySupportOnDisk, HolesAreFoundAndMade) {
    addFile("a", "");
    const Item item = in("a");
    Token token = item->openFileForWriting();
    constexpr std::uint64_t place = std::uint64_t{1} << 20U;
    ASSERT_EQ(
        item->setFileContentsWithRange(bytesOf("abc"), {std::uint32_t{place}, 3}, token.get()),
        Status::Success);
    EXPECT_EQ(support.setLength(*token, 3 * place), Status::Success);
    support.forgetCached(*token);
    item->closeFile(token.get());
    EXPECT_EQ(item->size(), 3 * place);
    token = item->openFileForReading();
    const auto stretch = support.nextData(*token, 0);
    ASSERT_TRUE(stretch);
    EXPECT_LE(stretch->location, place);
    EXPECT_GE(stretch->location + stretch->length, place + 3);
    EXPECT_EQ(support.nextData(*token, 3 * place), std::nullopt);
    if (stretch->location > 0) { // the file system keeps holes
        EXPECT_EQ(support.nextData(*token, stretch->location + stretch->length), std::nullopt);
    }
}

TEST_F(LocalCopySupportTest, StretchesOfDataAreRanges) {
    memory.addFile("/a", "0123456789");
    const Item item = at("/a");
    const Token token = item->openFileForReading();
    EXPECT_EQ(support.nextData(*token, 0), (WholeFileRange{0, 10}));
    EXPECT_EQ(support.nextData(*token, 4), (WholeFileRange{4, 6}));
    EXPECT_EQ(support.nextData(*token, 10), std::nullopt);
    EXPECT_EQ(support.nextData(*token, 100), std::nullopt);
}

TEST_F(LocalCopySupportTest, WhatCannotBeToldIsNoHole) {
    memory.addFile("/a", "0123456789");
    const Item item = at("/a");
    const Token token = item->openFileForReading();
    files.failOperation("OpenFile.nextData", EIO);
    constexpr std::uint64_t largest = std::numeric_limits<std::int64_t>::max();
    EXPECT_EQ(support.nextData(*token, 4), (WholeFileRange{4, largest - 4}));
    EXPECT_EQ(support.nextData(*token, largest), std::nullopt);
}

TEST_F(LocalCopySupportTest, FilesAreCutAndGrow) {
    memory.addFile("/a", "");
    const Item item = at("/a");
    const Token token = item->openFileForWriting();
    EXPECT_EQ(support.setLength(*token, 4), Status::Success);
    EXPECT_EQ(contentOf("/a").size(), 4U);
    ASSERT_EQ(item->setFileContentsWithRange(bytesOf("xy"), {3, 2}, token.get()), Status::Success);
    EXPECT_EQ(contentOf("/a"), std::string_view("\0\0\0xy", 5));
    EXPECT_EQ(support.setLength(*token, 1), Status::Success);
    EXPECT_EQ(contentOf("/a").size(), 1U);
    // The file is known to be that short.
    ASSERT_EQ(item->setFileContentsWithRange({}, {3, 0}, token.get()), Status::Success);
    EXPECT_EQ(contentOf("/a").size(), 3U);
    EXPECT_EQ(support.setLength(*token, std::uint64_t{1} << 63U), Status::Failure);
    EXPECT_EQ(support.setLength(*at("/a")->openFileForReading(), 1), Status::Failure);
    EXPECT_EQ(contentOf("/a").size(), 3U);
}

// Shared blocks

/// A file whose ranges can be cloned.
class CloningFile final : public OpenFile {
  public:
    Result<FileAttributes> attributes() override { return FileAttributes(); }
    Result<std::size_t> read(std::span<std::byte> /*buffer*/) override { return SystemError(EIO); }
    Result<std::size_t> readAt(std::uint64_t /*offset*/, std::span<std::byte> /*buffer*/) override {
        return SystemError(EIO);
    }
    Result<std::size_t> writeOnce(BytesView bytes) override { return bytes.size(); }
    SystemError write(BytesView /*bytes*/) override {
        calls.emplace_back("write");
        return {};
    }
    Result<std::uint64_t> position() override { return std::uint64_t{0}; }
    SystemError setPosition(std::uint64_t offset) override {
        calls.push_back("setPosition " + std::to_string(offset));
        return {};
    }
    SystemError setSize(std::uint64_t size) override {
        calls.push_back("setSize " + std::to_string(size));
        return {};
    }
    Result<DataStretch> nextData(std::uint64_t /*offset*/) override { return SystemError(ENXIO); }
    SystemError cloneRange(OpenFile& from, std::uint64_t fromOffset, std::uint64_t length,
                           std::uint64_t offset) override {
        source = &from;
        calls.push_back("cloneRange " + std::to_string(fromOffset) + " " + std::to_string(length) +
                        " " + std::to_string(offset));
        return cloneError;
    }
    void forgetCached() override { calls.emplace_back("forgetCached"); }
    [[nodiscard]] int descriptor() const override { return -1; }
    SystemError setModificationDate(Date /*date*/) override { return {}; }
    Result<Data> extendedAttribute(std::string_view /*name*/) override {
        return SystemError(ENODATA);
    }
    SystemError setExtendedAttribute(std::string_view /*name*/, BytesView /*value*/) override {
        return {};
    }
    SystemError sync() override { return {}; }
    SystemError close() override { return {}; }

    std::vector<std::string> calls;
    SystemError cloneError;
    OpenFile* source = nullptr;
};

TEST_F(LocalCopySupportTest, ARangeIsSharedWithTheSameRangeOfTheOther) {
    auto ownedSource = std::make_unique<CloningFile>();
    auto ownedFile = std::make_unique<CloningFile>();
    CloningFile& source = *ownedSource;
    CloningFile& file = *ownedFile;
    using internal::LocalOpenFile;
    LocalOpenFile reading(std::move(ownedSource), LocalOpenFile::Mode::Reading);
    LocalOpenFile writing(std::move(ownedFile), LocalOpenFile::Mode::Writing);
    const Item item = at("/a");
    EXPECT_TRUE(item->cloneRange({0, 4096}, &reading, item.get(), &writing));
    EXPECT_TRUE(item->cloneRange({4096, 10}, &reading, item.get(), &writing));
    EXPECT_EQ(file.source, &source);
    EXPECT_EQ(file.calls, (Calls{"cloneRange 0 4096 0", "cloneRange 4096 10 4096"}));
    file.calls.clear();
    // The file is known to be that long, and that nothing was written yet.
    EXPECT_EQ(item->setFileContentsWithRange(bytesOf("x"), {4106, 1}, &writing), Status::Success);
    EXPECT_EQ(file.calls, (Calls{"setPosition 4106", "write"}));
    file.calls.clear();
    file.cloneError = SystemError(EINVAL);
    EXPECT_FALSE(item->cloneRange({8192, 10}, &reading, item.get(), &writing));
    file.cloneError = SystemError();
    EXPECT_FALSE(item->cloneRange({0, 4096}, &reading, item.get(), &writing));
    EXPECT_EQ(file.calls, Calls{"cloneRange 8192 10 8192"});
    support.forgetCached(reading);
    EXPECT_EQ(source.calls, Calls{"forgetCached"});
}

} // namespace
} // namespace tav
