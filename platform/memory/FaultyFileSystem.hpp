#pragma once

#include "platform/FileSystem.hpp"

#include <cerrno>
#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>

namespace tav {

/// Another file system whose calls are counted and fail where a test wants it; the calls of the
/// files and folders that it opened count, too, and are named "OpenFile.read",
/// "OpenFolder.entries", ... A call that fails does not
/// reach the other one, but for `OpenFile::close`, which closes as every close does. What only ends
/// with an object, a file that is closed by its destructor for one, is no call.
///
/// The other one must outlive it, and it the files and folders that it opened. One thread at a
/// time: whoever shares it among threads holds a lock of their own around each call, as the log
/// does.
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
    /// Lets the call of that number, when it writes ("writeFile", "OpenFile.write",
    /// "OpenFile.writeOnce"), really write so many bytes only, in place of the one set before.
    /// `writeOnce` answers that count, the others fail with the error. 0 for none.
    void shortWriteCall(std::size_t number, std::size_t bytes, int errorNumber = ENOSPC) {
        shortCall_ = number;
        shortBytes_ = bytes;
        shortError_ = SystemError(errorNumber);
    }
    /// Ends this process by SIGKILL when the call of that number comes, before it is done: what a
    /// loss of power leaves, as far as the system had it. For children of tests. 0 for none.
    void endProcessAtCall(std::size_t number) { endingCall_ = number; }
    /// The same, but a call that writes has written the first half of its bytes by then.
    void endProcessWithinCall(std::size_t number) { endingWithinCall_ = number; }
    /// Called once, when the call of that number comes, before it is done or fails.
    void atCall(std::size_t number, std::function<void()> action);

    /// Calls so far, those included that failed.
    [[nodiscard]] std::size_t callCount() const { return count_; }
    /// Counts from 1 again. What shall fail stays.
    void restartCount() { count_ = 0; }

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

  private:
    friend class FaultyOpenFile;
    friend class FaultyOpenFolder;

    /// What becomes of a call that writes.
    struct WriteCall {
        SystemError error;        ///< Answered at once, when there is one.
        std::size_t bytes = 0;    ///< How many reach the other file system.
        SystemError errorAfter;   ///< Answered when those are written.
        bool endsProcess = false; ///< When those are written.
    };

    std::size_t begin();
    [[nodiscard]] SystemError errorOf(std::size_t call, std::string_view operation) const;
    SystemError count(std::string_view operation);
    WriteCall countWrite(std::string_view operation, std::size_t size);
    static SystemError finish(const WriteCall& call, SystemError error);

    FileSystem& inner_;
    std::size_t count_ = 0;
    std::size_t failingCall_ = 0;
    SystemError callError_;
    std::size_t shortCall_ = 0;
    std::size_t shortBytes_ = 0;
    SystemError shortError_;
    std::size_t endingCall_ = 0;
    std::size_t endingWithinCall_ = 0;
    std::map<std::string, SystemError, std::less<>> failingOperations_;
    std::map<std::size_t, std::function<void()>> actions_;
};

} // namespace tav
