// Contents and the plain copies, in terms of the primitives.

#include "fileinfo/TavBaseFileInfo.hpp"
#include "fileinfo/VerboseLog.hpp"

namespace tav {

namespace {

/// What `copyTo` with a name answers beside success and a bad parameter.
constexpr Status couldNotWriteNamedCopy{-207};
constexpr Status namedCopyIsNoFile{-208};

} // namespace

std::shared_ptr<OpenFileToken> TavBaseFileInfo::openFileForReading() { return nullptr; }

std::shared_ptr<OpenFileToken> TavBaseFileInfo::openFileForWriting() { return nullptr; }

void TavBaseFileInfo::closeFile(OpenFileToken* /*token*/) {}

std::optional<Data> TavBaseFileInfo::fileContentsWithRange(FileRange /*range*/,
                                                           OpenFileToken* /*readFileUserData*/) {
    return std::nullopt;
}

Status TavBaseFileInfo::setFileContentsWithRange(BytesView /*data*/, FileRange /*range*/,
                                                 OpenFileToken* /*writeFileUserData*/) {
    return Status::NotSupported;
}

std::optional<Data> TavBaseFileInfo::fileContents() {
    return fileContentsWithProgress(nullptr, nullptr);
}

std::optional<Data> TavBaseFileInfo::fileContentsWithProgress(const ProgressDelegate* /*progress*/,
                                                              void* /*userData*/) {
    return Data();
}

bool TavBaseFileInfo::setFileContents(BytesView data) {
    return setFileContents(data, nullptr, nullptr);
}

bool TavBaseFileInfo::setFileContents(BytesView /*data*/, const ProgressDelegate* /*withProgress*/,
                                      void* /*userData*/) {
    return false;
}

FileInfoPtr TavBaseFileInfo::createFile(std::string_view /*name*/, BytesView /*contents*/,
                                        const Value::Dictionary* /*attributes*/,
                                        bool /*ensureUniqueName*/,
                                        const ProgressDelegate* /*withProgress*/,
                                        void* /*userData*/) {
    internal::logVerbose("TavBaseFileInfo:createFile:--subclasses must override.");
    return nullptr;
}

FileInfoPtr TavBaseFileInfo::createFile(std::string_view name, BytesView contents,
                                        const Value::Dictionary* attributes,
                                        bool ensureUniqueName) {
    return createFile(name, contents, attributes, ensureUniqueName, nullptr, nullptr);
}

FileInfoPtr TavBaseFileInfo::createFile(std::string_view name, BytesView contents,
                                        const Value::Dictionary* attributes) {
    return createFile(name, contents, attributes, false, nullptr, nullptr);
}

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

Status TavBaseFileInfo::copyTo(TavBaseFileInfo* /*destination*/, bool /*ensureUniqueName*/,
                               const ProgressDelegate* /*withProgress*/, void* /*userData*/,
                               FileInfoPtr* /*outNewItem*/) {
    return Status::Failure;
}

Status TavBaseFileInfo::copyFromFile(TavBaseFileInfo* /*source*/, bool /*ensureUniqueName*/,
                                     const ProgressDelegate* /*withProgress*/, void* /*userData*/,
                                     FileInfoPtr* /*outNewItem*/) {
    return Status::Failure;
}

} // namespace tav
