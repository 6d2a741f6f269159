#include "platform/linux/LinuxPreferences.hpp"

#include "base/PathString.hpp"
#include "platform/Bundle.hpp"
#include "platform/NeverDestroyed.hpp"
#include "platform/ProcessTable.hpp"
#include "platform/UserFolders.hpp"

#include <cerrno>
#include <utility>

namespace tav {

namespace {

bool isFileName(std::string_view name) {
    return !name.empty() && name.find('/') == std::string_view::npos &&
           name.find('\0') == std::string_view::npos;
}

/// The main bundle's identifier or, where it has none that may be a file's name, the name of the
/// executable.
std::string programName() {
    const std::optional<Bundle> bundle = Bundle::mainBundle();
    const std::optional<std::string> identifier =
        bundle ? bundle->bundleIdentifier() : std::nullopt;
    if (identifier && isFileName(*identifier)) {
        return *identifier;
    }
    ProcessTable& table = ProcessTable::current();
    const std::optional<std::string> executable = table.executablePath(table.currentProcess());
    return executable ? std::string(lastPathComponent(*executable)) : std::string();
}

} // namespace

Preferences& internal::realPreferences() { return neverDestroyed<LinuxPreferences>(); }

std::string internal::preferencesPath() {
    const std::string folder = UserFolders::current().configuration();
    const std::string name = programName();
    if (folder.empty() || !isFileName(name)) {
        return {};
    }
    return stringByAppendingPathComponent(folder, name + ".plist");
}

void LinuxPreferences::registerDefaults(const Value::Dictionary& defaults) {
    const std::lock_guard lock(mutex_);
    for (const auto& [key, value] : defaults) {
        defaults_.set(key, value);
    }
}

std::optional<Value> LinuxPreferences::value(std::string_view key) {
    loadIfNeeded();
    const std::lock_guard lock(mutex_);
    const Value* found = stored_.find(key);
    if (const auto change = changes_.find(key); change != changes_.end()) {
        found = change->second.value ? &*change->second.value : nullptr;
    }
    if (found == nullptr) {
        found = defaults_.find(key);
    }
    return found != nullptr ? std::optional(*found) : std::nullopt;
}

SystemError LinuxPreferences::setValue(std::string_view key, const Value& value) {
    const SystemError error = internal::errorOfStoring({{std::string(key), value}});
    return change(key, {value, error.isNone()}, error);
}

SystemError LinuxPreferences::removeValue(std::string_view key) {
    return change(key, {std::nullopt, true}, {});
}

void LinuxPreferences::loadIfNeeded() {
    {
        const std::lock_guard lock(mutex_);
        if (isLoaded_) {
            return;
        }
    }
    const std::lock_guard storing(storing_);
    load();
}

/// With `storing_` held.
void LinuxPreferences::load() {
    if (isLoaded_) {
        return;
    }
    if (!path_) {
        path_ = internal::preferencesPath();
    }
    Value::Dictionary entries;
    if (!path_->empty()) {
        file_.emplace(*path_);
        Result<Value::Dictionary> read = file_->read();
        if (read.ok()) {
            entries = std::move(read).value();
        }
    }
    const std::lock_guard lock(mutex_);
    stored_ = std::move(entries);
    isLoaded_ = true;
}

SystemError LinuxPreferences::change(std::string_view key, Change change,
                                     SystemError errorOfValue) {
    const std::lock_guard storing(storing_);
    load();
    {
        const std::lock_guard lock(mutex_);
        changes_.insert_or_assign(std::string(key), std::move(change));
    }
    return errorOfValue.isNone() ? store() : errorOfValue;
}

/// Puts every change into the file that can be there. With `storing_` held.
SystemError LinuxPreferences::store() {
    if (!file_) {
        return SystemError(ENOENT);
    }
    Result<Value::Dictionary> entries = file_->update(
        [this](Value::Dictionary& current) {
            for (const auto& [key, change] : changes_) {
                if (!change.value) {
                    current.remove(key);
                } else if (change.canBeStored) {
                    current.set(key, *change.value);
                }
            }
        },
        stored_);
    if (!entries.ok()) {
        return entries.error();
    }
    const std::lock_guard lock(mutex_);
    stored_ = std::move(entries).value();
    std::erase_if(changes_, [](const auto& entry) { return entry.second.canBeStored; });
    return {};
}

} // namespace tav
