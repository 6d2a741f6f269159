#include "foundation/FileManager_test.hpp"
#include "foundation/FolderTree.hpp"

#include <sys/stat.h>

namespace tav {
namespace {

class FolderTreeTest : public FileManagerTest {
  protected:
    /// A tree of every kind of thing, and a folder outside that links lead to.
    void makeTree() {
        makeFolder("outside");
        makeFile("outside/kept", "x");
        makeFolder("top");
        makeFolder("top/inner");
        makeFolder("top/inner/empty");
        makeFile("top/inner/file\xFF", "x");
        makeFile("top/.hidden", "x");
        makeLink("top/toFolder", "../outside");
        makeLink("top/toFile", path("outside/kept"));
        makeLink("top/loop", ".");
        makeLink("top/nothing", "missing");
        if (GetParam() == Kind::Real) {
            ASSERT_EQ(::mkfifo(path("top/pipe").c_str(), 0600), 0);
        }
    }
    /// Whatever happened, this must hold.
    void expectOutsideIsWhole() {
        EXPECT_EQ(read("outside/kept"), "x");
        EXPECT_EQ(namesIn("outside"), Names{"kept"});
    }
};

INSTANTIATE_TEST_SUITE_P(Worlds, FolderTreeTest, testing::Values(Kind::Real, Kind::Memory),
                         nameOfWorld);

TEST_P(FolderTreeTest, ListsAllDepthsAndNothingBehindLinks) {
    makeTree();
    const auto tree = listFolderTree(path("top"));
    ASSERT_TRUE(tree.ok());
    std::vector<std::string> paths = tree.value().paths();
    std::sort(paths.begin(), paths.end());
    std::vector<std::string> expected = {path("top/.hidden"),     path("top/inner"),
                                         path("top/inner/empty"), path("top/inner/file\xFF"),
                                         path("top/loop"),        path("top/nothing")};
    if (GetParam() == Kind::Real) {
        expected.push_back(path("top/pipe"));
    }
    expected.push_back(path("top/toFile"));
    expected.push_back(path("top/toFolder"));
    EXPECT_EQ(paths, expected);
    EXPECT_EQ(tree.value().folders.size(), 3U);
    EXPECT_FALSE(tree.value().isReachedByLink);
}

TEST_P(FolderTreeTest, AsksForTheKindsThatAListingDoesNotTell) {
    /// Listings of some file systems tell no kinds.
    class WithoutKinds final : public FileSystem {
      public:
        explicit WithoutKinds(FileSystem& inner) : inner_(inner) {}
        Result<FileAttributes> attributes(std::string_view path) override {
            return inner_.attributes(path);
        }
        Result<FileAttributes> targetAttributes(std::string_view path) override {
            return inner_.targetAttributes(path);
        }
        Result<std::vector<FolderEntry>> folderEntries(std::string_view path) override {
            auto entries = inner_.folderEntries(path);
            if (entries.ok()) {
                for (FolderEntry& entry : entries.value()) {
                    entry.kind = FileKind::Unknown;
                }
            }
            return entries;
        }
        Result<std::unique_ptr<OpenFolder>> openFolder(std::string_view) override {
            return SystemError(EIO);
        }
        Result<std::string> linkTarget(std::string_view) override { return SystemError(EIO); }
        Result<std::string> canonicalPath(std::string_view) override { return SystemError(EIO); }
        Result<Data> readFile(std::string_view, std::uint64_t) override { return SystemError(EIO); }
        SystemError writeFile(std::string_view, BytesView, std::uint32_t) override {
            return SystemError(EIO);
        }
        Result<std::unique_ptr<OpenFile>> open(std::string_view, const OpenOptions&) override {
            return SystemError(EIO);
        }
        SystemError syncFolder(std::string_view) override { return SystemError(EIO); }
        SystemError createFolder(std::string_view, std::uint32_t) override {
            return SystemError(EIO);
        }
        SystemError createLink(std::string_view, std::string_view) override {
            return SystemError(EIO);
        }
        SystemError setPermissions(std::string_view, std::uint32_t) override {
            return SystemError(EIO);
        }
        SystemError setModificationDate(std::string_view, Date) override {
            return SystemError(EIO);
        }
        Result<Data> extendedAttribute(std::string_view, std::string_view) override {
            return SystemError(EIO);
        }
        SystemError setExtendedAttribute(std::string_view, std::string_view, BytesView) override {
            return SystemError(EIO);
        }
        SystemError removeExtendedAttribute(std::string_view, std::string_view) override {
            return SystemError(EIO);
        }
        SystemError move(std::string_view, std::string_view, Replace) override {
            return SystemError(EIO);
        }
        SystemError removeFile(std::string_view path) override { return inner_.removeFile(path); }
        SystemError removeFolder(std::string_view path) override {
            return inner_.removeFolder(path);
        }

      private:
        FileSystem& inner_;
    };
    makeTree();
    WithoutKinds withoutKinds(files);
    const FileSystem::Replacement inPlace(withoutKinds);
    EXPECT_TRUE(removeItem(path("top")).isNone());
    EXPECT_FALSE(stands("top"));
    expectOutsideIsWhole();
}

TEST_P(FolderTreeTest, WhatIsNoFolderHasNoTree) {
    makeFile("file");
    makeLink("nothing", "missing");
    EXPECT_EQ(listFolderTree(path("file")).error().number(), ENOTDIR);
    EXPECT_EQ(listFolderTree(path("missing")).error().number(), ENOENT);
    EXPECT_EQ(listFolderTree(path("nothing")).error().number(), ENOENT);
    EXPECT_EQ(listFolderTree("").error().number(), ENOENT);
}

TEST_P(FolderTreeTest, RemovesAFolderWithEverythingInItButWhatLinksLeadTo) {
    makeTree();
    EXPECT_TRUE(removeItem(path("top")).isNone());
    EXPECT_FALSE(stands("top"));
    expectOutsideIsWhole();
}

TEST_P(FolderTreeTest, RemovesFilesAndLinksThemselves) {
    makeFolder("outside");
    makeFile("outside/kept", "x");
    makeLink("link", "outside");
    makeFile("file");
    EXPECT_TRUE(removeItem(path("link")).isNone());
    EXPECT_TRUE(removeItem(path("file")).isNone());
    EXPECT_FALSE(stands("link") || stands("file"));
    expectOutsideIsWhole();
    EXPECT_EQ(removeItem(path("missing")).number(), ENOENT);
    EXPECT_EQ(removeItem("").number(), ENOENT);
}

TEST_P(FolderTreeTest, OfATreeReachedByALinkOnlyTheLinkGoes) {
    makeFolder("outside");
    makeFile("outside/kept", "x");
    makeLink("link", "outside");
    const auto tree = listFolderTree(path("link"));
    ASSERT_TRUE(tree.ok());
    EXPECT_EQ(tree.value().paths(), Names{path("link/kept")});
    EXPECT_TRUE(removeListedTree(tree.value()).isNone());
    EXPECT_FALSE(stands("link"));
    expectOutsideIsWhole();
}

TEST_P(FolderTreeTest, WhatCameSinceTheListingStays) {
    makeTree();
    const auto tree = listFolderTree(path("top"));
    makeFile("top/inner/new", "x");
    ASSERT_TRUE(tree.ok());
    EXPECT_EQ(removeListedTree(tree.value()).number(), ENOTEMPTY);
    EXPECT_EQ(read("top/inner/new"), "x");
    expectOutsideIsWhole();
}

TEST_P(FolderTreeTest, ALinkOrAFolderInTheOldPlaceIsNotTouched) {
    makeFolder("outside");
    makeFile("outside/kept", "x");
    makeFolder("top");
    makeFolder("top/inner");
    makeFile("top/inner/kept", "x");
    const auto tree = listFolderTree(path("top"));
    ASSERT_TRUE(tree.ok());
    ASSERT_EQ(errorOfMove("top/inner", "aside", Replace::No), 0);
    makeLink("top/inner", "../outside");
    EXPECT_EQ(removeListedTree(tree.value()).number(), ESTALE);
    expectOutsideIsWhole();
    ASSERT_TRUE(files.removeFile(path("top/inner")).isNone());
    ASSERT_EQ(errorOfMove("outside", "top/inner", Replace::No), 0);
    EXPECT_EQ(removeListedTree(tree.value()).number(), ESTALE);
    EXPECT_EQ(read("top/inner/kept"), "x");
}

TEST_P(FolderTreeTest, AFolderAboveThatWasExchangedIsNotGoneThrough) {
    makeFolder("outside");
    makeFolder("outside/inner");
    makeFile("outside/inner/kept", "x");
    makeFolder("top");
    makeFolder("top/middle");
    makeFolder("top/middle/inner");
    makeFile("top/middle/inner/kept", "x");
    const auto tree = listFolderTree(path("top"));
    ASSERT_TRUE(tree.ok());
    ASSERT_EQ(errorOfMove("top/middle", "aside", Replace::No), 0);
    makeLink("top/middle", "../outside");
    EXPECT_EQ(removeListedTree(tree.value()).number(), ESTALE);
    EXPECT_EQ(read("outside/inner/kept"), "x");
}

TEST_P(FolderTreeTest, AFaultInTheListingRemovesNothing) {
    for (const char* operation : {"attributes", "folderEntries"}) {
        makeTree();
        faulty.failOperation(operation, EACCES);
        EXPECT_EQ(removeItem(path("top")).number(), EACCES);
        faulty.failOperation(operation, 0);
        EXPECT_EQ(read("top/inner/file\xFF"), "x");
        EXPECT_TRUE(removeItem(path("top")).isNone());
        EXPECT_TRUE(removeItem(path("outside")).isNone());
    }
}

TEST_P(FolderTreeTest, EveryFaultIsAnsweredAndARepeatedRemovalEnds) {
    for (const int error : sweptErrors) {
        for (std::size_t call = 1;; ++call) {
            makeTree();
            faulty.restartCount();
            faulty.failCall(call, error);
            const SystemError answer = removeItem(path("top"));
            const bool isDone = faulty.callCount() < call;
            faulty.failCall(0, 0);
            EXPECT_EQ(answer.number(), isDone ? 0 : error) << call;
            EXPECT_EQ(stands("top"), !isDone);
            expectOutsideIsWhole();
            if (isDone) {
                ASSERT_GT(call, 10U);
                EXPECT_TRUE(removeItem(path("outside")).isNone());
                break;
            }
            EXPECT_TRUE(removeItem(path("top")).isNone());
            EXPECT_TRUE(removeItem(path("outside")).isNone());
        }
    }
}

TEST_P(FolderTreeTest, TreesDeeperThanThePathsOfTheKernelAreRemoved) {
    std::string folder = path("top");
    makeFolder("top");
    for (int level = 0; level < 60; ++level) {
        folder += '/' + std::string(100, 'd');
        ASSERT_TRUE(files.createFolder(folder, 0700).isNone());
    }
    ASSERT_TRUE(files.writeFile(folder + "/file", {}, 0600).isNone());
    EXPECT_TRUE(removeItem(path("top")).isNone());
    EXPECT_FALSE(stands("top"));
}

} // namespace
} // namespace tav
