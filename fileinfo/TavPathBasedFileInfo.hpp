#pragma once

#include "fileinfo/TavBaseFileInfo.hpp"

namespace tav {

/// A file item that is known by a slash path alone: names, parent, components and containment come
/// from the text of the path. It touches no file system, so whether the item exists, what it is and
/// what it holds stays with the back-end that is derived from it.
class TavPathBasedFileInfo : public TavBaseFileInfo {
  public:
    /// An item of this very class.
    [[nodiscard]] static FileInfoPtr fileInfoWithPath(std::string_view path);
    /// The same with the empty path.
    [[nodiscard]] static FileInfoPtr fileInfo();

    void encodeWithCoder(KeyedArchiver& coder) override;
    /// Takes the path by `setPath`: nothing is refreshed.
    void initWithCoder(KeyedUnarchiver& coder) override;
    [[nodiscard]] std::string className() const override;
    [[nodiscard]] std::vector<std::string> superclassNames() const override;

    [[nodiscard]] std::string path() override;
    [[nodiscard]] std::string name() override;
    [[nodiscard]] std::string nameWithoutExtension() override;
    /// The components of `path` without one trailing slash; an absolute path begins with "/".
    [[nodiscard]] std::vector<std::string> pathComponents() override;
    [[nodiscard]] std::string description() override; ///< `path`

    /// `path` without the path of the volume in front (compared ignoring case) and without a slash
    /// at either end; unchanged when it does not begin with that.
    [[nodiscard]] std::optional<std::string> volumeRelativeStandardPath() override;
    /// The way from this folder (the parent of a file) to the other item: as many ".." as it takes,
    /// then names, compared ignoring case. The other's path when it is on another volume, and two
    /// items without a volume are on different ones.
    [[nodiscard]] std::optional<std::string> relativePathTo(TavBaseFileInfo* other) override;
    /// By the stored paths, ignoring case, when the other one is known by a path, too.
    [[nodiscard]] bool isEqualTo(TavBaseFileInfo* other) override;
    /// Whether the other's path begins with this folder's, ignoring case. Nothing is asked of the
    /// character that follows: the folder "/a/b" contains "/a/bc".
    [[nodiscard]] bool contains(TavBaseFileInfo* other) override;
    /// An item of this very class for the path without its last component.
    [[nodiscard]] FileInfoPtr parentFolder() override;

    void updateName(std::string_view name) override;
    /// Takes the destination's path for its own and answers 0. No file is moved here.
    Status moveTo(TavBaseFileInfo* destination) override;
    /// Stores the path; nothing is refreshed.
    virtual void setPath(std::string_view path);

  protected:
    TavPathBasedFileInfo() = default;

    /// What makes the item from a path, once it is made: stores it by `_setPath`.
    virtual void initWithPath(OptionalText path);
    /// Stores the path, the empty one for nil, then sends `refresh`, also for an equal path.
    virtual void _setPath(OptionalText path);

    std::string _itsPath;
};

} // namespace tav
