#include "fileinfo/local/MacFileInfoFixture_test.hpp"

#include <cerrno>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace tav {
namespace {

using AliasesTest = MacFileInfoInMemory;
using AliasesOnDiskTest = MacFileInfoOnDisk;

/// "folder", "file", "alias" as far as each holds.
std::string kindsOf(TavMacFileInfo& item) {
    std::string kinds;
    kinds += item.isFolder() ? " folder" : "";
    kinds += item.isFile() ? " file" : "";
    kinds += item.isAlias() ? " alias" : "";
    return kinds;
}

TEST_F(AliasesTest, FoldersFilesAndAliases) {
    memory.addFile("/d/f", "");
    memory.addLink("/toFolder", "d");
    memory.addLink("/toFile", "d/f");
    memory.addLink("/chain", "toFile");
    memory.addLink("/broken", "/gone");
    memory.addLink("/through", "/d/f/x");
    memory.addLink("/loop", "/loop");
    EXPECT_EQ(kindsOf(*at("/d")), " folder");
    EXPECT_EQ(kindsOf(*at("/d/f")), " file");
    EXPECT_EQ(kindsOf(*at("/toFolder")), " folder alias");
    EXPECT_EQ(kindsOf(*at("/toFile")), " file alias");
    EXPECT_EQ(kindsOf(*at("/chain")), " file alias");
    EXPECT_EQ(kindsOf(*at("/broken")), " file alias");
    EXPECT_EQ(kindsOf(*at("/through")), " file alias") << "through a file is nowhere";
    EXPECT_EQ(kindsOf(*at("/loop")), "") << "in circles is not known";
    EXPECT_EQ(kindsOf(*at("/gone")), "");
    EXPECT_EQ(kindsOf(*at("")), "");
    EXPECT_TRUE(at("/loop")->exists());
    EXPECT_TRUE(at("/toFile")->isAliasAllowingPrompts(true));
}

TEST_F(AliasesTest, FlagsAreAskedForOnce) {
    memory.addFile("/f", "");
    memory.addLink("/l", "/f");
    const Item file = at("/f");
    EXPECT_EQ(callsOf([&] { EXPECT_EQ(kindsOf(*file), " file"); }), Calls{"attributes /f"});
    EXPECT_EQ(callsOf([&] { EXPECT_EQ(kindsOf(*file), " file"); }), Calls{});
    const Item alias = at("/l");
    EXPECT_EQ(callsOf([&] { EXPECT_EQ(kindsOf(*alias), " file alias"); }),
              (Calls{"attributes /l", "targetAttributes /l", "canonicalPath /l"}));
    EXPECT_EQ(callsOf([&] { EXPECT_EQ(kindsOf(*alias), " file alias"); }), Calls{});
    memory.removeAll("/f");
    memory.addFolder("/f");
    EXPECT_EQ(kindsOf(*file), " file");
    file->refresh();
    EXPECT_EQ(kindsOf(*file), " folder");
}

TEST_F(AliasesTest, OtherErrorsLeaveTheFlagsAsTheyWere) {
    memory.addFile("/d/f", "");
    memory.addLink("/l", "/d");
    const Item item = at("/l");
    files.failOperation("targetAttributes", EACCES);
    EXPECT_EQ(kindsOf(*item), "");
    files.failOperation("targetAttributes", 0);
    EXPECT_EQ(kindsOf(*item), " folder alias") << "asked again, since it is not known";
    item->refresh();
    files.failOperation("canonicalPath", EIO);
    EXPECT_EQ(kindsOf(*item), "");
    files.failOperation("canonicalPath", 0);
    EXPECT_EQ(kindsOf(*item), " folder alias");
}

TEST_F(AliasesTest, WithoutAReferenceTheHostIsAskedWhetherItIsAFolder) {
    memory.addFolder("/d");
    memory.addFile("/f", "");
    files.failOperation("attributes", EACCES);
    EXPECT_EQ(kindsOf(*at("/d")), " folder");
    EXPECT_EQ(kindsOf(*at("/f")), " file");
    EXPECT_FALSE(at("/f")->exists());
}

TEST_F(AliasesTest, TargetsAreItemsWithoutLinksInTheirPath) {
    memory.addFile("/d/f", "123");
    memory.addLink("/e", "/d");
    memory.addLink("/l", "e/f");
    memory.addLink("/chain", "l");
    const FileInfoPtr target = at("/chain")->aliasTarget();
    ASSERT_NE(target, nullptr);
    EXPECT_EQ(target->path(), "/d/f");
    EXPECT_EQ(at("/d/f")->aliasTarget(), nullptr);
    EXPECT_EQ(at("/gone")->aliasTarget(), nullptr);
    const Item plain = at("/d/f");
    EXPECT_EQ(plain->resolvedFileInfo(), plain);
    EXPECT_EQ(at("/chain")->resolvedFileInfo()->path(), "/d/f");
    EXPECT_EQ(at("/chain")->resolvedSize(), 3U);
    EXPECT_EQ(plain->resolvedSize(), 3U);
}

TEST_F(AliasesTest, ResolvingMakesTheItemItsTarget) {
    memory.addFile("/d/f", "123");
    memory.addLink("/l", "/d/f");
    const Item item = at("/l");
    EXPECT_TRUE(item->resolveAlias());
    EXPECT_EQ(item->path(), "/d/f");
    EXPECT_TRUE(item->exists());
    EXPECT_EQ(kindsOf(*item), " file");
    EXPECT_EQ(item->size(), 3U);
    EXPECT_FALSE(item->resolveAlias());
    EXPECT_FALSE(at("/d/f")->resolveAliasAllowingPrompts(true));
    EXPECT_FALSE(at("/gone")->resolveAlias());
    EXPECT_FALSE(at("")->resolveAlias());
}

TEST_F(AliasesTest, AnAliasWhoseTargetIsGone) {
    memory.addLink("/l", "/gone");
    const Item item = at("/l");
    EXPECT_TRUE(item->isAlias());
    EXPECT_TRUE(item->exists());
    const FileInfoPtr target = item->aliasTarget();
    ASSERT_NE(target, nullptr);
    EXPECT_EQ(target->path(), "");
    EXPECT_FALSE(target->exists());
    EXPECT_TRUE(item->resolveAlias());
    EXPECT_EQ(item->path(), "");
    EXPECT_FALSE(item->exists());
    EXPECT_EQ(kindsOf(*item), "");
}

TEST_F(AliasesTest, ThatAnAliasWasBrokenIsNotForgotten) {
    memory.addLink("/l", "/f");
    const Item item = at("/l");
    ASSERT_TRUE(item->isAlias());
    memory.addFile("/f", "");
    item->refresh();
    EXPECT_EQ(kindsOf(*item), " file alias");
    EXPECT_TRUE(item->resolveAlias());
    EXPECT_EQ(item->path(), "");
}

TEST_F(AliasesTest, AFileThatIsGoneIsNeitherFileNorFolder) {
    memory.addFolder("/d");
    const Item item = at("/d");
    ASSERT_TRUE(item->isFolder());
    memory.removeAll("/d");
    EXPECT_TRUE(item->isFolder()) << "known";
    item->refresh();
    EXPECT_EQ(kindsOf(*item), "");
}

TEST_F(AliasesOnDiskTest, LinksOfAllKinds) {
    addFolder("d");
    addFile("d/f", "12");
    addLink("relative", "d/f");
    addLink("up", "d/../d");
    addLink("broken", "gone");
    addLink("loopA", "loopB");
    addLink("loopB", "loopA");
    EXPECT_EQ(kindsOf(*in("relative")), " file alias");
    EXPECT_EQ(in("relative")->aliasTarget()->path(), folder.path("d/f"));
    EXPECT_EQ(in("up")->aliasTarget()->path(), folder.path("d"));
    EXPECT_EQ(kindsOf(*in("broken")), " file alias");
    EXPECT_EQ(kindsOf(*in("loopA")), "");
    EXPECT_TRUE(in("loopA")->exists());
}

TEST_F(AliasesOnDiskTest, ChainsAreFollowedAsFarAsTheHostGoes) {
    addFile("0", "");
    for (int i = 1; i <= 41; ++i) {
        addLink(std::to_string(i), std::to_string(i - 1));
    }
    EXPECT_EQ(in("40")->aliasTarget()->path(), folder.path("0"));
    EXPECT_EQ(kindsOf(*in("41")), "");
}

TEST_F(AliasesOnDiskTest, PipesSocketsAndDevicesAreFilesAndHoldNobodyUp) {
    ASSERT_EQ(::mkfifo(folder.path("pipe").c_str(), 0600), 0);
    const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    ASSERT_GE(socket, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string place = folder.path("socket");
    ASSERT_LT(place.size(), sizeof(address.sun_path));
    place.copy(address.sun_path, place.size());
    ASSERT_EQ(::bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof(address)), 0);
    ::close(socket);
    for (const std::string& path : {folder.path("pipe"), place, std::string("/dev/null")}) {
        const Item item = at(path);
        EXPECT_TRUE(item->exists()) << path;
        EXPECT_EQ(kindsOf(*item), " file") << path;
        EXPECT_EQ(item->size(), 0U) << path;
        EXPECT_EQ(item->typeCode(), 0x3F3F3F3FU) << path;
        EXPECT_FALSE(item->isBundle()) << path;
        EXPECT_FALSE(item->fileWrapper()) << path;
        EXPECT_TRUE(item->creationDate()) << path;
        EXPECT_FALSE(item->isVolume()) << path;
    }
    EXPECT_TRUE(in("pipe")->remove());
}

} // namespace
} // namespace tav
