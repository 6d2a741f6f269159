#pragma once

#include "base/Data.hpp"
#include "base/Value.hpp"

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

} // namespace tav::OldStyleText
