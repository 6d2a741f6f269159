// The lookups of ZoProcess by name, path and bundle.

#include "base/PathString.hpp"
#include "base/Unicode.hpp"
#include "platform/Bundle.hpp"
#include "platform/FileSystem.hpp"
#include "process/ZoProcess.hpp"

#include <csignal>
#include <string>
#include <string_view>

namespace tav {
namespace {

/// The bundle folder by the place of the executable alone: three components up.
std::optional<std::string> folderThreeLevelsUp(const ZoProcess& process) {
    std::optional<std::string> path = process.executablePath();
    for (int level = 0; path && level < 3; ++level) {
        path = stringByDeletingLastPathComponent(*path);
    }
    return path;
}

bool runsFromBundle(const ZoProcess& process, std::string_view identifier) {
    const std::optional<std::string> folder = folderThreeLevelsUp(process);
    if (!folder || !FileSystem::current().attributes(*folder).ok()) {
        return false;
    }
    const std::optional<Bundle> bundle = Bundle::bundleWithPath(*folder);
    const std::optional<std::string> found = bundle ? bundle->bundleIdentifier() : std::nullopt;
    return found && !found->empty() && *found == identifier;
}

bool matches(const ZoProcess& process, std::string_view name, OptionalText identifier) {
    return equalsIgnoringCase(process.command(), name) &&
           (identifier.isNil() || runsFromBundle(process, *identifier));
}

/// The first process of the effective user that the test takes.
template <class Test>
std::optional<ZoProcess> firstUserProcess(const Test& test) {
    for (const ZoProcess& process : ZoProcess::userProcesses()) {
        if (test(process)) {
            return process;
        }
    }
    return std::nullopt;
}

} // namespace

std::optional<ZoProcess::List> ZoProcess::processesWithName(OptionalText name,
                                                            OptionalText withIdentifier) {
    if (name.isNil()) {
        return std::nullopt;
    }
    List processes = userProcesses();
    std::erase_if(processes, [&](const ZoProcess& process) {
        return !matches(process, *name, withIdentifier);
    });
    return processes;
}

std::optional<ZoProcess> ZoProcess::processWithName(OptionalText name,
                                                    OptionalText withIdentifier) {
    if (name.isNil()) {
        return std::nullopt;
    }
    return firstUserProcess(
        [&](const ZoProcess& process) { return matches(process, *name, withIdentifier); });
}

std::optional<ZoProcess> ZoProcess::processWithExecutablePath(OptionalText path) {
    if (path.isNil()) {
        return std::nullopt;
    }
    return firstUserProcess([&](const ZoProcess& process) {
        const std::optional<std::string> executable = process.executablePath();
        return executable && equalsIgnoringCase(*executable, *path);
    });
}

std::optional<ZoProcess> ZoProcess::processWithPathToBundle(OptionalText path) {
    if (path.isNil()) {
        return std::nullopt;
    }
    return firstUserProcess([&](const ZoProcess& process) {
        const std::optional<std::string> folder = folderThreeLevelsUp(process);
        return folder && equalsIgnoringCase(*folder, *path);
    });
}

ZoProcess::List ZoProcess::processesForCommand(std::string_view command) {
    List processes = allProcesses();
    std::erase_if(processes,
                  [&](const ZoProcess& process) { return process.command() != command; });
    return processes;
}

std::optional<ZoProcess> ZoProcess::processForCommand(std::string_view command) {
    const List processes = processesForCommand(command);
    return processes.empty() ? std::nullopt : std::optional(processes.front());
}

void ZoProcess::terminateProcessName(OptionalText name, OptionalText withIdentifier) {
    if (const std::optional<ZoProcess> process = processWithName(name, withIdentifier)) {
        process->kill(SIGKILL);
    }
}

} // namespace tav
