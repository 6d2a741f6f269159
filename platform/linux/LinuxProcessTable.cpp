#include "platform/linux/LinuxProcessTable.hpp"

#include "platform/linux/FolderRecords.hpp"
#include "platform/linux/ProcRecords.hpp"
#include "platform/linux/ProcessMemory.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <climits>
#include <csignal>
#include <cstring>

#include <sys/stat.h>
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
    alignas(struct ::dirent64) std::array<std::byte, 32768> buffer;
    const SystemError error =
        forEachFolderRecord(listing.value(), buffer, [&](const FolderRecord& record) {
            int process = 0;
            const char* const nameEnd = record.name + std::strlen(record.name);
            const auto [end, failure] = std::from_chars(record.name, nameEnd, process);
            if (failure == std::errc() && end == nameEnd && process > 0) {
                processes.push_back(process);
            }
        });
    if (!error.isNone()) {
        return std::nullopt;
    }
    if (selector != ProcessSelector::All) {
        std::erase_if(processes, [&](int process) { return !matches(process, selector, value); });
    }
    return processes;
}

bool LinuxProcessTable::matches(int process, ProcessSelector selector, int value) {
    if (selector == ProcessSelector::User) {
        return userOf(process) == static_cast<std::uint32_t>(value);
    }
    if (selector == ProcessSelector::RealUser) {
        const std::optional<ProcessUsers> found = users(process);
        return found && found->real == static_cast<std::uint32_t>(value);
    }
    const std::optional<ProcessRecord> found = record(process);
    return found &&
           (selector == ProcessSelector::Terminal ? found->terminal : found->processGroup) == value;
}

Result<Descriptor> LinuxProcessTable::open(int process, std::string_view name) {
    return Descriptor::open(folder_.number(), EntryPath(process, name).text(), O_RDONLY, 0);
}

std::string_view LinuxProcessTable::beginning(int process, std::string_view name,
                                              std::span<char> buffer) {
    const Result<Descriptor> file = open(process, name);
    if (!file.ok()) {
        return {};
    }
    const Result<std::size_t> size = readSome(file.value(), std::as_writable_bytes(buffer));
    return {buffer.data(), size.ok() ? size.value() : 0};
}

std::optional<StatRecord> LinuxProcessTable::statRecord(int process) {
    std::array<char, 2048> buffer;
    std::optional<StatRecord> found = parseProcStat(beginning(process, "stat", buffer));
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

std::optional<Data> LinuxProcessTable::contents(int process, std::string_view name) {
    const Result<Descriptor> file = open(process, name);
    if (!file.ok()) {
        return std::nullopt;
    }
    Result<Data> bytes = readToEnd(file.value(), 4096, maximumFileSize);
    return bytes.ok() ? std::optional(std::move(bytes).value()) : std::nullopt;
}

std::optional<ProcessUsers> LinuxProcessTable::users(int process) {
    std::array<char, 1024> buffer; // The lines asked for are among the first ten.
    return parseProcStatusUsers(beginning(process, "status", buffer));
}

std::optional<Data> LinuxProcessTable::environment(int process) {
    return contents(process, "environ");
}

bool LinuxProcessTable::append(int process, std::string_view name, Data& bytes) {
    const Result<Descriptor> file = open(process, name);
    if (!file.ok()) {
        return false;
    }
    // By way of the stack, so that what is kept has its own size and no more. Only a long text
    // grows by doubling: it comes in many pieces, and would be copied again for each.
    std::array<std::byte, 8192> buffer;
    while (bytes.size() < maximumFileSize) {
        const Result<std::size_t> size = readSome(file.value(), buffer);
        if (!size.ok()) {
            return false;
        }
        const auto end = buffer.begin() + static_cast<std::ptrdiff_t>(size.value());
        if (bytes.size() < buffer.size()) {
            bytes.reserve(bytes.size() + size.value() + 1);
        }
        bytes.insert(bytes.end(), buffer.begin(), end);
        // These files are copied out of memory: less than asked for is all there is.
        if (size.value() < buffer.size()) {
            return true;
        }
    }
    return false;
}

std::optional<ArgumentArea> LinuxProcessTable::argumentArea(int process, std::string_view path,
                                                            ArgumentArea::Layout /*wanted*/,
                                                            std::size_t /*bufferSize*/) {
    // The place of the count, the path and its NUL, and then what the two files hold.
    ArgumentArea area;
    Data& bytes = area.bytes;
    const std::size_t argumentsOffset = sizeof(std::int32_t) + path.size() + 1;
    bytes.resize(argumentsOffset);
    path.copy(reinterpret_cast<char*>(bytes.data()) + sizeof(std::int32_t), path.size());
    if (!append(process, "cmdline", bytes) || bytes.size() == argumentsOffset) {
        return std::nullopt;
    }
    const auto endWithNUL = [&bytes] {
        if (bytes.back() != std::byte{0}) {
            bytes.push_back(std::byte{0});
        }
    };
    endWithNUL();
    const std::int32_t count =
        argumentCount(process, textOf(BytesView(bytes).subspan(argumentsOffset)));
    std::memcpy(bytes.data(), &count, sizeof count);
    const std::size_t environmentOffset = bytes.size();
    if (!append(process, "environ", bytes)) {
        bytes.resize(environmentOffset);
    }
    endWithNUL();
    return area;
}

std::int32_t LinuxProcessTable::argumentCount(int process, std::string_view arguments) {
    // Empty arguments at the end, or the padding behind a title? The number from the start tells;
    // it is not worth asking for otherwise.
    std::int64_t declared = 0;
    if (arguments.ends_with(std::string_view("\0\0", 2))) {
        const std::optional<StatRecord> found = statRecord(process);
        declared = found ? declaredArgumentCount(*found).value_or(0) : 0;
    }
    return countArguments(arguments, declared);
}

std::optional<std::uint32_t> LinuxProcessTable::userOf(int process) {
    struct ::stat attributes;
    // The folder itself, unlike what lies in it, is the effective user's even when the process may
    // not be looked into. Far cheaper than the text that has all of the users.
    if (::fstatat(folder_.number(), EntryPath(process, "").text(), &attributes, 0) != 0) {
        return std::nullopt;
    }
    return attributes.st_uid;
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

std::optional<std::string> LinuxProcessTable::executablePathOfLink(int process, std::string link) {
    // An installer may replace the file between the questions: then the link reads otherwise now.
    for (int attempt = 0; attempt < 3; ++attempt) {
        struct ::stat running;
        if (::fstatat(folder_.number(), EntryPath(process, "exe").text(), &running, 0) != 0) {
            return std::nullopt;
        }
        struct ::stat named;
        const bool isThere = ::stat(link.c_str(), &named) == 0;
        if (isThere && isSameFile(running, named)) {
            return link;
        }
        if (link.ends_with(removedExecutableMark)) {
            link.resize(link.size() - removedExecutableMark.size());
            if (exists(link)) {
                return isSamePlace(process, link) ? std::optional(link) : std::nullopt;
            }
            // The folder was moved aside before it was removed: where the program was started from
            // tells the place that the new one has taken.
            std::optional<std::string> started = firstArgumentPath(process);
            return started ? started : link;
        }
        std::optional<std::string> again = executableLink(process);
        if (again == link) {
            return isThere ? std::nullopt : again;
        }
        if (!again) {
            return std::nullopt;
        }
        link = std::move(*again);
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
    if (!path.starts_with('/') || !isSamePlace(process, path)) {
        return std::nullopt;
    }
    return path;
}

bool LinuxProcessTable::isSamePlace(int process, const std::string& path) {
    const std::string throughTheirs = EntryPath(process, "root").text() + path;
    struct ::stat theirs;
    struct ::stat ours;
    return ::fstatat(folder_.number(), throughTheirs.c_str(), &theirs, 0) == 0 &&
           ::stat(path.c_str(), &ours) == 0 && isSameFile(theirs, ours);
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
