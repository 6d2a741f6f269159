#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace tav::bench {

/// A million file names, always the same, in one block: 60 % plain ones, 20 % with characters that
/// Windows forbids, 15 % with Latin, Cyrillic, Han and other letters, 5 % that end in a dot or a
/// blank. side-by-side/peers/file_names.hpp makes the same ones.
class FileNames {
  public:
    explicit FileNames(std::size_t count = 1000000) {
        constexpr std::string_view stems[] = {
            "IMG",    "Holiday Photos", "Track", "Meeting notes", "Beethoven - Symphony",
            "backup", "My Document",    "clip"};
        constexpr std::string_view odd[] = {"a:b?",       "50/50",  "what?*",    "<draft>",
                                            "say \"hi\"", "x|y\\z", "tab\there", "C:\\Temp"};
        constexpr std::string_view wide[] = {"Café",  "Музыка",  "音乐",   "naïve",
                                             "Übung", "😀 smile", "Dvořák", "日本"};
        std::vector<std::size_t> starts;
        for (std::size_t number = 0; number < count; ++number) {
            starts.push_back(all_.size());
            const std::uint64_t kind = below(100);
            const std::string digits = std::to_string(number);
            if (kind < 60) {
                append({stems[below(8)], " ",
                        std::string(6 - std::min<std::size_t>(6, digits.size()), '0'), digits,
                        ".jpg"});
            } else if (kind < 80) {
                const std::string_view stem = stems[below(8)];
                append({stem, " ", odd[below(8)], " ", digits, ".jpg"});
            } else if (kind < 95) {
                const std::string_view first = wide[below(8)];
                append({first, " ", stems[below(8)], " ", digits, ".jpg"});
            } else {
                const std::string_view stem = stems[below(8)];
                append({stem, " ", digits, below(2) != 0 ? "." : " "});
            }
        }
        starts.push_back(all_.size());
        for (std::size_t number = 0; number < count; ++number) {
            names_.push_back(
                std::string_view(all_).substr(starts[number], starts[number + 1] - starts[number]));
        }
    }
    FileNames(const FileNames&) = delete;
    FileNames& operator=(const FileNames&) = delete;

    [[nodiscard]] const std::vector<std::string_view>& names() const { return names_; }

  private:
    void append(std::initializer_list<std::string_view> pieces) {
        for (const std::string_view piece : pieces) {
            all_ += piece;
        }
    }

    // SplitMix64.
    std::uint64_t below(std::uint64_t limit) {
        state_ += 0x9E3779B97F4A7C15;
        std::uint64_t mixed = state_;
        mixed = (mixed ^ (mixed >> 30)) * 0xBF58476D1CE4E5B9;
        mixed = (mixed ^ (mixed >> 27)) * 0x94D049BB133111EB;
        return (mixed ^ (mixed >> 31)) % limit;
    }

    std::uint64_t state_ = 42;
    std::string all_;
    std::vector<std::string_view> names_;
};

} // namespace tav::bench
