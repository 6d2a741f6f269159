// For programs that make no names in ASCII but link what could: a program that has this among its
// own sources transliterates nothing, and ICU's data tables are not linked into it.
#include "base/Transliteration.hpp"
#include "base/Unicode.hpp"

namespace tav {

std::string lossyASCII(std::string_view text) {
    return internal::lossyASCIIInPieces(text, text.size());
}

std::string internal::lossyASCIIInPieces(std::string_view text, std::size_t /*pieceSize*/) {
    if (isASCII(text)) {
        return std::string(text);
    }
    std::string ascii;
    for (const char16_t unit : utf16FromBytes(text)) {
        ascii += unit <= 0x7F ? static_cast<char>(unit) : '?';
    }
    return ascii;
}

} // namespace tav
