#include "platform/memory/MemoryPreferences.hpp"

namespace tav {

void MemoryPreferences::failStoring(int errorNumber) {
    const std::lock_guard lock(mutex_);
    storingError_ = SystemError(errorNumber);
}

Value::Dictionary MemoryPreferences::stored() const {
    const std::lock_guard lock(mutex_);
    return stored_;
}

void MemoryPreferences::registerDefaults(const Value::Dictionary& defaults) {
    const std::lock_guard lock(mutex_);
    for (const auto& [key, value] : defaults) {
        defaults_.set(key, value);
    }
}

std::optional<Value> MemoryPreferences::value(std::string_view key) {
    const std::lock_guard lock(mutex_);
    const Value* found = values_.find(key);
    if (found == nullptr) {
        found = defaults_.find(key);
    }
    return found != nullptr ? std::optional(*found) : std::nullopt;
}

SystemError MemoryPreferences::setValue(std::string_view key, const Value& value) {
    const std::lock_guard lock(mutex_);
    values_.set(std::string(key), value);
    return store();
}

SystemError MemoryPreferences::removeValue(std::string_view key) {
    const std::lock_guard lock(mutex_);
    values_.remove(key);
    return store();
}

SystemError MemoryPreferences::store() {
    if (storingError_.isNone()) {
        stored_ = values_;
    }
    return storingError_;
}

} // namespace tav
