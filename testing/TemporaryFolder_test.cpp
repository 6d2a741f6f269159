#include "testing/TemporaryFolder.hpp"

#include <cstdlib>
#include <fstream>
#include <memory>

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

namespace tav {

namespace {

bool exists(const std::string& path) {
    struct ::stat facts {};
    return ::lstat(path.c_str(), &facts) == 0;
}

TEST(TemporaryFolder, IsNewAndEmptyAndGoes) {
    auto folder = std::make_unique<TemporaryFolder>();
    const TemporaryFolder other;
    EXPECT_NE(folder->path(), other.path());
    EXPECT_TRUE(folder->path().starts_with('/'));
    EXPECT_EQ(folder->path("a"), folder->path() + "/a");
    EXPECT_EQ(::rmdir(other.path().c_str()), 0); // only an empty folder goes like this

    const std::string path = folder->path();
    EXPECT_TRUE(exists(path));
    folder.reset();
    EXPECT_FALSE(exists(path));
}

TEST(TemporaryFolder, TakesEverythingInsideAlongButNothingOutside) {
    const TemporaryFolder outside;
    std::ofstream(outside.path("kept")) << "kept";

    auto folder = std::make_unique<TemporaryFolder>();
    const std::string path = folder->path();
    ASSERT_EQ(::mkdir(folder->path("a").c_str(), 0700), 0);
    ASSERT_EQ(::mkdir(folder->path("a/\xFF").c_str(), 0700), 0);
    std::ofstream(folder->path("a/\xFF/\xFE")) << "bytes";
    ASSERT_EQ(::symlink(outside.path().c_str(), folder->path("a/link").c_str()), 0);
    ASSERT_EQ(::symlink("nowhere", folder->path("dangling").c_str()), 0);
    ASSERT_EQ(::mkfifo(folder->path("pipe").c_str(), 0600), 0);
    ASSERT_EQ(::chmod(folder->path("a/\xFF").c_str(), 0), 0);
    ASSERT_EQ(::chmod(folder->path("a").c_str(), 0), 0);

    folder.reset();
    EXPECT_FALSE(exists(path));
    EXPECT_TRUE(exists(outside.path("kept")));
}

} // namespace

} // namespace tav
