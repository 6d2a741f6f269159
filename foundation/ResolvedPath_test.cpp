#include "foundation/FileManager.hpp"
#include "foundation/FileManager_test.hpp"

#include <sys/stat.h>

namespace tav {
namespace {

class AbsolutePathForPath : public FileManagerTest {};
class DataForkSize : public FileManagerTest {};

INSTANTIATE_TEST_SUITE_P(Worlds, AbsolutePathForPath, testing::Values(Kind::Real, Kind::Memory),
                         nameOfWorld);
INSTANTIATE_TEST_SUITE_P(Worlds, DataForkSize, testing::Values(Kind::Real, Kind::Memory),
                         nameOfWorld);

TEST_P(AbsolutePathForPath, WhatIsNoLinkIsAnsweredAsItStands) {
    makeFile("a");
    makeFolder("folder");
    for (const std::string& same : {path("a"), path("folder/../a"), path("missing"), std::string(),
                                    std::string("missing/relative"), path("folder/")}) {
        EXPECT_EQ(absolutePathForPath(same), same);
    }
}

TEST_P(AbsolutePathForPath, LinksAreResolvedToTheEndOfTheChain) {
    makeFile("a\xFF");
    makeFolder("folder");
    makeLink("relative", "a\xFF");
    makeLink("absolute", path("a\xFF"));
    makeLink("chain", "relative");
    makeLink("longerChain", path("chain"));
    makeLink("toFolder", "folder");
    makeLink("folder/up", "../a\xFF");
    for (const char* name :
         {"relative", "absolute", "chain", "longerChain", "folder/up", "toFolder/up"}) {
        EXPECT_EQ(absolutePathForPath(path(name)), path("a\xFF")) << name;
    }
    EXPECT_EQ(absolutePathForPath(path("toFolder")), path("folder"));
    // Only a link at the path's end is resolved.
    EXPECT_EQ(absolutePathForPath(path("toFolder/.")), path("toFolder/."));
}

TEST_P(AbsolutePathForPath, ALinkToNothingIsItsTextInItsFolder) {
    makeFolder("folder");
    makeLink("folder/relative", "missing/a");
    makeLink("folder/absolute", "/missing/of/all");
    EXPECT_EQ(absolutePathForPath(path("folder/relative")), path("folder/missing/a"));
    EXPECT_EQ(absolutePathForPath(path("folder/absolute")), path("folder/missing/of/all"));
}

TEST_P(AbsolutePathForPath, ALoopIsItsTextInItsFolder) {
    makeLink("loop", "loop");
    makeLink("one", "two");
    makeLink("two", "one");
    EXPECT_EQ(absolutePathForPath(path("loop")), path("loop"));
    EXPECT_EQ(absolutePathForPath(path("one")), path("two"));
    EXPECT_EQ(absolutePathForPath(path("two")), path("one"));
}

TEST_P(AbsolutePathForPath, TheTextStandsForItselfWhereItLeadsSomewhere) {
    // Chains of more than 40 links lead nowhere, but each text is a path that may.
    makeFile("a");
    makeLink("link0", path("a"));
    for (int i = 1; i <= 41; ++i) {
        makeLink("link" + std::to_string(i), path("link" + std::to_string(i - 1)));
    }
    EXPECT_EQ(absolutePathForPath(path("link39")), path("a"));
    EXPECT_EQ(absolutePathForPath(path("link40")), path("link39"));
    EXPECT_EQ(absolutePathForPath(path("link41")),
              path("link41").substr(0, root.size()) + path("link40"));
}

TEST(AbsolutePathForPathRelative, RelativePathsAndTexts) {
    MemoryFileSystem memory; // works in "/"
    memory.addFile("/a", "");
    memory.addLink("/link", "a");
    memory.addLink("/folder/dangling", "a");
    const FileSystem::Replacement replacement(memory);
    EXPECT_EQ(absolutePathForPath("a"), "a");
    EXPECT_EQ(absolutePathForPath("link"), "/a");
    // Nothing is called a in the link's folder, but something in the working directory.
    EXPECT_EQ(absolutePathForPath("/folder/dangling"), "a");
    EXPECT_EQ(absolutePathForPath("folder/dangling"), "a");
    memory.addLink("gone", "missing");
    EXPECT_EQ(absolutePathForPath("gone"), "missing");
}

TEST_P(AbsolutePathForPath, AResolvedPathThatIsTooLongIsNotUsed) {
    std::string folder = root;
    while (folder.size() < 2046 - 201) {
        folder += '/' + std::string(std::min<std::size_t>(200, 2046 - 201 - folder.size()), 'd');
        ASSERT_TRUE(files.createFolder(folder, 0700).isNone());
    }
    const std::string fits = folder + '/' + std::string(2046 - folder.size() - 1, 'x');
    const std::string tooLong = fits + 'x';
    ASSERT_TRUE(files.writeFile(fits, {}, 0600).isNone());
    ASSERT_TRUE(files.writeFile(tooLong, {}, 0600).isNone());
    makeLink("fits", "./" + fits.substr(root.size() + 1));
    makeLink("tooLong", "./" + tooLong.substr(root.size() + 1));
    EXPECT_EQ(absolutePathForPath(path("fits")), fits);
    EXPECT_EQ(absolutePathForPath(path("tooLong")), path("./" + tooLong.substr(root.size() + 1)));
}

TEST_P(AbsolutePathForPath, FaultsAnswerAPath) {
    makeFile("a");
    makeLink("link", "a");
    faulty.failCall(1, EIO);
    EXPECT_EQ(absolutePathForPath(path("link")), path("link"));
    faulty.restartCount();
    faulty.failCall(2, EIO);
    EXPECT_EQ(absolutePathForPath(path("link")), path("a"));
    faulty.restartCount();
    faulty.failOperation("canonicalPath", EIO);
    faulty.failOperation("linkTarget", EIO);
    EXPECT_EQ(absolutePathForPath(path("link")), path("link"));
}

TEST_P(DataForkSize, IsTheSizeOfTheContentThroughLinks) {
    makeFile("a", "12345");
    makeFile("empty");
    makeLink("link", "a");
    EXPECT_EQ(getDataForkSize(path("a")), 5U);
    EXPECT_EQ(getDataForkSize(path("link")), 5U);
    EXPECT_EQ(getDataForkSize(path("empty")), 0U);
}

TEST_P(DataForkSize, IsZeroWhereNothingIs) {
    makeLink("nothing", "missing");
    EXPECT_EQ(getDataForkSize(""), 0U);
    EXPECT_EQ(getDataForkSize(path("missing")), 0U);
    EXPECT_EQ(getDataForkSize(path("nothing")), 0U);
}

TEST_P(DataForkSize, IsWhatTheFileSystemTellsWhereNothingCanBeOpened) {
    makeFile("a", "12345");
    for (std::size_t call = 2; call <= 3; ++call) {
        faulty.restartCount();
        faulty.failCall(call, EACCES);
        EXPECT_EQ(getDataForkSize(path("a")), 5U) << call;
    }
    faulty.failCall(0, 0);
    makeFolder("folder");
    EXPECT_EQ(getDataForkSize(path("folder")), attributesOf("folder").size);
    if (GetParam() == Kind::Real) {
        ASSERT_EQ(::mkfifo(path("pipe").c_str(), 0600), 0);
        EXPECT_EQ(getDataForkSize(path("pipe")), 0U);
    }
}

TEST_P(DataForkSize, IsTheSizeOfTheOpenFileWhenTheTwoDiffer) {
    makeFile("a", "12345");
    faulty.atCall(2, [&] { makeFile("a", "1234567"); });
    EXPECT_EQ(getDataForkSize(path("a")), 7U);
    faulty.restartCount();
    faulty.atCall(2, [&] { makeFile("a", ""); });
    EXPECT_EQ(getDataForkSize(path("a")), 7U); // an empty fork: the first size after all
}

} // namespace
} // namespace tav
