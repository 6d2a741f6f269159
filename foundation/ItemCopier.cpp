#include "foundation/ItemCopier.hpp"

#include "base/PathString.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <string>

namespace tav::internal {

namespace {

constexpr std::uint32_t setUserBit = 04000;
constexpr std::uint32_t setGroupBit = 02000;

/// What a volume answers that has no place for a date, for permissions or for an extended
/// attribute, or that cannot be waited for; otherwise none.
SystemError unlessNotKept(SystemError error) {
    constexpr std::array refusals = {EPERM, EINVAL, ENOTSUP};
    return std::ranges::find(refusals, error.number()) == refusals.end() ? error : SystemError();
}

/// A file that runs as its user must not run as somebody else because it was copied.
std::uint32_t permissionsFor(const FileAttributes& from, const FileAttributes& made) {
    std::uint32_t permissions = from.permissions;
    if (from.user != made.user) {
        permissions &= ~setUserBit;
    }
    if (from.group != made.group) {
        permissions &= ~setGroupBit;
    }
    return permissions;
}

} // namespace

OpenOptions ItemCopier::optionsForCopyOf(const FileAttributes& attributes) {
    constexpr std::uint32_t ordinaryBits = 0777;
    constexpr std::uint32_t ownersBits = 0600; // extended attributes are set by who may write
    return {.write = true,
            .create = true,
            .mustBeNew = true,
            .permissions = (attributes.permissions & ordinaryBits) | ownersBits};
}

SystemError ItemCopier::copyFile(OpenFile& from, const FileAttributes& attributes,
                                 std::string_view fromPath, OpenFile& to, std::string_view toPath) {
    SystemError error = content_.copy(from, to, attributes.size);
    if (error.isNone() && waitsForMedium_) {
        error = unlessNotKept(to.sync());
    }
    const auto made = to.attributes();
    const SystemError closing = to.close();
    for (const SystemError other : {made.error(), closing}) {
        error = error.isNone() ? other : error;
    }
    if (error.isNone()) {
        error = carryExtendedAttributes(fromPath, toPath);
    }
    FileSystem& files = FileSystem::current();
    if (error.isNone()) {
        error = unlessNotKept(files.setModificationDate(toPath, attributes.modificationDate));
    }
    if (!error.isNone()) {
        return error;
    }
    const std::uint32_t permissions = permissionsFor(attributes, made.value());
    return permissions == made.value().permissions
               ? SystemError()
               : unlessNotKept(files.setPermissions(toPath, permissions));
}

SystemError ItemCopier::makeLink(std::string_view path, std::string_view target, Date date) {
    FileSystem& files = FileSystem::current();
    SystemError error = files.createLink(path, target);
    if (!error.isNone()) {
        return error;
    }
    error = unlessNotKept(files.setModificationDate(path, date));
    if (!error.isNone()) {
        static_cast<void>(files.removeFile(path));
    }
    return error;
}

SystemError ItemCopier::finishFolder(std::string_view fromPath, std::uint32_t permissions,
                                     Date date, std::string_view toPath) {
    FileSystem& files = FileSystem::current();
    SystemError error = waitForNames(toPath);
    if (error.isNone()) {
        error = carryExtendedAttributes(fromPath, toPath);
    }
    if (error.isNone()) {
        error = unlessNotKept(files.setModificationDate(toPath, date));
    }
    return error.isNone() ? unlessNotKept(files.setPermissions(toPath, permissions)) : error;
}

SystemError ItemCopier::finishFolderOf(std::string_view path) const {
    const std::string folder = stringByDeletingLastPathComponent(path);
    return waitForNames(folder.empty() ? "." : folder);
}

SystemError ItemCopier::waitForNames(std::string_view folder) const {
    return waitsForMedium_ ? unlessNotKept(FileSystem::current().syncFolder(folder))
                           : SystemError();
}

SystemError ItemCopier::carryExtendedAttributes(std::string_view fromPath,
                                                std::string_view toPath) {
    FileSystem& files = FileSystem::current();
    if (!keepsExtendedAttributes_) {
        return {};
    }
    const auto names = files.extendedAttributeNames(fromPath);
    if (!names.ok()) {
        return names.error();
    }
    for (const std::string& name : names.value()) {
        if (!name.starts_with("user.")) {
            continue; // the host's own business
        }
        const auto value = files.extendedAttribute(fromPath, name);
        if (!value.ok() && value.error().number() == ENODATA) {
            continue; // taken away meanwhile
        }
        if (!value.ok()) {
            return value.error();
        }
        const SystemError error = files.setExtendedAttribute(toPath, name, value.value());
        if (error.number() == ENOTSUP) {
            keepsExtendedAttributes_ = false;
            return {};
        }
        // Too long for this volume, whose bounds are narrower than the other's.
        const bool isTooLong =
            error.number() == E2BIG || error.number() == ERANGE || error.number() == ENOSPC;
        if (!isTooLong && !unlessNotKept(error).isNone()) {
            return error;
        }
    }
    return {};
}

} // namespace tav::internal
