#include "fileinfo/local/AliasTarget.hpp"

#include "base/PathString.hpp"

#include <utility>

namespace tav {

FileRef internal::referenceOf(const FileNumbers& file, std::string_view path) {
    return {file.device, file.number, file.birthNanoseconds, file.mount, std::string(path)};
}

Result<internal::AliasTarget> internal::aliasTargetAt(const std::string& path,
                                                      const Result<FileAttributes>& target) {
    if (!target.ok()) {
        return target.error();
    }
    const Result<std::string> canonical = FileSystem::current().canonicalPath(path);
    if (!canonical.ok()) {
        return canonical.error();
    }
    return AliasTarget{referenceOf(numbersOf(target.value()), canonical.value()),
                       target.value().kind == FileKind::Folder};
}

std::optional<std::string> internal::resolvedPathOf(std::string_view path) {
    const std::vector<std::string> components = tav::pathComponents(path);
    if (components.empty()) {
        return std::nullopt;
    }
    FileSystem& files = FileSystem::current();
    std::string resolved;
    for (const std::string& component : components) {
        resolved = stringByAppendingPathComponent(resolved, component);
        const Result<FileAttributes> there = files.attributes(resolved);
        if (!there.ok()) {
            return std::nullopt;
        }
        if (there.value().kind == FileKind::Link) {
            Result<std::string> target = files.canonicalPath(resolved);
            if (!target.ok()) {
                return std::nullopt;
            }
            resolved = std::move(target).value();
        }
    }
    return resolved;
}

} // namespace tav
