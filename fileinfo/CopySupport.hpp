#pragma once

#include "base/Data.hpp"
#include "base/Status.hpp"
#include "fileinfo/OpenFileToken.hpp"

#include <cstdint>
#include <optional>
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

/// What a back-end can do for the copies with options, beyond the plain operations of its items. It
/// has no state of its own; items and tokens are those of its back-end. Nothing raises. Answers are
/// 0 or a failure; `Status::NotSupported` for what the volume cannot do.
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
};

} // namespace tav
