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
    /// The whole paths of everything that was listed.
    static Names pathsIn(const FolderTree& tree) {
        Names paths;
        Names folders;
        for (const FolderTree::Folder& folder : tree.folders) {
            folders.push_back(folders.empty() ? tree.path
                                              : folders[folder.parent] + '/' +
                                                    std::string(tree.nameOf(folder)));
            for (const FolderListing::Entry& entry : folder.entries) {
                paths.push_back(folders.back() + '/' + std::string(entry.name));
            }
        }
        std::sort(paths.begin(), paths.end());
        return paths;
    }
    /// Makes so many folders in one another, each of whose names has so many bytes.
    void makeChain(const std::string& top, std::size_t depth, std::size_t nameSize) {
        makeFolder(top);
        auto folder = files.openFolder(path(top));
        ASSERT_TRUE(folder.ok());
        const std::string name(nameSize, 'd');
        for (std::size_t level = 0; level < depth; ++level) {
            ASSERT_TRUE(folder.value()->createFolder(name, 0700).isNone());
            folder = folder.value()->openFolder(name);
            ASSERT_TRUE(folder.ok());
        }
        OpenOptions options;
        options.write = true;
        options.create = true;
        ASSERT_TRUE(folder.value()->open("file", options).ok());
    }
    /// Whatever happened, this must hold.
    void expectOutsideIsWhole() {
        EXPECT_EQ(read("outside/kept"), "x");
        EXPECT_EQ(namesIn("outside"), Names{"kept"});
    }
    /// Removes "top" time and again, with a link in the place of a folder from one call on: the
    /// first, the second, and so on until there are no more calls.
    void exchangeAtEachCall(std::string_view folder, std::string_view target) {
        for (std::size_t call = 1;; ++call) {
            makeFolder("outside");
            makeFile("outside/kept", "x");
            makeFolder("top");
            makeFile("top/kept", "x"); // the same name as outside
            makeFolder("top/inner");
            makeFile("top/inner/kept", "x");
            faulty.restartCount();
            faulty.atCall(call, [&] {
                // Once it is gone there is nothing to exchange.
                if (errorOfMove(folder, "aside", Replace::No) == 0) {
                    makeLink(folder, target);
                }
            });
            static_cast<void>(removeItem(path("top")));
            const bool isDone = faulty.callCount() < call;
            expectOutsideIsWhole();
            faulty.atCall(call, [] {});
            for (const char* left : {"top", "aside", "outside"}) {
                if (stands(left)) {
                    ASSERT_TRUE(removeItem(path(left)).isNone());
                }
            }
            if (isDone) {
                ASSERT_GT(call, 10U);
                break;
            }
        }
    }
};

INSTANTIATE_TEST_SUITE_P(Worlds, FolderTreeTest, testing::Values(Kind::Real, Kind::Memory),
                         nameOfWorld);

TEST_P(FolderTreeTest, ListsAllDepthsAndNothingBehindLinks) {
    makeTree();
    const auto tree = listFolderTree(path("top"));
    ASSERT_TRUE(tree.ok());
    const Names paths = pathsIn(tree.value());
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

/// A folder on a file system whose listings tell no kinds.
class FolderWithoutKinds final : public OpenFolder {
  public:
    explicit FolderWithoutKinds(std::unique_ptr<OpenFolder> inner) : inner_(std::move(inner)) {}
    static Result<std::unique_ptr<OpenFolder>> over(Result<std::unique_ptr<OpenFolder>> inner) {
        if (!inner.ok()) {
            return inner;
        }
        return Result<std::unique_ptr<OpenFolder>>(
            std::make_unique<FolderWithoutKinds>(std::move(inner).value()));
    }
    Result<FileAttributes> attributes() override { return inner_->attributes(); }
    Result<FolderListing> entries() override {
        const auto entries = inner_->entries();
        if (!entries.ok()) {
            return entries.error();
        }
        FolderListing withoutKinds;
        for (const FolderListing::Entry& entry : entries.value()) {
            withoutKinds.add(entry.name, FileKind::Unknown, entry.number);
        }
        return withoutKinds;
    }
    Result<FileAttributes> attributes(std::string_view name) override {
        return inner_->attributes(name);
    }
    Result<FileAttributes> targetAttributes(std::string_view name) override {
        return inner_->targetAttributes(name);
    }
    Result<std::string> linkTarget(std::string_view name) override {
        return inner_->linkTarget(name);
    }
    Result<std::unique_ptr<OpenFolder>> openFolder(std::string_view name) override {
        return over(inner_->openFolder(name));
    }
    Result<std::unique_ptr<OpenFolder>> openTargetFolder(std::string_view name) override {
        return over(inner_->openTargetFolder(name));
    }
    Result<std::unique_ptr<OpenFile>> open(std::string_view name,
                                           const OpenOptions& options) override {
        return inner_->open(name, options);
    }
    SystemError createFolder(std::string_view name, std::uint32_t permissions) override {
        return inner_->createFolder(name, permissions);
    }
    SystemError removeFile(std::string_view name) override { return inner_->removeFile(name); }
    SystemError removeFolder(std::string_view name) override { return inner_->removeFolder(name); }

  private:
    std::unique_ptr<OpenFolder> inner_;
};

TEST_P(FolderTreeTest, AsksForTheKindsThatAListingDoesNotTell) {
    makeTree();
    FolderTree tree;
    tree.path = path("top");
    tree.folders.emplace_back();
    auto first = FolderWithoutKinds::over(files.openFolder(tree.path));
    ASSERT_TRUE(first.ok());
    tree.folders.front().identity = attributesOf("top").identity;
    ASSERT_TRUE(internal::listInnerFolders(tree, std::move(first).value()).isNone());
    const auto expected = listFolderTree(path("top"));
    ASSERT_TRUE(expected.ok());
    EXPECT_EQ(pathsIn(tree), pathsIn(expected.value()));
    EXPECT_TRUE(removeListedTree(tree).isNone());
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

TEST_P(FolderTreeTest, ASlashBehindALinkStillMeansTheLink) {
    makeFolder("target");
    makeFile("target/kept");
    makeLink("link", "target");
    EXPECT_TRUE(removeItem(path("link//")).isNone());
    EXPECT_FALSE(stands("link"));
    EXPECT_TRUE(stands("target/kept"));
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
    EXPECT_EQ(pathsIn(tree.value()), Names{path("link/kept")});
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
    for (const char* operation : {"attributes", "openFolder", "OpenFolder.openFolder",
                                  "OpenFolder.attributes", "OpenFolder.entries"}) {
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

TEST_P(FolderTreeTest, AnExchangeAtAnyMomentCostsNothingBehindALink) {
    exchangeAtEachCall("top/inner", "../outside");
}

TEST_P(FolderTreeTest, AnExchangeOfTheFirstFolderCostsNothingBehindALink) {
    exchangeAtEachCall("top", "outside");
}

TEST_P(FolderTreeTest, ALinkThatComesAndGoesWithEachLookIsNotGoneThrough) {
    makeFolder("outside");
    makeFile("outside/kept", "x");
    makeFolder("top");
    const auto putLink = [&] {
        ASSERT_EQ(errorOfMove("top", "aside", Replace::No), 0);
        makeLink("top", "outside");
    };
    const auto putFolder = [&] {
        ASSERT_TRUE(files.removeFile(path("top")).isNone());
        ASSERT_EQ(errorOfMove("aside", "top", Replace::No), 0);
    };
    // Looked at, looked at, opened, identified, listed; looked at and opened for the removal.
    faulty.atCall(3, putLink);
    faulty.atCall(6, putFolder);
    faulty.atCall(7, putLink);
    EXPECT_EQ(removeItem(path("top")).number(), ESTALE);
    expectOutsideIsWhole();
}

TEST_P(FolderTreeTest, TreesDeeperThanThePathsOfTheKernelAreRemoved) {
    makeChain("top", 60, 100);
    EXPECT_TRUE(removeItem(path("top")).isNone());
    EXPECT_FALSE(stands("top"));
}

TEST_P(FolderTreeTest, AnyDepthIsRemovedWithFewDescriptors) {
    constexpr std::size_t depth = 2000;
    makeChain("top", depth, 3);
    makeFolder("top/ddd/beside");
    SystemError error;
    {
        const FewDescriptors few(18);
        faulty.restartCount();
        error = removeItem(path("top"));
    }
    EXPECT_TRUE(error.isNone()) << error.number();
    EXPECT_FALSE(stands("top"));
    // Nowhere near the square of the depth.
    EXPECT_LT(faulty.callCount(), depth * 80);
}

TEST_P(FolderTreeTest, AFolderOfManyEntriesIsRemoved) {
    // On a disk that many take half a minute.
    const std::size_t count = GetParam() == Kind::Real ? 10000 : 100000;
    makeFolder("top");
    makeFolder("top/inner");
    {
        const auto folder = files.openFolder(path("top"));
        ASSERT_TRUE(folder.ok());
        OpenOptions options;
        options.write = true;
        options.create = true;
        for (std::size_t i = 0; i < count; ++i) {
            ASSERT_TRUE(folder.value()->open(std::to_string(i), options).ok());
        }
    }
    faulty.restartCount();
    EXPECT_TRUE(removeItem(path("top")).isNone());
    EXPECT_FALSE(stands("top"));
    EXPECT_LT(faulty.callCount(), count + 50);
}

} // namespace
} // namespace tav
