// Contents and the plain copies, in terms of the primitives.

#include "fileinfo/TavBaseFileInfo.hpp"
#include "fileinfo/VerboseLog.hpp"

#include <limits>

namespace tav {

namespace {

/// What `copyTo` with a name answers beside success and a bad parameter.
constexpr Status couldNotWriteNamedCopy{-207};
constexpr Status namedCopyIsNoFile{-208};

/// The range in 32 bits, where it has room in them.
std::optional<FileRange> narrowRange(WholeFileRange range) {
    constexpr std::uint64_t largest = std::numeric_limits<std::uint32_t>::max();
    if (range.location > largest || range.length > largest) {
        return std::nullopt;
    }
    return FileRange{static_cast<std::uint32_t>(range.location),
                     static_cast<std::uint32_t>(range.length)};
}

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

std::uint64_t TavBaseFileInfo::wholeSize() { return size(); }

std::optional<Data> TavBaseFileInfo::fileContentsWithWholeRange(WholeFileRange range,
                                                                OpenFileToken* readFileUserData) {
    const std::optional<FileRange> narrow = narrowRange(range);
    return narrow ? fileContentsWithRange(*narrow, readFileUserData) : std::nullopt;
}

Status TavBaseFileInfo::setFileContentsWithWholeRange(BytesView data, WholeFileRange range,
                                                      OpenFileToken* writeFileUserData) {
    const std::optional<FileRange> narrow = narrowRange(range);
    return narrow ? setFileContentsWithRange(data, *narrow, writeFileUserData)
                  : Status::NotSupported;
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

Status TavBaseFileInfo::copyTo(TavBaseFileInfo* /*destination*/, bool /*ensureUniqueName*/,
                               const ProgressDelegate* /*withProgress*/, void* /*userData*/,
                               FileInfoPtr* /*outNewItem*/, const CopyOptions& /*options*/) {
    return Status::Failure;
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
