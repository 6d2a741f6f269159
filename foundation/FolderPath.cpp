#include "base/PathString.hpp"
#include "foundation/FileManager.hpp"
#include "platform/FileSystem.hpp"

#include <cerrno>
#include <cstddef>
#include <memory>

namespace tav {

namespace {

/// Up to here the host takes a path at once. What it does beyond takes the longer the longer the
/// path is, so from here on each folder is made in the one that was made before.
constexpr std::size_t longestPathAtOnce = 4000;

} // namespace

void recursivelyCreatePath(std::string_view path) {
    FileSystem& files = FileSystem::current();
    const auto there = files.targetAttributes(path);
    if (there.ok() && there.value().kind == FileKind::Folder) {
        return;
    }
    // What could not be looked at may be a link to a folder, and stays.
    if (there.ok() || there.error().number() == ENOENT || there.error().number() == ELOOP) {
        static_cast<void>(files.removeFile(path));
    }
    const std::vector<std::string> components = pathComponents(path);
    std::string folder = "/";
    std::size_t i = 1;
    for (; i < components.size() && folder.size() + components[i].size() < longestPathAtOnce; ++i) {
        folder += components[i];
        // Nothing can be made below a name that is too long.
        if (files.createFolder(folder, 0777).number() == ENAMETOOLONG) {
            return;
        }
        folder += '/';
    }
    if (i >= components.size()) {
        return;
    }
    for (auto above = files.openFolder(folder); above.ok() && i < components.size(); ++i) {
        static_cast<void>(above.value()->createFolder(components[i], 0777));
        above = above.value()->openTargetFolder(components[i]);
    }
}

} // namespace tav
