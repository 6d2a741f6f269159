#pragma once

#include "fileinfo/TavBaseFileInfoFilter.hpp"

#include <string>
#include <string_view>

namespace tav {

/// Keeps out aliases to folders that lead back to a tree: to its root or to anything below it,
/// ignoring case. What is no alias, or leads to no folder, is let in.
class BaseFilterNestedFolders final : public TavBaseFileInfoFilter {
  public:
    /// The root of the tree that is listed; a leading tilde is expanded.
    explicit BaseFilterNestedFolders(std::string_view rootPath);

    bool includeItem(TavBaseFileInfo& item, bool* stopAccumulating) override;

  private:
    std::string _rootPath; ///< Ends with a slash, so that a longer name beside it is none of it.
};

} // namespace tav
