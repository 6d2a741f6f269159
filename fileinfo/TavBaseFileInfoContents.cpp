// Contents, in terms of the primitives.

#include "fileinfo/TavBaseFileInfo.hpp"
#include "fileinfo/VerboseLog.hpp"

#include <limits>

namespace tav {

namespace {

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

} // namespace tav
