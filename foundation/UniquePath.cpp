#include "base/Format.hpp"
#include "base/PathString.hpp"
#include "foundation/FileManager.hpp"
#include "platform/FileSystem.hpp"

namespace tav {

std::string uniqueFilePath(std::string_view path) {
    const std::string folder = stringByDeletingLastPathComponent(path);
    const std::string_view name = lastPathComponent(path);
    const std::string itself = stringByAppendingPathComponent(folder, name);
    if (path.empty() || !FileSystem::current().targetAttributes(itself).ok()) {
        return std::string(path);
    }
    const std::string base = stringByDeletingPathExtension(name);
    const std::string_view extension = pathExtension(name);

    std::string candidate;
    bool isFolder = false;
    for (int counter = 0;; ++counter) {
        if (isFolder) {
            candidate = tav::format("%@ %d", name, counter);
        } else if (counter == 0) {
            candidate = tav::format("%@.%@", base, extension);
        } else {
            candidate = tav::format("%@ %d.%@", base, counter, extension);
        }
        candidate = stringByAppendingPathComponent(folder, candidate);
        const auto there = FileSystem::current().targetAttributes(candidate);
        if (!there.ok()) {
            return candidate;
        }
        isFolder = there.value().kind == FileKind::Folder;
    }
}

} // namespace tav
