#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>

namespace tav {

/// A line of the kernel's mount table.
struct Mount {
    std::uint64_t identifier = 0;
    std::string path;     ///< Where it is mounted, as this process sees it.
    std::string typeName; ///< "ext4", "fuseblk", ...
    std::string device;   ///< "8:1"; "0:..." where there is no block device.
    [[nodiscard]] bool hasBlockDevice() const { return !device.starts_with("0:"); }
};

/// What /proc/self/mountinfo says.
class MountTable {
  public:
    MountTable() = default;
    /// Lines that are none are left out, and of two with one identifier the first counts.
    explicit MountTable(std::string_view text);

    /// Nothing where the table has no such mount. As long as the table.
    [[nodiscard]] const Mount* find(std::uint64_t identifier) const;
    [[nodiscard]] std::size_t size() const { return mounts_.size(); }

  private:
    std::unordered_map<std::uint64_t, Mount> mounts_;
};

} // namespace tav
