// Argument areas in both layouts: the first byte chooses.

#include "process/ProcessArguments.hpp"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    tav::ArgumentArea area;
    area.layout = (bytes[0] & 1U) != 0 ? tav::ArgumentArea::Layout::Counted
                                       : tav::ArgumentArea::Layout::Plain;
    const auto rest = std::as_bytes(std::span(bytes + 1, size - 1));
    area.bytes.assign(rest.begin(), rest.end());
    const tav::ProcessArguments found = tav::parseArgumentArea(area);
    if (found.command && found.command->empty()) {
        std::abort();
    }
    return 0;
}
