#include "fileinfo/local/ZipKind.hpp"

#include "base/Data.hpp"
#include "platform/FileSystem.hpp"

#include <algorithm>
#include <array>
#include <memory>
#include <optional>
#include <span>

namespace tav::internal {

namespace {

// The records of a zip archive begin with these. All numbers are little-endian.
constexpr std::uint32_t localHeader = 0x04034B50;
constexpr std::uint32_t centralHeader = 0x02014B50;
constexpr std::uint32_t endOfCentralDirectory = 0x06054B50;
constexpr std::uint32_t splitMark = 0x08074B50; ///< Before the first header of one in parts.
constexpr std::uint32_t unsplitMark = 0x30304B50;

constexpr std::size_t centralHeaderSize = 46;
constexpr std::size_t endRecordSize = 22;
constexpr std::size_t longestComment = 0xFFFF;
constexpr std::uint32_t encryptedFlag = 1;

std::uint32_t numberAt(BytesView bytes, std::size_t offset, std::size_t size) {
    std::uint32_t number = 0;
    for (std::size_t index = size; index-- > 0;) {
        number = number << 8U | std::to_integer<std::uint32_t>(bytes[offset + index]);
    }
    return number;
}

/// Whether so many bytes could be read.
bool fills(OpenFile& file, std::uint64_t offset, std::span<std::byte> bytes) {
    const Result<std::size_t> size = file.readAt(offset, bytes);
    return size.ok() && size.value() == bytes.size();
}

/// Where the list of entries begins, by the last record of that kind in the file.
std::optional<std::uint64_t> centralDirectory(OpenFile& file, std::uint64_t fileSize) {
    Data tail(static_cast<std::size_t>(
        std::min<std::uint64_t>(fileSize, endRecordSize + longestComment)));
    const std::uint64_t start = fileSize - tail.size();
    if (tail.size() < endRecordSize || !fills(file, start, tail)) {
        return std::nullopt;
    }
    for (std::size_t offset = tail.size() - endRecordSize + 1; offset-- > 0;) {
        if (numberAt(tail, offset, 4) == endOfCentralDirectory) {
            const std::uint64_t size = numberAt(tail, offset + 12, 4);
            const std::uint64_t end = start + offset;
            // It ends where this record begins. What it says of its beginning is wrong where bytes
            // were put before the archive, and missing in archives of more than 4 GiB.
            return size <= end ? std::optional(end - size) : std::nullopt;
        }
    }
    return std::nullopt;
}

bool hasEncryptedEntry(OpenFile& file, std::uint64_t offset) {
    std::array<std::byte, centralHeaderSize> header{};
    while (fills(file, offset, header) && numberAt(header, 0, 4) == centralHeader) {
        if ((numberAt(header, 8, 2) & encryptedFlag) != 0) {
            return true;
        }
        offset += centralHeaderSize + numberAt(header, 28, 2) + numberAt(header, 30, 2) +
                  numberAt(header, 32, 2);
    }
    return false;
}

} // namespace

ZipKind zipKind(std::string_view path) {
    const Result<std::unique_ptr<OpenFile>> opened = FileSystem::current().open(path, {});
    if (!opened.ok()) {
        return ZipKind::None;
    }
    OpenFile& file = *opened.value();
    const Result<FileAttributes> attributes = file.attributes();
    std::array<std::byte, 8> start{};
    if (!attributes.ok() || !fills(file, 0, start)) {
        return ZipKind::None;
    }
    const std::uint32_t signature = numberAt(start, 0, 4);
    if (signature != localHeader && signature != endOfCentralDirectory && signature != splitMark &&
        signature != unsplitMark) {
        return ZipKind::None;
    }
    if (signature == localHeader && (numberAt(start, 6, 2) & encryptedFlag) != 0) {
        return ZipKind::Encrypted;
    }
    const std::optional<std::uint64_t> directory = centralDirectory(file, attributes.value().size);
    return directory && hasEncryptedEntry(file, *directory) ? ZipKind::Encrypted
                                                            : ZipKind::Readable;
}

} // namespace tav::internal
