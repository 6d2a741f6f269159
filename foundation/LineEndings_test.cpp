#include "base/Unicode.hpp"
#include "foundation/LineEndings.hpp"
#include "testing/Golden.hpp"

#include <random>
#include <string>

#include <gtest/gtest.h>

namespace tav {
namespace {

using Conversion = std::string (*)(std::string_view);

struct NamedConversion {
    const char* name;
    Conversion convert;
};

constexpr NamedConversion conversions[] = {
    {"stringWithMacLineEndings", &stringWithMacLineEndings},
    {"stringWithWindowsLineEndings", &stringWithWindowsLineEndings},
    {"convertNewlinesToReturns", &convertNewlinesToReturns},
    {"convertReturnsToNewlines", &convertReturnsToNewlines},
    {"convertLineEndingsToParagraphSeparator", &convertLineEndingsToParagraphSeparator},
    {"convertParagraphSeparatorToLineEndings", &convertParagraphSeparatorToLineEndings},
};

TEST(LineEndings, GoldenCases) {
    for (const auto& [name, convert] : conversions) {
        for (const GoldenCase& golden : goldenCases("edges.json", name)) {
            EXPECT_EQ(convert(golden.in.get<std::string>()), golden.out.get<std::string>())
                << golden.description();
        }
    }
}

TEST(LineEndings, MacAndWindows) {
    EXPECT_EQ(stringWithMacLineEndings("\r\n\r\r\n\n"), "\n\r\n\n");
    EXPECT_EQ(stringWithMacLineEndings("a\rb"), "a\rb");
    EXPECT_EQ(stringWithWindowsLineEndings("\n\n"), "\r\n\r\n");
    EXPECT_EQ(stringWithWindowsLineEndings("a\rb"), "a\rb");
    // Not once more, but on top.
    EXPECT_EQ(stringWithWindowsLineEndings("a\r\nb"), "a\r\r\nb");
}

TEST(LineEndings, ReturnsAndNewlines) {
    EXPECT_EQ(convertNewlinesToReturns("a\r\nb\n"), "a\r\rb\r");
    EXPECT_EQ(convertReturnsToNewlines("a\r\nb\r"), "a\n\nb\n");
}

TEST(LineEndings, ParagraphSeparators) {
    EXPECT_EQ(convertLineEndingsToParagraphSeparator("\r\r\n\n\r"), "\u2029\u2029\u2029\u2029");
    EXPECT_EQ(convertParagraphSeparatorToLineEndings("\u2029a\u2029\u2028\n"), "\na\n\u2028\n");
    // The bytes E2 80 A9 are that character only together.
    EXPECT_EQ(convertParagraphSeparatorToLineEndings("\xF0\xE2\x80\xA9\xE2\x80"), "\xF0\n\xE2\x80");
}

TEST(LineEndings, WhateverFollowsALineFeedIsNoPartOfIt) {
    EXPECT_EQ(stringWithWindowsLineEndings("a\n\u0301"), "a\r\n\u0301");
    EXPECT_EQ(convertNewlinesToReturns("a\n\u0301"), "a\r\u0301");
}

TEST(LineEndings, OtherBytesStay) {
    const std::string bytes("\x80\0\xFF\xC3\xE2\x80", 6);
    for (const auto& [name, convert] : conversions) {
        EXPECT_EQ(convert(""), "") << name;
        EXPECT_EQ(convert(bytes), bytes) << name;
    }
}

// Line by line, as a reader of texts would do it.
std::string naive(std::string_view text, std::string_view forPair, std::string_view forReturn,
                  std::string_view forNewline) {
    std::string result;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (!forPair.empty() && text.substr(at, 2) == "\r\n") {
            result += forPair;
            ++at;
        } else if (text[at] == '\r') {
            result += forReturn;
        } else if (text[at] == '\n') {
            result += forNewline;
        } else {
            result += text[at];
        }
    }
    return result;
}

TEST(LineEndings, AgreeWithTheNaiveReader) {
    std::mt19937 random(3);
    for (int round = 0; round < 5000; ++round) {
        std::string text;
        for (auto count = random() % 12; count > 0; --count) {
            text += "\r\n\r\nab\xE9"[random() % 7];
        }
        ASSERT_EQ(stringWithMacLineEndings(text), naive(text, "\n", "\r", "\n"));
        ASSERT_EQ(stringWithWindowsLineEndings(text), naive(text, "", "\r", "\r\n"));
        ASSERT_EQ(convertNewlinesToReturns(text), naive(text, "", "\r", "\r"));
        ASSERT_EQ(convertReturnsToNewlines(text), naive(text, "", "\n", "\n"));
        const std::string separated = convertLineEndingsToParagraphSeparator(text);
        ASSERT_EQ(separated, naive(text, "\u2029", "\u2029", "\u2029"));
        ASSERT_EQ(convertParagraphSeparatorToLineEndings(separated), naive(text, "\n", "\n", "\n"));
    }
}

TEST(LineEndings, DataIsUTF16WithAByteOrderMark) {
    Data expected = utf16LittleEndian("\uFEFFé\r\r\n\r\n😀");
    EXPECT_EQ(dataWithWindowsLineEndings("é\r\n\n😀"), expected);
    EXPECT_EQ(dataWithWindowsLineEndings(""), utf16LittleEndian("\uFEFF"));
    EXPECT_TRUE(dataWithWindowsLineEndings("\xFF").has_value());
}

} // namespace
} // namespace tav
