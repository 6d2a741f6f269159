// Where older items come from: other forms of a path, panels, pasteboards, the host's folders. All
// of it is what the local item does.

#include "fileinfo/local/CachedAttributes.hpp"
#include "fileinfo/local/TavFileInfo.hpp"
#include "fileinfo/local/TavMacFileInfo.hpp"

namespace tav {

namespace {

TavFileInfoPtr olderForm(const FileInfoPtr& item) {
    return item ? TavFileInfo::fileInfoWithPath(item->path()) : nullptr;
}

} // namespace

TavFileInfoArray TavFileInfo::fileInfoArrayFromPasteboard(const Pasteboard& pasteboard) {
    TavFileInfoArray items;
    for (const FileInfoPtr& item : TavMacFileInfo::fileInfoArrayFromPasteboard(pasteboard)) {
        items.push_back(olderForm(item));
    }
    return items;
}

TavFileInfoPtr TavFileInfo::chooseFolderWithPrompt(OptionalText prompt,
                                                   OptionalText startFolderPath) {
    return olderForm(TavMacFileInfo::chooseFolderWithPrompt(prompt, startFolderPath));
}

TavFileInfoPtr TavFileInfo::chooseFolderWithPromptStartFolder(OptionalText prompt,
                                                              TavFileInfo* startFolder) {
    return startFolder != nullptr ? chooseFolderWithPrompt(prompt, startFolder->path())
                                  : chooseFolderWithPrompt(prompt, nullptr);
}

std::optional<Url> TavFileInfo::urlFromPath(OptionalText path) {
    return TavMacFileInfo::urlFromPath(path);
}

std::optional<std::string> TavFileInfo::pathFromURL(const Url* url) {
    return TavMacFileInfo::pathFromURL(url);
}

std::optional<std::string> TavFileInfo::pathFromFileRef(const FileRef& reference) {
    return TavMacFileInfo::pathFromFileRef(reference);
}

std::optional<std::string> TavFileInfo::pathFromFileSpec(const FileSpec& specification) {
    return TavMacFileInfo::pathFromFileSpec(specification);
}

FileRef TavFileInfo::fileRefFromPath(OptionalText path) {
    return TavMacFileInfo::fileRefFromPath(path);
}

FileRef TavFileInfo::fileRefFromURL(const Url* url) { return TavMacFileInfo::fileRefFromURL(url); }

FileRef TavFileInfo::fileRefFromFileSpec(const FileSpec& specification) {
    return TavMacFileInfo::fileRefFromFileSpec(specification);
}

FileSpec TavFileInfo::fileSpecFromFileRef(const FileRef& reference) {
    return TavMacFileInfo::fileSpecFromFileRef(reference);
}

TavFileInfoPtr TavFileInfo::_specialFolder(std::uint32_t directory, std::uint32_t where) {
    return olderForm(TavMacFileInfo::_specialFolder(directory, where));
}

TavFileInfoPtr TavFileInfo::userLibraryFolder() {
    return olderForm(TavMacFileInfo::userLibraryFolder());
}

TavFileInfoPtr TavFileInfo::globalLibraryFolder() {
    return olderForm(TavMacFileInfo::globalLibraryFolder());
}

TavFileInfoPtr TavFileInfo::userAppSupportFolder() {
    return olderForm(TavMacFileInfo::userAppSupportFolder());
}

TavFileInfoPtr TavFileInfo::globalAppSupportFolder() {
    return olderForm(TavMacFileInfo::globalAppSupportFolder());
}

TavFileInfoPtr TavFileInfo::tempFolder() { return olderForm(TavMacFileInfo::systemTempFolder()); }

std::optional<std::string> TavFileInfo::findFolderPath(std::int16_t volume, std::uint32_t withType,
                                                       bool createIfNotExist) {
    return TavMacFileInfo::findFolderPath(volume, withType, createIfNotExist);
}

TavFileInfoPtr TavFileInfo::findFolder(std::int16_t volume, std::uint32_t withType,
                                       bool createIfNotExist) {
    return olderForm(TavMacFileInfo::findFolder(volume, withType, createIfNotExist));
}

} // namespace tav
