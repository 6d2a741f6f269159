// Archives, made and unpacked by programs of the host.

#include "base/Exception.hpp"
#include "base/PathString.hpp"
#include "fileinfo/local/Archiver.hpp"
#include "fileinfo/local/TavMacFileInfo.hpp"
#include "platform/Clock.hpp"

#include <chrono>
#include <cstdint>
#include <ratio>

namespace tav {

namespace {

/// "temp.zip" in the working folder, which is made; null when there is none, or when an archive of
/// before cannot be removed.
FileInfoPtr newArchiveIn(const FileInfoPtr& temporary) {
    const FileInfoPtr folder = temporary ? temporary->createFolder("OrvaneTemp") : nullptr;
    FileInfoPtr archive = folder ? folder->find("temp.zip") : nullptr;
    return archive && (!archive->exists() || archive->remove()) ? archive : nullptr;
}

/// The platform's tick count: sixtieths of a second since start-up, as 32 bits, which begin anew
/// after 828 days.
std::uint32_t tickCount() {
    using Ticks = std::chrono::duration<std::int64_t, std::ratio<1, 60>>;
    return static_cast<std::uint32_t>(
        std::chrono::duration_cast<Ticks>(Clock::current().ticks()).count());
}

/// A folder with nothing in it, whatever stood there; null when there is none.
FileInfoPtr emptyFolderIn(TavBaseFileInfo& temporary, const std::string& name) {
    // Of a link the link goes, not what it leads to.
    const FileInfoPtr before = temporary.find(name);
    if (!before) {
        return nullptr;
    }
    if (before->exists() && !before->remove()) {
        internal::removeUnpacked(before->path());
    }
    before->refresh();
    return before->exists() ? nullptr : temporary.createFolder(name);
}

} // namespace

std::optional<Data> TavMacFileInfo::zip() {
    if (!exists() || !internal::canZip()) {
        return std::nullopt;
    }
    const FileInfoPtr archive = newArchiveIn(tempFolder());
    if (!archive) {
        return std::nullopt;
    }
    internal::zipPack(path(), isFolder(), archive->path());
    archive->refresh();
    return archive->fileContents();
}

std::optional<Data> TavMacFileInfo::ditto() {
    if (!exists() || !internal::canDittoPack()) {
        return std::nullopt;
    }
    const FileInfoPtr archive = newArchiveIn(tempFolder());
    if (!archive) {
        return std::nullopt;
    }
    internal::dittoPack(path(), archive->path());
    archive->refresh();
    return archive->fileContents();
}

FileInfoPtr TavMacFileInfo::zipToFolder(TavBaseFileInfo* folder) {
    if (!exists() || !internal::canDittoPack()) {
        return nullptr;
    }
    FileInfoPtr archive =
        folder != nullptr ? folder->find(stringByAppendingPathExtension(name(), "zip")) : nullptr;
    if (!archive) {
        return nullptr;
    }
    if (archive->exists() && archive->isFile()) {
        archive->remove();
    }
    try {
        internal::dittoPack(path(), archive->path());
    } catch (const Exception&) {
        // The archive is answered all the same; it does not exist then.
    }
    archive->refresh();
    return archive;
}

std::optional<FileInfoArray> TavMacFileInfo::unzip() {
    if (!exists() || !internal::canDittoUnpack()) {
        return std::nullopt;
    }
    const FileInfoPtr temporary = tempFolder();
    const FileInfoPtr folder =
        temporary ? emptyFolderIn(*temporary, "OrvaneUnzip-" + std::to_string(tickCount()))
                  : nullptr;
    if (!folder) {
        return std::nullopt;
    }
    return internal::dittoUnpack(path(), folder->path()) ? folder->folderContents()
                                                         : FileInfoArray();
}

} // namespace tav
