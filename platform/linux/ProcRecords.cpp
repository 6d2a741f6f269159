#include "platform/linux/ProcRecords.hpp"

#include <algorithm>
#include <charconv>
#include <system_error>

namespace tav::internal {
namespace {

/// The numbers behind the state in /proc/PID/stat, by their places in the line (from 1).
constexpr std::size_t parentField = 4;
constexpr std::size_t groupField = 5;
constexpr std::size_t terminalField = 7;
constexpr std::size_t terminalGroupField = 8;
constexpr std::size_t stackStartField = 28;
constexpr std::size_t exitSignalField = 38;

/// Takes one decimal number and the blanks before it. Numbers above 63 bits (masks, limits) are
/// cut.
std::optional<std::int64_t> takeNumber(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
    std::int64_t number = 0;
    const char* const end = text.data() + text.size();
    auto [rest, error] = std::from_chars(text.data(), end, number);
    if (error == std::errc::invalid_argument) {
        return std::nullopt;
    }
    text.remove_prefix(static_cast<std::size_t>(rest - text.data()));
    return number;
}

std::optional<int> asInt(std::int64_t number) {
    if (number < INT32_MIN || number > INT32_MAX) {
        return std::nullopt;
    }
    return static_cast<int>(number);
}

/// What stands behind "Name:" at the beginning of a line.
std::optional<std::string_view> statusLine(std::string_view text, std::string_view name) {
    while (!text.empty()) {
        const std::size_t length = std::min(text.find('\n'), text.size());
        const std::string_view line = text.substr(0, length);
        if (line.size() > name.size() && line.starts_with(name) && line[name.size()] == ':') {
            return line.substr(name.size() + 1);
        }
        text.remove_prefix(std::min(length + 1, text.size()));
    }
    return std::nullopt;
}

std::optional<std::uint32_t> takeIdentifier(std::string_view& text) {
    const std::optional<std::int64_t> number = takeNumber(text);
    if (!number || *number < 0 || *number > std::int64_t{UINT32_MAX}) {
        return std::nullopt;
    }
    return static_cast<std::uint32_t>(*number);
}

} // namespace

std::optional<StatRecord> parseProcStat(std::string_view text) {
    const std::size_t open = text.find('(');
    const std::size_t close = text.rfind(')');
    if (open == std::string_view::npos || close == std::string_view::npos || close < open) {
        return std::nullopt;
    }
    StatRecord record;
    std::string_view before = text.substr(0, open);
    const std::optional<std::int64_t> identifier = takeNumber(before);
    std::string_view rest = text.substr(close + 1);
    if (!identifier || !asInt(*identifier) || rest.size() < 2 || rest.front() != ' ') {
        return std::nullopt;
    }
    record.process.processIdentifier = *asInt(*identifier);
    record.process.shortName = text.substr(open + 1, close - open - 1);
    const char state = rest[1];
    record.process.isZombie = state == 'Z';
    record.isDead = state == 'X' || state == 'x';
    rest.remove_prefix(2);

    std::int64_t fields[exitSignalField + 1] = {};
    for (std::size_t field = parentField; field <= exitSignalField; ++field) {
        const std::optional<std::int64_t> number = takeNumber(rest);
        if (!number) {
            if (field <= terminalGroupField) {
                return std::nullopt;
            }
            break;
        }
        fields[field] = *number;
    }
    for (const std::size_t field :
         {parentField, groupField, terminalField, terminalGroupField, exitSignalField}) {
        if (!asInt(fields[field])) {
            return std::nullopt;
        }
    }
    record.process.parent = static_cast<int>(fields[parentField]);
    record.process.processGroup = static_cast<int>(fields[groupField]);
    record.process.terminal = static_cast<int>(fields[terminalField]);
    record.process.terminalProcessGroup = std::max(0, static_cast<int>(fields[terminalGroupField]));
    // The kernel's own test: only the leader of a thread group has a signal to end with.
    record.isThread = fields[exitSignalField] < 0;
    record.stackStart = static_cast<std::uint64_t>(fields[stackStartField]);
    return record;
}

std::optional<ProcessUsers> parseProcStatusUsers(std::string_view text) {
    std::optional<std::string_view> group = statusLine(text, "Tgid");
    std::optional<std::string_view> process = statusLine(text, "Pid");
    std::optional<std::string_view> users = statusLine(text, "Uid");
    if (!group || !process || !users || takeNumber(*group) != takeNumber(*process)) {
        return std::nullopt;
    }
    const std::optional<std::uint32_t> real = takeIdentifier(*users);
    const std::optional<std::uint32_t> effective = takeIdentifier(*users);
    if (!real || !effective) {
        return std::nullopt;
    }
    return ProcessUsers{*real, *effective};
}

std::optional<StatusGroups> parseProcStatusGroups(std::string_view text) {
    std::optional<std::string_view> real = statusLine(text, "Gid");
    std::optional<std::string_view> supplementary = statusLine(text, "Groups");
    if (!real || !supplementary) {
        return std::nullopt;
    }
    const std::optional<std::uint32_t> group = takeIdentifier(*real);
    if (!group) {
        return std::nullopt;
    }
    StatusGroups groups{*group, {}};
    while (const std::optional<std::uint32_t> other = takeIdentifier(*supplementary)) {
        groups.supplementary.push_back(*other);
    }
    return groups;
}

std::int32_t countArguments(std::string_view arguments, std::int64_t declared) {
    auto texts = std::count(arguments.begin(), arguments.end(), '\0');
    if (!arguments.empty() && arguments.back() != '\0') {
        ++texts;
    }
    if (texts != declared) {
        while (arguments.ends_with(std::string_view("\0\0", 2))) {
            arguments.remove_suffix(1);
            --texts;
        }
    }
    return static_cast<std::int32_t>(std::min<std::int64_t>(texts, INT32_MAX));
}

} // namespace tav::internal
