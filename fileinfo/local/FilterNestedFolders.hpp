#pragma once

#include "fileinfo/local/TavFileInfoFilter.hpp"

#include <string>
#include <string_view>

namespace tav {

/// Keeps out aliases to folders whose paths begin with that of a root, ignoring case. Nothing is
/// asked of the character that follows: the root "/a/b" keeps out an alias to "/a/bc", too. What is
/// no alias, or leads to no folder, is let in.
class FilterNestedFolders final : public TavFileInfoFilter {
  public:
    /// The root of the tree that is listed; a leading tilde is expanded.
    explicit FilterNestedFolders(std::string_view rootPath);

    /// The flag is left alone.
    bool includeItem(TavFileInfo& item, bool* stopAccumulating) override;

  private:
    std::string _rootPath;
};

} // namespace tav
