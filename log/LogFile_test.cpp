#include "base/OldStyleText.hpp"
#include "log/LogFile.hpp"
#include "platform/memory/MemoryFileSystem.hpp"
#include "platform/memory/MemoryUserFolders.hpp"

#include <algorithm>
#include <string>

#include <gtest/gtest.h>

namespace tav {
namespace {

RecordPtr record(std::string_view message) {
    Record record;
    record.set("type", 3);
    record.set("message", message);
    return std::make_shared<const Record>(std::move(record));
}

std::string packet(std::string_view payload) {
    return std::to_string(payload.size()) + " " + std::string(payload) + "\n";
}

std::string packetOf(const RecordPtr& record) {
    return packet(OldStyleText::write(Value(*record)));
}

std::string messageAt(LogFile& log, std::size_t index) {
    const RecordPtr found = log.getItem(index);
    const std::string* message = found ? found->findString("message") : nullptr;
    return message == nullptr ? "(none)" : *message;
}

class LogFileTest : public testing::Test {
  protected:
    std::string content(const std::string& path = "/logs/log") {
        const auto bytes = files.readFile(path, 1U << 30U);
        return bytes.ok() ? std::string(textOf(bytes.value())) : "(no file)";
    }
    std::size_t namesInFolder() { return files.folderEntries("/logs").value().size(); }
    static void addMany(LogFile& log, int count) {
        for (int i = 0; i < count; ++i) {
            log.addItem(record("message " + std::to_string(i)));
        }
    }

    MemoryFileSystem files;
    MemoryUserFolders folders;
    FileSystem::Replacement filesReplacement{files};
    UserFolders::Replacement foldersReplacement{folders};
};

TEST_F(LogFileTest, EachRecordIsOneWriteAtTheEnd) {
    LogFile log("/logs/log");
    EXPECT_EQ(content(), "");
    files.clearCalls();
    log.addItem(record("one"));
    EXPECT_EQ(content(), "36 {\n    message = one;\n    type = 3;\n}\n");
    log.addItem(record("two words"));
    EXPECT_EQ(files.calls(),
              (std::vector<std::string>{"OpenFile.writeOnce /logs/log", "readFile /logs/log",
                                        "OpenFile.writeOnce /logs/log"}));
    EXPECT_EQ(content(), packetOf(record("one")) + packetOf(record("two words")));
    EXPECT_EQ(log.getItemCount(), 2U);
}

TEST_F(LogFileTest, ItIsMadeWithTheFoldersOnTheWayForItsOwnerAlone) {
    LogFile log("~/Library/Logs/Sync Log");
    log.addItem(record("one"));
    EXPECT_EQ(content("/home/user/Library/Logs/Sync Log"), packetOf(record("one")));
    EXPECT_EQ(files.attributes("/home/user/Library/Logs/Sync Log").value().permissions & 0777U,
              0700U);
}

TEST_F(LogFileTest, AnEmptyPathIsALogInMemory) {
    LogFile log("");
    log.addItem(record("one"));
    EXPECT_EQ(log.getItemCount(), 1U);
    EXPECT_EQ(messageAt(log, 0), "one");
    log.trimLines(0);
    EXPECT_EQ(log.getItemCount(), 0U);
    EXPECT_TRUE(files.calls().empty());
}

TEST_F(LogFileTest, AFileThatCannotBeOpenedIsALogInMemory) {
    files.addFolder("/logs/log");
    LogFile log("/logs/log");
    addMany(log, 3);
    log.trimLines(1);
    EXPECT_EQ(messageAt(log, 0), "message 2");
    EXPECT_EQ(namesInFolder(), 1U);
}

TEST_F(LogFileTest, RecordsOfThisRunAreTheObjectsThatWereAdded) {
    LogFile log("/logs/log");
    const RecordPtr added = record("one");
    log.addItem(added);
    EXPECT_EQ(log.getItem(0), added);
    EXPECT_EQ(log.getItem(1), nullptr);
    EXPECT_EQ(log.getItem(std::size_t(-1)), nullptr);
    log.addItem(nullptr);
    EXPECT_EQ(log.getItemCount(), 1U);
}

TEST_F(LogFileTest, FieldsBecomeTheRecordThatTheyDescribe) {
    LogFile log("/logs/log");
    const Value second = "second";
    const Value list = Value::Array{Value(1), Value(true)};
    const LogFields kept{.type = 2, .message = "m", .message2 = &second, .sourceLine = 7};
    const LogFields other{.type = 2, .message = "m", .message2 = &list};
    log.addFields(kept);
    log.addFields(other);
    EXPECT_EQ(content(), packet(OldStyleText::write(Value(recordOf(kept)))) +
                             packet(OldStyleText::write(Value(recordOf(other)))));
    const RecordPtr first = log.getItem(0);
    EXPECT_EQ(*first, recordOf(kept));
    EXPECT_EQ(first->find("type")->type(), Value::Type::Integer);
    EXPECT_EQ(log.getItem(0), first);
    EXPECT_EQ(*log.getItem(1), recordOf(other));
    EXPECT_EQ(log.getItem(1)->find("message2")->asArray()->at(1).type(), Value::Type::Boolean);
}

TEST_F(LogFileTest, WhatIsReadBackHasTextsAndIsTheSameObjectEachTime) {
    { LogFile("/logs/log").addItem(record("one")); }
    LogFile log("/logs/log");
    ASSERT_EQ(log.getItemCount(), 1U);
    const RecordPtr found = log.getItem(0);
    ASSERT_TRUE(found);
    EXPECT_EQ(*found->findString("type"), "3");
    EXPECT_EQ(log.getItem(0), found);
    log.addItem(record("two"));
    EXPECT_EQ(log.getItem(1)->find("type")->type(), Value::Type::Integer);
    EXPECT_EQ(messageAt(log, 0), "one");
}

TEST_F(LogFileTest, PayloadsMayBeInTheXMLForm) {
    const std::string xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">"
                            "<dict><key>message</key><string>x</string></dict></plist>";
    files.addFile("/logs/log", packet(xml));
    LogFile log("/logs/log");
    EXPECT_EQ(messageAt(log, 0), "x");
}

TEST_F(LogFileTest, WhatIsNoDictionaryKeepsItsPlaceAndItsBytes) {
    const std::string text =
        packet("(a, b)") + packet("{ broken") + packet("word") + packetOf(record("good"));
    files.addFile("/logs/log", text);
    LogFile log("/logs/log");
    ASSERT_EQ(log.getItemCount(), 4U);
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(log.getItem(i), nullptr);
        EXPECT_EQ(log.getItem(i), nullptr);
    }
    EXPECT_EQ(messageAt(log, 3), "good");
    EXPECT_EQ(log.buildFileImage(), text);
    log.trimLines(3);
    EXPECT_EQ(content(), text.substr(packet("(a, b)").size()));
}

TEST_F(LogFileTest, FilesWithLineEndingsOfWindows) {
    std::string text = packetOf(record("one")) + packetOf(record("two"));
    for (std::size_t at = 0; (at = text.find('\n', at)) != std::string::npos; at += 2) {
        text.replace(at, 1, "\r\n");
    }
    files.addFile("/logs/log", text);
    LogFile log("/logs/log");
    EXPECT_EQ(messageAt(log, 1), "two");
    // Nothing is taken away there.
    log.addItem(record("three"));
    EXPECT_EQ(content(), text + packetOf(record("three")));
}

TEST_F(LogFileTest, GarbageAtTheEndStaysAndNewPacketsComeBehindIt) {
    for (const char* garbage : {"\n\nno packet", "99 {a = 1;}\n", "0 \n", "x 12 {\n    type"}) {
        files.addFile("/logs/log", packetOf(record("one")) + garbage);
        LogFile log("/logs/log");
        EXPECT_EQ(log.getItemCount(), 1U) << garbage;
        log.addItem(record("two"));
        EXPECT_EQ(log.getItemCount(), 2U);
        EXPECT_EQ(content(), packetOf(record("one")) + garbage + packetOf(record("two")));
    }
}

TEST_F(LogFileTest, TheNextRewriteTakesGarbageAway) {
    files.addFile("/logs/log", packetOf(record("one")) + "99 garbage");
    LogFile log("/logs/log");
    addMany(log, 2);
    log.trimLines(1);
    EXPECT_EQ(content(), packetOf(record("message 1")));
}

/// A write that was killed in the middle must not swallow what is appended later.
TEST_F(LogFileTest, TheBeginningOfAPacketIsCutOffBeforeTheNextAppend) {
    const std::string whole = packetOf(record("one"));
    const std::string torn = packetOf(record("torn"));
    for (std::size_t length = 1; length < torn.size(); ++length) {
        files.addFile("/logs/log", whole + torn.substr(0, length));
        LogFile log("/logs/log");
        const bool isComplete = length == torn.size() - 1;
        EXPECT_EQ(log.getItemCount(), isComplete ? 2U : 1U);
        // Whoever only looks changes nothing.
        EXPECT_EQ(content(), whole + torn.substr(0, length));
        log.addItem(record("two"));
        EXPECT_EQ(content(), whole + (isComplete ? torn : "") + packetOf(record("two"))) << length;
        LogFile again("/logs/log");
        EXPECT_EQ(again.getItemCount(), isComplete ? 3U : 2U);
        EXPECT_EQ(messageAt(again, again.getItemCount() - 1), "two");
    }
}

TEST_F(LogFileTest, ATerminatorThatIsMissingMakesNoPairOfALineEnding) {
    files.addFile("/logs/log", "9 {a = b;}\r");
    LogFile log("/logs/log");
    log.addItem(record("two"));
    EXPECT_EQ(content(), "9 {a = b;}\r " + packetOf(record("two")));
    EXPECT_EQ(LogFile("/logs/log").getItemCount(), 2U);
}

TEST_F(LogFileTest, WhatOthersHaveAppendedMeanwhileIsNotCutOff) {
    const std::string whole = packetOf(record("one"));
    for (const std::size_t left : {1U, 5U}) {
        files.addFile("/logs/log", whole.substr(0, whole.size() - left));
        LogFile log("/logs/log");
        files.addFile("/logs/log", whole); // the other's write has come to its end
        log.addItem(record("two"));
        EXPECT_EQ(content(), whole + packetOf(record("two")));
    }
}

TEST_F(LogFileTest, TrimmingKeepsTheNewest) {
    LogFile log("/logs/log");
    addMany(log, 10);
    log.trimLines(10);
    log.trimLines(11);
    EXPECT_EQ(log.getItemCount(), 10U);
    log.trimLines(3);
    ASSERT_EQ(log.getItemCount(), 3U);
    EXPECT_EQ(messageAt(log, 0), "message 7");
    EXPECT_EQ(content(), packetOf(record("message 7")) + packetOf(record("message 8")) +
                             packetOf(record("message 9")));
    EXPECT_EQ(log.buildFileImage(), content());
    // It goes on in the new file.
    log.addItem(record("more"));
    EXPECT_TRUE(content().ends_with(packetOf(record("more"))));
    EXPECT_EQ(LogFile("/logs/log").getItemCount(), 4U);
    EXPECT_EQ(namesInFolder(), 1U);
}

TEST_F(LogFileTest, TrimmedRecordsStayTheSameObjects) {
    { addMany(*std::make_unique<LogFile>("/logs/log"), 3); }
    LogFile log("/logs/log");
    log.addItem(record("four"));
    log.addFields({.type = 5, .message = "five"});
    const RecordPtr read = log.getItem(2);
    const RecordPtr added = log.getItem(3);
    log.trimLines(3);
    EXPECT_EQ(log.getItem(0), read);
    EXPECT_EQ(log.getItem(1), added);
    EXPECT_EQ(log.getItem(2)->find("type")->type(), Value::Type::Integer);
    log.trimLines(1);
    EXPECT_EQ(messageAt(log, 0), "five");
    log.addFields({.type = 6, .message = "six"});
    EXPECT_EQ(log.getItem(1)->find("type")->intValue(), 6);
}

TEST_F(LogFileTest, TrimmingGoesThroughLinksAndKeepsPermissions) {
    files.addFile("/real/place", "");
    ASSERT_TRUE(files.setPermissions("/real/place", 0640).isNone());
    files.addLink("/logs/log", "/real/place");
    LogFile log("/logs/log");
    addMany(log, 3);
    log.trimLines(1);
    EXPECT_EQ(files.attributes("/logs/log").value().kind, FileKind::Link);
    EXPECT_EQ(content("/real/place"), packetOf(record("message 2")));
    EXPECT_EQ(files.attributes("/real/place").value().permissions & 0777U, 0640U);
}

TEST_F(LogFileTest, AFileThatWasMovedAwayIsRewrittenWhereItIs) {
    LogFile log("/logs/log");
    addMany(log, 3);
    ASSERT_TRUE(files.move("/logs/log", "/logs/old", Replace::No).isNone());
    files.addFile("/logs/log", "somebody else's");
    log.trimLines(1);
    log.addItem(record("more"));
    EXPECT_EQ(content("/logs/old"), packetOf(record("message 2")) + packetOf(record("more")));
    EXPECT_EQ(content(), "somebody else's");
    EXPECT_EQ(namesInFolder(), 2U);
}

TEST_F(LogFileTest, ClearingEmptiesTheFile) {
    LogFile log("/logs/log");
    addMany(log, 3);
    log.clear();
    EXPECT_EQ(log.getItemCount(), 0U);
    EXPECT_EQ(content(), "");
    log.addItem(record("new"));
    EXPECT_EQ(content(), packetOf(record("new")));
}

TEST_F(LogFileTest, SavingElsewhereAndOverItself) {
    LogFile log("/logs/log");
    addMany(log, 2);
    files.addFile("/logs/copy", "old");
    EXPECT_TRUE(log.saveToPath("/logs/copy").isNone());
    EXPECT_EQ(content("/logs/copy"), content());
    EXPECT_TRUE(log.saveToPath("/logs/log").isNone());
    log.addItem(record("more"));
    EXPECT_EQ(content(), log.buildFileImage());
    EXPECT_EQ(log.saveToPath("/missing/copy"), SystemError(ENOENT));
}

TEST_F(LogFileTest, AnOpenFileIsRewrittenInPlace) {
    LogFile log("");
    addMany(log, 2);
    files.addFile("/other", "what was there before and was longer than the log, much longer even "
                            "than both of its packets together");
    auto file = files.open("/other", {.write = true});
    log.saveToFile(file.value().get());
    EXPECT_EQ(content("/other"), log.buildFileImage());
    log.saveToFile(nullptr);
}

TEST_F(LogFileTest, OneItemIsAppendedToAnOpenFile) {
    files.addFile("/other", "x");
    auto file = files.open("/other", {.write = true, .append = true});
    LogFile::writeOneItem(file.value().get(), bytesOf("abc"));
    LogFile::writeOneItem(nullptr, bytesOf("abc"));
    EXPECT_EQ(content("/other"), "x3 abc\n");
}

TEST_F(LogFileTest, TheParts) {
    EXPECT_TRUE(LogFile::wrapDataIntoFilePacket(std::nullopt).empty());
    EXPECT_EQ(textOf(LogFile::wrapDataIntoFilePacket(bytesOf("abc"))), "3 abc\n");
    EXPECT_EQ(textOf(LogFile::wrapDataIntoFilePacket(BytesView())), "0 \n");
    EXPECT_FALSE(LogFile::dictionaryToData(nullptr));
    const RecordPtr one = record("one");
    EXPECT_EQ(textOf(*LogFile::dictionaryToData(one.get())), OldStyleText::write(Value(*one)));
    EXPECT_FALSE(LogFile::dataToDictionary(std::nullopt));
    EXPECT_FALSE(LogFile::dataToDictionary(bytesOf("(a)")));
    EXPECT_TRUE(LogFile::dataToDictionary(bytesOf("{a = b;}")));
}

TEST_F(LogFileTest, TextsOfAnyBytesComeBackAsTheyWere) {
    std::string every;
    for (int i = 0; i < 256; ++i) {
        every += static_cast<char>(i);
    }
    const std::string texts[] = {"%d %s %@ %",
                                 every,
                                 "",
                                 "\xED\xA0\x80\xED\xB0\x80",
                                 "a\r\nb",
                                 "12 {\n    type = 1;\n}\n",
                                 "\xF4\x90\x80\x80",
                                 std::string(10U << 20U, '\x01')};
    {
        LogFile log("/logs/log");
        for (const std::string& text : texts) {
            log.addItem(record(text));
            log.addFields({.type = 1, .message = text});
            EXPECT_TRUE(messageAt(log, log.getItemCount() - 1) == text);
        }
    }
    LogFile log("/logs/log");
    ASSERT_EQ(log.getItemCount(), 2 * std::size(texts));
    for (std::size_t i = 0; i < log.getItemCount(); ++i) {
        EXPECT_TRUE(messageAt(log, i) == texts[i / 2]) << i;
    }
}

TEST_F(LogFileTest, ManyRecordsOfAllSizesLieSideBySide) {
    LogFile log("/logs/log");
    std::string expected;
    for (int i = 0; i < 3000; ++i) {
        const RecordPtr added = record(std::string(static_cast<std::size_t>(i * 37 % 20011), 'x'));
        log.addItem(added);
        expected += packetOf(added);
    }
    EXPECT_TRUE(log.buildFileImage() == expected);
    EXPECT_TRUE(content() == expected);
}

TEST_F(LogFileTest, AnotherFileTakesThePlaceOfTheFirst) {
    LogFile log("/logs/log");
    addMany(log, 2);
    log.createOpenReadFile("/logs/other");
    EXPECT_EQ(log.getItemCount(), 0U);
    log.addItem(record("one"));
    EXPECT_EQ(content("/logs/other"), packetOf(record("one")));
    log.close();
    EXPECT_EQ(log.getItemCount(), 0U);
    EXPECT_EQ(log.getItem(0), nullptr);
    log.addItem(record("in memory"));
    EXPECT_EQ(content("/logs/other"), packetOf(record("one")));
}

} // namespace
} // namespace tav
