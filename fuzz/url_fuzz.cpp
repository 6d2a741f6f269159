// Any text is a URL or none. What is one holds its parts in order and can be put together from them
// again; what is recognised as one is one; percent escapes give back every text.

#include "base/PercentEncoding.hpp"
#include "base/Url.hpp"
#include "foundation/TextEscaping.hpp"
#include "foundation/UrlRecognition.hpp"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

namespace {

void expect(bool holds) {
    if (!holds) {
        std::abort();
    }
}

bool isPortBehind(std::string_view rest) {
    return rest.empty() || (rest.front() == ':' &&
                            rest.find_first_not_of("0123456789", 1) == std::string_view::npos);
}

// What the parts leave out of the text: an empty or large port, an empty host, brackets, escapes in
// the path. So the text is walked, and the parts are found in it one after the other.
void expectPartsInOrder(const tav::Url& url) {
    std::string_view rest = url.absoluteString();
    const auto take = [&](std::string_view part) {
        expect(rest.starts_with(part));
        rest.remove_prefix(part.size());
    };
    if (const auto scheme = url.scheme()) {
        expect(!scheme->empty());
        take(*scheme);
        take(":");
    }
    const bool hasAuthority = rest.starts_with("//");
    expect(hasAuthority || (!url.user() && !url.host() && !url.port()));
    if (hasAuthority) {
        take("//");
        if (const auto user = url.user()) {
            take(*user);
            if (const auto password = url.password()) {
                take(":");
                take(*password);
            }
            take("@");
        }
        const bool isInBrackets = rest.starts_with('[');
        take(isInBrackets ? "[" : "");
        take(url.host().value_or(""));
        take(isInBrackets ? "]" : "");
        const std::string_view port = rest.substr(0, rest.find_first_of("/?#"));
        expect(isPortBehind(port));
        expect(!url.port() || std::stoul(std::string(port.substr(1))) == *url.port());
        take(port);
    }
    const std::string_view path = rest.substr(0, rest.find_first_of("?#"));
    expect(tav::percentDecoded(path) == url.path());
    take(path);
    if (const auto query = url.query()) {
        take("?");
        take(*query);
    }
    if (const auto fragment = url.fragment()) {
        take("#");
        take(*fragment);
    }
    expect(rest.empty());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    using namespace tav;
    const std::string_view text(reinterpret_cast<const char*>(bytes), size);
    if (const auto url = Url::withString(text)) {
        expect(url->absoluteString() == text);
        expectPartsInOrder(*url);
    }
    if (const auto recognised = isURL(text)) {
        expect(*recognised == text || *recognised == "http://" + std::string(text));
        expect(text.starts_with("mailto:") || text.starts_with("aim:") ||
               Url::withString(*recognised).has_value());
    }
    const std::string encoded = urlEncodedString(text);
    expect(percentDecoded(encoded) == text);
    expect(Url::withString("x:/a" + encoded).has_value());
    if (const auto decoded = percentDecoded(text)) {
        expect(decoded->size() <= text.size());
    }
    return 0;
}
