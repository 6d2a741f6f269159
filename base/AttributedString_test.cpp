#include "base/AttributedString.hpp"
#include "base/Exception.hpp"

#include <stdexcept>

#include <gtest/gtest.h>

namespace tav {
namespace {

using Range = AttributedString::Range;

const Attribute one = Value(1);
const Attribute blue = Color::blueColor();

TEST(AttributedString, NamesAreThePlatforms) {
    EXPECT_EQ(NSLinkAttributeName, "NSLink");
    EXPECT_EQ(NSForegroundColorAttributeName, "NSColor");
    EXPECT_EQ(NSUnderlineColorAttributeName, "NSUnderlineColor");
    EXPECT_EQ(NSStrokeColorAttributeName, "NSStrokeColor");
    EXPECT_EQ(NSUnderlineStyleAttributeName, "NSUnderline");
    EXPECT_EQ(NSFontAttributeName, "NSFont");
}

TEST(AttributedString, TheEmptyTextHasNoPlaces) {
    const AttributedString text;
    EXPECT_EQ(text.string(), "");
    EXPECT_EQ(text.length(), 0U);
    EXPECT_THROW(static_cast<void>(text.attributesAt(0)), std::out_of_range);
    EXPECT_EQ(text, AttributedString("", {{"a", one}}));
}

TEST(AttributedString, ATextBeginsWithoutAttributes) {
    const AttributedString text("abc");
    Range range;
    EXPECT_TRUE(text.attributesAt(1, &range).empty());
    EXPECT_EQ(range, (Range{0, 3}));
}

TEST(AttributedString, OrWithTheSameOnesEverywhere) {
    const AttributedString text("abc", {{"a", one}});
    Range range;
    EXPECT_EQ(text.attributesAt(2, &range), (Attributes{{"a", one}}));
    EXPECT_EQ(range, (Range{0, 3}));
}

TEST(AttributedString, AnAttributeHoldsOverItsRange) {
    AttributedString text("abcdef");
    text.addAttribute("a", one, {2, 2});
    Range range;
    EXPECT_TRUE(text.attributesAt(1, &range).empty());
    EXPECT_EQ(range, (Range{0, 2}));
    EXPECT_EQ(text.attributesAt(2, &range), (Attributes{{"a", one}}));
    EXPECT_EQ(range, (Range{2, 2}));
    EXPECT_TRUE(text.attributesAt(4, &range).empty());
    EXPECT_EQ(range, (Range{4, 2}));
}

TEST(AttributedString, AttributesOverlap) {
    AttributedString text("abcdef");
    text.addAttribute("a", one, {0, 4});
    text.addAttribute("b", blue, {2, 4});
    EXPECT_EQ(text.attributesAt(1), (Attributes{{"a", one}}));
    EXPECT_EQ(text.attributesAt(3), (Attributes{{"a", one}, {"b", blue}}));
    EXPECT_EQ(text.attributesAt(5), (Attributes{{"b", blue}}));
}

TEST(AttributedString, AddingReplacesTheOneOfTheName) {
    AttributedString text("ab", {{"a", one}});
    text.addAttribute("a", blue, {0, 1});
    EXPECT_EQ(*text.attributeAt("a", 0), blue);
    EXPECT_EQ(*text.attributeAt("a", 1), one);
}

TEST(AttributedString, SettingReplacesAll) {
    AttributedString text("abc", {{"a", one}});
    text.setAttributes({{"b", blue}}, {1, 1});
    EXPECT_EQ(text.attributesAt(1), (Attributes{{"b", blue}}));
    text.setAttributes({}, text.wholeRange());
    EXPECT_EQ(text, AttributedString("abc"));
}

TEST(AttributedString, RemovingTakesOneAwayAndJoinsWhatIsAlike) {
    AttributedString text("abcdef", {{"a", one}});
    text.addAttribute("b", one, {2, 2});
    text.removeAttribute("b", {0, 6});
    Range range;
    EXPECT_EQ(text.attributesAt(3, &range), (Attributes{{"a", one}}));
    EXPECT_EQ(range, (Range{0, 6}));
    text.removeAttribute("none", {0, 6});
    EXPECT_EQ(text, AttributedString("abcdef", {{"a", one}}));
}

TEST(AttributedString, AChangeJoinsWithTheNeighboursOnBothSides) {
    AttributedString text("abc");
    text.addAttribute("a", one, {0, 1});
    text.addAttribute("a", one, {2, 1});
    Range range;
    static_cast<void>(text.attributesAt(0, &range));
    EXPECT_EQ(range, (Range{0, 1}));
    text.addAttribute("a", one, {1, 1});
    for (std::size_t place = 0; place < 3; ++place) {
        static_cast<void>(text.attributesAt(place, &range));
        EXPECT_EQ(range, (Range{0, 3}));
    }
}

TEST(AttributedString, OneAttributeHasARangeOfItsOwn) {
    AttributedString text("abcdef");
    text.addAttribute("a", one, {1, 4});
    text.addAttribute("b", one, {2, 1});
    Range range;
    EXPECT_EQ(*text.attributeAt("a", 2, &range), one);
    EXPECT_EQ(range, (Range{1, 4}));
    EXPECT_EQ(text.attributeAt("c", 2, &range), nullptr);
    EXPECT_EQ(range, (Range{0, 6}));
    EXPECT_EQ(text.attributeAt("a", 5, &range), nullptr);
    EXPECT_EQ(range, (Range{5, 1}));
}

TEST(AttributedString, AnEmptyRangeChangesNothing) {
    AttributedString text("ab");
    text.addAttribute("a", one, {1, 0});
    text.addAttribute("a", one, {2, 0});
    EXPECT_EQ(text, AttributedString("ab"));
}

TEST(AttributedString, PlacesBehindTheEndAreRefused) {
    AttributedString text("ab");
    EXPECT_THROW(text.addAttribute("a", one, {1, 2}), std::out_of_range);
    EXPECT_THROW(text.addAttribute("a", one, {3, 0}), std::out_of_range);
    EXPECT_THROW(text.addAttribute("a", one, {1, std::string::npos}), std::out_of_range);
    EXPECT_THROW(static_cast<void>(text.substring({0, 3})), std::out_of_range);
    EXPECT_THROW(static_cast<void>(text.attributeAt("a", 2)), std::out_of_range);
    EXPECT_EQ(text, AttributedString("ab"));
}

TEST(AttributedString, AppendingKeepsBothAndJoinsAtTheSeam) {
    AttributedString text("ab", {{"a", one}});
    AttributedString other("cd", {{"a", one}});
    other.append(AttributedString("e"));
    text.append(other);
    EXPECT_EQ(text.string(), "abcde");
    Range range;
    EXPECT_EQ(text.attributesAt(0, &range), (Attributes{{"a", one}}));
    EXPECT_EQ(range, (Range{0, 4}));
    text.append(text);
    EXPECT_EQ(text.string(), "abcdeabcde");
    EXPECT_TRUE(text.attributesAt(4).empty());
    EXPECT_FALSE(text.attributesAt(5).empty());
}

TEST(AttributedString, SharedAttributesMayBeNullOrEmpty) {
    AttributedString text;
    text.append("a", nullptr);
    text.append("b", std::make_shared<const Attributes>());
    text.append("", std::make_shared<const Attributes>(Attributes{{"a", one}}));
    EXPECT_EQ(text, AttributedString("ab"));
}

TEST(AttributedString, APartTakesItsAttributesAlong) {
    AttributedString text("abcdef");
    text.addAttribute("a", one, {2, 2});
    const AttributedString part = text.substring({1, 2});
    EXPECT_EQ(part.string(), "bc");
    EXPECT_TRUE(part.attributesAt(0).empty());
    EXPECT_FALSE(part.attributesAt(1).empty());
    EXPECT_EQ(text.substring({6, 0}), AttributedString());
}

TEST(AttributedString, CopiesAreApart) {
    AttributedString text("ab", {{"a", one}});
    const AttributedString copy = text;
    text.addAttribute("a", blue, {0, 2});
    EXPECT_EQ(*copy.attributeAt("a", 0), one);
}

TEST(AttributedString, EqualityLooksAtTextAndAttributes) {
    AttributedString a("abc");
    AttributedString b("abc");
    EXPECT_EQ(a, b);
    a.addAttribute("a", one, {0, 2});
    EXPECT_FALSE(a == b);
    b.addAttribute("a", one, {0, 1});
    EXPECT_FALSE(a == b);
    b.addAttribute("a", one, {1, 1});
    EXPECT_EQ(a, b);
    EXPECT_FALSE(AttributedString("abc") == AttributedString("abd"));
}

TEST(AttributedString, ABatchJoinsAtItsEnd) {
    AttributedString text("abcd");
    text.beginEditing();
    text.beginEditing();
    for (std::size_t i = 0; i < 4; ++i) {
        text.addAttribute("a", one, {i, 1});
    }
    EXPECT_EQ(text, AttributedString("abcd", {{"a", one}}));
    text.endEditing();
    text.endEditing();
    Range range;
    static_cast<void>(text.attributesAt(0, &range));
    EXPECT_EQ(range, (Range{0, 4}));
}

TEST(AttributedString, AnEndOfEditingNeedsItsBeginning) {
    AttributedString text("a");
    EXPECT_THROW(text.endEditing(), Exception);
}

TEST(AttributedString, ManyChangesStaySorted) {
    AttributedString text(std::string(100, 'x'));
    AttributedString batched = text;
    batched.beginEditing();
    for (std::size_t i = 0; i < 300; ++i) {
        const Range range{i * 37 % 100, (i * 11 % 7)};
        if (range.end() <= 100) {
            text.addAttribute(i % 2 == 0 ? "a" : "b", Value(int(i % 3)), range);
            batched.addAttribute(i % 2 == 0 ? "a" : "b", Value(int(i % 3)), range);
        }
    }
    EXPECT_EQ(text, batched);
    batched.endEditing();
    EXPECT_EQ(text, batched);
    std::size_t place = 0;
    while (place < 100) {
        Range range;
        Range inBatch;
        EXPECT_EQ(text.attributesAt(place, &range), batched.attributesAt(place, &inBatch));
        EXPECT_EQ(range, inBatch);
        EXPECT_EQ(range.location, place);
        place = range.end();
    }
}

TEST(AttributedString, BytesAreCountedInUnitsOfUTF16) {
    // One byte, two, three, four (a pair), and one that is no UTF-8.
    const std::string text = "a\u00e9\u20ac\U0001F600\xFFz";
    EXPECT_EQ(utf16RangeFromByteRange(text, {0, text.size()}), (Range{0, 7}));
    EXPECT_EQ(utf16RangeFromByteRange(text, {1, 5}), (Range{1, 2}));
    EXPECT_EQ(utf16RangeFromByteRange(text, {6, 4}), (Range{3, 2}));
    EXPECT_EQ(utf16RangeFromByteRange(text, {10, 1}), (Range{5, 1}));
    EXPECT_EQ(utf16RangeFromByteRange(text, {11, std::string::npos}), (Range{6, 1}));
    EXPECT_EQ(byteRangeFromUTF16Range(text, {0, 7}), (Range{0, text.size()}));
    EXPECT_EQ(byteRangeFromUTF16Range(text, {1, 2}), (Range{1, 5}));
    EXPECT_EQ(byteRangeFromUTF16Range(text, {3, 2}), (Range{6, 4}));
    EXPECT_EQ(byteRangeFromUTF16Range(text, {5, 1}), (Range{10, 1}));
    EXPECT_EQ(byteRangeFromUTF16Range(text, {6, std::string::npos}), (Range{11, 1}));
}

TEST(AttributedString, APlaceInsideACharacterIsItsBeginning) {
    const std::string text = "\u20ac\U0001F600";
    EXPECT_EQ(utf16RangeFromByteRange(text, {1, 0}).location, 0U);
    EXPECT_EQ(utf16RangeFromByteRange(text, {2, 0}).location, 0U);
    EXPECT_EQ(utf16RangeFromByteRange(text, {6, 0}).location, 1U);
    EXPECT_EQ(byteRangeFromUTF16Range(text, {2, 0}).location, 3U);
    // Continuation bytes on their own are characters of their own.
    EXPECT_EQ(utf16RangeFromByteRange("\x80\x80\x80\x80\x80", {3, 1}), (Range{3, 1}));
    // And so are those behind a byte with which they make no character.
    EXPECT_EQ(utf16RangeFromByteRange("\xE0\x80\x80", {1, 1}), (Range{1, 1}));
    EXPECT_EQ(utf16RangeFromByteRange("\xF5\x80\x80\x80", {3, 1}), (Range{3, 1}));
}

} // namespace
} // namespace tav
