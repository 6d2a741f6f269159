#include "process/ProcessEnvironment.hpp"

#include <algorithm>

namespace tav {
namespace {

bool isNameLess(const ProcessEnvironment::Entry& a, const ProcessEnvironment::Entry& b) {
    return a.first < b.first;
}

} // namespace

ProcessEnvironment::ProcessEnvironment(std::shared_ptr<const void> block,
                                       std::vector<Entry> entries)
    : block_(std::move(block)), entries_(std::move(entries)) {
    std::stable_sort(entries_.begin(), entries_.end(), isNameLess);
    const auto isSameName = [](const Entry& a, const Entry& b) { return a.first == b.first; };
    entries_.erase(std::unique(entries_.begin(), entries_.end(), isSameName), entries_.end());
}

ProcessEnvironment::ProcessEnvironment(std::initializer_list<Entry> entries) {
    std::string texts;
    for (const auto& [name, value] : entries) {
        texts.append(name).append(value);
    }
    const auto block = std::make_shared<const std::string>(std::move(texts));
    std::string_view rest = *block;
    const auto take = [&rest](std::size_t size) {
        const std::string_view taken = rest.substr(0, size);
        rest.remove_prefix(size);
        return taken;
    };
    std::vector<Entry> views;
    for (const auto& [name, value] : entries) {
        const std::string_view ownName = take(name.size());
        views.emplace_back(ownName, take(value.size()));
    }
    *this = ProcessEnvironment(block, std::move(views));
}

std::optional<std::string_view> ProcessEnvironment::find(std::string_view name) const {
    const auto found =
        std::lower_bound(entries_.begin(), entries_.end(), Entry(name, {}), isNameLess);
    if (found == entries_.end() || found->first != name) {
        return std::nullopt;
    }
    return found->second;
}

} // namespace tav
