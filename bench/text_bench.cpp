// What texts and paths cost that file names go through: comparing, UTF-16, components.
#include "base/PathString.hpp"
#include "base/Unicode.hpp"

#include <string>

#include <benchmark/benchmark.h>

namespace tav {

namespace {

void equalsIgnoringCaseASCII(benchmark::State& state) {
    const std::string a = "Holiday Photograph 0001.JPG";
    const std::string b = "holiday photograph 0001.jpg";
    for (auto _ : state) {
        benchmark::DoNotOptimize(equalsIgnoringCase(a, b));
    }
}
BENCHMARK(equalsIgnoringCaseASCII);

void equalsIgnoringCaseUnicode(benchmark::State& state) {
    const std::string a = "Straßenbilder Zürich 0001.JPG";
    const std::string b = "STRASSENBILDER ZU\u0308RICH 0001.jpg";
    for (auto _ : state) {
        benchmark::DoNotOptimize(equalsIgnoringCase(a, b));
    }
}
BENCHMARK(equalsIgnoringCaseUnicode);

void caseInsensitiveCompareASCII(benchmark::State& state) {
    const std::string a = "Holiday Photograph 0001.JPG";
    const std::string b = "holiday photograph 0002.jpg";
    for (auto _ : state) {
        benchmark::DoNotOptimize(caseInsensitiveCompare(a, b));
    }
}
BENCHMARK(caseInsensitiveCompareASCII);

void caseInsensitiveCompareUnicode(benchmark::State& state) {
    const std::string a = "Straßenbilder Zürich 0001.JPG";
    const std::string b = "STRASSENBILDER ZU\u0308RICH 0002.jpg";
    for (auto _ : state) {
        benchmark::DoNotOptimize(caseInsensitiveCompare(a, b));
    }
}
BENCHMARK(caseInsensitiveCompareUnicode);

void utf16FromBytesASCII(benchmark::State& state) {
    const std::string text(static_cast<std::size_t>(state.range(0)), 'a');
    for (auto _ : state) {
        benchmark::DoNotOptimize(utf16FromBytes(text));
    }
    state.SetBytesProcessed(state.iterations() * state.range(0));
}
BENCHMARK(utf16FromBytesASCII)->Arg(24)->Arg(4096);

void isValidUTF8ASCII(benchmark::State& state) {
    const std::string text(static_cast<std::size_t>(state.range(0)), 'a');
    for (auto _ : state) {
        benchmark::DoNotOptimize(isValidUTF8(text));
    }
    state.SetBytesProcessed(state.iterations() * state.range(0));
}
BENCHMARK(isValidUTF8ASCII)->Arg(24)->Arg(4096);

void pathComponentsOfAPath(benchmark::State& state) {
    const std::string path = "/Applications/Example.app/Contents/SharedSupport/Example.app";
    for (auto _ : state) {
        benchmark::DoNotOptimize(pathComponents(path));
    }
}
BENCHMARK(pathComponentsOfAPath);

void lastPathComponentOfAPath(benchmark::State& state) {
    const std::string path = "/Applications/Example.app/Contents/SharedSupport/Example.app";
    for (auto _ : state) {
        benchmark::DoNotOptimize(lastPathComponent(path));
    }
}
BENCHMARK(lastPathComponentOfAPath);

} // namespace

} // namespace tav

BENCHMARK_MAIN();
