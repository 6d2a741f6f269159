#pragma once

#include "fileinfo/CopySupport.hpp"
#include "fileinfo/TavBaseFileInfo.hpp"

namespace tav::internal {

/// What the local file system can do for the copies with options: for local items and their tokens,
/// `Status::NotSupported` or nothing for others.
class LocalCopySupport final : public CopySupport {
  public:
    /// The only one: there is nothing in it.
    [[nodiscard]] static LocalCopySupport& shared();

    Status replace(TavBaseFileInfo& file, TavBaseFileInfo& destination) override;
    Status syncContents(OpenFileToken& written) override;
    Status outcomeOfClosing(OpenFileToken& closed) override;
    Status syncFolder(TavBaseFileInfo& folder) override;
    void forgetCached(OpenFileToken& token) override;
    /// What a link leads to has them, as it has the content. The permission to run as the file's
    /// user or group (the bits 06000) is left out: the copy has another one.
    std::optional<FileMetadata> metadata(TavBaseFileInfo& file) override;
    Status setMetadata(TavBaseFileInfo& file, const FileMetadata& metadata) override;
    std::optional<WholeFileRange> nextData(OpenFileToken& reading, std::uint64_t offset) override;
    Status setLength(OpenFileToken& writing, std::uint64_t length) override;
    /// Small files.
    std::optional<Status> copyAtOnce(const PlainCopy& copy) override;
    std::unique_ptr<CopySeries> beginSeries(std::span<const FileInfoPtr> files,
                                            TavBaseFileInfo& folder,
                                            bool ensureUniqueName) override;
};

/// Whether the item is what `TavMacFileInfo` makes, and of no class over it that may do some of the
/// steps in a way of its own.
[[nodiscard]] bool isPlainLocalItem(const TavBaseFileInfo& item);

} // namespace tav::internal
