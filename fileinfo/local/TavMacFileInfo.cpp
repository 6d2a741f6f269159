// Making, copying and archiving items; what is the same for all of them.

#include "fileinfo/local/TavMacFileInfo.hpp"

#include "base/KeyedUnarchiver.hpp"
#include "base/PathString.hpp"
#include "fileinfo/ArchivedFileInfos.hpp"
#include "fileinfo/ItemAllocation.hpp"
#include "fileinfo/local/ArchivedLocalFileInfos.hpp"
#include "fileinfo/local/CachedAttributes.hpp"
#include "fileinfo/local/TavFileInfo.hpp"
#include "foundation/HomePath.hpp"

namespace tav {

TavMacFileInfo::TavMacFileInfo() = default;
TavMacFileInfo::~TavMacFileInfo() = default;

TavMacFileInfo* asMacFileInfo(TavBaseFileInfo* item) { return dynamic_cast<TavMacFileInfo*>(item); }

std::shared_ptr<TavMacFileInfo> TavMacFileInfo::fileInfo() { return withPath("", false); }

std::shared_ptr<TavMacFileInfo> TavMacFileInfo::fileInfoWithPath(std::string_view path) {
    return withPath(path, false);
}

std::shared_ptr<TavMacFileInfo> TavMacFileInfo::withPath(std::string_view path,
                                                         bool resolveAliases) {
    auto item = internal::allocateItem<TavMacFileInfo>();
    item->initWithPath(path);
    if (resolveAliases) {
        item->resolveAlias();
    }
    return item;
}

void TavMacFileInfo::initWithPath(OptionalText path) { _setPath(path, false); }

std::shared_ptr<TavMacFileInfo>
TavMacFileInfo::fileInfoResolveAliasesWithPath(std::string_view path) {
    std::shared_ptr<TavMacFileInfo> item;
    for (const std::string& component : tav::pathComponents(path)) {
        item = item ? item->find(component, false) : fileInfoWithPath(component);
        const FileInfoPtr resolved = item->resolvedFileInfo();
        item = std::dynamic_pointer_cast<TavMacFileInfo>(resolved);
        if (!item || !item->exists()) {
            return nullptr;
        }
    }
    return item;
}

std::shared_ptr<TavMacFileInfo> TavMacFileInfo::withURL(const Url* url, bool resolveAliases) {
    auto item = fileInfo();
    item->_setPath(pathFromURL(url));
    if (resolveAliases) {
        item->resolveAlias();
    }
    return item;
}

std::shared_ptr<TavMacFileInfo> TavMacFileInfo::fileInfoWithURL(const Url* url) {
    return withURL(url, false);
}

std::shared_ptr<TavMacFileInfo> TavMacFileInfo::fileInfoResolveAliasesWithURL(const Url* url) {
    return withURL(url, true);
}

std::shared_ptr<TavMacFileInfo> TavMacFileInfo::withFileRef(const FileRef* reference,
                                                            bool resolveAliases) {
    auto item = fileInfo();
    if (reference != nullptr) {
        item->_setPath(pathFromFileRef(*reference), false);
        item->_itsFileRef = {reference->device, reference->number, reference->birthNanoseconds,
                             reference->mount};
        item->_fileRefValid = true;
    }
    if (resolveAliases) {
        item->resolveAlias();
    }
    return item;
}

std::shared_ptr<TavMacFileInfo> TavMacFileInfo::fileInfoWithFileRef(const FileRef* reference) {
    return withFileRef(reference, false);
}

std::shared_ptr<TavMacFileInfo>
TavMacFileInfo::fileInfoResolveAliasesWithFileRef(const FileRef* reference) {
    return withFileRef(reference, true);
}

std::shared_ptr<TavMacFileInfo> TavMacFileInfo::withFileSpec(const FileSpec* specification,
                                                             bool resolveAliases) {
    auto item = fileInfo();
    item->_setPath(specification != nullptr ? pathFromFileSpec(*specification) : std::nullopt);
    if (resolveAliases) {
        item->resolveAlias();
    }
    return item;
}

std::shared_ptr<TavMacFileInfo>
TavMacFileInfo::fileInfoWithFileSpec(const FileSpec* specification) {
    return withFileSpec(specification, false);
}

std::shared_ptr<TavMacFileInfo>
TavMacFileInfo::fileInfoResolveAliasesWithFileSpec(const FileSpec* specification) {
    return withFileSpec(specification, true);
}

std::shared_ptr<TavMacFileInfo> TavMacFileInfo::fileInfoWithFileInfo(TavMacFileInfo* /*item*/) {
    return fileInfo()->copy();
}

std::shared_ptr<TavMacFileInfo> TavMacFileInfo::copy() {
    auto copied = fileInfo();
    copied->_setPath(_itsPath);
    copied->_folderAliasValid = _folderAliasValid;
    copied->_isFolder = _isFolder;
    copied->_isAlias = _isAlias;
    copied->_badAlias = _badAlias;
    copied->_aliasRef = _aliasRef ? std::make_unique<FileRef>(*_aliasRef) : nullptr;
    copied->_fileRefValid = _fileRefValid; // although the reference was taken anew
    copied->_attrs = _attrs ? std::make_unique<internal::CachedAttributes>(_attrs->file) : nullptr;
    return copied;
}

FileInfoPtr TavMacFileInfo::fileInfoCreateFolderWithFullPath(std::string_view path) {
    return fileInfoWithPath("/")->createFolder(stringByExpandingTildeInPath(path));
}

FileInfoPtr TavMacFileInfo::fileInfoCreateFileWithFullPath(std::string_view path) {
    const std::string expanded = stringByExpandingTildeInPath(path);
    const FileInfoPtr folder =
        fileInfoWithPath("/")->createFolder(stringByDeletingLastPathComponent(expanded));
    return folder ? folder->createFile(lastPathComponent(expanded), {}, nullptr) : nullptr;
}

FileInfoArray TavMacFileInfo::fileInfoArrayFromPathsArray(std::span<const std::string> paths) {
    FileInfoArray items;
    items.reserve(paths.size());
    for (const std::string& path : paths) {
        items.push_back(fileInfoWithPath(path));
    }
    return items;
}

std::string TavMacFileInfo::className() const { return "TavMacFileInfo"; }

std::vector<std::string> TavMacFileInfo::superclassNames() const {
    return {"TavPathBasedFileInfo", "TavBaseFileInfo", "NSObject"};
}

Archived TavMacFileInfo::unarchiveFromData(BytesView data) {
    registerArchivedLocalFileInfos();
    return unarchiveObjectWithData(data);
}

void registerArchivedLocalFileInfos() {
    static const bool entered = [] {
        registerArchivedFileInfos();
        registerArchivedClass("TavMacFileInfo",
                              [](KeyedUnarchiver& coder) -> std::shared_ptr<Coding> {
                                  const auto item = TavMacFileInfo::fileInfo();
                                  item->initWithCoder(coder);
                                  return item;
                              });
        registerArchivedClass("TavFileInfo", [](KeyedUnarchiver& coder) -> std::shared_ptr<Coding> {
            const auto item = TavFileInfo::fileInfoWithPath(nullptr);
            item->initWithCoder(coder);
            return item;
        });
        return true;
    }();
    static_cast<void>(entered);
}

std::int32_t TavMacFileInfo::maxPathLength() { return 1024; }

std::uint64_t TavMacFileInfo::preferredChunkSize() { return std::uint64_t{1} << 20U; }

bool TavMacFileInfo::supportsTimezones() { return true; }

bool TavMacFileInfo::mustUseUTCDates() { return false; }

} // namespace tav
