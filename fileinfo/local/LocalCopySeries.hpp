#pragma once

#include "fileinfo/CopySupport.hpp"
#include "fileinfo/TavBaseFileInfo.hpp"
#include "fileinfo/local/FilesAhead.hpp"

#include <cstddef>
#include <memory>
#include <span>

namespace tav {
class TavMacFileInfo;
}

namespace tav::internal {

/// Many copies into one local folder, whose small sources are read ahead. Copies find this at the
/// folder's item.
class LocalCopySeries final : public CopySeries {
  public:
    /// For fewer files a thread does not pay.
    static constexpr std::size_t fewestFiles = 32;

    /// Both must outlive it.
    LocalCopySeries(std::span<const FileInfoPtr> files, TavMacFileInfo& folder);
    LocalCopySeries(const LocalCopySeries&) = delete;
    LocalCopySeries& operator=(const LocalCopySeries&) = delete;
    ~LocalCopySeries() override;

    void comeTo(std::size_t index) override;

    /// What was read of the file ahead of its copy; null for nothing, and when it may be another
    /// one by now or have changed.
    [[nodiscard]] const ReadFile* readAhead(TavMacFileInfo& file) const;

  private:
    const std::span<const FileInfoPtr> files_;
    TavMacFileInfo& folder_;
    LocalCopySeries* const outer_; ///< Into the same folder, begun before; mostly null.
    std::size_t index_ = 0;        ///< Of the file that is copied.
    std::size_t added_ = 0;
    std::unique_ptr<FilesAhead> ahead_;
};

} // namespace tav::internal
