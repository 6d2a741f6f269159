#pragma once

#include <cstddef>
#include <string_view>

namespace tav::internal {

/// How deep the elements of a document may stand in one another, found in one reading without a
/// tree; reading ends early above `limit`. Never less than the depth of the tree, but for documents
/// made to deceive; more where tags are closed in the wrong order.
[[nodiscard]] std::size_t htmlDepthBound(std::string_view html, std::size_t limit);

} // namespace tav::internal
