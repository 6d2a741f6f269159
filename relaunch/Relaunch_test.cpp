#include "base/Exception.hpp"
#include "base/PropertyList.hpp"
#include "relaunch/Relaunch.hpp"
#include "relaunch/SuiteFixture_test.hpp"

#include <optional>
#include <string>
#include <vector>

namespace tav {
namespace {

using Journal = std::vector<std::string>;

class RelaunchTest : public SuiteFixture {
  protected:
    /// Runs the pass and answers the reason of its exception, or nothing.
    static std::optional<std::string> pass() {
        try {
            relaunchAfterInstall();
        } catch (const Exception& exception) {
            EXPECT_EQ(exception.name(), "RelaunchAfterInstall");
            return exception.reason();
        }
        return std::nullopt;
    }

    void configureWithout(const std::string& key) {
        std::map<std::string, std::string> entries = wholeConfiguration();
        entries.erase(key);
        configure(entries);
    }
};

// ---- The decision table, each row with and without the crash reporter.

struct DecisionRow {
    const char* name;
    bool mainRuns;
    Status build;
    Status send;
    bool mainExists;
    bool backgroundRuns;
    bool backgroundExists;
    Journal effects;
};

class DecisionTest : public SuiteFixture,
                     public testing::WithParamInterface<std::tuple<DecisionRow, bool>> {};

const char* const launchMain = "launch /Applications/Suite/Suite.app";
const char* const launchBackground =
    "launch /Applications/Suite/Suite.app/Contents/SharedSupport/Suite Background.app";
constexpr Status ok = Status::Success;
constexpr Status failed = Status::NoSuchProcess;

TEST_P(DecisionTest, HasExactlyTheseEffectsInThisOrder) {
    const auto& [row, crashReporterRuns] = GetParam();
    configure(wholeConfiguration());
    // What runs may have been started from elsewhere: the old copy that was moved aside.
    install("/Old/Suite.app", "com.example.suite");
    install("/Old/Background.app", "com.example.background");
    install("/Old/Crash.app", "com.example.crash");
    if (row.mainExists) {
        install(mainPath, "com.example.suite");
    }
    if (row.backgroundExists) {
        install(backgroundPath, "com.example.background");
    }
    Journal expected = row.effects;
    if (crashReporterRuns) {
        run(10, "/Old/Crash.app");
        expected.insert(expected.begin(), "signal 15 10");
    }
    if (row.mainRuns) {
        run(20, "/Old/Suite.app");
    }
    if (row.backgroundRuns) {
        run(30, "/Old/Background.app");
    }
    desktop.buildStatus = row.build;
    desktop.sendStatus = row.send;
    EXPECT_EQ(runRelaunchAfterInstall(), 0);
    EXPECT_EQ(desktop.journal, expected);
    EXPECT_EQ(desktop.openRequests, 0) << "every built request is disposed of";
}

INSTANTIATE_TEST_SUITE_P(
    All, DecisionTest,
    testing::Combine(
        testing::Values(
            DecisionRow{"RunningAndInstalled",
                        true,
                        ok,
                        ok,
                        true,
                        false,
                        true,
                        {"quit com.example.suite", launchMain}},
            DecisionRow{"RunningAndInstalledBackgroundLeftAlone",
                        true,
                        ok,
                        ok,
                        true,
                        true,
                        true,
                        {"quit com.example.suite", launchMain}},
            DecisionRow{"RunningAndInstalledWithoutBackground",
                        true,
                        ok,
                        ok,
                        true,
                        true,
                        false,
                        {"quit com.example.suite", launchMain}},
            DecisionRow{"RunningNotInstalled",
                        true,
                        ok,
                        ok,
                        false,
                        true,
                        false,
                        {"quit com.example.suite"}},
            DecisionRow{"QuitCannotBeBuilt",
                        true,
                        failed,
                        ok,
                        true,
                        true,
                        true,
                        {"build failed com.example.suite"}},
            DecisionRow{
                "QuitCannotBeSent", true, ok, failed, true, true, true, {"quit com.example.suite"}},
            DecisionRow{"QuitAnswersAPositiveStatus",
                        true,
                        ok,
                        static_cast<Status>(1),
                        true,
                        true,
                        true,
                        {"quit com.example.suite"}},
            DecisionRow{"NotRunningBackgroundRuns",
                        false,
                        ok,
                        ok,
                        true,
                        true,
                        true,
                        {"signal 15 30", launchBackground}},
            DecisionRow{
                "NotRunningNothingRuns", false, ok, ok, true, false, true, {launchBackground}},
            DecisionRow{"NotRunningBackgroundNotInstalled",
                        false,
                        ok,
                        ok,
                        true,
                        true,
                        false,
                        {"signal 15 30"}},
            DecisionRow{
                "NotRunningNothingInstalled", false, ok, ok, false, true, false, {"signal 15 30"}},
            DecisionRow{"NothingRunsNothingInstalled", false, ok, ok, false, false, false, {}},
            // Nothing was quit, so a quit that would fail changes nothing.
            DecisionRow{"NotRunningQuitIrrelevant",
                        false,
                        failed,
                        failed,
                        true,
                        true,
                        true,
                        {"signal 15 30", launchBackground}}),
        testing::Bool()),
    [](const auto& parameters) {
        return std::string(std::get<0>(parameters.param).name) +
               (std::get<1>(parameters.param) ? "AndCrashReporter" : "");
    });

// ---- The configuration, key by key.

TEST_F(RelaunchTest, WithoutAListNothingHappens) {
    installSuite();
    run(10, crashReporterPath);
    EXPECT_EQ(pass(), "Couldn't read RelaunchAfterInstall.plist file.");
    EXPECT_EQ(desktop.journal, Journal{});
    EXPECT_EQ(runRelaunchAfterInstall(), 0);
}

TEST_F(RelaunchTest, AListThatIsNoDictionaryIsNone) {
    run(10, crashReporterPath);
    installSuite();
    for (const char* list :
         {"", "rubbish", "<plist><array/></plist>", "<plist><string>x</string></plist>",
          "<plist><dict><key>kCrashReporterID</key></dict></plist>", "bplist00", "\xff\xfe\x00"}) {
        configureWith(list);
        EXPECT_EQ(pass(), "Couldn't read RelaunchAfterInstall.plist file.") << list;
        EXPECT_EQ(runRelaunchAfterInstall(), 0);
    }
    EXPECT_EQ(desktop.journal, Journal{});
}

TEST_F(RelaunchTest, AFolderInThePlaceOfTheListIsNone) {
    files.addFolder(std::string(toolBundle) + "/Contents/Resources/RelaunchAfterInstall.plist");
    EXPECT_EQ(pass(), "Couldn't read RelaunchAfterInstall.plist file.");
}

TEST_F(RelaunchTest, AnEmptyDictionaryLacksTheFirstKey) {
    configure({});
    EXPECT_EQ(pass(), "Couldn't find kCrashReporterID.");
}

TEST_F(RelaunchTest, WithoutTheCrashReportersIdentifierNothingHappens) {
    installSuite();
    run(10, crashReporterPath);
    run(20, mainPath);
    configureWithout("kCrashReporterID");
    EXPECT_EQ(pass(), "Couldn't find kCrashReporterID.");
    EXPECT_EQ(desktop.journal, Journal{});
}

TEST_F(RelaunchTest, WithoutTheMainNameTheCrashReporterIsStoppedAllTheSame) {
    installSuite();
    run(10, crashReporterPath);
    run(20, mainPath);
    configureWithout("kMainAppName");
    EXPECT_EQ(pass(), "Couldn't find kMainAppName.");
    EXPECT_EQ(desktop.journal, Journal{"signal 15 10"});
}

TEST_F(RelaunchTest, WithoutTheMainIdentifierTheCrashReporterIsStoppedAllTheSame) {
    installSuite();
    run(10, crashReporterPath);
    run(30, backgroundPath);
    configureWithout("kMainAppID");
    EXPECT_EQ(pass(), "Couldn't find kMainAppID.");
    EXPECT_EQ(desktop.journal, Journal{"signal 15 10"});
}

TEST_F(RelaunchTest, TheBackgroundIdentifierIsNotNeededWhileTheMainApplicationRuns) {
    installSuite();
    run(20, mainPath);
    configureWithout("kBackgroundAppID");
    EXPECT_EQ(pass(), std::nullopt);
    EXPECT_EQ(desktop.journal, (Journal{"quit com.example.suite", launchMain}));
}

TEST_F(RelaunchTest, TheBackgroundIdentifierIsMissedWhenTheMainApplicationDoesNotRun) {
    installSuite();
    run(10, crashReporterPath);
    run(30, backgroundPath);
    configureWithout("kBackgroundAppID");
    EXPECT_EQ(pass(), "Couldn't find kBackgroundAppID.");
    EXPECT_EQ(desktop.journal, Journal{"signal 15 10"});
    EXPECT_EQ(runRelaunchAfterInstall(), 0);
}

TEST_F(RelaunchTest, ValuesThatAreNoTextsAreMissing) {
    installSuite();
    run(10, crashReporterPath);
    const char* const keys[] = {"kCrashReporterID", "kMainAppName", "kMainAppID",
                                "kBackgroundAppID"};
    const Value values[] = {
        true,         5, 1.5, Value::Array{"com.example.crash"}, Value::Dictionary(), Value(Data()),
        Value(Date())};
    for (const char* key : keys) {
        for (const Value& value : values) {
            Value::Dictionary list;
            for (const auto& [name, text] : wholeConfiguration()) {
                list.set(name, text);
            }
            list.set(key, value);
            const Data bytes =
                PropertyList::write(list, PropertyList::Form::Binary, nullptr).value();
            configureWith(textOf(bytes));
            EXPECT_EQ(pass(), "Couldn't find " + std::string(key) + ".");
        }
    }
}

TEST_F(RelaunchTest, ABinaryListServesAsWell) {
    installSuite();
    run(20, mainPath);
    Value::Dictionary list;
    for (const auto& [name, text] : wholeConfiguration()) {
        list.set(name, text);
    }
    const Data bytes = PropertyList::write(list, PropertyList::Form::Binary, nullptr).value();
    configureWith(textOf(bytes));
    EXPECT_EQ(pass(), std::nullopt);
    EXPECT_EQ(desktop.journal, (Journal{"quit com.example.suite", launchMain}));
}

TEST_F(RelaunchTest, OtherKeysAreIgnored) {
    installSuite();
    run(20, mainPath);
    std::map<std::string, std::string> entries = wholeConfiguration();
    entries["kSomethingElse"] = "x";
    configure(entries);
    EXPECT_EQ(pass(), std::nullopt);
    EXPECT_EQ(desktop.journal.size(), 2U);
}

TEST_F(RelaunchTest, OddNamesFindNothingAndHarmNothing) {
    installSuite();
    run(10, crashReporterPath);
    run(30, backgroundPath);
    for (const std::string& name :
         {std::string(""), std::string("a/b"), std::string("../.."), std::string("%@%s%n%d"),
          std::string("."), std::string(100'000, 'x'), std::string(100'000, '/'),
          std::string("caf\xc3\xa9")}) {
        desktop.journal.clear();
        std::map<std::string, std::string> entries = wholeConfiguration();
        entries["kMainAppName"] = name;
        configure(entries);
        EXPECT_EQ(runRelaunchAfterInstall(), 0);
        EXPECT_EQ(desktop.journal, (Journal{"signal 15 10", "signal 15 30"})) << name.substr(0, 20);
    }
}

TEST_F(RelaunchTest, ANameWithSlashesIsAPath) {
    installSuite();
    install("/Applications/a/b/a/b.app", "com.example.suite");
    install("/Applications/a/b/a/b.app/Contents/SharedSupport/a/b Background.app",
            "com.example.background");
    std::map<std::string, std::string> entries = wholeConfiguration();
    entries["kMainAppName"] = "a/b";
    configure(entries);
    EXPECT_EQ(pass(), std::nullopt);
    EXPECT_EQ(
        desktop.journal,
        Journal{"launch /Applications/a/b/a/b.app/Contents/SharedSupport/a/b Background.app"});
}

TEST_F(RelaunchTest, LongIdentifiersMatchNothing) {
    installSuite();
    run(10, crashReporterPath);
    std::map<std::string, std::string> entries = wholeConfiguration();
    entries["kMainAppID"] = std::string(100'000, 'i');
    configure(entries);
    EXPECT_EQ(pass(), std::nullopt);
    EXPECT_EQ(desktop.journal, (Journal{"signal 15 10", launchBackground}));
}

// ---- The applications on disk.

TEST_F(RelaunchTest, AnApplicationBehindLinksIsLaunchedFromItsTrueFolder) {
    install("/opt/suite/Real.app", "com.example.suite");
    files.addLink("/Applications/Suite/Suite.app", "/opt/suite/Real.app");
    run(20, "/opt/suite/Real.app");
    configure(wholeConfiguration());
    EXPECT_EQ(pass(), std::nullopt);
    EXPECT_EQ(desktop.journal, (Journal{"quit com.example.suite", "launch /opt/suite/Real.app"}));
}

TEST_F(RelaunchTest, ALinkToNowhereIsNoApplication) {
    install("/Old/Suite.app", "com.example.suite");
    files.addLink("/Applications/Suite/Suite.app", "/opt/gone.app");
    run(20, "/Old/Suite.app");
    configure(wholeConfiguration());
    EXPECT_EQ(pass(), std::nullopt);
    EXPECT_EQ(desktop.journal, Journal{"quit com.example.suite"});
}

TEST_F(RelaunchTest, AMissingFolderStillHasTheBackgroundSignalled) {
    install("/Old/Background.app", "com.example.background");
    run(30, "/Old/Background.app");
    configure(wholeConfiguration());
    EXPECT_EQ(pass(), std::nullopt);
    EXPECT_EQ(desktop.journal, Journal{"signal 15 30"});
}

// ---- What is ignored.

TEST_F(RelaunchTest, SignalsAndLaunchesThatFailAreIgnored) {
    installSuite();
    run(10, crashReporterPath).refusesSignals = true;
    run(30, backgroundPath).refusesSignals = true;
    desktop.launches = false;
    configure(wholeConfiguration());
    EXPECT_EQ(pass(), std::nullopt);
    EXPECT_EQ(desktop.journal, Journal{launchBackground});
}

TEST_F(RelaunchTest, OnlyTheFirstOfSeveralIsSignalled) {
    installSuite();
    run(12, crashReporterPath);
    run(11, crashReporterPath);
    run(32, backgroundPath);
    run(31, backgroundPath);
    configure(wholeConfiguration());
    EXPECT_EQ(pass(), std::nullopt);
    EXPECT_EQ(desktop.journal, (Journal{"signal 15 12", "signal 15 32", launchBackground}));
}

TEST_F(RelaunchTest, ATableThatCannotBeReadCountsAsNothingRunning) {
    installSuite();
    run(10, crashReporterPath);
    table.isUnreadable = true;
    configure(wholeConfiguration());
    EXPECT_EQ(pass(), std::nullopt);
    EXPECT_EQ(desktop.journal, Journal{launchBackground});
}

// ---- Whose desktop.

DesktopSession sessionOf(std::uint32_t user) {
    DesktopSession session;
    session.isOwn = false;
    session.user = user;
    return session;
}

TEST_F(RelaunchTest, TheMainApplicationIsQuitAndLaunchedAsItsOwner) {
    installSuite();
    run(20, mainPath);
    desktop.sessions[20] = sessionOf(1000);
    desktop.installerSession = sessionOf(1001);
    configure(wholeConfiguration());
    EXPECT_EQ(pass(), std::nullopt);
    EXPECT_EQ(desktop.journal,
              (Journal{"quit com.example.suite as 1000", std::string(launchMain) + " as 1000"}));
}

TEST_F(RelaunchTest, TheBackgroundApplicationIsLaunchedAsItsOwner) {
    installSuite();
    run(30, backgroundPath);
    desktop.sessions[30] = sessionOf(1000);
    desktop.installerSession = sessionOf(1001);
    configure(wholeConfiguration());
    EXPECT_EQ(pass(), std::nullopt);
    EXPECT_EQ(desktop.journal,
              (Journal{"signal 15 30", std::string(launchBackground) + " as 1000"}));
}

TEST_F(RelaunchTest, WithNothingRunningTheUserBehindTheInstallerIsTaken) {
    installSuite();
    desktop.installerSession = sessionOf(1001);
    configure(wholeConfiguration());
    EXPECT_EQ(pass(), std::nullopt);
    EXPECT_EQ(desktop.journal, Journal{std::string(launchBackground) + " as 1001"});
}

// ---- The program around the pass.

class ThrowingTable final : public ProcessTable {
  public:
    std::optional<std::vector<int>> processes(ProcessSelector, int) override { throw 42; }
    std::optional<ProcessRecord> record(int) override { return std::nullopt; }
    std::optional<ProcessUsers> users(int) override { return std::nullopt; }
    std::optional<std::uint32_t> userOf(int) override { return std::nullopt; }
    std::optional<ArgumentArea> argumentArea(int, std::string_view, ArgumentArea::Layout,
                                             std::size_t) override {
        return std::nullopt;
    }
    std::optional<std::string> executableLink(int) override {
        return "/Installer/Helper.app/Contents/MacOS/program";
    }
    std::optional<std::string> executablePathOfLink(int, std::string link) override { return link; }
    bool signal(int, int) override { return false; }
    int currentProcess() override { return 1; }
    std::uint32_t effectiveUser() override { return 0; }
    std::optional<std::string> kernelRelease() override { return std::nullopt; }
    std::optional<int> argumentMaximum() override { return std::nullopt; }
};

TEST_F(RelaunchTest, WhatIsNoExceptionOfOursIsThrownOn) {
    configure(wholeConfiguration());
    ThrowingTable throwing;
    const ProcessTable::Replacement replacement(throwing);
    EXPECT_THROW(runRelaunchAfterInstall(), int);
}

TEST(QuitTest, TheAddressEndsAtANUL) {
    MemoryDesktop desktop;
    const QuitRequests::Replacement replacement(desktop.quitRequests());
    EXPECT_EQ(quitApplicationWithBundleID(std::string_view("com.example.a\0b", 15), {}),
              Status::Success);
    EXPECT_EQ(desktop.journal, Journal{"quit com.example.a"});
}

TEST(QuitTest, ARequestThatCannotBeBuiltIsNotSent) {
    MemoryDesktop desktop;
    const QuitRequests::Replacement replacement(desktop.quitRequests());
    desktop.buildStatus = Status::BadParameter;
    EXPECT_EQ(quitApplicationWithBundleID("com.example.a", {}), Status::BadParameter);
    EXPECT_EQ(desktop.journal, Journal{"build failed com.example.a"});
    desktop.buildStatus = Status::Success;
    desktop.sendStatus = Status::Failure;
    EXPECT_EQ(quitApplicationWithBundleID("com.example.a", {}), Status::Failure);
    EXPECT_EQ(desktop.openRequests, 0);
}

} // namespace
} // namespace tav
