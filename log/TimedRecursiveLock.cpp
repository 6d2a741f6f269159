#include "log/TimedRecursiveLock.hpp"

#include "platform/Clock.hpp"

namespace tav {
namespace {

/// An address that no other living thread has.
const void* thisThread() {
    static thread_local const char mark = 0;
    return &mark;
}

} // namespace

bool TimedRecursiveLock::lock(std::chrono::nanoseconds timeout) {
    const void* thread = thisThread();
    if (owner_.load(std::memory_order_relaxed) == thread) {
        ++depth_;
        return true;
    }
    return take(thread) || wait(thread, timeout);
}

bool TimedRecursiveLock::take(const void* thread) {
    const void* nobody = nullptr;
    if (!owner_.compare_exchange_strong(nobody, thread)) {
        return false;
    }
    depth_ = 1;
    return true;
}

// Whoever waits counts himself before he tries, and whoever unlocks frees before he looks at the
// count, both in one order for all: one of the two sees the other.
bool TimedRecursiveLock::wait(const void* thread, std::chrono::nanoseconds timeout) {
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
    owner_.store(nullptr);
    if (waiters_.load() != 0) {
        const std::lock_guard lock(mutex_);
        released_.notify_one();
    }
}

} // namespace tav
