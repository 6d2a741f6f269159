#include "platform/linux/SpawnedProgram.hpp"

#include "platform/linux/Descriptor.hpp"

#include <csignal>

#include <sys/wait.h>
#include <unistd.h>

namespace tav::internal {

namespace {

/// As the kernel takes lists of texts, which it does not change.
std::vector<char*> pointersTo(const std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (const std::string& text : texts) {
        pointers.push_back(const_cast<char*>(text.c_str()));
    }
    pointers.push_back(nullptr);
    return pointers;
}

} // namespace

SpawnSettings::SpawnSettings() : flags_(POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF) {
    ::posix_spawn_file_actions_init(&actions_);
    ::posix_spawnattr_init(&attributes_);
    ::sigset_t signals;
    ::sigemptyset(&signals);
    ::posix_spawnattr_setsigmask(&attributes_, &signals);
    ::sigfillset(&signals);
    ::posix_spawnattr_setsigdefault(&attributes_, &signals);
}

SpawnSettings::~SpawnSettings() {
    ::posix_spawn_file_actions_destroy(&actions_);
    ::posix_spawnattr_destroy(&attributes_);
}

void SpawnSettings::printInto(int descriptor) { output_ = descriptor; }

void SpawnSettings::startInOwnSession() {
    flags_ = static_cast<short>(flags_ | POSIX_SPAWN_SETSID);
}

Result<::pid_t> SpawnSettings::start(const std::string& program,
                                     const std::vector<std::string>& arguments,
                                     const std::vector<std::string>& environment) {
    // The output first: its number may be one of those that are opened anew, where the caller has
    // closed its own standard streams.
    if (output_ >= 0) {
        ::posix_spawn_file_actions_adddup2(&actions_, output_, STDOUT_FILENO);
    } else {
        ::posix_spawn_file_actions_addopen(&actions_, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    }
    ::posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    ::posix_spawn_file_actions_addopen(&actions_, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    ::posix_spawn_file_actions_addclosefrom_np(&actions_, STDERR_FILENO + 1);
    ::posix_spawnattr_setflags(&attributes_, flags_);
    const std::vector<char*> argumentPointers = pointersTo(arguments);
    const std::vector<char*> environmentPointers = pointersTo(environment);
    ::pid_t child = -1;
    const int error = ::posix_spawnp(&child, program.c_str(), &actions_, &attributes_,
                                     argumentPointers.data(), environmentPointers.data());
    if (error != 0) {
        return SystemError(error);
    }
    return child;
}

std::optional<int> waitForChild(::pid_t child) {
    int status = 0;
    if (retryInterrupted([&] { return ::waitpid(child, &status, 0); }) != child) {
        return std::nullopt;
    }
    return status;
}

} // namespace tav::internal
