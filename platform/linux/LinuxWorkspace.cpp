#include "base/PathString.hpp"
#include "platform/Bundle.hpp"
#include "platform/FileSystem.hpp"
#include "platform/Workspace.hpp"
#include "platform/linux/LaunchEnvironment.hpp"
#include "platform/linux/LinuxProcessTable.hpp"
#include "platform/linux/OldInstance.hpp"
#include "platform/linux/SessionProcess.hpp"

#include <cerrno>
#include <csignal>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tav::internal {
namespace {

/// How long a new instance waits for the old one to be gone.
constexpr std::chrono::milliseconds patience(10'000);

constexpr int failedChild = 127;

/// All that the child needs, worked out while failures can still be answered.
struct Launch {
    std::string executable;
    std::string bundlePath; ///< Canonical, as the kernel names what runs.
    std::string busName;    ///< Empty for a bundle without an identifier.
    std::uint32_t user = 0;
    std::vector<std::string> environment;
};

std::optional<Launch> prepare(std::string_view path, const DesktopSession& session) {
    const std::optional<Bundle> bundle = Bundle::bundleWithPath(path);
    const std::optional<std::string> executable = bundle ? bundle->executablePath() : std::nullopt;
    if (!executable) {
        return std::nullopt;
    }
    FileSystem& files = FileSystem::current();
    const Result<FileAttributes> attributes = files.targetAttributes(*executable);
    Result<std::string> canonical = files.canonicalPath(path);
    if (!attributes.ok() || attributes.value().kind != FileKind::Regular ||
        (attributes.value().permissions & 0111U) == 0 || !canonical.ok()) {
        return std::nullopt;
    }
    Launch launch;
    // Absolute, so that the process can still be recognised by it when its file is gone.
    launch.bundlePath = std::move(canonical).value();
    launch.executable =
        launch.bundlePath + "/Contents/MacOS/" + std::string(lastPathComponent(*executable));
    launch.busName = bundle->bundleIdentifier().value_or("");
    launch.user = session.isOwn ? ::getuid() : session.user;
    launch.environment =
        launchEnvironment(session.isOwn ? currentEnvironment() : session.environment);
    return launch;
}

/// Lets go of everything that the caller holds: an installer that reads our output to its end, or a
/// volume that is to be unmounted, must not wait for the application.
void detachFromCaller() {
    ::setsid();
    resetSignals();
    closeDescriptorsFrom(0);
    // The lowest free numbers are those of the standard streams.
    const int null = ::open("/dev/null", O_RDWR);
    static_cast<void>(::dup(null));
    static_cast<void>(::dup(null));
    static_cast<void>(::chdir("/"));
}

[[noreturn]] void execute(Launch& launch) {
    std::vector<char*> variables;
    for (std::string& variable : launch.environment) {
        variables.push_back(variable.data());
    }
    variables.push_back(nullptr);
    char* arguments[] = {launch.executable.data(), nullptr};
    ::execve(launch.executable.c_str(), arguments, variables.data());
    if (errno == E2BIG) {
        // The session's environment may be larger than our own limits would let it be.
        ::rlimit stack;
        if (::getrlimit(RLIMIT_STACK, &stack) == 0) {
            stack.rlim_cur = stack.rlim_max;
            ::setrlimit(RLIMIT_STACK, &stack);
            ::execve(launch.executable.c_str(), arguments, variables.data());
        }
    }
    ::_exit(failedChild);
}

/// The life of the detached child up to the application. Not even an exception leads back into the
/// code of the caller.
[[noreturn]] void becomeApplication(Launch& launch, const DesktopSession& session) noexcept {
    const Deadline deadline(patience);
    detachFromCaller();
    {
        // A table of its own: the shared one was among what has just been closed.
        LinuxProcessTable table;
        const std::vector<Descriptor> oldInstances =
            holdProcessesOfBundle(table, launch.bundlePath, launch.user);
        // Only while this is still the caller may it see everything; nothing is started as the
        // caller in the name of another user.
        if (enterSession(session) != Status::Success) {
            ::_exit(failedChild);
        }
        waitForEnd(oldInstances, deadline);
    }
    if (!session.isOwn) {
        // Root's installer may have made its files private; a user's application has the usual
        // mask.
        ::umask(022);
    }
    waitForFreeName(launch.busName, deadline);
    closeDescriptorsFrom(STDERR_FILENO + 1);
    execute(launch);
}

class LinuxWorkspace final : public Workspace {
  public:
    bool launchApplication(std::string_view path, const DesktopSession& session) override {
        std::optional<Launch> launch = prepare(path, session);
        if (!launch) {
            return false;
        }
        // Two children: the first ends at once, so that the second is nobody's to wait for.
        const ::pid_t child = ::fork();
        if (child == 0) {
            const ::pid_t application = ::fork();
            if (application == 0) {
                becomeApplication(*launch, session);
            }
            ::_exit(application < 0 ? failedChild : 0);
        }
        if (child < 0) {
            return false;
        }
        int status = -1;
        if (retryInterrupted([&] { return ::waitpid(child, &status, 0); }) != child) {
            // Whoever started us ignores the ends of children, and so do we: its status is lost.
            return errno == ECHILD;
        }
        return WIFEXITED(status) && WEXITSTATUS(status) == 0;
    }
};

} // namespace

Workspace& realWorkspace() {
    static LinuxWorkspace workspace;
    return workspace;
}

} // namespace tav::internal
