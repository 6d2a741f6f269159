#include "platform/LibraryResources.hpp"

#include "base/PathString.hpp"
#include "platform/Bundle.hpp"
#include "platform/FileSystem.hpp"
#include "platform/NeverDestroyed.hpp"
#include "platform/PngReader.hpp"
#include "platform/ProcessTable.hpp"

namespace tav {
namespace {

constexpr std::uint64_t largestPicture = 4U << 20U;

bool isInside(std::string_view path) {
    return !path.empty() && path.front() != '/' && path.find('\0') == std::string_view::npos &&
           ("/" + std::string(path) + "/").find("/../") == std::string::npos;
}

struct Folders {
    Folders() {
        ProcessTable& table = internal::realProcessTable();
        paths = internal::resourceFolders(table.executablePath(table.currentProcess()),
                                          TAV_INSTALLED_RESOURCES, TAV_SOURCE_RESOURCES,
                                          TAV_BUILD_FOLDER);
    }
    std::vector<std::string> paths;
};

} // namespace

std::vector<std::string> internal::resourceFolders(std::optional<std::string> executable,
                                                   std::string_view installedFolder,
                                                   std::string_view sourceFolder,
                                                   std::string_view buildFolder) {
    std::vector<std::string> folders;
    if (executable) {
        const std::string bundle = bundlePathOfExecutable(*executable);
        folders.push_back(stringByAppendingPathComponent(bundle, "Contents/Resources"));
        folders.push_back(stringByAppendingPathComponent(bundle, "Resources"));
        folders.push_back(bundle);
    }
    folders.emplace_back(installedFolder);
    // An installed program must not read what somebody may have put where it was once built.
    if (executable && executable->starts_with(std::string(buildFolder) + "/")) {
        folders.emplace_back(sourceFolder);
    }
    return folders;
}

std::optional<std::string> internal::resourceIn(std::span<const std::string> folders,
                                                std::string_view name, std::string_view type) {
    const std::string file =
        type.empty() ? std::string(name) : std::string(name) + "." + std::string(type);
    if (!isInside(file)) {
        return std::nullopt;
    }
    for (const std::string& folder : folders) {
        std::string path = stringByAppendingPathComponent(folder, file);
        const Result<FileAttributes> attributes = realFileSystem().targetAttributes(path);
        if (attributes.ok() && attributes.value().kind == FileKind::Regular) {
            return path;
        }
    }
    return std::nullopt;
}

const std::vector<std::string>& libraryResourceFolders() {
    return internal::neverDestroyed<Folders>().paths;
}

std::optional<std::string> libraryResource(std::string_view name, std::string_view type) {
    return internal::resourceIn(libraryResourceFolders(), name, type);
}

std::shared_ptr<Image> libraryImage(std::string_view name) {
    const std::optional<std::string> path = libraryResource(name, "png");
    if (!path) {
        return nullptr;
    }
    const Result<Data> bytes = internal::realFileSystem().readFile(*path, largestPicture);
    return bytes.ok() ? imageFromPNG(bytes.value()) : nullptr;
}

} // namespace tav
