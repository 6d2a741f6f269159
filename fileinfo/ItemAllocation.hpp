#pragma once

#include <memory>

namespace tav::internal {

/// Makes an item whose constructors are not public, in one allocation with its reference count.
/// Only then may it be initialised: what initialises an item sends operations to its own class.
template <class Item>
std::shared_ptr<Item> allocateItem() {
    struct Concrete final : Item {};
    return std::make_shared<Concrete>();
}

} // namespace tav::internal
