#include "base/AttributedStringHTML.hpp"

#include <cmath>

#include <gtest/gtest.h>

namespace tav {
namespace {

std::string html(std::string_view text, Attributes attributes = {}) {
    return htmlFromAttributedString(AttributedString(text, std::move(attributes)));
}

std::string nameOf(std::string_view name) { return std::string(name); }

TEST(AttributedStringHTML, PlainTextIsEscaped) {
    EXPECT_EQ(html(""), "");
    EXPECT_EQ(html("a<b> & \"c\""), "a&lt;b&gt; &amp; &quot;c&quot;");
    EXPECT_EQ(htmlEscapedString("<&>\"'\n"), "&lt;&amp;&gt;&quot;'\n");
}

TEST(AttributedStringHTML, LinesAndSpacesSurvive) {
    EXPECT_EQ(html("a\nb"), "a<br>b");
    EXPECT_EQ(html("a b"), "a b");
    EXPECT_EQ(html(" a  b "), "&nbsp;a &nbsp;b&nbsp;");
    EXPECT_EQ(html("a \n b"), "a&nbsp;<br>&nbsp;b");
}

TEST(AttributedStringHTML, ControlCharactersAreReferences) {
    EXPECT_EQ(html("a\tb\r\x01"), "a&#9;b&#13;&#1;");
    EXPECT_EQ(html(std::string_view("a\0b", 3)), "a\uFFFDb");
    EXPECT_EQ(html("\x7f"), "&#127;");
}

TEST(AttributedStringHTML, BytesThatAreNoUTF8AreReplaced) {
    EXPECT_EQ(html("\u00e9\xFF"), "\u00e9\uFFFD");
    EXPECT_EQ(html("x", {{nameOf(NSLinkAttributeName), Value("a\xFF")}}),
              "<a href=\"a\uFFFD\">x</a>");
}

TEST(AttributedStringHTML, ACutCharacterIsReplaced) {
    AttributedString text("\u00e9");
    text.addAttribute(NSFontAttributeName, FontTraits{true, false}, {1, 1});
    EXPECT_EQ(htmlFromAttributedString(text), "\uFFFD<b>\uFFFD</b>");
}

TEST(AttributedStringHTML, LinksAreAnchors) {
    EXPECT_EQ(html("x", {{nameOf(NSLinkAttributeName), Value("http://a/?b&c=\"d\"")}}),
              "<a href=\"http://a/?b&amp;c=&quot;d&quot;\">x</a>");
    EXPECT_EQ(html("x", {{nameOf(NSLinkAttributeName), Value(1)}}), "x");
}

TEST(AttributedStringHTML, ColorsAreStyles) {
    const std::string name = nameOf(NSForegroundColorAttributeName);
    EXPECT_EQ(html("x", {{name, Color::blueColor()}}), "<span style=\"color:#0000ff\">x</span>");
    EXPECT_EQ(html("x", {{name, Color(1, 0.5, 0, 0.25)}}),
              "<span style=\"color:#ff800040\">x</span>");
    EXPECT_EQ(html("x", {{name, Color(7, -1, std::nan(""))}}),
              "<span style=\"color:#ff0000\">x</span>");
}

TEST(AttributedStringHTML, UnderlinesAndFonts) {
    EXPECT_EQ(html("x", {{nameOf(NSUnderlineStyleAttributeName), Value(1)}}), "<u>x</u>");
    EXPECT_EQ(html("x", {{nameOf(NSUnderlineStyleAttributeName), Value(0)}}), "x");
    EXPECT_EQ(html("x", {{nameOf(NSFontAttributeName), FontTraits{true, false}}}), "<b>x</b>");
    EXPECT_EQ(html("x", {{nameOf(NSFontAttributeName), FontTraits{false, true}}}), "<i>x</i>");
    EXPECT_EQ(html("x", {{"other", Value(1)}}), "x");
}

TEST(AttributedStringHTML, EveryStretchClosesWhatItOpened) {
    AttributedString text("abc");
    text.addAttribute(NSFontAttributeName, FontTraits{true, true}, {0, 2});
    text.addAttribute(NSUnderlineStyleAttributeName, Value(1), {1, 2});
    EXPECT_EQ(htmlFromAttributedString(text), "<b><i>a</i></b><u><b><i>b</i></b></u><u>c</u>");
}

} // namespace
} // namespace tav
