#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tav {

/// The URL that a person means who typed the text; nothing when it is none.
///
/// With "://" behind a scheme, the text itself when it is a well-formed URL and its scheme is not
/// "telnet" (in small letters). Without, the text itself when it begins with "mailto:" or "aim:"
/// (in small letters) and has a dot, not at the beginning; and the text behind "http://" when its
/// host has at least two dots, "www" before the first and a top-level domain (`isTLD`) behind the
/// last. So "example.com" is none. Any thread.
[[nodiscard]] std::optional<std::string> isURL(std::string_view text);

} // namespace tav
