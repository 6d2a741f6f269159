#pragma once

#include "base/PropertyList.hpp"

namespace tav::PropertyList::internal {

/// The binary form of `PropertyList::write`.
[[nodiscard]] std::optional<Data> writeBinary(const Value& value, Error& error);

} // namespace tav::PropertyList::internal
