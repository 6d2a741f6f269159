#include "base/NumberText.hpp"

#include <bit>
#include <cmath>
#include <limits>
#include <random>

#include <gtest/gtest.h>

namespace tav {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

std::string textOfReal(double value) {
    std::string text;
    appendReal(text, value);
    return text;
}

TEST(NumberText, WritesRealsShortAndReadable) {
    EXPECT_EQ(textOfReal(0), "0");
    EXPECT_EQ(textOfReal(-0.0), "-0");
    EXPECT_EQ(textOfReal(1.5), "1.5");
    EXPECT_EQ(textOfReal(0.1), "0.1");
    EXPECT_EQ(textOfReal(-100000), "-100000");
    EXPECT_EQ(textOfReal(0.00001), "0.00001");
    EXPECT_EQ(textOfReal(1e-6), "1e-06");
    EXPECT_EQ(textOfReal(1e16), "1e+16");
    EXPECT_EQ(textOfReal(std::numeric_limits<double>::max()), "1.7976931348623157e+308");
    EXPECT_EQ(textOfReal(std::numeric_limits<double>::denorm_min()), "5e-324");
    EXPECT_EQ(textOfReal(infinity), "inf");
    EXPECT_EQ(textOfReal(-infinity), "-inf");
    EXPECT_EQ(textOfReal(std::nan("")), "nan");
    EXPECT_EQ(textOfReal(-std::nan("")), "nan");
}

TEST(NumberText, EveryRealReadsBackAsItself) {
    std::mt19937_64 random(2);
    for (int i = 0; i < 20000; ++i) {
        const auto value = std::bit_cast<double>(random());
        if (!std::isnan(value)) {
            EXPECT_EQ(realFromText(textOfReal(value)), value) << textOfReal(value);
        }
    }
}

TEST(NumberText, ReadsReals) {
    EXPECT_EQ(realFromText("1.5"), 1.5);
    EXPECT_EQ(realFromText("+.5"), 0.5);
    EXPECT_EQ(realFromText("-5."), -5);
    EXPECT_EQ(realFromText("1e3"), 1000);
    EXPECT_EQ(realFromText("1E+3"), 1000);
    EXPECT_EQ(realFromText("inf"), infinity);
    EXPECT_EQ(realFromText("-Infinity"), -infinity);
    EXPECT_EQ(realFromText("+infinity"), infinity);
    EXPECT_TRUE(std::isnan(realFromText("NaN").value_or(0)));
    EXPECT_TRUE(std::isnan(realFromText("-nan").value_or(0)));
    for (const char* wrong :
         {"", "+", ".", "e5", "1e", "1,5", " 1", "1 ", "0x10", "--1", "infin", "1.5.5", "nan(1)"}) {
        EXPECT_EQ(realFromText(wrong), std::nullopt) << wrong;
    }
}

TEST(NumberText, TooLargeIsInfiniteAndTooSmallIsNothing) {
    EXPECT_EQ(realFromText("1e999"), infinity);
    EXPECT_EQ(realFromText("-1e999"), -infinity);
    EXPECT_EQ(realFromText("1e-999"), 0);
    EXPECT_EQ(realFromText("1e99999999999999999999"), infinity);
    EXPECT_EQ(realFromText("1e-99999999999999999999"), 0);
    EXPECT_EQ(realFromText(std::string(400, '9')), infinity);
    EXPECT_EQ(realFromText("0." + std::string(400, '0') + "1"), 0);
    EXPECT_EQ(realFromText("0." + std::string(400, '0') + "1e800"), infinity);
    EXPECT_EQ(realFromText("1" + std::string(400, '0') + "e-800"), 0);
    EXPECT_EQ(realFromText("1" + std::string(400, '0') + "e-400"), 1);
    EXPECT_EQ(realFromText("0e999"), 0);
}

TEST(NumberText, ReadsIntegers) {
    EXPECT_EQ(integerFromText("42")->magnitude, 42U);
    EXPECT_EQ(integerFromText("+42")->magnitude, 42U);
    EXPECT_TRUE(integerFromText("-42")->negative);
    EXPECT_EQ(integerFromText("-0x1f")->magnitude, 31U);
    EXPECT_EQ(integerFromText("0XFF")->magnitude, 255U);
    EXPECT_EQ(integerFromText("007")->magnitude, 7U);
    EXPECT_EQ(integerFromText("18446744073709551615")->magnitude, ~std::uint64_t{0});
    EXPECT_EQ(integerFromText("-9223372036854775808")->magnitude, std::uint64_t{1} << 63);
    for (const char* wrong :
         {"", "-", "x", "0x", "1.0", " 1", "1 ", "--1", "+-1", "0x-1", "18446744073709551616",
          "-9223372036854775809", "0x10000000000000000", "1f"}) {
        EXPECT_FALSE(integerFromText(wrong)) << wrong;
    }
}

TEST(NumberText, LeadingNumbersKeepWithinTheirType) {
    EXPECT_EQ(leadingInteger("12abc"), 12);
    EXPECT_EQ(leadingInteger("\t\n -12.9"), -12);
    EXPECT_EQ(leadingInteger("0x10"), 0);
    EXPECT_EQ(leadingInteger("9223372036854775807"), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(leadingInteger("9223372036854775808"), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(leadingInteger("-9223372036854775808"), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(leadingInteger("-99999999999999999999"), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(leadingReal(" 1.5e2xyz"), 150);
    EXPECT_EQ(leadingReal("1e"), 1);
    EXPECT_EQ(leadingReal("-.5"), -0.5);
    EXPECT_EQ(leadingReal("inf"), 0);
}

} // namespace
} // namespace tav
