#include "foundation/PathCopy_test.hpp"

#include "testing/ForkedProcess.hpp"

#include <algorithm>

#include <sys/stat.h>
#include <unistd.h>

namespace tav {
namespace {

class CopyPath : public PathCopyTest {
  protected:
    /// Makes so many folders in one another, each of whose names has so many bytes.
    void makeChain(const std::string& top, std::size_t depth, std::size_t nameSize) {
        makeFolder(top);
        auto folder = files.openFolder(path(top));
        const std::string name(nameSize, 'd');
        for (std::size_t level = 0; level < depth; ++level) {
            ASSERT_TRUE(folder.value()->createFolder(name, 0700).isNone());
            folder = folder.value()->openFolder(name);
            ASSERT_TRUE(folder.ok());
        }
        const auto file = folder.value()->open("file", {.write = true, .create = true});
        ASSERT_TRUE(file.ok());
        ASSERT_TRUE(file.value()->write(bytesOf("deepest")).isNone());
    }
    /// What stands in the file at the end of such a chain.
    std::string deepest(const std::string& top, std::size_t depth, std::size_t nameSize) {
        auto folder = files.openFolder(path(top));
        const std::string name(nameSize, 'd');
        for (std::size_t level = 0; level < depth && folder.ok(); ++level) {
            folder = folder.value()->openFolder(name);
        }
        if (!folder.ok()) {
            return "no folder";
        }
        const auto file = folder.value()->open("file", {});
        Data buffer(100);
        const auto got = file.ok() ? file.value()->read(buffer) : file.error();
        return got.ok() ? std::string(textOf(buffer).substr(0, got.value())) : "no file";
    }
};

INSTANTIATE_TEST_SUITE_P(Worlds, CopyPath, testing::Values(Kind::Real, Kind::Memory), nameOfWorld);

TEST_P(CopyPath, AFileComesWithAllThatItCarries) {
    makeFile("from\xFF", pattern(2'500'000));
    setAttribute("from\xFF", "user.type", "value");
    setPermissions("from\xFF", 0444);
    setDate("from\xFF", 600'000'000.5);
    const Picture before = pictureOf("from\xFF");
    EXPECT_EQ(copy("from\xFF", "t\xFFo"), Status::Success);
    EXPECT_TRUE(pictureOf("t\xFFo") == before);
    EXPECT_TRUE(pictureOf("from\xFF") == before);
}

TEST_P(CopyPath, FilesOfEverySizeAreWhole) {
    for (const std::size_t size :
         {0U, 1U, 65'535U, 65'536U, 65'537U, 0xFFFFFU, 0x100000U, 0x100001U, 0x200000U}) {
        makeFile("from", pattern(size));
        EXPECT_EQ(copy("from", "to"), Status::Success);
        EXPECT_TRUE(read("to") == pattern(size)) << size;
        removeAll("to");
    }
}

TEST_P(CopyPath, ATreeComesWhole) {
    makeSource();
    const Picture before = pictureOf("from");
    ASSERT_EQ(before.size(), 8U);
    EXPECT_EQ(copy("from", "to"), Status::Success);
    EXPECT_EQ(pictureOf("to"), before);
    EXPECT_EQ(pictureOf("from"), before);
}

TEST_P(CopyPath, SlashesBehindThePathsChangeNothing) {
    makeSource();
    EXPECT_EQ(copy("from//", "to/"), Status::Success);
    EXPECT_EQ(pictureOf("to"), pictureOf("from"));
}

TEST_P(CopyPath, ALinkIsCopiedAsALink) {
    makeFolder("outside");
    makeFile("outside/kept", "x");
    makeLink("toFolder", "outside");
    makeLink("nowhere", "gone");
    setDate("toFolder", 5);
    EXPECT_EQ(copy("toFolder", "a"), Status::Success);
    EXPECT_EQ(copy("toFolder/", "b"), Status::Success);
    EXPECT_EQ(copy("nowhere", "c"), Status::Success);
    EXPECT_EQ(pictureOf("a"), pictureOf("toFolder"));
    EXPECT_EQ(pictureOf("b"), pictureOf("toFolder"));
    EXPECT_EQ(pictureOf("c"), pictureOf("nowhere"));
}

TEST_P(CopyPath, NothingIsReplaced) {
    makeFile("file", "content");
    makeFolder("folder");
    makeLink("link", "file");
    makeFile("oldFile", "old");
    makeFolder("oldFolder");
    makeLink("oldLink", "gone");
    for (const char* from : {"file", "folder", "link"}) {
        for (const char* to : {"oldFile", "oldFolder", "oldLink", from, ".", "oldFolder/.."}) {
            EXPECT_EQ(copy(from, to), statusFromErrorNumber(EEXIST)) << from << ' ' << to;
        }
    }
    EXPECT_EQ(read("oldFile"), "old");
    EXPECT_TRUE(namesIn("oldFolder").empty());
    EXPECT_FALSE(stands("gone"));
}

TEST_P(CopyPath, WhatIsMissing) {
    makeFile("file", "content");
    makeFolder("folder");
    EXPECT_EQ(copy("gone", "to"), statusFromErrorNumber(ENOENT));
    EXPECT_EQ(copy("file/x", "to"), statusFromErrorNumber(ENOTDIR));
    EXPECT_EQ(copyPath("", path("to")), statusFromErrorNumber(ENOENT));
    for (const char* from : {"file", "folder"}) {
        EXPECT_EQ(copyPath(path(from), ""), statusFromErrorNumber(ENOENT)) << from;
        EXPECT_EQ(copy(from, "gone/to"), statusFromErrorNumber(ENOENT)) << from;
        EXPECT_EQ(copy(from, "file/to"), statusFromErrorNumber(ENOTDIR)) << from;
    }
    EXPECT_EQ(namesIn("."), (Names{"file", "folder"}));
}

TEST_P(CopyPath, AFolderIntoItselfIsRefused) {
    makeSource();
    setPermissions("from/inner", 0750);
    makeLink("toInner", "from/inner");
    const Picture before = pictureOf("from");
    for (const char* to : {"from/to", "from/inner/to", "from/inner/empty/to", "toInner/to",
                           "from/inner/../to", "toInner/empty/../to"}) {
        EXPECT_EQ(copy("from", to), statusFromErrorNumber(EINVAL)) << to;
    }
    EXPECT_EQ(copyPath("/", path("to")), statusFromErrorNumber(EINVAL));
    EXPECT_EQ(pictureOf("from"), before);
    // What only begins like it is another folder, and of itself a part may be copied into it.
    makeFolder("from and more");
    EXPECT_EQ(copy("from", "from and more/to"), Status::Success);
    EXPECT_EQ(copy("from/inner", "from/copy"), Status::Success);
    EXPECT_EQ(pictureOf("from/copy"), pictureOf("from/inner"));
}

TEST_P(CopyPath, SpecialBitsTravelToTheSameUserAndGroup) {
    makeFile("from", "x");
    makeFolder("folder");
    setPermissions("from", 06755);
    setPermissions("folder", 01777);
    EXPECT_EQ(copy("from", "to"), Status::Success);
    EXPECT_EQ(copy("folder", "copy"), Status::Success);
    EXPECT_EQ(attributesOf("to").permissions, 06755U);
    EXPECT_EQ(attributesOf("copy").permissions, 01777U);
    if (GetParam() == Kind::Memory || ::geteuid() != 0) {
        return;
    }
    ASSERT_EQ(::chown(path("from").c_str(), 65534, 65534), 0);
    setPermissions("from", 06755);
    EXPECT_EQ(copy("from", "other"), Status::Success);
    EXPECT_EQ(attributesOf("other").permissions, 0755U);
}

TEST_P(CopyPath, TheMaskTakesNothingAway) {
    makeFile("from", "x");
    makeFolder("folder");
    setPermissions("from", 0666);
    setPermissions("folder", 0777);
    const ::mode_t mask = ::umask(077);
    EXPECT_EQ(copy("from", "to"), Status::Success);
    EXPECT_EQ(copy("folder", "copy"), Status::Success);
    ::umask(mask);
    EXPECT_EQ(attributesOf("to").permissions, 0666U);
    EXPECT_EQ(attributesOf("copy").permissions, 0777U);
}

TEST_P(CopyPath, WhatAVolumeDoesNotKeepIsLostInSilence) {
    makeSource();
    const Picture contents = contentsOf(pictureOf("from"));
    for (const int error : {EPERM, ENOTSUP, EINVAL}) {
        for (const char* operation :
             {"setPermissions", "setModificationDate", "setExtendedAttribute"}) {
            faulty.failOperation(operation, error);
        }
        EXPECT_EQ(copy("from", "to"), Status::Success) << error;
        EXPECT_EQ(contentsOf(pictureOf("to")), contents);
        removeAll("to");
    }
    for (const char* operation : {"setPermissions", "setModificationDate"}) {
        faulty.failOperation(operation, 0);
    }
    for (const int error : {E2BIG, ERANGE, ENOSPC}) {
        faulty.failOperation("setExtendedAttribute", error);
        EXPECT_EQ(copy("from", "to"), Status::Success) << error;
        removeAll("to");
    }
}

TEST_P(CopyPath, OtherFailuresOfWhatItCarriesAreAnswered) {
    makeSource();
    for (const char* operation : {"setPermissions", "setModificationDate", "setExtendedAttribute",
                                  "extendedAttributeNames", "extendedAttribute"}) {
        faulty.failOperation(operation, EDQUOT);
        EXPECT_EQ(copy("from", "to"), statusFromErrorNumber(EDQUOT)) << operation;
        EXPECT_FALSE(stands("to")) << operation;
        faulty.failOperation(operation, 0);
    }
}

TEST_P(CopyPath, TreesDeeperThanThePathsOfTheKernelAreCopied) {
    makeChain("top", 60, 100);
    EXPECT_EQ(copy("top", "to"), Status::Success);
    EXPECT_EQ(deepest("to", 60, 100), "deepest");
    EXPECT_EQ(deepest("top", 60, 100), "deepest");
}

TEST_P(CopyPath, AnyDepthIsCopiedWithFewDescriptors) {
    const std::size_t depth = GetParam() == Kind::Real ? 500 : 2000;
    makeChain("top", depth, 3);
    makeFolder("top/ddd/beside");
    Status status{};
    {
        const FewDescriptors few(40); // a dozen and a half on each side
        faulty.restartCount();
        status = copy("top", "to");
    }
    EXPECT_EQ(status, Status::Success);
    EXPECT_EQ(deepest("to", depth, 3), "deepest");
    EXPECT_TRUE(isFolder("to/ddd/beside"));
    // Nowhere near the square of the depth.
    EXPECT_LT(faulty.callCount(), depth * 160);
}

TEST_P(CopyPath, AFolderOfManyFilesTakesAFewCallsEach) {
    const std::size_t count = GetParam() == Kind::Real ? 500 : 3000;
    makeFolder("top");
    for (std::size_t i = 0; i < count; ++i) {
        makeFile("top/" + std::to_string(i), "x");
    }
    faulty.restartCount();
    EXPECT_EQ(copy("top", "to"), Status::Success);
    EXPECT_EQ(namesIn("to"), namesIn("top"));
    EXPECT_LT(faulty.callCount(), count * 11);
}

TEST_P(CopyPath, WhatCannotBeListedIsNotBegun) {
    makeSource();
    faulty.failOperation("OpenFolder.entries", EACCES);
    EXPECT_EQ(copy("from", "to"), statusFromErrorNumber(EACCES));
    EXPECT_FALSE(stands("to"));
}

TEST_P(CopyPath, SomebodyElsesFilesInTheNewFolderAreNotTakenAway) {
    makeSource();
    // Somebody puts a file there in the middle, and then the copy fails.
    faulty.restartCount();
    EXPECT_EQ(copy("from", "counted"), Status::Success);
    const std::size_t calls = faulty.callCount();
    faulty.restartCount();
    faulty.atCall(calls / 2, [&] { makeFile("to/theirs", "theirs"); });
    faulty.failCall(calls - 3, EIO);
    EXPECT_EQ(copy("from", "to"), statusFromErrorNumber(EIO));
    EXPECT_EQ(read("to/theirs"), "theirs");
    EXPECT_EQ(namesIn("to"), Names{"theirs"});
}

TEST_P(CopyPath, UntilEverythingIsThereOnlyTheOwnerMayEnter) {
    makeSource();
    setPermissions("from", 0777);
    faulty.restartCount();
    EXPECT_EQ(copy("from", "counted"), Status::Success);
    const std::size_t calls = faulty.callCount();
    std::size_t looks = 0;
    faulty.restartCount();
    for (std::size_t call = 1; call < calls; ++call) {
        faulty.atCall(call, [&] {
            if (stands("to")) {
                EXPECT_EQ(attributesOf("to").permissions, 0700U);
                ++looks;
            }
        });
    }
    EXPECT_EQ(copy("from", "to"), Status::Success);
    EXPECT_EQ(attributesOf("to").permissions, 0777U);
    EXPECT_GT(looks, 20U);
}

class CopyPathOnDisk : public CopyPath {
  protected:
    void refuses(std::string_view name) {
        EXPECT_EQ(copy(name, "to"), statusFromErrorNumber(EINVAL)) << name;
        EXPECT_FALSE(stands("to"));
    }
};

INSTANTIATE_TEST_SUITE_P(Worlds, CopyPathOnDisk, testing::Values(Kind::Real), nameOfWorld);

TEST_P(CopyPathOnDisk, PipesSocketsAndDevicesFailTheWholeCopyAndNobodyWaits) {
    ASSERT_EQ(::mkfifo(path("pipe").c_str(), 0600), 0);
    refuses("pipe");
    makeSource();
    setPermissions("from/inner", 0750);
    ASSERT_EQ(::mkfifo(path("from/inner/pipe").c_str(), 0600), 0);
    refuses("from");
    ASSERT_TRUE(files.removeFile(path("from/inner/pipe")).isNone());
    ASSERT_EQ(::mknod(path("from/socket").c_str(), S_IFSOCK | 0600, 0), 0);
    refuses("from");
    refuses("from/socket");
    EXPECT_EQ(copyPath("/dev/null", path("to")), statusFromErrorNumber(EINVAL));
    EXPECT_FALSE(stands("to"));
}

TEST_P(CopyPathOnDisk, AHoleStaysAHole) {
    constexpr std::uint64_t size = 64U << 20U;
    {
        const auto file = files.open(path("from"), {.write = true, .create = true});
        for (const std::uint64_t offset : {8U << 20U, 24U << 20U}) {
            ASSERT_TRUE(file.value()->setPosition(offset).isNone());
            ASSERT_TRUE(file.value()->write(bytesOf("data")).isNone());
        }
        ASSERT_TRUE(file.value()->setSize(size).isNone());
    }
    struct ::stat before {};
    ASSERT_EQ(::stat(path("from").c_str(), &before), 0);
    if (before.st_blocks > 1000) {
        GTEST_SKIP() << "the file system keeps no holes";
    }
    EXPECT_EQ(copy("from", "to"), Status::Success);
    struct ::stat after {};
    ASSERT_EQ(::stat(path("to").c_str(), &after), 0);
    EXPECT_EQ(after.st_size, before.st_size);
    EXPECT_LE(after.st_blocks, before.st_blocks + 64);
    EXPECT_TRUE(read("to") == read("from"));
    // Nothing but a hole.
    ASSERT_EQ(::truncate(path("from").c_str(), 1U << 20U), 0);
    EXPECT_EQ(copy("from", "hole"), Status::Success);
    EXPECT_TRUE(read("hole") == std::string(1U << 20U, '\0'));
}

TEST_P(CopyPathOnDisk, WhatItsOwnerMayNotWriteToComesAndGoes) {
    setPermissions(".", 0777);
    EXPECT_EQ(runForked([&] {
                  if (::geteuid() == 0 && ::seteuid(65534) != 0) {
                      return 1;
                  }
                  makeSource();
                  const Picture before = pictureOf("from");
                  for (std::size_t call = 1; call < 1000; ++call) {
                      faulty.restartCount();
                      faulty.failCall(call, EDQUOT);
                      const Status status = copy("from", "to");
                      const bool isReached = faulty.callCount() >= call;
                      faulty.failCall(0, 0);
                      if (pictureOf("from") != before) {
                          return 2;
                      }
                      if (status != Status::Success && stands("to")) {
                          return 3;
                      }
                      if (!isReached) {
                          return status == Status::Success && pictureOf("to") == before ? 0 : 4;
                      }
                      removeAll("to");
                  }
                  return 5;
              }),
              ProcessEnd());
}

TEST_P(CopyPathOnDisk, AFolderThatItsOwnerMayNotWriteToIsTakenAwayAgain) {
    setPermissions(".", 0777);
    EXPECT_EQ(runForked([&] {
                  if (::geteuid() == 0 && ::seteuid(65534) != 0) {
                      return 1;
                  }
                  makeFolder("from");
                  makeFile("from/f", "content");
                  setPermissions("from", 0555);
                  faulty.restartCount();
                  if (copy("from", "counted") != Status::Success) {
                      return 2;
                  }
                  const std::size_t calls = faulty.callCount();
                  faulty.failOperation("move", EXDEV);
                  faulty.restartCount();
                  faulty.atCall(calls + 1, [&] { makeFile("from/f", "content and more"); });
                  if (move("from", "to") != statusFromErrorNumber(ESTALE)) {
                      return 3;
                  }
                  return read("from/f") == "content and more" && !stands("to") ? 0 : 4;
              }),
              ProcessEnd());
}

class CopyPathInMemory : public testing::Test {
  protected:
    MemoryFileSystem memory;
    FaultyFileSystem faulty{memory};
    FileSystem::Replacement replacement{faulty};
};

TEST_F(CopyPathInMemory, ASmallFileTakesTheseCalls) {
    memory.addFile("/from", "content");
    memory.addFolder("/d");
    EXPECT_EQ(copyPath("/from", "/d/to"), Status::Success);
    EXPECT_EQ(memory.calls(),
              (std::vector<std::string>{
                  "attributes /from", "attributes /d/to", "open /from", "OpenFile.attributes /from",
                  "open /d/to", "OpenFile.cloneRange /d/to", "OpenFile.readAt /from",
                  "OpenFile.write /d/to", "OpenFile.attributes /d/to", "OpenFile.close /d/to",
                  "extendedAttributeNames /from", "setModificationDate /d/to"}));
}

TEST_F(CopyPathInMemory, AVolumeThatCannotCloneIsAskedOnce) {
    memory.addFile("/from/a", "content");
    memory.addFile("/from/b", "content");
    EXPECT_EQ(copyPath("/from", "/to"), Status::Success);
    EXPECT_EQ(std::ranges::count_if(
                  memory.calls(),
                  [](const std::string& call) { return call.starts_with("OpenFile.clone"); }),
              1);
}

TEST_F(CopyPathInMemory, AVolumeWithoutExtendedAttributesIsAskedOnce) {
    for (const char* file : {"/from/a", "/from/b"}) {
        memory.addFile(file, "content");
        ASSERT_TRUE(memory.setExtendedAttribute(file, "user.a", {}).isNone());
        ASSERT_TRUE(memory.setExtendedAttribute(file, "user.b", {}).isNone());
    }
    faulty.failOperation("setExtendedAttribute", ENOTSUP);
    memory.clearCalls();
    EXPECT_EQ(copyPath("/from", "/to"), Status::Success);
    EXPECT_EQ(std::ranges::count_if(
                  memory.calls(),
                  [](const std::string& call) { return call.starts_with("extendedAttributeN"); }),
              1);
}

TEST_F(CopyPathInMemory, NamesThatTheOtherVolumeRefusesFailTheCopy) {
    memory.addFile("/from/a", "content");
    memory.addFile("/from/b:c", "content");
    memory.forbiddenCharacters = ":";
    EXPECT_EQ(copyPath("/from", "/to"), statusFromErrorNumber(EINVAL));
    EXPECT_FALSE(memory.attributes("/to").ok());
    EXPECT_TRUE(memory.attributes("/from/b:c").ok());
}

TEST_F(CopyPathInMemory, AFullVolumeLosesNothingAndKeepsNothing) {
    memory.addFile("/from/a", std::string(1000, 'a'));
    memory.addFile("/from/b", std::string(1000, 'b'));
    memory.capacity = 3500;
    EXPECT_EQ(copyPath("/from", "/to"), statusFromErrorNumber(ENOSPC));
    EXPECT_FALSE(memory.attributes("/to").ok());
    EXPECT_EQ(memory.attributes("/from/b").value().size, 1000U);
}

TEST_F(CopyPathInMemory, RelativePathsCountFromTheWorkingFolder) {
    memory.addFile("/from/a", "content");
    EXPECT_EQ(copyPath("from", "to"), Status::Success);
    EXPECT_TRUE(memory.attributes("/to/a").ok());
    EXPECT_EQ(copyPath("from", "from/to"), statusFromErrorNumber(EINVAL));
}

} // namespace
} // namespace tav
