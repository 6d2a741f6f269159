#include "base/OldStyleText.hpp"
#include "testing/Golden.hpp"

#include <gtest/gtest.h>

namespace tav {
namespace {

TEST(OldStyleText, GoldenCases) {
    for (const GoldenCase& golden : goldenCases("oldstyle_plist.json", "serialise")) {
        const std::optional<Value> value = valueFromJSON(golden.in);
        ASSERT_TRUE(value) << golden.description();
        EXPECT_EQ(OldStyleText::write(*value), golden.out.get<std::string>())
            << golden.description();
        EXPECT_EQ(value->description(), golden.out.get<std::string>());
    }
}

TEST(OldStyleText, OnlyLettersAndDigitsStandWithoutQuotes) {
    EXPECT_EQ(OldStyleText::write("aZ09"), "aZ09");
    EXPECT_EQ(OldStyleText::write(""), "\"\"");
    EXPECT_EQ(OldStyleText::write("a_b"), "\"a_b\"");
    EXPECT_EQ(OldStyleText::write(-1), "\"-1\"");
    EXPECT_EQ(OldStyleText::write(Date(0)), "\"2001-01-01 00:00:00 +0000\"");
}

TEST(OldStyleText, ControlCharactersAreEscaped) {
    EXPECT_EQ(OldStyleText::write("\a\b\t\n\v\f\r"), R"("\a\b\t\n\v\f\r")");
    EXPECT_EQ(OldStyleText::write(std::string("\0\x1B\x7F", 3)), R"("\000\033\177")");
    EXPECT_EQ(OldStyleText::write("\\\""), R"("\\\"")");
}

TEST(OldStyleText, UnitsBeyondASCIIAreEscapedOneByOne) {
    EXPECT_EQ(OldStyleText::write("\xF0\x9F\x98\x80"), R"("\Ud83d\Ude00")");
    // A byte that is no UTF-8 is the unit that keeps it.
    EXPECT_EQ(OldStyleText::write("a\xFF"), R"("a\Udcff")");
    EXPECT_EQ(OldStyleText::write(Value::Dictionary{{"\xC3\xA9", 1}}),
              "{\n    \"\\U00e9\" = 1;\n}");
}

} // namespace
} // namespace tav
