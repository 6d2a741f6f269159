#include "fileinfo/KindFilters.hpp"

#include "fileinfo/TavBaseFileInfo.hpp"

namespace tav {

std::shared_ptr<TavFoldersOnlyFilter> TavFoldersOnlyFilter::filter() {
    return std::make_shared<TavFoldersOnlyFilter>();
}

bool TavFoldersOnlyFilter::includeItem(TavBaseFileInfo& item, bool* /*stopAccumulating*/) {
    return item.isFolder();
}

std::shared_ptr<TavFilesOnlyFilter> TavFilesOnlyFilter::filter() {
    return std::make_shared<TavFilesOnlyFilter>();
}

bool TavFilesOnlyFilter::includeItem(TavBaseFileInfo& item, bool* /*stopAccumulating*/) {
    return item.isFile();
}

std::shared_ptr<TavVisibleItemsFilter> TavVisibleItemsFilter::filter() {
    return std::make_shared<TavVisibleItemsFilter>();
}

bool TavVisibleItemsFilter::includeItem(TavBaseFileInfo& item, bool* /*stopAccumulating*/) {
    return item.visible();
}

} // namespace tav
