#pragma once

#include "base/Result.hpp"

#include <optional>
#include <string>
#include <vector>

#include <spawn.h>
#include <sys/types.h>

namespace tav::internal {

/// How a program is started: with default signals, none of them blocked, nothing to read, output
/// and complaints nowhere, and nothing else open.
class SpawnSettings {
  public:
    SpawnSettings();
    ~SpawnSettings();
    SpawnSettings(const SpawnSettings&) = delete;
    SpawnSettings& operator=(const SpawnSettings&) = delete;

    /// What the program prints goes into an open file of ours.
    void printInto(int descriptor);
    /// Without a terminal, and leader of a process group of its own.
    void startInOwnSession();

    /// Starts a program, one without a "/" from the search path. `arguments` begin with its name.
    [[nodiscard]] Result<::pid_t> start(const std::string& program,
                                        const std::vector<std::string>& arguments,
                                        const std::vector<std::string>& environment);

  private:
    ::posix_spawn_file_actions_t actions_;
    ::posix_spawnattr_t attributes_;
    short flags_;
    int output_ = -1;
};

/// Waits for the end of a child: its status as `waitpid` gives it. Nothing when that is lost, since
/// whoever started us ignores the ends of children.
[[nodiscard]] std::optional<int> waitForChild(::pid_t child);

} // namespace tav::internal
