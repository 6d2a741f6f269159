#pragma once

#include "platform/ProcessTable.hpp"
#include "platform/linux/Descriptor.hpp"

namespace tav::internal {

struct StatRecord;

/// The process table as /proc shows it. Everything about one process is asked relative to the open
/// /proc, which stays open for the life of the table.
class LinuxProcessTable final : public ProcessTable {
  public:
    LinuxProcessTable();

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
    int currentProcess() override;
    std::uint32_t effectiveUser() override;
    std::optional<std::string> kernelRelease() override;
    std::optional<int> argumentMaximum() override;

    /// The environment as the process was started with it, each text with a NUL behind it; nothing
    /// when the caller may not read it.
    std::optional<Data> environment(int process);
    /// The whole of /proc/PID/NAME.
    std::optional<Data> contents(int process, std::string_view name);

  private:
    Result<Descriptor> open(int process, std::string_view name);
    /// As much of /proc/PID/NAME as one read gives; it is empty when there is no such process.
    std::string_view beginning(int process, std::string_view name, std::span<char> buffer);
    /// Appends the whole of /proc/PID/NAME; false when it cannot be read.
    bool append(int process, std::string_view name, Data& bytes);
    std::int32_t argumentCount(int process, std::string_view arguments);
    bool matches(int process, ProcessSelector selector, int value);
    std::optional<StatRecord> statRecord(int process);
    /// Whether an absolute path leads the process to the same file as us.
    bool isSamePlace(int process, const std::string& path);
    std::optional<std::string> firstArgumentPath(int process);

    Descriptor folder_;
};

/// The table behind `realProcessTable()`.
LinuxProcessTable& linuxProcessTable();

} // namespace tav::internal
