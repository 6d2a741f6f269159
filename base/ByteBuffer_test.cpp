#include "base/ByteBuffer.hpp"

#include <gtest/gtest.h>

namespace tav {
namespace {

TEST(ByteBuffer, GrowsPieceByPiece) {
    ByteBuffer buffer(0);
    buffer.append("ab");
    buffer.append('c');
    buffer.append(3, '-');
    buffer.append(std::string_view());
    buffer.append(bytesOf("xyz"));
    buffer.appendBigEndian(0x41424344, 2);
    EXPECT_EQ(buffer.size(), 11U);
    EXPECT_EQ(textOf(buffer.take()), "abc---xyzCD");
    EXPECT_EQ(buffer.size(), 0U);
    buffer.append("again");
    EXPECT_EQ(textOf(buffer.take()), "again");
}

} // namespace
} // namespace tav
