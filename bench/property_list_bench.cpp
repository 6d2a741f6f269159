#include "base/OldStyleText.hpp"
#include "base/PropertyList.hpp"

#include <cstdint>
#include <string>

#include <benchmark/benchmark.h>

namespace {

using namespace tav;

/// A list whose XML form has about a megabyte: records of every type.
const Value& list() {
    static const Value value = [] {
        Value::Array records;
        for (int i = 0; i < 1300; ++i) {
            const std::string number = std::to_string(i);
            records.emplace_back(Value::Dictionary{
                {"name", "FILE_" + number + ".JPG"},
                {"type", i % 2},
                {"path", "/Volumes/Device 3/DCIM/100 & more/IMG_" + number + ".jpg"},
                {"size", std::int64_t{i} * 7919},
                {"ratio", i / 7.0},
                {"visible", i % 2 == 0},
                {"sync mod date", Date(300000000.0 + i * 61)},
                {"digest", dataFromText("0123456789abcdef")},
                {"tags", Value::Array{"tag" + std::to_string(i % 13), "caf\xC3\xA9", "b<1>"}},
                {"children", Value::Dictionary{{"A", i}, {"B", "value " + number}}},
            });
        }
        return Value(Value::Dictionary{{"records", std::move(records)}});
    }();
    return value;
}

void parse(benchmark::State& state, PropertyList::Form form) {
    const Data bytes = *PropertyList::write(list(), form, nullptr);
    for (auto _ : state) {
        benchmark::DoNotOptimize(PropertyList::read(bytes, nullptr));
    }
    state.SetBytesProcessed(state.iterations() * std::int64_t(bytes.size()));
}

void write(benchmark::State& state, PropertyList::Form form) {
    std::size_t size = 0;
    for (auto _ : state) {
        const auto bytes = PropertyList::write(list(), form, nullptr);
        size = bytes->size();
        benchmark::DoNotOptimize(bytes->data());
    }
    state.SetBytesProcessed(state.iterations() * std::int64_t(size));
}

BENCHMARK_CAPTURE(parse, XML, PropertyList::Form::XML)->Name("PropertyList/parse/xml");
BENCHMARK_CAPTURE(parse, binary, PropertyList::Form::Binary)->Name("PropertyList/parse/binary");
BENCHMARK_CAPTURE(parse, text, PropertyList::Form::OldStyle)->Name("PropertyList/parse/text");
BENCHMARK_CAPTURE(write, XML, PropertyList::Form::XML)->Name("PropertyList/write/xml");
BENCHMARK_CAPTURE(write, binary, PropertyList::Form::Binary)->Name("PropertyList/write/binary");
BENCHMARK_CAPTURE(write, text, PropertyList::Form::OldStyle)->Name("PropertyList/write/text");

/// One record of a log, as its file holds it.
void parseRecord(benchmark::State& state) {
    const std::string text = OldStyleText::write(Value::Dictionary{
        {"date", Date(283996799)},
        {"fileLine", 1207},
        {"fileName", "/Sources/FileInfo/TavMacFileInfo.m"},
        {"function", "-[TavMacFileInfo copyTo:ensureUniqueName:]"},
        {"message", "Couldn't remove \"IMG_0042.JPG\" from the device, error -43"},
        {"processID", 4711},
        {"processName", "Quillbox"},
        {"thread", "main"},
        {"type", 4},
        {"userName", "somebody"},
    });
    for (auto _ : state) {
        benchmark::DoNotOptimize(OldStyleText::read(text, nullptr));
    }
    state.SetBytesProcessed(state.iterations() * std::int64_t(text.size()));
}
BENCHMARK(parseRecord)->Name("OldStyleText/parse/record");

} // namespace
