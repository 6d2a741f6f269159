#include "fileinfo/CopyFiles.hpp"

#include "fileinfo/CopySupport.hpp"

namespace tav {

void copyFiles(std::span<const FileInfoPtr> files, TavBaseFileInfo& folder, bool ensureUniqueName,
               const ProgressDelegate* delegate, void* userData, const FileCopied& copied) {
    const FileInfoPtr kept = folder.shared_from_this(); // whoever hears of it may let go
    CopySupport* const support = folder.copySupport();
    const auto series =
        support != nullptr ? support->beginSeries(files, folder, ensureUniqueName) : nullptr;
    for (std::size_t index = 0; index < files.size(); ++index) {
        if (series) {
            series->comeTo(index);
        }
        TavBaseFileInfo& file = *files[index];
        FileInfoPtr newItem;
        const Status status = file.copyTo(&folder, ensureUniqueName, delegate, userData, &newItem);
        if (copied && !copied(file, status, newItem)) {
            return;
        }
    }
}

} // namespace tav
