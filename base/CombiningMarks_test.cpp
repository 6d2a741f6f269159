#include "base/CombiningMarks.hpp"
#include "base/Unicode.hpp"

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <random>
#include <string>
#include <string_view>

#include <gtest/gtest.h>
#include <unicode/normalizer2.h>
#include <unicode/unistr.h>

namespace tav::internal {
namespace {

std::u16string normalizedByICU(const icu::Normalizer2* form, std::u16string_view units) {
    UErrorCode error = U_ZERO_ERROR;
    const icu::UnicodeString text(units.data(), static_cast<std::int32_t>(units.size()));
    const icu::UnicodeString result = form->normalize(text, error);
    EXPECT_TRUE(U_SUCCESS(error));
    return {result.getBuffer(), static_cast<std::size_t>(result.length())};
}

const icu::Normalizer2* nfd() {
    UErrorCode error = U_ZERO_ERROR;
    return icu::Normalizer2::getNFDInstance(error);
}

const icu::Normalizer2* nfc() {
    UErrorCode error = U_ZERO_ERROR;
    return icu::Normalizer2::getNFCInstance(error);
}

std::string repeated(std::string_view text, std::size_t count) {
    std::string result;
    for (; count > 0; --count) {
        result += text;
    }
    return result;
}

std::u16string repeated(std::u16string_view text, std::size_t count) {
    std::u16string result;
    for (; count > 0; --count) {
        result += text;
    }
    return result;
}

TEST(CombiningMarks, ShortRunsStay) {
    const std::u16string marks = u"a\u0301\u0323" + repeated(u"b\u0301\u0323", 100);
    EXPECT_EQ(withMarksInOrder(marks), marks);
    EXPECT_EQ(withMarksInOrder(u""), u"");
}

TEST(CombiningMarks, LongRunsAreOrderedAndKeepTheirNeighbours) {
    const std::u16string above = repeated(u"\u0301", 50);
    const std::u16string below = repeated(u"\u0323", 50);
    EXPECT_EQ(withMarksInOrder(u"a" + above + below + u"b\u0301\u0323c" + above + below),
              u"a" + below + above + u"b\u0301\u0323c" + below + above);
    EXPECT_EQ(withMarksInOrder(above + below + u"z"), below + above + u"z");
    EXPECT_EQ(withMarksInOrder(repeated(u"\u0F73", 65)),
              repeated(u"\u0F71", 65) + repeated(u"\u0F72", 65));
}

TEST(CombiningMarks, EveryCharacterThatDecomposesToMarksIsPartOfARun) {
    int found = 0;
    for (UChar32 character = 0; character <= 0x10FFFF; ++character) {
        icu::UnicodeString parts;
        if (!nfd()->getDecomposition(character, parts)) {
            parts = character;
        }
        if (nfd()->getCombiningClass(parts.char32At(0)) == 0) {
            continue;
        }
        ++found;
        icu::UnicodeString one(character);
        const std::u16string mark(one.getBuffer(), static_cast<std::size_t>(one.length()));
        const std::u16string text =
            u"a" + repeated(u"\u0301\u0334", 40) + mark + repeated(u"\u0345\u0323", 40) + mark;
        const std::u16string ordered = withMarksInOrder(text);
        EXPECT_EQ(normalizedByICU(nfd(), ordered), normalizedByICU(nfd(), text)) << character;
        EXPECT_EQ(normalizedByICU(nfc(), ordered), normalizedByICU(nfc(), text)) << character;
        // No mark stands before one of a lower class.
        std::uint8_t last = 0;
        for (std::size_t at = 1; at < ordered.size();) {
            const icu::UnicodeString rest(&ordered[at],
                                          static_cast<std::int32_t>(ordered.size() - at));
            const UChar32 next = rest.char32At(0);
            const std::uint8_t now = nfd()->getCombiningClass(next);
            EXPECT_LE(last, now) << character;
            last = now;
            at += next > 0xFFFF ? 2 : 1;
        }
    }
    EXPECT_GT(found, 800);
}

TEST(CombiningMarks, MixturesNormaliseAsICUDoesIt) {
    static const std::u16string_view pieces[] = {
        u"\u0301", u"\u0323", u"\u0344", u"\u0345", u"\u0F73",     u"\u0F75",     u"\u0F81",
        u"\u0F71", u"\u0F72", u"\u0340", u"\u0334", u"\U0001D165", u"\U0001D1AA", u"\U00016FF0"};
    static const std::u16string_view starters[] = {u"a",      u"é",      u"\u1E69", u"\uAC01",
                                                   u"\xDC80", u"\u09BE", u"\u0F40", u"\U0001D15E"};
    std::mt19937 random(3);
    for (int round = 0; round < 2000; ++round) {
        std::u16string units;
        for (auto runs = random() % 4; runs > 0; --runs) {
            units += starters[random() % std::size(starters)];
            for (auto count = random() % 120; count > 0; --count) {
                units += pieces[random() % std::size(pieces)];
            }
        }
        const std::u16string ordered = withMarksInOrder(units);
        ASSERT_EQ(normalizedByICU(nfd(), ordered), normalizedByICU(nfd(), units));
        ASSERT_EQ(normalizedByICU(nfc(), ordered), normalizedByICU(nfc(), units));
        const std::string text = bytesFromUTF16(units);
        ASSERT_EQ(utf16FromBytes(decomposedString(text)), normalizedByICU(nfd(), units));
        ASSERT_EQ(utf16FromBytes(precomposedString(text)), normalizedByICU(nfc(), units));
    }
}

TEST(CombiningMarks, HundredThousandsOfMarks) {
    constexpr std::size_t count = 100'000;
    const std::string above = repeated("\u0301", count);
    const std::string below = repeated("\u0323", count);
    EXPECT_EQ(decomposedString("a" + above + below), "a" + below + above);
    EXPECT_EQ(caselessForm("A" + above + below), "a" + below + above);
    EXPECT_EQ(precomposedString("a" + above + below),
              "\u1EA1" + repeated("\u0323", count - 1) + above);
    EXPECT_TRUE(equalsIgnoringCase("A" + above + below, "a" + below + above));
    EXPECT_EQ(decomposedString(repeated("\u0F73", count)),
              repeated("\u0F71", count) + repeated("\u0F72", count));
}

} // namespace
} // namespace tav::internal
