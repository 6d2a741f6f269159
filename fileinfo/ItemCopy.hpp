#pragma once

#include "base/Exception.hpp"
#include "fileinfo/TavBaseFileInfo.hpp"
#include "fileinfo/VerboseLog.hpp"

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

namespace tav::internal {

class ChunkCopy;

/// The name that a copy has in the destination's folder while it grows. Listings of local folders
/// remove what was left behind under it.
inline constexpr std::string_view copyFileName = "QuillboxCopyFile.tmp";

/// The permissions that a copy has while it grows, where those of the source are carried.
inline constexpr std::uint32_t ownersAlone = 0600;

/// Nil does not.
[[nodiscard]] inline bool exists(const FileInfoPtr& item) { return item && item->exists(); }

/// The line in the log that a copy was ended by an exception.
inline void logRaised(const Exception& exception) {
    logVerbose("Error copying file: \"%@\"", exception.reason());
}

/// One copy of a file by `copyTo`, through what all items can do.
class ItemCopy {
  public:
    /// The whole operation, with the options or without any.
    static Status copy(TavBaseFileInfo& source, TavBaseFileInfo* destination, bool ensureUniqueName,
                       const ProgressDelegate* progress, void* userData, FileInfoPtr* outNewItem,
                       const CopyOptions& options);

  private:
    ItemCopy(TavBaseFileInfo& source, FileInfoPtr destination, bool ensureUniqueName,
             const ProgressDelegate* progress, void* userData, const CopyOptions& options);

    Status run(FileInfoPtr* outNewItem);
    void abandon();
    void copy();
    void prepareDestination();
    void removeLeftover();
    bool hasRoom();
    bool makeTemporaryFile();
    bool openFiles();
    FileInfoPtr makeFile(std::string_view name, bool ensureUniqueName);
    void transfer();
    void putInPlace();
    void giveDates();
    void closeTemporaryFile();
    void closeSource();

    // With options (ItemCopyOptions.cpp)

    bool canBegin();
    bool chooseDestination();
    void narrowPermissions();
    void finish(ChunkCopy& chunks);
    Status sync();
    void verify(ChunkCopy& chunks);
    Status placeWhole();
    Status moveToFreeName();

    TavBaseFileInfo& source_;
    FileInfoPtr destination_;
    bool ensureUniqueName_;
    const ProgressDelegate* progress_;
    void* userData_;
    const CopyOptions& options_;
    bool hasOptions_;
    /// Nothing but a whole file takes the destination's place, and nothing else is left.
    bool isAllOrNothing_;

    CopySupport* support_ = nullptr; ///< The destination's; not asked for without options.
    std::optional<FileMetadata> metadata_;
    /// Whether an exception that passes abandons the copy as well: once the destination can only be
    /// the new file, and until the chunks, which clean up behind themselves.
    bool isToBeRemoved_ = false;
    FileInfoPtr uniqueNamesIn_; ///< The folder that chooses the name when the file is whole.
    FileInfoPtr folder_;        ///< Where the destination lies.
    FileInfoPtr temporaryFile_; ///< The new file, also when it is in place.
    std::shared_ptr<OpenFileToken> reading_;
    std::shared_ptr<OpenFileToken> writing_;
    FileInfoPtr newItem_;
    Status status_ = Status::Success;
};

} // namespace tav::internal
