#pragma once

#include <functional>
#include <string>

namespace tav {

/// What the function of `runWithOwnMounts` answers when everything was as it should be.
inline constexpr int passed = 0;
/// What it answers when the machine could not mount what the test needs: then the test skips.
inline constexpr int cannotMount = 100;

/// Runs a function in a child with mounts of its own, which go with it. The function answers
/// `passed`, `cannotMount` or the number of the check that failed; `cannotMount` is also the answer
/// where no mounts can be had at all (they need root). See `runForked` for what a child can do.
[[nodiscard]] int runWithOwnMounts(const std::function<int()>& run);

/// Whether a command of the shell ran, and ended well.
[[nodiscard]] bool runInShell(const std::string& command);

/// Makes a new file system in an image and mounts it on a loop device, if this machine has what
/// that takes. `image` is the path of the file to make, `make` the command without the image
/// ("mkfs.ext4 -q"), `size` as `truncate` reads it.
[[nodiscard]] bool mountImage(const std::string& image, const std::string& make,
                              const std::string& type, const std::string& place,
                              const std::string& size = "8M");

} // namespace tav
