#pragma once

#include "base/Data.hpp"

#include <optional>
#include <string>
#include <string_view>

namespace tav {

/// The bytes as base64 in one line, padded.
[[nodiscard]] std::string base64FromData(BytesView bytes);

/// The bytes of a base64 text. White space is skipped and padding may be missing; nothing for any
/// other character, for text after the padding and for a last group of one digit.
[[nodiscard]] std::optional<Data> dataFromBase64(std::string_view text);

} // namespace tav
