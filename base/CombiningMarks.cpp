#include "base/CombiningMarks.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string_view>
#include <vector>

#include <unicode/unorm2.h>
#include <unicode/utf16.h>

namespace tav::internal {

namespace {

// Runs up to this many units are left to ICU.
constexpr std::size_t longestShortRun = 64;

struct Mark {
    char32_t character;
    std::uint8_t combiningClass;
};

const UNormalizer2* decomposition() {
    UErrorCode error = U_ZERO_ERROR;
    const UNormalizer2* const form = unorm2_getNFDInstance(&error);
    if (U_FAILURE(error)) {
        throw std::runtime_error(u_errorName(error));
    }
    return form;
}

std::uint8_t combiningClass(const UNormalizer2* form, char32_t character) {
    return unorm2_getCombiningClass(form, static_cast<UChar32>(character));
}

// The Tibetan vowel signs that are starters themselves, but decompose into two marks that are none:
// they do not end a run. No other starter's decomposition begins with a mark.
std::u32string_view marksOfVowelSign(char32_t character) {
    switch (character) {
    case U'\u0F73':
        return U"\u0F71\u0F72";
    case U'\u0F75':
        return U"\u0F71\u0F74";
    case U'\u0F81':
        return U"\u0F71\u0F80";
    default:
        return {};
    }
}

char32_t nextCharacter(std::u16string_view units, std::size_t& at) {
    UChar32 character = 0;
    U16_NEXT(units.data(), at, units.size(), character);
    return static_cast<char32_t>(character);
}

bool belongsToRun(const UNormalizer2* form, char32_t character) {
    return character >= 0x300 &&
           (combiningClass(form, character) != 0 || !marksOfVowelSign(character).empty());
}

void append(std::u16string& units, char32_t character) {
    if (character > 0xFFFF) {
        units += static_cast<char16_t>(U16_LEAD(character));
        units += static_cast<char16_t>(U16_TRAIL(character));
    } else {
        units += static_cast<char16_t>(character);
    }
}

void appendInOrder(std::u16string& ordered, const UNormalizer2* form, std::u16string_view run) {
    std::vector<Mark> marks;
    marks.reserve(run.size());
    for (std::size_t at = 0; at < run.size();) {
        const char32_t character = nextCharacter(run, at);
        const std::u32string_view parts = marksOfVowelSign(character);
        for (const char32_t mark : parts.empty() ? std::u32string_view(&character, 1) : parts) {
            marks.push_back({mark, combiningClass(form, mark)});
        }
    }
    std::stable_sort(marks.begin(), marks.end(), [](const Mark& a, const Mark& b) {
        return a.combiningClass < b.combiningClass;
    });
    for (const Mark& mark : marks) {
        append(ordered, mark.character);
    }
}

} // namespace

std::u16string withMarksInOrder(std::u16string units) {
    if (units.size() <= longestShortRun) {
        return units;
    }
    const UNormalizer2* const form = decomposition();
    const std::u16string_view view = units;
    std::u16string ordered;
    std::size_t taken = 0;
    std::size_t runStart = 0;
    const auto endRun = [&](std::size_t runEnd) {
        if (runEnd - runStart > longestShortRun) {
            ordered.append(view.substr(taken, runStart - taken));
            appendInOrder(ordered, form, view.substr(runStart, runEnd - runStart));
            taken = runEnd;
        }
    };
    for (std::size_t at = 0; at < view.size();) {
        const std::size_t start = at;
        if (!belongsToRun(form, nextCharacter(view, at))) {
            endRun(start);
            runStart = at;
        }
    }
    endRun(view.size());
    if (taken == 0) {
        return units;
    }
    ordered.append(view.substr(taken));
    return ordered;
}

} // namespace tav::internal
