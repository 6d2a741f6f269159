#include "foundation/HexadecimalText.hpp"

#include <gtest/gtest.h>

namespace tav {
namespace {

TEST(HexadecimalText, ReadsWhatATextBeginsWith) {
    EXPECT_EQ(numberFromHexString("0xFF"), 255);
    EXPECT_EQ(numberFromHexString("0Xff"), 255);
    EXPECT_EQ(numberFromHexString("7f is the end"), 127);
    EXPECT_EQ(numberFromHexString(" \n10"), 16);
}

TEST(HexadecimalText, ReadsZeroWhereThereAreNoDigits) {
    EXPECT_EQ(numberFromHexString("zz"), 0);
    EXPECT_EQ(numberFromHexString(""), 0);
    EXPECT_EQ(numberFromHexString("0x"), 0);
    EXPECT_EQ(numberFromHexString("-1"), 0);
}

TEST(HexadecimalText, NumbersAreSignedAndStopAt32Bits) {
    EXPECT_EQ(numberFromHexString("7FFFFFFF"), 2147483647);
    EXPECT_EQ(numberFromHexString("80000000"), -2147483647 - 1);
    EXPECT_EQ(numberFromHexString("FFFFFFFF"), -1);
    EXPECT_EQ(numberFromHexString("123456789abcdef"), -1);
}

TEST(HexadecimalText, WritesTheLow32BitsWithoutPadding) {
    EXPECT_EQ(hexStringFromNumber(255), "0xff");
    EXPECT_EQ(hexStringFromNumber(0), "0x0");
    EXPECT_EQ(hexStringFromNumber(-1), "0xffffffff");
    EXPECT_EQ(hexStringFromNumber(0x1'0000'000aLL), "0xa");
    EXPECT_EQ(hexStringFromNumber(16.9), "0x10");
    EXPECT_EQ(hexStringFromNumberNoLeading0x(255), "ff");
}

} // namespace
} // namespace tav
