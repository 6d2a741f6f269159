#pragma once

#include "base/Data.hpp"
#include "base/Image.hpp"

#include <cstdint>
#include <memory>

namespace tav {

/// No side of an image that is read has more pixels.
inline constexpr std::uint32_t longestImageSide = 1024;

/// The picture that a PNG file holds. Null when the bytes are no such file, are damaged, or hold a
/// larger picture; also where this build or this host has no libpng. Any thread.
[[nodiscard]] std::shared_ptr<Image> imageFromPNG(BytesView bytes);

} // namespace tav
