#include "platform/linux/Descriptor.hpp"
#include "platform/linux/LinuxSystemLog.hpp"

#include <array>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <poll.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <syslog.h>
#include <unistd.h>

namespace tav {
namespace {

using namespace std::string_literals;

TEST(LinuxSystemLog, IsWhatCurrentBeginsWith) {
    EXPECT_EQ(&SystemLog::current(), &internal::realSystemLog());
    EXPECT_NE(dynamic_cast<LinuxSystemLog*>(&SystemLog::current()), nullptr);
}

TEST(LinuxSystemLog, ARecordIsTheLineWithoutTheLineFeedAtItsEnd) {
    EXPECT_EQ(internal::systemLogRecord(""), "");
    EXPECT_EQ(internal::systemLogRecord("line"), "line");
    EXPECT_EQ(internal::systemLogRecord("line\n"), "line");
    EXPECT_EQ(internal::systemLogRecord("line\n\n"), "line\n");
    EXPECT_EQ(internal::systemLogRecord("two\nlines"), "two\nlines");
    EXPECT_EQ(internal::systemLogRecord("%s%n \xFF\xC3 \xC3\xA4"), "%s%n \xFF\xC3 \xC3\xA4");
}

TEST(LinuxSystemLog, ARecordShowsANUL) {
    EXPECT_EQ(internal::systemLogRecord("a\0b\0"s), "a\\0b\\0");
    EXPECT_EQ(internal::systemLogRecord("\0"s), "\\0");
}

TEST(LinuxSystemLog, ALongLineIsCutBetweenCharacters) {
    constexpr std::size_t limit = internal::maximumSystemLogLine;
    const std::string fitting(limit, 'x');
    EXPECT_EQ(internal::systemLogRecord(fitting), fitting);
    EXPECT_EQ(internal::systemLogRecord(fitting + "\n"), fitting);
    EXPECT_EQ(internal::systemLogRecord(fitting + "y"), fitting + "... (1 bytes more)");
    const std::string room = fitting.substr(1);
    EXPECT_EQ(internal::systemLogRecord(room + "\xC3\xA4"), room + "... (2 bytes more)");
    EXPECT_EQ(internal::systemLogRecord(room.substr(2) + "\xF0\x9F\x98\x80"),
              room.substr(2) + "... (4 bytes more)");
    // Where there is no character to be found it is cut at the limit.
    const std::string continuations(limit + 10, '\x80');
    EXPECT_EQ(internal::systemLogRecord(continuations),
              continuations.substr(10) + "... (10 bytes more)");
}

TEST(LinuxSystemLog, ATerminalGetsNoControlCharacters) {
    EXPECT_EQ(internal::terminalText("a\tb\nc \x1B[31m\x7F\r\x01 \xC3\xA4\xFF"),
              "a\tb\nc ^[[31m^?^M^A \xC3\xA4\xFF");
}

/// A daemon of the test's own: a socket at /dev/log that a mount namespace hides from everybody
/// else, so all of it happens in a child.
class Daemon {
  public:
    static constexpr int unavailable = 77;

    /// Runs a test's body in a child that has such a daemon. It answers what is wrong, or nothing.
    static void run(const std::function<std::string(Daemon&)>& body) {
        std::array<int, 2> ends{};
        ASSERT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0);
        const Descriptor reading(ends[0]);
        Descriptor writing(ends[1]);
        const ::pid_t child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            ::alarm(60);
            Daemon daemon;
            if (!daemon.begin()) {
                ::_exit(unavailable);
            }
            const std::string complaint = body(daemon);
            static_cast<void>(writeFully(writing, bytesOf(complaint)));
            ::_exit(complaint.empty() ? 0 : 1);
        }
        writing.reset();
        const Result<Data> complaint = readToEnd(reading, 0, 1U << 20U);
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        if (WIFEXITED(status) && WEXITSTATUS(status) == unavailable) {
            GTEST_SKIP() << "no mount namespace of our own, to listen at /dev/log";
        }
        EXPECT_EQ(status, 0);
        EXPECT_EQ(textOf(complaint.value()), "");
    }

    /// The next datagram, whatever comes within some seconds.
    std::string receive() {
        ::pollfd waiting{socket_.number(), POLLIN, 0};
        if (::poll(&waiting, 1, 10'000) != 1) {
            return "nothing came";
        }
        std::string datagram(1U << 20U, '\0');
        const ::ssize_t size = ::recv(socket_.number(), datagram.data(), datagram.size(), 0);
        datagram.resize(size < 0 ? 0 : static_cast<std::size_t>(size));
        return datagram;
    }
    bool isQuiet() {
        ::pollfd waiting{socket_.number(), POLLIN, 0};
        return ::poll(&waiting, 1, 0) == 0;
    }

  private:
    bool begin() {
        if (::unshare(CLONE_NEWNS) != 0 && ::unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) {
            return false;
        }
        if (::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
            ::mount("none", "/dev", "tmpfs", 0, nullptr) != 0) {
            return false;
        }
        ::closelog(); // a connection to the host's own daemon from before the fork
        socket_ = Descriptor(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
        const ::sockaddr_un address{AF_UNIX, "/dev/log"};
        return ::bind(socket_.number(), reinterpret_cast<const ::sockaddr*>(&address),
                      sizeof(address)) == 0;
    }

    Descriptor socket_;
};

/// What a datagram says behind priority, time and name, or all of it when it is no such datagram.
std::string textOfDatagram(const std::string& datagram) {
    // "<13>Nov 21 12:00:00 name: text"
    const std::string priority = "<" + std::to_string(LOG_USER | LOG_NOTICE) + ">";
    const std::string name = " "s + program_invocation_short_name + ": ";
    const std::size_t timeSize = 15;
    if (!datagram.starts_with(priority) ||
        datagram.compare(priority.size() + timeSize, name.size(), name) != 0) {
        return "unexpected form: " + datagram;
    }
    std::string text = datagram.substr(priority.size() + timeSize + name.size());
    return text;
}

TEST(LinuxSystemLog, TheDaemonGetsEachLineAsOneRecord) {
    Daemon::run([](Daemon& daemon) -> std::string {
        const std::vector<std::pair<std::string, std::string>> cases{
            {"a line", "a line"},           {"", ""},
            {"%s %n %d", "%s %n %d"},       {"a\0b"s, "a\\0b"},
            {"two\nlines\n", "two\nlines"}, {"\xFF\xC3\x28 \xC3\xA4", "\xFF\xC3\x28 \xC3\xA4"},
        };
        LinuxSystemLog log;
        for (const auto& [line, expected] : cases) {
            errno = 4711;
            log.write(line);
            if (errno != 4711) {
                return "errno was changed";
            }
            const std::string text = textOfDatagram(daemon.receive());
            if (text != expected) {
                return "expected " + expected + ", got " + text;
            }
        }
        return daemon.isQuiet() ? "" : "there is more than one record for a line";
    });
}

TEST(LinuxSystemLog, ALineOf10MiBArrivesCut) {
    Daemon::run([](Daemon& daemon) -> std::string {
        const std::string line(10U << 20U, 'x');
        LinuxSystemLog().write(line);
        const std::string text = textOfDatagram(daemon.receive());
        LinuxSystemLog().write(std::string(10U << 20U, '\0')); // grows while it is written
        const std::string nuls = textOfDatagram(daemon.receive());
        if (nuls.substr(0, 4) != "\\0\\0") {
            return "the NULs: " + nuls.substr(0, 100);
        }
        return text == internal::systemLogRecord(line) ? "" : text.substr(0, 100);
    });
}

TEST(LinuxSystemLog, ThreadsWriteWholeRecords) {
    Daemon::run([](Daemon& daemon) -> std::string {
        constexpr int threadCount = 4;
        constexpr int rounds = 50;
        LinuxSystemLog log;
        std::vector<std::thread> threads;
        for (int thread = 0; thread < threadCount; ++thread) {
            threads.emplace_back([&log, thread] {
                for (int round = 0; round < rounds; ++round) {
                    log.write(std::string(1000, static_cast<char>('a' + thread)));
                }
            });
        }
        std::array<int, threadCount> counts{};
        std::string complaint;
        for (int record = 0; record < threadCount * rounds; ++record) {
            const std::string text = textOfDatagram(daemon.receive());
            if (text.size() != 1000 || text != std::string(1000, text[0])) {
                complaint = "a torn record: " + text;
            } else {
                ++counts[static_cast<std::size_t>(text[0] - 'a')];
            }
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
        for (const int count : counts) {
            complaint += count == rounds ? "" : " a lost record";
        }
        return complaint;
    });
}

/// Standard error is another file for as long as this lives.
class StandardErrorElsewhere {
  public:
    explicit StandardErrorElsewhere(const Descriptor& file)
        : original_(::fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 3)) {
        ::dup2(file.number(), STDERR_FILENO);
    }
    ~StandardErrorElsewhere() { ::dup2(original_.number(), STDERR_FILENO); }
    StandardErrorElsewhere(const StandardErrorElsewhere&) = delete;
    StandardErrorElsewhere& operator=(const StandardErrorElsewhere&) = delete;

  private:
    Descriptor original_;
};

TEST(LinuxSystemLog, ATerminalAtStandardErrorGetsTheLineToo) {
    const Descriptor master(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC));
    if (!master.isOpen() || ::grantpt(master.number()) != 0 || ::unlockpt(master.number()) != 0) {
        GTEST_SKIP() << "no pseudo-terminal to be had";
    }
    std::array<char, 128> name{};
    ASSERT_EQ(::ptsname_r(master.number(), name.data(), name.size()), 0);
    const Result<Descriptor> terminal = Descriptor::open(name.data(), O_RDWR);
    ASSERT_TRUE(terminal.ok());
    {
        const StandardErrorElsewhere elsewhere(terminal.value());
        LinuxSystemLog().write("a \x1B[1mbold\0 line"s);
        LinuxSystemLog().write("second\n");
    }
    const std::string expected = "a ^[[1mbold\\0 line\r\nsecond\r\n";
    std::string got(expected.size(), '\0');
    const Result<std::size_t> size =
        readFully(master, std::as_writable_bytes(std::span(got.data(), got.size())));
    ASSERT_TRUE(size.ok());
    EXPECT_EQ(got, expected);
    EXPECT_EQ(::fcntl(STDERR_FILENO, F_GETFD), 0); // it was not closed on the way
}

TEST(LinuxSystemLog, StandardErrorThatIsNoTerminalGetsNothing) {
    std::array<int, 2> ends{};
    ASSERT_EQ(::pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK), 0);
    const Descriptor reading(ends[0]);
    const Descriptor writing(ends[1]);
    {
        const StandardErrorElsewhere elsewhere(writing);
        LinuxSystemLog().write("line");
    }
    std::array<std::byte, 16> buffer{};
    EXPECT_EQ(readSome(reading, buffer).error(), SystemError(EAGAIN));
}

TEST(LinuxSystemLog, WithoutADaemonALineIsDroppedInSilence) {
    // The host's own daemon, if there is one, gets it.
    LinuxSystemLog().write(std::string(10U << 20U, 'x'));
    LinuxSystemLog().write("\xFF");
}

/// Written while the program ends, after the seam's own statics.
struct LateWriter {
    ~LateWriter() { SystemLog::current().write("late"); }
};

TEST(LinuxSystemLog, MayBeWrittenToWhileTheProgramEnds) {
    const ::pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        static const LateWriter writer; // destroyed after what is made later
        SystemLog::current().write("early");
        std::exit(0);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
}

} // namespace
} // namespace tav
