#pragma once

#include "base/Result.hpp"
#include "base/Value.hpp"
#include "platform/Seam.hpp"

#include <optional>
#include <string_view>

namespace tav {

class Preferences;

namespace internal {
/// The property list of this program in the user's configuration folder (platform/linux).
Preferences& realPreferences();
} // namespace internal

/// The seam to the user's settings of this program: values by key, with defaults that are
/// registered in memory and never written. Any thread.
class Preferences : public Seam<Preferences, internal::realPreferences> {
  public:
    virtual ~Preferences() = default;

    /// Registers defaults, in the place of earlier ones of the same keys.
    virtual void registerDefaults(const Value::Dictionary& defaults) = 0;
    /// The stored value, otherwise the registered default, otherwise nothing.
    virtual std::optional<Value> value(std::string_view key) = 0;
    /// Stores a value at once. When that fails the value still holds in this process, and is stored
    /// with the next one that can be. EINVAL for a value that no XML property list holds (a key or
    /// a text that is no UTF-8, say).
    virtual SystemError setValue(std::string_view key, const Value& value) = 0;
    /// Takes the stored value away, in the same way; the default answers again.
    virtual SystemError removeValue(std::string_view key) = 0;

    /// The truth of `value(key)`; false without one.
    [[nodiscard]] bool boolValue(std::string_view key) {
        const std::optional<Value> found = value(key);
        return found && found->boolValue();
    }
};

} // namespace tav
