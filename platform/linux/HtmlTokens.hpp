#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace tav::internal {

/// The attributes in a start tag, in their order. Names and values are as written.
class HtmlAttributes {
  public:
    /// What follows the name in a tag, and maybe more: reading ends at the ">" that ends the tag.
    explicit HtmlAttributes(std::string_view text) : rest_(text) {}

    struct Attribute {
        std::string_view name;
        std::string_view value;
    };
    /// Nothing at the end of the tag or of the text.
    std::optional<Attribute> next();
    /// What was not read yet; after the last attribute it begins with the ">", or is empty when the
    /// tag never ends.
    [[nodiscard]] std::string_view rest() const { return rest_; }

    /// The value of the first attribute of a name (in lower case), character references resolved;
    /// nothing when there is none.
    [[nodiscard]] std::optional<std::string> find(std::string_view name) const;

  private:
    std::string_view rest_;
};

struct HtmlToken {
    enum class Kind { Text, StartTag, EndTag };
    Kind kind = Kind::Text;
    /// Characters, with their references as written.
    std::string_view text;
    /// Of a tag, in lower case.
    std::string name;
    /// Of a start tag.
    HtmlAttributes attributes{{}};
};

/// Cuts HTML into tags and characters as browsers do; comments and other declarations are passed
/// over, and so is a tag that never ends. In linear time. Views are of the document.
class HtmlTokens {
  public:
    explicit HtmlTokens(std::string_view html) : rest_(html) {}

    /// False at the end; the token is then left alone.
    bool next(HtmlToken& token);
    /// The characters up to an end tag of this name or the end of the document: the content of an
    /// element whose content is text. Called right after its start tag.
    std::string_view rawText(std::string_view name);
    /// Passes over one line feed (LF, CR LF or CR).
    void skipLineFeed();
    /// All that is left.
    std::string_view everything();

  private:
    bool markup(HtmlToken& token);
    bool tag(HtmlToken& token, bool isEnd);
    void skipPast(std::string_view end);
    void skipComment();

    std::string_view rest_;
};

/// Text with its character references resolved, as browsers do it: numeric ones, the names of
/// Latin-1 and those of common punctuation; others stay as written. CR LF and CR become LF, NUL
/// goes.
[[nodiscard]] std::string htmlCharacters(std::string_view text);
/// Text that has no references: CR LF and CR become LF, NUL becomes U+FFFD.
[[nodiscard]] std::string htmlRawCharacters(std::string_view text);
/// As `htmlCharacters` for an attribute's value, where "&copy=1" is no reference.
[[nodiscard]] std::string htmlAttributeValue(std::string_view text);

} // namespace tav::internal
