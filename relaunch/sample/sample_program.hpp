#pragma once

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <thread>

#include <unistd.h>

namespace sample {

/// Prints the program's version when that is all that is asked (`--version`). A running program can
/// be asked through its own executable, `/proc/PID/exe`, even after the file was replaced or
/// removed.
inline bool answeredVersion(int argumentCount, char** arguments) {
    if (argumentCount != 2 || std::strcmp(arguments[1], "--version") != 0) {
        return false;
    }
    std::puts(SAMPLE_VERSION);
    return true;
}

/// What follows `option` ("--name=") among the arguments; null when it is not given.
inline const char* valueOfOption(int argumentCount, char** arguments, std::string_view option) {
    for (int index = 1; index < argumentCount; ++index) {
        if (std::string_view(arguments[index]).substr(0, option.size()) == option) {
            return arguments[index] + option.size();
        }
    }
    return nullptr;
}

/// How long the end of the program is to take: `--shutdown-delay=MILLISECONDS`, else not at all.
inline unsigned shutdownDelay(int argumentCount, char** arguments) {
    const char* const value = valueOfOption(argumentCount, arguments, "--shutdown-delay=");
    return value == nullptr ? 0 : static_cast<unsigned>(std::strtoul(value, nullptr, 10));
}

/// Does nothing until somebody ends the program, and then for `delay` milliseconds more; that is an
/// orderly end.
[[noreturn]] inline void runUntilTerminated(unsigned delay = 0) {
    static volatile std::sig_atomic_t isTerminated = 0;
    // Outside the wait the signal is held back, so that it never comes just before it unseen.
    ::sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigprocmask(SIG_BLOCK, &signals, nullptr);
    std::signal(SIGTERM, [](int /*signal*/) { isTerminated = 1; });
    sigemptyset(&signals);
    while (isTerminated == 0) {
        sigsuspend(&signals);
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(delay));
    std::_Exit(0);
}

} // namespace sample
