#include "platform/linux/KeyFile.hpp"

#include "platform/linux/TextLines.hpp"

#include <algorithm>
#include <charconv>
#include <cstddef>

namespace tav::internal {
namespace {

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view space = " \t\r";
    const std::size_t start = text.find_first_not_of(space);
    return start == std::string_view::npos
               ? std::string_view()
               : text.substr(start, text.find_last_not_of(space) - start + 1);
}

} // namespace

KeyFile::KeyFile(std::string_view text) {
    Group* group = nullptr;
    forEachLine(text, [&](std::string_view whole) {
        const std::string_view line = trimmed(whole);
        const std::size_t equals = line.find('=');
        if (line.size() > 2 && line.front() == '[' && line.back() == ']') {
            group = &groups_[std::string(line.substr(1, line.size() - 2))];
        } else if (group != nullptr && !line.starts_with('#') && equals != std::string_view::npos) {
            group->emplace(trimmed(line.substr(0, equals)), trimmed(line.substr(equals + 1)));
        }
    });
}

const std::string& KeyFile::value(std::string_view group, std::string_view key) const {
    static const std::string none;
    const auto foundGroup = groups_.find(group);
    if (foundGroup == groups_.end()) {
        return none;
    }
    const auto found = foundGroup->second.find(key);
    return found != foundGroup->second.end() ? found->second : none;
}

std::vector<std::string> KeyFile::list(std::string_view group, std::string_view key) const {
    std::vector<std::string> items;
    std::string_view rest = value(group, key);
    while (!rest.empty()) {
        const std::size_t comma = std::min(rest.find(','), rest.size());
        const std::string_view item = trimmed(rest.substr(0, comma));
        rest.remove_prefix(std::min(comma + 1, rest.size()));
        if (!item.empty()) {
            items.emplace_back(item);
        }
    }
    return items;
}

unsigned KeyFile::number(std::string_view group, std::string_view key, unsigned otherwise) const {
    constexpr unsigned largest = 1000000;
    const std::string& text = value(group, key);
    const char* const end = text.data() + text.size();
    unsigned number = 0;
    const auto read = std::from_chars(text.data(), end, number);
    return read.ec == std::errc() && read.ptr == end && number <= largest ? number : otherwise;
}

} // namespace tav::internal
