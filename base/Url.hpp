#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tav {

/// A URL, or a reference relative to one, in the grammar of RFC 3986. It keeps the text that it was
/// made from and answers its parts as they stand there; only `path()` undoes percent escapes.
///
/// A value: copies are independent. The views that it answers refer into it.
class Url {
  public:
    /// Nothing for a text that the grammar does not have: blanks, control characters, anything that
    /// is not ASCII, angle brackets, a "%" without two hexadecimal digits, ... The empty text is a
    /// reference.
    [[nodiscard]] static std::optional<Url> withString(std::string_view text);

    /// The text that it was made from.
    [[nodiscard]] const std::string& absoluteString() const { return text_; }

    /// Nothing in a relative reference. The case is as written.
    [[nodiscard]] std::optional<std::string_view> scheme() const { return view(scheme_); }
    [[nodiscard]] std::optional<std::string_view> user() const { return view(user_); }
    [[nodiscard]] std::optional<std::string_view> password() const { return view(password_); }
    /// An IPv6 address comes without its brackets. Nothing also where the host is empty, as in
    /// "file:///etc".
    [[nodiscard]] std::optional<std::string_view> host() const { return view(host_); }
    /// Nothing also for a port that is empty or above 65535.
    [[nodiscard]] std::optional<std::uint16_t> port() const { return port_; }
    /// The path's bytes, percent escapes undone: possibly no UTF-8, possibly with a NUL.
    [[nodiscard]] std::string path() const;
    [[nodiscard]] std::optional<std::string_view> query() const { return view(query_); }
    [[nodiscard]] std::optional<std::string_view> fragment() const { return view(fragment_); }

    /// Equal when the texts are.
    friend bool operator==(const Url& a, const Url& b) { return a.text_ == b.text_; }

  private:
    struct Part {
        std::size_t start = 0;
        std::size_t length = 0;
    };

    explicit Url(std::string_view text) : text_(text) {}
    [[nodiscard]] bool parse();
    [[nodiscard]] bool parseAuthority(std::size_t start, std::size_t end);
    [[nodiscard]] bool parseHost(std::size_t start, std::size_t end);

    [[nodiscard]] std::string_view view(std::size_t start, std::size_t end) const {
        return std::string_view(text_).substr(start, end - start);
    }
    [[nodiscard]] std::optional<std::string_view> view(const std::optional<Part>& part) const {
        return part ? std::optional(std::string_view(text_).substr(part->start, part->length))
                    : std::nullopt;
    }

    std::string text_;
    std::optional<Part> scheme_;
    std::optional<Part> user_;
    std::optional<Part> password_;
    std::optional<Part> host_;
    std::optional<std::uint16_t> port_;
    Part path_;
    std::optional<Part> query_;
    std::optional<Part> fragment_;
};

} // namespace tav
