#include "testing/Golden.hpp"

#include <cstdint>
#include <stdexcept>

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

namespace tav {

namespace {

std::optional<Value> read(const char* json) { return valueFromJSON(nlohmann::json::parse(json)); }

TEST(Golden, ReadsEveryKindOfValue) {
    EXPECT_FALSE(read("null"));
    EXPECT_EQ(read("true")->type(), Value::Type::Boolean);
    EXPECT_EQ(read("-1")->asSigned(), -1);
    EXPECT_EQ(read("18446744073709551615")->asUnsigned(), UINT64_MAX);
    EXPECT_EQ(read("1.5")->type(), Value::Type::Real);
    EXPECT_EQ(read(R"({"$real": 1})")->type(), Value::Type::Real);
    EXPECT_EQ(read(R"("text")"), Value("text"));
    EXPECT_EQ(read(R"({"$data": "AQID"})"), Value(dataFromText("\1\2\3")));
    EXPECT_EQ(read(R"({"$data": "+/8="})"), Value(dataFromText("\xFB\xFF")));
    EXPECT_EQ(read(R"({"$data": ""})"), Value(Data()));
    EXPECT_EQ(read(R"({"$date": "2001-01-01T00:00:01Z"})"), Value(Date(1)));
    EXPECT_EQ(read(R"({"$time": 0.5})"), Value(Date(0.5)));
    EXPECT_EQ(read(R"([1, "a"])"), Value(Value::Array{Value(1), Value("a")}));
    EXPECT_EQ(read(R"({"b": [], "a": {}})"),
              Value(Value::Dictionary{{"a", Value::Dictionary{}}, {"b", Value::Array{}}}));
}

TEST(Golden, RefusesWhatTheFilesMustNotHold) {
    for (const char* json : {"[null]", R"({"a": null})", R"({"$data": "A"})",
                             R"({"$data": "A?=="})", R"({"$date": "today"})", R"({"$other": 1})"}) {
        EXPECT_THROW((void)read(json), std::invalid_argument) << json;
    }
}

TEST(Golden, AFileWithoutCasesFailsTheTest) {
    EXPECT_NONFATAL_FAILURE((void)goldenCases("missing.json"), "no golden file");
    EXPECT_NONFATAL_FAILURE((void)goldenCases("unicode.json", "missing"), "no case of missing");
    EXPECT_EQ(goldenCases("unicode.json", "utf8").front().op, "utf8");
}

} // namespace

} // namespace tav
