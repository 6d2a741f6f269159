#pragma once

#include "base/Data.hpp"
#include "platform/Seam.hpp"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tav {

class ProcessTable;

namespace internal {
/// The kernel's own process table (platform/linux).
ProcessTable& realProcessTable();
} // namespace internal

/// What a process is selected by in a listing; the numbers are those of the kernel interface that
/// the library's process table was first written against.
enum class ProcessSelector : int {
    All = 0,          ///< The value means nothing.
    ProcessGroup = 2, ///< By the identifier of the group.
    Terminal = 4,     ///< By the device number of the controlling terminal.
    User = 5,         ///< By the effective user.
    RealUser = 6,
};

/// The kernel's record of a process.
struct ProcessRecord {
    int processIdentifier = 0;
    bool isZombie = false;
    int parent = 0;
    int processGroup = 0;
    int terminal = 0;             ///< Device number as in `st_rdev`; 0 for none.
    int terminalProcessGroup = 0; ///< The terminal's foreground group; 0 for none.
    std::string shortName;        ///< Any bytes; the kernel keeps the first few of the name.
};

/// Whose a process is.
struct ProcessUsers {
    std::uint32_t real = 0;
    std::uint32_t effective = 0;
};

/// Bytes that tell how a process was started: the path of its executable and a NUL, then NULs, then
/// the texts of its arguments and its environment, each with a NUL behind it.
struct ArgumentArea {
    enum class Layout {
        Plain,   ///< As above; where the arguments end is not told.
        Counted, ///< Before it the number of arguments, 32 bits in the host's byte order.
    };
    Layout layout = Layout::Counted;
    Data bytes;
};

/// The seam to the kernel's process table. Every call asks the kernel afresh. A process that does
/// not exist, or that refuses, is answered with nothing. Calls may come from any thread.
class ProcessTable : public Seam<ProcessTable, internal::realProcessTable> {
  public:
    virtual ~ProcessTable() = default;

    /// The processes that exist and match, in the kernel's order; nothing when the table cannot be
    /// read. A listing proves that each one existed at that moment.
    virtual std::optional<std::vector<int>> processes(ProcessSelector selector, int value) = 0;

    virtual std::optional<ProcessRecord> record(int process) = 0;
    virtual std::optional<ProcessUsers> users(int process) = 0;
    /// The effective user alone, which is cheaper.
    virtual std::optional<std::uint32_t> userOf(int process) = 0;

    /// `path` is what stands for the executable at the area's beginning: what `executablePath`
    /// answered, or empty. `wanted` and `bufferSize` are what a kernel of the running release would
    /// be asked with; a host whose table knows no such bounds hands over its own layout, whole.
    virtual std::optional<ArgumentArea> argumentArea(int process, std::string_view path,
                                                     ArgumentArea::Layout wanted,
                                                     std::size_t bufferSize) = 0;

    /// What the kernel says of the running executable, in one call and unverified. A text that does
    /// not end in `removedExecutableMark` is the path of a file (of another tree, perhaps), never
    /// of a folder, and `executablePath` answers that text or nothing. Enough to rule a process
    /// out, not to recognise it.
    virtual std::optional<std::string> executableLink(int process) = 0;

    /// The path, in the caller's tree of files, that the running executable was started from. A
    /// file that was replaced or removed since still has its path; an executable of another tree (a
    /// container's) has none. `link` is what `executableLink` has answered.
    virtual std::optional<std::string> executablePathOfLink(int process, std::string link) = 0;

    /// Both questions in one.
    std::optional<std::string> executablePath(int process) {
        std::optional<std::string> link = executableLink(process);
        return link ? executablePathOfLink(process, std::move(*link)) : std::nullopt;
    }

    /// Whether the signal (a number of this host) was delivered. Never for 0 and below, which would
    /// address whole groups.
    virtual bool signal(int process, int number) = 0;

    virtual int currentProcess() = 0;
    virtual std::uint32_t effectiveUser() = 0;

    /// The kernel's release, as in "6.1.0-18-amd64".
    virtual std::optional<std::string> kernelRelease() = 0;
    /// The most bytes that arguments and environment may have together.
    virtual std::optional<int> argumentMaximum() = 0;
};

/// What the kernel adds to the link of an executable whose file is gone.
inline constexpr std::string_view removedExecutableMark = " (deleted)";

} // namespace tav
