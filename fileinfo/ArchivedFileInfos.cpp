#include "fileinfo/ArchivedFileInfos.hpp"

#include "base/KeyedUnarchiver.hpp"
#include "fileinfo/TavWindowsPathBasedFileInfo.hpp"

namespace tav {

namespace {

template <class Item>
void enter(std::string_view name) {
    registerArchivedClass(name, [](KeyedUnarchiver& coder) -> std::shared_ptr<Coding> {
        const FileInfoPtr item = Item::fileInfo();
        item->initWithCoder(coder);
        return item;
    });
}

} // namespace

void registerArchivedFileInfos() {
    static const bool entered = [] {
        enter<TavBaseFileInfo>("TavBaseFileInfo");
        enter<TavPathBasedFileInfo>("TavPathBasedFileInfo");
        enter<TavWindowsPathBasedFileInfo>("TavWindowsPathBasedFileInfo");
        return true;
    }();
    static_cast<void>(entered);
}

} // namespace tav
