#include "platform/linux/SessionProcess.hpp"

#include "platform/linux/Descriptor.hpp"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <memory>

#include <grp.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tav::internal {

namespace {

/// The whole life of the child. Not even an exception leads back into the code of the caller, which
/// would then run twice.
[[noreturn]] void answerFromChild(int answers, const DesktopSession& session,
                                  const std::function<Status()>& function) noexcept {
    // Nothing of the caller's may be open in a process of another user, nor may it have the
    // caller's terminal, into which it could type.
    ::setsid();
    resetSignals();
    ::dup2(answers, STDIN_FILENO);
    closeDescriptorsFrom(STDIN_FILENO + 1);
    // The lowest free numbers are those of the output streams.
    const int null = ::open("/dev/null", O_RDWR);
    static_cast<void>(::dup(null));
    Status status = enterSession(session);
    if (status == Status::Success) {
        status = function();
    }
    const Descriptor answer(STDIN_FILENO);
    static_cast<void>(writeFully(answer, std::as_bytes(std::span(&status, 1))));
    ::_exit(0);
}

} // namespace

void resetSignals() {
    for (int number = 1; number < NSIG; ++number) {
        ::signal(number, SIG_DFL);
    }
    ::sigset_t none;
    ::sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
}

void replaceEnvironment(const std::vector<std::string>& variables) {
    ::clearenv();
    for (const std::string& variable : variables) {
        const std::size_t equals = variable.find('=');
        if (equals != std::string::npos && equals > 0) {
            // The first of several holds, as it does for those who ask the process itself.
            ::setenv(variable.substr(0, equals).c_str(), variable.c_str() + equals + 1, 0);
        }
    }
}

Status enterSession(const DesktopSession& session) {
    if (session.isOwn) {
        return Status::Success;
    }
    const std::vector<::gid_t> groups(session.groups.begin(), session.groups.end());
    if (::setgroups(groups.size(), groups.data()) != 0 ||
        ::setresgid(session.group, session.group, session.group) != 0 ||
        ::setresuid(session.user, session.user, session.user) != 0) {
        return statusFromErrorNumber(errno);
    }
    replaceEnvironment(session.environment);
    return Status::Success;
}

Status runInSession(const DesktopSession& session, const Deadline& deadline,
                    const std::function<Status()>& function) {
    std::array<int, 2> ends = {-1, -1};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
        return statusFromErrorNumber(errno);
    }
    const Descriptor answers(ends[0]);
    Descriptor questions(ends[1]);
    const ::pid_t child = ::fork();
    if (child < 0) {
        return statusFromErrorNumber(errno);
    }
    if (child == 0) {
        answerFromChild(questions.number(), session, function);
    }
    questions.reset();
    Status status = statusFromErrorNumber(ETIMEDOUT);
    ::pollfd ready = {answers.number(), POLLIN, 0};
    const int polled =
        retryInterrupted([&] { return ::poll(&ready, 1, deadline.remainingMilliseconds()); });
    if (polled > 0) {
        const Result<std::size_t> size =
            readFully(answers, std::as_writable_bytes(std::span(&status, 1)));
        if (!size.ok() || size.value() != sizeof status) {
            status = Status::Failure;
        }
    }
    // With whatever it may have started meanwhile. By its own number too: it may not have come as
    // far as to its own session.
    ::kill(-child, SIGKILL);
    ::kill(child, SIGKILL);
    static_cast<void>(retryInterrupted([&] { return ::waitpid(child, nullptr, 0); }));
    return status;
}

} // namespace tav::internal
