#pragma once

#include "fileinfo/TavBaseFileInfoFilter.hpp"

#include <memory>

namespace tav {

/// Lets folders in. What is neither file nor folder, since it is gone say, passes neither this
/// filter nor the next.
class TavFoldersOnlyFilter final : public TavBaseFileInfoFilter {
  public:
    [[nodiscard]] static std::shared_ptr<TavFoldersOnlyFilter> filter();
    bool includeItem(TavBaseFileInfo& item, bool* stopAccumulating) override;
};

/// Lets files in.
class TavFilesOnlyFilter final : public TavBaseFileInfoFilter {
  public:
    [[nodiscard]] static std::shared_ptr<TavFilesOnlyFilter> filter();
    bool includeItem(TavBaseFileInfo& item, bool* stopAccumulating) override;
};

/// Lets in what is visible.
class TavVisibleItemsFilter final : public TavBaseFileInfoFilter {
  public:
    [[nodiscard]] static std::shared_ptr<TavVisibleItemsFilter> filter();
    bool includeItem(TavBaseFileInfo& item, bool* stopAccumulating) override;
};

} // namespace tav
