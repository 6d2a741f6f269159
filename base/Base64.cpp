#include "base/Base64.hpp"

#include <array>
#include <cstddef>
#include <cstdint>

namespace tav {
namespace {

constexpr std::string_view digits =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

constexpr std::uint8_t space = 64;
constexpr std::uint8_t padding = 65;
constexpr std::uint8_t invalid = 66;

/// The value of each digit, or what the character is instead.
constexpr std::array<std::uint8_t, 256> values = [] {
    std::array<std::uint8_t, 256> table{};
    table.fill(invalid);
    for (std::size_t i = 0; i < digits.size(); ++i) {
        table[static_cast<unsigned char>(digits[i])] = static_cast<std::uint8_t>(i);
    }
    for (const char c : {' ', '\t', '\n', '\v', '\f', '\r'}) {
        table[static_cast<unsigned char>(c)] = space;
    }
    table[static_cast<unsigned char>('=')] = padding;
    return table;
}();

} // namespace

std::string base64FromData(BytesView bytes) {
    std::string text((bytes.size() + 2) / 3 * 4, '=');
    std::size_t at = 0;
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        const std::size_t count = bytes.size() - i < 3 ? bytes.size() - i : 3;
        std::uint32_t group = 0;
        for (std::size_t k = 0; k < 3; ++k) {
            group = group << 8 | (k < count ? std::to_integer<std::uint32_t>(bytes[i + k]) : 0);
        }
        for (std::size_t k = 0; k <= count; ++k) {
            text[at + k] = digits[group >> (18 - 6 * k) & 63];
        }
        at += 4;
    }
    return text;
}

std::optional<Data> dataFromBase64(std::string_view text) {
    Data data(text.size() / 4 * 3 + 3);
    std::size_t size = 0;
    std::uint32_t group = 0;
    std::size_t count = 0;
    std::size_t paddings = 0;
    for (const char c : text) {
        const std::uint8_t value = values[static_cast<unsigned char>(c)];
        if (value < space) {
            if (paddings != 0) {
                return std::nullopt;
            }
            group = group << 6 | value;
            if (++count == 4) {
                data[size] = static_cast<std::byte>(group >> 16);
                data[size + 1] = static_cast<std::byte>(group >> 8);
                data[size + 2] = static_cast<std::byte>(group);
                size += 3;
                count = 0;
            }
        } else if (value == padding) {
            ++paddings;
        } else if (value == invalid) {
            return std::nullopt;
        }
    }
    if (count == 1 || paddings > 2 || (paddings != 0 && count + paddings != 4)) {
        return std::nullopt;
    }
    if (count != 0) {
        group <<= 6 * (4 - count);
        data[size++] = static_cast<std::byte>(group >> 16);
        if (count == 3) {
            data[size++] = static_cast<std::byte>(group >> 8);
        }
    }
    data.resize(size);
    return data;
}

} // namespace tav
