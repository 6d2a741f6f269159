#include "fileinfo/local/FilterNestedFolders.hpp"

#include "base/TextSearch.hpp"
#include "fileinfo/local/TavFileInfo.hpp"
#include "foundation/HomePath.hpp"

namespace tav {

FilterNestedFolders::FilterNestedFolders(std::string_view rootPath)
    : _rootPath(stringByExpandingTildeInPath(rootPath)) {}

bool FilterNestedFolders::includeItem(TavFileInfo& item, bool* /*stopAccumulating*/) {
    const TavFileInfoPtr target = item.aliasTarget();
    if (!target || !target->isFolder()) {
        return true;
    }
    const unsigned asPrefix = SearchOption::IgnoreCase | SearchOption::Anchored;
    return !_rootPath.empty() && !rangeOfString(target->path(), _rootPath, asPrefix);
}

} // namespace tav
