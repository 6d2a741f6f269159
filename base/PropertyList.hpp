#pragma once

#include "base/Data.hpp"
#include "base/Value.hpp"

#include <cstddef>
#include <optional>
#include <string>

/// Property lists as bytes: the XML form, the binary form (`bplist00`) and old-style text, told
/// apart by the bytes themselves. Any bytes end in a value or an error: depth is limited to
/// `maximumDepth`, time and memory are linear in the input, nothing outside the bytes is read (no
/// external entities). In binary lists objects may be shared; a list is refused once its tree would
/// have more than four values, or 256 bytes of text and data, for each byte of the list (and a
/// fixed allowance). References of keyed archives are dictionaries with the one key "CF$UID" in
/// XML.
namespace tav::PropertyList {

enum class Form {
    XML,      ///< UTF-8, the document type of version 1.0, tabs for indentation, keys sorted.
    Binary,   ///< `bplist00`; equal texts, numbers, dates and bytes are stored once.
    OldStyle, ///< The description text (`base/OldStyleText.hpp`); numbers and dates become texts.
};

/// How deep arrays and dictionaries may nest.
inline constexpr std::size_t maximumDepth = 512;

/// Why bytes are no property list, or a value cannot be written as one.
struct Error {
    std::string reason;     ///< A sentence for people.
    std::size_t line = 0;   ///< From 1, in XML and old-style text; 0 where lines mean nothing.
    std::size_t offset = 0; ///< Of the byte where reading stopped.
};

/// The value that the bytes hold, or nothing. `outError` may be null. What begins with "bplist",
/// or is the beginning of that, is read as binary, what begins with "<" and is no old-style data as
/// XML, everything else as old-style text: so a word alone is a text, and white space alone an
/// empty dictionary.
[[nodiscard]] std::optional<Value> read(BytesView bytes, Error* outError);
[[nodiscard]] std::optional<Value> readXML(BytesView bytes, Error* outError);
[[nodiscard]] std::optional<Value> readBinary(BytesView bytes, Error* outError);
[[nodiscard]] std::optional<Value> readOldStyle(BytesView bytes, Error* outError);

/// The value as bytes, or nothing where the form cannot hold it: too deep or, in XML, a date that
/// no calendar reaches or a text that is no UTF-8 or holds characters that XML has no form for. In
/// binary lists a byte that is no UTF-8 is a unit of its own (`utf16FromBytes`), which our reader
/// turns back.
[[nodiscard]] std::optional<Data> write(const Value& value, Form form, Error* outError);

} // namespace tav::PropertyList
