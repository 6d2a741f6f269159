#include "base/TextSearchForm.hpp"

#include "base/Normalizer.hpp"
#include "base/UnicodeBuffer.hpp"
#include "base/UnicodeForms.hpp"

#include <utility>

#include <unicode/uchar.h>
#include <unicode/unorm2.h>
#include <unicode/ustring.h>
#include <unicode/utf16.h>

namespace tav::internal {

namespace {

constexpr bool has(unsigned options, unsigned option) { return (options & option) != 0; }

// Control characters and the separators of lines and paragraphs.
bool takesNoMarks(UChar32 character) {
    return character < 0x20 || (character >= 0x7F && character < 0xA0) || character == 0x2028 ||
           character == 0x2029;
}

// Whether a composed character sequence may begin with `next` behind `previous`.
bool isBetweenSequences(UChar32 previous, UChar32 next) {
    // No mark comes before U+0300.
    if (next < 0x300 || takesNoMarks(previous)) {
        return true;
    }
    static const UNormalizer2* const composition = normalizer(&unorm2_getNFCInstance);
    return (U_GET_GC_MASK(next) & U_GC_M_MASK) == 0 &&
           unorm2_hasBoundaryBefore(composition, next) != 0;
}

bool isBoundary(std::u16string_view text, std::size_t at, bool literal) {
    if (at == 0 || at == text.size()) {
        return true;
    }
    if (U16_IS_TRAIL(text[at]) && U16_IS_LEAD(text[at - 1])) {
        return false;
    }
    if (literal || text[at] < 0x300) {
        return true;
    }
    UChar32 previous = 0;
    UChar32 next = 0;
    std::size_t before = at;
    U16_PREV(text.data(), 0U, before, previous);
    U16_NEXT(text.data(), at, text.size(), next);
    return isBetweenSequences(previous, next);
}

// The marks of a decomposed text are characters of their own.
std::u16string withoutMarks(const std::u16string& units) {
    std::u16string rest;
    for (std::size_t at = 0; at < units.size();) {
        const std::size_t start = at;
        UChar32 character = 0;
        U16_NEXT(units.data(), at, units.size(), character);
        if (u_charType(character) != U_NON_SPACING_MARK) {
            rest.append(units, start, at - start);
        }
    }
    return rest;
}

std::u16string folded(const std::u16string& units) {
    return icuResult(units.size(), [&](char16_t* buffer, std::int32_t capacity, UErrorCode& error) {
        return u_strFoldCase(buffer, capacity, units.data(), icuLength(units.size()),
                             U_FOLD_CASE_DEFAULT, &error);
    });
}

// Whether the unit is a character that every form leaves as it is.
bool isInert(char16_t unit, unsigned options) {
    if (unit < 0x80) {
        return !has(options, SearchOption::IgnoreCase) || unit < u'A' || unit > u'Z';
    }
    static const UNormalizer2* const decomposition = normalizer(&unorm2_getNFDInstance);
    return unorm2_isInert(decomposition, unit) != 0 && u_charType(unit) != U_NON_SPACING_MARK &&
           (!has(options, SearchOption::IgnoreCase) ||
            u_hasBinaryProperty(unit, UCHAR_CHANGES_WHEN_CASEFOLDED) == 0);
}

} // namespace

std::u16string comparisonForm(std::u16string units, unsigned options) {
    const bool ignoresCase = has(options, SearchOption::IgnoreCase);
    if (has(options, SearchOption::IgnoreDiacritics)) {
        units = withoutMarks(decomposedUnits(std::move(units)));
    } else if (has(options, SearchOption::Literal)) {
        return ignoresCase ? folded(units) : units;
    }
    return ignoresCase ? caselessUnits(std::move(units)) : decomposedUnits(std::move(units));
}

SearchForm searchForm(std::u16string_view text, TextRange range, unsigned options) {
    const bool literal = has(options, SearchOption::Literal);
    std::size_t start = range.location;
    std::size_t end = range.location + range.length;
    while (start < end && !isBoundary(text, start, literal)) {
        ++start;
    }
    while (end > start && !isBoundary(text, end, literal)) {
        --end;
    }

    SearchForm form;
    form.units.reserve(end - start);
    form.boundaries.reserve(end - start + 1);
    const auto addBoundary = [&](std::size_t inText) {
        form.boundaries.push_back({static_cast<std::uint32_t>(icuLength(form.units.size())),
                                   static_cast<std::uint32_t>(icuLength(inText))});
    };
    addBoundary(start);
    for (std::size_t at = start; at < end;) {
        std::size_t next = at + 1;
        while (next < end && !isBoundary(text, next, literal)) {
            ++next;
        }
        if (next == at + 1 && isInert(text[at], options)) {
            form.units += text[at];
        } else {
            form.units += comparisonForm(std::u16string(text.substr(at, next - at)), options);
        }
        addBoundary(next);
        at = next;
    }
    return form;
}

std::optional<std::size_t> SearchForm::Cursor::firstAt(std::size_t place) {
    const std::vector<Boundary>& all = *boundaries_;
    while (at_ < all.size() && all[at_].inForm < place) {
        ++at_;
    }
    return at_ < all.size() && all[at_].inForm == place
               ? std::optional<std::size_t>(all[at_].inText)
               : std::nullopt;
}

std::optional<std::size_t> SearchForm::Cursor::lastAt(std::size_t place) {
    auto found = firstAt(place);
    while (found && at_ + 1 < boundaries_->size() && (*boundaries_)[at_ + 1].inForm == place) {
        ++at_;
        found = (*boundaries_)[at_].inText;
    }
    return found;
}

} // namespace tav::internal
