#include "foundation/ContentCopy.hpp"

#include "platform/FileSystem.hpp"
#include "platform/ReadAhead.hpp"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <memory>
#include <utility>

namespace tav::internal {

namespace {

constexpr std::size_t bufferSize = 0x100000;
/// In smaller files, to ask for holes costs more than to copy them.
constexpr std::uint64_t largestWithoutHoles = 0x10000;

} // namespace

SystemError ContentCopy::copy(OpenFile& from, OpenFile& to, std::uint64_t size) {
    if (size == 0) {
        return {};
    }
    if (mayClone_) {
        const SystemError error = to.cloneRange(from, 0, size, 0);
        if (error.isNone()) {
            return {};
        }
        // Of a file that grows the end is no place to clone to; the next may be cloned.
        mayClone_ = error.number() == EINVAL;
    }
    if (buffer_.bytes().empty()) {
        auto buffer = LargeBuffer::withSize(bufferSize);
        if (!buffer) {
            return SystemError(ENOMEM);
        }
        buffer_ = std::move(*buffer);
    }
    return size <= largestWithoutHoles ? copyBytes(from, to, 0, size)
                                       : copyStretches(from, to, size);
}

SystemError ContentCopy::copyStretches(OpenFile& from, OpenFile& to, std::uint64_t size) {
    std::uint64_t done = 0;
    while (done < size) {
        const auto next = from.nextData(done);
        if (!next.ok() && next.error().number() != ENXIO) {
            return next.error();
        }
        if (!next.ok() || next.value().begin >= size) {
            break;
        }
        const DataStretch stretch = {next.value().begin, std::min(next.value().end, size)};
        SystemError error;
        if (stretch.begin != done) {
            error = to.setPosition(stretch.begin);
        }
        if (error.isNone()) {
            error = copyBytes(from, to, stretch.begin, stretch.end);
        }
        if (!error.isNone()) {
            return error;
        }
        done = stretch.end;
    }
    if (done == size) {
        return {};
    }
    // What is left is a hole, unless it was cut off.
    const auto attributes = from.attributes();
    if (!attributes.ok()) {
        return attributes.error();
    }
    return attributes.value().size < size ? SystemError(EIO) : to.setSize(size);
}

SystemError ContentCopy::copyBytes(OpenFile& from, OpenFile& to, std::uint64_t begin,
                                   std::uint64_t end) {
    std::unique_ptr<ReadAhead> ahead;
    if (end - begin >= ReadAhead::smallestFile) {
        ahead = ReadAhead::start(from, begin, end, bufferSize);
        to.expectWrite(begin, end - begin);
    }
    while (begin < end) {
        const Result<BytesView> got = ahead ? ahead->next() : read(from, begin, end);
        if (!got.ok()) {
            return got.error();
        }
        if (got.value().empty()) {
            return SystemError(EIO); // somebody cut the source
        }
        const SystemError error = to.write(got.value());
        if (!error.isNone()) {
            return error;
        }
        begin += got.value().size();
    }
    return {};
}

Result<BytesView> ContentCopy::read(OpenFile& from, std::uint64_t begin, std::uint64_t end) {
    const std::span<std::byte> buffer = buffer_.bytes();
    const auto got = from.readAt(begin, buffer.first(static_cast<std::size_t>(
                                            std::min<std::uint64_t>(buffer.size(), end - begin))));
    return got.ok() ? Result(BytesView(buffer.first(got.value()))) : got.error();
}

} // namespace tav::internal
