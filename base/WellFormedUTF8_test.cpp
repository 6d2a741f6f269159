#include "base/WellFormedUTF8.hpp"

#include <gtest/gtest.h>

namespace tav {
namespace {

TEST(WellFormedUTF8, WhatIsWellFormedStays) {
    EXPECT_EQ(wellFormedUTF8(""), "");
    EXPECT_EQ(wellFormedUTF8("a\u00e9\u20ac\U0001F600"), "a\u00e9\u20ac\U0001F600");
}

TEST(WellFormedUTF8, EachOtherByteIsAReplacementCharacter) {
    EXPECT_EQ(wellFormedUTF8("a\xFF\xC3"), "a\uFFFD\uFFFD");
    EXPECT_EQ(wellFormedUTF8("\xE2\x82z"), "\uFFFD\uFFFDz");
    EXPECT_EQ(wellFormedUTF8("\xED\xA0\x80"), "\uFFFD\uFFFD\uFFFD");
    EXPECT_EQ(wellFormedUTF8("\xC0\x80\u00e9"), "\uFFFD\uFFFD\u00e9");
}

} // namespace
} // namespace tav
