#include "fileinfo/local/TavFileInfoFixture_test.hpp"

#include <sys/stat.h>

namespace tav {
namespace {

using OlderReferences = TavFileInfoInMemory;
using OlderReferencesOnDisk = TavFileInfoOnDisk;

Status errorOf(const TavFileInfoPtr& item) {
    Status error{1};
    const FileRef* reference = item->fileRefWithError(&error);
    EXPECT_EQ(reference == nullptr, error != Status::Success);
    EXPECT_EQ(item->fileRef(), reference);
    return error;
}

TEST_F(OlderReferences, TheItemAnswersItsOwnReference) {
    memory.addFile("/f", "");
    const TavFileInfoPtr item = older("/f");
    EXPECT_EQ(errorOf(item), Status::Success);
    EXPECT_EQ(*item->fileRef(), TavMacFileInfo::fileRefFromPath("/f"));
    EXPECT_EQ(item->fileRef()->path, "/f");
    EXPECT_EQ(item->fileRef(), item->fileRef()) << "the very same one";
}

TEST_F(OlderReferences, OnlyAMissingPathIsABadParameter) {
    EXPECT_EQ(errorOf(older(nullptr)), Status::BadParameter);
    EXPECT_EQ(errorOf(older("")), Status::Failure) << "it is tried";
    EXPECT_EQ(errorOf(older("/missing")), Status::Failure);
    memory.addFile("/f", "");
    EXPECT_EQ(errorOf(older("/f/below")), Status::Failure);
}

TEST_F(OlderReferences, TheSpecificationCarriesTheError) {
    memory.addFile("/folder/f", "");
    Status error{1};
    const FileSpec specification = older("/folder/f")->fileSpecWithError(&error);
    EXPECT_EQ(error, Status::Success);
    EXPECT_EQ(specification, TavMacFileInfo::fileInfoWithPath("/folder/f")->fileSpec());
    EXPECT_EQ(older("/folder/f")->fileSpec(), specification);
    EXPECT_TRUE(older(nullptr)->fileSpecWithError(&error).isZero());
    EXPECT_EQ(error, Status::BadParameter);
    EXPECT_TRUE(older("/no")->fileSpecWithError(&error).isZero());
    EXPECT_EQ(error, Status::Failure);
    EXPECT_TRUE(older("/no")->fileSpecWithError(nullptr).isZero());
}

TEST_F(OlderReferences, MoreLinksThanTheHostFollowsAreFollowedStepByStep) {
    // Each step goes through the one before it, so the host meets all of them on one way.
    memory.addFolder("/s0");
    memory.addFile("/s0/f", "x");
    std::string way = "/s0";
    for (int step = 1; step <= 50; ++step) {
        const std::string name = "/s0/l" + std::to_string(step);
        memory.addLink(name, "/s0");
        way += "/l" + std::to_string(step);
    }
    const TavFileInfoPtr item = older(way + "/f");
    ASSERT_FALSE(memory.attributes(way + "/f").ok()) << "the host does not get there";
    EXPECT_EQ(item->resolvedPath(), "/s0/f");
    EXPECT_TRUE(item->exists());
    EXPECT_EQ(item->path(), "/s0/f") << "the path that was found is kept";
    EXPECT_EQ(item->size(), 1U);
}

TEST_F(OlderReferences, AnItemFollowsItsFileToAnotherName) {
    memory.addFile("/folder/f", "");
    const TavFileInfoPtr item = older("/folder/f");
    ASSERT_TRUE(item->exists());
    ASSERT_TRUE(memory.move("/folder/f", "/folder/g", Replace::No).isNone());
    EXPECT_EQ(item->path(), "/folder/g");
    EXPECT_EQ(item->name(), "g");
    EXPECT_EQ(item->fileRef()->path, "/folder/g");
    EXPECT_EQ(item->description(), "/folder/g");
}

TEST_F(OlderReferences, ALostFileIsLookedForOnceUntilARefresh) {
    memory.addFile("/folder/f", "");
    const TavFileInfoPtr item = older("/folder/f");
    ASSERT_TRUE(item->exists());
    memory.removeAll("/folder/f");
    EXPECT_EQ(item->path(), "/folder/f");
    EXPECT_EQ(callsOf([&] { static_cast<void>(item->path()); }), Calls());
    EXPECT_TRUE(item->exists()) << "its reference stays until a refresh";
    item->refresh();
    EXPECT_FALSE(item->exists());
}

TEST_F(OlderReferences, Kinds) {
    memory.addFolder("/folder");
    memory.addFile("/file", "");
    EXPECT_TRUE(older("/folder")->isFolder());
    EXPECT_FALSE(older("/folder")->isFile());
    EXPECT_FALSE(older("/folder")->isAlias());
    EXPECT_FALSE(older("/file")->isFolder());
    EXPECT_TRUE(older("/file")->isFile());
    EXPECT_FALSE(older("/file")->isAlias());
    EXPECT_FALSE(older("/missing")->isFolder());
    EXPECT_FALSE(older("/missing")->isFile());
    EXPECT_FALSE(older("/missing")->isAlias());
    EXPECT_FALSE(older("/missing")->cacheInfo());
    EXPECT_TRUE(older("/")->isFolder());
}

TEST_F(OlderReferences, TheFlagsAreAskedForOnceAndAgainAfterARefresh) {
    memory.addFile("/x", "");
    const TavFileInfoPtr item = older("/x");
    EXPECT_TRUE(item->cacheInfo());
    EXPECT_EQ(callsOf([&] {
                  EXPECT_TRUE(item->isFile());
                  EXPECT_FALSE(item->isAlias());
              }),
              Calls());
    memory.removeAll("/x");
    memory.addFolder("/x");
    EXPECT_TRUE(item->isFile());
    item->refresh();
    EXPECT_TRUE(item->isFolder());
}

TEST_F(OlderReferences, WhatCouldNotBeToldIsAskedAgain) {
    const TavFileInfoPtr item = older("/late");
    EXPECT_FALSE(item->isFile());
    EXPECT_FALSE(item->exists());
    memory.addFile("/late", "");
    EXPECT_TRUE(item->isFile());
    EXPECT_TRUE(item->exists());
}

TEST_F(OlderReferences, AnAliasIsWhatItLeadsTo) {
    memory.addFolder("/folder");
    memory.addFile("/folder/file", "12345");
    memory.addLink("/toFolder", "/folder");
    memory.addLink("/toFile", "folder/file");
    memory.addLink("/chain", "toFile");
    EXPECT_TRUE(older("/toFolder")->isAlias());
    EXPECT_TRUE(older("/toFolder")->isFolder());
    EXPECT_TRUE(older("/toFile")->isAlias());
    EXPECT_TRUE(older("/toFile")->isFile());
    ASSERT_NE(older("/chain")->aliasTarget(), nullptr);
    EXPECT_EQ(older("/chain")->aliasTarget()->path(), "/folder/file");
    EXPECT_EQ(older("/chain")->resolvedFileInfo()->path(), "/folder/file");
    EXPECT_EQ(older("/chain")->resolvedPath(), "/folder/file");
    EXPECT_EQ(older("/chain")->resolvedSize(), 5U);
    EXPECT_EQ(older("/folder")->aliasTarget(), nullptr);
    const TavFileInfoPtr plain = older("/folder/file");
    EXPECT_EQ(plain->resolvedFileInfo(), plain);
    EXPECT_EQ(plain->resolvedSize(), 5U);
}

TEST_F(OlderReferences, ResolvingAnAliasMakesTheItemItsTarget) {
    memory.addFolder("/folder");
    memory.addLink("/link", "/folder");
    const TavFileInfoPtr item = older("/link");
    EXPECT_TRUE(item->resolveAlias());
    EXPECT_EQ(item->path(), "/folder");
    EXPECT_FALSE(item->isAlias());
    EXPECT_TRUE(item->isFolder());
    EXPECT_EQ(*item->fileRef(), TavMacFileInfo::fileRefFromPath("/folder"));
    EXPECT_FALSE(item->resolveAlias()) << "nothing changes any more";
    EXPECT_FALSE(older("/folder")->resolveAlias());
    EXPECT_FALSE(older("/missing")->resolveAlias());
}

TEST_F(OlderReferences, ALinkToNothingIsNeitherFileNorFolderNorAlias) {
    memory.addLink("/broken", "/nowhere");
    const TavFileInfoPtr item = older("/broken");
    EXPECT_TRUE(item->exists());
    EXPECT_FALSE(item->isAlias());
    EXPECT_FALSE(item->isFile());
    EXPECT_FALSE(item->isFolder());
    EXPECT_FALSE(item->cacheInfo());
    EXPECT_FALSE(item->resolveAlias());
    EXPECT_EQ(item->path(), "/broken") << "and stays what it was";
    EXPECT_EQ(item->aliasTarget(), nullptr);
    EXPECT_EQ(item->resolvedFileInfo(), item);
    EXPECT_EQ(item->resolvedPath(), std::nullopt);
    EXPECT_FALSE(item->cacheAttributes());
    EXPECT_EQ(item->size(), 0U);
    EXPECT_EQ(item->modificationDate(), std::nullopt);
    memory.addFile("/nowhere", "");
    EXPECT_TRUE(item->isAlias()) << "asked again";
}

TEST_F(OlderReferences, ALinkThatLeadsRoundIsNoneEither) {
    memory.addLink("/a", "/b");
    memory.addLink("/b", "/a");
    EXPECT_TRUE(older("/a")->exists());
    EXPECT_FALSE(older("/a")->isAlias());
    EXPECT_FALSE(older("/a")->isFile());
}

TEST_F(OlderReferences, AFailedResolutionKeepsTheFlags) {
    memory.addFolder("/folder");
    memory.addLink("/link", "/folder");
    const TavFileInfoPtr item = older("/link");
    ASSERT_TRUE(item->isFolder());
    memory.removeAll("/folder");
    EXPECT_TRUE(item->isFolder()) << "known";
    item->refresh();
    EXPECT_FALSE(item->isFolder()) << "not valid";
    memory.addFile("/folder", "");
    EXPECT_TRUE(item->isFile());
}

TEST_F(OlderReferences, AnAliasWhoseTargetIsLostResolvesToNoPath) {
    const std::string target = "/folder/" + std::string(100, 'f');
    const std::string link = "/folder/" + std::string(100, 'l');
    memory.addFile(target, "123");
    memory.addLink(link, target);
    const TavFileInfoPtr item = older(link);
    ASSERT_TRUE(item->isAlias());
    ASSERT_EQ(item->size(), 3U);
    memory.removeAll(target);
    EXPECT_TRUE(item->resolveAlias());
    EXPECT_EQ(item->description(), "TavFileInfo has (null) path.");
    EXPECT_EQ(
        callsOf([&] {
            EXPECT_EQ(item->size(), 3U) << "known";
            EXPECT_EQ(item->typeCode(), 0x3F3F3F3FU);
            EXPECT_EQ(item->typeCodeString(), "''");
            EXPECT_NE(item->creationDate(), std::nullopt);
        }),
        (Calls{"extendedAttribute  user.tav.type", "extendedAttribute  user.tav.creation-date"}))
        << "nothing is asked of the paths of before";
    EXPECT_FALSE(item->exists());
    item->refresh();
    EXPECT_EQ(item->size(), 0U);
}

TEST_F(OlderReferences, AFolderWithoutAPathHoldsNothing) {
    memory.addFolder("/folder");
    memory.addLink("/link", "/folder");
    const TavFileInfoPtr item = older("/link");
    ASSERT_TRUE(item->isAlias());
    memory.removeAll("/folder");
    EXPECT_TRUE(item->resolveAlias());
    EXPECT_TRUE(item->isFolder()) << "known";
    EXPECT_FALSE(item->contains(older("/x").get()));
    EXPECT_TRUE(item->folderContents().empty());
    EXPECT_TRUE(item->folderContentsDeepWithFilter(nullptr).empty());
    EXPECT_EQ(item->uniqueFilename("a"), "a");
    EXPECT_EQ(item->createFolder("a"), nullptr);
    EXPECT_EQ(item->createFile("a", {}, nullptr)->description(), "TavFileInfo has (null) path.");
    EXPECT_FALSE(item->removeContents());
    EXPECT_EQ(older("/x")->copyTo(item.get()), Status::BadParameter);
    memory.addFile("/x", "");
    EXPECT_EQ(older("/x")->copyTo(item.get()), Status::Failure);
}

TEST_F(OlderReferences, TheParentOfTheRootIsTheRoot) {
    EXPECT_EQ(older("/")->parentFolder()->path(), "/");
    EXPECT_EQ(older("/a")->parentFolder()->path(), "/");
    EXPECT_EQ(older("/a/b")->parentFolder()->path(), "/a");
    EXPECT_EQ(older("a")->parentFolder()->path(), "");
    EXPECT_EQ(older("")->parentFolder()->path(), "");
}

TEST_F(OlderReferencesOnDisk, PipesAndSocketsAreFilesAndNothingBlocks) {
    ASSERT_EQ(::mkfifo(folder.path("pipe").c_str(), 0600), 0);
    const TavFileInfoPtr pipe = olderIn("pipe");
    EXPECT_TRUE(pipe->exists());
    EXPECT_TRUE(pipe->isFile());
    EXPECT_EQ(pipe->size(), 0U);
    EXPECT_EQ(pipe->fileContents(), std::nullopt);
    EXPECT_FALSE(pipe->setFileContents(bytesOf("x")));
    EXPECT_EQ(pipe->preview(), pipe->preview());
    EXPECT_EQ(older("/dev/null")->fileContents(), std::nullopt);
    EXPECT_EQ(older("/dev/zero")->fileContents(), std::nullopt);
}

} // namespace
} // namespace tav
