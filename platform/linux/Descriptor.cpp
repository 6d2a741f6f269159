#include "platform/linux/Descriptor.hpp"

#include <algorithm>
#include <new>
#include <stdexcept>

#include <sys/resource.h>
#include <unistd.h>

namespace tav {

namespace {

// Room made for a file that does not tell its size.
constexpr std::uint64_t unknownSizeRoom = 4096;
// More than any vector takes, yet far from where adding to it wraps.
constexpr std::uint64_t largestRoom = std::uint64_t{1} << 63;

Result<Data> readGrowing(const Descriptor& file, std::uint64_t expectedSize,
                         std::uint64_t maximumSize) {
    Data content;
    // One byte more than expected: the read that fills a file of the expected size also sees its
    // end.
    const std::uint64_t room =
        std::clamp(std::min(expectedSize, maximumSize), unknownSizeRoom - 1, largestRoom);
    content.resize(static_cast<std::size_t>(room) + 1);
    std::size_t filled = 0;
    for (;;) {
        const Result<std::size_t> got = readFully(file, std::span(content).subspan(filled));
        if (!got.ok()) {
            return got.error();
        }
        filled += got.value();
        if (filled > maximumSize) {
            return SystemError(EFBIG);
        }
        if (filled < content.size()) {
            content.resize(filled);
            return content;
        }
        content.resize(content.size() * 2);
    }
}

} // namespace

Result<Descriptor> Descriptor::open(int folder, const char* path, int flags, ::mode_t mode) {
    const int number = retryInterrupted(
        [&] { return ::openat(folder, path, flags | O_CLOEXEC | O_NOCTTY, mode); });
    if (number < 0) {
        return SystemError(errno);
    }
    return Descriptor(number);
}

SystemError Descriptor::close() {
    if (number_ < 0) {
        return {};
    }
    // The descriptor is gone after any answer, an interruption included: never again, since another
    // thread may have been given the number meanwhile.
    if (::close(std::exchange(number_, -1)) != 0 && errno != EINTR) {
        return SystemError(errno);
    }
    return {};
}

Result<std::size_t> readSome(const Descriptor& file, std::span<std::byte> buffer) {
    const ::ssize_t got =
        retryInterrupted([&] { return ::read(file.number(), buffer.data(), buffer.size()); });
    if (got < 0) {
        return SystemError(errno);
    }
    return static_cast<std::size_t>(got);
}

Result<std::size_t> readFully(const Descriptor& file, std::span<std::byte> buffer) {
    return transferFully(buffer.size(), [&](std::size_t done, std::size_t remaining) {
        return ::read(file.number(), buffer.data() + done, remaining);
    });
}

Result<Data> readToEnd(const Descriptor& file, std::uint64_t expectedSize,
                       std::uint64_t maximumSize) {
    try {
        return readGrowing(file, expectedSize, maximumSize);
    } catch (const std::bad_alloc&) {
        return SystemError(ENOMEM);
    } catch (const std::length_error&) {
        return SystemError(ENOMEM);
    }
}

SystemError writeFully(const Descriptor& file, BytesView content) {
    const Result<std::size_t> written =
        transferFully(content.size(), [&](std::size_t done, std::size_t remaining) {
            return ::write(file.number(), content.data() + done, remaining);
        });
    if (!written.ok()) {
        return written.error();
    }
    return written.value() == content.size() ? SystemError() : SystemError(EIO);
}

void closeDescriptorsFrom(int first) {
    if (::close_range(static_cast<unsigned>(first), ~0U, 0) == 0) {
        return;
    }
    // An older kernel, or a sandbox that knows the call not: one by one, as far as there can be
    // any.
    ::rlimit limit;
    const bool isKnown = ::getrlimit(RLIMIT_NOFILE, &limit) == 0;
    const int end =
        isKnown ? static_cast<int>(std::min<::rlim_t>(limit.rlim_max, 1U << 20U)) : 1024;
    for (int number = first; number < end; ++number) {
        ::close(number);
    }
}

} // namespace tav
