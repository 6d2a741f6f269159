#pragma once

#include "base/Result.hpp"
#include "platform/linux/Descriptor.hpp"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

#include <dirent.h>

namespace tav {

/// What the kernel tells of one name in a folder.
struct FolderRecord {
    const char* name = nullptr; ///< Ends in a NUL; "." and ".." come, too.
    std::uint64_t number = 0;
    unsigned char type = 0; ///< `DT_REG`, ..., `DT_UNKNOWN`.
};

/// Reads an open folder from where it stands to its end, as much at a time as the buffer takes, and
/// calls `visit` with each record, which lives no longer than the call.
template <class Visit>
SystemError forEachFolderRecord(const Descriptor& folder, std::span<std::byte> buffer,
                                Visit visit) {
    for (;;) {
        const ::ssize_t got = retryInterrupted(
            [&] { return ::getdents64(folder.number(), buffer.data(), buffer.size()); });
        if (got <= 0) {
            return got == 0 ? SystemError() : SystemError(errno);
        }
        for (std::size_t offset = 0; offset < static_cast<std::size_t>(got);) {
            const std::byte* const bytes = buffer.data() + offset;
            // Copied out field by field: there is no object in the buffer, only its bytes.
            FolderRecord record;
            unsigned short length = 0;
            std::memcpy(&record.number, bytes + offsetof(struct ::dirent64, d_ino),
                        sizeof(record.number));
            std::memcpy(&length, bytes + offsetof(struct ::dirent64, d_reclen), sizeof(length));
            record.type =
                std::to_integer<unsigned char>(bytes[offsetof(struct ::dirent64, d_type)]);
            record.name =
                reinterpret_cast<const char*>(bytes + offsetof(struct ::dirent64, d_name));
            visit(record);
            offset += length;
        }
    }
}

} // namespace tav
