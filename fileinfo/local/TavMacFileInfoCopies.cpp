// Copies of local items, and what the copies with options lean on.

#include "fileinfo/local/LocalCopySupport.hpp"
#include "fileinfo/local/LocalOpenFile.hpp"
#include "fileinfo/local/TavMacFileInfo.hpp"

namespace tav {

using internal::LocalOpenFile;

bool TavMacFileInfo::cloneRange(FileRange range, OpenFileToken* readFileUserData,
                                TavBaseFileInfo* /*destination*/,
                                OpenFileToken* writeFileUserData) {
    LocalOpenFile* const from = LocalOpenFile::stillOpen(readFileUserData);
    LocalOpenFile* const to = LocalOpenFile::stillOpen(writeFileUserData);
    return from != nullptr && to != nullptr &&
           to->cloneRange(*from, {range.location, range.length});
}

CopySupport* TavMacFileInfo::copySupport() { return &internal::LocalCopySupport::shared(); }

Status TavMacFileInfo::copyTo(TavBaseFileInfo* destination) {
    return copyTo(destination, name(), nullptr);
}

Status TavMacFileInfo::copyTo(TavBaseFileInfo* destination, FileInfoPtr* outNewItem) {
    return copyTo(destination, name(), outNewItem);
}

Status TavMacFileInfo::copyTo(TavBaseFileInfo* destination, std::string_view withName,
                              FileInfoPtr* outNewItem) {
    return TavPathBasedFileInfo::copyTo(destination, withName, outNewItem);
}

void TavMacFileInfo::copyToFile(TavBaseFileInfo* /*destination*/,
                                const ProgressDelegate* /*withProgress*/, void* /*userData*/) {}

} // namespace tav
