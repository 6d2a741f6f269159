#include "process/KernelFacts.hpp"

#include "platform/ProcessTable.hpp"

#include <algorithm>
#include <charconv>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

namespace tav {
namespace {

constinit KernelFacts facts;

/// Takes a decimal number from the beginning of a text, as "%d" does: blanks and a sign may stand
/// before it, and what does not fit ends at the widest.
std::optional<int> scanNumber(std::string_view& text) {
    std::string_view rest = text;
    rest.remove_prefix(std::min(rest.find_first_not_of(" \t\n\v\f\r"), rest.size()));
    if (rest.starts_with('+')) {
        rest.remove_prefix(1);
    }
    int number = 0;
    const auto [end, error] = std::from_chars(rest.data(), rest.data() + rest.size(), number);
    if (error == std::errc::invalid_argument) {
        return std::nullopt;
    }
    if (error == std::errc::result_out_of_range) {
        number = rest.starts_with('-') ? std::numeric_limits<int>::min()
                                       : std::numeric_limits<int>::max();
    }
    rest.remove_prefix(static_cast<std::size_t>(end - rest.data()));
    text = rest;
    return number;
}

} // namespace

const KernelFacts& kernelFacts() {
    [[maybe_unused]] static const Status firstReading = ZoMachStatsInit();
    return facts;
}

Status ZoMachStatsInit() {
    ProcessTable& table = ProcessTable::current();
    const std::optional<std::string> release = table.kernelRelease();
    if (!release) {
        return kernelFailure;
    }
    facts.major_version = facts.minor_version = facts.update_version = 0;
    std::string_view rest = *release;
    for (int* version : {&facts.major_version, &facts.minor_version, &facts.update_version}) {
        const std::optional<int> number = scanNumber(rest);
        if (!number) {
            break;
        }
        *version = *number;
        if (!rest.starts_with('.')) {
            break;
        }
        rest.remove_prefix(1);
    }
    facts.global_shared_text_segment = facts.major_version > 5 ? 0x90000000U : 0x70000000U;
    facts.shared_data_region_size = facts.shared_text_region_size = 0x10000000U;
    facts.argument_buffer_size = table.argumentMaximum().value_or(4096);
    if (facts.major_version <= 6 && facts.argument_buffer_size > 8192) {
        facts.argument_buffer_size = 8192;
    }
    return Status::Success;
}

} // namespace tav
