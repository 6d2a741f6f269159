#pragma once

#include <cstdint>
#include <string_view>

namespace tav {

/// The secret that decides how a keyed hash spreads texts.
struct SipHashKey {
    std::uint64_t first = 0;
    std::uint64_t second = 0;
};

/// SipHash-1-3: whoever does not know the key cannot choose texts that fall together, so tables
/// filled with a stranger's keys stay fast.
[[nodiscard]] std::uint64_t sipHash13(std::string_view text, SipHashKey key);

/// A key of this process, the same as long as it runs.
[[nodiscard]] SipHashKey processSipHashKey();

} // namespace tav
