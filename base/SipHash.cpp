#include "base/SipHash.hpp"

#include <bit>
#include <chrono>
#include <cstddef>
#include <cstring>

#include <unistd.h>

namespace tav {
namespace {

struct State {
    std::uint64_t v0, v1, v2, v3;

    explicit State(SipHashKey key)
        : v0(key.first ^ 0x736f6d6570736575U), v1(key.second ^ 0x646f72616e646f6dU),
          v2(key.first ^ 0x6c7967656e657261U), v3(key.second ^ 0x7465646279746573U) {}

    void round() {
        v0 += v1;
        v1 = std::rotl(v1, 13) ^ v0;
        v0 = std::rotl(v0, 32);
        v2 += v3;
        v3 = std::rotl(v3, 16) ^ v2;
        v0 += v3;
        v3 = std::rotl(v3, 21) ^ v0;
        v2 += v1;
        v1 = std::rotl(v1, 17) ^ v2;
        v2 = std::rotl(v2, 32);
    }

    void take(std::uint64_t word) {
        v3 ^= word;
        round();
        v0 ^= word;
    }
};

std::uint64_t littleEndianWord(const char* bytes, std::size_t count) {
    std::uint64_t value = 0;
    if constexpr (std::endian::native == std::endian::little) {
        std::memcpy(&value, bytes, count);
    } else {
        for (std::size_t i = count; i > 0; --i) {
            value = value << 8 | static_cast<unsigned char>(bytes[i - 1]);
        }
    }
    return value;
}

} // namespace

std::uint64_t sipHash13(std::string_view text, SipHashKey key) {
    State state(key);
    std::size_t at = 0;
    for (; at + 8 <= text.size(); at += 8) {
        state.take(littleEndianWord(text.data() + at, 8));
    }
    const std::size_t rest = text.size() - at;
    std::uint64_t last = std::uint64_t{text.size()} << 56;
    if (rest != 0) {
        last |= littleEndianWord(text.data() + at, rest);
    }
    state.take(last);
    state.v2 ^= 0xff;
    state.round();
    state.round();
    state.round();
    return state.v0 ^ state.v1 ^ state.v2 ^ state.v3;
}

SipHashKey processSipHashKey() {
    static const SipHashKey key = [] {
        SipHashKey random;
        if (getentropy(&random, sizeof random) == 0) {
            return random;
        }
        // A kernel without random numbers for us: where the loader put things and when.
        const int onStack = 0;
        const auto now = std::chrono::steady_clock::now().time_since_epoch().count();
        return SipHashKey{reinterpret_cast<std::uintptr_t>(&onStack) * 0x9e3779b97f4a7c15U,
                          std::uint64_t(now) ^
                              std::rotl(std::uint64_t{reinterpret_cast<std::uintptr_t>(&key)}, 32)};
    }();
    return key;
}

} // namespace tav
