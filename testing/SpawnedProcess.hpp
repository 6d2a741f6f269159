#pragma once

#include <string>
#include <vector>

#include <sys/types.h>

namespace tav {

/// A real child process for as long as the value lives; then it is killed and waited for.
class SpawnedProcess {
  public:
    /// Runs a program; by the time this returns the kernel has executed it. Fails the test, and has
    /// the identifier -1, when that is not possible. `arguments` begin with argv[0].
    SpawnedProcess(const std::string& program, std::vector<std::string> arguments,
                   std::vector<std::string> environment);
    ~SpawnedProcess();
    SpawnedProcess(const SpawnedProcess&) = delete;
    SpawnedProcess& operator=(const SpawnedProcess&) = delete;

    [[nodiscard]] ::pid_t identifier() const { return identifier_; }
    void kill(int signal) const;
    /// Waits for the end without taking the zombie away.
    void waitUntilZombie() const;
    /// Waits for the end; the status as `waitpid` gives it.
    int wait();

  private:
    ::pid_t identifier_ = -1;
};

/// Waits until a process that has begun to execute a program has its arguments in place, which is a
/// moment later than when its parent goes on.
void waitUntilExecuted(::pid_t process);

/// Puts a program at a path, with all folders on the way, that does nothing whatever its arguments
/// until a signal ends it: something to run, replace and remove.
void installPauseProgram(const std::string& path);

} // namespace tav
