#include "fileinfo/NameFilters.hpp"

#include "base/Unicode.hpp"
#include "fileinfo/TavBaseFileInfo.hpp"

#include <algorithm>

namespace tav {

namespace {

bool containsIgnoringCase(const std::vector<std::string>& names, std::string_view name) {
    return std::ranges::any_of(
        names, [name](const std::string& each) { return equalsIgnoringCase(each, name); });
}

} // namespace

BaseFilterItemsNamed::BaseFilterItemsNamed(std::vector<std::string> itemNames, bool includeFiles,
                                           bool includeFolders)
    : _itemNames(std::move(itemNames)), _includeFiles(includeFiles),
      _includeFolders(includeFolders) {}

std::shared_ptr<BaseFilterItemsNamed>
BaseFilterItemsNamed::filterWithItemNames(std::vector<std::string> itemNames, bool includeFiles,
                                          bool includeFolders) {
    return std::make_shared<BaseFilterItemsNamed>(std::move(itemNames), includeFiles,
                                                  includeFolders);
}

bool BaseFilterItemsNamed::includeItem(TavBaseFileInfo& item, bool* stopAccumulating) {
    const bool isIncluded =
        containsIgnoringCase(_itemNames, item.name()) &&
        ((_includeFiles && item.isFile()) || (_includeFolders && item.isFolder()));
    if (isIncluded && _findOne) {
        *stopAccumulating = true;
    }
    return isIncluded;
}

BaseFilterFilenamePrefix::BaseFilterFilenamePrefix(std::string_view filenamePrefix)
    : _filenamePrefix(uppercaseString(filenamePrefix)) {}

std::shared_ptr<BaseFilterFilenamePrefix>
BaseFilterFilenamePrefix::filterWithFilenamePrefix(std::string_view filenamePrefix) {
    return std::make_shared<BaseFilterFilenamePrefix>(filenamePrefix);
}

bool BaseFilterFilenamePrefix::includeItem(TavBaseFileInfo& item, bool* /*stopAccumulating*/) {
    return uppercaseString(item.nameWithoutExtension()) == _filenamePrefix;
}

TavExcludeFilenamesFilter::TavExcludeFilenamesFilter(std::vector<std::string> filenames,
                                                     bool includeFolders)
    : _allowFolders(includeFolders), _filenamesToExclude(std::move(filenames)) {}

std::shared_ptr<TavExcludeFilenamesFilter>
TavExcludeFilenamesFilter::filterWithFilenames(std::vector<std::string> filenames,
                                               bool includeFolders) {
    return std::make_shared<TavExcludeFilenamesFilter>(std::move(filenames), includeFolders);
}

bool TavExcludeFilenamesFilter::includeItem(TavBaseFileInfo& item, bool* /*stopAccumulating*/) {
    if (!_allowFolders && item.isFolder()) {
        return false;
    }
    return !containsIgnoringCase(_filenamesToExclude, item.name());
}

} // namespace tav
