// Folders that the host or its desktop names.

#include "fileinfo/local/DesktopFolders.hpp"
#include "fileinfo/local/FolderTypes.hpp"
#include "fileinfo/local/TavMacFileInfo.hpp"
#include "platform/UserFolders.hpp"

namespace tav {

namespace {

// The platform's numbers of directories and domains.
constexpr std::uint32_t libraryDirectory = 5;
constexpr std::uint32_t applicationSupportDirectory = 14;
constexpr std::uint32_t userDomain = 1;
constexpr std::uint32_t localDomain = 2;

FileInfoPtr itemFor(const std::string& path) {
    return path.empty() ? nullptr : TavMacFileInfo::fileInfoWithPath(path);
}

std::string userDirectory(std::uint32_t directory) {
    switch (directory) {
    case libraryDirectory:
    case applicationSupportDirectory:
        return UserFolders::current().data();
    case 9:
        return internal::desktopFolder("DOCUMENTS");
    case 12:
        return internal::desktopFolder("DESKTOP");
    case 13:
        return UserFolders::current().caches();
    case 15:
        return internal::desktopFolder("DOWNLOAD");
    case 17:
        return internal::desktopFolder("VIDEOS");
    case 18:
        return internal::desktopFolder("MUSIC");
    case 19:
        return internal::desktopFolder("PICTURES");
    default:
        return {};
    }
}

std::string localDirectory(std::uint32_t directory) {
    return directory == libraryDirectory || directory == applicationSupportDirectory
               ? UserFolders::current().globalData()
               : std::string();
}

std::string userFolder(internal::FolderType type) {
    using internal::FolderType;
    UserFolders& folders = UserFolders::current();
    switch (type) {
    case FolderType::Documents:
        return internal::desktopFolder("DOCUMENTS");
    case FolderType::Desktop:
        return internal::desktopFolder("DESKTOP");
    case FolderType::Downloads:
        return internal::desktopFolder("DOWNLOAD");
    case FolderType::Music:
        return internal::desktopFolder("MUSIC");
    case FolderType::Pictures:
        return internal::desktopFolder("PICTURES");
    case FolderType::Movies:
        return internal::desktopFolder("VIDEOS");
    case FolderType::Public:
        return internal::desktopFolder("PUBLICSHARE");
    case FolderType::CurrentUser:
        return folders.home();
    case FolderType::Library:
    case FolderType::ApplicationSupport:
        return folders.data();
    case FolderType::Preferences:
        return folders.configuration();
    case FolderType::CachedData:
        return folders.caches();
    case FolderType::Temporary:
        return folders.temporary();
    }
    return {};
}

std::string folderIn(internal::FolderDomain domain, internal::FolderType type) {
    using internal::FolderDomain;
    using internal::FolderType;
    switch (domain) {
    case FolderDomain::OnSystemDisk:
    case FolderDomain::OnAppropriateDisk:
    case FolderDomain::User:
        return userFolder(type);
    case FolderDomain::Local:
        return type == FolderType::Library || type == FolderType::ApplicationSupport
                   ? UserFolders::current().globalData()
                   : std::string();
    case FolderDomain::System:
    case FolderDomain::Network:
        break;
    }
    return {};
}

} // namespace

FileInfoPtr TavMacFileInfo::_specialFolder(std::uint32_t directory, std::uint32_t where) {
    // The last path of the platform's answer counts, and the user's come first.
    std::string path = (where & localDomain) != 0 ? localDirectory(directory) : std::string();
    if (path.empty() && (where & userDomain) != 0) {
        path = userDirectory(directory);
    }
    return itemFor(path);
}

FileInfoPtr TavMacFileInfo::userLibraryFolder() {
    return _specialFolder(libraryDirectory, userDomain);
}

FileInfoPtr TavMacFileInfo::globalLibraryFolder() {
    return _specialFolder(libraryDirectory, localDomain);
}

FileInfoPtr TavMacFileInfo::userAppSupportFolder() {
    return _specialFolder(applicationSupportDirectory, userDomain);
}

FileInfoPtr TavMacFileInfo::globalAppSupportFolder() {
    return _specialFolder(applicationSupportDirectory, localDomain);
}

std::optional<std::string>
TavMacFileInfo::findFolderPath(std::int16_t volume, std::uint32_t withType, bool createIfNotExist) {
    const std::string path = folderIn(static_cast<internal::FolderDomain>(volume),
                                      static_cast<internal::FolderType>(withType));
    if (path.empty()) {
        return std::nullopt;
    }
    if (fileInfoWithPath(path)->isFolder()) {
        return path;
    }
    const FileInfoPtr made = createIfNotExist ? fileInfoCreateFolderWithFullPath(path) : nullptr;
    return made ? std::optional(made->path()) : std::nullopt;
}

FileInfoPtr TavMacFileInfo::findFolder(std::int16_t volume, std::uint32_t withType,
                                       bool createIfNotExist) {
    const std::optional<std::string> path = findFolderPath(volume, withType, createIfNotExist);
    return path ? itemFor(*path) : nullptr;
}

FileInfoPtr TavMacFileInfo::systemTempFolder() {
    return itemFor(UserFolders::current().temporary());
}

FileInfoPtr TavMacFileInfo::tempFolder() { return systemTempFolder(); }

} // namespace tav
