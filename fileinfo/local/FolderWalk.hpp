#pragma once

#include "fileinfo/local/TavMacFileInfo.hpp"
#include "fileinfo/local/WalkedFolder.hpp"

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace tav::internal {

/// One listing of a folder: reads its names once, makes an item of each and asks the filter.
///
/// An item's kind comes with its name, so that no question goes to the file system for it unless it
/// is a link or the volume does not tell kinds. While the filter has it the item is asked by its
/// name in the open folder. A listing that a filter begins on such an item is one of the same walk,
/// one level deeper.
class FolderWalk {
  public:
    /// A walk goes down so many folders; each level takes some of the stack.
    static constexpr std::size_t deepest = 5000;

    /// The root node path is that of the folder where the whole listing began, with "/" behind it.
    /// All are lent. Throws the exception "folderContentsWithFilter" when the folder cannot be
    /// read.
    FolderWalk(TavMacFileInfo& folder, std::string_view rootNodePath);

    /// Appends what the filter lets in (everything for null) in the file system's order; whether
    /// the filter ended the listing. What the filter throws passes.
    bool appendTo(FileInfoArray& array, TavBaseFileInfoFilter* filter);

  private:
    [[nodiscard]] std::string pathOf(std::string_view name) const;
    [[nodiscard]] std::shared_ptr<TavMacFileInfo> itemOf(const FolderListing::Entry& entry) const;
    void removeCopyFile(std::string_view name);
    [[nodiscard]] bool isSkipped(TavMacFileInfo& item);
    [[nodiscard]] bool leadsIntoTree(TavMacFileInfo& alias);

    std::string path_; ///< Ends with a slash.
    std::string_view rootNodePath_;
    /// `rootNodePath_` without links, once it was asked for; empty when it cannot be had.
    std::optional<std::string> canonicalRootNodePath_;
    std::unique_ptr<WalkedFolder> folder_;
    FolderListing entries_;
};

} // namespace tav::internal
