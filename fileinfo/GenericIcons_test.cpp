#include "fileinfo/FakeFileInfo_test.hpp"
#include "fileinfo/GenericIcons.hpp"
#include "platform/memory/MemoryFileKinds.hpp"
#include "platform/memory/MemoryFileSystem.hpp"

#include <gtest/gtest.h>

namespace tav {
namespace {

class IconsTest : public testing::Test {
  protected:
    void SetUp() override {
        if (!genericFolderIcon() || !genericFileIcon()) {
            GTEST_SKIP() << "built without libpng, or it is missing here";
        }
        genericFolderIcon()->setSize({128, 128});
        genericFileIcon()->setSize({128, 128});
        kinds.iconOfType["jpg"] = jpegIcon;
    }

    MemoryFileKinds kinds;
    const FileKinds::Replacement replacement{kinds};
    const std::shared_ptr<Image> jpegIcon =
        std::make_shared<Image>(48, 48, std::vector<std::uint8_t>());
};

TEST_F(IconsTest, AFolderHasTheSharedFolderIcon) {
    const auto folder = FakeFileInfo::folder("/a.jpg");
    EXPECT_EQ(folder->icon(), genericFolderIcon());
    EXPECT_EQ(FakeFileInfo::folder("/b")->icon(), folder->icon());
}

TEST_F(IconsTest, AFileHasThatOfItsExtension) {
    EXPECT_EQ(FakeFileInfo::fileInfoWithPath("/a.jpg")->icon(), jpegIcon);
}

TEST_F(IconsTest, OtherwiseTheSharedFileIcon) {
    EXPECT_EQ(FakeFileInfo::fileInfoWithPath("/a.unheard-of")->icon(), genericFileIcon());
    EXPECT_EQ(FakeFileInfo::fileInfoWithPath("/a")->icon(), genericFileIcon());
    EXPECT_EQ(TavBaseFileInfo::fileInfo()->icon(), genericFileIcon());
    EXPECT_NE(genericFileIcon(), genericFolderIcon());
}

TEST_F(IconsTest, ASmallIconIsTheSharedOneResized) {
    const auto folder = FakeFileInfo::folder("/a");
    const std::shared_ptr<Image> before = folder->icon();
    EXPECT_EQ(before->size(), (Image::Size{128, 128}));
    EXPECT_EQ(folder->smallIcon(), before);
    EXPECT_EQ(before->size(), (Image::Size{16, 16}));
    EXPECT_EQ(before->pixelsWide(), 128U);
    EXPECT_EQ(FakeFileInfo::folder("/b")->icon()->size(), (Image::Size{16, 16}));
    EXPECT_EQ(FakeFileInfo::fileInfoWithPath("/a.jpg")->smallIcon(), jpegIcon);
    EXPECT_EQ(jpegIcon->size(), (Image::Size{16, 16}));
}

TEST_F(IconsTest, StayWhateverStandsInForTheHost) {
    MemoryFileSystem files;
    const FileSystem::Replacement host(files);
    EXPECT_NE(genericFolderIcon(), nullptr);
    EXPECT_EQ(genericFolderIcon(), genericFolderIcon());
}

} // namespace
} // namespace tav
