// The copies, in terms of the primitives.

#include "fileinfo/CopyFolder.hpp"
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
    const std::optional<FileInfoPtr> folder = internal::folderToCopyInto(*destination);
    if (!folder) {
        return Status::BadParameter;
    }
    FileInfoPtr copy = *folder ? (*folder)->find(withName) : nullptr;
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
        copy = *folder ? (*folder)->createFile(withName, contents, nullptr, true) : nullptr;
    }
    if (outNewItem != nullptr) {
        *outNewItem = std::move(copy);
    }
    return status;
}

Status TavBaseFileInfo::copyTo(TavBaseFileInfo* destination, bool ensureUniqueName,
                               const ProgressDelegate* withProgress, void* userData,
                               FileInfoPtr* outNewItem) {
    return internal::ItemCopy::copy(*this, destination, ensureUniqueName, withProgress, userData,
                                    outNewItem, CopyOptions());
}

Status TavBaseFileInfo::copyTo(TavBaseFileInfo* destination, bool ensureUniqueName,
                               const ProgressDelegate* withProgress, void* userData,
                               FileInfoPtr* outNewItem, const CopyOptions& options) {
    return options == CopyOptions()
               ? copyTo(destination, ensureUniqueName, withProgress, userData, outNewItem)
               : internal::ItemCopy::copy(*this, destination, ensureUniqueName, withProgress,
                                          userData, outNewItem, options);
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
