#include "base/OptionalText.hpp"

#include <gtest/gtest.h>

namespace tav {

namespace {

std::string shown(OptionalText text) { return text.isNil() ? "nil" : std::string(*text); }

TEST(OptionalText, NilAndTheEmptyTextDiffer) {
    EXPECT_EQ(shown(nullptr), "nil");
    EXPECT_EQ(shown(std::nullopt), "nil");
    EXPECT_EQ(shown(static_cast<const char*>(nullptr)), "nil");
    EXPECT_EQ(shown(std::optional<std::string>()), "nil");
    EXPECT_EQ(shown(""), "");
    EXPECT_EQ(shown(std::string()), "");
    EXPECT_EQ(shown(std::string_view()), "");
    EXPECT_EQ(shown(std::optional<std::string>("")), "");
}

TEST(OptionalText, RefersToTheCallersText) {
    const std::string text("a\0b", 3);
    EXPECT_EQ(shown(text), text);
    EXPECT_EQ((*OptionalText(text)).data(), text.data());
    EXPECT_EQ(shown("text"), "text");
    EXPECT_EQ(shown(std::optional<std::string>("text")), "text");
}

} // namespace

} // namespace tav
