#include "base/PercentEncoding.hpp"

#include <gtest/gtest.h>

namespace tav {
namespace {

TEST(PercentEncoding, KeepsLettersDigitsAndWhatItIsTold) {
    EXPECT_EQ(percentEncoded("azAZ09", ""), "azAZ09");
    EXPECT_EQ(percentEncoded("a/b?", "/"), "a/b%3F");
    EXPECT_EQ(percentEncoded("@[`{/:", ""), "%40%5B%60%7B%2F%3A");
    EXPECT_EQ(percentEncoded("é\xFF", ""), "%C3%A9%FF");
    EXPECT_EQ(percentEncoded(std::string_view("\0 ", 2), ""), "%00%20");
    EXPECT_EQ(percentEncoded("", "/"), "");
}

TEST(PercentEncoding, DecodesWholeEscapesOnly) {
    EXPECT_EQ(percentDecoded("a%20b%C3%a9"), "a bé");
    EXPECT_EQ(percentDecoded("%00%fF"), std::string("\0\xFF", 2));
    EXPECT_EQ(percentDecoded("%2520"), "%20");
    EXPECT_EQ(percentDecoded(""), "");
    for (const char* text : {"%", "a%4", "%zz", "%4g", "%g4", "%%41", "% 41"}) {
        EXPECT_EQ(percentDecoded(text), std::nullopt) << text;
    }
}

TEST(PercentEncoding, EveryByteComesBack) {
    std::string bytes;
    for (int byte = 0; byte < 256; ++byte) {
        bytes += static_cast<char>(byte);
    }
    EXPECT_EQ(percentDecoded(percentEncoded(bytes, "")), bytes);
    EXPECT_EQ(percentDecoded(percentEncoded(bytes, "/:@")), bytes);
}

} // namespace
} // namespace tav
