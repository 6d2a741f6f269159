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

/// How many bytes a running process has given to write calls; nothing where the kernel keeps no
/// account.
std::optional<std::uint64_t> writtenBy(::pid_t process) {
    const std::string path = "/proc/" + std::to_string(process) + "/io";
    const Result<Descriptor> account = Descriptor::open(path.c_str(), O_RDONLY);
    std::array<char, 1024> text{};
    const Result<std::size_t> size =
        account.ok() ? readFully(account.value(), std::as_writable_bytes(std::span(text)))
                     : Result<std::size_t>(account.error());
    return size.ok() ? numberAfter(std::string_view(text.data(), size.value()), "wchar: ")
                     : std::nullopt;
}

/// Waits for the end without taking the status, or ends the child once it has written too much;
/// whether it had to.
bool endAfterWriting(::pid_t child, std::uint64_t mayWrite) {
    const Descriptor held(static_cast<int>(::syscall(SYS_pidfd_open, child, 0)));
    // One file alone is held to it by the kernel, to the byte, and needs no counting: also holes
    // are too much. That the limit comes a moment after the start does not matter, since it holds
    // for files that are open, too.
    const ::rlim_t limit = std::min<::rlim_t>(mayWrite, std::numeric_limits<::off_t>::max());
    const ::rlimit size = {limit, limit};
    ::prlimit(child, RLIMIT_FSIZE, &size, nullptr);
    ::pollfd ended = {held.number(), POLLIN, 0};
    // Without a descriptor, on an old kernel, nothing is counted.
    while (held.isOpen() &&
           retryInterrupted([&] { return ::poll(&ended, 1, countInterval); }) == 0) {
        const std::optional<std::uint64_t> written = writtenBy(child);
        if (written && *written > mayWrite) {
            // It leads a session of its own, so this ends what it has started, too.
            ::kill(-child, SIGKILL);
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
    const bool wasEnded = request.mayWrite && endAfterWriting(child.value(), *request.mayWrite);
    const std::optional<int> status = internal::waitForChild(child.value());
    if (wasEnded || (status && WIFSIGNALED(*status) && WTERMSIG(*status) == SIGXFSZ)) {
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
