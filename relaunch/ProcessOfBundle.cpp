#include "relaunch/ProcessOfBundle.hpp"

#include "base/Unicode.hpp"
#include "fileinfo/local/TavMacFileInfo.hpp"

#include <string>

namespace tav {
namespace {

/// X of X/Contents/MacOS/executable; nothing for an executable that lies elsewhere.
std::optional<std::string> folderAroundContents(TavMacFileInfo& executable) {
    const FileInfoPtr programs = executable.parentFolder();
    if (!programs || !equalsIgnoringCase(programs->name(), "MacOS")) {
        return std::nullopt;
    }
    const FileInfoPtr contents = programs->parentFolder();
    if (!contents || !equalsIgnoringCase(contents->name(), "Contents")) {
        return std::nullopt;
    }
    const FileInfoPtr bundle = contents->parentFolder();
    return bundle ? std::optional(bundle->path()) : std::nullopt;
}

/// The path of the bundle that owns an executable which exists; one question to the file system.
std::optional<std::string> bundleFolder(const std::string& path) {
    const auto executable = TavMacFileInfo::fileInfoWithPath(path);
    // In this order, the first answer brings the second along.
    if (executable->isFolder()) {
        return path;
    }
    return executable->exists() ? folderAroundContents(*executable) : std::nullopt;
}

} // namespace

std::optional<Bundle> bundleForExecutablePath(std::string_view path) {
    if (std::optional<Bundle> bundle = Bundle::bundleWithPath(path)) {
        return bundle;
    }
    const std::optional<std::string> folder =
        folderAroundContents(*TavMacFileInfo::fileInfoWithPath(path));
    return folder ? Bundle::bundleWithPath(*folder) : std::nullopt;
}

std::optional<ZoProcess> processWithIdentifier(std::string_view identifier,
                                               BundleIdentifiers& identifiers) {
    for (const ZoProcess& process : ZoProcess::allProcesses()) {
        if (!process.mayRunFromBundle()) {
            continue;
        }
        const std::optional<std::string> path = process.executablePath();
        const std::optional<std::string> folder = path ? bundleFolder(*path) : std::nullopt;
        if (folder && identifiers.identifierOfBundle(*folder) == identifier) {
            return process;
        }
    }
    return std::nullopt;
}

} // namespace tav
