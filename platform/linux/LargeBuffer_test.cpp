#include "platform/LargeBuffer.hpp"

#include <algorithm>
#include <limits>

#include <gtest/gtest.h>

namespace tav {
namespace {

TEST(LargeBuffer, HoldsAsManyBytesAsAskedFor) {
    for (const std::size_t size : {0UL, 1UL, 4096UL, (4UL << 20) - 1, 4UL << 20, (9UL << 20) + 5}) {
        auto buffer = LargeBuffer::withSize(size);
        ASSERT_TRUE(buffer);
        ASSERT_EQ(buffer->bytes().size(), size);
        std::ranges::fill(buffer->bytes(), std::byte{7});
        LargeBuffer moved = std::move(*buffer);
        EXPECT_TRUE(std::ranges::all_of(moved.bytes(), [](auto b) { return b == std::byte{7}; }));
    }
}

TEST(LargeBuffer, NoRoomIsNoBuffer) {
    constexpr std::size_t all = std::numeric_limits<std::size_t>::max();
    EXPECT_FALSE(LargeBuffer::withSize(all));
    EXPECT_FALSE(LargeBuffer::withSize(all / 4));
}

} // namespace
} // namespace tav
