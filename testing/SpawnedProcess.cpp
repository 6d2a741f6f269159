#include "testing/SpawnedProcess.hpp"

#include <fstream>
#include <thread>

#include <gtest/gtest.h>

#include <signal.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>

namespace tav {
namespace {

std::vector<char*> pointers(std::vector<std::string>& texts) {
    std::vector<char*> list;
    list.reserve(texts.size() + 1);
    for (std::string& text : texts) {
        list.push_back(text.data());
    }
    list.push_back(nullptr);
    return list;
}

} // namespace

SpawnedProcess::SpawnedProcess(const std::string& program, std::vector<std::string> arguments,
                               std::vector<std::string> environment) {
    const std::vector<char*> argumentList = pointers(arguments);
    const std::vector<char*> environmentList = pointers(environment);
    const int error = ::posix_spawn(&identifier_, program.c_str(), nullptr, nullptr,
                                    argumentList.data(), environmentList.data());
    if (error != 0) {
        identifier_ = -1;
        ADD_FAILURE() << "cannot run " << program << ": error " << error;
        return;
    }
    waitUntilExecuted(identifier_);
}

SpawnedProcess::~SpawnedProcess() {
    if (identifier_ > 0) {
        ::kill(identifier_, SIGKILL);
        ::waitpid(identifier_, nullptr, 0);
    }
}

void SpawnedProcess::kill(int signal) const { ::kill(identifier_, signal); }

void SpawnedProcess::waitUntilZombie() const {
    ::siginfo_t information;
    ::waitid(P_PID, static_cast<::id_t>(identifier_), &information, WEXITED | WNOWAIT);
}

int SpawnedProcess::wait() {
    int status = -1;
    ::waitpid(identifier_, &status, 0);
    identifier_ = -1;
    return status;
}

void waitUntilExecuted(::pid_t process) {
    const std::string path = "/proc/" + std::to_string(process) + "/cmdline";
    // The kernel shows none while it is still being laid out, and none of a process that has ended.
    while (std::ifstream(path).get() == std::ifstream::traits_type::eof() &&
           ::kill(process, 0) == 0) {
        ::siginfo_t information = {};
        if (::waitid(P_PID, static_cast<::id_t>(process), &information,
                     WEXITED | WNOHANG | WNOWAIT) != 0 ||
            information.si_pid != 0) {
            return;
        }
        std::this_thread::yield();
    }
}

void installPauseProgram(const std::string& path) {
    for (std::size_t slash = path.find('/', 1); slash != std::string::npos;
         slash = path.find('/', slash + 1)) {
        ::mkdir(path.substr(0, slash).c_str(), 0755);
    }
    std::ifstream source(TAV_PAUSE_PROGRAM, std::ios::binary);
    std::ofstream target(path, std::ios::binary);
    target << source.rdbuf();
    target.close();
    EXPECT_TRUE(source && target) << "cannot write " << path;
    EXPECT_EQ(::chmod(path.c_str(), 0755), 0);
}

} // namespace tav
