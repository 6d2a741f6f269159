#include "platform/linux/LinuxChildProcess.hpp"

#include "platform/linux/Descriptor.hpp"
#include "platform/linux/SpawnedProgram.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <csignal>
#include <cstdlib>
#include <limits>
#include <string_view>
#include <utility>

#include <poll.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tav {

namespace {

/// How often what a child has written is counted, in milliseconds.
constexpr int countInterval = 20;

bool hasNul(const std::vector<std::string>& texts) {
    return std::any_of(texts.begin(), texts.end(), [](const std::string& text) {
        return text.find('\0') != std::string::npos;
    });
}

/// What a caller's variables may change in a program, options of archivers and libraries put in
/// its way for two, is nothing that was asked for here.
std::vector<std::string> environmentFor(const ChildRequest& request) {
    std::vector<std::string> environment = request.environment;
    environment.emplace_back("LC_ALL=C.UTF-8");
    environment.emplace_back("PATH=/usr/local/bin:/usr/bin:/bin");
    for (const char* const name : {"HOME", "TMPDIR", "TZ", "TZDIR"}) {
        if (const char* const value = std::getenv(name)) {
            environment.push_back(std::string(name) + "=" + value);
        }
    }
    // The first of several with one name holds for the C library; let there be only that one.
    std::vector<std::string> first;
    for (std::string& variable : environment) {
        const std::string_view name(variable.data(), variable.find('=') + 1);
        if (std::none_of(first.begin(), first.end(),
                         [name](const std::string& known) { return known.starts_with(name); })) {
            first.push_back(std::move(variable));
        }
    }
    return first;
}

/// The number behind a name in a text of lines "name: number".
std::optional<std::uint64_t> numberAfter(std::string_view text, std::string_view name) {
    const std::size_t start = text.find(name);
    if (start == std::string_view::npos) {
        return std::nullopt;
    }
    const std::string_view digits = text.substr(start + name.size());
    std::uint64_t number = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    return error == std::errc() ? std::optional(number) : std::nullopt;
}

/// How many bytes a process has given to write calls, with what those of its children gave that it
/// has waited for. To be opened while it runs: of a process that has ended, only root may open it,
/// but who has it open may read it until somebody waits for the process.
class WriteAccount {
  public:
    explicit WriteAccount(::pid_t process)
        : file_(Descriptor::open(("/proc/" + std::to_string(process) + "/io").c_str(), O_RDONLY)) {}

    /// Nothing where the kernel keeps none.
    [[nodiscard]] std::optional<std::uint64_t> bytes() const {
        std::array<char, 1024> text{};
        if (!file_.ok()) {
            return std::nullopt;
        }
        const ::ssize_t size = retryInterrupted(
            [&] { return ::pread(file_.value().number(), text.data(), text.size(), 0); });
        return size > 0 ? numberAfter({text.data(), static_cast<std::size_t>(size)}, "wchar: ")
                        : std::nullopt;
    }

  private:
    Result<Descriptor> file_;
};

/// One file alone is held to it by the kernel, to the byte, and needs no counting: also holes are
/// too much. That the limit comes a moment after the start does not matter: it holds for files that
/// are open, too, and what was written until then is counted in the end.
void limitFiles(::pid_t child, std::uint64_t mayWrite) {
    ::rlimit size = {};
    if (::prlimit(child, RLIMIT_FSIZE, nullptr, &size) != 0) {
        return;
    }
    const ::rlim_t limit = std::min<::rlim_t>(mayWrite, std::numeric_limits<::off_t>::max());
    // A lower one that the caller has himself stays. None is the largest number.
    size = {std::min(size.rlim_cur, limit), std::min(size.rlim_max, limit)};
    ::prlimit(child, RLIMIT_FSIZE, &size, nullptr);
}

/// Waits for the end without taking the status, or ends the child once it has written too much;
/// whether it has.
bool writesTooMuch(::pid_t child, std::uint64_t mayWrite) {
    const Descriptor held(static_cast<int>(::syscall(SYS_pidfd_open, child, 0)));
    const WriteAccount account(child);
    limitFiles(child, mayWrite);
    ::pollfd ended = {held.number(), POLLIN, 0};
    // Without a descriptor, on an old kernel, nothing is counted.
    for (bool runs = held.isOpen(); runs;) {
        runs = retryInterrupted([&] { return ::poll(&ended, 1, countInterval); }) == 0;
        if (account.bytes().value_or(0) > mayWrite) {
            if (runs) {
                // It leads a session of its own, so this ends what it has started, too.
                ::kill(-child, SIGKILL);
            }
            return true;
        }
    }
    return false;
}

} // namespace

Result<ChildEnd> LinuxChildProcess::run(const ChildRequest& request) {
    if (!request.program.starts_with('/') || request.program.find('\0') != std::string::npos ||
        hasNul(request.arguments) || hasNul(request.environment)) {
        return SystemError(EINVAL);
    }
    std::vector<std::string> arguments{request.program};
    arguments.insert(arguments.end(), request.arguments.begin(), request.arguments.end());
    internal::SpawnSettings settings;
    settings.startInOwnSession();
    const Result<::pid_t> child =
        settings.start(request.program, arguments, environmentFor(request));
    if (!child.ok()) {
        return child.error();
    }
    const bool tooMuch = request.mayWrite && writesTooMuch(child.value(), *request.mayWrite);
    const std::optional<int> status = internal::waitForChild(child.value());
    if (tooMuch || (status && WIFSIGNALED(*status) && WTERMSIG(*status) == SIGXFSZ)) {
        return ChildEnd{ChildEnd::Kind::WroteTooMuch, 0};
    }
    if (!status) {
        return ChildEnd{ChildEnd::Kind::NobodyCanTell, 0};
    }
    return WIFSIGNALED(*status) ? ChildEnd{ChildEnd::Kind::Signalled, WTERMSIG(*status)}
                                : ChildEnd{ChildEnd::Kind::Exited, WEXITSTATUS(*status)};
}

namespace internal {

ChildProcess& realChildProcess() {
    static LinuxChildProcess children;
    return children;
}

} // namespace internal
} // namespace tav
