#include "platform/linux/MountTable.hpp"

#include <algorithm>
#include <charconv>
#include <optional>
#include <utility>

namespace tav {

namespace {

/// Takes what stands before the next separator, and the separator.
std::string_view takeUntil(std::string_view& text, char separator) {
    const std::size_t end = std::min(text.find(separator), text.size());
    const std::string_view taken = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return taken;
}

bool isOctal(char c) { return c >= '0' && c <= '7'; }

/// The kernel writes blanks, tabs, line feeds, backslashes and "#" as "\040" and the like.
std::string unescaped(std::string_view field) {
    std::string text;
    text.reserve(field.size());
    for (std::size_t i = 0; i < field.size(); ++i) {
        const bool isEscape = field[i] == '\\' && field.size() - i > 3 && field[i + 1] <= '3' &&
                              isOctal(field[i + 1]) && isOctal(field[i + 2]) &&
                              isOctal(field[i + 3]);
        if (!isEscape) {
            text += field[i];
            continue;
        }
        text += static_cast<char>((field[i + 1] - '0') * 64 + (field[i + 2] - '0') * 8 +
                                  (field[i + 3] - '0'));
        i += 3;
    }
    return text;
}

/// "36 35 98:0 /root /mount/point rw,noatime optional:1 optional - ext3 /dev/root rw".
std::optional<Mount> mountOfLine(std::string_view line) {
    Mount mount;
    const std::string_view identifier = takeUntil(line, ' ');
    const auto [end, error] =
        std::from_chars(identifier.data(), identifier.data() + identifier.size(), mount.identifier);
    if (error != std::errc() || end != identifier.data() + identifier.size()) {
        return std::nullopt;
    }
    takeUntil(line, ' '); // the mount that it lies on
    mount.device = takeUntil(line, ' ');
    takeUntil(line, ' '); // what of the volume is mounted
    mount.path = unescaped(takeUntil(line, ' '));
    // As many fields as there are, none of them a single "-", then that.
    const std::size_t dash = line.find(" - ");
    if (dash == std::string_view::npos || !mount.path.starts_with('/')) {
        return std::nullopt;
    }
    line.remove_prefix(dash + 3);
    mount.typeName = unescaped(takeUntil(line, ' '));
    return mount;
}

} // namespace

MountTable::MountTable(std::string_view text) {
    while (!text.empty()) {
        if (auto mount = mountOfLine(takeUntil(text, '\n'))) {
            const std::uint64_t identifier = mount->identifier;
            mounts_.emplace(identifier, *std::move(mount));
        }
    }
}

const Mount* MountTable::find(std::uint64_t identifier) const {
    const auto found = mounts_.find(identifier);
    return found == mounts_.end() ? nullptr : &found->second;
}

} // namespace tav
