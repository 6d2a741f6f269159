#include "base/OldStyleText.hpp"
#include "base/Unicode.hpp"

#include <array>
#include <cstdio>
#include <limits>
#include <optional>
#include <random>

#include <gtest/gtest.h>

namespace tav {
namespace {

/// The same one unit at a time.
std::string slowText(std::string_view text) {
    bool isWord = !text.empty();
    std::string quoted = "\"";
    for (const char16_t unit : utf16FromBytes(text)) {
        isWord = isWord && ((unit >= u'0' && unit <= u'9') || (unit >= u'A' && unit <= u'Z') ||
                            (unit >= u'a' && unit <= u'z'));
        std::array<char, 8> escape = {};
        const std::string_view named = "\a\b\t\n\v\f\r\"\\";
        if (const auto at = named.find(static_cast<char>(unit)); unit < 0x80 && at != named.npos) {
            quoted += '\\';
            quoted += std::string_view("abtnvfr\"\\")[at];
            continue;
        }
        const char* form = unit >= 0x80 ? "\\U%04x" : unit < 0x20 || unit == 0x7f ? "\\%03o" : "%c";
        std::snprintf(escape.data(), escape.size(), form, unit);
        quoted += escape.data();
    }
    return isWord ? std::string(text) : quoted + '"';
}

std::string appended(std::string_view text) {
    std::string out = "before";
    OldStyleText::appendText(out, text);
    return out;
}

TEST(OldStyleTextAppend, EveryByteAtEveryPlace) {
    for (int byte = 0; byte < 256; ++byte) {
        for (std::size_t at = 0; at < 40; ++at) {
            for (const char around : {'a', ' '}) {
                std::string text(40, around);
                text[at] = static_cast<char>(byte);
                ASSERT_EQ(appended(text), "before" + slowText(text)) << byte << " at " << at;
            }
        }
    }
}

TEST(OldStyleTextAppend, ManyTexts) {
    std::mt19937 random(7);
    constexpr std::string_view pieces[] = {"word ",    "\xC3\xA9",   "\xF0\x9F\x98\x80",
                                           "\xFF\xC3", "\"quoted\"", "\\",
                                           "\x01\x7F", "12345",      "\xED\xA0\x80"};
    for (int i = 0; i < 5000; ++i) {
        std::string text;
        for (auto left = random() % 12; left > 0; --left) {
            text += pieces[random() % std::size(pieces)];
        }
        ASSERT_EQ(appended(text), "before" + slowText(text)) << i;
    }
}

/// What `putText` writes, with nothing changed before and behind it; nothing for null.
std::optional<std::string> put(std::string_view text) {
    std::string memory(text.size() + 4, '=');
    const char* const end = OldStyleText::putText(memory.data() + 1, text);
    EXPECT_TRUE(memory.front() == '=' && memory.back() == '=');
    if (end == nullptr) {
        return std::nullopt;
    }
    return memory.substr(1, static_cast<std::size_t>(end - memory.data()) - 1);
}

/// The same by `slowText`.
std::optional<std::string> slowPut(std::string_view text) {
    const std::string slow = slowText(text);
    if (slow != text && slow.substr(1, slow.size() - 2) != text) {
        return std::nullopt;
    }
    return slow;
}

TEST(OldStyleTextAppend, EveryByteIsSeenAtEveryPlace) {
    EXPECT_EQ(put({}), "\"\"");
    // How a text stands that has this byte and that filling.
    std::array<std::array<std::optional<std::string>, 256>, 2> expected = {};
    const std::string_view fillings = "a ";
    for (std::size_t byte = 0; byte < 256; ++byte) {
        for (std::size_t i = 0; i < fillings.size(); ++i) {
            expected.at(i).at(byte) = slowPut(std::string{fillings[i], static_cast<char>(byte)});
        }
    }
    for (std::size_t i = 0; i < fillings.size(); ++i) {
        for (std::size_t length = 2; length < 50; ++length) {
            std::string text(length, fillings[i]);
            for (std::size_t at = 0; at < length; ++at) {
                for (std::size_t byte = 0; byte < 256; ++byte) {
                    text[at] = static_cast<char>(byte);
                    const auto& alike = expected.at(i).at(byte);
                    const auto found = put(text);
                    ASSERT_EQ(found.has_value(), alike.has_value())
                        << length << " " << at << " " << byte;
                    if (found) {
                        ASSERT_EQ(*found, alike->size() == 2 ? text : '"' + text + '"');
                    }
                }
                text[at] = fillings[i];
            }
        }
    }
    for (std::size_t byte = 0; byte < 256; ++byte) {
        const std::string text(1, static_cast<char>(byte));
        EXPECT_EQ(put(text), slowPut(text)) << byte;
    }
}

TEST(OldStyleTextAppend, NumbersReadAsTheirDescriptionsDo) {
    const Value numbers[] = {0,
                             -1,
                             true,
                             false,
                             1.5,
                             std::numeric_limits<std::int64_t>::min(),
                             std::numeric_limits<std::int64_t>::max(),
                             std::numeric_limits<std::uint64_t>::max()};
    for (const Value& number : numbers) {
        EXPECT_EQ(OldStyleText::write(number), slowText(number.description()));
    }
}

TEST(OldStyleTextAppend, DictionariesOfEverySizeAreSorted) {
    std::mt19937 random(7);
    for (std::size_t size = 0; size < 70; ++size) {
        Value::Dictionary dictionary;
        while (dictionary.size() < size) {
            dictionary.set("key" + std::to_string(random()), 1);
        }
        std::string expected = "{\n";
        for (const Value::Dictionary::Entry* entry : dictionary.sorted()) {
            expected += "    " + entry->first + " = 1;\n";
        }
        EXPECT_EQ(OldStyleText::write(dictionary), expected + "}");
    }
}

TEST(OldStyleTextAppend, BytesInGroupsOfFour) {
    std::string out = "=";
    OldStyleText::appendBytes(out, {});
    OldStyleText::appendBytes(out, bytesOf("abcd"));
    OldStyleText::appendBytes(out, bytesOf("abcde"));
    EXPECT_EQ(out, "=<><61626364><61626364 65>");
    for (std::size_t count = 0; count < 20; ++count) {
        out.clear();
        OldStyleText::appendBytes(out, Data(count));
        EXPECT_EQ(out.size(), OldStyleText::lengthOfBytes(count));
        std::string memory(out.size() + 1, '=');
        const char* const end = OldStyleText::putBytes(memory.data(), Data(count));
        EXPECT_EQ(end, memory.data() + out.size());
        EXPECT_EQ(memory, out + "=");
    }
}

} // namespace
} // namespace tav
