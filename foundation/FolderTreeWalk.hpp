#pragma once

#include "base/Result.hpp"
#include "foundation/FolderTree.hpp"

#include <cstddef>
#include <memory>
#include <string_view>
#include <vector>

namespace tav {

/// An open folder and which one it is.
struct IdentifiedFolder {
    std::unique_ptr<OpenFolder> folder;
    FileIdentity identity;
};
/// Asks a folder that has just been opened, if it was, which one it is.
Result<IdentifiedFolder> identified(Result<std::unique_ptr<OpenFolder>> folder);

/// The folder at a path that a walk begins with. ENOTDIR when there is something else.
struct FirstFolder : IdentifiedFolder {
    bool isReachedByLink = false;
};
Result<FirstFolder> openFirstFolder(std::string_view path);

/// Opens the folders of a tree in any order, each in the one that it lies in and never through a
/// link. Neighbours are cheap.
///
/// At most a dozen and a half folders are held open, whatever the depth: the current one, those
/// that it lies in as far as eight levels up, and beyond them the deepest whose depth is a multiple
/// of 8, of 64, of 512, ... From one of these what was closed is opened again: on the way through a
/// chain of n folders up to the first about 7 log8(n) times for each, not n times.
class FolderTreeWalk {
  public:
    /// Opens the first folder of a whole tree. ESTALE when another one, or a link, is there now.
    static Result<FolderTreeWalk> over(const FolderTree& tree);

    /// The tree has to live longer; folders may be added to it. Takes the first folder over.
    FolderTreeWalk(const FolderTree& tree, std::unique_ptr<OpenFolder> first);

    /// The folder, as long as no other is opened. ESTALE when something else is in its place.
    Result<OpenFolder*> open(std::size_t index);
    /// Takes over a folder that has just been opened in the one that it lies in.
    void enter(std::size_t index, std::unique_ptr<OpenFolder> folder);

  private:
    struct Open {
        std::size_t index = 0;
        std::size_t depth = 0;
        std::unique_ptr<OpenFolder> folder;
    };

    const FolderTree* tree_;
    std::vector<Open> open_; ///< Each lies somewhere in the one before it; never empty.
};

} // namespace tav
