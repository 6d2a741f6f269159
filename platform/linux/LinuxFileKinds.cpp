#include "platform/linux/LinuxFileKinds.hpp"

#include "base/PathString.hpp"
#include "platform/FileSystem.hpp"
#include "platform/NeverDestroyed.hpp"
#include "platform/PngReader.hpp"

#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>

namespace tav {
namespace {

constexpr std::uint64_t largestIcon = 4U << 20U;

constexpr std::string_view folderType = "inode/directory";

constexpr std::array<std::string_view, 8> packageExtensions = {
    "app", "bundle", "component", "mpkg", "pkg", "plugin", "prefpane", "rtfd"};

FileKind kindAt(std::string_view path) {
    const Result<FileAttributes> attributes = FileSystem::current().targetAttributes(path);
    return attributes.ok() ? attributes.value().kind : FileKind::Unknown;
}

bool isPackage(std::string_view folder) {
    const std::string extension = internal::lowerCaseASCII(pathExtension(folder));
    return std::find(packageExtensions.begin(), packageExtensions.end(), extension) !=
               packageExtensions.end() ||
           kindAt(stringByAppendingPathComponent(folder, "Contents/Info.plist")) ==
               FileKind::Regular;
}

} // namespace

LinuxFileKinds::Database::Database(internal::FileKindSources sources)
    : types(std::move(sources.dataFolders)),
      theme(std::move(sources.iconFolders), sources.iconTheme),
      languages(std::move(sources.languages)) {}

LinuxFileKinds::Database& LinuxFileKinds::database() {
    if (!database_) {
        database_ = std::make_unique<Database>(sources_());
    }
    return *database_;
}

/// By what it is, then by its name; empty for what is missing or has no type.
std::string LinuxFileKinds::typeOfFile(std::string_view path) {
    const std::string_view name = lastPathComponent(path);
    const auto byName = [&] {
        const std::scoped_lock lock(mutex_);
        return database().types.typeOfName(name);
    };
    switch (kindAt(path)) {
    case FileKind::Regular:
        return byName();
    case FileKind::Folder: {
        const std::string type = isPackage(path) ? byName() : std::string();
        return type.empty() ? std::string(folderType) : type;
    }
    case FileKind::Pipe:
        return "inode/fifo";
    case FileKind::Socket:
        return "inode/socket";
    case FileKind::Link:
    case FileKind::Device:
    case FileKind::Unknown:
        return {};
    }
    return {};
}

/// Null for the empty type.
std::shared_ptr<Image> LinuxFileKinds::iconOfType(const std::string& type) {
    if (type.empty()) {
        return nullptr;
    }
    const std::scoped_lock lock(mutex_);
    Database& known = database();
    auto path = known.iconPaths.find(type);
    if (path == known.iconPaths.end()) {
        path = known.iconPaths.emplace(type, known.theme.pathOfIcon(known.types.iconNames(type)))
                   .first;
    }
    if (path->second.empty()) {
        return nullptr;
    }
    std::weak_ptr<Image>& shared = known.icons[path->second];
    std::shared_ptr<Image> icon = shared.lock();
    if (!icon) {
        const Result<Data> bytes = internal::realFileSystem().readFile(path->second, largestIcon);
        icon = bytes.ok() ? imageFromPNG(bytes.value()) : nullptr;
        shared = icon;
    }
    return icon;
}

/// Nothing for the empty type.
std::optional<std::string> LinuxFileKinds::kindOfType(const std::string& type) {
    if (type.empty()) {
        return std::nullopt;
    }
    const std::scoped_lock lock(mutex_);
    Database& known = database();
    auto comment = known.comments.find(type);
    if (comment == known.comments.end()) {
        comment = known.comments.emplace(type, known.types.comment(type, known.languages)).first;
    }
    return comment->second.empty() ? std::nullopt : std::optional(comment->second);
}

/// Empty for the empty extension.
std::string LinuxFileKinds::typeOfExtension(std::string_view extension) {
    if (extension.empty()) {
        return {};
    }
    const std::scoped_lock lock(mutex_);
    return database().types.typeOfName("name." + std::string(extension));
}

std::shared_ptr<Image> LinuxFileKinds::iconForFileType(std::string_view extension) {
    return iconOfType(typeOfExtension(extension));
}

std::shared_ptr<Image> LinuxFileKinds::iconForFile(std::string_view path) {
    return iconOfType(typeOfFile(path));
}

std::optional<std::string> LinuxFileKinds::kindOfFileType(std::string_view extension) {
    return kindOfType(typeOfExtension(extension));
}

std::optional<std::string> LinuxFileKinds::kindOfFile(std::string_view path) {
    return kindOfType(typeOfFile(path));
}

bool LinuxFileKinds::isFilePackageAtPath(std::string_view path) {
    return kindAt(path) == FileKind::Folder && isPackage(path);
}

FileKinds& internal::realFileKinds() { return neverDestroyed<LinuxFileKinds>(); }

} // namespace tav
