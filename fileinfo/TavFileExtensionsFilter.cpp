#include "fileinfo/TavFileExtensionsFilter.hpp"

#include "base/Unicode.hpp"
#include "fileinfo/TavBaseFileInfo.hpp"

#include <algorithm>

namespace tav {

TavFileExtensionsFilter::TavFileExtensionsFilter(std::vector<std::string> extensions)
    : _fileExtensions(std::move(extensions)) {}

std::shared_ptr<TavFileExtensionsFilter>
TavFileExtensionsFilter::filterWithExtensions(std::vector<std::string> extensions) {
    return std::make_shared<TavFileExtensionsFilter>(std::move(extensions));
}

bool TavFileExtensionsFilter::includeItem(TavBaseFileInfo& item, bool* /*stopAccumulating*/) {
    if (_allowFolders && item.isFolder()) {
        return true;
    }
    // Asked in the other order than it is told: the extension is at hand, the size may not be.
    const std::string extension = item.extension();
    const bool isWanted = std::ranges::any_of(_fileExtensions, [&](const std::string& each) {
        return equalsIgnoringCase(each, extension);
    });
    return isWanted && !(_hideEmptyFiles && item.isFile() && item.size() == 0);
}

} // namespace tav
