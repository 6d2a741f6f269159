#pragma once

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

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

/// Does nothing until somebody ends the program, which is an orderly end.
[[noreturn]] inline void runUntilTerminated() {
    std::signal(SIGTERM, [](int /*signal*/) { std::_Exit(0); });
    while (true) {
        pause();
    }
}

} // namespace sample
