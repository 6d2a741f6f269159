#pragma once

#include "platform/ProcessTable.hpp"

#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tav {

/// A process of the in-memory table. Every part may be set by hand; what is not set reads as for a
/// program that was started from `executable` with `arguments`.
struct MemoryProcess {
    ProcessRecord record;
    ProcessUsers users;
    std::optional<std::string> executable; ///< Nothing: unreadable, as for other users' processes.
    /// What the kernel's link says; `executable` unless set. Must keep to the contract of
    /// `ProcessTable::executableLink`.
    std::optional<std::string> link;
    std::vector<std::string> arguments; ///< With the command's own text first.
    std::vector<std::string> environment;
    std::optional<ArgumentArea> area; ///< In place of what would be made from the above.
    bool refusesArea = false;
    bool refusesSignals = false;
};

/// A process table in memory: what it answers is what was put into it. It keeps the signals that
/// were sent and the questions that were asked. One thread.
class MemoryProcessTable final : public ProcessTable {
  public:
    /// In the kernel's order. To be changed freely between calls.
    std::vector<MemoryProcess> table;
    int ownProcess = 1;
    std::uint32_t ownUser = 0;
    std::optional<std::string> release = "10.0.0";
    std::optional<int> maximum = 262144;
    bool isUnreadable = false; ///< Listings fail.

    /// Called at each signal, before it is answered.
    std::function<void(int process, int number)> onSignal;

    /// Adds a process that runs an executable, and answers it for further changes.
    MemoryProcess& add(int process, std::string_view executable);

    /// The signals that were delivered, in their order.
    [[nodiscard]] const std::vector<std::pair<int, int>>& signals() const { return signals_; }
    /// Each question as "operation PID", in their order.
    std::vector<std::string> questions;

    std::optional<std::vector<int>> processes(ProcessSelector selector, int value) override;
    std::optional<ProcessRecord> record(int process) override;
    std::optional<ProcessUsers> users(int process) override;
    std::optional<std::uint32_t> userOf(int process) override;
    std::optional<ArgumentArea> argumentArea(int process, std::string_view path,
                                             ArgumentArea::Layout wanted,
                                             std::size_t bufferSize) override;
    std::optional<std::string> executableLink(int process) override;
    std::optional<std::string> executablePathOfLink(int process, std::string link) override;
    bool signal(int process, int number) override;
    int currentProcess() override { return ownProcess; }
    std::uint32_t effectiveUser() override { return ownUser; }
    std::optional<std::string> kernelRelease() override { return release; }
    std::optional<int> argumentMaximum() override { return maximum; }

  private:
    MemoryProcess* find(int process);

    std::vector<std::pair<int, int>> signals_;
};

/// The bytes of an argument area in one of its layouts, from its parts.
[[nodiscard]] ArgumentArea argumentAreaFromParts(ArgumentArea::Layout layout,
                                                 std::string_view executablePath,
                                                 const std::vector<std::string>& arguments,
                                                 const std::vector<std::string>& environment);

} // namespace tav
