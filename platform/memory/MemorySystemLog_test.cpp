#include "platform/memory/MemorySystemLog.hpp"

#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace tav {
namespace {

using namespace std::string_literals;

TEST(MemorySystemLog, KeepsTheLinesAsTheyWereWritten) {
    MemorySystemLog log;
    const SystemLog::Replacement replacement(log);
    SystemLog::current().write("first");
    SystemLog::current().write("");
    SystemLog::current().write("a\0b\nc\xFF"s);
    EXPECT_EQ(log.lines(), (std::vector{"first"s, ""s, "a\0b\nc\xFF"s}));
    log.clear();
    EXPECT_EQ(log.lines(), std::vector<std::string>{});
}

TEST(MemorySystemLog, AnyThreadMayWrite) {
    MemorySystemLog log;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&] {
            for (int round = 0; round < 500; ++round) {
                log.write("line");
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(log.lines().size(), 2000U);
}

} // namespace
} // namespace tav
