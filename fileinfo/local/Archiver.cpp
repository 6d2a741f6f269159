#include "fileinfo/local/Archiver.hpp"

#include "base/PathString.hpp"
#include "base/Unicode.hpp"
#include "fileinfo/local/UnpackedFolder.hpp"
#include "fileinfo/local/ZipKind.hpp"
#include "foundation/FolderTree.hpp"
#include "platform/ChildProcess.hpp"
#include "platform/FileSystem.hpp"
#include "platform/Volumes.hpp"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

namespace tav::internal {

namespace {

constexpr const char* zipProgram = "/usr/bin/zip";
constexpr const char* dittoProgram = "/usr/bin/ditto";
constexpr const char* bsdtarProgram = "/usr/bin/bsdtar";
constexpr const char* unzipProgram = "/usr/bin/unzip";

/// Of the free space what an unpacked archive leaves at least: a quarter, or this if it is less.
constexpr std::uint64_t largestReserve = std::uint64_t{1} << 30U;

bool isThere(std::string_view path) { return FileSystem::current().targetAttributes(path).ok(); }

/// No argument that is a path may be taken for an option.
std::string absolutePath(std::string_view path) {
    if (path.starts_with('/')) {
        return std::string(path);
    }
    const Result<std::string> here = FileSystem::current().canonicalPath(".");
    return stringByAppendingPathComponent(here.ok() ? here.value() : "/", path);
}

/// Whether bsdtar changes the name where no "./" stands before it: a letter and a colon, a drive of
/// another system, are taken away, and in names without any slash backslashes are read as slashes.
bool looksForeign(std::string_view name) {
    const bool hasDrive =
        name.size() > 1 && name[1] == ':' &&
        ((name[0] >= 'a' && name[0] <= 'z') || (name[0] >= 'A' && name[0] <= 'Z'));
    return hasDrive || name.find('\\') != std::string_view::npos;
}

/// Whether the name of a file, or of a folder and all that is in it, is UTF-8.
bool hasReadableNames(std::string_view path) {
    if (!isValidUTF8(lastPathComponent(path))) {
        return false;
    }
    const Result<FileAttributes> attributes = FileSystem::current().attributes(path);
    if (!attributes.ok() || attributes.value().kind != FileKind::Folder) {
        return true;
    }
    const Result<FolderTree> tree = listFolderTree(path);
    return !tree.ok() ||
           std::all_of(tree.value().folders.begin(), tree.value().folders.end(),
                       [](const FolderTree::Folder& folder) {
                           return std::all_of(folder.entries.begin(), folder.entries.end(),
                                              [](const FolderListing::Entry& entry) {
                                                  return isValidUTF8(entry.name);
                                              });
                       });
}

void run(const ChildRequest& request) { static_cast<void>(ChildProcess::current().run(request)); }

/// Nothing where the volume does not tell.
std::optional<std::uint64_t> roomFor(const std::string& folder) {
    const Result<VolumeInfo> volume = Volumes::current().volumeOfPath(folder);
    if (!volume.ok() || volume.value().totalBytes == 0) {
        return std::nullopt;
    }
    const std::uint64_t free = volume.value().freeBytes;
    return free - std::min(free / 4, largestReserve);
}

/// unzip reads the last component of the archive's path as a pattern, and knows no way to say that
/// it is none.
bool isPattern(std::string_view path) {
    return lastPathComponent(path).find_first_of("[]*?\\") != std::string_view::npos;
}

/// A link to the archive under a plain name, for as long as it lives.
class PlainName {
  public:
    PlainName(const std::string& archive, const std::string& folder) : path_(folder + ".zip") {
        static_cast<void>(FileSystem::current().removeFile(path_)); // somebody's who was ended
        isMade_ = FileSystem::current().createLink(path_, archive).isNone();
    }
    ~PlainName() {
        if (isMade_) {
            static_cast<void>(FileSystem::current().removeFile(path_));
        }
    }
    PlainName(const PlainName&) = delete;
    PlainName& operator=(const PlainName&) = delete;

    [[nodiscard]] bool isMade() const { return isMade_; }
    [[nodiscard]] const std::string& path() const { return path_; }

  private:
    std::string path_;
    bool isMade_ = false;
};

/// Whether it kept to the space that it may fill.
bool keepsToItsRoom(ChildRequest request, const std::string& folder) {
    request.mayWrite = roomFor(folder);
    const Result<ChildEnd> end = ChildProcess::current().run(request);
    return !end.ok() || end.value().kind != ChildEnd::Kind::WroteTooMuch;
}

bool unpackWithUnzip(const std::string& archive, const std::string& folder) {
    const auto unpack = [&folder](const std::string& path) {
        // The pass phrase is there so that nobody is asked for one.
        return keepsToItsRoom({unzipProgram, {"-q", "-o", "-P", "x", path, "-d", folder}, {}, {}},
                              folder);
    };
    if (!isPattern(archive)) {
        return unpack(archive);
    }
    // Without it the program would look for another archive, by a similar name.
    const PlainName name(archive, folder);
    return !name.isMade() || unpack(name.path());
}

bool unpackWithBsdtar(const std::string& archive, const std::string& folder) {
    // The "./" keeps the first letters of names like "A: notes", see `looksForeign`; what links say
    // stays.
    return keepsToItsRoom({bsdtarProgram,
                           {"-C", folder, "-s", ",^/*[A-Za-z]:,./~,S", "--no-same-owner",
                            "--no-same-permissions", "--passphrase", "x", "-xf", archive},
                           {},
                           {}},
                          folder);
}

/// A folder in any depth may be one that its owner may not read or change; from then on he may.
void makeAccessible(const std::string& folder) {
    // Of a link the program would change what it leads to.
    const Result<FileAttributes> attributes = FileSystem::current().attributes(folder);
    if (attributes.ok() && attributes.value().kind == FileKind::Folder) {
        run({"/bin/chmod", {"-R", "u+rwX", "--", folder}, {}, {}});
    }
}

/// Does something to an unpacked folder, once more when rights are missing.
template <class Action>
bool succeeds(const std::string& folder, Action action) {
    SystemError error = action();
    if (error.number() == EACCES || error.number() == EPERM) {
        makeAccessible(folder);
        error = action();
    }
    return error.isNone();
}

} // namespace

bool canZip() { return isThere(zipProgram); }

bool canDittoPack() { return isThere(dittoProgram) || isThere(bsdtarProgram); }

bool canDittoUnpack() { return canDittoPack() || isThere(unzipProgram); }

void zipPack(std::string_view path, bool isFolder, std::string_view archive) {
    std::vector<std::string> arguments;
    if (isFolder) {
        arguments.emplace_back("-r");
    }
    arguments.push_back(absolutePath(archive));
    arguments.push_back(absolutePath(path));
    // Without "-y" it follows links, and two that lead to the folder they lie in never end.
    run({zipProgram, std::move(arguments), {"ZIPOPT=-y -q"}, {}});
}

void dittoPack(std::string_view path, std::string_view archive) {
    std::string from = absolutePath(path);
    std::string to = absolutePath(archive);
    if (isThere(dittoProgram)) {
        run({dittoProgram, {"-kc", "--keepParent", std::move(from), std::move(to)}, {}, {}});
        return;
    }
    const std::string_view name = lastPathComponent(from);
    ChildRequest request{bsdtarProgram, {"--format", "zip"}, {}, {}};
    std::vector<std::string>& arguments = request.arguments;
    if (!looksForeign(name)) {
        // The "./", before which a name could be an option or an archive, is not stored; what links
        // say stays.
        arguments.insert(arguments.end(), {"-s", ",^\\./,,S"});
    }
    arguments.insert(arguments.end(), {"-C", stringByDeletingLastPathComponent(from), "-cf",
                                       std::move(to), "./" + std::string(name)});
    if (!hasReadableNames(from)) {
        // As UTF-8 they would be marked as what they are not, and be dropped on the way back.
        request.environment.emplace_back("LC_ALL=C");
    }
    run(request);
}

bool dittoUnpack(std::string_view archivePath, const std::string& folder) {
    const std::string archive = absolutePath(archivePath);
    const bool isOurs = !isThere(dittoProgram);
    bool isWhole = true;
    if (!isOurs) {
        isWhole = keepsToItsRoom({dittoProgram, {"-kx", archive, folder}, {}, {}}, folder);
    } else if (zipKind(archive) == ZipKind::Readable) {
        // Anything else bsdtar would read as whatever it takes it for: some formats make devices,
        // and some grow without an end.
        isWhole = isThere(bsdtarProgram) ? unpackWithBsdtar(archive, folder)
                                         : unpackWithUnzip(archive, folder);
    }
    if (!isWhole || !succeeds(folder, [&folder] { return cleanUnpackedFolder(folder); })) {
        removeUnpacked(folder);
        return FileSystem::current().createFolder(folder, 0777).isNone();
    }
    const std::string resources = folder + "/__MACOSX";
    const Result<FileAttributes> attributes = FileSystem::current().attributes(resources);
    if (isOurs && attributes.ok() && attributes.value().kind == FileKind::Folder) {
        removeUnpacked(resources);
    }
    return true;
}

void removeUnpacked(const std::string& path) {
    static_cast<void>(succeeds(path, [&path] { return removeItem(path); }));
}

} // namespace tav::internal
