#include "base/Base64.hpp"

#include <random>

#include <gtest/gtest.h>

namespace tav {
namespace {

TEST(Base64, WritesPaddedGroups) {
    EXPECT_EQ(base64FromData({}), "");
    EXPECT_EQ(base64FromData(bytesOf("f")), "Zg==");
    EXPECT_EQ(base64FromData(bytesOf("fo")), "Zm8=");
    EXPECT_EQ(base64FromData(bytesOf("foo")), "Zm9v");
    EXPECT_EQ(base64FromData(bytesOf("\xFB\xEF\xFF")), "++//");
}

TEST(Base64, ReadsWithWhiteSpaceAndWithoutPadding) {
    EXPECT_EQ(dataFromBase64(""), Data());
    EXPECT_EQ(dataFromBase64(" \n\t"), Data());
    EXPECT_EQ(dataFromBase64("Z\tm9\n v"), dataFromText("foo"));
    EXPECT_EQ(dataFromBase64("Zm8"), dataFromText("fo"));
    EXPECT_EQ(dataFromBase64("Zg = =\n"), dataFromText("f"));
}

TEST(Base64, RefusesWhatIsNone) {
    for (const char* wrong : {"Z", "Zm9vZ", "Zg==Zg==", "Zm9v=", "Zm9v==", "Zg=", "Zg===", "=",
                              "Z===", "Zm-v", "Zm9v*", "Zm9\xC3"}) {
        EXPECT_EQ(dataFromBase64(wrong), std::nullopt) << wrong;
    }
}

TEST(Base64, EveryLengthComesBack) {
    std::mt19937 random(3);
    for (std::size_t size = 0; size < 200; ++size) {
        Data data(size);
        for (std::byte& byte : data) {
            byte = std::byte(random() & 255);
        }
        EXPECT_EQ(dataFromBase64(base64FromData(data)), data) << size;
    }
}

} // namespace
} // namespace tav
