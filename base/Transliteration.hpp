#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tav {

/// The text in ASCII as well as that can be said: accents dropped, letters such as "ß" and "Ł"
/// written out, curly quotes straightened, and "?" for every unit of UTF-16 that has no such form
/// (two for an emoji) and every byte that is no UTF-8. U+007F is ASCII and stays.
///
/// Apart from the other Unicode operations, since this one needs ICU's data tables. The first call
/// builds the transliterator; calls may come from any thread.
[[nodiscard]] std::string lossyASCII(std::string_view text);

namespace internal {

/// `lossyASCII` with the text transliterated in pieces of so many units of UTF-16 (at least 1); the
/// result does not depend on it.
[[nodiscard]] std::string lossyASCIIInPieces(std::string_view text, std::size_t pieceSize);

} // namespace internal

} // namespace tav
