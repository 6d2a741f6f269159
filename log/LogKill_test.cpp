// The log of a process that is killed, on the host's own file system.
#include "log/LogFacility.hpp"
#include "platform/FileSystem.hpp"
#include "platform/memory/FaultyFileSystem.hpp"
#include "platform/memory/MemoryPreferences.hpp"
#include "testing/ForkedProcess.hpp"
#include "testing/TemporaryFolder.hpp"

#include <array>
#include <chrono>
#include <csignal>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

namespace tav {
namespace {

using Messages = std::vector<std::string>;

Messages messagesOf(LogFile& log) {
    Messages messages;
    for (std::size_t i = 0; i < log.getItemCount(); ++i) {
        const RecordPtr record = log.getItem(i);
        const std::string* message = record ? record->findString("message") : nullptr;
        messages.push_back(message != nullptr ? *message : "unreadable");
    }
    return messages;
}

/// Lines that a child tells its parent, as far as it came.
class Journal {
  public:
    explicit Journal(const std::string& path)
        : path_(path),
          descriptor_(::open(path.c_str(), O_CREAT | O_WRONLY | O_APPEND | O_CLOEXEC, 0600)) {}
    ~Journal() { ::close(descriptor_); }
    Journal(const Journal&) = delete;
    Journal& operator=(const Journal&) = delete;

    void tell(std::string line) const {
        line += '\n';
        EXPECT_EQ(::write(descriptor_, line.data(), line.size()), ssize_t(line.size()));
    }
    [[nodiscard]] Messages lines() const {
        const auto bytes = FileSystem::current().readFile(path_, 1U << 30U);
        std::string_view text = textOf(bytes.value());
        Messages lines;
        while (text.find('\n') != std::string_view::npos) {
            lines.emplace_back(text.substr(0, text.find('\n')));
            text.remove_prefix(lines.back().size() + 1);
        }
        return lines;
    }

  private:
    std::string path_;
    int descriptor_;
};

constexpr int steps = 14;

/// One step of a log's life; the same on the log and on the list that it ought to be.
void doStep(int step, LogFile& log) {
    const std::string message = "record " + std::to_string(step) + std::string(300, '.');
    if (step == 6) {
        log.trimLines(3);
    } else if (step == 10) {
        log.clear();
    } else {
        log.addFields({.type = 0, .message = message});
    }
}

void doStep(int step, Messages& list) {
    if (step == 6) {
        list.erase(list.begin(), list.end() - 3);
    } else if (step == 10) {
        list.clear();
    } else {
        list.push_back("record " + std::to_string(step) + std::string(300, '.'));
    }
}

/// Kills a child at, or within, its calls one by one, and looks at what it left.
void sweep(void (FaultyFileSystem::*kill)(std::size_t)) {
    bool isKilled = true;
    int rounds = 0;
    for (std::size_t call = 1; isKilled; ++call, ++rounds) {
        SCOPED_TRACE("call " + std::to_string(call));
        const TemporaryFolder folder;
        const std::string path = folder.path("log");
        const Journal journal(folder.path("journal"));
        const ProcessEnd end = runForked([&] {
            FaultyFileSystem files(FileSystem::current());
            (files.*kill)(call);
            const FileSystem::Replacement replacement(files);
            LogFile log(path);
            for (int step = 0; step < steps; ++step) {
                doStep(step, log);
                journal.tell(std::to_string(step));
            }
            return 0;
        });
        isKilled = end == ProcessEnd{0, SIGKILL};
        EXPECT_TRUE(isKilled || end == ProcessEnd()) << end;

        const int done = static_cast<int>(journal.lines().size());
        Messages told;
        for (int step = 0; step < done; ++step) {
            doStep(step, told);
        }
        Messages orOneMore = told;
        if (done < steps) {
            doStep(done, orOneMore);
        }
        LogFile log(path);
        const Messages found = messagesOf(log);
        EXPECT_TRUE(found == told || found == orOneMore) << found.size() << " of " << told.size();
        // Whoever goes on loses nothing either.
        log.addFields({.type = 0, .message = "next"});
        LogFile again(path);
        Messages expected = found;
        expected.emplace_back("next");
        EXPECT_EQ(messagesOf(again), expected);
        ASSERT_LT(call, 1000U);
    }
    EXPECT_GT(rounds, 20);
}

TEST(LogKill, AtEveryCall) { sweep(&FaultyFileSystem::endProcessAtCall); }

TEST(LogKill, InTheMiddleOfEveryCall) { sweep(&FaultyFileSystem::endProcessWithinCall); }

/// What the log of the child below ought to be after the lines that it told.
Messages listAfter(const Messages& lines, Messages list) {
    for (const std::string& line : lines) {
        if (line == "clear") {
            list.clear();
            continue;
        }
        if (list.size() >= LogHandler::mostRecords) {
            list.erase(list.begin(), list.end() - LogHandler::recordsAfterTrim);
        }
        list.push_back(line);
    }
    return list;
}

/// Logs from four threads until it is killed, telling each record when it is logged. The lock
/// around both makes the order the same.
[[noreturn]] void logUntilKilled(const std::string& path, const Journal& journal,
                                 std::chrono::microseconds life) {
    MemoryPreferences preferences;
    const Preferences::Replacement replacement(preferences);
    LogInit({}, path);
    const auto handler = LogHandler::defaultHandler();
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&, thread] {
            for (int i = 0;; ++i) {
                if (!handler->lockWithTimeout()) {
                    return;
                }
                if (thread == 0 && i % 500 == 499) {
                    handler->clear();
                    journal.tell("clear");
                } else {
                    const std::string message = std::to_string(thread) + ":" + std::to_string(i) +
                                                std::string(std::size_t(i) * 37 % 3000, '.');
                    Log_("%@", message);
                    journal.tell(message);
                }
                handler->unlock();
            }
        });
    }
    std::this_thread::sleep_for(life);
    ::kill(::getpid(), SIGKILL);
    for (;;) {
        ::pause();
    }
}

TEST(LogKill, AtRandomMoments) {
    std::mt19937 random(11);
    for (int round = 0; round < 50; ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        const TemporaryFolder folder;
        const std::string path = folder.path("log");
        const Journal journal(folder.path("journal"));
        Messages before;
        if (round % 5 == 0) { // nearly full
            std::string image;
            for (int i = 0; i < 24'990; ++i) {
                before.push_back("old" + std::to_string(i));
                LogPackets::append(image, "{message = " + before.back() + ";}");
            }
            ASSERT_TRUE(FileSystem::current().writeFile(path, bytesOf(image), 0600).isNone());
        }
        const std::chrono::microseconds life(random() % 30000);
        const ProcessEnd end = runForked([&]() -> int { logUntilKilled(path, journal, life); });
        ASSERT_EQ(end, (ProcessEnd{0, SIGKILL}));

        const Messages lines = journal.lines();
        const Messages told = listAfter(lines, before);
        LogFile log(path);
        const Messages found = messagesOf(log);
        // One more step may have been done without having been told: a clear, or a record.
        Messages next = lines;
        next.push_back(found.empty() ? "clear" : found.back());
        // Between trimming and adding only the newest are there.
        Messages trimmed = told;
        if (trimmed.size() >= LogHandler::mostRecords) {
            trimmed.erase(trimmed.begin(), trimmed.end() - LogHandler::recordsAfterTrim);
        }
        const bool holds = found == told || found == listAfter(next, before) || found == trimmed;
        EXPECT_TRUE(holds) << found.size() << " records, told of " << told.size();
        log.addFields({.type = 0, .message = "next"});
        LogFile again(path);
        EXPECT_EQ(again.getItemCount(), found.size() + 1);
        EXPECT_EQ(messagesOf(again).back(), "next");
    }
}

} // namespace
} // namespace tav
