#include "testing/OwnMounts.hpp"

#include "testing/ForkedProcess.hpp"

#include <cstdlib>

#include <gtest/gtest.h>

#include <sched.h>
#include <sys/mount.h>

namespace tav {

int runWithOwnMounts(const std::function<int()>& run) {
    const ProcessEnd end = runForked([&run] {
        if (::unshare(CLONE_NEWNS) != 0 ||
            ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) {
            return cannotMount;
        }
        return run();
    });
    EXPECT_EQ(end.signal, 0);
    return end.status;
}

bool runInShell(const std::string& command) { return std::system(command.c_str()) == 0; }

bool mountImage(const std::string& image, const std::string& make, const std::string& type,
                const std::string& place, const std::string& size) {
    return runInShell("truncate -s " + size + " '" + image + "' && " + make + " '" + image +
                      "' >/dev/null 2>&1 && mount -o loop -t " + type + " '" + image + "' '" +
                      place + "' >/dev/null 2>&1");
}

} // namespace tav
