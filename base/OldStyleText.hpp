#pragma once

#include "base/Data.hpp"
#include "base/PropertyList.hpp"
#include "base/Value.hpp"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

/// Property lists as old-style text: `{ key = value; }`, `(a, b)`, `<0fbd77>`.
namespace tav::OldStyleText {

/// The text of a value: keys ascend by their bytes, four blanks a level. A text stands without
/// quotes when it is ASCII letters and digits only; numbers and dates follow the same rule, as the
/// form has no types for them. In quotes, units of UTF-16 beyond ASCII read `\Uxxxx`, so the text
/// is ASCII.
[[nodiscard]] std::string write(const Value& value);

/// The same at the end of another text.
void append(std::string& out, const Value& value);

/// What stands for a text, or for bytes, by itself.
void appendText(std::string& out, std::string_view text);
void appendBytes(std::string& out, BytesView bytes);

/// The same into memory with room for it, of which the end is answered. For a text of which some
/// characters have to be escaped that is null, and nothing was written; any other one takes no more
/// room than itself and two quotes.
[[nodiscard]] char* putText(char* at, std::string_view text);
char* putBytes(char* at, BytesView bytes);
/// How many characters stand for so many bytes.
[[nodiscard]] constexpr std::size_t lengthOfBytes(std::size_t count) {
    return 2 + 2 * count + (count == 0 ? 0 : (count - 1) / 4);
}

/// The value of a text in UTF-8, or in UTF-16 with a byte-order mark; nothing when it is none, and
/// `outError`, which may be null, tells why. Numbers and dates are texts; of equal keys the last
/// counts; bytes that are no UTF-8 stay as they are, and come back from the escape that `write`
/// gives them. A text at the top that is followed by more is a strings file, a dictionary without
/// braces; white space and comments alone are an empty one. Depth is limited to
/// `PropertyList::maximumDepth`, time and memory are linear. docs/formats/old-style.md has the
/// whole form.
[[nodiscard]] std::optional<Value> read(std::string_view text, PropertyList::Error* outError);
[[nodiscard]] std::optional<Value> read(BytesView bytes, PropertyList::Error* outError);

} // namespace tav::OldStyleText
