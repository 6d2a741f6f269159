// ours_processes snapshot | find IDENTIFIER: the process table in the side-by-side run.

#include "bench/Measure.hpp"
#include "relaunch/ProcessOfBundle.hpp"

#include <cstddef>
#include <cstdio>
#include <string>
#include <string_view>

namespace {

using namespace tav;

/// Every process with its path, arguments, environment, parent and user; how many there are.
std::size_t snapshot() {
    std::size_t bytes = 0;
    const ZoProcess::List processes = ZoProcess::allProcesses();
    for (const ZoProcess& process : processes) {
        bytes += process.executablePath().value_or("").size() + process.arguments().size() +
                 process.environment().size();
        bytes += static_cast<std::size_t>(process.parentProcessIdentifier());
        bytes += static_cast<std::size_t>(process.userIdentifier());
    }
    bench::keep(bytes);
    return processes.size();
}

} // namespace

int main(int count, char** arguments) {
    constexpr int repeats = 9;
    const std::string_view mode = count > 1 ? arguments[1] : "";
    if (mode == "snapshot") {
        std::size_t processes = 0;
        const double first = bench::secondsOf([&] { processes = snapshot(); });
        const double pass = bench::medianSeconds(repeats, [&] { processes = snapshot(); });
        bench::result("first_us", first * 1e6);
        bench::result("pass_us", pass * 1e6);
        bench::result("processes", static_cast<double>(processes));
        return 0;
    }
    if (mode == "find" && count > 2) {
        bool found = false;
        const auto find = [&] {
            // A cache of its own each time: a pass that finds everything unread.
            BundleIdentifiers identifiers;
            found = processWithIdentifier(arguments[2], identifiers).has_value();
        };
        const double first = bench::secondsOf(find);
        const double pass = bench::medianSeconds(repeats, find);
        bench::result("first_us", first * 1e6);
        bench::result("pass_us", pass * 1e6);
        bench::result("found", found ? 1 : 0);
        return 0;
    }
    std::fputs("usage: ours_processes snapshot | find IDENTIFIER\n", stderr);
    return 2;
}
