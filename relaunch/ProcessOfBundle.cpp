#include "relaunch/ProcessOfBundle.hpp"

#include "base/Unicode.hpp"
#include "platform/FileSystem.hpp"
#include "relaunch/PathItem.hpp"

#include <string>

namespace tav {
namespace {

/// X of X/Contents/MacOS/executable; nothing for an executable that lies elsewhere.
std::optional<std::string> folderAroundContents(std::string_view path) {
    const std::optional<PathItem> programs = PathItem::fileInfoWithPath(path).parentFolder();
    if (!programs || !equalsIgnoringCase(programs->name(), "MacOS")) {
        return std::nullopt;
    }
    const std::optional<PathItem> contents = programs->parentFolder();
    if (!contents || !equalsIgnoringCase(contents->name(), "Contents")) {
        return std::nullopt;
    }
    const std::optional<PathItem> bundle = contents->parentFolder();
    return bundle ? std::optional(bundle->path()) : std::nullopt;
}

/// The path of the bundle that owns an executable which exists; one question to the file system.
std::optional<std::string> bundleFolder(const std::string& path) {
    const Result<FileAttributes> attributes = FileSystem::current().attributes(path);
    if (!attributes.ok()) {
        return std::nullopt;
    }
    const FileKind kind = attributes.value().kind;
    const bool isFolder =
        kind == FileKind::Folder || (kind == FileKind::Link && Bundle::bundleWithPath(path));
    return isFolder ? path : folderAroundContents(path);
}

} // namespace

std::optional<Bundle> bundleForExecutablePath(std::string_view path) {
    if (std::optional<Bundle> bundle = Bundle::bundleWithPath(path)) {
        return bundle;
    }
    const std::optional<std::string> folder = folderAroundContents(path);
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
