#include "base/Exception.hpp"

#include <gtest/gtest.h>

namespace tav {

namespace {

TEST(Exception, CarriesItsNameAndReason) {
    try {
        throw Exception("File copy canceled", "a\xFF");
    } catch (const std::exception& exception) {
        EXPECT_STREQ(exception.what(), "a\xFF");
        const auto* const ours = dynamic_cast<const Exception*>(&exception);
        ASSERT_NE(ours, nullptr);
        EXPECT_EQ(ours->name(), "File copy canceled");
        EXPECT_EQ(ours->reason(), "a\xFF");
    }
}

} // namespace

} // namespace tav
