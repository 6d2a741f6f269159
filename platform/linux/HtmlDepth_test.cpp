#include "platform/linux/HtmlDepth.hpp"

#include <string>

#include <gtest/gtest.h>

namespace tav::internal {
namespace {

std::size_t depth(std::string_view html) { return htmlDepthBound(html, 1000); }

std::string repeated(std::string_view piece, int count) {
    std::string text;
    for (int i = 0; i < count; ++i) {
        text += piece;
    }
    return text;
}

TEST(HtmlDepth, CountsWhatIsOpenAtOnce) {
    EXPECT_EQ(depth(""), 0U);
    EXPECT_EQ(depth("x"), 0U);
    EXPECT_EQ(depth("<div>x</div><div>y</div>"), 1U);
    EXPECT_EQ(depth("<div><p><b>x</b></p></div>"), 3U);
    EXPECT_EQ(depth("<br><img><hr>"), 0U);
}

TEST(HtmlDepth, EndTagsThatMayBeLeftOutDoNotAddUp) {
    EXPECT_EQ(depth(repeated("<p>x", 50)), 1U);
    EXPECT_EQ(depth("<ul>" + repeated("<li><p>x", 50)), 3U);
    EXPECT_EQ(depth("<table>" + repeated("<tr><th>x<td><p>y", 50)), 4U);
    EXPECT_EQ(depth("<dl>" + repeated("<dt>x<dd>y", 50)), 2U);
    EXPECT_EQ(depth("<select>" + repeated("<optgroup><option>x<option>y", 50)), 3U);
}

TEST(HtmlDepth, WhatIsNoTagDoesNotCount) {
    EXPECT_EQ(depth("<!-- <div><div> --><script>'<div>'</script>"), 0U);
    EXPECT_EQ(depth("<i title='<b><b>'>"), 1U);
}

TEST(HtmlDepth, EndTagsInPlacesThatDeceiveCloseNothing) {
    EXPECT_EQ(depth(repeated("<div><!-- </div> -->", 50)), 50U);
    EXPECT_EQ(depth(repeated("<div><object></div>", 50)), 100U);
    EXPECT_EQ(depth(repeated("<span><div></span>", 50)), 100U);
    EXPECT_EQ(depth(repeated("<div><script></div></script>", 50)), 50U);
}

TEST(HtmlDepth, FormattingOutlivesTheElementsAroundIt) {
    EXPECT_EQ(depth(repeated("<div><b></div>", 50)), 51U);
    EXPECT_EQ(depth(repeated("<div><b></b></div>", 50)), 2U);
    EXPECT_EQ(depth(repeated("<b><i></b></i>", 50)), 2U);
}

TEST(HtmlDepth, ReadingEndsAboveTheLimit) {
    EXPECT_EQ(htmlDepthBound(repeated("<div>", 5000), 1000), 1001U);
    EXPECT_EQ(htmlDepthBound(repeated("<div>", 1000), 1000), 1000U);
}

} // namespace
} // namespace tav::internal
