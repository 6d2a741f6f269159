#pragma once

#include <cstddef>
#include <string_view>

namespace tav::internal {

/// Calls `use(line)` for each line of a text, without its line feed; empty ones are passed over.
template <class Use>
void forEachLine(std::string_view text, Use use) {
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        const std::string_view line = text.substr(0, end);
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
        if (!line.empty()) {
            use(line);
        }
    }
}

} // namespace tav::internal
