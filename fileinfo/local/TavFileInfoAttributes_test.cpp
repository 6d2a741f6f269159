#include "fileinfo/local/TavFileInfoFixture_test.hpp"
#include "platform/memory/MemoryFileKinds.hpp"

#include <array>

namespace tav {
namespace {

constexpr std::uint32_t noCode = 0x3F3F3F3F;

class OlderAttributes : public TavFileInfoInMemory {
  protected:
    void setCode(std::string_view path, std::string_view name, std::string_view four) {
        ASSERT_TRUE(memory.setExtendedAttribute(path, name, bytesOf(four)).isNone());
    }
    std::uint32_t permissionsOf(std::string_view path) {
        return memory.attributes(path).value().permissions;
    }

    MemoryFileKinds kinds;
    FileKinds::Replacement replacedKinds{kinds};
};

using OlderAttributesOnDisk = TavFileInfoOnDisk;

TEST_F(OlderAttributes, Names) {
    const TavFileInfoPtr item = older("/a/archive.tar.gz");
    EXPECT_EQ(item->name(), "archive.tar.gz");
    EXPECT_EQ(item->nameWithoutExtension(), "archive.tar");
    EXPECT_EQ(item->extension(), "gz");
    EXPECT_EQ(older("/")->name(), "/");
    EXPECT_EQ(older("/a/README")->nameWithoutExtension(), "README");
    EXPECT_EQ(older("/a/README")->extension(), "");
    EXPECT_EQ(older("/a/.hidden")->nameWithoutExtension(), ".hidden");
    EXPECT_EQ(older("/a/\xFF.\xFE")->extension(), "\xFE");
    EXPECT_EQ(TavFileInfo::makeNameOSCompliant("a/b/c"), "a_b_c");
}

TEST_F(OlderAttributes, ANewName) {
    memory.addFile("/a/f.txt", "1");
    memory.addFile("/a/taken", "2");
    const TavFileInfoPtr item = older("/a/f.txt");
    item->setName("");
    EXPECT_EQ(item->path(), "/a/f.txt");
    item->setName("taken");
    EXPECT_EQ(item->path(), "/a/f.txt") << "nothing is replaced";
    item->setName("g.txt");
    EXPECT_EQ(item->path(), "/a/g.txt");
    EXPECT_FALSE(older("/a/f.txt")->exists());
    EXPECT_EQ(*item->fileRef(), TavMacFileInfo::fileRefFromPath("/a/g.txt"));
    EXPECT_TRUE(item->isFile());
    item->setNameKeepingExtension("h");
    EXPECT_EQ(item->path(), "/a/h.txt");
    const TavFileInfoPtr bare = older("/a/taken");
    bare->setNameKeepingExtension("free");
    EXPECT_EQ(bare->path(), "/a/free");
    const TavFileInfoPtr missing = older("/a/missing");
    missing->setName("x");
    EXPECT_EQ(missing->path(), "/a/missing");
    EXPECT_FALSE(older("/a/x")->exists());
    older("/")->setName("x");
    EXPECT_FALSE(older("/x")->exists());
}

TEST_F(OlderAttributes, AttributesAreThoseOfWhatALinkLeadsTo) {
    memory.addFile("/f", "12345");
    setCode("/f", "user.tav.type", "TEXT");
    setCode("/f", "user.tav.creator", "ttxt");
    ASSERT_TRUE(memory.setModificationDate("/f", Date(1000)).isNone());
    memory.addLink("/link", "/f");
    for (const char* path : {"/f", "/link"}) {
        const TavFileInfoPtr item = older(path);
        EXPECT_EQ(item->size(), 5U) << path;
        EXPECT_EQ(item->typeCode(), 0x54455854U) << path;
        EXPECT_EQ(item->creatorCode(), 0x74747874U) << path;
        EXPECT_EQ(item->typeCodeString(), "'TEXT'") << path;
        EXPECT_EQ(item->modificationDate(), Date(1000)) << path;
        EXPECT_EQ(item->creationDate(), memory.attributes("/f").value().creationDate) << path;
    }
    EXPECT_EQ(at("/link")->typeCode(), noCode) << "the other item asks the link itself";
}

TEST_F(OlderAttributes, WithoutCodes) {
    memory.addFile("/f", "");
    EXPECT_EQ(older("/f")->typeCode(), noCode);
    EXPECT_EQ(older("/f")->creatorCode(), noCode);
    EXPECT_EQ(older("/f")->typeCodeString(), "''");
    EXPECT_EQ(older("/missing")->typeCode(), noCode);
    EXPECT_EQ(older("/missing")->typeCodeString(), "");
}

TEST_F(OlderAttributes, AttributesAreAskedForOnceAndAgainAfterARefresh) {
    memory.addFile("/f", "1");
    const TavFileInfoPtr item = older("/f");
    EXPECT_EQ(callsOf([&] {
                  EXPECT_EQ(item->size(), 1U);
                  EXPECT_FALSE(item->isLocked());
              }),
              (Calls{"attributes /f"}));
    memory.addFile("/f", "12");
    EXPECT_EQ(item->size(), 1U);
    item->refresh();
    EXPECT_EQ(item->size(), 2U);
}

TEST_F(OlderAttributes, TheSizeIsThatOfTheItemWhateverItIs) {
    memory.addFile("/folder/f", "12345");
    EXPECT_EQ(older("/folder")->size(),
              static_cast<std::uint32_t>(memory.attributes("/folder").value().size))
        << "nothing is summed";
    EXPECT_EQ(older("/missing")->size(), 0U);
    EXPECT_EQ(at("/folder")->size(), 5U) << "the other item sums";
}

TEST_F(OlderAttributesOnDisk, SizesWrapAt32Bits) {
    addFile("large", "");
    ASSERT_EQ(::truncate(folder.path("large").c_str(), 5LL << 30), 0);
    EXPECT_EQ(olderIn("large")->size(), 1U << 30U);
    EXPECT_EQ(olderIn("large")->resolvedSize(), 1U << 30U);
    EXPECT_EQ(
        older(folder.path())->size(),
        static_cast<std::uint32_t>(FileSystem::current().attributes(folder.path()).value().size));
}

TEST_F(OlderAttributes, Dates) {
    memory.addFile("/f", "");
    const TavFileInfoPtr item = older("/f");
    item->setModificationDate(Date(1234.5));
    EXPECT_EQ(item->modificationDate(), Date(1234.5));
    item->setCreationDate(Date(99));
    EXPECT_EQ(item->creationDate(), Date(99));
    EXPECT_EQ(item->modificationDate(), Date(1234.5));
    item->setModificationDate(std::nullopt);
    item->setCreationDate(std::nullopt);
    EXPECT_EQ(item->modificationDate(), Date(1234.5));
    EXPECT_EQ(item->creationDate(), Date(99));
    EXPECT_EQ(older("/missing")->modificationDate(), std::nullopt);
    EXPECT_EQ(older("/missing")->creationDate(), std::nullopt);
    older("/missing")->setModificationDate(Date(1));
    older("/missing")->setCreationDate(Date(1));
    EXPECT_FALSE(older("/missing")->exists());
}

TEST_F(OlderAttributes, AModificationDateThatCannotBeSetIsLogged) {
    memory.addFile("/f", "");
    memory.setImmutable("/f", true);
    SeenLog log;
    older("/f")->setModificationDate(Date(1));
    ASSERT_EQ(log.lines().size(), 1U);
    EXPECT_NE(log.lines().at(0).find("Failed to set the modification date for file \"/f\"."),
              std::string::npos);
    older("/f")->setCreationDate(Date(1));
    EXPECT_EQ(log.lines().size(), 1U);
}

TEST_F(OlderAttributes, ALinkHasNothingToChangeButItsModificationDate) {
    memory.addFile("/f", "");
    memory.addLink("/link", "/f");
    const FileAttributes before = memory.attributes("/f").value();
    const TavFileInfoPtr link = older("/link");
    link->setModificationDate(Date(7));
    EXPECT_EQ(memory.attributes("/link").value().modificationDate, Date(7));
    link->setCreationDate(Date(8));
    link->setHideExtension(true);
    link->setLocked(true);
    const FileAttributes after = memory.attributes("/f").value();
    EXPECT_EQ(after.modificationDate, before.modificationDate);
    EXPECT_EQ(after.permissions, before.permissions);
    EXPECT_TRUE(memory.extendedAttributeNames("/f").value().empty());
}

TEST_F(OlderAttributes, Locks) {
    memory.addFile("/f", "");
    memory.addLink("/link", "/f");
    const TavFileInfoPtr item = older("/f");
    EXPECT_FALSE(item->isLocked());
    item->setLocked(true);
    EXPECT_TRUE(item->isLocked());
    EXPECT_EQ(permissionsOf("/f") & 0222U, 0U);
    EXPECT_TRUE(older("/link")->isLocked()) << "what the link leads to is";
    EXPECT_EQ(callsOf([&] { item->setLocked(true); }), Calls()) << "nothing to change";
    item->setLocked(false);
    EXPECT_FALSE(item->isLocked());
    EXPECT_EQ(permissionsOf("/f") & 0222U, 0200U);
    EXPECT_FALSE(older("/missing")->isLocked());
    older("/missing")->setLocked(true);
    EXPECT_FALSE(older("/missing")->exists());
}

TEST_F(OlderAttributes, HiddenExtensions) {
    memory.addFile("/f.txt", "");
    const TavFileInfoPtr item = older("/f.txt");
    item->setHideExtension(true);
    EXPECT_EQ(at("/f.txt")->humanFriendlyName(), "f");
    item->setHideExtension(false);
    EXPECT_EQ(at("/f.txt")->humanFriendlyName(), "f.txt");
    older("/missing.txt")->setHideExtension(true);
}

TEST_F(OlderAttributes, NamesThatBeginWithADotAreInvisible) {
    EXPECT_FALSE(older("/a/.hidden")->visible());
    EXPECT_TRUE(older("/a/shown")->visible());
    EXPECT_TRUE(older("/.a/shown")->visible());
}

TEST_F(OlderAttributes, TheKindIsThatOfTheExtension) {
    kinds.kindsOfTypes["jpg"] = "JPEG image";
    kinds.kinds["/a/folder.jpg"] = "Folder";
    memory.addFolder("/a/folder.jpg");
    EXPECT_EQ(older("/a/folder.jpg")->kindString(), "JPEG image") << "whatever it is";
    EXPECT_EQ(older("/missing.jpg")->kindString(), "JPEG image");
    EXPECT_EQ(older("/a/f.xyz")->kindString(), "unknown");
    EXPECT_EQ(older("/a/f")->kindString(), "unknown");
    EXPECT_EQ(older(nullptr)->kindString(), "unknown");
}

std::shared_ptr<Image> redSquare() {
    return std::make_shared<Image>(1, 1, std::vector<std::uint8_t>{255, 0, 0, 255});
}

TEST_F(OlderAttributes, TheIconIsTheDesktopsOrNone) {
    kinds.iconOfFile["/f"] = redSquare();
    EXPECT_EQ(older("/f")->icon(), kinds.iconOfFile["/f"]);
    EXPECT_EQ(older("/g")->icon(), nullptr) << "no other one instead";
}

TEST_F(OlderAttributes, ThePreviewOfNoPictureIsTheIconInItsSize) {
    memory.addFile("/f", "no picture");
    kinds.iconOfFile["/f"] = redSquare();
    kinds.iconOfFile["/missing"] = redSquare();
    const std::shared_ptr<Image> preview = older("/f")->preview();
    ASSERT_NE(preview, nullptr);
    EXPECT_EQ(preview->size(), (Image::Size{128, 128}));
    EXPECT_EQ(preview->rgba(), redSquare()->rgba());
    EXPECT_EQ(kinds.iconOfFile["/f"]->size(), (Image::Size{1, 1})) << "the shared one stays";
    EXPECT_EQ(older("/missing")->preview(), nullptr);
    memory.addFile("/g", "no picture either");
    EXPECT_EQ(older("/g")->preview(), nullptr) << "no icon";
    memory.addFolder("/folder");
    kinds.iconOfFile["/folder"] = redSquare();
    EXPECT_EQ(older("/folder")->preview()->size(), (Image::Size{128, 128}));
}

TEST_F(OlderAttributesOnDisk, ThePreviewOfAPictureIsThePicture) {
    const std::string picture =
        TAV_TESTDATA "/filekinds/system/icons/hicolor/16/mimetypes/package-x-generic.png";
    MemoryFileKinds kinds;
    const FileKinds::Replacement replaced(kinds);
    const std::shared_ptr<Image> preview = older(picture)->preview();
    if (preview == nullptr) {
        GTEST_SKIP() << "built without libpng, or it is missing here";
    }
    EXPECT_EQ(preview->pixelsWide(), 16U);
    EXPECT_EQ(preview->size(), (Image::Size{16, 16}));
    addLink("link", picture);
    EXPECT_EQ(olderIn("link")->preview()->pixelsWide(), 16U);
}

} // namespace
} // namespace tav
