#include "log/CountedAllocations_test.hpp"
#include "log/LogFacility.hpp"
#include "platform/MainThreadQueue.hpp"
#include "platform/memory/MemoryClock.hpp"
#include "platform/memory/MemoryFileSystem.hpp"
#include "platform/memory/MemoryPreferences.hpp"
#include "platform/memory/MemoryProcessTable.hpp"
#include "platform/memory/MemorySystemLog.hpp"
#include "platform/memory/MemoryUserFolders.hpp"

#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace tav {
namespace {

using Keys = std::vector<std::string>;
using Lines = std::vector<std::string>;

class LogFacilityTest : public testing::Test {
  protected:
    LogFacilityTest() { restoreSwitches(); }
    ~LogFacilityTest() override {
        LogDInit();
        restoreSwitches();
    }

    /// As they are when a process starts.
    static void restoreSwitches() {
        for (std::size_t type = 0; type < logTypeCount; ++type) {
            gLogEnable[type] = type < 4 || type == 11;
        }
        gLogRecords = false;
        gLogPackets = false;
        gLogDates = true;
    }
    static void init() { LogInit({}, "/logs/log"); }
    static std::size_t count() { return LogHandler::defaultHandler()->getItemCount(); }
    static Record last() {
        const auto handler = LogHandler::defaultHandler();
        const RecordPtr record = handler->getItem(handler->getItemCount() - 1);
        return record ? *record : Record();
    }
    static Keys lastKeys() {
        Keys keys;
        for (const auto& [key, value] : last()) {
            keys.push_back(key);
        }
        return keys;
    }

    MemoryFileSystem files;
    MemoryUserFolders folders;
    MemoryClock clock{Date(283996799)}; // the last second of 2009
    MemoryPreferences preferences;
    MemorySystemLog systemLog;
    MainThreadQueue mainThread;
    FileSystem::Replacement filesReplacement{files};
    UserFolders::Replacement foldersReplacement{folders};
    Clock::Replacement clockReplacement{clock};
    Preferences::Replacement preferencesReplacement{preferences};
    SystemLog::Replacement systemLogReplacement{systemLog};
    MainThread::Replacement mainThreadReplacement{mainThread};
};

TEST_F(LogFacilityTest, SwitchesWhenAProcessStarts) {
    for (int type = -2; type < 14; ++type) {
        EXPECT_EQ(LogIsEnabled(type), (type >= 0 && type < 4) || type == 11) << type;
    }
    EXPECT_FALSE(LogIsRecordsEnabled());
    EXPECT_FALSE(LogIsPacketsEnabled());
    EXPECT_TRUE(gLogDates);
    EXPECT_FALSE(LogIsVerbose());
}

TEST_F(LogFacilityTest, WithoutAHandlerMessagesGoToTheSystemsLog) {
    Log_("Couldn't remove \"%@\".", "/a");
    Log_("100%% %d", 5);
    Log_(nullptr);
    Log_("");
    LogEtc(4, nullptr, nullptr, "off");
    LogSeparator();
    EXPECT_EQ(systemLog.lines(),
              (Lines{"Couldn't remove \"/a\".", "100% 5", "(null)", "", "(null)"}));
}

TEST_F(LogFacilityTest, AfterTheEndOfTheHandlerTheSystemsLogHasThemAgain) {
    init();
    Log_("one");
    EXPECT_TRUE(systemLog.lines().empty());
    LogDInit();
    LogDInit();
    Log_("two");
    EXPECT_EQ(systemLog.lines(), Lines{"two"});
    init();
    EXPECT_EQ(count(), 1U);
}

TEST_F(LogFacilityTest, ASecondInitChangesNothing) {
    init();
    const auto handler = LogHandler::defaultHandler();
    LogInit({}, "/logs/other");
    EXPECT_EQ(LogHandler::defaultHandler(), handler);
    EXPECT_FALSE(files.attributes("/logs/other").ok());
}

TEST_F(LogFacilityTest, ANilPathIsTheDefaultFile) {
    MemoryProcessTable processes;
    const ProcessTable::Replacement replacement(processes);
    processes.ownProcess = 1;
    processes.add(1, "/opt/Tool/tool");
    files.addFile("/opt/Tool/tool", "");
    LogInit({}, nullptr);
    EXPECT_EQ(LogHandler::defaultPath(), "/home/user/Library/Logs/Tool Log");
    EXPECT_TRUE(files.attributes(LogHandler::defaultPath()).ok());
}

TEST_F(LogFacilityTest, TheDelegateIsTold) {
    const auto delegate = std::make_shared<LogDelegate>();
    std::size_t told = 0;
    delegate->logItemAddedNotification = [&](LogHandler& log) { told = log.getItemCount(); };
    LogInit(delegate, "/logs/log");
    Log_("one");
    EXPECT_EQ(told, 0U);
    mainThread.runPending();
    EXPECT_EQ(told, 1U);
}

TEST_F(LogFacilityTest, TypesThatThereAreNotAreNeverLogged) {
    init();
    LogEnableAll();
    for (const int type : {12, -1, 13, 1000, -2147483647 - 1}) {
        LogEnable(type, true);
        EXPECT_FALSE(LogIsEnabled(type));
        LogMessage(type, "m", "s", "f", 1, nullptr, nullptr, "x");
        LogEtc(type, nullptr, nullptr, "x");
    }
    EXPECT_EQ(count(), 0U);
}

TEST_F(LogFacilityTest, TheRecordHasItsKeysInTheirOrder) {
    init();
    LogEnablePackets(true);
    const Value second = Value::Array{Value("a"), Value(2)};
    const Value data = dataFromText("abc");
    LogMessage(0, "module", "/src/folder/file.cc", "function", 42, &data, &second, "%d of %@", 1,
               "two");
    const Record record = last();
    EXPECT_EQ(lastKeys(), (Keys{"type", "message", "message2", "sourceFile", "sourceLine",
                                "function", "module", "data", "date"}));
    EXPECT_EQ(record, (Record{{"type", 0},
                              {"message", "1 of two"},
                              {"message2", second},
                              {"sourceFile", "file.cc"},
                              {"sourceLine", 42},
                              {"function", "function"},
                              {"module", "module"},
                              {"data", dataFromText("abc")},
                              {"date", "20091231T235959"}}));
    EXPECT_EQ(record.find("type")->type(), Value::Type::Integer);
}

TEST_F(LogFacilityTest, EmptyNamesAndLinesAreLeftOut) {
    init();
    LogEnableDates(false);
    for (const int line : {0, -1, -5}) {
        LogMessage(0, "", "", "", line, nullptr, nullptr, "x");
        EXPECT_EQ(lastKeys(), (Keys{"type", "message"}));
        LogMessage(0, nullptr, nullptr, nullptr, line, nullptr, nullptr, nullptr);
        EXPECT_EQ(lastKeys(), Keys{"type"});
    }
    LogMessage(0, nullptr, nullptr, nullptr, 1, nullptr, nullptr, "");
    EXPECT_EQ(lastKeys(), (Keys{"type", "message", "sourceLine"}));
}

TEST_F(LogFacilityTest, ASeparatorIsAnEmptyRecord) {
    init();
    LogSeparator();
    EXPECT_EQ(last(), (Record{{"type", 11}, {"date", "20091231T235959"}}));
    LogEnableDates(false);
    LogSeparator();
    EXPECT_EQ(last(), (Record{{"type", 11}}));
    LogEnable(11, false);
    LogSeparator();
    EXPECT_EQ(count(), 2U);
}

TEST_F(LogFacilityTest, DataIsAnEntryOfItsOwnWhilePacketsAreOn) {
    init();
    LogEnableDates(false);
    const Value data = dataFromText("abc");
    LogEtc(0, &data, nullptr, "x");
    EXPECT_EQ(lastKeys(), (Keys{"type", "message"}));
    LogEnablePackets(true);
    LogEtc(0, &data, nullptr, "x");
    EXPECT_EQ(lastKeys(), (Keys{"type", "message", "data"}));
    EXPECT_EQ(*last().find("data")->asData(), dataFromText("abc"));
    for (const Value& extra : {Value("text"), Value(5), Value(Value::Array{Value("a b")})}) {
        LogEtc(0, &extra, nullptr, "x");
        EXPECT_EQ(lastKeys(), (Keys{"type", "message", "extra"}));
        EXPECT_EQ(*last().findString("extra"), extra.description());
    }
}

TEST_F(LogFacilityTest, WarningsAndErrorsRaiseTheFlag) {
    init();
    LogEnableDates(false);
    const auto handler = LogHandler::defaultHandler();
    for (int type = 0; type < 12; ++type) {
        LogEnable(type, true);
        handler->setWarningAndErrorFlag(false);
        LogEtc(type, nullptr, nullptr, "x");
        EXPECT_EQ(handler->getWarningAndErrorFlag(), type == 1 || type == 2) << type;
        EXPECT_EQ(last(), (Record{{"type", type}, {"message", "x"}}));
    }
    handler->setWarningAndErrorFlag(false);
    LogEnable(1, false);
    LogEtc(1, nullptr, nullptr, "x");
    EXPECT_FALSE(handler->getWarningAndErrorFlag());
}

TEST_F(LogFacilityTest, SwitchesAreStoredAtOnceButForTheDates) {
    LogEnable(7, true);
    LogEnable(0, false);
    LogEnable(12, true);
    LogEnable(-1, true);
    LogEnablePackets(true);
    LogEnableRecords(true);
    LogEnableDates(false);
    EXPECT_EQ(
        preferences.stored(),
        (Value::Dictionary{
            {"Logging7", true}, {"Logging0", false}, {"LogPackets", true}, {"LogRecords", true}}));
    LogDisableAll();
    EXPECT_EQ(preferences.stored().size(), 14U);
    EXPECT_FALSE(preferences.stored().find("Logging7")->boolValue());
}

TEST_F(LogFacilityTest, WhatCannotBeStoredHoldsNonetheless) {
    preferences.failStoring(ENOSPC);
    LogEnable(7, true);
    EXPECT_TRUE(LogIsEnabled(7));
}

TEST_F(LogFacilityTest, StoredValuesWinAndEarlierChangesBecomeDefaults) {
    ASSERT_TRUE(preferences.setValue("Logging5", true).isNone());
    ASSERT_TRUE(preferences.setValue("Logging0", false).isNone());
    ASSERT_TRUE(preferences.setValue("LogPackets", true).isNone());
    gLogEnable[6] = true; // changed by the program, not stored
    gLogRecords = true;
    init();
    EXPECT_TRUE(LogIsEnabled(5));
    EXPECT_FALSE(LogIsEnabled(0));
    EXPECT_TRUE(LogIsPacketsEnabled());
    EXPECT_TRUE(LogIsEnabled(6));
    EXPECT_TRUE(LogIsRecordsEnabled());
    EXPECT_TRUE(preferences.boolValue("Logging6"));
    EXPECT_TRUE(preferences.boolValue("LogRecords"));
    // Registering stores nothing.
    EXPECT_EQ(preferences.stored().size(), 3U);
}

TEST_F(LogFacilityTest, AStoredSwitchOfTheRecordsWins) {
    ASSERT_TRUE(preferences.setValue("LogRecords", true).isNone());
    init();
    EXPECT_TRUE(LogIsRecordsEnabled());
    EXPECT_FALSE(LogIsPacketsEnabled());
}

TEST_F(LogFacilityTest, AllAndVerbose) {
    LogEnableAll();
    EXPECT_TRUE(LogIsVerbose());
    LogEnableDates(false);
    EXPECT_TRUE(LogIsVerbose());
    for (int type = 0; type < 12; ++type) {
        LogEnable(type, false);
        EXPECT_FALSE(LogIsVerbose());
        LogEnable(type, true);
    }
    LogEnablePackets(false);
    EXPECT_FALSE(LogIsVerbose());
    LogEnablePackets(true);
    LogEnableRecords(false);
    EXPECT_FALSE(LogIsVerbose());

    LogEnableVerbose();
    EXPECT_TRUE(LogIsVerbose());
    EXPECT_TRUE(gLogDates);
    LogDisableAll();
    for (int type = 0; type < 12; ++type) {
        EXPECT_FALSE(LogIsEnabled(type));
    }
    EXPECT_FALSE(gLogDates);
}

TEST_F(LogFacilityTest, AfterVerboseTheDatesStayOff) {
    init();
    LogEnableVerbose();
    LogDisableVerbose();
    EXPECT_FALSE(LogIsVerbose());
    EXPECT_FALSE(LogIsPacketsEnabled());
    EXPECT_FALSE(LogIsRecordsEnabled());
    for (int type = 0; type < 12; ++type) {
        EXPECT_EQ(LogIsEnabled(type), type < 4 || type == 11) << type;
    }
    Log_("x");
    EXPECT_EQ(lastKeys(), (Keys{"type", "message"}));
}

TEST_F(LogFacilityTest, AMessageOfATypeThatIsOffAllocatesNothing) {
    init();
    const Value second = "second";
    const long before = allocationsOfThisThread();
    for (int i = 0; i < 1000; ++i) {
        LogEtc(4, &second, &second, "%@ %d %@", "a text", i, second);
        LogMessage(9, "m", "s", "f", i, nullptr, nullptr, "%d", i);
        LogMessage(12, "m", "s", "f", i, nullptr, nullptr, "%d", i);
    }
    EXPECT_EQ(allocationsOfThisThread(), before);
    Log_("%d", 1);
    EXPECT_GT(allocationsOfThisThread(), before);
    EXPECT_EQ(count(), 1U);
}

TEST_F(LogFacilityTest, DatesAreThoseOfTheLocalTime) {
    init();
    clock.setSecondsEast(std::chrono::seconds(1));
    Log_("x");
    EXPECT_EQ(*last().findString("date"), "20100101T000000");
}

} // namespace
} // namespace tav
