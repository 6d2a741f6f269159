// What names and paths for Windows devices cost. Names by the name, of FileNames.hpp's mixture.
#include "base/Transliteration.hpp"
#include "bench/FileNames.hpp"
#include "foundation/LocalFilename.hpp"
#include "foundation/TextEncoding.hpp"
#include "foundation/WindowsFilename.hpp"
#include "foundation/WindowsPath.hpp"

#include <string>

#include <benchmark/benchmark.h>

namespace tav {

namespace {

template <class Operation>
void forEachName(benchmark::State& state, const Operation& operation) {
    static const bench::FileNames names(100000);
    std::size_t at = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(operation(names.names()[at]));
        at = at + 1 < names.names().size() ? at + 1 : 0;
    }
}

std::string byteLoop(std::string_view name) {
    std::string result(name);
    for (char& character : result) {
        if (character != '\0' &&
            illegalFilenameCharset.contains(static_cast<unsigned char>(character))) {
            character = '_';
        }
    }
    if (!result.empty() && (result.back() == '.' || result.back() == ' ')) {
        result.back() = '_';
    }
    return result;
}

// The floor: a string of its own for each name.
void copyOfName(benchmark::State& state) {
    forEachName(state, [](std::string_view name) { return std::string(name); });
}
BENCHMARK(copyOfName);

void validByByteLoop(benchmark::State& state) { forEachName(state, &byteLoop); }
BENCHMARK(validByByteLoop);

void valid(benchmark::State& state) { forEachName(state, &windowsValidFilename); }
BENCHMARK(valid);

void validTranscoded(benchmark::State& state) {
    forEachName(state, &windowsValidFilenameByTranscodingNonASCIIChars);
}
BENCHMARK(validTranscoded);

void transcoded(benchmark::State& state) { forEachName(state, &stringByTranscodingNonASCIIChars); }
BENCHMARK(transcoded);

void validASCIIOnly(benchmark::State& state) {
    forEachName(state, [](std::string_view name) {
        return windowsValidFilenameUsingASCIIOnly(name, true);
    });
}
BENCHMARK(validASCIIOnly);

void replacedBySet(benchmark::State& state) {
    forEachName(state, [](std::string_view name) {
        return replaceInvalidChars(name, illegalFilenameCharset, "_");
    });
}
BENCHMARK(replacedBySet);

void validLocally(benchmark::State& state) { forEachName(state, &stringByMakingValidFilename); }
BENCHMARK(validLocally);

void convertedToLatin1(benchmark::State& state) {
    forEachName(state, [](std::string_view name) {
        return convertToEncoding(name, TextEncoding::ISOLatin1);
    });
}
BENCHMARK(convertedToLatin1);

const std::string path = "c:\\Documents\\Music\\Beethoven\\Symphony 0001.mp3";

void decomposedPath(benchmark::State& state) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(decomposeWindowsPath(path));
    }
}
BENCHMARK(decomposedPath);

void componentsOfPath(benchmark::State& state) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(windowsPathComponents(path));
    }
}
BENCHMARK(componentsOfPath);

void validPath(benchmark::State& state) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(windowsValidPathname(path));
    }
}
BENCHMARK(validPath);

} // namespace

} // namespace tav

BENCHMARK_MAIN();
