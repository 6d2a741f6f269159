#include "relaunch/Relaunch.hpp"

#include "base/Exception.hpp"
#include "base/Format.hpp"
#include "base/PropertyList.hpp"
#include "fileinfo/local/TavMacFileInfo.hpp"
#include "platform/Bundle.hpp"
#include "platform/FileSystem.hpp"
#include "platform/QuitRequests.hpp"
#include "platform/Workspace.hpp"
#include "relaunch/ProcessOfBundle.hpp"

#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace tav {
namespace {

/// Far more than four names need, and little enough to read.
constexpr std::uint64_t maximumConfigurationSize = 16U << 20U;

[[noreturn]] void fail(std::string_view reason) { throw Exception("RelaunchAfterInstall", reason); }

/// The tool's property list; its keys are looked at only when they are needed, so that a list that
/// lacks a later one still has the earlier ones acted upon.
class Configuration {
  public:
    static Configuration read() {
        const std::optional<Bundle> bundle = Bundle::mainBundle();
        const std::optional<std::string> path =
            bundle ? bundle->pathForResource("RelaunchAfterInstall", "plist") : std::nullopt;
        if (path) {
            const Result<Data> bytes =
                FileSystem::current().readFile(*path, maximumConfigurationSize);
            std::optional<Value> list =
                bytes.ok() ? PropertyList::read(bytes.value(), nullptr) : std::nullopt;
            if (list && list->asDictionary() != nullptr) {
                return Configuration(std::move(*list->asDictionary()));
            }
        }
        fail("Couldn't read RelaunchAfterInstall.plist file.");
    }

    [[nodiscard]] const std::string& text(std::string_view key) const {
        const std::string* const found = entries_.findString(key);
        if (found == nullptr) {
            fail(tav::format("Couldn't find %@.", key));
        }
        return *found;
    }

  private:
    explicit Configuration(Value::Dictionary entries) : entries_(std::move(entries)) {}

    Value::Dictionary entries_;
};

/// The desktop on which an application is quit and started: that of whoever runs it now.
DesktopSession sessionFor(const std::optional<ZoProcess>& running) {
    DesktopSessions& sessions = DesktopSessions::current();
    return running ? sessions.sessionOfProcess(running->processIdentifier())
                   : sessions.sessionOfInstaller();
}

void launchIfExists(const FileInfoPtr& application, const DesktopSession& session) {
    if (application && application->exists()) {
        static_cast<void>(Workspace::current().launchApplication(application->path(), session));
    }
}

} // namespace

Status quitApplicationWithBundleID(std::string_view identifier, const DesktopSession& session) {
    // The address ends where the text ends for those who carry it.
    identifier = identifier.substr(0, identifier.find('\0'));
    QuitRequests& requests = QuitRequests::current();
    std::unique_ptr<QuitRequests::Request> request;
    const Status built = requests.build(identifier, session, request);
    if (built != Status::Success) {
        return built;
    }
    const Status sent = requests.send(*request);
    requests.dispose(std::move(request));
    return sent;
}

void relaunchAfterInstall() {
    const Configuration configuration = Configuration::read();
    BundleIdentifiers identifiers;

    if (const std::optional<ZoProcess> crashReporter =
            processWithIdentifier(configuration.text("kCrashReporterID"), identifiers)) {
        crashReporter->terminate();
    }

    const std::string& name = configuration.text("kMainAppName");
    const FileInfoPtr mainApplication = TavMacFileInfo::fileInfoResolveAliasesWithPath(
        tav::format("/Applications/%@/%@.app", name, name));
    FileInfoPtr backgroundApplication;
    if (mainApplication) {
        backgroundApplication = mainApplication->find("Contents")
                                    ->find("SharedSupport")
                                    ->find(tav::format("%@ Background.app", name));
    }

    const std::string& mainIdentifier = configuration.text("kMainAppID");
    const std::optional<ZoProcess> running = processWithIdentifier(mainIdentifier, identifiers);
    if (running) {
        // Taken now: the process may be gone as soon as it has been asked to quit.
        const DesktopSession session = sessionFor(running);
        if (quitApplicationWithBundleID(mainIdentifier, session) == Status::Success) {
            launchIfExists(mainApplication, session);
        }
        return;
    }

    const std::optional<ZoProcess> background =
        processWithIdentifier(configuration.text("kBackgroundAppID"), identifiers);
    const DesktopSession session = sessionFor(background);
    if (background) {
        background->terminate();
    }
    launchIfExists(backgroundApplication, session);
}

int runRelaunchAfterInstall() {
    try {
        relaunchAfterInstall();
    } catch (const Exception&) {
        // There is nobody to tell: an installer goes on whatever became of the suite's processes.
    }
    return 0;
}

} // namespace tav
