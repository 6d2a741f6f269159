#pragma once

#include "base/Result.hpp"

#include <string>
#include <string_view>

namespace tav {

/// What `realpath` answers, for paths and answers of any length: walked name by name with two
/// descriptors, and so much slower. At most forty links, as the kernel has it.
Result<std::string> canonicalLongPath(std::string_view path);

} // namespace tav
