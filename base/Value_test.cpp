#include "base/Value.hpp"

#include <cmath>
#include <cstdint>
#include <limits>

#include <gtest/gtest.h>

namespace tav {
namespace {

using Type = Value::Type;

constexpr std::int64_t int64Min = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t int64Max = std::numeric_limits<std::int64_t>::max();
constexpr std::uint64_t uint64Max = std::numeric_limits<std::uint64_t>::max();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

TEST(Value, KnowsItsType) {
    EXPECT_EQ(Value().type(), Type::String);
    EXPECT_EQ(Value(true).type(), Type::Boolean);
    EXPECT_EQ(Value(1).type(), Type::Integer);
    EXPECT_EQ(Value(1U).type(), Type::Integer);
    EXPECT_EQ(Value(uint64Max).type(), Type::Integer);
    EXPECT_EQ(Value(1.0F).type(), Type::Real);
    EXPECT_EQ(Value("text").type(), Type::String);
    EXPECT_EQ(Value(std::string_view("text")).type(), Type::String);
    EXPECT_EQ(Value(Data{}).type(), Type::Bytes);
    EXPECT_EQ(Value(Date(1)).type(), Type::Date);
    EXPECT_EQ(Value(Value::UID{1}).type(), Type::UID);
    EXPECT_EQ(Value(Value::Array{}).type(), Type::Array);
    EXPECT_EQ(Value(Value::Dictionary{}).type(), Type::Dictionary);
}

TEST(Value, GivesItsContentUnderItsOwnTypeOnly) {
    const Value text("text");
    ASSERT_NE(text.asString(), nullptr);
    EXPECT_EQ(*text.asString(), "text");
    EXPECT_EQ(text.asData(), nullptr);
    EXPECT_EQ(text.asDate(), nullptr);
    EXPECT_EQ(text.asUID(), nullptr);
    EXPECT_EQ(text.asArray(), nullptr);
    EXPECT_EQ(text.asDictionary(), nullptr);
    EXPECT_FALSE(text.isNumber());
    EXPECT_EQ(*Value(dataFromText("ab")).asData(), dataFromText("ab"));
    EXPECT_EQ(*Value(Date(3)).asDate(), Date(3));
    EXPECT_EQ(Value(Value::UID{7}).asUID()->value, 7U);
    EXPECT_EQ(Value(7).asString(), nullptr);
}

TEST(Value, CopiesAreDeep) {
    Value original(Value::Dictionary{{"list", Value::Array{1, 2}}});
    Value copy = original;
    copy.asDictionary()->find("list")->asArray()->push_back(3);
    EXPECT_EQ(original.asDictionary()->find("list")->asArray()->size(), 2U);
    EXPECT_NE(original, copy);
    original = copy;
    EXPECT_EQ(original, copy);
}

TEST(Value, WhatWasMovedFromIsStillAValue) {
    Value dictionary(Value::Dictionary{{"a", 1}});
    const Value taken = std::move(dictionary);
    EXPECT_EQ(taken.asDictionary()->size(), 1U);
    // NOLINTNEXTLINE(bugprone-use-after-move)
    EXPECT_EQ(dictionary, Value());
    EXPECT_EQ(Value(dictionary).description(), "");
    dictionary = 5;
    EXPECT_EQ(dictionary, Value(5));
}

TEST(Value, MayBeReplacedByAPartOfItself) {
    Value array(Value::Array{Value(Value::Array{"inner"})});
    array = std::move(array.asArray()->front());
    EXPECT_EQ(array, Value(Value::Array{"inner"}));
    Value dictionary(Value::Dictionary{{"a", Value::Dictionary{{"b", 2}}}});
    dictionary = Value(*dictionary.asDictionary()->find("a"));
    EXPECT_EQ(dictionary, Value(Value::Dictionary{{"b", 2}}));
    Value::Dictionary outer{{"a", Value::Dictionary{{"b", 2}}}};
    outer = std::move(*outer.find("a")->asDictionary());
    EXPECT_EQ(outer, (Value::Dictionary{{"b", 2}}));
}

TEST(Value, NumbersAreEqualByValueWithoutRounding) {
    EXPECT_EQ(Value(1), Value(1U));
    EXPECT_EQ(Value(1), Value(1.0));
    EXPECT_EQ(Value(1), Value(true));
    EXPECT_EQ(Value(0.0), Value(false));
    EXPECT_EQ(Value(0.0), Value(-0.0));
    EXPECT_NE(Value(true), Value(2));
    EXPECT_NE(Value(-1), Value(uint64Max));
    EXPECT_EQ(Value(int64Max), Value(std::uint64_t(int64Max)));
    // 2^63 is the double nearest to 2^63 - 1, and 2^64 to 2^64 - 1.
    EXPECT_NE(Value(int64Max), Value(std::ldexp(1.0, 63)));
    EXPECT_EQ(Value(std::uint64_t{1} << 63), Value(std::ldexp(1.0, 63)));
    EXPECT_EQ(Value(int64Min), Value(-std::ldexp(1.0, 63)));
    EXPECT_NE(Value(uint64Max), Value(std::ldexp(1.0, 64)));
    EXPECT_NE(Value((std::int64_t{1} << 53) + 1), Value(std::ldexp(1.0, 53)));
    EXPECT_NE(Value(1), Value(1.5));
    EXPECT_EQ(Value(notANumber), Value(notANumber));
    EXPECT_NE(Value(notANumber), Value(0));
    EXPECT_EQ(Value(infinity), Value(infinity));
    EXPECT_NE(Value(infinity), Value(-infinity));
    EXPECT_NE(Value(1), Value("1"));
}

TEST(Value, OtherTypesAreEqualByContent) {
    EXPECT_EQ(Value("a"), Value(std::string("a")));
    EXPECT_NE(Value("a"), Value(dataFromText("a")));
    EXPECT_NE(Value(Date(1)), Value(1));
    EXPECT_EQ(Value(Date(1)), Value(Date(1)));
    EXPECT_EQ(Value(Date(notANumber)), Value(Date(notANumber)));
    EXPECT_NE(Value(Value::UID{1}), Value(1));
    EXPECT_EQ(Value(Value::UID{1}), Value(Value::UID{1}));
    EXPECT_EQ(Value(Value::Array{1, "a"}), Value(Value::Array{1.0, "a"}));
    EXPECT_NE(Value(Value::Array{1, 2}), Value(Value::Array{2, 1}));
    EXPECT_NE(Value(Value::Array{}), Value(Value::Dictionary{}));
}

TEST(Value, TellsExactIntegers) {
    EXPECT_EQ(Value(true).asSigned(), 1);
    EXPECT_EQ(Value(3.0).asSigned(), 3);
    EXPECT_EQ(Value(3.5).asSigned(), std::nullopt);
    EXPECT_EQ(Value(uint64Max).asSigned(), std::nullopt);
    EXPECT_EQ(Value(uint64Max).asUnsigned(), uint64Max);
    EXPECT_EQ(Value(-1).asUnsigned(), std::nullopt);
    EXPECT_EQ(Value(std::ldexp(1.0, 63)).asSigned(), std::nullopt);
    EXPECT_EQ(Value(std::ldexp(1.0, 63)).asUnsigned(), std::uint64_t{1} << 63);
    EXPECT_EQ(Value(std::ldexp(1.0, 64)).asUnsigned(), std::nullopt);
    EXPECT_EQ(Value(notANumber).asSigned(), std::nullopt);
    EXPECT_EQ(Value("3").asSigned(), std::nullopt);
}

TEST(Value, ConvertsNumbers) {
    EXPECT_EQ(Value(std::int64_t{5} << 30).intValue(), 1 << 30);
    EXPECT_EQ(Value(std::int64_t{0xFFFFFFFF}).intValue(), -1);
    EXPECT_EQ(Value(-2.9).intValue(), -2);
    EXPECT_EQ(Value(1e30).longLongValue(), int64Max);
    EXPECT_EQ(Value(-1e30).longLongValue(), int64Min);
    EXPECT_EQ(Value(notANumber).longLongValue(), 0);
    EXPECT_EQ(Value(1e30).unsignedLongLongValue(), uint64Max);
    EXPECT_EQ(Value(1e19).unsignedLongLongValue(), 10000000000000000000U);
    EXPECT_EQ(Value(uint64Max).longLongValue(), -1);
    EXPECT_EQ(Value(-1).unsignedLongLongValue(), uint64Max);
    EXPECT_EQ(Value(true).doubleValue(), 1);
    EXPECT_EQ(Value(uint64Max).doubleValue(), std::ldexp(1.0, 64));
    EXPECT_TRUE(Value(0.5).boolValue());
    EXPECT_FALSE(Value(0).boolValue());
    EXPECT_TRUE(Value(uint64Max).boolValue());
}

TEST(Value, ConvertsTextsThatBeginWithANumber) {
    EXPECT_EQ(Value(" 42nd").intValue(), 42);
    EXPECT_EQ(Value("-7").longLongValue(), -7);
    EXPECT_EQ(Value("99999999999").intValue(), std::numeric_limits<std::int32_t>::max());
    EXPECT_EQ(Value("-99999999999").intValue(), std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(Value("2.75 m").doubleValue(), 2.75);
    EXPECT_EQ(Value("none").intValue(), 0);
    EXPECT_EQ(Value("").doubleValue(), 0);
    for (const char* yes : {"YES", "yes", "true", "T", "1", " -3", "+001"}) {
        EXPECT_TRUE(Value(yes).boolValue()) << yes;
    }
    for (const char* no : {"NO", "false", "0", "", "  ", "000", "-", "x1"}) {
        EXPECT_FALSE(Value(no).boolValue()) << no;
    }
}

TEST(Value, WhatIsNoNumberConvertsToNothing) {
    for (const Value& value : {Value(Value::Array{1}), Value(Value::Dictionary{{"a", 1}}),
                               Value(dataFromText("1")), Value(Date(1)), Value(Value::UID{1})}) {
        EXPECT_FALSE(value.boolValue());
        EXPECT_EQ(value.intValue(), 0);
        EXPECT_EQ(value.longLongValue(), 0);
        EXPECT_EQ(value.unsignedLongLongValue(), 0U);
        EXPECT_EQ(value.doubleValue(), 0);
    }
}

TEST(Value, DescribesItself) {
    EXPECT_EQ(Value("a \"b\"").description(), "a \"b\"");
    EXPECT_EQ(Value(true).description(), "1");
    EXPECT_EQ(Value(-7).description(), "-7");
    EXPECT_EQ(Value(uint64Max).description(), "18446744073709551615");
    EXPECT_EQ(Value(1.5).description(), "1.5");
    EXPECT_EQ(Value(100000.0).description(), "100000");
    EXPECT_EQ(Value(dataFromText("abcde")).description(), "<61626364 65>");
    EXPECT_EQ(Value(Date(0)).description(), "2001-01-01 00:00:00 +0000");
    EXPECT_EQ(Value(Date(infinity)).description(), "inf");
    EXPECT_EQ(Value(Value::UID{3}).description(), "3");
    EXPECT_EQ(Value(Value::Array{"x"}).description(), "(\n    x\n)");
}

} // namespace
} // namespace tav
