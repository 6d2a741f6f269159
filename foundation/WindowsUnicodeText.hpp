#pragma once

#include "base/Data.hpp"

#include <string>
#include <string_view>

/// UTF-16 as Windows devices have it. Bytes of a text that are no UTF-8 are units of their own
/// (base/Unicode.hpp). Any thread.
namespace tav {

/// The text of little-endian UTF-16. The data's bytes are exchanged pair by pair on the way and
/// stay so: do not use the data afterwards. An odd last byte is neither exchanged nor read. A
/// byte-order mark at the front, of either order, is obeyed and dropped.
[[nodiscard]] std::string stringWithWindowsUnicodeData(Data& data);

/// The text in UTF-16, big-endian or little-endian, without a byte-order mark.
[[nodiscard]] Data dataUnicodeNoBOMBE(std::string_view text);
[[nodiscard]] Data dataUnicodeNoBOMLE(std::string_view text);

} // namespace tav
