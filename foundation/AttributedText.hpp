#pragma once

#include "base/AttributedString.hpp"
#include "base/Color.hpp"
#include "base/Data.hpp"
#include "base/Url.hpp"
#include "base/Value.hpp"

#include <optional>
#include <string_view>

namespace tav {

/// The text as a link to the URL, underlined and in a colour, blue when none is given: link, colour
/// of the text, of the underline and of the stroke, and a single underline over the whole of it.
[[nodiscard]] AttributedString
hyperlinkFromString(std::string_view string, const Url& withURL,
                    const std::optional<Color>& withTextColor = std::nullopt);

/// What `attributedStringWithHTMLData` and its half on the main thread hand one another.
struct HtmlExchange {
    /// The HTML. The bytes are the caller's.
    std::optional<BytesView> data;
    std::optional<AttributedString> attrStr;
    std::optional<Value::Dictionary> docAttributes;
};

/// The document as `HtmlImporter` reads it on the main thread; nothing without data or when the
/// import fails. A `documentAttributes` that is not null is then set, to nothing where there are
/// none; without data it is left alone.
///
/// Waits for the main thread: not to be called while that waits for the calling thread.
[[nodiscard]] std::optional<AttributedString>
attributedStringWithHTMLData(const std::optional<BytesView>& data,
                             std::optional<Value::Dictionary>* documentAttributes);

/// The half that runs on the main thread: imports what is under `data`. Without data, and when the
/// import fails, it does nothing.
void _attributedStringWithHTML(HtmlExchange& exchange);

} // namespace tav
