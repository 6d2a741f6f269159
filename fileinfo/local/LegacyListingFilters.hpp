#pragma once

#include "fileinfo/local/TavFileInfo.hpp"
#include "fileinfo/local/TavFileInfoFilter.hpp"

#include <cstddef>
#include <set>
#include <string>
#include <string_view>

namespace tav::legacy {

/// Turns a listing into a deep one: each folder that comes by is listed in its turn, through this
/// same filter, before the filter of the caller has its answer used. It appends to the array that
/// the outer listing fills, so it serves one listing at a time.
///
/// Links are followed into the folders that they lead to, each of those once: what a second link
/// to it stands for is not listed again, so that a link to a folder further up does not lead round
/// in circles. What lies in a folder is listed once, and no folder below `deepest`.
class GoDeepFilter final : public TavFileInfoFilter {
  public:
    /// A listing goes down so many folders; each level takes some of the stack.
    static constexpr std::size_t deepest = 5000;

    /// Both are lent, and either may be null: then everything is let in, or nothing is appended.
    GoDeepFilter(TavFileInfoFilter* realFilter, TavFileInfoArray* theArray);

    bool includeItem(TavFileInfo& item, bool* stopAccumulating) override;

    /// Whether a folder is to be listed; takes note of where a link leads.
    bool enter(TavFileInfo& folder);

  private:
    TavFileInfoFilter* realFilter_;
    TavFileInfoArray* theArray_;
    std::set<std::string> entered_; ///< What links led to.
    std::size_t depth_ = 0;
};

/// Lets in what has one name.
class FindItemFilter final : public TavFileInfoFilter {
  public:
    FindItemFilter(std::string_view nameToFind, bool ignoreCase, bool findOnlyOne);

    /// The flag is left alone unless the item is let in.
    bool includeItem(TavFileInfo& item, bool* stopAccumulating) override;

  private:
    std::string nameToFind_;
    bool ignoreCase_;
    bool findOnlyOne_;
};

} // namespace tav::legacy
