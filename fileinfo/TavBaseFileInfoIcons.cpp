#include "fileinfo/GenericIcons.hpp"
#include "fileinfo/TavBaseFileInfo.hpp"
#include "platform/FileKinds.hpp"

namespace tav {

std::shared_ptr<Image> TavBaseFileInfo::icon() {
    std::shared_ptr<Image> icon =
        isFolder() ? genericFolderIcon() : FileKinds::current().iconForFileType(extension());
    return icon ? icon : genericFileIcon();
}

std::shared_ptr<Image> TavBaseFileInfo::smallIcon() {
    std::shared_ptr<Image> small = icon();
    if (small) {
        small->setSize({16, 16});
    }
    return small;
}

} // namespace tav
