#include "platform/linux/ProcRecords.hpp"

#include <string>

#include <gtest/gtest.h>

namespace tav::internal {
namespace {

std::string statLine(const std::string& name, const std::string& state = "S") {
    return "1234 (" + name + ") " + state +
           " 77 1230 1229 34819 1231 4194304 100 0 0 0 1 2 0 0 20 0 1 0 555 1000 200 "
           "18446744073709551615 4096 8192 140722000000000 0 0 0 0 0 0 0 0 0 17 1 0 0 0 0 0 "
           "12288 16384 20480 140722000001000 140722000001100 140722000001100 140722000001200 0\n";
}

TEST(ProcStatTest, ReadsEveryField) {
    const std::optional<StatRecord> found = parseProcStat(statLine("bash"));
    ASSERT_TRUE(found);
    EXPECT_EQ(found->process.processIdentifier, 1234);
    EXPECT_EQ(found->process.shortName, "bash");
    EXPECT_EQ(found->process.parent, 77);
    EXPECT_EQ(found->process.processGroup, 1230);
    EXPECT_EQ(found->process.terminal, 34819);
    EXPECT_EQ(found->process.terminalProcessGroup, 1231);
    EXPECT_FALSE(found->process.isZombie);
    EXPECT_FALSE(found->isThread);
    EXPECT_FALSE(found->isDead);
    EXPECT_EQ(found->stackStart, 140722000000000U);
}

TEST(ProcStatTest, TheShortNameMayHoldAnyBytes) {
    for (const char* name : {"a b", "a) S 1 (b", ")", "(", "", "line\nfeed", "\xff\xfe", ") Z 0"}) {
        const std::optional<StatRecord> found = parseProcStat(statLine(name));
        ASSERT_TRUE(found) << name;
        EXPECT_EQ(found->process.shortName, name);
        EXPECT_EQ(found->process.parent, 77) << name;
        EXPECT_FALSE(found->process.isZombie) << name;
    }
}

TEST(ProcStatTest, TellsZombiesAndTheDead) {
    EXPECT_TRUE(parseProcStat(statLine("a", "Z"))->process.isZombie);
    EXPECT_TRUE(parseProcStat(statLine("a", "X"))->isDead);
    EXPECT_FALSE(parseProcStat(statLine("a", "T"))->process.isZombie);
}

TEST(ProcStatTest, AThreadHasNoSignalToEndWith) {
    std::string line = statLine("a");
    line.replace(line.find(" 17 "), 4, " -1 ");
    EXPECT_TRUE(parseProcStat(line)->isThread);
}

TEST(ProcStatTest, NoTerminalIsZero) {
    std::string line = statLine("a");
    line.replace(line.find(" 34819 1231 "), 12, " 0 -1 ");
    const std::optional<StatRecord> found = parseProcStat(line);
    ASSERT_TRUE(found);
    EXPECT_EQ(found->process.terminal, 0);
    EXPECT_EQ(found->process.terminalProcessGroup, 0);
}

TEST(ProcStatTest, LinesOfAnotherFormAreNothing) {
    for (const char* line :
         {"", "1234", "1234 (a", "1234 a) S 1 2 3 4 5", "(a) S 1 2 3 4 5", "1234 (a)", "1234 (a) ",
          "1234 (a) S", "1234 (a) S 1 2 3", "1234 (a) S x y z", "99999999999999 (a) S 1 2 3 4 5",
          "1 (a) S 99999999999 2 3 4 5"}) {
        EXPECT_FALSE(parseProcStat(line)) << line;
    }
}

TEST(ProcStatTest, AShortLineTellsNoPlaceInMemory) {
    const std::optional<StatRecord> found = parseProcStat("1 (a) S 0 1 1 0 -1");
    ASSERT_TRUE(found);
    EXPECT_EQ(found->stackStart, 0U);
}

TEST(ProcStatusTest, ReadsRealAndEffectiveUser) {
    const std::optional<ProcessUsers> users = parseProcStatusUsers(
        "Name:\tUid:\t9\nTgid:\t12\nPid:\t12\nUid:\t1000\t1001\t1002\t1003\nGid:\t5\t6\t7\t8\n");
    ASSERT_TRUE(users);
    EXPECT_EQ(users->real, 1000U);
    EXPECT_EQ(users->effective, 1001U);
}

TEST(ProcStatusTest, AThreadIsNoProcess) {
    EXPECT_FALSE(parseProcStatusUsers("Tgid:\t12\nPid:\t13\nUid:\t0\t0\t0\t0\n"));
}

TEST(ProcStatusTest, TextsOfAnotherFormAreNothing) {
    for (const char* text :
         {"", "Uid:", "Uid:\t1\n", "Tgid:\t1\nPid:\t1\n", "Tgid:\t1\nPid:\t1\nUid:\tx\ty\n",
          "Tgid:\t1\nPid:\t1\nUid:\t1\n", "Tgid:\t1\nPid:\t1\nUid:\t-1\t5\n",
          "Tgid:\t1\nPid:\t1\nUid:\t4294967296\t5\n"}) {
        EXPECT_FALSE(parseProcStatusUsers(text)) << text;
    }
}

TEST(ProcStatusTest, ReadsGroups) {
    const std::optional<StatusGroups> groups =
        parseProcStatusGroups("Gid:\t100\t101\t102\t103\nGroups:\t4 24 27 \n");
    ASSERT_TRUE(groups);
    EXPECT_EQ(groups->real, 100U);
    EXPECT_EQ(groups->supplementary, (std::vector<std::uint32_t>{4, 24, 27}));
    EXPECT_TRUE(parseProcStatusGroups("Gid:\t1\t1\t1\t1\nGroups:\t\n")->supplementary.empty());
    EXPECT_FALSE(parseProcStatusGroups("Gid:\t1\t1\t1\t1\n"));
}

std::string_view operator""_bytes(const char* text, std::size_t size) { return {text, size}; }

TEST(CountArgumentsTest, CountsTextsWithTheirNULs) {
    EXPECT_EQ(countArguments("a\0b\0c\0"_bytes, 3), 3);
    EXPECT_EQ(countArguments("a\0b\0c\0"_bytes, 0), 3);
    EXPECT_EQ(countArguments("a\0b\0c"_bytes, 0), 3);
    EXPECT_EQ(countArguments("", 0), 0);
}

TEST(CountArgumentsTest, EmptyArgumentsCountWhenTheyWereDeclared) {
    EXPECT_EQ(countArguments("a\0\0b\0\0"_bytes, 4), 4);
    EXPECT_EQ(countArguments("a\0\0b\0"_bytes, 0), 3);
}

TEST(CountArgumentsTest, PaddingBehindATitleDoesNotCount) {
    EXPECT_EQ(countArguments("worker: idle\0\0\0\0\0\0\0\0"_bytes, 4), 1);
    EXPECT_EQ(countArguments("worker: idle\0\0\0"_bytes, 0), 1);
    EXPECT_EQ(countArguments("\0\0\0"_bytes, 9), 1);
}

} // namespace
} // namespace tav::internal
