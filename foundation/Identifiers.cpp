#include "foundation/Identifiers.hpp"

#include "base/Exception.hpp"

#include <array>
#include <cstddef>
#include <utility>

#include <unistd.h>

namespace tav {

namespace {

bool fillFromKernel(std::span<unsigned char> bytes) {
    return getentropy(bytes.data(), bytes.size()) == 0;
}

} // namespace

std::optional<std::string> internal::uuidFrom(FillRandom fillRandom) {
    std::array<unsigned char, 16> bytes{};
    if (!fillRandom(bytes)) {
        return std::nullopt;
    }
    // Version 4, and the variant of RFC 4122.
    bytes[6] = static_cast<unsigned char>((bytes[6] & 0x0FU) | 0x40U);
    bytes[8] = static_cast<unsigned char>((bytes[8] & 0x3FU) | 0x80U);
    constexpr const char* digits = "0123456789ABCDEF";
    std::string text;
    text.reserve(36);
    for (std::size_t at = 0; at < bytes.size(); ++at) {
        if (at == 4 || at == 6 || at == 8 || at == 10) {
            text += '-';
        }
        text += digits[bytes[at] >> 4];
        text += digits[bytes[at] & 0x0FU];
    }
    return text;
}

std::optional<std::string> uuidAsString() { return internal::uuidFrom(&fillFromKernel); }

std::string stringWithNewUUID() {
    auto uuid = uuidAsString();
    if (!uuid) {
        throw Exception("stringWithNewUUID", "The kernel has no random numbers.");
    }
    return *std::move(uuid);
}

} // namespace tav
