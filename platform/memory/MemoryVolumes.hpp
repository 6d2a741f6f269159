#pragma once

#include "platform/FileSystem.hpp"
#include "platform/Volumes.hpp"

#include <cstdint>
#include <map>

namespace tav {

/// Volumes as a test tells them, over a file system, which says what lies on which of them
/// (`MemoryFileSystem::addVolume` makes one, and "/" is another). One thread.
class MemoryVolumes final : public Volumes {
  public:
    /// The file system must outlive it.
    explicit MemoryVolumes(FileSystem& files) : files_(files) {}

    /// Makes known the volume of which `rootPath` is the root, in place of what was told of it
    /// before. The identifier is the file system's. Throws `std::system_error` where nothing
    /// stands.
    void add(VolumeInfo volume);

    /// ENODEV for a volume that nobody told.
    Result<VolumeInfo> volumeOfPath(std::string_view path) override;
    bool isVolumeRoot(std::string_view path) override;

  private:
    FileSystem& files_;
    std::map<std::uint64_t, VolumeInfo> volumes_;
};

} // namespace tav
