#pragma once

#include "fileinfo/TavBaseFileInfo.hpp"

#include <string>

namespace tav::internal {

/// Turns a listing into a deep one: each folder that comes by is listed in its turn, through this
/// same filter, before the filter of the caller has its answer used. It appends to the array that
/// the outer listing fills, so it serves one listing at a time.
class GoDeepFilter final : public TavBaseFileInfoFilter {
  public:
    /// Both are lent. The filter may be null; a null array is logged, and nothing is appended.
    GoDeepFilter(TavBaseFileInfoFilter* filter, FileInfoArray* withArray);

    bool includeItem(TavBaseFileInfo& item, bool* stopAccumulating) override;

  private:
    TavBaseFileInfoFilter* _realFilter;
    FileInfoArray* _theArray;
};

/// Lets in what has one name.
class FindItemFilter final : public TavBaseFileInfoFilter {
  public:
    FindItemFilter(std::string_view nameToFind, bool ignoreCase, bool findOnlyOne);

    /// The pointer may be null here.
    bool includeItem(TavBaseFileInfo& item, bool* stopAccumulating) override;

  private:
    std::string _nameToFind;
    bool _ignoreCase;
    bool _findOnlyOne;
};

} // namespace tav::internal
