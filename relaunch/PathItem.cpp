#include "relaunch/PathItem.hpp"

#include "base/PathString.hpp"
#include "platform/FileSystem.hpp"

#include <cerrno>
#include <vector>

namespace tav {

std::string_view PathItem::name() const { return lastPathComponent(path_); }

bool PathItem::exists() const {
    return !path_.empty() && FileSystem::current().attributes(path_).ok();
}

std::optional<PathItem> PathItem::parentFolder() const {
    if (path_ == "/") {
        return std::nullopt;
    }
    return PathItem(stringByDeletingLastPathComponent(path_));
}

PathItem PathItem::find(std::string_view name) const {
    return PathItem(stringByAppendingPathComponent(
        isFile() ? stringByDeletingLastPathComponent(path_) : path_, name));
}

bool PathItem::isFile() const {
    FileSystem& files = FileSystem::current();
    const Result<FileAttributes> target = files.targetAttributes(path_);
    if (target.ok()) {
        return target.value().kind != FileKind::Folder;
    }
    // A link that leads nowhere counts as a file; one that leads round in circles as nothing.
    return target.error() == SystemError(ENOENT) && files.attributes(path_).ok();
}

std::optional<PathItem> PathItem::resolved() const {
    FileSystem& files = FileSystem::current();
    const Result<FileAttributes> attributes = files.attributes(path_);
    if (!attributes.ok()) {
        return std::nullopt;
    }
    if (attributes.value().kind != FileKind::Link) {
        return *this;
    }
    Result<std::string> target = files.canonicalPath(path_);
    if (!target.ok()) {
        return std::nullopt;
    }
    return PathItem(std::move(target).value());
}

std::optional<PathItem> PathItem::fileInfoResolveAliasesWithPath(std::string_view path) {
    std::optional<PathItem> item;
    for (const std::string& component : pathComponents(path)) {
        item = (item ? item->find(component) : fileInfoWithPath(component)).resolved();
        if (!item) {
            return std::nullopt;
        }
    }
    return item;
}

} // namespace tav
