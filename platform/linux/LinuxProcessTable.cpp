#include "platform/linux/LinuxProcessTable.hpp"

#include "platform/linux/ProcRecords.hpp"
#include "platform/linux/ProcessMemory.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <climits>
#include <csignal>
#include <cstring>

#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/utsname.h>
#include <unistd.h>

namespace tav {
namespace internal {
namespace {

constexpr std::uint64_t maximumFileSize = 16U << 20U;

/// "PID/NAME", relative to /proc.
class EntryPath {
  public:
    EntryPath(int process, std::string_view name) {
        char* const end = std::to_chars(text_.data(), text_.data() + 12, process).ptr;
        *end = '/';
        name.copy(end + 1, text_.size() - 14);
    }
    [[nodiscard]] const char* text() const { return text_.data(); }

  private:
    std::array<char, 32> text_ = {};
};

/// The header of an entry as getdents64 writes it; the name follows.
struct DirectoryEntryHeader {
    std::uint64_t number;
    std::int64_t offset;
    std::uint16_t length;
    std::uint8_t kind;
};
constexpr std::size_t entryNameOffset = 19;

void appendProcesses(const char* entries, std::size_t size, std::vector<int>& processes) {
    for (std::size_t offset = 0; offset + entryNameOffset < size;) {
        DirectoryEntryHeader header;
        std::memcpy(&header, entries + offset, sizeof header);
        const char* const name = entries + offset + entryNameOffset;
        int process = 0;
        const auto [end, error] = std::from_chars(name, entries + size, process);
        if (error == std::errc() && *end == '\0' && process > 0) {
            processes.push_back(process);
        }
        offset += std::max<std::size_t>(header.length, entryNameOffset);
    }
}

bool isSameFile(const struct ::stat& a, const struct ::stat& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

bool exists(const std::string& path) {
    struct ::stat attributes;
    return ::stat(path.c_str(), &attributes) == 0;
}

} // namespace

LinuxProcessTable::LinuxProcessTable() {
    Result<Descriptor> folder = Descriptor::open("/proc", O_PATH | O_DIRECTORY);
    if (folder.ok()) {
        folder_ = std::move(folder).value();
    }
}

std::optional<std::vector<int>> LinuxProcessTable::processes(ProcessSelector selector, int value) {
    const Result<Descriptor> listing = Descriptor::open("/proc", O_RDONLY | O_DIRECTORY);
    if (!listing.ok()) {
        return std::nullopt;
    }
    std::vector<int> processes;
    std::array<char, 32768> buffer;
    for (;;) {
        const auto size = retryInterrupted([&] {
            return ::syscall(SYS_getdents64, listing.value().number(), buffer.data(),
                             buffer.size());
        });
        if (size < 0) {
            return std::nullopt;
        }
        if (size == 0) {
            break;
        }
        appendProcesses(buffer.data(), static_cast<std::size_t>(size), processes);
    }
    if (selector != ProcessSelector::All) {
        std::erase_if(processes, [&](int process) { return !matches(process, selector, value); });
    }
    return processes;
}

bool LinuxProcessTable::matches(int process, ProcessSelector selector, int value) {
    if (selector == ProcessSelector::User || selector == ProcessSelector::RealUser) {
        const std::optional<ProcessUsers> found = users(process);
        const auto wanted = static_cast<std::uint32_t>(value);
        return found &&
               (selector == ProcessSelector::User ? found->effective : found->real) == wanted;
    }
    const std::optional<ProcessRecord> found = record(process);
    switch (selector) {
    case ProcessSelector::ProcessGroup:
        return found && found->processGroup == value;
    case ProcessSelector::Terminal:
        return found && found->terminal == value;
    default:
        return found.has_value();
    }
}

std::optional<StatRecord> LinuxProcessTable::statRecord(int process) {
    const Result<Descriptor> file =
        Descriptor::open(folder_.number(), EntryPath(process, "stat").text(), O_RDONLY, 0);
    if (!file.ok()) {
        return std::nullopt;
    }
    std::array<char, 2048> buffer;
    const Result<std::size_t> size =
        readSome(file.value(), std::as_writable_bytes(std::span(buffer)));
    if (!size.ok()) {
        return std::nullopt;
    }
    std::optional<StatRecord> found = parseProcStat({buffer.data(), size.value()});
    if (found && (found->isThread || found->isDead)) {
        return std::nullopt;
    }
    return found;
}

std::optional<ProcessRecord> LinuxProcessTable::record(int process) {
    std::optional<StatRecord> found = statRecord(process);
    if (!found) {
        return std::nullopt;
    }
    return std::move(found->process);
}

std::optional<Data> LinuxProcessTable::contents(int process, const char* name) {
    const Result<Descriptor> file =
        Descriptor::open(folder_.number(), EntryPath(process, name).text(), O_RDONLY, 0);
    if (!file.ok()) {
        return std::nullopt;
    }
    Result<Data> bytes = readToEnd(file.value(), 4096, maximumFileSize);
    return bytes.ok() ? std::optional(std::move(bytes).value()) : std::nullopt;
}

std::optional<ProcessUsers> LinuxProcessTable::users(int process) {
    const std::optional<Data> status = contents(process, "status");
    return status ? parseProcStatusUsers(textOf(*status)) : std::nullopt;
}

std::optional<Data> LinuxProcessTable::environment(int process) {
    return contents(process, "environ");
}

std::optional<ArgumentArea> LinuxProcessTable::argumentArea(int process,
                                                            ArgumentArea::Layout /*wanted*/,
                                                            std::size_t /*bufferSize*/) {
    const std::optional<StatRecord> found = statRecord(process);
    if (!found || found->process.isZombie) {
        return std::nullopt;
    }
    const std::string path = executablePath(process).value_or("");
    if (const std::optional<StartTexts> texts = readStartTexts(*found)) {
        return makeArgumentArea(countArguments(texts->arguments(), texts->declaredCount), path,
                                texts->arguments(), texts->environment());
    }
    const std::optional<Data> arguments = contents(process, "cmdline");
    if (!arguments || (arguments->empty() && path.empty())) {
        return std::nullopt;
    }
    const std::optional<Data> variables = arguments->empty() ? std::nullopt : environment(process);
    return makeArgumentArea(countArguments(textOf(*arguments), 0), path, textOf(*arguments),
                            variables ? textOf(*variables) : std::string_view());
}

std::optional<std::string> LinuxProcessTable::executableLink(int process) {
    std::array<char, PATH_MAX> buffer;
    const ::ssize_t size = ::readlinkat(folder_.number(), EntryPath(process, "exe").text(),
                                        buffer.data(), buffer.size());
    if (size <= 0 || static_cast<std::size_t>(size) == buffer.size()) {
        return std::nullopt;
    }
    return std::string(buffer.data(), static_cast<std::size_t>(size));
}

std::optional<std::string> LinuxProcessTable::executablePath(int process) {
    // An installer may replace the file between the questions: then the link reads otherwise now.
    for (int attempt = 0; attempt < 3; ++attempt) {
        std::optional<std::string> link = executableLink(process);
        struct ::stat running;
        if (!link ||
            ::fstatat(folder_.number(), EntryPath(process, "exe").text(), &running, 0) != 0) {
            return std::nullopt;
        }
        struct ::stat named;
        const bool isThere = ::stat(link->c_str(), &named) == 0;
        if (isThere && isSameFile(running, named)) {
            return link;
        }
        if (link->ends_with(removedExecutableMark)) {
            link->resize(link->size() - removedExecutableMark.size());
            if (exists(*link)) {
                return link;
            }
            // The folder was moved aside before it was removed: where the program was started from
            // tells the place that the new one has taken.
            std::optional<std::string> started = firstArgumentPath(process);
            return started ? started : link;
        }
        if (executableLink(process) == link) {
            return isThere ? std::nullopt : link;
        }
    }
    return std::nullopt;
}

std::optional<std::string> LinuxProcessTable::firstArgumentPath(int process) {
    const std::optional<Data> arguments = contents(process, "cmdline");
    if (!arguments) {
        return std::nullopt;
    }
    const std::string_view text = textOf(*arguments);
    const std::string path(text.substr(0, text.find('\0')));
    if (!path.starts_with('/') || !exists(path) || !runsInOurTree(process)) {
        return std::nullopt;
    }
    return path;
}

bool LinuxProcessTable::runsInOurTree(int process) {
    struct ::stat theirs;
    struct ::stat ours;
    return ::fstatat(folder_.number(), EntryPath(process, "ns/mnt").text(), &theirs, 0) == 0 &&
           ::fstatat(folder_.number(), "self/ns/mnt", &ours, 0) == 0 && isSameFile(theirs, ours);
}

bool LinuxProcessTable::signal(int process, int number) {
    return process > 0 && ::kill(process, number) == 0;
}

int LinuxProcessTable::currentProcess() { return ::getpid(); }

std::uint32_t LinuxProcessTable::effectiveUser() { return ::geteuid(); }

std::optional<std::string> LinuxProcessTable::kernelRelease() {
    struct ::utsname name;
    if (::uname(&name) != 0) {
        return std::nullopt;
    }
    return std::string(name.release);
}

std::optional<int> LinuxProcessTable::argumentMaximum() {
    const long maximum = ::sysconf(_SC_ARG_MAX);
    if (maximum <= 0) {
        return std::nullopt;
    }
    return static_cast<int>(std::min<long>(maximum, INT_MAX));
}

LinuxProcessTable& linuxProcessTable() {
    static LinuxProcessTable table;
    return table;
}

ProcessTable& realProcessTable() { return linuxProcessTable(); }

} // namespace internal
} // namespace tav
