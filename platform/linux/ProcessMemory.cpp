#include "platform/linux/ProcessMemory.hpp"

#include <sys/uio.h>

namespace tav::internal {

std::optional<std::int64_t> declaredArgumentCount(const StatRecord& record) {
    if (record.stackStart == 0) {
        return std::nullopt;
    }
    std::int64_t count = 0;
    const ::iovec here = {&count, sizeof count};
    // NOLINTNEXTLINE(performance-no-int-to-ptr): an address in the other process.
    void* const address = reinterpret_cast<void*>(static_cast<std::uintptr_t>(record.stackStart));
    const ::iovec there = {address, sizeof count};
    if (::process_vm_readv(record.process.processIdentifier, &here, 1, &there, 1, 0) !=
        static_cast<::ssize_t>(sizeof count)) {
        return std::nullopt;
    }
    return count;
}

} // namespace tav::internal
