#pragma once

#include "base/Result.hpp"
#include "platform/Seam.hpp"

#include <cstdint>
#include <string>
#include <string_view>

namespace tav {

class OpenFile;
class Volumes;

namespace internal {
/// The volumes that are mounted here (platform/linux).
Volumes& realVolumes();
} // namespace internal

/// What is known of a mounted volume.
struct VolumeInfo {
    std::string rootPath; ///< Where it is mounted; absolute, and bytes as every path.
    /// Tells the mounts of this moment from each other; a later one may be given it anew. The same
    /// as `FileAttributes::mount` of what lies on it.
    std::uint64_t identifier = 0;
    std::uint64_t totalBytes = 0; ///< 0 where the volume does not say.
    std::uint64_t freeBytes = 0;  ///< What this user may still fill.
    bool isReadOnly = false;      ///< The volume itself, or the way that it is mounted here.
    std::string typeName;         ///< "ext4", "vfat", ...; empty where the host does not tell it.
    std::string deviceIdentifier; ///< "8:1" for a block device; empty for none.
    friend bool operator==(const VolumeInfo&, const VolumeInfo&) = default;
};

/// The seam to mounted volumes. Nothing raises; failures are the host's error numbers, those of
/// `FileSystem::targetAttributes`. Any thread.
class Volumes : public Seam<Volumes, internal::realVolumes> {
  public:
    virtual ~Volumes() = default;

    /// Of the volume that a path lies on; of what a link at the path leads to. ENOENT for what is
    /// not there.
    virtual Result<VolumeInfo> volumeOfPath(std::string_view path) = 0;
    /// `freeBytes` of that alone, for whoever asks often.
    virtual Result<std::uint64_t> freeBytes(std::string_view path) {
        const Result<VolumeInfo> volume = volumeOfPath(path);
        return volume.ok() ? Result(volume.value().freeBytes) : volume.error();
    }
    /// Of the volume that an open file lies on, which spares the way along its path.
    virtual Result<std::uint64_t> freeBytesOfFile(const OpenFile& /*file*/, std::string_view path) {
        return freeBytes(path);
    }
    /// Whether a volume is mounted on this very folder; of a link at the path never.
    virtual bool isVolumeRoot(std::string_view path) = 0;
};

} // namespace tav
