#pragma once

#include "platform/MainThread.hpp"

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

namespace tav {

/// The work for a main thread, as a queue: all that there is to it on any host.
class MainThreadQueue final : public MainThread {
  public:
    void post(std::function<void()> work) override;
    void runAndWait(const std::function<void()>& work) override;
    void runPending() override;
    void installLoop(std::function<void()> wake) override;

  private:
    struct Waited;

    /// A function that was posted, or one that somebody waits for.
    struct Entry {
        std::uint64_t number = 0; ///< From 0, in the order of queueing.
        std::function<void()> posted;
        Waited* waited = nullptr; ///< Lives for as long as its entry is queued or running.
    };

    /// An installed loop. Whoever calls `wake` holds it for that long.
    struct Loop {
        std::thread::id thread;
        std::function<void()> wake;
        int running = 0; ///< Calls of `wake` that have not returned.
    };

    [[nodiscard]] bool isElsewhere() const;
    void enqueue(std::unique_lock<std::mutex>& lock, Entry entry);
    void callWake(std::unique_lock<std::mutex>& lock);
    void run(std::unique_lock<std::mutex>& lock, Entry entry);
    void withdraw(const Waited& waited);

    std::mutex mutex_;
    std::condition_variable changed_; ///< Waited work has ended, a loop or a `wake` has gone.
    std::deque<Entry> entries_;
    std::uint64_t nextNumber_ = 0;
    std::shared_ptr<Loop> loop_;
};

} // namespace tav
