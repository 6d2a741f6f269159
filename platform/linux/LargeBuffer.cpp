#include "platform/LargeBuffer.hpp"

#include <cstdint>
#include <limits>
#include <new>

#include <sys/mman.h>

namespace tav {
namespace {

constexpr std::size_t largePage = std::size_t{2} << 20;
/// Below, large pages save less than the calls for them cost.
constexpr std::size_t smallestMapping = 2 * largePage;

} // namespace

std::optional<LargeBuffer> LargeBuffer::withSize(std::size_t size) {
    LargeBuffer buffer;
    if (size < smallestMapping) {
        auto* bytes = static_cast<std::byte*>(::operator new(size, std::nothrow));
        if (bytes == nullptr) {
            return std::nullopt;
        }
        buffer.bytes_ = {bytes, size};
        return buffer;
    }
    if (size > std::numeric_limits<std::size_t>::max() - 2 * largePage) {
        return std::nullopt;
    }
    // Whole large pages need an address that is a multiple of theirs.
    const std::size_t rounded = (size + largePage - 1) / largePage * largePage;
    const std::size_t length = rounded + largePage;
    void* address =
        ::mmap(nullptr, length, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (address == MAP_FAILED) {
        return std::nullopt;
    }
    auto* begin = static_cast<std::byte*>(address);
    const auto misplaced = reinterpret_cast<std::uintptr_t>(begin) % largePage;
    std::byte* aligned = begin + (misplaced == 0 ? 0 : largePage - misplaced);
    static_cast<void>(::madvise(aligned, rounded, MADV_HUGEPAGE)); // a wish
    buffer.mapping_ = {begin, length};
    buffer.bytes_ = {aligned, size};
    return buffer;
}

LargeBuffer::~LargeBuffer() {
    if (mapping_.empty()) {
        ::operator delete(bytes_.data());
    } else {
        static_cast<void>(::munmap(mapping_.data(), mapping_.size()));
    }
}

} // namespace tav
