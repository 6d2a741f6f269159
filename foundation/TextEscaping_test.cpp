#include "foundation/TextEscaping.hpp"
#include "testing/Golden.hpp"

#include <random>
#include <string>

#include <gtest/gtest.h>

namespace tav {
namespace {

TEST(TextEscaping, GoldenCases) {
    for (const GoldenCase& golden : goldenCases("edges.json", "escapeQuotesForCSV")) {
        EXPECT_EQ(escapeQuotesForCSV(golden.in.get<std::string>()), golden.out.get<std::string>())
            << golden.description();
    }
    for (const GoldenCase& golden : goldenCases("edges.json", "stringForFilterPredicate")) {
        EXPECT_EQ(stringForFilterPredicate(golden.in.get<std::string>()),
                  golden.out.get<std::string>())
            << golden.description();
    }
    for (const GoldenCase& golden : goldenCases("url.json", "urlEncodedString")) {
        EXPECT_EQ(urlEncodedString(golden.in.get<std::string>()), golden.out.get<std::string>())
            << golden.description();
    }
}

TEST(TextEscaping, CommaSeparatedValues) {
    EXPECT_EQ(escapeQuotesForCSV(""), "");
    EXPECT_EQ(escapeQuotesForCSV("\"\"a,b\""), "\"\"\"\"a,b\"\"");
    EXPECT_EQ(escapeQuotesForCSV("a\r\nb\rc\nd"), "a  b c d");
    EXPECT_EQ(escapeQuotesForCSV("é\xFF"), "é\xFF");
    // Each quote, also one with an accent, which would end the field like any other.
    EXPECT_EQ(escapeQuotesForCSV("\"\u0301"), "\"\"\u0301");
}

// What a reader of the file makes of a field; nothing where the field ends too early.
std::optional<std::string> readField(std::string_view field) {
    std::string text;
    for (std::size_t at = 0; at < field.size(); ++at) {
        text += field[at];
        if (field[at] == '"' && (++at == field.size() || field[at] != '"')) {
            return std::nullopt;
        }
    }
    return text;
}

TEST(TextEscaping, FieldsReadBack) {
    std::mt19937 random(5);
    for (int round = 0; round < 5000; ++round) {
        std::string text;
        std::string expected;
        for (auto count = random() % 10; count > 0; --count) {
            const char character = "\"\"\r\n,a\xFF"[random() % 7];
            text += character;
            expected += character == '\r' || character == '\n' ? ' ' : character;
        }
        ASSERT_EQ(readField(escapeQuotesForCSV(text)), expected);
    }
}

TEST(TextEscaping, FilterPredicates) {
    EXPECT_EQ(stringForFilterPredicate("it's (\"so\")?"), "it\\x27s \\x28\\x22so\\x22\\x29\\x3F");
    EXPECT_EQ(stringForFilterPredicate("a\\b*[]"), "a\\b*[]");
    EXPECT_EQ(stringForFilterPredicate("\\x27"), "\\x27");
    EXPECT_EQ(stringForFilterPredicate("é\xFF"), "é\xFF");
    EXPECT_EQ(stringForFilterPredicate(""), "");
}

TEST(TextEscaping, ValuesInURLs) {
    EXPECT_EQ(urlEncodedString("azAZ09-_.!~*();:@=$,/?"), "azAZ09-_.!~*();:@=$,/?");
    EXPECT_EQ(urlEncodedString("&+'\"%#[]{}<>|\\^` "),
              "%26%2B%27%22%25%23%5B%5D%7B%7D%3C%3E%7C%5C%5E%60%20");
    EXPECT_EQ(urlEncodedString("😀"), "%F0%9F%98%80");
    EXPECT_EQ(urlEncodedString("\xE9\n"), "%E9%0A");
}

} // namespace
} // namespace tav
