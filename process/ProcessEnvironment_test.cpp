#include "process/ProcessEnvironment.hpp"

#include <gtest/gtest.h>

namespace tav {
namespace {

using Entry = ProcessEnvironment::Entry;

TEST(ProcessEnvironmentTest, EntriesAreInTheOrderOfTheirNames) {
    const ProcessEnvironment environment = {{"B", "2"}, {"A", "1"}, {"a", "3"}};
    EXPECT_EQ(std::vector<Entry>(environment.begin(), environment.end()),
              (std::vector<Entry>{{"A", "1"}, {"B", "2"}, {"a", "3"}}));
    EXPECT_EQ(environment.size(), 3U);
}

TEST(ProcessEnvironmentTest, TheFirstOfOneNameHolds) {
    const ProcessEnvironment environment = {{"A", "first"}, {"B", "2"}, {"A", "second"}};
    EXPECT_EQ(environment.find("A"), "first");
    EXPECT_EQ(environment.size(), 2U);
}

TEST(ProcessEnvironmentTest, FindsExactNamesOnly) {
    const ProcessEnvironment environment = {{"PATH", "/bin"}, {"", "empty"}};
    EXPECT_EQ(environment.find("PATH"), "/bin");
    EXPECT_EQ(environment.find(""), "empty");
    EXPECT_EQ(environment.find("PAT"), std::nullopt);
    EXPECT_EQ(environment.find("path"), std::nullopt);
    EXPECT_EQ(environment.find("PATHS"), std::nullopt);
    EXPECT_EQ(ProcessEnvironment().find("PATH"), std::nullopt);
    EXPECT_TRUE(ProcessEnvironment().empty());
}

TEST(ProcessEnvironmentTest, CopiesOutliveTheOriginal) {
    ProcessEnvironment copy;
    {
        const ProcessEnvironment original = {{"A", std::string(1000, 'x')}};
        copy = original;
    }
    EXPECT_EQ(copy.find("A"), std::string(1000, 'x'));
    EXPECT_EQ(copy, (ProcessEnvironment{{"A", std::string(1000, 'x')}}));
}

} // namespace
} // namespace tav
