#include "platform/memory/MemoryFileSystem.hpp"
#include "relaunch/PathItem.hpp"

#include <gtest/gtest.h>

namespace tav {
namespace {

class PathItemTest : public testing::Test {
  protected:
    MemoryFileSystem files;
    FileSystem::Replacement replacedFiles{files};

    static std::optional<std::string> resolve(std::string_view path) {
        const std::optional<PathItem> item = PathItem::fileInfoResolveAliasesWithPath(path);
        return item ? std::optional(item->path()) : std::nullopt;
    }

    static std::string find(std::string_view base, std::string_view name) {
        return PathItem::fileInfoWithPath(base).find(name).path();
    }
};

TEST_F(PathItemTest, AnItemNeedNotExist) {
    const PathItem item = PathItem::fileInfoWithPath("/a/b");
    EXPECT_EQ(item.path(), "/a/b");
    EXPECT_EQ(item.name(), "b");
    EXPECT_FALSE(item.exists());
    files.addFile("/a/b", "");
    EXPECT_TRUE(item.exists());
    EXPECT_FALSE(PathItem::fileInfoWithPath("").exists());
}

TEST_F(PathItemTest, ALinkThatLeadsNowhereExists) {
    files.addLink("/l", "/gone");
    EXPECT_TRUE(PathItem::fileInfoWithPath("/l").exists());
}

TEST_F(PathItemTest, ParentFoldersEndAtTheRoot) {
    EXPECT_EQ(PathItem::fileInfoWithPath("/a/b").parentFolder()->path(), "/a");
    EXPECT_EQ(PathItem::fileInfoWithPath("/a").parentFolder()->path(), "/");
    EXPECT_FALSE(PathItem::fileInfoWithPath("/").parentFolder());
}

TEST_F(PathItemTest, FindAnswersAChildOfAFolderAndASiblingOfAFile) {
    files.addFile("/d/file", "");
    EXPECT_EQ(find("/d", "x"), "/d/x");
    EXPECT_EQ(find("/d/file", "x"), "/d/x");
    EXPECT_EQ(find("/gone", "x"), "/gone/x");
    EXPECT_EQ(find("/", "x"), "/x");
    EXPECT_EQ(find("/d", "x/y"), "/d/x/y");
}

TEST_F(PathItemTest, FindGoesByWhatALinkLeadsTo) {
    files.addFile("/d/file", "");
    files.addLink("/toFolder", "/d");
    files.addLink("/toFile", "/d/file");
    files.addLink("/toNowhere", "/gone");
    files.addLink("/loop", "/loop");
    EXPECT_EQ(find("/toFolder", "x"), "/toFolder/x") << "links are not resolved";
    EXPECT_EQ(find("/toFile", "x"), "/x");
    EXPECT_EQ(find("/toNowhere", "x"), "/x") << "counts as a file";
    EXPECT_EQ(find("/loop", "x"), "/loop/x");
}

TEST_F(PathItemTest, ResolvingFollowsALinkAtEachStep) {
    files.addFile("/real/deep/file", "");
    files.addLink("/one", "/real");
    files.addLink("/real/two", "deep");
    files.addLink("/chain", "/one");
    EXPECT_EQ(resolve("/real/deep/file"), "/real/deep/file");
    EXPECT_EQ(resolve("/one/deep/file"), "/real/deep/file");
    EXPECT_EQ(resolve("/one/two/file"), "/real/deep/file");
    EXPECT_EQ(resolve("/chain/two"), "/real/deep");
    EXPECT_EQ(resolve("/"), "/");
}

TEST_F(PathItemTest, ResolvingEndsAtTheFirstComponentThatIsMissing) {
    files.addFile("/real/file", "");
    files.addLink("/nowhere", "/gone");
    files.addLink("/loop", "/loop");
    EXPECT_EQ(resolve("/gone/x"), std::nullopt);
    EXPECT_EQ(resolve("/real/gone"), std::nullopt);
    EXPECT_EQ(resolve("/nowhere"), std::nullopt);
    EXPECT_EQ(resolve("/nowhere/x"), std::nullopt);
    EXPECT_EQ(resolve("/loop"), std::nullopt);
    EXPECT_EQ(resolve(""), std::nullopt);
}

} // namespace
} // namespace tav
