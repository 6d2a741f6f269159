#pragma once

#include <string>

namespace tav::internal {

/// A canonically equivalent text (both have the same normal forms) whose long runs of combining
/// marks are in canonical order. ICU puts marks in order by insertion, which takes quadratic time:
/// what goes through here first is normalised in linear time. Short runs stay as they are.
[[nodiscard]] std::u16string withMarksInOrder(std::u16string units);

} // namespace tav::internal
