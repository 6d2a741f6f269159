#include "platform/linux/LaunchEnvironment.hpp"

#include <algorithm>
#include <cstdlib>

#include <gtest/gtest.h>

namespace tav::internal {
namespace {

using Variables = std::vector<std::string>;

TEST(LaunchEnvironmentTest, TheInstallersVariablesStayBehind) {
    EXPECT_EQ(launchEnvironment(
                  {"HOME=/home/user", "LD_PRELOAD=/x.so", "LD_LIBRARY_PATH=/x", "LD_AUDIT=/x",
                   "DEBIAN_FRONTEND=noninteractive", "DPKG_ROOT=", "DEBCONF_RECONFIGURE=1",
                   "NOTIFY_SOCKET=/run/x", "LISTEN_FDS=1", "LISTEN_PID=1", "LISTEN_FDNAMES=x",
                   "INVOCATION_ID=x", "JOURNAL_STREAM=1:2", "MAINPID=1", "DBUS_STARTER_ADDRESS=x",
                   "DBUS_STARTER_BUS_TYPE=x", "PWD=/tmp", "OLDPWD=/", "DISPLAY=:0"}),
              (Variables{"HOME=/home/user", "DISPLAY=:0"}));
}

TEST(LaunchEnvironmentTest, NamesCompareWhole) {
    const Variables kept = {"LD_PRELOADED=1",
                            "PWDX=1",
                            "MYPWD=1",
                            "DEBIAN=1",
                            "ld_preload=x",
                            "DBUS_SESSION_BUS_ADDRESS=unix:path=/x",
                            "XDG_RUNTIME_DIR=/run/user/1",
                            "no equals sign",
                            ""};
    EXPECT_EQ(launchEnvironment(kept), kept);
}

TEST(LaunchEnvironmentTest, TheFirstOfOneNameHolds) {
    EXPECT_EQ(launchEnvironment({"A=1", "B=2", "A=3", "A"}), (Variables{"A=1", "B=2"}));
}

TEST(LaunchEnvironmentTest, TheCurrentEnvironmentIsTheProcesss) {
    ::setenv("TAV_TEST_VARIABLE", "caf\xe9", 1);
    const Variables variables = currentEnvironment();
    EXPECT_NE(std::find(variables.begin(), variables.end(), "TAV_TEST_VARIABLE=caf\xe9"),
              variables.end());
    ::unsetenv("TAV_TEST_VARIABLE");
}

} // namespace
} // namespace tav::internal
