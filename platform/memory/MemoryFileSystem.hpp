#pragma once

#include "platform/memory/MemoryTree.hpp"

#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tav {

/// A file system in memory that answers as Linux does: folders, files and links (at most forty on a
/// way), with a clock of its own and a journal of the calls. Permissions are kept but stop nobody,
/// and a file has one name. Relative paths count from "/". Must outlive the files and folders that
/// it opened. One thread.
class MemoryFileSystem final : public FileSystem {
  public:
    /// Names that differ in case only are one name; what is listed is the spelling it was made
    /// with. To be set before files are made.
    bool isCaseInsensitive = false;
    /// EROFS for every change.
    bool isReadOnly = false;
    /// Bytes of all contents; a write beyond it writes what fits and answers ENOSPC.
    std::uint64_t capacity = std::numeric_limits<std::uint64_t>::max();
    /// Dates are rounded down to even seconds.
    bool keepsTwoSecondDates = false;
    /// Otherwise ENOTSUP. Names begin with "user.".
    bool keepsExtendedAttributes = true;
    /// EINVAL for new names with one of these.
    std::string forbiddenCharacters;

    MemoryFileSystem();

    /// Sets the clock: the next change takes this time, each one after it a little more.
    void setNow(Date now) { now_ = now; }
    /// The time of the next change.
    [[nodiscard]] Date now() const { return now_; }

    /// Every call so far as "operation path" ("move from to", "createLink path target"); those of
    /// an open file as "OpenFile.operation path" with the path that it was opened by, those of an
    /// open folder alike, with "/" and the name behind the path where there is one.
    [[nodiscard]] const std::vector<std::string>& calls() const { return calls_; }
    void clearCalls() { calls_.clear(); }

    // Somebody else's doing, to set a stage: not in the journal, and done on a read-only file
    // system and with forbidden characters, too. They make the folders on the way, and throw
    // `std::system_error` for what cannot be.

    /// Makes a file or replaces the content of one.
    void addFile(std::string_view path, std::string_view text);
    /// Makes a folder; one that is there stays as it is.
    void addFolder(std::string_view path);
    /// Makes a link where nothing stands.
    void addLink(std::string_view path, std::string_view target);
    /// Makes a folder that is the root of another device: moves across it answer EXDEV, and itself
    /// it is neither moved nor removed (EBUSY).
    void addVolume(std::string_view path);
    /// Of what stands there (a link itself): EPERM for every change then.
    void setImmutable(std::string_view path, bool isImmutable);
    /// Takes away what stands there (a link itself) with all that is in it, if anything does.
    void removeAll(std::string_view path);

    Result<FileAttributes> attributes(std::string_view path) override;
    Result<FileAttributes> targetAttributes(std::string_view path) override;
    Result<std::vector<FolderEntry>> folderEntries(std::string_view path) override; ///< By bytes.
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

    /// Bytes of one extended attribute; E2BIG beyond.
    static constexpr std::size_t largestAttribute = 65536;

  private:
    friend class MemoryOpenFile;
    friend class MemoryOpenFolder;
    using Last = MemoryTree::Last;

    void note(std::string_view operation, std::string_view path);

    // Relative paths count from the folder, or from "/" where none is given.
    Result<MemoryPlace> find(std::string_view path, Last last, MemoryNode* folder = nullptr);
    Result<MemoryPlace> findExisting(std::string_view path, Last last,
                                     MemoryNode* folder = nullptr);
    Result<MemoryNode*> findFolder(std::string_view path, Last last, MemoryNode* folder = nullptr);
    Result<MemoryNode*> findWithAttributes(std::string_view path, std::string_view name);
    static SystemError errorOfText(std::string_view name);
    [[nodiscard]] SystemError errorOfAttributeName(std::string_view name) const;
    static Result<Data> attributeOf(const MemoryNode& node, std::string_view name);
    SystemError setAttribute(MemoryNode& node, std::string_view name, BytesView value);
    SystemError setDate(MemoryNode& node, Date date);
    Result<FileAttributes> attributesOf(std::string_view path, Last last,
                                        MemoryNode* folder = nullptr);
    Result<std::string> linkTargetOf(std::string_view path, MemoryNode* folder);
    Result<MemoryNode*> nodeToOpen(std::string_view path, const OpenOptions& options,
                                   MemoryNode* folder);
    Result<std::unique_ptr<OpenFile>> openFile(std::string_view path, const OpenOptions& options,
                                               MemoryNode* folder, std::string_view knownAs);
    SystemError makeFolder(std::string_view path, std::uint32_t permissions, MemoryNode* folder);
    SystemError takeFile(std::string_view path, MemoryNode* folder);
    SystemError takeFolder(std::string_view path, MemoryNode* folder);

    [[nodiscard]] SystemError errorOfChange(const MemoryNode& node) const;
    [[nodiscard]] SystemError errorOfRemoval(const MemoryPlace& place) const;
    [[nodiscard]] SystemError errorOfNewName(const MemoryPlace& place) const;
    MemoryNode& add(const MemoryPlace& place, FileKind kind, std::uint32_t permissions);
    void addLinkNode(const MemoryPlace& place, std::string_view target);
    /// The size that a file may have beside the others.
    [[nodiscard]] std::uint64_t roomFor(const MemoryNode& file) const;
    SystemError write(MemoryNode& file, BytesView content);
    MemoryPlace stage(std::string_view path, Last last);
    Date takeTime();
    [[nodiscard]] Date rounded(Date date) const;

    Date now_;
    MemoryTree tree_;
    std::uint64_t devices_ = 1;
    std::vector<std::string> calls_;
};

} // namespace tav
