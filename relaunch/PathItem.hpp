#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tav {

/// A file or folder named by its path, whether or not anything exists there: as much of a file item
/// as the relaunch pass needs. A value; asks `FileSystem::current()` at each question.
class PathItem {
  public:
    [[nodiscard]] static PathItem fileInfoWithPath(std::string_view path) {
        return PathItem(std::string(path));
    }

    /// Walks the path from its first component and follows a link at each step, so that the
    /// answer's path has none. Nothing as soon as a component does not exist, or for an empty path.
    [[nodiscard]] static std::optional<PathItem>
    fileInfoResolveAliasesWithPath(std::string_view path);

    [[nodiscard]] const std::string& path() const { return path_; }
    /// The last path component.
    [[nodiscard]] std::string_view name() const;
    /// Whether something exists at the path, be it a link that leads nowhere.
    [[nodiscard]] bool exists() const;

    /// The item for the folder that holds this one; nothing for "/".
    [[nodiscard]] std::optional<PathItem> parentFolder() const;

    /// The item of that name in this folder; beside the item when that is a file. It need not
    /// exist.
    [[nodiscard]] PathItem find(std::string_view name) const;

  private:
    explicit PathItem(std::string path) : path_(std::move(path)) {}

    [[nodiscard]] bool isFile() const;
    /// The item that a link leads to, or the item itself; nothing for a link that leads nowhere.
    [[nodiscard]] std::optional<PathItem> resolved() const;

    std::string path_;
};

} // namespace tav
