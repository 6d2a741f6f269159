#include "platform/QuietThread.hpp"

#include <utility>

#include <pthread.h>
#include <signal.h>

namespace tav {

namespace {

/// While it lives this thread takes no signals, and the threads that it starts never do.
class SignalsHeldBack {
  public:
    SignalsHeldBack() {
        ::sigset_t all;
        ::sigfillset(&all);
        ::pthread_sigmask(SIG_SETMASK, &all, &before_);
    }
    SignalsHeldBack(const SignalsHeldBack&) = delete;
    SignalsHeldBack& operator=(const SignalsHeldBack&) = delete;
    ~SignalsHeldBack() { ::pthread_sigmask(SIG_SETMASK, &before_, nullptr); }

  private:
    ::sigset_t before_{};
};

} // namespace

std::jthread startQuietThread(std::function<void()> work) {
    const SignalsHeldBack held;
    return std::jthread(std::move(work));
}

} // namespace tav
