// The process table of this machine, as it is while the benchmark runs.

#include "platform/memory/MemoryProcessTable.hpp"
#include "process/ProcessArguments.hpp"
#include "relaunch/ProcessOfBundle.hpp"

#include <string>
#include <vector>

#include <benchmark/benchmark.h>

namespace tav {
namespace {

void allProcesses(benchmark::State& state) {
    for ([[maybe_unused]] auto step : state) {
        benchmark::DoNotOptimize(ZoProcess::allProcesses());
    }
    state.counters["processes"] = static_cast<double>(ZoProcess::allProcesses().size());
}
BENCHMARK(allProcesses);

void allProcessesWithArguments(benchmark::State& state) {
    for ([[maybe_unused]] auto step : state) {
        for (const ZoProcess& process : ZoProcess::allProcesses()) {
            benchmark::DoNotOptimize(process.arguments());
        }
    }
}
BENCHMARK(allProcessesWithArguments);

void findAmongAll(benchmark::State& state) {
    for ([[maybe_unused]] auto step : state) {
        BundleIdentifiers identifiers;
        benchmark::DoNotOptimize(processWithIdentifier("com.example.nobody", identifiers));
    }
}
BENCHMARK(findAmongAll);

void parseArea(benchmark::State& state) {
    std::vector<std::string> environment;
    for (int i = 0; i < 30; ++i) {
        environment.push_back("VARIABLE_" + std::to_string(i) + "=/some/ordinary/value/of/it");
    }
    const ArgumentArea area = argumentAreaFromParts(ArgumentArea::Layout::Counted, "/usr/bin/tool",
                                                    {"tool", "-v", "file"}, environment);
    for ([[maybe_unused]] auto step : state) {
        benchmark::DoNotOptimize(parseArgumentArea(area));
    }
}
BENCHMARK(parseArea);

} // namespace
} // namespace tav
