// What holds for every importer, and what only one that reads as browsers do can.

#include "base/AttributedStringHTML.hpp"
#include "base/Unicode.hpp"
#include "platform/HtmlImporter.hpp"
#include "platform/linux/PlainHtmlImporter.hpp"

#include <string>
#include <string_view>

#include <gtest/gtest.h>

namespace tav {
namespace {

using namespace std::string_literals;

constexpr std::string_view blueLink = "http://example.net/";

class Importers : public testing::TestWithParam<const char*> {
  protected:
    static HtmlImporter& importer() {
        static internal::PlainHtmlImporter plain;
        return GetParam() == std::string_view("plain") ? plain : internal::realHtmlImporter();
    }
    static bool readsAsBrowsers() {
        return dynamic_cast<internal::PlainHtmlImporter*>(&importer()) == nullptr;
    }
    static HtmlDocument document(std::string_view html) {
        const auto imported = importer().importHTML(bytesOf(html));
        EXPECT_TRUE(imported.has_value());
        return imported.value_or(HtmlDocument());
    }
    static AttributedString attributed(std::string_view html) { return document(html).text; }
    static std::string text(std::string_view html) { return attributed(html).string(); }
    static std::string title(std::string_view html) {
        const auto attributes = document(html).documentAttributes;
        const std::string* found =
            attributes ? attributes->findString("NSTitleDocumentAttribute") : nullptr;
        return found == nullptr ? "none" : *found;
    }
    static int encoding(std::string_view html) {
        const auto attributes = document(html).documentAttributes;
        const Value* found = attributes ? attributes->find("CharacterEncoding") : nullptr;
        return found == nullptr ? -1 : found->intValue();
    }
    /// The rendered form shows text and attributes at once.
    static std::string rendered(std::string_view html) {
        return htmlFromAttributedString(attributed(html));
    }
};

#define TAV_NEEDS_A_BROWSERS_READER()                                                              \
    if (!readsAsBrowsers()) {                                                                      \
        GTEST_SKIP() << "the plain importer builds no tree";                                       \
    }

TEST_P(Importers, MarkupGoes) {
    EXPECT_EQ(text("<b>x</b>"), "x");
    EXPECT_EQ(text(""), "");
    EXPECT_EQ(text("x"), "x");
    EXPECT_EQ(text("<html><head></head><body><p>x</p></body></html>"), "x");
    EXPECT_EQ(text("<unknown>x</unknown>"), "x");
}

TEST_P(Importers, BlankSpaceCollapses) {
    EXPECT_EQ(text("  a \n\t b  "), "a b");
    EXPECT_EQ(text("a <b> b</b> c"), "a b c");
    EXPECT_EQ(text("a<b> </b>b"), "a b");
    EXPECT_EQ(text("<p> a </p> <p> b </p>"), "a\nb");
    EXPECT_EQ(text("a <br> b"), "a\nb");
}

TEST_P(Importers, NoBreakSpacesStay) {
    EXPECT_EQ(text("a&nbsp; &nbsp;b"), "a\u00a0 \u00a0b");
    EXPECT_EQ(text("&nbsp;"), "\u00a0");
}

TEST_P(Importers, PreKeepsItsBlankSpace) {
    EXPECT_EQ(text("x<pre>\n a  b\n c</pre>y"), "x\n a  b\n c\ny");
    EXPECT_EQ(text("<pre>a\n</pre>b"), "a\nb");
    EXPECT_EQ(text("<textarea>\n a  b</textarea>"), " a  b");
    EXPECT_EQ(text("<textarea>a<b>&amp;</textarea>b"), "a<b>&b");
    EXPECT_EQ(text("<pre>a\r\nb\rc</pre>"), "a\nb\nc");
    EXPECT_EQ(text("<pre><b> x </b></pre>"), " x ");
}

TEST_P(Importers, BrIsALineFeed) {
    EXPECT_EQ(text("a<br>b"), "a\nb");
    EXPECT_EQ(text("a<br/><br />b"), "a\n\nb");
    EXPECT_EQ(text("a</br>b"), "a\nb");
    EXPECT_EQ(text("a<br>"), "a\n");
    EXPECT_EQ(text("<p>a<br></p><p>b</p>"), "a\nb");
    EXPECT_EQ(text("<p>a</p><br>b"), "a\n\nb");
}

TEST_P(Importers, BlocksEndLines) {
    EXPECT_EQ(text("<p>a</p><p>b</p>"), "a\nb");
    EXPECT_EQ(text("<p>a<p>b"), "a\nb");
    EXPECT_EQ(text("a<div>b</div>c"), "a\nb\nc");
    EXPECT_EQ(text("<div><div><p>a</p></div></div><div>b</div>"), "a\nb");
    EXPECT_EQ(text("<h1>a</h1>b"), "a\nb");
    EXPECT_EQ(text("a<hr>b"), "a\nb");
    EXPECT_EQ(text("<p></p><p>a</p><p></p>"), "a");
    EXPECT_EQ(text("<blockquote>a</blockquote><address>b</address>"), "a\nb");
    EXPECT_EQ(text("<dl><dt>a<dd>b</dl>"), "a\nb");
}

TEST_P(Importers, ListItemsAreLines) {
    EXPECT_EQ(text("<ul><li>a</li><li>b</li></ul>c"), "a\nb\nc");
    EXPECT_EQ(text("<ol><li>a<li>b<ul><li>c</ul></ol>"), "a\nb\nc");
}

TEST_P(Importers, CellsStandApartByTabs) {
    EXPECT_EQ(text("<table><tr><th>a</th><td>b</td></tr> <tr><td>c<td>d</table>e"),
              "a\tb\nc\td\ne");
    EXPECT_EQ(text("x<table><tr><td></td><td>b</td></tr></table>"), "x\n\tb");
    EXPECT_EQ(text("<table><tr><td><p>a</p></td><td><p>b</p></td></tr></table>"), "a\tb");
    EXPECT_EQ(text("<table><tr><td>a</td><td></td></tr><tr><td>b</td></tr></table>"), "a\nb");
    EXPECT_EQ(text("<table><tr><td>a<td></table>x"), "a\nx");
    // A table inside a cell begins lines of its own.
    EXPECT_EQ(text("<table><tr><td>a<td><table><tr><td>b</table><td>c</table>d"), "a\nb\nc\nd");
    EXPECT_EQ(text("<table><tr><td>a<br></td><td>b</td></tr></table>"), "a\n\tb");
}

TEST_P(Importers, WhatIsNotShownGoes) {
    EXPECT_EQ(text("a<script>if (a<b) { x(\"</b>\"); }</script>b"), "ab");
    EXPECT_EQ(text("a<style>p { color: red }</style>b"), "ab");
    EXPECT_EQ(text("<head><title>t</title><style>s</style></head>a"), "a");
    EXPECT_EQ(text("a<template>b<p>c</p><template>d</template>e</template>f"), "af");
    EXPECT_EQ(text("a<iframe>b</iframe>c<noframes>d</noframes>e"), "ace");
    EXPECT_EQ(text("<!DOCTYPE html><?php echo ?>a"), "a");
    EXPECT_EQ(text("<script>never ended"), "");
    EXPECT_EQ(text("a<SCRIPT>x</script >b<script/>c</Script>d"), "abd");
}

TEST_P(Importers, ScriptsDoNotRunSoNoscriptIsShown) {
    EXPECT_EQ(text("<body>a<noscript><b>b</b></noscript>c"), "abc");
}

TEST_P(Importers, CommentsGo) {
    EXPECT_EQ(text("a<!-- b -->c"), "ac");
    EXPECT_EQ(text("a<!-- <b> -- > -->c"), "ac");
    EXPECT_EQ(text("a<!-->b<!--->c<!---->d"), "abcd");
    EXPECT_EQ(text("a<!-- b --!>c"), "ac");
    EXPECT_EQ(text("a<!-- b --->c"), "ac");
    EXPECT_EQ(text("a<!-- never ended"), "a");
    EXPECT_EQ(text("a<!x>b</ y>c"), "abc");
    EXPECT_EQ(text("a<![CDATA[x]]>b"), "ab");
}

TEST_P(Importers, TagsAreCutAsBrowsersDo) {
    EXPECT_EQ(text("<i title=\"a>b\" data='<c>'>x</i>"), "x");
    EXPECT_EQ(text("<i title=a\"b>x</i>"), "x");
    EXPECT_EQ(text("<i a = 'b>c'd=>x</i>"), "x");
    EXPECT_EQ(text("1 < 2 <3 <= 4 >"), "1 < 2 <3 <= 4 >");
    EXPECT_EQ(text("a<"), "a<");
    EXPECT_EQ(text("a</"), "a</");
    EXPECT_EQ(text("a</>b"), "ab");
    EXPECT_EQ(text("a<b"), "a");
    EXPECT_EQ(text("a<b title=\"x>y"), "a");
    EXPECT_EQ(text("<i/ / =x / >y</i>"), "y");
}

TEST_P(Importers, CharacterReferences) {
    EXPECT_EQ(text("&lt;b&gt; &amp;&quot;&apos;"), "<b> &\"'");
    EXPECT_EQ(text("&#65;&#x42;&#X43;&#68"), "ABCD");
    EXPECT_EQ(text("&copy;&reg;&eacute;&yuml;&euro;&mdash;"),
              "\u00a9\u00ae\u00e9\u00ff\u20ac\u2014");
    EXPECT_EQ(text("&Eacute; &AMP &frac12"), "\u00c9 & \u00bd");
    EXPECT_EQ(text("& &; &# &#; &#x; &unknown; &euro"), "& &; &# &#; &#x; &unknown; &euro");
    EXPECT_EQ(text("a&"), "a&");
    EXPECT_EQ(text("a&#"), "a&#");
    EXPECT_EQ(text("a&#x"), "a&#x");
}

TEST_P(Importers, CharacterReferencesWithoutSemicolon) {
    EXPECT_EQ(text("&copy 2009"), "\u00a9 2009");
    EXPECT_EQ(text("&copyx &notit; &ampamp;"), "\u00a9x \u00acit; &amp;");
}

TEST_P(Importers, NumbersOutOfRange) {
    EXPECT_EQ(text("&#128;&#150;&#159;"), "\u20ac\u2013\u0178");
    EXPECT_EQ(text("&#0;&#xD800;&#x110000;&#99999999999999999999;"), "\uFFFD\uFFFD\uFFFD\uFFFD");
    EXPECT_EQ(text("&#x10FFFF;"), "\U0010FFFF");
}

TEST_P(Importers, NumbersFarOutOfRangeLeaveTheTextWellFormed) {
    const std::string html = "abcd&#xEEEEEEEEEEEEEEE;<title>&#xEEEEEEEEEEEEEEE;</title>"
                             "<a href=\"&#xEEEEEEEEEEEEEEE;\">x</a>";
    const AttributedString imported = attributed(html);
    EXPECT_EQ(imported.string(), "abcd\uFFFDx");
    EXPECT_TRUE(isValidUTF8(title("<title>&#xEEEEEEEEEEEEEEE;</title>")));
    const Attribute* link = imported.attributeAt(NSLinkAttributeName, imported.length() - 1);
    ASSERT_NE(link, nullptr);
    EXPECT_TRUE(isValidUTF8(*std::get<Value>(*link).asString()));
}

TEST_P(Importers, NulAndInvalidBytes) {
    EXPECT_EQ(text("abcdefgh\0ijklmnop"s), "abcdefghijklmnop");
    EXPECT_EQ(text("\xEF\xBB\xBF"
                   "a\xFF"
                   "b"),
              "a\uFFFDb");
    EXPECT_EQ(text("<xmp>a\0&amp;\r\nb</xmp>c"s), "a\uFFFD&amp;\nb\nc");
    EXPECT_EQ(text("abcdefghij<plaintext>k\0</plaintext>"s), "abcdefghij\nk\uFFFD</plaintext>");
    EXPECT_TRUE(isValidUTF8(text("<meta charset=utf-8>\xC3<b>\xE2\x82</b>")));
}

TEST_P(Importers, Encodings) {
    EXPECT_EQ(text("\u00e9\u20ac"), "\u00e9\u20ac");
    EXPECT_EQ(encoding("\u00e9"), 4);
    EXPECT_EQ(text("\xE9\x80"), "\u00e9\u20ac");
    EXPECT_EQ(encoding("\xE9"), 12);
    EXPECT_EQ(text("<meta charset=\"KOI8-R\">\xC1"), "\u0430");
    EXPECT_EQ(text("<meta http-equiv=Content-Type content='text/html; charset=iso-8859-2'>\xB1"),
              "\u0105");
    EXPECT_EQ(encoding("<meta charset=iso-8859-2>"), 9);
    EXPECT_EQ(encoding("<meta charset=macintosh>\x8E"), 30);
    EXPECT_EQ(text("<meta charset=macintosh>\x8E"), "\u00e9");
    // What says Latin-1 means Windows, and bytes that were read are not UTF-16.
    EXPECT_EQ(text("<meta charset=iso-8859-1>\x80"), "\u20ac");
    EXPECT_EQ(text("<meta charset=utf-16>\u00e9"), "\u00e9");
    // Markup hidden in UTF-7 is not found.
    EXPECT_EQ(text("<meta charset=utf-7>+ADw-b+AD4-"), "+ADw-b+AD4-");
    EXPECT_EQ(text("<meta charset=nonsense>\xE9"), "\u00e9");
    // A mark says more than the document.
    EXPECT_EQ(text("\xEF\xBB\xBF<meta charset=koi8-r>\u00e9"), "\u00e9");
    // A comment declares nothing.
    EXPECT_EQ(text("<!-- <meta charset=koi8-r> -->\u00e9"), "\u00e9");
    EXPECT_EQ(text("<meta charset=shift_jis>\x83\x65"), "\u30c6");
    EXPECT_EQ(text("<meta charset=big5>\xA4\xA4"), "\u4e2d");
}

TEST_P(Importers, UnicodeWithAndWithoutMark) {
    EXPECT_EQ(text("\xFF\xFE<\0b\0>\0\xE9\0"s), "\u00e9");
    EXPECT_EQ(text("\xFE\xFF\0<\0b\0>\0\xE9"s), "\u00e9");
    EXPECT_EQ(text("<\0b\0>\0\xAC\x20"s), "\u20ac");
    EXPECT_EQ(text("\0<\0b\0>\x20\xAC"s), "\u20ac");
    EXPECT_EQ(encoding("\xFF\xFE"), 10);
    EXPECT_EQ(encoding("x\0y\0"s), 10);
    // A pair, a lone half, an odd last byte.
    EXPECT_EQ(text("\xFF\xFE\x3D\xD8\x00\xDE"s), "\U0001F600");
    EXPECT_EQ(text("\xFF\xFE\x3D\xD8x\0"s), "\uFFFDx");
    EXPECT_EQ(text("\xFF\xFEx\0y"s), "x\uFFFD");
    EXPECT_EQ(text("\xFF\xFE\x80\xDCx\0"s), "\uFFFDx");
}

TEST_P(Importers, PairsSurviveTheEndsOfBuffers) {
    for (std::size_t before = 16380; before < 16390; ++before) {
        std::string bytes = "\xFF\xFE";
        std::string expected;
        for (std::size_t i = 0; i < before; ++i) {
            bytes += "x\0"s;
            expected += 'x';
        }
        bytes += "\x3D\xD8\x00\xDE"s;
        expected += "\U0001F600";
        ASSERT_EQ(text(bytes), expected);
    }
}

TEST_P(Importers, TheTitleIsAnAttributeOfTheDocument) {
    EXPECT_EQ(title("<title> A &amp;\n B </title>x"), "A & B");
    EXPECT_EQ(title("<head><title>a</title></head><body><title>b</title>"), "a");
    EXPECT_EQ(title("<title></title>x"), "none");
    EXPECT_EQ(title("x"), "none");
}

TEST_P(Importers, StylesBecomeAttributes) {
    EXPECT_EQ(rendered("a<b>b</b>c<strong>d</strong>"), "a<b>b</b>c<b>d</b>");
    EXPECT_EQ(rendered("<i>a</i><em>b</em>c"), "<i>ab</i>c");
    EXPECT_EQ(rendered("<u>a</u><ins>b</ins>"), "<u>ab</u>");
    EXPECT_EQ(rendered("<b>a<i>b</i></b><i>c</i>"), "<b>a</b><b><i>b</i></b><i>c</i>");
    EXPECT_EQ(rendered("<b><b>a</b>b</b>c"), "<b>ab</b>c");
    EXPECT_EQ(rendered("<h1>a</h1>b"), "<b>a</b><br>b");
    EXPECT_EQ(rendered("<b>a </b>b"), "<b>a </b>b");
}

TEST_P(Importers, AnchorsBecomeLinks) {
    const AttributedString imported =
        attributed("a<a href=\"http://example.net/\">b <b>c</b></a>d<a name=x>e</a>");
    EXPECT_EQ(imported.string(), "ab cde");
    AttributedString::Range range;
    const Attribute* link = imported.attributeAt(NSLinkAttributeName, 1, &range);
    ASSERT_NE(link, nullptr);
    EXPECT_EQ(*link, Attribute(Value(blueLink)));
    EXPECT_EQ(range, (AttributedString::Range{1, 3}));
    EXPECT_EQ(imported.attributeAt(NSLinkAttributeName, 0), nullptr);
    EXPECT_EQ(imported.attributeAt(NSLinkAttributeName, 5), nullptr);
}

TEST_P(Importers, LinksAreDecoded) {
    EXPECT_EQ(rendered("<a HREF='?a=1&amp;b&copy=2&copy;'>x</a>"),
              "<a href=\"?a=1&amp;b&amp;copy=2\u00a9\">x</a>");
    EXPECT_EQ(rendered("<a href=one href=two>x</a>"), "<a href=\"one\">x</a>");
    EXPECT_EQ(rendered("<a href=\"\">x</a>"), "x");
    EXPECT_EQ(rendered("<a href=1>x</a><a href=2>y</a>"), "<a href=\"1\">x</a><a href=\"2\">y</a>");
}

TEST_P(Importers, RenderedTextIsReadAsItWas) {
    for (const std::string_view html :
         {"a<b>b<i>c</i></b> <u>d</u>", "<p>a</p><p>b</p>", "<a href=x>y</a>&lt;&amp;"}) {
        const AttributedString once = attributed(html);
        EXPECT_EQ(attributed(htmlFromAttributedString(once)), once) << html;
    }
}

TEST_P(Importers, TheTreeIsMadeAsBrowsersDo) {
    TAV_NEEDS_A_BROWSERS_READER();
    // Misplaced in a table: before it.
    EXPECT_EQ(text("<table><tr><td>a</td></tr>b</table>"), "b\na");
    // Closed in the wrong order: opened again.
    EXPECT_EQ(rendered("<b>a<i>b</b>c</i>"), "<b>a</b><b><i>b</i></b><i>c</i>");
    EXPECT_EQ(rendered("<p><b>a</p><p>b"), "<b>a</b><br><b>b</b>");
    // The names of everything.
    EXPECT_EQ(text("&bigstar;&NotEqualTilde;"), "\u2605\u2242\u0338");
    // A CDATA section is one in foreign content.
    EXPECT_EQ(text("<svg><text><![CDATA[a<b]]></text></svg>"), "a<b");
    EXPECT_EQ(text("<frameset><frame>x</frameset>"), "");
}

std::string repeated(std::string_view piece, std::size_t count) {
    std::string text;
    text.reserve(piece.size() * count);
    for (std::size_t i = 0; i < count; ++i) {
        text += piece;
    }
    return text;
}

TEST_P(Importers, DeepDocumentsKeepTheirText) {
    for (const std::size_t depth : {1000U, 1999U, 2001U, 20000U, 200000U}) {
        const std::string html = repeated("<div>", depth) + "x" + repeated("</div>", depth) + "y";
        ASSERT_EQ(text(html), "x\ny") << depth;
    }
}

TEST_P(Importers, DeepFormattingKeepsItsText) {
    EXPECT_EQ(text(repeated("<b>", 100000) + "x"), "x");
    EXPECT_EQ(text(repeated("<i><p>", 50000) + "x"), "x");
    EXPECT_EQ(text(repeated("<a href=x>", 100000) + "x"), "x");
}

TEST_P(Importers, FormattingThatIsOpenedAgainAndAgainEnds) {
    std::string html;
    for (int i = 0; i < 20000; ++i) {
        html += "<div><b class=" + std::to_string(i) + "></div>x";
    }
    EXPECT_FALSE(text(html).empty());
    html.clear();
    for (int i = 0; i < 1900; ++i) {
        html += "<font size=" + std::to_string(i) + ">";
    }
    EXPECT_FALSE(text(html + repeated("<p>x", 200000)).empty());
}

TEST_P(Importers, ManyAttributesEnd) {
    std::string tag = "<b";
    for (int i = 0; i < 200000; ++i) {
        tag += " a" + std::to_string(i) + "=1";
    }
    EXPECT_EQ(text(tag + ">x</b>"), "x");
    std::string bodies;
    for (int i = 0; i < 100000; ++i) {
        bodies += "<body a" + std::to_string(i) + "=1>";
    }
    EXPECT_EQ(text(bodies + "x"), "x");
}

TEST_P(Importers, MisplacedContentEnds) {
    EXPECT_FALSE(text(repeated("<br>", 200000) + "<table>" + repeated("<br>x", 200000)).empty());
    EXPECT_FALSE(text(repeated("<table><b>x", 100000)).empty());
    EXPECT_FALSE(text(repeated("<b></p>x</b><i>", 100000)).empty());
    EXPECT_FALSE(text(repeated("<div><object></div>x", 100000)).empty());
    EXPECT_FALSE(text(repeated("<a><table><a>x", 50000)).empty());
    static_cast<void>(text(repeated("<select><option>x<optgroup>", 100000)));
}

TEST_P(Importers, MegabytesOfJunkEnd) {
    const std::size_t size = 2'000'000;
    EXPECT_EQ(text(repeated("<", size)).size(), size);
    EXPECT_EQ(text(repeated("&", size)).size(), size);
    EXPECT_EQ(text(repeated("x ", size / 2)).size(), size - 1);
    EXPECT_EQ(text(repeated(" ", size)), "");
    static_cast<void>(text(repeated("&a", size / 2)));
    static_cast<void>(text(repeated("<p>", size / 3)));
    static_cast<void>(text(repeated("</p>", size / 4)));
    static_cast<void>(text(repeated("<!--", size / 4)));
    static_cast<void>(text(repeated("<script>", size / 8)));
    static_cast<void>(text(repeated("<a href=\"", size / 9)));
    static_cast<void>(text(std::string(size, '\0')));
    static_cast<void>(text(std::string(size, '\xFF')));
    static_cast<void>(text("<title>" + repeated("</titl ", size / 7)));
    std::string noise(size, '\0');
    std::uint64_t state = 1;
    constexpr std::string_view alphabet = "<>/!-= \"'&;#abpit\n";
    for (char& c : noise) {
        state = state * 6364136223846793005U + 1442695040888963407U;
        c = alphabet[(state >> 33) % alphabet.size()];
    }
    EXPECT_TRUE(isValidUTF8(text(noise)));
}

INSTANTIATE_TEST_SUITE_P(Html, Importers, testing::Values("real", "plain"),
                         [](const auto& each) { return std::string(each.param); });

} // namespace
} // namespace tav
