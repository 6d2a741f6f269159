#include "base/OldStyleText.hpp"
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

TEST(PropertyList, WhatIsNeitherBinaryNorXMLIsOldStyleText) {
    using namespace std::string_literals;
    const auto read = [](std::string_view text) {
        return PropertyList::read(bytesOf(text), nullptr);
    };
    const Value data(dataFromText("\xAB\x01"));
    EXPECT_EQ(read("{a = (b, \"c d\");}"),
              Value(Value::Dictionary{{"a", Value::Array{"b", "c d"}}}));
    EXPECT_EQ(read("<ab01>"), data);
    EXPECT_EQ(read("\xEF\xBB\xBF <ab 01> // data"), data);
    EXPECT_EQ(read("\xFE\xFF\0<\0a\0b\0 \0"
                   "0\0"
                   "1\0>"s),
              data);
    EXPECT_EQ(read("\xFF\xFE<\0a\0b\0 \0"
                   "0\0"
                   "1\0>\0"s),
              data);
    EXPECT_EQ(read("<>"), Value(Data()));
    EXPECT_EQ(read("word"), Value("word"));
    EXPECT_EQ(read("bpl"), std::nullopt);
    EXPECT_EQ(read(" \n"), Value(Value::Dictionary()));

    for (const std::string_view xml : {"<plist><array/></plist>", " \n<plist><array/></plist>",
                                       "\xEF\xBB\xBF<?xml version=\"1.0\"?><plist><array/></plist>",
                                       "<!-- ab --><plist><array/></plist>"}) {
        EXPECT_EQ(read(xml), Value(Value::Array{})) << xml;
        std::string wide = "\xFE\xFF";
        std::string wideLittle = "\xFF\xFE";
        if (!xml.starts_with('\xEF')) {
            for (const char c : xml) {
                wide += {'\0', c};
                wideLittle += {c, '\0'};
            }
            EXPECT_EQ(read(wide), Value(Value::Array{})) << xml;
            EXPECT_EQ(read(wideLittle), Value(Value::Array{})) << xml;
        }
    }
    PropertyList::Error error;
    EXPECT_FALSE(PropertyList::read(bytesOf("<dict>\n"), &error));
    EXPECT_EQ(error.reason, "unexpected element <dict>");
    EXPECT_FALSE(PropertyList::read(bytesOf("{\n  a = b\n}"), &error));
    EXPECT_EQ(error.reason, "no \";\" after an entry");
    EXPECT_EQ(error.line, 3U);
    EXPECT_EQ(error.offset, 10U);
}

TEST(PropertyList, OldStyleTextIsWritten) {
    EXPECT_EQ(PropertyList::write(sample(), Form::OldStyle, nullptr),
              dataFromText(OldStyleText::write(sample())));
    Value deep = 1;
    for (std::size_t i = 0; i < PropertyList::maximumDepth; ++i) {
        deep = i % 2 == 0 ? Value(Value::Array{std::move(deep)})
                          : Value(Value::Dictionary{{"a", std::move(deep)}});
    }
    const auto bytes = PropertyList::write(deep, Form::OldStyle, nullptr);
    ASSERT_TRUE(bytes);
    EXPECT_TRUE(PropertyList::read(*bytes, nullptr));
    PropertyList::Error error;
    EXPECT_FALSE(PropertyList::write(Value::Array{deep}, Form::OldStyle, &error));
    EXPECT_EQ(error.reason, "nested too deep");
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
