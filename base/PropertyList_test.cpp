#include "base/PropertyList.hpp"

#include <bit>
#include <cstdint>
#include <random>
#include <string>

#include <gtest/gtest.h>

namespace tav {
namespace {

using PropertyList::Form;

/// Trees of every type that both forms hold; the same for the same seed.
class RandomValues {
  public:
    explicit RandomValues(unsigned seed) : random_(seed) {}

    Value tree(int depth) {
        switch (random_() % (depth > 0 ? 10 : 7)) {
        case 0:
            return random_() % 2 == 0;
        case 1:
            return static_cast<std::int64_t>(random_() >> random_() % 64) *
                   (random_() % 2 == 0 ? 1 : -1);
        case 2:
            return std::uint64_t{random_()};
        case 3:
            return std::bit_cast<double>(random_());
        case 4:
            return text();
        case 5:
            return dataFromText(text());
        case 6:
            return Date(double(random_() % 2000000000) - 1e9);
        case 7: {
            Value::Array array;
            for (auto i = random_() % 8; i > 0; --i) {
                array.push_back(tree(depth - 1));
            }
            return array;
        }
        default: {
            Value::Dictionary dictionary;
            for (auto i = random_() % (random_() % 10 == 0 ? 60 : 8); i > 0; --i) {
                dictionary.set(text(), tree(depth - 1));
            }
            return dictionary;
        }
        }
    }

  private:
    std::string text() {
        constexpr const char* pieces[] = {"a",
                                          "Z",
                                          "<",
                                          "&",
                                          ">",
                                          "\r",
                                          "\n",
                                          "\xC3\xA9",
                                          " ",
                                          "key",
                                          "\t",
                                          "]]>",
                                          "\"",
                                          "\xE6\x97\xA5",
                                          "\xF0\x9F\x98\x80"};
        std::string text;
        for (auto i = random_() % 12; i > 0; --i) {
            text += pieces[random_() % std::size(pieces)];
        }
        return text;
    }

    std::mt19937_64 random_;
};

const Value& sample() {
    static const Value value(Value::Dictionary{
        {"array", Value::Array{1, -2, 3.5, true, "text", "caf\xC3\xA9", Date(5)}},
        {"data", dataFromText("some bytes")},
        {"nested", Value::Dictionary{{"a", Value::Dictionary{}}, {"b", Value::UID{3}}}},
        {"long", std::string(300, 'x')},
    });
    return value;
}

TEST(PropertyList, TheBytesTellTheForm) {
    for (const Form form : {Form::XML, Form::Binary}) {
        const auto bytes = PropertyList::write(sample(), form, nullptr);
        ASSERT_TRUE(bytes);
        EXPECT_EQ(PropertyList::read(*bytes, nullptr), sample());
    }
    PropertyList::Error error;
    EXPECT_FALSE(PropertyList::read(bytesOf("bplist99"), &error));
    EXPECT_EQ(error.line, 0U);
    EXPECT_FALSE(PropertyList::read(bytesOf(""), &error));
    EXPECT_EQ(error.line, 1U);
    EXPECT_FALSE(PropertyList::readXML(bytesOf("bplist00"), nullptr));
    EXPECT_FALSE(PropertyList::readBinary(bytesOf("<plist><true/></plist>"), nullptr));
}

TEST(PropertyList, RandomTreesComeBackFromBothForms) {
    for (unsigned seed = 0; seed < 300; ++seed) {
        const Value value = RandomValues(seed).tree(5);
        for (const Form form : {Form::XML, Form::Binary}) {
            const auto bytes = PropertyList::write(value, form, nullptr);
            ASSERT_TRUE(bytes) << seed;
            const auto back = PropertyList::read(*bytes, nullptr);
            ASSERT_TRUE(back) << seed;
            ASSERT_EQ(*back, value) << seed;
            ASSERT_EQ(PropertyList::write(*back, form, nullptr), bytes) << seed;
        }
    }
}

TEST(PropertyList, EveryTruncationEndsInAnError) {
    for (const Form form : {Form::XML, Form::Binary}) {
        const Data bytes = *PropertyList::write(sample(), form, nullptr);
        // The line feed at the end of XML may be missing.
        const std::size_t end = form == Form::XML ? bytes.size() - 1 : bytes.size();
        for (std::size_t size = 0; size < end; ++size) {
            // A copy of just the size, so that a read past the end is seen.
            const Data cut(bytes.begin(), bytes.begin() + std::ptrdiff_t(size));
            PropertyList::Error error;
            EXPECT_FALSE(PropertyList::read(cut, &error)) << size;
            EXPECT_FALSE(error.reason.empty()) << size;
        }
    }
}

TEST(PropertyList, EveryFlippedBitEndsInAValueOrAnError) {
    std::size_t values = 0;
    std::size_t errors = 0;
    for (const Form form : {Form::XML, Form::Binary}) {
        Data bytes = *PropertyList::write(sample(), form, nullptr);
        for (std::size_t bit = 0; bit < bytes.size() * 8; ++bit) {
            bytes[bit / 8] ^= std::byte(1U << bit % 8);
            PropertyList::Error error;
            if (const auto value = PropertyList::read(bytes, &error)) {
                EXPECT_TRUE(PropertyList::write(*value, Form::Binary, nullptr));
                ++values;
            } else {
                EXPECT_FALSE(error.reason.empty());
                ++errors;
            }
            bytes[bit / 8] ^= std::byte(1U << bit % 8);
        }
    }
    EXPECT_GT(values, 100U);
    EXPECT_GT(errors, 100U);
}

} // namespace
} // namespace tav
