#include "testing/ForkedProcess.hpp"

#include <cerrno>
#include <system_error>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tav {
namespace {

constexpr unsigned int secondsToLive = 60;
constexpr int statusOfException = 255;

[[noreturn]] void runAndExit(const std::function<int()>& run) {
    int status = statusOfException;
    ::alarm(secondsToLive);
    // What stands unwritten in the parent's buffers would come out twice.
    const int nowhere = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (nowhere >= 0 && ::dup2(nowhere, STDOUT_FILENO) >= 0) {
        ::close(nowhere);
        try {
            status = run();
        } catch (...) {
            status = statusOfException;
        }
    }
    ::_exit(status);
}

} // namespace

std::ostream& operator<<(std::ostream& stream, const ProcessEnd& end) {
    return end.signal != 0 ? stream << "signal " << end.signal : stream << "status " << end.status;
}

ProcessEnd runForked(const std::function<int()>& run) {
    const ::pid_t child = ::fork();
    if (child < 0) {
        throw std::system_error(errno, std::generic_category(), "fork");
    }
    if (child == 0) {
        runAndExit(run);
    }
    int status = 0;
    while (::waitpid(child, &status, 0) < 0) {
        if (errno != EINTR) {
            throw std::system_error(errno, std::generic_category(), "waitpid");
        }
    }
    return WIFSIGNALED(status) ? ProcessEnd{0, WTERMSIG(status)}
                               : ProcessEnd{WEXITSTATUS(status), 0};
}

} // namespace tav
