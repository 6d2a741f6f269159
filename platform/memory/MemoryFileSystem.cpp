#include "platform/memory/MemoryFileSystem.hpp"

#include "platform/memory/MemoryOpenFile.hpp"
#include "platform/memory/MemoryOpenFolder.hpp"

#include <algorithm>
#include <cmath>
#include <system_error>

namespace tav {

namespace {

// 2020-09-13T12:26:40Z: any moment that is not the reference date would do.
constexpr double firstMoment = 1'600'000'000;
// A power of two, so that sums stay exact.
constexpr double secondsBetweenChanges = 1.0 / 1024;
constexpr std::uint32_t permissionBits = 07777;
constexpr std::size_t longestTarget = 4095;
constexpr double furthestDate = 9.2e18;

SystemError errorOfTarget(std::string_view target) {
    if (target.empty()) {
        return SystemError(ENOENT);
    }
    if (target.find('\0') != std::string_view::npos) {
        return SystemError(EINVAL);
    }
    return target.size() > longestTarget ? SystemError(ENAMETOOLONG) : SystemError();
}

bool isVolume(const MemoryPlace& place) {
    return place.node->attributes.identity.device != place.folder().attributes.identity.device;
}

bool isInside(const MemoryPlace& place, const MemoryNode* folder) {
    return std::any_of(place.folders.begin(), place.folders.end(),
                       [folder](const auto& step) { return step.folder == folder; });
}

/// Why one may not take the other's name, as far as their kinds and the tree decide it.
SystemError errorOfMove(const MemoryPlace& from, const MemoryPlace& to) {
    if (!from.node->isFolder() && (from.endsInSlash || to.endsInSlash)) {
        return SystemError(ENOTDIR);
    }
    if (isInside(to, from.node)) {
        return SystemError(EINVAL);
    }
    if (isVolume(from)) {
        return SystemError(EBUSY);
    }
    if (to.node == nullptr || to.node == from.node) {
        return {};
    }
    if (isInside(from, to.node)) {
        return SystemError(ENOTEMPTY);
    }
    if (from.node->isFolder() != to.node->isFolder()) {
        return SystemError(from.node->isFolder() ? ENOTDIR : EISDIR);
    }
    if (isVolume(to)) {
        return SystemError(EBUSY);
    }
    return to.node->entries.empty() ? SystemError() : SystemError(ENOTEMPTY);
}

[[noreturn]] void raise(SystemError error, std::string_view path) {
    throw std::system_error(error.number(), std::generic_category(), std::string(path));
}

} // namespace

MemoryFileSystem::MemoryFileSystem() : now_(Date::fromSecondsSince1970(firstMoment)), tree_(now_) {
    takeTime(); // the root's
}

void MemoryFileSystem::note(std::string_view operation, std::string_view path) {
    calls_.push_back(std::string(operation) + " " + std::string(path));
}

Date MemoryFileSystem::rounded(Date date) const {
    return keepsTwoSecondDates ? Date(std::floor(date.secondsSinceReferenceDate() / 2) * 2) : date;
}

Date MemoryFileSystem::takeTime() {
    const Date taken = rounded(now_);
    now_ = Date(now_.secondsSinceReferenceDate() + secondsBetweenChanges);
    return taken;
}

Result<MemoryPlace> MemoryFileSystem::find(std::string_view path, Last last, MemoryNode* folder) {
    return tree_.find(path, last, isCaseInsensitive, folder);
}

Result<MemoryPlace> MemoryFileSystem::findExisting(std::string_view path, Last last,
                                                   MemoryNode* folder) {
    auto place = find(path, last, folder);
    if (place.ok() && place.value().node == nullptr) {
        return SystemError(ENOENT);
    }
    return place;
}

SystemError MemoryFileSystem::errorOfChange(const MemoryNode& node) const {
    if (isReadOnly) {
        return SystemError(EROFS);
    }
    return node.attributes.isImmutable ? SystemError(EPERM) : SystemError();
}

SystemError MemoryFileSystem::errorOfRemoval(const MemoryPlace& place) const {
    const SystemError error = errorOfChange(place.folder());
    return error.isNone() ? errorOfChange(*place.node) : error;
}

SystemError MemoryFileSystem::errorOfNewName(const MemoryPlace& place) const {
    if (const SystemError error = errorOfChange(place.folder()); !error.isNone()) {
        return error;
    }
    const bool isForbidden = place.name.find_first_of(forbiddenCharacters) != std::string::npos;
    return isForbidden ? SystemError(EINVAL) : SystemError();
}

MemoryNode& MemoryFileSystem::add(const MemoryPlace& place, FileKind kind,
                                  std::uint32_t permissions) {
    const Date birth = now_;
    return tree_.add(place, kind, permissions, birth, takeTime());
}

void MemoryFileSystem::addLinkNode(const MemoryPlace& place, std::string_view target) {
    MemoryNode& link = add(place, FileKind::Link, 0777);
    link.target = target;
    link.attributes.size = target.size();
}

std::uint64_t MemoryFileSystem::roomFor(const MemoryNode& file) const {
    const std::uint64_t others = tree_.usedBytes() - file.content.size();
    return capacity > others ? capacity - others : 0;
}

SystemError MemoryFileSystem::write(MemoryNode& file, BytesView content) {
    const auto fitting =
        static_cast<std::size_t>(std::min<std::uint64_t>(roomFor(file), content.size()));
    tree_.write(file, content.first(fitting), takeTime());
    return fitting == content.size() ? SystemError() : SystemError(ENOSPC);
}

// Setting the stage.

/// The place of the path's last name, with the folders on the way made.
MemoryPlace MemoryFileSystem::stage(std::string_view path, Last last) {
    const std::size_t nameEnd = path.find_last_not_of('/');
    const std::size_t end = nameEnd == std::string_view::npos ? 0 : nameEnd + 1;
    for (std::size_t slash = path.find('/', 1); slash < end; slash = path.find('/', slash + 1)) {
        const auto folder = find(path.substr(0, slash), Last::Target);
        if (!folder.ok()) {
            raise(folder.error(), path);
        }
        if (folder.value().node == nullptr) {
            add(folder.value(), FileKind::Folder, 0755);
        }
    }
    auto place = find(path, last);
    if (!place.ok()) {
        raise(place.error(), path);
    }
    return std::move(place).value();
}

void MemoryFileSystem::addFile(std::string_view path, std::string_view text) {
    const MemoryPlace place = stage(path, Last::Target);
    if (place.endsInSlash || (place.node != nullptr && place.node->isFolder())) {
        raise(SystemError(EISDIR), path);
    }
    MemoryNode& file = place.node != nullptr ? *place.node : add(place, FileKind::Regular, 0644);
    if (const SystemError error = write(file, bytesOf(text)); !error.isNone()) {
        raise(error, path);
    }
}

void MemoryFileSystem::addFolder(std::string_view path) {
    const MemoryPlace place = stage(path, Last::Target);
    if (place.node == nullptr) {
        add(place, FileKind::Folder, 0755);
    } else if (!place.node->isFolder()) {
        raise(SystemError(EEXIST), path);
    }
}

void MemoryFileSystem::addLink(std::string_view path, std::string_view target) {
    const MemoryPlace place = stage(path, Last::Name);
    if (place.node != nullptr) {
        raise(SystemError(EEXIST), path);
    }
    const SystemError error = place.endsInSlash ? SystemError(ENOENT) : errorOfTarget(target);
    if (!error.isNone()) {
        raise(error, path);
    }
    addLinkNode(place, target);
}

void MemoryFileSystem::addVolume(std::string_view path) {
    const MemoryPlace place = stage(path, Last::Target);
    if (place.node != nullptr) {
        raise(SystemError(EEXIST), path);
    }
    FileAttributes& attributes = add(place, FileKind::Folder, 0755).attributes;
    attributes.identity.device = ++devices_;
    attributes.mount = devices_;
}

void MemoryFileSystem::setImmutable(std::string_view path, bool isImmutable) {
    const auto place = findExisting(path, Last::Name);
    if (!place.ok()) {
        raise(place.error(), path);
    }
    place.value().node->attributes.isImmutable = isImmutable;
}

void MemoryFileSystem::removeAll(std::string_view path) {
    const auto place = findExisting(path, Last::Name);
    if (place.ok() && place.value().isNamed()) {
        tree_.remove(place.value(), takeTime());
    }
}

// Questions.

Result<FileAttributes> MemoryFileSystem::attributesOf(std::string_view path, Last last,
                                                      MemoryNode* folder) {
    const auto place = findExisting(path, last, folder);
    return place.ok() ? Result(place.value().node->attributes)
                      : Result<FileAttributes>(place.error());
}

Result<FileAttributes> MemoryFileSystem::attributes(std::string_view path) {
    note("attributes", path);
    return attributesOf(path, Last::Link);
}

Result<FileAttributes> MemoryFileSystem::targetAttributes(std::string_view path) {
    note("targetAttributes", path);
    return attributesOf(path, Last::Target);
}

Result<MemoryNode*> MemoryFileSystem::findFolder(std::string_view path, Last last,
                                                 MemoryNode* folder) {
    const auto place = findExisting(path, last, folder);
    if (!place.ok()) {
        return place.error();
    }
    MemoryNode* const node = place.value().node;
    return node->isFolder() ? Result(node) : Result<MemoryNode*>(SystemError(ENOTDIR));
}

Result<std::vector<FolderEntry>> MemoryFileSystem::folderEntries(std::string_view path) {
    note("folderEntries", path);
    const auto folder = findFolder(path, Last::Target);
    if (!folder.ok()) {
        return folder.error();
    }
    std::vector<FolderEntry> entries;
    for (const auto& [name, number] : folder.value()->entries) {
        entries.push_back({name, tree_.kindOf(number)});
    }
    return entries;
}

Result<std::unique_ptr<OpenFolder>> MemoryFileSystem::openFolder(std::string_view path) {
    note("openFolder", path);
    const auto folder = findFolder(path, Last::Target);
    if (!folder.ok()) {
        return folder.error();
    }
    return Result<std::unique_ptr<OpenFolder>>(
        std::make_unique<MemoryOpenFolder>(*this, *folder.value(), path));
}

Result<std::string> MemoryFileSystem::linkTarget(std::string_view path) {
    note("linkTarget", path);
    return linkTargetOf(path, nullptr);
}

Result<std::string> MemoryFileSystem::linkTargetOf(std::string_view path, MemoryNode* folder) {
    const auto place = findExisting(path, Last::Link, folder);
    if (!place.ok()) {
        return place.error();
    }
    const MemoryNode& node = *place.value().node;
    return node.attributes.kind == FileKind::Link ? Result(node.target)
                                                  : Result<std::string>(SystemError(EINVAL));
}

Result<std::string> MemoryFileSystem::canonicalPath(std::string_view path) {
    note("canonicalPath", path);
    const auto place = findExisting(path, Last::Target);
    if (!place.ok()) {
        return place.error();
    }
    return place.value().path();
}

Result<Data> MemoryFileSystem::readFile(std::string_view path, std::uint64_t maximumSize) {
    note("readFile", path);
    const auto place = findExisting(path, Last::Target);
    if (!place.ok()) {
        return place.error();
    }
    const MemoryNode& file = *place.value().node;
    if (file.isFolder()) {
        return SystemError(EISDIR);
    }
    if (file.content.size() > maximumSize) {
        return SystemError(EFBIG);
    }
    return file.content;
}

// Changes.

SystemError MemoryFileSystem::writeFile(std::string_view path, BytesView content,
                                        std::uint32_t permissions) {
    note("writeFile", path);
    if (path.ends_with('/')) {
        // Even an existing file is refused so; what leads there is looked at first.
        const auto place = find(path, Last::Name);
        return place.ok() ? SystemError(EISDIR) : place.error();
    }
    const auto place = find(path, Last::Target);
    if (!place.ok()) {
        return place.error();
    }
    MemoryNode* file = place.value().node;
    if (file != nullptr ? file->isFolder() : place.value().endsInSlash) {
        return SystemError(EISDIR);
    }
    if (file == nullptr) {
        const SystemError error = errorOfNewName(place.value());
        if (!error.isNone()) {
            return error;
        }
        file = &add(place.value(), FileKind::Regular, permissions);
    }
    const SystemError error = errorOfChange(*file);
    return error.isNone() ? write(*file, content) : error;
}

Result<MemoryNode*> MemoryFileSystem::nodeToOpen(std::string_view path, const OpenOptions& options,
                                                 MemoryNode* folder) {
    if (options.create && path.ends_with('/')) {
        // Refused whatever stands there, as `writeFile` does.
        const auto place = find(path, Last::Name, folder);
        return place.ok() ? SystemError(EISDIR) : place.error();
    }
    const auto place = find(path, options.mustBeNew ? Last::Name : Last::Target, folder);
    if (!place.ok()) {
        return place.error();
    }
    MemoryNode* const node = place.value().node;
    if (node == nullptr && options.create) {
        // A link may end in a slash.
        const SystemError error =
            place.value().endsInSlash ? SystemError(EISDIR) : errorOfNewName(place.value());
        return error.isNone() ? Result(&add(place.value(), FileKind::Regular, options.permissions))
                              : Result<MemoryNode*>(error);
    }
    if (node == nullptr || options.mustBeNew) {
        return SystemError(node == nullptr ? ENOENT : EEXIST);
    }
    if (node->isFolder()) {
        return SystemError(EISDIR);
    }
    const SystemError error = options.write ? errorOfChange(*node) : SystemError();
    return error.isNone() ? Result(node) : error;
}

Result<std::unique_ptr<OpenFile>> MemoryFileSystem::open(std::string_view path,
                                                         const OpenOptions& options) {
    note("open", path);
    return openFile(path, options, nullptr, path);
}

/// `knownAs` is the path for the journal.
Result<std::unique_ptr<OpenFile>> MemoryFileSystem::openFile(std::string_view path,
                                                             const OpenOptions& options,
                                                             MemoryNode* folder,
                                                             std::string_view knownAs) {
    if (!options.areConsistent()) {
        return SystemError(EINVAL);
    }
    const auto node = nodeToOpen(path, options, folder);
    if (!node.ok()) {
        return node.error();
    }
    return Result<std::unique_ptr<OpenFile>>(
        std::make_unique<MemoryOpenFile>(*this, *node.value(), knownAs, options));
}

SystemError MemoryFileSystem::syncFolder(std::string_view path) {
    note("syncFolder", path);
    return findFolder(path, Last::Target).error();
}

SystemError MemoryFileSystem::createFolder(std::string_view path, std::uint32_t permissions) {
    note("createFolder", path);
    return makeFolder(path, permissions, nullptr);
}

SystemError MemoryFileSystem::makeFolder(std::string_view path, std::uint32_t permissions,
                                         MemoryNode* folder) {
    const auto place = find(path, Last::Name, folder);
    if (!place.ok()) {
        return place.error();
    }
    if (place.value().node != nullptr) {
        return SystemError(EEXIST);
    }
    const SystemError error = errorOfNewName(place.value());
    if (error.isNone()) {
        add(place.value(), FileKind::Folder, permissions);
    }
    return error;
}

SystemError MemoryFileSystem::createLink(std::string_view path, std::string_view target) {
    note("createLink", std::string(path) + " " + std::string(target));
    SystemError error = errorOfTarget(target);
    if (!error.isNone()) {
        return error;
    }
    const auto place = find(path, Last::Name);
    if (!place.ok()) {
        return place.error();
    }
    if (place.value().node != nullptr) {
        return SystemError(EEXIST);
    }
    error = place.value().endsInSlash ? SystemError(ENOENT) : errorOfNewName(place.value());
    if (error.isNone()) {
        addLinkNode(place.value(), target);
    }
    return error;
}

SystemError MemoryFileSystem::setPermissions(std::string_view path, std::uint32_t permissions) {
    note("setPermissions", path);
    const auto place = findExisting(path, Last::Target);
    if (!place.ok()) {
        return place.error();
    }
    MemoryNode& node = *place.value().node;
    if (const SystemError error = errorOfChange(node); !error.isNone()) {
        return error;
    }
    node.attributes.permissions = permissions & permissionBits;
    node.attributes.changeDate = takeTime();
    return {};
}

SystemError MemoryFileSystem::setModificationDate(std::string_view path, Date date) {
    note("setModificationDate", path);
    const auto place = findExisting(path, Last::Link);
    if (!place.ok()) {
        return place.error();
    }
    return setDate(*place.value().node, date);
}

SystemError MemoryFileSystem::setDate(MemoryNode& node, Date date) {
    if (!(std::abs(date.secondsSinceReferenceDate()) <= furthestDate)) {
        return SystemError(EINVAL);
    }
    if (const SystemError error = errorOfChange(node); !error.isNone()) {
        return error;
    }
    node.attributes.modificationDate = rounded(date);
    node.attributes.changeDate = takeTime();
    return {};
}

SystemError MemoryFileSystem::move(std::string_view from, std::string_view to, Replace replace) {
    note("move", std::string(from) + " " + std::string(to));
    const auto source = find(from, Last::Name);
    const auto destination = find(to, Last::Name);
    if (!source.ok() || !destination.ok()) {
        return source.ok() ? destination.error() : source.error();
    }
    const MemoryPlace& old = source.value();
    const MemoryPlace& wanted = destination.value();
    if (old.folder().attributes.identity.device != wanted.folder().attributes.identity.device) {
        return SystemError(EXDEV);
    }
    if (!old.isNamed() || (!wanted.isNamed() && replace == Replace::Yes)) {
        return SystemError(EBUSY);
    }
    if (old.node == nullptr) {
        return SystemError(ENOENT);
    }
    // Names that are one here may still be spelt differently: that is a move, and replaces nothing.
    const bool isOtherSpelling =
        wanted.isNamed() && wanted.node == old.node && wanted.name != old.entryName;
    if (wanted.node != nullptr && replace == Replace::No && !isOtherSpelling) {
        return SystemError(EEXIST);
    }
    SystemError error = errorOfNewName(wanted);
    if (error.isNone()) {
        error = errorOfRemoval(old);
    }
    if (error.isNone() && wanted.node != nullptr) {
        error = errorOfRemoval(wanted);
    }
    if (error.isNone()) {
        error = errorOfMove(old, wanted);
    }
    if (!error.isNone() || (wanted.node == old.node && !isOtherSpelling)) {
        return error;
    }
    const Date now = takeTime();
    if (wanted.node != nullptr && !isOtherSpelling) {
        tree_.remove(wanted, now);
    }
    tree_.move(old, wanted, now);
    return {};
}

SystemError MemoryFileSystem::removeFile(std::string_view path) {
    note("removeFile", path);
    return takeFile(path, nullptr);
}

SystemError MemoryFileSystem::takeFile(std::string_view path, MemoryNode* folder) {
    const auto place = findExisting(path, Last::Name, folder);
    if (!place.ok()) {
        return place.error();
    }
    if (const SystemError error = errorOfRemoval(place.value()); !error.isNone()) {
        return error;
    }
    if (place.value().node->isFolder()) {
        return SystemError(EISDIR);
    }
    if (place.value().endsInSlash) {
        return SystemError(ENOTDIR);
    }
    tree_.remove(place.value(), takeTime());
    return {};
}

SystemError MemoryFileSystem::removeFolder(std::string_view path) {
    note("removeFolder", path);
    return takeFolder(path, nullptr);
}

SystemError MemoryFileSystem::takeFolder(std::string_view path, MemoryNode* folder) {
    const auto found = findExisting(path, Last::Name, folder);
    if (!found.ok()) {
        return found.error();
    }
    const MemoryPlace& place = found.value();
    if (const SystemError error = errorOfRemoval(place); !error.isNone()) {
        return error;
    }
    if (!place.isNamed()) {
        return SystemError(place.name == "." ? EINVAL : place.name == ".." ? ENOTEMPTY : EBUSY);
    }
    if (!place.node->isFolder()) {
        return SystemError(ENOTDIR);
    }
    if (isVolume(place)) {
        return SystemError(EBUSY);
    }
    if (!place.node->entries.empty()) {
        return SystemError(ENOTEMPTY);
    }
    tree_.remove(place, takeTime());
    return {};
}

} // namespace tav
