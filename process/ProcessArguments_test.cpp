#include "platform/memory/MemoryProcessTable.hpp"
#include "process/ProcessArguments.hpp"

#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace tav {
namespace {

using Texts = std::vector<std::string>;
using Environment = ProcessEnvironment;

ProcessArguments counted(std::string_view path, const Texts& arguments, const Texts& environment) {
    return parseArgumentArea(
        argumentAreaFromParts(ArgumentArea::Layout::Counted, path, arguments, environment));
}

ProcessArguments plain(std::string_view path, const Texts& arguments, const Texts& environment) {
    return parseArgumentArea(
        argumentAreaFromParts(ArgumentArea::Layout::Plain, path, arguments, environment));
}

/// An area with a count of one's own choosing before the bytes.
ArgumentArea withCount(std::int32_t count, std::string_view bytes) {
    std::string text(sizeof count, '\0');
    std::memcpy(text.data(), &count, sizeof count);
    text += bytes;
    const BytesView whole = bytesOf(text);
    ArgumentArea area;
    area.bytes.assign(whole.begin(), whole.end());
    return area;
}

std::string_view operator""_bytes(const char* text, std::size_t size) { return {text, size}; }

TEST(ArgumentAreaTest, SplitsPathCommandArgumentsAndEnvironment) {
    const ProcessArguments found =
        counted("/opt/tool/bin/tool", {"/opt/tool/bin/tool", "-v", "file.txt"},
                {"HOME=/home/user", "LANG=C"});
    EXPECT_EQ(found.executablePath, "/opt/tool/bin/tool");
    EXPECT_EQ(found.command, "tool");
    EXPECT_EQ(found.arguments, (Texts{"-v", "file.txt"}));
    EXPECT_EQ(found.environment, (Environment{{"HOME", "/home/user"}, {"LANG", "C"}}));
    EXPECT_EQ(found.annotation, std::nullopt);
}

TEST(ArgumentAreaTest, BothLayoutsAgreeWhereNoArgumentHasAnEqualsSign) {
    const Texts arguments = {"/bin/tool", "one", "two"};
    const Texts environment = {"A=1", "B=2"};
    EXPECT_EQ(counted("/bin/tool", arguments, environment),
              plain("/bin/tool", arguments, environment));
}

TEST(ArgumentAreaTest, NULsBetweenThePathAndTheArgumentsAreSkipped) {
    const ProcessArguments found =
        parseArgumentArea(withCount(2, "/bin/a\0\0\0\0\0a\0b\0X=1\0"_bytes));
    EXPECT_EQ(found.command, "a");
    EXPECT_EQ(found.arguments, Texts{"b"});
    EXPECT_EQ(found.environment, (Environment{{"X", "1"}}));
}

TEST(ArgumentAreaTest, TheLegacyLauncherIsLookedThrough) {
    const ProcessArguments found = counted(
        "/usr/lib/LaunchCFMApp", {"/usr/lib/LaunchCFMApp", "/Applications/Old", "-x"}, {"A=1"});
    EXPECT_EQ(found.command, "Old");
    EXPECT_EQ(found.arguments, Texts{"-x"});
    EXPECT_EQ(found.environment, (Environment{{"A", "1"}}));
}

TEST(ArgumentAreaTest, TheLauncherIsDroppedWhereverItStands) {
    const ProcessArguments found = counted("/bin/a", {"a", "/x/LaunchCFMApp", "b"}, {"A=1"});
    EXPECT_EQ(found.arguments, Texts{"b"});
    EXPECT_EQ(found.environment, (Environment{{"A", "1"}}));
}

TEST(ArgumentAreaTest, ARepeatOfTheProgramsOwnPathIsNoArgument) {
    const ProcessArguments found = counted("/bin/a", {"/bin/a", "/bin/a", "x", "other/a"}, {"A=1"});
    EXPECT_EQ(found.command, "a");
    EXPECT_EQ(found.arguments, Texts{"x"});
    EXPECT_EQ(found.environment, (Environment{{"A", "1"}}));
}

TEST(ArgumentAreaTest, TheUnderscoreVariableStaysInTheEnvironment) {
    const ProcessArguments found = counted("/bin/a", {"/bin/a"}, {"_=/bin/a", "B=2"});
    EXPECT_EQ(found.environment, (Environment{{"_", "/bin/a"}, {"B", "2"}}));
}

TEST(ArgumentAreaTest, AVariableThatEndsInTheCommandIsDroppedLikeARepeat) {
    const ProcessArguments found = counted("/bin/a", {"/bin/a", "x"}, {"SHELL=/bin/a", "B=2"});
    // The count goes down for it as well, so the last argument is left to neither list.
    EXPECT_EQ(found.arguments, Texts{});
    EXPECT_EQ(found.environment, (Environment{{"B", "2"}}));
}

TEST(ArgumentAreaTest, OnlyTheFirstEqualsSignSplits) {
    const ProcessArguments found = counted("/bin/a", {"a"}, {"OPTIONS=x=1=2", "EMPTY="});
    EXPECT_EQ(found.environment, (Environment{{"OPTIONS", "x=1=2"}, {"EMPTY", ""}}));
}

TEST(ArgumentAreaTest, TextsWithoutEqualsBehindTheCountBelongToNothing) {
    const ProcessArguments found = counted("/bin/a", {"a", "b"}, {"JUNK", "A=1"});
    EXPECT_EQ(found.arguments, Texts{"b"});
    EXPECT_EQ(found.environment, (Environment{{"A", "1"}}));
}

TEST(ArgumentAreaTest, TheFirstOfEqualVariablesHolds) {
    EXPECT_EQ(counted("/bin/a", {"a"}, {"A=first", "A=second"}).environment,
              (Environment{{"A", "first"}}));
    EXPECT_EQ(plain("/bin/a", {"a"}, {"A=first", "A=second"}).environment,
              (Environment{{"A", "first"}}));
}

TEST(ArgumentAreaTest, WithoutACountAnArgumentWithEqualsBeforeTheEnvironmentIsTakenForIt) {
    const ProcessArguments found = plain("/bin/a", {"a", "b", "size=3"}, {"A=1"});
    EXPECT_EQ(found.arguments, Texts{"b"});
    EXPECT_EQ(found.environment, (Environment{{"size", "3"}, {"A", "1"}}));
    EXPECT_EQ(counted("/bin/a", {"a", "b", "size=3"}, {"A=1"}).arguments, (Texts{"b", "size=3"}));
}

TEST(ArgumentAreaTest, WithoutACountTheWalkStopsAtTheLastTextWithoutEquals) {
    const ProcessArguments found = plain("/bin/a", {"a", "x=1", "stop"}, {"A=1"});
    EXPECT_EQ(found.arguments, (Texts{"x=1", "stop"}));
    EXPECT_EQ(found.environment, (Environment{{"A", "1"}}));
}

TEST(ArgumentAreaTest, ACountOfZeroLeavesTheArgumentsWhole) {
    const ProcessArguments found = parseArgumentArea(withCount(0, "/bin/a\0a\0b\0A=1\0"_bytes));
    EXPECT_EQ(found.command, "a");
    EXPECT_EQ(found.arguments, (Texts{"b", "A=1"}));
    EXPECT_EQ(found.environment, (Environment{{"A", "1"}}));
}

TEST(ArgumentAreaTest, ACountOfOneLeavesNoArguments) {
    const ProcessArguments found = parseArgumentArea(withCount(1, "/bin/a\0a\0b\0A=1\0"_bytes));
    EXPECT_EQ(found.arguments, Texts{});
    EXPECT_EQ(found.environment, (Environment{{"A", "1"}}));
}

TEST(ArgumentAreaTest, ACountLargerThanTheTextsKeepsThemAll) {
    const ProcessArguments found =
        parseArgumentArea(withCount(INT32_MAX, "/bin/a\0a\0b\0A=1\0"_bytes));
    EXPECT_EQ(found.arguments, (Texts{"b", "A=1"}));
    EXPECT_EQ(found.environment, Environment{});
}

TEST(ArgumentAreaTest, ACountBelowZeroIsAsGoodAsNone) {
    for (const std::int32_t count : {-1, -2, INT32_MIN}) {
        const ProcessArguments found =
            parseArgumentArea(withCount(count, "/bin/a\0a\0b\0A=1\0"_bytes));
        EXPECT_EQ(found.arguments, Texts{"b"}) << count;
        EXPECT_EQ(found.environment, (Environment{{"A", "1"}})) << count;
    }
    // A launcher that is dropped from a count of 0.
    const ProcessArguments fallen =
        parseArgumentArea(withCount(0, "/bin/a\0LaunchCFMApp\0a\0b\0A=1\0"_bytes));
    EXPECT_EQ(fallen.arguments, Texts{"b"});
}

TEST(ArgumentAreaTest, EmptyTextsArePassedOverWithoutLoweringTheCount) {
    const ProcessArguments found = counted("/bin/a", {"a", "", "b"}, {"A=1", "B=2"});
    // Three were counted, two are there: the first variable is left among the arguments.
    EXPECT_EQ(found.arguments, (Texts{"b", "A=1"}));
    EXPECT_EQ(found.environment, (Environment{{"B", "2"}}));
}

TEST(ArgumentAreaTest, TextsThatAreNoUTF8ArePassedOverWhereverTheyStand) {
    const ProcessArguments found =
        counted("/bin/\xff", {"\xfe", "/bin/a", "b\x80", "c"}, {"A=\xc3", "B=2"});
    EXPECT_EQ(found.executablePath, std::nullopt);
    EXPECT_EQ(found.command, "a");
    EXPECT_EQ(found.arguments, (Texts{"c", "B=2"}));
    EXPECT_EQ(found.environment, Environment{});
}

TEST(ArgumentAreaTest, TheLastTextWithoutItsNULIsPassedOver) {
    const ProcessArguments found = parseArgumentArea(withCount(3, "/bin/a\0a\0b\0c"_bytes));
    EXPECT_EQ(found.arguments, Texts{"b"});
}

TEST(ArgumentAreaTest, AnEmptyPathIsNoPath) {
    const ProcessArguments found = counted("", {"/bin/a", "b"}, {});
    EXPECT_EQ(found.executablePath, std::nullopt);
    EXPECT_EQ(found.command, "a");
    EXPECT_EQ(found.arguments, Texts{"b"});
}

TEST(ArgumentAreaTest, WithoutANULNothingIsCollected) {
    EXPECT_EQ(parseArgumentArea(withCount(1, "/bin/a")), ProcessArguments());
    EXPECT_EQ(parseArgumentArea(withCount(1, "")), ProcessArguments());
}

TEST(ArgumentAreaTest, WithNothingBehindThePathOnlyThePathIsKept) {
    ProcessArguments onlyPath;
    onlyPath.executablePath = "/bin/a";
    EXPECT_EQ(parseArgumentArea(withCount(1, "/bin/a\0"_bytes)), onlyPath);
    EXPECT_EQ(parseArgumentArea(withCount(1, "/bin/a\0\0\0\0"_bytes)), onlyPath);
}

TEST(ArgumentAreaTest, AnAreaShorterThanItsCountIsEmpty) {
    ArgumentArea area;
    EXPECT_EQ(parseArgumentArea(area), ProcessArguments());
    area.bytes.resize(3);
    EXPECT_EQ(parseArgumentArea(area), ProcessArguments());
}

TEST(ArgumentAreaTest, WithoutACommandThereIsNone) {
    const ProcessArguments found = counted("/x/LaunchCFMApp", {"LaunchCFMApp"}, {});
    EXPECT_EQ(found.command, std::nullopt);
    EXPECT_EQ(found.executablePath, "/x/LaunchCFMApp");
}

TEST(AnnotationTest, AWidgetHostIsNamedAfterItsWidget) {
    EXPECT_EQ(counted("/x/DashboardClient", {"/x/DashboardClient", "/w/Clock.wdgt"}, {}).annotation,
              "Clock");
    EXPECT_EQ(counted("/x/Konfabulator", {"/x/Konfabulator", "/w/Sun.widget"}, {}).annotation,
              "Sun");
}

TEST(AnnotationTest, AJavaProgramIsNamedAfterItsArchive) {
    const ProcessArguments found = counted("/usr/bin/java", {"java", "-jar", "/opt/app.jar"}, {});
    EXPECT_EQ(found.annotation, "app.jar");
    EXPECT_EQ(found.arguments, (Texts{"-jar", "/opt/app.jar"}));
}

TEST(AnnotationTest, TheFirstThatFitsHolds) {
    EXPECT_EQ(counted("/usr/bin/java", {"java", "a.jar", "b.jar", "c.wdgt"}, {}).annotation,
              "a.jar");
}

TEST(AnnotationTest, OtherCommandsHaveNone) {
    EXPECT_EQ(counted("/bin/ls", {"ls", "a.jar", "b.wdgt"}, {}).annotation, std::nullopt);
    EXPECT_EQ(counted("/bin/Java", {"Java", "a.jar"}, {}).annotation, std::nullopt);
}

TEST(AnnotationTest, TheWidgetHostsNameAnywhereTurnsTheSearchOn) {
    EXPECT_EQ(
        counted("/bin/a", {"a", "early.jar", "/x/DashboardClient", "late.jar"}, {}).annotation,
        "late.jar");
}

TEST(AnnotationTest, TheCommandItselfIsNotLookedAt) {
    EXPECT_EQ(counted("/bin/java", {"java"}, {}).annotation, std::nullopt);
    EXPECT_EQ(counted("/x/a.jar", {"/x/a.jar"}, {}).annotation, std::nullopt);
}

TEST(AnnotationTest, VariablesAreLookedAtLikeArguments) {
    EXPECT_EQ(counted("/bin/java", {"java"}, {"CLASSPATH=/opt/lib.jar"}).annotation, "lib.jar");
}

TEST(AnnotationTest, ExtensionsCompareExactly) {
    EXPECT_EQ(counted("/bin/java", {"java", "A.JAR"}, {}).annotation, std::nullopt);
}

TEST(ArgumentAreaTest, AnyBytesHaveAnAnswer) {
    std::mt19937 random(20010101);
    std::uniform_int_distribution<int> pick(0, 11);
    const Texts pieces = {std::string("\0", 1),
                          "a",
                          "=",
                          "/",
                          "LaunchCFMApp",
                          "\xff",
                          "java",
                          ".jar",
                          "_=",
                          ".wdgt",
                          "\xc3\xa9",
                          "DashboardClient"};
    for (int round = 0; round < 20000; ++round) {
        std::string bytes;
        for (int i = pick(random) * 3; i > 0; --i) {
            bytes += pieces[static_cast<std::size_t>(pick(random))];
        }
        ArgumentArea area;
        area.bytes = dataFromText(bytes);
        area.layout = round % 2 == 0 ? ArgumentArea::Layout::Counted : ArgumentArea::Layout::Plain;
        const ProcessArguments found = parseArgumentArea(area);
        EXPECT_TRUE(!found.command || !found.command->empty());
        EXPECT_TRUE(found.command || found.arguments.empty());
    }
}

} // namespace
} // namespace tav
