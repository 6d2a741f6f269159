#pragma once

#include "fileinfo/TavPathBasedFileInfo.hpp"

namespace tav {

/// A file item on a device that is addressed by Windows paths: a drive prefix such as "C:\", which
/// may be missing, then names between backslashes. A folder's path may end with a backslash or not;
/// `path` of a folder always does.
class TavWindowsPathBasedFileInfo : public TavPathBasedFileInfo {
  public:
    /// An item of this very class.
    [[nodiscard]] static FileInfoPtr fileInfoWithPath(std::string_view path);
    /// The same with the empty path.
    [[nodiscard]] static FileInfoPtr fileInfo();

    [[nodiscard]] std::string className() const override;
    [[nodiscard]] std::vector<std::string> superclassNames() const override;

    [[nodiscard]] std::string path() override;
    [[nodiscard]] std::string standardPath() override;
    /// The last component behind the drive prefix; the prefix itself for a volume.
    [[nodiscard]] std::string name() override;
    [[nodiscard]] std::string nameWithoutExtension() override;
    /// The drive prefix is always the first, also when it is empty.
    [[nodiscard]] std::vector<std::string> pathComponents() override;
    /// Bytes of the path in UTF-8 as the device will see it: behind "\sdcard-ext\" in the place of
    /// the drive prefix.
    [[nodiscard]] std::int32_t numBytesNeededForPath() override;

    [[nodiscard]] std::optional<std::string> volumeRelativeStandardPath() override;
    /// As for slash paths, but from this item's own path, also when it is a file, and only to
    /// another item with a Windows path; its path otherwise.
    [[nodiscard]] std::optional<std::string> relativePathTo(TavBaseFileInfo* other) override;
    /// By `path`, ignoring case, when the other one has a Windows path as well.
    [[nodiscard]] bool isEqualTo(TavBaseFileInfo* other) override;
    /// An item of this very class; null for a volume and for the empty path.
    [[nodiscard]] FileInfoPtr parentFolder() override;

    /// Whether there is a drive prefix and nothing behind it.
    [[nodiscard]] bool isVolume() override;
    /// An item of this very class for the drive prefix.
    [[nodiscard]] FileInfoPtr volume() override;

    void updateName(std::string_view name) override;

  protected:
    TavWindowsPathBasedFileInfo() = default;
};

} // namespace tav
