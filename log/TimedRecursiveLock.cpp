#include "log/TimedRecursiveLock.hpp"

#include "platform/Clock.hpp"

namespace tav {
namespace {

/// A number that no other thread has or had: one that ended with the lock keeps it for ever.
std::uint64_t thisThread() {
    static constinit std::atomic<std::uint64_t> last = 0;
    static thread_local const std::uint64_t number = ++last;
    return number;
}

} // namespace

bool TimedRecursiveLock::lock(std::chrono::nanoseconds timeout) {
    const std::uint64_t thread = thisThread();
    if (owner_.load(std::memory_order_relaxed) == thread) {
        ++depth_;
        return true;
    }
    return take(thread) || wait(thread, timeout);
}

bool TimedRecursiveLock::take(std::uint64_t thread) {
    std::uint64_t nobody = 0;
    if (!owner_.compare_exchange_strong(nobody, thread)) {
        return false;
    }
    depth_ = 1;
    return true;
}

// Whoever waits counts himself before he tries, and whoever unlocks frees before he looks at the
// count, both in one order for all: one of the two sees the other.
bool TimedRecursiveLock::wait(std::uint64_t thread, std::chrono::nanoseconds timeout) {
    Clock& clock = Clock::current();
    const std::chrono::nanoseconds deadline = clock.ticks() + timeout;
    std::unique_lock lock(mutex_);
    ++waiters_;
    bool isOver = false;
    bool isTaken = take(thread);
    while (!isTaken && !isOver) {
        isOver = clock.waitUntil(released_, lock, deadline);
        isTaken = take(thread);
    }
    --waiters_;
    return isTaken;
}

void TimedRecursiveLock::unlock() {
    if (--depth_ != 0) {
        return;
    }
    owner_.store(0);
    if (waiters_.load() != 0) {
        const std::lock_guard lock(mutex_);
        released_.notify_one();
    }
}

} // namespace tav
