#include "fileinfo/local/LegacyListingFilters.hpp"

#include "base/Unicode.hpp"

#include <iterator>

namespace tav {

bool TavFileInfoFilter::includeItem(TavFileInfo& /*item*/, bool* stopAccumulating) {
    if (stopAccumulating != nullptr) {
        *stopAccumulating = false;
    }
    return true;
}

namespace legacy {

GoDeepFilter::GoDeepFilter(TavFileInfoFilter* realFilter, TavFileInfoArray* theArray)
    : realFilter_(realFilter), theArray_(theArray) {}

bool GoDeepFilter::includeItem(TavFileInfo& item, bool* stopAccumulating) {
    const bool isIncluded =
        realFilter_ == nullptr || realFilter_->includeItem(item, stopAccumulating);
    const bool stops = stopAccumulating != nullptr && *stopAccumulating;
    if (stops || depth_ + 1 >= deepest || !item.isFolder() || !enter(item)) {
        return isIncluded;
    }
    // Taken back again however the listing ends.
    struct Level {
        explicit Level(std::size_t& depth) : depth_(depth) { ++depth_; }
        ~Level() { --depth_; }
        Level(const Level&) = delete;
        Level& operator=(const Level&) = delete;
        std::size_t& depth_;
    };
    const Level level(depth_);
    TavFileInfoArray contents = item.folderContentsWithFilter(this);
    if (theArray_ != nullptr) {
        theArray_->insert(theArray_->end(), std::make_move_iterator(contents.begin()),
                          std::make_move_iterator(contents.end()));
    }
    return isIncluded;
}

bool GoDeepFilter::enter(TavFileInfo& folder) {
    const TavFileInfoPtr target = folder.aliasTarget();
    return !target || entered_.insert(target->path()).second;
}

FindItemFilter::FindItemFilter(std::string_view nameToFind, bool ignoreCase, bool findOnlyOne)
    : nameToFind_(nameToFind), ignoreCase_(ignoreCase), findOnlyOne_(findOnlyOne) {}

bool FindItemFilter::includeItem(TavFileInfo& item, bool* stopAccumulating) {
    const std::string name = item.name();
    const bool isFound = ignoreCase_ ? equalsIgnoringCase(nameToFind_, name) : nameToFind_ == name;
    if (isFound && stopAccumulating != nullptr) {
        *stopAccumulating = findOnlyOne_;
    }
    return isFound;
}

} // namespace legacy
} // namespace tav
