#include "platform/memory/MemoryPreferences.hpp"

#include <cerrno>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace tav {
namespace {

TEST(MemoryPreferences, AStoredValueGoesBeforeADefault) {
    MemoryPreferences preferences;
    EXPECT_EQ(preferences.value("a"), std::nullopt);
    preferences.registerDefaults({{"a", 1}, {"b", 2}});
    preferences.registerDefaults({{"b", 3}});
    EXPECT_EQ(preferences.value("a"), Value(1));
    EXPECT_EQ(preferences.value("b"), Value(3));
    EXPECT_TRUE(preferences.setValue("a", "text").isNone());
    EXPECT_EQ(preferences.value("a"), Value("text"));
    EXPECT_TRUE(preferences.removeValue("a").isNone());
    EXPECT_EQ(preferences.value("a"), Value(1));
    EXPECT_TRUE(preferences.stored().empty());
}

TEST(MemoryPreferences, BoolValueIsTheTruthOfTheValue) {
    MemoryPreferences preferences;
    EXPECT_FALSE(preferences.boolValue("a"));
    preferences.registerDefaults({{"a", true}, {"b", "YES"}, {"c", 0}, {"d", Value::Array{1}}});
    EXPECT_TRUE(preferences.boolValue("a"));
    EXPECT_TRUE(preferences.boolValue("b"));
    EXPECT_FALSE(preferences.boolValue("c"));
    EXPECT_FALSE(preferences.boolValue("d"));
}

TEST(MemoryPreferences, AChangeThatIsNotStoredHoldsAndIsStoredWithTheNext) {
    MemoryPreferences preferences;
    const Preferences::Replacement replacement(preferences);
    EXPECT_TRUE(Preferences::current().setValue("a", 1).isNone());
    preferences.failStoring(EROFS);
    EXPECT_EQ(Preferences::current().setValue("a", 2), SystemError(EROFS));
    EXPECT_EQ(Preferences::current().setValue("b", 3), SystemError(EROFS));
    EXPECT_EQ(Preferences::current().value("a"), Value(2));
    EXPECT_EQ(preferences.stored(), (Value::Dictionary{{"a", 1}}));
    EXPECT_EQ(Preferences::current().removeValue("a"), SystemError(EROFS));
    EXPECT_EQ(Preferences::current().value("a"), std::nullopt);
    preferences.failStoring(0);
    EXPECT_TRUE(Preferences::current().setValue("c", 4).isNone());
    EXPECT_EQ(preferences.stored(), (Value::Dictionary{{"b", 3}, {"c", 4}}));
}

TEST(MemoryPreferences, AnyThreadMayAskAndChange) {
    MemoryPreferences preferences;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&, thread] {
            const std::string key = "key" + std::to_string(thread);
            for (int round = 0; round < 200; ++round) {
                EXPECT_TRUE(preferences.setValue(key, round).isNone());
                EXPECT_EQ(preferences.value(key), Value(round));
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(preferences.stored().size(), 4U);
}

} // namespace
} // namespace tav
