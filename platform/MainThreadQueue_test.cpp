#include "platform/MainThreadQueue.hpp"

#include <atomic>
#include <chrono>
#include <future>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace tav {
namespace {

using namespace std::chrono_literals;

/// A loop on a thread of its own, which installs itself, and takes itself away at its end.
class LoopThread {
  public:
    explicit LoopThread(MainThreadQueue& queue) : queue_(queue), thread_([this] { run(); }) {
        installed_.get_future().wait();
    }
    ~LoopThread() { end(); }
    LoopThread(const LoopThread&) = delete;
    LoopThread& operator=(const LoopThread&) = delete;

    void end() {
        if (thread_.joinable()) {
            ended_ = true;
            wake();
            thread_.join();
        }
    }
    [[nodiscard]] std::thread::id identifier() const { return thread_.get_id(); }
    [[nodiscard]] int wakes() const { return wakes_; }

  private:
    void wake() {
        ++wakes_;
        const std::lock_guard lock(mutex_);
        isAwake_ = true;
        condition_.notify_all();
    }
    void run() {
        queue_.installLoop([this] { wake(); });
        installed_.set_value();
        while (!ended_) {
            {
                std::unique_lock lock(mutex_);
                condition_.wait(lock, [&] { return isAwake_; });
                isAwake_ = false;
            }
            queue_.runPending();
        }
        queue_.installLoop(nullptr);
    }

    MainThreadQueue& queue_;
    std::promise<void> installed_;
    std::atomic<bool> ended_ = false;
    std::atomic<int> wakes_ = 0;
    std::mutex mutex_;
    std::condition_variable condition_;
    bool isAwake_ = false;
    std::thread thread_;
};

class MainThreadQueueTest : public ::testing::Test {
  protected:
    MainThreadQueue queue;
    std::string journal;

    std::function<void()> noting(char letter) {
        return [this, letter] { journal += letter; };
    }
};

TEST_F(MainThreadQueueTest, IsWhatCurrentBeginsWith) {
    EXPECT_NE(dynamic_cast<MainThreadQueue*>(&MainThread::current()), nullptr);
    EXPECT_EQ(&MainThread::current(), &internal::realMainThread());
}

TEST_F(MainThreadQueueTest, PostedWorkWaitsForRunPendingAndKeepsItsOrder) {
    queue.post(noting('a'));
    queue.post(noting('b'));
    queue.post(noting('c'));
    EXPECT_EQ(journal, "");
    queue.runPending();
    EXPECT_EQ(journal, "abc");
    queue.runPending();
    EXPECT_EQ(journal, "abc");
}

TEST_F(MainThreadQueueTest, PostingOnTheMainThreadNeverRunsTheWork) {
    int wakes = 0;
    queue.installLoop([&] { ++wakes; });
    queue.post(noting('a'));
    EXPECT_EQ(journal, "");
    EXPECT_EQ(wakes, 1);
    queue.runPending();
    EXPECT_EQ(journal, "a");
    EXPECT_EQ(wakes, 1);
}

TEST_F(MainThreadQueueTest, AnEmptyFunctionIsNothingToDo) {
    queue.post(nullptr);
    queue.post(noting('a'));
    queue.runPending();
    EXPECT_EQ(journal, "a");
}

TEST_F(MainThreadQueueTest, WorkQueuedByWorkWaitsForTheNextRun) {
    queue.post([this] {
        journal += 'a';
        queue.post(noting('b'));
    });
    queue.runPending();
    EXPECT_EQ(journal, "a");
    queue.runPending();
    EXPECT_EQ(journal, "ab");
}

TEST_F(MainThreadQueueTest, AnInnerRunGoesOnWithTheQueueAndNothingRunsTwice) {
    queue.post([this] {
        journal += '(';
        queue.post(noting('d'));
        queue.runPending();
        queue.post(noting('e'));
        journal += ')';
    });
    queue.post(noting('b'));
    queue.post(noting('c'));
    queue.runPending();
    EXPECT_EQ(journal, "(bcd)");
    queue.runPending();
    EXPECT_EQ(journal, "(bcd)e");
}

TEST_F(MainThreadQueueTest, AnExceptionOfPostedWorkEndsTheRunAndTheRestStays) {
    queue.post(noting('a'));
    queue.post([] { throw std::runtime_error("broken"); });
    queue.post(noting('b'));
    EXPECT_THROW(queue.runPending(), std::runtime_error);
    EXPECT_EQ(journal, "a");
    queue.runPending();
    EXPECT_EQ(journal, "ab");
}

TEST_F(MainThreadQueueTest, WhatPostedWorkHoldsMayPostWhenItGoes) {
    struct Poster {
        MainThreadQueue& target;
        std::function<void()> work;
        ~Poster() { target.post(work); }
    };
    queue.post([poster = std::shared_ptr<Poster>(new Poster{queue, noting('z')})] {});
    queue.runPending();
    queue.runPending();
    EXPECT_EQ(journal, "z");
}

TEST_F(MainThreadQueueTest, WithoutALoopWaitedWorkRunsAtOnceOnThisThread) {
    queue.post(noting('b'));
    std::thread([&] {
        std::thread::id where;
        queue.runAndWait([&] {
            journal += 'a';
            where = std::this_thread::get_id();
        });
        EXPECT_EQ(where, std::this_thread::get_id());
    }).join();
    EXPECT_EQ(journal, "a");
    EXPECT_THROW(queue.runAndWait([] { throw std::runtime_error("broken"); }), std::runtime_error);
    queue.runPending();
    EXPECT_EQ(journal, "ab");
}

TEST_F(MainThreadQueueTest, OnTheMainThreadWaitedWorkRunsAtOnce) {
    int wakes = 0;
    queue.installLoop([&] { ++wakes; });
    queue.post(noting('b'));
    queue.runAndWait([this] {
        journal += 'a';
        queue.runAndWait(noting('+'));
    });
    EXPECT_EQ(journal, "a+");
    EXPECT_EQ(wakes, 1);
    EXPECT_THROW(queue.runAndWait([] { throw std::runtime_error("broken"); }), std::runtime_error);
}

TEST_F(MainThreadQueueTest, FromAnotherThreadWaitedWorkRunsOnTheMainThread) {
    LoopThread loop(queue);
    std::thread::id where;
    queue.runAndWait([&] { where = std::this_thread::get_id(); });
    EXPECT_EQ(where, loop.identifier());
    EXPECT_EQ(loop.wakes(), 1);
}

TEST_F(MainThreadQueueTest, WaitedWorkComesAfterWhatWasPostedBefore) {
    LoopThread loop(queue);
    for (const char letter : std::string("abcde")) {
        queue.post(noting(letter));
    }
    queue.runAndWait(noting('f'));
    EXPECT_EQ(journal, "abcdef");
}

TEST_F(MainThreadQueueTest, AnExceptionOfWaitedWorkTravelsToWhoWaitsAndNotToTheLoop) {
    LoopThread loop(queue);
    try {
        queue.runAndWait([] { throw std::runtime_error("broken"); });
        ADD_FAILURE() << "nothing was thrown";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "broken");
    }
    queue.runAndWait(noting('a'));
    EXPECT_EQ(journal, "a");
}

TEST_F(MainThreadQueueTest, RunPendingOnAnotherThreadThanTheMainOneDoesNothing) {
    queue.installLoop([] {});
    queue.post(noting('a'));
    std::thread([&] { queue.runPending(); }).join();
    EXPECT_EQ(journal, "");
    queue.runPending();
    EXPECT_EQ(journal, "a");
}

TEST_F(MainThreadQueueTest, ALoopIsWokenForWorkThatWasQueuedBeforeIt) {
    int wakes = 0;
    queue.installLoop([&] { ++wakes; });
    EXPECT_EQ(wakes, 0);
    queue.installLoop(nullptr);
    queue.post(noting('a'));
    queue.installLoop([&] { ++wakes; });
    EXPECT_EQ(wakes, 1);
    queue.runPending();
    EXPECT_EQ(journal, "a");
}

TEST_F(MainThreadQueueTest, WhenTheLoopGoesWhoWaitsDoesTheWorkHimself) {
    std::promise<void> woken;
    queue.installLoop([&] { woken.set_value(); });
    std::thread::id where;
    std::thread waiter([&] { queue.runAndWait([&] { where = std::this_thread::get_id(); }); });
    const std::thread::id waiterIdentifier = waiter.get_id();
    woken.get_future().wait(); // it is queued
    queue.installLoop(nullptr);
    waiter.join();
    EXPECT_EQ(where, waiterIdentifier);
    queue.runPending(); // and is not done again
}

TEST_F(MainThreadQueueTest, WhenTheLoopGoesPostedWorkStaysQueued) {
    queue.installLoop([] {});
    queue.post(noting('a'));
    queue.installLoop(nullptr);
    EXPECT_EQ(journal, "");
    queue.runPending();
    EXPECT_EQ(journal, "a");
}

TEST_F(MainThreadQueueTest, WorkThatTakesTheLoopAwayStillEndsForWhoWaits) {
    std::promise<void> woken;
    queue.installLoop([&] { woken.set_value(); });
    std::thread waiter([&] {
        queue.runAndWait([&] {
            queue.installLoop(nullptr);
            journal += 'a';
        });
    });
    woken.get_future().wait();
    queue.runPending();
    waiter.join();
    EXPECT_EQ(journal, "a");
}

TEST_F(MainThreadQueueTest, AnotherLoopTakesOverWhatIsWaitedFor) {
    std::promise<void> woken;
    queue.installLoop([&] { woken.set_value(); });
    std::thread waiter([&] { queue.runAndWait(noting('a')); });
    woken.get_future().wait();
    LoopThread loop(queue);
    waiter.join();
    EXPECT_EQ(journal, "a");
}

TEST_F(MainThreadQueueTest, AfterTheLoopWasTakenAwayItsWakeIsNotRunning) {
    std::promise<void> begun;
    std::promise<void> mayEnd;
    std::atomic<bool> ended = false;
    queue.installLoop([&] {
        begun.set_value();
        mayEnd.get_future().wait();
        ended = true;
    });
    std::thread poster([&] { queue.post(noting('a')); });
    begun.get_future().wait();
    std::thread releaser([&] {
        std::this_thread::sleep_for(20ms);
        mayEnd.set_value();
    });
    queue.installLoop(nullptr);
    EXPECT_TRUE(ended);
    poster.join();
    releaser.join();
    queue.post(noting('b')); // wakes nobody
}

TEST_F(MainThreadQueueTest, ManyThreadsPostAndWaitWhileLoopsComeAndGo) {
    constexpr int threadCount = 4;
    constexpr int rounds = 200;
    std::atomic<int> posted = 0;
    std::atomic<int> waited = 0;
    std::atomic<int> thrown = 0;
    std::atomic<bool> ended = false;
    std::thread loops([&] {
        while (!ended) {
            LoopThread loop(queue);
            std::this_thread::sleep_for(1ms);
        }
    });
    std::vector<std::thread> threads;
    for (int thread = 0; thread < threadCount; ++thread) {
        threads.emplace_back([&] {
            for (int round = 0; round < rounds; ++round) {
                queue.post([&] { ++posted; });
                queue.runAndWait([&] { ++waited; });
                try {
                    queue.runAndWait([] { throw std::runtime_error("broken"); });
                } catch (const std::runtime_error&) {
                    ++thrown;
                }
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    ended = true;
    loops.join();
    queue.runPending();
    EXPECT_EQ(posted, threadCount * rounds);
    EXPECT_EQ(waited, threadCount * rounds);
    EXPECT_EQ(thrown, threadCount * rounds);
}

} // namespace
} // namespace tav
