#pragma once

#include "platform/Volumes.hpp"
#include "platform/linux/Descriptor.hpp"
#include "platform/linux/MountTable.hpp"

#include <mutex>
#include <optional>
#include <string>

namespace tav {

/// The mounts of this process, found by the identifier that the kernel gives each: bind mounts,
/// btrfs and overlays share device numbers or have some that no device has. The mount table is read
/// again when the kernel says that it has changed; one descriptor stays open for that.
class LinuxVolumes final : public Volumes {
  public:
    /// `table`: what is read in place of the kernel's table.
    explicit LinuxVolumes(std::string table = "/proc/self/mountinfo") : path_(std::move(table)) {}

    Result<VolumeInfo> volumeOfPath(std::string_view path) override;
    Result<std::uint64_t> freeBytes(std::string_view path) override;
    Result<std::uint64_t> freeBytesOfFile(const OpenFile& file, std::string_view path) override;
    bool isVolumeRoot(std::string_view path) override;

    /// How often the table was read.
    [[nodiscard]] std::size_t readings() const;

  private:
    SystemError openTable();
    SystemError readTable();
    [[nodiscard]] bool hasChanged() const;
    Result<std::optional<Mount>> mount(std::uint64_t identifier);

    const std::string path_;
    mutable std::mutex mutex_; ///< Guards what follows.
    Descriptor file_;
    MountTable table_;
    std::size_t readings_ = 0;
};

} // namespace tav
