#include "foundation/UrlRecognition.hpp"

#include "base/TextSearch.hpp"
#include "base/Unicode.hpp"
#include "base/Url.hpp"
#include "foundation/TextSearch.hpp"
#include "foundation/TopLevelDomains.hpp"

namespace tav {

namespace {

// Whether the host is "www", names between dots, and a top-level domain.
bool isOfWorldWideWeb(std::string_view host) {
    const std::size_t first = host.find('.');
    const std::size_t last = host.rfind('.');
    return first != last && lowercaseString(host.substr(0, first)) == "www" &&
           isTLD(host.substr(last + 1));
}

} // namespace

std::optional<std::string> isURL(std::string_view text) {
    const auto separator = rangeOfString(text, "://", 0);
    if (separator && separator->location != 0) {
        const auto url = Url::withString(text);
        const auto scheme = url ? url->scheme() : std::nullopt;
        return scheme && scheme != "telnet" ? std::optional(std::string(text)) : std::nullopt;
    }
    const auto dot = rangeOfString(text, ".", 0);
    if (!dot || dot->location == 0) {
        return std::nullopt;
    }
    if (hasPrefixCaseInsensitive(text, "mailto:") || hasPrefixCaseInsensitive(text, "aim:")) {
        return std::string(text);
    }
    const std::string withScheme = "http://" + std::string(text);
    const auto url = Url::withString(withScheme);
    const auto host = url ? url->host() : std::nullopt;
    return host && isOfWorldWideWeb(*host) ? std::optional(withScheme) : std::nullopt;
}

} // namespace tav
