#pragma once

#include "platform/Preferences.hpp"

#include <mutex>

namespace tav {

/// Settings in memory, whose storing fails when a test wants it. Any thread.
class MemoryPreferences final : public Preferences {
  public:
    /// Lets every change be answered with an error from now on, though it holds; 0 ends that.
    void failStoring(int errorNumber);
    /// What was stored while nothing failed: what another process would see.
    [[nodiscard]] Value::Dictionary stored() const;

    void registerDefaults(const Value::Dictionary& defaults) override;
    std::optional<Value> value(std::string_view key) override;
    SystemError setValue(std::string_view key, const Value& value) override;
    SystemError removeValue(std::string_view key) override;

  private:
    SystemError store();

    mutable std::mutex mutex_;
    SystemError storingError_;
    Value::Dictionary defaults_;
    Value::Dictionary values_;
    Value::Dictionary stored_;
};

} // namespace tav
