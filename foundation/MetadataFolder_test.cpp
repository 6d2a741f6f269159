#include "foundation/FileManager.hpp"
#include "foundation/FileManager_test.hpp"
#include "platform/Bundle.hpp"
#include "platform/memory/MemoryUserFolders.hpp"

namespace tav {
namespace {

class MetadataFolder : public FileManagerTest {
  protected:
    /// The process table keeps /proc open from the first question on.
    static void SetUpTestSuite() { static_cast<void>(Bundle::mainBundle()); }

    void SetUp() override {
        folders.cachesFolder = path("caches");
        folders.temporaryFolder = path("temporary");
    }

    MemoryUserFolders folders;
    UserFolders::Replacement foldersInPlace{folders};
};

INSTANTIATE_TEST_SUITE_P(Worlds, MetadataFolder, testing::Values(Kind::Real, Kind::Memory),
                         nameOfWorld);

TEST_P(MetadataFolder, StandsAmongTheCaches) {
    // The test program is no bundle, so there is no identifier.
    EXPECT_EQ(metadataFolder(), path("caches/Caches/Metadata"));
    EXPECT_TRUE(isFolder("caches/Caches/Metadata"));
    EXPECT_EQ(metadataFolder(), path("caches/Caches/Metadata"));
}

TEST_P(MetadataFolder, OrElseInTheTemporaryFolder) {
    folders.cachesFolder.clear();
    EXPECT_EQ(metadataFolder(), path("temporary/Caches/Metadata"));
    EXPECT_TRUE(isFolder("temporary/Caches/Metadata"));
    EXPECT_FALSE(stands("caches"));
}

TEST_P(MetadataFolder, IsNowhereWhenTheHostTellsNeither) {
    folders.cachesFolder.clear();
    folders.temporaryFolder.clear();
    EXPECT_EQ(metadataFolder(), "");
    EXPECT_EQ(faulty.callCount(), 0U);
}

TEST(MetadataFolderOfABundle, EndsInItsIdentifier) {
    const auto bundle = Bundle::mainBundle();
    ASSERT_TRUE(bundle);
    MemoryFileSystem memory;
    memory.addFile(bundle->bundlePath() + "/Contents/Info.plist",
                   "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict>"
                   "<key>CFBundleIdentifier</key><string>org.example.suite</string>"
                   "</dict></plist>");
    MemoryUserFolders folders;
    const FileSystem::Replacement filesInPlace(memory);
    const UserFolders::Replacement foldersInPlace(folders);
    EXPECT_EQ(metadataFolder(), "/home/user/.cache/Caches/Metadata/org.example.suite");
    EXPECT_TRUE(memory.attributes("/home/user/.cache/Caches/Metadata/org.example.suite").ok());
}

} // namespace
} // namespace tav
