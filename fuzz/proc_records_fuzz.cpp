// The texts of /proc/PID: the first byte chooses which.

#include "platform/linux/ProcRecords.hpp"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    const std::string_view text(reinterpret_cast<const char*>(bytes + 1), size - 1);
    switch (bytes[0] % 4) {
    case 0:
        static_cast<void>(tav::internal::parseProcStat(text));
        break;
    case 1:
        static_cast<void>(tav::internal::parseProcStatusUsers(text));
        break;
    case 2:
        static_cast<void>(tav::internal::parseProcStatusGroups(text));
        break;
    default:
        if (tav::internal::countArguments(text, bytes[0]) < 0) {
            std::abort();
        }
    }
    return 0;
}
