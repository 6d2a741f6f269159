#pragma once

#include <cstdint>

namespace tav::internal {

/// How an encoding is converted.
enum class EncodingKind {
    ASCII,
    NonLossyASCII,
    UTF8,
    UTF16,
    UTF16BigEndian,
    UTF16LittleEndian,
    UTF32,
    NEXTSTEP,
    Symbol,
    ShiftJIS,
    Converter
};

struct EncodingEntry {
    std::uint32_t number;
    EncodingKind kind;
    /// ICU's name, for `ShiftJIS` and `Converter` alone.
    const char* converter;
    /// Whether bytes below 128 and ASCII characters are each other, whatever stands around them.
    bool keepsASCII;
};

/// What is known of an encoding; null for an unknown number.
[[nodiscard]] const EncodingEntry* findEncoding(std::uint32_t number);

} // namespace tav::internal
