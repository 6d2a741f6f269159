#include "fileinfo/TavPathBasedFileInfo.hpp"

#include "base/KeyedArchiver.hpp"
#include "base/KeyedUnarchiver.hpp"
#include "base/PathString.hpp"
#include "base/Unicode.hpp"
#include "fileinfo/ItemAllocation.hpp"
#include "fileinfo/PathPrefix.hpp"
#include "fileinfo/PathWay.hpp"

#include <algorithm>

namespace tav {

namespace {

constexpr std::string_view pathKey = "TavPathBasedFileInfo_path";

/// The components of a path on a way: one trailing slash does not count, that of "/" neither.
std::vector<std::string> componentsOf(std::string_view path) {
    if (path.ends_with('/')) {
        path.remove_suffix(1);
    }
    return tav::pathComponents(path);
}

/// The text behind so many units of UTF-16.
std::string withoutFirstUnits(std::string_view text, std::size_t count) {
    if (isASCII(text)) {
        return std::string(text.substr(std::min(count, text.size())));
    }
    const std::u16string units = utf16FromBytes(text);
    return bytesFromUTF16(std::u16string_view(units).substr(std::min(count, units.size())));
}

} // namespace

FileInfoPtr TavPathBasedFileInfo::fileInfoWithPath(std::string_view path) {
    const auto item = internal::allocateItem<TavPathBasedFileInfo>();
    item->initWithPath(path);
    return item;
}

FileInfoPtr TavPathBasedFileInfo::fileInfo() {
    return internal::allocateItem<TavPathBasedFileInfo>();
}

void TavPathBasedFileInfo::initWithPath(OptionalText path) { _setPath(path); }

void TavPathBasedFileInfo::_setPath(OptionalText path) {
    _itsPath = path.isNil() ? std::string() : std::string(*path);
    refresh();
}

void TavPathBasedFileInfo::setPath(std::string_view path) { _itsPath = std::string(path); }

std::string TavPathBasedFileInfo::path() { return _itsPath; }

std::string TavPathBasedFileInfo::description() { return path(); }

std::string TavPathBasedFileInfo::name() { return std::string(lastPathComponent(_itsPath)); }

std::string TavPathBasedFileInfo::nameWithoutExtension() {
    return stringByDeletingPathExtension(lastPathComponent(_itsPath));
}

std::vector<std::string> TavPathBasedFileInfo::pathComponents() {
    const std::string own = path();
    return own == "/" ? tav::pathComponents(own) : componentsOf(own);
}

FileInfoPtr TavPathBasedFileInfo::parentFolder() {
    return TavPathBasedFileInfo::fileInfoWithPath(stringByDeletingLastPathComponent(_itsPath));
}

void TavPathBasedFileInfo::updateName(std::string_view name) {
    const FileInfoPtr parent = parentFolder();
    _itsPath = stringByAppendingPathComponent(parent ? parent->path() : std::string(), name);
}

Status TavPathBasedFileInfo::moveTo(TavBaseFileInfo* destination) {
    setPath(destination != nullptr ? destination->path() : std::string());
    return Status::Success;
}

bool TavPathBasedFileInfo::isEqualTo(TavBaseFileInfo* other) {
    const auto* known = dynamic_cast<TavPathBasedFileInfo*>(other);
    return known != nullptr ? equalsIgnoringCase(_itsPath, known->_itsPath)
                            : TavBaseFileInfo::isEqualTo(other);
}

bool TavPathBasedFileInfo::contains(TavBaseFileInfo* other) {
    return isFolder() && other != nullptr && internal::beginsIgnoringCase(other->path(), path());
}

std::optional<std::string> TavPathBasedFileInfo::volumeRelativeStandardPath() {
    const std::string own = path();
    const FileInfoPtr root = volume();
    if (!root) {
        return own;
    }
    const std::string rootPath = root->path();
    if (!internal::beginsIgnoringCase(own, rootPath)) {
        return own;
    }
    std::string rest = withoutFirstUnits(own, utf16Length(rootPath));
    if (rest.starts_with('/')) {
        rest.erase(0, 1);
    }
    if (rest.ends_with('/')) {
        rest.pop_back();
    }
    return rest;
}

std::optional<std::string> TavPathBasedFileInfo::relativePathTo(TavBaseFileInfo* other) {
    if (other == nullptr) {
        return std::nullopt;
    }
    const FileInfoPtr root = volume();
    if (!root || !root->isEqualTo(other->volume().get())) {
        return other->path();
    }
    const FileInfoPtr parent = isFolder() ? nullptr : parentFolder();
    const std::vector<std::string> mine = componentsOf(isFolder() ? path()
                                                       : parent   ? parent->path()
                                                                  : std::string());
    const std::vector<std::string> theirs = componentsOf(other->path());
    return internal::wayBetween(mine, theirs, !contains(other), stringByAppendingPathComponent);
}

void TavPathBasedFileInfo::encodeWithCoder(KeyedArchiver& coder) {
    coder.encodeText(pathKey, path());
    TavBaseFileInfo::encodeWithCoder(coder);
}

void TavPathBasedFileInfo::initWithCoder(KeyedUnarchiver& coder) {
    TavBaseFileInfo::initWithCoder(coder);
    setPath(coder.decodeText(pathKey).value_or(std::string()));
}

std::string TavPathBasedFileInfo::className() const { return "TavPathBasedFileInfo"; }

std::vector<std::string> TavPathBasedFileInfo::superclassNames() const {
    return {"TavBaseFileInfo", "NSObject"};
}

} // namespace tav
