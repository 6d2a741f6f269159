#pragma once

#include "base/Data.hpp"
#include "base/Date.hpp"
#include "base/Result.hpp"
#include "platform/OpenFile.hpp"
#include "platform/OpenFolder.hpp"
#include "platform/Seam.hpp"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tav {

class FileSystem;

namespace internal {
/// The host's own file system (platform/linux).
FileSystem& realFileSystem();
} // namespace internal

/// What tells one file from every other. Two names with equal identities are the same file; the
/// time of birth tells it from a later file that was given the number of a removed one.
struct FileIdentity {
    std::uint64_t device = 0;
    std::uint64_t number = 0;
    std::int64_t birthNanoseconds = 0; ///< Since 1970; 0 where the file system keeps none.
    friend bool operator==(const FileIdentity&, const FileIdentity&) = default;
};

/// What the file system knows of a file without opening it.
struct FileAttributes {
    FileKind kind = FileKind::Unknown;
    std::uint32_t permissions = 0; ///< The twelve bits of `chmod`.
    std::uint32_t user = 0;
    std::uint32_t group = 0;
    std::uint64_t size = 0; ///< Bytes of the content.
    FileIdentity identity;
    Date modificationDate;
    Date changeDate;                  ///< Of the content or of anything that stands here.
    std::optional<Date> creationDate; ///< Nothing where the file system keeps none.
    /// Neither changed, moved nor removed by anybody, until that is taken from it.
    bool isImmutable = false;
    /// The identifier of its volume in `VolumeInfo`; 0 where the host does not tell it.
    std::uint64_t mount = 0;
};

/// A name in a folder, with the kind where the listing itself tells it (otherwise `Unknown`).
struct FolderEntry {
    std::string name;
    FileKind kind = FileKind::Unknown;
};

/// Whether a move may take the place of what stands at its destination.
enum class Replace : bool { No, Yes };

/// The seam to files and folders: paths are absolute or relative to the working directory, names
/// are bytes. Nothing here raises; every failure is answered as the host's error number: EINVAL for
/// a path with a NUL in it, ENAMETOOLONG for a name that the file system finds too long (255 bytes
/// are the limit of most). Paths may have any length; what a link says may have 4095 bytes. Calls
/// may come from any thread. An interrupted call is taken up again.
class FileSystem : public Seam<FileSystem, internal::realFileSystem> {
  public:
    virtual ~FileSystem() = default;

    /// Of the file at the path itself, when it is a link of the link.
    virtual Result<FileAttributes> attributes(std::string_view path) = 0;
    /// Of what the path leads to through links.
    virtual Result<FileAttributes> targetAttributes(std::string_view path) = 0;

    /// The names in a folder but "." and "..", in the file system's order.
    virtual Result<std::vector<FolderEntry>> folderEntries(std::string_view path) = 0;

    /// Opens a folder (through links).
    virtual Result<std::unique_ptr<OpenFolder>> openFolder(std::string_view path) = 0;

    /// The text of a link.
    virtual Result<std::string> linkTarget(std::string_view path) = 0;
    /// The absolute path without links, "." and ".."; everything on the way has to exist.
    virtual Result<std::string> canonicalPath(std::string_view path) = 0;

    /// The content of a regular file. EFBIG when it has more bytes than `maximumSize`, EISDIR for a
    /// folder, EINVAL for anything else that is no file; never waits for a pipe or a device.
    virtual Result<Data> readFile(std::string_view path, std::uint64_t maximumSize) = 0;
    /// Makes the file (with the permissions, less what the process's mask takes away) or replaces
    /// its content, in place. Not atomic: after a failure it may hold a part. EISDIR for a folder,
    /// EINVAL for anything else that is no file.
    virtual SystemError writeFile(std::string_view path, BytesView content,
                                  std::uint32_t permissions) = 0;

    /// Opens a regular file (through links, unless it must be new). See `OpenOptions`.
    virtual Result<std::unique_ptr<OpenFile>> open(std::string_view path,
                                                   const OpenOptions& options) = 0;
    /// Waits until the names in a folder are on the medium. EINVAL or ENOTSUP where the file system
    /// knows no such thing.
    virtual SystemError syncFolder(std::string_view path) = 0;

    /// The mask of the process takes away from the permissions here, too.
    virtual SystemError createFolder(std::string_view path, std::uint32_t permissions) = 0;
    /// Makes a link at the path. The target is a text; it need not exist.
    virtual SystemError createLink(std::string_view path, std::string_view target) = 0;
    /// Of what the path leads to through links, exactly these.
    virtual SystemError setPermissions(std::string_view path, std::uint32_t permissions) = 0;

    /// Of the file at the path itself, when it is a link of the link; to the nanosecond. The file
    /// system rounds down to what it keeps, and takes its first or last for a date that it cannot
    /// keep. EINVAL for a date that is more than 64-bit seconds from 1970, or not a number.
    virtual SystemError setModificationDate(std::string_view path, Date date) = 0;

    /// An extended attribute ("user.something") of what the path leads to through links. ENODATA
    /// when it has none of that name, ENOTSUP where the volume keeps none of that kind.
    virtual Result<Data> extendedAttribute(std::string_view path, std::string_view name) = 0;
    /// Makes or replaces it. ERANGE for a name of more than 255 bytes or none, E2BIG for more than
    /// 64 KiB; the volume may take less (ENOSPC).
    virtual SystemError setExtendedAttribute(std::string_view path, std::string_view name,
                                             BytesView value) = 0;
    /// The names of those that this user may see, in the file system's order. None where the volume
    /// keeps none.
    virtual Result<std::vector<std::string>> extendedAttributeNames(std::string_view path) = 0;
    /// ENODATA when there is none.
    virtual SystemError removeExtendedAttribute(std::string_view path, std::string_view name) = 0;

    /// Gives a file or folder another path in the same file system (EXDEV otherwise). Without
    /// replacing, EEXIST when something stands there; another spelling of its own name, where the
    /// file system takes the two for one, is not in the way.
    virtual SystemError move(std::string_view from, std::string_view to, Replace replace) = 0;
    /// Anything but a folder.
    virtual SystemError removeFile(std::string_view path) = 0;
    /// An empty folder.
    virtual SystemError removeFolder(std::string_view path) = 0;
};

} // namespace tav
