#pragma once

#include "base/Format.hpp"
#include "base/PathString.hpp"
#include "fileinfo/NameExtension.hpp"

#include <string>
#include <string_view>

namespace tav::internal {

/// The name itself unless it is taken, otherwise the first free one of "B-1.E", "B-2.E", ..., where
/// B and E are the name without its extension and the extension; without the dot where there is
/// none.
template <class IsTaken>
[[nodiscard]] std::string uniqueName(std::string_view name, const IsTaken& isTaken) {
    const std::string base = stringByDeletingPathExtension(name);
    const std::string_view extension = pathExtension(name);
    std::string candidate(name);
    for (int number = 1; isTaken(candidate); ++number) {
        candidate = nameWithExtension(tav::format("%@-%d", base, number), extension);
    }
    return candidate;
}

} // namespace tav::internal
