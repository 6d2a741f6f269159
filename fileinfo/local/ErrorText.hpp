#pragma once

#include "base/Result.hpp"

#include <string>

namespace tav::internal {

/// What an error number means, in English whatever the locale: "No space left on device".
[[nodiscard]] std::string errorText(SystemError error);

} // namespace tav::internal
