// Contents and copies of older items.

#include "fileinfo/UniqueName.hpp"
#include "fileinfo/local/CachedAttributes.hpp"
#include "fileinfo/local/FileCreation.hpp"
#include "fileinfo/local/TavFileInfo.hpp"
#include "foundation/FileManager.hpp"

#include <cerrno>
#include <limits>

namespace tav {

std::optional<Data> TavFileInfo::fileContents() {
    if (!exists() || !isFile()) {
        return std::nullopt;
    }
    Result<Data> contents =
        FileSystem::current().readFile(path(), std::numeric_limits<std::uint64_t>::max());
    return contents.ok() ? std::optional(std::move(contents).value()) : std::nullopt;
}

bool TavFileInfo::setFileContents(BytesView data) {
    if (!exists() || !isFile()) {
        return false;
    }
    const SystemError error =
        internal::createFileAtPath(path(), data, nullptr, internal::Existing::Rewritten);
    refresh(); // also after a failure, which may have written some of it
    return error.isNone();
}

TavFileInfoPtr TavFileInfo::createFile(std::string_view name, BytesView contents,
                                       const Value::Dictionary* attributes) {
    return createFile(name, contents, attributes, false);
}

TavFileInfoPtr TavFileInfo::createFile(std::string_view name, BytesView contents,
                                       const Value::Dictionary* attributes, bool ensureUniqueName) {
    using internal::createFileAtPath;
    if (!ensureUniqueName) {
        TavFileInfoPtr target = find(name);
        if (!target->exists()) {
            static_cast<void>(createFileAtPath(target->path(), contents, attributes,
                                               internal::Existing::Rewritten));
            return target;
        }
        if (target->isFolder()) {
            return nullptr;
        }
        target->setFileContents(contents);
        return target;
    }
    const auto isTaken = [this](std::string_view candidate) { return find(candidate)->exists(); };
    for (int tries = 0; tries < internal::mostNamesTried; ++tries) {
        TavFileInfoPtr target = find(internal::uniqueName(name, isTaken));
        if (createFileAtPath(target->path(), contents, attributes, internal::Existing::Refused) !=
            SystemError(EEXIST)) {
            return target;
        }
    }
    return nullptr;
}

Status TavFileInfo::copyTo(TavFileInfo* destination) { return copyTo(destination, nullptr); }

Status TavFileInfo::copyTo(TavFileInfo* destination, TavFileInfoPtr* outNewItem) {
    if (!exists()) {
        return Status::BadParameter;
    }
    TavFileInfoPtr folder;
    if (destination != nullptr && destination->isFolder()) {
        folder = destination->shared_from_this();
    } else if (destination != nullptr && destination->isFile()) {
        folder = destination->parentFolder();
    }
    const std::string from = path(); // before the name, which may be another one by now
    TavFileInfoPtr target = folder ? folder->find(name()) : nullptr;
    if (target && copyPath(from, target->path()) != Status::Success) {
        target.reset();
    }
    const Status status = target ? Status::Success : Status::Failure;
    if (outNewItem != nullptr) {
        *outNewItem = std::move(target);
    }
    return status;
}

} // namespace tav
