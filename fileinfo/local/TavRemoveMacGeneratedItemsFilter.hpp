#pragma once

#include "fileinfo/TavBaseFileInfoFilter.hpp"

#include <memory>

namespace tav {

/// Removes what comes by and is called ".DS_Store", ignoring case, or begins with "._", with
/// everything in it if it is a folder. Lets nothing in and never ends a listing.
class TavRemoveMacGeneratedItemsFilter final : public TavBaseFileInfoFilter {
  public:
    [[nodiscard]] static std::shared_ptr<TavRemoveMacGeneratedItemsFilter> filter();

    /// An exception that the removal raises goes no further.
    bool includeItem(TavBaseFileInfo& item, bool* stopAccumulating) override;
};

} // namespace tav
