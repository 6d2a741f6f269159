#include "foundation/HexadecimalText.hpp"
#include "testing/Golden.hpp"

#include <gtest/gtest.h>

namespace tav {
namespace {

TEST(HexadecimalText, GoldenCases) {
    for (const GoldenCase& golden : goldenCases("edges.json", "numberFromHexString")) {
        EXPECT_EQ(numberFromHexString(golden.in.get<std::string>()), golden.out)
            << golden.description();
    }
    for (const GoldenCase& golden : goldenCases("edges.json", "hexStringFromNumber")) {
        EXPECT_EQ(hexStringFromNumber(golden.in.get<int>()), golden.out.get<std::string>())
            << golden.description();
    }
}

TEST(HexadecimalText, ReadsWhatATextBeginsWith) {
    EXPECT_EQ(numberFromHexString("0xFF"), 255);
    EXPECT_EQ(numberFromHexString("0Xff"), 255);
    EXPECT_EQ(numberFromHexString("7f is the end"), 127);
    EXPECT_EQ(numberFromHexString(" \n10"), 16);
    EXPECT_EQ(numberFromHexString("\t\n\v\f\r 0x10"), 16);
    EXPECT_EQ(numberFromHexString("\u00A0\u0085\u2003\u2028\u30001f"), 31);
    EXPECT_EQ(numberFromHexString("aBcDeF"), 0xABCDEF);
    EXPECT_EQ(numberFromHexString("00000000000001"), 1);
}

TEST(HexadecimalText, ReadsZeroWhereThereAreNoDigits) {
    EXPECT_EQ(numberFromHexString("zz"), 0);
    EXPECT_EQ(numberFromHexString(""), 0);
    EXPECT_EQ(numberFromHexString("0x"), 0);
    EXPECT_EQ(numberFromHexString("-1"), 0);
    EXPECT_EQ(numberFromHexString("+1"), 0);
    EXPECT_EQ(numberFromHexString("0x 1"), 0);
    EXPECT_EQ(numberFromHexString("0x0x1"), 0);
    EXPECT_EQ(numberFromHexString("x1"), 0);
    EXPECT_EQ(numberFromHexString(" "), 0);
    EXPECT_EQ(numberFromHexString("\u200B1"), 0);
    EXPECT_EQ(numberFromHexString("\xA0"
                                  "1"),
              0); // no UTF-8, so no blank
    EXPECT_EQ(numberFromHexString("\uFF11"), 0);
}

TEST(HexadecimalText, NumbersAreSignedAndStopAt32Bits) {
    EXPECT_EQ(numberFromHexString("7FFFFFFF"), 2147483647);
    EXPECT_EQ(numberFromHexString("80000000"), -2147483647 - 1);
    EXPECT_EQ(numberFromHexString("FFFFFFFF"), -1);
    EXPECT_EQ(numberFromHexString("123456789abcdef"), -1);
    EXPECT_EQ(numberFromHexString("100000000"), -1);
}

TEST(HexadecimalText, WritesTheLow32BitsWithoutPadding) {
    EXPECT_EQ(hexStringFromNumber(255), "0xff");
    EXPECT_EQ(hexStringFromNumber(0), "0x0");
    EXPECT_EQ(hexStringFromNumber(-1), "0xffffffff");
    EXPECT_EQ(hexStringFromNumber(0x1'0000'000aLL), "0xa");
    EXPECT_EQ(hexStringFromNumber(16.9), "0x10");
    EXPECT_EQ(hexStringFromNumberNoLeading0x(255), "ff");
    EXPECT_EQ(hexStringFromNumberNoLeading0x(0), "0");
    EXPECT_EQ(hexStringFromNumberNoLeading0x(-2147483647 - 1), "80000000");
}

} // namespace
} // namespace tav
