#pragma once

#include "base/Result.hpp"
#include "platform/Seam.hpp"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tav {

class ChildProcess;

namespace internal {
/// Child processes of the host (platform/linux).
ChildProcess& realChildProcess();
} // namespace internal

/// A program to be run, and with what.
struct ChildRequest {
    std::string program;                ///< An absolute path.
    std::vector<std::string> arguments; ///< As they are, bytes; without the program's own name.
    /// "NAME=value" each, before everything that the program gets anyway.
    std::vector<std::string> environment;
    /// How many bytes the program may write, counting all files; when it has written more it is
    /// ended. Without, as many as it likes.
    std::optional<std::uint64_t> mayWrite;

    friend bool operator==(const ChildRequest&, const ChildRequest&) = default;
};

/// How a program ended.
struct ChildEnd {
    enum class Kind : std::uint8_t {
        Exited,        ///< By itself, with the status `number` (0 to 255).
        Signalled,     ///< By the signal `number`.
        WroteTooMuch,  ///< More than it may; it was ended if it still ran.
        NobodyCanTell, ///< The caller's process ignores the ends of its children.
    };
    Kind kind = Kind::Exited;
    int number = 0;

    friend bool operator==(const ChildEnd&, const ChildEnd&) = default;
};

/// The seam to programs that are run to their end. No shell reads anything. Any thread.
class ChildProcess : public Seam<ChildProcess, internal::realChildProcess> {
  public:
    virtual ~ChildProcess() = default;

    /// Runs a program and waits for its end, however long it takes. It reads nothing and what it
    /// prints goes nowhere; it has no terminal to ask anybody, no open files of the caller,
    /// no signal blocked or ignored. Of the caller's environment it gets where home and the
    /// temporary folder are, and the time zone; text is UTF-8 to it (`LC_ALL`), and programs are
    /// looked for where the host has its own.
    ///
    /// The error number when it could not be started: ENOENT, EACCES, ...; EINVAL for a program
    /// that is no absolute path and for a text with a NUL in it.
    virtual Result<ChildEnd> run(const ChildRequest& request) = 0;
};

} // namespace tav
