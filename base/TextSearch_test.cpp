#include "base/TextSearch.hpp"
#include "base/Unicode.hpp"
#include "testing/Golden.hpp"

#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace tav {

void PrintTo(const TextRange& range, std::ostream* out) {
    *out << '[' << range.location << ", " << range.length << ']';
}

namespace {

using Found = std::optional<TextRange>;
using Range = TextRange;

constexpr unsigned ignoreCase = SearchOption::IgnoreCase;
constexpr unsigned literal = SearchOption::Literal;
constexpr unsigned backwards = SearchOption::Backwards;
constexpr unsigned anchored = SearchOption::Anchored;
constexpr unsigned numeric = SearchOption::Numeric;
constexpr unsigned ignoreDiacritics = SearchOption::IgnoreDiacritics;

Range rangeFromJSON(const nlohmann::json& json) {
    return {json.at(0).get<std::size_t>(), json.at(1).get<std::size_t>()};
}

TEST(TextSearch, GoldenCases) {
    std::size_t count = 0;
    for (const GoldenCase& golden : goldenCases("rangeofstring.json")) {
        const auto self = golden.in.at("self").get<std::string>();
        const auto argument = golden.in.at("arg").get<std::string>();
        const auto options = golden.in.value("options", 0U);
        const bool hasRange = golden.in.contains("range");
        const Range range = hasRange ? rangeFromJSON(golden.in.at("range")) : Range{};
        if (golden.op.starts_with("rangeOfString")) {
            const auto found = hasRange ? rangeOfString(self, argument, options, range)
                                        : rangeOfString(self, argument, options);
            const auto expected =
                golden.out.is_null() ? std::nullopt : Found(rangeFromJSON(golden.out));
            EXPECT_EQ(found, expected) << golden.description();
        } else if (golden.op.starts_with("compare")) {
            const int order = hasRange ? compare(self, argument, options, range)
                                       : compare(self, argument, options);
            EXPECT_EQ(order, golden.out) << golden.description();
        } else {
            ASSERT_EQ(golden.op, "countOfString");
            EXPECT_EQ(countOfPlaces(self, argument, 0), golden.out) << golden.description();
        }
        ++count;
    }
    EXPECT_EQ(count, 42U);
}

TEST(TextSearch, SequencesAreNotSplit) {
    EXPECT_EQ(rangeOfString("é", "e", 0), std::nullopt);
    EXPECT_EQ(rangeOfString("xe\u0301e", "e", 0), Found({3, 1}));
    EXPECT_EQ(rangeOfString("e\u0301", "\u0301", 0), std::nullopt);
    EXPECT_EQ(rangeOfString("e\u0301", "\u0301", literal), Found({1, 1}));
    EXPECT_EQ(rangeOfString("\u0301e", "\u0301", 0), Found({0, 1}));
    // The marks of U+0903 and U+20DD are spacing and enclosing.
    EXPECT_EQ(rangeOfString("\u0915\u0903", "\u0915", 0), std::nullopt);
    EXPECT_EQ(rangeOfString("a\u20DD", "a", 0), std::nullopt);
    // Syllables of Hangul, composed and not.
    EXPECT_EQ(rangeOfString("\uAC01", "\uAC00", 0), std::nullopt);
    EXPECT_EQ(rangeOfString("\u1100\u1161\u11A8", "\uAC00", 0), std::nullopt);
    EXPECT_EQ(rangeOfString("x\u1100\u1161\u11A8", "\uAC01", 0), Found({1, 3}));
    // What is no mark makes no sequence.
    EXPECT_EQ(rangeOfString("a\r\nb", "\n", 0), Found({2, 1}));
    EXPECT_EQ(rangeOfString("a\u200Db", "a", 0), Found({0, 1}));
}

TEST(TextSearch, ControlCharactersTakeNoMarks) {
    EXPECT_EQ(rangeOfString("a\n\u0301", "\n", 0), Found({1, 1}));
    EXPECT_EQ(rangeOfString("a\u2029\u0301", "\u2029", 0), Found({1, 1}));
    EXPECT_EQ(rangeOfString("a\n\u0301", "\u0301", 0), Found({2, 1}));
    EXPECT_EQ(rangeOfString("a \u0301", " ", 0), std::nullopt);
}

TEST(TextSearch, CanonicalEquivalence) {
    EXPECT_EQ(rangeOfString("a\u212Bb", "\u00C5", 0), Found({1, 1}));
    EXPECT_EQ(rangeOfString("a\u212Bb", "A\u030A", 0), Found({1, 1}));
    EXPECT_EQ(rangeOfString("a\u212Bb", "\u00C5", literal), std::nullopt);
    EXPECT_EQ(rangeOfString("5 \u212A", "K", 0), Found({2, 1}));
    // Marks of different classes may come in any order.
    EXPECT_EQ(rangeOfString("xe\u0301\u0323", "e\u0323\u0301", 0), Found({1, 3}));
    EXPECT_EQ(rangeOfString("ﬁ", "fi", 0), std::nullopt);
}

TEST(TextSearch, IgnoringCase) {
    EXPECT_EQ(rangeOfString("Die STRASSE", "straße", ignoreCase), Found({4, 7}));
    EXPECT_EQ(rangeOfString("Die Straße", "STRASSE", ignoreCase), Found({4, 6}));
    EXPECT_EQ(rangeOfString("ß", "s", ignoreCase), std::nullopt);
    EXPECT_EQ(rangeOfString("CAFE\u0301", "é", ignoreCase), Found({3, 2}));
    EXPECT_EQ(rangeOfString("CAFE\u0301", "é", ignoreCase | literal), std::nullopt);
    EXPECT_EQ(rangeOfString("CAFÉ", "é", ignoreCase | literal), Found({3, 1}));
    EXPECT_EQ(rangeOfString("aAaA", "AA", ignoreCase | backwards), Found({2, 2}));
}

TEST(TextSearch, IgnoringDiacritics) {
    EXPECT_EQ(rangeOfString("xe\u0301\u0323y", "e", ignoreDiacritics), Found({1, 3}));
    EXPECT_EQ(rangeOfString("xey", "é", ignoreDiacritics), Found({1, 1}));
    EXPECT_EQ(rangeOfString("xÉy", "e", ignoreDiacritics), std::nullopt);
    EXPECT_EQ(rangeOfString("xÉy", "e", ignoreDiacritics | ignoreCase), Found({1, 1}));
    EXPECT_EQ(rangeOfString("\u0301ab", "ab", ignoreDiacritics), Found({1, 2}));
    EXPECT_EQ(rangeOfString("e\u0301", "\u0301", ignoreDiacritics), std::nullopt);
    // A mark that no form changes, and that stands alone.
    EXPECT_EQ(rangeOfString("\n\u0900", "\u0900", ignoreDiacritics), std::nullopt);
    EXPECT_EQ(rangeOfString("ø", "o", ignoreDiacritics), std::nullopt);
}

TEST(TextSearch, AnchoredPlaces) {
    EXPECT_EQ(rangeOfString("äbäb", "äb", anchored), Found({0, 2}));
    EXPECT_EQ(rangeOfString("xäb", "äb", anchored), std::nullopt);
    EXPECT_EQ(rangeOfString("äbäb", "äb", anchored | backwards), Found({2, 2}));
    EXPECT_EQ(rangeOfString("äbx", "äb", anchored | backwards), std::nullopt);
    EXPECT_EQ(rangeOfString("xäbx", "äb", anchored, {1, 3}), Found({1, 2}));
    EXPECT_EQ(rangeOfString("xäbx", "äb", anchored | backwards, {0, 3}), Found({1, 2}));
    EXPECT_EQ(rangeOfString("xabx", "ab", anchored | backwards, {0, 3}), Found({1, 2}));
    EXPECT_EQ(rangeOfString("ab", "abc", anchored), std::nullopt);
    EXPECT_EQ(rangeOfString("ab", "xab", anchored | backwards), std::nullopt);
    EXPECT_EQ(rangeOfString("äb", "xäb", anchored | backwards), std::nullopt);
}

TEST(TextSearch, RangesCutNoSequence) {
    EXPECT_EQ(rangeOfString("e\u0301x", "\u0301", 0, {1, 2}), std::nullopt);
    EXPECT_EQ(rangeOfString("e\u0301x", "e", 0, {0, 1}), std::nullopt);
    EXPECT_EQ(rangeOfString("e\u0301x", "x", 0, {1, 2}), Found({2, 1}));
    EXPECT_EQ(rangeOfString("e\u0301x", "e", literal, {0, 1}), Found({0, 1}));
    EXPECT_EQ(rangeOfString("é\u0323x", "x", anchored, {1, 2}), std::nullopt);
    EXPECT_EQ(rangeOfString("😀😀", "😀", 0, {1, 3}), Found({2, 2}));
    EXPECT_EQ(rangeOfString("éa", "a", 0, {1, 100}), Found({1, 1}));
    EXPECT_EQ(rangeOfString("éa", "a", 0, {100, 1}), std::nullopt);
    EXPECT_EQ(rangeOfString("ba", "a", 0, {1, std::string::npos}), Found({1, 1}));
    EXPECT_EQ(rangeOfString("ba", "a", 0, {100, std::string::npos}), std::nullopt);
}

TEST(TextSearch, BytesThatAreNoUTF8) {
    EXPECT_EQ(rangeOfString("a\xE9z", "\xE9", 0), Found({1, 1}));
    EXPECT_EQ(rangeOfString("a\xE9z", "z", 0), Found({2, 1}));
    EXPECT_EQ(rangeOfString("aé", "\xC3", 0), std::nullopt);
    EXPECT_EQ(rangeOfString("aé", "\xA9", literal), std::nullopt);
    // U+1F480 has the unit U+DC80, which is the escape of the byte 0x80 elsewhere.
    EXPECT_EQ(rangeOfString("\U0001F480", "\x80", 0), std::nullopt);
    EXPECT_EQ(rangeOfString("\U0001F480", "\x80", literal), std::nullopt);
    EXPECT_EQ(compare("\U0001F480", "\x80", 0, {1, 1}), -1);
    EXPECT_EQ(compare("\U0001F480", "\x80", literal, {1, 1}), -1);
    EXPECT_EQ(compare("a\x80", "\x80", 0, {1, 1}), 0);
}

TEST(TextSearch, ComparisonsByCanonicalEquivalence) {
    EXPECT_EQ(compare("é", "e\u0301", 0), 0);
    EXPECT_EQ(compare("é", "e\u0301", literal), 1);
    EXPECT_EQ(compare("é", "f", 0), -1);
    EXPECT_EQ(compare("é", "f", literal), 1);
    EXPECT_EQ(compare("\u212B", "\u00C5", 0, {0, 1}), 0);
    EXPECT_EQ(compare("É", "e", 0), -1);
    EXPECT_EQ(compare("É", "e", ignoreDiacritics), -1);
    EXPECT_EQ(compare("É", "e", ignoreDiacritics | ignoreCase), 0);
    EXPECT_EQ(compare("STRASSE", "straße", ignoreCase), 0);
    EXPECT_EQ(compare("CAFÉ", "cafe\u0301", ignoreCase), 0);
    EXPECT_EQ(compare("CAFÉ", "café", ignoreCase | literal), 0);
    EXPECT_EQ(compare("", "", 0), 0);
    EXPECT_EQ(compare("", "a", 0), -1);
    EXPECT_EQ(compare("a", "", 0), 1);
    EXPECT_EQ(compare("ab", "a", 0), 1);
    // Where a search would be anchored or go backwards makes no difference.
    EXPECT_EQ(compare("ab", "a", anchored | backwards), 1);
}

TEST(TextSearch, ComparisonsOfRanges) {
    // The mark is not in the range.
    EXPECT_EQ(compare("e\u0301", "e", 0, {0, 1}), 0);
    EXPECT_EQ(compare("e\u0301", "é", 0, {0, 1}), -1);
    EXPECT_EQ(compare("e\u0301", "é", 0, {0, 2}), 0);
    EXPECT_EQ(compare("xyz", "z", 0, {2, 100}), 0);
    EXPECT_EQ(compare("xyz", "", 0, {100, 100}), 0);
    EXPECT_EQ(compare("éyz", "z", 0, {2, 100}), 0);
    EXPECT_EQ(compare("éyz", "z", 0, {2, std::string::npos}), 0);
    EXPECT_EQ(compare("abcé", "bc", 0, {1, 2}), 0);
}

TEST(TextSearch, NumbersByValue) {
    EXPECT_EQ(compare("a007", "a7", numeric), 0);
    EXPECT_EQ(compare("a007b", "a7c", numeric), -1);
    EXPECT_EQ(compare("a0", "a", numeric), 1);
    EXPECT_EQ(compare("a12", "ab", numeric), -1);
    EXPECT_EQ(compare("99999999999999999999999", "100000000000000000000000", numeric), -1);
    EXPECT_EQ(compare("1.10", "1.9", numeric), 1);
    EXPECT_EQ(compare("FILE10", "file9", numeric | ignoreCase), 1);
    EXPECT_EQ(compare("000", "0", numeric), 0);
    // Digits of other scripts are characters.
    EXPECT_EQ(compare("٣", "٢", numeric), 1);
    EXPECT_EQ(compare("١٠", "٩", numeric), -1);
}

TEST(TextSearch, PlacesThatOverlapCountEach) {
    EXPECT_EQ(countOfPlaces("ééé", "éé", 0), 2U);
    EXPECT_EQ(countOfPlaces("e\u0301e\u0301", "é", 0), 2U);
    EXPECT_EQ(countOfPlaces("e\u0301e\u0301", "e", 0), 0U);
    EXPECT_EQ(countOfPlaces("aAa", "a", ignoreCase), 3U);
    EXPECT_EQ(countOfPlaces("abc", "", 0), 0U);
    EXPECT_EQ(countOfPlaces("", "", 0), 0U);
}

// The rule in one line each, for the characters of these tests.
bool mayBreak(const std::u16string& units, std::size_t at, bool isLiteral) {
    if (at == 0 || at == units.size()) {
        return true;
    }
    const char16_t before = units[at - 1];
    const char16_t next = units[at];
    if (before >= 0xD800 && before <= 0xDBFF) {
        return false;
    }
    const bool isMark = next == 0x301 || next == 0x323 || next == 0x1161 || next == 0x11A8;
    return isLiteral || before == u'\n' || !isMark;
}

std::string formOf(const std::u16string& units, unsigned options) {
    std::string text = bytesFromUTF16(units);
    if ((options & ignoreDiacritics) != 0) {
        std::u16string rest;
        for (const char16_t unit : utf16FromBytes(decomposedString(text))) {
            if (unit != 0x301 && unit != 0x323) {
                rest += unit;
            }
        }
        text = bytesFromUTF16(rest);
    }
    if ((options & ignoreCase) != 0) {
        return caselessForm(text);
    }
    const bool asItIs = (options & (literal | ignoreDiacritics)) == literal;
    return asItIs ? text : decomposedString(text);
}

std::vector<TextRange> naivePlaces(const std::string& text, const std::string& pattern,
                                   unsigned options) {
    const std::u16string units = utf16FromBytes(text);
    const std::string sought = formOf(utf16FromBytes(pattern), options);
    const bool isLiteral = (options & literal) != 0;
    std::vector<TextRange> places;
    for (std::size_t start = 0; start < units.size() && !sought.empty(); ++start) {
        for (std::size_t end = start + 1; end <= units.size(); ++end) {
            if (!mayBreak(units, start, isLiteral) || !mayBreak(units, end, isLiteral) ||
                formOf(units.substr(start, end - start), options) != sought) {
                continue;
            }
            // Marks that are ignored do not come first.
            if (!places.empty() && places.back().location + places.back().length == end) {
                places.pop_back();
            }
            places.push_back({start, end - start});
            break;
        }
    }
    return places;
}

TEST(TextSearch, AgreesWithTheNaiveSearch) {
    const std::vector<std::string> characters = {"a",      "a",      "e",      "E",      "é",
                                                 "\u0301", "\u0323", "\n",     "\uAC00", "\uAC01",
                                                 "\u1100", "\u1161", "\u11A8", "😀",      "\x80"};
    std::mt19937 random(20);
    std::uniform_int_distribution<std::size_t> whichOne(0, characters.size() - 1);
    const auto text = [&](std::size_t most) {
        std::string result;
        for (std::size_t count = random() % (most + 1); count > 0; --count) {
            result += characters[whichOne(random)];
        }
        return result;
    };
    std::size_t found = 0;
    for (int round = 0; round < 20000; ++round) {
        const std::string self = text(8);
        const std::string pattern = text(3);
        // Literally and ignoring case, decomposed and composed stay apart.
        const std::vector<unsigned> choices = {0, literal, ignoreCase, ignoreDiacritics,
                                               ignoreCase | ignoreDiacritics};
        const unsigned options = choices[static_cast<std::size_t>(round) % choices.size()];
        const auto places = naivePlaces(self, pattern, options);
        const std::string message = testing::PrintToString(utf16FromBytes(self)) + " in which " +
                                    testing::PrintToString(utf16FromBytes(pattern)) + " by " +
                                    std::to_string(options);
        ASSERT_EQ(countOfPlaces(self, pattern, options), places.size()) << message;
        ASSERT_EQ(rangeOfString(self, pattern, options),
                  places.empty() ? std::nullopt : Found(places.front()))
            << message;
        ASSERT_EQ(rangeOfString(self, pattern, options | backwards),
                  places.empty() ? std::nullopt : Found(places.back()))
            << message;
        found += places.size();
    }
    EXPECT_GT(found, 1000U);
}

TEST(TextSearch, HostileTextsTakeLinearTime) {
    constexpr std::size_t size = 1'000'000;
    const std::string sameASCII(size, 'a');
    const std::string almostASCII = std::string(size / 2, 'a') + "b";
    EXPECT_EQ(rangeOfString(sameASCII, almostASCII, 0), std::nullopt);
    EXPECT_EQ(rangeOfString(sameASCII, almostASCII, backwards), std::nullopt);
    EXPECT_EQ(rangeOfString(sameASCII, "b" + sameASCII.substr(0, size / 2), backwards),
              std::nullopt);
    EXPECT_EQ(rangeOfString(sameASCII + "é", almostASCII, 0), std::nullopt);
    EXPECT_EQ(countOfPlaces(sameASCII + "é", sameASCII.substr(0, size / 2), 0), size / 2 + 1);

    std::string marks = "e";
    for (std::size_t count = 0; count < size / 4; ++count) {
        marks += "\u0301\u0323";
    }
    EXPECT_EQ(rangeOfString("x" + marks, marks, 0), Found({1, 1 + size / 2}));
    EXPECT_EQ(rangeOfString("x" + marks, "e", 0), std::nullopt);
    EXPECT_EQ(rangeOfString("x" + marks, "E", ignoreCase | ignoreDiacritics),
              Found({1, 1 + size / 2}));
    EXPECT_EQ(compare(marks, marks + "a", 0), -1);
    EXPECT_EQ(compare(sameASCII + "1", sameASCII + "2", numeric), -1);
}

} // namespace
} // namespace tav
