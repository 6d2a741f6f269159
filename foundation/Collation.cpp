#include "foundation/Collation.hpp"

#include "base/CombiningMarks.hpp"
#include "base/TextSearch.hpp"
#include "base/Unicode.hpp"
#include "base/UnicodeBuffer.hpp"

#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

#include <unicode/ucol.h>

namespace tav {

namespace {

struct CloseCollator {
    void operator()(UCollator* collator) const { ucol_close(collator); }
};

using CollatorPtr = std::unique_ptr<UCollator, CloseCollator>;

CollatorPtr rootCollatorOfLetters() {
    UErrorCode error = U_ZERO_ERROR;
    CollatorPtr collator(ucol_open("", &error));
    if (U_FAILURE(error)) {
        return nullptr;
    }
    ucol_setAttribute(collator.get(), UCOL_STRENGTH, UCOL_PRIMARY, &error);
    ucol_setAttribute(collator.get(), UCOL_NORMALIZATION_MODE, UCOL_ON, &error);
    return U_FAILURE(error) ? nullptr : std::move(collator);
}

int order(UCollationResult result) {
    return result == UCOL_LESS ? -1 : int{result == UCOL_GREATER};
}

} // namespace

int internal::compareByCollator(const UCollator* collator, std::string_view text,
                                std::string_view other) {
    if (collator == nullptr) {
        return 0;
    }
    try {
        if (isASCII(text) && isASCII(other)) {
            UErrorCode error = U_ZERO_ERROR;
            const UCollationResult result =
                ucol_strcollUTF8(collator, text.data(), icuLength(text.size()), other.data(),
                                 icuLength(other.size()), &error);
            return U_FAILURE(error) ? 0 : order(result);
        }
        // ICU would take quadratic time for long runs of marks that are out of order.
        const std::u16string a = withMarksInOrder(utf16FromBytes(text));
        const std::u16string b = withMarksInOrder(utf16FromBytes(other));
        return order(
            ucol_strcoll(collator, a.data(), icuLength(a.size()), b.data(), icuLength(b.size())));
    } catch (const std::length_error&) {
        return 0;
    }
}

int compareStringsIgnoringDiacritical(std::string_view text, std::string_view other) {
    // Constant once it is made, which is what threads may share.
    static const CollatorPtr collator = rootCollatorOfLetters();
    return internal::compareByCollator(collator.get(), text, other);
}

bool equalStringsIgnoringDiacritical(std::string_view text, std::string_view other) {
    try {
        return compare(text, other, SearchOption::IgnoreCase | SearchOption::IgnoreDiacritics) == 0;
    } catch (const std::length_error&) {
        return false;
    } catch (const std::runtime_error&) {
        return false;
    }
}

} // namespace tav
