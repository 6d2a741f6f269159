#include "base/Transliteration.hpp"

#include "base/Unicode.hpp"
#include "base/UnicodeBuffer.hpp"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>

#include <unicode/translit.h>
#include <unicode/utf16.h>

namespace tav {

namespace {

// One transliterator for everybody; ICU does not promise that one may be used by two threads at
// once.
class ASCIITransliterator {
  public:
    ASCIITransliterator() {
        UErrorCode error = U_ZERO_ERROR;
        transliterator_.reset(icu::Transliterator::createInstance(
            "NFD; [:Nonspacing Mark:] Remove; Latin-ASCII", UTRANS_FORWARD, error));
    }

    // Without ICU's tables the text stays as it is.
    void apply(icu::UnicodeString& text) {
        const std::lock_guard lock(mutex_);
        if (transliterator_ != nullptr) {
            transliterator_->transliterate(text);
        }
    }

  private:
    std::mutex mutex_;
    std::unique_ptr<icu::Transliterator> transliterator_;
};

// ICU moves the rest of a text with every replacement, so long texts are cut into pieces.
constexpr std::size_t largestPiece = 4096;

// A pair of surrogates stays together.
std::size_t endOfPiece(std::u16string_view units, std::size_t start, std::size_t size) {
    if (units.size() - start <= size) {
        return units.size();
    }
    const std::size_t end = start + size;
    return U16_IS_LEAD(units[end - 1]) && U16_IS_TRAIL(units[end]) ? end + 1 : end;
}

} // namespace

std::string lossyASCII(std::string_view text) {
    return internal::lossyASCIIInPieces(text, largestPiece);
}

std::string internal::lossyASCIIInPieces(std::string_view text, std::size_t pieceSize) {
    if (isASCII(text)) {
        return std::string(text);
    }
    static ASCIITransliterator transliterator;
    // In decomposed text it does not matter where a piece ends: the marks at the start of the next
    // one are dropped, and no rule for what is left looks at more than one character.
    const std::u16string units = utf16FromBytes(decomposedString(text));
    std::string ascii;
    ascii.reserve(units.size());
    for (std::size_t start = 0; start < units.size();) {
        const std::size_t end = endOfPiece(units, start, pieceSize);
        icu::UnicodeString content(&units[start], internal::icuLength(end - start));
        transliterator.apply(content);
        for (std::int32_t at = 0; at < content.length(); ++at) {
            const char16_t unit = content.charAt(at);
            ascii += unit <= 0x7F ? static_cast<char>(unit) : '?';
        }
        start = end;
    }
    return ascii;
}

} // namespace tav
