#include "fileinfo/ListingFilters.hpp"

#include "base/Unicode.hpp"
#include "fileinfo/VerboseLog.hpp"

namespace tav::internal {

GoDeepFilter::GoDeepFilter(TavBaseFileInfoFilter* filter, FileInfoArray* withArray)
    : _realFilter(filter), _theArray(withArray) {
    if (_theArray == nullptr) {
        logVerbose("__GoDeepFilter: inArray is nil!");
    }
}

bool GoDeepFilter::includeItem(TavBaseFileInfo& item, bool* stopAccumulating) {
    const bool isIncluded =
        _realFilter == nullptr || _realFilter->includeItem(item, stopAccumulating);
    if (*stopAccumulating || !item.isFolder()) {
        return isIncluded;
    }
    FileInfoArray descendants = item.folderContentsWithFilter(this);
    if (_theArray != nullptr) {
        _theArray->insert(_theArray->end(), std::make_move_iterator(descendants.begin()),
                          std::make_move_iterator(descendants.end()));
    }
    return isIncluded;
}

FindItemFilter::FindItemFilter(std::string_view nameToFind, bool ignoreCase, bool findOnlyOne)
    : _nameToFind(nameToFind), _ignoreCase(ignoreCase), _findOnlyOne(findOnlyOne) {}

bool FindItemFilter::includeItem(TavBaseFileInfo& item, bool* stopAccumulating) {
    const std::string name = item.name();
    const bool isFound = _ignoreCase ? equalsIgnoringCase(_nameToFind, name) : _nameToFind == name;
    if (isFound && stopAccumulating != nullptr) {
        *stopAccumulating = _findOnlyOne;
    }
    return isFound;
}

} // namespace tav::internal
