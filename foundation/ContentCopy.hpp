#pragma once

#include "base/Data.hpp"
#include "base/Result.hpp"
#include "platform/LargeBuffer.hpp"
#include "platform/OpenFile.hpp"

#include <cstdint>

namespace tav::internal {

/// Copies what files hold, one file after the other, through one buffer.
class ContentCopy {
  public:
    /// Puts the first `size` bytes of a file into an empty one. Blocks are shared where both lie on
    /// a file system that can do it, and holes of files of more than 64 KiB stay holes. EIO when
    /// the file ends before, ENOMEM without memory for the buffer.
    SystemError copy(OpenFile& from, OpenFile& to, std::uint64_t size);

  private:
    SystemError copyStretches(OpenFile& from, OpenFile& to, std::uint64_t size);
    SystemError copyBytes(OpenFile& from, OpenFile& to, std::uint64_t begin, std::uint64_t end);

    Result<BytesView> read(OpenFile& from, std::uint64_t begin, std::uint64_t end);

    LargeBuffer buffer_;
    bool mayClone_ = true; ///< Until it turned out that these file systems cannot.
};

} // namespace tav::internal
