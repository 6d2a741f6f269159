#pragma once

#include <string>
#include <string_view>

namespace tav::internal {

/// A name with an extension and a dot between; the name alone where the extension is empty. Unlike
/// `stringByAppendingPathExtension` it takes the name as it is.
[[nodiscard]] inline std::string nameWithExtension(std::string name, std::string_view extension) {
    if (!extension.empty()) {
        name += '.';
        name += extension;
    }
    return name;
}

} // namespace tav::internal
