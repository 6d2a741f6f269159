#include "platform/AtomicFile.hpp"

#include "base/PathString.hpp"
#include "base/SipHash.hpp"
#include "platform/FileSystem.hpp"

#include <array>
#include <atomic>
#include <cerrno>
#include <charconv>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace tav {

namespace {

constexpr int mostLinks = 40; // as many as the kernel follows
constexpr int mostTries = 20;
// Far below the 255 bytes that a name has elsewhere: encrypted file systems have less room.
constexpr std::size_t longestNamePart = 100;
// Nobody else's while the permissions are not those of the replaced file.
constexpr std::uint32_t permissionsMeanwhile = 0600;

/// Where the file is put.
struct Destination {
    std::string folder; ///< Absolute and without links.
    std::string name;
    std::optional<std::uint32_t> permissions; ///< Of the file that stands there.

    [[nodiscard]] std::string pathOf(std::string_view entry) const {
        return (folder == "/" ? "" : folder) + "/" + std::string(entry);
    }
};

std::string folderOf(std::string_view path) {
    std::string folder = stringByDeletingLastPathComponent(path);
    return folder.empty() ? "." : folder;
}

/// The path of a link's target. Only joined: a ".." counts from where links on the way lead.
std::string targetPath(std::string_view link, const std::string& text) {
    return text.starts_with('/') ? text : folderOf(link) + "/" + text;
}

/// Splits the path of a file, or of nothing, into its folder and its name.
Result<Destination> split(FileSystem& files, std::string_view path) {
    const auto folder = files.canonicalPath(folderOf(path));
    if (!folder.ok()) {
        return folder.error();
    }
    const std::string_view name = lastPathComponent(path);
    if (path.empty() || name == "." || name == "..") {
        return SystemError(ENOENT); // as it was found; what is there is a folder
    }
    if (path.ends_with('/')) {
        return SystemError(EISDIR);
    }
    return Destination{folder.value(), std::string(name), {}};
}

/// Follows the links at the path, also to where nothing stands.
Result<Destination> destinationOf(FileSystem& files, std::string_view path) {
    std::string place(path);
    for (int links = 0; links <= mostLinks; ++links) {
        const auto attributes = files.attributes(place);
        if (attributes.error() == SystemError(ENOENT)) {
            return split(files, place);
        }
        if (!attributes.ok()) {
            return attributes.error();
        }
        const FileKind kind = attributes.value().kind;
        if (kind == FileKind::Regular) {
            auto destination = split(files, place);
            if (destination.ok()) {
                destination.value().permissions = attributes.value().permissions;
            }
            return destination;
        }
        if (kind != FileKind::Link) {
            return SystemError(kind == FileKind::Folder ? EISDIR : EINVAL);
        }
        const auto text = files.linkTarget(place);
        if (!text.ok()) {
            return text.error();
        }
        place = targetPath(place, text.value());
    }
    return SystemError(ELOOP);
}

/// A name that nobody else uses, as far as it can be told without looking.
std::string siblingName(std::string_view name) {
    static std::atomic<std::uint64_t> uses = 0;
    std::string_view part = name.substr(0, longestNamePart);
    // Some file systems refuse a name with half a character at its end.
    while (part.size() < name.size() && !part.empty() &&
           (static_cast<unsigned char>(name[part.size()]) & 0xC0U) == 0x80U) {
        part.remove_suffix(1);
    }
    const std::uint64_t unique = sipHash13(std::to_string(++uses), processSipHashKey());
    std::array<char, 16> digits = {};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), unique, 16).ptr;
    return "." + std::string(part) + "." + std::string(digits.data(), end) + ".new";
}

/// Whether syncing a folder is not possible there, or not for somebody who may not read it.
bool cannotSync(SystemError error) {
    return error == SystemError(EINVAL) || error == SystemError(ENOTSUP) ||
           error == SystemError(EACCES);
}

/// A new file beside the destination, removed again unless it was kept.
class Sibling {
  public:
    explicit Sibling(FileSystem& files) : files_(files) {}
    Sibling(const Sibling&) = delete;
    Sibling& operator=(const Sibling&) = delete;
    ~Sibling() {
        if (!path_.empty()) {
            file_.reset();
            static_cast<void>(files_.removeFile(path_));
        }
    }

    SystemError create(const Destination& destination, std::uint32_t permissions) {
        SystemError error(EEXIST);
        for (int tries = 0; error == SystemError(EEXIST) && tries < mostTries; ++tries) {
            std::string path = destination.pathOf(siblingName(destination.name));
            auto file = files_.open(path, {.write = true,
                                           .create = true,
                                           .mustBeNew = true,
                                           .append = true,
                                           .permissions = permissions});
            error = file.error();
            if (file.ok()) {
                path_ = std::move(path);
                file_ = std::move(file).value();
            }
        }
        return error;
    }

    /// Everything until the content is complete, on the medium where it has to survive.
    SystemError fill(BytesView content, std::optional<std::uint32_t> permissions,
                     Surviving surviving) {
        SystemError error = file_->write(content);
        if (error.isNone() && permissions) {
            error = files_.setPermissions(path_, *permissions);
        }
        return error.isNone() && surviving == Surviving::LossOfPower ? file_->sync() : error;
    }

    SystemError close() { return file_->close(); }

    /// Takes the place of what stands there.
    SystemError moveTo(const std::string& path) {
        const SystemError error = files_.move(path_, path, Replace::Yes);
        if (error.isNone()) {
            path_.clear();
        }
        return error;
    }

    std::unique_ptr<OpenFile> takeFile() { return std::move(file_); }

  private:
    FileSystem& files_;
    std::string path_; ///< Empty when there is nothing to remove.
    std::unique_ptr<OpenFile> file_;
};

enum class Afterwards { Close, StayOpen };

/// What was written, and how the last step went, which undoes nothing.
struct Replaced {
    std::unique_ptr<OpenFile> file;
    SystemError syncOfFolder;
};

Result<Replaced> replace(std::string_view path, BytesView content, std::uint32_t permissions,
                         Surviving surviving, Afterwards afterwards) {
    FileSystem& files = FileSystem::current();
    const auto found = destinationOf(files, path);
    if (!found.ok()) {
        return found.error();
    }
    const Destination& destination = found.value();
    Sibling sibling(files);
    SystemError error =
        sibling.create(destination, destination.permissions ? permissionsMeanwhile : permissions);
    if (error.isNone()) {
        error = sibling.fill(content, destination.permissions, surviving);
    }
    if (error.isNone() && afterwards == Afterwards::Close) {
        error = sibling.close();
    }
    if (error.isNone()) {
        error = sibling.moveTo(destination.pathOf(destination.name));
    }
    if (!error.isNone()) {
        return error;
    }
    if (surviving == Surviving::LossOfPower) {
        error = files.syncFolder(destination.folder);
    }
    return Replaced{sibling.takeFile(), cannotSync(error) ? SystemError() : error};
}

} // namespace

SystemError writeFileAtomically(std::string_view path, BytesView content,
                                std::uint32_t permissions) {
    const auto replaced =
        replace(path, content, permissions, Surviving::LossOfPower, Afterwards::Close);
    return replaced.ok() ? replaced.value().syncOfFolder : replaced.error();
}

Result<std::unique_ptr<OpenFile>> replaceFileAtomically(std::string_view path, BytesView content,
                                                        Surviving surviving,
                                                        std::uint32_t permissions) {
    auto replaced = replace(path, content, permissions, surviving, Afterwards::StayOpen);
    if (!replaced.ok()) {
        return replaced.error();
    }
    return std::move(replaced.value().file);
}

} // namespace tav
