#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace tav {

/// How texts are searched and compared, as bits of one number; those without a name mean nothing.
struct SearchOption {
    /// Canonical caseless matching.
    static constexpr unsigned IgnoreCase = 1;
    /// Unit by unit instead of by canonical equivalence.
    static constexpr unsigned Literal = 2;
    /// From the end: the last place. Searches only.
    static constexpr unsigned Backwards = 4;
    /// Only at the beginning of the range, or at its end when backwards. Searches only.
    static constexpr unsigned Anchored = 8;
    /// Runs of ASCII digits by the number that they write ("file9" before "file10"). Comparisons
    /// only.
    static constexpr unsigned Numeric = 64;
    /// Decomposed, and without non-spacing marks.
    static constexpr unsigned IgnoreDiacritics = 128;
};

/// A part of a text, in units of UTF-16.
struct TextRange {
    std::size_t location = 0;
    std::size_t length = 0;

    friend bool operator==(const TextRange&, const TextRange&) = default;
};

// Searches go by canonical equivalence and never split a composed character sequence: a character
// with the marks (and the Hangul vowels and finals) that follow it. So "e" is not in "é", however
// that is written. Control characters and the separators of lines take no marks: a line
// feed is found, whatever follows. A literal search does split sequences, but not the two units of
// a character.
//
// All functions take linear time but for the sorting of long runs of marks (n log n), whatever the
// texts are. They throw `std::length_error` for texts beyond 2^31 units. Any thread.

/// Where the pattern is; nothing when it is nowhere. An empty pattern is nowhere, and neither is
/// one of marks alone when those are ignored.
[[nodiscard]] std::optional<TextRange> rangeOfString(std::string_view text,
                                                     std::string_view pattern, unsigned options);

/// The same within a range of the text; what of it lies beyond the text's end is left out. A
/// sequence that the range cuts is not found in it.
[[nodiscard]] std::optional<TextRange>
rangeOfString(std::string_view text, std::string_view pattern, unsigned options, TextRange range);

/// In how many places the pattern is found when the search goes on one unit behind where the last
/// one began: places that overlap count each.
[[nodiscard]] std::size_t countOfPlaces(std::string_view text, std::string_view pattern,
                                        unsigned options);

/// -1, 0 or 1 by the units of UTF-16 of the canonical decompositions, or of the texts themselves
/// when literal. Numbers of equal value are equal, however many zeros stand before them.
[[nodiscard]] int compare(std::string_view text, std::string_view other, unsigned options);

/// The same for a range of the first text; what of it lies beyond that text's end is left out. The
/// range may cut sequences: what is in it is compared as if it were a text. Half a surrogate pair
/// is equal to nothing.
[[nodiscard]] int compare(std::string_view text, std::string_view other, unsigned options,
                          TextRange range);

} // namespace tav
