#include "base/ImageScaling.hpp"

#include <cstdint>
#include <vector>

#include <gtest/gtest.h>

namespace tav {
namespace {

using Pixels = std::vector<std::uint8_t>;

TEST(Image, IsDrawnAPointAPixelUntilItIsResized) {
    Image image(2, 1, Pixels(8));
    EXPECT_EQ(image.size(), (Image::Size{2, 1}));
    image.setSize({16, 16});
    EXPECT_EQ(image.size(), (Image::Size{16, 16}));
    EXPECT_EQ(image.pixelsWide(), 2U);
    EXPECT_EQ(image.pixelsHigh(), 1U);
}

TEST(Image, MissingPixelsAreTransparentAndOthersAreDropped) {
    EXPECT_EQ(Image(1, 2, {1, 2, 3, 4}).rgba(), (Pixels{1, 2, 3, 4, 0, 0, 0, 0}));
    EXPECT_EQ(Image(1, 1, {1, 2, 3, 4, 5}).rgba(), (Pixels{1, 2, 3, 4}));
    EXPECT_TRUE(Image().rgba().empty());
    EXPECT_EQ(Image().size(), Image::Size());
}

TEST(ImageScaling, SameSizeIsTheSamePicture) {
    const Image image(2, 2, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 250, 251, 252, 255});
    EXPECT_EQ(scaledImage(image, 2, 2).rgba(), image.rgba());
}

TEST(ImageScaling, HalvingAveragesFourPixels) {
    const Image image(2, 2,
                      {0, 10, 255, 255, 100, 20, 255, 255, 0, 30, 255, 255, 100, 41, 255, 255});
    const Image half = scaledImage(image, 1, 1);
    EXPECT_EQ(half.rgba(), (Pixels{50, 25, 255, 255})); // 25.25
    EXPECT_EQ(half.size(), (Image::Size{1, 1}));
}

TEST(ImageScaling, HalvesRoundUp) {
    const Image image(2, 1, {0, 1, 2, 255, 1, 2, 3, 255});
    EXPECT_EQ(scaledImage(image, 1, 1).rgba(), (Pixels{1, 2, 3, 255}));
}

TEST(ImageScaling, TransparentPixelsLendNoColour) {
    const Image image(2, 1, {200, 100, 50, 255, 0, 0, 0, 0});
    EXPECT_EQ(scaledImage(image, 1, 1).rgba(), (Pixels{200, 100, 50, 128}));
}

TEST(ImageScaling, ColoursCountAsMuchAsTheyAreOpaque) {
    const Image image(2, 1, {240, 0, 0, 60, 0, 240, 0, 180});
    EXPECT_EQ(scaledImage(image, 1, 1).rgba(), (Pixels{60, 180, 0, 120}));
}

TEST(ImageScaling, NothingOpaqueIsAllTransparent) {
    const Image image(2, 1, {200, 100, 50, 0, 1, 2, 3, 0});
    EXPECT_EQ(scaledImage(image, 1, 1).rgba(), (Pixels{0, 0, 0, 0}));
}

TEST(ImageScaling, PartsOfPixelsCountAsParts) {
    // Three pixels into two: each new one covers one and a half.
    const Image image(3, 1, {90, 0, 0, 255, 30, 0, 0, 255, 0, 0, 0, 255});
    EXPECT_EQ(scaledImage(image, 2, 1).rgba(), (Pixels{70, 0, 0, 255, 10, 0, 0, 255}));
    const Image tall(1, 3, {90, 0, 0, 255, 30, 0, 0, 255, 0, 0, 0, 255});
    EXPECT_EQ(scaledImage(tall, 1, 2).rgba(), (Pixels{70, 0, 0, 255, 10, 0, 0, 255}));
}

TEST(ImageScaling, GrowingRepeatsPixels) {
    const Image image(2, 1, {9, 8, 7, 6, 1, 2, 3, 4});
    EXPECT_EQ(scaledImage(image, 4, 2).rgba(),
              (Pixels{9, 8, 7, 6, 9, 8, 7, 6, 1, 2, 3, 4, 1, 2, 3, 4,
                      9, 8, 7, 6, 9, 8, 7, 6, 1, 2, 3, 4, 1, 2, 3, 4}));
}

TEST(ImageScaling, NoPixelsAtOneEndAreNoneAtTheOther) {
    const Image image(1, 1, {1, 2, 3, 4});
    EXPECT_EQ(scaledImage(image, 0, 5).pixelsHigh(), 0U);
    EXPECT_EQ(scaledImage(image, 5, 0).pixelsWide(), 0U);
    EXPECT_TRUE(scaledImage(Image(), 16, 16).rgba().empty());
}

TEST(ImageScaling, OneColourStaysThatColourAtEverySize) {
    const Image image(7, 5, [] {
        Pixels pixels;
        for (int i = 0; i < 35; ++i) {
            pixels.insert(pixels.end(), {200, 100, 3, 77});
        }
        return pixels;
    }());
    for (std::uint32_t size = 1; size <= 16; ++size) {
        const Image scaled = scaledImage(image, size, 17 - size);
        for (std::size_t i = 0; i < scaled.rgba().size(); i += 4) {
            ASSERT_EQ(Pixels(scaled.rgba().begin() + std::ptrdiff_t(i),
                             scaled.rgba().begin() + std::ptrdiff_t(i) + 4),
                      (Pixels{200, 100, 3, 77}));
        }
    }
}

TEST(ImageScaling, TheLargestSidesDoNotOverflow) {
    const Image wide(65535, 1, Pixels(std::size_t{4} * 65535, 255));
    EXPECT_EQ(scaledImage(wide, 1, 1).rgba(), (Pixels{255, 255, 255, 255}));
    EXPECT_EQ(scaledImage(Image(1, 65535, Pixels(std::size_t{4} * 65535, 255)), 1, 2).rgba(),
              Pixels(8, 255));
}

} // namespace
} // namespace tav
