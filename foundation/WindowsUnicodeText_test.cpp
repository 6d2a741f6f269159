#include "foundation/WindowsUnicodeText.hpp"
#include "testing/Golden.hpp"

#include <random>
#include <string>

#include <gtest/gtest.h>

namespace tav {

namespace {

using namespace std::string_literals;

void expectRead(const std::string& bytes, const std::string& text, const std::string& after) {
    Data data = dataFromText(bytes);
    EXPECT_EQ(stringWithWindowsUnicodeData(data), text);
    EXPECT_EQ(textOf(data), after);
}

TEST(WindowsUnicodeText, GoldenCases) {
    for (const GoldenCase& golden : goldenCases("edges.json", "stringWithWindowsUnicodeData")) {
        Data data = dataFromJSON(golden.in);
        EXPECT_EQ(stringWithWindowsUnicodeData(data), golden.out.at("string"));
        EXPECT_EQ(data, dataFromJSON(golden.out.at("dataAfter")));
    }
    for (const GoldenCase& golden : goldenCases("unicode.json", "utf16be")) {
        EXPECT_EQ(dataUnicodeNoBOMBE(golden.in.get<std::string>()), dataFromJSON(golden.out));
    }
    for (const GoldenCase& golden : goldenCases("unicode.json", "utf16le")) {
        EXPECT_EQ(dataUnicodeNoBOMLE(golden.in.get<std::string>()), dataFromJSON(golden.out));
    }
}

TEST(WindowsUnicodeText, TheDataIsLeftExchanged) {
    expectRead("A\0B\0"s, "AB", "\0A\0B"s);
    expectRead("\x3D\xD8\0\xDE"s, "😀", "\xD8\x3D\xDE\0"s);
    expectRead("", "", "");
}

TEST(WindowsUnicodeText, AnOddLastByteStays) {
    expectRead("A\0B"s, "A", "\0AB"s);
    expectRead("A", "", "A");
}

TEST(WindowsUnicodeText, AMarkInFrontIsDropped) {
    expectRead("\xFF\xFE"
               "A\0"s,
               "A",
               "\xFE\xFF"
               "\0A"s);
    // A mark that says big-endian, too: exchanged it says little-endian, and so are the bytes.
    expectRead("\xFE\xFF"
               "\0A"s,
               "A",
               "\xFF\xFE"
               "A\0"s);
    expectRead("A\0\xFF\xFE"s, "A\uFEFF", "\0A\xFE\xFF"s);
}

TEST(WindowsUnicodeText, NoMarkIsWritten) {
    EXPECT_EQ(textOf(dataUnicodeNoBOMBE("aé😀")), "\0a\0\xE9\xD8\x3D\xDE\0"s);
    EXPECT_EQ(textOf(dataUnicodeNoBOMLE("aé😀")), "a\0\xE9\0\x3D\xD8\0\xDE"s);
    EXPECT_EQ(textOf(dataUnicodeNoBOMLE("\xFF")), "\xFF\xDC");
    EXPECT_TRUE(dataUnicodeNoBOMBE("").empty());
    EXPECT_TRUE(dataUnicodeNoBOMLE("").empty());
}

TEST(WindowsUnicodeText, WhatIsWrittenIsRead) {
    std::mt19937 random(1);
    for (int round = 0; round < 5000; ++round) {
        std::string text = "x"; // no mark in front
        for (auto count = random() % 20; count > 0; --count) {
            text += static_cast<char>(random() % 256);
        }
        Data data = dataUnicodeNoBOMLE(text);
        EXPECT_EQ(stringWithWindowsUnicodeData(data), text);
        EXPECT_EQ(data, dataUnicodeNoBOMBE(text));
    }
}

} // namespace

} // namespace tav
