#pragma once

#include "platform/memory/MemoryFileSystem.hpp"

#include <string>
#include <string_view>

namespace tav {

/// A folder of a `MemoryFileSystem` held open. One thread.
class MemoryOpenFolder final : public OpenFolder {
  public:
    MemoryOpenFolder(MemoryFileSystem& files, MemoryNode& node, std::string_view path);
    ~MemoryOpenFolder() override;

    Result<FileAttributes> attributes() override;
    Result<FolderListing> entries() override; ///< By bytes.
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
    SystemError begin(std::string_view operation, std::string_view name);
    [[nodiscard]] std::string pathOf(std::string_view name) const;
    Result<std::unique_ptr<OpenFolder>> opened(std::string_view name, MemoryTree::Last last);

    MemoryFileSystem& files_;
    MemoryNode* node_;
    std::string path_;
};

} // namespace tav
