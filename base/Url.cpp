#include "base/Url.hpp"

#include "base/PercentEncoding.hpp"

#include <algorithm>
#include <charconv>
#include <utility>

namespace tav {

namespace {

constexpr bool isLetter(char character) {
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z');
}

constexpr bool isDigit(char character) { return character >= '0' && character <= '9'; }

constexpr bool isHexadecimalDigit(char character) {
    return isDigit(character) || (character >= 'a' && character <= 'f') ||
           (character >= 'A' && character <= 'F');
}

constexpr bool contains(std::string_view characters, char character) {
    return characters.find(character) != std::string_view::npos;
}

// `unreserved` and `sub-delims` of RFC 3986, which every part but scheme and port may hold.
constexpr bool isPlain(char character) {
    return isLetter(character) || isDigit(character) || contains("-._~!$&'()*+,;=", character);
}

// Whether the text is made of such characters, of `others` and of whole percent escapes.
bool consistsOf(std::string_view text, std::string_view others) {
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] == '%') {
            if (text.size() - at < 3 || !isHexadecimalDigit(text[at + 1]) ||
                !isHexadecimalDigit(text[at + 2])) {
                return false;
            }
            at += 2;
        } else if (!isPlain(text[at]) && !contains(others, text[at])) {
            return false;
        }
    }
    return true;
}

bool isScheme(std::string_view text) {
    return !text.empty() && isLetter(text.front()) &&
           std::all_of(text.begin(), text.end(), [](char character) {
               return isLetter(character) || isDigit(character) || contains("+-.", character);
           });
}

bool isIPv4Address(std::string_view text) {
    for (int field = 0; field < 4; ++field) {
        const std::size_t dot = text.find('.');
        const std::string_view number = text.substr(0, dot);
        unsigned value = 0;
        const auto [end, error] =
            std::from_chars(number.data(), number.data() + number.size(), value);
        const bool isWhole = error == std::errc() && end == number.data() + number.size();
        const bool isPadded = number.size() > 1 && number.front() == '0';
        if (!isWhole || isPadded || value > 255 ||
            (dot == std::string_view::npos) != (field == 3)) {
            return false;
        }
        text.remove_prefix(field == 3 ? text.size() : dot + 1);
    }
    return true;
}

// How many groups of 16 bits the colon-separated text has; nothing when it is something else. An
// IPv4 address, which only the last group may be, counts as two.
std::optional<int> addressGroups(std::string_view text, bool isLast) {
    if (text.empty()) {
        return 0;
    }
    int count = 0;
    for (;;) {
        const std::size_t colon = text.find(':');
        const std::string_view group = text.substr(0, colon);
        const bool isHexadecimal = !group.empty() && group.size() <= 4 &&
                                   std::all_of(group.begin(), group.end(), isHexadecimalDigit);
        if (colon == std::string_view::npos) {
            if (isHexadecimal) {
                return count + 1;
            }
            return isLast && isIPv4Address(group) ? std::optional(count + 2) : std::nullopt;
        }
        if (!isHexadecimal || ++count > 8) {
            return std::nullopt;
        }
        text.remove_prefix(colon + 1);
    }
}

bool isIPv6Address(std::string_view text) {
    const std::size_t gap = text.find("::");
    if (gap == std::string_view::npos) {
        return addressGroups(text, true) == 8;
    }
    const auto before = addressGroups(text.substr(0, gap), false);
    const auto behind = addressGroups(text.substr(gap + 2), true);
    return before && behind && *before + *behind <= 7;
}

// "v1.address": a form that the grammar keeps free for addresses to come.
bool isFutureAddress(std::string_view text) {
    if (text.empty() || (text.front() != 'v' && text.front() != 'V')) {
        return false;
    }
    const std::size_t dot = text.find('.');
    if (dot == std::string_view::npos || dot < 2 || dot + 1 == text.size()) {
        return false;
    }
    const std::string_view version = text.substr(1, dot - 1);
    const std::string_view address = text.substr(dot + 1);
    return std::all_of(version.begin(), version.end(), isHexadecimalDigit) &&
           !contains(address, '%') && consistsOf(address, ":");
}

} // namespace

std::optional<Url> Url::withString(std::string_view text) {
    Url url(text);
    return url.parse() ? std::optional(std::move(url)) : std::nullopt;
}

bool Url::parse() {
    const std::string_view text = text_;
    std::size_t end = text.size();
    if (const std::size_t hash = text.find('#'); hash != std::string_view::npos) {
        fragment_ = Part{hash + 1, end - hash - 1};
        end = hash;
    }
    if (const std::size_t mark = text.substr(0, end).find('?'); mark != std::string_view::npos) {
        query_ = Part{mark + 1, end - mark - 1};
        end = mark;
    }
    std::size_t at = 0;
    // A colon in the first segment can only end a scheme.
    const std::size_t colon = text.substr(0, end).find_first_of(":/");
    if (colon != std::string_view::npos && text[colon] == ':') {
        if (!isScheme(text.substr(0, colon))) {
            return false;
        }
        scheme_ = Part{0, colon};
        at = colon + 1;
    }
    if (view(at, end).starts_with("//")) {
        const std::size_t start = at + 2;
        at = std::min(text.find('/', start), end);
        if (!parseAuthority(start, at)) {
            return false;
        }
    }
    path_ = {at, end - at};
    return consistsOf(view(at, end), ":@/") && consistsOf(query().value_or(""), ":@/?") &&
           consistsOf(fragment().value_or(""), ":@/?");
}

bool Url::parseAuthority(std::size_t start, std::size_t end) {
    const std::size_t at = view(start, end).find('@');
    if (at == std::string_view::npos) {
        return parseHost(start, end);
    }
    const std::string_view name = view(start, start + at);
    const std::size_t colon = std::min(name.find(':'), name.size());
    user_ = Part{start, colon};
    if (colon < name.size()) {
        password_ = Part{start + colon + 1, name.size() - colon - 1};
    }
    return consistsOf(name, ":") && parseHost(start + at + 1, end);
}

bool Url::parseHost(std::size_t start, std::size_t end) {
    const std::string_view whole = view(start, end);
    std::string_view host;
    std::string_view rest;
    if (whole.starts_with('[')) {
        const std::size_t bracket = whole.find(']');
        if (bracket == std::string_view::npos) {
            return false;
        }
        host = whole.substr(1, bracket - 1);
        rest = whole.substr(bracket + 1);
        if (!isIPv6Address(host) && !isFutureAddress(host)) {
            return false;
        }
    } else {
        host = whole.substr(0, whole.find(':'));
        rest = whole.substr(host.size());
        if (!consistsOf(host, "")) {
            return false;
        }
    }
    if (!host.empty()) {
        host_ = Part{static_cast<std::size_t>(host.data() - text_.data()), host.size()};
    }
    if (rest.empty()) {
        return true;
    }
    const std::string_view number = rest.substr(1);
    if (rest.front() != ':' || !std::all_of(number.begin(), number.end(), isDigit)) {
        return false;
    }
    std::uint16_t value = 0;
    if (std::from_chars(number.data(), number.data() + number.size(), value).ec == std::errc()) {
        port_ = value;
    }
    return true;
}

std::string Url::path() const {
    return percentDecoded(view(path_.start, path_.start + path_.length)).value_or("");
}

} // namespace tav
