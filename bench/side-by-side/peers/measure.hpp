// What the peers measure with, and how they tell it.
#pragma once
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <strings.h>
#include <time.h>

inline double now() {
    timespec t;
    clock_gettime(CLOCK_MONOTONIC, &t);
    return double(t.tv_sec) + double(t.tv_nsec) * 1e-9;
}

// One metric, as harness.py reads it.
inline void result(const char* metric, double value) { printf("RESULT %s %.9g\n", metric, value); }

inline double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

// The median of several calls, in seconds.
template <class Call>
double median_of(int repeats, Call call) {
    std::vector<double> times;
    for (int i = 0; i < repeats; i++) {
        const double begin = now();
        call();
        times.push_back(now() - begin);
    }
    return median(times);
}

inline std::string contents(const char* path) {
    std::ifstream file(path, std::ios::binary);
    return std::string((std::istreambuf_iterator<char>(file)), {});
}

// The compiler must not leave out what leads to this value.
template <class T>
void keep(T const& value) {
    asm volatile("" : : "g"(&value) : "memory");
}
