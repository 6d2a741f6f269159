#include "base/OldStyleText.hpp"
#include "base/PropertyList.hpp"
#include "log/LogRecord.hpp"

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

namespace tav {
namespace {

std::vector<std::string> keysOf(const Record& record) {
    std::vector<std::string> keys;
    for (const auto& [key, value] : record) {
        keys.push_back(key);
    }
    return keys;
}

TEST(LogRecord, EntriesComeInTheOrderOfTheFields) {
    const Value second = "second";
    const Data data = dataFromText("abcde");
    const LogFields fields{.type = 4,
                           .message = "first",
                           .message2 = &second,
                           .sourceFile = "a.cc",
                           .sourceLine = 12,
                           .function = "f",
                           .module = "m",
                           .extra = "e",
                           .data = &data,
                           .date = "20091231T235959"};
    const Record record = recordOf(fields);
    EXPECT_EQ(keysOf(record),
              (std::vector<std::string>{"type", "message", "message2", "sourceFile", "sourceLine",
                                        "function", "module", "extra", "data", "date"}));
    EXPECT_EQ(record.find("type")->type(), Value::Type::Integer);
    EXPECT_EQ(record.find("sourceLine")->type(), Value::Type::Integer);
    EXPECT_EQ(*record.find("data")->asData(), data);
}

TEST(LogRecord, WhatIsNotThereHasNoEntry) {
    EXPECT_EQ(keysOf(recordOf({.type = 11})), std::vector<std::string>{"type"});
    EXPECT_EQ(keysOf(recordOf({.type = 0, .message = ""})),
              (std::vector<std::string>{"type", "message"}));
    EXPECT_EQ(recordOf({.type = 0, .sourceLine = -1}).size(), 1U);
}

/// What `putRecordText` writes, within the room that it asks for.
std::optional<std::string> put(const LogFields& fields) {
    std::string memory(roomForRecordText(fields), '=');
    const char* const end = putRecordText(memory.data(), fields);
    if (end == nullptr) {
        return std::nullopt;
    }
    const auto size = static_cast<std::size_t>(end - memory.data());
    EXPECT_LT(size, memory.size());
    return memory.substr(0, size);
}

/// Every combination of fields, with texts of all kinds.
TEST(LogRecord, TheTextIsThatOfTheDictionaryAndComesBackAsIt) {
    const std::vector<std::string> texts = {"word",
                                            "two words",
                                            std::string("\0\x01\x1F\x7F", 4),
                                            "\xC3\xA9\xF0\x9F\x98\x80",
                                            "\xFF\xC0 not UTF-8 \xED\xB2\x80",
                                            "\"quoted\"\\ %@ ; = { } ( ) < > /* */ //",
                                            "12"};
    const Data data = dataFromText("abcde");
    for (unsigned mask = 0; mask < 512; ++mask) {
        const auto textOfBit = [&](unsigned bit) -> const std::string& {
            return texts[(mask + bit) % texts.size()];
        };
        const Value second = textOfBit(1);
        LogFields fields;
        fields.type = static_cast<int>(mask % 12);
        if ((mask & 1) != 0) {
            fields.message = textOfBit(0);
        }
        fields.message2 = (mask & 2) != 0 ? &second : nullptr;
        fields.sourceFile = (mask & 4) != 0 ? std::string_view(textOfBit(2)) : "";
        fields.sourceLine = (mask & 8) != 0 ? 77 : 0;
        fields.function = (mask & 16) != 0 ? std::string_view(textOfBit(3)) : "";
        fields.module = (mask & 32) != 0 ? std::string_view(textOfBit(4)) : "";
        if ((mask & 64) != 0) {
            fields.extra = textOfBit(5);
        }
        fields.data = (mask & 128) != 0 ? &data : nullptr;
        fields.date = (mask & 256) != 0 ? "20091231T235959" : "";
        const Record record = recordOf(fields);
        ASSERT_TRUE(isKeptByText(fields));
        std::string text;
        appendRecordText(text, fields);
        ASSERT_EQ(text, OldStyleText::write(record));
        ASSERT_EQ(put(fields).value_or(text), text);
        ASSERT_EQ(put(fields).has_value(), text.find('\\') == std::string::npos);
        const auto read = PropertyList::read(bytesOf(text), nullptr);
        ASSERT_TRUE(read && read->asDictionary() != nullptr) << text;
        const Record again = recordOfText(*read->asDictionary());
        ASSERT_EQ(Value(again), Value(record)) << text;
        ASSERT_EQ(keysOf(again), keysOf(record));
        for (const auto& [key, value] : again) {
            ASSERT_EQ(value.type(), record.find(key)->type()) << key;
        }
    }
}

TEST(LogRecord, OneTextThatHasToBeEscapedChangesNothingAboutTheOthers) {
    const std::string longText(3000, 'x');
    const Data data = dataFromText("abcdefgh");
    for (int escaped = -1; escaped < 7; ++escaped) {
        std::array<std::string, 7> texts = {longText, "two words", "a", "b c", "", "d", "2009"};
        if (escaped >= 0) {
            texts.at(static_cast<std::size_t>(escaped)) += "\"";
        }
        const Value second = texts[6];
        const LogFields fields{.type = -5,
                               .message = texts[0],
                               .message2 = &second,
                               .sourceFile = texts[1],
                               .sourceLine = 2147483647,
                               .function = texts[2],
                               .module = texts[3],
                               .extra = texts[4],
                               .data = &data,
                               .date = texts[5]};
        std::string text = "before";
        appendRecordText(text, fields);
        EXPECT_EQ(text, "before" + OldStyleText::write(recordOf(fields))) << escaped;
    }
}

TEST(LogRecord, LongTextsAndNumbersArePutInTheirRoom) {
    const std::string longText(3000, 'x');
    const Value second = "-" + longText;
    const Data data(1001);
    const LogFields fields{.type = 2147483647,
                           .message = longText,
                           .message2 = &second,
                           .sourceFile = longText,
                           .sourceLine = 2147483647,
                           .function = "",
                           .module = "-",
                           .extra = "",
                           .data = &data,
                           .date = longText};
    EXPECT_EQ(put(fields), OldStyleText::write(recordOf(fields)));
    EXPECT_EQ(put({.type = -1}), std::nullopt); // a sign stands in quotes
    EXPECT_EQ(OldStyleText::write(recordOf({.type = -1})), "{\n    type = \"-1\";\n}");
}

TEST(LogRecord, ObjectsThatAreNoTextsAreNotKeptByIt) {
    for (const Value& value : {Value(1), Value(true), Value(Value::Array{}), Value(Data{})}) {
        EXPECT_FALSE(isKeptByText({.type = 0, .message2 = &value}));
    }
}

} // namespace
} // namespace tav
