// What the log costs: a message of a type that is off, one that is on, opening, reading.
#include "log/LogFacility.hpp"
#include "platform/memory/MemoryPreferences.hpp"

#include <cstdio>
#include <cstdlib>
#include <string>

#include <benchmark/benchmark.h>

namespace tav {

namespace {

/// A log for the length of a benchmark: a file in the temporary folder, or in memory for an empty
/// name.
class ScopedLog {
  public:
    explicit ScopedLog(bool hasFile) {
        if (hasFile) {
            path_ = "/tmp/tav-log-bench." + std::to_string(std::rand());
        }
        LogInit({}, path_);
    }
    ~ScopedLog() {
        LogDInit();
        if (!path_.empty()) {
            std::remove(path_.c_str());
        }
    }
    ScopedLog(const ScopedLog&) = delete;
    ScopedLog& operator=(const ScopedLog&) = delete;

  private:
    MemoryPreferences preferences_;
    Preferences::Replacement replacement_{preferences_};
    std::string path_;
};

void typeThatIsOff(benchmark::State& state) {
    const ScopedLog log(false);
    int number = 0;
    for (auto _ : state) {
        LogEtc(7, nullptr, nullptr, "%d of %@", ++number, "many");
        benchmark::DoNotOptimize(number);
    }
}
BENCHMARK(typeThatIsOff);

/// 0: kept in memory only, 1: in a file.
void message(benchmark::State& state) {
    const ScopedLog log(state.range(0) == 1);
    const Value second = "second message of this record";
    const Value extra = "extra description, value 65535";
    for (auto _ : state) {
        LogMessage(0, "module", "/src/source_file.cc", "performOperation", 42, &extra, &second,
                   "Copied item number %d from the desktop to the device volume", 5);
    }
}
BENCHMARK(message)->Arg(0)->Arg(1);

void openAndRead(benchmark::State& state) {
    const std::string path = "/tmp/tav-log-bench." + std::to_string(std::rand());
    {
        LogFile log(path);
        for (long i = 0; i < state.range(0); ++i) {
            log.addFields({.type = 0,
                           .message = "Copied item number 5 from the desktop to the device volume",
                           .sourceFile = "source_file.cc",
                           .sourceLine = 42,
                           .function = "performOperation",
                           .extra = "extra description, value 65535",
                           .date = "20091231T235959"});
        }
    }
    for (auto _ : state) {
        LogFile log(path);
        for (std::size_t i = 0; state.range(1) == 1 && i < log.getItemCount(); ++i) {
            benchmark::DoNotOptimize(log.getItem(i));
        }
        benchmark::DoNotOptimize(log.getItemCount());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
    std::remove(path.c_str());
}
BENCHMARK(openAndRead)->ArgNames({"records", "fields"})->Args({25000, 0})->Args({25000, 1});
BENCHMARK(openAndRead)->ArgNames({"records", "fields"})->Args({1000000, 0});

} // namespace

} // namespace tav
