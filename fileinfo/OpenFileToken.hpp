#pragma once

#include "base/Data.hpp"

#include <cstddef>
#include <cstdint>
#include <utility>

namespace tav {

/// A file that an item has opened for reading or writing ranges of it. Made by the item, handed
/// back to it with every range and to close it; what is in it is the back-end's own. One thread at
/// a time.
class OpenFileToken {
  public:
    OpenFileToken() = default;
    OpenFileToken(const OpenFileToken&) = delete;
    OpenFileToken& operator=(const OpenFileToken&) = delete;
    virtual ~OpenFileToken() = default;

    /// Memory of that size for the next chunk, with any content: the one that was given back, where
    /// it fits.
    [[nodiscard]] Data takeBuffer(std::size_t size) {
        Data buffer = std::exchange(spare_, Data());
        buffer.resize(size);
        return buffer;
    }
    /// Hands back the memory of a chunk that was read by this token and is done with. Whoever reads
    /// chunk by chunk spares an allocation each.
    void giveBack(Data buffer) { spare_ = std::move(buffer); }

  private:
    Data spare_;
};

/// A range of a file's bytes. Its numbers have 32 bits, so what lies beyond 4 GiB is out of reach.
struct FileRange {
    std::uint32_t location = 0;
    std::uint32_t length = 0;
    friend bool operator==(const FileRange&, const FileRange&) = default;
};

/// The same with 64 bits.
struct WholeFileRange {
    std::uint64_t location = 0;
    std::uint64_t length = 0;
    friend bool operator==(const WholeFileRange&, const WholeFileRange&) = default;
};

} // namespace tav
