#include "base/Unicode.hpp"
#include "foundation/ArrayExtensions.hpp"
#include "testing/Golden.hpp"

#include <functional>
#include <limits>
#include <random>

#include <gtest/gtest.h>

namespace tav {
namespace {

using Strings = std::vector<std::string>;

OptionalText textOf(const nlohmann::json& json, std::string& keeper) {
    if (json.is_null()) {
        return nullptr;
    }
    keeper = json.get<std::string>();
    return keeper;
}

Value::Array valuesOf(const Strings& strings) { return {strings.begin(), strings.end()}; }

TEST(ArrayExtensions, GoldenCases) {
    const std::pair<const char*, std::function<nlohmann::json(const Strings&, OptionalText)>>
        ofTexts[] = {
            {"indexOfPathString",
             [](const Strings& array, OptionalText text) {
                 EXPECT_EQ(indexOfPathString(array, text),
                           indexOfPathString(valuesOf(array), text));
                 return indexOfPathString(array, text);
             }},
            {"containsPathString",
             [](const Strings& array, OptionalText text) {
                 EXPECT_EQ(containsPathString(array, text),
                           containsPathString(valuesOf(array), text));
                 return containsPathString(array, text);
             }},
        };
    for (const auto& [op, function] : ofTexts) {
        for (const GoldenCase& golden : goldenCases("edges.json", op)) {
            std::string keeper;
            EXPECT_EQ(function(golden.in["self"].get<Strings>(), textOf(golden.in["arg"], keeper)),
                      golden.out)
                << golden.description();
        }
    }
    for (const GoldenCase& golden : goldenCases("edges.json", "containsStrings")) {
        const auto array = golden.in["self"].get<Strings>();
        const auto other = golden.in["arg"].get<Strings>();
        EXPECT_EQ(containsStrings(array, other), golden.out.get<bool>()) << golden.description();
        EXPECT_EQ(containsStrings(valuesOf(array), valuesOf(other)), golden.out.get<bool>());
    }
    for (const GoldenCase& golden : goldenCases("edges.json", "containsSameValues")) {
        const auto array = golden.in["self"].get<Strings>();
        const auto other = golden.in["arg"].get<Strings>();
        EXPECT_EQ(containsSameValues(array, other), golden.out.get<bool>()) << golden.description();
        EXPECT_EQ(containsSameValues(valuesOf(array), valuesOf(other)), golden.out.get<bool>());
    }
}

TEST(ArrayExtensions, TextsAreFoundIgnoringCase) {
    const Strings array = {"", "a", "B", "b", "\xC3\xA9", "x\xFF"};
    EXPECT_EQ(indexOfString(array, "A"), 1);
    EXPECT_EQ(indexOfString(array, "b"), 2);
    EXPECT_EQ(indexOfString(array, "E\xCC\x81"), 4);
    EXPECT_EQ(indexOfString(array, "X\xFF"), 5);
    EXPECT_EQ(indexOfString(array, "x\xFE"), -1);
    EXPECT_EQ(indexOfString(array, "ab"), -1);
    EXPECT_TRUE(containsString(array, "A"));
    EXPECT_TRUE(containsFilenameString(array, "A"));
    EXPECT_FALSE(containsString(array, "c"));
    EXPECT_FALSE(containsFilenameString(array, "c"));
}

TEST(ArrayExtensions, NilAndEmptyTextsAreNowhere) {
    const Strings strings = {"", "/"};
    const Value::Array values = {Value(""), Value("/")};
    for (const OptionalText& text : {OptionalText(nullptr), OptionalText("")}) {
        EXPECT_EQ(indexOfString(strings, text), -1);
        EXPECT_EQ(indexOfString(values, text), -1);
        EXPECT_EQ(indexOfPathString(strings, text), -1);
        EXPECT_EQ(indexOfPathString(values, text), -1);
        EXPECT_FALSE(containsString(strings, text) || containsString(values, text));
        EXPECT_FALSE(containsPathString(strings, text) || containsPathString(values, text));
        EXPECT_FALSE(containsFilenameString(strings, text) || containsFilenameString(values, text));
    }
    EXPECT_EQ(indexOfString(Strings{}, "a"), -1);
}

TEST(ArrayExtensions, ElementsThatAreNoTextsArePassedOver) {
    const Value::Array array = {Value(1), Value(Data()), Value(Value::Array{Value("a")}),
                                Value("1"), Value("a")};
    EXPECT_EQ(indexOfString(array, "1"), 3);
    EXPECT_EQ(indexOfString(array, "A"), 4);
    EXPECT_EQ(indexOfPathString(array, "/a"), 4);
    EXPECT_TRUE(containsFilenameString(array, "A"));
}

TEST(ArrayExtensions, PathsAreEqualWithOrWithoutASlashInFront) {
    EXPECT_EQ(indexOfPathString(Strings{"x", "a/b"}, "/A/B"), 1);
    EXPECT_EQ(indexOfPathString(Strings{"x", "/A/B"}, "a/b"), 1);
    EXPECT_EQ(indexOfPathString(Strings{"//a"}, "/a"), -1);
    EXPECT_EQ(indexOfPathString(Strings{"//a"}, "//A"), 0);
    EXPECT_EQ(indexOfPathString(Strings{"a/"}, "a"), -1);
    EXPECT_EQ(indexOfPathString(Strings{""}, "/"), 0); // the empty text is given a slash, too
}

TEST(ArrayExtensions, NumbersAreFoundByValue) {
    const Value::Array array = {Value("7"), Value(3), Value(true), Value(2.5),
                                Value(std::numeric_limits<std::uint64_t>::max())};
    EXPECT_TRUE(containsNumber(array, 3.0));
    EXPECT_TRUE(containsNumber(array, 1));
    EXPECT_TRUE(containsNumber(array, 2.5F));
    EXPECT_TRUE(containsNumber(array, std::numeric_limits<std::uint64_t>::max()));
    EXPECT_FALSE(containsNumber(array, -1));
    EXPECT_FALSE(containsNumber(array, 7));
    EXPECT_FALSE(containsNumber(array, "7"));
    EXPECT_FALSE(containsNumber(array, Value()));
    EXPECT_FALSE(containsNumber({}, 0));
}

TEST(ArrayExtensions, AllTextsOfAnotherArray) {
    const Value::Array array = {Value("a"), Value("B"), Value(1)};
    EXPECT_TRUE(containsStrings(array, {Value("b"), Value("A"), Value("a")}));
    EXPECT_TRUE(containsStrings(array, {Value("b"), Value(17)}));
    EXPECT_TRUE(containsStrings(array, {Value(17)}));
    EXPECT_FALSE(containsStrings(array, {Value("a"), Value("c")}));
    EXPECT_FALSE(containsStrings(array, {Value("a"), Value("a"), Value("a"), Value("a")}));
    EXPECT_FALSE(containsStrings(array, {}));
    EXPECT_FALSE(containsStrings(Strings{""}, Strings{""}));
    EXPECT_FALSE(containsStrings(Strings{}, Strings{}));
}

TEST(ArrayExtensions, SameValuesAreThoseOfEqualCountAndEachInTheOther) {
    using Array = Value::Array;
    EXPECT_TRUE(containsSameValues(Array{}, Array{}));
    EXPECT_TRUE(containsSameValues(Array{Value(1), Value("a")}, Array{Value("a"), Value(1.0)}));
    EXPECT_TRUE(containsSameValues(Array{Value(1), Value(1)}, Array{Value(1), Value(2)}));
    EXPECT_FALSE(containsSameValues(Array{Value(1), Value(2)}, Array{Value(1), Value(1)}));
    EXPECT_FALSE(containsSameValues(Array{Value(1)}, Array{Value(1), Value(1)}));
    EXPECT_FALSE(containsSameValues(Strings{"a"}, Strings{"A"})); // equal, not ignoring case
    EXPECT_FALSE(containsSameValues(Array{Value("1")}, Array{Value(1)}));
    EXPECT_FALSE(containsSameValues(Array{Value(1)}, Array{Value("1")}));
    EXPECT_TRUE(containsSameValues(Array{Value(Array{Value(1)})}, Array{Value(Array{Value(1)})}));
}

TEST(ArrayExtensions, ObjectsAreFoundByTheirIdentity) {
    struct Base {
        virtual ~Base() = default;
    };
    struct Other {
        virtual ~Other() = default;
    };
    struct Derived : Other, Base {};
    const auto one = std::make_shared<std::string>("a");
    const auto equal = std::make_shared<std::string>("a");
    const std::vector<std::shared_ptr<std::string>> array = {nullptr, one};
    EXPECT_TRUE(containsObjectIdenticalTo(array, one));
    EXPECT_TRUE(containsObjectIdenticalTo(array, one.get()));
    EXPECT_FALSE(containsObjectIdenticalTo(array, equal));
    EXPECT_FALSE(containsObjectIdenticalTo(array, std::shared_ptr<std::string>()));
    const auto derived = std::make_shared<Derived>();
    EXPECT_TRUE(containsObjectIdenticalTo(std::vector<std::shared_ptr<Base>>{derived}, derived));
}

TEST(ArrayExtensions, ElementsAreInsertedInTheirOrder) {
    Strings array = {"a", "b"};
    insertObjectsFromArray(array, {"1", "2"}, 1);
    EXPECT_EQ(array, (Strings{"a", "1", "2", "b"}));
    insertObjectsFromArray(array, {"end"}, 4);
    insertObjectsFromArray(array, {"begin"}, 0);
    insertObjectsFromArray(array, {}, 3);
    EXPECT_EQ(array, (Strings{"begin", "a", "1", "2", "b", "end"}));
    Value::Array values = {Value(1), Value(2)};
    insertObjectsFromArray(values, values, 1);
    EXPECT_EQ(values, (Value::Array{Value(1), Value(1), Value(2), Value(2)}));
}

TEST(ArrayExtensions, AnIndexBehindTheEndIsRefused) {
    Strings array = {"a"};
    EXPECT_THROW(insertObjectsFromArray(array, {"b"}, 2), Exception);
    EXPECT_THROW(insertObjectsFromArray(array, {}, SIZE_MAX), Exception);
    EXPECT_EQ(array, Strings{"a"});
}

// The operations word for word, for comparison.
bool naiveContainsStrings(const Value::Array& array, const Value::Array& other) {
    if (other.empty() || other.size() > array.size()) {
        return false;
    }
    for (const Value& element : other) {
        const std::string* text = element.asString();
        bool isThere = text == nullptr;
        for (const Value& one : array) {
            isThere = isThere || (one.asString() != nullptr && !text->empty() &&
                                  equalsIgnoringCase(*one.asString(), *text));
        }
        if (!isThere) {
            return false;
        }
    }
    return true;
}

bool naiveContainsSameValues(const Value::Array& array, const Value::Array& other) {
    Value::Array copy = array;
    for (const Value& element : other) {
        std::erase(copy, element);
    }
    return array.size() == other.size() && copy.empty();
}

TEST(ArrayExtensions, RandomArraysAgreeWithTheNaiveForm) {
    std::mt19937 random(7);
    const Value pool[] = {Value("a"), Value("A"),    Value("b"),         Value(""),
                          Value(1),   Value(1.0),    Value(true),        Value("\xC3\xA9"),
                          Value(2),   Value("\xFF"), Value("E\xCC\x81"), Value(Data())};
    const auto randomArray = [&](std::size_t most) {
        Value::Array array(random() % (most + 1));
        for (Value& element : array) {
            element = pool[random() % std::size(pool)];
        }
        return array;
    };
    int found = 0;
    for (int i = 0; i < 20000; ++i) {
        const Value::Array array = randomArray(6);
        const Value::Array other = randomArray(4);
        EXPECT_EQ(containsStrings(array, other), naiveContainsStrings(array, other));
        EXPECT_EQ(containsSameValues(array, other), naiveContainsSameValues(array, other));
        found += containsStrings(array, other) ? 1 : 0;
        found += containsSameValues(array, other) ? 1 : 0;

        const std::size_t index = random() % (array.size() + 1);
        Value::Array inserted = array;
        insertObjectsFromArray(inserted, other, index);
        Value::Array expected = array;
        for (std::size_t j = 0; j < other.size(); ++j) {
            expected.insert(expected.begin() + static_cast<std::ptrdiff_t>(index + j), other[j]);
        }
        EXPECT_EQ(inserted, expected);
    }
    EXPECT_GT(found, 1000);
}

} // namespace
} // namespace tav
