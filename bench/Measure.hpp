#pragma once

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <vector>

/// What the programs of the side-by-side runs measure with and how they tell it.
namespace tav::bench {

/// One metric, as the scripts read it.
inline void result(const char* metric, double value) {
    std::printf("RESULT %s %.9g\n", metric, value);
}

/// Makes the compiler believe that a value is used.
template <class T>
void keep(const T& value) {
    asm volatile("" : : "g"(&value) : "memory");
}

/// How long a call takes, in seconds.
template <class Call>
double secondsOf(const Call& call) {
    const auto begin = std::chrono::steady_clock::now();
    call();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

/// The median of several calls, in seconds.
template <class Call>
double medianSeconds(int repeats, const Call& call) {
    std::vector<double> times;
    for (int i = 0; i < repeats; ++i) {
        times.push_back(secondsOf(call));
    }
    std::sort(times.begin(), times.end());
    return times[times.size() / 2];
}

} // namespace tav::bench
