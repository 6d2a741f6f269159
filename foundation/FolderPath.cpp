#include "base/PathString.hpp"
#include "foundation/FileManager.hpp"
#include "platform/FileSystem.hpp"

#include <cerrno>
#include <cstddef>

namespace tav {

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
    for (std::size_t i = 1; i < components.size(); ++i) {
        folder += components[i];
        // No path gets shorter: where one is too long all others are.
        if (files.createFolder(folder, 0777).number() == ENAMETOOLONG) {
            return;
        }
        folder += '/';
    }
}

} // namespace tav
