// ours_property_list parse-xml|parse-binary|parse-text|write-xml|write-binary|write-text FILE: the
// median of five runs.

#include "base/PropertyList.hpp"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace tav;

/// The element around the value counts as a node of the XML form.
std::size_t nodesIn(const Value& value) {
    std::size_t count = 1;
    if (const Value::Array* array = value.asArray()) {
        for (const Value& element : *array) {
            count += nodesIn(element);
        }
    } else if (const Value::Dictionary* dictionary = value.asDictionary()) {
        for (const auto& [key, entry] : *dictionary) {
            count += nodesIn(entry);
        }
    }
    return count;
}

/// What the other programs count when they write: bytes of text, objects of the binary form.
std::size_t nodesWritten(const Data& bytes, PropertyList::Form form) {
    std::size_t count = bytes.size();
    if (form == PropertyList::Form::Binary) {
        count = 0;
        for (std::size_t i = 0; i < 8; ++i) {
            count = count << 8 | std::to_integer<std::size_t>(bytes[bytes.size() - 24 + i]);
        }
    }
    return count;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        fprintf(stderr,
                "parse-xml|parse-binary|parse-text|write-xml|write-binary|write-text FILE\n");
        return 2;
    }
    const std::string_view job = argv[1];
    std::ifstream file(argv[2], std::ios::binary);
    const std::string text((std::istreambuf_iterator<char>(file)), {});
    const bool writes = job.starts_with("write");
    const auto form = job.ends_with("xml")    ? PropertyList::Form::XML
                      : job.ends_with("text") ? PropertyList::Form::OldStyle
                                              : PropertyList::Form::Binary;

    std::vector<double> times;
    std::size_t nodes = 0;
    for (int run = 0; run < 5; ++run) {
        auto start = std::chrono::steady_clock::now();
        const std::optional<Value> value = PropertyList::read(bytesOf(text), nullptr);
        auto end = std::chrono::steady_clock::now();
        if (!value) {
            return 1;
        }
        if (writes) {
            start = std::chrono::steady_clock::now();
            const std::optional<Data> bytes = PropertyList::write(*value, form, nullptr);
            end = std::chrono::steady_clock::now();
            if (!bytes) {
                return 1;
            }
            nodes = nodesWritten(*bytes, form);
        } else {
            nodes = nodesIn(*value) + (form == PropertyList::Form::XML ? 1 : 0);
        }
        times.push_back(std::chrono::duration<double, std::milli>(end - start).count());
    }
    std::sort(times.begin(), times.end());
    printf("RESULT %s %.9g\n", writes ? "write_ms" : "parse_ms", times[times.size() / 2]);
    printf("RESULT nodes %zu\n", nodes);
    return 0;
}
