#pragma once

#include <string>
#include <string_view>

namespace tav {

/// The bytes, with U+FFFD for each that belongs to no UTF-8: for readers that take nothing else.
[[nodiscard]] std::string wellFormedUTF8(std::string_view bytes);

} // namespace tav
