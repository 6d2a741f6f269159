// The file that an item stands for: its path, its reference, and the ways between them.

#include "base/PathString.hpp"
#include "base/PercentEncoding.hpp"
#include "base/Unicode.hpp"
#include "fileinfo/local/AliasTarget.hpp"
#include "fileinfo/local/CachedAttributes.hpp"
#include "fileinfo/local/TavMacFileInfo.hpp"
#include "foundation/HomePath.hpp"

#include <cerrno>

namespace tav {

namespace {

/// Whether a URL's host is this one.
bool isHere(const std::optional<std::string_view>& host) {
    return !host || host->empty() || equalsIgnoringCase(*host, "localhost");
}

} // namespace

std::optional<Url> TavMacFileInfo::urlFromPath(OptionalText path) {
    if (path.isNil()) {
        return std::nullopt;
    }
    // What RFC 3986 lets stand in a path, but for ";", which once set parameters apart. A colon in
    // a relative path would end a scheme: the scheme is always there.
    constexpr std::string_view kept = "/-._~!$&'()*+,=:@";
    return Url::withString(((*path).starts_with('/') ? "file://" : "file:") +
                           percentEncoded(*path, kept));
}

std::optional<std::string> TavMacFileInfo::pathFromURL(const Url* url) {
    if (url == nullptr || !url->scheme() || !equalsIgnoringCase(*url->scheme(), "file") ||
        !isHere(url->host())) {
        return std::nullopt;
    }
    std::string path = url->path();
    if (path.find('\0') != std::string::npos) {
        return std::nullopt;
    }
    const std::size_t last = path.find_last_not_of('/');
    if (last != std::string::npos) {
        path.resize(last + 1);
    }
    return path;
}

std::optional<std::string> TavMacFileInfo::pathFromFileRef(const FileRef& reference) {
    internal::FileNumbers file{reference.device, reference.number, reference.birthNanoseconds,
                               reference.mount};
    return internal::pathOfFile(file, reference.path);
}

FileRef TavMacFileInfo::fileRefFromPath(OptionalText path) {
    if (path.isNil() || (*path).empty()) {
        return {};
    }
    const Result<FileAttributes> attributes = FileSystem::current().attributes(*path);
    return attributes.ok() ? internal::referenceOf(internal::numbersOf(attributes.value()), *path)
                           : FileRef();
}

FileRef TavMacFileInfo::fileRefFromURL(const Url* url) { return fileRefFromPath(pathFromURL(url)); }

std::optional<std::string> TavMacFileInfo::pathFromFileSpec(const FileSpec& specification) {
    const FileRef reference = fileRefFromFileSpec(specification);
    return reference.isZero() ? std::nullopt : std::optional(reference.path);
}

FileRef TavMacFileInfo::fileRefFromFileSpec(const FileSpec& specification) {
    const std::optional<std::string> folder = pathFromFileRef(specification.folder);
    return folder ? fileRefFromPath(stringByAppendingPathComponent(*folder, specification.name))
                  : FileRef();
}

FileSpec TavMacFileInfo::fileSpecFromFileRef(const FileRef& reference) {
    const std::optional<std::string> path = pathFromFileRef(reference);
    if (!path) {
        return {};
    }
    const std::string_view name = lastPathComponent(*path);
    return {fileRefFromPath(stringByDeletingLastPathComponent(*path)),
            name == "/" ? std::string() : std::string(name)};
}

std::optional<Url> TavMacFileInfo::URL() { return urlFromPath(path()); }

FileSpec TavMacFileInfo::fileSpecWithError(Status* outError) {
    FileRef reference;
    const Status status = fileRef(&reference);
    if (outError != nullptr) {
        *outError = status;
    }
    return status == Status::Success ? fileSpecFromFileRef(reference) : FileSpec();
}

FileSpec TavMacFileInfo::fileSpec() { return fileSpecWithError(nullptr); }

void TavMacFileInfo::_setPath(OptionalText path) { _setPath(path, true); }

void TavMacFileInfo::_setPath(OptionalText path, bool updateFileRef) {
    _listingFolder = nullptr;
    TavPathBasedFileInfo::_setPath(path.isNil() ? std::string()
                                                : stringByExpandingTildeInPath(*path));
    if (updateFileRef) {
        _fileRefValid = false;
        static_cast<void>(fileRef(nullptr));
    }
}

void TavMacFileInfo::setPath(std::string_view path) {
    _listingFolder = nullptr;
    TavPathBasedFileInfo::setPath(path);
}

std::string TavMacFileInfo::path() {
    if (_fileRefValid && _listingFolder == nullptr) {
        _followFile();
    }
    return _itsPath;
}

/// Takes over the path that the file has now; whether that is another one.
bool TavMacFileInfo::_followFile() {
    if (_isLost) {
        return false;
    }
    const std::optional<std::string> now = internal::pathOfFile(_itsFileRef, _itsPath);
    _isLost = !now;
    if (!now || *now == _itsPath) {
        return false;
    }
    _setPath(*now, false);
    _fileRefValid = true; // the file that was found is the file
    return true;
}

Result<FileAttributes> TavMacFileInfo::_ownAttributes() {
    if (_listingFolder != nullptr) {
        Result<FileAttributes> listed = _listingFolder->attributes(lastPathComponent(_itsPath));
        if (_fileRefValid && listed.ok()) {
            // Enters the time of birth, too.
            static_cast<void>(internal::isSameFile(_itsFileRef, listed.value()));
        }
        return listed;
    }
    Result<FileAttributes> found = FileSystem::current().attributes(_itsPath);
    if (_fileRefValid && !(found.ok() && internal::isSameFile(_itsFileRef, found.value())) &&
        _followFile()) {
        found = FileSystem::current().attributes(_itsPath);
    }
    return found;
}

Result<FileAttributes> TavMacFileInfo::_targetAttributes() {
    return _listingFolder != nullptr ? _listingFolder->targetAttributes(lastPathComponent(_itsPath))
                                     : FileSystem::current().targetAttributes(_itsPath);
}

bool TavMacFileInfo::exists() {
    if (_itsPath.empty()) {
        return false;
    }
    if (!_fileRefValid) {
        static_cast<void>(fileRef(nullptr));
    }
    return _fileRefValid;
}

std::optional<std::string> TavMacFileInfo::_pathOfExisting() {
    if (_fileRefValid) {
        return path();
    }
    std::optional<FileAttributes> learned;
    return _takeFileRef(learned) == Status::Success ? std::optional(_itsPath) : std::nullopt;
}

Status TavMacFileInfo::fileRef(FileRef* outReference) {
    if (outReference != nullptr) {
        *outReference = {};
    }
    std::optional<FileAttributes> learned;
    const Status status = _takeFileRef(learned);
    if (outReference != nullptr) {
        if (status == Status::Success && _itsFileRef.birthNanoseconds == 0 && !learned) {
            static_cast<void>(_ownAttributes()); // which tells the time of birth
        }
        *outReference = internal::referenceOf(_itsFileRef, _itsPath);
    }
    return status;
}

/// Takes the reference if it is not valid, and hands out the attributes that came with it.
Status TavMacFileInfo::_takeFileRef(std::optional<FileAttributes>& learned) {
    if (_fileRefValid) {
        return Status::Success;
    }
    if (_itsPath.empty()) {
        return Status::BadParameter;
    }
    Result<FileAttributes> found = _ownAttributes();
    // The host follows the links on the way by itself. Going step by step helps where it does not:
    // at more links on the way than it follows at a time, and at a slash behind a file.
    if (!found.ok() && found.error() != SystemError(ENOENT)) {
        if (const std::optional<std::string> resolved = resolvedPath()) {
            found = FileSystem::current().attributes(*resolved);
            if (found.ok()) {
                _setPath(*resolved, false);
            }
        }
    }
    if (!found.ok()) {
        return Status::Failure;
    }
    learned = found.value();
    _itsFileRef = internal::numbersOf(found.value());
    _fileRefValid = true;
    _isLost = false;
    return Status::Success;
}

std::optional<std::string> TavMacFileInfo::resolvedPath() {
    return internal::resolvedPathOf(path());
}

void TavMacFileInfo::_clearCaches() {
    _attrs.reset();
    _blackberryInfoValid = false;
    _hasDRM = -1;
}

void TavMacFileInfo::refresh() {
    // The folder and alias flags themselves stay, until they are computed again.
    _folderAliasValid = false;
    _fileRefValid = false;
    _isLost = false;
    _clearCaches();
}

} // namespace tav
