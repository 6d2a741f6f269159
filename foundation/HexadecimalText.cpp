#include "foundation/HexadecimalText.hpp"

#include "base/Format.hpp"

#include <charconv>
#include <limits>

namespace tav {

std::int32_t numberFromHexString(std::string_view text) {
    const std::size_t start = text.find_first_not_of(" \t\n\v\f\r");
    text.remove_prefix(start == std::string_view::npos ? text.size() : start);
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
