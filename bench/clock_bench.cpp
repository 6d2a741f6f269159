// What the time costs, for a log that asks with every line.

#include "platform/Clock.hpp"

#include <benchmark/benchmark.h>

#include <time.h>

namespace tav {
namespace {

void now(benchmark::State& state) {
    for ([[maybe_unused]] auto step : state) {
        benchmark::DoNotOptimize(Clock::current().now());
    }
}
BENCHMARK(now);

void localTime(benchmark::State& state) {
    for ([[maybe_unused]] auto step : state) {
        benchmark::DoNotOptimize(Clock::current().localTime());
    }
}
BENCHMARK(localTime)->ThreadRange(1, 2);

/// The peer: what the C library takes for the same, each time.
void localtimeOfTheLibrary(benchmark::State& state) {
    for ([[maybe_unused]] auto step : state) {
        ::timespec time{};
        ::clock_gettime(CLOCK_REALTIME, &time);
        struct ::tm parts {};
        benchmark::DoNotOptimize(::localtime_r(&time.tv_sec, &parts));
    }
}
BENCHMARK(localtimeOfTheLibrary)->ThreadRange(1, 2);

} // namespace
} // namespace tav
