#include "base/Data.hpp"
#include "platform/linux/MimeTypes.hpp"

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace tav::internal {
namespace {

using Names = std::vector<std::string>;

std::string comment(std::string_view xml, const Names& languages) {
    return commentOfDescription(bytesOf(xml), languages);
}

TEST(CommentOfDescription, TheFirstLanguageThatHasAWordHolds) {
    constexpr std::string_view xml =
        "<t><comment>E</comment><comment xml:lang='de'>D</comment>"
        "<comment xml:lang='fr'>F</comment><comment xml:lang='en_GB'>G</comment></t>";
    EXPECT_EQ(comment(xml, {}), "E");
    EXPECT_EQ(comment(xml, {"de", "fr"}), "D");
    EXPECT_EQ(comment(xml, {"fr", "de"}), "F");
    EXPECT_EQ(comment(xml, {"it", "fr"}), "F");
    EXPECT_EQ(comment(xml, {"it"}), "E");
    EXPECT_EQ(comment(xml, {"en", "de"}), "E");
    EXPECT_EQ(comment(xml, {"en_GB", "en"}), "G");
    EXPECT_EQ(comment(xml, {"en_US", "en"}), "E");
}

TEST(CommentOfDescription, EmptyAndNestedOnesDoNotCount) {
    EXPECT_EQ(comment("<t><x><comment>N</comment></x><comment xml:lang='de'/>"
                      "<comment>a<b>c</b> &amp; d</comment></t>",
                      {"de"}),
              "ac & d");
    EXPECT_EQ(comment("<comment>root</comment>", {}), "");
}

TEST(CommentOfDescription, WhatIsNoDescriptionHasNone) {
    EXPECT_EQ(comment("", {}), "");
    EXPECT_EQ(comment("garbage", {}), "");
    EXPECT_EQ(comment("<t><comment>cut", {}), "");
    EXPECT_EQ(comment("<t><comment>a</comment></t><t/>", {}), "");
    EXPECT_EQ(comment(std::string(2 << 20, ' '), {}), "");
    EXPECT_EQ(comment("<!DOCTYPE t [<!ENTITY a 'x'>]><t><comment>&a;</comment></t>", {}), "");
}

TEST(CommentOfDescription, AnyDepthEnds) {
    std::string xml;
    for (int i = 0; i < 100000; ++i) {
        xml += "<a>";
    }
    EXPECT_EQ(comment(xml, {}), "");
}

class MimeTypesTest : public testing::Test {
  protected:
    const MimeTypes types{{TAV_TESTDATA "/filekinds/user", TAV_TESTDATA "/filekinds/missing",
                           TAV_TESTDATA "/filekinds/system"}};
};

TEST_F(MimeTypesTest, TheUsersOwnFolderGoesFirst) {
    EXPECT_EQ(types.typeOfName("a.jpg"), "image/jpeg");
    EXPECT_EQ(types.typeOfName("a.txt"), "application/x-mine");
    EXPECT_EQ(types.typeOfName("a.old"), "");
    EXPECT_EQ(types.typeOfName("a.older"), "application/x-old");
    EXPECT_EQ(types.comment("text/html", Names{"de"}), "My web page");
}

TEST_F(MimeTypesTest, IconsGoFromTheMostFittingToTheGenericOne) {
    EXPECT_EQ(types.iconNames("image/jpeg"), (Names{"image-jpeg", "image-x-generic"}));
    EXPECT_EQ(types.iconNames("application/gzip"),
              (Names{"application-gzip", "package-x-generic"}));
    EXPECT_EQ(types.iconNames("application/x-sheet"),
              (Names{"sheet", "application-x-sheet", "application-x-generic"}));
    EXPECT_EQ(types.iconNames("nonsense"), Names());
}

TEST_F(MimeTypesTest, OtherNamesStandForTheirType) {
    EXPECT_EQ(types.comment("image/pjpeg", {}), "JPEG image");
    EXPECT_EQ(types.iconNames("image/pjpeg"), (Names{"image-jpeg", "image-x-generic"}));
}

TEST_F(MimeTypesTest, WhatIsNoTypeIsNoPath) {
    EXPECT_EQ(types.comment("../image/jpeg", {}), "");
    EXPECT_EQ(types.comment("image/../image/jpeg", {}), "");
    EXPECT_EQ(types.comment("/image", {}), "");
    EXPECT_EQ(types.comment("image/", {}), "");
    EXPECT_EQ(types.comment("image/none", {}), "");
    EXPECT_EQ(types.comment("", {}), "");
}

} // namespace
} // namespace tav::internal
