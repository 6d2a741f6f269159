#pragma once

#include "platform/FileSystem.hpp"
#include "platform/linux/Descriptor.hpp"

#include <utility>

namespace tav {

/// A folder held open by a descriptor of the kernel.
class LinuxOpenFolder final : public OpenFolder {
  public:
    /// Takes a descriptor that was opened for listing.
    explicit LinuxOpenFolder(Descriptor folder) : folder_(std::move(folder)) {}

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
    Descriptor folder_;
};

} // namespace tav
