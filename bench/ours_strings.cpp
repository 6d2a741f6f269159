// ours_strings: what a million file names cost, median of five: made valid for Windows, and with
// what is not ASCII spelled out.

#include "bench/FileNames.hpp"
#include "bench/Measure.hpp"
#include "foundation/WindowsFilename.hpp"

#include <cstddef>
#include <string>

namespace {

using namespace tav;

template <class Operation>
double nanosecondsOfEach(const bench::FileNames& names, const Operation& operation) {
    const double seconds = bench::medianSeconds(5, [&] {
        for (const std::string_view name : names.names()) {
            bench::keep(operation(name));
        }
    });
    return seconds * 1e9 / double(names.names().size());
}

} // namespace

int main() {
    const bench::FileNames names;
    std::size_t bytes = 0;
    for (const std::string_view name : names.names()) {
        bytes += windowsValidFilename(name).size() +
                 windowsValidFilenameByTranscodingNonASCIIChars(name).size();
    }
    bench::result("valid_ns_per_name", nanosecondsOfEach(names, &windowsValidFilename));
    bench::result("trans_ns_per_name",
                  nanosecondsOfEach(names, &windowsValidFilenameByTranscodingNonASCIIChars));
    bench::result("bytes", double(bytes));
    return 0;
}
