#include "foundation/DeepCopy.hpp"

#include <string>

#include <gtest/gtest.h>

namespace tav {
namespace {

// Objects that say how they were made.
struct Plain {
    std::string made = "first";
};
struct Copyable {
    std::string made = "first";
    std::shared_ptr<Copyable> copy() { return made_("copy"); }
    static std::shared_ptr<Copyable> made_(std::string how) {
        return std::make_shared<Copyable>(Copyable{std::move(how)});
    }
};
struct MutablyCopyable {
    std::string made = "first";
    [[nodiscard]] std::shared_ptr<MutablyCopyable> copy() const { return nullptr; }
    [[nodiscard]] std::shared_ptr<MutablyCopyable> mutableCopy() const {
        return std::make_shared<MutablyCopyable>(MutablyCopyable{"mutable copy"});
    }
};
struct DeeplyCopyable {
    std::string made = "first";
    [[nodiscard]] std::shared_ptr<DeeplyCopyable> copy() const { return nullptr; }
    [[nodiscard]] std::shared_ptr<DeeplyCopyable> mutableCopy() const { return nullptr; }
    [[nodiscard]] std::shared_ptr<DeeplyCopyable> mutableDeepCopy() const {
        return std::make_shared<DeeplyCopyable>(DeeplyCopyable{"deep copy"});
    }
};

TEST(DeepCopy, AnObjectIsCopiedByTheDeepestWayItHas) {
    EXPECT_EQ(mutableDeepCopy(std::make_shared<DeeplyCopyable>())->made, "deep copy");
    EXPECT_EQ(mutableDeepCopy(std::make_shared<MutablyCopyable>())->made, "mutable copy");
    EXPECT_EQ(mutableDeepCopy(std::make_shared<Copyable>())->made, "copy");
    const auto plain = std::make_shared<Plain>();
    EXPECT_EQ(mutableDeepCopy(plain), plain);
    EXPECT_EQ(plain.use_count(), 1);
    EXPECT_EQ(mutableDeepCopy(std::shared_ptr<Copyable>()), nullptr);
}

TEST(DeepCopy, ContainersHaveCopiesOfTheirElements) {
    const auto plain = std::make_shared<Plain>();
    const std::vector<std::shared_ptr<Copyable>> array = {std::make_shared<Copyable>(), nullptr};
    const auto copies = mutableDeepCopy(array);
    ASSERT_EQ(copies.size(), 2U);
    EXPECT_EQ(copies[0]->made, "copy");
    EXPECT_EQ(copies[1], nullptr);
    EXPECT_EQ(array[0]->made, "first");

    const std::set<std::shared_ptr<Plain>> set = {plain};
    EXPECT_EQ(mutableDeepCopy(set), set);
    const std::set<std::shared_ptr<Copyable>> others = {array[0]};
    EXPECT_EQ((*mutableDeepCopy(others).begin())->made, "copy");
}

TEST(DeepCopy, DictionariesKeepTheirKeys) {
    const auto key = std::make_shared<Copyable>();
    const std::map<std::shared_ptr<Copyable>, std::shared_ptr<Copyable>> dictionary = {{key, key}};
    const auto copy = mutableDeepCopy(dictionary);
    ASSERT_EQ(copy.size(), 1U);
    EXPECT_EQ(copy.begin()->first, key);
    EXPECT_NE(copy.begin()->second, key);
    EXPECT_EQ(copy.begin()->second->made, "copy");
}

TEST(DeepCopy, ContainersInContainersAreCopiedAlike) {
    using Array = std::vector<std::shared_ptr<Copyable>>;
    const std::vector<std::map<int, std::vector<Array>>> nested = {
        {{1, {{std::make_shared<Copyable>()}, {}}}}};
    const auto copy = mutableDeepCopy(nested);
    EXPECT_EQ(copy[0].at(1)[0][0]->made, "copy");
    EXPECT_TRUE(copy[0].at(1)[1].empty());
}

TEST(DeepCopy, AValueIsDeepByItself) {
    const Value::Dictionary dictionary = {{"a", Value::Array{Value::Array{Value("b")}}}};
    Value copy = mutableDeepCopy(Value(dictionary));
    EXPECT_EQ(copy, Value(dictionary));
    copy.asDictionary()->find("a")->asArray()->front().asArray()->push_back(1);
    EXPECT_NE(copy, Value(dictionary));
    EXPECT_EQ(mutableDeepCopy(Value::Array{Value(1)}), Value::Array{Value(1)});
}

} // namespace
} // namespace tav
