#include "fileinfo/TavWindowsPathBasedFileInfo.hpp"

#include "base/PathString.hpp"
#include "base/Unicode.hpp"
#include "fileinfo/ItemAllocation.hpp"
#include "fileinfo/PathWay.hpp"
#include "foundation/WindowsPath.hpp"

namespace tav {

namespace {

/// What a device puts in front of the paths that it is given.
constexpr std::string_view devicePrefix = "\\sdcard-ext\\";

std::vector<std::string> componentsOf(std::string_view path) {
    if (path.ends_with('\\')) {
        path.remove_suffix(1);
    }
    return windowsPathComponents(path);
}

} // namespace

FileInfoPtr TavWindowsPathBasedFileInfo::fileInfoWithPath(std::string_view path) {
    const auto item = internal::allocateItem<TavWindowsPathBasedFileInfo>();
    item->initWithPath(path);
    return item;
}

FileInfoPtr TavWindowsPathBasedFileInfo::fileInfo() {
    return internal::allocateItem<TavWindowsPathBasedFileInfo>();
}

std::string TavWindowsPathBasedFileInfo::className() const { return "TavWindowsPathBasedFileInfo"; }

std::vector<std::string> TavWindowsPathBasedFileInfo::superclassNames() const {
    return {"TavPathBasedFileInfo", "TavBaseFileInfo", "NSObject"};
}

std::string TavWindowsPathBasedFileInfo::path() {
    return isFolder() && !_itsPath.ends_with('\\') ? _itsPath + '\\' : _itsPath;
}

std::string TavWindowsPathBasedFileInfo::standardPath() { return pathFromWindowsPath(path()); }

std::string TavWindowsPathBasedFileInfo::name() {
    const WindowsPathParts parts = decomposeWindowsPath(_itsPath);
    return parts.path.empty() ? parts.drive : windowsLastPathComponent(parts.path);
}

std::string TavWindowsPathBasedFileInfo::nameWithoutExtension() {
    return windowsStringByDeletingPathExtension(name());
}

std::vector<std::string> TavWindowsPathBasedFileInfo::pathComponents() {
    WindowsPathParts parts = decomposeWindowsPath(_itsPath);
    if (parts.path.ends_with('\\')) {
        parts.path.pop_back();
    }
    std::vector<std::string> components = windowsPathComponents(parts.path);
    components.insert(components.begin(), std::move(parts.drive));
    return components;
}

std::int32_t TavWindowsPathBasedFileInfo::numBytesNeededForPath() {
    return static_cast<std::int32_t>(devicePrefix.size() +
                                     decomposeWindowsPath(path()).path.size());
}

std::optional<std::string> TavWindowsPathBasedFileInfo::volumeRelativeStandardPath() {
    std::string relative = pathFromWindowsPath(decomposeWindowsPath(_itsPath).path);
    if (relative.starts_with('/')) {
        relative.erase(0, 1);
    }
    return relative;
}

std::optional<std::string> TavWindowsPathBasedFileInfo::relativePathTo(TavBaseFileInfo* other) {
    if (other == nullptr) {
        return std::nullopt;
    }
    const bool isWindowsPath = dynamic_cast<TavWindowsPathBasedFileInfo*>(other) != nullptr;
    const FileInfoPtr root = isWindowsPath ? volume() : nullptr;
    if (!root || !root->isEqualTo(other->volume().get())) {
        return other->path();
    }
    const std::vector<std::string> mine = componentsOf(path());
    const std::vector<std::string> theirs = componentsOf(other->path());
    return internal::wayBetween(mine, theirs, !contains(other),
                                windowsStringByAppendingPathComponent);
}

bool TavWindowsPathBasedFileInfo::isEqualTo(TavBaseFileInfo* other) {
    auto* windows = dynamic_cast<TavWindowsPathBasedFileInfo*>(other);
    return windows != nullptr ? equalsIgnoringCase(path(), windows->path())
                              : TavPathBasedFileInfo::isEqualTo(other);
}

FileInfoPtr TavWindowsPathBasedFileInfo::parentFolder() {
    const WindowsPathParts parts = decomposeWindowsPath(_itsPath);
    if (parts.path.empty()) {
        return nullptr;
    }
    std::string parent = windowsStringByDeletingLastPathComponent(parts.path);
    if (!parts.drive.empty()) {
        parent = windowsStringByAppendingPathComponent(parts.drive, parent);
    }
    return TavWindowsPathBasedFileInfo::fileInfoWithPath(parent);
}

bool TavWindowsPathBasedFileInfo::isVolume() {
    const WindowsPathParts parts = decomposeWindowsPath(_itsPath);
    return !parts.drive.empty() && parts.path.empty();
}

FileInfoPtr TavWindowsPathBasedFileInfo::volume() {
    return TavWindowsPathBasedFileInfo::fileInfoWithPath(decomposeWindowsPath(_itsPath).drive);
}

void TavWindowsPathBasedFileInfo::updateName(std::string_view name) {
    const FileInfoPtr parent = parentFolder();
    const std::string folder = parent ? pathFromWindowsPath(parent->path()) : std::string();
    setPath(windowsPathFromPath(stringByAppendingPathComponent(folder, name)));
}

} // namespace tav
