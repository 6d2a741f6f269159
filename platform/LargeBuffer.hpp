#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <utility>

namespace tav {

/// Memory for what is read whole, a file for one. Many megabytes of it lie on large pages where the
/// host has them, into which a read is several times as fast. The content is undefined until it is
/// written.
class LargeBuffer {
  public:
    /// No bytes.
    LargeBuffer() = default;
    LargeBuffer(LargeBuffer&& other) noexcept { *this = std::move(other); }
    LargeBuffer& operator=(LargeBuffer&& other) noexcept {
        std::swap(bytes_, other.bytes_);
        std::swap(mapping_, other.mapping_);
        return *this;
    }
    ~LargeBuffer();

    /// Nothing when there is no room.
    [[nodiscard]] static std::optional<LargeBuffer> withSize(std::size_t size);

    [[nodiscard]] std::span<std::byte> bytes() const { return bytes_; }

  private:
    std::span<std::byte> bytes_;
    std::span<std::byte> mapping_; ///< Around the bytes; empty when they are the allocator's.
};

} // namespace tav
