#pragma once

#include "base/Data.hpp"
#include "base/Status.hpp"
#include "fileinfo/OpenFileToken.hpp"
#include "fileinfo/ProgressDelegate.hpp"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace tav {

class TavBaseFileInfo;

/// What a file carries beside its content and its dates.
struct FileMetadata {
    std::optional<std::uint32_t> permissions; ///< The twelve bits of `chmod`.
    struct ExtendedAttribute {
        std::string name;
        Data value;
        friend bool operator==(const ExtendedAttribute&, const ExtendedAttribute&) = default;
    };
    std::vector<ExtendedAttribute> extendedAttributes;
    friend bool operator==(const FileMetadata&, const FileMetadata&) = default;
};

/// A plain copy that is asked for: `copyTo` with five parameters, once it is settled that the
/// source is a file and that no device drives the copy. All is lent.
struct PlainCopy {
    TavBaseFileInfo& source;
    TavBaseFileInfo& destination;
    bool ensureUniqueName;
    const ProgressDelegate* delegate; ///< Null for none.
    void* userData;
    std::atomic<bool>& isCancelled;            ///< Set from any thread.
    std::shared_ptr<TavBaseFileInfo>* newItem; ///< Null when nobody wants it.
};

/// What a back-end does while many files are copied into one of its folders.
class CopySeries {
  public:
    CopySeries() = default;
    CopySeries(const CopySeries&) = delete;
    CopySeries& operator=(const CopySeries&) = delete;
    virtual ~CopySeries() = default;

    /// The copy that comes is that of the file of this number.
    virtual void comeTo(std::size_t index) = 0;
};

/// What a back-end can do for the copies with options, beyond the plain operations of its items. It
/// has no state of its own; items and tokens are those of its back-end. Nothing raises but what a
/// delegate does. Answers are 0 or a failure; `Status::NotSupported` for what the volume cannot do.
class CopySupport {
  public:
    CopySupport() = default;
    CopySupport(const CopySupport&) = delete;
    CopySupport& operator=(const CopySupport&) = delete;
    virtual ~CopySupport() = default;

    /// Moves the file to the path of the destination in one step, in which it takes the place of a
    /// file there: at every moment that path leads to the old one or the new one. The item has the
    /// new path then.
    virtual Status replace(TavBaseFileInfo& file, TavBaseFileInfo& destination) = 0;
    /// Waits until what was written is on the medium.
    virtual Status syncContents(OpenFileToken& written) = 0;
    /// What the host still had to say about the writes when a token was closed: volumes that write
    /// late (network, quota) tell there what was lost. 0 while it is open, too.
    virtual Status outcomeOfClosing(OpenFileToken& /*closed*/) { return Status::Success; }
    /// Waits until the names in the folder are on the medium.
    virtual Status syncFolder(TavBaseFileInfo& folder) = 0;
    /// Lets the next reads ask the medium; a hint.
    virtual void forgetCached(OpenFileToken& token) = 0;
    /// Of the file itself, through links as its content; nothing for what is not there or cannot be
    /// read.
    virtual std::optional<FileMetadata> metadata(TavBaseFileInfo& file) = 0;
    /// Gives the file what its volume has a place for. Answers the first failure, with all tried.
    virtual Status setMetadata(TavBaseFileInfo& file, const FileMetadata& metadata) = 0;
    /// The next stretch at or behind an offset that is no hole, which may end behind the end of the
    /// file; nothing when there is none up to the end, or when the token has no open file. Where it
    /// cannot be told, everything counts as data: reading it tells what is wrong.
    virtual std::optional<WholeFileRange> nextData(OpenFileToken& reading,
                                                   std::uint64_t offset) = 0;
    /// Cuts the file, or grows it by a hole.
    virtual Status setLength(OpenFileToken& writing, std::uint64_t length) = 0;

    /// The plain copy in the back-end's own way and with fewer questions, where nobody can tell it
    /// from the steps of `copyTo`: how it ended. Nothing when it was not made, which is no failure;
    /// then nothing has changed, and the steps are to be taken. What the delegate raises goes on to
    /// the caller unless it is an `Exception`, as with the steps.
    virtual std::optional<Status> copyAtOnce(const PlainCopy& /*copy*/) { return std::nullopt; }

    /// Begins the copies of many files into one folder, in their order, each with a unique name or
    /// its own; the answer lasts as long as they do. Null where it would make no difference.
    virtual std::unique_ptr<CopySeries>
    beginSeries(std::span<const std::shared_ptr<TavBaseFileInfo>> /*files*/,
                TavBaseFileInfo& /*folder*/, bool /*ensureUniqueName*/) {
        return nullptr;
    }
};

} // namespace tav
