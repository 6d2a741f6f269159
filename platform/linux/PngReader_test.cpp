#include "platform/PngReader.hpp"

#include <cstdint>
#include <fstream>
#include <iterator>
#include <string>

#include <gtest/gtest.h>

namespace tav {
namespace {

std::string contentOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

class PngReaderTest : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_FALSE(png.empty());
        if (!imageFromPNG(bytesOf(png))) {
            GTEST_SKIP() << "built without libpng, or it is missing here";
        }
    }

    std::string png = contentOf(
        TAV_TESTDATA "/filekinds/system/icons/hicolor/16/mimetypes/package-x-generic.png");
};

TEST_F(PngReaderTest, PixelsComeAsTheyAre) {
    const std::shared_ptr<Image> image = imageFromPNG(bytesOf(png));
    EXPECT_EQ(image->pixelsWide(), 16U);
    EXPECT_EQ(image->pixelsHigh(), 16U);
    EXPECT_EQ(image->size(), (Image::Size{16, 16}));
    ASSERT_EQ(image->rgba().size(), 1024U);
    for (std::size_t i = 0; i < 1024; i += 4) {
        ASSERT_EQ(std::vector<std::uint8_t>(&image->rgba()[i], &image->rgba()[i] + 4),
                  (std::vector<std::uint8_t>{255, 255, 255, 128}));
    }
}

TEST_F(PngReaderTest, EachCallAnswersAPictureOfItsOwn) {
    EXPECT_NE(imageFromPNG(bytesOf(png)), imageFromPNG(bytesOf(png)));
}

TEST_F(PngReaderTest, WhatIsNoPictureIsNull) {
    EXPECT_EQ(imageFromPNG({}), nullptr);
    EXPECT_EQ(imageFromPNG(bytesOf("garbage")), nullptr);
    EXPECT_EQ(imageFromPNG(bytesOf(std::string(100000, '\0'))), nullptr);
}

TEST_F(PngReaderTest, CutOrChangedAnywhereEndsInSomething) {
    for (std::size_t i = 0; i < png.size(); ++i) {
        static_cast<void>(imageFromPNG(bytesOf(png.substr(0, i))));
        std::string changed = png;
        changed[i] = static_cast<char>(changed[i] ^ 0x55);
        static_cast<void>(imageFromPNG(bytesOf(changed)));
    }
    EXPECT_EQ(imageFromPNG(bytesOf(png.substr(0, 40))), nullptr);
}

// The first chunk with another width and height, and the checksum that fits.
std::string withSides(std::string png, std::uint32_t width, std::uint32_t height) {
    const auto put = [&](std::size_t at, std::uint32_t number) {
        for (unsigned i = 0; i < 4; ++i) {
            png[at + i] = static_cast<char>(number >> (24 - 8 * i));
        }
    };
    put(16, width);
    put(20, height);
    std::uint32_t checksum = 0xffffffff;
    for (std::size_t i = 12; i < 29; ++i) {
        checksum ^= static_cast<unsigned char>(png[i]);
        for (int bit = 0; bit < 8; ++bit) {
            checksum = (checksum >> 1U) ^ ((checksum & 1U) != 0 ? 0xedb88320U : 0U);
        }
    }
    put(29, ~checksum);
    return png;
}

TEST_F(PngReaderTest, LargePicturesAreRefused) {
    EXPECT_NE(imageFromPNG(bytesOf(withSides(png, 16, 16))), nullptr);
    EXPECT_EQ(imageFromPNG(bytesOf(withSides(png, 1025, 1))), nullptr);
    EXPECT_EQ(imageFromPNG(bytesOf(withSides(png, 1, 1025))), nullptr);
    EXPECT_EQ(imageFromPNG(bytesOf(withSides(png, 1000000, 1000000))), nullptr);
    EXPECT_EQ(imageFromPNG(bytesOf(withSides(png, 0x7fffffff, 0x7fffffff))), nullptr);
}

} // namespace
} // namespace tav
