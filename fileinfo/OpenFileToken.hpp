#pragma once

#include <cstdint>

namespace tav {

/// A file that an item has opened for reading or writing ranges of it. Made by the item, handed
/// back to it with every range and to close it; what is in it is the back-end's own.
class OpenFileToken {
  public:
    OpenFileToken() = default;
    OpenFileToken(const OpenFileToken&) = delete;
    OpenFileToken& operator=(const OpenFileToken&) = delete;
    virtual ~OpenFileToken() = default;
};

/// A range of a file's bytes. Its numbers have 32 bits, so what lies beyond 4 GiB is out of reach.
struct FileRange {
    std::uint32_t location = 0;
    std::uint32_t length = 0;
    friend bool operator==(const FileRange&, const FileRange&) = default;
};

} // namespace tav
