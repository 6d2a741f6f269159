#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace tav {

/// A picture: rows of pixels from the top, and the size in points at which it is to be drawn, which
/// may be set to another one. Where several share one image, each sees the others' sizes.
class Image {
  public:
    struct Size {
        double width = 0;
        double height = 0;
        friend bool operator==(const Size&, const Size&) = default;
    };

    /// No pixels, 0 by 0 points.
    Image() = default;
    /// Red, green, blue and opacity of each pixel, a byte each, colours not multiplied by opacity;
    /// drawn a point a pixel at first. Pixels that are missing are transparent, those beyond the
    /// last row are dropped.
    Image(std::uint32_t pixelsWide, std::uint32_t pixelsHigh, std::vector<std::uint8_t> rgba)
        : pixelsWide_(pixelsWide), pixelsHigh_(pixelsHigh),
          rgba_(std::move(rgba)), size_{double(pixelsWide), double(pixelsHigh)} {
        rgba_.resize(std::size_t{4} * pixelsWide * pixelsHigh);
    }

    [[nodiscard]] std::uint32_t pixelsWide() const { return pixelsWide_; }
    [[nodiscard]] std::uint32_t pixelsHigh() const { return pixelsHigh_; }
    [[nodiscard]] const std::vector<std::uint8_t>& rgba() const { return rgba_; }

    /// In points.
    [[nodiscard]] Size size() const { return size_; }
    void setSize(Size size) { size_ = size; }

  private:
    std::uint32_t pixelsWide_ = 0;
    std::uint32_t pixelsHigh_ = 0;
    std::vector<std::uint8_t> rgba_;
    Size size_;
};

} // namespace tav
