// The log's file on a disk of 64 KiB.
#include "log/LogFile.hpp"
#include "testing/ForkedProcess.hpp"
#include "testing/TemporaryFolder.hpp"

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include <gtest/gtest.h>

#include <sched.h>
#include <sys/mount.h>

namespace tav {
namespace {

constexpr int cannotMount = 100;
constexpr int isTorn = -1;

/// How long a record is does not divide a page: the last one that is tried fits in part.
void add(LogFile& log, int number) {
    const std::string message = std::to_string(number) + " " + std::string(300, 'x');
    log.addFields({.type = 0, .message = message, .sourceLine = number + 1});
}

/// How many records the file holds, when they are those from a number on without a gap and nothing
/// else.
int countInFile(const std::string& path, int first) {
    std::ifstream stream(path, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(stream), {}};
    LogFile log(path);
    if (log.buildFileImage() != bytes) {
        return isTorn;
    }
    for (std::size_t i = 0; i < log.getItemCount(); ++i) {
        const RecordPtr record = log.getItem(i);
        const Value* line = record ? record->find("sourceLine") : nullptr;
        if (line == nullptr || line->intValue() != first + static_cast<int>(i) + 1) {
            return isTorn;
        }
    }
    return static_cast<int>(log.getItemCount());
}

bool isAlone(const std::string& path) {
    const auto folder = std::filesystem::path(path).parent_path();
    return std::distance(std::filesystem::directory_iterator(folder), {}) == 1;
}

/// The number of the check that failed.
int fillDisk(const std::string& path) {
    LogFile log(path);
    for (int i = 0; i < 1000; ++i) {
        add(log, i);
    }
    const int fitting = countInFile(path, 0);
    if (log.getItemCount() != 1000 || fitting < 150 || fitting >= 200) {
        return 1;
    }
    // A second file has no room beside it.
    log.trimLines(100);
    if (countInFile(path, 900) != 100 || !isAlone(path)) {
        return 2;
    }
    add(log, 1000);
    if (countInFile(path, 900) != 101) {
        return 3;
    }
    // Now it has.
    log.trimLines(50);
    if (countInFile(path, 951) != 50 || !isAlone(path)) {
        return 4;
    }
    for (int i = 1001; i < 1200; ++i) {
        add(log, i);
    }
    const int afterwards = countInFile(path, 951);
    if (afterwards < 150 || afterwards >= 200) {
        return 5;
    }
    log.clear();
    return countInFile(path, 0) == 0 && isAlone(path) ? 0 : 6;
}

TEST(LogFullDisk, WhatFitsIsWholeAndATrimMakesRoom) {
    const TemporaryFolder folder;
    const ProcessEnd end = runForked([&] {
        // In a world of the child's own, where the disk goes with it.
        if (::unshare(CLONE_NEWNS) != 0 ||
            ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
            ::mount("none", folder.path().c_str(), "tmpfs", 0, "size=64k") != 0) {
            return cannotMount;
        }
        return fillDisk(folder.path("log"));
    });
    if (end == ProcessEnd{cannotMount, 0}) {
        GTEST_SKIP() << "needs the right to mount a small tmpfs";
    }
    EXPECT_EQ(end, ProcessEnd());
}

} // namespace
} // namespace tav
