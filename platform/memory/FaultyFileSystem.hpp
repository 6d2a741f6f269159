#pragma once

#include "platform/FileSystem.hpp"

#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <string_view>

namespace tav {

/// Another file system whose calls are counted and fail where a test wants it. A call that fails
/// does not reach the other one. The other one must outlive it. One thread.
class FaultyFileSystem final : public FileSystem {
  public:
    explicit FaultyFileSystem(FileSystem& inner) : inner_(inner) {}

    /// Lets the call of that number fail, the first being 1, in place of the one set before. 0 for
    /// none.
    void failCall(std::size_t number, int errorNumber) {
        failingCall_ = number;
        callError_ = SystemError(errorNumber);
    }
    /// Lets every call of an operation ("readFile", ...) fail; error 0 ends that.
    void failOperation(std::string_view operation, int errorNumber);
    /// Called once, when the call of that number comes, before it is done or fails.
    void atCall(std::size_t number, std::function<void()> action);

    /// Calls so far, those included that failed.
    [[nodiscard]] std::size_t callCount() const { return count_; }
    /// Counts from 1 again. What shall fail stays.
    void restartCount() { count_ = 0; }

    Result<FileAttributes> attributes(std::string_view path) override;
    Result<FileAttributes> targetAttributes(std::string_view path) override;
    Result<std::vector<FolderEntry>> folderEntries(std::string_view path) override;
    Result<std::string> linkTarget(std::string_view path) override;
    Result<std::string> canonicalPath(std::string_view path) override;
    Result<Data> readFile(std::string_view path, std::uint64_t maximumSize) override;
    SystemError writeFile(std::string_view path, BytesView content,
                          std::uint32_t permissions) override;
    SystemError createFolder(std::string_view path, std::uint32_t permissions) override;
    SystemError createLink(std::string_view path, std::string_view target) override;
    SystemError setPermissions(std::string_view path, std::uint32_t permissions) override;
    SystemError move(std::string_view from, std::string_view to, Replace replace) override;
    SystemError removeFile(std::string_view path) override;
    SystemError removeFolder(std::string_view path) override;

  private:
    SystemError count(std::string_view operation);

    FileSystem& inner_;
    std::size_t count_ = 0;
    std::size_t failingCall_ = 0;
    SystemError callError_;
    std::map<std::string, SystemError, std::less<>> failingOperations_;
    std::map<std::size_t, std::function<void()>> actions_;
};

} // namespace tav
