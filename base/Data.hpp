#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tav {

/// Bytes that a value owns; functions that only read bytes take a `BytesView`.
using Data = std::vector<std::byte>;
using BytesView = std::span<const std::byte>;

/// The bytes of a text, as a view of the caller's characters.
[[nodiscard]] inline BytesView bytesOf(std::string_view text) {
    return std::as_bytes(std::span(text.data(), text.size()));
}

/// The bytes seen as characters, as a view of the caller's bytes. Nothing is checked.
[[nodiscard]] inline std::string_view textOf(BytesView bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

/// A copy of the bytes of a text.
[[nodiscard]] inline Data dataFromText(std::string_view text) {
    const BytesView bytes = bytesOf(text);
    return {bytes.begin(), bytes.end()};
}

} // namespace tav
