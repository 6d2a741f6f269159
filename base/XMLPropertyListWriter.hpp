#pragma once

#include "base/PropertyList.hpp"

namespace tav::PropertyList::internal {

/// The XML form of `PropertyList::write`.
[[nodiscard]] std::optional<Data> writeXML(const Value& value, Error& error);

} // namespace tav::PropertyList::internal
