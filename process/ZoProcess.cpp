#include "process/ZoProcess.hpp"

#include "base/Format.hpp"
#include "base/PathString.hpp"
#include "base/Unicode.hpp"
#include "base/Value.hpp"
#include "process/KernelFacts.hpp"

#include <csignal>
#include <utility>

namespace tav {

/// What was read of how the process was started. The path may be asked for alone, which is cheaper.
struct ZoProcess::Remembered {
    std::optional<std::string> executableLink;
    bool hasExecutablePath = false;
    std::optional<std::string> executablePath;
    std::optional<ProcessArguments> arguments;
};

namespace {

/// What stands before the last component, without the slashes in between.
std::string_view folderOf(std::string_view path) {
    const std::string_view last = lastPathComponent(path);
    std::string_view folder = path.substr(0, static_cast<std::size_t>(last.data() - path.data()));
    while (folder.size() > 1 && folder.ends_with('/')) {
        folder.remove_suffix(1);
    }
    return folder;
}

/// The folder names that an application's executable lies in: X/Contents/MacOS/executable.
bool liesInBundleFolders(std::string_view path) {
    const std::string_view programs = folderOf(path);
    return equalsIgnoringCase(lastPathComponent(programs), "MacOS") &&
           equalsIgnoringCase(lastPathComponent(folderOf(programs)), "Contents");
}

} // namespace

void ZoProcess::initialize() { static_cast<void>(ZoMachStatsInit()); }

std::optional<ZoProcess> ZoProcess::processForProcessIdentifier(int processIdentifier) {
    ZoProcess process(processIdentifier);
    if (process.state() == ZoProcessState::Gone) {
        return std::nullopt;
    }
    return process;
}

ZoProcess ZoProcess::currentProcess() {
    return ZoProcess(ProcessTable::current().currentProcess());
}

ZoProcess::List ZoProcess::processesForThirdLevelName(ProcessSelector selector, int value) {
    List processes;
    if (const std::optional<std::vector<int>> found =
            ProcessTable::current().processes(selector, value)) {
        processes.reserve(found->size());
        for (const int processIdentifier : *found) {
            // The listing itself has just proved that it exists.
            processes.push_back(ZoProcess(processIdentifier));
        }
    }
    return processes;
}

ZoProcess::List ZoProcess::allProcesses() {
    return processesForThirdLevelName(ProcessSelector::All, 0);
}

ZoProcess::List ZoProcess::userProcesses() {
    return processesForUser(ProcessTable::current().effectiveUser());
}

ZoProcess::List ZoProcess::processesForUser(std::uint32_t user) {
    return processesForThirdLevelName(ProcessSelector::User, static_cast<int>(user));
}

ZoProcess::List ZoProcess::processesForRealUser(std::uint32_t user) {
    return processesForThirdLevelName(ProcessSelector::RealUser, static_cast<int>(user));
}

ZoProcess::List ZoProcess::processesForTerminal(int deviceNumber) {
    return processesForThirdLevelName(ProcessSelector::Terminal, deviceNumber);
}

ZoProcess::List ZoProcess::processesForProcessGroup(int group) {
    return processesForThirdLevelName(ProcessSelector::ProcessGroup, group);
}

ZoProcessState ZoProcess::state() const {
    const std::optional<ProcessRecord> record = ProcessTable::current().record(process_);
    if (!record) {
        return ZoProcessState::Gone;
    }
    return record->isZombie ? ZoProcessState::Zombie : ZoProcessState::Active;
}

int ZoProcess::realUserIdentifier() const {
    const std::optional<ProcessUsers> users = ProcessTable::current().users(process_);
    return users ? static_cast<int>(users->real) : -1;
}

int ZoProcess::userIdentifier() const {
    const std::optional<std::uint32_t> user = ProcessTable::current().userOf(process_);
    return user ? static_cast<int>(*user) : -1;
}

int ZoProcess::terminal() const {
    const std::optional<ProcessRecord> record = ProcessTable::current().record(process_);
    return record && record->terminal != 0 ? record->terminal : -1;
}

int ZoProcess::terminalProcessGroup() const {
    const std::optional<ProcessRecord> record = ProcessTable::current().record(process_);
    return record && record->terminalProcessGroup != 0 ? record->terminalProcessGroup : -1;
}

int ZoProcess::processGroup() const {
    const std::optional<ProcessRecord> record = ProcessTable::current().record(process_);
    return record ? record->processGroup : -1;
}

int ZoProcess::parentProcessIdentifier() const {
    const std::optional<ProcessRecord> record = ProcessTable::current().record(process_);
    return record ? record->parent : -1;
}

std::optional<ZoProcess> ZoProcess::parent() const {
    return processForProcessIdentifier(parentProcessIdentifier());
}

ZoProcess::List ZoProcess::children() const {
    List processes = allProcesses();
    std::erase_if(processes, [this](const ZoProcess& process) {
        return process.parentProcessIdentifier() != process_;
    });
    return processes;
}

ZoProcess::List ZoProcess::siblings() const {
    const int parent = parentProcessIdentifier();
    if (parent < 0) {
        return {};
    }
    List processes = allProcesses();
    std::erase_if(processes, [this, parent](const ZoProcess& process) {
        return process == *this || process.parentProcessIdentifier() != parent;
    });
    return processes;
}

ZoProcess::Remembered& ZoProcess::remembered() const {
    if (!remembered_) {
        remembered_ = std::make_shared<Remembered>();
    }
    return *remembered_;
}

std::optional<std::string> ZoProcess::executablePath() const {
    Remembered& known = remembered();
    if (!known.hasExecutablePath) {
        known.hasExecutablePath = true;
        ProcessTable& table = ProcessTable::current();
        known.executablePath =
            known.executableLink
                ? table.executablePathOfLink(process_, std::move(*known.executableLink))
                : table.executablePath(process_);
        if (known.executablePath &&
            (known.executablePath->empty() || !isValidUTF8(*known.executablePath))) {
            known.executablePath.reset();
        }
    }
    return known.executablePath;
}

const ProcessArguments& ZoProcess::doProcargs() const {
    Remembered& known = remembered();
    if (known.arguments) {
        return *known.arguments;
    }
    ProcessTable& table = ProcessTable::current();
    const KernelFacts& facts = kernelFacts();
    const ArgumentArea::Layout wanted =
        facts.major_version >= 8 ? ArgumentArea::Layout::Counted : ArgumentArea::Layout::Plain;
    const std::string path = executablePath().value_or("");
    ProcessArguments read;
    if (std::optional<ArgumentArea> area = table.argumentArea(
            process_, path, wanted, static_cast<std::size_t>(facts.argument_buffer_size))) {
        read = parseArgumentArea(std::move(*area));
    }
    if (!read.command) {
        const std::optional<ProcessRecord> record = table.record(process_);
        read.command = record ? record->shortName : std::string();
    }
    known.arguments = std::move(read);
    return *known.arguments;
}

const std::string& ZoProcess::command() const { return *doProcargs().command; }

const std::optional<std::string>& ZoProcess::annotation() const { return doProcargs().annotation; }

const std::vector<std::string>& ZoProcess::arguments() const { return doProcargs().arguments; }

const ProcessEnvironment& ZoProcess::environment() const { return doProcargs().environment; }

std::string ZoProcess::annotatedCommand() const {
    const ProcessArguments& known = doProcargs();
    return known.annotation ? tav::format("%@ (%@)", *known.command, *known.annotation)
                            : *known.command;
}

std::string ZoProcess::description() const {
    Value::Array listed;
    for (const std::string& argument : arguments()) {
        listed.emplace_back(argument);
    }
    Value::Dictionary variables;
    for (const auto& [name, value] : environment()) {
        variables.set(std::string(name), value);
    }
    return tav::format("%@ process = %d, command = %@, arguments = %@, environment = %@",
                       tav::format("<ZoProcess: %p>", static_cast<const void*>(this)), process_,
                       command(), Value(std::move(listed)), Value(std::move(variables)));
}

bool ZoProcess::mayRunFromBundle() const {
    if (remembered_ && remembered_->hasExecutablePath) {
        return remembered_->executablePath.has_value();
    }
    std::optional<std::string> link = ProcessTable::current().executableLink(process_);
    if (!link || !(link->ends_with(removedExecutableMark) || liesInBundleFolders(*link))) {
        return false;
    }
    // Kept for the question that follows.
    remembered().executableLink = std::move(link);
    return true;
}

bool ZoProcess::kill(int signal) const { return ProcessTable::current().signal(process_, signal); }

bool ZoProcess::terminate() const { return kill(SIGTERM); }

bool ZoProcess::interrupt() const { return kill(SIGINT); }

bool ZoProcess::resume() const { return kill(SIGCONT); }

bool ZoProcess::suspend() const { return kill(SIGSTOP); }

} // namespace tav
