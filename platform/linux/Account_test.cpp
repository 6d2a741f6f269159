#include "platform/linux/Account.hpp"

#include <gtest/gtest.h>

namespace tav::internal {
namespace {

TEST(Account, IsThatOfTheHost) {
    const std::optional<Account> root = accountOf(0);
    if (!root) {
        GTEST_SKIP() << "root has no account here";
    }
    EXPECT_EQ(root->name, "root");
    EXPECT_TRUE(root->home.starts_with('/'));
}

TEST(Account, AUserWithoutOneHasNothing) { EXPECT_FALSE(accountOf(0xFFFF'FFF0U)); }

} // namespace
} // namespace tav::internal
