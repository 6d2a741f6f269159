// What searching costs against the standard library's search, what texts with accents cost over
// ASCII, and the lookups that are made for every name.
#include "base/TextSearch.hpp"
#include "foundation/Collation.hpp"
#include "foundation/TextSearch.hpp"
#include "foundation/TopLevelDomains.hpp"
#include "foundation/UrlRecognition.hpp"

#include <string>
#include <string_view>

#include <benchmark/benchmark.h>

namespace tav {

namespace {

// A path, and the same some thousand times.
std::string pathOf(std::size_t size) {
    std::string text;
    while (text.size() < size) {
        text += "/Volumes/Media/Holiday Photograph 0001.JPG";
    }
    return text;
}

void containsASCII(benchmark::State& state) {
    const std::string text = pathOf(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) {
        benchmark::DoNotOptimize(containsString(text, "/Photographs/"));
    }
}
BENCHMARK(containsASCII)->Arg(40)->Arg(4096);

void standardFindASCII(benchmark::State& state) {
    const std::string text = pathOf(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) {
        benchmark::DoNotOptimize(std::string_view(text).find("/Photographs/"));
    }
}
BENCHMARK(standardFindASCII)->Arg(40)->Arg(4096);

void containsWithAccents(benchmark::State& state) {
    const std::string text = pathOf(static_cast<std::size_t>(state.range(0))) + "/Zürich";
    for (auto _ : state) {
        benchmark::DoNotOptimize(containsString(text, "/Zu\u0308rich/"));
    }
}
BENCHMARK(containsWithAccents)->Arg(40)->Arg(4096);

// "a" over and over: the standard's search takes the product of both lengths.
void findInRepetition(benchmark::State& state) {
    const auto size = static_cast<std::size_t>(state.range(0));
    const std::string text(size, 'a');
    const std::string pattern = "b" + std::string(size / 2, 'a');
    for (auto _ : state) {
        benchmark::DoNotOptimize(rangeOfString(text, pattern, SearchOption::Backwards));
    }
    state.SetComplexityN(state.range(0));
}
BENCHMARK(findInRepetition)->Range(1 << 10, 1 << 18)->Complexity();

void findInMarks(benchmark::State& state) {
    std::string text = "e";
    for (auto count = state.range(0); count > 0; --count) {
        text += "\u0301\u0323";
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(rangeOfString(text, "x\u0323", 0));
    }
    state.SetComplexityN(state.range(0));
}
BENCHMARK(findInMarks)->Range(1 << 10, 1 << 18)->Complexity();

void collationASCII(benchmark::State& state) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(compareStringsIgnoringDiacritical("Holiday Photograph 0001.JPG",
                                                                   "holiday photograph 0002.jpg"));
    }
}
BENCHMARK(collationASCII);

void collationWithAccents(benchmark::State& state) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            compareStringsIgnoringDiacritical("Zürich 0001.JPG", "Zu\u0308rich 0002.jpg"));
    }
}
BENCHMARK(collationWithAccents);

void topLevelDomain(benchmark::State& state) {
    const char* const names[] = {"COM", "uk", "zw", "nato", "museum"};
    std::size_t at = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(isTLD(names[at++ % 5]));
    }
}
BENCHMARK(topLevelDomain);

void typedURL(benchmark::State& state) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(isURL("www.example.com/path?query"));
    }
}
BENCHMARK(typedURL);

} // namespace

} // namespace tav

BENCHMARK_MAIN();
