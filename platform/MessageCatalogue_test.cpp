#include "platform/MessageCatalogue.hpp"

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace tav {
namespace {

using Messages = std::vector<std::pair<std::string, std::string>>;

/// The bytes of a catalogue in a byte order, with texts in the order that is given.
class Writer {
  public:
    explicit Writer(bool isBigEndian) : isBigEndian_(isBigEndian) {}

    std::string write(const Messages& messages, std::uint32_t revision = 0) {
        const auto count = static_cast<std::uint32_t>(messages.size());
        const std::uint32_t texts = 28 + 16 * count;
        std::uint32_t offset = texts;
        for (const std::uint32_t number :
             {0x950412deU, revision, count, 28U, 28 + 8 * count, 0U, texts}) {
            put(number);
        }
        std::string body;
        for (const auto member : {&Messages::value_type::first, &Messages::value_type::second}) {
            for (const auto& message : messages) {
                const std::string& text = message.*member;
                put(static_cast<std::uint32_t>(text.size()));
                put(offset);
                body += text + '\0';
                offset += static_cast<std::uint32_t>(text.size()) + 1;
            }
        }
        return bytes_ + body;
    }

  private:
    void put(std::uint32_t number) {
        for (unsigned i = 0; i < 4; ++i) {
            bytes_ += static_cast<char>(number >> (isBigEndian_ ? 24 - 8 * i : 8 * i));
        }
    }

    bool isBigEndian_;
    std::string bytes_;
};

std::optional<MessageCatalogue> read(std::string_view bytes) {
    return MessageCatalogue::read(dataFromText(bytes));
}

std::string catalogue(const Messages& messages) { return Writer(false).write(messages); }

TEST(MessageCatalogue, AnswersTranslationsInBothByteOrders) {
    for (const bool isBigEndian : {false, true}) {
        const auto read_ = read(Writer(isBigEndian).write({{"", "x: y"}, {"a", "A"}, {"b", "BB"}}));
        ASSERT_TRUE(read_);
        EXPECT_EQ(read_->find("a"), "A");
        EXPECT_EQ(read_->find("b"), "BB");
        EXPECT_EQ(read_->find("c"), std::nullopt);
        EXPECT_EQ(read_->find("A"), std::nullopt);
        EXPECT_EQ(read_->messages().size(), 2U);
    }
}

TEST(MessageCatalogue, SurvivesBeingMoved) {
    auto first = read(catalogue({{"a", "A"}}));
    const MessageCatalogue second = std::move(*first);
    first.reset();
    EXPECT_EQ(second.find("a"), "A");
}

TEST(MessageCatalogue, TheEmptyTextAndEmptyTranslationsAreNone) {
    const auto read_ = read(catalogue({{"", "description"}, {"a", ""}}));
    ASSERT_TRUE(read_);
    EXPECT_EQ(read_->find(""), std::nullopt);
    EXPECT_EQ(read_->find("a"), std::nullopt);
}

TEST(MessageCatalogue, TextsOutOfOrderAreRefusedAndOfEqualOnesTheFirstHolds) {
    EXPECT_FALSE(read(catalogue({{"b", "B"}, {"a", "A"}})));
    EXPECT_FALSE(read(catalogue({{"a", "A"}, {"", "x"}})));
    const auto read_ = read(catalogue({{"a", "1"}, {"a", "2"}, {"b", "B"}, {"\xc3\xa4", "C"}}));
    ASSERT_TRUE(read_);
    EXPECT_EQ(read_->find("a"), "1");
    EXPECT_EQ(read_->find("b"), "B");
    EXPECT_EQ(read_->find("\xc3\xa4"), "C");
}

TEST(MessageCatalogue, OfPluralsTheSingularCounts) {
    using namespace std::string_literals;
    const auto read_ = read(catalogue({{"file\0files"s, "Datei\0Dateien"s}}));
    ASSERT_TRUE(read_);
    EXPECT_EQ(read_->find("file"), "Datei");
    EXPECT_EQ(read_->find("file\0files"s), std::nullopt);
}

TEST(MessageCatalogue, OnlyUTF8IsTaken) {
    const auto reads = [](const std::string& type) {
        return read(catalogue({{"", "Content-Type: text/plain; " + type}, {"a", "A"}})).has_value();
    };
    EXPECT_TRUE(reads("charset=UTF-8\n"));
    EXPECT_TRUE(reads("CHARSET=utf8"));
    EXPECT_TRUE(reads("charset=us-ascii\nX: y"));
    EXPECT_TRUE(reads(""));
    EXPECT_FALSE(reads("charset=ISO-8859-1\n"));
    EXPECT_FALSE(reads("charset="));
}

TEST(MessageCatalogue, RevisionsOfAnotherFormatAreRefused) {
    EXPECT_TRUE(read(Writer(false).write({{"a", "A"}}, 1)));
    EXPECT_TRUE(read(Writer(false).write({{"a", "A"}}, 0x10001)));
    EXPECT_FALSE(read(Writer(false).write({{"a", "A"}}, 0x20000)));
}

TEST(MessageCatalogue, WhatIsNoCatalogueIsNone) {
    EXPECT_FALSE(read(""));
    EXPECT_FALSE(read("garbage"));
    EXPECT_FALSE(read(std::string(1000, '\0')));
    std::string other = catalogue({{"a", "A"}});
    other[0] = 'x';
    EXPECT_FALSE(read(other));
    EXPECT_TRUE(read(catalogue({})));
}

TEST(MessageCatalogue, CutAnywhereIsNone) {
    const std::string whole = catalogue({{"", "x"}, {"a", "A"}, {"b", "B"}});
    // The last NUL is nobody's.
    for (std::size_t size = 0; size + 1 < whole.size(); ++size) {
        EXPECT_FALSE(read(whole.substr(0, size))) << size;
    }
}

TEST(MessageCatalogue, NumbersThatReachBeyondTheEndAreRefused) {
    const std::string whole = catalogue({{"a", "A"}, {"b", "B"}});
    for (std::size_t at = 8; at < 28 + 32; at += 4) {
        if (at == 20 || at == 24) {
            continue; // The hash table is not used.
        }
        for (const char* const number :
             {"\xff\xff\xff\xff", "\xff\xff\xff\x7f", "\xfe\xff\xff\xff"}) {
            std::string hostile = whole;
            hostile.replace(at, 4, number, 4);
            EXPECT_FALSE(read(hostile)) << at;
        }
    }
}

} // namespace
} // namespace tav
