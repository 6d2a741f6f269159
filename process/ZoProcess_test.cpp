#include "platform/memory/MemoryFileSystem.hpp"
#include "platform/memory/MemoryProcessTable.hpp"
#include "process/KernelFacts.hpp"
#include "process/ZoProcess.hpp"

#include <csignal>
#include <unordered_set>

#include <gtest/gtest.h>

namespace tav {
namespace {

std::vector<int> identifiers(const ZoProcess::List& processes) {
    std::vector<int> found;
    for (const ZoProcess& process : processes) {
        found.push_back(process.processIdentifier());
    }
    return found;
}

std::optional<int> identifier(const std::optional<ZoProcess>& process) {
    return process ? std::optional(process->processIdentifier()) : std::nullopt;
}

std::string infoPlist(std::string_view bundleIdentifier) {
    return "<plist version=\"1.0\"><dict><key>CFBundleIdentifier</key><string>" +
           std::string(bundleIdentifier) + "</string></dict></plist>";
}

class ZoProcessTest : public testing::Test {
  protected:
    MemoryProcessTable table;
    MemoryFileSystem files;
    ProcessTable::Replacement replacedTable{table};
    FileSystem::Replacement replacedFiles{files};

    ZoProcessTest() { ZoProcess::initialize(); }

    static ZoProcess process(int processIdentifier) {
        return ZoProcess::processForProcessIdentifier(processIdentifier).value();
    }

    /// A process that runs from a bundle X.app with that identifier.
    MemoryProcess& addApplication(int processIdentifier, const std::string& name,
                                  std::string_view bundleIdentifier) {
        const std::string contents = "/Applications/" + name + ".app/Contents";
        files.addFile(contents + "/Info.plist", infoPlist(bundleIdentifier));
        files.addFile(contents + "/MacOS/" + name, "");
        return table.add(processIdentifier, contents + "/MacOS/" + name);
    }
};

TEST_F(ZoProcessTest, AProcessThatDoesNotExistIsNothing) {
    EXPECT_EQ(ZoProcess::processForProcessIdentifier(4711), std::nullopt);
    EXPECT_EQ(ZoProcess::processForProcessIdentifier(0), std::nullopt);
    EXPECT_EQ(ZoProcess::processForProcessIdentifier(-1), std::nullopt);
}

TEST_F(ZoProcessTest, StateTellsActiveZombieAndGone) {
    table.add(10, "/bin/a");
    table.add(11, "/bin/b").record.isZombie = true;
    const ZoProcess active = process(10);
    const ZoProcess zombie = process(11);
    EXPECT_EQ(active.state(), ZoProcessState::Active);
    EXPECT_EQ(zombie.state(), ZoProcessState::Zombie);
    table.table.clear();
    EXPECT_EQ(active.state(), ZoProcessState::Gone);
    EXPECT_EQ(static_cast<int>(ZoProcessState::Zombie), 6);
    EXPECT_EQ(static_cast<int>(ZoProcessState::Gone), 7);
}

TEST_F(ZoProcessTest, TheRecordIsReadAtEachQuestion) {
    MemoryProcess& entry = table.add(10, "/bin/a");
    entry.users = {1000, 1001};
    entry.record.parent = 7;
    entry.record.processGroup = 9;
    entry.record.terminal = 0x8803;
    entry.record.terminalProcessGroup = 12;
    const ZoProcess asked = process(10);
    EXPECT_EQ(asked.realUserIdentifier(), 1000);
    EXPECT_EQ(asked.userIdentifier(), 1001);
    EXPECT_EQ(asked.parentProcessIdentifier(), 7);
    EXPECT_EQ(asked.processGroup(), 9);
    EXPECT_EQ(asked.terminal(), 0x8803);
    EXPECT_EQ(asked.terminalProcessGroup(), 12);
    table.table.front().record.processGroup = 10;
    EXPECT_EQ(asked.processGroup(), 10);
}

TEST_F(ZoProcessTest, WithoutATerminalBothAnswersAreMinusOne) {
    table.add(10, "/bin/a");
    EXPECT_EQ(process(10).terminal(), -1);
    EXPECT_EQ(process(10).terminalProcessGroup(), -1);
}

TEST_F(ZoProcessTest, AfterTheEndEveryNumberIsMinusOne) {
    table.add(10, "/bin/a");
    const ZoProcess gone = process(10);
    table.table.clear();
    EXPECT_EQ(gone.realUserIdentifier(), -1);
    EXPECT_EQ(gone.userIdentifier(), -1);
    EXPECT_EQ(gone.parentProcessIdentifier(), -1);
    EXPECT_EQ(gone.processGroup(), -1);
    EXPECT_EQ(gone.terminal(), -1);
    EXPECT_EQ(gone.terminalProcessGroup(), -1);
    EXPECT_EQ(gone.processIdentifier(), 10);
    EXPECT_EQ(gone.parent(), std::nullopt);
}

TEST_F(ZoProcessTest, SelectorsChooseAndKeepTheKernelsOrder) {
    table.ownUser = 1000;
    table.add(30, "/bin/a").users = {1000, 0};
    table.add(20, "/bin/b").users = {0, 1000};
    table.add(10, "/bin/c").users = {1000, 1000};
    table.table[0].record.processGroup = 5;
    table.table[1].record.terminal = 77;
    EXPECT_EQ(identifiers(ZoProcess::allProcesses()), (std::vector{30, 20, 10}));
    EXPECT_EQ(identifiers(ZoProcess::processesForUser(1000)), (std::vector{20, 10}));
    EXPECT_EQ(identifiers(ZoProcess::processesForRealUser(1000)), (std::vector{30, 10}));
    EXPECT_EQ(identifiers(ZoProcess::userProcesses()), (std::vector{20, 10}));
    EXPECT_EQ(identifiers(ZoProcess::processesForProcessGroup(5)), std::vector{30});
    EXPECT_EQ(identifiers(ZoProcess::processesForTerminal(77)), std::vector{20});
    EXPECT_EQ(identifiers(ZoProcess::processesForTerminal(78)), std::vector<int>());
}

TEST_F(ZoProcessTest, EachListingAsksByItsOwnSelector) {
    static_cast<void>(ZoProcess::allProcesses());
    static_cast<void>(ZoProcess::processesForProcessGroup(1));
    static_cast<void>(ZoProcess::processesForTerminal(1));
    static_cast<void>(ZoProcess::processesForUser(1));
    static_cast<void>(ZoProcess::processesForRealUser(1));
    EXPECT_EQ(table.questions,
              (std::vector<std::string>{"processes 0", "processes 2", "processes 4", "processes 5",
                                        "processes 6"}));
}

TEST_F(ZoProcessTest, ATableThatCannotBeReadIsEmpty) {
    table.add(10, "/bin/a");
    table.isUnreadable = true;
    EXPECT_TRUE(ZoProcess::allProcesses().empty());
    EXPECT_TRUE(ZoProcess::userProcesses().empty());
    EXPECT_EQ(ZoProcess::processForCommand("a"), std::nullopt);
    EXPECT_TRUE(ZoProcess::processesWithName("a", nullptr).value().empty());
}

TEST_F(ZoProcessTest, CurrentProcessIsTheCaller) {
    table.ownProcess = 42;
    table.add(42, "/bin/self");
    EXPECT_EQ(ZoProcess::currentProcess().processIdentifier(), 42);
    EXPECT_EQ(ZoProcess::currentProcess().command(), "self");
}

TEST_F(ZoProcessTest, FamilyIsFoundByParents) {
    table.add(1, "/sbin/init").record.parent = 0;
    table.add(10, "/bin/shell").record.parent = 1;
    table.add(11, "/bin/a").record.parent = 10;
    table.add(12, "/bin/b").record.parent = 10;
    table.add(13, "/bin/c").record.parent = 10;
    EXPECT_EQ(identifier(process(11).parent()), 10);
    EXPECT_EQ(identifier(process(1).parent()), std::nullopt);
    EXPECT_EQ(identifiers(process(10).children()), (std::vector{11, 12, 13}));
    EXPECT_EQ(identifiers(process(12).siblings()), (std::vector{11, 13}));
    EXPECT_TRUE(process(12).children().empty());
}

TEST_F(ZoProcessTest, AProcessThatIsGoneHasNoFamily) {
    table.add(11, "/bin/a").record.parent = 10;
    table.add(12, "/bin/b").record.parent = 10;
    const ZoProcess gone = process(11);
    table.table.erase(table.table.begin());
    EXPECT_TRUE(gone.siblings().empty());
    EXPECT_TRUE(gone.children().empty());
}

TEST_F(ZoProcessTest, CommandsCompareExactlyOverAllUsers) {
    table.ownUser = 1000;
    table.add(10, "/bin/Tool").users = {0, 0};
    table.add(11, "/opt/tool");
    table.add(12, "/usr/bin/Tool");
    EXPECT_EQ(identifiers(ZoProcess::processesForCommand("Tool")), (std::vector{10, 12}));
    EXPECT_EQ(identifier(ZoProcess::processForCommand("Tool")), 10);
    EXPECT_EQ(ZoProcess::processForCommand("TOOL"), std::nullopt);
    EXPECT_TRUE(ZoProcess::processesForCommand("").empty());
}

TEST_F(ZoProcessTest, NamesCompareIgnoringCaseAmongTheUsersOwn) {
    table.ownUser = 1000;
    table.add(10, "/bin/Tool").users = {0, 0};
    table.add(11, "/opt/tool");
    table.add(12, "/usr/bin/TOOL");
    EXPECT_EQ(identifiers(ZoProcess::processesWithName("Tool", nullptr).value()),
              (std::vector{11, 12}));
    EXPECT_EQ(identifier(ZoProcess::processWithName("Tool", nullptr)), 11);
    EXPECT_TRUE(ZoProcess::processesWithName("other", nullptr).value().empty());
    EXPECT_EQ(ZoProcess::processWithName("other", nullptr), std::nullopt);
}

TEST_F(ZoProcessTest, ANilNameIsAnsweredWithNothing) {
    table.add(10, "/bin/a");
    EXPECT_EQ(ZoProcess::processesWithName(nullptr, nullptr), std::nullopt);
    EXPECT_EQ(ZoProcess::processesWithName(nullptr, "com.example.a"), std::nullopt);
    EXPECT_EQ(ZoProcess::processWithName(nullptr, nullptr), std::nullopt);
    EXPECT_EQ(ZoProcess::processWithExecutablePath(nullptr), std::nullopt);
    EXPECT_EQ(ZoProcess::processWithPathToBundle(nullptr), std::nullopt);
}

TEST_F(ZoProcessTest, AnIdentifierNarrowsANameDown) {
    addApplication(10, "Editor", "com.example.other");
    addApplication(11, "editor", "com.example.editor");
    table.add(12, "/bin/editor");
    EXPECT_EQ(identifiers(ZoProcess::processesWithName("editor", nullptr).value()),
              (std::vector{10, 11, 12}));
    EXPECT_EQ(identifiers(ZoProcess::processesWithName("editor", "com.example.editor").value()),
              std::vector{11});
    EXPECT_EQ(identifier(ZoProcess::processWithName("editor", "com.example.editor")), 11);
    EXPECT_EQ(ZoProcess::processWithName("editor", "COM.EXAMPLE.EDITOR"), std::nullopt);
}

TEST_F(ZoProcessTest, AnEmptyIdentifierMatchesNoBundle) {
    addApplication(10, "Editor", "");
    EXPECT_EQ(ZoProcess::processWithName("Editor", ""), std::nullopt);
    EXPECT_EQ(identifier(ZoProcess::processWithName("Editor", nullptr)), 10);
}

TEST_F(ZoProcessTest, AnUnreadablePathOrAVanishedFolderMatchesNoIdentifier) {
    MemoryProcess& unreadable = addApplication(10, "Editor", "com.example.editor");
    unreadable.executable.reset();
    EXPECT_EQ(ZoProcess::processWithName("Editor", "com.example.editor"), std::nullopt);
    table.add(11, "/gone/Editor.app/Contents/MacOS/Editor");
    EXPECT_EQ(ZoProcess::processWithName("Editor", "com.example.editor"), std::nullopt);
}

TEST_F(ZoProcessTest, TheFoldersBetweenMayHaveAnyNameForTheNameLookup) {
    files.addFile("/opt/x/Contents/Info.plist", infoPlist("com.example.x"));
    table.add(10, "/opt/x/bin/y/tool");
    EXPECT_EQ(identifier(ZoProcess::processWithName("tool", "com.example.x")), 10);
}

TEST_F(ZoProcessTest, ExecutableAndBundlePathsCompareIgnoringCase) {
    addApplication(10, "Editor", "com.example.editor");
    EXPECT_EQ(identifier(ZoProcess::processWithExecutablePath(
                  "/applications/EDITOR.app/contents/macos/editor")),
              10);
    EXPECT_EQ(identifier(ZoProcess::processWithPathToBundle("/APPLICATIONS/editor.APP")), 10);
    EXPECT_EQ(ZoProcess::processWithExecutablePath("/Applications/Editor.app"), std::nullopt);
    EXPECT_EQ(ZoProcess::processWithPathToBundle("/Applications/Editor.app/"), std::nullopt);
}

TEST_F(ZoProcessTest, TerminateProcessNameKillsTheFirstMatch) {
    addApplication(10, "Editor", "com.example.editor");
    addApplication(11, "Editor", "com.example.editor");
    ZoProcess::terminateProcessName("editor", "com.example.editor");
    EXPECT_EQ(table.signals(), (std::vector<std::pair<int, int>>{{10, SIGKILL}}));
    ZoProcess::terminateProcessName("nobody", nullptr);
    ZoProcess::terminateProcessName(nullptr, nullptr);
    EXPECT_EQ(table.signals().size(), 1U);
}

TEST_F(ZoProcessTest, SignalsGoByName) {
    table.add(10, "/bin/a");
    const ZoProcess target = process(10);
    EXPECT_TRUE(target.terminate());
    EXPECT_TRUE(target.interrupt());
    EXPECT_TRUE(target.suspend());
    EXPECT_TRUE(target.resume());
    EXPECT_TRUE(target.kill(SIGUSR1));
    EXPECT_EQ(table.signals(),
              (std::vector<std::pair<int, int>>{
                  {10, SIGTERM}, {10, SIGINT}, {10, SIGSTOP}, {10, SIGCONT}, {10, SIGUSR1}}));
    table.table.front().refusesSignals = true;
    EXPECT_FALSE(target.terminate());
    table.table.clear();
    EXPECT_FALSE(target.terminate());
}

TEST_F(ZoProcessTest, HowItWasStartedIsReadOnceForAllCopies) {
    MemoryProcess& entry = table.add(10, "/bin/a");
    entry.arguments = {"/bin/a", "-x"};
    entry.environment = {"A=1"};
    const ZoProcess first = process(10);
    const ZoProcess& same = first;
    EXPECT_EQ(first.command(), "a");
    table.table.front().arguments = {"/bin/b"};
    table.table.front().executable = "/bin/b";
    EXPECT_EQ(same.arguments(), std::vector<std::string>{"-x"});
    EXPECT_EQ(first.environment().find("A"), "1");
    EXPECT_EQ(first.executablePath(), "/bin/a");
    EXPECT_EQ(process(10).command(), "b");
}

TEST_F(ZoProcessTest, ThePathAskedForFirstStays) {
    table.add(10, "/bin/a");
    const ZoProcess asked = process(10);
    EXPECT_EQ(asked.executablePath(), "/bin/a");
    table.table.front().executable = "/bin/b";
    EXPECT_EQ(asked.command(), "a");
    EXPECT_EQ(asked.executablePath(), "/bin/a");
}

TEST_F(ZoProcessTest, APathThatIsNoUTF8IsNoPath) {
    table.add(10, "/bin/\xff");
    table.add(11, "");
    EXPECT_EQ(process(10).executablePath(), std::nullopt);
    EXPECT_EQ(process(11).executablePath(), std::nullopt);
}

TEST_F(ZoProcessTest, AnUnreadableAreaLeavesTheShortName) {
    MemoryProcess& entry = table.add(10, "/bin/program");
    entry.refusesArea = true;
    entry.record.shortName = "short";
    const ZoProcess asked = process(10);
    EXPECT_EQ(asked.command(), "short");
    EXPECT_TRUE(asked.arguments().empty());
    EXPECT_TRUE(asked.environment().empty());
    EXPECT_EQ(asked.annotation(), std::nullopt);
}

TEST_F(ZoProcessTest, AVanishedProcessHasAnEmptyCommand) {
    table.add(10, "/bin/program");
    const ZoProcess gone = process(10);
    table.table.clear();
    EXPECT_EQ(gone.command(), "");
    EXPECT_EQ(gone.annotatedCommand(), "");
    EXPECT_EQ(gone.executablePath(), std::nullopt);
}

TEST_F(ZoProcessTest, TheLayoutAndTheSizeFollowTheKernelsRelease) {
    table.release = "7.0.0";
    ZoProcess::initialize();
    table.add(10, "/bin/a").arguments = {"a", "x=1"};
    EXPECT_TRUE(process(10).arguments().empty()) << "asked without a count";
    EXPECT_EQ(process(10).environment().find("x"), "1");

    table.release = "8.0.0";
    ZoProcess::initialize();
    EXPECT_EQ(process(10).arguments(), std::vector<std::string>{"x=1"}) << "asked with a count";

    table.maximum = 10;
    ZoProcess::initialize();
    EXPECT_EQ(process(10).command(), "a") << "cut off before its end: the short name";
    EXPECT_TRUE(process(10).arguments().empty());
}

TEST_F(ZoProcessTest, AnnotatedCommandHasTheAnnotationInParentheses) {
    table.add(10, "/usr/bin/java").arguments = {"java", "-jar", "app.jar"};
    table.add(11, "/bin/a");
    EXPECT_EQ(process(10).annotation(), "app.jar");
    EXPECT_EQ(process(10).annotatedCommand(), "java (app.jar)");
    EXPECT_EQ(process(11).annotatedCommand(), "a");
}

TEST_F(ZoProcessTest, DescriptionTellsEverything) {
    MemoryProcess& entry = table.add(10, "/bin/a");
    entry.arguments = {"a", "-x"};
    entry.environment = {"B=2", "A=1"};
    const std::string text = process(10).description();
    EXPECT_TRUE(text.starts_with("<ZoProcess: 0x")) << text;
    EXPECT_NE(text.find("> process = 10, command = a, arguments = (\n    \"-x\"\n), "
                        "environment = {\n    A = 1;\n    B = 2;\n}"),
              std::string::npos)
        << text;
}

TEST_F(ZoProcessTest, EqualityAndHashAreThoseOfTheIdentifier) {
    table.add(10, "/bin/a");
    table.add(11, "/bin/a");
    EXPECT_TRUE(process(10).isEqual(process(10)));
    EXPECT_EQ(process(10), process(10));
    EXPECT_NE(process(10), process(11));
    const std::unordered_set<ZoProcess> set = {process(10), process(10), process(11)};
    EXPECT_EQ(set.size(), 2U);
    EXPECT_EQ(std::hash<ZoProcess>()(process(10)), 10U);
}

TEST_F(ZoProcessTest, MayRunFromBundleIsNeverWrongWhenItSaysNo) {
    table.add(10, "/bin/a");
    table.add(11, "/x/Y.app/CONTENTS/macos/y");
    table.add(12, "/x/Y.app/Contents/Resources/y");
    table.add(13, "/anything").link = "/bin/a (deleted)";
    table.add(14, "/bin/a").executable.reset();
    EXPECT_FALSE(process(10).mayRunFromBundle());
    EXPECT_TRUE(process(11).mayRunFromBundle());
    EXPECT_FALSE(process(12).mayRunFromBundle());
    EXPECT_TRUE(process(13).mayRunFromBundle());
    EXPECT_FALSE(process(14).mayRunFromBundle());
}

} // namespace
} // namespace tav
