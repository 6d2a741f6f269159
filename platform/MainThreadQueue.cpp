#include "platform/MainThreadQueue.hpp"

#include "platform/NeverDestroyed.hpp"

#include <algorithm>
#include <exception>
#include <utility>

namespace tav {

/// Work that somebody waits for, in the frame of who waits. Guarded by the queue's mutex.
struct MainThreadQueue::Waited {
    enum class State { Queued, Running, Ended };

    const std::function<void()>& work;
    State state = State::Queued;
    std::exception_ptr thrown{};
};

MainThread& internal::realMainThread() { return neverDestroyed<MainThreadQueue>(); }

/// Whether there is a main thread and it is not the calling one.
bool MainThreadQueue::isElsewhere() const {
    return loop_ != nullptr && loop_->thread != std::this_thread::get_id();
}

void MainThreadQueue::post(std::function<void()> work) {
    if (!work) {
        return;
    }
    std::unique_lock lock(mutex_);
    enqueue(lock, {0, std::move(work), nullptr});
}

void MainThreadQueue::runAndWait(const std::function<void()>& work) {
    std::unique_lock lock(mutex_);
    if (!isElsewhere()) {
        lock.unlock();
        work();
        return;
    }
    Waited waited{work};
    enqueue(lock, {0, nullptr, &waited});
    changed_.wait(lock, [&] {
        return waited.state == Waited::State::Ended ||
               (loop_ == nullptr && waited.state == Waited::State::Queued);
    });
    if (waited.state == Waited::State::Queued) {
        withdraw(waited);
        lock.unlock();
        work();
        return;
    }
    lock.unlock();
    if (waited.thrown) {
        std::rethrow_exception(std::move(waited.thrown));
    }
}

void MainThreadQueue::runPending() {
    std::unique_lock lock(mutex_);
    if (isElsewhere()) {
        return;
    }
    const std::uint64_t end = nextNumber_;
    while (!entries_.empty() && entries_.front().number < end) {
        Entry entry = std::move(entries_.front());
        entries_.pop_front();
        run(lock, std::move(entry));
    }
}

void MainThreadQueue::installLoop(std::function<void()> wake) {
    std::unique_lock lock(mutex_);
    const std::shared_ptr<Loop> earlier = std::move(loop_);
    loop_ = nullptr;
    if (wake) {
        loop_ = std::make_shared<Loop>(Loop{std::this_thread::get_id(), std::move(wake)});
    }
    changed_.notify_all();
    if (earlier != nullptr) {
        changed_.wait(lock, [&] { return earlier->running == 0; });
    }
    if (!entries_.empty()) {
        callWake(lock);
    }
}

void MainThreadQueue::enqueue(std::unique_lock<std::mutex>& lock, Entry entry) {
    entry.number = nextNumber_++;
    entries_.push_back(std::move(entry));
    callWake(lock);
}

void MainThreadQueue::callWake(std::unique_lock<std::mutex>& lock) {
    const std::shared_ptr<Loop> loop = loop_;
    if (loop == nullptr) {
        return;
    }
    ++loop->running;
    lock.unlock();
    // Nobody is there to catch what it threw, and the work is queued already.
    [&]() noexcept { loop->wake(); }();
    lock.lock();
    --loop->running;
    changed_.notify_all();
}

/// Gives the lock away meanwhile, and does not hold it when it throws.
void MainThreadQueue::run(std::unique_lock<std::mutex>& lock, Entry entry) {
    if (entry.waited == nullptr) {
        lock.unlock();
        entry.posted();
        entry.posted = nullptr; // what it holds may post in its destructor
        lock.lock();
        return;
    }
    Waited& waited = *entry.waited;
    waited.state = Waited::State::Running;
    lock.unlock();
    std::exception_ptr thrown;
    try {
        waited.work();
    } catch (...) {
        thrown = std::current_exception();
    }
    lock.lock();
    waited.thrown = std::move(thrown);
    waited.state = Waited::State::Ended;
    changed_.notify_all();
}

void MainThreadQueue::withdraw(const Waited& waited) {
    std::erase_if(entries_, [&](const Entry& entry) { return entry.waited == &waited; });
}

} // namespace tav
