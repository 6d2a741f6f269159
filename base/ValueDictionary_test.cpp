#include "base/Value.hpp"

#include <cstdint>
#include <map>
#include <random>
#include <string>

#include <gtest/gtest.h>

namespace tav {
namespace {

using Dictionary = Value::Dictionary;

std::string keysOf(const Dictionary& dictionary) {
    std::string keys;
    for (const auto& [key, value] : dictionary) {
        keys += key + ' ';
    }
    return keys;
}

TEST(ValueDictionary, KeepsTheOrderOfEntering) {
    Dictionary dictionary{{"b", 1}, {"a", 2}, {"B", 3}};
    EXPECT_EQ(keysOf(dictionary), "b a B ");
    dictionary.set("b", 4);
    dictionary.set("c", 5);
    EXPECT_EQ(keysOf(dictionary), "b a B c ");
    EXPECT_EQ(dictionary.size(), 4U);
    EXPECT_EQ(*dictionary.find("b"), Value(4));
    std::string sorted;
    for (const Dictionary::Entry* entry : dictionary.sorted()) {
        sorted += entry->first;
    }
    EXPECT_EQ(sorted, "Babc");
}

TEST(ValueDictionary, SortsByUnsignedBytes) {
    const Dictionary dictionary{{"\xC3\xA9", 1}, {"z", 2}, {std::string("\0", 1), 3}, {"", 4}};
    EXPECT_EQ(dictionary.sorted().front()->first, "");
    EXPECT_EQ(dictionary.sorted().back()->first, "\xC3\xA9");
}

TEST(ValueDictionary, FindsAndRemoves) {
    Dictionary dictionary{{"a", "text"}, {"", 2}};
    EXPECT_FALSE(dictionary.empty());
    EXPECT_EQ(*dictionary.findString("a"), "text");
    EXPECT_EQ(dictionary.findString(""), nullptr);
    EXPECT_EQ(dictionary.findString("none"), nullptr);
    EXPECT_EQ(*dictionary.find(""), Value(2));
    EXPECT_EQ(dictionary.find("none"), nullptr);
    EXPECT_TRUE(dictionary.remove("a"));
    EXPECT_FALSE(dictionary.remove("a"));
    EXPECT_EQ(dictionary.find("a"), nullptr);
    EXPECT_EQ(dictionary.size(), 1U);
}

TEST(ValueDictionary, AValueMayComeFromTheSameDictionary) {
    Dictionary dictionary;
    for (int i = 0; i < 100; ++i) {
        dictionary.set("key" + std::to_string(i), std::string(40, 'x'));
    }
    for (int i = 0; i < 1000; ++i) {
        dictionary.set("copy" + std::to_string(i), *dictionary.find("key7"));
    }
    EXPECT_EQ(*dictionary.findString("copy999"), std::string(40, 'x'));
}

TEST(ValueDictionary, EqualityIsWithoutOrder) {
    EXPECT_EQ((Dictionary{{"a", 1}, {"b", 2}}), (Dictionary{{"b", 2.0}, {"a", 1}}));
    EXPECT_NE((Dictionary{{"a", 1}}), (Dictionary{{"a", 2}}));
    EXPECT_NE((Dictionary{{"a", 1}}), (Dictionary{{"b", 1}}));
    EXPECT_NE((Dictionary{{"a", 1}}), (Dictionary{{"a", 1}, {"b", 1}}));
}

TEST(ValueDictionary, AgreesWithAMapWhateverItsSize) {
    std::mt19937 random(1);
    Dictionary dictionary;
    std::map<std::string, int> model;
    for (int step = 0; step < 4000; ++step) {
        const std::string key = "k" + std::to_string(random() % 60);
        if (random() % 3 == 0) {
            EXPECT_EQ(dictionary.remove(key), model.erase(key) == 1);
        } else {
            dictionary.set(key, step);
            model[key] = step;
        }
        ASSERT_EQ(dictionary.size(), model.size());
        const std::string probe = "k" + std::to_string(random() % 60);
        const Value* found = dictionary.find(probe);
        ASSERT_EQ(found != nullptr, model.count(probe) == 1);
        if (found != nullptr) {
            ASSERT_EQ(*found, Value(model[probe]));
        }
    }
}

TEST(ValueDictionary, ALargeOneIsCopiedAndMovedWithItsIndex) {
    Dictionary dictionary;
    for (int i = 0; i < 200000; ++i) {
        dictionary.set("key" + std::to_string(i), i);
    }
    Dictionary copy = dictionary;
    copy.set("key5", "changed");
    EXPECT_EQ(*dictionary.find("key5"), Value(5));
    const Dictionary moved = std::move(copy);
    EXPECT_EQ(*moved.find("key199999"), Value(199999));
    EXPECT_EQ(*moved.findString("key5"), "changed");
    // NOLINTNEXTLINE(bugprone-use-after-move)
    EXPECT_TRUE(copy.empty());
    EXPECT_EQ(copy.find("key5"), nullptr);
    copy.set("again", 1);
    EXPECT_EQ(copy.size(), 1U);
}

} // namespace
} // namespace tav
