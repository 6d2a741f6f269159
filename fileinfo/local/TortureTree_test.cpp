// Listing, finding, summing up and removing over real folders that hold everything a walk may
// stumble over, and over volumes of their own.

#include "base/Exception.hpp"
#include "fileinfo/local/FolderWalk.hpp"
#include "fileinfo/local/TavMacFileInfo.hpp"
#include "testing/ForkedProcess.hpp"
#include "testing/OwnMounts.hpp"
#include "testing/TemporaryFolder.hpp"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <set>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <grp.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tav {
namespace {

constexpr std::size_t nestedFolders = 2000;

std::set<std::string> namesOf(const FileInfoArray& items) {
    std::set<std::string> names;
    for (const FileInfoPtr& item : items) {
        names.insert(item->name());
    }
    return names;
}

std::size_t openDescriptors() {
    const auto all = std::filesystem::directory_iterator("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(all), end(all)));
}

/// Lets everything in, and asks what a caller may ask.
class CuriousFilter final : public TavBaseFileInfoFilter {
  public:
    bool includeItem(TavBaseFileInfo& item, bool* /*stopAccumulating*/) override {
        mostDescriptors = std::max(mostDescriptors, asked % 100 == 0 ? openDescriptors() : 0);
        ++asked;
        static_cast<void>(item.visible());
        static_cast<void>(item.modificationDate());
        bytes += item.isFile() ? item.size() : 0;
        return true;
    }

    std::size_t asked = 0;
    std::size_t mostDescriptors = 0;
    std::uint64_t bytes = 0;
};

/// A folder that holds the tree for as long as it lives.
class TortureTree {
  public:
    TortureTree() {
        const std::string make = "python3 '" TAV_TESTDATA "/torture-tree/make.py' '" + path() + "'";
        EXPECT_EQ(std::system(make.c_str()), 0);
    }
    ~TortureTree() {
        const std::string remove = "chmod -R u+rwx '" + path() + "' && rm -rf '" + path() + "'";
        EXPECT_EQ(std::system(remove.c_str()), 0);
    }
    TortureTree(const TortureTree&) = delete;
    TortureTree& operator=(const TortureTree&) = delete;

    [[nodiscard]] std::string path() const { return folder_.path("tree"); }

  private:
    TemporaryFolder folder_;
};

/// The tests share one tree, which they leave as it is.
class TortureTreeTest : public testing::Test {
  protected:
    static void SetUpTestSuite() { shared() = std::make_unique<TortureTree>(); }
    static void TearDownTestSuite() { shared().reset(); }
    static std::unique_ptr<TortureTree>& shared() {
        static std::unique_ptr<TortureTree> tree;
        return tree;
    }
    [[nodiscard]] static std::string pathOf(std::string_view name) {
        return shared()->path() + '/' + std::string(name);
    }
    [[nodiscard]] static std::shared_ptr<TavMacFileInfo> item(std::string_view name) {
        return TavMacFileInfo::fileInfoWithPath(pathOf(name));
    }
    /// Whether a tree that root alone can list whole can be listed.
    static bool isRoot() { return ::geteuid() == 0; }
};

TEST_F(TortureTreeTest, EveryByteOfANameSurvives) {
    std::set<std::string> expected;
    for (const auto& entry : std::filesystem::directory_iterator(pathOf("names"))) {
        expected.insert(entry.path().filename().string());
    }
    ASSERT_GE(expected.size(), 27U);
    const FileInfoArray items = item("names")->folderContents();
    EXPECT_EQ(namesOf(items), expected);
    for (const FileInfoPtr& each : items) {
        EXPECT_TRUE(each->exists() && each->isFile()) << each->path();
        EXPECT_EQ(each->size(), 1U);
        EXPECT_EQ(item("names")->find(each->name())->size(), 1U) << each->path();
    }
    EXPECT_EQ(item("names")->size(), items.size());
}

TEST_F(TortureTreeTest, WalksOverLinksEnd) {
    const std::set<std::string> names = namesOf(item("links")->folderContents());
    for (const char* skipped : {"here", "empty-way", "long"}) {
        EXPECT_FALSE(names.contains(skipped)) << skipped;
    }
    for (const char* kept : {"self", "up", "root", "slash", "a", "b", "nothing", "through", "file",
                             "sibling", "0", "39", "chain0", "chain45"}) {
        EXPECT_TRUE(names.contains(kept)) << kept;
    }
    CuriousFilter filter;
    const FileInfoArray all = item("links")->folderContentsDeepWithFilter(&filter);
    EXPECT_LT(all.size(), 250U);
    EXPECT_TRUE(
        std::ranges::none_of(all, [](const FileInfoPtr& each) { return each->name() == "kept"; }));
}

TEST_F(TortureTreeTest, NothingBlocksOnPipesSocketsAndDevices) {
    CuriousFilter filter;
    const FileInfoArray items = item("special")->folderContentsDeepWithFilter(&filter);
    EXPECT_EQ(items.size(), isRoot() ? 3U : 2U);
    EXPECT_EQ(filter.bytes, 0U);
    EXPECT_EQ(item("special")->size(), 0U);
}

TEST_F(TortureTreeTest, NestedFoldersAreListedToTheirEndWithAFewDescriptors) {
    const std::size_t before = openDescriptors();
    CuriousFilter filter;
    const FileInfoArray all = item("nested")->folderContentsDeepWithFilter(&filter);
    EXPECT_EQ(all.size(), 2 * nestedFolders);
    EXPECT_EQ(filter.bytes, nestedFolders);
    EXPECT_LE(filter.mostDescriptors, before + internal::WalkedFolder::mostOpen + 2);
    EXPECT_EQ(openDescriptors(), before);
    const auto longest = std::ranges::max(
        all, {}, [](const FileInfoPtr& each) { return each->standardPath().size(); });
    EXPECT_GT(longest->path().size(), 4096U);
    EXPECT_TRUE(longest->exists());
    EXPECT_EQ(item("nested")->findDeep("ZLAST").size(), nestedFolders);
}

TEST_F(TortureTreeTest, AWalkGetsAlongWithFewDescriptors) {
    EXPECT_EQ(runForked([] {
                  const struct rlimit few = {16, 16};
                  if (::setrlimit(RLIMIT_NOFILE, &few) != 0) {
                      return 1;
                  }
                  class Quiet final : public TavBaseFileInfoFilter {
                    public:
                      bool includeItem(TavBaseFileInfo& each, bool* /*stop*/) override {
                          return each.isFolder() || each.size() == 1;
                      }
                  } quiet;
                  const auto all = item("nested")->folderContentsDeepWithFilter(&quiet);
                  return all.size() == 2 * nestedFolders ? passed : 2;
              }),
              (ProcessEnd{passed, 0}));
}

TEST_F(TortureTreeTest, TheWholeTreeIsListed) {
    if (!isRoot()) {
        GTEST_SKIP() << "only root can read all of it";
    }
    CuriousFilter filter;
    const FileInfoArray all = item("")->folderContentsDeepWithFilter(&filter);
    EXPECT_GT(all.size(), 2 * nestedFolders);
    EXPECT_EQ(item("")->findFirstDeep("plain.txt")->path(), pathOf("names/plain.txt"));
    EXPECT_EQ(namesOf(item("unreadable")->folderContents()), std::set<std::string>{"kept"});
}

TEST(TortureTreeRemoval, TheWholeTreeIsRemoved) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "only root can read all of it";
    }
    const TortureTree tree;
    const auto item = TavMacFileInfo::fileInfoWithPath(tree.path());
    EXPECT_TRUE(item->removeContents());
    EXPECT_TRUE(item->exists());
    EXPECT_TRUE(item->folderContents().empty());
}

TEST_F(TortureTreeTest, WhoMayNotReadAFolderIsTold) {
    EXPECT_EQ(runForked([] {
                  constexpr ::uid_t nobody = 65534;
                  if (::chmod(pathOf("..").c_str(), 0755) != 0) {
                      return 1;
                  }
                  if (isRoot() && (::setgroups(0, nullptr) != 0 || ::setgid(nobody) != 0 ||
                                   ::setuid(nobody) != 0)) {
                      return 2;
                  }
                  try {
                      static_cast<void>(item("")->folderContentsDeepWithFilter(nullptr));
                      return 3;
                  } catch (const Exception& exception) {
                      return exception.reason().ends_with("unreadable\". (Permission denied)")
                                 ? passed
                                 : 4;
                  }
              }),
              (ProcessEnd{passed, 0}));
}

TEST(ManyItems, AFolderOfAHundredThousandIsListedFoundAndRemoved) {
    constexpr std::size_t many = 100'000;
    const TemporaryFolder folder;
    ASSERT_EQ(::mkdir(folder.path("many").c_str(), 0777), 0);
    const int inside = ::open(folder.path("many").c_str(), O_DIRECTORY | O_CLOEXEC);
    for (std::size_t i = 0; i < many; ++i) {
        const int file =
            ::openat(inside, std::to_string(i).c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0666);
        ASSERT_GE(file, 0);
        ::close(file);
    }
    ::close(inside);
    const std::size_t before = openDescriptors();
    const auto item = TavMacFileInfo::fileInfoWithPath(folder.path("many"));
    const FileInfoArray all = item->folderContents();
    EXPECT_EQ(all.size(), many);
    EXPECT_EQ(namesOf(all).size(), many);
    EXPECT_EQ(openDescriptors(), before);
    EXPECT_EQ(item->findDeep("99999").size(), 1U);
    EXPECT_TRUE(item->removeContents());
    EXPECT_TRUE(item->folderContents().empty());
}

class OwnVolumesTest : public testing::Test {
  protected:
    TemporaryFolder folder;
    std::string place = folder.path("volume");

    void SetUp() override { ASSERT_EQ(::mkdir(place.c_str(), 0755), 0); }
    [[nodiscard]] bool mountAtPlace(const std::string& make, const std::string& type) const {
        return mountImage(folder.path("image"), make, type, place);
    }
    /// Whether the place is taken for a volume of its own. Asked before anything is cleaned.
    [[nodiscard]] bool isOwnVolume() const {
        const FileInfoPtr volume = TavMacFileInfo::fileInfoWithPath(place)->volume();
        return volume && volume->path() == place;
    }
    /// Fills, lists and cleans the volume. It is one of its own, and that is looked at first.
    [[nodiscard]] int useVolume() const {
        struct ::stat above {};
        struct ::stat here {};
        if (::stat(folder.path().c_str(), &above) != 0 || ::stat(place.c_str(), &here) != 0 ||
            above.st_dev == here.st_dev) {
            return 10;
        }
        if (!runInShell(
                "cd '" + place +
                "' && mkdir -p .Trashes/501 a/b .Spotlight-V100 && touch 'Desktop DB' a/.DS_Store "
                "a/b/._x a/b/kept .Spotlight-V100/kept .Trashes/501/old ._y")) {
            return 11;
        }
        const auto root = TavMacFileInfo::fileInfoWithPath(place);
        if (!isOwnVolume()) {
            return 12;
        }
        TavMacFileInfo::removeMacGeneratedItemsAtPath(place + "/a/b");
        std::set<std::string> left = namesOf(root->folderContentsDeepWithFilter(nullptr));
        left.erase("lost+found");
        return left == std::set<std::string>{".Spotlight-V100", "a", "b", "kept"} ? passed : 13;
    }
    void expect(int status, const char* what) {
        if (status == cannotMount) {
            GTEST_SKIP() << "this machine cannot mount " << what;
        }
        EXPECT_EQ(status, passed);
    }
};

TEST_F(OwnVolumesTest, ATemporaryVolumeIsListedAndCleaned) {
    expect(runWithOwnMounts([this] {
               return ::mount("none", place.c_str(), "tmpfs", 0, "size=4m") == 0 ? useVolume()
                                                                                 : cannotMount;
           }),
           "a tmpfs");
}

TEST_F(OwnVolumesTest, AnExt4VolumeIsListedAndCleaned) {
    expect(runWithOwnMounts(
               [this] { return mountAtPlace("mkfs.ext4 -q", "ext4") ? useVolume() : cannotMount; }),
           "an image of ext4");
}

TEST_F(OwnVolumesTest, AFATVolumeIsListedAndCleaned) {
    expect(runWithOwnMounts(
               [this] { return mountAtPlace("mkfs.vfat", "vfat") ? useVolume() : cannotMount; }),
           "an image of FAT");
}

TEST_F(OwnVolumesTest, OnAReadOnlyVolumeEverythingIsListedAndNothingChanged) {
    expect(
        runWithOwnMounts([this] {
            if (::mount("none", place.c_str(), "tmpfs", 0, "size=4m") != 0 ||
                !runInShell("cd '" + place + "' && mkdir a && touch QuillboxCopyFile.tmp a/._x") ||
                ::mount("none", place.c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr) != 0) {
                return cannotMount;
            }
            const auto root = TavMacFileInfo::fileInfoWithPath(place);
            if (namesOf(root->folderContents()) != std::set<std::string>{"a"}) {
                return 1;
            }
            if (!isOwnVolume()) {
                return 4;
            }
            TavMacFileInfo::removeMacGeneratedItemsAtPath(place);
            if (namesOf(root->folderContentsDeepWithFilter(nullptr)) !=
                std::set<std::string>{"._x", "a"}) {
                return 2;
            }
            return root->createFolder("b") == nullptr && !root->removeContents() ? passed : 3;
        }),
        "a tmpfs");
}

} // namespace
} // namespace tav
