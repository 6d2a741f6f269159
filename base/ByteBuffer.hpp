#pragma once

#include "base/Data.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <utility>

namespace tav {

/// Bytes that grow at their end, for writers that add many small pieces.
class ByteBuffer {
  public:
    explicit ByteBuffer(std::size_t expected = 4096) : bytes_(expected) {}

    [[nodiscard]] std::size_t size() const { return size_; }

    void append(const void* bytes, std::size_t count) {
        if (count != 0) {
            std::memcpy(grow(count), bytes, count);
        }
    }
    void append(std::string_view text) { append(text.data(), text.size()); }
    void append(BytesView bytes) { append(bytes.data(), bytes.size()); }
    void append(char c) { *grow(1) = std::byte(c); }
    void append(std::size_t count, char c) { std::fill_n(grow(count), count, std::byte(c)); }

    /// The low `width` bytes of a number, the highest first.
    void appendBigEndian(std::uint64_t number, std::size_t width) {
        std::byte* at = grow(width);
        for (std::size_t i = width; i > 0; --i) {
            at[i - 1] = static_cast<std::byte>(number);
            number >>= 8;
        }
    }

    /// Room for `count` bytes at the end, to be filled by the caller.
    std::byte* grow(std::size_t count) {
        if (bytes_.size() - size_ < count) {
            bytes_.resize(std::max(bytes_.size() * 2, size_ + count));
        }
        size_ += count;
        return bytes_.data() + (size_ - count);
    }

    /// The bytes so far; the buffer is empty afterwards.
    [[nodiscard]] Data take() {
        bytes_.resize(std::exchange(size_, 0));
        return std::exchange(bytes_, Data());
    }

  private:
    Data bytes_;
    std::size_t size_ = 0;
};

} // namespace tav
