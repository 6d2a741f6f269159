#pragma once

#include <string>
#include <string_view>

namespace tav::internal {

/// The text with each place of a pattern, from the left on, replaced. The pattern is a short valid
/// text and not empty: since no other character's bytes hold a whole character, bytes are compared.
[[nodiscard]] inline std::string withReplaced(std::string_view text, std::string_view pattern,
                                              std::string_view by) {
    std::string changed;
    changed.reserve(text.size());
    for (;;) {
        const std::size_t place = text.find(pattern);
        changed.append(text.substr(0, place));
        if (place == std::string_view::npos) {
            return changed;
        }
        changed.append(by);
        text.remove_prefix(place + pattern.size());
    }
}

} // namespace tav::internal
