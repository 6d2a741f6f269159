#pragma once

#include "platform/FileSystem.hpp"
#include "platform/linux/KernelPath.hpp"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tav {

/// The host's file system by system calls. Holds nothing, so any thread may use it.
class LinuxFileSystem : public FileSystem {
  public:
    Result<FileAttributes> attributes(std::string_view path) override;
    Result<FileAttributes> targetAttributes(std::string_view path) override;
    Result<std::vector<FolderEntry>> folderEntries(std::string_view path) override;
    Result<std::unique_ptr<OpenFolder>> openFolder(std::string_view path) override;
    Result<std::string> linkTarget(std::string_view path) override;
    Result<std::string> canonicalPath(std::string_view path) override;
    Result<Data> readFile(std::string_view path, std::uint64_t maximumSize) override;
    SystemError writeFile(std::string_view path, BytesView content,
                          std::uint32_t permissions) override;
    Result<std::unique_ptr<OpenFile>> open(std::string_view path,
                                           const OpenOptions& options) override;
    SystemError syncFolder(std::string_view path) override;
    SystemError createFolder(std::string_view path, std::uint32_t permissions) override;
    SystemError createLink(std::string_view path, std::string_view target) override;
    SystemError setPermissions(std::string_view path, std::uint32_t permissions) override;
    SystemError setModificationDate(std::string_view path, Date date) override;
    Result<Data> extendedAttribute(std::string_view path, std::string_view name) override;
    SystemError setExtendedAttribute(std::string_view path, std::string_view name,
                                     BytesView value) override;
    Result<std::vector<std::string>> extendedAttributeNames(std::string_view path) override;
    SystemError removeExtendedAttribute(std::string_view path, std::string_view name) override;
    SystemError move(std::string_view from, std::string_view to, Replace replace) override;
    SystemError removeFile(std::string_view path) override;
    SystemError removeFolder(std::string_view path) override;

  protected:
    /// `renameat2` with its flags. Tests put the answers of other file systems here.
    virtual SystemError rename(const KernelPath& from, const KernelPath& to, unsigned int flags);

  private:
    bool isOtherSpelling(std::string_view from, std::string_view to);
};

} // namespace tav
