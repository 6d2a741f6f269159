// Contents: open files, ranges, whole reads and writes, new files.

#include "fileinfo/local/TavMacFileInfo.hpp"

namespace tav {

std::shared_ptr<OpenFileToken> TavMacFileInfo::openFileForReading() { return nullptr; }

std::shared_ptr<OpenFileToken> TavMacFileInfo::openFileForWriting() { return nullptr; }

void TavMacFileInfo::closeFile(OpenFileToken* /*token*/) {}

std::optional<Data> TavMacFileInfo::fileContentsWithRange(FileRange range,
                                                          OpenFileToken* readFileUserData) {
    return TavPathBasedFileInfo::fileContentsWithRange(range, readFileUserData);
}

Status TavMacFileInfo::setFileContentsWithRange(BytesView data, FileRange range,
                                                OpenFileToken* writeFileUserData) {
    return TavPathBasedFileInfo::setFileContentsWithRange(data, range, writeFileUserData);
}

std::uint64_t TavMacFileInfo::wholeSize() { return TavPathBasedFileInfo::wholeSize(); }

std::optional<Data> TavMacFileInfo::fileContentsWithWholeRange(WholeFileRange range,
                                                               OpenFileToken* readFileUserData) {
    return TavPathBasedFileInfo::fileContentsWithWholeRange(range, readFileUserData);
}

Status TavMacFileInfo::setFileContentsWithWholeRange(BytesView data, WholeFileRange range,
                                                     OpenFileToken* writeFileUserData) {
    return TavPathBasedFileInfo::setFileContentsWithWholeRange(data, range, writeFileUserData);
}

std::optional<Data> TavMacFileInfo::fileContentsWithProgress(const ProgressDelegate* progress,
                                                             void* userData) {
    return TavPathBasedFileInfo::fileContentsWithProgress(progress, userData);
}

bool TavMacFileInfo::setFileContents(BytesView data, const ProgressDelegate* withProgress,
                                     void* userData) {
    return TavPathBasedFileInfo::setFileContents(data, withProgress, userData);
}

FileInfoPtr TavMacFileInfo::createFile(std::string_view name, BytesView contents,
                                       const Value::Dictionary* attributes, bool ensureUniqueName,
                                       const ProgressDelegate* withProgress, void* userData) {
    return TavPathBasedFileInfo::createFile(name, contents, attributes, ensureUniqueName,
                                            withProgress, userData);
}

} // namespace tav
