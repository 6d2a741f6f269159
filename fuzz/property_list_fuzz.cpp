// Any bytes end in a value or an error; what was read can be written, and reads back as the same.

#include "base/PropertyList.hpp"

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
    const auto value = PropertyList::read(std::as_bytes(std::span(bytes, size)), &error);
    if (!value) {
        expect(!error.reason.empty());
        return 0;
    }
    expect(*value == Value(*value));
    static_cast<void>(value->description());

    // Small lists may expand; the list that is written back has to stay within what is read.
    const auto binary = PropertyList::write(*value, PropertyList::Form::Binary, &error);
    expect(binary.has_value());
    const auto fromBinary = PropertyList::readBinary(*binary, &error);
    expect(fromBinary && *fromBinary == *value);

    // XML does not hold every text and every date, and dates in whole seconds only: what it gives
    // back, it has to give back again.
    if (const auto xml = PropertyList::write(*value, PropertyList::Form::XML, &error)) {
        const auto fromXML = PropertyList::readXML(*xml, &error);
        expect(fromXML.has_value());
        const auto again = PropertyList::write(*fromXML, PropertyList::Form::XML, &error);
        expect(again && *again == *xml);
    } else {
        expect(!error.reason.empty());
    }
    return 0;
}
