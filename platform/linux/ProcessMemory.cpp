#include "platform/linux/ProcessMemory.hpp"

#include <cstdint>

#include <sys/uio.h>

namespace tav::internal {
namespace {

/// Far above what the kernel lets a program be started with (6 MiB): the places are numbers that a
/// process can change.
constexpr std::uint64_t maximumSize = 16U << 20U;

::iovec remote(std::uint64_t address, std::size_t size) {
    // NOLINTNEXTLINE(performance-no-int-to-ptr): an address in the other process.
    return {reinterpret_cast<void*>(static_cast<std::uintptr_t>(address)), size};
}

} // namespace

std::optional<StartTexts> readStartTexts(const StatRecord& record) {
    const std::uint64_t begin = record.argumentsBegin;
    const std::uint64_t middle = record.argumentsEnd;
    const std::uint64_t end = record.environmentEnd;
    if (begin == 0 || record.stackStart == 0 || middle <= begin ||
        record.environmentBegin != middle || end < middle || end - begin > maximumSize) {
        return std::nullopt;
    }
    StartTexts texts;
    texts.bytes.resize(static_cast<std::size_t>(end - begin));
    texts.argumentsSize = static_cast<std::size_t>(middle - begin);
    // A program finds the number of its arguments where its stack begins.
    const ::iovec here[] = {{&texts.declaredCount, sizeof texts.declaredCount},
                            {texts.bytes.data(), texts.bytes.size()}};
    const ::iovec there[] = {remote(record.stackStart, sizeof texts.declaredCount),
                             remote(begin, texts.bytes.size())};
    const ::ssize_t size =
        ::process_vm_readv(record.process.processIdentifier, here, 2, there, 2, 0);
    if (size != static_cast<::ssize_t>(sizeof texts.declaredCount + texts.bytes.size()) ||
        texts.bytes[texts.argumentsSize - 1] != '\0') {
        return std::nullopt;
    }
    return texts;
}

} // namespace tav::internal
