#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace tav {

/// A text argument that may be nil, where nil and the empty text mean different things.
///
/// Made from any text, from `nullptr` or from `std::nullopt`. It refers to the caller's characters
/// and owns nothing: take it as a parameter, never keep it.
class OptionalText {
  public:
    OptionalText(std::nullptr_t) {}
    OptionalText(std::nullopt_t) {}
    OptionalText(std::string_view text) : text_(text) {}
    OptionalText(const std::string& text) : text_(text) {}
    OptionalText(const char* text)
        : text_(text == nullptr ? std::nullopt : std::optional<std::string_view>(text)) {}
    OptionalText(const std::optional<std::string>& text) {
        if (text) {
            text_ = *text;
        }
    }

    [[nodiscard]] bool isNil() const { return !text_; }
    /// The text; only when it is not nil.
    [[nodiscard]] std::string_view operator*() const { return *text_; }

  private:
    std::optional<std::string_view> text_;
};

} // namespace tav
