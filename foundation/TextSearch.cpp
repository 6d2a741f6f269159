#include "foundation/TextSearch.hpp"

#include "base/TextSearch.hpp"
#include "base/Unicode.hpp"

#include <algorithm>
#include <cstddef>
#include <limits>

namespace tav {

bool containsString(std::string_view text, OptionalText string) {
    return containsString(text, string, 0);
}

bool containsString(std::string_view text, OptionalText string, unsigned options) {
    return !string.isNil() && rangeOfString(text, *string, options).has_value();
}

int countOfString(std::string_view text, OptionalText string) {
    constexpr std::size_t most = std::numeric_limits<int>::max();
    return string.isNil() ? 0 : static_cast<int>(std::min(countOfPlaces(text, *string, 0), most));
}

// Both pass the option for anchored searches, which makes no difference where a range is compared;
// one that ignores the case would.

bool hasPrefixCaseInsensitive(std::string_view text, OptionalText prefix) {
    if (prefix.isNil()) {
        return false;
    }
    const std::size_t length = utf16Length(*prefix);
    return utf16Length(text) >= length &&
           compare(text, *prefix, SearchOption::Anchored, {0, length}) == 0;
}

bool hasSuffixCaseInsensitive(std::string_view text, OptionalText suffix) {
    if (suffix.isNil()) {
        return false;
    }
    const std::size_t length = utf16Length(*suffix);
    const std::size_t whole = utf16Length(text);
    return whole >= length &&
           compare(text, *suffix, SearchOption::Anchored, {whole - length, length}) == 0;
}

} // namespace tav
