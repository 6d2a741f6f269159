#include "fileinfo/local/CachedAttributes.hpp"
#include "fileinfo/local/MacFileInfoFixture_test.hpp"
#include "platform/Localization.hpp"
#include "platform/memory/MemoryFileKinds.hpp"

namespace tav {
namespace {

class MacFileInfoNamesTest : public MacFileInfoInMemory {
  protected:
    MemoryFileKinds kinds;
    FileKinds::Replacement replacedKinds{kinds};
};

TEST_F(MacFileInfoNamesTest, NamesAndExtensions) {
    EXPECT_EQ(at("/a/b.c.txt")->name(), "b.c.txt");
    EXPECT_EQ(at("/a/b.c.txt")->extension(), "txt");
    EXPECT_EQ(at("/a.b/c")->extension(), "");
    EXPECT_EQ(at("/.bashrc")->extension(), "");
    EXPECT_EQ(at("/")->name(), "/");
}

TEST_F(MacFileInfoNamesTest, WhatBeginsWithADotIsInvisible) {
    EXPECT_FALSE(at("/a/.b")->visible());
    EXPECT_TRUE(at("/.a/b")->visible());
    EXPECT_TRUE(at("/gone")->visible());
}

TEST_F(MacFileInfoNamesTest, GivingAnotherName) {
    memory.addFile("/d/a.txt", "1");
    const Item item = at("/d/a.txt");
    item->setName("b");
    EXPECT_EQ(item->path(), "/d/b");
    EXPECT_TRUE(item->exists());
    EXPECT_FALSE(at("/d/a.txt")->exists());
    item->setName("");
    EXPECT_EQ(item->path(), "/d/b");
    const Item missing = at("/d/gone");
    missing->setName("x");
    EXPECT_EQ(missing->path(), "/d/gone");
    const Item root = at("/");
    root->setName("x");
    EXPECT_EQ(root->path(), "/");
}

TEST_F(MacFileInfoNamesTest, ATakenNameIsLeftAlone) {
    memory.addFile("/d/a", "1");
    memory.addFile("/d/b", "22");
    const Item item = at("/d/a");
    item->setName("b");
    EXPECT_EQ(item->path(), "/d/a");
    EXPECT_EQ(at("/d/b")->size(), 2U);
}

TEST_F(MacFileInfoNamesTest, KeepingTheExtension) {
    memory.addFile("/d/a.txt", "");
    memory.addFile("/d/plain", "");
    const Item item = at("/d/a.txt");
    item->setNameKeepingExtension("b.c");
    EXPECT_EQ(item->path(), "/d/b.c.txt");
    const Item plain = at("/d/plain");
    plain->setNameKeepingExtension("x");
    EXPECT_EQ(plain->path(), "/d/x");
}

TEST_F(MacFileInfoNamesTest, ValidNames) {
    const Item item = at("/");
    EXPECT_EQ(TavMacFileInfo::makeNameOSCompliant("a/b/c:d"), "a_b_c:d");
    EXPECT_EQ(item->makeValidFilename("a/\xC3\xA9\t", false), "a_\xC3\xA9\t");
    EXPECT_EQ(item->makeValidFilename("a/b\tc", true), "a_b_c");
    EXPECT_EQ(item->makeValidFilename("\xC3\xA9", true), "U00E9");
    EXPECT_EQ(item->makeValidFilename("~\x7F", true), "~U007F") << "126 stays";
    EXPECT_EQ(item->makeValidFilename("\xF0\x9F\x98\x80", true), "UD83DUDE00");
    EXPECT_EQ(item->makeValidFilename("\xFF", true), "UDCFF") << "no UTF-8";
    EXPECT_EQ(item->makeValidFilename(" ", true), " ");
    EXPECT_EQ(item->makeValidFilename("", true), "");
}

TEST_F(MacFileInfoNamesTest, PathsForPeople) {
    memory.addFile("/home/user/d/f.txt", "");
    EXPECT_EQ(at("/home/user/d/f.txt")->humanFriendlyPath(), "~/d/f.txt");
    EXPECT_EQ(at("/home/user")->humanFriendlyPath(), "~");
    EXPECT_EQ(at("/home/username/f")->humanFriendlyPath(), "/home/username/f");
    EXPECT_EQ(at("/")->humanFriendlyPath(), "/");
    EXPECT_EQ(at("")->humanFriendlyPath(), "");
}

TEST_F(MacFileInfoNamesTest, AHiddenExtensionIsNotShown) {
    memory.addFile("/home/user/d.app/f.txt", "");
    EXPECT_EQ(at("/home/user/d.app/f.txt")->humanFriendlyName(), "f.txt");
    at("/home/user/d.app/f.txt")->setHideExtension(true);
    at("/home/user/d.app")->setHideExtension(true);
    EXPECT_EQ(at("/home/user/d.app/f.txt")->humanFriendlyName(), "f");
    EXPECT_EQ(at("/home/user/d.app/f.txt")->humanFriendlyPath(), "~/d/f");
    EXPECT_EQ(at("/home/user/d.app/f.txt")->name(), "f.txt");
    at("/home/user/d.app")->setHideExtension(false);
    EXPECT_EQ(at("/home/user/d.app")->humanFriendlyName(), "d.app");
}

TEST_F(MacFileInfoNamesTest, ALinkShowsItsExtensionWhateverItLeadsToHides) {
    memory.addFile("/d/f.txt", "");
    memory.addLink("/d/l.txt", "f.txt");
    at("/d/f.txt")->setHideExtension(true);
    EXPECT_EQ(at("/d/l.txt")->humanFriendlyName(), "l.txt");
    EXPECT_EQ(at("/d/l.txt")->humanFriendlyPath(), "/d/l.txt");
    EXPECT_EQ(at("/d/f.txt")->humanFriendlyPath(), "/d/f");
}

TEST_F(MacFileInfoNamesTest, ATildeAnywhereInAPathIsShownAsTheHomeFolder) {
    EXPECT_EQ(at("/a/~/b")->humanFriendlyPath(), "~/b"); // this is meant
}

TEST_F(MacFileInfoNamesTest, KindsIconsAndPackagesAreTheDesktops) {
    kinds.kinds["/a.jpg"] = "JPEG-Bild";
    kinds.iconOfFile["/a.jpg"] = std::make_shared<Image>();
    kinds.packages.insert("/a.app");
    EXPECT_EQ(at("/a.jpg")->kindString(), "JPEG-Bild");
    EXPECT_EQ(at("/a.jpg")->icon(), kinds.iconOfFile["/a.jpg"]);
    EXPECT_TRUE(at("/a.app")->isBundle());
    EXPECT_FALSE(at("/a.jpg")->isBundle());
    EXPECT_EQ(at("/b.nobody")->kindString(), "unknown");
    kinds.iconOfType["jpg"] = std::make_shared<Image>();
    EXPECT_EQ(at("/b.jpg")->icon(), kinds.iconOfType["jpg"]) << "that of the base class";
}

} // namespace
} // namespace tav
