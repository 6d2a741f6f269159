#pragma once

#include "base/Data.hpp"
#include "platform/Clock.hpp"
#include "platform/FileSystem.hpp"

#include <array>
#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>

namespace tav::internal {

/// Larger files gain nothing by being read at once.
inline constexpr std::size_t largestSmallFile = std::size_t{64} << 10U;

/// A small file as it was at one moment.
struct ReadFile {
    FileAttributes attributes;
    std::optional<Data> creationDate; ///< Of its extended attributes, that one.
    BytesView content;
};

/// Reads small files one after the other on a thread of its own, a few of them ahead of whoever
/// takes them. That one never waits: what is not read by then it reads itself, and the thread goes
/// on with what comes after.
///
/// Made, used and destroyed by one thread. The end waits for the file that is just being read.
class FilesAhead {
  public:
    /// How many files it may be ahead. To wake the thread more often costs more than it gains.
    static constexpr std::size_t mostAhead = 64;

    /// Null where there is no memory or no thread to be had.
    [[nodiscard]] static std::unique_ptr<FilesAhead> start();
    FilesAhead(const FilesAhead&) = delete;
    FilesAhead& operator=(const FilesAhead&) = delete;
    ~FilesAhead();

    /// How many more paths may be added; those of files that were come by make room.
    [[nodiscard]] std::size_t room() const;
    /// Adds the next file; nothing is read of one with the empty path, nor of one that has changed
    /// within the last three seconds: file systems keep dates in steps, on FAT of two seconds, and
    /// another change in the same step could not be told.
    void add(std::string_view path);
    /// Tells the thread what was added since.
    void go();
    /// The files before this one, in the order in which they were added, are not needed any more;
    /// nor does the thread begin to read it.
    void comeTo(std::size_t index) { reached_.store(index, std::memory_order_relaxed); }
    /// How many files the thread is done with, read or not.
    [[nodiscard]] std::size_t done() const { return done_.load(std::memory_order_acquire); }
    /// The file that was come to, good until the next one is; null when it was not read.
    [[nodiscard]] const ReadFile* current() const;

  private:
    struct Slot {
        std::string path;
        bool isRead = false;
        ReadFile file;
    };
    FilesAhead() = default;

    void tell(std::size_t count);
    void readAll();
    std::size_t waitForMore(std::size_t than);
    bool read(Slot& slot, std::byte* buffer) const;
    [[nodiscard]] Slot& slot(std::size_t index) { return slots_[index % mostAhead]; }

    FileSystem& files_ = FileSystem::current();
    Clock& clock_ = Clock::current();
    std::unique_ptr<std::byte[]> buffers_; ///< Not filled first.
    std::array<Slot, mostAhead> slots_;
    std::size_t added_ = 0;
    std::atomic<std::size_t> reached_ = 0; ///< By the taker.
    std::atomic<std::size_t> done_ = 0;    ///< By the reader.
    std::atomic<bool> isEnding_ = false;

    std::mutex mutex_;
    std::condition_variable isTold_;
    std::size_t told_ = 0; ///< Of those added; under the lock.

    std::jthread reader_;
};

} // namespace tav::internal
