#pragma once

#include "base/Unicode.hpp"

#include <algorithm>
#include <string>
#include <vector>

namespace tav::internal {

/// The way from one folder to an item by their components: past what both have in common, ignoring
/// case, as many ".." as it takes where it has to go up, then names. `append` puts a component
/// behind a path, as the kind of path wants it.
template <class Append>
std::string wayBetween(const std::vector<std::string>& mine, const std::vector<std::string>& theirs,
                       bool goesUp, Append append) {
    const auto [endOfMine, endOfTheirs] =
        std::ranges::mismatch(mine, theirs, [](const std::string& a, const std::string& b) {
            return equalsIgnoringCase(a, b);
        });
    std::string way;
    if (goesUp) {
        for (auto left = endOfMine; left != mine.end(); ++left) {
            way = append(way, "..");
        }
    }
    for (auto next = endOfTheirs; next != theirs.end(); ++next) {
        way = append(way, *next);
    }
    return way;
}

} // namespace tav::internal
