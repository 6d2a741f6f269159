#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tav {

/// The text with every byte as "%XX" (upper case) but ASCII letters, ASCII digits and the bytes of
/// `kept`.
[[nodiscard]] std::string percentEncoded(std::string_view text, std::string_view kept);

/// The bytes that the percent escapes stand for; nothing when a "%" is not followed by two
/// hexadecimal digits. The result may hold any byte, also what is no UTF-8.
[[nodiscard]] std::optional<std::string> percentDecoded(std::string_view text);

} // namespace tav
