#pragma once

#include <cstdint>
#include <string_view>

namespace tav::internal {

/// What an archiver is to make of a file, as far as its outside tells.
enum class ZipKind : std::uint8_t {
    None,      ///< No zip archive, or nothing that can be read.
    Readable,  ///< It begins as one; it may still be broken anywhere.
    Encrypted, ///< Some of what is in it cannot be read without a pass phrase.
};

/// Looks at the first bytes of a file and at the list of entries at its end. Whatever the file is,
/// this takes a time in proportion to its size at most, and never waits.
[[nodiscard]] ZipKind zipKind(std::string_view path);

} // namespace tav::internal
