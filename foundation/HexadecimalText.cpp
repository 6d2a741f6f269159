#include "foundation/HexadecimalText.hpp"

#include "base/Format.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>

namespace tav {

namespace {

// The characters that Unicode calls white space.
constexpr std::array<std::string_view, 25> blanks = {
    " ",      "\t",     "\n",     "\v",     "\f",     "\r",     "\u0085", "\u00A0", "\u1680",
    "\u2000", "\u2001", "\u2002", "\u2003", "\u2004", "\u2005", "\u2006", "\u2007", "\u2008",
    "\u2009", "\u200A", "\u2028", "\u2029", "\u202F", "\u205F", "\u3000"};

std::string_view withoutLeadingBlanks(std::string_view text) {
    for (;;) {
        const auto* const blank =
            std::find_if(blanks.begin(), blanks.end(),
                         [&](std::string_view each) { return text.starts_with(each); });
        if (blank == blanks.end()) {
            return text;
        }
        text.remove_prefix(blank->size());
    }
}

} // namespace

std::int32_t numberFromHexString(std::string_view text) {
    text = withoutLeadingBlanks(text);
    if (text.starts_with("0x") || text.starts_with("0X")) {
        text.remove_prefix(2);
    }
    std::uint32_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, 16);
    if (error == std::errc::result_out_of_range) {
        number = std::numeric_limits<std::uint32_t>::max();
    }
    return static_cast<std::int32_t>(number);
}

std::string hexStringFromNumber(const Value& number) {
    return tav::format("0x%x", number.intValue());
}

std::string hexStringFromNumberNoLeading0x(const Value& number) {
    return tav::format("%x", number.intValue());
}

} // namespace tav
