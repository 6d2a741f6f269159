#include "base/SipHash.hpp"

#include <string>

#include <gtest/gtest.h>

namespace tav {
namespace {

std::string counting(std::size_t size) {
    std::string text;
    for (std::size_t i = 0; i < size; ++i) {
        text += char(i);
    }
    return text;
}

TEST(SipHash, EveryByteTheLengthAndTheKeyCount) {
    const SipHashKey key{0x0706050403020100U, 0x0f0e0d0c0b0a0908U};
    for (std::size_t size = 0; size < 40; ++size) {
        const std::string text = counting(size);
        const std::uint64_t hash = sipHash13(text, key);
        EXPECT_EQ(hash, sipHash13(std::string(text), key));
        EXPECT_NE(hash, sipHash13(text + '\0', key));
        EXPECT_NE(hash, sipHash13(text, {key.first ^ 1, key.second}));
        EXPECT_NE(hash, sipHash13(text, {key.first, key.second ^ 1}));
        for (std::size_t i = 0; i < size; ++i) {
            std::string other = text;
            other[i] = char(other[i] ^ 0x10);
            EXPECT_NE(hash, sipHash13(other, key)) << size << ' ' << i;
        }
    }
}

TEST(SipHash, KnownAnswers) {
    EXPECT_EQ(sipHash13("a", {}), 0x407448d2b89b1813U);
    EXPECT_EQ(sipHash13("1234567", {}), 0xa33d651594fdae81U);
    EXPECT_EQ(sipHash13("12345678", {}), 0x3489982430560a87U);
    EXPECT_EQ(sipHash13("The quick brown fox jumps over the lazy dog", {}), 0x8df676d3d00c451eU);
}

TEST(SipHash, TheProcessKeyStays) {
    const SipHashKey key = processSipHashKey();
    EXPECT_EQ(key.first, processSipHashKey().first);
    EXPECT_EQ(key.second, processSipHashKey().second);
    EXPECT_NE(key.second, 0U);
}

} // namespace
} // namespace tav
