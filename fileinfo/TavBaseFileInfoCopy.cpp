// The copies, in terms of the primitives.

#include "base/Exception.hpp"
#include "fileinfo/CopyStatus.hpp"
#include "fileinfo/ItemCopy.hpp"
#include "fileinfo/TavBaseFileInfo.hpp"

namespace tav {

namespace {

/// What `copyTo` with a name answers beside success and a bad parameter.
constexpr Status couldNotWriteNamedCopy{-207};
constexpr Status namedCopyIsNoFile{-208};

} // namespace

Status TavBaseFileInfo::copyTo(TavBaseFileInfo* destination) {
    return copyTo(destination, false, nullptr, nullptr, nullptr);
}

Status TavBaseFileInfo::copyTo(TavBaseFileInfo* destination, FileInfoPtr* outNewItem) {
    return copyTo(destination, false, nullptr, nullptr, outNewItem);
}

Status TavBaseFileInfo::copyTo(TavBaseFileInfo* destination, std::string_view withName,
                               FileInfoPtr* outNewItem) {
    if (!exists() || !isFile() || destination == nullptr) {
        return Status::BadParameter;
    }
    FileInfoPtr folder;
    if (destination->isFolder()) {
        folder = destination->shared_from_this();
    } else if (destination->isFile()) {
        folder = destination->parentFolder();
    } else {
        return Status::BadParameter;
    }
    FileInfoPtr copy = folder ? folder->find(withName) : nullptr;
    const Data contents = fileContents().value_or(Data());
    Status status = Status::Success;
    if (copy && copy->exists()) {
        if (!copy->isFile()) {
            status = namedCopyIsNoFile;
        }
        if (!copy->setFileContents(contents)) {
            status = couldNotWriteNamedCopy;
        }
    } else {
        copy = folder ? folder->createFile(withName, contents, nullptr, true) : nullptr;
    }
    if (outNewItem != nullptr) {
        *outNewItem = std::move(copy);
    }
    return status;
}

Status TavBaseFileInfo::copyTo(TavBaseFileInfo* destination, bool ensureUniqueName,
                               const ProgressDelegate* withProgress, void* userData,
                               FileInfoPtr* outNewItem) {
    _cancelCopy.store(false, std::memory_order_relaxed);
    if (!exists()) {
        return CopyStatus::sourceMissing;
    }
    if (!isFile()) {
        return CopyStatus::sourceIsNoFile;
    }
    const bool destinationControls = destination != nullptr && destination->deviceControlsCopy();
    const bool sourceControls = deviceControlsCopy();
    if (destinationControls && sourceControls) {
        throw Exception("TavBaseFileInfo",
                        "File info objects are not yet able to perform this sort of copy.");
    }
    if (destinationControls) {
        return destination->copyFromFile(this, ensureUniqueName, withProgress, userData,
                                         outNewItem);
    }
    if (sourceControls) {
        throw Exception("TavBaseFileInfo",
                        "Subclass of TavBaseFileInfo must override this method to perform the "
                        "copy.");
    }
    // Whoever hears of the copy may let go of both.
    const FileInfoPtr source = shared_from_this();
    internal::ItemCopy copy(*source,
                            destination != nullptr ? destination->shared_from_this() : nullptr,
                            ensureUniqueName, withProgress, userData);
    return copy.run(outNewItem);
}

Status TavBaseFileInfo::copyTo(TavBaseFileInfo* destination, bool ensureUniqueName,
                               const ProgressDelegate* withProgress, void* userData,
                               FileInfoPtr* outNewItem, const CopyOptions& options) {
    if (options == CopyOptions()) {
        return copyTo(destination, ensureUniqueName, withProgress, userData, outNewItem);
    }
    return Status::NotSupported;
}

bool TavBaseFileInfo::cloneRange(FileRange /*range*/, OpenFileToken* /*readFileUserData*/,
                                 TavBaseFileInfo* /*destination*/,
                                 OpenFileToken* /*writeFileUserData*/) {
    return false;
}

CopySupport* TavBaseFileInfo::copySupport() { return nullptr; }

Status TavBaseFileInfo::copyFromFile(TavBaseFileInfo* /*source*/, bool /*ensureUniqueName*/,
                                     const ProgressDelegate* /*withProgress*/, void* /*userData*/,
                                     FileInfoPtr* /*outNewItem*/) {
    return Status::Failure;
}

} // namespace tav
