#pragma once

#include "platform/FileSystem.hpp"

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace tav::internal {

/// The folder that a walk lists. It is open while the walk is in it or a few folders below it; then
/// it is closed, and with the next question opened again by its path: so a walk holds few
/// descriptors whatever its depth. Questions answer ESTALE when another folder has its path by
/// then.
class WalkedFolder final : public OpenFolder {
  public:
    /// How many folders of one walk are open at most.
    static constexpr std::size_t mostOpen = 4;

    /// Opens the folder at a path. The `outer` one is that of the listing which has just come by
    /// it: it is opened there under its name, never through a link. Null for the first of a walk;
    /// it must outlive this one.
    static Result<std::unique_ptr<WalkedFolder>> open(const std::string& path, WalkedFolder* outer);

    /// How many folders the walk has come down; 0 for its first.
    [[nodiscard]] std::size_t depth() const { return depth_; }
    [[nodiscard]] const FileAttributes& ownAttributes() const { return attributes_; }

    Result<FileAttributes> attributes() override { return attributes_; } ///< When it was opened.
    Result<FolderListing> entries() override;
    Result<FileAttributes> attributes(std::string_view name) override;
    Result<FileAttributes> targetAttributes(std::string_view name) override;
    Result<std::string> linkTarget(std::string_view name) override;
    Result<std::unique_ptr<OpenFolder>> openFolder(std::string_view name) override;
    Result<std::unique_ptr<OpenFolder>> openTargetFolder(std::string_view name) override;
    Result<std::unique_ptr<OpenFile>> open(std::string_view name,
                                           const OpenOptions& options) override;
    SystemError createFolder(std::string_view name, std::uint32_t permissions) override;
    SystemError removeFile(std::string_view name) override;
    SystemError removeFolder(std::string_view name) override;

  private:
    WalkedFolder(const std::string& path, WalkedFolder* outer, std::unique_ptr<OpenFolder> folder,
                 const FileAttributes& attributes);
    SystemError reopen();

    std::string path_;
    WalkedFolder* outer_;
    std::size_t depth_;
    std::unique_ptr<OpenFolder> folder_; ///< Null while it is closed.
    FileAttributes attributes_;
};

} // namespace tav::internal
