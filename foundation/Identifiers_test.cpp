#include "foundation/Identifiers.hpp"

#include <algorithm>
#include <regex>
#include <set>
#include <string>

#include <gtest/gtest.h>

namespace tav {
namespace {

TEST(Identifiers, AreRandomUUIDs) {
    const std::regex form("[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}");
    std::set<std::string> seen;
    for (int count = 0; count < 500; ++count) {
        const std::string uuid = stringWithNewUUID();
        EXPECT_TRUE(std::regex_match(uuid, form)) << uuid;
        EXPECT_TRUE(seen.insert(uuid).second) << uuid;
        const auto other = uuidAsString();
        ASSERT_TRUE(other.has_value());
        EXPECT_TRUE(std::regex_match(*other, form)) << *other;
        EXPECT_TRUE(seen.insert(*other).second) << *other;
    }
}

TEST(Identifiers, HoldTheBytesInOrder) {
    const auto rising = [](std::span<unsigned char> bytes) {
        unsigned char next = 0xF0;
        std::generate(bytes.begin(), bytes.end(), [&] { return next++; });
        return true;
    };
    EXPECT_EQ(internal::uuidFrom(rising), "F0F1F2F3-F4F5-46F7-B8F9-FAFBFCFDFEFF");
    const auto zeros = [](std::span<unsigned char>) { return true; };
    EXPECT_EQ(internal::uuidFrom(zeros), "00000000-0000-4000-8000-000000000000");
}

TEST(Identifiers, NothingWithoutRandomNumbers) {
    EXPECT_EQ(internal::uuidFrom([](std::span<unsigned char>) { return false; }), std::nullopt);
}

} // namespace
} // namespace tav
