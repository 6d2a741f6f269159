#include "foundation/WindowsUnicodeText.hpp"

#include "base/Unicode.hpp"
#include "foundation/TextEncoding.hpp"

#include <cstddef>
#include <utility>

namespace tav {

std::string stringWithWindowsUnicodeData(Data& data) {
    for (std::size_t at = 0; at + 1 < data.size(); at += 2) {
        std::swap(data[at], data[at + 1]);
    }
    return stringWithData(data, TextEncoding::Unicode).value_or("");
}

Data dataUnicodeNoBOMBE(std::string_view text) { return utf16BigEndian(text); }

Data dataUnicodeNoBOMLE(std::string_view text) { return utf16LittleEndian(text); }

} // namespace tav
