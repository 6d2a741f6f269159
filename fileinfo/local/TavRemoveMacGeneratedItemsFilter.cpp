#include "fileinfo/local/TavRemoveMacGeneratedItemsFilter.hpp"

#include "base/Exception.hpp"
#include "base/Unicode.hpp"
#include "fileinfo/TavBaseFileInfo.hpp"

#include <string>

namespace tav {

std::shared_ptr<TavRemoveMacGeneratedItemsFilter> TavRemoveMacGeneratedItemsFilter::filter() {
    return std::make_shared<TavRemoveMacGeneratedItemsFilter>();
}

bool TavRemoveMacGeneratedItemsFilter::includeItem(TavBaseFileInfo& item,
                                                   bool* /*stopAccumulating*/) {
    const std::string name = item.name();
    if (name.starts_with("._") || equalsIgnoringCase(name, ".DS_Store")) {
        try {
            item.remove();
        } catch (const Exception&) {
            // The others are tried all the same.
        }
    }
    return false;
}

} // namespace tav
