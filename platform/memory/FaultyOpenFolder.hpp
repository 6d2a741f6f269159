#pragma once

#include "platform/memory/FaultyFileSystem.hpp"

#include <memory>

namespace tav {

/// A folder that a `FaultyFileSystem` opened, whose calls count there.
class FaultyOpenFolder final : public OpenFolder {
  public:
    FaultyOpenFolder(FaultyFileSystem& files, std::unique_ptr<OpenFolder> inner)
        : files_(files), inner_(std::move(inner)) {}

    /// What the inner file system answered, with its folder in one of these.
    static Result<std::unique_ptr<OpenFolder>> over(FaultyFileSystem& files,
                                                    Result<std::unique_ptr<OpenFolder>> inner);

    Result<FileAttributes> attributes() override;
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
    FaultyFileSystem& files_;
    std::unique_ptr<OpenFolder> inner_;
};

} // namespace tav
