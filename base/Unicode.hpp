#pragma once

#include "base/Data.hpp"

#include <cstddef>
#include <string>
#include <string_view>

namespace tav {

// Texts are bytes, UTF-8 by habit. Where units of UTF-16 are counted or changed, bytes that are no
// UTF-8 must survive: each such byte 0x80 to 0xFF becomes the unit U+DC80 to U+DCFF, which no valid
// text holds alone, and comes back as that byte. All functions take ASCII on a fast path; those
// that change or compare characters throw `std::length_error` for texts beyond 2^31 units.

/// Whether the bytes are well-formed UTF-8 (no surrogates, no overlong forms).
[[nodiscard]] bool isValidUTF8(std::string_view bytes);

/// Whether every byte is below 128.
[[nodiscard]] bool isASCII(std::string_view bytes);

/// The units of UTF-16, with the byte-keeping escape for what is no UTF-8.
[[nodiscard]] std::u16string utf16FromBytes(std::string_view bytes);

/// The way back. A surrogate that stands alone and is no escape becomes U+FFFD.
[[nodiscard]] std::string bytesFromUTF16(std::u16string_view units);

/// How many units of UTF-16 the text has, escapes included.
[[nodiscard]] std::size_t utf16Length(std::string_view bytes);

/// The text in big-endian or little-endian UTF-16, without a byte-order mark.
[[nodiscard]] Data utf16BigEndian(std::string_view bytes);
[[nodiscard]] Data utf16LittleEndian(std::string_view bytes);

/// The text of big-endian UTF-16; an odd last byte is left out.
[[nodiscard]] std::string bytesFromUTF16BigEndian(BytesView units);

/// Canonical caseless matching (full case folding, root locale): composed and decomposed forms
/// agree.
[[nodiscard]] bool equalsIgnoringCase(std::string_view a, std::string_view b);

/// -1, 0 or 1 by the units of the canonical caseless forms; 0 exactly when `equalsIgnoringCase`.
[[nodiscard]] int caseInsensitiveCompare(std::string_view a, std::string_view b);

/// The canonical caseless form: equal for two texts exactly when they are equal ignoring case.
[[nodiscard]] std::string caselessForm(std::string_view text);

/// Full Unicode case mapping, root locale ("straße" becomes "STRASSE").
[[nodiscard]] std::string uppercaseString(std::string_view text);
[[nodiscard]] std::string lowercaseString(std::string_view text);

/// Canonical decomposition (NFD) and composition (NFC).
[[nodiscard]] std::string decomposedString(std::string_view text);
[[nodiscard]] std::string precomposedString(std::string_view text);

} // namespace tav
