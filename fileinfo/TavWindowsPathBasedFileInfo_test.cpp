#include "fileinfo/FakeFileInfo_test.hpp"
#include "testing/Golden.hpp"

#include <gtest/gtest.h>

namespace tav {
namespace {

FileInfoPtr item(std::string_view path) {
    return TavWindowsPathBasedFileInfo::fileInfoWithPath(path);
}

TEST(WindowsItem, Golden) {
    for (const GoldenCase& golden : goldenCases("edges.json", "windows.isVolume")) {
        EXPECT_EQ(item(golden.in.get<std::string>())->isVolume(), golden.out.get<bool>());
    }
    for (const GoldenCase& golden : goldenCases("edges.json", "windows.name")) {
        EXPECT_EQ(item(golden.in.get<std::string>())->name(), golden.out.get<std::string>());
    }
    for (const GoldenCase& golden : goldenCases("edges.json", "windows.parentFolder.path")) {
        const FileInfoPtr parent = item(golden.in.get<std::string>())->parentFolder();
        EXPECT_EQ(parent == nullptr, golden.out.is_null());
    }
    for (const GoldenCase& golden : goldenCases("edges.json", "windows.pathComponents")) {
        EXPECT_EQ(item(golden.in.get<std::string>())->pathComponents(),
                  golden.out.get<std::vector<std::string>>());
    }
    for (const GoldenCase& golden : goldenCases("edges.json", "windows.isEqualTo")) {
        EXPECT_EQ(item(golden.in["path"].get<std::string>())
                      ->isEqualTo(item(golden.in["other"].get<std::string>()).get()),
                  golden.out.get<bool>());
    }
}

TEST(WindowsItem, AFoldersPathEndsWithABackslash) {
    EXPECT_EQ(FakeWindowsFileInfo::folder("C:\\a")->path(), "C:\\a\\");
    EXPECT_EQ(FakeWindowsFileInfo::folder("C:\\a\\")->path(), "C:\\a\\");
    EXPECT_EQ(FakeWindowsFileInfo::fileInfoWithPath("C:\\a")->path(), "C:\\a");
    EXPECT_EQ(FakeWindowsFileInfo::folder("C:\\a")->standardPath(), "C:/a");
    EXPECT_EQ(item("C:\\")->standardPath(), "C:/");
}

TEST(WindowsItem, ABareDriveIsAVolume) {
    EXPECT_TRUE(item("c:\\")->isVolume());
    EXPECT_EQ(item("c:\\")->name(), "C:\\");
    EXPECT_EQ(item("c:\\")->parentFolder(), nullptr);
    EXPECT_FALSE(item("C:\\a")->isVolume());
    EXPECT_FALSE(item("")->isVolume());
    EXPECT_EQ(item("")->parentFolder(), nullptr);
    EXPECT_EQ(item("")->name(), "");
    EXPECT_FALSE(item("C:")->isVolume());
}

TEST(WindowsItem, TheVolumeIsTheDrive) {
    const FileInfoPtr volume = item("e:\\DCIM\\a.jpg")->volume();
    EXPECT_EQ(volume->path(), "E:\\");
    EXPECT_EQ(volume->className(), "TavWindowsPathBasedFileInfo");
    EXPECT_EQ(item("DCIM\\a.jpg")->volume()->path(), "");
}

TEST(WindowsItem, ThePathInsideTheVolumeIsInSlashForm) {
    EXPECT_EQ(item("E:\\DCIM\\a.jpg")->volumeRelativeStandardPath(), "DCIM/a.jpg");
    EXPECT_EQ(item("E:\\DCIM\\")->volumeRelativeStandardPath(), "DCIM");
    EXPECT_EQ(item("E:\\")->volumeRelativeStandardPath(), "");
    EXPECT_EQ(item("\\DCIM\\a")->volumeRelativeStandardPath(), "DCIM/a");
}

TEST(WindowsItem, NamesAndComponents) {
    const FileInfoPtr file = item("E:\\DCIM\\a.b.jpg");
    EXPECT_EQ(file->name(), "a.b.jpg");
    EXPECT_EQ(file->nameWithoutExtension(), "a.b");
    EXPECT_EQ(file->extension(), "jpg");
    EXPECT_EQ(file->pathComponents(), (std::vector<std::string>{"E:\\", "DCIM", "a.b.jpg"}));
    EXPECT_EQ(item("E:\\DCIM\\")->pathComponents(), (std::vector<std::string>{"E:\\", "DCIM"}));
    EXPECT_EQ(item("a\\b")->pathComponents(), (std::vector<std::string>{"", "a", "b"}));
    EXPECT_EQ(item("E:\\DCIM\\")->name(), "DCIM");
}

TEST(WindowsItem, TheParentKeepsTheDrive) {
    EXPECT_EQ(item("E:\\DCIM\\a.jpg")->parentFolder()->path(), "E:\\DCIM");
    EXPECT_EQ(item("E:\\DCIM\\")->parentFolder()->path(), "E:\\");
    EXPECT_EQ(item("DCIM\\a.jpg")->parentFolder()->path(), "DCIM");
    EXPECT_EQ(item("E:\\DCIM")->parentFolder()->className(), "TavWindowsPathBasedFileInfo");
}

TEST(WindowsItem, ANewNameStandsInTheSameFolder) {
    const FileInfoPtr file = item("E:\\DCIM\\a.jpg");
    file->updateName("b.jpg");
    EXPECT_EQ(file->path(), "E:\\DCIM\\b.jpg");
    const FileInfoPtr top = item("E:\\a.jpg");
    top->updateName("b.jpg");
    EXPECT_EQ(top->path(), "E:\\b.jpg");
}

TEST(WindowsItem, ThePathIsMeasuredAsTheDeviceSeesIt) {
    EXPECT_EQ(item("E:\\a")->numBytesNeededForPath(), 13);
    EXPECT_EQ(item("E:\\caf\u00e9")->numBytesNeededForPath(), 17);
    EXPECT_EQ(item("E:\\")->numBytesNeededForPath(), 12);
    EXPECT_EQ(FakeWindowsFileInfo::folder("E:\\a")->numBytesNeededForPath(), 14);
    // The text of bytes that are no UTF-8 is as long as the bytes.
    EXPECT_EQ(item("E:\\\xff")->numBytesNeededForPath(), 13);
}

TEST(WindowsItem, EqualityIgnoresCaseAndTheBackslashOfAFolder) {
    EXPECT_TRUE(FakeWindowsFileInfo::folder("E:\\A")->isEqualTo(
        FakeWindowsFileInfo::folder("e:\\a\\").get()));
    EXPECT_FALSE(item("E:\\A")->isEqualTo(item("E:\\A\\").get()));
    // With a plain item the stored paths are compared.
    EXPECT_TRUE(FakeWindowsFileInfo::folder("E:\\A")->isEqualTo(
        TavPathBasedFileInfo::fileInfoWithPath("e:\\a").get()));
    EXPECT_TRUE(TavPathBasedFileInfo::fileInfoWithPath("e:\\a")->isEqualTo(
        FakeWindowsFileInfo::folder("E:\\A").get()));
    EXPECT_FALSE(item("E:\\A")->isEqualTo(TavBaseFileInfo::fileInfo().get()));
    EXPECT_FALSE(item("E:\\A")->isEqualTo(nullptr));
}

TEST(WindowsItem, TheWayStartsAtTheItemItselfAlsoForAFile) {
    EXPECT_EQ(
        FakeWindowsFileInfo::folder("E:\\x\\a\\")->relativePathTo(item("e:\\X\\c\\d.txt").get()),
        "..\\c\\d.txt");
    EXPECT_EQ(item("E:\\x\\a\\f.txt")->relativePathTo(item("E:\\x\\c").get()), "..\\..\\c");
    EXPECT_EQ(FakeWindowsFileInfo::folder("E:\\x")->relativePathTo(item("E:\\X\\y\\z").get()),
              "y\\z");
    EXPECT_EQ(FakeWindowsFileInfo::folder("E:\\x")->relativePathTo(
                  FakeWindowsFileInfo::folder("E:\\x\\").get()),
              "");
}

TEST(WindowsItem, ADriveIsNoComponentOfAWay) {
    // Its backslash goes as that of any folder does, and without it "E:" is a name.
    EXPECT_EQ(FakeWindowsFileInfo::folder("E:\\")->relativePathTo(item("E:\\x").get()), "E:\\x");
    EXPECT_EQ(FakeWindowsFileInfo::folder("E:\\x")->relativePathTo(item("E:\\").get()),
              "..\\..\\E:");
}

TEST(WindowsItem, PathsWithoutADriveAreOnOneVolume) {
    EXPECT_EQ(FakeWindowsFileInfo::folder("a")->relativePathTo(item("b").get()), "..\\b");
    EXPECT_EQ(item("a")->parentFolder()->path(), "");
    EXPECT_EQ(item("\\a\\")->pathComponents(), (std::vector<std::string>{"", "/", "a"}));
    EXPECT_EQ(item("E:\\\\")->pathComponents(), std::vector<std::string>{"E:\\"});
}

TEST(WindowsItem, TheExtensionOfADriveIsLookedForInItsName) {
    EXPECT_EQ(item("E:\\")->extension(), "");
    EXPECT_EQ(item("E:\\")->nameWithoutExtension(), "E:");
    EXPECT_EQ(item("E:\\a.b\\c")->extension(), "");
    EXPECT_EQ(item("E:\\a.b\\c")->nameWithoutExtension(), "c");
}

TEST(WindowsItem, ThereIsNoWayToAnotherVolumeOrAnotherKindOfItem) {
    const auto folder = FakeWindowsFileInfo::folder("E:\\x");
    EXPECT_EQ(folder->relativePathTo(item("F:\\x\\y").get()), "F:\\x\\y");
    EXPECT_EQ(folder->relativePathTo(TavPathBasedFileInfo::fileInfoWithPath("E:\\x\\y").get()),
              "E:\\x\\y");
    // Not even when the other one is on a volume of that name.
    const auto plain = FakeFileInfo::fileInfoWithPath("E:\\x\\y");
    plain->facts.volume = item("E:\\");
    EXPECT_EQ(folder->relativePathTo(plain.get()), "E:\\x\\y");
    EXPECT_EQ(folder->relativePathTo(nullptr), std::nullopt);
}

} // namespace
} // namespace tav
