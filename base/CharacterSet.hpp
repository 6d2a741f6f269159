#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace tav {

/// A set of UTF-16 units: a value of 8 KiB, which may be built when the program is compiled.
///
/// Characters beyond U+FFFF are two units, neither of which is a character, and so are in no set.
/// Bytes that are no UTF-8 are units of their own (base/Unicode.hpp).
class CharacterSet {
  public:
    /// The empty set.
    constexpr CharacterSet() = default;

    /// The units of a text but for pairs of surrogates.
    [[nodiscard]] static constexpr CharacterSet withUnits(std::u16string_view units) {
        CharacterSet set;
        for (std::size_t at = 0; at < units.size(); ++at) {
            const bool isPair = (units[at] & 0xFC00) == 0xD800 && at + 1 < units.size() &&
                                (units[at + 1] & 0xFC00) == 0xDC00;
            if (isPair) {
                ++at;
            } else {
                set.insert(units[at]);
            }
        }
        return set;
    }

    /// `withUnits` of a text in UTF-8.
    [[nodiscard]] static CharacterSet withCharactersInString(std::string_view text);

    /// So many units from `first` on; the range ends at U+FFFF at the latest.
    [[nodiscard]] static constexpr CharacterSet withRange(char16_t first, std::size_t length) {
        CharacterSet set;
        const std::size_t most = unitCount - first;
        for (std::size_t at = 0; at < (length < most ? length : most); ++at) {
            set.insert(static_cast<char16_t>(first + at));
        }
        return set;
    }

    [[nodiscard]] constexpr bool contains(char16_t unit) const {
        return (words_[unit / wordBits] >> (unit % wordBits) & 1) != 0;
    }

    /// Whether no member is above U+007F.
    [[nodiscard]] constexpr bool isASCII() const { return isASCII_; }

    constexpr void insert(char16_t unit) {
        words_[unit / wordBits] |= std::uint64_t{1} << (unit % wordBits);
        isASCII_ = isASCII_ && unit < 0x80;
    }

    constexpr CharacterSet& operator|=(const CharacterSet& other) {
        for (std::size_t at = 0; at < words_.size(); ++at) {
            words_[at] |= other.words_[at];
        }
        isASCII_ = isASCII_ && other.isASCII_;
        return *this;
    }
    [[nodiscard]] friend constexpr CharacterSet operator|(CharacterSet a, const CharacterSet& b) {
        return a |= b;
    }

    friend constexpr bool operator==(const CharacterSet&, const CharacterSet&) = default;

  private:
    static constexpr std::size_t unitCount = 0x10000;
    static constexpr std::size_t wordBits = 64;

    std::array<std::uint64_t, unitCount / wordBits> words_{};
    bool isASCII_ = true;
};

} // namespace tav
