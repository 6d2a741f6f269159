// Any bytes are a catalogue of translations or none. What is one finds each of its texts, and
// nothing that it has not.

#include "platform/MessageCatalogue.hpp"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <string>
#include <string_view>

namespace {

void expect(bool holds) {
    if (!holds) {
        std::abort();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    using namespace tav;
    const BytesView input = std::as_bytes(std::span(bytes, size));
    const auto catalogue = MessageCatalogue::read(Data(input.begin(), input.end()));
    if (!catalogue) {
        return 0;
    }
    // An entry of each of the two tables.
    expect(catalogue->messages().size() <= size / 8);
    std::string_view previous;
    for (const auto& [text, translation] : catalogue->messages()) {
        expect(!text.empty() && !translation.empty());
        expect(text >= previous);
        const auto found = catalogue->find(text);
        expect(found.has_value() && !found->empty());
        expect(text == previous || *found == translation);
        expect(!catalogue->find(std::string(text) + '\0').has_value());
        previous = text;
    }
    expect(!catalogue->find("").has_value());
    return 0;
}
