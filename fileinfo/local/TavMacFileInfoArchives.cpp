// Archives, made and unpacked by programs of the host.

#include "fileinfo/local/TavMacFileInfo.hpp"

namespace tav {

std::optional<Data> TavMacFileInfo::zip() { return TavPathBasedFileInfo::zip(); }

std::optional<Data> TavMacFileInfo::ditto() { return TavPathBasedFileInfo::ditto(); }

FileInfoPtr TavMacFileInfo::zipToFolder(TavBaseFileInfo* folder) {
    return TavPathBasedFileInfo::zipToFolder(folder);
}

std::optional<FileInfoArray> TavMacFileInfo::unzip() { return TavPathBasedFileInfo::unzip(); }

} // namespace tav
