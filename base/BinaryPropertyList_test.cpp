#include "base/PropertyList.hpp"

#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace tav {
namespace {

using PropertyList::Form;
using std::string_literals::operator""s;

std::string bigEndian(std::uint64_t number, std::size_t width) {
    std::string bytes;
    for (std::size_t i = 0; i < width; ++i) {
        bytes += char(number >> (8 * (width - 1 - i)) & 255);
    }
    return bytes;
}

/// A list put together by hand: the first object is the top one.
struct Parts {
    std::vector<std::string> objects;
    std::size_t offsetSize = 1;
    std::size_t referenceSize = 1;
    std::uint64_t top = 0;

    [[nodiscard]] std::string list() const {
        std::string bytes = "bplist00";
        std::string table;
        for (const std::string& object : objects) {
            table += bigEndian(bytes.size(), offsetSize);
            bytes += object;
        }
        const std::size_t tableOffset = bytes.size();
        return bytes + table + std::string(6, '\0') + char(offsetSize) + char(referenceSize) +
               bigEndian(objects.size(), 8) + bigEndian(top, 8) + bigEndian(tableOffset, 8);
    }
};

std::optional<Value> read(const std::string& bytes) {
    return PropertyList::readBinary(bytesOf(bytes), nullptr);
}

std::optional<Value> readObject(const std::string& object) { return read(Parts{{object}}.list()); }

std::string reasonOf(const std::string& bytes) {
    PropertyList::Error error;
    EXPECT_FALSE(PropertyList::readBinary(bytesOf(bytes), &error));
    EXPECT_EQ(error.line, 0U);
    return error.reason;
}

std::string written(const Value& value) {
    return std::string(textOf(*PropertyList::write(value, Form::Binary, nullptr)));
}

/// The bytes of the one object of a list.
std::string writtenObject(const Value& value) {
    const std::string bytes = written(value);
    return bytes.substr(8, bytes.size() - 8 - 1 - 32);
}

TEST(BinaryPropertyList, ReadsIntegersOfEverySize) {
    EXPECT_EQ(readObject("\x10\xFF"), Value(255));
    EXPECT_EQ(readObject("\x11\xFF\xFE"), Value(65534));
    EXPECT_EQ(readObject("\x12\xFF\xFF\xFF\xFF"), Value(4294967295));
    EXPECT_EQ(readObject("\x13" + bigEndian(~std::uint64_t{0}, 8)), Value(-1));
    EXPECT_EQ(readObject("\x14" + bigEndian(0, 8) + bigEndian(5, 8)), Value(5));
    EXPECT_EQ(readObject("\x14" + bigEndian(0, 8) + bigEndian(~std::uint64_t{0}, 8)),
              Value(~std::uint64_t{0}));
    EXPECT_EQ(readObject("\x14" + std::string(16, '\xFF')), Value(-1));
    EXPECT_FALSE(readObject("\x14" + std::string(8, '\xFF') + bigEndian(5, 8)));
    EXPECT_FALSE(readObject("\x14" + bigEndian(1, 8) + bigEndian(5, 8)));
    EXPECT_FALSE(readObject("\x15" + std::string(32, '\0')));
    EXPECT_FALSE(readObject("\x13\x01\x02"));
}

TEST(BinaryPropertyList, ReadsScalars) {
    EXPECT_EQ(readObject("\x08"), Value(false));
    EXPECT_EQ(readObject("\x09"), Value(true));
    EXPECT_EQ(readObject("\x22\x3F\xC0\x00\x00"s), Value(1.5));
    EXPECT_EQ(readObject("\x23\x3F\xF8\x00\x00\x00\x00\x00\x00"s), Value(1.5));
    EXPECT_EQ(readObject("\x33\x3F\xF8\x00\x00\x00\x00\x00\x00"s), Value(Date(1.5)));
    EXPECT_EQ(readObject("\x42\x01\x02"), Value(dataFromText("\x01\x02")));
    EXPECT_EQ(readObject("\x53"
                         "abc"),
              Value("abc"));
    EXPECT_EQ(readObject("\x62\x00\xE9\x65\xE5"s), Value("\xC3\xA9\xE6\x97\xA5"));
    EXPECT_EQ(readObject("\x80\x07"), Value(Value::UID{7}));
    EXPECT_EQ(readObject("\x82\x01\x00\x00"s), Value(Value::UID{65536}));
    EXPECT_EQ(readObject("\x5F\x10\x10" + std::string(16, 'x')), Value(std::string(16, 'x')));
    EXPECT_EQ(readObject("\x5F\x11\x01\x00"s + std::string(256, 'x')),
              Value(std::string(256, 'x')));
}

TEST(BinaryPropertyList, RefusesObjectsThatPropertyListsDoNotHave) {
    for (const std::string& object :
         {"\x00"s, "\x0F"s, "\x0A"s, "\x20\x00"s, "\x24"s + std::string(16, '\0'),
          "\x32\x00\x00\x00\x00"s, "\x70"s, "\x88"s + std::string(9, '\0'), "\x90"s, "\xB0"s,
          "\xC0"s, "\xE0"s, "\xF0"s}) {
        EXPECT_NE(reasonOf(Parts{{object}}.list()), "") << testing::PrintToString(object);
    }
}

TEST(BinaryPropertyList, AsciiTextsHoldAsciiOnly) {
    EXPECT_EQ(reasonOf(Parts{{"\x52\xC3\xA9"}}.list()), "an ASCII text with bytes that are none");
}

TEST(BinaryPropertyList, CountsAreCheckedBeforeUse) {
    for (const std::string& object :
         {"\x51"s, "\x4F"s, "\x4F\x10"s, "\x4F\x10\x02x"s, "\x6F\x10\xFF"s,
          "\x5F\x33"s + bigEndian(1, 8), "\x4F\x13"s + std::string(8, '\xFF'),
          "\x6F\x13"s + bigEndian(std::uint64_t{1} << 63, 8),
          "\xAF\x13"s + bigEndian(std::uint64_t{1} << 62, 8),
          "\xDF\x13"s + bigEndian(std::uint64_t{1} << 63, 8),
          "\x4F\x14"s + std::string(16, '\0')}) {
        EXPECT_FALSE(readObject(object)) << testing::PrintToString(object);
    }
}

TEST(BinaryPropertyList, ReadsContainers) {
    EXPECT_EQ(read(Parts{{"\xA2\x01\x01", "\x51"
                                          "a"}}
                       .list()),
              Value(Value::Array{"a", "a"}));
    EXPECT_EQ(read(Parts{{"\xD1\x01\x02",
                          "\x51"
                          "a",
                          "\x09"}}
                       .list()),
              Value(Value::Dictionary{{"a", true}}));
    EXPECT_EQ(read(Parts{{"\x51"
                          "a",
                          "\xA1\x00"s},
                         1,
                         1,
                         1}
                       .list()),
              Value(Value::Array{"a"}));
    EXPECT_EQ(read(Parts{{"\xA1\x00\x00\x01"s, "\xA0"}, 3, 3}.list()),
              Value(Value::Array{Value(Value::Array{})}));
    EXPECT_EQ(reasonOf(Parts{{"\xD1\x01\x01", "\x09"}}.list()), "a key that is no text");
    // Of equal keys the last wins.
    EXPECT_EQ(read(Parts{{"\xD2\x01\x01\x02\x03",
                          "\x51"
                          "a",
                          "\x08", "\x09"}}
                       .list()),
              Value(Value::Dictionary{{"a", true}}));
}

TEST(BinaryPropertyList, ReferencesAndOffsetsAreChecked) {
    EXPECT_EQ(reasonOf(Parts{{"\xA1\x01"}}.list()), "a reference to a missing object");
    EXPECT_EQ(reasonOf(Parts{{"\xD1\x07\x00"s}}.list()), "a reference to a missing object");
    std::string bytes = Parts{{"\x09"}}.list();
    for (const char offset : {'\0', '\x07', '\x09', '\xFF'}) {
        bytes[9] = offset;
        EXPECT_EQ(reasonOf(bytes), "an offset outside the list");
    }
}

TEST(BinaryPropertyList, TheTrailerIsChecked) {
    const std::string good = Parts{{"\x09"}}.list();
    EXPECT_TRUE(read(good));
    const auto with = [&](std::size_t fromEnd, char byte) {
        std::string bytes = good;
        bytes[bytes.size() - fromEnd] = byte;
        return bytes;
    };
    for (const char size : {'\0', '\x09', '\xFF'}) {
        EXPECT_NE(reasonOf(with(26, size)), "");
        EXPECT_NE(reasonOf(with(25, size)), "");
    }
    EXPECT_NE(reasonOf(with(17, '\x00')), ""); // no objects
    EXPECT_NE(reasonOf(with(17, '\x02')), ""); // more than the table has
    EXPECT_NE(reasonOf(with(24, '\x80')), "");
    EXPECT_NE(reasonOf(with(9, '\x01')), ""); // top
    EXPECT_NE(reasonOf(with(1, '\x08')), ""); // table
    EXPECT_NE(reasonOf(with(1, '\x40')), "");
    EXPECT_NE(reasonOf(with(8, '\xFF')), "");
    EXPECT_NE(reasonOf("bplist00"), "");
    EXPECT_NE(reasonOf("bplist01" + good.substr(8)), "");
    EXPECT_NE(reasonOf(""), "");
}

TEST(BinaryPropertyList, CyclesAreRefused) {
    EXPECT_EQ(reasonOf(Parts{{"\xA1\x00"s}}.list()), "a container that contains itself");
    EXPECT_EQ(reasonOf(Parts{{"\xD1\x01\x02",
                              "\x51"
                              "a",
                              "\xA1\x00"s}}
                           .list()),
              "a container that contains itself");
}

TEST(BinaryPropertyList, SharedContainersAreReadUntilTheyExplode) {
    const auto shared = [](std::size_t levels) {
        Parts parts;
        for (std::size_t i = 0; i < levels; ++i) {
            parts.objects.push_back("\xA4" + std::string(4, char(i + 1)));
        }
        parts.objects.emplace_back("\x51"
                                   "a");
        return parts.list();
    };
    const auto value = read(shared(5));
    ASSERT_TRUE(value);
    EXPECT_EQ(value->asArray()->size(), 4U);
    EXPECT_EQ(value->asArray()->front(), value->asArray()->back());
    EXPECT_EQ(reasonOf(shared(40)), "shared objects make the list too large");
}

TEST(BinaryPropertyList, SharedTextsAreReadUntilTheyExplode) {
    const std::string text = "\x5F\x12" + bigEndian(1 << 20, 4) + std::string(1 << 20, 'x');
    const auto list = [&](std::size_t count) {
        return Parts{{"\xAF\x12" + bigEndian(count, 4) + std::string(count, '\x01'), text}, 4}
            .list();
    };
    EXPECT_TRUE(read(list(20)));
    EXPECT_EQ(reasonOf(list(4000)), "shared objects make the list too large");
}

TEST(BinaryPropertyList, NestsToTheLimit) {
    const auto nested = [](std::size_t depth) {
        Parts parts{{}, 4, 4};
        for (std::size_t i = 1; i < depth; ++i) {
            parts.objects.push_back("\xA1" + bigEndian(i, 4));
        }
        parts.objects.emplace_back("\xA0");
        return parts.list();
    };
    const auto deepest = read(nested(PropertyList::maximumDepth));
    ASSERT_TRUE(deepest);
    EXPECT_EQ(reasonOf(nested(PropertyList::maximumDepth + 1)), "nested too deep");
    EXPECT_EQ(reasonOf(nested(100000)), "nested too deep");
    EXPECT_EQ(read(written(*deepest)), deepest);
    PropertyList::Error error;
    EXPECT_FALSE(PropertyList::write(Value(Value::Array{*deepest}), Form::Binary, &error));
    EXPECT_EQ(error.reason, "nested too deep");
}

TEST(BinaryPropertyList, WritesTheSmallestForms) {
    EXPECT_EQ(writtenObject(255), "\x10\xFF");
    EXPECT_EQ(writtenObject(256), "\x11\x01\x00"s);
    EXPECT_EQ(writtenObject(65536), "\x12\x00\x01\x00\x00"s);
    EXPECT_EQ(writtenObject(std::int64_t{1} << 32), "\x13" + bigEndian(std::uint64_t{1} << 32, 8));
    EXPECT_EQ(writtenObject(-1), "\x13" + std::string(8, '\xFF'));
    EXPECT_EQ(writtenObject(~std::uint64_t{0}), "\x14" + bigEndian(0, 8) + std::string(8, '\xFF'));
    EXPECT_EQ(writtenObject("abc"), "\x53"
                                    "abc");
    EXPECT_EQ(writtenObject(std::string(15, 'x')), "\x5F\x10\x0F" + std::string(15, 'x'));
    EXPECT_EQ(writtenObject("\xC3\xA9"), "\x61\x00\xE9"s);
    EXPECT_EQ(writtenObject(1.5), "\x23\x3F\xF8\x00\x00\x00\x00\x00\x00"s);
    EXPECT_EQ(writtenObject(Value::UID{7}), "\x80\x07");
    EXPECT_EQ(writtenObject(Value::UID{300}), "\x81\x01\x2C");
    EXPECT_EQ(writtenObject(true), "\x09");
}

TEST(BinaryPropertyList, EqualScalarsAreStoredOnce) {
    const Value::Array scalars{"text",       7, 1.5, true, Date(1.5), dataFromText("text"),
                               Value::UID{7}};
    Value::Array twice = scalars;
    twice.insert(twice.end(), scalars.begin(), scalars.end());
    twice.push_back(Value(Value::Dictionary{{"text", 7U}}));
    const std::string bytes = written(twice);
    EXPECT_EQ(bytes[bytes.size() - 17], char(2 + scalars.size()));
    const auto back = read(bytes);
    ASSERT_TRUE(back);
    EXPECT_EQ(*back, Value(twice));
    for (std::size_t i = 0; i < scalars.size(); ++i) {
        EXPECT_EQ((*back->asArray())[i].type(), scalars[i].type());
    }
}

TEST(BinaryPropertyList, ReferencesGrowWithTheNumberOfObjects) {
    for (const int count : {254, 255, 256, 65534, 65536, 70000}) {
        Value::Array numbers;
        for (int i = 0; i < count; ++i) {
            numbers.emplace_back(i);
        }
        const std::string bytes = written(numbers);
        EXPECT_EQ(bytes[bytes.size() - 25], count < 256 ? 1 : count < 65536 ? 2 : 4) << count;
        EXPECT_EQ(read(bytes), Value(numbers)) << count;
    }
}

TEST(BinaryPropertyList, TextsComeBackByteForByte) {
    for (const std::string& text :
         {""s, "\0"s, "\xFF\xFE"s, "caf\xC3\xA9"s, "\xF0\x9F\x98\x80"s, "\xED\xA0\x80"s, "a\x80z"s,
          "\xC3"s, "\xEF\xBF\xBE"s, "\r\n\x01"s}) {
        const Value value(Value::Dictionary{{text, text}});
        EXPECT_EQ(read(written(value)), value) << testing::PrintToString(text);
    }
}

TEST(BinaryPropertyList, KeysAreWrittenInTheirOrderOfBytes) {
    EXPECT_EQ(written(Value::Dictionary{{"b", 1}, {"a", 2}}),
              written(Value::Dictionary{{"a", 2}, {"b", 1}}));
}

TEST(BinaryPropertyList, UnusualNumbersComeBack) {
    for (const double number : {0.0, -0.0, HUGE_VAL, -HUGE_VAL, 5e-324, 0.1}) {
        const auto value = read(written(number));
        ASSERT_TRUE(value);
        EXPECT_EQ(value->doubleValue(), number);
        EXPECT_EQ(std::signbit(value->doubleValue()), std::signbit(number));
        EXPECT_EQ(read(written(Date(number))), Value(Date(number)));
    }
    EXPECT_EQ(read(written(std::nan(""))), Value(std::nan("")));
    EXPECT_EQ(read(written(std::numeric_limits<std::int64_t>::min())),
              Value(std::numeric_limits<std::int64_t>::min()));
}

} // namespace
} // namespace tav
