// Making, copying and archiving the older items.

#include "fileinfo/local/TavFileInfo.hpp"

#include "base/KeyedArchiver.hpp"
#include "base/KeyedUnarchiver.hpp"
#include "base/PathString.hpp"
#include "fileinfo/ItemAllocation.hpp"
#include "fileinfo/local/CachedAttributes.hpp"
#include "foundation/HomePath.hpp"

namespace tav {

namespace {

constexpr std::string_view pathKey = "TavFileInfo_path";

} // namespace

TavFileInfo::TavFileInfo() = default;
TavFileInfo::~TavFileInfo() = default;

void TavFileInfo::initX() {
    itsPath_.reset();
    folderAliasValid_ = false;
    isFolder_ = false;
    isAlias_ = false;
    aliasRef_ = {};
    fileRefValid_ = false;
    isLost_ = false;
    itsFileRef_ = {};
    attrs_.reset();
}

TavFileInfoPtr TavFileInfo::withPath(OptionalText path, bool resolveAliases) {
    auto item = internal::allocateItem<TavFileInfo>();
    if (!path.isNil()) {
        item->itsPath_ = stringByStandardizingPath(*path);
    }
    if (resolveAliases) {
        item->resolveAlias();
    }
    return item;
}

/// The item of that name in a folder. No tilde is expanded: it would be a name.
TavFileInfoPtr TavFileInfo::itemIn(std::string_view folder, std::string_view name) {
    auto item = internal::allocateItem<TavFileInfo>();
    constexpr std::string_view noHomeFolder;
    item->itsPath_ =
        tav::stringByStandardizingPath(stringByAppendingPathComponent(folder, name), noHomeFolder);
    return item;
}

TavFileInfoPtr TavFileInfo::fileInfoWithPath(OptionalText path) { return withPath(path, false); }

TavFileInfoPtr TavFileInfo::fileInfoResolveAliasesWithPath(std::string_view path) {
    TavFileInfoPtr item;
    for (const std::string& component : tav::pathComponents(path)) {
        item = item ? item->find(component) : fileInfoWithPath(component);
        item = item->resolvedFileInfo();
        if (!item->exists()) {
            return nullptr;
        }
    }
    return item;
}

TavFileInfoPtr TavFileInfo::withURL(const Url* url, bool resolveAliases) {
    return withPath(pathFromURL(url), resolveAliases);
}

TavFileInfoPtr TavFileInfo::fileInfoWithURL(const Url* url) { return withURL(url, false); }

TavFileInfoPtr TavFileInfo::fileInfoResolveAliasesWithURL(const Url* url) {
    return withURL(url, true);
}

TavFileInfoPtr TavFileInfo::withFileRef(const FileRef* reference, bool resolveAliases) {
    TavFileInfoPtr item =
        withPath(reference != nullptr ? pathFromFileRef(*reference) : std::nullopt, false);
    if (reference != nullptr) {
        item->itsFileRef_ = *reference;
        item->fileRefValid_ = true;
    }
    if (resolveAliases) {
        item->resolveAlias();
    }
    return item;
}

TavFileInfoPtr TavFileInfo::fileInfoWithFileRef(const FileRef* reference) {
    return withFileRef(reference, false);
}

TavFileInfoPtr TavFileInfo::fileInfoResolveAliasesWithFileRef(const FileRef* reference) {
    return withFileRef(reference, true);
}

TavFileInfoPtr TavFileInfo::withFileSpec(const FileSpec* specification, bool resolveAliases) {
    return withPath(specification != nullptr ? pathFromFileSpec(*specification) : std::nullopt,
                    resolveAliases);
}

TavFileInfoPtr TavFileInfo::fileInfoWithFileSpec(const FileSpec* specification) {
    return withFileSpec(specification, false);
}

TavFileInfoPtr TavFileInfo::fileInfoResolveAliasesWithFileSpec(const FileSpec* specification) {
    return withFileSpec(specification, true);
}

TavFileInfoPtr TavFileInfo::fileInfoWithFileInfo(TavFileInfo* /*item*/) {
    return internal::allocateItem<TavFileInfo>()->copy();
}

TavFileInfoArray TavFileInfo::fileInfoArrayFromPathsArray(std::span<const std::string> paths) {
    TavFileInfoArray items;
    items.reserve(paths.size());
    for (const std::string& path : paths) {
        items.push_back(fileInfoWithPath(path));
    }
    return items;
}

TavFileInfoPtr TavFileInfo::copy() {
    auto copied = internal::allocateItem<TavFileInfo>();
    copied->itsPath_ = itsPath_;
    copied->fileRefWithError(nullptr);
    copied->folderAliasValid_ = folderAliasValid_;
    copied->isFolder_ = isFolder_;
    copied->isAlias_ = isAlias_;
    copied->aliasRef_ = aliasRef_;
    copied->fileRefValid_ = fileRefValid_; // although the reference was taken anew
    copied->attrs_ = attrs_ ? std::make_unique<internal::CachedAttributes>(attrs_->file) : nullptr;
    return copied;
}

std::string TavFileInfo::className() const { return "TavFileInfo"; }

void TavFileInfo::encode(KeyedArchiver& archiver) const {
    // Items are made by functions that answer them changeable, so none is really constant.
    const_cast<TavFileInfo*>(this)->encodeWithCoder(archiver);
}

void TavFileInfo::encodeWithCoder(KeyedArchiver& coder) {
    if (itsPath_) {
        coder.encodeText(pathKey, path());
    } else {
        coder.encodeObject(pathKey, nullptr);
    }
}

void TavFileInfo::initWithCoder(KeyedUnarchiver& coder) {
    initX();
    if (const std::optional<std::string> path = coder.decodeText(pathKey)) {
        itsPath_ = stringByStandardizingPath(*path);
    }
}

} // namespace tav
