#include "platform/linux/OldInstance.hpp"

#include "platform/linux/LinuxProcessTable.hpp"
#include "platform/linux/SessionBus.hpp"

#include <memory>

#include <poll.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace tav::internal {
namespace {

/// How often the bus is asked again, in milliseconds: nobody sees a start that is this much later.
constexpr int nameInterval = 10;

bool runsFrom(LinuxProcessTable& table, int process, const std::string& folder) {
    const std::optional<std::string> link = table.executableLink(process);
    if (!link || (!link->starts_with(folder) && !link->ends_with(removedExecutableMark))) {
        return false;
    }
    const std::optional<std::string> path = table.executablePath(process);
    return path && path->starts_with(folder);
}

} // namespace

std::vector<Descriptor> holdProcessesOfBundle(LinuxProcessTable& table, std::string_view bundlePath,
                                              std::uint32_t user) {
    const std::string folder = std::string(bundlePath) + "/Contents/MacOS/";
    std::vector<Descriptor> held;
    for (const int process :
         table.processes(ProcessSelector::All, 0).value_or(std::vector<int>())) {
        if (process == ::getpid() || !runsFrom(table, process, folder)) {
            continue;
        }
        Descriptor descriptor(static_cast<int>(::syscall(SYS_pidfd_open, process, 0)));
        const std::optional<ProcessUsers> users = table.users(process);
        // Asked again: the number may have gone to another process before it was held.
        if (descriptor.isOpen() && users && users->real == user &&
            runsFrom(table, process, folder)) {
            held.push_back(std::move(descriptor));
        }
    }
    return held;
}

void waitForEnd(const std::vector<Descriptor>& processes, const Deadline& deadline) {
    for (const Descriptor& process : processes) {
        ::pollfd ended = {process.number(), POLLIN, 0};
        static_cast<void>(
            retryInterrupted([&] { return ::poll(&ended, 1, deadline.remainingMilliseconds()); }));
    }
}

void waitForFreeName(const std::string& name, const Deadline& deadline) {
    std::unique_ptr<SessionBus> bus;
    if (checkBusName(name) != Status::Success || openSessionBus(deadline, bus) != Status::Success) {
        return;
    }
    while (!deadline.hasPassed() && bus->findOwner(name, deadline) == Status::Success) {
        ::poll(nullptr, 0, nameInterval);
    }
}

} // namespace tav::internal
