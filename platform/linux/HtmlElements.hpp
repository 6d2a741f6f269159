#pragma once

#include <cstdint>
#include <string_view>

namespace tav::internal {

/// What an element means to a reader of its text, and to the shape of the tree.
struct HtmlElement {
    enum Trait : std::uint16_t {
        Block = 1 << 0,       ///< Begins and ends a line.
        Cell = 1 << 1,        ///< Stands apart from the cell before it.
        Row = 1 << 2,         ///< Holds cells.
        Literal = 1 << 3,     ///< Keeps its blank space.
        Hidden = 1 << 4,      ///< Its content is not shown.
        RawText = 1 << 5,     ///< Its content is characters up to its own end tag.
        Bold = 1 << 6,        ///< b, strong, h1 to h6
        Italic = 1 << 7,      ///< i, em, cite, var, dfn, address
        Underline = 1 << 8,   ///< u, ins
        Void = 1 << 9,        ///< Has no content and no end tag.
        Formatting = 1 << 10, ///< Is opened again when an element around it was closed first.
        Scope = 1 << 11,      ///< No end tag inside closes what is open around it.
        Special = 1 << 12,    ///< Ends only by its own end tag or that of a block around it.
    };

    std::uint16_t traits = 0;
    [[nodiscard]] bool has(unsigned trait) const { return (traits & trait) != 0; }
};

/// By the element's name in lower case; one that is not known has no traits.
[[nodiscard]] HtmlElement htmlElement(std::string_view name);

} // namespace tav::internal
