#pragma once

#include "foundation/FolderTree.hpp"
#include "foundation/FolderTreeWalk.hpp"
#include "foundation/ItemCopier.hpp"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tav::internal {

/// The copy of a folder with all that it held when it was listed, in all depths, which may be any.
///
/// Both sides are walked from open folder to open folder, so nothing behind links is copied, and
/// nothing is written behind one. Until everything is there, nobody but the owner may enter the new
/// folders: each gets its permissions when all that lies in it has its own.
class TreeCopy {
  public:
    TreeCopy(std::string_view destination, ItemCopier& items)
        : destination_(destination), items_(items) {}

    /// Copies the folder at the path. After a failure, nothing that it made is left, as far as that
    /// can be taken away.
    SystemError copy(std::string_view source);
    /// Whether everything that was listed is still what was copied: ESTALE when anything was
    /// changed, came or went since.
    SystemError checkSource();
    /// Removes what was copied, and nothing else.
    SystemError removeSource() { return removeListedTree(source_); }
    /// Takes the copy away again.
    void undo();

  private:
    /// What is known of a folder from before it was read.
    struct Seen {
        std::uint32_t permissions = 0;
        Date modificationDate;
        Date changeDate;
    };

    /// What is known of a file or link from before it was read. A clock may have no new date for a
    /// change that comes right behind another, but most change the size.
    struct SeenEntry {
        std::uint64_t size = 0;
        Date changeDate;
    };

    SystemError checkKinds() const;
    SystemError makeFirstFolder();
    SystemError copyFolders();
    Result<OpenFolder*> makeFolder(std::size_t index, FolderTreeWalk& made);
    SystemError copyEntries(OpenFolder& from, OpenFolder& to, std::size_t index);
    SystemError copyFile(OpenFolder& from, OpenFolder& to, const FolderListing::Entry& entry,
                         std::size_t index);
    SystemError copyLink(OpenFolder& from, const FolderListing::Entry& entry, std::size_t index);
    SystemError finishFolders();

    std::string destination_;
    ItemCopier& items_;
    FolderTree source_;
    FolderTree made_;                ///< Its folders stand where those of the source stand.
    std::vector<Seen> folders_;      ///< In the order of the tree.
    std::vector<SeenEntry> entries_; ///< All other entries, in the order of the tree.
    std::size_t firstFinished_ = 0;  ///< From here on folders have their permissions.
    std::string fromPath_; ///< Of the folder that is copied, with a slash; then of one in it.
    std::string toPath_;
};

} // namespace tav::internal
