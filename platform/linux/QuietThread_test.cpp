#include "platform/QuietThread.hpp"

#include <atomic>

#include <gtest/gtest.h>

#include <pthread.h>
#include <signal.h>

namespace tav {
namespace {

TEST(QuietThread, TakesNoSignalsAndLeavesThoseOfItsStarter) {
    ::sigset_t before;
    ASSERT_EQ(::pthread_sigmask(SIG_SETMASK, nullptr, &before), 0);
    std::atomic<int> held = 0;
    startQuietThread([&] {
        ::sigset_t mask;
        ::pthread_sigmask(SIG_SETMASK, nullptr, &mask);
        for (const int number : {SIGINT, SIGTERM, SIGCHLD, SIGUSR1, SIGALRM, SIGPIPE}) {
            held += ::sigismember(&mask, number);
        }
    }).join();
    EXPECT_EQ(held, 6);
    ::sigset_t after;
    ASSERT_EQ(::pthread_sigmask(SIG_SETMASK, nullptr, &after), 0);
    for (int number = 1; number < SIGRTMAX; ++number) {
        EXPECT_EQ(::sigismember(&before, number), ::sigismember(&after, number)) << number;
    }
}

} // namespace
} // namespace tav
