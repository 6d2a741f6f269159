#pragma once

#include "base/Data.hpp"

#include <cstdint>
#include <string>

namespace tav::internal {

/// The characters of an HTML document.
struct DecodedHtml {
    /// Well-formed UTF-8, without a byte-order mark; what could not be read is U+FFFD.
    std::string text;
    /// The platform's number of the encoding that the bytes were in.
    std::uint32_t encoding;
};

/// Reads a document's bytes in the encoding that they show to be in: by a byte-order mark, by the
/// zeros that UTF-16 puts between Latin letters, by a `meta` element within the first 1024 bytes,
/// else UTF-8 when they are that, else Windows-1252. Names that a document gives are taken as
/// browsers do: "iso-8859-1" is Windows-1252, "utf-16" in bytes that can be read is UTF-8, and one
/// that is not known says nothing.
[[nodiscard]] DecodedHtml decodeHtml(BytesView bytes);

} // namespace tav::internal
