#include "platform/linux/HtmlDepth.hpp"

#include "platform/linux/HtmlElements.hpp"
#include "platform/linux/HtmlTokens.hpp"

#include <algorithm>
#include <functional>
#include <span>
#include <vector>

namespace tav::internal {
namespace {

// How far an end tag looks for its beginning. Farther away it is taken for none, so that the time
// stays linear.
constexpr std::size_t farthest = 64;

class OpenElements {
  public:
    void start(std::string_view name, HtmlElement element);
    void end(std::string_view name, HtmlElement element);
    [[nodiscard]] std::size_t depth() const { return open_.size(); }

  private:
    struct Open {
        std::size_t name;
        HtmlElement element;
    };
    static std::size_t key(std::string_view name) { return std::hash<std::string_view>()(name); }

    std::vector<Open> open_;
};

/// For elements whose end tags are mostly left out, those that such a one ends when it begins; the
/// innermost first.
std::span<const std::string_view> endedBy(std::string_view name) {
    static constexpr std::string_view likes[][4] = {
        {"li"}, {"dd", "dt"}, {"td", "th"}, {"td", "th", "tr"}, {"option"}, {"option", "optgroup"}};
    const auto some = [](std::size_t which, std::size_t count) {
        return std::span<const std::string_view>(likes[which], count);
    };
    if (name == "li") {
        return some(0, 1);
    }
    if (name == "dd" || name == "dt") {
        return some(1, 2);
    }
    if (name == "td" || name == "th") {
        return some(2, 2);
    }
    if (name == "tr") {
        return some(3, 3);
    }
    if (name == "option") {
        return some(4, 1);
    }
    return name == "optgroup" ? some(5, 2) : std::span<const std::string_view>();
}

void OpenElements::start(std::string_view name, HtmlElement element) {
    const bool endsParagraph =
        element.has(HtmlElement::Cell) || (element.has(HtmlElement::Block) && name != "table");
    if (endsParagraph && !open_.empty() && open_.back().name == key("p")) {
        open_.pop_back();
    }
    for (const std::string_view ended : endedBy(name)) {
        if (!open_.empty() && open_.back().name == key(ended)) {
            open_.pop_back();
        }
    }
    open_.push_back({key(name), element});
}

void OpenElements::end(std::string_view name, HtmlElement element) {
    const std::size_t wanted = key(name);
    const std::size_t lowest = open_.size() - std::min(open_.size(), farthest);
    for (std::size_t i = open_.size(); i > lowest; --i) {
        const Open& each = open_[i - 1];
        if (each.name == wanted) {
            // What formats is opened again behind the end of the elements around it.
            const auto from = open_.begin() + static_cast<std::ptrdiff_t>(i - 1);
            open_.erase(std::remove_if(from + 1, open_.end(),
                                       [](const Open& inner) {
                                           return !inner.element.has(HtmlElement::Formatting);
                                       }),
                        open_.end());
            open_.erase(from);
            return;
        }
        const bool isBlock = element.has(HtmlElement::Special);
        if (each.element.has(HtmlElement::Scope) ||
            (!isBlock && each.element.has(HtmlElement::Special))) {
            return;
        }
    }
}

} // namespace

std::size_t htmlDepthBound(std::string_view html, std::size_t limit) {
    HtmlTokens tokens(html);
    HtmlToken token;
    OpenElements open;
    std::size_t deepest = 0;
    while (deepest <= limit && tokens.next(token)) {
        if (token.kind == HtmlToken::Kind::Text) {
            continue;
        }
        const HtmlElement element = htmlElement(token.name);
        if (token.kind == HtmlToken::Kind::EndTag) {
            open.end(token.name, element);
        } else if (element.has(HtmlElement::RawText)) {
            static_cast<void>(tokens.rawText(token.name));
        } else if (!element.has(HtmlElement::Void)) {
            open.start(token.name, element);
            deepest = std::max(deepest, open.depth());
        }
    }
    return deepest;
}

} // namespace tav::internal
