#pragma once

#include "fileinfo/TavBaseFileInfo.hpp"

#include <memory>
#include <string_view>

namespace tav::internal {

/// The name that a copy has in the destination's folder while it grows. Listings of local folders
/// remove what was left behind under it.
inline constexpr std::string_view copyFileName = "QuillboxCopyFile.tmp";

/// One copy of a file by `copyTo`, through what all items can do. Made, run once, thrown away.
class ItemCopy {
  public:
    ItemCopy(TavBaseFileInfo& source, FileInfoPtr destination, bool ensureUniqueName,
             const ProgressDelegate* progress, void* userData);

    /// Of a source that exists and is a file, where no device drives the copy.
    Status run(FileInfoPtr* outNewItem);

  private:
    void copy();
    void prepareDestination();
    void removeLeftover();
    bool hasRoom();
    bool makeTemporaryFile();
    void transfer();
    void putInPlace();
    void closeTemporaryFile();
    void closeSource();

    TavBaseFileInfo& source_;
    FileInfoPtr destination_;
    bool ensureUniqueName_;
    const ProgressDelegate* progress_;
    void* userData_;

    /// By an exception that passes: where only the new file can be meant.
    bool isToBeRemoved_ = false;
    FileInfoPtr folder_;        ///< Where the destination lies.
    FileInfoPtr temporaryFile_; ///< The new file, also when it is in place.
    std::shared_ptr<OpenFileToken> reading_;
    std::shared_ptr<OpenFileToken> writing_;
    FileInfoPtr newItem_;
    Status status_ = Status::Success;
};

} // namespace tav::internal
