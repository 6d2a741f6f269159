#pragma once

#include "base/Color.hpp"
#include "base/Value.hpp"

#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace tav {

// The names of attributes, and what stands under them.
inline constexpr std::string_view NSLinkAttributeName = "NSLink";             ///< Text: a URL.
inline constexpr std::string_view NSForegroundColorAttributeName = "NSColor"; ///< A colour.
inline constexpr std::string_view NSUnderlineColorAttributeName = "NSUnderlineColor";
inline constexpr std::string_view NSStrokeColorAttributeName = "NSStrokeColor";
/// A number: 0 is no line, 1 a single one.
inline constexpr std::string_view NSUnderlineStyleAttributeName = "NSUnderline";
inline constexpr std::string_view NSFontAttributeName = "NSFont"; ///< `FontTraits`.

/// What is told of a font.
struct FontTraits {
    bool bold = false;
    bool italic = false;
    friend bool operator==(const FontTraits&, const FontTraits&) = default;
};

/// What stands under the name of an attribute. More kinds will come: visit it, do not count on
/// these three.
using Attribute = std::variant<Value, Color, FontTraits>;
using Attributes = std::map<std::string, Attribute, std::less<>>;

/// A text whose stretches carry attributes, each a name and what stands under it.
///
/// The text is bytes, UTF-8 by habit, and places in it are counted in bytes;
/// `utf16RangeFromByteRange` and `byteRangeFromUTF16Range` lead to units of UTF-16 and back. A
/// value that is cheap to copy but for its text: attributes are shared. Places behind the end throw
/// `std::out_of_range`. Not to be changed by two threads at once.
class AttributedString {
  public:
    struct Range {
        std::size_t location = 0;
        std::size_t length = 0;
        [[nodiscard]] std::size_t end() const { return location + length; }
        friend bool operator==(const Range&, const Range&) = default;
    };
    using SharedAttributes = std::shared_ptr<const Attributes>;

    AttributedString() = default;
    /// The same attributes over the whole text.
    explicit AttributedString(std::string_view text, Attributes attributes = {});

    /// The text alone.
    [[nodiscard]] const std::string& string() const { return text_; }
    [[nodiscard]] std::size_t length() const { return text_.size(); }
    [[nodiscard]] Range wholeRange() const { return {0, text_.size()}; }

    /// What holds at a place (before the end), and how far around it all attributes are the same.
    [[nodiscard]] const Attributes& attributesAt(std::size_t location,
                                                 Range* effectiveRange = nullptr) const;
    /// One attribute at a place, null when it is not set there, and how far around it that is so.
    [[nodiscard]] const Attribute* attributeAt(std::string_view name, std::size_t location,
                                               Range* effectiveRange = nullptr) const;

    /// Over an empty range these do nothing.
    void addAttribute(std::string_view name, const Attribute& attribute, Range range);
    void removeAttribute(std::string_view name, Range range);
    /// In the place of all that were there.
    void setAttributes(Attributes attributes, Range range);

    void append(const AttributedString& other);
    /// Many stretches may share their attributes; null stands for none.
    void append(std::string_view text, const SharedAttributes& attributes);

    [[nodiscard]] AttributedString substring(Range range) const;

    /// Between these, neighbours that have become alike are not yet joined, so that many changes
    /// cost little; ranges of equal attributes may come in pieces meanwhile. They nest. An end
    /// without a beginning throws `Exception`.
    void beginEditing() { ++editing_; }
    void endEditing();

    /// Equal texts with equal attributes everywhere.
    friend bool operator==(const AttributedString& a, const AttributedString& b);

  private:
    /// A stretch up to `end`; it begins where the one before it ends. None is empty.
    struct Run {
        std::size_t end;
        SharedAttributes attributes; ///< Null when there are none.
    };

    void check(Range range) const;
    [[nodiscard]] std::size_t runAt(std::size_t location) const;
    [[nodiscard]] std::size_t beginOf(std::size_t run) const;
    std::size_t splitAt(std::size_t location);
    void joinEqual(std::size_t first, std::size_t last);
    template <class Change>
    void change(Range range, Change change);

    std::string text_;
    std::vector<Run> runs_;
    int editing_ = 0;
};

/// The same stretch of a text counted in units of UTF-16 (bytes that are no UTF-8 are a unit each)
/// and the way back. A place inside a character counts as the character's beginning, one behind the
/// end as the end. In time proportional to the text.
[[nodiscard]] AttributedString::Range utf16RangeFromByteRange(std::string_view text,
                                                              AttributedString::Range bytes);
[[nodiscard]] AttributedString::Range byteRangeFromUTF16Range(std::string_view text,
                                                              AttributedString::Range units);

} // namespace tav
