#include "platform/memory/MemoryProcessTable.hpp"

#include "base/PathString.hpp"

#include <algorithm>

namespace tav {

MemoryProcess& MemoryProcessTable::add(int process, std::string_view executable) {
    MemoryProcess& added = table.emplace_back();
    added.record.processIdentifier = process;
    added.record.parent = 1;
    added.record.processGroup = process;
    added.record.shortName = lastPathComponent(executable).substr(0, 15);
    added.users = {ownUser, ownUser};
    added.executable = executable;
    added.arguments = {std::string(executable)};
    return added;
}

MemoryProcess* MemoryProcessTable::find(int process) {
    const auto found = std::find_if(table.begin(), table.end(), [process](const auto& entry) {
        return entry.record.processIdentifier == process;
    });
    return found == table.end() ? nullptr : &*found;
}

std::optional<std::vector<int>> MemoryProcessTable::processes(ProcessSelector selector, int value) {
    questions.push_back("processes " + std::to_string(static_cast<int>(selector)));
    if (isUnreadable) {
        return std::nullopt;
    }
    std::vector<int> found;
    for (const MemoryProcess& entry : table) {
        bool matches = false;
        switch (selector) {
        case ProcessSelector::All:
            matches = true;
            break;
        case ProcessSelector::ProcessGroup:
            matches = entry.record.processGroup == value;
            break;
        case ProcessSelector::Terminal:
            matches = entry.record.terminal == value;
            break;
        case ProcessSelector::User:
            matches = entry.users.effective == static_cast<std::uint32_t>(value);
            break;
        case ProcessSelector::RealUser:
            matches = entry.users.real == static_cast<std::uint32_t>(value);
            break;
        }
        if (matches) {
            found.push_back(entry.record.processIdentifier);
        }
    }
    return found;
}

std::optional<ProcessRecord> MemoryProcessTable::record(int process) {
    questions.push_back("record " + std::to_string(process));
    const MemoryProcess* const found = find(process);
    return found != nullptr ? std::optional(found->record) : std::nullopt;
}

std::optional<ProcessUsers> MemoryProcessTable::users(int process) {
    questions.push_back("users " + std::to_string(process));
    const MemoryProcess* const found = find(process);
    return found != nullptr ? std::optional(found->users) : std::nullopt;
}

std::optional<std::uint32_t> MemoryProcessTable::userOf(int process) {
    const std::optional<ProcessUsers> found = users(process);
    return found ? std::optional(found->effective) : std::nullopt;
}

std::optional<ArgumentArea> MemoryProcessTable::argumentArea(int process, std::string_view path,
                                                             ArgumentArea::Layout wanted,
                                                             std::size_t bufferSize) {
    questions.push_back("argumentArea " + std::to_string(process));
    const MemoryProcess* const found = find(process);
    if (found == nullptr || found->refusesArea || found->record.isZombie) {
        return std::nullopt;
    }
    if (found->area) {
        return found->area;
    }
    ArgumentArea area = argumentAreaFromParts(wanted, path, found->arguments, found->environment);
    area.bytes.resize(std::min(area.bytes.size(), bufferSize));
    return area;
}

std::optional<std::string> MemoryProcessTable::executableLink(int process) {
    questions.push_back("executableLink " + std::to_string(process));
    const MemoryProcess* const found = find(process);
    if (found == nullptr) {
        return std::nullopt;
    }
    return found->link ? found->link : found->executable;
}

std::optional<std::string> MemoryProcessTable::executablePathOfLink(int process,
                                                                    std::string /*link*/) {
    questions.push_back("executablePath " + std::to_string(process));
    const MemoryProcess* const found = find(process);
    return found != nullptr ? found->executable : std::nullopt;
}

bool MemoryProcessTable::signal(int process, int number) {
    const MemoryProcess* const found = process > 0 ? find(process) : nullptr;
    if (found == nullptr || found->refusesSignals) {
        return false;
    }
    signals_.emplace_back(process, number);
    if (onSignal) {
        onSignal(process, number);
    }
    return true;
}

ArgumentArea argumentAreaFromParts(ArgumentArea::Layout layout, std::string_view executablePath,
                                   const std::vector<std::string>& arguments,
                                   const std::vector<std::string>& environment) {
    std::string text;
    if (layout == ArgumentArea::Layout::Counted) {
        const auto count = static_cast<std::int32_t>(arguments.size());
        text.append(reinterpret_cast<const char*>(&count), sizeof count);
    }
    text += executablePath;
    text += '\0';
    for (const std::vector<std::string>* part : {&arguments, &environment}) {
        for (const std::string& entry : *part) {
            text += entry;
            text += '\0';
        }
    }
    return {layout, dataFromText(text)};
}

} // namespace tav
