#include "base/WellFormedUTF8.hpp"

#include "base/Unicode.hpp"

#include <algorithm>
#include <cstddef>

namespace tav {
namespace {

/// The length of the character that the bytes begin with; 0 when they begin with none.
std::size_t characterLength(std::string_view bytes) {
    const std::size_t most = std::min<std::size_t>(bytes.size(), 4);
    for (std::size_t length = 1; length <= most; ++length) {
        if (isValidUTF8(bytes.substr(0, length))) {
            return length;
        }
    }
    return 0;
}

} // namespace

std::string wellFormedUTF8(std::string_view bytes) {
    if (isValidUTF8(bytes)) {
        return std::string(bytes);
    }
    std::string text;
    text.reserve(bytes.size());
    while (!bytes.empty()) {
        const std::size_t length = characterLength(bytes);
        text += length == 0 ? std::string_view("\xEF\xBF\xBD") : bytes.substr(0, length);
        bytes.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return text;
}

} // namespace tav
