// Copies of local items, and what the copies with options lean on.

#include "fileinfo/local/TavMacFileInfo.hpp"

namespace tav {

bool TavMacFileInfo::cloneRange(FileRange range, OpenFileToken* readFileUserData,
                                TavBaseFileInfo* destination, OpenFileToken* writeFileUserData) {
    return TavPathBasedFileInfo::cloneRange(range, readFileUserData, destination,
                                            writeFileUserData);
}

CopySupport* TavMacFileInfo::copySupport() { return TavPathBasedFileInfo::copySupport(); }

Status TavMacFileInfo::copyTo(TavBaseFileInfo* destination) {
    return TavPathBasedFileInfo::copyTo(destination);
}

Status TavMacFileInfo::copyTo(TavBaseFileInfo* destination, FileInfoPtr* outNewItem) {
    return TavPathBasedFileInfo::copyTo(destination, outNewItem);
}

Status TavMacFileInfo::copyTo(TavBaseFileInfo* destination, std::string_view withName,
                              FileInfoPtr* outNewItem) {
    return TavPathBasedFileInfo::copyTo(destination, withName, outNewItem);
}

void TavMacFileInfo::copyToFile(TavBaseFileInfo* /*destination*/,
                                const ProgressDelegate* /*withProgress*/, void* /*userData*/) {}

} // namespace tav
