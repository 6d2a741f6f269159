#include "base/Result.hpp"

#include <cerrno>
#include <memory>
#include <string>
#include <utility>

#include <gtest/gtest.h>

namespace tav {

namespace {

TEST(Status, CarriesErrorNumbersNegated) {
    EXPECT_EQ(statusFromErrorNumber(0), Status::Success);
    EXPECT_EQ(static_cast<int>(statusFromErrorNumber(ENOENT)), -ENOENT);
    EXPECT_EQ(SystemError(ENOENT).status(), static_cast<Status>(-ENOENT));
    EXPECT_EQ(SystemError().status(), Status::Success);
}

TEST(SystemError, IsNoneUnlessItHasANumber) {
    EXPECT_TRUE(SystemError().isNone());
    EXPECT_TRUE(SystemError(0).isNone());
    EXPECT_FALSE(SystemError(EACCES).isNone());
    EXPECT_EQ(SystemError(EACCES), SystemError(EACCES));
    EXPECT_FALSE(SystemError(EACCES) == SystemError(EPERM));
}

TEST(Result, IsAValueOrAnError) {
    const Result<std::string> good(std::string("value"));
    EXPECT_TRUE(good.ok());
    EXPECT_EQ(good.value(), "value");
    EXPECT_TRUE(good.error().isNone());

    const Result<std::string> bad{SystemError(ENOENT)};
    EXPECT_FALSE(bad.ok());
    EXPECT_EQ(bad.error().number(), ENOENT);
}

TEST(Result, AnErrorWithoutANumberIsOneNevertheless) {
    const Result<int> result{SystemError()};
    EXPECT_FALSE(result.ok());
    EXPECT_EQ(result.error().number(), EIO);
}

TEST(Result, HandsItsValueOver) {
    Result<std::unique_ptr<int>> result(std::make_unique<int>(7));
    *result.value() = 8;
    const std::unique_ptr<int> taken = std::move(result).value();
    EXPECT_EQ(*taken, 8);
}

} // namespace

} // namespace tav
