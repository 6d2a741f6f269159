#pragma once

#include "base/Image.hpp"

#include <cstdint>

namespace tav {

/// The picture with other numbers of pixels, drawn a point a pixel. Each pixel is the average of
/// the area of the original that it covers, parts of pixels counted as parts; colours count as much
/// as they are opaque, so that what is transparent lends no colour to its neighbours. No pixels
/// for a width or height of 0, and for an image that has none. Sides up to 65535 pixels.
[[nodiscard]] Image scaledImage(const Image& image, std::uint32_t width, std::uint32_t height);

} // namespace tav
