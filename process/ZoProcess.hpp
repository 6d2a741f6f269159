#pragma once

#include "base/OptionalText.hpp"
#include "platform/ProcessTable.hpp"
#include "process/ProcessArguments.hpp"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tav {

/// What `ZoProcess::state` answers; the values in between are never produced.
enum class ZoProcessState : int {
    Active = 0, ///< Running, sleeping and stopped are not told apart.
    Zombie = 6,
    Gone = 7,
};

/// One running process, known by its identifier. A small value: only what tells how the process was
/// started is remembered (from the first question on, never read again); everything else asks the
/// kernel afresh, so a reused identifier is answered for the new process.
///
/// Nothing here raises. Copies share what was remembered; not to be shared between threads.
class ZoProcess final {
  public:
    using List = std::vector<ZoProcess>;

    /// Looks at the kernel anew (`ZoMachStatsInit`), as happens by itself before the first use.
    static void initialize();

    // ---- Finding one process. Nothing when there is none. "Name lookups" walk the processes of
    // the effective user and compare ignoring case; what is found is the first in the kernel's
    // order.

    /// Also a zombie.
    [[nodiscard]] static std::optional<ZoProcess>
    processForProcessIdentifier(int processIdentifier);
    [[nodiscard]] static ZoProcess currentProcess();
    /// The first whose `command` is exactly this, over all users.
    [[nodiscard]] static std::optional<ZoProcess> processForCommand(std::string_view command);
    /// The first of `processesWithName`.
    [[nodiscard]] static std::optional<ZoProcess> processWithName(OptionalText name,
                                                                  OptionalText withIdentifier);
    [[nodiscard]] static std::optional<ZoProcess> processWithExecutablePath(OptionalText path);
    /// The path of the folder three levels above the executable.
    [[nodiscard]] static std::optional<ZoProcess> processWithPathToBundle(OptionalText path);

    // ---- Listings, in the kernel's order. Each is one new walk over the table; empty when the
    // table cannot be read.

    [[nodiscard]] static List allProcesses();
    /// Those of the effective user.
    [[nodiscard]] static List userProcesses();
    [[nodiscard]] static List processesForUser(std::uint32_t user);
    [[nodiscard]] static List processesForRealUser(std::uint32_t user);
    /// By device number, as in `st_rdev`.
    [[nodiscard]] static List processesForTerminal(int deviceNumber);
    [[nodiscard]] static List processesForProcessGroup(int group);
    /// Those whose `command` is exactly this, over all users.
    [[nodiscard]] static List processesForCommand(std::string_view command);
    /// The effective user's processes with this command (ignoring case) and, unless the identifier
    /// is nil, from a bundle with exactly this identifier. Nothing (not an empty list) for a nil
    /// name.
    [[nodiscard]] static std::optional<List> processesWithName(OptionalText name,
                                                               OptionalText withIdentifier);

    /// Kills (`SIGKILL`) what `processWithName` finds.
    static void terminateProcessName(OptionalText name, OptionalText withIdentifier);

    // ---- The kernel's record, asked for at each call; -1 when the process is gone.

    [[nodiscard]] int processIdentifier() const { return process_; }
    [[nodiscard]] ZoProcessState state() const;
    [[nodiscard]] int realUserIdentifier() const;
    /// The effective user.
    [[nodiscard]] int userIdentifier() const;
    /// Device number of the controlling terminal; -1 also without one.
    [[nodiscard]] int terminal() const;
    /// The terminal's foreground group; -1 also without a terminal.
    [[nodiscard]] int terminalProcessGroup() const;
    [[nodiscard]] int processGroup() const;
    [[nodiscard]] int parentProcessIdentifier() const;

    // ---- Family.

    [[nodiscard]] std::optional<ZoProcess> parent() const;
    [[nodiscard]] List children() const;
    /// The other processes with the same parent.
    [[nodiscard]] List siblings() const;

    // ---- How it was started: read once, at the first question.

    /// Nothing when it cannot be told or is no UTF-8.
    [[nodiscard]] std::optional<std::string> executablePath() const;
    /// Last path component of the program; the kernel's short name where the arguments cannot be
    /// read, empty when the process was gone by then.
    [[nodiscard]] const std::string& command() const;
    /// See `ProcessArguments::annotation`.
    [[nodiscard]] const std::optional<std::string>& annotation() const;
    /// "command (annotation)", or the command alone.
    [[nodiscard]] std::string annotatedCommand() const;
    /// Without the command.
    [[nodiscard]] const std::vector<std::string>& arguments() const;
    [[nodiscard]] const ProcessEnvironment& environment() const;

    /// All of the above in one text, for logs.
    [[nodiscard]] std::string description() const;

    /// Whether the executable can be one that lies in a folder `Contents/MacOS` (names ignoring
    /// case). False is certain, true has to be looked into; one question to the kernel, which
    /// spares those after it for nearly every process.
    [[nodiscard]] bool mayRunFromBundle() const;

    // ---- Signals. Whether it was delivered.

    bool kill(int signal) const;
    bool terminate() const; ///< `SIGTERM`
    bool interrupt() const; ///< `SIGINT`
    bool resume() const;    ///< `SIGCONT`
    bool suspend() const;   ///< `SIGSTOP`

    /// Processes are equal when their identifiers are.
    [[nodiscard]] bool isEqual(const ZoProcess& other) const { return process_ == other.process_; }
    friend bool operator==(const ZoProcess& a, const ZoProcess& b) { return a.isEqual(b); }

  private:
    struct Remembered;

    explicit ZoProcess(int processIdentifier) : process_(processIdentifier) {}
    static List processesForThirdLevelName(ProcessSelector selector, int value);
    const ProcessArguments& doProcargs() const;
    Remembered& remembered() const;

    int process_;
    mutable std::shared_ptr<Remembered> remembered_;
};

} // namespace tav

template <>
struct std::hash<tav::ZoProcess> {
    std::size_t operator()(const tav::ZoProcess& process) const noexcept {
        return static_cast<std::size_t>(process.processIdentifier());
    }
};
