// Any bytes end in a value or an error; what was read is written and reads back as the same.

#include "base/OldStyleText.hpp"

#include <cstdint>
#include <cstdlib>
#include <span>

namespace {

void expect(bool holds) {
    if (!holds) {
        std::abort();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    using namespace tav;
    PropertyList::Error error;
    const auto value = OldStyleText::read(std::as_bytes(std::span(bytes, size)), &error);
    if (!value) {
        expect(!error.reason.empty() && error.offset <= size);
        return 0;
    }
    const std::string text = OldStyleText::write(*value);
    const auto back = OldStyleText::read(text, &error);
    expect(back && *back == *value);
    expect(OldStyleText::write(*back) == text);
    return 0;
}
