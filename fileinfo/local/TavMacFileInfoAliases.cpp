// Folders, files and aliases.

#include "fileinfo/local/AliasTarget.hpp"
#include "fileinfo/local/CachedAttributes.hpp"
#include "fileinfo/local/TavMacFileInfo.hpp"

#include <cerrno>

namespace tav {

bool TavMacFileInfo::_cacheInfoAllowingPrompts(bool /*allowingPrompts*/) {
    if (_folderAliasValid) {
        return true;
    }
    std::optional<FileAttributes> learned;
    const bool isAnswered = _takeFileRef(learned) == Status::Success && _cacheAliasInfo(learned);
    if (!isAnswered && !_isFolder && !_isAlias && !_itsPath.empty()) {
        const Result<FileAttributes> target = _targetAttributes();
        if (target.ok()) {
            _isFolder = target.value().kind == FileKind::Folder;
            _folderAliasValid = true;
        }
    }
    return _folderAliasValid;
}

/// Looks where the item leads to, as an alias or by itself; whether that could be told.
bool TavMacFileInfo::_cacheAliasInfo(const std::optional<FileAttributes>& learned) {
    const Result<FileAttributes> own = learned  ? Result<FileAttributes>(*learned)
                                       : _attrs ? Result<FileAttributes>(_attrs->file)
                                                : _ownAttributes();
    if (!own.ok()) {
        return false;
    }
    if (own.value().kind != FileKind::Link) {
        _aliasRef.reset();
        _isFolder = own.value().kind == FileKind::Folder;
        _isAlias = false;
        _folderAliasValid = true;
        return true;
    }
    _aliasRef = std::make_unique<FileRef>(internal::referenceOf(_itsFileRef, _itsPath));
    Result<internal::AliasTarget> target = internal::aliasTargetAt(_itsPath, _targetAttributes());
    if (target.ok()) {
        *_aliasRef = std::move(target.value().reference);
        _isFolder = target.value().isFolder;
        _isAlias = true;
        _folderAliasValid = true;
        return true;
    }
    const SystemError error = target.error();
    if (error == SystemError(ENOENT) || error == SystemError(ENOTDIR)) {
        _isFolder = false;
        _isAlias = true;
        _badAlias = true;
        _folderAliasValid = true;
        return true;
    }
    return false;
}

bool TavMacFileInfo::isFolder() { return _cacheInfoAllowingPrompts(false) && _isFolder; }

bool TavMacFileInfo::isFile() { return _cacheInfoAllowingPrompts(false) && !_isFolder; }

bool TavMacFileInfo::isAlias() { return isAliasAllowingPrompts(false); }

bool TavMacFileInfo::isAliasAllowingPrompts(bool allowingPrompts) {
    return _cacheInfoAllowingPrompts(allowingPrompts) && _isAlias;
}

FileInfoPtr TavMacFileInfo::aliasTarget() {
    if (!isAlias()) {
        return nullptr;
    }
    return withFileRef(_aliasRef.get(), true);
}

FileInfoPtr TavMacFileInfo::resolvedFileInfo() {
    FileInfoPtr target = aliasTarget();
    return target ? target : shared_from_this();
}

std::uint32_t TavMacFileInfo::resolvedSize() {
    return static_cast<std::uint32_t>(resolvedFileInfo()->size()); // the high half goes, on purpose
}

bool TavMacFileInfo::resolveAlias() { return resolveAliasAllowingPrompts(false); }

bool TavMacFileInfo::resolveAliasAllowingPrompts(bool /*allowingPrompts*/) {
    if (!_cacheInfoAllowingPrompts(true) || !_isAlias) {
        return false;
    }
    if (_badAlias || !_aliasRef) {
        _setPath(std::string(), false);
        _fileRefValid = false;
    } else {
        const FileRef target = *_aliasRef;
        _setPath(pathFromFileRef(target), false);
        _itsFileRef = {target.device, target.number, target.birthNanoseconds, target.mount};
        _fileRefValid = true;
    }
    _isAlias = false;
    return true;
}

} // namespace tav
