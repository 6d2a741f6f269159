#include "platform/FileSystemConformance_test.hpp"

namespace tav {
namespace {

// Moves.

TEST_P(FileSystemConformance, MovesFilesFoldersAndLinks) {
    makeFolder("d");
    makeFolder("d/e");
    makeFile("d/e/f", "text");
    makeLink("l", "gone");
    const FileIdentity folder = attributesOf("d/e").identity;
    for (const Replace replace : {Replace::No, Replace::Yes}) {
        EXPECT_EQ(errorOfMove("d/e", "moved", replace), 0);
        EXPECT_EQ(attributesOf("moved").identity, folder);
        EXPECT_EQ(read("moved/f"), "text");
        EXPECT_TRUE(namesIn("d").empty());
        EXPECT_EQ(errorOfMove("moved/f", "g", replace), 0);
        EXPECT_EQ(read("g"), "text");
        EXPECT_EQ(errorOfMove("g", "moved/f", replace), 0);
        EXPECT_EQ(errorOfMove("moved/", "d/e/", replace), 0);
        EXPECT_EQ(errorOfMove("l", "d/l", replace), 0);
        EXPECT_EQ(files.linkTarget(path("d/l")).value(), "gone");
        EXPECT_EQ(errorOfMove("d/l", "l", replace), 0);
    }
}

TEST_P(FileSystemConformance, WithoutReplacingNothingIsReplaced) {
    makeFile("f", "kept");
    makeFolder("d");
    makeFolder("empty");
    makeLink("nowhere", "gone");
    makeFile("new", "new");
    for (const std::string_view name : {"f", "d", "nowhere", "d/.", "d/..", "new"}) {
        EXPECT_EQ(errorOfMove("new", name, Replace::No), EEXIST) << name;
        EXPECT_EQ(errorOfMove("empty", name, Replace::No), EEXIST) << name;
    }
    EXPECT_EQ(errorOfMove("d", "d", Replace::No), EEXIST);
    EXPECT_EQ(errorOfMove("d", "d/.", Replace::No), EEXIST);
    EXPECT_EQ(read("f"), "kept");
    EXPECT_EQ(read("new"), "new");
}

TEST_P(FileSystemConformance, ReplacingPutsOneInTheOthersPlace) {
    makeFile("f", "old");
    makeFile("new", "new");
    EXPECT_EQ(errorOfMove("new", "f", Replace::Yes), 0);
    EXPECT_EQ(read("f"), "new");
    makeLink("l", "f");
    makeFile("other", "other");
    EXPECT_EQ(errorOfMove("other", "l", Replace::Yes), 0);
    EXPECT_EQ(read("l"), "other");
    EXPECT_EQ(read("f"), "new");
    makeFolder("empty");
    makeFolder("full");
    makeFile("full/inside", "text");
    EXPECT_EQ(errorOfMove("full", "empty", Replace::Yes), 0);
    EXPECT_EQ(read("empty/inside"), "text");
    EXPECT_EQ(errorOfMove("f", "f", Replace::Yes), 0);
    EXPECT_EQ(read("f"), "new");
    EXPECT_EQ(namesIn("."), (Names{"empty", "f", "l"}));
}

TEST_P(FileSystemConformance, WhatCannotBeReplacedStays) {
    makeFile("f", "text");
    makeFolder("empty");
    makeFolder("full");
    makeFile("full/inside", "kept");
    EXPECT_EQ(errorOfMove("f", "empty", Replace::Yes), EISDIR);
    EXPECT_EQ(errorOfMove("empty", "f", Replace::Yes), ENOTDIR);
    EXPECT_EQ(errorOfMove("empty", "full", Replace::Yes), ENOTEMPTY);
    EXPECT_EQ(errorOfMove("full/inside", "full", Replace::Yes), ENOTEMPTY);
    EXPECT_EQ(errorOfMove("f", "new/", Replace::Yes), ENOTDIR);
    EXPECT_EQ(errorOfMove("f/", "new", Replace::Yes), ENOTDIR);
    EXPECT_EQ(errorOfMove("gone", "f", Replace::Yes), ENOENT);
    EXPECT_EQ(errorOfMove("gone", "f", Replace::No), ENOENT);
    EXPECT_EQ(namesIn("."), (Names{"empty", "f", "full"}));
    EXPECT_EQ(read("f"), "text");
    EXPECT_EQ(read("full/inside"), "kept");
}

TEST_P(FileSystemConformance, AFolderIsNotMovedIntoItself) {
    makeFolder("d");
    makeFolder("d/e");
    for (const Replace replace : {Replace::No, Replace::Yes}) {
        EXPECT_EQ(errorOfMove("d", "d/new", replace), EINVAL);
        EXPECT_EQ(errorOfMove("d", "d/e/new", replace), EINVAL);
        EXPECT_EQ(errorOfMove("d/.", "new", replace), EBUSY);
        EXPECT_EQ(errorOfMove("d/e/..", "new", replace), EBUSY);
    }
    EXPECT_EQ(namesIn("d"), Names{"e"});
}

// Removal.

TEST_P(FileSystemConformance, RemovesFilesAndLinksButNoFolders) {
    makeFile("f");
    makeFolder("d");
    makeLink("l", "d");
    EXPECT_EQ(files.removeFile(path("d")), SystemError(EISDIR));
    EXPECT_EQ(files.removeFile(path("d/")), SystemError(EISDIR));
    EXPECT_EQ(files.removeFile(path("d/.")), SystemError(EISDIR));
    EXPECT_EQ(files.removeFile(path("l/")), SystemError(ENOTDIR));
    EXPECT_EQ(files.removeFile(path("f/")), SystemError(ENOTDIR));
    EXPECT_EQ(files.removeFile(path("gone")), SystemError(ENOENT));
    EXPECT_TRUE(files.removeFile(path("l")).isNone());
    EXPECT_TRUE(files.removeFile(path("f")).isNone());
    EXPECT_EQ(namesIn("."), Names{"d"});
}

TEST_P(FileSystemConformance, RemovesEmptyFoldersOnly) {
    makeFile("f");
    makeFolder("d");
    makeFile("d/inside");
    makeFolder("empty");
    makeLink("l", "empty");
    EXPECT_EQ(files.removeFolder(path("d")), SystemError(ENOTEMPTY));
    EXPECT_EQ(files.removeFolder(path("f")), SystemError(ENOTDIR));
    EXPECT_EQ(files.removeFolder(path("l")), SystemError(ENOTDIR));
    EXPECT_EQ(files.removeFolder(path("l/")), SystemError(ENOTDIR));
    EXPECT_EQ(files.removeFolder(path("empty/.")), SystemError(EINVAL));
    EXPECT_EQ(files.removeFolder(path("d/..")), SystemError(ENOTEMPTY));
    EXPECT_EQ(files.removeFolder(path("gone")), SystemError(ENOENT));
    EXPECT_TRUE(files.removeFolder(path("empty/")).isNone());
    EXPECT_EQ(namesIn("."), (Names{"d", "f", "l"}));
}

} // namespace
} // namespace tav
