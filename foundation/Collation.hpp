#pragma once

#include <string_view>

struct UCollator;

namespace tav {

/// The order of two texts for people, -1, 0 or 1: by the root collation, where letters differ but
/// not their case, accents, width (full width and half) or composition. Blanks and punctuation
/// count. 0 where there is no collation.
///
/// Any thread. The first call takes some milliseconds.
[[nodiscard]] int compareStringsIgnoringDiacritical(std::string_view text, std::string_view other);

/// Whether two texts are equal but for case and accents. Unlike the order above it tells full width
/// from half width. False where that cannot be told.
///
/// Composed and decomposed accents are equal: neither form's accent is compared.
[[nodiscard]] bool equalStringsIgnoringDiacritical(std::string_view text, std::string_view other);

namespace internal {
/// The order by a collator; 0 when there is none (null), or when it fails.
[[nodiscard]] int compareByCollator(const UCollator* collator, std::string_view text,
                                    std::string_view other);
} // namespace internal

} // namespace tav
