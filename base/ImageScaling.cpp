#include "base/ImageScaling.hpp"

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

namespace tav {
namespace {

// Colours multiplied by their opacity (three of them, then the opacity), times the lengths that
// they cover: at most 255 * 255 * 65535 * 65535, and of an area of the original never more.
using Sums = std::vector<std::uint64_t>;

constexpr std::size_t channels = 4;

/// Calls `add(original, length)` for each pixel of the original that lies under pixel `index`. Both
/// rows are laid over one length, `from` times `to`, so that every border is a whole number.
template <class Add>
void forEachCovered(std::uint64_t index, std::uint64_t from, std::uint64_t to, Add add) {
    const std::uint64_t begin = index * from;
    const std::uint64_t end = begin + from;
    for (std::uint64_t original = begin / to; original * to < end; ++original) {
        add(static_cast<std::size_t>(original),
            std::min(end, (original + 1) * to) - std::max(begin, original * to));
    }
}

/// One row of the original, scaled to the new width.
void scaleRow(const Image& image, std::size_t row, std::uint32_t width, Sums& scaled) {
    const std::uint8_t* const pixels = image.rgba().data() + row * image.pixelsWide() * channels;
    std::fill(scaled.begin(), scaled.end(), 0);
    for (std::size_t x = 0; x < width; ++x) {
        std::uint64_t* const sum = &scaled[x * channels];
        forEachCovered(x, image.pixelsWide(), width, [&](std::size_t from, std::uint64_t length) {
            const std::uint8_t* const pixel = pixels + from * channels;
            const std::uint64_t opacity = pixel[3] * length;
            sum[0] += pixel[0] * opacity;
            sum[1] += pixel[1] * opacity;
            sum[2] += pixel[2] * opacity;
            sum[3] += opacity;
        });
    }
}

std::uint8_t roundedQuotient(std::uint64_t dividend, std::uint64_t divisor) {
    return static_cast<std::uint8_t>((dividend + divisor / 2) / divisor);
}

} // namespace

Image scaledImage(const Image& image, std::uint32_t width, std::uint32_t height) {
    if (width == 0 || height == 0 || image.pixelsWide() == 0 || image.pixelsHigh() == 0) {
        return {};
    }
    const std::size_t rowLength = std::size_t{width} * channels;
    const std::uint64_t area = std::uint64_t{image.pixelsWide()} * image.pixelsHigh();
    std::vector<std::uint8_t> rgba(rowLength * height);
    Sums row(rowLength);
    Sums sums(rowLength);
    std::size_t rowScaled = image.pixelsHigh();
    for (std::size_t y = 0; y < height; ++y) {
        std::fill(sums.begin(), sums.end(), 0);
        forEachCovered(y, image.pixelsHigh(), height, [&](std::size_t from, std::uint64_t length) {
            // A row on the border of two new ones comes twice in turn.
            if (from != rowScaled) {
                scaleRow(image, from, width, row);
                rowScaled = from;
            }
            for (std::size_t i = 0; i < rowLength; ++i) {
                sums[i] += row[i] * length;
            }
        });
        for (std::size_t x = 0; x < rowLength; x += channels) {
            std::uint8_t* const pixel = &rgba[y * rowLength + x];
            const std::uint64_t opacity = sums[x + 3];
            if (opacity == 0) {
                continue;
            }
            for (std::size_t channel = 0; channel < 3; ++channel) {
                pixel[channel] = roundedQuotient(sums[x + channel], opacity);
            }
            pixel[3] = roundedQuotient(opacity, area);
        }
    }
    return {width, height, std::move(rgba)};
}

} // namespace tav
