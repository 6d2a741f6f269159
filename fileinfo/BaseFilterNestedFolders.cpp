#include "fileinfo/BaseFilterNestedFolders.hpp"

#include "base/Unicode.hpp"
#include "fileinfo/TavBaseFileInfo.hpp"
#include "foundation/HomePath.hpp"

namespace tav {

BaseFilterNestedFolders::BaseFilterNestedFolders(std::string_view rootPath)
    : _rootPath(stringByExpandingTildeInPath(rootPath) + '/') {}

bool BaseFilterNestedFolders::includeItem(TavBaseFileInfo& item, bool* /*stopAccumulating*/) {
    const FileInfoPtr target = item.aliasTarget();
    if (!target || !target->isFolder()) {
        return true;
    }
    return !caselessForm(target->path() + '/').starts_with(caselessForm(_rootPath));
}

} // namespace tav
