#include "platform/linux/HtmlElements.hpp"

#include <algorithm>
#include <array>
#include <cstddef>

namespace tav::internal {
namespace {

struct Row {
    std::string_view name;
    unsigned traits;
};

using E = HtmlElement;
constexpr unsigned block = E::Block | E::Special;
constexpr unsigned hiddenText = E::Hidden | E::RawText | E::Special;

// Ordered by name.
constexpr std::array rows = {
    Row{"a", E::Formatting},
    Row{"address", block | E::Italic},
    Row{"applet", E::Scope | E::Special},
    Row{"area", E::Void | E::Special},
    Row{"article", block},
    Row{"aside", block},
    Row{"b", E::Bold | E::Formatting},
    Row{"base", E::Void | E::Special},
    Row{"basefont", E::Void | E::Special},
    Row{"bgsound", E::Void | E::Special},
    Row{"big", E::Formatting},
    Row{"blockquote", block},
    Row{"body", block},
    Row{"br", E::Void | E::Special},
    Row{"button", E::Special},
    Row{"caption", block | E::Scope},
    Row{"center", block},
    Row{"cite", E::Italic},
    Row{"code", E::Formatting},
    Row{"col", E::Void | E::Special},
    Row{"colgroup", E::Special},
    Row{"datalist", E::Hidden},
    Row{"dd", block},
    Row{"details", block},
    Row{"dfn", E::Italic},
    Row{"dir", block},
    Row{"div", block},
    Row{"dl", block},
    Row{"dt", block},
    Row{"em", E::Italic | E::Formatting},
    Row{"embed", E::Void | E::Special},
    Row{"fieldset", block},
    Row{"figcaption", block},
    Row{"figure", block},
    Row{"font", E::Formatting},
    Row{"footer", block},
    Row{"form", block},
    Row{"frame", E::Void | E::Special},
    Row{"frameset", E::Hidden | E::Special},
    Row{"h1", block | E::Bold},
    Row{"h2", block | E::Bold},
    Row{"h3", block | E::Bold},
    Row{"h4", block | E::Bold},
    Row{"h5", block | E::Bold},
    Row{"h6", block | E::Bold},
    Row{"head", E::Special},
    Row{"header", block},
    Row{"hgroup", block},
    Row{"hr", block | E::Void},
    Row{"html", block | E::Scope},
    Row{"i", E::Italic | E::Formatting},
    Row{"iframe", hiddenText},
    Row{"img", E::Void | E::Special},
    Row{"input", E::Void | E::Special},
    Row{"ins", E::Underline},
    Row{"keygen", E::Void},
    Row{"legend", block},
    Row{"li", block},
    Row{"link", E::Void | E::Special},
    Row{"listing", block | E::Literal},
    Row{"main", block},
    Row{"marquee", block | E::Scope},
    Row{"math", E::Scope},
    Row{"menu", block},
    Row{"meta", E::Void | E::Special},
    Row{"nav", block},
    Row{"nobr", E::Formatting},
    Row{"noembed", hiddenText},
    Row{"noframes", hiddenText},
    Row{"object", E::Scope | E::Special},
    Row{"ol", block},
    Row{"optgroup", block},
    Row{"option", block},
    Row{"p", block},
    Row{"param", E::Void | E::Special},
    Row{"plaintext", block | E::Literal},
    Row{"pre", block | E::Literal},
    Row{"s", E::Formatting},
    Row{"script", hiddenText},
    Row{"section", block},
    Row{"select", E::Special},
    Row{"small", E::Formatting},
    Row{"source", E::Void | E::Special},
    Row{"strike", E::Formatting},
    Row{"strong", E::Bold | E::Formatting},
    Row{"style", hiddenText},
    Row{"summary", block},
    Row{"svg", E::Scope},
    Row{"table", block | E::Scope},
    Row{"tbody", block},
    Row{"td", E::Cell | E::Scope | E::Special},
    Row{"template", E::Hidden | E::Scope | E::Special},
    Row{"textarea", E::Literal | E::RawText | E::Special},
    Row{"tfoot", block},
    Row{"th", E::Cell | E::Scope | E::Special},
    Row{"thead", block},
    Row{"title", hiddenText},
    Row{"tr", block | E::Row},
    Row{"track", E::Void | E::Special},
    Row{"tt", E::Formatting},
    Row{"u", E::Underline | E::Formatting},
    Row{"ul", block},
    Row{"var", E::Italic},
    Row{"wbr", E::Void | E::Special},
    Row{"xmp", block | E::Literal | E::RawText},
};

static_assert(std::is_sorted(rows.begin(), rows.end(),
                             [](const Row& a, const Row& b) { return a.name < b.name; }));

} // namespace

HtmlElement htmlElement(std::string_view name) {
    const auto* const row = std::lower_bound(
        rows.begin(), rows.end(), name,
        [](const Row& each, std::string_view wanted) { return each.name < wanted; });
    if (row == rows.end() || row->name != name) {
        return {};
    }
    return {static_cast<std::uint16_t>(row->traits)};
}

} // namespace tav::internal
