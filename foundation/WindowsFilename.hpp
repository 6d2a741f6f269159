#pragma once

#include "base/CharacterSet.hpp"

#include <string>
#include <string_view>

/// Names for file systems that are addressed as Windows does. Names are bytes: what is no UTF-8
/// comes through where nothing has to change. Any thread.
namespace tav {

/// What no Windows file name may hold: the nine characters and U+0001 to U+001F. U+0000 is not
/// among them.
inline constexpr CharacterSet illegalFilenameCharset =
    CharacterSet::withUnits(u"\\/:*?\"<>|") | CharacterSet::withRange(1, 31);

/// The same for paths, where the backslash separates.
inline constexpr CharacterSet illegalPathnameCharset =
    CharacterSet::withUnits(u"/:*?\"<>|") | CharacterSet::withRange(1, 31);

/// The text with `replacement` for every UTF-16 unit in the set. Half of a character beyond U+FFFF
/// that is left alone becomes U+FFFD.
[[nodiscard]] std::string replaceInvalidChars(std::string_view text, const CharacterSet& set,
                                              std::string_view replacement);

/// A valid Windows file name: "_" for illegal characters, and for a dot or blank at the end, of
/// which only the last one is replaced ("name.." gives "name._"). U+0000 stays; there is no limit
/// of length, and names of devices are not looked at. With `asciiOnly` the name is first put into
/// ASCII as `lossyASCII` does.
[[nodiscard]] std::string windowsValidFilenameUsingASCIIOnly(std::string_view name, bool asciiOnly);
[[nodiscard]] std::string windowsValidFilename(std::string_view name);

/// A valid Windows file name with every UTF-16 unit above 126 as "U" and four hexadecimal digits:
/// "Café." gives "CafU00E9_". A byte that is no UTF-8 is a unit as well ("\xFF" gives "UDCFF").
/// Here U+0000 becomes "_" as other control characters do, and a blank at the end stays.
[[nodiscard]] std::string windowsValidFilenameByTranscodingNonASCIIChars(std::string_view name);

/// The text with every UTF-16 unit but U+0020 to U+007E as "U" and four hexadecimal digits. What
/// is illegal in file names stays: "a/é" gives "a/U00E9".
[[nodiscard]] std::string stringByTranscodingNonASCIIChars(std::string_view text);

} // namespace tav
