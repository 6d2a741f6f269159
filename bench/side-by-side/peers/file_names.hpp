// The names of ../../FileNames.hpp once more, as a program outside the project has them.
#pragma once
#include "measure.hpp"

#include <string_view>

struct FileNames {
    std::string all;
    std::vector<std::string_view> names;
    uint64_t state = 42;

    uint64_t below(uint64_t limit) {
        state += 0x9E3779B97F4A7C15ull;
        uint64_t mixed = state;
        mixed = (mixed ^ (mixed >> 30)) * 0xBF58476D1CE4E5B9ull;
        mixed = (mixed ^ (mixed >> 27)) * 0x94D049BB133111EBull;
        return (mixed ^ (mixed >> 31)) % limit;
    }

    explicit FileNames(int count = 1000000) {
        static const char* stems[] = {
            "IMG",    "Holiday Photos", "Track", "Meeting notes", "Beethoven - Symphony",
            "backup", "My Document",    "clip"};
        static const char* odd[] = {"a:b?",       "50/50",  "what?*",    "<draft>",
                                    "say \"hi\"", "x|y\\z", "tab\there", "C:\\Temp"};
        static const char* wide[] = {"Café",  "Музыка",  "音乐",   "naïve",
                                     "Übung", "😀 smile", "Dvořák", "日本"};
        std::vector<size_t> starts;
        char name[160];
        for (int number = 0; number < count; number++) {
            starts.push_back(all.size());
            const uint64_t kind = below(100);
            if (kind < 60) {
                snprintf(name, sizeof name, "%s %06d.jpg", stems[below(8)], number);
            } else if (kind < 80) {
                const char* stem = stems[below(8)];
                snprintf(name, sizeof name, "%s %s %d.jpg", stem, odd[below(8)], number);
            } else if (kind < 95) {
                const char* first = wide[below(8)];
                snprintf(name, sizeof name, "%s %s %d.jpg", first, stems[below(8)], number);
            } else {
                const char* stem = stems[below(8)];
                snprintf(name, sizeof name, "%s %d%s", stem, number, below(2) ? "." : " ");
            }
            all += name;
        }
        starts.push_back(all.size());
        for (int number = 0; number < count; number++) {
            names.emplace_back(all.data() + starts[number], starts[number + 1] - starts[number]);
        }
    }

    // One operation for each name; answers nanoseconds for each, the median of `repeats`.
    template <class Operation>
    double nanoseconds(int repeats, Operation operation) const {
        return median_of(repeats,
                         [&] {
                             for (std::string_view name : names) {
                                 const std::string made = operation(name);
                                 keep(made);
                             }
                         }) *
               1e9 / double(names.size());
    }
};
