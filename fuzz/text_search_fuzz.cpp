// Two texts, a zero byte between them, and an options byte in front: what is found is equivalent to
// what was sought, counts and comparisons agree with it, and everything else ends.

#include "base/TextSearch.hpp"
#include "base/Unicode.hpp"
#include "foundation/Collation.hpp"
#include "foundation/LineEndings.hpp"
#include "foundation/TextEscaping.hpp"
#include "foundation/TextSearch.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

namespace {

using namespace tav;

void expect(bool holds) {
    if (!holds) {
        std::abort();
    }
}

void expectSearchesAgree(std::string_view text, std::string_view pattern, unsigned options) {
    const unsigned place = SearchOption::Backwards | SearchOption::Anchored;
    const auto first = rangeOfString(text, pattern, options & ~place);
    const auto last = rangeOfString(text, pattern, (options & ~place) | SearchOption::Backwards);
    const auto found = rangeOfString(text, pattern, options);
    const std::size_t count = countOfPlaces(text, pattern, options);
    expect(first.has_value() == last.has_value() && first.has_value() == (count > 0));
    expect(!found || first);
    expect((count == 1) == (first && first == last));
    if (!first) {
        return;
    }
    expect(first->location <= last->location);
    for (const auto& range : {*first, *last, found.value_or(*first)}) {
        expect(range.length > 0 && range.location + range.length <= utf16Length(text));
        expect(compare(text, pattern, options & ~SearchOption::Numeric, range) == 0);
        // The range by itself holds it, and nothing shorter does.
        expect(rangeOfString(text, pattern, options & ~place, range) == range);
    }
    if ((options & SearchOption::Anchored) == 0) {
        expect(found == ((options & SearchOption::Backwards) != 0 ? last : first));
    }
}

void expectOrdersAgree(std::string_view a, std::string_view b, unsigned options) {
    expect(compare(a, b, options) == -compare(b, a, options));
    expect(compare(a, a, options) == 0);
    expect(compareStringsIgnoringDiacritical(a, b) == -compareStringsIgnoringDiacritical(b, a));
    expect(equalStringsIgnoringDiacritical(a, b) == equalStringsIgnoringDiacritical(b, a));
    const unsigned caseless = SearchOption::IgnoreCase;
    expect((compare(a, b, caseless) == 0) == equalsIgnoringCase(a, b));
    expect((compare(a, b, SearchOption::Literal) == 0) == (a == b));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    const unsigned options = bytes[0];
    const std::string_view input(reinterpret_cast<const char*>(bytes + 1), size - 1);
    const std::string_view text = input.substr(0, input.find('\0'));
    const std::string_view pattern = input.substr(std::min(text.size() + 1, input.size()));
    expectSearchesAgree(text, pattern, options);
    expectOrdersAgree(text, pattern, options);
    const bool isPrefix = hasPrefixCaseInsensitive(text, pattern);
    expect(!isPrefix || utf16Length(text) >= utf16Length(pattern));
    expect(hasPrefixCaseInsensitive(text, text) && hasSuffixCaseInsensitive(text, text));
    expect(!text.starts_with(pattern) || !isValidUTF8(input) || isPrefix);

    expect(stringWithMacLineEndings(stringWithWindowsLineEndings(text)) == text);
    expect(!containsString(convertLineEndingsToParagraphSeparator(text), "\n"));
    expect(dataWithWindowsLineEndings(text).has_value());
    const std::string field = escapeQuotesForCSV(text);
    expect(std::count(field.begin(), field.end(), '"') % 2 == 0);
    expect(stringForFilterPredicate(text).find_first_of("'\"()?") == std::string::npos);
    return 0;
}
