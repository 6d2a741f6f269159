#include "platform/linux/LinuxPanels.hpp"

#include "base/Unicode.hpp"
#include "base/Url.hpp"
#include "base/WellFormedUTF8.hpp"
#include "platform/linux/Descriptor.hpp"
#include "platform/linux/LaunchEnvironment.hpp"
#include "platform/linux/SpawnedProgram.hpp"

#include <string_view>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>

namespace tav {
namespace {

/// More than any path that a panel can lead to.
constexpr std::uint64_t longestOutput = 1 << 20;

/// The path of a file of this host; nothing for any other URL.
std::optional<std::string> pathOfUrl(std::string_view text) {
    const std::optional<Url> url = Url::withString(text);
    if (!url || !url->scheme() || !equalsIgnoringCase(*url->scheme(), "file") ||
        (url->host() && !equalsIgnoringCase(*url->host(), "localhost"))) {
        return std::nullopt;
    }
    std::string path = url->path();
    if (!path.starts_with('/') || path.find('\0') != std::string::npos) {
        return std::nullopt;
    }
    return path;
}

std::vector<std::string> zenityArguments(const PanelRequest& request) {
    std::vector<std::string> arguments{"zenity", "--file-selection"};
    if (request.folders) {
        arguments.emplace_back("--directory");
    }
    if (request.title) {
        arguments.push_back("--title=" + wellFormedUTF8(*request.title));
    }
    if (request.startFolder.starts_with('/')) {
        // Without the slash at the end the folder itself would be what is proposed.
        arguments.push_back("--filename=" + request.startFolder +
                            (request.startFolder.ends_with('/') ? "" : "/"));
    }
    return arguments;
}

/// Runs a program from the search path to its end: its output, when its status was 0.
std::optional<std::string> outputOf(const std::vector<std::string>& arguments) {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) {
        return std::nullopt;
    }
    Descriptor reading(ends[0]);
    Descriptor writing(ends[1]);
    internal::SpawnSettings settings;
    settings.printInto(writing.number());
    const Result<::pid_t> child =
        settings.start(arguments.front(), arguments, internal::currentEnvironment());
    if (!child.ok()) {
        return std::nullopt;
    }
    writing.reset();
    const Result<Data> output = readToEnd(reading, 0, longestOutput);
    // One that writes without an end ends by this.
    reading.reset();
    const std::optional<int> status = internal::waitForChild(child.value());
    const bool succeeded = !status || (WIFEXITED(*status) && WEXITSTATUS(*status) == 0);
    return succeeded && output.ok() ? std::optional<std::string>(textOf(output.value()))
                                    : std::nullopt;
}

std::optional<std::string> chooseThroughZenity(const PanelRequest& request) {
    std::optional<std::string> path = outputOf(zenityArguments(request));
    if (path && path->ends_with('\n')) {
        path->pop_back();
    }
    return path && path->starts_with('/') && path->find('\0') == std::string::npos ? path
                                                                                   : std::nullopt;
}

} // namespace

std::optional<std::string> LinuxPanels::choose(const PanelRequest& request) {
    const internal::PortalAnswer answer = internal::chooseThroughPortal(request, patience_);
    if (!answer.isShown) {
        return chooseThroughZenity(request);
    }
    return answer.url ? pathOfUrl(*answer.url) : std::nullopt;
}

namespace internal {

Panels& realPanels() {
    static LinuxPanels panels;
    return panels;
}

} // namespace internal
} // namespace tav
