#include "base/Transliteration.hpp"

#include "base/Unicode.hpp"
#include "base/UnicodeBuffer.hpp"

#include <memory>
#include <mutex>

#include <unicode/translit.h>

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

} // namespace

std::string lossyASCII(std::string_view text) {
    if (isASCII(text)) {
        return std::string(text);
    }
    static ASCIITransliterator transliterator;
    const std::u16string units = utf16FromBytes(text);
    icu::UnicodeString content(units.data(), internal::icuLength(units.size()));
    transliterator.apply(content);

    std::string ascii;
    ascii.reserve(static_cast<std::size_t>(content.length()));
    for (std::int32_t at = 0; at < content.length(); ++at) {
        const char16_t unit = content.charAt(at);
        ascii += unit <= 0x7F ? static_cast<char>(unit) : '?';
    }
    return ascii;
}

} // namespace tav
